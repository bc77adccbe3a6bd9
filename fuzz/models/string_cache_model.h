// A string cache kept as a plain list, and the checks that compare a real
// cache with it (fuzz/string_cache_fuzz.cpp). Each check returns "" when the
// two agree, else what differs.
#ifndef QXUTIL_FUZZ_MODELS_STRING_CACHE_MODEL_H
#define QXUTIL_FUZZ_MODELS_STRING_CACHE_MODEL_H

#include "platform/heap.h"
#include "qxutil/text.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace qxtest {

/// StringCacheModel - the entries of one cache as the layout must hold
/// them: a unit 0, then per entry the data area and the name, then an end
/// marker (whose data area an empty first name may have filled).
class StringCacheModel {
public:
  explicit StringCacheModel(int dataSize) : ds_(static_cast<size_t>(dataSize)) {}

  /// Add - what CacheString(name, data, sorted) must return; with `commit`
  /// the model takes the change. `grows` says whether it needs memory.
  unsigned Add(const std::wstring& name, const unsigned char* data, bool sorted, bool commit,
               bool* grows) {
    const size_t n = name.size(), end = Offset(entries_.size());
    *grows = false;
    if (!allocated_ && (n + 2 * ds_ + 3) * 2 > 65500)
      return 0;
    if (!allocated_) {
      *grows = true;
      if (commit && n)
        entries_.push_back({name, Bytes(data)});
      else if (commit)
        endData_ = Bytes(data);
      allocated_ = allocated_ || commit;
      return 1;
    }
    if (n == 0)
      return 0;
    size_t at = entries_.size();
    for (size_t i = 0; i < entries_.size(); ++i) {
      int order = FoldCompare(entries_[i].name, name);
      if (order == 0) {
        if (commit && data)
          entries_[i].data = Bytes(data);
        return Offset(i);
      }
      if (sorted && order > 0 && at == entries_.size())
        at = i;
    }
    if ((n + end + 2 * ds_ + 2) * 2 > 65500)
      return 0;
    *grows = true;
    const unsigned offset = Offset(at);
    if (commit) {
      entries_.insert(entries_.begin() + static_cast<long>(at), {name, Bytes(data)});
      endData_.clear();
    }
    return offset;
  }

  /// Layout - the units the block must start with; the rest of it is zero.
  std::vector<wchar_t> Layout() const {
    std::vector<wchar_t> units(1, 0);
    auto area = [&](const std::vector<unsigned char>& bytes) {
      units.resize(units.size() + ds_, 0);
      if (!bytes.empty())
        std::memcpy(units.data() + units.size() - ds_, bytes.data(), ds_);
    };
    for (const Entry& e : entries_) {
      area(e.data);
      units.insert(units.end(), e.name.begin(), e.name.end());
      units.push_back(0);
    }
    area(endData_);
    units.push_back(0);
    return units;
  }

  /// FoldCompare - _wcsicmp in the "C" runtime locale: ASCII letters folded
  /// to lower case, then unit values.
  static int FoldCompare(const std::wstring& a, const std::wstring& b) {
    auto fold = [](wchar_t c) { return unsigned(c) + (c >= L'A' && c <= L'Z' ? 32 : 0); };
    for (size_t i = 0;; ++i) {
      unsigned x = fold(i < a.size() ? a[i] : 0), y = fold(i < b.size() ? b[i] : 0);
      if (x != y || x == 0)
        return x < y ? -1 : x > y;
    }
  }

  struct Entry {
    std::wstring name;
    std::vector<unsigned char> data; // dataSize bytes
  };
  bool allocated() const { return allocated_; }
  const std::vector<Entry>& entries() const { return entries_; }
  int dataSize() const { return static_cast<int>(ds_); }
  /// Offset - the offset of entry i (of the end for i = count).
  unsigned Offset(size_t i) const {
    size_t offset = 1;
    for (size_t k = 0; k < i; ++k)
      offset += ds_ + entries_[k].name.size() + 1;
    return static_cast<unsigned>(offset);
  }

private:
  std::vector<unsigned char> Bytes(const unsigned char* data) const {
    return data ? std::vector<unsigned char>(data, data + ds_) : std::vector<unsigned char>(ds_, 0);
  }

  size_t ds_;
  bool allocated_ = false;
  std::vector<Entry> entries_;
  std::vector<unsigned char> endData_;
};

/// CacheStep - CacheString on the cache and the model, with the heap failing
/// the cache's growth when `failGrowth` (the cache must then refuse).
inline std::string CacheStep(wchar_t** cache, StringCacheModel* model, std::wstring name,
                             unsigned char* data, bool sorted, bool failGrowth) {
  bool grows = false;
  unsigned want = model->Add(name, data, sorted, false, &grows);
  if (failGrowth && grows)
    want = 0;
  else
    model->Add(name, data, sorted, true, &grows);
  qx::platform::FailAllocations(failGrowth ? 1 : 0, false);
  unsigned got = CacheString(cache, name.data(), data, model->dataSize(), sorted);
  qx::platform::FailAllocations(0, false);
  return got == want ? ""
                     : "CacheString gave " + std::to_string(got) + ", not " + std::to_string(want);
}

/// CompareCache - every unit of the block against the model's layout, then
/// about 64 entries read back by index, by offset and by name (each read
/// walks the cache), and the end.
inline std::string CompareCache(wchar_t* cache, const StringCacheModel& model) {
  if (!model.allocated() || !cache)
    return model.allocated() == (cache != nullptr) ? "" : "the cache is missing or extra";
  const std::vector<wchar_t> layout = model.Layout();
  const size_t units = memSize(cache) / sizeof(wchar_t);
  for (size_t i = 0; i < std::max(units, layout.size()); ++i)
    if (i >= units || cache[i] != (i < layout.size() ? layout[i] : 0))
      return "unit " + std::to_string(i) + " differs";
  const int ds = model.dataSize();
  const auto& entries = model.entries();
  std::vector<wchar_t> buffer(32768); // longer than any name a cache can hold
  wchar_t* name = buffer.data();
  std::vector<unsigned char> data(static_cast<size_t>(ds) + 1);
  for (size_t i = 0; i < entries.size(); i += entries.size() / 64 + 1) {
    const StringCacheModel::Entry& e = entries[i];
    std::wstring upper = e.name;
    for (wchar_t& c : upper)
      c = c >= L'a' && c <= L'z' ? c - 32 : c;
    auto same = [&] {
      return e.data.empty() || !std::memcmp(e.data.data(), data.data(), e.data.size());
    };
    if (!GetIthCachedString(cache, static_cast<int>(i), name, 32768, data.data(), ds) ||
        e.name != name || !same())
      return "entry " + std::to_string(i) + " by index";
    GetCachedString(cache, model.Offset(i), name, 32768, data.data(), ds);
    if (e.name != name || !same())
      return "entry " + std::to_string(i) + " by offset";
    data.assign(data.size(), 0xA5);
    if (!GetCachedStructure(cache, upper.data(), data.data(), ds) || !same())
      return "entry " + std::to_string(i) + " by name";
  }
  name[0] = L'?';
  bool past = GetIthCachedString(cache, static_cast<int>(entries.size()), name, 32768, nullptr, ds);
  return past || name[0] ? "an entry past the end" : "";
}

} // namespace qxtest

#endif // QXUTIL_FUZZ_MODELS_STRING_CACHE_MODEL_H
