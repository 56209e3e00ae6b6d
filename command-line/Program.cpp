#include <command-line/Program.h>

#include "CommandWords.h"
#include "Completions.h"
#include "HelpText.h"
#include "ManPage.h"
#include "StatusMeanings.h"

#include <KestrelKit/foundation/ProgrammingError.h>
#include <KestrelKit/foundation/QuotedText.h>
#include <KestrelKit/foundation/TimeZone.h>
#include <command-line/StandardStreams.h>
#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <new>
#include <optional>
#include <ranges>
#include <span>
#include <string_view>
#include <utility>

namespace kestrel {
namespace {

constexpr std::string_view version = TIDEWELL_VERSION;

/// Before the lines of a programming error, which can happen on any thread. Set once, before there is a
/// second one.
std::string nameOfThisProcess;

/// Given back where memory runs out, so that saying so finds some.
std::unique_ptr<std::array<char, 65'536>> reserve;

std::optional<std::string> generated(std::string_view kind, const Command& program,
                                     const StatusMeanings& statuses) {
  if (kind == "man") {
    return manPage(program, statuses, version);
  }
  if (kind == "bash") {
    return bashCompletion(program);
  }
  if (kind == "zsh") {
    return zshCompletion(program);
  }
  if (kind == "fish") {
    return fishCompletion(program);
  }
  return std::nullopt;
}

}  // namespace

Program::Program(ProgramDescription description)
    : Command(std::move(description.command)),
      refusal_(std::move(description.refusal)),
      fileFailure_(std::move(description.fileFailure)) {}

void Program::addTimeZoneOption() {
  arguments()
      .add_option_function<std::string>(
          "--timezone",
          [](const std::string& name) {
            if (!TimeZone::named(name)) {
              throw CLI::ValidationError("--timezone",
                                         kestrel::quoted(name) + " is not the name of a time zone");
            }
            setenv("TZ", name.c_str(), 1);  // NOLINT(concurrency-mt-unsafe): there is one thread yet
            tzset();
          },
          "The time zone that days and hours are counted in, by its IANA name, such as Europe/Zurich.")
      ->type_name("ID")
      ->default_str("that of the environment variable TZ, else the system's");
}

int Program::run(int argc, const char* const* argv) {
  const std::string& name = description().name;
  reserveStandardStreams();
  for (const int writeThatFails : {SIGPIPE, SIGXFSZ}) {  // is one with a reason, and no end without a word
    std::signal(writeThatFails, SIG_IGN);
  }
  nameOfThisProcess = name;
  std::set_new_handler([] {
    std::set_new_handler(nullptr);
    reserve.reset();
    writeErrorLine(nameOfThisProcess, "memory has run out");
    std::_Exit(static_cast<int>(ExitStatus::refused));
  });
  reserve = std::make_unique<decltype(reserve)::element_type>();
  setProgrammingErrorEnding([](std::string_view violation) {
    writeErrorLine(nameOfThisProcess, violation);
    std::_Exit(static_cast<int>(ExitStatus::ruleBroken));
  });
  const CLI::Option* help = arguments().add_flag("-h,--help")->description("Print this text and end.");
  const CLI::Option* versionFlag =
      arguments().add_flag("--version")->description("Print the version and end.");
  const StatusMeanings statuses = statusMeanings(refusal_, fileFailure_);

  const auto result = [&]() -> std::expected<std::string, Failure> {
    if (argc == 3 && std::string_view(argv[1]) == "--generate") {
      if (auto text = generated(argv[2], *this, statuses)) {
        return *std::move(text);
      }
    }
    const CommandWords words(*this, std::span(argv, static_cast<std::size_t>(argc)) | std::views::drop(1));
    const Command& command = words.command();
    const auto wrongUse = [&](std::string_view what) {
      return std::unexpected(
          Failure{ExitStatus::wrongUse, fmt::format("{} (see {} --help)", what, command.call())});
    };
    if (words.contain(help)) {
      return helpText(command, &command == this ? statuses : StatusMeanings());
    }
    if (words.contain(versionFlag)) {
      return fmt::format("{} {}\n", name, version);
    }
    if (words.wrong()) {
      return wrongUse(*words.wrong());
    }
    try {
      words.parse();
    } catch (const CLI::ParseError& error) {
      return wrongUse(error.what());
    }
    return command.action()();
  }();

  const bool prints = result || !result.error().findings.empty();
  if (!prints) {
    writeErrorLine(name, result.error().message);
    return static_cast<int>(result.error().status);
  }
  if (const auto written = writeToStandardOutput(result ? *result : result.error().findings); !written) {
    writeErrorLine(name, "standard output: " + written.error());
    return static_cast<int>(ExitStatus::fileFailed);
  }
  return static_cast<int>(result ? ExitStatus::done : result.error().status);
}

}  // namespace kestrel
