#pragma once

#include <command-line/ExitStatus.h>

#include <string>

namespace kestrel {

/// Why a program did not do what it was asked for.
struct Failure {
  ExitStatus status = ExitStatus::refused;
  std::string message;  ///< What is wrong, without the program's name. It is printed as one line.
};

}  // namespace kestrel
