//===- qxutil/frame.h - The library frame -----------------------*- C++ -*-===//
//
// The frame every service of the library stands on:
//
//  * InstanceData: the per-thread (or host-defined) set of service singletons,
//    created on a thread's first service call and destroyed when the thread
//    ends, unless the host keeps it;
//  * QXSingleton: the Create / Instance / Instance(p) pattern shared by every
//    service class;
//  * QXGuard / QXGuardLock: critical sections;
//  * the memory manager (GetMem_, falloc_, frealloc_, ffree, memSize), which
//    zero-fills every byte a block gains when it grows;
//  * the error list (cErrorSystem and the SetError family): at most 30
//    records, grouped into episodes, walked and reported by the host;
//  * escape polling (cCheckEsc): relays "cancel?" questions to the host.
//
// Failure rule: functions of the frame never throw and never report through
// the error list; they return null, false or 0. A service's exported free
// function called while its service is absent (a failed start-up) returns its
// failure result and does nothing.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_FRAME_H
#define QXUTIL_FRAME_H

#include "qxutil/wintypes.h"

#include <atomic>
#include <cstddef>
#include <new>

// ---- Critical sections -----------------------------------------------------

/// QXGuard - a recursive critical section. Lock may be called again by the
/// thread that holds it; each Lock needs its Unlock.
class QXUTIL_API QXGuard {
public:
  QXGuard();
  virtual ~QXGuard();
  QXGuard(const QXGuard&) = delete;
  QXGuard& operator=(const QXGuard&) = delete;

  void Lock();
  void Unlock();

private:
  CRITICAL_SECTION section_;
};

/// QXGuardLock - holds a QXGuard locked for its own lifetime.
class QXGuardLock {
public:
  explicit QXGuardLock(QXGuard* guard) : guard_(guard) { guard_->Lock(); }
  ~QXGuardLock() { guard_->Unlock(); }
  QXGuardLock(const QXGuardLock&) = delete;
  QXGuardLock& operator=(const QXGuardLock&) = delete;

private:
  QXGuard* guard_;
};

// ---- Objects on the library's heap -----------------------------------------

/// QXHeapObject - base of the library's service and container objects: they
/// are allocated zero-filled through the memory manager (falloc_) and freed
/// through it (ffree), whoever deletes them.
struct QXUTIL_API QXHeapObject {
  static void* operator new(size_t size);
  static void* operator new(size_t size, const std::nothrow_t&) noexcept;
  static void operator delete(void* block) noexcept;
};

// ---- Instance data ---------------------------------------------------------

/// InstanceData - a container of service pointers under unsigned slot keys.
/// Keys 1 (cCheckEsc), 2 (cFileSystem), 3 (cLocaleInfo), 4
/// (cCharsetConverter), 5 (cCharsetInfo), 7 (cErrorSystem), 8 (cFileCache),
/// 9 (cStringResourceBuffers) and 13 (StringNormalizerManager) hold the
/// library's services; what a host stores under other keys is never deleted
/// by the library.
class QXUTIL_API InstanceData : public QXHeapObject {
public:
  virtual ~InstanceData();
  /// SetSlot - stores `value` under `key`, replacing any earlier value.
  virtual bool SetSlot(unsigned int key, void* value) = 0;
  /// GetSlot - the value stored under `key`, or null if it was never set.
  virtual void* GetSlot(unsigned int key) = 0;
  /// IsAutoDestroy - true (from construction) until ClearAutoDestroy.
  virtual bool IsAutoDestroy() = 0;
  /// ClearAutoDestroy - keeps this set alive when its thread ends.
  virtual void ClearAutoDestroy() = 0;

  /// Create - installs a new, empty InstanceData in the current storage (no
  /// services) and returns it; null if memory fails. The one held before is
  /// not deleted.
  static InstanceData* Create();

  /// Destroy - deletes the services and the InstanceData itself. With
  /// `fromThreadSlot` the calling thread's own slot is used (never creating
  /// one); otherwise GetInstanceData(), which creates a set when there is
  /// none. With `onlyIfAutoDestroy` a set whose auto-destroy flag was cleared
  /// is left alone.
  static void Destroy(bool onlyIfAutoDestroy, bool fromThreadSlot);
};

/// GetInstanceData - the calling context's set, creating it with all its
/// services on first use. A set made on this thread before the host
/// installed its own storage is handed over to that storage.
QXUTIL_API InstanceData* GetInstanceData();

/// SetInstanceData - makes `p` the calling context's set (the one held
/// before is not deleted). Returns the storage's result.
QXUTIL_API bool SetInstanceData(InstanceData* p);

/// SetExternalDataStorage - from now on the calling context's set is read
/// and written through the host's `getter` and `setter`. Calls nest: only the
/// first installs its pair, and each must be matched by
/// ClearExternalDataStorage.
QXUTIL_API void SetExternalDataStorage(InstanceData* (*getter)(), bool (*setter)(InstanceData*));

/// ClearExternalDataStorage - ends one SetExternalDataStorage; the last one
/// returns to per-thread storage.
QXUTIL_API void ClearExternalDataStorage();

/// UtilDllEnsureInit - calls "DllEnsureInit" in each companion module that
/// the process has already loaded (libqxkernel.so, libqxdisplay.so,
/// libqxdata.so, in that order). Never loads a module; reports nothing.
QXUTIL_API void UtilDllEnsureInit();

/// UtilDllForceTerm - looks up "DllForceTerm" in the same loaded modules and
/// deliberately does not call it.
QXUTIL_API void UtilDllForceTerm();

/// QXSingleton - the singleton pattern of the library's services. A service
/// class derives from QXSingleton<itself, its slot key> and declares its own
/// static Create(); Instance() and Instance(p) come from here.
template <class Service, unsigned int Key> class QXUTIL_API QXSingleton : public QXHeapObject {
public:
  static constexpr unsigned int kSlotKey = Key;

  /// Instance - the service installed in the calling context's set (built
  /// on the thread's first call), or null when absent.
  static Service* Instance();

  /// Instance(p) - installs `p` in place of the current service, which is
  /// not deleted: its owner keeps it.
  static bool Instance(Service* p);
};

// ---- Memory manager --------------------------------------------------------
//
// Blocks come from the C runtime heap and carry no header; a block's size is
// the heap's own usable size, which may exceed the request. Every byte a
// block gains when it grows reads as zero.

/// falloc_ - allocates `size` bytes into *out (zero-filled when `zeroFill`);
/// the first flag has no effect. *out is overwritten, not freed. Returns
/// *out != null.
QXUTIL_API bool falloc_(unsigned int size, void** out, bool unused, bool zeroFill);

/// GetMem_ - allocates `size` zero bytes when *block is null; otherwise
/// resizes it, keeping it as it is when `keepIfLargeEnough` and it is already
/// at least `size` bytes. Returns *block != null.
QXUTIL_API bool GetMem_(unsigned int size, void** block, bool keepIfLargeEnough);

/// frealloc_ - resizes *block to `size` bytes (a null block is a fresh,
/// zero-filled one). Growth zero-fills. Returns *block != null; on failure
/// *block is null and the old block is left as the heap leaves it.
QXUTIL_API bool frealloc_(unsigned int size, void** block);

/// ffree - frees *block (if not null) and sets it to null.
QXUTIL_API void ffree(void** block);

/// memSize - the usable size of `block`, 0 for null.
QXUTIL_API unsigned int memSize(const void* block);

template <class T> inline bool falloc_(unsigned int size, T** out, bool unused, bool zeroFill) {
  return falloc_(size, reinterpret_cast<void**>(out), unused, zeroFill);
}
template <class T> inline bool GetMem_(unsigned int size, T** block, bool keepIfLargeEnough) {
  return GetMem_(size, reinterpret_cast<void**>(block), keepIfLargeEnough);
}
template <class T> inline bool frealloc_(unsigned int size, T** block) {
  return frealloc_(size, reinterpret_cast<void**>(block));
}
template <class T> inline void ffree(T** block) { ffree(reinterpret_cast<void**>(block)); }

// ---- Error list ------------------------------------------------------------

/// eErrorLevel - how severe an error is; larger is more severe. The library
/// itself reports with eErrorLevelNone (episode separators) and
/// eErrorLevelError.
enum eErrorLevel : int {
  eErrorLevelNone = 0,
  eErrorLevelInfo = 1,
  eErrorLevelWarning = 2,
  eErrorLevelMinor = 3,
  eErrorLevelError = 4,
  eErrorLevelSevere = 5,
  eErrorLevelFatal = 6,
};

/// eErrorMode - a value the host stores and reads back; the error list
/// itself does not act on it.
enum eErrorMode : int {
  eErrorModeDefault = 0,
  eErrorModeQuiet = 1,
  eErrorModeInteractive = 2,
  eErrorModeLog = 3,
};

/// cErrorFuncs - the host's callbacks for the error list (owned by the
/// host).
class QXUTIL_API cErrorFuncs {
public:
  virtual ~cErrorFuncs();
  /// Report - receives the text ReportErrors assembled.
  virtual void Report(const wchar_t* text) = 0;
  /// IsSuppressed - while true, SetError stores nothing and HaveErrors is
  /// false.
  virtual bool IsSuppressed() = 0;
  /// KeepDuplicates - when true, an error number already in the list is
  /// stored again instead of only raising the stored level.
  virtual bool KeepDuplicates() = 0;
  /// GetContext - text stored in front of the record being made (null or
  /// empty for none); `episodeCount` records are already in this episode.
  virtual const wchar_t* GetContext(int episodeCount) = 0;
};

/// cErrorSystem - the error list of one InstanceData (slot key 7).
///
/// Records are merged by error number (the stored level rises to the higher
/// one), at most 30 are kept, and once one had to be dropped the list is
/// "lost": nothing more is stored and every read returns
/// " Too many errors.  Error information has been lost." until the list is
/// cleared. Templates expand "^0" and "^1" to the record's arguments and
/// "^^" to one caret; a caret before anything else is literal.
class QXUTIL_API cErrorSystem : public QXSingleton<cErrorSystem, 7> {
public:
  /// Every error list, a host's own class included, is known to HaveErrors()
  /// from its construction to its destruction.
  cErrorSystem();
  cErrorSystem(const cErrorSystem&) : cErrorSystem() {}
  virtual ~cErrorSystem();
  virtual bool HaveErrors() = 0;
  virtual int NumErrors() = 0;
  virtual bool FirstError() = 0;
  virtual void ClearErrors() = 0;
  virtual bool GetNextError(bool fromStart, wchar_t* out, unsigned int outLen) = 0;
  virtual bool ThisErrorOccurred(int number) = 0;
  virtual int GetErrorNum(int index) = 0;
  virtual int GetResourceID(int index) = 0;
  virtual const GUID& GetErrorGUID(int index) = 0;
  virtual void GetErrorMsg(const wchar_t* newTemplate, unsigned int index, wchar_t* out,
                           unsigned int outLen) = 0;
  virtual void SetError(eErrorLevel level, int resourceId, const wchar_t* message,
                        const GUID& module, int number, const wchar_t* arg0,
                        const wchar_t* arg1) = 0;
  virtual void SetError(eErrorLevel level, const wchar_t* message, const GUID& module, int number,
                        const wchar_t* arg0, const wchar_t* arg1) = 0;
  virtual void EndError() = 0;
  virtual void SetErrorFunctions(cErrorFuncs* funcs) = 0;
  virtual void ReportErrors() = 0;
  virtual void SetQXErrorMode(eErrorMode mode) = 0;
  virtual eErrorMode GetQXErrorMode() = 0;

  /// Create - a new, empty error list (not installed); null if memory fails.
  static cErrorSystem* Create();
};
extern template class QXSingleton<cErrorSystem, 7>;

// Each function below calls the same operation of the calling context's
// error list (cErrorSystem::Instance()); without one it does nothing and
// returns false, 0, a zero GUID or an empty text (FirstError: true).

namespace qx::detail {
/// The error lists in the process whose answer HaveErrors() must ask for:
/// each list of a class the host derived itself, and each of the library's
/// own lists while it holds a record. While it is 0, every list would
/// answer false.
QXUTIL_API extern std::atomic<int> gErrorListsToAsk;
/// AskErrorList - HaveErrors() through the calling context's list.
QXUTIL_API bool AskErrorList();
} // namespace qx::detail

/// HaveErrors - true when a record was stored since the last clear; false
/// while the host's IsSuppressed() is true. Inline: while no list in the
/// process can answer true, it answers without a call.
QXUTIL_API inline bool HaveErrors() {
  return qx::detail::gErrorListsToAsk.load(std::memory_order_relaxed) != 0 &&
         qx::detail::AskErrorList();
}
/// NumErrors - the records stored since the last clear, episode separators
/// included.
QXUTIL_API int NumErrors();
/// FirstError - true when the current episode has no record yet.
QXUTIL_API bool FirstError();
/// ClearErrors - empties the list, clears "lost" and resets the read cursor.
QXUTIL_API void ClearErrors();
/// GetNextError - the next episode (from record 0 when `fromStart`): each
/// record's expanded message and a line feed, in `out` of `outLen` units.
/// True when the episode's first record is an error (not free, not a
/// separator). When the text does not fit, or the list is lost, `out`
/// receives the lost message instead.
QXUTIL_API bool GetNextError(bool fromStart, wchar_t* out, unsigned int outLen);
/// ThisErrorOccurred - true when any of the 30 slots holds `number` (so 0
/// is found whenever a slot is free).
QXUTIL_API bool ThisErrorOccurred(int number);
/// GetErrorNum - the number of record `index`; for number 15 (the number
/// given as text) the integer read from the record's first argument, 0 when
/// it is out of range.
QXUTIL_API int GetErrorNum(int index);
/// GetResourceID - the message-resource identifier of record `index` (-1
/// for a literal message).
QXUTIL_API int GetResourceID(int index);
/// GetErrorGUID - the GUID of the module that made record `index`.
QXUTIL_API const GUID& GetErrorGUID(int index);
/// GetErrorMsg - record `index` expanded ("^0", "^1", "^^") into `out` of
/// `outLen` units; a non-null `newTemplate` first replaces the record's
/// template, so a host can expand its own text for GetResourceID(index).
QXUTIL_API void GetErrorMsg(const wchar_t* newTemplate, unsigned int index, wchar_t* out,
                            unsigned int outLen);
/// SetError - records an error: a number already in the list only raises
/// that record's level (unless the host's KeepDuplicates() is true); the
/// 31st distinct record makes the list lost. The host's GetContext() text
/// is stored in front of the record. Nothing is stored while the host's
/// IsSuppressed() is true.
QXUTIL_API void SetError(eErrorLevel level, int resourceId, const wchar_t* message,
                         const GUID& module, int number, const wchar_t* arg0, const wchar_t* arg1);
/// SetError - the literal-message form (resource identifier -1); does
/// nothing when `message` is null.
QXUTIL_API void SetError(eErrorLevel level, const wchar_t* message, const GUID& module, int number,
                         const wchar_t* arg0, const wchar_t* arg1);
/// EndError - closes the current episode with a separator record (number
/// -1), unless the episode is empty.
QXUTIL_API void EndError();
/// SetErrorFunctions - installs the host's callbacks (not owned; null
/// removes them).
QXUTIL_API void SetErrorFunctions(cErrorFuncs* funcs);
/// ReportErrors - the first episode's text, as GetNextError(true, ...)
/// makes it but without a size limit; clears the list; then hands the text
/// to the host's Report() when that episode began with an error.
QXUTIL_API void ReportErrors();
/// SetQXErrorMode, GetQXErrorMode - a mode the host stores and reads back.
QXUTIL_API void SetQXErrorMode(eErrorMode mode);
QXUTIL_API eErrorMode GetQXErrorMode();

// ---- Escape polling --------------------------------------------------------

/// cCheckEscCallback - the host's answer to "cancel the operation?" (owned
/// by the host).
class QXUTIL_API cCheckEscCallback {
public:
  virtual ~cCheckEscCallback();
  /// Check - true to cancel; `forUpdate` says the caller is a screen or
  /// data update.
  virtual bool Check(bool forUpdate) = 0;
};

/// cCheckEsc - relays cancellation polls to the host's callback (slot key
/// 1). Without a callback every poll answers false.
class QXUTIL_API cCheckEsc : public QXSingleton<cCheckEsc, 1> {
public:
  virtual ~cCheckEsc();
  virtual void SetCallback(cCheckEscCallback* callback) = 0;
  virtual bool Check() = 0;
  virtual bool CheckForUpdate(bool forUpdate) = 0;

  static cCheckEsc* Create();
};
extern template class QXSingleton<cCheckEsc, 1>;

QXUTIL_API void InitCheckEscCallback(cCheckEscCallback* callback);
QXUTIL_API bool CheckEsc();
QXUTIL_API bool CheckEsc4Update(bool forUpdate);

// ---- Platform and arithmetic utilities -------------------------------------
//
// Small exported helpers with exact 32-bit behaviour: `long` is treated as
// Windows' 32-bit long (arguments are taken modulo 2^32, results are 32-bit
// values widened to `long`). Halves round away from zero throughout
// (v + 0.5 truncated for v > 0, v - 0.5 truncated for v <= 0). Nothing here
// records errors.

/// LongAdd - a + b saturated to -2147483648..2147483647.
QXUTIL_API long LongAdd(long a, long b);
/// ShortAdd - a + b clipped to -32768..32767.
QXUTIL_API short ShortAdd(short a, short b);
/// LongAddCoords - LongAdd(a, b), then clamped into [low, high].
QXUTIL_API long LongAddCoords(long a, long b, long low, long high);
/// IntegerMulDiv - (a * b + divisor / 2) / divisor with a wrapping 32-bit
/// product and sum and truncating divisions: (7, 3, 2) => 11, (-7, 3, 2) =>
/// -10. A divisor of 0 returns 0 (Windows would raise a division fault).
QXUTIL_API int IntegerMulDiv(int a, int b, int divisor);
/// LongRoundDiv - |a| / |b| rounded half up, with the sign of the quotient:
/// (-7, 2) => -4; b == 0 returns a.
QXUTIL_API long LongRoundDiv(long a, long b);
/// IntegerMulDivScale - (a * b + divisor / 2) wrapped to 32 bits, times
/// `scale`, divided by `divisor`, rounded; then only the low 16 bits are
/// kept, sign-extended: (1, 40000, 1, 1.0) => -25536.
QXUTIL_API int IntegerMulDivScale(int a, int b, int divisor, double scale);

/// DoubleToLong, DoubleToShort, DoubleToInt64 - rounded, not clipped. A
/// value outside the 32-bit (64-bit for DoubleToInt64) range, an infinity
/// or a NaN gives the processor's "integer indefinite" value, as the
/// Windows x86 conversion does: -2147483648 (INT64_MIN for DoubleToInt64).
/// DoubleToShort keeps the low 16 bits of the 32-bit result: 40000.0 =>
/// -25536, 1e10 => 0.
QXUTIL_API long DoubleToLong(double value);
QXUTIL_API short DoubleToShort(double value);
QXUTIL_API long long DoubleToInt64(double value);
/// DoubleToLongClip, DoubleToShortClip - rounded, with values beyond the
/// type's range clipped to its limits. A NaN compares with neither limit
/// and so converts as DoubleToLong / DoubleToShort do: -2147483648 and 0.
QXUTIL_API long DoubleToLongClip(double value);
QXUTIL_API short DoubleToShortClip(double value);
/// qx_round - value rounded to the nearest multiple of `step`, halves
/// upward: floor((value + step / 2) / step) * step; step 0 returns value.
/// (7.5, 5) => 10, (-2.5, 1) => -2.
QXUTIL_API double qx_round(double value, double step);

/// The library's no-value double: the quiet NaN 0x7FFFFFFFFFFFFFFF.
QXUTIL_API void SetNaN(double& value);
QXUTIL_API double GetNaN();
/// IsNaN - true for any NaN, not only the library's pattern.
QXUTIL_API bool IsNaN(double value);

/// time_100 - hundredths of a second since the system started: the 32-bit
/// millisecond tick count (which wraps after 49.7 days) divided by 10.
QXUTIL_API long time_100();
/// DoubleClickTime_100 - the double-click interval in hundredths: 50 (there
/// is no pointer device to ask; Windows' default of 500 ms).
QXUTIL_API long DoubleClickTime_100();
/// Sleep100 - busy-waits, without yielding, until `hundredths` (truncated)
/// hundredths of a second have passed by time_100(); safe across the tick
/// count's wrap. Zero or negative returns at once.
QXUTIL_API void Sleep100(double hundredths);
/// random_number - rand() % n with Microsoft's generator (0..32767), seeded
/// with time_100() on the first call in the process. n == 0 returns 0.
QXUTIL_API int random_number(int n);

/// calculate_crc16 - CRC-16/ARC (reflected 0xA001, initial 0, no final
/// XOR) of `length` bytes. With `buildTable` the first `tableSize` entries
/// of `table` are (re)built; callers pass 256 and may keep the table for
/// later calls. Entries at or beyond `tableSize` are never read (they are
/// computed). "123456789" => 0xBB3D. Null data or table returns 0.
QXUTIL_API unsigned short calculate_crc16(const unsigned char* data, unsigned int length,
                                          unsigned short table[], bool buildTable, int tableSize);

/// LoadQXLibrary - loads `fileName` from the directory of the loaded module
/// `besideModule` (or of the program when that is null or not loaded). Only
/// the name and extension of `fileName` are used; without an extension
/// ".so" is appended (where Windows appends ".dll"). `handle` receives the
/// module or null; false when it could not be loaded.
QXUTIL_API bool LoadQXLibrary(const wchar_t* fileName, const wchar_t* besideModule,
                              HINSTANCE& handle);

/// SystemPlatform - the platform identifier Windows reports in
/// OSVERSIONINFO::dwPlatformId: always 2 (VER_PLATFORM_WIN32_NT), the value
/// of every Windows a host may have been written for since Windows 2000;
/// 0 (Win32s), 1 (Windows 9x) and 3 (Windows CE) never occur.
QXUTIL_API int SystemPlatform();

/// GetDateTime - the local date and time (GetLocalTime).
QXUTIL_API void GetDateTime(SYSTEMTIME* time);
/// SetDateTime - sets the local date and time (SetLocalTime, twice, as the
/// daylight-saving adjustment requires on Windows); the second call's
/// result. Without the privilege to set the clock it returns FALSE with the
/// last error ERROR_PRIVILEGE_NOT_HELD (1314).
QXUTIL_API BOOL SetDateTime(SYSTEMTIME* time);

/// GetMetaFileBits, GetEnhancedMetaFileBits - a global block holding the
/// metafile's bits. There are no metafiles here: always null.
QXUTIL_API HGLOBAL GetMetaFileBits(HMETAFILE metafile);
QXUTIL_API HGLOBAL GetEnhancedMetaFileBits(HENHMETAFILE metafile);

/// strcpyn - copies at most n - 1 units of `src` into `dst`, fills the rest
/// of the n units with zeros and returns `dst`; n = 0 writes nothing; a
/// null `src` copies as the empty string. strcpyn(d, L"abc", 3) => "ab".
QXUTIL_API wchar_t* strcpyn(wchar_t* dst, const wchar_t* src, unsigned int n);

#endif // QXUTIL_FRAME_H
