//===- qxutil/files.h - The file registry, names and the block cache -*- C++ -*-===//
//
// The files subsystem:
//  * the file registry (cFileSystem, slot key 2): callers register a file
//    name with a FILETYPE and get a small integer handle (1000 and up); every
//    later operation takes the handle. The registry opens the file on
//    demand, keeps the number of open system files under a bound by closing
//    idle read-only files, retries opens that meet a sharing conflict, keeps
//    each file's logical position and length, and reads and writes through
//    the block cache.
//  * names and paths: the directories the host configures, extensions by
//    FILETYPE, qualification ("C:\dir\name.ext"), temporary names, the
//    search for a file, relative paths.
//  * the block cache (cFileCache, slot key 8): fixed-size blocks of files,
//    write-back, least recently used replacement.
//  * text streams: the stream form of a handle reads and writes lines in
//    the file's character set.
//  * file search: directory listings with an attribute filter, and the
//    search for a file name in directory trees.
//
// Names are Windows-shaped: "\" and "/" both separate, a drive prefix is
// accepted (every drive letter names the root of the file system), and a
// name that does not exist as spelled is found ignoring case. docs/files.md
// says more.
//
// Failure rule: functions return 0 (registration), -1 (opens and the
// integer results), false or null, and record the cause in the calling
// context's error list where the registry says so (opens, registration,
// closes). A bad handle does nothing and returns the failure result. No
// exception leaves a function. A write that cannot reach the disk keeps its
// data in the cache and the failure is returned: closing, unregistering and
// flushing refuse to drop data they could not write.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_FILES_H
#define QXUTIL_FILES_H

#include "qxutil/frame.h"
#include "qxutil/text.h"
#include "qxutil/wintypes.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>

// ---- File types and open modes ---------------------------------------------

/// FILETYPE - the kind of a registered file. Each kind has a default
/// extension (file_extension) and perhaps a forced one (munge_filename):
/// docs/files.md lists them. FILETYPE_ANY matches every kind.
enum FILETYPE : int {
  FILETYPE_ANY = 0,
  FILETYPE_TABLE,         // .DBF, forced
  FILETYPE_DELIMITED,     // .CSV
  FILETYPE_TEXT,          // .TXT
  FILETYPE_IMAGE,         // .PNG (keeps .JPG, see recommend_filename)
  FILETYPE_XML,           // .XML
  FILETYPE_LOG,           // .LOG
  FILETYPE_SETTINGS,      // .INI, forced
  FILETYPE_WEBPAGE,       // .HTM
  FILETYPE_INDEX,         // .IDX, forced
  FILETYPE_LOCK,          // .LCK, forced
  FILETYPE_JOURNAL,       // .JNL, forced
  FILETYPE_BACKUP,        // .BAK, forced
  FILETYPE_TEMPORARY,     // .TMP, forced
  FILETYPE_DATA,          // .DAT
  FILETYPE_BINARY,        // .BIN
  FILETYPE_CONFIG,        // .CFG, forced
  FILETYPE_QUERY,         // .SQL
  FILETYPE_LIST,          // .LST
  FILETYPE_OUTPUT,        // .OUT
  FILETYPE_ERRORS,        // .ERR
  FILETYPE_DOCUMENT,      // .DOC
  FILETYPE_RICHTEXT,      // .RTF
  FILETYPE_VECTOR_IMAGE,  // .SVG
  FILETYPE_POSTSCRIPT,    // .PS
  FILETYPE_EPS,           // .EPS
  FILETYPE_PDF,           // .PDF
  FILETYPE_BITMAP,        // .BMP
  FILETYPE_GIF,           // .GIF
  FILETYPE_TIFF,          // .TIF
  FILETYPE_ICON,          // .ICO
  FILETYPE_CURSOR,        // .CUR
  FILETYPE_FONT,          // .TTF
  FILETYPE_SOUND,         // .WAV
  FILETYPE_AUDIO,         // .MP3
  FILETYPE_VIDEO,         // .MPG
  FILETYPE_MOVIE,         // .AVI
  FILETYPE_ZIP,           // .ZIP
  FILETYPE_GZIP,          // .GZ
  FILETYPE_TAR,           // .TAR
  FILETYPE_SPREADSHEET,   // .XLS
  FILETYPE_TAB_SEPARATED, // .TSV
  FILETYPE_PRINT,         // .PRN
  FILETYPE_INTERCHANGE,   // .DIF
  FILETYPE_DATABASE,      // .DB
  FILETYPE_DICTIONARY,    // .DIC, forced
  FILETYPE_SCRIPT,        // .SH
  FILETYPE_BATCH,         // .BAT
  FILETYPE_COMMAND,       // .CMD
  FILETYPE_PROGRAM,       // .EXE
  FILETYPE_MODULE,        // .DLL
  FILETYPE_SOURCE,        // .C
  FILETYPE_HEADER,        // .H
  FILETYPE_STYLESHEET,    // .CSS
  FILETYPE_JAVASCRIPT,    // .JS
  FILETYPE_MARKDOWN,      // .MD
  FILETYPE_YAML,          // .YML
  FILETYPE_KEY,           // .KEY, forced
  FILETYPE_CERTIFICATE,   // .CRT, forced
  FILETYPE_SAVED_STATE,   // .SAV, forced
  FILETYPE_OLD_VERSION,   // .OLD, forced
  FILETYPE_NEW_VERSION,   // .NEW, forced
  FILETYPE_SEQUENCE,      // .SEQ, forced
  FILETYPE_HELP,          // .HLP
  FILETYPE_INFO,          // .INF
  FILETYPE_PATCH,         // .PAT
  FILETYPE_CHECKSUM,      // .SUM, forced
  FILETYPE_SIGNATURE,     // .SIG, forced
  FILETYPE_FOLDER,        // no extension
  FILETYPE_PHOTO,         // .JPG
};

/// The number of FILETYPE values (0 to 69).
constexpr int kFileTypeCount = 70;

/// eOpenMode - how a registered file is opened: read only (others may read
/// too), read/write and create (truncating; nobody else may open it).
enum eOpenMode : int { OPEN_READ = 1, OPEN_READWRITE = 2, OPEN_CREATE = 3 };

/// SAVED_DIR - what ChangeDirectory saves for RestoreDirectory.
struct SAVED_DIR {
  wchar_t current[260];      // the current directory before the change
  wchar_t driveCurrent[260]; // the changed drive's directory, or empty
};

/// The retry callback: called after an open met a sharing or access
/// conflict, with the mode, the file's name and a time variable that the
/// open sets to 0 before its first attempt. True tries again.
typedef bool (*FileRetryCallback)(eOpenMode mode, const wchar_t* name, long& since);

// ---- The registry ----------------------------------------------------------

/// cFileSystem - the file registry and the name operations (slot key 2).
/// Its operations are virtual in a fixed order, and it calls its own
/// operations through them, so a host's replacement installed with
/// Instance(p) sees every call. The exported functions below are one call
/// each on Instance().
class QXUTIL_API cFileSystem : public QXSingleton<cFileSystem, 2> {
public:
  virtual ~cFileSystem();
  virtual int RegisterFile(const wchar_t* name, FILETYPE type, bool unique) = 0;
  virtual int RegisterFileVariant(int handle, const wchar_t* name, FILETYPE type) = 0;
  virtual int IsFileRegistered(const wchar_t* name, FILETYPE type) = 0;
  virtual bool UnregisterFile(int handle) = 0;
  virtual int FileOpen(int handle, eOpenMode mode, int* changed) = 0;
  virtual int Close(int handle) = 0;
  virtual long FileLength(int handle) = 0;
  virtual long Seek(int handle, long offset, int whence) = 0;
  virtual long Tell(int handle) = 0;
  virtual int Read(int handle, void* buffer, unsigned int count) = 0;
  virtual int Write(int handle, const void* data, unsigned int count) = 0;
  virtual int ChSize(int handle, long length) = 0;
  virtual bool ReadAppString(int handle, wchar_t* buffer, unsigned int size) = 0;
  virtual int ReadAppStringLen(int handle) = 0;
  virtual int WriteAppString(int handle, const wchar_t* text) = 0;
  virtual bool Remove(int handle) = 0;
  virtual bool GroupRemove(int* handles, int count) = 0;
  virtual bool Rename(int* handle, const wchar_t* name, FILETYPE type) = 0;
  virtual bool Touch(int handle) = 0;
  virtual long GetTimestamp(int handle) = 0;
  virtual bool SetTimestamp(int handle) = 0;
  virtual wchar_t* HandleToName(int handle, wchar_t* out) = 0;
  virtual wchar_t* HandleToDir(int handle, wchar_t* out) = 0;
  virtual wchar_t* HandleToPath(int handle, wchar_t* out) = 0;
  virtual wchar_t* HandleToPartialPath(int handle, wchar_t* out, int size) = 0;
  virtual eOpenMode GetOpenMode(int handle) = 0;
  virtual bool Copy(int source, int target, bool failIfExists) = 0;
  virtual bool ChangeDirectory(int handle, SAVED_DIR* saved) = 0;
  virtual QXCHARSET GetCharset(FILE* stream) = 0;
  virtual QXCHARSET GetCharset(int handle) = 0;
  virtual void PutCharset(FILE* stream, QXCHARSET charset) = 0;
  virtual void PutCharset(int handle, QXCHARSET charset) = 0;
  virtual FILE* FRegisterFile(const wchar_t* name, FILETYPE type, bool unique) = 0;
  virtual bool FUnregisterFile(FILE* stream) = 0;
  virtual FILE* FFileOpen(FILE* stream, eOpenMode mode, int* changed) = 0;
  virtual int FClose(FILE* stream) = 0;
  virtual int FEof(FILE* stream) = 0;
  virtual int FError(FILE* stream) = 0;
  virtual long FFileLength(FILE* stream) = 0;
  virtual int FFlush(FILE* stream) = 0;
  virtual int FGetc(FILE* stream) = 0;
  virtual wchar_t* FGets(wchar_t* buffer, int size, FILE* stream) = 0;
  virtual int FileNo(FILE* stream) = 0;
  virtual int FPrintf(FILE* stream, const wchar_t* format, ...) = 0;
  virtual int FPutc(int c, FILE* stream) = 0;
  virtual int FPuts(const wchar_t* text, FILE* stream) = 0;
  virtual size_t FRead(void* buffer, size_t size, size_t count, FILE* stream) = 0;
  virtual int FSeek(FILE* stream, long offset, int whence) = 0;
  virtual long FTell(FILE* stream) = 0;
  virtual size_t FWrite(const void* data, size_t size, size_t count, FILE* stream) = 0;
  virtual int VFPrintf(FILE* stream, const wchar_t* format, va_list args) = 0;
  virtual int RenameByName(const wchar_t* from, const wchar_t* to) = 0;
  virtual int AccessByName(const wchar_t* name, int mode) = 0;
  virtual int RemoveByName(const wchar_t* name) = 0;
  virtual int StatByName(const wchar_t* name, struct _stat32* out) = 0;
  virtual int StreamFileOpen(int handle, eOpenMode mode, int* changed, const wchar_t* stream) = 0;
  virtual int StreamClose(int handle) = 0;
  virtual long StreamSeek(int handle, long offset, int whence) = 0;
  virtual int StreamRead(int handle, void* buffer, unsigned int count) = 0;
  virtual void SetProgramDir(const wchar_t* dir) = 0;
  virtual const wchar_t* ProgramDir() = 0;
  virtual void SetAlternateProgramDir(const wchar_t* dir) = 0;
  virtual const wchar_t* AlternateProgramDir() = 0;
  virtual void SetHomeDir(const wchar_t* dir) = 0;
  virtual const wchar_t* HomeDir() = 0;
  virtual void SetPrefDir(const wchar_t* dir) = 0;
  virtual const wchar_t* PrefDir() = 0;
  virtual void SetTempDir(const wchar_t* dir) = 0;
  virtual const wchar_t* TempDir() = 0;
  virtual void SetCurrentDir(const wchar_t* dir) = 0;
  virtual const wchar_t* CurrentDir() = 0;
  virtual bool AddAppDataPath(const wchar_t* dir) = 0;
  virtual void ReallyCloseAll() = 0;
  virtual const wchar_t* FileExtension(FILETYPE type) = 0;
  virtual FILETYPE FileType(const wchar_t* name) = 0;
  virtual void SplitFileName(wchar_t* path, wchar_t* namePart) = 0;
  virtual void MakeExtension(wchar_t* name, const wchar_t* ext) = 0;
  virtual bool PathToSomething(wchar_t* reference, const wchar_t* baseDir) = 0;
  virtual eOpenMode Level0ModeToOurMode(int flags) = 0;
  virtual void QualifyFileName(wchar_t* name) = 0;
  virtual bool MungeFileName(FILETYPE type) = 0;
  virtual void RecommendFileName(wchar_t* out, const wchar_t* in, FILETYPE type) = 0;
  virtual void RecommendTableFileName(wchar_t* out, const wchar_t* in) = 0;
  virtual void RequireDosExtension(wchar_t* name, FILETYPE type) = 0;
  virtual void RelativePathToFullPath(wchar_t* name) = 0;
  virtual bool ResolvePathReference(wchar_t* reference, const wchar_t* basePath) = 0;
  virtual bool ResolvePathReference(wchar_t* reference, int handle) = 0;
  virtual bool RestoreDirectory(SAVED_DIR* saved) = 0;
  virtual wchar_t* TempName(wchar_t* out, const wchar_t* dir, FILETYPE type) = 0;
  virtual wchar_t* TempName(wchar_t* out, const wchar_t* dir) = 0;
  virtual FILE* TempFile(const wchar_t* dir) = 0;
  virtual bool FileExists(const wchar_t* name, FILETYPE type) = 0;
  virtual bool FileExistsAnyCase(const wchar_t* name, FILETYPE type) = 0;
  virtual bool SearchForFile(wchar_t* name, FILETYPE type) = 0;
  virtual bool CalcRelativePath(const wchar_t* base, const wchar_t* target, wchar_t* out) = 0;
  virtual bool FullPathFromRelativePath(const wchar_t* base, const wchar_t* relative,
                                        wchar_t* out) = 0;
  virtual int GetFileFD(int handle) = 0;
  virtual FILE* GetFilePtr(const FILE* stream) = 0;
  virtual int GetMaxFileCount() = 0;
  virtual long GetFileAccessRetryTime() = 0;
  virtual void SetFileAccessRetryTime(long hundredths) = 0;

  /// Create - a registry with at most `maxOpenFiles` open system files,
  /// closing files at their last close (`closeAtOnce`) or keeping read-only
  /// ones open while idle, and the retry callback `retry` (null: never
  /// retry). Null when memory fails.
  static cFileSystem* Create(int maxOpenFiles, bool closeAtOnce, FileRetryCallback retry);
  /// Create - 507 files, close at once, the default retry callback (retry
  /// for GetFileAccessRetryTime() hundredths of a second).
  static cFileSystem* Create();
};
extern template class QXSingleton<cFileSystem, 2>;

// ---- Registration and handle I/O --------------------------------------------

/// register_file - registers `name` (qualified; with the type's extension
/// when the type forces one) and returns its handle: the lowest free entry
/// + 1000. 0 on failure; with `unique`, a name already registered fails
/// with error 8 (message 50).
QXUTIL_API int register_file(const wchar_t* name, FILETYPE type, bool unique);
QXUTIL_API int register_nonunique_file(const wchar_t* name, FILETYPE type);
/// register_file_variant - registers the recommended name for `type` made
/// from `handle`'s path (handle not 0), or `name`; both 0: a temporary file.
QXUTIL_API int register_file_variant(int handle, const wchar_t* name, FILETYPE type);
/// is_file_registered - the first handle (in entry order) whose directory
/// and name equal `name`'s ignoring case and whose type equals `type` (or
/// either is FILETYPE_ANY); 0 if none.
QXUTIL_API int is_file_registered(const wchar_t* name, FILETYPE type);
/// unregister_file - writes the file's cached blocks back, closes it and
/// frees the handle. False for a bad handle, or when the write-back fails
/// (everything then stays as it was).
QXUTIL_API bool unregister_file(int handle);
/// fileopen - opens the file (or counts one more use of an open one) and
/// returns the handle, or -1 with an error record: 5001 (no such file or
/// directory, disk full), 4 (sharing conflict after the retry time), 9
/// (open in an incompatible mode), 10 (exists), 14 (too many open files),
/// 13 (other, with the errno). Sets bit 0 of *changed when the file changed
/// on disk since the registry last closed it.
QXUTIL_API int fileopen(int handle, eOpenMode mode, int* changed);
/// close2 - ends one use; 0, or -1 when the file was not open (error 53) or
/// its cached blocks could not be written (the file then stays open).
QXUTIL_API int close2(int handle);
/// filelength2, lseek2, tell2 - the logical length and position (no system
/// call). lseek2: whence 0 sets, 1 adds, 2 from the length, others leave.
QXUTIL_API long filelength2(int handle);
QXUTIL_API long lseek2(int handle, long offset, int whence);
QXUTIL_API long tell2(int handle);
/// read2, write2 - transfer at the logical position (through the block
/// cache when there is one) and advance it; the bytes moved, -1 when none
/// could be.
QXUTIL_API int read2(int handle, void* buffer, unsigned int count);
QXUTIL_API int write2(int handle, const void* data, unsigned int count);
/// chsize2 - sets the file's length (zero-filling growth); 0 or -1.
QXUTIL_API int chsize2(int handle, long length);
/// Application strings: one length byte (the low 8 bits of the byte count)
/// and the text in the file's character set.
QXUTIL_API bool read_app_string(int handle, wchar_t* buffer, unsigned int size);
QXUTIL_API int read_app_string_len(int handle);
QXUTIL_API int write_app_string(int handle, const wchar_t* text);
/// fileremove - closes and deletes the file; the registration stays.
QXUTIL_API bool fileremove(int handle);
/// group_fileremove - deletes all the files or none.
QXUTIL_API bool group_fileremove(int* handles, int count);
/// renamefile - closes the file and renames it on disk to `name` with the
/// extension of `type`; the handle keeps its number and names the new file.
QXUTIL_API bool renamefile(int* handle, const wchar_t* name, FILETYPE type);
/// touch - sets the file's modification time to now, creating it empty when
/// it does not exist.
QXUTIL_API bool touch(int handle);
/// file_get_timestamp - the modification time in seconds since 1970, 0 when
/// the file cannot be examined.
QXUTIL_API long file_get_timestamp(int handle);
/// file_set_timestamp - sets the modification time to now (no creation).
QXUTIL_API bool file_set_timestamp(int handle);
/// fhandle2name, fhandle2dir, fhandle2path - the name, the directory (with
/// its trailing backslash) or the full path into `out` (261 units); `out`,
/// or null for a bad handle.
QXUTIL_API wchar_t* fhandle2name(int handle, wchar_t* out);
QXUTIL_API wchar_t* fhandle2dir(int handle, wchar_t* out);
QXUTIL_API wchar_t* fhandle2path(int handle, wchar_t* out);
/// fhandle2partialpath - the path shortened to fit `size` units: whole, or
/// the drive, "...", and as many of the last components as fit:
/// "C:\...\maps\roads.dbf".
QXUTIL_API wchar_t* fhandle2partialpath(int handle, wchar_t* out, int size);
QXUTIL_API eOpenMode filehandle_get_openmode(int handle);
/// filecopy - copies `source`'s file over `target`'s; the target is
/// replaced in one step, so a failure leaves it as it was. With
/// `failIfExists` an existing target is not replaced.
QXUTIL_API bool filecopy(int source, int target, bool failIfExists);
QXUTIL_API bool ChangeDirectory(int handle, SAVED_DIR* saved);
QXUTIL_API bool RestoreDirectory(SAVED_DIR* saved);
QXUTIL_API QXCHARSET file_get_charset(FILE* stream);
QXUTIL_API QXCHARSET file_get_charset(int handle);
QXUTIL_API void file_put_charset(FILE* stream, QXCHARSET charset);
QXUTIL_API void file_put_charset(int handle, QXCHARSET charset);
/// The stream form of a handle (the same number typed FILE*).
QXUTIL_API FILE* fregister_file(const wchar_t* name, FILETYPE type, bool unique);
QXUTIL_API FILE* fregister_nonunique_file(const wchar_t* name, FILETYPE type);
QXUTIL_API bool funregister_file(FILE* stream);
QXUTIL_API FILE* ffileopen(FILE* stream, eOpenMode mode, int* changed);
QXUTIL_API int fclose2(FILE* stream);
QXUTIL_API int fileno2(FILE* stream);
/// rename2, access2, remove2, stat2 - the runtime's _wrename, _waccess,
/// _wremove and _wstat32 on names, results unchanged.
QXUTIL_API int rename2(const wchar_t* from, const wchar_t* to);
QXUTIL_API int access2(const wchar_t* name, int mode);
QXUTIL_API int remove2(const wchar_t* name);
QXUTIL_API int stat2(const wchar_t* name, struct _stat32* out);
QXUTIL_API void really_close_all();
/// stream_fileopen - opens the stream `stream` (at most 520 units) of the
/// compound file `handle` for reading: the storage read-only and deny-write,
/// the stream exclusive; "Book" not found opens "Workbook". A file that is
/// not a compound file is opened with fileopen(handle, mode, changed)
/// instead. An entry with its stream open already just counts one more open
/// and goes back to the start. The handle, or -1 (a damaged compound file,
/// no such stream, no memory), with nothing left open.
QXUTIL_API int stream_fileopen(int handle, eOpenMode mode, int* changed, const wchar_t* stream);
/// stream_close - counts one open less, releasing the stream and storage at
/// the last; a plain file goes to close2. 0, or -1 for a bad handle.
QXUTIL_API int stream_close(int handle);
/// stream_lseek - moves in the stream (whence 0 start, 1 current, 2 end) and
/// returns the position; past the end is allowed, before the start is -1
/// (the position stays). A plain file goes to lseek2.
QXUTIL_API long stream_lseek(int handle, long offset, int whence);
/// stream_read - reads up to `count` bytes of the stream from the position;
/// the count read (fewer only at the end), or -1 when the file cannot be
/// read. A plain file goes to read2.
QXUTIL_API int stream_read(int handle, void* buffer, unsigned int count);
QXUTIL_API int GetFileFD(int handle);
QXUTIL_API FILE* GetFilePtr(const FILE* stream);
QXUTIL_API int GetMaxFileCount();
QXUTIL_API long GetFileAccessRetryTime();
QXUTIL_API void SetFileAccessRetryTime(long hundredths);

// ---- Text streams ------------------------------------------------------------
//
// The stream form of a handle (fregister_file, ffileopen) reads and writes
// text: wide in memory, bytes of the file's character set (file_put_charset;
// system_charset() until set) on disk. In memory a line ends with one '\n';
// on disk with the character set's own line end (CharsetSlashN). Reading
// takes CR LF, a lone CR and a lone LF as a line end. A bad handle gives -1
// (null for fgets2, 0 bytes for fread2 and fwrite2); a character set without
// a code page cannot be read (-1, null). Nothing here records an error.

/// feof2, ferror2, fflush2, fread2, fwrite2, fseek2, ftell2 - the C
/// runtime's calls on the handle's stream, results unchanged.
QXUTIL_API int feof2(FILE* stream);
QXUTIL_API int ferror2(FILE* stream);
QXUTIL_API int fflush2(FILE* stream);
QXUTIL_API size_t fread2(void* buffer, size_t size, size_t count, FILE* stream);
QXUTIL_API size_t fwrite2(const void* data, size_t size, size_t count, FILE* stream);
QXUTIL_API int fseek2(FILE* stream, long offset, int whence);
QXUTIL_API long ftell2(FILE* stream);
/// ffilelength2 - the stream's length in bytes; the position is kept.
QXUTIL_API long ffilelength2(FILE* stream);
/// fgetc2 - the next character: '\n' for CR LF, CR or LF; -1 at the end
/// of the file or at a byte 26 (Ctrl-Z). A lead byte and its trail byte
/// are one character.
QXUTIL_API int fgetc2(FILE* stream);
/// fgets2 - the next line into `buffer` of `size` units, ending in one
/// '\n' when its line end fitted: bytes a CR LF b CR c LF give "a\n",
/// "b\n", "c\n", then null. A line longer than size - 1 characters comes
/// in several calls (never a double-byte character or a line end cut in
/// two). Null at the end of the file, at a lone Ctrl-Z ending it, and for a
/// size below 1; size 1 gives "" and reads nothing.
QXUTIL_API wchar_t* fgets2(wchar_t* buffer, int size, FILE* stream);
/// fputc2 - writes one character ('\n': the line end); `c`, or -1.
QXUTIL_API int fputc2(int c, FILE* stream);
/// fputs2 - writes `text`, each '\n' as the line end: L"x\ny" into a
/// WindowsLatin1 file writes "x\r\ny". 0, or -1 on failure.
QXUTIL_API int fputs2(const wchar_t* text, FILE* stream);
/// fprintf2, vfprintf2 - format (the Microsoft runtime's reading: "%s" is a
/// wide string, "%hs" a narrow one) into 1,024 units and fputs2 it; the
/// characters formatted, or -1. A result longer than 1,023 characters is
/// refused: -1, nothing written.
QXUTIL_API int fprintf2(FILE* stream, const wchar_t* format, ...);
QXUTIL_API int vfprintf2(FILE* stream, const wchar_t* format, va_list args);

// ---- Directories, names and paths -------------------------------------------

/// The six directories: each setter copies at most 261 units unchanged; the
/// getter returns the stored text ("" until set).
QXUTIL_API void program_dir(const wchar_t* dir);
QXUTIL_API const wchar_t* program_dir();
QXUTIL_API void alternate_program_dir(const wchar_t* dir);
QXUTIL_API const wchar_t* alternate_program_dir();
QXUTIL_API void home_dir(const wchar_t* dir);
QXUTIL_API const wchar_t* home_dir();
QXUTIL_API void pref_dir(const wchar_t* dir);
QXUTIL_API const wchar_t* pref_dir();
QXUTIL_API void temp_dir(const wchar_t* dir);
QXUTIL_API const wchar_t* temp_dir();
QXUTIL_API void current_dir(const wchar_t* dir);
QXUTIL_API const wchar_t* current_dir();
/// AddAppDataPath - adds a directory (a backslash ensured) to the list that
/// search_for_file tries first, in the order added.
QXUTIL_API bool AddAppDataPath(const wchar_t* dir);
/// file_extension - the default extension of `type` (".DBF"), null for
/// FILETYPE_ANY, FILETYPE_FOLDER and values of 70 or more.
QXUTIL_API const wchar_t* file_extension(FILETYPE type);
/// file_type - always FILETYPE_ANY: a type is never inferred from a name.
QXUTIL_API FILETYPE file_type(const wchar_t* name);
/// splitfilename - cuts `path` after its last separator; `namePart` (when
/// not null) gets the name, at most 255 units, with at most three units of
/// extension: "d\roads.abcde" => "d\" and "roads.abc".
QXUTIL_API void splitfilename(wchar_t* path, wchar_t* namePart);
/// make_extension - gives `name` the extension `ext`, replacing a default
/// extension of any type, else appending: "a.dbf" + ".CSV" => "a.CSV",
/// "a.shp" + ".CSV" => "a.shp.CSV".
QXUTIL_API void make_extension(wchar_t* name, const wchar_t* ext);
/// path2something - resolves the reference `reference` against the
/// directory `baseDir` in place (the inverse of CalcRelativePath); true
/// when it was relative.
QXUTIL_API bool path2something(wchar_t* reference, const wchar_t* baseDir);
/// level0mode_to_ourmode - _O_CREAT => OPEN_CREATE, else _O_WRONLY or
/// _O_RDWR => OPEN_READWRITE, else OPEN_READ.
QXUTIL_API eOpenMode level0mode_to_ourmode(int flags);
/// qualify_filename - makes `name` (261 units) fully qualified in place:
/// "a\..\..\b" in "C:\x\y" => "C:\x\b".
QXUTIL_API void qualify_filename(wchar_t* name);
QXUTIL_API bool munge_filename(FILETYPE type);
QXUTIL_API void recommend_filename(wchar_t* out, const wchar_t* in, FILETYPE type);
QXUTIL_API void recommend_table_filename(wchar_t* out, const wchar_t* in);
QXUTIL_API void require_dos_extension(wchar_t* name, FILETYPE type);
QXUTIL_API void relativepath2fullpath(wchar_t* name);
/// resolve_path_reference - resolves `reference` in place against the
/// directory of the path `basePath`, or of the registered file `handle`.
QXUTIL_API bool resolve_path_reference(wchar_t* reference, const wchar_t* basePath);
QXUTIL_API bool resolve_path_reference(wchar_t* reference, int handle);
/// tempname - a name that does not exist: dir\~QXF<thread>-<n><ext>.
QXUTIL_API wchar_t* tempname(wchar_t* out, const wchar_t* dir, FILETYPE type);
QXUTIL_API wchar_t* tempname(wchar_t* out, const wchar_t* dir);
/// tempfile - registers a temporary name in `dir` (the temporary directory
/// when null) and returns its stream-form handle.
QXUTIL_API FILE* tempfile(const wchar_t* dir);
QXUTIL_API bool file_exists(const wchar_t* name, FILETYPE type);
QXUTIL_API bool file_exists_anycase(const wchar_t* name, FILETYPE type);
/// search_for_file - looks for `name` in the application-data directories,
/// then the program directory, then as given; copies the find into `name`.
QXUTIL_API bool search_for_file(wchar_t* name, FILETYPE type);
/// CalcRelativePath - `target` relative to the directory `base`:
/// ("C:\a\b", "C:\a\c\d.txt") => "..\c\d.txt"; false (and `target`
/// unchanged) when they share no directory.
QXUTIL_API bool CalcRelativePath(const wchar_t* base, const wchar_t* target, wchar_t* out);
/// FullPathFromRelativePath - the inverse: `relative` against `base`,
/// qualified; an absolute `relative` is only qualified (result false).
QXUTIL_API bool FullPathFromRelativePath(const wchar_t* base, const wchar_t* relative,
                                         wchar_t* out);

// ---- The block cache ---------------------------------------------------------

/// CacheBlock - one block's descriptor.
struct CacheBlock {
  int32_t blockNumber; // the block covers bytes from blockNumber x block size
  int32_t next;        // the next older block in the ring
  int32_t previous;    // the next newer block
  int32_t handle;      // the file's handle, 0 when free
  int32_t validLength; // bytes of file data in the block
  int32_t dataSlot;    // index of the block's bytes
  uint32_t flags;      // bit 0: dirty
};

/// cFileCache - the block cache under read2, write2 and chsize2 (slot key
/// 8). Blocks are kept in a sorted index (by handle, then block number) and
/// a ring (most recently used first); writes stay in the cache until their
/// block is evicted or the file is flushed.
class QXUTIL_API cFileCache : public QXSingleton<cFileCache, 8> {
public:
  /// Fetch modes: look up only; claim without reading; claim and read.
  enum { kFetchLookup = 0, kFetchClaim = 1, kFetchRead = 2 };
  virtual ~cFileCache();
  /// FlushAndDrop - writes back `handle`'s dirty blocks and drops all its
  /// blocks; true when every write-back succeeded.
  virtual bool FlushAndDrop(int handle) = 0;
  /// Flush - writes back `handle`'s dirty blocks (every file's for -1);
  /// stops at the first failure (false), which leaves blocks dirty.
  virtual bool Flush(int handle) = 0;
  virtual int BlockCount() = 0;
  virtual long BlockSize() = 0;
  /// Fetch - the block (handle, block) in *out, made most recently used.
  virtual bool Fetch(int handle, long block, CacheBlock** out, int mode) = 0;
  /// BlockAt - the descriptor at position `position` of the sorted index.
  virtual CacheBlock* BlockAt(int position) = 0;
  virtual unsigned char* Data(int dataSlot) = 0;
  /// Drop - frees the block at index position `position` unwritten.
  virtual void Drop(int position) = 0;

  /// Create - a cache of `blockCount` - 1 usable blocks of `blockSize`
  /// bytes (the last descriptor is the search key). Null when the count is
  /// below 2 or the size below 1, or memory fails. Counts above 134,217,727
  /// are cut to it.
  static cFileCache* Create(int blockCount, long blockSize);
};
extern template class QXSingleton<cFileCache, 8>;

// ---- File search ---------------------------------------------------------------
//
// A directory listing with an attribute filter (FileFindFirst, FileFindNext,
// FileFindClose over a caller-owned FILEFIND), and FindFileInfo, which looks
// for a file name in a list of directories and, depth first, in all their
// subdirectories. Patterns are Windows': "*" and "?", case ignored, "*.*"
// matching names without a dot too. Entries are listed "." and ".." first,
// then in the order of their upper-cased names (as Windows lists its own
// file system), whatever the file system here. Nothing records an error.

/// FILEFIND - the state of one listing.
struct FILEFIND {
  unsigned long mask;    // the attribute bits wanted
  wchar_t name[260];     // the name of the current matching entry
  HANDLE handle;         // FindFirstFileW's handle
  WIN32_FIND_DATAW data; // the entry last read
};

/// FileFindFirst - lists `pattern` ("C:\maps\*.dbf") and positions on the
/// first entry whose attributes share a bit with `mask` (attributes 0 count
/// as FILE_ATTRIBUTE_NORMAL). 0 only when nothing could be listed (no
/// match at all, or no such directory); otherwise 1, with the entry's name
/// in f->name, which is left as it was when no entry has the attributes.
QXUTIL_API int FileFindFirst(wchar_t* pattern, unsigned long mask, FILEFIND* f);
/// FileFindNext - the next matching entry: 1, or 0 at the end.
QXUTIL_API int FileFindNext(FILEFIND* f);
/// FileFindClose - ends the listing; 1, or 0 for one that never started.
QXUTIL_API int FileFindClose(FILEFIND* f);

/// FindFileInfo - finds a file by name in a list of directories ("a;b;c",
/// at most 1,023 units kept) and their subdirectories.
class QXUTIL_API FindFileInfo : public QXHeapObject {
public:
  virtual ~FindFileInfo();
  /// Find - true with the full name of the file in `result` (room for
  /// `resultSize` units): `name` itself when it exists as given (case
  /// ignored); else, when the object searches directories, the first
  /// directory of the list, then depth first its subdirectories (in
  /// listing order), where the file part of `name` exists. A full name
  /// that does not fit `result` counts as not found in that directory's
  /// tree.
  virtual bool Find(const wchar_t* name, wchar_t* result, unsigned int resultSize) = 0;

  /// Create - an object searching `directories` (when `searchDirectories`),
  /// to be deleted by the caller; null when memory is short.
  static FindFileInfo* Create(const wchar_t* directories, bool searchDirectories);
};

#endif // QXUTIL_FILES_H
