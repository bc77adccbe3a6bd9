// qxutil convert: transcodes a text file between two catalogue members or
// UTF-8, streaming in chunks through the library's conversions
// (transcoder.h) into an output replaced whole or not at all (atomic_file.h).
#include "atomic_file.h"
#include "command.h"
#include "platform/utf8.h"
#include "text/charset_maps.h"
#include "transcoder.h"

#include <qxutil/text.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using qxcli::Charset;

namespace {

constexpr size_t kChunk = 1 << 20;              // bytes read at a time
constexpr long long kProgressFrom = 64LL << 20; // inputs at least this large show progress
constexpr const char* kUsage =
    "usage: qxutil convert --from CHARSET --to CHARSET [--line-ends keep|lf|crlf|cr|native] "
    "[--strict] [INPUT [OUTPUT]]";

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

// LineEndFor - the line end of --line-ends `mode` (null: keep them); false
// for an unknown mode.
bool LineEndFor(const char* mode, const Charset& to, const wchar_t** lineEnd) {
  *lineEnd = nullptr;
  if (!std::strcmp(mode, "keep"))
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
    if (!qxcli::ParseCharset(text, cs)) {
      qxcli::Fail(2, "unknown character set '%s'", text);
      ListCharsets();
      return 2;
    }
    if (!cs->Convertible())
      return qxcli::Fail(2, "%s has no character table in the library; it cannot be converted",
                         cs->name.c_str());
  }
  const wchar_t* lineEnd = nullptr;
  if (!LineEndFor(o.lineEnds, to, &lineEnd))
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

  qxcli::AtomicFile out;
  if (!out.Open(o.output))
    return qxcli::Fail(1, "%s: %s", o.output, std::strerror(errno));

  qxcli::Transcoder transcoder(from, to, lineEnd);
  std::vector<char> buffer(kChunk);
  std::string bytes; // the output of one chunk; its room is kept for the next
  long long done = 0;
  int shown = -1;
  for (bool end = false; !end;) {
    ssize_t n = read(in, buffer.data(), kChunk);
    if (n < 0 && errno == EINTR)
      continue;
    if (n < 0)
      return qxcli::Fail(1, "%s: %s", o.input ? o.input : "stdin", std::strerror(errno));
    end = n == 0;
    bytes.clear();
    transcoder.Convert(buffer.data(), static_cast<size_t>(n), end, &bytes);
    if (!out.Write(bytes.data(), bytes.size()))
      return qxcli::Fail(1, "write failed: %s", std::strerror(errno));
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
  const qxcli::Unconverted& lost = transcoder.unconverted();
  if (lost.count)
    std::fprintf(stderr,
                 "qxutil: %llu character(s) could not be converted from %s to %s (the first "
                 "at line %llu, column %llu)\n",
                 lost.count, from.name.c_str(), to.name.c_str(), lost.line, lost.column);
  if (o.strict && lost.count) {
    out.Abandon();
    return qxcli::Fail(1, "--strict: %s left unchanged",
                       out.target().empty() ? "output" : out.target().c_str());
  }
  if (!out.Commit())
    return qxcli::Fail(1, "%s: %s", o.output, std::strerror(errno));
  return 0;
}

} // namespace

QXUTIL_COMMAND(convert, "convert --from CS --to CS [--line-ends MODE] [--strict] [IN [OUT]]",
               "transcode a text file between two character sets or UTF-8", RunConvert);
