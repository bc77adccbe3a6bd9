//===- text/normalizer_manager.cpp - The normalizers of one context --------===//
//
// StringNormalizerManager owns a default normalizer, made on first use and
// never replaced, and a list of the normalizers asked for by character set
// and table, in the order they were made. It hands out the same object for
// the same request for as long as it lives.
//
//===----------------------------------------------------------------------===//
#include "frame/report.h"
#include "frame/singleton.h"
#include "text/default_folding.h"
#include "text/string_normalizer.h"

namespace {

using qx::kRenamedWesternId;
using qx::kWesternId;

constexpr int kUnknownTableError = 74; // number and message resource

class StringNormalizerManagerImpl final : public StringNormalizerManager {
public:
  StringNormalizerManagerImpl() : charset_(system_charset()) {}

  ~StringNormalizerManagerImpl() override {
    delete default_;
    for (size_t i = 0; i < count_; ++i)
      delete list_[i];
    ffree(&list_);
  }

  StringNormalizer* GetDefaultNormalizer() override {
    if (!default_)
      MakeDefault(0);
    return default_;
  }

  StringNormalizer* GetNormalizer(QXCHARSET charset, unsigned short id) override {
    const bool western = charset == QXCHARSET_WINDOWS_LATIN1;
    for (size_t i = 0; i < count_; ++i) {
      StringNormalizer* n = list_[i];
      if (n->GetCharset() != charset)
        continue;
      unsigned short has = n->GetId();
      if (has == id || (western && id == kWesternId && has == kRenamedWesternId)) {
        n->SetActive(true);
        return n;
      }
    }
    unsigned short wanted = western && id == kRenamedWesternId ? kWesternId : id;
    const qx::NormalizationTable* table = qx::FindFoldingTable(wanted);
    if (!table) {
      qx::ReportFormatted(kUnknownTableError, kUnknownTableError, L"%d", static_cast<int>(id));
      return nullptr;
    }
    if (!Reserve(count_ + 1))
      return nullptr;
    StringNormalizer* made = qx::StringNormalizerImpl::Create(charset, *table);
    if (!made)
      return nullptr;
    list_[count_++] = made;
    made->SetActive(true);
    return made;
  }

  bool RequestDefaultNormalizer(int languageId) override {
    if (default_)
      return false;
    MakeDefault(languageId);
    return default_ != nullptr;
  }

private:
  void MakeDefault(int languageId) {
    if (const qx::NormalizationTable* table =
            qx::FindFoldingTable(qx::DefaultFoldingId(charset_, languageId)))
      default_ = qx::StringNormalizerImpl::Create(charset_, *table);
  }

  // Reserve - room for `n` entries in the list; false (list unchanged) when
  // memory fails.
  bool Reserve(size_t n) {
    if (n <= capacity_)
      return true;
    size_t want = capacity_ ? capacity_ * 2 : 4;
    void* grown = list_;
    if (want * sizeof(StringNormalizer*) > 0xFFFFFFFFu ||
        !GetMem_(static_cast<unsigned int>(want * sizeof(StringNormalizer*)), &grown, true))
      return false;
    list_ = static_cast<StringNormalizer**>(grown);
    capacity_ = want;
    return true;
  }

  QXCHARSET charset_;
  StringNormalizer* default_ = nullptr;
  StringNormalizer** list_ = nullptr;
  size_t count_ = 0;
  size_t capacity_ = 0;
};

} // namespace

StringNormalizerManager::~StringNormalizerManager() {}

StringNormalizerManager* StringNormalizerManager::Create() {
  return qx::NewServiceOrNull<StringNormalizerManagerImpl>();
}

StringNormalizer* GetDefaultNormalizer() {
  StringNormalizerManager* manager = StringNormalizerManager::Instance();
  return manager ? manager->GetDefaultNormalizer() : nullptr;
}

StringNormalizer* GetNormalizer(QXCHARSET charset, unsigned short id) {
  StringNormalizerManager* manager = StringNormalizerManager::Instance();
  return manager ? manager->GetNormalizer(charset, id) : nullptr;
}

bool RequestDefaultNormalizer(int languageId) {
  StringNormalizerManager* manager = StringNormalizerManager::Instance();
  return manager && manager->RequestDefaultNormalizer(languageId);
}

template class QXSingleton<StringNormalizerManager, 13>;
