//===- platform/file_crt.h - Microsoft C-runtime file calls -----*- C++ -*-===//
//
// Provides: _wsopen, _read, _write, _lseek, _chsize, _commit, _close, _wremove,
// _wrename, _waccess, _wstat32, _wgetdcwd, _wchdir, _wutime, _wfdopen and
// the unlocked stream reads with the Microsoft runtime's contracts, and its
// errno values.
//
// Names are Windows-shaped (platform/file_path.h says how they reach the
// kernel) and ignore case: a name that does not exist as spelled is looked
// up ignoring case before "not found" is reported. An existing name costs no
// extra system call.
//
// Share modes are whole-file flock locks taken at the open and released by
// the last close of the descriptor: _SH_DENYWR takes a shared lock,
// _SH_DENYRW and _SH_DENYRD an exclusive one, _SH_DENYNO none. A conflicting
// open, from this process or another, fails as a sharing violation does
// (EACCES). A file without any write bit is read-only: opening it for
// writing, removing it or truncating it fails with EACCES (the library may
// run as root, where the kernel would allow it). A file another descriptor
// holds locked can be neither removed nor renamed (EACCES), as on Windows.
//
// errno is set to Windows' values: those from 1 to 34 are the same numbers
// on both systems; the others are mapped (kErrNameTooLong 38, kErrOverflow
// 132, ...), and the kernel's errors that mean a network file system lost
// its server (ESTALE, ENOTCONN, ...) become kErrNetNameDeleted (64), which
// callers retry like a sharing violation.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_FILE_CRT_H
#define QXUTIL_PLATFORM_FILE_CRT_H

#include "qxutil/wintypes.h"

#include <cstdio>

namespace qx::crt {

// The Microsoft runtime's errno values that callers distinguish.
inline constexpr int kErrNoEnt = 2;
inline constexpr int kErrIntr = 4;
inline constexpr int kErrIo = 5;
inline constexpr int kErrBadF = 9;
inline constexpr int kErrNoMem = 12;
inline constexpr int kErrAcces = 13;
inline constexpr int kErrExist = 17;
inline constexpr int kErrNotDir = 20;
inline constexpr int kErrInval = 22;
inline constexpr int kErrNFile = 23;
inline constexpr int kErrMFile = 24;
inline constexpr int kErrNoSpc = 28;
inline constexpr int kErrRange = 34;
inline constexpr int kErrNameTooLong = 38;
inline constexpr int kErrNetNameDeleted = 64;
inline constexpr int kErrOverflow = 132;

/// WindowsErrno - the Microsoft runtime's errno for a kernel errno.
int WindowsErrno(int kernelErrno);

/// _wsopen - opens `path` with _O_ flags `oflag`, share mode `shflag` and,
/// when the file is created, permission `pmode` (_S_IREAD, _S_IWRITE).
/// Returns a descriptor, or -1 with errno: kErrNoEnt (no such file, or a
/// directory on the way missing), kErrAcces (read-only file, directory,
/// sharing conflict), kErrExist (_O_CREAT | _O_EXCL and the file exists),
/// kErrMFile, kErrNoSpc, kErrInval (bad flags). _O_TRUNC truncates only
/// after the share lock is held, so a refused open never truncates another
/// holder's file. Creation reuses an existing case variant of the name.
int _wsopen(const wchar_t* path, int oflag, int shflag, int pmode);

/// _read - reads up to `count` bytes; fewer only at the end of the file.
/// Returns the bytes read, 0 at the end, -1 with errno (kErrBadF,
/// kErrInval for a count above INT_MAX, kErrIo). Interrupted and short
/// kernel reads are continued.
int _read(int fd, void* buffer, unsigned int count);

/// _write - writes `count` bytes. Returns `count`, or the bytes written
/// before a failure (with errno set, kErrNoSpc for a full disk), or -1 when
/// nothing was written.
int _write(int fd, const void* buffer, unsigned int count);

/// _lseek - moves the position (origin 0 start, 1 current, 2 end) and
/// returns it; -1 with kErrInval for another origin, a negative result or
/// one beyond 2,147,483,647 (the position is then unchanged).
long _lseek(int fd, long offset, int origin);

/// _chsize - sets the file's size, zero-filling growth; 0, or -1 with
/// errno (kErrAcces for a descriptor not open for writing, kErrInval for a
/// negative size, kErrNoSpc).
int _chsize(int fd, long size);

/// _commit - writes the file's data through to the device; 0, or -1 with
/// errno (kErrBadF, or the device's error).
int _commit(int fd);

/// _close - closes the descriptor (its share lock goes with its last
/// close); 0, or -1 with errno (kErrBadF).
int _close(int fd);

/// _wremove - removes a file; -1 with kErrNoEnt, or kErrAcces for a
/// directory, a read-only file or one that is open with a share mode.
int _wremove(const wchar_t* path);

/// _wrename - renames a file or directory; never replaces: an existing
/// `newname` (other than a case variant of `oldname` itself) fails with
/// kErrAcces, as does a file that is open with a share mode.
int _wrename(const wchar_t* oldname, const wchar_t* newname);

/// _waccess - 0 when `path` exists and allows `mode` (0 existence, 2 write,
/// 4 read, 6 both); -1 with kErrNoEnt or kErrAcces (write asked of a
/// read-only file), kErrInval for another mode.
int _waccess(const wchar_t* path, int mode);

/// _wstat32 - the status of `path`: st_mode from _S_IFDIR/_S_IFREG and
/// _S_IREAD/_S_IWRITE/_S_IEXEC repeated for group and others, st_dev and
/// st_rdev 2 (drive C), st_nlink 1, times in seconds since 1970. -1 with
/// kErrNoEnt, or kErrOverflow for a size or time beyond 32 bits.
int _wstat32(const wchar_t* path, struct _stat32* out);

/// _wgetdcwd - the current directory of `drive` (0 the current drive, 1 A,
/// 2 B, ...) in Windows' shape, "C:\data\work": every drive's current
/// directory is the process's, under its own letter (the current drive is
/// C). With a null `buffer` a block of at least `maxlen` units is taken
/// with malloc (free it with free). Null with kErrRange when it does not
/// fit, kErrAcces for a drive above 26.
wchar_t* _wgetdcwd(int drive, wchar_t* buffer, int maxlen);

/// _wchdir - makes `path` the current directory; 0 or -1 with kErrNoEnt.
int _wchdir(const wchar_t* path);

/// _wutime - sets the access and modification times of `path` to now (the
/// only form the library uses: `times` must be null); 0 or -1 with errno.
int _wutime(const wchar_t* path, const void* times);

/// _wfdopen - a buffered stream on `fd` with the mode text `mode` ("rb",
/// "r+b", "w+b", ...); the stream owns the descriptor. Null with errno.
FILE* _wfdopen(int fd, const wchar_t* mode);

/// _lock_file, _unlock_file, _getc_nolock, _ungetc_nolock - a stream held
/// by the calling thread across several byte reads, each read then being a
/// look into the stream's buffer. The lock is recursive.
inline void _lock_file(FILE* f) { flockfile(f); }
inline void _unlock_file(FILE* f) { funlockfile(f); }
inline int _getc_nolock(FILE* f) { return getc_unlocked(f); }
inline int _ungetc_nolock(int c, FILE* f) { return ungetc(c, f); }

/// StreamReadAhead - the bytes a held stream has read ahead into its buffer
/// and not yet given out (*count of them, 0 when none or when the runtime
/// does not tell); StreamSkip gives out `count` of them, as that many
/// _getc_nolock calls would. Neither reads the file.
const unsigned char* StreamReadAhead(FILE* f, size_t* count);
void StreamSkip(FILE* f, size_t count);

} // namespace qx::crt

#endif // QXUTIL_PLATFORM_FILE_CRT_H
