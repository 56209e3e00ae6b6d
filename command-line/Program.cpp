#include <command-line/Program.h>

#include "CommandWords.h"
#include "Completions.h"
#include "HelpText.h"
#include "ManPage.h"
#include "StandardStreams.h"

#include <KestrelKit/foundation/ProgrammingError.h>
#include <KestrelKit/foundation/QuotedText.h>
#include <KestrelKit/foundation/TimeZone.h>
#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <ctime>
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

std::optional<std::string> generated(std::string_view kind, const ProgramDescription& description,
                                     const CLI::App& app) {
  if (kind == "man") {
    return manPage(description, app, version);
  }
  if (kind == "bash") {
    return bashCompletion(description.name, app);
  }
  if (kind == "zsh") {
    return zshCompletion(description.name, app);
  }
  if (kind == "fish") {
    return fishCompletion(description.name, app);
  }
  return std::nullopt;
}

}  // namespace

Program::Program(ProgramDescription description)
    : description_(std::move(description)), app_("", description_.name) {
  app_.set_help_flag();  // Added last, see run().
}

void Program::addTimeZoneOption() {
  app_.add_option_function<std::string>(
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

int Program::run(int argc, const char* const* argv,
                 const std::function<std::expected<std::string, Failure>()>& action) {
  reserveStandardStreams();
  std::signal(SIGPIPE, SIG_IGN);
  nameOfThisProcess = description_.name;
  setProgrammingErrorEnding([](std::string_view violation) {
    writeErrorLine(nameOfThisProcess, violation);
    std::_Exit(static_cast<int>(ExitStatus::ruleBroken));
  });
  const CLI::Option* help = app_.add_flag("-h,--help")->description("Print this text and end.");
  const CLI::Option* versionFlag = app_.add_flag("--version")->description("Print the version and end.");

  const auto wrongUse = [&](std::string_view what) {
    return std::unexpected(
        Failure{ExitStatus::wrongUse, fmt::format("{} (see {} --help)", what, description_.name)});
  };
  const auto result = [&]() -> std::expected<std::string, Failure> {
    if (argc == 3 && std::string_view(argv[1]) == "--generate") {
      if (auto text = generated(argv[2], description_, app_)) {
        return *std::move(text);
      }
    }
    const CommandWords words(app_, std::span(argv, static_cast<std::size_t>(argc)) | std::views::drop(1));
    if (words.contain(help)) {
      return helpText(description_, app_);
    }
    if (words.contain(versionFlag)) {
      return fmt::format("{} {}\n", description_.name, version);
    }
    if (words.wrong()) {
      return wrongUse(*words.wrong());
    }
    try {
      app_.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
      return wrongUse(error.what());
    }
    return action();
  }();

  Failure failure;
  if (!result) {
    failure = result.error();
  } else if (const auto written = writeToStandardOutput(*result); !written) {
    failure = {ExitStatus::fileFailed, "standard output: " + written.error()};
  } else {
    return static_cast<int>(ExitStatus::done);
  }
  writeErrorLine(description_.name, failure.message);
  return static_cast<int>(failure.status);
}

}  // namespace kestrel
