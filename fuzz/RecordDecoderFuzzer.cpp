// The records that come from outside: the first byte of the input chooses one, the rest is its JSON. What the
// decoder takes it gives back.

#include <KestrelKit/WatchConnectionEvidence.h>
#include <KestrelKit/WatchStateAcknowledgement.h>
#include <KestrelKit/WatchStateSnapshot.h>
#include <KestrelKit/DogfoodLog.h>
#include <KestrelKit/circadian/CircadianFeatures.h>
#include <KestrelKit/circadian/CircadianObservations.h>
#include <KestrelKit/circadian/SleepInterval.h>
#include <KestrelKit/circadian/SleepSession.h>
#include <KestrelKit/circadian/SleepStageInterval.h>
#include <KestrelKit/formats/SelfReportData.h>
#include <KestrelKit/model/Baseline.h>
#include <KestrelKit/model/DailyMetrics.h>
#include <KestrelKit/model/JSONCoders.h>
#include <KestrelKit/model/Prediction.h>
#include <KestrelKit/model/ShadowDay.h>
#include <KestrelKit/model/ShadowSummary.h>
#include <KestrelKit/model/StateClassification.h>

#include <cstddef>
#include <cstdint>
#include <map>
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

struct Row {
  char choice;  // the first byte of its seeds; never given to another record
  void (*check)(std::string_view json);
};

constexpr Row rows[] = {
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
    {'E', check<WatchConnectionEvidence>},
    {'R', check<WatchStateAcknowledgement>},
    {'W', check<WatchStateSnapshot>},
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
