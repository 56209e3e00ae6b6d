// The records that come from outside: the first byte of the input chooses one, the rest is its JSON. What the
// decoder takes it gives back.

#include <KestrelKit/DogfoodLog.h>
#include <KestrelKit/circadian/CircadianFeatures.h>
#include <KestrelKit/circadian/CircadianObservations.h>
#include <KestrelKit/circadian/SleepInterval.h>
#include <KestrelKit/circadian/SleepSession.h>
#include <KestrelKit/circadian/SleepStageInterval.h>
#include <KestrelKit/formats/AggregateBatchV2.h>
#include <KestrelKit/formats/AggregateBatchV2Response.h>
#include <KestrelKit/formats/AggregateSourceDeleteResponse.h>
#include <KestrelKit/formats/IOSAggregateSignalContract.h>
#include <KestrelKit/formats/SelfReportData.h>
#include <KestrelKit/formats/SignalProcessingContract.h>
#include <KestrelKit/formats/SyncRequest.h>
#include <KestrelKit/formats/SyncResponse.h>
#include <KestrelKit/model/Baseline.h>
#include <KestrelKit/model/DailyMetrics.h>
#include <KestrelKit/model/JSONCoders.h>
#include <KestrelKit/model/Prediction.h>
#include <KestrelKit/model/ShadowDay.h>
#include <KestrelKit/model/ShadowSummary.h>
#include <KestrelKit/model/StateClassification.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <set>
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

// Contracts that end the process, as they must: told beforehand, passed over and counted.
struct PassedOver {
  PassedOver() = default;
  PassedOver(const PassedOver&) = delete;
  PassedOver& operator=(const PassedOver&) = delete;
  ~PassedOver() {
    if (count > 0) {
      std::fprintf(stderr, "%zu contracts with two entries of one data type were not validated\n", count);
    }
  }

  std::size_t count = 0;
} passedOver;

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
    ++passedOver.count;
    return;
  }
  const std::size_t findings = IOSAggregateSignalContract::validate(*contract).size();
  fuzz::require(findings <= 2 * AggregateRecordV2::DataType::allCases.size(),
                "a data type has two findings at most");
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
    {'b', check<Baseline>},
    {'c', check<std::vector<StateClassification>>},
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
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input{reinterpret_cast<const char*>(data), size};
  for (const Row& row : rows) {
    if (input.starts_with(row.choice)) {
      row.check(input.substr(1));
    }
  }
  return 0;
}
