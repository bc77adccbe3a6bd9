// qxutil: the library's command-line program.
#include "command.h"

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <vector>

namespace qxcli {

namespace {
std::vector<const Command*>& Registry() {
  static std::vector<const Command*> commands;
  return commands;
}

void PrintHelp(FILE* out) {
  std::fprintf(out, "Usage: qxutil COMMAND [ARGS...]\n"
                    "       qxutil --help | --version\n\n"
                    "Commands:\n");
  int count = 0;
  const Command* const* list = Commands(&count);
  constexpr int kUsageWidth = 44;
  for (int i = 0; i < count; ++i) {
    if (std::strlen(list[i]->usage) <= kUsageWidth)
      std::fprintf(out, "  %-*s %s\n", kUsageWidth, list[i]->usage, list[i]->summary);
    else
      std::fprintf(out, "  %s\n  %-*s %s\n", list[i]->usage, kUsageWidth, "", list[i]->summary);
  }
  std::fprintf(out, "\nA file argument of \"-\" means standard input or output.\n");
}
} // namespace

CommandRegistrar::CommandRegistrar(const Command& c) {
  auto& r = Registry();
  r.insert(std::upper_bound(r.begin(), r.end(), &c,
                            [](const Command* a, const Command* b) {
                              return std::strcmp(a->name, b->name) < 0;
                            }),
           &c);
}

const Command* const* Commands(int* count) {
  *count = static_cast<int>(Registry().size());
  return Registry().data();
}

int Fail(int code, const char* format, ...) {
  std::fputs("qxutil: ", stderr);
  va_list args;
  va_start(args, format);
  std::vfprintf(stderr, format, args);
  va_end(args);
  std::fputc('\n', stderr);
  return code;
}

} // namespace qxcli

int main(int argc, char** argv) {
  using namespace qxcli;
  if (argc < 2) {
    PrintHelp(stderr);
    return 2;
  }
  const char* name = argv[1];
  if (!std::strcmp(name, "--help") || !std::strcmp(name, "-h") || !std::strcmp(name, "help")) {
    PrintHelp(stdout);
    return 0;
  }
  if (!std::strcmp(name, "--version")) {
    std::printf("qxutil %s\n", QXUTIL_VERSION);
    return 0;
  }
  int count = 0;
  const Command* const* list = Commands(&count);
  for (int i = 0; i < count; ++i)
    if (!std::strcmp(list[i]->name, name))
      return list[i]->run(argc - 1, argv + 1);
  return Fail(2, "unknown command '%s' (try 'qxutil --help')", name);
}
