#include <KestrelKit/foundation/ProgrammingError.h>
#include <command-line/Failure.h>
#include <command-line/Program.h>
#include <command-line/ValueOption.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <CLI/CLI.hpp>

#include <array>
#include <cstdlib>
#include <ctime>
#include <expected>
#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

namespace kestrel {
namespace {

using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::StartsWith;

using Action = std::function<std::expected<std::string, Failure>()>;

struct Result {
  int status;
  std::string output;
  std::string errors;
};

/// Runs a program with a zone, a number and a flag in this process.
Result run(
    std::initializer_list<const char*> words, const Action& action = [] { return "done\n"; }) {
  Program program({.name = "sample",
                   .purpose = "try the command line",
                   .details = "One paragraph.\n\nAnother.",
                   .refusal = "It was refused.",
                   .example = "sample --loud",
                   .exampleDoes = "Says it loudly."});
  bool loud = false;
  program.addTimeZoneOption();
  addFlag(program.arguments(), "--loud", loud, "Be loud.");
  std::vector<const char*> arguments{"sample"};
  arguments.insert(arguments.end(), words);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const int status = program.run(static_cast<int>(arguments.size()), arguments.data(), action);
  return {status, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

TEST(Program, writesWhatItsActionGivesAndEndsWith0) {
  const auto result = run({});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "done\n");
  EXPECT_EQ(result.errors, "");
}

TEST(Program, writesAFailureAsOneLineAndNothingToStandardOutput) {
  const auto result = run({}, [] {
    return std::unexpected(Failure{ExitStatus::fileFailed, "a\nb\tc\x7f: gone"});
  });
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "sample: a\\u000Ab\\u0009c\\u007F: gone\n");
}

TEST(Program, doesNotRunItsActionOnWrongUse) {
  const auto result = run({"--lout"}, [] -> std::expected<std::string, Failure> {
    ADD_FAILURE() << "the action ran";
    return "";
  });
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(result.errors, StartsWith("sample: "));
  EXPECT_THAT(result.errors, HasSubstr("--lout"));
}

TEST(Program, setsTheZoneBeforeItsActionRuns) {
  setenv("TZ", "UTC", 1);
  const auto result = run({"--timezone", "Asia/Kathmandu"}, [] {
    const std::time_t time = 0;
    std::tm local{};
    localtime_r(&time, &local);
    return std::to_string(local.tm_gmtoff);
  });
  EXPECT_EQ(result.output, "19800");  // In 1970, half an hour ahead of India's clocks as they are now.
  setenv("TZ", "UTC", 1);
}

TEST(Program, refusesWhatIsNoNameOfAZone) {
  for (const char* name : {"", "Mars/Olympus", "europe/zurich", "+02:00", "CET-1CEST", ":Europe/Zurich",
                           "/usr/share/zoneinfo/Europe/Zurich", "../zoneinfo/UTC", "Europe"}) {
    const auto result = run({"--timezone", name});
    EXPECT_EQ(result.status, 2) << name;
    EXPECT_THAT(result.errors, HasSubstr("is not the name of a time zone")) << name;
  }
}

TEST(Program, printsItsHelpWithEveryOptionAndTheExample) {
  const auto result = run({"--help"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  for (const char* part : {"Usage: sample [--timezone ID] [--loud] [--help] [--version]\n",
                           "One paragraph.\n\nAnother.\n", "  --loud         Be loud.\n",
                           "  1  It was refused.\n", "  sample --loud\n      Says it loudly.\n"}) {
    EXPECT_THAT(result.output, HasSubstr(part));
  }
  EXPECT_EQ(run({"-h"}).output, result.output);
}

TEST(Program, printsItsVersion) {
  const auto result = run({"--version"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, testing::MatchesRegex("sample [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(Program, generatesNothingOfAnUnknownKind) { EXPECT_EQ(run({"--generate", "poem"}).status, 2); }

TEST(ProgramDeathTest, endsWith4WhenARuleIsBroken) {
  Program program(
      {.name = "sample", .purpose = "", .details = "", .refusal = "", .example = "", .exampleDoes = ""});
  const std::array arguments{"sample"};
  EXPECT_EXIT(program.run(1, arguments.data(),
                          [] -> std::expected<std::string, Failure> {
                            programmingError("the sum lies beyond 64 bits");
                          }),
              ExitedWithCode(4), "^programming error: the sum lies beyond 64 bits\n$");
}

}  // namespace
}  // namespace kestrel
