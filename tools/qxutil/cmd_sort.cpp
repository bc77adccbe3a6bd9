// qxutil sort: sorts the lines of a UTF-8 text in a normalizer's order, as
// an index sorted with that table lists them: each line's key is its folded
// bytes, the ones Compare compares, and lines with equal keys keep their
// input order. Lines are written as they were read.
#include "command.h"
#include "line_reader.h"
#include "line_sorter.h"
#include "normalizer_choice.h"
#include "platform/utf8.h"
#include "text/string_normalizer.h"

#include <qxutil/text.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr const char* kUsage = "usage: qxutil sort [--charset CS] [--table ID | --language LCID] "
                               "[--unique] [--memory MIB] [FILE]";

// SortKey - the folded bytes Compare would compare for `line`.
std::string SortKey(StringNormalizer* normalizer, const qx::NormalizationTable& table,
                    const std::string& line, std::vector<char>* buffer) {
  std::wstring text = qx::platform::Utf8ToWide(line.c_str());
  buffer->resize(2 * text.size() + 1);
  qx::FoldText(normalizer->GetCharset(), table, text.c_str(), buffer->data(),
               static_cast<unsigned int>(buffer->size()), true);
  return buffer->data();
}

int RunSort(int argc, char** argv) {
  qxcli::NormalizerOptions options;
  bool unique = false;
  unsigned long memoryMiB = 256;
  std::string error;
  for (int i = 1; i < argc; ++i) {
    if (!std::strcmp(argv[i], "--unique")) {
      unique = true;
    } else if (!std::strcmp(argv[i], "--memory")) {
      char* end = nullptr;
      memoryMiB = i + 1 < argc ? std::strtoul(argv[++i], &end, 10) : 0;
      if (memoryMiB == 0 || !end || *end)
        return qxcli::Fail(2, "--memory takes a number of MiB (1 or more)\n%s", kUsage);
    } else if (!qxcli::TakeNormalizerOption(argc, argv, &i, &options, &error)) {
      return qxcli::Fail(2, "%s\n%s", error.empty() ? "unexpected argument" : error.c_str(),
                         kUsage);
    }
  }
  StringNormalizer* normalizer = qxcli::ChooseNormalizer(options, &error);
  if (!normalizer)
    return qxcli::Fail(2, "%s", error.c_str());
  const qx::NormalizationTable& table = *qx::FoldingTableOf(normalizer);
  qxcli::LineReader in;
  if (!in.Open(options.input))
    return qxcli::Fail(1, "%s: %s", options.input, std::strerror(errno));
  qxcli::LineSorter sorter(memoryMiB << 20, unique);
  std::string line;
  std::vector<char> buffer;
  while (in.Next(&line)) {
    std::string key = SortKey(normalizer, table, line, &buffer);
    if (!sorter.Add(std::move(line), std::move(key)))
      return qxcli::Fail(1, "cannot write a temporary run: %s", std::strerror(errno));
  }
  if (in.failed())
    return qxcli::Fail(1, "%s: %s", in.name().c_str(), std::strerror(in.error()));
  if (!sorter.Finish(stdout) || std::fflush(stdout) != 0)
    return qxcli::Fail(1, "write failed: %s", std::strerror(errno));
  return 0;
}

} // namespace

QXUTIL_COMMAND(
    sort, "sort [--charset CS] [--table ID | --language LCID] [--unique] [--memory MIB] [FILE]",
    "sort lines in a normalizer's order (stable), as an index sorted with it", RunSort);
