#include "Completions.h"

#include "Arguments.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <string_view>
#include <vector>

namespace kestrel {
namespace {

bool takesPathByPosition(const std::vector<Argument>& arguments) {
  return std::ranges::any_of(
      arguments, [](const Argument& argument) { return argument.positional && argument.takesPath(); });
}

/// `text` with a backslash before each of `special`.
std::string escaped(std::string_view text, std::string_view special) {
  std::string result;
  for (const char character : text) {
    if (special.contains(character)) {
      result += '\\';
    }
    result += character;
  }
  return result;
}

/// `text` within single quotes, for bash and zsh: a quote is written outside them.
std::string quotedForShell(std::string_view text) {
  std::string result = "'";
  for (const char character : text) {
    result += character == '\'' ? std::string("'\\''") : std::string(1, character);
  }
  return result + '\'';
}

}  // namespace

std::string bashCompletion(const std::string& name, const CLI::App& app) {
  std::vector<std::string> all;
  std::vector<std::string> withPath;
  std::vector<std::string> withOtherValue;
  const auto arguments = argumentsOf(app);
  for (const Argument& argument : arguments) {
    if (argument.positional) {
      continue;
    }
    all.insert(all.end(), argument.names.begin(), argument.names.end());
    if (!argument.value.empty()) {
      auto& list = argument.takesPath() ? withPath : withOtherValue;
      list.insert(list.end(), argument.names.begin(), argument.names.end());
    }
  }
  std::string function = "_" + name;
  std::ranges::replace(function, '-', '_');
  const std::string files = "compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- \"$word\")";

  std::string script = fmt::format("# bash completion for {}\n\n{}() {{\n", name, function);
  script += "  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}\n";
  script += "  # bash splits --option=value at the equals sign.\n";
  script += "  [[ $word == = ]] && word=\n";
  script += "  [[ $before == = ]] && before=${COMP_WORDS[COMP_CWORD - 2]}\n";
  script += "  COMPREPLY=()\n";
  script += "  case $before in\n";
  const auto afterOne = [](const std::vector<std::string>& options, std::string_view action) {
    return options.empty() ? std::string()
                           : fmt::format("    {}) {} ;;\n", fmt::join(options, " | "), action);
  };
  script += afterOne(withPath, files + "; return");
  script += afterOne(withOtherValue, "return");
  script += "  esac\n";
  const std::string options =
      fmt::format("mapfile -t COMPREPLY < <(compgen -W '{}' -- \"$word\")", fmt::join(all, " "));
  script += takesPathByPosition(arguments)
                ? fmt::format("  if [[ $word == -* ]]; then\n    {}\n  else\n    {}\n  fi\n", options, files)
                : fmt::format("  {}\n", options);
  return script + fmt::format("}}\n\ncomplete -F {} {}\n", function, name);
}

std::string zshCompletion(const std::string& name, const CLI::App& app) {
  std::string script = fmt::format("#compdef {}\n\n_arguments -S", name);
  for (const Argument& argument : argumentsOf(app)) {
    const std::string action = argument.takesPath() ? "_files" : " ";
    if (argument.positional) {
      script += " \\\n  " + quotedForShell(fmt::format(":{}:{}", argument.value, action));
      continue;
    }
    const std::string description = '[' + escaped(argument.brief(), "[]:\\") + ']';
    for (const std::string& option : argument.names) {
      script += " \\\n  " +
                quotedForShell(argument.value.empty()
                                   ? option + description
                                   : fmt::format("{}={}:{}:{}", option, description, argument.value, action));
    }
  }
  return script + '\n';
}

std::string fishCompletion(const std::string& name, const CLI::App& app) {
  const auto arguments = argumentsOf(app);
  std::string script = fmt::format("# fish completion for {}\n\n", name);
  if (!takesPathByPosition(arguments)) {
    script += fmt::format("complete -c {} -f\n", name);
  }
  for (const Argument& argument : arguments) {
    if (argument.positional) {
      continue;
    }
    script += fmt::format("complete -c {}", name);
    for (const std::string& option : argument.names) {
      script += option.starts_with("--") ? " -l " + option.substr(2) : " -s " + option.substr(1);
    }
    script += argument.value.empty() ? "" : argument.takesPath() ? " -r -F" : " -x";
    script += fmt::format(" -d '{}'\n", escaped(argument.brief(), "'\\"));
  }
  return script;
}

}  // namespace kestrel
