#pragma once

#include <CLI/CLI.hpp>

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kestrel {

/// The words of a command line, judged against an app's options before a value is read from any of them. What
/// is wrong is said here, in one voice; CLI11 then parses what is right.
class CommandWords {
 public:
  /// `words` without the program's name. `app` must outlive this.
  CommandWords(const CLI::App& app, std::span<const char* const> words);

  bool contain(const CLI::Option* option) const;

  /// What is wrong, for an error line; of several things the one that comes first. Absent where nothing is.
  const std::optional<std::string>& wrong() const { return wrong_; }

 private:
  void judgeTogether(const CLI::App& app);
  void say(std::string wrong);

  std::vector<const CLI::Option*> given_;
  std::optional<std::string> wrong_;
};

}  // namespace kestrel
