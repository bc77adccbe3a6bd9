//===- qxutil/line_reader.h - Lines of a text stream -------------*- C++ -*-===//
//
// Reads a file or standard input in chunks and hands out its lines one at a
// time, so a command holds no more of its input than it keeps.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_CLI_LINE_READER_H
#define QXUTIL_CLI_LINE_READER_H

#include <cstdio>
#include <string>
#include <vector>

namespace qxcli {

class LineReader {
public:
  LineReader() = default;
  ~LineReader();
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;

  /// Open - `path`, or standard input for null or "-"; false with errno set.
  bool Open(const char* path);

  /// Next - the next line in *line, without its line end (LF or CR LF);
  /// false at the end of the input or on a read error (see failed()). A last
  /// line without a line end is still a line.
  bool Next(std::string* line);

  /// failed - a read error ended the input; errno() is its cause.
  bool failed() const { return error_ != 0; }
  int error() const { return error_; }
  /// name - the input's name for messages ("stdin" for standard input).
  const std::string& name() const { return name_; }

private:
  bool Fill();

  std::FILE* file_ = nullptr;
  bool owned_ = false;
  std::string name_ = "stdin";
  std::vector<char> buffer_ = std::vector<char>(1 << 16);
  size_t begin_ = 0, end_ = 0;
  bool eof_ = false;
  int error_ = 0;
};

} // namespace qxcli

#endif // QXUTIL_CLI_LINE_READER_H
