// The bounded-memory stable sort of 'qxutil sort' (line_sorter.h).
#include "line_sorter.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <queue>

namespace qxcli {

namespace {

constexpr size_t kEntryOverhead = 2 * sizeof(std::string);

bool WriteString(std::FILE* f, const std::string& s) {
  uint64_t n = s.size();
  return std::fwrite(&n, sizeof n, 1, f) == 1 && std::fwrite(s.data(), 1, s.size(), f) == s.size();
}

// ReadString - false at the end of the run; sets *ok false on a damaged run.
bool ReadString(std::FILE* f, std::string* s, bool* ok) {
  uint64_t n = 0;
  if (std::fread(&n, sizeof n, 1, f) != 1) {
    *ok = *ok && !std::ferror(f);
    return false;
  }
  s->resize(n);
  if (std::fread(s->data(), 1, n, f) != n) {
    *ok = false;
    return false;
  }
  return true;
}

// Output - writes lines, dropping repeated keys when unique.
class Output {
public:
  Output(std::FILE* out, bool unique) : out_(out), unique_(unique) {}
  bool Put(const std::string& key, const std::string& line) {
    if (unique_ && any_ && key == last_)
      return true;
    any_ = true;
    if (unique_)
      last_ = key;
    return std::fwrite(line.data(), 1, line.size(), out_) == line.size() &&
           std::fputc('\n', out_) != EOF;
  }

private:
  std::FILE* out_;
  bool unique_;
  bool any_ = false;
  std::string last_;
};

} // namespace

LineSorter::~LineSorter() {
  for (std::FILE* run : runs_)
    std::fclose(run);
}

bool LineSorter::Add(std::string line, std::string key) {
  held_ += line.size() + key.size() + kEntryOverhead;
  entries_.push_back({std::move(key), std::move(line)});
  return held_ < budget_ || Spill();
}

void LineSorter::SortHeld() {
  std::stable_sort(entries_.begin(), entries_.end(),
                   [](const Entry& a, const Entry& b) { return a.key < b.key; });
}

bool LineSorter::Spill() {
  SortHeld();
  std::FILE* run = std::tmpfile();
  if (!run)
    return false;
  runs_.push_back(run);
  for (const Entry& e : entries_)
    if (!WriteString(run, e.key) || !WriteString(run, e.line))
      return false;
  if (std::fflush(run) != 0 || std::fseek(run, 0, SEEK_SET) != 0)
    return false;
  entries_.clear();
  held_ = 0;
  return true;
}

bool LineSorter::Finish(std::FILE* out) {
  Output output(out, unique_);
  if (runs_.empty()) {
    SortHeld();
    for (const Entry& e : entries_)
      if (!output.Put(e.key, e.line))
        return false;
    return true;
  }
  if (!entries_.empty() && !Spill())
    return false;
  // Merge: the smallest key first, and among equal keys the earliest run,
  // whose lines came first in the input.
  std::vector<Entry> heads(runs_.size());
  auto later = [&heads](size_t a, size_t b) {
    return heads[a].key != heads[b].key ? heads[b].key < heads[a].key : b < a;
  };
  std::priority_queue<size_t, std::vector<size_t>, decltype(later)> queue(later);
  bool ok = true;
  auto advance = [&](size_t r) {
    if (ReadString(runs_[r], &heads[r].key, &ok) && ReadString(runs_[r], &heads[r].line, &ok))
      queue.push(r);
  };
  for (size_t r = 0; r < runs_.size(); ++r)
    advance(r);
  while (!queue.empty()) {
    size_t r = queue.top();
    queue.pop();
    if (!output.Put(heads[r].key, heads[r].line))
      return false;
    advance(r);
  }
  if (!ok)
    errno = EIO;
  return ok;
}

} // namespace qxcli
