#pragma once

#include <command-line/Command.h>

#include <string>

namespace kestrel {

/// What the help and the man page of a program say.
struct ProgramDescription {
  CommandDescription command;
  std::string refusal;  ///< When it ends with status 1, in a sentence; empty for a program that never does.
  std::string fileFailure;  ///< When it ends with status 3, likewise.
};

/// The command line of one program: what it takes, what it does, and how it ends.
///
/// It gives every program `--help` and `--version`. Called as `NAME --generate KIND`, with `man`, `bash`,
/// `zsh` or `fish`, a program prints its man page or its completions; the build does so, people have no need
/// to.
class Program : public Command {
 public:
  explicit Program(ProgramDescription description);

  /// Adds `--timezone`, which sets the zone of the whole process before the action runs.
  void addTimeZoneOption();

  /// Reads the command line, runs the action of the command that it calls, writes the text that it gives to
  /// standard output, all at once, or its failure as one line to standard error. Returns the process's exit
  /// status.
  ///
  /// `--help`, then `--version`, goes before everything else on the command line, wrong or not. Otherwise
  /// nothing is done before all of it is right. A programming error within ends the process with
  /// ExitStatus::ruleBroken and a line like any other. A reader of standard output that has gone is a failed
  /// write like any other. To be called once, by `main`, before it starts a thread.
  int run(int argc, const char* const* argv);

 private:
  std::string refusal_;
  std::string fileFailure_;
};

}  // namespace kestrel
