// qxutil convert: transcodes a text file between two catalogue members or
// UTF-8, streaming in chunks through the library's conversions.
#include "command.h"
#include "platform/codepage.h"
#include "platform/utf8.h"
#include "text/charset_maps.h"

#include <qxutil/text.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <strings.h>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace qx::win;

namespace {

constexpr size_t kChunk = 1 << 20;              // bytes read at a time
constexpr long long kProgressFrom = 64LL << 20; // inputs at least this large show progress
constexpr const char* kUsage =
    "usage: qxutil convert --from CHARSET --to CHARSET [--line-ends keep|lf|crlf|cr|native] "
    "[--strict] [INPUT [OUTPUT]]";

// ---- Character sets --------------------------------------------------------

// Charset - one side of the conversion: UTF-8, a member with a code page
// (converted by the library's code-page functions), or a member with only a
// Unicode map (converted through the map).
struct Charset {
  bool utf8 = false;
  QXCHARSET cs = QXCHARSET_NONE;
  bool page = false;
  bool dbcs = false;
  const uint16_t* map = nullptr;
  std::string name;
};

bool ParseCharset(const char* text, Charset* out) {
  out->name = text;
  if (!strcasecmp(text, "UTF-8") || !strcasecmp(text, "UTF8")) {
    out->utf8 = true;
    out->name = "UTF-8";
    return true;
  }
  std::wstring wide = qx::platform::Utf8ToWide(text);
  out->cs = Str2CS(wide.c_str());
  if (out->cs == QXCHARSET_NONE)
    return false;
  out->name = qx::platform::WideToUtf8(CS2Str(out->cs));
  out->page = GetWinCodePage(out->cs) != -1;
  out->dbcs = CharsetDBCS(out->cs);
  if (const qx::CharsetUnicodeMap* map = qx::CharsetUnicodeMapOf(out->cs))
    out->map = *map;
  return true;
}

void ListCharsets() {
  std::fprintf(stderr, "valid character sets (any letter case):\n  UTF-8\n");
  for (int i = 0; i < kQXCharsetCount; ++i) {
    QXCHARSET cs = static_cast<QXCHARSET>(i);
    bool usable = GetWinCodePage(cs) != -1 || qx::CharsetUnicodeMapOf(cs);
    std::fprintf(stderr, "  %s%s\n", qx::platform::WideToUtf8(CS2Str(cs)).c_str(),
                 usable ? "" : "  (no character table: cannot be converted)");
  }
  std::fprintf(stderr, "  ANSI (the system charset), MAC, XASCII, LICS (old names)\n");
}

// ---- Unmappable characters -------------------------------------------------

// Report - how many characters could not be represented, and where the first
// was (line and column, 1-based, in characters of the input).
struct Report {
  unsigned long long count = 0;
  unsigned long long line = 0, column = 0;
  unsigned long long curLine = 1, curColumn = 1;
  bool lastWasCr = false;

  // Walk - advances the position over `w`, counting the units flagged.
  void Walk(const std::wstring& w, const std::vector<bool>& flagged) {
    for (size_t i = 0; i < w.size(); ++i) {
      if (flagged[i] && count++ == 0) {
        line = curLine;
        column = curColumn;
      }
      wchar_t u = w[i];
      if (u == L'\n' && lastWasCr) {
        lastWasCr = false;
        continue;
      }
      lastWasCr = u == L'\r';
      if (u == L'\r' || u == L'\n') {
        ++curLine;
        curColumn = 1;
      } else {
        ++curColumn;
      }
    }
  }
};

// ---- Decoding --------------------------------------------------------------

class Decoder {
public:
  explicit Decoder(const Charset& cs) : cs_(cs) {
    if (cs.page && cs.dbcs) {
      // The page's default character: what a lead byte without its trail gives.
      wchar_t unit[2] = {};
      char lead = 0;
      for (int b = 0x81; b < 0x100 && !lead; ++b)
        if (IsDBCSLeadByteEx(CodePage(), static_cast<BYTE>(b)))
          lead = static_cast<char>(b);
      if (lead && ConvertMBCSCharToSystem(&lead, 1, cs.cs, unit, 1))
        defaultUnit_ = unit[0];
      wchar_t text[2] = {defaultUnit_, 0};
      char code[4] = {};
      ConvertSystemToMBCSChar(text, code, cs.cs, sizeof code, false);
      defaultCode_ = static_cast<uint16_t>(static_cast<unsigned char>(code[0]) << 8 |
                                           static_cast<unsigned char>(code[1]));
      if (!code[1])
        defaultCode_ >>= 8;
    }
  }

  /// Complete - how many of the n bytes make whole characters (the rest
  /// waits for the next chunk, unless this is the end).
  size_t Complete(const char* s, size_t n, bool end) const {
    if (end)
      return n;
    if (cs_.utf8) {
      size_t back = 0; // a sequence cut at the end
      while (back < 3 && back < n && (s[n - 1 - back] & 0xC0) == 0x80)
        ++back;
      if (back < n) {
        unsigned char lead = static_cast<unsigned char>(s[n - 1 - back]);
        size_t need = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
        if (need > back + 1)
          return n - 1 - back;
      }
      return n;
    }
    if (cs_.page && cs_.dbcs) {
      size_t i = 0;
      while (i < n) {
        if (!IsDBCSLeadByteEx(CodePage(), static_cast<BYTE>(s[i])))
          ++i;
        else if (i + 1 < n)
          i += 2;
        else
          break; // a lead byte whose trail is in the next chunk
      }
      return i;
    }
    return n;
  }

  /// Decode - appends the wide text of n bytes to *out and flags, for each
  /// unit, whether its character was undefined in the source.
  void Decode(const char* s, size_t n, std::wstring* out, std::vector<bool>* flags) {
    if (n == 0)
      return;
    if (cs_.utf8)
      return DecodeUtf8(reinterpret_cast<const unsigned char*>(s), n, out, flags);
    if (!cs_.page) {
      for (size_t i = 0; i < n; ++i) {
        uint16_t u = cs_.map[static_cast<unsigned char>(s[i])];
        bool unmapped = qx::IsUnmappedMarker(u);
        out->push_back(unmapped ? L'\uFFFD' : u);
        flags->push_back(unmapped);
      }
      return;
    }
    size_t base = out->size();
    wide_.resize(n + 1);
    // One unit per character (no MB_COMPOSITE), embedded NULs included.
    size_t chars = 0;
    for (size_t i = 0; i < n; ++chars)
      i += CharLength(s, n, i);
    if (!ConvertMBCSCharToSystem(s, static_cast<unsigned int>(n), cs_.cs, wide_.data(),
                                 static_cast<unsigned int>(n)))
      std::fill(wide_.begin(), wide_.end(), defaultUnit_);
    out->append(wide_.data(), chars);
    for (size_t i = 0, k = base; i < n; ++k) {
      size_t len = CharLength(s, n, i);
      uint16_t code = static_cast<unsigned char>(s[i]);
      if (len == 2)
        code = static_cast<uint16_t>(code << 8 | static_cast<unsigned char>(s[i + 1]));
      wchar_t u = (*out)[k];
      flags->push_back(u == defaultUnit_ && code != defaultCode_);
      i += len;
    }
  }

private:
  UINT CodePage() const { return static_cast<UINT>(GetWinCodePage(cs_.cs)); }

  size_t CharLength(const char* s, size_t n, size_t i) const {
    if (cs_.dbcs && i + 1 < n && s[i + 1] != 0 &&
        IsDBCSLeadByteEx(CodePage(), static_cast<BYTE>(s[i])))
      return 2;
    return 1;
  }

  static void DecodeUtf8(const unsigned char* s, size_t n, std::wstring* out,
                         std::vector<bool>* flags) {
    for (size_t i = 0; i < n;) {
      unsigned char b = s[i];
      size_t len = b < 0x80 ? 1 : b >= 0xF0 && b < 0xF5 ? 4 : b >= 0xE0 ? 3 : b >= 0xC2 ? 2 : 0;
      uint32_t c = len == 1 ? b : len == 2 ? b & 0x1F : len == 3 ? b & 0x0F : b & 0x07;
      bool ok = len != 0 && i + len <= n;
      for (size_t k = 1; ok && k < len; ++k) {
        ok = (s[i + k] & 0xC0) == 0x80;
        c = c << 6 | (s[i + k] & 0x3F);
      }
      if (ok && ((len == 3 && (c < 0x800 || (c >= 0xD800 && c < 0xE000))) ||
                 (len == 4 && (c < 0x10000 || c > 0x10FFFF))))
        ok = false;
      if (!ok) {
        out->push_back(L'\uFFFD');
        flags->push_back(true);
        ++i;
        continue;
      }
      i += len;
      if (c >= 0x10000) { // the library's text is UTF-16
        c -= 0x10000;
        out->push_back(static_cast<wchar_t>(0xD800 + (c >> 10)));
        out->push_back(static_cast<wchar_t>(0xDC00 + (c & 0x3FF)));
        flags->push_back(false);
        flags->push_back(false);
      } else {
        out->push_back(static_cast<wchar_t>(c));
        flags->push_back(false);
      }
    }
  }

  const Charset& cs_;
  std::vector<wchar_t> wide_;
  wchar_t defaultUnit_ = L'?';
  uint16_t defaultCode_ = '?';
};

// ---- Encoding --------------------------------------------------------------

class Encoder {
public:
  explicit Encoder(const Charset& cs) : cs_(cs) {
    if (!cs.utf8 && !cs.page) {
      reverse_.assign(0x10000, 0);
      for (int b = 254; b >= 1; --b) // the lowest byte wins, as in the byte tables
        if (!qx::IsUnmappedMarker(cs.map[b]))
          reverse_[cs.map[b]] = static_cast<unsigned char>(b);
    }
    if (cs.page)
      known_.assign(0x10000, 0);
  }

  /// Flag - marks the units of `w` that the target cannot represent.
  void Flag(const std::wstring& w, std::vector<bool>* flags) {
    for (size_t i = 0; i < w.size(); ++i) {
      uint32_t u = static_cast<uint32_t>(w[i]);
      bool bad;
      if (cs_.utf8)
        bad = u >= 0xD800 && u < 0xE000 && !PairAt(w, i) && !(i > 0 && PairAt(w, i - 1));
      else if (!cs_.page)
        bad = u > 0xFFFF || (u != 0 && reverse_[u] == 0);
      else if (i > 0 && IsMark(w[i]) && w[i - 1] != 0)
        bad = !PageShows(w.substr(i - 1, 2)); // the page may have it composed
      else
        bad = !PageShowsUnit(u);
      if (bad)
        (*flags)[i] = true;
    }
  }

  /// Encode - appends the bytes of `w` to *out.
  void Encode(const std::wstring& w, std::string* out) {
    if (cs_.utf8) {
      for (size_t i = 0; i < w.size(); ++i) {
        uint32_t c = static_cast<uint32_t>(w[i]);
        if (PairAt(w, i)) {
          c = 0x10000 + ((c - 0xD800) << 10) + (static_cast<uint32_t>(w[i + 1]) - 0xDC00);
          ++i;
        } else if ((c >= 0xD800 && c < 0xE000) || c > 0x10FFFF) {
          c = 0xFFFD;
        }
        AppendUtf8(c, out);
      }
      return;
    }
    if (!cs_.page) {
      for (wchar_t u : w) {
        uint32_t c = static_cast<uint32_t>(u);
        unsigned char b = c == 0 ? 0 : c > 0xFFFF ? 0 : reverse_[c];
        out->push_back(c != 0 && b == 0 ? static_cast<char>(CharsetUnknownCode(cs_.cs))
                                        : static_cast<char>(b));
      }
      return;
    }
    // ConvertSystemToMBCSChar takes terminated text: convert the runs
    // between embedded NULs.
    for (size_t start = 0; start <= w.size();) {
      size_t end = w.find(L'\0', start);
      if (end == std::wstring::npos)
        end = w.size();
      if (end > start) {
        std::wstring run = w.substr(start, end - start);
        bytes_.resize(run.size() * 2 + 1);
        if (ConvertSystemToMBCSChar(run.c_str(), bytes_.data(), cs_.cs,
                                    static_cast<unsigned int>(bytes_.size()), false))
          out->append(bytes_.data());
      }
      if (end < w.size())
        out->push_back('\0');
      start = end + 1;
    }
  }

private:
  static bool PairAt(const std::wstring& w, size_t i) {
    return w[i] >= 0xD800 && w[i] < 0xDC00 && i + 1 < w.size() && w[i + 1] >= 0xDC00 &&
           w[i + 1] < 0xE000;
  }

  static bool IsMark(wchar_t u) { return u >= 0x300 && u < 0x370; }

  bool PageShows(const std::wstring& text) {
    char out[16] = {};
    if (!ConvertSystemToMBCSChar(text.c_str(), out, cs_.cs, sizeof out, false))
      return false;
    size_t questions = 0;
    for (wchar_t u : text)
      questions += u == L'?';
    size_t written = 0;
    for (const char* p = out; *p; ++p)
      written += *p == '?';
    return written <= questions;
  }

  bool PageShowsUnit(uint32_t u) {
    if (u == 0)
      return true;
    if (u > 0xFFFF)
      return false;
    if (!known_[u])
      known_[u] = PageShows(std::wstring(1, static_cast<wchar_t>(u))) ? 1 : 2;
    return known_[u] == 1;
  }

  static void AppendUtf8(uint32_t c, std::string* out) {
    if (c < 0x80) {
      out->push_back(static_cast<char>(c));
    } else if (c < 0x800) {
      out->push_back(static_cast<char>(0xC0 | c >> 6));
      out->push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
      out->push_back(static_cast<char>(0xE0 | c >> 12));
      out->push_back(static_cast<char>(0x80 | (c >> 6 & 0x3F)));
      out->push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
      out->push_back(static_cast<char>(0xF0 | c >> 18));
      out->push_back(static_cast<char>(0x80 | (c >> 12 & 0x3F)));
      out->push_back(static_cast<char>(0x80 | (c >> 6 & 0x3F)));
      out->push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
  }

  const Charset& cs_;
  std::vector<unsigned char> reverse_; // map targets: unit => byte, 0 if none
  std::vector<unsigned char> known_;   // page targets: 0 untested, 1 shown, 2 not
  std::vector<char> bytes_;
};

// ---- Line ends -------------------------------------------------------------

// RewriteLineEnds - every CR LF, CR and LF of `w` as `lineEnd` (a CR that
// ends a chunk was held back, so a pair is never split).
void RewriteLineEnds(std::wstring* w, const std::wstring& lineEnd) {
  std::wstring out;
  out.reserve(w->size() + w->size() / 16);
  for (size_t i = 0; i < w->size(); ++i) {
    wchar_t u = (*w)[i];
    if (u == L'\r' && i + 1 < w->size() && (*w)[i + 1] == L'\n')
      continue; // the pair is one line break: its LF writes it
    if (u == L'\r' || u == L'\n')
      out += lineEnd;
    else
      out += u;
  }
  w->swap(out);
}

// ---- Files -----------------------------------------------------------------

bool WriteAll(int fd, const std::string& bytes) {
  size_t done = 0;
  while (done < bytes.size()) {
    ssize_t n = write(fd, bytes.data() + done, bytes.size() - done);
    if (n < 0 && errno == EINTR)
      continue;
    if (n <= 0)
      return false;
    done += static_cast<size_t>(n);
  }
  return true;
}

// Output - the target: stdout, or a temporary file beside OUTPUT renamed
// into place by Commit (Abandon removes it, leaving OUTPUT as it was).
class Output {
public:
  bool Open(const char* path) {
    if (!path || !std::strcmp(path, "-")) {
      fd_ = STDOUT_FILENO;
      return true;
    }
    path_ = path;
    temp_ = path_ + ".qxutil-XXXXXX";
    fd_ = mkstemp(temp_.data());
    if (fd_ < 0)
      return false;
    struct stat st;
    mode_t mode;
    if (stat(path, &st) == 0) {
      mode = st.st_mode & 07777;
    } else {
      mode_t mask = umask(0);
      umask(mask);
      mode = 0666 & ~mask;
    }
    fchmod(fd_, mode);
    return true;
  }

  int fd() const { return fd_; }

  bool Commit() {
    if (path_.empty())
      return true;
    bool ok = fsync(fd_) == 0;
    ok = close(fd_) == 0 && ok;
    fd_ = -1;
    if (ok && rename(temp_.c_str(), path_.c_str()) == 0)
      return true;
    unlink(temp_.c_str());
    return false;
  }

  void Abandon() {
    if (path_.empty() || fd_ < 0)
      return;
    close(fd_);
    fd_ = -1;
    unlink(temp_.c_str());
  }

  ~Output() { Abandon(); }

private:
  int fd_ = -1;
  std::string path_, temp_;
};

// ---- The command -----------------------------------------------------------

struct Options {
  const char* from = nullptr;
  const char* to = nullptr;
  const char* lineEnds = "keep";
  bool strict = false;
  const char* input = nullptr;
  const char* output = nullptr;
};

bool ParseOptions(int argc, char** argv, Options* o) {
  int positional = 0;
  for (int i = 1; i < argc; ++i) {
    const char* a = argv[i];
    const char** value = !std::strcmp(a, "--from")        ? &o->from
                         : !std::strcmp(a, "--to")        ? &o->to
                         : !std::strcmp(a, "--line-ends") ? &o->lineEnds
                                                          : nullptr;
    if (value) {
      if (++i >= argc)
        return false;
      *value = argv[i];
    } else if (!std::strcmp(a, "--strict")) {
      o->strict = true;
    } else if (a[0] == '-' && a[1] != '\0') {
      return false;
    } else if (positional == 0) {
      o->input = a, ++positional;
    } else if (positional == 1) {
      o->output = a, ++positional;
    } else {
      return false;
    }
  }
  return o->from && o->to;
}

bool LineEndFor(const char* mode, const Charset& to, std::wstring* lineEnd, bool* keep) {
  *keep = !std::strcmp(mode, "keep");
  if (*keep)
    return true;
  if (!std::strcmp(mode, "lf"))
    *lineEnd = L"\n";
  else if (!std::strcmp(mode, "crlf"))
    *lineEnd = L"\r\n";
  else if (!std::strcmp(mode, "cr"))
    *lineEnd = L"\r";
  else if (!std::strcmp(mode, "native"))
    *lineEnd = to.utf8 ? L"\n" : CharsetSlashN(to.cs);
  else
    return false;
  return true;
}

int RunConvert(int argc, char** argv) {
  Options o;
  if (!ParseOptions(argc, argv, &o))
    return qxcli::Fail(2, "%s", kUsage);
  Charset from, to;
  for (auto [text, cs] : {std::pair{o.from, &from}, std::pair{o.to, &to}}) {
    if (!ParseCharset(text, cs)) {
      qxcli::Fail(2, "unknown character set '%s'", text);
      ListCharsets();
      return 2;
    }
    if (!cs->utf8 && !cs->page && !cs->map)
      return qxcli::Fail(2, "%s has no character table in the library; it cannot be converted",
                         cs->name.c_str());
  }
  std::wstring lineEnd;
  bool keep = true;
  if (!LineEndFor(o.lineEnds, to, &lineEnd, &keep))
    return qxcli::Fail(2, "--line-ends takes keep, lf, crlf, cr or native");

  int in = STDIN_FILENO;
  if (o.input && std::strcmp(o.input, "-")) {
    in = open(o.input, O_RDONLY | O_CLOEXEC);
    if (in < 0)
      return qxcli::Fail(1, "%s: %s", o.input, std::strerror(errno));
  }
  struct stat st;
  long long total = fstat(in, &st) == 0 && S_ISREG(st.st_mode) ? st.st_size : -1;
  bool progress = isatty(STDERR_FILENO) && total >= kProgressFrom;

  Output out;
  if (!out.Open(o.output))
    return qxcli::Fail(1, "%s: %s", o.output, std::strerror(errno));

  Decoder decoder(from);
  Encoder encoder(to);
  Report report;
  std::vector<char> buffer(kChunk + 8);
  size_t carried = 0;     // bytes of an unfinished character from the last chunk
  std::wstring pendingCr; // a CR at a chunk's end waits for a possible LF
  long long done = 0;
  int shown = -1;
  bool end = false;
  while (!end) {
    ssize_t n = read(in, buffer.data() + carried, kChunk);
    if (n < 0 && errno == EINTR)
      continue;
    if (n < 0) {
      qxcli::Fail(1, "%s: %s", o.input ? o.input : "stdin", std::strerror(errno));
      return 1;
    }
    end = n == 0;
    size_t have = carried + static_cast<size_t>(n);
    size_t whole = decoder.Complete(buffer.data(), have, end);
    std::wstring wide = pendingCr;
    pendingCr.clear();
    std::vector<bool> flags(wide.size(), false);
    decoder.Decode(buffer.data(), whole, &wide, &flags);
    carried = have - whole;
    std::memmove(buffer.data(), buffer.data() + whole, carried);
    if (!end && !wide.empty() && wide.back() == L'\r') {
      pendingCr = L"\r";
      wide.pop_back();
      flags.pop_back();
    }
    encoder.Flag(wide, &flags);
    report.Walk(wide, flags);
    if (!keep)
      RewriteLineEnds(&wide, lineEnd);
    std::string bytes;
    encoder.Encode(wide, &bytes);
    if (!WriteAll(out.fd(), bytes)) {
      qxcli::Fail(1, "write failed: %s", std::strerror(errno));
      return 1;
    }
    done += n;
    if (progress && total > 0 && static_cast<int>(done * 100 / total) != shown) {
      shown = static_cast<int>(done * 100 / total);
      std::fprintf(stderr, "\rqxutil convert: %3d%%", shown);
    }
  }
  if (progress)
    std::fputc('\n', stderr);
  if (in != STDIN_FILENO)
    close(in);
  if (report.count)
    std::fprintf(stderr,
                 "qxutil: %llu character(s) could not be converted from %s to %s (the first "
                 "at line %llu, column %llu)\n",
                 report.count, from.name.c_str(), to.name.c_str(), report.line, report.column);
  if (o.strict && report.count) {
    out.Abandon();
    return qxcli::Fail(1, "--strict: %s left unchanged",
                       o.output && std::strcmp(o.output, "-") ? o.output : "output");
  }
  if (!out.Commit())
    return qxcli::Fail(1, "%s: %s", o.output, std::strerror(errno));
  return 0;
}

} // namespace

QXUTIL_COMMAND(convert, "convert --from CS --to CS [--line-ends MODE] [--strict] [IN [OUT]]",
               "transcode a text file between two character sets or UTF-8", RunConvert);
