// The resource-script reader behind 'qxutil strings compile': tables of
// scripts (with their headers, in memory) and the strings or the error each
// must give.
#include "rc_script.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace {

using Files = std::map<std::string, std::string>;
using Strings = std::vector<std::pair<unsigned, std::wstring>>;

struct Result {
  bool ok;
  Strings strings;
  std::string error;
  qxcli::RcScript script;
};

Result Read(const Files& files, std::vector<std::string> includeDirs = {}) {
  qxcli::RcOptions options;
  options.includeDirs = std::move(includeDirs);
  options.read = [&](const std::string& path, std::string* bytes) {
    auto it = files.find(path);
    if (it == files.end())
      return false;
    *bytes = it->second;
    return true;
  };
  Result r;
  r.ok = qxcli::ReadRcScript("main.rc", options, &r.script, &r.error);
  for (const qxcli::RcString& s : r.script.strings)
    r.strings.push_back({s.id, s.text});
  return r;
}

std::string Table(const std::string& body) { return "STRINGTABLE\nBEGIN\n" + body + "\nEND\n"; }

// The forms tests/text/resource_strings.rc uses are read into the test module
// the text tests and strings_cli_test.sh read; fuzz/rc_script_fuzz.cpp writes
// random tables in every form of literal, id, keyword, comment, condition and
// encoding and reads them back. Here: what it does not write.
TEST(RcScript, ReadsStringTablesAsTheResourceCompilerDoes) {
  const struct {
    const char* what;
    std::string script;
    Strings strings;
  } kCases[] = {
      {"identifier expressions",
       "#define B 10\n#define C (B * 2 + 1)\n" +
           Table("C \"x\"\nB|0x100 \"y\"\n-(-3) \"z\"\n010L \"o\""),
       {{3, L"z"}, {8, L"o"}, {21, L"x"}, {266, L"y"}}},
      {"other resources passed over",
       "1 MENU\nBEGIN\n POPUP \"&File\"\n BEGIN\n  MENUITEM \"E&xit\", 100\n END\nEND\n" +
           Table("1 \"menu\"") + "2 TEXTINCLUDE\nBEGIN\n \"#include \"\"x.h\"\"\\r\\n\\0\"\nEND",
       {{1, L"menu"}}},
      {"#pragma code_page",
       "#pragma code_page(1252)\n" + Table("1 \"\xE9\\xE9\"") + "#pragma code_page(932)\n" +
           Table("2 \"\x82\xA0\"") + "#pragma code_page(DEFAULT)\n" + Table("3 \"\xE2\x82\xAC\""),
       {{1, L"\u00e9\u00e9"}, {2, L"\u3042"}, {3, L"\u20ac"}}},
  };
  for (const auto& c : kCases) {
    Result r = Read({{"main.rc", c.script}});
    EXPECT_TRUE(r.ok) << c.what << ": " << r.error;
    EXPECT_EQ(r.strings, c.strings) << c.what;
  }
}

TEST(RcScript, FindsHeadersBesideTheIncludingFileThenInTheIncludeDirectories) {
  Files files = {
      {"main.rc", "#include \"ids.h\"\n#include \"sub/more.h\"\n#include <sys.h>\n"
                  "#include \"afxres.h\"\n" +
                      Table("IDS_A \"a\"\nIDS_B \"b\"\nIDS_C \"c\"")},
      {"inc/ids.h", "#pragma once\n#define IDS_A 1\n"},
      {"sub/more.h", "#include \"near.h\"\n#include \"..\\inc\\ids.h\"\n"}, // read once
      {"sub/near.h", "#define IDS_B 2\n"},
      {"inc/sys.h", "#define IDS_C 3\n"},
  };
  Result r = Read(files, {"inc"});
  EXPECT_TRUE(r.ok) << r.error;
  EXPECT_EQ(r.strings, (Strings{{1, L"a"}, {2, L"b"}, {3, L"c"}}));
  EXPECT_EQ(r.script.files, (std::vector<std::string>{"main.rc", "inc/ids.h", "sub/more.h",
                                                      "sub/near.h", "inc/sys.h"}));
  ASSERT_EQ(r.script.warnings.size(), 1u);
  EXPECT_EQ(r.script.warnings[0], "main.rc:4: cannot find include file 'afxres.h'; skipped");
}

TEST(RcScript, FailsWithTheFileAndLine) {
  std::string explosion = "#define A0 x x\n";
  for (int i = 1; i <= 20; ++i)
    explosion += "#define A" + std::to_string(i) + " A" + std::to_string(i - 1) + " A" +
                 std::to_string(i - 1) + "\n";
  const struct {
    std::string script;
    std::string error;
  } kCases[] = {
      {Table("1 \"a\"\n1 \"b\""), "main.rc:4: string 1 is defined twice (first at main.rc:3)"},
      {Table("IDS_X \"a\""), "main.rc:3: unknown identifier 'IDS_X'"},
      {"#define ID(x) x\n" + Table("ID(1) \"a\""), "main.rc:4: 'ID' is a macro with arguments"},
      {"#define X X\n" + Table("X \"a\""), "main.rc:4: unknown identifier 'X'"},
      {Table("65536 \"a\""), "main.rc:3: string identifier 65536 is outside 0..65535"},
      {Table("-1 \"a\""), "main.rc:3: string identifier -1 is outside 0..65535"},
      {Table("1 \"a\"\n2 \"b"), "main.rc:4: string not closed on its line"},
      {Table("1"), "main.rc:4: expected a string for identifier 1"},
      {Table("\"a\""), "main.rc:3: expected a number or a name, found '\"a\"'"},
      {Table("1 / 0 \"a\""), "main.rc:3: division by zero"},
      {"STRINGTABLE\nBEGIN\n1 \"a\"\n", "main.rc:1: STRINGTABLE without END"},
      {"STRINGTABLE\n1 \"a\"", "main.rc:2: expected BEGIN after STRINGTABLE"},
      {"#error stop \"here\"", "main.rc:1: #error stop \"here\""},
      {"#if 1\n", "main.rc:1: #if without #endif"},
      {"#endif\n", "main.rc:1: #endif without #if"},
      {"#if 0\n#else\n#else\n#endif", "main.rc:3: #else after #else"},
      {"#if (1\n#endif", "main.rc:1: expected ')'"},
      {"#if " + std::string(300, '(') + "1" + std::string(300, ')') + "\n#endif",
       "main.rc:1: expression nested too deeply"},
      {"#pragma code_page(12345)", "main.rc:1: code page 12345 is not one the library has"},
      {"#include \"main.rc\"", "main.rc:1: includes nested more than 32 deep"},
      {explosion + "A20", "main.rc:22: macro expansion gives more than 10000 tokens"},
      {Table("1 \"" + std::string(65536, 'x') + "\""),
       "main.rc:3: string 1 is longer than 65535 units"},
  };
  for (const auto& c : kCases) {
    Result r = Read({{"main.rc", c.script}});
    EXPECT_FALSE(r.ok) << c.error;
    EXPECT_EQ(r.error.substr(0, c.error.size()), c.error);
  }
  Result missing = Read({});
  EXPECT_EQ(missing.error, "main.rc: cannot read the file");
}

} // namespace
