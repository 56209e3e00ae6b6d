#include "Arguments.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>
#include <utility>

namespace kestrel {
namespace {

Argument argumentOf(const CLI::Option& option) {
  Argument argument;
  argument.positional = option.get_positional();
  argument.required = option.get_required();
  argument.value = option.get_items_expected_max() == 0 ? "" : option.get_type_name();
  argument.description = option.get_description();
  if (!option.get_default_str().empty()) {
    argument.description += fmt::format(" Default: {}.", option.get_default_str());
  }
  if (argument.positional) {
    argument.names.push_back(argument.value);
  }
  for (const auto& name : option.get_snames()) {
    argument.names.push_back("-" + name);
  }
  for (const auto& name : option.get_lnames()) {
    argument.names.push_back("--" + name);
  }
  return argument;
}

}  // namespace

std::string Argument::synopsis() const {
  const auto all = fmt::format("{}", fmt::join(names, ", "));
  return positional || value.empty() ? all : all + ' ' + value;
}

std::string_view Argument::brief() const {
  const std::string_view whole = description;
  const auto end = whole.find(". ");
  return end != std::string_view::npos ? whole.substr(0, end)
                                       : whole.substr(0, whole.size() - whole.ends_with('.'));
}

std::vector<Argument> ownArguments(const Command& command) {
  std::vector<Argument> positional;
  std::vector<Argument> required;
  std::vector<Argument> others;
  for (const CLI::Option* option : command.arguments().get_options()) {
    const Argument argument = argumentOf(*option);
    (argument.positional ? positional : argument.required ? required : others).push_back(argument);
  }
  std::vector<Argument> arguments = std::move(positional);
  std::ranges::move(required, std::back_inserter(arguments));
  std::ranges::move(others, std::back_inserter(arguments));
  return arguments;
}

std::vector<Argument> argumentsOf(const Command& command) {
  std::vector<Argument> arguments = ownArguments(command);
  if (command.parent() != nullptr) {
    std::ranges::move(argumentsOf(*command.parent()), std::back_inserter(arguments));
  }
  return arguments;
}

std::vector<std::string> usageOf(const Command& command, const std::vector<Argument>& arguments) {
  std::vector<std::string> usage;
  if (!command.commands().empty()) {
    usage.emplace_back(command.action() ? "[COMMAND]" : "COMMAND");
  }
  for (const Argument& argument : arguments) {
    const std::string name = argument.names.back();
    const std::string call =
        argument.positional || argument.value.empty() ? name : name + ' ' + argument.value;
    usage.push_back(argument.required ? call : '[' + call + ']');
  }
  return usage;
}

std::vector<const Command*> commandsBelow(const Command& command) {
  std::vector<const Command*> below;
  for (const auto& inner : command.commands()) {
    if (inner->action()) {
      below.push_back(inner.get());
    }
    std::ranges::move(commandsBelow(*inner), std::back_inserter(below));
  }
  return below;
}

}  // namespace kestrel
