// What the test of docs/reference needs of the library, one kind of record at a time.
//
//   reference_records kinds             prints the kinds
//   reference_records again KIND        reads a document, and prints it as it is written, indented
//   reference_records judge KIND        reads documents, one a line; prints "taken", or what was refused
//   reference_records random KIND N     prints N random records, one a line

#include <KestrelKit/foundation/JsonError.h>
#include <KestrelKit/model/JSONCoders.h>
#include <support/RandomAggregates.h>
#include <support/RandomLogEvents.h>
#include <support/RandomSnapshots.h>
#include <support/RandomWatchRecords.h>

#include <rapidcheck.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace kestrel;

/// What can be done with one kind of record.
struct Kind {
  std::string_view name;
  std::string (*again)(std::string_view json);
  std::string (*judged)(std::string_view json);
  std::string (*random)(std::uint64_t seed, int size);
};

template <class T>
constexpr Kind kindOf(std::string_view name) {
  return {.name = name,
          .again =
              [](std::string_view json) {
                const auto record = JSONCoders::decoder.decode<T>(json);
                return record ? JSONCoders::encoder.encode(*record, JsonLayout::indented).value() + '\n'
                              : record.error().text();
              },
          .judged =
              [](std::string_view json) {
                std::vector<JsonError> dropped;
                const auto record = JSONCoders::decoder.decode<T>(json, &dropped);
                return !record ? record.error().text() : dropped.empty() ? "taken" : dropped.front().text();
              },
          .random =
              [](std::uint64_t seed, int size) {
                return JSONCoders::encoder.encode(rc::gen::arbitrary<T>()(rc::Random(seed), size).value())
                    .value();
              }};
}

// A kind a row, in the order of the table in docs/reference/README.md.
constexpr Kind kinds[] = {
    kindOf<DailyMetrics>("daily-metrics"),
    kindOf<Baseline>("baseline"),
    kindOf<StateClassification>("classification"),
    kindOf<Prediction>("prediction"),
    kindOf<SleepSession>("sleep-session"),
    kindOf<CircadianFeatures>("circadian-features"),
    kindOf<AggregateBatchV2>("aggregate-batch"),
    kindOf<AggregateBatchV2Response>("aggregate-response"),
    kindOf<AggregateSourceDeleteResponse>("source-delete-response"),
    kindOf<SyncRequest>("sync-request"),
    kindOf<SyncResponse>("sync-response"),
    kindOf<DashboardSnapshot>("dashboard-snapshot"),
    kindOf<SignalProcessingContract>("contract"),
    kindOf<SelfReportData>("self-report"),
    kindOf<SnapshotSelfReportList>("snapshot-self-reports"),
    kindOf<DogfoodLog::Event>("log-event"),
    kindOf<WatchStateSnapshot>("watch-state"),
    kindOf<WatchStateAcknowledgement>("watch-receipt"),
    kindOf<WatchConnectionEvidence>("watch-evidence"),
};

int run(const Kind& kind, std::string_view what, int count) {
  if (what == "again") {
    std::ostringstream document;
    document << std::cin.rdbuf();
    std::cout << kind.again(document.view());
  } else if (what == "judge") {
    for (std::string line; std::getline(std::cin, line);) {
      std::cout << kind.judged(line) << '\n';
    }
  } else {
    constexpr int largestSize = rc::kNominalSize;  // at 0 lists are empty and numbers small
    for (int number = 0; number < count; ++number) {
      std::cout << kind.random(static_cast<std::uint64_t>(number), number % (largestSize + 1)) << '\n';
    }
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::span arguments(argv, static_cast<std::size_t>(argc));
  if (argc == 2 && std::string_view(arguments[1]) == "kinds") {
    for (const Kind& kind : kinds) {
      std::cout << kind.name << '\n';
    }
    return 0;
  }
  for (const Kind& kind : kinds) {
    if (argc > 2 && kind.name == arguments[2]) {
      return run(kind, arguments[1], argc > 3 ? std::atoi(arguments[3]) : 0);  // NOLINT(cert-err34-c)
    }
  }
  std::cerr << "usage: reference_records kinds | again|judge KIND | random KIND N\n";
  return 2;
}
