#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace kestrel {

/// The completions of the program `name` for bash, to be loaded by the bash-completion package or sourced.
std::string bashCompletion(const std::string& name, const CLI::App& app);

/// The same for zsh, a function file for a folder in `fpath`.
std::string zshCompletion(const std::string& name, const CLI::App& app);

/// The same for fish.
std::string fishCompletion(const std::string& name, const CLI::App& app);

}  // namespace kestrel
