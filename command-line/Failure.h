#pragma once

#include <command-line/ExitStatus.h>

#include <string>

namespace kestrel {

/// Why a program did not do what it was asked for.
struct Failure {
  ExitStatus status = ExitStatus::refused;
  std::string message;  ///< What is wrong, without the program's name. It is printed as one line.
  /// What a check found, if that was its failure: printed on standard output, and no message.
  std::string findings{};
};

}  // namespace kestrel
