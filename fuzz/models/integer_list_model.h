// A differential driver for the QXList members: each step applies one
// operation (Add, AddRange, Remove, Clear, Clone) chosen from a stream of
// random numbers to a list and to a std::set, then compares everything the
// list answers: Contains around every run and at random, Count,
// CountUpToTwo, GetBounds with its one-run flag, both enumerators, and GetAt
// in ascending, descending and random order through one accessor that lives
// across the steps (so a stale cache would show). Values come from windows
// near 0, 2^31, 2^32 and the top of the type, or from the whole range; some
// are outside the member's range and must be refused. The word block of
// QXList<long> and the range array of the unsigned members are laid out and
// grow as their rules say. Driven by
// fuzz/containers_differential_fuzz.cpp.
#ifndef QXUTIL_FUZZ_MODELS_INTEGER_LIST_MODEL_H
#define QXUTIL_FUZZ_MODELS_INTEGER_LIST_MODEL_H

#include "containers/range_list.h"
#include "containers/word_list.h"
#include "qxutil/containers.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace qxtest {

/// ListLimits - what distinguishes the members.
template <class T> struct ListLimits;
template <> struct ListLimits<long> {
  static constexpr long kTop = 0x7FFFFFFF; // the greatest value held
  static constexpr long kNone = -1;        // all bits set
  static constexpr bool kAddSaysPresent = false;
};
template <> struct ListLimits<unsigned long> {
  static constexpr unsigned long kTop = 0xFFFFFFFFul;
  static constexpr unsigned long kNone = 0xFFFFFFFFul;
  static constexpr bool kAddSaysPresent = true; // Add of a present value is false
};
template <> struct ListLimits<unsigned long long> {
  static constexpr unsigned long long kTop = ~0ull;
  static constexpr unsigned long long kNone = ~0ull;
  static constexpr bool kAddSaysPresent = true;
};

/// Profile - how values are drawn: windows near the interesting bounds
/// (dense sets with long runs), the whole range (sparse sets), both, or
/// only the two values either side of each bound, in small sets that are
/// often cleared (where the ends of the type meet).
enum class Profile { kDense, kSparse, kMixed, kEdges };

template <class T> class IntegerListDifferential {
  using Limits = ListLimits<T>;

public:
  explicit IntegerListDifferential(Profile profile) : profile_(profile) {
    list_ = QXList<T>::Create();
    item_ = list_ ? list_->GetItem() : nullptr;
  }
  ~IntegerListDifferential() {
    delete item_;
    delete list_;
  }
  IntegerListDifferential(const IntegerListDifferential&) = delete;
  IntegerListDifferential& operator=(const IntegerListDifferential&) = delete;

  bool ok() const { return list_ && item_; }
  size_t size() const { return model_.size(); }

  /// Step - one operation and the full comparison; "" or the first
  /// difference. `next()` returns random 64-bit numbers.
  template <class Next> std::string Step(Next& next) {
    const unsigned op = static_cast<unsigned>(next() % 16);
    std::ostringstream what;
    if (op < 5) {
      const T v = Value(next);
      what << "Add(" << v << ")";
      if (list_->Add(v) != (InRange(v) && !(Limits::kAddSaysPresent && model_.count(v))))
        return what.str() + ": wrong result";
      if (InRange(v))
        model_.insert(v);
    } else if (op < 8) {
      const T a = Value(next);
      const int width = profile_ == Profile::kEdges ? 3 : 300;
      const T b = Near(a, static_cast<int>(next() % (2 * width + 1)) - width);
      what << "AddRange(" << a << ", " << b << ")";
      const bool expected = InRange(a) && InRange(b);
      if (list_->AddRange(a, b) != expected)
        return what.str() + ": wrong result";
      for (T v = std::min(a, b); expected; ++v) {
        model_.insert(v);
        if (v == std::max(a, b))
          break;
      }
    } else if (op < 13) {
      T v = Value(next);
      if (!model_.empty() && next() % 2) // mostly values that are there
        v = *std::next(model_.begin(), static_cast<long>(next() % model_.size()));
      what << "Remove(" << v << ")";
      if (!list_->Remove(v))
        return what.str() + ": false";
      model_.erase(v);
    } else if (op < 15 && next() % (profile_ == Profile::kEdges ? 1 : 16) == 0) {
      what << "Clear()";
      if (!list_->Clear())
        return what.str() + ": false";
      model_.clear();
    } else {
      what << "Clone()";
      QXList<T>* copy = list_->Clone();
      if (!copy)
        return what.str() + ": null";
      delete item_;
      delete list_;
      list_ = copy;
      if (!(item_ = list_->GetItem()))
        return what.str() + ": no item";
    }
    std::string difference = Capacity(what.str() == "Clone()");
    if (difference.empty())
      difference = Compare(next);
    return difference.empty() ? difference : what.str() + ": " + difference;
  }

private:
  static bool InRange(T v) {
    if constexpr (std::is_signed_v<T>)
      return v >= 0 && v <= Limits::kTop;
    else
      return v <= Limits::kTop;
  }

  // Near - a + d, held inside the C++ type.
  static T Near(T a, int d) {
    const __int128 v = static_cast<__int128>(a) + d;
    if (v < static_cast<__int128>(std::numeric_limits<T>::min()))
      return std::numeric_limits<T>::min();
    if (v > static_cast<__int128>(std::numeric_limits<T>::max()))
      return std::numeric_limits<T>::max();
    return static_cast<T>(v);
  }

  // Value - from a window near 0, 2^31, 2^32 or the top, or anywhere.
  template <class Next> T Value(Next& next) {
    const uint64_t r = next();
    const bool sparse = profile_ == Profile::kSparse || (profile_ == Profile::kMixed && r % 4 == 0);
    if (sparse) {
      const uint64_t bits = (r >> 8) % 5 == 0 ? 0 : next();
      return static_cast<T>(static_cast<uint64_t>(Limits::kTop) & bits) +
             static_cast<T>(bits & 1 ? 0 : (r >> 16) % 3);
    }
    static const uint64_t kBases[] = {0, 0x80000000ull, 0x100000000ull,
                                      static_cast<uint64_t>(Limits::kTop)};
    const uint64_t base = kBases[(r >> 2) % 4];
    if (profile_ == Profile::kEdges)
      return static_cast<T>(base + ((r >> 8) % 5) - 2);
    return static_cast<T>(base + ((r >> 8) % 256) - 128);
  }

  std::vector<std::pair<T, T>> Runs() const {
    std::vector<std::pair<T, T>> runs;
    for (T v : model_) {
      if (!runs.empty() && runs.back().second != Limits::kTop && runs.back().second + 1 == v)
        runs.back().second = v;
      else
        runs.push_back({v, v});
    }
    return runs;
  }

  // Capacity - the word block of QXList<long> (below); the range array of
  // the unsigned members: none while the list is empty, 32 ranges when
  // first made, 8 more whenever it is full, exactly the ranges in use in a
  // clone, never smaller otherwise.
  std::string Capacity(bool cloned) {
    if constexpr (std::is_same_v<T, long>) {
      // The word block: its count, then a word with bit 31 set per single
      // value and two (first, last) per longer run, and no more room than
      // the heap rounds to.
      const auto* impl = dynamic_cast<const qx::containers::QXListImpl*>(list_);
      std::vector<uint32_t> want = {0};
      for (const auto& [first, last] : Runs()) {
        if (first == last)
          want.push_back(0x80000000u | static_cast<uint32_t>(first));
        else
          want.insert(want.end(), {static_cast<uint32_t>(first), static_cast<uint32_t>(last)});
      }
      want[0] = static_cast<uint32_t>(want.size() - 1);
      if (!impl || !std::equal(want.begin(), want.end(), impl->Words()))
        return "the words differ";
      if (memSize(impl->Words()) < 4 * want.size() || memSize(impl->Words()) > 4 * want.size() + 32)
        return "a block of " + std::to_string(memSize(impl->Words())) + " bytes";
      return "";
    } else {
      using V = std::conditional_t<std::is_same_v<T, unsigned long>, uint32_t, uint64_t>;
      const auto* impl = dynamic_cast<const qx::containers::RangeListImpl<T, V>*>(list_);
      const uint32_t ranges = static_cast<uint32_t>(Runs().size());
      const uint32_t want = ranges == 0          ? 0
                            : cloned             ? ranges
                            : capacity_ == 0     ? 32
                            : ranges > capacity_ ? capacity_ + 8
                                                 : capacity_;
      capacity_ = impl ? impl->Capacity() : ~0u;
      if (capacity_ == want)
        return "";
      return "capacity " + std::to_string(capacity_) + " != " + std::to_string(want);
    }
  }

  template <class Next> std::string Compare(Next& next) {
    std::ostringstream out;
    const std::vector<T> values(model_.begin(), model_.end());
    const auto runs = Runs();
    // Counts and bounds.
    if (list_->Count() != static_cast<unsigned long>(values.size() & 0xFFFFFFFFu))
      out << "Count " << list_->Count() << " != " << values.size() << "; ";
    const unsigned long upToTwo = values.size() < 2 ? values.size() : 2;
    if (list_->CountUpToTwo() != upToTwo)
      out << "CountUpToTwo " << list_->CountUpToTwo() << "; ";
    T min = 7, max = 7;
    bool oneRun = false;
    const bool bounded = list_->GetBounds(min, max, &oneRun);
    if (bounded != !values.empty() || (bounded && (min != values.front() || max != values.back() ||
                                                   oneRun != (runs.size() == 1))))
      out << "GetBounds " << bounded << " " << min << " " << max << " " << oneRun << "; ";
    // Contains around every run (a few hundred at most) and at random.
    std::vector<T> probes;
    for (size_t i = 0; i < runs.size() && i < 300; ++i)
      for (int d : {-1, 0, 1}) {
        probes.push_back(Near(runs[i].first, d));
        probes.push_back(Near(runs[i].second, d));
      }
    for (int i = 0; i < 8; ++i)
      probes.push_back(Value(next));
    for (T v : probes)
      if (list_->Contains(v) != (model_.count(v) > 0))
        out << "Contains(" << v << "); ";
    // The value enumerator: true while the value is not all bits set.
    if (QXListEnumerator<T>* e = list_->GetEnumerator()) {
      for (T v : values) {
        T got = 7;
        const bool more = e->Next(got);
        if (got != v || more != (v != Limits::kNone)) {
          out << "Next yields " << got << " for " << v << "; ";
          break;
        }
      }
      T got = 7;
      if (e->Next(got) || got != Limits::kNone)
        out << "Next past the end; ";
      delete e;
    } else {
      out << "no enumerator; ";
    }
    if (QXListRangeEnumerator<T>* e = list_->GetRangeEnumerator()) {
      for (const auto& run : runs) {
        T first = 7, last = 7;
        if (!e->Next(first, last) || first != run.first || last != run.second) {
          out << "range Next yields " << first << ".." << last << "; ";
          break;
        }
      }
      T first = 7, last = 7;
      if (e->Next(first, last) || first != Limits::kNone || last != Limits::kNone)
        out << "range Next past the end; ";
      delete e;
    } else {
      out << "no range enumerator; ";
    }
    // GetAt through the accessor that outlives the steps.
    // Random ordinals last, so that the next step finds the cache somewhere
    // inside the list it has since changed.
    std::vector<unsigned long> ordinals;
    for (unsigned long i = 0; i <= values.size() + 1; ++i)
      ordinals.push_back(i);
    for (unsigned long i = values.size(); i >= 1; --i)
      ordinals.push_back(i);
    for (int i = 0; i < 16; ++i)
      ordinals.push_back(static_cast<unsigned long>(next() % (values.size() + 2)));
    for (unsigned long ordinal : ordinals) {
      T got = 7;
      const bool in = ordinal >= 1 && ordinal <= values.size();
      const bool found = item_->GetAt(ordinal, got);
      if (found != in || got != (in ? values[ordinal - 1] : Limits::kNone)) {
        out << "GetAt(" << ordinal << ") = " << found << " " << got << "; ";
        break;
      }
    }
    return out.str();
  }

  Profile profile_;
  QXList<T>* list_ = nullptr;
  QXListItem<T>* item_ = nullptr;
  std::set<T> model_;
  uint32_t capacity_ = 0; // the range array's, after the last step
};

} // namespace qxtest

#endif // QXUTIL_FUZZ_MODELS_INTEGER_LIST_MODEL_H
