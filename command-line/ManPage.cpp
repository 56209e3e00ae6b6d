#include "ManPage.h"

#include <fmt/format.h>
#include "Arguments.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <sstream>
#include <string_view>
#include <vector>

namespace kestrel {
namespace {

/// `text` so that roff prints it as it is: a hyphen stays one that can be typed, and no line becomes a
/// request.
std::string literal(std::string_view text) {
  std::string result;
  if (text.starts_with('.') || text.starts_with('\'')) {
    result += "\\&";
  }
  for (const char character : text) {
    switch (character) {
      case '\\':
        result += "\\e";
        break;
      case '-':
        result += "\\-";
        break;
      default:
        result += character;
    }
  }
  return result;
}

std::string upperCase(std::string text) {
  for (char& character : text) {
    character = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
  }
  return text;
}

std::string synopsis(const Command& command, const std::vector<Argument>& arguments) {
  std::string text = fmt::format(".B {}\n", literal(command.call()));
  for (const std::string& call : usageOf(command, arguments)) {
    text += literal(call) + '\n';
  }
  return text;
}

std::string details(const Command& command) {
  std::string text;
  std::istringstream details(command.description().details);
  for (std::string paragraph; std::getline(details, paragraph);) {
    text += paragraph.empty() ? ".PP\n" : literal(paragraph) + '\n';
  }
  return text;
}

std::string entries(const std::vector<Argument>& arguments, bool positional) {
  std::string text;
  for (const Argument& argument : arguments) {
    if (argument.positional == positional) {
      text += fmt::format(".TP\n.B {}\n{}\n", literal(argument.synopsis()), literal(argument.description));
    }
  }
  return text;
}

std::string example(const Command& command) {
  std::string text = ".nf\n";
  std::istringstream example(command.description().example);
  for (std::string line; std::getline(example, line);) {
    text += literal(line) + '\n';
  }
  return text + fmt::format(".fi\n.PP\n{}\n", literal(command.description().exampleDoes));
}

/// What a command of `program` takes beside the options that hold for the whole program.
std::vector<Argument> argumentsWithin(const Command& program, const Command& command) {
  std::vector<Argument> arguments = ownArguments(command);
  if (command.parent() != &program) {
    std::ranges::move(argumentsWithin(program, *command.parent()), std::back_inserter(arguments));
  }
  return arguments;
}

std::string section(std::string_view heading, const std::string& text) {
  return text.empty() ? text : fmt::format(".SH {}\n{}", heading, text);
}

}  // namespace

std::string manPage(const Command& program, const StatusMeanings& statuses, std::string_view version) {
  const CommandDescription& description = program.description();
  const auto arguments = ownArguments(program);
  // No hyphenation: a hyphen at the end of a line would look like a part of the name that is broken there.
  std::string page = fmt::format(
      ".TH {} 1 \"\" \"Tidewell {}\" \"User Commands\"\n.nh\n.SH NAME\n{} \\- {}\n",
      literal(upperCase(description.name)), version, literal(description.name), literal(description.purpose));
  page += ".SH SYNOPSIS\n" + synopsis(program, arguments);
  page += ".SH DESCRIPTION\n" + details(program);
  page += section("ARGUMENTS", entries(arguments, true)) + section("OPTIONS", entries(arguments, false));
  std::string commands;
  for (const Command* command : commandsBelow(program)) {
    const auto within = argumentsWithin(program, *command);
    commands += fmt::format(".SS {}\n", literal(command->call())) + synopsis(*command, within) + ".PP\n" +
                details(*command) + entries(within, true) + entries(within, false) + ".PP\nExample:\n.PP\n" +
                example(*command);
  }
  page += section("COMMANDS", commands);
  page += ".SH EXIT STATUS\n";
  for (const auto& [status, meaning] : statuses) {
    page += fmt::format(".TP\n.B {}\n{}\n", static_cast<int>(status), literal(meaning));
  }
  return page + ".SH EXAMPLES\n" + example(program);
}

}  // namespace kestrel
