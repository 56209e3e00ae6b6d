#pragma once

#include <command-line/Command.h>

#include <string>

namespace kestrel {

/// The completions of a program and its commands for bash, to be loaded by the bash-completion package or
/// sourced.
std::string bashCompletion(const Command& program);

/// The same for zsh, a function file for a folder in `fpath`.
std::string zshCompletion(const Command& program);

/// The same for fish.
std::string fishCompletion(const Command& program);

}  // namespace kestrel
