#include "HelpText.h"

#include <fmt/format.h>
#include "Arguments.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

constexpr std::size_t columns = 80;

/// `pieces` in lines of at most `columns`, the first one after `lead`, the others indented as far as
/// `indent`.
std::string wrapped(std::string lead, std::size_t indent, const std::vector<std::string>& pieces) {
  std::string text;
  std::string line = std::move(lead);
  line.resize(std::max(line.size(), indent), ' ');
  bool lineIsNew = true;
  for (const std::string& piece : pieces) {
    if (!lineIsNew && line.size() + 1 + piece.size() > columns) {
      text += line + '\n';
      line.assign(indent, ' ');
      lineIsNew = true;
    }
    line += (lineIsNew ? "" : " ") + piece;
    lineIsNew = false;
  }
  return text + line + '\n';
}

std::vector<std::string> words(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

/// An entry of a list: the term, then what it means in a column of its own, on the next line where the term
/// reaches into that column.
std::string entry(const std::string& term, std::size_t column, const std::string& meaning) {
  const std::string lead = "  " + term;
  return lead.size() + 2 > column ? lead + '\n' + wrapped("", column, words(meaning))
                                  : wrapped(lead, column, words(meaning));
}

}  // namespace

std::string helpText(const Command& command, const StatusMeanings& statuses) {
  const auto arguments = argumentsOf(command);
  const auto commands = commandsBelow(command);
  const std::string usage = "Usage: " + command.call() + ' ';
  std::string text = wrapped(usage, usage.size(), usageOf(command, arguments)) + '\n';

  std::istringstream details(command.description().details);
  for (std::string paragraph; std::getline(details, paragraph);) {
    text += paragraph.empty() ? "\n" : wrapped("", 0, words(paragraph));
  }

  if (!commands.empty()) {
    const std::size_t callOfThis = command.call().size() + 1;
    std::size_t column = 0;
    for (const Command* inner : commands) {
      column = std::max(column, inner->call().size() - callOfThis + 4);
    }
    text += "\nCommands:\n";
    for (const Command* inner : commands) {
      text += entry(inner->call().substr(callOfThis), column, inner->description().purpose);
    }
  }

  constexpr std::size_t widest = 24;
  std::size_t column = 0;
  for (const Argument& argument : arguments) {
    column = std::max(column, argument.synopsis().size() + 4);
  }
  column = std::min(column, widest);
  const auto list = [&](std::string_view heading, bool positional) {
    std::string entries;
    for (const Argument& argument : arguments) {
      if (argument.positional == positional) {
        entries += entry(argument.synopsis(), column, argument.description);
      }
    }
    return entries.empty() ? entries : fmt::format("\n{}:\n{}", heading, entries);
  };
  text += list("Arguments", true) + list("Options", false);

  if (!statuses.empty()) {
    text += "\nExit status:\n";
    for (const auto& [status, meaning] : statuses) {
      text += entry(fmt::format("{}", static_cast<int>(status)), 5, meaning);
    }
  }

  text += "\nExample:\n";
  std::istringstream example(command.description().example);
  for (std::string line; std::getline(example, line);) {
    text += "  " + line + '\n';
  }
  return text + wrapped("", 6, words(command.description().exampleDoes));
}

}  // namespace kestrel
