// What an update of the watch's evidence costs beside the two statements that it stands on.
//
//   shared_defaults_benchmark FOLDER [ROUNDS]
//
// Two suites in FOLDER, which decides what a flush of the disk costs. Each round, in turns, makes 200 updates
// of one field of the evidence through WatchConnectionEvidenceStore, and 200 times the statements that read
// and write a record of that size on a bare connection with the same settings: BEGIN IMMEDIATE, SELECT,
// INSERT OR REPLACE, COMMIT. Prints medians by the clock, a ratio taken round by round. Takes at least 11
// ROUNDS, which is also what it takes by default.

#include <KestrelKit/WatchConnectionEvidenceStore.h>
#include <KestrelKit/foundation/SqliteDefaults.h>
#include <KestrelKit/foundation/SqliteHandles.h>
#include <KestrelKit/model/JSONCoders.h>
#include <fmt/format.h>
#include <sqlite3.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "Timing.h"

namespace {

using namespace kestrel;
using kestrel::benchmark::median;

constexpr int updatesInARound = 200;
constexpr const char* key = "watch.currentStateDeliveryEvidence.v1";

template <class Work>
double microsecondsEach(const Work& work) {
  const auto before = std::chrono::steady_clock::now();
  for (int update = 0; update < updatesInARound; ++update) {
    work();
  }
  return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - before).count() /
         updatesInARound;
}

void demand(bool isRight, const char* what) {
  if (!isRight) {
    fmt::print(stderr, "shared_defaults_benchmark: {}\n", what);
    std::exit(1);
  }
}

/// The statements alone, on a connection of their own.
class Bare {
 public:
  Bare(const std::filesystem::path& file, const std::string& json) : json_(json) {
    sqlite3* handle = nullptr;
    demand(sqlite3_open(file.c_str(), &handle) == SQLITE_OK, "a database cannot be opened");
    connection_.reset(handle);
    // As SqliteDefaults has them.
    run("PRAGMA synchronous = EXTRA");
    run("CREATE TABLE defaults (key TEXT NOT NULL PRIMARY KEY, value ANY NOT NULL) STRICT, WITHOUT ROWID");
    prepare(begin_, "BEGIN IMMEDIATE");
    prepare(read_, "SELECT value FROM defaults WHERE key = ?1");
    prepare(write_, "INSERT OR REPLACE INTO defaults (key, value) VALUES (?1, ?2)");
    prepare(commit_, "COMMIT");
    for (sqlite3_stmt* statement : {read_.get(), write_.get()}) {
      sqlite3_bind_text(statement, 1, key, -1, SQLITE_STATIC);
    }
  }

  void update() {
    demand(sqlite3_step(begin_.get()) == SQLITE_DONE, "BEGIN failed");
    sqlite3_reset(begin_.get());
    if (sqlite3_step(read_.get()) == SQLITE_ROW) {
      demand(sqlite3_column_bytes(read_.get(), 0) > 0, "nothing was read");
    }
    sqlite3_reset(read_.get());
    json_.back() = json_.back() == ' ' ? '\n' : ' ';  // Another value, as in an update.
    sqlite3_bind_blob64(write_.get(), 2, json_.data(), json_.size(), SQLITE_STATIC);
    demand(sqlite3_step(write_.get()) == SQLITE_DONE, "INSERT failed");
    sqlite3_reset(write_.get());
    demand(sqlite3_step(commit_.get()) == SQLITE_DONE, "COMMIT failed");
    sqlite3_reset(commit_.get());
  }

 private:
  void run(const char* sql) {
    demand(sqlite3_exec(connection_.get(), sql, nullptr, nullptr, nullptr) == SQLITE_OK, sql);
  }

  void prepare(SqliteStatement& statement, const char* sql) {
    sqlite3_stmt* prepared = nullptr;
    demand(sqlite3_prepare_v2(connection_.get(), sql, -1, &prepared, nullptr) == SQLITE_OK, sql);
    statement.reset(prepared);
  }

  std::string json_;
  SqliteConnection connection_;
  SqliteStatement begin_;
  SqliteStatement read_;
  SqliteStatement write_;
  SqliteStatement commit_;
};

}  // namespace

int main(int count, char** arguments) {
  constexpr int fewestRounds = 11;
  const int rounds = count > 2 ? std::atoi(arguments[2]) : fewestRounds;  // NOLINT(cert-err34-c): see below
  demand(count > 1 && rounds >= fewestRounds, "a folder and at least 11 rounds are needed");
  const std::filesystem::path folder = std::filesystem::path(arguments[1]) / "shared-defaults-benchmark";
  std::filesystem::remove_all(folder);
  std::filesystem::create_directory(folder);
  {
    const WatchConnectionEvidence evidence{.isPaired = true,
                                           .isWatchAppInstalled = true,
                                           .lastSentAt = Instant(),
                                           .lastSentDeliveryID = Uuid(),
                                           .lastAcknowledgedAt = Instant(),
                                           .lastAcknowledgedDeliveryID = Uuid(),
                                           .lastReceivedStateAt = Instant(),
                                           .lastReceivedState = "Euthymia",
                                           .lastReceivedConfidence = 1};
    const auto suite = SqliteDefaults::open(folder / "suite.sqlite");
    demand(suite.has_value(), "the suite cannot be opened");
    WatchConnectionEvidenceStore store(*suite);
    store.replace(evidence);
    Bare bare(folder / "bare.sqlite", JSONCoders::encoder.encode(evidence).value() + ' ');

    const auto increment = [&] {
      store.update([](WatchConnectionEvidence& current) { ++*current.lastReceivedConfidence; });
    };
    std::vector<double> ours;
    std::vector<double> theirs;
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
      if (round % 2 == 0) {
        ours.push_back(microsecondsEach(increment));
        theirs.push_back(microsecondsEach([&] { bare.update(); }));
      } else {
        theirs.push_back(microsecondsEach([&] { bare.update(); }));
        ours.push_back(microsecondsEach(increment));
      }
      ratios.push_back(ours.back() / theirs.back());
    }
    demand(store.current().lastReceivedConfidence == 1 + rounds * updatesInARound, "an update was lost");
    fmt::print(
        "| an update, us | bare statements, us | ratio |\n|--:|--:|--:|\n| {:.0f} | {:.0f} | {:.2f} |\n",
        median(ours), median(theirs), median(ratios));
  }
  std::filesystem::remove_all(folder);
}
