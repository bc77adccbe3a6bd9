//===- files/storage_streams.cpp - Streams inside compound files ---------===//
//
// stream_fileopen and its companions: a registered file that is a compound
// file is read through one of its streams (the state hangs off the entry
// and is shared by every open of it); any other file falls back to the
// registry's own open, read, seek and close. docs/storage.md has the
// decisions.
//
//===----------------------------------------------------------------------===//
#include "files/file_system.h"
#include "frame/singleton.h"
#include "platform/storage.h"

#include <climits>
#include <cwchar>

namespace qx::files {

using namespace qx::win;

namespace {

constexpr size_t kStorageNameUnits = 520;

/// StorageStreamState - an open stream of a compound file and the storage
/// it came from, shared by the opens of one entry.
struct StorageStreamState {
  int32_t references;
  IStorage* storage;
  IStream* stream;
};

StorageStreamState* StateOf(const FileEntry* e) {
  return static_cast<StorageStreamState*>(e->storage);
}

} // namespace

void cFileSystemImpl::ReleaseStorage(FileEntry* e) {
  StorageStreamState* state = StateOf(e);
  if (!state)
    return;
  state->stream->Release();
  state->storage->Release();
  ffree(&e->storage);
}

int cFileSystemImpl::StreamFileOpen(int handle, eOpenMode mode, int* changed,
                                    const wchar_t* streamName) {
  FileEntry* e = Entry(handle);
  if (!e)
    return -1;
  if (StorageStreamState* state = StateOf(e)) {
    ++state->references;
    if (StreamSeek(handle, 0, 0) < 0) {
      --state->references;
      return -1;
    }
    return handle;
  }
  wchar_t path[kStorageNameUnits + 1];
  FullPath(e, path);
  if (StgIsStorageFile(path) != S_OK)
    return FileOpen(handle, mode, changed);
  if (!streamName)
    return -1;
  wchar_t name[kStorageNameUnits + 1];
  CopyText(name, streamName, kStorageNameUnits + 1);
  IStorage* storage = nullptr;
  IStream* stream = nullptr;
  constexpr DWORD kStreamMode = STGM_READ | STGM_SHARE_EXCLUSIVE;
  if (StgOpenStorage(path, nullptr, STGM_READ | STGM_SHARE_DENY_WRITE, nullptr, 0, &storage) ==
      S_OK) {
    HRESULT result = storage->OpenStream(name, nullptr, kStreamMode, 0, &stream);
    if (result == STG_E_FILENOTFOUND && std::wcscmp(name, L"Book") == 0)
      storage->OpenStream(L"Workbook", nullptr, kStreamMode, 0, &stream);
  }
  void* block = nullptr;
  if (stream && falloc_(sizeof(StorageStreamState), &block, false, true)) {
    *static_cast<StorageStreamState*>(block) = StorageStreamState{1, storage, stream};
    e->storage = block;
    return handle;
  }
  if (stream)
    stream->Release();
  if (storage)
    storage->Release();
  return -1;
}

int cFileSystemImpl::StreamClose(int handle) {
  FileEntry* e = Entry(handle);
  if (!e)
    return -1;
  StorageStreamState* state = StateOf(e);
  if (!state)
    return Close(handle);
  if (--state->references == 0)
    ReleaseStorage(e);
  return 0;
}

long cFileSystemImpl::StreamSeek(int handle, long offset, int whence) {
  FileEntry* e = Entry(handle);
  if (!e)
    return -1;
  StorageStreamState* state = StateOf(e);
  if (!state)
    return Seek(handle, offset, whence);
  LARGE_INTEGER move;
  move.QuadPart = offset;
  ULARGE_INTEGER position;
  if (state->stream->Seek(move, static_cast<DWORD>(whence), &position) != S_OK ||
      position.QuadPart > static_cast<ULONGLONG>(LONG_MAX))
    return -1;
  return static_cast<long>(position.QuadPart);
}

int cFileSystemImpl::StreamRead(int handle, void* buffer, unsigned int count) {
  FileEntry* e = Entry(handle);
  if (!e)
    return -1;
  StorageStreamState* state = StateOf(e);
  if (!state)
    return Read(handle, buffer, count);
  // The count is returned as an int: a larger request reads what fits.
  if (count > static_cast<unsigned int>(INT_MAX))
    count = INT_MAX;
  ULONG got = 0;
  return state->stream->Read(buffer, count, &got) == S_OK ? static_cast<int>(got) : -1;
}

} // namespace qx::files

namespace {
inline cFileSystem* Registry() { return cFileSystem::Instance(); }
} // namespace

int stream_fileopen(int handle, eOpenMode mode, int* changed, const wchar_t* stream) {
  cFileSystem* fs = Registry();
  return fs ? fs->StreamFileOpen(handle, mode, changed, stream) : -1;
}

int stream_close(int handle) {
  cFileSystem* fs = Registry();
  return fs ? fs->StreamClose(handle) : -1;
}

long stream_lseek(int handle, long offset, int whence) {
  cFileSystem* fs = Registry();
  return fs ? fs->StreamSeek(handle, offset, whence) : -1;
}

int stream_read(int handle, void* buffer, unsigned int count) {
  cFileSystem* fs = Registry();
  return fs ? fs->StreamRead(handle, buffer, count) : -1;
}
