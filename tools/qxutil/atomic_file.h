//===- qxutil/atomic_file.h - A file replaced whole or not at all -*- C++ -*-===//
//
// The output of the program's file commands: the bytes go to a temporary
// file beside the target, and only Commit, after they are on disk, renames it
// over the target. A failed write, a full disk or an interrupted run leaves
// the previous target as it was and no temporary file behind.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_CLI_ATOMIC_FILE_H
#define QXUTIL_CLI_ATOMIC_FILE_H

#include <cstddef>
#include <string>

namespace qxcli {

/// AtomicFile - one output, the target file or standard output.
class AtomicFile {
public:
  AtomicFile() = default;
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;
  /// Abandons what was not committed.
  ~AtomicFile();

  /// Open - starts the output: null or "-" is standard output, and an
  /// existing device or pipe (/dev/null, a FIFO) is that target itself (both
  /// written as it comes); any other path gets a temporary file beside it, with the
  /// target's permissions (or the default ones for a new file). False with
  /// errno set when the temporary file cannot be made.
  bool Open(const char* path);

  /// Write - appends `n` bytes; false with errno set on failure.
  bool Write(const void* data, size_t n);

  /// Commit - flushes the temporary file to disk and renames it over the
  /// target; false with errno set on failure, when the temporary file is
  /// removed and the target is unchanged. Standard output just succeeds.
  bool Commit();

  /// Abandon - removes the temporary file; the target stays as it was.
  void Abandon();

  /// target - the path given to Open ("" for standard output).
  const std::string& target() const { return path_; }

private:
  int fd_ = -1;
  bool direct_ = false; // the target is a device or a pipe, written in place
  std::string path_, temp_;
};

} // namespace qxcli

#endif // QXUTIL_CLI_ATOMIC_FILE_H
