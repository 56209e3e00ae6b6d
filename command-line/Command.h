#pragma once

#include <command-line/Failure.h>
#include <CLI/CLI.hpp>

#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {

/// What the help, the man page and the completions say of a command beside its options.
struct CommandDescription {
  std::string name;
  std::string purpose;      ///< One line without a full stop, beginning in lower case.
  std::string details;      ///< Paragraphs, an empty line between two.
  std::string example;      ///< A command line that works as it stands; may go on over several lines.
  std::string exampleDoes;  ///< What that one does, in a sentence.
};

/// Does what a command is for: gives the text for standard output, or says why there is none.
using Action = std::function<std::expected<std::string, Failure>()>;

/// A program as a whole, or what a word of its command line calls. It has options and arguments of its own,
/// does something, and may have further commands: `kestrel circadian features`. One that does nothing by
/// itself only groups others.
///
/// The options of a command hold for its commands, too, and may stand before or after their names. So that
/// a name can be told from a value, an option takes a value in all commands of a program or in none.
class Command {
 public:
  explicit Command(CommandDescription description);
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;

  const CommandDescription& description() const noexcept { return description_; }

  /// Where its options and arguments are added.
  CLI::App& arguments() noexcept { return app_; }
  const CLI::App& arguments() const noexcept { return app_; }

  /// Adds a command, which lives as long as this one.
  Command& addCommand(CommandDescription description);

  void setAction(Action action) { action_ = std::move(action); }

  /// Empty for a command that only groups others.
  const Action& action() const noexcept { return action_; }

  /// In the order in which they were added.
  const std::vector<std::unique_ptr<Command>>& commands() const noexcept { return commands_; }

  /// Null where it has none of that name.
  Command* commandNamed(std::string_view name) const;

  /// The command that it belongs to; null for a program.
  Command* parent() const noexcept { return parent_; }

  /// The words that call it: `kestrel circadian features`.
  std::string call() const;

  /// The option `name` (`--pretty`), its own or one that holds for it; null where there is none.
  const CLI::Option* option(const std::string& name) const;

 private:
  CommandDescription description_;
  CLI::App app_;
  Action action_;
  std::vector<std::unique_ptr<Command>> commands_;
  Command* parent_ = nullptr;
};

}  // namespace kestrel
