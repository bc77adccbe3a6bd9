// The line reader of the program's text commands (line_reader.h).
#include "line_reader.h"

#include <cerrno>
#include <cstring>

namespace qxcli {

LineReader::~LineReader() {
  if (owned_)
    std::fclose(file_);
}

bool LineReader::Open(const char* path) {
  if (!path || std::strcmp(path, "-") == 0) {
    file_ = stdin;
    return true;
  }
  file_ = std::fopen(path, "rb");
  if (!file_)
    return false;
  owned_ = true;
  name_ = path;
  return true;
}

bool LineReader::Fill() {
  if (eof_ || error_)
    return false;
  if (begin_ > 0) {
    std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
  }
  if (end_ == buffer_.size())
    buffer_.resize(buffer_.size() * 2); // a line longer than the buffer
  size_t n = std::fread(buffer_.data() + end_, 1, buffer_.size() - end_, file_);
  end_ += n;
  if (n == 0) {
    if (std::ferror(file_))
      error_ = errno ? errno : EIO;
    eof_ = true;
  }
  return n > 0;
}

bool LineReader::Next(std::string* line) {
  size_t scanned = begin_;
  for (;;) {
    const char* start = buffer_.data() + scanned;
    const void* lf = std::memchr(start, '\n', end_ - scanned);
    if (lf) {
      size_t at = static_cast<const char*>(lf) - buffer_.data();
      size_t length = at - begin_;
      if (length > 0 && buffer_[at - 1] == '\r')
        --length;
      line->assign(buffer_.data() + begin_, length);
      begin_ = at + 1;
      return true;
    }
    scanned = end_ - begin_; // offset of the unscanned part once Fill moves it
    if (!Fill()) {
      if (begin_ == end_ || error_)
        return false;
      line->assign(buffer_.data() + begin_, end_ - begin_);
      begin_ = end_;
      return true;
    }
    scanned += begin_;
  }
}

} // namespace qxcli
