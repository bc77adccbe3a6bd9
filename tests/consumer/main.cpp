// Uses the installed headers and library: records an error and reads it back,
// and, when built with CMake, reads the string module made for it.
#include <qxutil/qxutil.h>

#include <cstdio>
#include <cwchar>

int main() {
  SetError(eErrorLevelError, L"cannot open ^0", GUID{}, 12, L"roads.dat", nullptr);
  wchar_t text[64];
  GetNextError(true, text, 64);
  if (std::wcscmp(text, L"cannot open roads.dat\n") != 0) {
    std::fprintf(stderr, "unexpected message: %ls\n", text);
    return 1;
  }
#ifdef CONSUMER_STRINGS
  const char* path = CONSUMER_STRINGS;
  wchar_t wide[512] = {};
  for (int i = 0; path[i] && i < 511; ++i)
    wide[i] = static_cast<unsigned char>(path[i]);
  cResourceDLL strings(wide);
  const wchar_t* hello = strings[100];
  const wchar_t* bye = strings[101];
  const wchar_t* missing = strings[102];
  if (std::wcscmp(hello, L"Hello from a string module") != 0 ||
      std::wcscmp(bye, L"Auf Wiedersehen, \u201Cconsumer\u201D") != 0 ||
      std::wcscmp(missing, L"The string resource (102) could not be accessed.") != 0) {
    std::fprintf(stderr, "unexpected strings: %ls | %ls | %ls\n", hello, bye, missing);
    return 1;
  }
  std::puts("consumer: string module ok");
#endif
  std::puts("consumer: ok");
  return 0;
}
