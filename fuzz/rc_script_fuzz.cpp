// Resource scripts into the reader behind 'qxutil strings compile', two
// ways. Hostile: the input is the script; its first bytes also stand for a
// header it may include ("ids.h"), and a script that includes itself meets
// the nesting and include bounds; whatever the bytes, the reader returns
// (strings or an error naming a line) without crashing, hanging or reading
// out of bounds, and what it reads, the module's source writer must turn
// into plain ASCII. Round trip: the input also drives a writer of random
// tables (ids as numbers, macros and expressions; texts in narrow and wide
// literals with every escape, doubled quotes, NULs, characters beyond the
// BMP; keywords in any case, braces, memory flags, comments, continued
// lines, false conditional sections, UTF-8 with or without a mark and
// UTF-16 of either byte order), whose strings the reader must give back.
#include "rc_script.h"
#include "string_module_source.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace {

/// Bytes - reads the input, as zeros once it has run out.
struct Bytes {
  const uint8_t* data;
  size_t size;
  unsigned Next(unsigned n) { return size ? (--size, *data++) % n : 0; }
};

void Utf8(uint32_t c, std::string* out) {
  if (c < 0x80) {
    *out += static_cast<char>(c);
  } else if (c < 0x800) {
    *out += static_cast<char>(0xC0 | c >> 6);
    *out += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    *out += static_cast<char>(0xE0 | c >> 12);
    *out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
    *out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    *out += static_cast<char>(0xF0 | c >> 18);
    *out += static_cast<char>(0x80 | (c >> 12 & 0x3F));
    *out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
    *out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

// The characters of the texts: letters, quotes, backslashes, controls, NUL,
// hex and octal digits (which must not join an escape before them), Latin,
// CJK and one beyond the BMP.
const uint32_t kChars[] = {'a',  'Z', '0', '7', '9', 'f', 'x', ' ',  '"',    '\\',   '\n',   '\r',
                           '\t', 8,   0,   1,   '/', '*', '#', 0xE9, 0x20AC, 0x3042, 0x1F600};

// Literal - `text` (characters) as one literal, each character written in
// one of the forms it allows.
std::string Literal(const std::vector<uint32_t>& text, bool wide, Bytes& in) {
  std::string out = wide ? "L\"" : "\"";
  char buffer[16];
  for (uint32_t c : text) {
    const unsigned form = in.Next(4);
    if (c == '"') {
      out += form % 2 ? "\"\"" : "\\\"";
    } else if (c == '\\' || c == '\n' || c == '\r' || c == '\t' || c == 8) {
      const char* names = c == '\\'   ? "\\\\"
                          : c == '\n' ? "nN"
                          : c == '\r' ? "rR"
                          : c == '\t' ? "tT"
                                      : "aA";
      out += '\\';
      out += names[form % 2];
    } else if (c < 0x80 && (c < 0x20 || c == 0x7F || form == 0)) {
      std::snprintf(buffer, sizeof buffer, wide ? "\\x%04X" : "\\x%02x", c);
      out += buffer;
    } else if (c < 0x80 && form == 1) {
      std::snprintf(buffer, sizeof buffer, "\\%03o", c);
      out += buffer;
    } else if (c > 0xFFFF || !wide || form < 3) {
      Utf8(c, &out);
    } else {
      std::snprintf(buffer, sizeof buffer, "\\x%04X", c);
      out += buffer;
    }
  }
  return out + "\"";
}

// Id - `id` as a number in one of C's forms, or an expression.
std::string Id(unsigned id, Bytes& in) {
  static const char* const kForms[] = {"0x%X", "0%o", "%uL", "-(-%u)", "%u"};
  char buffer[48];
  const unsigned form = in.Next(6);
  if (form < 5)
    std::snprintf(buffer, sizeof buffer, kForms[form], id);
  else
    std::snprintf(buffer, sizeof buffer, "(%u * 2 + %u - %u)", id / 2, id % 2 + 7, 7u);
  return buffer;
}

// RoundTrip - writes random tables, reads them back.
void RoundTrip(Bytes& in) {
  std::map<unsigned, std::vector<uint32_t>> strings;
  // Sections that must be passed over: two definitions of one id, and a
  // division by zero in a condition not evaluated.
  const char* const bogus = "STRINGTABLE { 1 \"no\" 1 \"no\" }\n";
  const unsigned sections = in.Next(3);
  std::string script = sections == 0 ? ""
                       : sections == 1
                           ? "#if 0\n" + std::string(bogus) + "#endif\n"
                           : "#define FLAG\n#if defined(FLAG) && !defined OTHER\n#elif 1/0\n" +
                                 std::string(bogus) + "#else\n" + bogus +
                                 "#endif\n#ifdef OTHER\n#if 1/0\n#endif\n#elif 0\n#else\n#endif\n"
                                 "#undef FLAG\n#ifndef FLAG\n";
  const unsigned tables = 1 + in.Next(3);
  for (unsigned t = 0; t < tables; ++t) {
    const char* openings[] = {"STRINGTABLE\nBEGIN\n", "stringtable discardable {\n",
                              "StringTable\nLANGUAGE 9, 1\nbegin /* a comment */\n"};
    const unsigned opening = in.Next(3);
    script += openings[opening];
    for (unsigned e = in.Next(6); e > 0; --e) {
      const unsigned id = (in.Next(256) << 8 | in.Next(256)) ^ t << 13;
      if (strings.count(id))
        continue;
      std::vector<uint32_t>& text = strings[id];
      for (unsigned n = in.Next(12); n > 0; --n)
        text.push_back(kChars[in.Next(sizeof kChars / sizeof kChars[0])]);
      std::string name = Id(id, in);
      if (in.Next(3) == 0) { // a macro, its value on a continued line
        char macro[16];
        std::snprintf(macro, sizeof macro, "IDS_%u", id);
        script = "#define " + std::string(macro) + " \\\n  " + name + "\n" + script;
        name = macro;
      }
      script += name + (in.Next(2) ? ", " : " ");
      // Up to three literals, narrow or wide, split between characters.
      size_t cut1 = text.empty() ? 0 : in.Next(static_cast<unsigned>(text.size()) + 1);
      size_t cut2 =
          cut1 + (text.size() > cut1 ? in.Next(static_cast<unsigned>(text.size() - cut1) + 1) : 0);
      const size_t cuts[] = {0, cut1, cut2, text.size()};
      for (int k = 0; k < 3; ++k) {
        if (k > 0 && cuts[k] == cuts[k + 1])
          continue;
        std::string literal =
            Literal(std::vector<uint32_t>(text.begin() + cuts[k], text.begin() + cuts[k + 1]),
                    in.Next(2), in);
        if (in.Next(4) == 0) { // a macro that is a literal
          const std::string macro = "STR_" + std::to_string(id) + "_" + std::to_string(k);
          script = "#define " + macro + " " + literal + "\n" + script;
          literal = macro;
        }
        script += literal + (k < 2 && in.Next(3) == 0 ? "\n  " : " ");
      }
      script += in.Next(4) == 0 ? "// the end\n" : "\n";
    }
    script += opening == 1 ? "}\n" : "END\n";
  }
  if (sections == 2)
    script += "#endif\n";
  const unsigned encoding = in.Next(4);
  std::string bytes;
  if (encoding < 2) {
    bytes = encoding ? "\xEF\xBB\xBF" + script : script;
  } else { // UTF-16, little-endian (FF FE) or big-endian (FE FF)
    const bool little = encoding == 2;
    bytes = little ? "\xFF\xFE" : "\xFE\xFF";
    for (size_t i = 0; i < script.size();) {
      const unsigned char b = static_cast<unsigned char>(script[i]);
      const int length = b < 0x80 ? 1 : b < 0xE0 ? 2 : b < 0xF0 ? 3 : 4;
      uint32_t c = length == 1 ? b : b & (0x3F >> (length - 1));
      for (int k = 1; k < length; ++k)
        c = c << 6 | (static_cast<unsigned char>(script[i + k]) & 0x3F);
      i += length;
      const uint16_t units[2] = {
          static_cast<uint16_t>(c > 0xFFFF ? 0xD800 + ((c - 0x10000) >> 10) : c),
          static_cast<uint16_t>(0xDC00 + ((c - 0x10000) & 0x3FF))};
      for (int u = 0; u < (c > 0xFFFF ? 2 : 1); ++u) {
        bytes += static_cast<char>(little ? units[u] & 0xFF : units[u] >> 8);
        bytes += static_cast<char>(little ? units[u] >> 8 : units[u] & 0xFF);
      }
    }
  }
  qxcli::RcOptions options;
  options.read = [&](const std::string& path, std::string* out) {
    return path == "main.rc" && (*out = bytes, true);
  };
  qxcli::RcScript out;
  std::string error;
  if (!qxcli::ReadRcScript("main.rc", options, &out, &error) ||
      out.strings.size() != strings.size()) {
    std::fprintf(stderr, "%s\n%s\n", script.c_str(), error.c_str());
    std::abort();
  }
  size_t i = 0;
  for (const auto& [id, text] : strings) {
    std::wstring want;
    for (uint32_t c : text) {
      if (c > 0xFFFF) {
        want += static_cast<wchar_t>(0xD800 + ((c - 0x10000) >> 10));
        want += static_cast<wchar_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
      } else {
        want += static_cast<wchar_t>(c);
      }
    }
    if (out.strings[i].id != id || out.strings[i].text != want) {
      std::fprintf(stderr, "%s\nstring %u differs\n", script.c_str(), id);
      std::abort();
    }
    ++i;
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Bytes in{data, size};
  RoundTrip(in);
  const std::string script(reinterpret_cast<const char*>(data), size);
  const std::string header = script.substr(0, script.size() / 3);
  qxcli::RcOptions options;
  options.includeDirs = {"inc"};
  options.read = [&](const std::string& path, std::string* bytes) {
    if (path == "main.rc")
      *bytes = script;
    else if (path == "inc/ids.h" || path == "ids.h")
      *bytes = header;
    else
      return false;
    return true;
  };
  qxcli::RcScript out;
  std::string error;
  if (!qxcli::ReadRcScript("main.rc", options, &out, &error)) {
    if (error.empty())
      std::abort();
    return 0;
  }
  unsigned last = 0;
  for (size_t i = 0; i < out.strings.size(); ++i) {
    const qxcli::RcString& s = out.strings[i];
    if (s.id > 0xFFFF || s.text.size() > 0xFFFF || (i && s.id <= last))
      std::abort();
    last = s.id;
  }
  for (char c : qxcli::StringModuleSource(out.strings, "main.rc"))
    if (static_cast<unsigned char>(c) >= 0x80)
      std::abort();
  return 0;
}
