#pragma once

#include <CLI/CLI.hpp>

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

  bool takesPath() const { return value == "PATH"; }

  /// The description's first sentence without its full stop.
  std::string_view brief() const;
};

/// The arguments of `app`: the positional ones, then the required options, then the others, each in the order
/// in which they were added.
std::vector<Argument> argumentsOf(const CLI::App& app);

/// The arguments of a call, one an entry: `PATH`, `--messages N`, `[--now T]`.
std::vector<std::string> usageOf(const std::vector<Argument>& arguments);

}  // namespace kestrel
