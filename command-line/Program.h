#pragma once

#include <command-line/Failure.h>
#include <CLI/CLI.hpp>

#include <expected>
#include <functional>
#include <string>

namespace kestrel {

/// What the help, the man page and the completions of a program say beside its options.
struct ProgramDescription {
  std::string name;
  std::string purpose;  ///< One line without a full stop, beginning in lower case.
  std::string details;  ///< Paragraphs, an empty line between two.
  std::string refusal;  ///< When it ends with status 1, in a sentence; empty for a program that never does.
  std::string fileFailure;  ///< When it ends with status 3, likewise.
  std::string example;      ///< A command line that works as it stands.
  std::string exampleDoes;  ///< What that one does, in a sentence.
};

/// The command line of one program: its options, and how it ends.
///
/// It gives every program `--help` and `--version`. Called as `NAME --generate KIND`, with `man`, `bash`,
/// `zsh` or `fish`, a program prints its man page or its completions; the build does so, people have no need
/// to.
class Program {
 public:
  explicit Program(ProgramDescription description);

  /// Where the program's own options and arguments are added, before run().
  CLI::App& arguments() { return app_; }

  /// Adds `--timezone`, which sets the zone of the whole process before the action runs.
  void addTimeZoneOption();

  /// Reads the command line, runs `action`, writes the text that it gives to standard output, all at once, or
  /// its failure as one line to standard error. Returns the process's exit status.
  ///
  /// `--help`, then `--version`, goes before everything else on the command line, wrong or not. Otherwise
  /// nothing is done before all of it is right. A programming error within ends the process with
  /// ExitStatus::ruleBroken and a line like any other. A reader of standard output that has gone is a failed
  /// write like any other. To be called once, by `main`, before it starts a thread.
  int run(int argc, const char* const* argv,
          const std::function<std::expected<std::string, Failure>()>& action);

 private:
  ProgramDescription description_;
  CLI::App app_;
};

}  // namespace kestrel
