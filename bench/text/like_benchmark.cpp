// Like against SQLite's LIKE (case-sensitive) and against the naive
// recursion it replaces (fuzz/models/like_oracle.h), in one run.
//
// SQLite is measured two ways: a prepared "SELECT ?1 LIKE ?2" statement with
// PRAGMA case_sensitive_like=ON, rebound and stepped per iteration (what an
// SQL user pays), and sqlite3_strglob with the pattern translated to GLOB
// syntax ("%" -> "*", "_" -> "?"), which runs the same matching core
// without the statement machinery (the matching alone).
#include "models/like_oracle.h"
#include "qxutil/text.h"

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

// A 64-unit subject, the kind of value a LIKE filter meets.
const std::string kSubject64 = "Riverside Drive 1200, Springfield County, route 66 north-bound X";

struct Case {
  const char* name;
  std::string subject;
  std::string pattern;
};

std::string Many(char c, size_t n) { return std::string(n, c); }

const Case kCases[] = {
    {"prefix%", kSubject64, "Riverside%"},
    {"prefix%_miss", kSubject64, "Riverbank%"},
    {"%infix%", kSubject64, "%Springfield%"},
    {"%infix%_miss", kSubject64, "%Shelbyville%"},
    {"underscores", kSubject64, "R_vers_de Dr_ve%_oun_ X"},
    {"a%b%c", kSubject64, "R%1200%route%X"},
    {"exact", kSubject64, kSubject64},
    {"pathological_4096", Many('a', 4096), "%a%a%a%a%a%a%b"},
};

std::wstring Wide(const std::string& s) { return std::wstring(s.begin(), s.end()); }

std::string ToGlob(const std::string& like) {
  std::string g = like;
  for (char& c : g)
    c = c == '%' ? '*' : c == '_' ? '?' : c;
  return g;
}

void BM_Like(benchmark::State& state, const Case* c) {
  std::wstring s = Wide(c->subject), p = Wide(c->pattern);
  bool match = false;
  for (auto _ : state) {
    benchmark::DoNotOptimize(Like(s.c_str(), p.c_str(), L"", &match));
    benchmark::DoNotOptimize(match);
  }
}

void BM_SqliteLikeStatement(benchmark::State& state, const Case* c) {
  sqlite3* db = nullptr;
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_open(":memory:", &db) != SQLITE_OK ||
      sqlite3_exec(db, "PRAGMA case_sensitive_like=ON", nullptr, nullptr, nullptr) != SQLITE_OK ||
      sqlite3_prepare_v2(db, "SELECT ?1 LIKE ?2", -1, &stmt, nullptr) != SQLITE_OK) {
    state.SkipWithError("cannot prepare the SQLite statement");
    sqlite3_close(db);
    return;
  }
  for (auto _ : state) {
    sqlite3_bind_text(stmt, 1, c->subject.data(), static_cast<int>(c->subject.size()),
                      SQLITE_STATIC);
    sqlite3_bind_text(stmt, 2, c->pattern.data(), static_cast<int>(c->pattern.size()),
                      SQLITE_STATIC);
    sqlite3_step(stmt);
    benchmark::DoNotOptimize(sqlite3_column_int(stmt, 0));
    sqlite3_reset(stmt);
  }
  sqlite3_finalize(stmt);
  sqlite3_close(db);
}

void BM_SqliteStrglob(benchmark::State& state, const Case* c) {
  std::string glob = ToGlob(c->pattern);
  for (auto _ : state)
    benchmark::DoNotOptimize(sqlite3_strglob(glob.c_str(), c->subject.c_str()));
}

void BM_NaiveRecursion(benchmark::State& state, const Case* c) {
  std::wstring s = Wide(c->subject), p = Wide(c->pattern);
  bool match = false, malformed = false;
  for (auto _ : state) {
    benchmark::DoNotOptimize(qxtest::LikeOracle(s.c_str(), p.c_str(), L"", &match, &malformed));
    benchmark::DoNotOptimize(match);
  }
}

// The pathological pattern for the naive recursion on a subject it can
// finish: its work grows with the sixth power of the length.
const Case kNaivePathological = {"pathological_24", Many('a', 24), "%a%a%a%a%a%a%b"};

// All answers must agree before anything is timed.
bool Agree() {
  sqlite3* db = nullptr;
  sqlite3_open(":memory:", &db);
  sqlite3_exec(db, "PRAGMA case_sensitive_like=ON", nullptr, nullptr, nullptr);
  sqlite3_stmt* stmt = nullptr;
  sqlite3_prepare_v2(db, "SELECT ?1 LIKE ?2", -1, &stmt, nullptr);
  bool ok = true;
  for (const Case& c : kCases) {
    bool ours = false;
    Like(Wide(c.subject).c_str(), Wide(c.pattern).c_str(), L"", &ours);
    sqlite3_bind_text(stmt, 1, c.subject.c_str(), -1, SQLITE_STATIC);
    sqlite3_bind_text(stmt, 2, c.pattern.c_str(), -1, SQLITE_STATIC);
    sqlite3_step(stmt);
    bool theirs = sqlite3_column_int(stmt, 0) != 0;
    sqlite3_reset(stmt);
    bool glob = sqlite3_strglob(ToGlob(c.pattern).c_str(), c.subject.c_str()) == 0;
    if (ours != theirs || ours != glob) {
      std::fprintf(stderr, "disagreement on %s\n", c.name);
      ok = false;
    }
  }
  sqlite3_finalize(stmt);
  sqlite3_close(db);
  return ok;
}

int Register() {
  if (!Agree())
    std::abort();
  for (const Case& c : kCases) {
    std::string name = c.name;
    benchmark::RegisterBenchmark(("Like/qxutil/" + name).c_str(), BM_Like, &c);
    benchmark::RegisterBenchmark(("Like/sqlite_statement/" + name).c_str(), BM_SqliteLikeStatement,
                                 &c);
    benchmark::RegisterBenchmark(("Like/sqlite_strglob/" + name).c_str(), BM_SqliteStrglob, &c);
    if (c.subject.size() <= 64)
      benchmark::RegisterBenchmark(("Like/naive/" + name).c_str(), BM_NaiveRecursion, &c);
  }
  benchmark::RegisterBenchmark("Like/qxutil/pathological_24", BM_Like, &kNaivePathological);
  benchmark::RegisterBenchmark("Like/naive/pathological_24", BM_NaiveRecursion,
                               &kNaivePathological);
  return 0;
}

[[maybe_unused]] const int kRegistered = Register();

} // namespace
