// What `kestrel evidence` and `kestrel pairs` read: whatever of it decodes has an analysis whose figures keep
// to their ranges and agree with one another, and which does not depend on the number of threads.

#include <KestrelKit/analytics/SignalEvidenceAnalyzer.h>
#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/Record.h>
#include <KestrelKit/model/JSONCoders.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "RoundTrip.h"

using namespace kestrel;
using fuzz::require;

namespace {

constexpr std::int64_t minimumDays = 2;

struct Input {
  std::vector<std::string> sources{};
  std::vector<SignalEvidenceObservation> observations{};
  std::vector<SignalEvidenceLabel> labels{};

  bool operator==(const Input&) const = default;

  static JsonFields jsonFields() {
    using R = Input;
    static constexpr JsonField fields[] = {
        field<&R::sources>("sources"),
        field<&R::observations>("observations"),
        field<&R::labels>("labels"),
    };
    return fields;
  }
};

void check(const SignalEvidenceAssociation& each) {
  require(std::min(each.referenceDays, each.comparisonDays) >= minimumDays, "both groups are large enough");
  require(each.pairedDays == each.referenceDays + each.comparisonDays,
          "paired days are those of both groups");
  require(each.coverage >= 0 && each.coverage <= 1, "the coverage is a share");
  require(each.confidenceInterval.lower <= each.standardizedDifference &&
              each.standardizedDifference <= each.confidenceInterval.upper,
          "the interval holds the difference");
  require(each.pValue >= 0 && each.pValue <= each.adjustedPValue && each.adjustedPValue <= 1,
          "adjusted p-values lie between their own and 1");
}

void check(const SignalEvidenceResult& result) {
  std::set<std::string_view> signals;
  bool hasStrongest = result.associations.empty();
  for (const auto& each : result.associations) {
    check(each);
    signals.insert(each.signalID);
    require(std::abs(each.standardizedDifference) <= std::abs(result.standardizedDifference.value_or(0)),
            "none is stronger than the strongest");
    hasStrongest |= each.signalID == result.strongestSignalID &&
                    each.comparison == result.strongestComparison &&
                    each.lagDays == result.strongestLagDays &&
                    each.standardizedDifference == result.standardizedDifference;
  }
  require(hasStrongest, "the strongest is one of them");
  require(result.evaluatedSignals == static_cast<std::int64_t>(signals.size()),
          "signals with associations count");
  for (const auto& each : result.unevaluated) {
    signals.insert(each.signalID);
  }
  require(result.associations.size() + result.unevaluated.size() == 16 * signals.size(),
          "a signal has four comparisons at four lags");
  require(result.overlappingDays >= 0 && result.overlappingDays <= result.observedDays,
          "days overlap or not");
  require((result.status == SignalEvidenceStatus::noData) == (result.observedDays == 0),
          "there is no data where no day was observed");
  require((result.status == SignalEvidenceStatus::noClearAssociation ||
           result.status == SignalEvidenceStatus::associationObserved) == !result.associations.empty(),
          "the status says whether something could be compared");
}

void check(const Input& input) {
  const auto results =
      SignalEvidenceAnalyzer::analyze(input.sources, input.observations, input.labels, minimumDays, 0.3);
  require(std::ranges::equal(results, input.sources, {}, &SignalEvidenceResult::sourceID),
          "one result a source");
  for (const SignalEvidenceResult& result : results) {
    check(result);
  }
  require(JSONCoders::encoder.encode(results).has_value(), "results can be written");

  const auto pairs = SignalEvidenceAnalyzer::pairs(input.observations, minimumDays, 1);
  for (const SignalPairAssociation& pair : pairs) {
    require(pair.pairedDays >= minimumDays, "a pair shares enough days");
    require(std::abs(pair.spearmanRho) <= 1, "a correlation lies between -1 and 1");
    require(
        std::tie(pair.firstSourceID, pair.firstSignalID) < std::tie(pair.secondSourceID, pair.secondSignalID),
        "the earlier is first");
  }
  require(JSONCoders::encoder.encode(pairs).has_value(), "pairs can be written");
  require(SignalEvidenceAnalyzer::pairs(input.observations, minimumDays, 2) == pairs,
          "pairs do not depend on the number of threads");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view json{reinterpret_cast<const char*>(data), size};
  fuzz::checkRoundTrip<Input>(JSONCoders::encoder, JSONCoders::decoder, json);
  if (const auto input = JSONCoders::decoder.decode<Input>(json)) {
    check(*input);
  }
  return 0;
}
