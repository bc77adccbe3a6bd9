// Stand-in services that record their destruction, for observing the order
// in which a set is torn down. Installed with the services' Instance(p).
#ifndef QXUTIL_TESTS_COMMON_RECORDING_SERVICES_H
#define QXUTIL_TESTS_COMMON_RECORDING_SERVICES_H

#include "qxutil/frame.h"
#include "qxutil/locale.h"
#include "qxutil/text.h"

#include <string>
#include <type_traits>
#include <vector>

namespace qxtest {

/// DestructionLog - names of the recording services destroyed, in order
/// (written by the thread that ends; read after joining it).
using DestructionLog = std::vector<std::string>;

/// Recording - a stand-in for `Service` that logs `name` when destroyed.
template <class Service> class Recording : public Service {
public:
  Recording(DestructionLog* log, const char* name) : log_(log), name_(name) {}
  ~Recording() override { log_->push_back(name_); }

private:
  DestructionLog* log_;
  const char* name_;
};

/// RecordingErrorSystem - an empty error list that records its destruction
/// (HaveErrors answers `haveErrors`).
class RecordingErrorSystem final : public Recording<cErrorSystem> {
public:
  explicit RecordingErrorSystem(DestructionLog* log) : Recording(log, "cErrorSystem") {}
  bool HaveErrors() override { return haveErrors; }
  int NumErrors() override { return 0; }
  bool FirstError() override { return true; }
  void ClearErrors() override {}
  bool GetNextError(bool, wchar_t*, unsigned int) override { return false; }
  bool ThisErrorOccurred(int) override { return false; }
  int GetErrorNum(int) override { return 0; }
  int GetResourceID(int) override { return 0; }
  const GUID& GetErrorGUID(int) override { return guid_; }
  void GetErrorMsg(const wchar_t*, unsigned int, wchar_t*, unsigned int) override {}
  void SetError(eErrorLevel, int, const wchar_t*, const GUID&, int, const wchar_t*,
                const wchar_t*) override {}
  void SetError(eErrorLevel, const wchar_t*, const GUID&, int, const wchar_t*,
                const wchar_t*) override {}
  void EndError() override {}
  void SetErrorFunctions(cErrorFuncs*) override {}
  void ReportErrors() override {}
  void SetQXErrorMode(eErrorMode) override {}
  eErrorMode GetQXErrorMode() override { return eErrorModeDefault; }
  bool haveErrors = false; // HaveErrors' answer

private:
  GUID guid_{};
};

class RecordingCheckEsc final : public Recording<cCheckEsc> {
public:
  explicit RecordingCheckEsc(DestructionLog* log) : Recording(log, "cCheckEsc") {}
  void SetCallback(cCheckEscCallback*) override {}
  bool Check() override { return false; }
  bool CheckForUpdate(bool) override { return false; }
};

class RecordingLocaleInfo final : public Recording<cLocaleInfo> {
public:
  explicit RecordingLocaleInfo(DestructionLog* log) : Recording(log, "cLocaleInfo") {}
  bool Refresh() override { return true; }
  LCID UpdateLocale() override { return 1033; }
  bool GetLocaleInt(LCTYPE, unsigned int*) override { return false; }
  bool GetLocaleString(LCTYPE, wchar_t*, unsigned int) override { return false; }
  void SetNumberFormatCallback(FormatCallback) override {}
  FormatCallback GetNumberFormatCallback() override { return nullptr; }
  void GetNumberInfo(bool, wchar_t*, wchar_t*, short*) override {}
  const wchar_t* GetCurrencySymbol() override { return L"$"; }
  bool GetNumberFormat(NUMBERFMTW*) override { return false; }
  bool GetCurrencyFormat(CURRENCYFMTW*) override { return false; }
  NUMBERFMTW* GetNumberFormatPtr() override { return nullptr; }
  CURRENCYFMTW* GetCurrencyFormatPtr() override { return nullptr; }
  void SetDateFormatCallback(FormatCallback) override {}
  FormatCallback GetDateFormatCallback() override { return nullptr; }
  void GetDateInfo(bool, short*, wchar_t*) override {}
  void GetTimeFormat(bool, wchar_t*, unsigned int) override {}
  void GetTimeInfo(bool, bool*, short*, const wchar_t**, const wchar_t**, const wchar_t**,
                   const wchar_t**) override {}
};

class RecordingCharsetInfo final : public Recording<cCharsetInfo> {
public:
  explicit RecordingCharsetInfo(DestructionLog* log) : Recording(log, "cCharsetInfo") {}
  QXCHARSET GetSystemCharset() override { return QXCHARSET_NEUTRAL; }
};

/// RecordingNormalizerManager - a manager without normalizers that records
/// its destruction.
class RecordingNormalizerManager final : public Recording<StringNormalizerManager> {
public:
  explicit RecordingNormalizerManager(DestructionLog* log)
      : Recording(log, "StringNormalizerManager") {}
  StringNormalizer* GetDefaultNormalizer() override { return nullptr; }
  StringNormalizer* GetNormalizer(QXCHARSET, unsigned short) override { return nullptr; }
  bool RequestDefaultNormalizer(int) override { return false; }
};

class RecordingCharsetConverter final : public Recording<cCharsetConverter> {
public:
  explicit RecordingCharsetConverter(DestructionLog* log) : Recording(log, "cCharsetConverter") {}
  bool GetConversionTable(QXCHARSET, QXCHARSET, int*, unsigned char**) override { return false; }
};

/// ReplaceWithRecorders - swaps the calling context's services for
/// recording ones (deleting the originals, which the caller owns once
/// replaced) and returns the names in the order the set must destroy them:
/// the documented destruction order, restricted to the services built so far.
inline std::vector<std::string> ReplaceWithRecorders(DestructionLog* log) {
  std::vector<std::string> order;
  auto replace = [&](auto* original, auto* recorder, const char* name) {
    using Service = std::remove_pointer_t<decltype(original)>;
    if (!Service::Instance(recorder))
      return;
    delete original;
    order.push_back(name);
  };
  replace(cErrorSystem::Instance(), new RecordingErrorSystem(log), "cErrorSystem");
  replace(StringNormalizerManager::Instance(), new RecordingNormalizerManager(log),
          "StringNormalizerManager");
  replace(cCharsetInfo::Instance(), new RecordingCharsetInfo(log), "cCharsetInfo");
  replace(cCharsetConverter::Instance(), new RecordingCharsetConverter(log), "cCharsetConverter");
  replace(cLocaleInfo::Instance(), new RecordingLocaleInfo(log), "cLocaleInfo");
  replace(cCheckEsc::Instance(), new RecordingCheckEsc(log), "cCheckEsc");
  return order;
}

} // namespace qxtest

#endif
