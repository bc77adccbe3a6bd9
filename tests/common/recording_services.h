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

/// RecordingErrorSystem - an empty error list that records its destruction.
class RecordingErrorSystem final : public cErrorSystem {
public:
  explicit RecordingErrorSystem(DestructionLog* log) : log_(log) {}
  ~RecordingErrorSystem() override { log_->push_back("cErrorSystem"); }
  bool HaveErrors() override { return false; }
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

private:
  DestructionLog* log_;
  GUID guid_{};
};

class RecordingCheckEsc final : public cCheckEsc {
public:
  explicit RecordingCheckEsc(DestructionLog* log) : log_(log) {}
  ~RecordingCheckEsc() override { log_->push_back("cCheckEsc"); }
  void SetCallback(cCheckEscCallback*) override {}
  bool Check() override { return false; }
  bool CheckForUpdate(bool) override { return false; }

private:
  DestructionLog* log_;
};

class RecordingLocaleInfo final : public cLocaleInfo {
public:
  explicit RecordingLocaleInfo(DestructionLog* log) : log_(log) {}
  ~RecordingLocaleInfo() override { log_->push_back("cLocaleInfo"); }
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

private:
  DestructionLog* log_;
};

class RecordingCharsetInfo final : public cCharsetInfo {
public:
  explicit RecordingCharsetInfo(DestructionLog* log) : log_(log) {}
  ~RecordingCharsetInfo() override { log_->push_back("cCharsetInfo"); }
  QXCHARSET GetSystemCharset() override { return QXCHARSET_NEUTRAL; }

private:
  DestructionLog* log_;
};

/// RecordingNormalizerManager - a manager without normalizers that records
/// its destruction.
class RecordingNormalizerManager final : public StringNormalizerManager {
public:
  explicit RecordingNormalizerManager(DestructionLog* log) : log_(log) {}
  ~RecordingNormalizerManager() override { log_->push_back("StringNormalizerManager"); }
  StringNormalizer* GetDefaultNormalizer() override { return nullptr; }
  StringNormalizer* GetNormalizer(QXCHARSET, unsigned short) override { return nullptr; }
  bool RequestDefaultNormalizer(int) override { return false; }

private:
  DestructionLog* log_;
};

class RecordingCharsetConverter final : public cCharsetConverter {
public:
  explicit RecordingCharsetConverter(DestructionLog* log) : log_(log) {}
  ~RecordingCharsetConverter() override { log_->push_back("cCharsetConverter"); }
  bool GetConversionTable(QXCHARSET, QXCHARSET, int*, unsigned char**) override { return false; }

private:
  DestructionLog* log_;
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
