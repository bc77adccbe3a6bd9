// qxutil strings compile: the STRINGTABLE blocks of a Windows resource
// script, preprocessed as the resource compiler does (see rc_script.h).
#include "rc_script.h"

#include "platform/codepage.h"
#include "platform/utf8.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>

namespace qxcli {

namespace {

constexpr int kUtf8 = 65001;
constexpr int kMaxIncludeDepth = 32;
constexpr int kMaxIncludes = 256;
constexpr size_t kMaxExpansion = 10000;   // tokens one use of a macro may give
constexpr size_t kMaxMacroNesting = 64;   // macros expanding inside one another
constexpr size_t kMaxTokens = 1000000;    // the preprocessed script
constexpr int kMaxExpressionDepth = 256;  // nested parentheses and unary operators
constexpr size_t kMaxStringUnits = 65535; // a string's length is a 16-bit count
constexpr uintmax_t kMaxFileBytes = 64 << 20;

enum class Kind { kIdent, kNumber, kString, kPunct };

struct Token {
  Kind kind = Kind::kPunct;
  std::string text;       // spelling; for a string, the raw bytes between its quotes
  bool wide = false;      // L"..."
  bool terminated = true; // a string closed on its line
  bool lineStart = false; // the first token of a line
  bool spaceBefore = false;
  int codePage = kUtf8; // a string's code page where it was read
  int file = 0;
  int line = 0;

  bool Is(const char* punct) const { return kind == Kind::kPunct && text == punct; }
};

bool IEquals(const std::string& a, const char* b) {
  size_t i = 0;
  for (; i < a.size() && b[i]; ++i)
    if (std::tolower(static_cast<unsigned char>(a[i])) !=
        std::tolower(static_cast<unsigned char>(b[i])))
      return false;
  return i == a.size() && !b[i];
}

bool IsIdentStart(char c) { return std::isalpha(static_cast<unsigned char>(c)) || c == '_'; }
bool IsIdentChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

// Lex - the tokens of one file (comments and line continuations removed).
std::vector<Token> Lex(const std::string& s, int file) {
  static const char* const kPairs[] = {"<<", ">>", "<=", ">=", "==", "!=", "&&", "||", "##"};
  std::vector<Token> out;
  const size_t n = s.size();
  size_t i = 0;
  int line = 1;
  bool lineStart = true, space = false;
  auto isBreak = [&](size_t at) { return at < n && (s[at] == '\n' || s[at] == '\r'); };
  // SkipBreak - past the line break at `at` (LF, CR LF or CR).
  auto skipBreak = [&](size_t at) {
    return s[at] == '\r' && at + 1 < n && s[at + 1] == '\n' ? at + 2 : at + 1;
  };
  while (i < n) {
    const char c = s[i];
    if (isBreak(i)) {
      i = skipBreak(i), ++line, lineStart = space = true;
      continue;
    }
    if (c == ' ' || c == '\t' || c == '\v' || c == '\f') {
      ++i, space = true;
      continue;
    }
    if (c == '\\' && isBreak(i + 1)) { // a line continued
      i = skipBreak(i + 1), ++line, space = true;
      continue;
    }
    if (c == '/' && i + 1 < n && s[i + 1] == '/') {
      while (i < n && !isBreak(i))
        ++i;
      space = true;
      continue;
    }
    if (c == '/' && i + 1 < n && s[i + 1] == '*') {
      for (i += 2; i < n && !(s[i] == '*' && i + 1 < n && s[i + 1] == '/');)
        if (isBreak(i))
          i = skipBreak(i), ++line;
        else
          ++i;
      i = std::min(n, i + 2), space = true;
      continue;
    }
    Token t;
    t.file = file, t.line = line, t.lineStart = lineStart, t.spaceBefore = space;
    lineStart = space = false;
    const bool wide = c == 'L' && i + 1 < n && s[i + 1] == '"';
    if (c == '"' || wide) {
      t.kind = Kind::kString, t.wide = wide, t.terminated = false;
      i += wide ? 2 : 1;
      const size_t start = i;
      while (i < n && !isBreak(i)) {
        if (s[i] == '\\' && i + 1 < n && !isBreak(i + 1)) {
          i += 2;
        } else if (s[i] == '"' && i + 1 < n && s[i + 1] == '"') {
          i += 2; // a doubled quote stands for one
        } else if (s[i] == '"') {
          t.terminated = true;
          break;
        } else {
          ++i;
        }
      }
      t.text = s.substr(start, i - start);
      i += t.terminated;
    } else if (IsIdentStart(c) || std::isdigit(static_cast<unsigned char>(c))) {
      t.kind = IsIdentStart(c) ? Kind::kIdent : Kind::kNumber;
      const size_t start = i;
      while (i < n && (IsIdentChar(s[i]) || (t.kind == Kind::kNumber && s[i] == '.')))
        ++i;
      t.text = s.substr(start, i - start);
    } else {
      t.kind = Kind::kPunct;
      t.text = std::string(1, c);
      for (const char* pair : kPairs)
        if (c == pair[0] && i + 1 < n && s[i + 1] == pair[1])
          t.text = pair;
      i += t.text.size();
    }
    out.push_back(std::move(t));
  }
  return out;
}

// ParseNumber - a C integer literal (decimal, 0x hex, 0 octal, with any of
// the suffixes u, l); false for anything else or a value beyond 64 bits.
bool ParseNumber(const std::string& text, uint64_t* value) {
  size_t i = 0;
  unsigned base = 10;
  if (text.size() > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X'))
    base = 16, i = 2;
  else if (text[0] == '0')
    base = 8;
  const size_t first = i;
  uint64_t v = 0;
  for (; i < text.size(); ++i) {
    const char c = static_cast<char>(std::tolower(static_cast<unsigned char>(text[i])));
    unsigned digit = c >= '0' && c <= '9'   ? unsigned(c - '0')
                     : c >= 'a' && c <= 'f' ? unsigned(c - 'a' + 10)
                                            : 99;
    if (digit >= base)
      break;
    if (v > (UINT64_MAX - digit) / base)
      return false;
    v = v * base + digit;
  }
  if (i == first && base == 16)
    return false;
  for (; i < text.size(); ++i)
    if (!std::strchr("uUlL", text[i]))
      return false;
  *value = v;
  return true;
}

// Utf16ToUtf8 - a UTF-16 file (after its byte-order mark) as UTF-8.
std::string Utf16ToUtf8(const std::string& bytes, size_t from, bool bigEndian) {
  std::vector<wchar_t> units;
  for (size_t i = from; i + 1 < bytes.size(); i += 2) {
    unsigned a = static_cast<unsigned char>(bytes[i]), b = static_cast<unsigned char>(bytes[i + 1]);
    units.push_back(static_cast<wchar_t>(bigEndian ? a << 8 | b : b << 8 | a));
  }
  std::string out(qx::platform::Utf8Encoder::MaxBytes(units.size()), '\0');
  qx::platform::Utf8Encoder encoder;
  out.resize(encoder.Encode(units.data(), units.size(), true, out.data()));
  return out;
}

// AppendDecoded - `bytes` in code page `cp`, appended as UTF-16 units.
void AppendDecoded(int cp, const std::string& bytes, std::wstring* out) {
  if (bytes.empty())
    return;
  std::vector<wchar_t> units(bytes.size() + 1);
  size_t n = 0;
  if (cp == kUtf8) {
    qx::platform::Utf8Decoder decoder;
    n = decoder.Decode(bytes.data(), bytes.size(), true, units.data());
  } else {
    int got = qx::win::MultiByteToWideChar(static_cast<UINT>(cp), 0, bytes.data(),
                                           static_cast<int>(bytes.size()), units.data(),
                                           static_cast<int>(units.size()));
    n = got > 0 ? static_cast<size_t>(got) : 0;
  }
  out->append(units.data(), n);
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9')
    return c - '0';
  c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

// DecodeString - a string literal's units: its bytes in its code page, with
// the escapes the resource compiler knows (an unknown one keeps its
// backslash). In "..." an escape gives a byte of the code page; in L"..."
// it gives a unit.
std::wstring DecodeString(const Token& t) {
  std::wstring out;
  std::string bytes; // in the code page, not yet decoded
  auto unit = [&](unsigned value) {
    if (t.wide) {
      AppendDecoded(t.codePage, bytes, &out);
      bytes.clear();
      out.push_back(static_cast<wchar_t>(value & 0xFFFF));
    } else {
      bytes.push_back(static_cast<char>(value & 0xFF));
    }
  };
  const std::string& s = t.text;
  for (size_t i = 0; i < s.size();) {
    const char c = s[i];
    if (c == '"') { // always doubled inside a literal
      unit('"'), i += 2;
      continue;
    }
    if (c != '\\' || i + 1 >= s.size()) {
      bytes.push_back(c), ++i;
      continue;
    }
    const char e = s[i + 1];
    i += 2;
    switch (e) {
    case 'n':
    case 'N':
      unit('\n');
      break;
    case 'r':
    case 'R':
      unit('\r');
      break;
    case 't':
    case 'T':
      unit('\t');
      break;
    case 'a':
    case 'A':
      unit(0x08);
      break; // the resource compiler's reading of \a
    case '\\':
      unit('\\');
      break;
    case '"':
      unit('"');
      break;
    case 'x':
    case 'X': {
      const size_t most = t.wide ? 4 : 2;
      unsigned value = 0;
      size_t k = 0;
      for (; k < most && i + k < s.size() && HexDigit(s[i + k]) >= 0; ++k)
        value = value * 16 + static_cast<unsigned>(HexDigit(s[i + k]));
      if (k == 0) {
        unit('\\'), unit(static_cast<unsigned char>(e));
      } else {
        unit(value), i += k;
      }
      break;
    }
    default:
      if (e >= '0' && e <= '7') {
        unsigned value = static_cast<unsigned>(e - '0');
        for (size_t k = 0; k < 2 && i < s.size() && s[i] >= '0' && s[i] <= '7'; ++k, ++i)
          value = value * 8 + static_cast<unsigned>(s[i] - '0');
        unit(value);
      } else {
        bytes.push_back('\\'), bytes.push_back(e);
      }
    }
  }
  AppendDecoded(t.codePage, bytes, &out);
  return out;
}

// ReadFileSystem - the file at `path`, or, when no file is spelled so, the
// one in its directory whose name matches ignoring letter case.
bool ReadFileSystem(const std::string& path, std::string* bytes) {
  namespace fs = std::filesystem;
  std::error_code ec;
  fs::path p(path);
  if (!fs::is_regular_file(p, ec)) {
    fs::path dir = p.parent_path().empty() ? fs::path(".") : p.parent_path();
    auto lower = [](std::string s) {
      for (char& c : s)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      return s;
    };
    const std::string want = lower(p.filename().string());
    bool found = false;
    for (fs::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
      if (lower(it->path().filename().string()) == want && it->is_regular_file(ec)) {
        p = it->path(), found = true;
        break;
      }
    }
    if (!found)
      return false;
  }
  const uintmax_t size = fs::file_size(p, ec);
  if (ec || size > kMaxFileBytes)
    return false;
  std::ifstream in(p, std::ios::binary);
  if (!in)
    return false;
  bytes->assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return !in.bad();
}

std::string DirectoryOf(const std::string& path) {
  size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

// Reader - one run over a script and the files it includes.
class Reader {
public:
  Reader(const RcOptions& options, RcScript* out, std::string* error)
      : options_(options), out_(out), error_(error) {
    read_ = options.read ? options.read : RcFileReader(ReadFileSystem);
  }

  bool Run(const std::string& path) {
    std::string bytes;
    if (!read_(path, &bytes)) {
      *error_ = path + ": cannot read the file";
      return false;
    }
    if (!ProcessFile(path, bytes, 0) || !ParseTables())
      return false;
    std::sort(out_->strings.begin(), out_->strings.end(),
              [](const RcString& a, const RcString& b) { return a.id < b.id; });
    return true;
  }

private:
  struct Macro {
    std::vector<Token> body;
    bool function = false;
  };
  struct Branch {
    bool parentActive; // the code around the #if is read
    bool active;       // the current branch is read
    bool taken;        // a branch was taken
    bool seenElse;
    Token at;
  };
  // Expression - the state of one expression being evaluated.
  struct Expression {
    const std::vector<Token>& tokens;
    size_t pos;
    bool preprocessor; // unknown names are 0 (#if), not errors (identifiers)
    const Token& anchor;
    int depth = 0;
    const Token& At() const { return pos < tokens.size() ? tokens[pos] : anchor; }
  };

  bool Fail(const Token& at, const std::string& what) {
    *error_ = files_[static_cast<size_t>(at.file)] + ":" + std::to_string(at.line) + ": " + what;
    return false;
  }
  std::string Where(const Token& at) const {
    return files_[static_cast<size_t>(at.file)] + ":" + std::to_string(at.line);
  }
  bool Active() const { return conditions_.empty() || conditions_.back().active; }

  bool ProcessFile(const std::string& path, const std::string& raw, int depth) {
    const int file = static_cast<int>(files_.size());
    files_.push_back(path);
    if (std::find(out_->files.begin(), out_->files.end(), path) == out_->files.end())
      out_->files.push_back(path);
    bool unicode = true;
    std::string text;
    if (raw.compare(0, 3, "\xEF\xBB\xBF") == 0)
      text = raw.substr(3);
    else if (raw.compare(0, 2, "\xFF\xFE") == 0 || raw.compare(0, 2, "\xFE\xFF") == 0)
      text = Utf16ToUtf8(raw, 2, raw[0] == '\xFE');
    else
      text = raw, unicode = false;
    std::vector<Token> tokens = Lex(text, file);
    const size_t outerConditions = conditions_.size();
    for (size_t i = 0; i < tokens.size();) {
      if (tokens[i].Is("#") && tokens[i].lineStart) {
        size_t end = i + 1;
        while (end < tokens.size() && !tokens[end].lineStart)
          ++end;
        for (size_t k = i; k < end; ++k)
          tokens[k].codePage = unicode ? kUtf8 : codePage_;
        std::vector<Token> directive(tokens.begin() + static_cast<long>(i) + 1,
                                     tokens.begin() + static_cast<long>(end));
        if (!Directive(tokens[i], directive, path, depth, unicode, outerConditions))
          return false;
        i = end;
        continue;
      }
      tokens[i].codePage = unicode ? kUtf8 : codePage_;
      if (Active() && !Emit(tokens[i]))
        return false;
      ++i;
    }
    if (conditions_.size() > outerConditions)
      return Fail(conditions_.back().at, "#if without #endif");
    return true;
  }

  bool Directive(const Token& hash, const std::vector<Token>& d, const std::string& path, int depth,
                 bool unicode, size_t outerConditions) {
    if (d.empty() || d[0].kind != Kind::kIdent)
      return true; // the null directive, or a line marker
    const std::string& name = d[0].text;
    if (name == "if" || name == "ifdef" || name == "ifndef") {
      const bool parent = Active();
      bool value = false;
      if (parent && !EvaluateCondition(hash, d, &value))
        return false;
      conditions_.push_back({parent, parent && value, parent && value, false, hash});
      return true;
    }
    if (name == "elif" || name == "else" || name == "endif") {
      if (conditions_.size() <= outerConditions)
        return Fail(hash, "#" + name + " without #if");
      Branch& c = conditions_.back();
      if (name == "endif") {
        conditions_.pop_back();
        return true;
      }
      if (c.seenElse)
        return Fail(hash, "#" + name + " after #else");
      c.seenElse = name == "else";
      bool value = name == "else";
      if (c.parentActive && !c.taken && !value && !EvaluateCondition(hash, d, &value))
        return false;
      c.active = c.parentActive && !c.taken && value;
      c.taken = c.taken || c.active;
      return true;
    }
    if (!Active())
      return true;
    if (name == "define" || name == "undef") {
      if (d.size() < 2 || d[1].kind != Kind::kIdent)
        return Fail(hash, "#" + name + " needs a name");
      if (name == "undef") {
        macros_.erase(d[1].text);
        return true;
      }
      Macro m;
      m.function = d.size() > 2 && d[2].Is("(") && !d[2].spaceBefore;
      m.body.assign(d.begin() + 2, d.end());
      macros_[d[1].text] = std::move(m);
      return true;
    }
    if (name == "include")
      return Include(hash, d, path, depth);
    if (name == "pragma") {
      if (d.size() >= 2 && d[1].kind == Kind::kIdent && d[1].text == "once")
        once_.insert(path);
      if (d.size() >= 2 && d[1].kind == Kind::kIdent && d[1].text == "code_page")
        return CodePage(hash, d, unicode);
      return true;
    }
    if (name == "error") {
      std::string text;
      for (size_t k = 1; k < d.size(); ++k)
        text += (k > 1 && d[k].spaceBefore ? " " : "") + Spelling(d[k]);
      return Fail(hash, "#error " + text);
    }
    return true; // #line, #warning, #ident and the like change nothing here
  }

  static std::string Spelling(const Token& t) {
    if (t.kind != Kind::kString)
      return t.text;
    return (t.wide ? "L\"" : "\"") + t.text + (t.terminated ? "\"" : "");
  }

  // EvaluateCondition - the value of an #if, #elif, #ifdef or #ifndef.
  bool EvaluateCondition(const Token& hash, const std::vector<Token>& d, bool* value) {
    const std::string& name = d[0].text;
    if (name == "ifdef" || name == "ifndef") {
      if (d.size() < 2 || d[1].kind != Kind::kIdent)
        return Fail(hash, "#" + name + " needs a name");
      *value = (macros_.count(d[1].text) != 0) == (name == "ifdef");
      return true;
    }
    std::vector<Token> tokens;
    size_t budget = kMaxExpansion; // for the whole line
    for (size_t k = 1; k < d.size(); ++k) {
      const Token& t = d[k];
      if (t.kind == Kind::kIdent && t.text == "defined") {
        const bool parens = k + 1 < d.size() && d[k + 1].Is("(");
        const size_t at = k + 1 + parens;
        if (at >= d.size() || d[at].kind != Kind::kIdent ||
            (parens && (at + 1 >= d.size() || !d[at + 1].Is(")"))))
          return Fail(hash, "'defined' needs a name");
        Token number = t;
        number.kind = Kind::kNumber;
        number.text = macros_.count(d[at].text) ? "1" : "0";
        tokens.push_back(number);
        k = at + parens;
      } else if (!Expand(t, &budget, &tokens)) {
        return false;
      }
    }
    if (tokens.empty())
      return Fail(hash, "#" + name + " needs a condition");
    Expression e{tokens, 0, true, hash};
    int64_t v = 0;
    if (!Evaluate(e, &v))
      return false;
    if (e.pos != tokens.size())
      return Fail(hash, "unexpected '" + Spelling(tokens[e.pos]) + "' in #" + name);
    *value = v != 0;
    return true;
  }

  bool Include(const Token& hash, const std::vector<Token>& d, const std::string& path, int depth) {
    std::string name;
    bool quoted = d.size() >= 2 && d[1].kind == Kind::kString && !d[1].wide && d[1].terminated;
    if (quoted) {
      name = d[1].text;
    } else if (d.size() >= 2 && d[1].Is("<")) {
      size_t k = 2;
      for (; k < d.size() && !d[k].Is(">"); ++k)
        name += Spelling(d[k]);
      if (k == d.size())
        name.clear();
    }
    if (name.empty())
      return Fail(hash, "#include needs \"FILE\" or <FILE>");
    std::replace(name.begin(), name.end(), '\\', '/');
    std::vector<std::string> candidates;
    if (name[0] == '/') {
      candidates.push_back(name);
    } else {
      if (quoted)
        candidates.push_back(DirectoryOf(path) + name);
      for (const std::string& dir : options_.includeDirs)
        candidates.push_back(dir.empty() || dir.back() == '/' ? dir + name : dir + "/" + name);
    }
    for (std::string& candidate : candidates) {
      candidate = std::filesystem::path(candidate).lexically_normal().string();
      if (once_.count(candidate))
        return true;
      std::string bytes;
      if (!read_(candidate, &bytes))
        continue;
      if (depth + 1 > kMaxIncludeDepth)
        return Fail(hash,
                    "includes nested more than " + std::to_string(kMaxIncludeDepth) + " deep");
      if (++includes_ > kMaxIncludes)
        return Fail(hash, "more than " + std::to_string(kMaxIncludes) + " includes");
      return ProcessFile(candidate, bytes, depth + 1);
    }
    out_->warnings.push_back(Where(hash) + ": cannot find include file '" + name + "'; skipped");
    return true;
  }

  bool CodePage(const Token& hash, const std::vector<Token>& d, bool unicode) {
    if (d.size() < 5 || !d[2].Is("(") || !d[4].Is(")"))
      return Fail(hash, "#pragma code_page needs (NUMBER) or (DEFAULT)");
    uint64_t cp = kUtf8;
    if (d[3].kind == Kind::kIdent && IEquals(d[3].text, "DEFAULT"))
      cp = kUtf8;
    else if (d[3].kind != Kind::kNumber || !ParseNumber(d[3].text, &cp))
      return Fail(hash, "#pragma code_page needs (NUMBER) or (DEFAULT)");
    if (cp != kUtf8 && (cp > 0xFFFF || !qx::win::IsValidCodePage(static_cast<UINT>(cp))))
      return Fail(hash, "code page " + d[3].text + " is not one the library has");
    if (!unicode) // a Unicode file's own encoding is what counts
      codePage_ = static_cast<int>(cp);
    return true;
  }

  // Emit - one token of the script, its macros expanded.
  bool Emit(const Token& t) {
    size_t budget = kMaxExpansion;
    if (!Expand(t, &budget, &tokens_))
      return false;
    if (tokens_.size() > kMaxTokens)
      return Fail(t, "the script is too large");
    return true;
  }

  // Expand - `t` with its macros expanded into `out`, taking at most
  // *budget tokens.
  bool Expand(const Token& t, size_t* budget, std::vector<Token>* out) {
    std::vector<const std::string*> active;
    return ExpandInto(t, t, &active, budget, out);
  }

  // ExpandInto - `t` into `out`: an object-like macro not already being
  // expanded becomes its body, expanded in turn; the tokens take the place
  // of `use`, the token in the script.
  bool ExpandInto(const Token& t, const Token& use, std::vector<const std::string*>* active,
                  size_t* budget, std::vector<Token>* out) {
    auto macro = t.kind == Kind::kIdent ? macros_.find(t.text) : macros_.end();
    bool expandable = macro != macros_.end() && !macro->second.function &&
                      std::none_of(active->begin(), active->end(),
                                   [&](const std::string* name) { return *name == t.text; });
    if (!expandable) {
      if (*budget == 0)
        return Fail(use,
                    "macro expansion gives more than " + std::to_string(kMaxExpansion) + " tokens");
      --*budget;
      out->push_back(t);
      out->back().file = use.file, out->back().line = use.line;
      out->back().lineStart = false;
      return true;
    }
    if (active->size() >= kMaxMacroNesting)
      return Fail(use, "macros nested more than " + std::to_string(kMaxMacroNesting) + " deep");
    active->push_back(&macro->first);
    for (const Token& b : macro->second.body)
      if (!ExpandInto(b, use, active, budget, out))
        return false;
    active->pop_back();
    return true;
  }

  // ---- Expressions (C's operators and precedence) ----

  static int Precedence(const Token& t) {
    static const std::pair<const char*, int> kBinary[] = {
        {"||", 1}, {"&&", 2}, {"|", 3}, {"^", 4},  {"&", 5},  {"==", 6},
        {"!=", 6}, {"<", 7},  {">", 7}, {"<=", 7}, {">=", 7}, {"<<", 8},
        {">>", 8}, {"+", 9},  {"-", 9}, {"*", 10}, {"/", 10}, {"%", 10}};
    if (t.kind == Kind::kPunct)
      for (const auto& [op, level] : kBinary)
        if (t.text == op)
          return level;
    return 0;
  }

  bool Evaluate(Expression& e, int64_t* value) {
    if (++e.depth > kMaxExpressionDepth)
      return Fail(e.At(), "expression nested too deeply");
    int64_t condition = 0;
    if (!Binary(e, 1, &condition))
      return false;
    if (e.pos < e.tokens.size() && e.tokens[e.pos].Is("?")) {
      ++e.pos;
      int64_t a = 0, b = 0;
      if (!Evaluate(e, &a))
        return false;
      if (e.pos >= e.tokens.size() || !e.tokens[e.pos].Is(":"))
        return Fail(e.At(), "expected ':' in a conditional expression");
      ++e.pos;
      if (!Evaluate(e, &b))
        return false;
      condition = condition ? a : b;
    }
    --e.depth;
    *value = condition;
    return true;
  }

  bool Binary(Expression& e, int minLevel, int64_t* value) {
    if (!Unary(e, value))
      return false;
    for (int level; e.pos < e.tokens.size() && (level = Precedence(e.tokens[e.pos])) >= minLevel;) {
      const Token& op = e.tokens[e.pos++];
      int64_t rhs = 0;
      if (!Binary(e, level + 1, &rhs))
        return false;
      const uint64_t a = static_cast<uint64_t>(*value), b = static_cast<uint64_t>(rhs);
      const std::string& o = op.text;
      if ((o == "/" || o == "%") && rhs == 0)
        return Fail(op, "division by zero");
      if (o == "+")
        *value = static_cast<int64_t>(a + b);
      else if (o == "-")
        *value = static_cast<int64_t>(a - b);
      else if (o == "*")
        *value = static_cast<int64_t>(a * b);
      else if (o == "/")
        *value = rhs == -1 ? static_cast<int64_t>(0 - a) : *value / rhs;
      else if (o == "%")
        *value = rhs == -1 ? 0 : *value % rhs;
      else if (o == "<<")
        *value = static_cast<int64_t>(a << (b & 63));
      else if (o == ">>")
        *value = *value >> (b & 63);
      else if (o == "&")
        *value = static_cast<int64_t>(a & b);
      else if (o == "|")
        *value = static_cast<int64_t>(a | b);
      else if (o == "^")
        *value = static_cast<int64_t>(a ^ b);
      else if (o == "&&")
        *value = *value && rhs;
      else if (o == "||")
        *value = *value || rhs;
      else if (o == "==")
        *value = *value == rhs;
      else if (o == "!=")
        *value = *value != rhs;
      else if (o == "<")
        *value = *value < rhs;
      else if (o == ">")
        *value = *value > rhs;
      else if (o == "<=")
        *value = *value <= rhs;
      else
        *value = *value >= rhs;
    }
    return true;
  }

  bool Unary(Expression& e, int64_t* value) {
    if (e.pos >= e.tokens.size())
      return Fail(e.anchor, "expression ends too soon");
    const Token& t = e.tokens[e.pos];
    if (t.Is("+") || t.Is("-") || t.Is("~") || t.Is("!")) {
      if (++e.depth > kMaxExpressionDepth)
        return Fail(t, "expression nested too deeply");
      ++e.pos;
      if (!Unary(e, value))
        return false;
      --e.depth;
      const uint64_t v = static_cast<uint64_t>(*value);
      *value = t.Is("-")   ? static_cast<int64_t>(0 - v)
               : t.Is("~") ? static_cast<int64_t>(~v)
               : t.Is("!") ? !*value
                           : *value;
      return true;
    }
    if (t.Is("(")) {
      ++e.pos;
      if (!Evaluate(e, value))
        return false;
      if (e.pos >= e.tokens.size() || !e.tokens[e.pos].Is(")"))
        return Fail(e.At(), "expected ')'");
      ++e.pos;
      return true;
    }
    ++e.pos;
    if (t.kind == Kind::kNumber) {
      uint64_t v = 0;
      if (!ParseNumber(t.text, &v))
        return Fail(t, "'" + t.text + "' is not a number");
      *value = static_cast<int64_t>(v);
      return true;
    }
    if (t.kind == Kind::kIdent && e.preprocessor) {
      *value = 0; // a name that is not a macro
      return true;
    }
    if (t.kind == Kind::kIdent) {
      auto macro = macros_.find(t.text);
      if (macro != macros_.end() && macro->second.function)
        return Fail(t,
                    "'" + t.text + "' is a macro with arguments, which string tables cannot use");
      return Fail(t, "unknown identifier '" + t.text + "'");
    }
    return Fail(t, "expected a number or a name, found '" + Spelling(t) + "'");
  }

  // ---- STRINGTABLE blocks ----

  static bool IsBegin(const Token& t) {
    return t.Is("{") || (t.kind == Kind::kIdent && IEquals(t.text, "BEGIN"));
  }
  static bool IsEnd(const Token& t) {
    return t.Is("}") || (t.kind == Kind::kIdent && IEquals(t.text, "END"));
  }

  bool ParseTables() {
    for (size_t i = 0; i < tokens_.size(); ++i)
      if (tokens_[i].kind == Kind::kIdent && IEquals(tokens_[i].text, "STRINGTABLE") &&
          !ParseTable(&i))
        return false;
    return true;
  }

  // ParseTable - the table whose keyword is at *i; *i becomes its END.
  bool ParseTable(size_t* i) {
    const Token& head = tokens_[*i];
    size_t p = *i + 1;
    // Memory flags and the LANGUAGE, VERSION and CHARACTERISTICS statements
    // come before BEGIN; a module holds them not.
    for (;; ++p) {
      if (p >= tokens_.size())
        return Fail(head, "STRINGTABLE without BEGIN");
      if (IsBegin(tokens_[p]))
        break;
      if (IsEnd(tokens_[p]) || tokens_[p].kind == Kind::kString)
        return Fail(tokens_[p], "expected BEGIN after STRINGTABLE");
    }
    for (++p;;) {
      if (p >= tokens_.size())
        return Fail(head, "STRINGTABLE without END");
      if (IsEnd(tokens_[p]))
        break;
      const Token& at = tokens_[p];
      Expression e{tokens_, p, false, head};
      int64_t id = 0;
      if (!Evaluate(e, &id))
        return false;
      p = e.pos;
      if (id < 0 || id > 0xFFFF)
        return Fail(at, "string identifier " + std::to_string(id) + " is outside 0..65535");
      if (p < tokens_.size() && tokens_[p].Is(","))
        ++p;
      RcString s{static_cast<unsigned>(id), {}, files_[static_cast<size_t>(at.file)], at.line};
      const size_t first = p;
      for (; p < tokens_.size() && tokens_[p].kind == Kind::kString; ++p) {
        if (!tokens_[p].terminated)
          return Fail(tokens_[p], "string not closed on its line");
        s.text += DecodeString(tokens_[p]);
      }
      if (p == first)
        return Fail(p < tokens_.size() ? tokens_[p] : head,
                    "expected a string for identifier " + std::to_string(id));
      if (s.text.size() > kMaxStringUnits)
        return Fail(at, "string " + std::to_string(id) + " is longer than 65535 units");
      auto [seen, added] = defined_.emplace(s.id, Where(at));
      if (!added)
        return Fail(at, "string " + std::to_string(id) + " is defined twice (first at " +
                            seen->second + ")");
      out_->strings.push_back(std::move(s));
    }
    *i = p;
    return true;
  }

  const RcOptions& options_;
  RcScript* out_;
  std::string* error_;
  RcFileReader read_;
  std::vector<std::string> files_; // by token file index
  std::map<std::string, Macro> macros_;
  std::vector<Branch> conditions_;
  std::set<std::string> once_;
  std::map<unsigned, std::string> defined_; // string id => where
  std::vector<Token> tokens_;               // the preprocessed script
  int codePage_ = kUtf8;
  int includes_ = 0;
};

} // namespace

bool ReadRcScript(const std::string& path, const RcOptions& options, RcScript* out,
                  std::string* error) {
  *out = RcScript{};
  error->clear();
  try {
    return Reader(options, out, error).Run(path);
  } catch (const std::bad_alloc&) {
    *error = path + ": out of memory";
    return false;
  } catch (const std::length_error&) {
    *error = path + ": out of memory";
    return false;
  }
}

} // namespace qxcli
