//===- qxutil/transcoder.h - Text from one character set to another -*- C++ -*-===//
//
// The conversion behind 'qxutil convert', in chunks of any size: bytes of
// one charset (a catalogue member or UTF-8) in, bytes of another out,
// through the library's conversions, with line ends rewritten on the way and
// the characters that did not survive counted.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_CLI_TRANSCODER_H
#define QXUTIL_CLI_TRANSCODER_H

#include <qxutil/text.h>

#include <memory>
#include <string>

namespace qxcli {

/// Charset - one side of a conversion: UTF-8, a member with a code page
/// (converted by the library's code-page functions), or a member with only
/// a Unicode map (converted through the map).
struct Charset {
  bool utf8 = false;
  QXCHARSET cs = QXCHARSET_NONE;
  bool page = false;
  bool dbcs = false;
  const uint16_t* map = nullptr;
  std::string name;

  /// Convertible - the library can read and write it.
  bool Convertible() const { return utf8 || page || map; }
};

/// ParseCharset - "UTF-8" (or "UTF8") or a catalogue name, any letter case;
/// false for an unknown name.
bool ParseCharset(const char* text, Charset* out);

/// Unconverted - the characters that did not survive: undefined in the
/// source, or not representable in the target. A base character with its
/// nonspacing marks, and a surrogate pair, count as one character; line and
/// column (1-based, in units of the input) are where the first one starts.
struct Unconverted {
  unsigned long long count = 0;
  unsigned long long line = 0, column = 0;
};

/// Transcoder - converts a stream chunk by chunk. A character cut at a
/// chunk's end (a double-byte pair, a UTF-8 sequence), a base whose marks may
/// follow, and a CR whose LF may follow wait for the next chunk, so the
/// output does not depend on where the chunks end. It converts in slices of
/// at most `slice` bytes, so its memory does not depend on the chunks'
/// sizes.
class Transcoder {
public:
  /// kSlice - the bytes converted at a time, whatever the chunks: memory
  /// stays the same for any input.
  static constexpr size_t kSlice = 64 * 1024;

  /// `lineEnd`: what every CR LF, CR and LF becomes; null keeps them.
  /// `slice`: the bytes converted at a time (the tests make it small).
  Transcoder(const Charset& from, const Charset& to, const wchar_t* lineEnd, size_t slice = kSlice);
  ~Transcoder();
  Transcoder(const Transcoder&) = delete;
  Transcoder& operator=(const Transcoder&) = delete;

  /// Convert - appends to *out the bytes of the `n` bytes at `s`; `end`: no
  /// more input follows (what waits is converted now).
  void Convert(const char* s, size_t n, bool end, std::string* out);

  /// unconverted - the count so far and where the first was.
  const Unconverted& unconverted() const;

private:
  struct State;
  std::unique_ptr<State> state_;
};

} // namespace qxcli

#endif // QXUTIL_CLI_TRANSCODER_H
