//===- files/stream_exports.cpp - The text streams' exported functions ----===//
//
// One call each on the context's cFileSystem; without one (a failed
// start-up) the failure result.
//
//===----------------------------------------------------------------------===//
#include "frame/singleton.h"
#include "qxutil/files.h"

namespace {
inline cFileSystem* Registry() { return cFileSystem::Instance(); }
} // namespace

int feof2(FILE* stream) {
  cFileSystem* fs = Registry();
  return fs ? fs->FEof(stream) : -1;
}

int ferror2(FILE* stream) {
  cFileSystem* fs = Registry();
  return fs ? fs->FError(stream) : -1;
}

int fflush2(FILE* stream) {
  cFileSystem* fs = Registry();
  return fs ? fs->FFlush(stream) : -1;
}

size_t fread2(void* buffer, size_t size, size_t count, FILE* stream) {
  cFileSystem* fs = Registry();
  return fs ? fs->FRead(buffer, size, count, stream) : 0;
}

size_t fwrite2(const void* data, size_t size, size_t count, FILE* stream) {
  cFileSystem* fs = Registry();
  return fs ? fs->FWrite(data, size, count, stream) : 0;
}

int fseek2(FILE* stream, long offset, int whence) {
  cFileSystem* fs = Registry();
  return fs ? fs->FSeek(stream, offset, whence) : -1;
}

long ftell2(FILE* stream) {
  cFileSystem* fs = Registry();
  return fs ? fs->FTell(stream) : -1;
}

long ffilelength2(FILE* stream) {
  cFileSystem* fs = Registry();
  return fs ? fs->FFileLength(stream) : -1;
}

int fgetc2(FILE* stream) {
  cFileSystem* fs = Registry();
  return fs ? fs->FGetc(stream) : -1;
}

wchar_t* fgets2(wchar_t* buffer, int size, FILE* stream) {
  cFileSystem* fs = Registry();
  return fs ? fs->FGets(buffer, size, stream) : nullptr;
}

int fputc2(int c, FILE* stream) {
  cFileSystem* fs = Registry();
  return fs ? fs->FPutc(c, stream) : -1;
}

int fputs2(const wchar_t* text, FILE* stream) {
  cFileSystem* fs = Registry();
  return fs ? fs->FPuts(text, stream) : -1;
}

int fprintf2(FILE* stream, const wchar_t* format, ...) {
  cFileSystem* fs = Registry();
  if (!fs)
    return -1;
  va_list args;
  va_start(args, format);
  int n = fs->VFPrintf(stream, format, args);
  va_end(args);
  return n;
}

int vfprintf2(FILE* stream, const wchar_t* format, va_list args) {
  cFileSystem* fs = Registry();
  return fs ? fs->VFPrintf(stream, format, args) : -1;
}
