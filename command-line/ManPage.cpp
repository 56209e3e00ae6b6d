#include "ManPage.h"

#include "Arguments.h"
#include "StatusMeanings.h"

#include <fmt/format.h>

#include <cctype>
#include <sstream>

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

}  // namespace

std::string manPage(const ProgramDescription& description, const CLI::App& app, std::string_view version) {
  const auto arguments = argumentsOf(app);
  // No hyphenation: a hyphen at the end of a line would look like a part of the name that is broken there.
  std::string page = fmt::format(
      ".TH {} 1 \"\" \"Tidewell {}\" \"User Commands\"\n.nh\n.SH NAME\n{} \\- {}\n",
      literal(upperCase(description.name)), version, literal(description.name), literal(description.purpose));
  page += fmt::format(".SH SYNOPSIS\n.B {}\n", literal(description.name));
  for (const std::string& call : usageOf(arguments)) {
    page += literal(call) + '\n';
  }
  page += ".SH DESCRIPTION\n";
  std::istringstream details(description.details);
  for (std::string paragraph; std::getline(details, paragraph);) {
    page += paragraph.empty() ? ".PP\n" : literal(paragraph) + '\n';
  }
  const auto list = [&](std::string_view heading, bool positional) {
    std::string entries;
    for (const Argument& argument : arguments) {
      if (argument.positional == positional) {
        entries +=
            fmt::format(".TP\n.B {}\n{}\n", literal(argument.synopsis()), literal(argument.description));
      }
    }
    return entries.empty() ? entries : fmt::format(".SH {}\n{}", heading, entries);
  };
  page += list("ARGUMENTS", true) + list("OPTIONS", false);
  page += ".SH EXIT STATUS\n";
  for (const auto& [status, meaning] : statusMeanings(description)) {
    page += fmt::format(".TP\n.B {}\n{}\n", static_cast<int>(status), literal(meaning));
  }
  page += fmt::format(".SH EXAMPLES\n.nf\n{}\n.fi\n.PP\n{}\n", literal(description.example),
                      literal(description.exampleDoes));
  return page;
}

}  // namespace kestrel
