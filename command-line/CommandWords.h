#pragma once

#include <command-line/Command.h>
#include <CLI/CLI.hpp>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {

/// The words of a command line, judged against the options of the command that they call before a value is
/// read from any of them. What is wrong is said here, in one voice; CLI11 then parses what is right.
class CommandWords {
 public:
  /// `words` without the program's name. `program` and `words` must outlive this.
  CommandWords(Command& program, std::span<const char* const> words);

  /// The command that the words call: the innermost that they name.
  Command& command() const noexcept { return *command_; }

  bool contain(const CLI::Option* option) const;

  /// What is wrong, for an error line; of several things the one that comes first. Absent where nothing is.
  const std::optional<std::string>& wrong() const { return wrong_; }

  /// Hands the words, which must not be wrong, to the parsers of the command and those that it belongs to.
  /// Throws CLI::ParseError for a value that its option refuses.
  void parse() const;

 private:
  struct Word {
    std::string text;
    std::string option;                ///< The name of an option; empty for an operand.
    std::optional<std::string> value;  ///< Of an option that takes one, or that one was attached to by `=`.
    bool valueIsAttached = false;
  };

  struct Given {
    const CLI::Option* option;
    const Word* word;
  };

  void split(const Command& program, std::span<const char* const> words);
  void findCommand(Command& program);
  void judgeOperand(const Word& word);
  void judgeOption(const Word& word);
  void judgeTogether();
  void say(std::string wrong);

  std::vector<Word> words_;
  Command* command_;
  std::size_t places_ = 0;  ///< How many of the command's positional arguments are given.
  std::vector<Given> given_;
  std::optional<std::string> wrong_;
};

}  // namespace kestrel
