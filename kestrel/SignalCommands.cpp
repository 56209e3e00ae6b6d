#include <KestrelKit/analytics/SignalEvidenceAnalyzer.h>
#include <KestrelKit/analytics/SignalEvidenceLabel.h>
#include <KestrelKit/analytics/SignalEvidenceObservation.h>
#include <KestrelKit/analytics/TrendAggregation.h>
#include <KestrelKit/analytics/TrendUtils.h>
#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/Iso8601.h>
#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/Record.h>
#include <command-line/NumberArgument.h>
#include <command-line/ValueOption.h>
#include <fmt/format.h>
#include <kestrel/JsonCommand.h>
#include <kestrel/SignalCommands.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kestrel {
namespace {

using MinimumDays = std::optional<std::int64_t>;

void addMinimumDays(Command& command, MinimumDays& minimumDays, const std::string& description) {
  addValueOption(
      command.arguments(), "--minimum-days", minimumDays, countArgument, "a whole number from 1",
      description + ", from 1; by default " + std::to_string(SignalEvidenceAnalyzer::usualMinimumDays) + ".")
      ->type_name("N");
}

/// What `evidence` reads.
struct Evidence {
  std::vector<std::string> sources{};
  std::vector<SignalEvidenceObservation> observations{};
  std::vector<SignalEvidenceLabel> labels{};

  static JsonFields jsonFields() {
    using R = Evidence;
    static constexpr JsonField fields[] = {
        field<&R::sources>("sources"),
        field<&R::observations>("observations"),
        field<&R::labels>("labels"),
    };
    return fields;
  }
};

void addEvidence(Command& program) {
  Command& command = program.addCommand({
      .name = "evidence",
      .purpose = "tell which signals differ between mood states",
      .details = R"(Reads {"sources", "observations", "labels"}: the names of the sources to look at, a )"
                 R"(list of {"date", "sourceID", "signalID", "value"}, one for each value of a signal on )"
                 R"(a day, and a list of {"date", "state"}, the states of days. A date that is no day, )"
                 "such as 2024-02-30, counts for nothing, nor does the state Unknown; of several states "
                 "of one day the last counts."
                 "\n\n"
                 "The values of a signal on days of elevated, depressed, mixed and psychotic states are "
                 "compared with those on euthymic days, where the state is that of the value's own day, "
                 "and of the day 1, 3 and 7 days later. A comparison needs as many values on both sides "
                 "as --minimum-days says."
                 "\n\n"
                 R"(Prints a list of results, one a source: {"sourceID", "status", "observedDays", )"
                 R"("overlappingDays", "evaluatedSignals", "strongestSignalID", "strongestComparison", )"
                 R"("standardizedDifference", "strongestLagDays", "associations", "unevaluated"}. The )"
                 "status is noData, insufficientOverlap, insufficientVariation, noClearAssociation or "
                 "associationObserved: that of a source with an association of at least "
                 "--minimum-effect, up or down, whose adjusted p-value is at most 0.1."
                 "\n\n"
                 R"(An association is {"signalID", "comparison", "lagDays", "pairedDays", "coverage", )"
                 R"("referenceDays", "comparisonDays", "standardizedDifference", "confidenceInterval", )"
                 R"("pValue", "adjustedPValue"}. The comparison is elevatedVsEuthymia, )"
                 "depressedVsEuthymia, mixedVsEuthymia or psychosisVsEuthymia; the lag is the number of "
                 "days from the value to the state; the coverage is the paired values as a share of the "
                 "signal's days, 1 at most. The difference is positive where the values are higher than on "
                 "euthymic days; its confidence interval is a list of its two ends. The adjusted p-value "
                 "allows for the number of comparisons in the whole run. What could not be compared is "
                 R"({"signalID", "comparison", "lagDays", "reason"}, the reason insufficient_samples or )"
                 "insufficient_variation.",
      .example = R"(echo '{"sources": ["watch"], "observations": [
  {"date":"2024-05-01","sourceID":"watch","signalID":"steps","value":5000},
  {"date":"2024-05-02","sourceID":"watch","signalID":"steps","value":6000},
  {"date":"2024-05-03","sourceID":"watch","signalID":"steps","value":9000},
  {"date":"2024-05-04","sourceID":"watch","signalID":"steps","value":9900}],
 "labels": [
  {"date":"2024-05-01","state":"Euthymia"},
  {"date":"2024-05-02","state":"Euthymia"},
  {"date":"2024-05-03","state":"Hypomania"},
  {"date":"2024-05-04","state":"Hypomania"}]}' |
  kestrel evidence --minimum-days 2)",
      .exampleDoes = "Prints one result, whose one association is that of the steps with elevated days.",
  });
  struct Options {
    MinimumDays days = SignalEvidenceAnalyzer::usualMinimumDays;
    std::optional<double> effect = SignalEvidenceAnalyzer::usualMinimumEffect;
  };
  const auto options = std::make_shared<Options>();
  addMinimumDays(command, options->days, "The least number of values on either side of a comparison");
  addValueOption(
      command.arguments(), "--minimum-effect", options->effect, numberArgument, "a number",
      fmt::format("The least standardized difference, up or down, of an association that counts as "
                  "observed; by default {}.",
                  SignalEvidenceAnalyzer::usualMinimumEffect))
      ->type_name("X");
  convertJson<Evidence>(
      command, "The sources, the observations and the labels.", [options](const Evidence& input) {
        return SignalEvidenceAnalyzer::analyze(input.sources, input.observations, input.labels,
                                               *options->days, *options->effect);
      });
}

/// What `pairs` reads.
struct Observations {
  std::vector<SignalEvidenceObservation> observations{};

  static JsonFields jsonFields() {
    using R = Observations;
    static constexpr JsonField fields[] = {
        field<&R::observations>("observations"),
    };
    return fields;
  }
};

void addPairs(Command& program) {
  Command& command = program.addCommand({
      .name = "pairs",
      .purpose = "tell which signals move together",
      .details = R"(Reads {"observations"}, a list as for kestrel evidence (what else stands there is not )"
                 "looked at, so that both read the same document), and prints a list of "
                 R"({"firstSourceID", "firstSignalID", "secondSourceID", "secondSignalID", "pairedDays", )"
                 R"("spearmanRho"}, one for every two signals that have enough days in common and both )"
                 "vary on these days. Spearman's rank correlation is 1 where the one is higher whenever "
                 "the other is, -1 where it is lower, and near 0 where neither says anything of the "
                 "other. Of several values of a signal on one day the last counts.",
      .example = R"(echo '{"observations": [
  {"date":"2024-05-01","sourceID":"watch","signalID":"steps","value":5000},
  {"date":"2024-05-02","sourceID":"watch","signalID":"steps","value":6000},
  {"date":"2024-05-01","sourceID":"watch","signalID":"sleep","value":480},
  {"date":"2024-05-02","sourceID":"watch","signalID":"sleep","value":440}]}' |
  kestrel pairs --minimum-days 2)",
      .exampleDoes = "Prints one pair, correlation -1: the day with more steps was that with less sleep.",
  });
  const auto minimumDays = std::make_shared<MinimumDays>(SignalEvidenceAnalyzer::usualMinimumDays);
  addMinimumDays(command, *minimumDays, "The least number of days that two signals must share");
  convertJson<Observations>(command, "The observations.", [minimumDays](const Observations& input) {
    return SignalEvidenceAnalyzer::pairs(input.observations, **minimumDays);
  });
}

/// What `trend` reads a list of.
struct DatedValue {
  Instant date{};
  double value = 0;

  static JsonFields jsonFields() {
    using R = DatedValue;
    static constexpr JsonField fields[] = {
        field<&R::date>("date"),
        field<&R::value>("value"),
    };
    return fields;
  }
};

void addTrend(Command& program) {
  Command& command = program.addCommand({
      .name = "trend",
      .purpose = "compare a period with the one before it",
      .details = R"(Reads a list of {"date", "value"}, the date an instant, in any order, and compares )"
                 "the period from --start to --end with the one of equal length before --start: the sums "
                 "of their values, or the averages. Both ends belong to a period."
                 "\n\n"
                 R"(Prints {"value", "label", "currentValue", "previousValue"}: the change in whole )"
                 R"(percent, "vs previous 30 days", and the two sums or averages. The label is empty and )"
                 "all else 0 when a period has no value, or the previous sum or average is 0."
                 "\n\n"
                 "Without --start the period lasts 30 days of the calendar in the time zone of the run. One "
                 "in which the clocks go forward is an hour short of 30 whole days, and is called 29 days.",
      .example = R"(echo '[{"date": "2024-04-10T20:00:00Z", "value": 10},
  {"date": "2024-05-12T20:00:00Z", "value": 15}]' |
  kestrel trend --aggregation sum --end 2024-05-31T00:00:00Z)",
      .exampleDoes = "Prints a change of 50 percent from April to May.",
  });
  struct Options {
    std::optional<TrendAggregation> aggregation;
    std::optional<Instant> start;
    std::optional<Instant> end;
  };
  const auto options = std::make_shared<Options>();
  addValueOption(command.arguments(), "--aggregation", options->aggregation, TrendAggregation::fromRawValue,
                 "one of sum, average", "What becomes of the values of a period: sum or average.")
      ->type_name("HOW")
      ->required();
  const auto addInstant = [&](const char* name, std::optional<Instant>& instant, const char* description) {
    addValueOption(command.arguments(), name, instant, instantFromIso8601,
                   "an instant such as 2024-05-01T08:30:00Z", description)
        ->type_name("T");
  };
  addInstant("--start", options->start, "When the period begins; by default 30 days before its end.");
  addInstant("--end", options->end, "When it ends; by default now.");
  convertJson<std::vector<DatedValue>>(
      command, "A list of dated values.", [options](const std::vector<DatedValue>& values) {
        return TrendUtils::trend(values, &DatedValue::date, &DatedValue::value, *options->aggregation,
                                 options->start, options->end);
      });
}

}  // namespace

void addSignalCommands(Command& program) {
  addEvidence(program);
  addPairs(program);
  addTrend(program);
}

}  // namespace kestrel
