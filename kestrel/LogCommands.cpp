#include <KestrelKit/DogfoodLog.h>
#include <KestrelKit/model/KestrelState.h>
#include <KestrelKit/model/SelfReportSource.h>
#include <command-line/NumberArgument.h>
#include <command-line/StandardStreams.h>
#include <command-line/ValueOption.h>
#include <fmt/format.h>
#include <kestrel/DayKeyArgument.h>
#include <kestrel/JsonCommand.h>
#include <kestrel/LogCommands.h>

#include <cstdint>
#include <expected>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kestrel {
namespace {

using Event = DogfoodLog::Event;
using Output = std::expected<std::string, Failure>;

/// The log that the option `--file` names, or that of the shared container.
class LogOption {
 public:
  explicit LogOption(Command& log) {
    addValueOption(
        log.arguments(), "--file", path_, [](const std::string& text) { return std::optional(text); },
        "a path", "The file that the log is in.")
        ->type_name("PATH")
        ->default_str("that of the shared container");
  }

  /// Gives what `operation` has for the log; says so where the log could not be read.
  template <class Operation>
  Output perform(const Operation& operation) const {
    DogfoodLog log = path_ ? DogfoodLog(*path_) : DogfoodLog();
    Output output = operation(log);
    if (const auto unreadable = log.unreadable()) {
      writeErrorLine("kestrel", unreadable->text());
    }
    return output;
  }

  /// The same of an operation that changes the log, and prints nothing.
  template <class Change>
  Output change(const Change& change) const {
    return perform([&](DogfoodLog& log) -> Output {
      if (!log.fileURL()) {
        return std::unexpected(
            Failure{ExitStatus::fileFailed, "there is no folder for the log: the home is no absolute path"});
      }
      return change(log);
    });
  }

 private:
  std::optional<std::string> path_;
};

/// Nothing, where the log was written. The log itself has said why it was not.
Output recorded(const DogfoodLog& log, bool wasWritten) {
  if (wasWritten) {
    return std::string();
  }
  const std::string name = log.fileURL().value_or(std::filesystem::path()).string();
  return std::unexpected(Failure{ExitStatus::fileFailed,
                                 fmt::format("{}: the log was not written", name.empty() ? "\"\"" : name)});
}

/// The value of an argument that its command cannot do without.
template <class Value>
using Given = std::optional<Value>;

void addDate(Command& command, Given<std::string>& date) {
  addValueOption(command.arguments(), "DATE", date, dayKeyArgument, dayKeyExpected,
                 "The day that it is about.")
      ->type_name("DATE")
      ->required();
}

/// An argument that is one of an enumeration's raw values.
template <RawEnumerated Value>
void addRawValue(Command& command, const std::string& name, Given<Value>& value,
                 const std::string& description) {
  std::vector<std::string> texts;
  for (const Value each : Value::allCases) {
    texts.emplace_back(each.rawValue());
  }
  const std::string all = fmt::format("one of {}", fmt::join(texts, ", "));
  addValueOption(command.arguments(), name, value, Value::fromRawValue, all,
                 fmt::format("{}: {}.", description, all))
      ->type_name(name)
      ->required();
}

/// What `log classification` and `log shadow` take.
struct Verdict {
  Given<std::string> date;
  Given<KestrelState> state;
  Given<std::int64_t> confidence;
};

void addVerdict(Command& log, const std::shared_ptr<LogOption>& option, CommandDescription description,
                bool (DogfoodLog::*record)(std::string_view date, KestrelState state,
                                           std::int64_t confidence)) {
  Command& command = log.addCommand(std::move(description));
  const auto verdict = std::make_shared<Verdict>();
  addDate(command, verdict->date);
  addRawValue(command, "STATE", verdict->state, "The state");
  addValueOption(command.arguments(), "CONFIDENCE", verdict->confidence, integerArgument, "a whole number",
                 "How sure that is, in percent.")
      ->type_name("CONFIDENCE")
      ->required();
  command.setAction([option, verdict, record] {
    return option->change([&](DogfoodLog& file) {
      return recorded(file, (file.*record)(*verdict->date, *verdict->state, *verdict->confidence));
    });
  });
}

void addSelfReport(Command& log, const std::shared_ptr<LogOption>& option) {
  Command& command = log.addCommand({
      .name = "self-report",
      .purpose = "record how a person says they are",
      .details = "Adds one event to the log. Every report is kept, also several of one day. Prints nothing.",
      .example = R"(kestrel log --file "$(mktemp -d)/log.jsonl" \
  self-report 2024-05-01 Hypomania manual)",
      .exampleDoes = "Begins a log in a new folder with one report.",
  });
  struct Report {
    Given<std::string> date;
    Given<KestrelState> state;
    Given<SelfReportSource> source;
  };
  const auto report = std::make_shared<Report>();
  addDate(command, report->date);
  addRawValue(command, "STATE", report->state, "The state");
  addRawValue(command, "SOURCE", report->source, "How the report was made");
  command.setAction([option, report] {
    return option->change([&](DogfoodLog& file) {
      return recorded(file, file.logSelfReport(*report->date, *report->state, *report->source));
    });
  });
}

void addEvents(Command& log, const std::shared_ptr<LogOption>& option) {
  Command& command = log.addCommand({
      .name = "events",
      .purpose = "list all events of the log",
      .details =
          R"(Prints a list of {"timestamp", "kind", "date", "stateRaw", "confidence", "source"} in the )"
          "order in which they were recorded. A report has no confidence, the other kinds have no source.",
      .example = R"(file="$(mktemp -d)/log.jsonl"
kestrel log --file "$file" self-report 2024-05-01 Mania manual
kestrel log --file "$file" events --pretty)",
      .exampleDoes = "Prints the one report that was recorded just now.",
  });
  command.setAction([&command, option] {
    return option->perform([&](const DogfoodLog& file) { return printed(command, file.allEvents()); });
  });
}

void addLatest(Command& log, const std::shared_ptr<LogOption>& option) {
  Command& command = log.addCommand({
      .name = "latest",
      .purpose = "show the latest event of every day",
      .details = "Prints an object from day to the event of KIND that was recorded last for that day, as "
                 "kestrel log events prints it.",
      .example = R"(kestrel log --file "$(mktemp -d)/log.jsonl" latest selfReport)",
      .exampleDoes = "Prints {}, since there is no log in that folder.",
  });
  const auto kind = std::make_shared<Given<Event::Kind>>();
  addRawValue(command, "KIND", *kind, "The kind of event");
  command.setAction([&command, option, kind] {
    return option->perform(
        [&](const DogfoodLog& file) { return printed(command, file.latestEventsByDate(**kind)); });
  });
}

void addExport(Command& log, const std::shared_ptr<LogOption>& option) {
  Command& command = log.addCommand({
      .name = "export",
      .purpose = "print the log as it would be written",
      .details =
          "Prints every event of the log as JSON on a line of its own (JSON Lines), and nothing for an "
          "empty log.",
      .example = R"(kestrel log --file "$(mktemp -d)/log.jsonl" export)",
      .exampleDoes = "Prints nothing, since there is no log in that folder.",
  });
  command.setAction([option] {
    return option->perform([](const DogfoodLog& file) -> Output {
      std::string text = file.exportText();
      return text.empty() ? text : std::move(text) + '\n';
    });
  });
}

void addMissedElevated(Command& log, const std::shared_ptr<LogOption>& option) {
  Command& command = log.addCommand({
      .name = "missed-elevated",
      .purpose = "count the reports of a high that the classifier missed",
      .details = "Prints how many pairs there are of a report of mixed episode, mania or hypomania and a "
                 "euthymia that the classifier said, recorded at most two days apart. A report near two such "
                 "days counts twice.",
      .example = R"(file="$(mktemp -d)/log.jsonl"
kestrel log --file "$file" classification 2024-05-01 Euthymia 60
kestrel log --file "$file" self-report 2024-05-01 Mania manual
kestrel log --file "$file" missed-elevated)",
      .exampleDoes = "Prints 1: that euthymia was missed mania.",
  });
  command.setAction([&command, option] {
    return option->perform(
        [&](const DogfoodLog& file) { return printed(command, file.missedElevatedReports()); });
  });
}

void addClear(Command& log, const std::shared_ptr<LogOption>& option) {
  Command& command = log.addCommand({
      .name = "clear",
      .purpose = "delete the log",
      .details = "Deletes the file that the log is in. It is a failure if there is none. Prints nothing.",
      .example = R"(file="$(mktemp -d)/log.jsonl"
kestrel log --file "$file" self-report 2024-05-01 Mania manual
kestrel log --file "$file" clear)",
      .exampleDoes = "Begins a log in a new folder and deletes it.",
  });
  command.setAction([option] {
    return option->change([](DogfoodLog& file) -> Output {
      if (const auto cleared = file.clear(); !cleared) {
        return std::unexpected(Failure{ExitStatus::fileFailed, cleared.error().text()});
      }
      return std::string();
    });
  });
}

}  // namespace

void addLogCommands(Command& program) {
  Command& log = program.addCommand({
      .name = "log",
      .purpose = "record mood-state events on this device, and look at them",
      .details =
          "Keeps a log of what the classifier said of a day, what the person reported and what the "
          "shadow predictor said: one event a line in a file that belongs to the user alone, in the "
          "folder group.app.tidewell.shared under $XDG_DATA_HOME or ~/.local/share, or in the file that "
          "--file names."
          "\n\n"
          "Every change replaces the file as a whole, so that it is never found half written. A line "
          "that is no event is passed over, and gone after the next change. A file that cannot be read "
          "is an empty log; before the next change it is put aside as FILE.unreadable. Two programs that "
          "change one log at the same moment can lose one of the changes.",
      .example = R"(kestrel log --file "$(mktemp -d)/log.jsonl" events)",
      .exampleDoes = "Prints an empty list, since there is no log in that folder.",
  });
  const auto option = std::make_shared<LogOption>(log);
  addVerdict(log, option,
             {
                 .name = "classification",
                 .purpose = "record what the classifier said of a day",
                 .details = "Adds one event to the log, in place of what the classifier said of that day "
                            "before. Prints nothing.",
                 .example = R"(kestrel log --file "$(mktemp -d)/log.jsonl" \
  classification 2024-05-01 Euthymia 60)",
                 .exampleDoes = "Begins a log in a new folder with one verdict.",
             },
             &DogfoodLog::logClassification);
  addVerdict(
      log, option,
      {
          .name = "shadow",
          .purpose = "record what the shadow predictor said of a day",
          .details = "Adds one event to the log, in place of what the shadow predictor said of that day "
                     "before. Prints nothing.",
          .example = R"(kestrel log --file "$(mktemp -d)/log.jsonl" \
  shadow 2024-05-01 'Mixed Episode' 70)",
          .exampleDoes = "Begins a log in a new folder with one verdict.",
      },
      &DogfoodLog::logShadowPrediction);
  addSelfReport(log, option);
  addEvents(log, option);
  addLatest(log, option);
  addExport(log, option);
  addMissedElevated(log, option);
  addClear(log, option);
}

}  // namespace kestrel
