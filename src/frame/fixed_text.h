//===- frame/fixed_text.h - A bounded string in place -----------*- C++ -*-===//
//
// A NUL-terminated string of at most N characters held in the object itself,
// for text whose length the caller can bound (a picture of at most 128
// characters, the digits of a double). It never allocates and never throws:
// an append that does not fit stores nothing more, returns false and marks
// the text as overflowed, so that the caller can fail as a whole.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_FRAME_FIXED_TEXT_H
#define QXUTIL_FRAME_FIXED_TEXT_H

#include <cstddef>

namespace qx {

template <class Char, size_t N> class FixedText {
public:
  FixedText() { text_[0] = 0; }

  bool push_back(Char c) {
    if (size_ == N) {
      overflowed_ = true;
      return false;
    }
    text_[size_++] = c;
    text_[size_] = 0;
    return true;
  }
  bool append(const Char* s, size_t n) {
    for (size_t i = 0; i < n; ++i)
      if (!push_back(s[i]))
        return false;
    return true;
  }
  bool append(const Char* s) {
    for (; s && *s; ++s)
      if (!push_back(*s))
        return false;
    return true;
  }
  FixedText& operator+=(Char c) {
    push_back(c);
    return *this;
  }
  FixedText& operator+=(const Char* s) {
    append(s);
    return *this;
  }

  /// insert_front - puts `c` before the text.
  bool insert_front(Char c) {
    if (size_ == N) {
      overflowed_ = true;
      return false;
    }
    for (size_t i = ++size_; i > 0; --i)
      text_[i] = text_[i - 1];
    text_[0] = c;
    return true;
  }
  /// resize - cuts the text to `n` or pads it with `fill` up to `n`.
  bool resize(size_t n, Char fill) {
    if (n <= size_) {
      size_ = n;
      text_[n] = 0;
      return true;
    }
    while (size_ < n)
      if (!push_back(fill))
        return false;
    return true;
  }
  void pop_back() {
    if (size_)
      text_[--size_] = 0;
  }
  void clear() { resize(0, 0); }

  size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  bool overflowed() const { return overflowed_; }
  Char back() const { return size_ ? text_[size_ - 1] : Char(); }
  Char operator[](size_t i) const { return text_[i]; }
  Char& operator[](size_t i) { return text_[i]; }
  const Char* c_str() const { return text_; }
  const Char* begin() const { return text_; }
  const Char* end() const { return text_ + size_; }
  static constexpr size_t capacity() { return N; }

private:
  Char text_[N + 1];
  size_t size_ = 0;
  bool overflowed_ = false;
};

} // namespace qx

#endif // QXUTIL_FRAME_FIXED_TEXT_H
