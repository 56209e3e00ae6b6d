#include <KestrelKit/foundation/DateStrategy.h>
#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/Iso8601.h>
#include <KestrelKit/foundation/JsonEncoder.h>
#include <KestrelKit/foundation/JsonWriter.h>
#include <KestrelTrackerMac/reading/MessagesAccessState.h>
#include <KestrelTrackerMac/reading/MessagesDatabase.h>
#include <KestrelTrackerMac/reading/MessagesScanError.h>
#include <KestrelTrackerMac/reading/MessagesScanSummary.h>
#include <command-line/Failure.h>
#include <command-line/NumberArgument.h>
#include <command-line/Program.h>
#include <command-line/ValueOption.h>
#include <tidewell-scan/ScanTable.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

using namespace kestrel;
using namespace kestrel::companion;

namespace {

std::string_view name(MessagesAccessState state) {
  switch (state) {
    case MessagesAccessState::checking:
      return "checking";
    case MessagesAccessState::ready:
      return "ready";
    case MessagesAccessState::needsFullDiskAccess:
      return "needsFullDiskAccess";
    case MessagesAccessState::unavailable:
      return "unavailable";
  }
  std::unreachable();
}

/// The locale that the environment names for numbers.
std::string_view numberLocale() {
  for (const char* variable : {"LC_ALL", "LC_NUMERIC", "LANG"}) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): there is one thread
    if (const char* locale = std::getenv(variable); locale != nullptr && *locale != '\0') {
      return locale;
    }
  }
  return "";
}

std::expected<std::string, Failure> asJson(const MessagesScanSummary& summary, JsonLayout layout) {
  const auto text = JsonEncoder(DateStrategy::iso8601).encode(summary, layout);
  if (!text) {
    return std::unexpected(Failure{ExitStatus::refused, text.error().text()});
  }
  return *text + '\n';
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): where memory has run out, ending is all there is to do
int main(int argc, char** argv) {
  Program program({
      .command =
          {
              .name = "tidewell-scan",
              .purpose = "count the activity of each day in the Messages database",
              .details = "Reads the Messages database once and prints, for each day with a message: messages "
                         "sent and "
                         "received, active conversations, messages between midnight and five, and the "
                         "average length of "
                         "a text. It reads no more of a text than its length, writes no file of its own and "
                         "opens no "
                         "network connection. Beside a database in WAL mode SQLite keeps its two side files, "
                         "-shm and "
                         "-wal, and makes the missing ones.\n"
                         "\n"
                         "Days are those of the user's calendar, which is that of the locale in LC_ALL, "
                         "LC_TIME or LANG, "
                         "in the time zone of the run. The digits of the table follow the locale in LC_ALL, "
                         "LC_NUMERIC "
                         "or LANG.",
              .example = "tidewell-scan --days 30 --json --pretty",
              .exampleDoes = "Prints the last thirty days as indented JSON.",
          },
      .refusal = "The database could not be scanned, or the number of days is not one from 1 to 365.",
      .fileFailure = "Standard output could not be written.",
  });
  std::optional<double> days;
  std::optional<Instant> now;
  std::optional<std::string> database;
  bool json = false;
  bool pretty = false;
  bool checkAccess = false;
  auto& arguments = program.arguments();
  auto* daysOption = addValueOption(arguments, "--days", days, wholeNumberArgument, "a whole number",
                                    "How many days to look back, from 1 to 365.")
                         ->type_name("N")
                         ->default_str("90");
  auto* nowOption =
      addValueOption(arguments, "--now", now, instantFromIso8601, "an instant such as 2024-05-01T08:30:00Z",
                     "The instant to look back from, in ISO 8601 with a zone, such as 2024-05-01T08:30:00Z "
                     "or 2024-05-01T10:30:00+02:00.")
          ->type_name("T")
          ->default_str("now");
  arguments.add_option("--database", database, "The Messages database to read.")
      ->type_name("PATH")
      ->default_str("Library/Messages/chat.db in the home folder");
  program.addTimeZoneOption();
  auto* jsonOption = arguments.add_flag("--json", json, "Print one line of JSON instead of a table.");
  arguments.add_flag("--pretty", pretty, "With --json: indent it by two spaces.")->needs(jsonOption);
  arguments
      .add_flag("--check-access", checkAccess,
                "Only print whether the database can be opened: ready, needsFullDiskAccess or unavailable. "
                "Does not go "
                "with --days, --now or --json.")
      ->excludes(daysOption, nowOption, jsonOption);

  program.setAction([&]() -> std::expected<std::string, Failure> {
    const std::filesystem::path path =
        database ? std::filesystem::path(*database) : defaultMessagesDatabase();
    if (checkAccess) {
      return std::string(name(probeMessagesAccess(path))) + '\n';
    }
    // A number of days beyond 64 bits is outside the window like any other; the scan is the judge of that.
    const auto window = static_cast<std::int64_t>(std::clamp(days.value_or(90), -1e9, 1e9));
    const auto summary = scanMessages(path, window, now.value_or(ReferenceClock::now()));
    if (!summary) {
      return std::unexpected(Failure{ExitStatus::refused, std::string(errorDescription(summary.error()))});
    }
    return json ? asJson(*summary, pretty ? JsonLayout::indented : JsonLayout::compact)
                : scanTable(*summary, numberLocale());
  });
  return program.run(argc, argv);
}
