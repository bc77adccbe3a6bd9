// A string cache kept as a plain list, and the checks that compare a real
// cache with it: shared by tests/text/string_cache_test.cpp (short runs) and
// fuzz/string_cache_fuzz.cpp (long ones). Each check returns "" when the two
// agree, else what differs.
#ifndef QXUTIL_TESTS_COMMON_STRING_CACHE_MODEL_H
#define QXUTIL_TESTS_COMMON_STRING_CACHE_MODEL_H

#include "platform/heap.h"
#include "qxutil/text.h"

#include <cstring>
#include <string>
#include <vector>

namespace qxtest {

/// StringCacheModel - the entries of one cache with a fixed data size.
class StringCacheModel {
public:
  explicit StringCacheModel(int dataSize) : dataSize_(static_cast<size_t>(dataSize)) {}

  struct Entry {
    std::wstring name;
    std::vector<unsigned char> data; // dataSize bytes
  };

  /// Add - what CacheString(name, data, sorted) must return; with `commit`
  /// the model takes the change. `grows` says whether the cache needs
  /// memory for it.
  unsigned Add(const std::wstring& name, const unsigned char* data, bool sorted, bool commit,
               bool* grows) {
    *grows = false;
    const size_t n = name.size();
    if (!allocated_) {
      if ((n + 2 * dataSize_ + 3) * 2 > 65500)
        return 0;
      *grows = true;
      if (commit) {
        allocated_ = true;
        if (n)
          entries_.push_back({name, Bytes(data)});
        else // the data is written, though an empty name ends the list there
          endData_ = Bytes(data);
      }
      return 1;
    }
    if (n == 0)
      return 0;
    size_t insertAt = entries_.size();
    for (size_t i = 0; i < entries_.size(); ++i) {
      int order = FoldCompare(entries_[i].name, name);
      if (order == 0) {
        if (commit && data)
          entries_[i].data = Bytes(data);
        return Offset(i);
      }
      if (sorted && order > 0 && insertAt == entries_.size())
        insertAt = i;
    }
    if ((n + Offset(entries_.size()) + 2 * dataSize_ + 2) * 2 > 65500)
      return 0;
    *grows = true;
    const unsigned offset = Offset(insertAt);
    if (commit) {
      entries_.insert(entries_.begin() + static_cast<long>(insertAt), {name, Bytes(data)});
      endData_.clear();
    }
    return offset;
  }

  /// Offset - the offset of entry i (of the end for i = count).
  unsigned Offset(size_t i) const {
    size_t offset = 1;
    for (size_t k = 0; k < i; ++k)
      offset += dataSize_ + entries_[k].name.size() + 1;
    return static_cast<unsigned>(offset);
  }

  /// Layout - the units the block must start with; the rest of it is zero.
  std::vector<wchar_t> Layout() const {
    std::vector<wchar_t> units(1, 0);
    for (const Entry& e : entries_) {
      size_t at = units.size();
      units.resize(at + dataSize_, 0);
      std::memcpy(units.data() + at, e.data.data(), dataSize_);
      units.insert(units.end(), e.name.begin(), e.name.end());
      units.push_back(0);
    }
    const size_t end = units.size();
    units.resize(end + dataSize_ + 1, 0);
    if (!endData_.empty())
      std::memcpy(units.data() + end, endData_.data(), dataSize_);
    return units;
  }

  /// FoldCompare - _wcsicmp in the "C" runtime locale: ASCII letters folded
  /// to lower case, then unit values.
  static int FoldCompare(const std::wstring& a, const std::wstring& b) {
    for (size_t i = 0;; ++i) {
      unsigned x = Fold(i < a.size() ? a[i] : 0), y = Fold(i < b.size() ? b[i] : 0);
      if (x != y)
        return x < y ? -1 : 1;
      if (x == 0)
        return 0;
    }
  }

  bool allocated() const { return allocated_; }
  const std::vector<Entry>& entries() const { return entries_; }
  int dataSize() const { return static_cast<int>(dataSize_); }

private:
  static unsigned Fold(wchar_t c) {
    unsigned u = static_cast<unsigned>(c);
    return u >= 'A' && u <= 'Z' ? u + 32 : u;
  }
  std::vector<unsigned char> Bytes(const unsigned char* data) const {
    return data ? std::vector<unsigned char>(data, data + dataSize_)
                : std::vector<unsigned char>(dataSize_, 0);
  }

  size_t dataSize_;
  bool allocated_ = false;
  std::vector<Entry> entries_;
  std::vector<unsigned char> endData_; // in the end marker's data area
};

/// CacheStep - CacheString on the cache and the model, with the heap failing
/// the cache's growth when `failGrowth` (the cache must then refuse and stay
/// as it was).
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
  if (got != want)
    return "CacheString returned " + std::to_string(got) + ", not " + std::to_string(want);
  return "";
}

/// CompareCache - the cache read back every way against the model: the
/// block's units, each entry by index, by offset and by name, and the end.
inline std::string CompareCache(wchar_t* cache, const StringCacheModel& model) {
  if (!model.allocated())
    return cache ? "a cache where there should be none" : "";
  if (!cache)
    return "no cache";
  const std::vector<wchar_t> layout = model.Layout();
  const size_t units = memSize(cache) / sizeof(wchar_t);
  if (units < layout.size())
    return "the block is too small";
  for (size_t i = 0; i < units; ++i)
    if (cache[i] != (i < layout.size() ? layout[i] : 0))
      return "unit " + std::to_string(i) + " differs";
  const int ds = model.dataSize();
  const auto& entries = model.entries();
  std::vector<wchar_t> name(600);
  std::vector<unsigned char> data(static_cast<size_t>(ds) + 1);
  auto same = [&](const StringCacheModel::Entry& e) {
    return e.name == name.data() && std::memcmp(e.data.data(), data.data(), e.data.size()) == 0;
  };
  // Each read walks the cache, so large caches are read back at about 64
  // entries (the block's units were compared in full above).
  const size_t stride = entries.size() / 64 + 1;
  unsigned offset = 1;
  for (size_t i = 0; i < entries.size();
       offset += static_cast<unsigned>(ds + entries[i].name.size() + 1), ++i) {
    if (i % stride != 0 && i + 1 != entries.size())
      continue;
    const std::string which = "entry " + std::to_string(i);
    if (!GetIthCachedString(cache, static_cast<int>(i), name.data(), 600, data.data(), ds) ||
        !same(entries[i]))
      return which + " by index";
    GetCachedString(cache, offset, name.data(), 600, data.data(), ds);
    if (!same(entries[i]))
      return which + " by offset";
    std::wstring upper = entries[i].name;
    for (wchar_t& c : upper)
      c = c >= L'a' && c <= L'z' ? c - 32 : c;
    std::memset(data.data(), 0xA5, data.size());
    if (!GetCachedStructure(cache, upper.data(), data.data(), ds) ||
        std::memcmp(entries[i].data.data(), data.data(), entries[i].data.size()) != 0)
      return which + " by name";
  }
  name[0] = L'?';
  if (GetIthCachedString(cache, static_cast<int>(entries.size()), name.data(), 600, nullptr, ds) ||
      name[0] != 0)
    return "an entry past the end";
  return "";
}

} // namespace qxtest

#endif // QXUTIL_TESTS_COMMON_STRING_CACHE_MODEL_H
