//===- files/file_system.h - The registry's implementation ------*- C++ -*-===//
//
// cFileSystemImpl: the table of registered files and the operations on it.
// Its definitions are spread over the folder by concern: registry.cpp
// (registration, lookup, construction), open_close.cpp (opening, closing,
// the bound on open files), handle_io.cpp (position, length, reads and
// writes through the cache, application strings), file_ops.cpp (removal,
// renaming, copying, times, names of handles, calls by name),
// directories.cpp (directories, search, temporary and relative names),
// storage_streams.cpp (streams inside compound files), streams.cpp (the
// stream form of handles: text lines and characters).
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_FILES_FILE_SYSTEM_H
#define QXUTIL_FILES_FILE_SYSTEM_H

#include "files/name_index.h"
#include "files/names.h"
#include "platform/file_win.h"
#include "qxutil/files.h"

#include <cstdint>

namespace qx::files {

/// FileNameRecord - a registered name: the directory (qualified, ending in
/// a backslash) and the file name, each kept at its own length.
struct FileNameRecord {
  FILETYPE type;
  uint32_t hash; // NameHash(directory, name)
  uint16_t dirLen;
  uint16_t nameLen;
  wchar_t text[1]; // directory, 0, name, 0
  const wchar_t* Dir() const { return text; }
  const wchar_t* Name() const { return text + dirLen + 1; }
};

/// FileEntry - one slot of the table.
struct FileEntry {
  FileNameRecord* name; // owned; null when free
  FILE* stream;         // when opened as a stream
  int32_t fd;           // -1 when none
  int32_t age;          // see open_close.cpp
  QXCHARSET charset;
  eOpenMode mode;
  uint32_t flags; // bits 0-9 open count, 10 in use, 11 stream
  int32_t position;
  int32_t length;
  FILETIME lastWrite; // at the last real close; 0 never taken, -1 failed
  void* storage;      // storage_streams.cpp's state of an open compound-file stream
  char* appBuffer;    // owned, freed at each real close
  // Bookkeeping of the idle entries (kept open with an open count of 0).
  int32_t idleAt;    // position in the idle list, -1 when not idle
  int64_t idleSince; // the open counter when the entry became idle

  static constexpr uint32_t kCountMask = 0x3FF;
  static constexpr uint32_t kInUse = 1u << 10;
  static constexpr uint32_t kStream = 1u << 11;
  int Count() const { return static_cast<int>(flags & kCountMask); }
  void SetCount(int n) { flags = (flags & ~kCountMask) | (static_cast<uint32_t>(n) & kCountMask); }
  bool InUse() const { return (flags & kInUse) != 0; }
  bool IsStream() const { return (flags & kStream) != 0; }
  bool Holds() const { return fd >= 0 || stream != nullptr; }
};

/// NameParts - a name split as registration splits it.
struct NameParts {
  wchar_t dir[kPathUnits];
  wchar_t name[kPathUnits];
};

class cFileSystemImpl final : public cFileSystem {
public:
  cFileSystemImpl(int maxOpenFiles, bool closeAtOnce, FileRetryCallback retry);
  ~cFileSystemImpl() override;

  int RegisterFile(const wchar_t* name, FILETYPE type, bool unique) override;
  int RegisterFileVariant(int handle, const wchar_t* name, FILETYPE type) override;
  int IsFileRegistered(const wchar_t* name, FILETYPE type) override;
  bool UnregisterFile(int handle) override;
  int FileOpen(int handle, eOpenMode mode, int* changed) override;
  int Close(int handle) override;
  long FileLength(int handle) override;
  long Seek(int handle, long offset, int whence) override;
  long Tell(int handle) override;
  int Read(int handle, void* buffer, unsigned int count) override;
  int Write(int handle, const void* data, unsigned int count) override;
  int ChSize(int handle, long length) override;
  bool ReadAppString(int handle, wchar_t* buffer, unsigned int size) override;
  int ReadAppStringLen(int handle) override;
  int WriteAppString(int handle, const wchar_t* text) override;
  bool Remove(int handle) override;
  bool GroupRemove(int* handles, int count) override;
  bool Rename(int* handle, const wchar_t* name, FILETYPE type) override;
  bool Touch(int handle) override;
  long GetTimestamp(int handle) override;
  bool SetTimestamp(int handle) override;
  wchar_t* HandleToName(int handle, wchar_t* out) override;
  wchar_t* HandleToDir(int handle, wchar_t* out) override;
  wchar_t* HandleToPath(int handle, wchar_t* out) override;
  wchar_t* HandleToPartialPath(int handle, wchar_t* out, int size) override;
  eOpenMode GetOpenMode(int handle) override;
  bool Copy(int source, int target, bool failIfExists) override;
  bool ChangeDirectory(int handle, SAVED_DIR* saved) override;
  QXCHARSET GetCharset(FILE* stream) override;
  QXCHARSET GetCharset(int handle) override;
  void PutCharset(FILE* stream, QXCHARSET charset) override;
  void PutCharset(int handle, QXCHARSET charset) override;
  FILE* FRegisterFile(const wchar_t* name, FILETYPE type, bool unique) override;
  bool FUnregisterFile(FILE* stream) override;
  FILE* FFileOpen(FILE* stream, eOpenMode mode, int* changed) override;
  int FClose(FILE* stream) override;
  int FEof(FILE* stream) override;
  int FError(FILE* stream) override;
  long FFileLength(FILE* stream) override;
  int FFlush(FILE* stream) override;
  int FGetc(FILE* stream) override;
  wchar_t* FGets(wchar_t* buffer, int size, FILE* stream) override;
  int FileNo(FILE* stream) override;
  int FPrintf(FILE* stream, const wchar_t* format, ...) override;
  int FPutc(int c, FILE* stream) override;
  int FPuts(const wchar_t* text, FILE* stream) override;
  size_t FRead(void* buffer, size_t size, size_t count, FILE* stream) override;
  int FSeek(FILE* stream, long offset, int whence) override;
  long FTell(FILE* stream) override;
  size_t FWrite(const void* data, size_t size, size_t count, FILE* stream) override;
  int VFPrintf(FILE* stream, const wchar_t* format, va_list args) override;
  int RenameByName(const wchar_t* from, const wchar_t* to) override;
  int AccessByName(const wchar_t* name, int mode) override;
  int RemoveByName(const wchar_t* name) override;
  int StatByName(const wchar_t* name, struct _stat32* out) override;
  int StreamFileOpen(int handle, eOpenMode mode, int* changed, const wchar_t* stream) override;
  int StreamClose(int handle) override;
  long StreamSeek(int handle, long offset, int whence) override;
  int StreamRead(int handle, void* buffer, unsigned int count) override;
  void SetProgramDir(const wchar_t* dir) override;
  const wchar_t* ProgramDir() override { return dirs_[kProgram]; }
  void SetAlternateProgramDir(const wchar_t* dir) override;
  const wchar_t* AlternateProgramDir() override { return dirs_[kAlternate]; }
  void SetHomeDir(const wchar_t* dir) override;
  const wchar_t* HomeDir() override { return dirs_[kHome]; }
  void SetPrefDir(const wchar_t* dir) override;
  const wchar_t* PrefDir() override { return dirs_[kPref]; }
  void SetTempDir(const wchar_t* dir) override;
  const wchar_t* TempDir() override { return dirs_[kTemp]; }
  void SetCurrentDir(const wchar_t* dir) override;
  const wchar_t* CurrentDir() override { return dirs_[kCurrent]; }
  bool AddAppDataPath(const wchar_t* dir) override;
  void ReallyCloseAll() override;
  const wchar_t* FileExtension(FILETYPE type) override;
  FILETYPE FileType(const wchar_t* name) override;
  void SplitFileName(wchar_t* path, wchar_t* namePart) override;
  void MakeExtension(wchar_t* name, const wchar_t* ext) override;
  bool PathToSomething(wchar_t* reference, const wchar_t* baseDir) override;
  eOpenMode Level0ModeToOurMode(int flags) override;
  void QualifyFileName(wchar_t* name) override;
  bool MungeFileName(FILETYPE type) override;
  void RecommendFileName(wchar_t* out, const wchar_t* in, FILETYPE type) override;
  void RecommendTableFileName(wchar_t* out, const wchar_t* in) override;
  void RequireDosExtension(wchar_t* name, FILETYPE type) override;
  void RelativePathToFullPath(wchar_t* name) override;
  bool ResolvePathReference(wchar_t* reference, const wchar_t* basePath) override;
  bool ResolvePathReference(wchar_t* reference, int handle) override;
  bool RestoreDirectory(SAVED_DIR* saved) override;
  wchar_t* TempName(wchar_t* out, const wchar_t* dir, FILETYPE type) override;
  wchar_t* TempName(wchar_t* out, const wchar_t* dir) override;
  FILE* TempFile(const wchar_t* dir) override;
  bool FileExists(const wchar_t* name, FILETYPE type) override;
  bool FileExistsAnyCase(const wchar_t* name, FILETYPE type) override;
  bool SearchForFile(wchar_t* name, FILETYPE type) override;
  bool CalcRelativePath(const wchar_t* base, const wchar_t* target, wchar_t* out) override;
  bool FullPathFromRelativePath(const wchar_t* base, const wchar_t* relative,
                                wchar_t* out) override;
  int GetFileFD(int handle) override;
  FILE* GetFilePtr(const FILE* stream) override;
  int GetMaxFileCount() override { return maxOpen_; }
  long GetFileAccessRetryTime() override { return retryTime_; }
  void SetFileAccessRetryTime(long hundredths) override { retryTime_ = hundredths; }

private:
  enum { kProgram, kAlternate, kHome, kPref, kTemp, kCurrent, kDirCount };

  // registry.cpp
  FileEntry* Entry(int handle) const;
  void BuildName(const wchar_t* name, FILETYPE type, NameParts* parts);
  int Find(const NameParts& parts, FILETYPE type) const;
  bool SetName(FileEntry* e, int index, const NameParts& parts, FILETYPE type);
  void FullPath(const FileEntry* e, wchar_t* out) const;

  // open_close.cpp
  int Open(int handle, eOpenMode mode, int* changed, bool stream);
  bool ReallyClose(int handle);
  bool CloseOldestIdle();
  bool EnterIdle(int index);
  void LeaveIdle(int index);
  void ReportOpen(int resourceId, int number, const FileEntry* e, int error = 0);

  // handle_io.cpp
  FileEntry* TransferEntry(int handle, const void* bytes, unsigned int* count);
  int CachedRead(int handle, FileEntry* e, unsigned char* out, unsigned int count);
  int CachedWrite(int handle, FileEntry* e, const unsigned char* data, unsigned int count);
  void ExtendLastBlock(int handle, long oldLength);
  void ReadAhead(int handle, FileEntry* e, long block, long bytes);

  // file_ops.cpp
  bool WrittenPath(int handle, wchar_t* path);

  // storage_streams.cpp
  void ReleaseStorage(FileEntry* e);

  // directories.cpp
  void SetDir(int which, const wchar_t* dir);

  int osOpen_ = 0;       // entries holding a descriptor or stream
  int idle_ = 0;         // of those, entries with an open count of 0
  int32_t reserved_ = 1; // set at construction, not otherwise used
  int capacity_ = 0;     // slots in table_
  FileEntry* table_ = nullptr;
  int maxOpen_;
  bool closeAtOnce_;
  FileRetryCallback retry_;
  long retryTime_ = 200;
  wchar_t dirs_[kDirCount][kPathUnits] = {};
  wchar_t** appData_ = nullptr; // AddAppDataPath's list, appDataCount_ entries
  int appDataCount_ = 0;
  qx::win::GetFileAttributesExWProc getAttributesEx_ = nullptr;

  NameIndex index_;
  int firstFree_ = 0; // no free slot lies below it
  int64_t opens_ = 0; // opens so far: the clock of the idle ages
  /// IdleSlot - an idle entry and the open counter less its age when it
  /// became idle: the smallest is the oldest.
  struct IdleSlot {
    int32_t index;
    int64_t stamp;
  };
  IdleSlot* idleList_ = nullptr; // idle_ entries, in no order
  int idleCapacity_ = 0;
  unsigned long tempSequence_ = 0;
};

} // namespace qx::files

#endif // QXUTIL_FILES_FILE_SYSTEM_H
