// What a scan of the Messages database costs beside SQLite alone.
//
//   messages_scan_benchmark FOLDER [PAIRS]
//
// Writes sample histories of 10,000 to 5,000,000 messages into FOLDER (those that are there are used again),
// then prints three tables: the memory of a process that scans, or that does the bare stepping of the same
// statement with the same columns read; the time of the two, taking turns, in three zones; and its growth
// with the number of messages. Takes at least 11 PAIRS of turns, which is also what it takes by default.

#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/SqliteFileSystem.h>
#include <KestrelKit/foundation/SqliteHandles.h>
#include <KestrelTrackerMac/reading/MessagesDatabase.h>
#include <KestrelTrackerMac/reading/MessagesQuery.h>
#include <fmt/format.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <tidewell-sample-history/SampleHistory.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "Timing.h"

namespace {

using kestrel::Instant;
using kestrel::benchmark::median;
using kestrel::benchmark::processorMilliseconds;
using kestrel::companion::MessagesQuery;

constexpr Instant now = kestrel::instantSinceReferenceDate(790'000'000);  // where every history ends
constexpr std::int64_t historyDays = 400;  // so that nearly all are in a year's scan

[[noreturn]] void fail(std::string_view what) {
  fmt::print(stderr, "messages_scan_benchmark: {}\n", what);
  std::exit(1);
}

/// Does `work` in a process of its own, whose memory this one's does not blur, and gives what it used.
template <typename Work>
rusage inProcess(const Work& work) {
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    work();
    std::_Exit(0);
  }
  rusage usage{};
  int status = 0;
  if (child < 0 || wait4(child, &status, 0, &usage) != child || status != 0) {
    fail("a process of the benchmark failed");
  }
  return usage;
}

std::filesystem::path historyOf(const std::filesystem::path& folder, std::int64_t messages) {
  const auto path = folder / fmt::format("messages-{}.db", messages);
  if (!std::filesystem::exists(path)) {
    inProcess([&] {
      const auto written = kestrel::writeSampleHistory(
          path, {.messages = messages, .days = historyDays, .seed = 1, .end = now, .utcOffset = {}});
      if (!written) {
        fail(written.error());
      }
    });
  }
  return path;
}

/// Steps the scan's statement and reads its columns, with nothing behind it. Gives a figure of what was read,
/// so that reading is not optimised away. Its days have 24 hours: asking a calendar for the cutoff, as the
/// scan does, would be a cost of the scan's. Where the clocks changed in between, one hour of messages is
/// more or less.
double stepBare(const std::filesystem::path& path, std::int64_t days) {
  sqlite3* opened = nullptr;
  sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READONLY | SQLITE_OPEN_FULLMUTEX, nullptr);
  const kestrel::SqliteConnection connection(opened);
  sqlite3_busy_timeout(opened, 2000);
  sqlite3_stmt* row = nullptr;
  sqlite3_prepare_v2(opened, MessagesQuery::text, -1, &row, nullptr);
  const kestrel::SqliteStatement statement(row);
  sqlite3_bind_double(row, 1, kestrel::secondsSinceReferenceDate(now - std::chrono::days(days)));
  double sum = 0;
  int step = SQLITE_OK;
  while ((step = sqlite3_step(row)) == SQLITE_ROW) {
    sum += sqlite3_column_double(row, MessagesQuery::date);
    if (sqlite3_column_type(row, MessagesQuery::textLength) != SQLITE_NULL) {
      sum += static_cast<double>(sqlite3_column_int64(row, MessagesQuery::textLength));
    }
    sum += sqlite3_column_int(row, MessagesQuery::isFromMe);
    sum += static_cast<double>(sqlite3_column_int64(row, MessagesQuery::conversation));
  }
  if (step != SQLITE_DONE) {
    fail("stepping failed");
  }
  return sum;
}

double scanWhole(const std::filesystem::path& path, std::int64_t days) {
  const auto summary = kestrel::companion::scanMessages(path, days, now);
  if (!summary || summary->daily.empty()) {
    fail("the scan failed");
  }
  return static_cast<double>(summary->daily.size());
}

using Work = double (*)(const std::filesystem::path&, std::int64_t days);

double timeOf(Work work, const std::filesystem::path& path, std::int64_t days) {
  [[maybe_unused]] static volatile double sink = 0;
  return processorMilliseconds([&] { sink = work(path, days); });
}

struct Comparison {
  double bare;   ///< Median milliseconds of the bare stepping.
  double whole;  ///< Median milliseconds of the scan.
  double ratio;  ///< Median of the ratios of the pairs.
};

/// Each pair runs its two halves one right after the other, every second pair in the other order.
Comparison compare(const std::filesystem::path& path, std::int64_t days, int pairs) {
  std::vector<double> bare;
  std::vector<double> whole;
  std::vector<double> ratios;
  for (int pair = 0; pair < pairs; ++pair) {
    if (pair % 2 == 0) {
      bare.push_back(timeOf(stepBare, path, days));
      whole.push_back(timeOf(scanWhole, path, days));
    } else {
      whole.push_back(timeOf(scanWhole, path, days));
      bare.push_back(timeOf(stepBare, path, days));
    }
    ratios.push_back(whole.back() / bare.back());
  }
  return {median(bare), median(whole), median(ratios)};
}

/// The most memory, in KiB, that a process of its own held while it did `work`.
long peakMemory(Work work, const std::filesystem::path& path, std::int64_t days) {
  return inProcess([&] { work(path, days); }).ru_maxrss;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 2) {
    fail("usage: messages_scan_benchmark FOLDER [PAIRS]");
  }
  const std::filesystem::path folder = arguments[1];
  constexpr int fewestPairs = 11;
  const int pairs =
      count > 2 ? std::atoi(arguments[2]) : fewestPairs;  // NOLINT(cert-err34-c): 0 is refused below
  if (pairs < fewestPairs) {
    fail("at least 11 pairs are needed for a median that tells something");
  }
  if (!kestrel::installSqliteFileSystem()) {
    fail("SQLite does not take our file system");
  }
  constexpr std::int64_t million = 1'000'000;

  fmt::print("| messages | days | bare, peak KiB | scan, peak KiB | difference |\n|--:|--:|--:|--:|--:|\n");
  for (const std::int64_t messages : {million, 5 * million}) {
    const auto path = historyOf(folder, messages);
    const long bare = peakMemory(stepBare, path, 365);
    const long whole = peakMemory(scanWhole, path, 365);
    fmt::print("| {} | 365 | {} | {} | {} |\n", messages, bare, whole, whole - bare);
  }

  fmt::print("\n| zone | days | bare, ms | scan, ms | ratio |\n|---|--:|--:|--:|--:|\n");
  for (const char* zone : {"UTC", "America/New_York", "Asia/Kolkata"}) {
    setenv("TZ", zone, 1);
    for (const std::int64_t days : {30, 90, 365}) {
      const auto [bare, whole, ratio] = compare(historyOf(folder, million), days, pairs);
      fmt::print("| {} | {} | {:.0f} | {:.0f} | {:.3f} |\n", zone, days, bare, whole, ratio);
      std::fflush(stdout);
    }
  }

  fmt::print("\n| messages | bare, ms | scan, ms | ratio | scan, µs a message |\n|--:|--:|--:|--:|--:|\n");
  for (const std::int64_t messages : {million / 100, million / 10, million, 5 * million}) {
    const auto [bare, whole, ratio] = compare(historyOf(folder, messages), 365, pairs);
    fmt::print("| {} | {:.1f} | {:.1f} | {:.3f} | {:.3f} |\n", messages, bare, whole, ratio,
               whole * 1e3 / static_cast<double>(messages));
    std::fflush(stdout);
  }
}
