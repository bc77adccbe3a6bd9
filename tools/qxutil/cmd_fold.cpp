// qxutil fold: prints each line of a UTF-8 text folded by a normalizer, as
// Normalize folds it: converted to the normalizer's character set, mapped
// through its table, and converted back.
#include "command.h"
#include "line_reader.h"
#include "normalizer_choice.h"
#include "platform/utf8.h"

#include <qxutil/text.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

constexpr const char* kUsage =
    "usage: qxutil fold [--charset CS] [--table ID | --language LCID] [FILE]";

// FoldLine - the folded form of one line; text after a NUL is folded on its
// own, so every byte of the line is accounted for.
std::string FoldLine(StringNormalizer* normalizer, const std::string& line) {
  std::wstring text = qx::platform::Utf8ToWide(line.c_str());
  normalizer->Normalize(text.data());
  std::string out = qx::platform::WideToUtf8(text.c_str());
  size_t nul = std::strlen(line.c_str());
  if (nul < line.size())
    out += '\0' + FoldLine(normalizer, line.substr(nul + 1));
  return out;
}

int RunFold(int argc, char** argv) {
  qxcli::NormalizerOptions options;
  std::string error;
  for (int i = 1; i < argc; ++i)
    if (!qxcli::TakeNormalizerOption(argc, argv, &i, &options, &error))
      return qxcli::Fail(2, "%s\n%s", error.empty() ? "unexpected argument" : error.c_str(),
                         kUsage);
  StringNormalizer* normalizer = qxcli::ChooseNormalizer(options, &error);
  if (!normalizer)
    return qxcli::Fail(2, "%s", error.c_str());
  qxcli::LineReader in;
  if (!in.Open(options.input))
    return qxcli::Fail(1, "%s: %s", options.input, std::strerror(errno));
  std::string line;
  while (in.Next(&line)) {
    std::string folded = FoldLine(normalizer, line);
    folded += '\n';
    if (std::fwrite(folded.data(), 1, folded.size(), stdout) != folded.size())
      return qxcli::Fail(1, "write failed: %s", std::strerror(errno));
  }
  if (in.failed())
    return qxcli::Fail(1, "%s: %s", in.name().c_str(), std::strerror(in.error()));
  if (std::fflush(stdout) != 0)
    return qxcli::Fail(1, "write failed: %s", std::strerror(errno));
  return 0;
}

} // namespace

QXUTIL_COMMAND(fold, "fold [--charset CS] [--table ID | --language LCID] [FILE]",
               "print each line folded for case- and accent-insensitive comparison", RunFold);
