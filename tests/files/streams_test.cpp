// The text streams: Ctrl-Z, the line end of a set without a code page, the format
// buffer, the pass-throughs. Line ends, lone lead bytes and random text in every set
// with a code page, written and read back in random pieces: fuzz/streams_fuzz.cpp.
#include "common/files_scope.h"
#include "common/stream_file.h"
#include "common/temp_dir.h"
#include "qxutil/files.h"

#include <gtest/gtest.h>

namespace {

using qxtest::CloseStream;
using qxtest::OpenBytes;
using qxtest::OpenStream;
using qxtest::ScopedRegistry;

class Streams : public ::testing::Test {
protected:
  qxtest::TempDir dir_;
  ScopedRegistry registry_;
  std::string Path() const { return dir_.Path("t.txt"); }
};

TEST_F(Streams, ReadsLinesAndCharacters) {
  const QXCHARSET latin = QXCHARSET_WINDOWS_LATIN1;
  struct {
    const char* what;
    std::string bytes;
    QXCHARSET cs;
    std::wstring lines;             // each fgets2 result followed by "|"
    const wchar_t* chars = nullptr; // what fgetc2 gives until -1; `lines` without "|" if null
  } cases[] = {
      {"Ctrl-Z alone", "\x1a", latin, L""},
      {"Ctrl-Z after a line", "x\n\x1a", latin, L"x\n|"},
      {"Ctrl-Z inside a line", "a\032b\n", latin, L"a\032b\n|", L"a"},
      {"no code page", "abc\n", QXCHARSET_MAC_ROMAN, L""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    FILE* f = OpenBytes(Path(), c.bytes, c.cs);
    ASSERT_NE(f, nullptr);
    std::wstring lines, chars = c.lines;
    qxtest::ReadLines(f, 80, &lines, true, 100);
    EXPECT_EQ(lines, c.lines);
    EXPECT_EQ(fseek2(f, 0, SEEK_SET), 0);
    std::erase(chars, L'|');
    EXPECT_EQ(qxtest::ReadChars(f, 100), c.chars ? std::wstring(c.chars) : chars);
    CloseStream(f);
  }
}

TEST_F(Streams, ReadPositionsAndSizes) {
  FILE* f = OpenBytes(Path(), "\r\nab\n", QXCHARSET_WINDOWS_LATIN1);
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(fgetc2(f), '\n');
  EXPECT_EQ(ftell2(f), 2) << "CR LF read as one";
  wchar_t buffer[8];
  EXPECT_EQ(fgets2(buffer, 0, f), nullptr); // size 1: fuzz/streams_fuzz.cpp
  EXPECT_STREQ(fgets2(buffer, 8, f), L"ab\n");
  EXPECT_EQ(ftell2(f), 5);
  EXPECT_EQ(fseek2(f, 1, SEEK_SET), 0);
  EXPECT_EQ(ffilelength2(f), 5);
  EXPECT_EQ(ftell2(f), 1) << "ffilelength2 keeps the position";
  EXPECT_EQ(feof2(f), 0);
  char raw[8];
  EXPECT_EQ(fread2(raw, 1, 8, f), 4u);
  EXPECT_NE(feof2(f), 0);
  EXPECT_EQ(ferror2(f), 0);
  CloseStream(f);
}

TEST_F(Streams, BadHandlesAndUnopenedStreams) {
  FILE* bad = reinterpret_cast<FILE*>(static_cast<intptr_t>(999));
  wchar_t buffer[8];
  EXPECT_EQ(fgetc2(bad), -1);
  EXPECT_EQ(fgets2(buffer, 8, bad), nullptr);
  EXPECT_EQ(fputc2('a', bad), -1);
  EXPECT_EQ(fputs2(L"a", bad), -1);
  EXPECT_EQ(fprintf2(bad, L"a"), -1);
  EXPECT_EQ(ffilelength2(bad), -1);
  EXPECT_EQ(ftell2(bad), -1);
  EXPECT_EQ(fread2(buffer, 1, 1, bad), 0u);
  EXPECT_EQ(file_get_charset(bad), -1);
  EXPECT_EQ(file_get_charset(999), -1);
  file_put_charset(999, QXCHARSET_WINDOWS_LATIN1); // ignored

  // Registered but not opened as a stream: no stream behind the handle.
  std::string path = Path();
  std::wstring name(path.begin(), path.end());
  int handle = register_file(name.c_str(), FILETYPE_ANY, true);
  FILE* f = reinterpret_cast<FILE*>(static_cast<intptr_t>(handle));
  EXPECT_EQ(file_get_charset(handle), system_charset());
  file_put_charset(f, QXCHARSET_ISO8859_2);
  EXPECT_EQ(file_get_charset(handle), QXCHARSET_ISO8859_2) << "both forms are one tag";
  EXPECT_EQ(fgetc2(f), -1);
  EXPECT_EQ(fputs2(L"a", f), -1);
  unregister_file(handle);
}

// Sets with a code page: fuzz/streams_fuzz.cpp.
TEST_F(Streams, WritesTheLineEndOfASetWithoutACodePage) {
  FILE* f = OpenStream(Path(), OPEN_CREATE, QXCHARSET_MAC_ROMAN);
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(fputs2(L"x\ny", f), 0);
  EXPECT_EQ(fputc2('\n', f), '\n');
  CloseStream(f);
  EXPECT_EQ(dir_.Read("t.txt"), "x\ry\r");
}

TEST_F(Streams, FormatsIntoOneThousandTwentyFourUnits) {
  FILE* f = OpenStream(Path(), OPEN_CREATE, QXCHARSET_WINDOWS_LATIN1);
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(fprintf2(f, L"%s=%d;%hs%c\n", L"n\u00e9", 42, "narrow", L'!'), 14);
  std::wstring longest(1023, L'y'), tooLong(1024, L'z');
  EXPECT_EQ(fprintf2(f, L"%s", longest.c_str()), 1023);
  EXPECT_EQ(fprintf2(f, L"%s", tooLong.c_str()), -1) << "refused";
  EXPECT_EQ(fprintf2(f, L"%s%s", longest.c_str(), L"z"), -1) << "refused";
  EXPECT_EQ(fprintf2(f, L"%I64d|%5.1f|%%", 1LL << 40, 2.75), 21);
  CloseStream(f);
  EXPECT_EQ(dir_.Read("t.txt"),
            "n\xe9=42;narrow!\r\n" + std::string(1023, 'y') + "1099511627776|  2.8|%");
}

} // namespace
