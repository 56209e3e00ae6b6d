// The records that come from outside: the first byte of the input chooses one, the rest is its JSON. What the
// decoder takes it gives back. With the argument --only=BYTE that byte chooses, whatever the first one is.

#include <KestrelKit/DogfoodLog.h>
#include <KestrelKit/WatchConnectionEvidence.h>
#include <KestrelKit/WatchStateAcknowledgement.h>
#include <KestrelKit/WatchStateSnapshot.h>
#include <KestrelKit/circadian/CircadianFeatures.h>
#include <KestrelKit/circadian/CircadianObservations.h>
#include <KestrelKit/circadian/SleepInterval.h>
#include <KestrelKit/circadian/SleepSession.h>
#include <KestrelKit/circadian/SleepStageInterval.h>
#include <KestrelKit/formats/AggregateBatchV2.h>
#include <KestrelKit/formats/AggregateBatchV2Response.h>
#include <KestrelKit/formats/AggregateSourceDeleteResponse.h>
#include <KestrelKit/formats/DashboardSnapshot.h>
#include <KestrelKit/formats/IOSAggregateSignalContract.h>
#include <KestrelKit/formats/LossyArray.h>
#include <KestrelKit/formats/SelfReportData.h>
#include <KestrelKit/formats/SignalProcessingContract.h>
#include <KestrelKit/formats/SnapshotSelfReportList.h>
#include <KestrelKit/formats/SyncRequest.h>
#include <KestrelKit/formats/SyncResponse.h>
#include <KestrelKit/formats/VizDay.h>
#include <KestrelKit/foundation/JsonText.h>
#include <KestrelKit/foundation/Record.h>
#include <KestrelKit/model/Baseline.h>
#include <KestrelKit/model/DailyMetrics.h>
#include <KestrelKit/model/JSONCoders.h>
#include <KestrelKit/model/Prediction.h>
#include <KestrelKit/model/ShadowDay.h>
#include <KestrelKit/model/ShadowSummary.h>
#include <KestrelKit/model/StateClassification.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "RoundTrip.h"

using namespace kestrel;

namespace {

template <class T>
void check(std::string_view json) {
  fuzz::checkRoundTrip<T>(JSONCoders::encoder, JSONCoders::decoder, json);
}

// Inputs that end the process, as they must: told beforehand, passed over and counted.
struct PassedOver {
  explicit PassedOver(const char* inputs) : what(inputs) {}
  PassedOver(const PassedOver&) = delete;
  PassedOver& operator=(const PassedOver&) = delete;
  ~PassedOver() {
    if (count > 0) {
      std::fprintf(stderr, "passed over: %zu %s\n", count, what);
    }
  }

  const char* what;
  std::size_t count = 0;
};

PassedOver contractsPassedOver("contracts with two entries of one data type");
PassedOver reportsPassedOver("lists of self-reports with a confidence beyond 64 bits");

void checkContract(std::string_view json) {
  check<SignalProcessingContract>(json);
  const auto contract = JSONCoders::decoder.decode<SignalProcessingContract>(json);
  if (!contract) {
    return;
  }
  std::set<std::string_view> dataTypes;
  for (const SignalProcessingContractEntry& entry : contract->signals) {
    dataTypes.insert(entry.dataType);
  }
  if (contract->schemaVersion == 2 && dataTypes.size() < contract->signals.size()) {
    ++contractsPassedOver.count;
    return;
  }
  const std::size_t findings = IOSAggregateSignalContract::validate(*contract).size();
  fuzz::require(findings <= 2 * AggregateRecordV2::DataType::allCases.size(),
                "a data type has two findings at most");
}

// A self-report whose confidence has not been read yet.
struct UnreadReport {
  std::string date{};
  std::string state{};
  std::optional<JsonText> confidence{};

  static JsonFields jsonFields() {
    using R = UnreadReport;
    static constexpr JsonField fields[] = {
        field<&R::date>("date"),
        field<&R::state>("state"),
        field<&R::confidence>("confidence"),
    };
    return fields;
  }
};

struct UnreadReports {
  LossyArray<UnreadReport> reports{};

  static JsonFields jsonFields() {
    using R = UnreadReports;
    static constexpr JsonField fields[] = {field<&R::reports>("reports")};
    return fields;
  }
};

bool mayLieBeyond64Bits(const UnreadReport& report) {
  const auto number =
      report.confidence ? JSONCoders::decoder.decode<double>(report.confidence->text()).value_or(0) : 0;
  return !(number > -0x1p63 && number < 0x1p63);
}

void checkReports(std::string_view json) {
  const auto unread = JSONCoders::decoder.decode<UnreadReports>(json);
  if (unread && std::ranges::any_of(unread->reports.elements, mayLieBeyond64Bits)) {
    ++reportsPassedOver.count;
    return;
  }
  // A fraction of a second is read and not written, so that only what was written reads back the same.
  const auto reports = JSONCoders::decoder.decode<SnapshotSelfReportList>(json);
  check<SnapshotSelfReportList>(reports ? JSONCoders::encoder.encode(*reports).value() : std::string(json));
}

struct Row {
  char choice;  // the first byte of its seeds; never given to another record
  void (*check)(std::string_view json);
};

constexpr Row rows[] = {
    {'A', check<AggregateBatchV2>},
    {'C', checkContract},
    {'D', check<AggregateSourceDeleteResponse>},
    {'Q', check<SyncRequest>},
    {'R', check<AggregateBatchV2Response>},
    {'S', check<SyncResponse>},
    {'a', checkReports},
    {'b', check<Baseline>},
    {'c', check<std::vector<StateClassification>>},
    {'d', check<DashboardSnapshot>},
    {'f', check<CircadianFeatures>},
    {'g', check<std::vector<SleepStageInterval>>},
    {'i', check<std::vector<SleepInterval>>},
    {'l', check<DogfoodLog::Event>},
    {'m', check<std::vector<DailyMetrics>>},
    {'n', check<std::vector<SleepSession>>},
    {'o', check<CircadianObservations>},
    {'p', check<std::vector<Prediction>>},
    {'r', check<std::map<std::string, SelfReportData>>},
    {'s', check<std::vector<ShadowDay>>},
    {'t', check<ShadowSummary>},
    {'v', check<std::vector<VizDay>>},
    {'E', check<WatchConnectionEvidence>},
    {'K', check<WatchStateAcknowledgement>},
    {'W', check<WatchStateSnapshot>},
};

consteval bool eachChoiceStandsOnce() {
  return std::ranges::all_of(
      rows, [](char choice) { return std::ranges::count(rows, choice, &Row::choice) == 1; }, &Row::choice);
}
static_assert(eachChoiceStandsOnce());

std::optional<char> only;

}  // namespace

extern "C" int LLVMFuzzerInitialize(const int* count, const char* const* const* arguments) {
  constexpr std::string_view option = "--only=";
  for (const std::string_view argument : std::span(*arguments, static_cast<std::size_t>(*count))) {
    if (argument.starts_with(option) && argument.size() == option.size() + 1) {
      only = argument.back();
    }
  }
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input{reinterpret_cast<const char*>(data), size};
  if (input.empty()) {
    return 0;
  }
  for (const Row& row : rows) {
    if (row.choice == only.value_or(input.front())) {
      row.check(input.substr(1));
    }
  }
  return 0;
}
