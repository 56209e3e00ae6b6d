#pragma once

namespace kestrel {

/// How a program of ours ends.
enum class ExitStatus {
  done = 0,
  refused = 1,     ///< The input was read but refused, or a check found problems.
  wrongUse = 2,    ///< The command line is not one that the program takes.
  fileFailed = 3,  ///< A file could not be read or written, standard output included.
  ruleBroken = 4,  ///< The input broke a rule that the library takes for granted.
};

}  // namespace kestrel
