// Tables of calls: each row is a call written out (CALL keeps its text for
// the failure message), what it gave and what it must give. The rows of one
// table run in order, so a row may rely on the ones before it.
#ifndef QXUTIL_TESTS_COMMON_FRAME_CALL_TABLE_H
#define QXUTIL_TESTS_COMMON_FRAME_CALL_TABLE_H

#include <gtest/gtest.h>

#include <initializer_list>

namespace qxtest {

struct Call {
  const char* text;
  long long got;
  long long want;
};

/// ExpectCalls - every call gave what it must.
inline void ExpectCalls(std::initializer_list<Call> calls) {
  for (const Call& c : calls)
    EXPECT_EQ(c.got, c.want) << c.text;
}

} // namespace qxtest

#define CALL(call, want)                                                                           \
  qxtest::Call { #call, static_cast < long long>(call), static_cast < long long>(want) }

#endif // QXUTIL_TESTS_COMMON_FRAME_CALL_TABLE_H
