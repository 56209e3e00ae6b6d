#include <KestrelKit/foundation/ProgrammingError.h>
#include <command-line/Failure.h>
#include <command-line/Program.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <CLI/CLI.hpp>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <expected>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {
namespace {

using testing::EndsWith;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::StartsWith;

const ProgramDescription nameAlone{
    .command = {.name = "sample", .purpose = "", .details = "", .example = "", .exampleDoes = ""},
    .refusal = "",
    .fileFailure = ""};

struct Result {
  int status;
  std::string output;
  std::string errors;
};

/// Runs a program with a zone, a number and a flag in this process.
Result run(
    const std::vector<const char*>& words, const Action& action = [] { return "done\n"; }) {
  Program program({.command = {.name = "sample",
                               .purpose = "try the command line",
                               .details = "One paragraph.\n\nAnother.",
                               .example = "sample --loud",
                               .exampleDoes = "Says it loudly."},
                   .refusal = "It was refused.",
                   .fileFailure = "It could not be written."});
  bool loud = false;
  program.addTimeZoneOption();
  program.arguments().add_flag("--loud", loud, "Be loud.");
  program.setAction(action);
  std::vector<const char*> arguments{"sample"};
  arguments.insert(arguments.end(), words.begin(), words.end());
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const int status = program.run(static_cast<int>(arguments.size()), arguments.data());
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

/// What is said of `words`, between the program's name and the hint at the help.
std::string wrongUse(std::initializer_list<const char*> words) {
  const auto result = run(words, [] -> std::expected<std::string, Failure> {
    ADD_FAILURE() << "the action ran";
    return "";
  });
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.output, "");
  const std::string begin = "sample: ";
  const std::string end = " (see sample --help)\n";
  EXPECT_THAT(result.errors, StartsWith(begin));
  EXPECT_THAT(result.errors, EndsWith(end));
  return result.errors.substr(begin.size(), result.errors.size() - begin.size() - end.size());
}

TEST(Program, saysWhatIsWrongOfItsWordsTheFirst) {
  EXPECT_EQ(wrongUse({"b", "a", "--lout"}), R"("b" is not expected)");
  EXPECT_EQ(wrongUse({"--lout=5", "b"}), R"("--lout=5" is not expected)");
  EXPECT_EQ(wrongUse({""}), R"("" is not expected)");
  EXPECT_EQ(wrongUse({"-"}), R"("-" is not expected)");
  EXPECT_EQ(wrongUse({"-h5"}), R"("-h5" is not expected)");
  EXPECT_EQ(wrongUse({"-loud"}), R"("-loud" is not expected)");
  EXPECT_EQ(wrongUse({"--", "--loud"}), R"("--loud" is not expected)");
  EXPECT_EQ(wrongUse({"--timezone"}), "--timezone needs a value");
  EXPECT_EQ(wrongUse({"--timezone="}), "--timezone needs a value");
  EXPECT_EQ(wrongUse({"--timezone", "UTC", "--timezone=UTC"}), "--timezone is given twice");
  EXPECT_EQ(wrongUse({"--timezone", "--loud"}), R"(--timezone: "--loud" is not the name of a time zone)");
}

TEST(Program, takesANumberBelowZeroForNoOption) {
  const auto taken = [](const char* word) {
    Program program(nameAlone);
    std::string number;
    program.arguments().add_option("NUMBER", number)->required();
    program.setAction([&] { return number; });
    const char* const arguments[] = {"sample", word};
    testing::internal::CaptureStdout();
    program.run(2, arguments);
    return testing::internal::GetCapturedStdout();
  };
  for (const char* number : {"-1", "-0", "-9", "-5e1", "-9223372036854775808", "-1=2"}) {
    EXPECT_EQ(taken(number), number);
  }
  for (const char* option : {"-/", "-:", "-.5", "-x1", "--1"}) {
    EXPECT_EQ(taken(option), "");
  }
}

TEST(Program, givesNoValueToAFlag) {
  for (const char* value : {"", "true", "false", "1", "5"}) {
    for (const std::string flag : {"--loud", "--help", "--version", "-h"}) {
      EXPECT_EQ(wrongUse({(flag + '=' + value).c_str()}), flag + " takes no value");
    }
  }
  EXPECT_EQ(run({"--loud", "--loud"}).status, 0);
}

TEST(Program, saysWhichOptionsNeedOrExcludeEachOther) {
  const auto said = [](std::initializer_list<const char*> words) {
    Program program(nameAlone);
    std::string file;
    program.arguments().add_option("FILE", file)->required();
    auto* loud = program.arguments().add_flag("--loud");
    program.arguments().add_flag("--quiet")->excludes(loud);
    program.arguments().add_flag("--louder")->needs(loud);
    std::vector<const char*> arguments{"sample"};
    arguments.insert(arguments.end(), words);
    testing::internal::CaptureStderr();
    program.setAction([] { return "done\n"; });
    program.run(static_cast<int>(arguments.size()), arguments.data());
    return testing::internal::GetCapturedStderr();
  };
  EXPECT_EQ(said({"--loud"}), "sample: FILE is required (see sample --help)\n");
  EXPECT_EQ(said({"a", "b"}), "sample: \"b\" is not expected (see sample --help)\n");
  EXPECT_EQ(said({"--loud", "a", "--quiet"}),
            "sample: --loud does not go with --quiet (see sample --help)\n");
  EXPECT_EQ(said({"--quiet", "--loud", "a"}),
            "sample: --quiet does not go with --loud (see sample --help)\n");
  EXPECT_EQ(said({"--louder", "a"}), "sample: --louder needs --loud (see sample --help)\n");
  EXPECT_EQ(said({"--lout"}), "sample: \"--lout\" is not expected (see sample --help)\n");
  EXPECT_EQ(said({"--", "--loud"}), "");
}

TEST(Program, printsItsHelpAndItsVersionWhateverElseIsWrong) {
  const auto help = run({"--help"}).output;
  const auto version = run({"--version"}).output;
  for (const std::initializer_list<const char*> wrong :
       {std::initializer_list<const char*>{"--lout"}, {"b"}, {"--timezone", "Mars/Olympus"}, {"--loud=5"}}) {
    for (const char* option : {"--help", "-h", "--version"}) {
      for (const bool before : {true, false}) {
        std::vector<const char*> words(wrong);
        words.insert(before ? words.begin() : words.end(), option);
        const auto result = run(words);
        EXPECT_EQ(result.status, 0) << option << ' ' << words.front();
        EXPECT_EQ(result.output, std::string_view(option) == "--version" ? version : help);
        EXPECT_EQ(result.errors, "");
      }
    }
  }
  EXPECT_EQ(run({"--version", "--help"}).output, help);
  EXPECT_EQ(run({"--", "--help"}).status, 2);
}

TEST(Program, completesWhereNoOptionHasAValue) {
  Program program(nameAlone);
  const std::array arguments{"sample", "--generate", "bash"};
  testing::internal::CaptureStdout();
  EXPECT_EQ(program.run(3, arguments.data()), 0);
  const auto script = testing::internal::GetCapturedStdout();
  EXPECT_THAT(script, HasSubstr("--version"));
  FILE* shell = popen("bash -n", "w");
  ASSERT_NE(shell, nullptr);
  std::fputs(script.c_str(), shell);
  EXPECT_EQ(pclose(shell), 0);
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
  Program program(nameAlone);
  const std::array arguments{"sample"};
  program.setAction(
      [] -> std::expected<std::string, Failure> { programmingError("the sum lies beyond 64 bits"); });
  EXPECT_EXIT(program.run(1, arguments.data()), ExitedWithCode(4), "^sample: the sum lies beyond 64 bits\n$");
}

// Programs with commands.

/// Runs a program with a command that groups others, one that takes a value, and one that does something and
/// has a command of its own.
Result runWithCommands(const std::vector<const char*>& words) {
  Program program({.command = {.name = "sample",
                               .purpose = "try commands",
                               .details = "Details.",
                               .example = "sample list",
                               .exampleDoes = "Lists."},
                   .refusal = "",
                   .fileFailure = "It could not be written."});
  const auto description = [](const char* name) {
    return CommandDescription{.name = name,
                              .purpose = "do that",
                              .details = "How.",
                              .example = "sample",
                              .exampleDoes = "Nothing."};
  };
  std::string found;
  bool loud = false;
  program.arguments().add_flag("--loud", loud, "Be loud.");
  const auto says = [&](const char* what) {
    return [&, what] { return std::string(what) + (loud ? " loudly " : " ") + found + '\n'; };
  };

  program.addCommand(description("list")).setAction(says("list"));
  Command& group = program.addCommand(description("group"));
  std::string file = "none";
  group.arguments().add_option("--file", file, "A file.")->type_name("PATH");
  Command& find = group.addCommand(description("find"));
  find.arguments().add_option("WHAT", found, "What.")->type_name("WHAT")->required();
  std::string depth;
  find.arguments().add_option("--depth", depth, "How deep.")->type_name("N")->required();
  find.setAction([&] { return "find " + found + " in " + file + " to " + depth + '\n'; });
  Command& keep = program.addCommand(description("keep"));
  keep.setAction(says("keep"));
  Command& put = keep.addCommand(description("put"));
  put.arguments().add_option("FILE", found, "What.")->type_name("FILE")->required();
  put.setAction(says("put"));

  std::vector<const char*> arguments{"sample"};
  arguments.insert(arguments.end(), words.begin(), words.end());
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const int status = program.run(static_cast<int>(arguments.size()), arguments.data());
  return {status, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

TEST(ProgramWithCommands, runsTheCommandThatItsWordsName) {
  EXPECT_EQ(runWithCommands({"list"}).output, "list \n");
  EXPECT_EQ(runWithCommands({"group", "find", "it", "--depth", "3"}).output, "find it in none to 3\n");
  EXPECT_EQ(runWithCommands({"keep"}).output, "keep \n");
  EXPECT_EQ(runWithCommands({"keep", "put", "it"}).output, "put it\n");
}

TEST(ProgramWithCommands, takesOptionsWhereverTheyStand) {
  for (const std::vector<const char*>& words :
       std::vector<std::vector<const char*>>{{"group", "find", "it", "--depth", "3", "--file", "f"},
                                             {"--depth", "3", "--file", "f", "group", "find", "it"},
                                             {"--depth=3", "group", "--file=f", "find", "it"},
                                             {"group", "--file", "f", "--depth", "3", "find", "--", "it"},
                                             {"--depth", "3", "--file", "f", "--", "group", "find", "it"}}) {
    EXPECT_EQ(runWithCommands(words).output, "find it in f to 3\n");
  }
  for (const std::vector<const char*>& words :
       std::vector<std::vector<const char*>>{{"--loud", "keep", "put", "it"},
                                             {"keep", "--loud", "put", "it"},
                                             {"keep", "put", "it", "--loud"}}) {
    EXPECT_EQ(runWithCommands(words).output, "put loudly it\n");
  }
}

TEST(ProgramWithCommands, takesNoValueAndNoArgumentForACommand) {
  EXPECT_EQ(runWithCommands({"--depth", "list", "group", "find", "it"}).output, "find it in none to list\n");
  EXPECT_EQ(runWithCommands({"group", "find", "find", "--depth", "3"}).output, "find find in none to 3\n");
  EXPECT_EQ(runWithCommands({"group", "find", "--depth", "3", "--", "--depth"}).output,
            "find --depth in none to 3\n");
  EXPECT_EQ(runWithCommands({"keep", "put", "put"}).output, "put put\n");
}

TEST(ProgramWithCommands, saysWhatIsWrongAndWhoseHelpToSee) {
  const auto said = [](const std::vector<const char*>& words) {
    const auto result = runWithCommands(words);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    return result.errors;
  };
  EXPECT_EQ(said({}), "sample: COMMAND is required (see sample --help)\n");
  EXPECT_EQ(said({"group"}), "sample: COMMAND is required (see sample group --help)\n");
  EXPECT_EQ(said({"lists"}),
            "sample: \"lists\" is not one of list, group, keep; did you mean list? (see sample --help)\n");
  EXPECT_EQ(said({"find"}), "sample: \"find\" is not one of list, group, keep (see sample --help)\n");
  EXPECT_EQ(said({"group", "list"}), "sample: \"list\" is not one of find (see sample group --help)\n");
  EXPECT_EQ(said({"keep", "list"}), "sample: \"list\" is not expected (see sample keep --help)\n");
  EXPECT_EQ(said({"list", "--depth", "3"}), "sample: \"--depth\" is not expected (see sample list --help)\n");
  EXPECT_EQ(said({"--depth", "3", "list"}), "sample: \"--depth\" is not expected (see sample list --help)\n");
  EXPECT_EQ(said({"keep", "--file", "f"}), "sample: \"--file\" is not expected (see sample keep --help)\n");
  EXPECT_EQ(said({"group", "find"}), "sample: WHAT is required (see sample group find --help)\n");
  EXPECT_EQ(said({"group", "find", "it"}), "sample: --depth is required (see sample group find --help)\n");
  EXPECT_EQ(said({"group", "find", "it", "--depth"}),
            "sample: --depth needs a value (see sample group find --help)\n");
  EXPECT_EQ(said({"--lout", "lists"}), "sample: \"--lout\" is not expected (see sample --help)\n");
}

TEST(ProgramWithCommands, printsTheHelpOfTheCommandThatItsWordsName) {
  const auto whole = runWithCommands({"--help"}).output;
  EXPECT_THAT(whole, StartsWith("Usage: sample COMMAND [--loud] [--help] [--version]\n"));
  EXPECT_THAT(whole, HasSubstr("\nCommands:\n"
                               "  list        do that\n"
                               "  group find  do that\n"
                               "  keep        do that\n"
                               "  keep put    do that\n"
                               "\nOptions:\n"));
  EXPECT_THAT(whole, HasSubstr("\nExit status:\n"));
  EXPECT_EQ(runWithCommands({"lists", "--help"}).output, whole);

  const auto find = runWithCommands({"group", "find", "--help"}).output;
  EXPECT_EQ(find,
            "Usage: sample group find WHAT --depth N [--file PATH] [--loud] [--help]\n"
            "                         [--version]\n"
            "\n"
            "How.\n"
            "\n"
            "Arguments:\n"
            "  WHAT         What.\n"
            "\n"
            "Options:\n"
            "  --depth N    How deep.\n"
            "  --file PATH  A file.\n"
            "  --loud       Be loud.\n"
            "  -h, --help   Print this text and end.\n"
            "  --version    Print the version and end.\n"
            "\n"
            "Example:\n"
            "  sample\n"
            "      Nothing.\n");
  EXPECT_EQ(runWithCommands({"-h", "group", "find", "--lout"}).output, find);
  EXPECT_THAT(runWithCommands({"keep", "--help"}).output,
              StartsWith("Usage: sample keep [COMMAND] [--loud] [--help] [--version]\n"));
  EXPECT_EQ(runWithCommands({"group", "find", "--version"}).output, runWithCommands({"--version"}).output);
}

}  // namespace
}  // namespace kestrel
