//===- files/exports.cpp - The registry's exported functions -------------===//
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

int register_file(const wchar_t* name, FILETYPE type, bool unique) {
  cFileSystem* fs = Registry();
  return fs ? fs->RegisterFile(name, type, unique) : 0;
}

int register_nonunique_file(const wchar_t* name, FILETYPE type) {
  cFileSystem* fs = Registry();
  return fs ? fs->RegisterFile(name, type, false) : 0;
}

int register_file_variant(int handle, const wchar_t* name, FILETYPE type) {
  cFileSystem* fs = Registry();
  return fs ? fs->RegisterFileVariant(handle, name, type) : 0;
}

int is_file_registered(const wchar_t* name, FILETYPE type) {
  cFileSystem* fs = Registry();
  return fs ? fs->IsFileRegistered(name, type) : 0;
}

bool unregister_file(int handle) {
  cFileSystem* fs = Registry();
  return fs ? fs->UnregisterFile(handle) : false;
}

int fileopen(int handle, eOpenMode mode, int* changed) {
  cFileSystem* fs = Registry();
  return fs ? fs->FileOpen(handle, mode, changed) : -1;
}

int close2(int handle) {
  cFileSystem* fs = Registry();
  return fs ? fs->Close(handle) : -1;
}

long filelength2(int handle) {
  cFileSystem* fs = Registry();
  return fs ? fs->FileLength(handle) : -1;
}

long lseek2(int handle, long offset, int whence) {
  cFileSystem* fs = Registry();
  return fs ? fs->Seek(handle, offset, whence) : -1;
}

long tell2(int handle) {
  cFileSystem* fs = Registry();
  return fs ? fs->Tell(handle) : -1;
}

int read2(int handle, void* buffer, unsigned int count) {
  cFileSystem* fs = Registry();
  return fs ? fs->Read(handle, buffer, count) : -1;
}

int write2(int handle, const void* data, unsigned int count) {
  cFileSystem* fs = Registry();
  return fs ? fs->Write(handle, data, count) : -1;
}

int chsize2(int handle, long length) {
  cFileSystem* fs = Registry();
  return fs ? fs->ChSize(handle, length) : -1;
}

bool read_app_string(int handle, wchar_t* buffer, unsigned int size) {
  cFileSystem* fs = Registry();
  return fs ? fs->ReadAppString(handle, buffer, size) : false;
}

int read_app_string_len(int handle) {
  cFileSystem* fs = Registry();
  return fs ? fs->ReadAppStringLen(handle) : -1;
}

int write_app_string(int handle, const wchar_t* text) {
  cFileSystem* fs = Registry();
  return fs ? fs->WriteAppString(handle, text) : -1;
}

bool fileremove(int handle) {
  cFileSystem* fs = Registry();
  return fs ? fs->Remove(handle) : false;
}

bool group_fileremove(int* handles, int count) {
  cFileSystem* fs = Registry();
  return fs ? fs->GroupRemove(handles, count) : false;
}

bool renamefile(int* handle, const wchar_t* name, FILETYPE type) {
  cFileSystem* fs = Registry();
  return fs ? fs->Rename(handle, name, type) : false;
}

bool touch(int handle) {
  cFileSystem* fs = Registry();
  return fs ? fs->Touch(handle) : false;
}

long file_get_timestamp(int handle) {
  cFileSystem* fs = Registry();
  return fs ? fs->GetTimestamp(handle) : 0;
}

bool file_set_timestamp(int handle) {
  cFileSystem* fs = Registry();
  return fs ? fs->SetTimestamp(handle) : false;
}

wchar_t* fhandle2name(int handle, wchar_t* out) {
  cFileSystem* fs = Registry();
  return fs ? fs->HandleToName(handle, out) : nullptr;
}

wchar_t* fhandle2dir(int handle, wchar_t* out) {
  cFileSystem* fs = Registry();
  return fs ? fs->HandleToDir(handle, out) : nullptr;
}

wchar_t* fhandle2path(int handle, wchar_t* out) {
  cFileSystem* fs = Registry();
  return fs ? fs->HandleToPath(handle, out) : nullptr;
}

wchar_t* fhandle2partialpath(int handle, wchar_t* out, int size) {
  cFileSystem* fs = Registry();
  return fs ? fs->HandleToPartialPath(handle, out, size) : nullptr;
}

eOpenMode filehandle_get_openmode(int handle) {
  cFileSystem* fs = Registry();
  return fs ? fs->GetOpenMode(handle) : OPEN_READ;
}

bool filecopy(int source, int target, bool failIfExists) {
  cFileSystem* fs = Registry();
  return fs ? fs->Copy(source, target, failIfExists) : false;
}

bool ChangeDirectory(int handle, SAVED_DIR* saved) {
  cFileSystem* fs = Registry();
  return fs ? fs->ChangeDirectory(handle, saved) : false;
}

bool RestoreDirectory(SAVED_DIR* saved) {
  cFileSystem* fs = Registry();
  return fs ? fs->RestoreDirectory(saved) : false;
}

QXCHARSET file_get_charset(FILE* stream) {
  cFileSystem* fs = Registry();
  return fs ? fs->GetCharset(stream) : static_cast<QXCHARSET>(-1);
}

QXCHARSET file_get_charset(int handle) {
  cFileSystem* fs = Registry();
  return fs ? fs->GetCharset(handle) : static_cast<QXCHARSET>(-1);
}

void file_put_charset(FILE* stream, QXCHARSET charset) {
  if (cFileSystem* fs = Registry())
    fs->PutCharset(stream, charset);
}

void file_put_charset(int handle, QXCHARSET charset) {
  if (cFileSystem* fs = Registry())
    fs->PutCharset(handle, charset);
}

FILE* fregister_file(const wchar_t* name, FILETYPE type, bool unique) {
  cFileSystem* fs = Registry();
  return fs ? fs->FRegisterFile(name, type, unique) : nullptr;
}

FILE* fregister_nonunique_file(const wchar_t* name, FILETYPE type) {
  cFileSystem* fs = Registry();
  return fs ? fs->FRegisterFile(name, type, false) : nullptr;
}

bool funregister_file(FILE* stream) {
  cFileSystem* fs = Registry();
  return fs ? fs->FUnregisterFile(stream) : false;
}

FILE* ffileopen(FILE* stream, eOpenMode mode, int* changed) {
  cFileSystem* fs = Registry();
  return fs ? fs->FFileOpen(stream, mode, changed) : nullptr;
}

int fclose2(FILE* stream) {
  cFileSystem* fs = Registry();
  return fs ? fs->FClose(stream) : -1;
}

int fileno2(FILE* stream) {
  cFileSystem* fs = Registry();
  return fs ? fs->FileNo(stream) : -1;
}

int rename2(const wchar_t* from, const wchar_t* to) {
  cFileSystem* fs = Registry();
  return fs ? fs->RenameByName(from, to) : -1;
}

int access2(const wchar_t* name, int mode) {
  cFileSystem* fs = Registry();
  return fs ? fs->AccessByName(name, mode) : -1;
}

int remove2(const wchar_t* name) {
  cFileSystem* fs = Registry();
  return fs ? fs->RemoveByName(name) : -1;
}

int stat2(const wchar_t* name, struct _stat32* out) {
  cFileSystem* fs = Registry();
  return fs ? fs->StatByName(name, out) : -1;
}

void really_close_all() {
  if (cFileSystem* fs = Registry())
    fs->ReallyCloseAll();
}

int GetFileFD(int handle) {
  cFileSystem* fs = Registry();
  return fs ? fs->GetFileFD(handle) : -1;
}

FILE* GetFilePtr(const FILE* stream) {
  cFileSystem* fs = Registry();
  return fs ? fs->GetFilePtr(stream) : nullptr;
}

int GetMaxFileCount() {
  cFileSystem* fs = Registry();
  return fs ? fs->GetMaxFileCount() : 0;
}

long GetFileAccessRetryTime() {
  cFileSystem* fs = Registry();
  return fs ? fs->GetFileAccessRetryTime() : 0;
}

void SetFileAccessRetryTime(long hundredths) {
  if (cFileSystem* fs = Registry())
    fs->SetFileAccessRetryTime(hundredths);
}

void program_dir(const wchar_t* dir) {
  if (cFileSystem* fs = Registry())
    fs->SetProgramDir(dir);
}

const wchar_t* program_dir() {
  cFileSystem* fs = Registry();
  return fs ? fs->ProgramDir() : L"";
}

void alternate_program_dir(const wchar_t* dir) {
  if (cFileSystem* fs = Registry())
    fs->SetAlternateProgramDir(dir);
}

const wchar_t* alternate_program_dir() {
  cFileSystem* fs = Registry();
  return fs ? fs->AlternateProgramDir() : L"";
}

void home_dir(const wchar_t* dir) {
  if (cFileSystem* fs = Registry())
    fs->SetHomeDir(dir);
}

const wchar_t* home_dir() {
  cFileSystem* fs = Registry();
  return fs ? fs->HomeDir() : L"";
}

void pref_dir(const wchar_t* dir) {
  if (cFileSystem* fs = Registry())
    fs->SetPrefDir(dir);
}

const wchar_t* pref_dir() {
  cFileSystem* fs = Registry();
  return fs ? fs->PrefDir() : L"";
}

void temp_dir(const wchar_t* dir) {
  if (cFileSystem* fs = Registry())
    fs->SetTempDir(dir);
}

const wchar_t* temp_dir() {
  cFileSystem* fs = Registry();
  return fs ? fs->TempDir() : L"";
}

void current_dir(const wchar_t* dir) {
  if (cFileSystem* fs = Registry())
    fs->SetCurrentDir(dir);
}

const wchar_t* current_dir() {
  cFileSystem* fs = Registry();
  return fs ? fs->CurrentDir() : L"";
}

bool AddAppDataPath(const wchar_t* dir) {
  cFileSystem* fs = Registry();
  return fs ? fs->AddAppDataPath(dir) : false;
}

const wchar_t* file_extension(FILETYPE type) {
  cFileSystem* fs = Registry();
  return fs ? fs->FileExtension(type) : nullptr;
}

FILETYPE file_type(const wchar_t* name) {
  cFileSystem* fs = Registry();
  return fs ? fs->FileType(name) : FILETYPE_ANY;
}

void splitfilename(wchar_t* path, wchar_t* namePart) {
  if (cFileSystem* fs = Registry())
    fs->SplitFileName(path, namePart);
}

void make_extension(wchar_t* name, const wchar_t* ext) {
  if (cFileSystem* fs = Registry())
    fs->MakeExtension(name, ext);
}

bool path2something(wchar_t* reference, const wchar_t* baseDir) {
  cFileSystem* fs = Registry();
  return fs ? fs->PathToSomething(reference, baseDir) : false;
}

eOpenMode level0mode_to_ourmode(int flags) {
  cFileSystem* fs = Registry();
  return fs ? fs->Level0ModeToOurMode(flags) : OPEN_READ;
}

void qualify_filename(wchar_t* name) {
  if (cFileSystem* fs = Registry())
    fs->QualifyFileName(name);
}

bool munge_filename(FILETYPE type) {
  cFileSystem* fs = Registry();
  return fs ? fs->MungeFileName(type) : false;
}

void recommend_filename(wchar_t* out, const wchar_t* in, FILETYPE type) {
  if (cFileSystem* fs = Registry())
    fs->RecommendFileName(out, in, type);
}

void recommend_table_filename(wchar_t* out, const wchar_t* in) {
  if (cFileSystem* fs = Registry())
    fs->RecommendTableFileName(out, in);
}

void require_dos_extension(wchar_t* name, FILETYPE type) {
  if (cFileSystem* fs = Registry())
    fs->RequireDosExtension(name, type);
}

void relativepath2fullpath(wchar_t* name) {
  if (cFileSystem* fs = Registry())
    fs->RelativePathToFullPath(name);
}

bool resolve_path_reference(wchar_t* reference, const wchar_t* basePath) {
  cFileSystem* fs = Registry();
  return fs ? fs->ResolvePathReference(reference, basePath) : false;
}

bool resolve_path_reference(wchar_t* reference, int handle) {
  cFileSystem* fs = Registry();
  return fs ? fs->ResolvePathReference(reference, handle) : false;
}

wchar_t* tempname(wchar_t* out, const wchar_t* dir, FILETYPE type) {
  cFileSystem* fs = Registry();
  return fs ? fs->TempName(out, dir, type) : nullptr;
}

wchar_t* tempname(wchar_t* out, const wchar_t* dir) {
  cFileSystem* fs = Registry();
  return fs ? fs->TempName(out, dir) : nullptr;
}

FILE* tempfile(const wchar_t* dir) {
  cFileSystem* fs = Registry();
  return fs ? fs->TempFile(dir) : nullptr;
}

bool file_exists(const wchar_t* name, FILETYPE type) {
  cFileSystem* fs = Registry();
  return fs ? fs->FileExists(name, type) : false;
}

bool file_exists_anycase(const wchar_t* name, FILETYPE type) {
  cFileSystem* fs = Registry();
  return fs ? fs->FileExistsAnyCase(name, type) : false;
}

bool search_for_file(wchar_t* name, FILETYPE type) {
  cFileSystem* fs = Registry();
  return fs ? fs->SearchForFile(name, type) : false;
}

bool CalcRelativePath(const wchar_t* base, const wchar_t* target, wchar_t* out) {
  cFileSystem* fs = Registry();
  return fs ? fs->CalcRelativePath(base, target, out) : false;
}

bool FullPathFromRelativePath(const wchar_t* base, const wchar_t* relative, wchar_t* out) {
  cFileSystem* fs = Registry();
  return fs ? fs->FullPathFromRelativePath(base, relative, out) : false;
}
