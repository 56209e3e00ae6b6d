#pragma once

#include <command-line/Command.h>

#include <string>
#include <string_view>
#include <vector>

namespace kestrel {

/// One option or positional argument as the help, the man page and the completions need it.
struct Argument {
  std::vector<std::string> names;  ///< `-h` and `--help`; for a positional argument its value's name alone.
  std::string value;               ///< The name of the value, `N`; empty for a flag.
  std::string description;         ///< Sentences, the default value in the last one.
  bool positional = false;
  bool required = false;

  /// `-h, --help` or `--days N`.
  std::string synopsis() const;

  bool takesPath() const { return value == "PATH" || value == "FILE"; }

  /// The description's first sentence without its full stop.
  std::string_view brief() const;
};

/// The arguments of `command` itself: the positional ones, then the required options, then the others, each
/// in the order in which they were added.
std::vector<Argument> ownArguments(const Command& command);

/// Those that hold for `command`: its own, then the options of what it belongs to, the program's last.
std::vector<Argument> argumentsOf(const Command& command);

/// What follows `command` in a call with `arguments`, one an entry: `PATH`, `--messages N`, `[--now T]`.
std::vector<std::string> usageOf(const Command& command, const std::vector<Argument>& arguments);

/// The commands below `command` that do something, those of a command before its neighbours.
std::vector<const Command*> commandsBelow(const Command& command);

}  // namespace kestrel
