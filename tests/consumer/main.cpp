// Uses the installed headers and library: records an error and reads it back.
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
  std::puts("consumer: ok");
  return 0;
}
