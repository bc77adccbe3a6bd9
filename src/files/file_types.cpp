//===- files/file_types.cpp - Default extensions by FILETYPE --------------===//
//
// The default extension of each FILETYPE and whether registration forces
// it. The kinds are generic (text, tables, images, archives, ...); the
// forced ones are the files whose extension says what they are to the
// library's callers (tables, indexes, locks, journals, backups, ...).
//
//===----------------------------------------------------------------------===//
#include "files/names.h"

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

bool IsDefaultExtension(const wchar_t* ext) {
  if (!ext || ext[0] != L'.')
    return false;
  for (const TypeInfo& t : kTypes)
    if (t.extension && SameName(t.extension, ext))
      return true;
  return false;
}

} // namespace qx::files
