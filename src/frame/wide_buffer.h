//===- frame/wide_buffer.h - A growable wide string -------------*- C++ -*-===//
//
// A NUL-terminated wide string on the memory manager's heap, for the
// library's own bookkeeping. It never throws: operations that need memory
// return false and leave the text as it was.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_FRAME_WIDE_BUFFER_H
#define QXUTIL_FRAME_WIDE_BUFFER_H

#include "qxutil/frame.h"

#include <cstddef>
#include <cwchar>

namespace qx {

class WideBuffer {
public:
  WideBuffer() = default;
  ~WideBuffer() { ffree(&text_); }
  WideBuffer(const WideBuffer&) = delete;
  WideBuffer& operator=(const WideBuffer&) = delete;

  /// Reserve - makes room for `units` characters and a terminator.
  bool Reserve(size_t units) {
    if (units + 1 <= capacity_)
      return true;
    size_t want = capacity_ ? capacity_ : 16;
    while (want < units + 1)
      want *= 2;
    if (want * sizeof(wchar_t) > 0xFFFFFFFFu) {
      want = units + 1;
      if (want * sizeof(wchar_t) > 0xFFFFFFFFu)
        return false;
    }
    void* grown = text_;
    if (!GetMem_(static_cast<unsigned int>(want * sizeof(wchar_t)), &grown, true))
      return false;
    text_ = static_cast<wchar_t*>(grown);
    capacity_ = want;
    return true;
  }

  bool Append(const wchar_t* s, size_t n) {
    if (n == 0)
      return Reserve(length_);
    if (!Reserve(length_ + n))
      return false;
    std::wmemcpy(text_ + length_, s, n);
    length_ += n;
    text_[length_] = 0;
    return true;
  }
  bool Append(const wchar_t* s) { return Append(s, s ? std::wcslen(s) : 0); }
  bool Append(wchar_t c) { return Append(&c, 1); }

  bool Assign(const wchar_t* s, size_t n) {
    Clear();
    return Append(s, n);
  }
  bool Assign(const wchar_t* s) { return Assign(s, s ? std::wcslen(s) : 0); }

  /// Truncate - shortens the text to `n` units (no effect if already shorter).
  void Truncate(size_t n) {
    if (n < length_) {
      length_ = n;
      text_[n] = 0;
    }
  }
  void Clear() { Truncate(0); }

  /// Release - frees the memory; the text becomes empty.
  void Release() {
    ffree(&text_);
    length_ = capacity_ = 0;
  }

  const wchar_t* c_str() const { return text_ ? text_ : L""; }
  wchar_t* data() { return text_; }
  size_t size() const { return length_; }
  bool empty() const { return length_ == 0; }

private:
  wchar_t* text_ = nullptr;
  size_t length_ = 0;
  size_t capacity_ = 0;
};

} // namespace qx

#endif // QXUTIL_FRAME_WIDE_BUFFER_H
