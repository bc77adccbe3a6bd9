//===- frame/error_system.cpp - The error list ----------------------------===//
//
// Thirty fixed records. Context texts and argument strings of all records are
// appended to one text pool and referred to by offset and length; each
// record owns a copy of its message template. Once a record had to be
// dropped the list is "lost" until it is cleared.
//
//===----------------------------------------------------------------------===//
#include "frame/singleton.h"
#include "frame/wide_buffer.h"
#include "platform/crt_number.h"
#include "qxutil/frame.h"

#include <algorithm>
#include <cerrno>
#include <cwchar>
#include <cwctype>
#include <new>

namespace {

constexpr int kMaxRecords = 30;
// The pool and an expanded message stay below these many units.
constexpr size_t kMaxPoolUnits = 0x7FFFFFFE;    // 2,147,483,646
constexpr size_t kMaxMessageUnits = 0x7FFFFFFD; // 2,147,483,645
constexpr int kSeparator = -1;
// A record with this number carries its real number as text in its first
// argument.
constexpr int kNumberAsText = 15;

const wchar_t kLostMessage[] = L" Too many errors.  Error information has been lost.";

struct TextRef {
  size_t offset;
  size_t length;
};

struct ErrorRecord {
  eErrorLevel level;
  qx::WideBuffer message;
  GUID module;
  int resourceId;
  int number;
  TextRef context;
  TextRef arg0;
  TextRef arg1;
};

class cErrorSystemImpl final : public cErrorSystem {
public:
  cErrorSystemImpl() {
    if (!falloc_(sizeof(ErrorRecord) * kMaxRecords, &records_, true, true))
      throw std::bad_alloc();
    for (int i = 0; i < kMaxRecords; ++i)
      new (&records_[i]) ErrorRecord();
    if (!pool_.Reserve(64) || !scratch_.Reserve(64)) {
      FreeRecords();
      throw std::bad_alloc();
    }
    Recount();
  }
  ~cErrorSystemImpl() override {
    FreeRecords();
    if (!asking_) // the base class takes back the share it gave
      qx::detail::gErrorListsToAsk.fetch_add(1, std::memory_order_relaxed);
  }

  bool HaveErrors() override { return !(funcs_ && funcs_->IsSuppressed()) && stored_ > 0; }

  int NumErrors() override { return stored_; }

  bool FirstError() override { return episodeCount_ == 0; }

  void ClearErrors() override {
    for (int i = 0; i < stored_ && i < kMaxRecords; ++i) {
      ErrorRecord& r = records_[i];
      r.level = eErrorLevelNone;
      r.message.Clear();
      r.module = GUID{};
      r.number = 0;
      r.context = r.arg0 = r.arg1 = TextRef{};
    }
    count_ = cursor_ = stored_ = episodeCount_ = 0;
    lost_ = false;
    pool_.Clear();
    scratch_.Clear();
    Recount();
  }

  bool GetNextError(bool fromStart, wchar_t* out, unsigned int outLen) override {
    if (fromStart)
      cursor_ = 0;
    bool result = IsError(cursor_);
    qx::WideBuffer text;
    int from = cursor_++;
    if (!lost_)
      CollectEpisode(from, &text, outLen, true);
    if (out && outLen)
      strcpyn(out, lost_ ? kLostMessage : text.c_str(), outLen);
    return result;
  }

  bool ThisErrorOccurred(int number) override {
    for (int i = 0; i < kMaxRecords; ++i)
      if (records_[i].number == number)
        return true;
    return false;
  }

  int GetErrorNum(int index) override {
    if (!InRange(index))
      return 0;
    const ErrorRecord& r = records_[index];
    if (r.number != kNumberAsText)
      return r.number;
    size_t offset = std::min(r.arg0.offset, pool_.size());
    // The number as wcstol reads it; 0 when it is out of range.
    errno = 0;
    const long v = qx::crt::wcstol(pool_.c_str() + offset, nullptr, 10);
    return errno == ERANGE ? 0 : static_cast<int>(v);
  }

  int GetResourceID(int index) override { return InRange(index) ? records_[index].resourceId : 0; }

  const GUID& GetErrorGUID(int index) override {
    static const GUID kNone{};
    return InRange(index) ? records_[index].module : kNone;
  }

  void GetErrorMsg(const wchar_t* newTemplate, unsigned int index, wchar_t* out,
                   unsigned int outLen) override {
    if (!out || outLen == 0)
      return;
    if (index >= kMaxRecords) {
      out[0] = 0;
      return;
    }
    if (newTemplate)
      records_[index].message.Assign(newTemplate);
    if (!Expand(records_[index])) { // a message that cannot be made comes out empty
      out[0] = 0;
      return;
    }
    size_t limit = std::min<size_t>(outLen, scratch_.size() + 1);
    strcpyn(out, scratch_.c_str(), static_cast<unsigned int>(limit));
  }

  void SetError(eErrorLevel level, int resourceId, const wchar_t* message, const GUID& module,
                int number, const wchar_t* arg0, const wchar_t* arg1) override {
    if (funcs_ && funcs_->IsSuppressed())
      return;
    // Separators are never merged; the host is asked only about real errors.
    if (number != kSeparator && !(funcs_ && funcs_->KeepDuplicates())) {
      for (int i = 0; i < count_; ++i) {
        if (records_[i].number == number) {
          records_[i].level = std::max(records_[i].level, level);
          return;
        }
      }
    }
    int index = count_++;
    if (index >= kMaxRecords) {
      lost_ = true;
      count_ = kMaxRecords;
    }
    if (lost_)
      return;

    ErrorRecord& r = records_[index];
    r.level = level;
    r.resourceId = resourceId;
    r.message.Clear();
    if (message && !r.message.Assign(message))
      lost_ = true;
    r.module = module;
    r.number = number;

    size_t start =
        index == 0 ? 0 : records_[index - 1].arg1.offset + records_[index - 1].arg1.length;
    r.context = r.arg0 = r.arg1 = TextRef{start, 0};
    size_t room = start < kMaxPoolUnits ? kMaxPoolUnits - start : 0;
    if (funcs_) {
      const wchar_t* context = funcs_->GetContext(episodeCount_);
      if (context && *context) {
        r.context.length = AppendToPool(context, &room);
        r.arg0.offset = r.arg1.offset = start + r.context.length;
      }
    }
    if (arg0) {
      r.arg0.length = AppendToPool(arg0, &room);
      r.arg1.offset = r.arg0.offset + r.arg0.length;
    }
    if (arg1)
      r.arg1.length = AppendToPool(arg1, &room);
    ++stored_;
    ++episodeCount_;
    Recount();
  }

  void SetError(eErrorLevel level, const wchar_t* message, const GUID& module, int number,
                const wchar_t* arg0, const wchar_t* arg1) override {
    SetError(level, -1, message, module, number, arg0, arg1);
  }

  void EndError() override {
    if (episodeCount_ == 0)
      return;
    static const GUID kNone{};
    SetError(eErrorLevelNone, L"", kNone, kSeparator, nullptr, nullptr);
    episodeCount_ = 0;
  }

  void SetErrorFunctions(cErrorFuncs* funcs) override { funcs_ = funcs; }

  void ReportErrors() override {
    bool result = IsError(0);
    qx::WideBuffer text;
    if (!lost_)
      CollectEpisode(0, &text, 0, false);
    const bool lost = lost_; // also when the text could not be collected
    ClearErrors();
    if (funcs_ && result)
      funcs_->Report(lost ? kLostMessage : text.c_str());
  }

  void SetQXErrorMode(eErrorMode mode) override { mode_ = mode; }
  eErrorMode GetQXErrorMode() override { return mode_; }

private:
  void FreeRecords() {
    for (int i = 0; i < kMaxRecords; ++i)
      records_[i].~ErrorRecord();
    ffree(&records_);
  }

  static bool InRange(int index) { return index >= 0 && index < kMaxRecords; }

  bool IsError(int index) const {
    return InRange(index) && records_[index].number != 0 && records_[index].number != kSeparator;
  }

  // AppendToPool - appends `text` (clipped to the room left, which sets
  // lost) and returns the number of units stored.
  size_t AppendToPool(const wchar_t* text, size_t* room) {
    size_t n = std::wcslen(text);
    if (n > *room) {
      n = *room;
      lost_ = true;
    }
    if (!pool_.Append(text, n)) {
      lost_ = true;
      return 0;
    }
    *room -= n;
    return n;
  }

  const wchar_t* PoolText(const TextRef& ref) const {
    return pool_.c_str() + std::min(ref.offset, pool_.size());
  }
  size_t PoolLength(const TextRef& ref) const {
    size_t offset = std::min(ref.offset, pool_.size());
    return std::min(ref.length, pool_.size() - offset);
  }

  // Expand - the record's message into the scratch: its context text, then
  // (for a real error) its template with ^0, ^1 and ^^ replaced; false when
  // the scratch could not grow (its text is then a part of the message).
  bool Expand(const ErrorRecord& r) {
    scratch_.Clear();
    size_t contextLength = std::min(PoolLength(r.context), kMaxPoolUnits);
    if (!scratch_.Append(PoolText(r.context), contextLength))
      return false;
    if (r.number == 0)
      return true;
    const wchar_t* t = r.message.c_str();
    while (*t && scratch_.size() < kMaxMessageUnits) {
      if (t[0] == L'^' && (t[1] == L'0' || t[1] == L'1')) {
        const TextRef& arg = t[1] == L'0' ? r.arg0 : r.arg1;
        size_t n = std::min(PoolLength(arg), kMaxPoolUnits - 1 - scratch_.size());
        if (!scratch_.Append(PoolText(arg), n))
          return false;
        t += 2;
      } else if (t[0] == L'^' && t[1] == L'^') {
        if (!scratch_.Append(L'^'))
          return false;
        t += 2;
      } else {
        if (!scratch_.Append(*t))
          return false;
        ++t;
      }
    }
    return true;
  }

  // CollectEpisode - appends the messages of the records from `from` up to
  // the next separator or free slot, each ended by a line feed. With
  // `bounded`, a message that would not fit in `outLen` units sets lost.
  // Advances the read cursor past each record taken.
  void CollectEpisode(int from, qx::WideBuffer* text, unsigned int outLen, bool bounded) {
    for (int i = from; IsError(i); ++i) {
      if (!Expand(records_[i])) {
        lost_ = true;
        return;
      }
      size_t n = scratch_.size();
      if (n && scratch_.c_str()[n - 1] == L'\n')
        --n;
      if (bounded && text->size() + n + 2 > outLen) {
        lost_ = true;
        return;
      }
      if (!text->Append(scratch_.c_str(), n) || !text->Append(L'\n')) {
        lost_ = true;
        return;
      }
      if (bounded)
        ++cursor_;
    }
  }

  // Recount - keeps this list's share of gErrorListsToAsk: 1 while it holds
  // a record (only then can its HaveErrors() be true), else 0. The base
  // class gave it 1.
  void Recount() {
    const bool ask = stored_ > 0;
    if (ask != asking_) {
      asking_ = ask;
      qx::detail::gErrorListsToAsk.fetch_add(ask ? 1 : -1, std::memory_order_relaxed);
    }
  }

  bool asking_ = true;
  int count_ = 0;
  int cursor_ = 0;
  int stored_ = 0;
  int episodeCount_ = 0;
  bool lost_ = false;
  ErrorRecord* records_ = nullptr;
  qx::WideBuffer pool_;
  qx::WideBuffer scratch_;
  cErrorFuncs* funcs_ = nullptr;
  eErrorMode mode_ = eErrorModeDefault;
};

} // namespace

std::atomic<int> qx::detail::gErrorListsToAsk{0};

cErrorSystem::cErrorSystem() {
  qx::detail::gErrorListsToAsk.fetch_add(1, std::memory_order_relaxed);
}
cErrorSystem::~cErrorSystem() {
  qx::detail::gErrorListsToAsk.fetch_sub(1, std::memory_order_relaxed);
}
cErrorFuncs::~cErrorFuncs() {}

cErrorSystem* cErrorSystem::Create() { return qx::NewServiceOrNull<cErrorSystemImpl>(); }

// The exported functions: fetch the context's error list, make one call.
// With no error list (a failed start-up) they do nothing and answer "none".

// HaveErrors() is inline; this keeps it exported for hosts built without
// the inline form.
[[gnu::used]] static bool (*const kExportedHaveErrors)() = &HaveErrors;

bool qx::detail::AskErrorList() {
  cErrorSystem* es = cErrorSystem::Instance();
  return es && es->HaveErrors();
}

int NumErrors() {
  cErrorSystem* es = cErrorSystem::Instance();
  return es ? es->NumErrors() : 0;
}

bool FirstError() {
  cErrorSystem* es = cErrorSystem::Instance();
  return !es || es->FirstError();
}

void ClearErrors() {
  if (cErrorSystem* es = cErrorSystem::Instance())
    es->ClearErrors();
}

bool GetNextError(bool fromStart, wchar_t* out, unsigned int outLen) {
  if (cErrorSystem* es = cErrorSystem::Instance())
    return es->GetNextError(fromStart, out, outLen);
  if (out && outLen)
    out[0] = 0;
  return false;
}

bool ThisErrorOccurred(int number) {
  cErrorSystem* es = cErrorSystem::Instance();
  return es && es->ThisErrorOccurred(number);
}

int GetErrorNum(int index) {
  cErrorSystem* es = cErrorSystem::Instance();
  return es ? es->GetErrorNum(index) : 0;
}

int GetResourceID(int index) {
  cErrorSystem* es = cErrorSystem::Instance();
  return es ? es->GetResourceID(index) : 0;
}

const GUID& GetErrorGUID(int index) {
  static const GUID kNone{};
  cErrorSystem* es = cErrorSystem::Instance();
  return es ? es->GetErrorGUID(index) : kNone;
}

void GetErrorMsg(const wchar_t* newTemplate, unsigned int index, wchar_t* out,
                 unsigned int outLen) {
  if (cErrorSystem* es = cErrorSystem::Instance())
    es->GetErrorMsg(newTemplate, index, out, outLen);
  else if (out && outLen)
    out[0] = 0;
}

void SetError(eErrorLevel level, int resourceId, const wchar_t* message, const GUID& module,
              int number, const wchar_t* arg0, const wchar_t* arg1) {
  if (cErrorSystem* es = cErrorSystem::Instance())
    es->SetError(level, resourceId, message, module, number, arg0, arg1);
}

void SetError(eErrorLevel level, const wchar_t* message, const GUID& module, int number,
              const wchar_t* arg0, const wchar_t* arg1) {
  if (!message)
    return;
  if (cErrorSystem* es = cErrorSystem::Instance())
    es->SetError(level, message, module, number, arg0, arg1);
}

void EndError() {
  if (cErrorSystem* es = cErrorSystem::Instance())
    es->EndError();
}

void SetErrorFunctions(cErrorFuncs* funcs) {
  if (cErrorSystem* es = cErrorSystem::Instance())
    es->SetErrorFunctions(funcs);
}

void ReportErrors() {
  if (cErrorSystem* es = cErrorSystem::Instance())
    es->ReportErrors();
}

void SetQXErrorMode(eErrorMode mode) {
  if (cErrorSystem* es = cErrorSystem::Instance())
    es->SetQXErrorMode(mode);
}

eErrorMode GetQXErrorMode() {
  cErrorSystem* es = cErrorSystem::Instance();
  return es ? es->GetQXErrorMode() : eErrorModeDefault;
}

template class QXSingleton<cErrorSystem, 7>;
