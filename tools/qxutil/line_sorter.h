//===- qxutil/line_sorter.h - A stable sort of lines by key ------*- C++ -*-===//
//
// Sorts lines by a byte key, stably (lines with equal keys keep their input
// order), in bounded memory: when the lines held reach the budget they are
// sorted and written to a temporary file as a run, and the runs are merged
// at the end.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_CLI_LINE_SORTER_H
#define QXUTIL_CLI_LINE_SORTER_H

#include <cstdio>
#include <string>
#include <vector>

namespace qxcli {

class LineSorter {
public:
  /// `budget`: bytes of lines and keys held before a run is written;
  /// `unique`: only the first line of each key is kept.
  LineSorter(size_t budget, bool unique) : budget_(budget), unique_(unique) {}
  ~LineSorter();
  LineSorter(const LineSorter&) = delete;
  LineSorter& operator=(const LineSorter&) = delete;

  /// Add - one line and its key (compared as unsigned bytes); false with
  /// errno set when a run cannot be written.
  bool Add(std::string line, std::string key);

  /// Finish - writes the sorted lines to `out`, each followed by LF; false
  /// with errno set when a run cannot be read or `out` cannot be written.
  bool Finish(std::FILE* out);

  /// runs - the temporary runs written so far.
  size_t runs() const { return runs_.size(); }

private:
  struct Entry {
    std::string key, line;
  };
  bool Spill();
  void SortHeld();

  size_t budget_;
  bool unique_;
  size_t held_ = 0;
  std::vector<Entry> entries_;
  std::vector<std::FILE*> runs_;
};

} // namespace qxcli

#endif // QXUTIL_CLI_LINE_SORTER_H
