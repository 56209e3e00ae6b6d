#include <KestrelKit/circadian/CircadianClassifier.h>
#include <KestrelKit/circadian/CircadianFeatures.h>
#include <KestrelKit/circadian/CircadianObservations.h>
#include <KestrelKit/circadian/CircadianStatistics.h>
#include <KestrelKit/circadian/SleepConsolidator.h>
#include <KestrelKit/circadian/SleepInterval.h>
#include <KestrelKit/circadian/SleepStageInterval.h>
#include <KestrelKit/foundation/Calendar.h>
#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/Record.h>
#include <KestrelKit/foundation/TimeZone.h>
#include <KestrelKit/model/HrvInput.h>
#include <command-line/InputFile.h>
#include <command-line/NumberArgument.h>
#include <command-line/ValueOption.h>
#include <kestrel/CircadianCommands.h>
#include <kestrel/DayKeyArgument.h>
#include <kestrel/JsonCommand.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kestrel {
namespace {

void addSleep(Command& program) {
  Command& command = program.addCommand({
      .name = "sleep",
      .purpose = "join intervals of sleep into nights",
      .details = R"(Reads a list of intervals of sleep, {"start", "end"}, in any order, joins those with )"
                 R"(short gaps into nights, and prints a list of nights: {"date", "midSleepMinutes", )"
                 R"("asleepMinutes"}. A night bears the day on which it ends; its middle is counted in )"
                 "minutes after midnight by the clocks of that time; time that intervals share counts "
                 "once."
                 "\n\n"
                 R"(With --day the intervals have stages, {"start", "end", "stage"}, and the night of that )"
                 "day is printed, or null. Asleep counts what is asleep, asleepUnspecified, asleepCore, "
                 "asleepDeep, asleepREM, core, deep or rem, in upper or lower case. The middle is that of the "
                 "part asleep; of several nights that end on the day, the one with the most sleep counts.",
      .example = R"(echo '[{"start": "2024-05-01T22:00:00Z",
  "end": "2024-05-02T06:00:00Z"}]' |
  kestrel sleep --gap 30 --timezone UTC)",
      .exampleDoes = "Prints one night of 480 minutes, with its middle 120 minutes after midnight.",
  });
  struct Options {
    std::optional<double> gap;
    std::optional<std::string> day;
  };
  const auto options = std::make_shared<Options>();
  const auto file = std::make_shared<InputFile>(command.arguments(), "A list of intervals.");
  addValueOption(command.arguments(), "--gap", options->gap, numberArgument, "a number",
                 "The longest gap within a night, in minutes.")
      ->type_name("MINUTES")
      ->required();
  addValueOption(command.arguments(), "--day", options->day, dayKeyArgument, dayKeyExpected,
                 "Read intervals with stages, and print the night of this day alone.")
      ->type_name("KEY");
  command.setAction([&command, file, options] {
    const Calendar calendar = Calendar::gregorian(TimeZone::current());
    if (options->day) {
      return converted<std::vector<SleepStageInterval>>(command, *file, [&](const auto& intervals) {
        return SleepConsolidator::consolidate(intervals, *options->gap, calendar, *options->day);
      });
    }
    return converted<std::vector<SleepInterval>>(command, *file, [&](const auto& intervals) {
      return SleepConsolidator::consolidate(intervals, *options->gap, calendar);
    });
  });
}

void addFeatures(Command& circadian) {
  Command& command = circadian.addCommand({
      .name = "features",
      .purpose = "work out the circadian features of a day",
      .details = R"(Reads what was observed up to a day: {"date", "nights", "judgedMidSleepMinutes", )"
                 R"("hourlyActivity", "stepCounts", "restingHeartRate", "baselineRestingHeartRates", )"
                 R"("expectedNights"}. The nights are those that kestrel sleep prints, )"
                 "judgedMidSleepMinutes is the middle of the night to be judged, hourlyActivity has 24 "
                 "totals from midnight on. judgedMidSleepMinutes, hourlyActivity and restingHeartRate may "
                 "be absent."
                 "\n\n"
                 R"(Prints {"date", "phaseDeviationHours", "sleepRegularitySDMinutes", "durationSDMinutes", )"
                 R"("activity", "stepVariabilityCV", "restingHRDeviationBpm", "coverageNights", )"
                 R"("daysObserved"}, without those that there was nothing to make of. The activity is )"
                 R"({"m10OnsetHour", "m10", "l5", "mesor", "relativeAmplitude"}.)",
      .example = R"(echo '{"date": "2024-05-02", "judgedMidSleepMinutes": 60,
  "nights": [{"date": "2024-05-01", "midSleepMinutes": 1380,
   "asleepMinutes": 480}],
  "stepCounts": [], "baselineRestingHeartRates": [],
  "expectedNights": 7}' | kestrel circadian features)",
      .exampleDoes = "Prints the features; phaseDeviationHours says that the night was two hours late.",
  });
  convertJson<CircadianObservations>(command, "What was observed.", CircadianStatistics::features);
}

/// What `circadian classify` reads.
struct Judgeable {
  CircadianFeatures features{};
  HrvInput avg_hrv = HrvInput::notProvided;

  static JsonFields jsonFields() {
    using R = Judgeable;
    static constexpr JsonField fields[] = {
        field<&R::features>("features"),
        field<&R::avg_hrv>("avg_hrv"),
    };
    return fields;
  }
};

void addClassify(Command& circadian) {
  Command& command = circadian.addCommand({
      .name = "classify",
      .purpose = "tell the state of a day from its circadian features",
      .details = R"(Reads {"features", "avg_hrv"}, the features as kestrel circadian features prints them )"
                 "and the day's heart-rate variability as in daily metrics (see kestrel baseline), and "
                 R"(prints one classification: {"date", "predictedState", "confidence", "reasons", )"
                 R"("source"}.)",
      .example = R"(echo '{"features": {"date": "2024-05-02",
  "phaseDeviationHours": 2.34, "coverageNights": 1,
  "daysObserved": 7}}' | kestrel circadian classify)",
      .exampleDoes = "Prints moderate depression, confidence 0.7, for a phase that is 2.3 hours late.",
  });
  convertJson<Judgeable>(command, "The features and the heart-rate variability.", [](const Judgeable& day) {
    return CircadianClassifier::classify(day.features, day.avg_hrv);
  });
}

}  // namespace

void addCircadianCommands(Command& program) {
  addSleep(program);
  Command& circadian = program.addCommand({
      .name = "circadian",
      .purpose = "work with the circadian rhythm",
      .details = "Turns nights and activity into the circadian features of a day, and these into a verdict.",
      .example = "kestrel circadian features --help",
      .exampleDoes = "Prints what that command reads and prints.",
  });
  addFeatures(circadian);
  addClassify(circadian);
}

}  // namespace kestrel
