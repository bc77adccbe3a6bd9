// A compound file read from its bytes alone, for fuzz/cfb_fuzz.cpp: the code
// opening it must give (signature, header fields, then every structural rule),
// and for a file that opens, its listing in qxtest::ListStorage's form. And
// files made by another writer, gsf, for the fuzz target and the benchmark.
#ifndef QXUTIL_FUZZ_MODELS_CFB_MODEL_H
#define QXUTIL_FUZZ_MODELS_CFB_MODEL_H

#include "common/cfb_files.h"
#include "platform/storage.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace qxtest {

/// MakeWithGsf - writes `tree` (name => bytes, "a/b" names make storages)
/// under a scratch folder and has `gsf createole` make `target` from it;
/// false when gsf is missing or fails.
inline bool MakeWithGsf(const std::string& target,
                        const std::vector<std::pair<std::string, std::string>>& tree) {
  if (std::system("command -v gsf >/dev/null 2>&1") != 0)
    return false;
  TempDir tmp;
  std::vector<std::string> top;
  for (const auto& [name, bytes] : tree) {
    std::filesystem::path p = std::filesystem::path(tmp.Path()) / name;
    std::filesystem::create_directories(p.parent_path());
    tmp.Write(name, bytes);
    std::string first = name.substr(0, name.find('/'));
    if (std::find(top.begin(), top.end(), first) == top.end())
      top.push_back(first);
  }
  std::string command = "cd " + ShellQuote(tmp.Path()) + " && gsf createole " + ShellQuote(target);
  for (const std::string& t : top) {
    command += ' '; // not " " + text: g++ 12 warns falsely (-Wrestrict) on that at -O3
    command += ShellQuote(t);
  }
  return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
}

class CfbModel {
public:
  explicit CfbModel(const std::string& file) : f_(file) {}

  /// Open - S_OK or the STG_E_ code opening the file must give.
  qx::win::HRESULT Open() {
    using namespace qx::win;
    static const char kSignature[] = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
    static const char kBeta[] = "\x0E\x11\xFC\x0D\xD0\xCF\x11\x0E";
    if (f_.size() < 8 || f_.compare(0, 8, kSignature, 8) != 0)
      return f_.size() >= 8 && f_.compare(0, 8, kBeta, 8) == 0 ? STG_E_OLDFORMAT
                                                               : STG_E_FILEALREADYEXISTS;
    const unsigned major = U16(26);
    shift_ = U16(30);
    if (f_.size() < 512 || U16(28) != 0xFFFE || (major != 3 && major != 4) ||
        shift_ != (major == 3 ? 9u : 12u) || U16(32) != 6 || U32(56) != 4096)
      return STG_E_INVALIDHEADER;
    return Load(major == 4) ? S_OK : STG_E_DOCFILECORRUPT;
  }

  /// NamesAreAscii - every name in the tree is ASCII, so that the listing's
  /// lookups need no case rule beyond ASCII's (valid after Open gave S_OK).
  bool NamesAreAscii() const { return ascii_; }

  /// List - the sorted listing of the opened file.
  std::vector<std::string> List() const {
    std::vector<std::string> lines;
    List(0, "", &lines);
    std::sort(lines.begin(), lines.end());
    return lines;
  }

private:
  struct Node {
    std::u16string name;
    unsigned type = 0;
    uint32_t left = 0, right = 0, child = 0, start = 0;
    uint64_t size = 0;
    std::vector<uint32_t> chain; // a stream's sectors (mini sectors below 4,096 bytes)
  };
  static constexpr uint32_t kEnd = 0xFFFFFFFE, kNone = 0xFFFFFFFF;

  // Bytes past the end read as zeros, as sectors cut short do.
  unsigned Byte(uint64_t at) const { return at < f_.size() ? uint8_t(f_[at]) : 0u; }
  uint32_t U16(uint64_t at) const { return Byte(at) | Byte(at + 1) << 8; }
  uint32_t U32(uint64_t at) const { return U16(at) | U16(at + 2) << 16; }
  uint64_t Sector(uint64_t n) const { return (n + 1) << shift_; }
  uint64_t Units(uint64_t bytes, unsigned shift) const {
    return (bytes + (1ull << shift) - 1) >> shift;
  }

  // Take - `s` for one use: below `limit` and not taken before.
  static bool Take(std::vector<bool>& used, uint64_t limit, uint64_t s) {
    if (s >= std::min<uint64_t>(limit, used.size()) || used[s])
      return false;
    return used[s] = true;
  }
  // Follow - `count` links of `table` from `start`, each taken once.
  static bool Follow(const std::vector<uint32_t>& table, std::vector<bool>& used, uint32_t start,
                     uint64_t count, std::vector<uint32_t>* out) {
    for (uint32_t s = start; out->size() < count; s = table[s])
      if (!Take(used, table.size(), s))
        return false;
      else
        out->push_back(s);
    return true;
  }
  // Chain - the sectors from `start` to the end mark, each taken once.
  bool Chain(uint32_t start, std::vector<uint32_t>* out) {
    for (uint32_t s = start; s != kEnd; s = fat_[s])
      if (!Take(used_, fat_.size(), s))
        return false;
      else
        out->push_back(s);
    return true;
  }
  // Table - the 32-bit entries of `sectors`, in order.
  std::vector<uint32_t> Table(const std::vector<uint32_t>& sectors) const {
    std::vector<uint32_t> t;
    for (uint32_t s : sectors)
      for (uint64_t i = 0; i < (1u << shift_) / 4; ++i)
        t.push_back(U32(Sector(s) + 4 * i));
    return t;
  }

  bool Load(bool v4) {
    const uint64_t size = 1ull << shift_, perSector = size / 4;
    used_.assign(f_.size() > size ? Units(f_.size() - size, shift_) : 0, false);
    const uint32_t fatSectors = U32(44);
    if (fatSectors > used_.size())
      return false;
    std::vector<uint32_t> ids;
    for (uint32_t i = 0; i < fatSectors && i < 109; ++i)
      ids.push_back(U32(76 + 4 * i));
    for (uint32_t d = U32(68); ids.size() < fatSectors; d = U32(Sector(d) + size - 4)) {
      if (!Take(used_, used_.size(), d))
        return false;
      for (uint64_t i = 0; i + 1 < perSector && ids.size() < fatSectors; ++i)
        ids.push_back(U32(Sector(d) + 4 * i));
    }
    for (uint32_t id : ids)
      if (!Take(used_, used_.size(), id))
        return false;
    fat_ = Table(ids);
    std::vector<uint32_t> directory, miniFat;
    if (!Chain(U32(48), &directory) || directory.empty())
      return false;
    for (uint32_t s : directory)
      for (uint64_t at = Sector(s); at < Sector(s) + size; at += 128) {
        Node n;
        const unsigned bytes = U16(at + 64);
        for (unsigned k = 0; bytes >= 2 && bytes <= 64 && bytes % 2 == 0 && k < bytes / 2 - 1; ++k)
          n.name.push_back(static_cast<char16_t>(U16(at + 2 * k)));
        n.type = Byte(at + 66);
        n.left = U32(at + 68), n.right = U32(at + 72), n.child = U32(at + 76);
        n.start = U32(at + 116);
        n.size = U32(at + 120) | (v4 ? uint64_t{U32(at + 124)} << 32 : 0);
        nodes_.push_back(n);
      }
    Node& root = nodes_[0];
    if (root.type != 5 || !Chain(U32(60), &miniFat) || root.size > f_.size())
      return false;
    miniFat_ = Table(miniFat);
    miniUsed_.assign(Units(root.size, 6), false);
    if (!Follow(fat_, used_, root.start, Units(root.size, shift_), &root.chain) ||
        (!root.chain.empty() &&
         Sector(root.chain.back()) + root.size - ((root.chain.size() - 1) << shift_) > f_.size()))
      return false;
    // The tree: each entry reached once, a storage or a stream with a name.
    std::vector<bool> seen(nodes_.size());
    seen[0] = true;
    std::vector<uint32_t> pending;
    auto reach = [&](uint32_t id) {
      if (id == kNone)
        return true;
      if (id >= nodes_.size() || seen[id])
        return false;
      seen[id] = true;
      pending.push_back(id);
      return true;
    };
    if (!reach(root.child))
      return false;
    while (!pending.empty()) {
      Node& n = nodes_[pending.back()];
      pending.pop_back();
      if ((n.type != 1 && n.type != 2) || n.name.empty() || !reach(n.left) || !reach(n.right))
        return false;
      for (char16_t c : n.name)
        ascii_ = ascii_ && c < 0x80;
      if (n.type == 1 ? !reach(n.child) : !Stream(n))
        return false;
    }
    return true;
  }

  // Stream - the stream's chain taken, its end within the mini stream or the file.
  bool Stream(Node& n) {
    if (n.size > f_.size())
      return false;
    const bool mini = n.size < 4096;
    const unsigned shift = mini ? 6 : shift_;
    const uint64_t count = Units(n.size, shift);
    if (count == 0)
      return true;
    if (!Follow(mini ? miniFat_ : fat_, mini ? miniUsed_ : used_, n.start, count, &n.chain))
      return false;
    const uint64_t last = n.chain.back();
    const uint64_t end = (mini ? last << 6 : Sector(last)) + n.size - ((count - 1) << shift);
    return end <= (mini ? nodes_[0].size : f_.size());
  }

  // Offset - where byte `at` of the stream of `n` lies in the file.
  uint64_t Offset(const Node& n, uint64_t at) const {
    if (n.size >= 4096 || &n == &nodes_[0])
      return Sector(n.chain[at >> shift_]) + (at & ((1u << shift_) - 1));
    return Offset(nodes_[0], (uint64_t{n.chain[at >> 6]} << 6) + (at & 63));
  }

  static int Compare(const std::u16string& a, const std::u16string& b) {
    if (a.size() != b.size())
      return a.size() < b.size() ? -1 : 1;
    for (size_t i = 0; i < a.size(); ++i) {
      char16_t x = a[i] >= 'a' && a[i] <= 'z' ? a[i] - 32 : a[i];
      char16_t y = b[i] >= 'a' && b[i] <= 'z' ? b[i] - 32 : b[i];
      if (x != y)
        return x < y ? -1 : 1;
    }
    return 0;
  }
  // Find - the entry a lookup of `name` below `parent` reaches, descending its tree.
  uint32_t Find(uint32_t parent, const std::u16string& name) const {
    uint32_t id = nodes_[parent].child;
    while (id < nodes_.size() && Compare(name, nodes_[id].name) != 0)
      id = Compare(name, nodes_[id].name) < 0 ? nodes_[id].left : nodes_[id].right;
    return id;
  }

  void List(uint32_t storage, const std::string& prefix, std::vector<std::string>* lines) const {
    std::vector<uint32_t> ids;
    if (nodes_[storage].child < nodes_.size())
      ids.push_back(nodes_[storage].child);
    for (size_t i = 0; i < ids.size(); ++i)
      for (uint32_t next : {nodes_[ids[i]].left, nodes_[ids[i]].right})
        if (next < nodes_.size())
          ids.push_back(next);
    for (uint32_t id : ids) {
      // Names are passed on as C strings: a zero unit ends them.
      std::u16string name = nodes_[id].name.substr(0, nodes_[id].name.find(u'\0'));
      std::string path = prefix;
      for (char16_t c : name)
        path += c < 0x80 ? static_cast<char>(c) : '?';
      const uint32_t found = Find(storage, name);
      const bool opens = found < nodes_.size() && nodes_[found].type == nodes_[id].type;
      if (nodes_[id].type == 1) {
        lines->push_back(path + "/ storage");
        if (opens)
          List(found, path + "/", lines);
        else
          lines->push_back("error opening " + path);
        continue;
      }
      // Read 4,096 bytes at a time until a read reaches past the file's end.
      std::string bytes;
      const Node& n = nodes_[opens ? found : id];
      const uint64_t unit = n.size < 4096 ? 64 : 1u << shift_;
      for (uint64_t at = 0; opens && at < n.size; at += 4096) {
        std::string chunk;
        for (uint64_t i = at, end = std::min<uint64_t>(n.size, at + 4096), run; i < end; i += run) {
          run = std::min(end - i, unit - i % unit); // within one sector of the file
          chunk.append(f_, std::min<uint64_t>(Offset(n, i), f_.size()), run);
        }
        if (chunk.size() != std::min<uint64_t>(n.size - at, 4096))
          break;
        bytes += chunk;
      }
      char line[64];
      std::snprintf(line, sizeof line, " %zu %016llx", bytes.size(),
                    static_cast<unsigned long long>(Fnv(bytes.data(), bytes.size())));
      lines->push_back(path + line);
    }
  }

  const std::string& f_;
  unsigned shift_ = 9;
  std::vector<bool> used_, miniUsed_;
  std::vector<uint32_t> fat_, miniFat_;
  std::vector<Node> nodes_;
  bool ascii_ = true;
};

} // namespace qxtest

#endif // QXUTIL_FUZZ_MODELS_CFB_MODEL_H
