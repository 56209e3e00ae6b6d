#include <KestrelKit/formats/SelfReportData.h>
#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/Record.h>
#include <KestrelKit/model/Baseline.h>
#include <KestrelKit/model/Baselines.h>
#include <KestrelKit/model/CrisisSupport.h>
#include <KestrelKit/model/DailyMetrics.h>
#include <KestrelKit/model/KestrelState.h>
#include <KestrelKit/model/Predictor.h>
#include <KestrelKit/model/ShadowDay.h>
#include <KestrelKit/model/ShadowEvaluator.h>
#include <KestrelKit/model/StateClassification.h>
#include <KestrelKit/model/StateClassifier.h>
#include <KestrelKit/model/StateGroup.h>
#include <KestrelKit/model/StateTheme.h>
#include <KestrelKit/model/SystemColor.h>
#include <KestrelKit/model/UserReport.h>
#include <command-line/NumberArgument.h>
#include <command-line/ValueOption.h>
#include <kestrel/JsonCommand.h>
#include <kestrel/MoodStateCommands.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kestrel {
namespace {

/// What there is to know of a state.
struct StateRow {
  KestrelState state = KestrelState::unknown;
  std::string symbol{};
  std::string shortCode{};
  SystemColor color = SystemColor::gray;
  std::string label{};
  StateGroup group = StateGroup::none;
  bool offersCrisisSupport = false;

  static JsonFields jsonFields() {
    using R = StateRow;
    static constexpr JsonField fields[] = {
        field<&R::state>("state"),
        field<&R::symbol>("symbol"),
        field<&R::shortCode>("shortCode"),
        field<&R::color>("color"),
        field<&R::label>("label"),
        field<&R::group>("group"),
        field<&R::offersCrisisSupport>("offersCrisisSupport"),
    };
    return fields;
  }
};

std::vector<StateRow> stateRows() {
  std::vector<StateRow> rows;
  for (const KestrelState state : KestrelState::allCases) {
    rows.push_back({.state = state,
                    .symbol = std::string(StateTheme::symbol(state)),
                    .shortCode = std::string(StateTheme::shortCode(state)),
                    .color = StateTheme::color(state),
                    .label = StateTheme::label(state),
                    .group = StateTheme::group(state),
                    .offersCrisisSupport = CrisisSupport::shouldOffer(state)});
  }
  return rows;
}

void addStates(Command& program) {
  Command& command = program.addCommand({
      .name = "states",
      .purpose = "list the nine mood states",
      .details = R"(Prints the nine mood states in their order, each as {"state", "symbol", "shortCode", )"
                 R"("color", "label", "group", "offersCrisisSupport"}. The group is elevated, stable, )"
                 "depressed or none; the colour is one of the platform's standard colours, by its name.",
      .example = "kestrel states --pretty",
      .exampleDoes = "Prints the list for people to read.",
  });
  command.setAction([&command] { return printed(command, stateRows()); });
}

void addState(Command& program) {
  Command& command = program.addCommand({
      .name = "state",
      .purpose = "read the name of a state as it may have been stored",
      .details = "Prints the state that TEXT stands for, as JSON text: a state's name or one that earlier "
                 R"(releases stored, in exactly that spelling. Any other text is "Unknown".)",
      .example = "kestrel state Manic",
      .exampleDoes = R"(Prints "Mania".)",
  });
  const auto text = std::make_shared<std::string>();
  command.arguments().add_option("TEXT", *text, "The text to read.")->type_name("TEXT")->required();
  command.setAction([&command, text] { return printed(command, KestrelState::fromStoredValue(*text)); });
}

void addBaseline(Command& program) {
  Command& command = program.addCommand({
      .name = "baseline",
      .purpose = "work out a person's usual levels from their days",
      .details = "Reads a list of daily metrics, in any order, and prints the usual levels in the last 28 "
                 R"(days with data: {"avgSleep", "avgPosts", "avgSentiment"}. With fewer than seven such )"
                 "days they are the default ones: 7 hours, 10 posts, sentiment 0."
                 "\n\n"
                 R"(Daily metrics are {"date", "sleep_hours", "posts", "sentiment", "steps", )"
                 R"("sentiment_stdev", "avg_hrv"}. The last two may be absent; an avg_hrv of null says that )"
                 "the source measures heart-rate variability but has none for this day. Neither sleep nor "
                 "posts, both 0, is a day without data.",
      .example = "echo '[]' | kestrel baseline",
      .exampleDoes = "Prints the default levels, since there are no days.",
  });
  convertJson<std::vector<DailyMetrics>>(command, "A list of daily metrics.", Baselines::personal);
}

/// What `classify` reads.
struct Classifiable {
  std::vector<DailyMetrics> days{};
  std::optional<std::map<std::string, SelfReportData>> reports{};  ///< By day key; absent: none.
  std::optional<Baseline> baseline{};                              ///< Absent: the default one.

  static JsonFields jsonFields() {
    using R = Classifiable;
    static constexpr JsonField fields[] = {
        field<&R::days>("days"),
        field<&R::reports>("reports"),
        field<&R::baseline>("baseline"),
    };
    return fields;
  }
};

std::vector<StateClassification> classified(const Classifiable& input, bool each) {
  UserReports reports;
  if (input.reports) {
    for (const auto& [date, report] : *input.reports) {
      reports.emplace(date, report.userReport());
    }
  }
  const Baseline baseline = input.baseline.value_or(Baseline());
  if (!each) {
    return StateClassifier::classifySeries(input.days, reports, baseline);
  }
  std::vector<StateClassification> classifications;
  for (const DailyMetrics& day : input.days) {
    const auto report = reports.find(day.date);
    classifications.push_back(
        StateClassifier::classify(day, report == reports.end() ? nullptr : &report->second, baseline));
  }
  return classifications;
}

void addClassify(Command& program) {
  Command& command = program.addCommand({
      .name = "classify",
      .purpose = "tell the state of every day, with reasons",
      .details = R"(Reads {"days", "reports", "baseline"}: a list of daily metrics (see kestrel baseline) )"
                 "in the order of time, the person's own reports in an object from day to report, and the "
                 "usual levels as kestrel baseline prints them. Without reports there are none; without a "
                 "baseline the default one counts."
                 "\n\n"
                 R"(A report is {"state", "confidence", "notes", "source", "keyword"}: the confidence in )"
                 "percent, the source manual or keyword; notes and keyword may be absent. It takes the place "
                 "of what the signals say."
                 "\n\n"
                 R"(Prints a list of classifications, one a day: {"date", "predictedState", "confidence", )"
                 R"("reasons", "source"} and what a report adds. A day without a report is taken for )"
                 "euthymia when it is elevated between two depressed days, or depressed between two "
                 "elevated ones, unless --each is given.",
      .example = R"(echo '{"days": [{"date": "2024-05-01", "sleep_hours": 3.5,
  "posts": 18, "sentiment": 0.5, "steps": 9000}]}' | kestrel classify)",
      .exampleDoes =
          "Prints one classification: mania, confidence 0.9, for the short night and much activity.",
  });
  const auto each = std::make_shared<bool>(false);
  command.arguments().add_flag("--each", *each, "Judge every day by itself, not as a day of a series.");
  convertJson<Classifiable>(command, "The days, the reports and the baseline.",
                            [each](const Classifiable& input) { return classified(input, *each); });
}

void addPredict(Command& program) {
  Command& command = program.addCommand({
      .name = "predict",
      .purpose = "forecast the next days from the last one",
      .details = "Reads a list of classifications in the order of time, as kestrel classify prints it, "
                 R"(and prints the forecast of the days that follow: a list of {"date", "predictedState", )"
                 R"("probability"}. The forecast is that the last state lasts. It is empty for fewer than )"
                 "three classifications, and when the last date is no day. A day is 24 hours: around a change "
                 "of the clocks a date can come twice. Days beyond the year 9999 are left out.",
      .example = R"(echo '{"days": [
  {"date": "2024-05-01", "sleep_hours": 7, "posts": 9,
   "sentiment": 0, "steps": 6000},
  {"date": "2024-05-02", "sleep_hours": 8, "posts": 7,
   "sentiment": -0.1, "steps": 4000},
  {"date": "2024-05-03", "sleep_hours": 9, "posts": 5,
   "sentiment": -0.2, "steps": 2000}]}' |
  kestrel classify | kestrel predict --days 2)",
      .exampleDoes = "Prints two days of dysthymia, each with probability 0.7.",
  });
  const auto days = std::make_shared<std::optional<std::int64_t>>();
  addValueOption(command.arguments(), "--days", *days, countArgument, "a whole number from 1",
                 "How many days to forecast, from 1.")
      ->type_name("N")
      ->required();
  convertJson<std::vector<StateClassification>>(command, "A list of classifications.",
                                                [days](const std::vector<StateClassification>& history) {
                                                  return Predictor::predict(history, **days);
                                                });
}

void addShadow(Command& program) {
  Command& command = program.addCommand({
      .name = "shadow",
      .purpose = "score the circadian verdicts against a person's own labels",
      .details = R"(Reads a list of {"date", "circadianState", "label"}, in any order, of which both states )"
                 R"(may be absent, and prints {"scoredDays", "circadianAccuracy", "baselineAccuracy"}: the )"
                 "number of labelled days with a label before them, the share of these on which the "
                 "circadian state agreed with the label, and the share on which the label before did. Two "
                 "states agree when both are elevated, both stable, both depressed, or both unknown.",
      .example = R"(echo '[{"date": "2024-05-01", "label": "Euthymia"},
  {"date": "2024-05-02", "label": "Hypomania",
   "circadianState": "Mania"}]' | kestrel shadow)",
      .exampleDoes = "Scores one day: the circadian state agreed, the label before did not.",
  });
  convertJson<std::vector<ShadowDay>>(command, "A list of days with both states.", ShadowEvaluator::evaluate);
}

}  // namespace

void addMoodStateCommands(Command& program) {
  addStates(program);
  addState(program);
  addBaseline(program);
  addClassify(program);
  addPredict(program);
  addShadow(program);
}

}  // namespace kestrel
