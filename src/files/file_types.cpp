//===- files/file_types.cpp - Default extensions by FILETYPE --------------===//
//
// The default extension of each FILETYPE and whether registration forces
// it. The kinds are generic (text, tables, images, archives, ...); the
// forced ones are the files whose extension says what they are to the
// library's callers (tables, indexes, locks, journals, backups, ...).
//
//===----------------------------------------------------------------------===//
#include "files/names.h"

#include <cstdint>
#include <cwchar>

namespace qx::files {

namespace {

struct TypeInfo {
  const wchar_t* extension; // null: none
  bool forced;
};

constexpr TypeInfo kTypes[kFileTypeCount] = {
    {nullptr, false}, // FILETYPE_ANY
    {L".DBF", true},  {L".CSV", false}, {L".TXT", false}, {L".PNG", false}, {L".XML", false},
    {L".LOG", false}, {L".INI", true},  {L".HTM", false}, {L".IDX", true},  {L".LCK", true},
    {L".JNL", true},  {L".BAK", true},  {L".TMP", true},  {L".DAT", false}, {L".BIN", false},
    {L".CFG", true},  {L".SQL", false}, {L".LST", false}, {L".OUT", false}, {L".ERR", false},
    {L".DOC", false}, {L".RTF", false}, {L".SVG", false}, {L".PS", false},  {L".EPS", false},
    {L".PDF", false}, {L".BMP", false}, {L".GIF", false}, {L".TIF", false}, {L".ICO", false},
    {L".CUR", false}, {L".TTF", false}, {L".WAV", false}, {L".MP3", false}, {L".MPG", false},
    {L".AVI", false}, {L".ZIP", false}, {L".GZ", false},  {L".TAR", false}, {L".XLS", false},
    {L".TSV", false}, {L".PRN", false}, {L".DIF", false}, {L".DB", false},  {L".DIC", true},
    {L".SH", false},  {L".BAT", false}, {L".CMD", false}, {L".EXE", false}, {L".DLL", false},
    {L".C", false},   {L".H", false},   {L".CSS", false}, {L".JS", false},  {L".MD", false},
    {L".YML", false}, {L".KEY", true},  {L".CRT", true},  {L".SAV", true},  {L".OLD", true},
    {L".NEW", true},  {L".SEQ", true},  {L".HLP", false}, {L".INF", false}, {L".PAT", false},
    {L".SUM", true},  {L".SIG", true},  {nullptr, false}, // FILETYPE_FOLDER
    {L".JPG", false},                                     // FILETYPE_PHOTO
};

static_assert(FILETYPE_PHOTO == kFileTypeCount - 1 && FILETYPE_FOLDER == 68,
              "one table entry per FILETYPE value");
static_assert(kTypes[FILETYPE_PHOTO].extension != nullptr, "the table is complete");

} // namespace

const wchar_t* DefaultExtension(int type) {
  return type >= 0 && type < kFileTypeCount ? kTypes[type].extension : nullptr;
}

bool ForcesExtension(int type) { return type >= 0 && type < kFileTypeCount && kTypes[type].forced; }

namespace {

// Packed - the up to three upper-cased units after an extension's dot, and
// their count, in one number (0 for anything longer or outside the BMP), so
// that a name's extension is compared with all the defaults at the cost of
// one integer compare each.
uint64_t Packed(const wchar_t* ext) {
  uint64_t code = 0;
  size_t n = 0;
  for (const wchar_t* p = ext + 1; *p; ++p, ++n) {
    wchar_t c = FoldCase(*p);
    if (n == 3 || c > 0xFFFF)
      return 0;
    code = (code << 16) | static_cast<uint64_t>(c);
  }
  return code | (static_cast<uint64_t>(n + 1) << 48);
}

struct PackedExtensions {
  uint64_t codes[kFileTypeCount];
  PackedExtensions() {
    for (int t = 0; t < kFileTypeCount; ++t)
      codes[t] = kTypes[t].extension ? Packed(kTypes[t].extension) : 0;
  }
};

} // namespace

bool IsDefaultExtension(const wchar_t* ext) {
  if (!ext || ext[0] != L'.')
    return false;
  static const PackedExtensions packed;
  uint64_t code = Packed(ext);
  if (code == 0)
    return false;
  for (uint64_t c : packed.codes)
    if (c == code)
      return true;
  return false;
}

} // namespace qx::files
