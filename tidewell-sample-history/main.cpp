#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/TimeZone.h>
#include <command-line/Failure.h>
#include <command-line/NumberArgument.h>
#include <command-line/Program.h>
#include <command-line/ValueOption.h>
#include <tidewell-sample-history/SampleHistory.h>

#include <cstdint>
#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

using namespace kestrel;

namespace {

/// Reads a whole number from `first` to `last`.
auto wholeNumber(double first, double last) {
  return [first, last](std::string_view text) -> std::optional<std::int64_t> {
    const auto number = wholeNumberArgument(text);
    return number && first <= *number && *number <= last ? std::optional(static_cast<std::int64_t>(*number))
                                                         : std::nullopt;
  };
}

}  // namespace

int main(int argc, char** argv) {
  Program program({
      .command =
          {
              .name = "tidewell-sample-history",
              .purpose = "write an invented Messages database",
              .details = "Writes a Messages database of invented people and messages, for trying Tidewell "
                         "without a history "
                         "of "
                         "one's own, for tests and for measuring. The history ends now. The numbers of "
                         "messages and days, "
                         "the seed, and the weekday and local time of its end decide everything else in it; "
                         "local time is "
                         "that "
                         "of the zone in TZ, else the system's.\n"
                         "\n"
                         "A file that exists is left as it is, and the program ends with status 3.",
              .example = "tidewell-sample-history sample.db --messages 20000 --days 365 --seed 1",
              .exampleDoes = "Writes a year with twenty thousand messages to the new file sample.db.",
          },
      .refusal = "",
      .fileFailure = "The database, or standard output, could not be written.",
  });
  std::string path;
  std::optional<std::int64_t> messages;
  std::optional<std::int64_t> days;
  std::optional<std::int64_t> seed;
  auto& arguments = program.arguments();
  constexpr double largestSeed = 9'007'199'254'740'991;  // Beyond, not every whole number is a 64-bit float.
  arguments.add_option("PATH", path, "The database to write. Its folder must exist.")
      ->type_name("PATH")
      ->required();
  addValueOption(arguments, "--messages", messages, wholeNumber(0, SampleHistory::mostMessages),
                 "a whole number from 0 to 10000000", "How many messages, from 0 to 10000000.")
      ->type_name("N")
      ->required();
  addValueOption(arguments, "--days", days, wholeNumber(1, SampleHistory::mostDays),
                 "a whole number from 1 to 7300", "How many days they are spread over, from 1 to 7300.")
      ->type_name("D")
      ->required();
  addValueOption(arguments, "--seed", seed, wholeNumber(0, largestSeed),
                 "a whole number from 0 to 9007199254740991", "Another seed is another history.")
      ->type_name("S")
      ->required();

  program.setAction([&]() -> std::expected<std::string, Failure> {
    const auto now = ReferenceClock::now();
    const auto written = writeSampleHistory(
        std::filesystem::path(path), {.messages = *messages,
                                      .days = *days,
                                      .seed = static_cast<std::uint64_t>(*seed),
                                      .end = now,
                                      .utcOffset = Seconds(TimeZone::current().stretchAt(now).offset)});
    if (!written) {
      return std::unexpected(Failure{ExitStatus::fileFailed, written.error()});
    }
    return "";
  });
  return program.run(argc, argv);
}
