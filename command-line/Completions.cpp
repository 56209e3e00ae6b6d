#include "Completions.h"

#include "Arguments.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

namespace kestrel {
namespace {

/// The command and those that belong to it, and theirs.
std::vector<const Command*> withCommands(const Command& command) {
  std::vector<const Command*> all{&command};
  for (const auto& inner : command.commands()) {
    std::ranges::copy(withCommands(*inner), std::back_inserter(all));
  }
  return all;
}

/// The words after the program's name that call `command`, each behind a blank; nothing for the program.
std::string pathOf(const Command& command) {
  return command.parent() == nullptr ? "" : pathOf(*command.parent()) + ' ' + command.description().name;
}

/// The paths of all commands of `program` for a shell's `case`: each in single quotes.
std::vector<std::string> quotedPaths(const Command& program) {
  std::vector<std::string> paths;
  for (const Command* command : withCommands(program)) {
    if (command != &program) {
      paths.push_back(fmt::format("'{}'", pathOf(*command)));
    }
  }
  return paths;
}

/// The names of the options of a program that take a value, by what is completed after them.
struct ValueOptions {
  std::vector<std::string> withPath;
  std::vector<std::string> withOther;
  std::vector<std::string> all;
};

ValueOptions valueOptionsOf(const Command& program) {
  ValueOptions options;
  const auto add = [](std::vector<std::string>& list, const std::string& name) {
    if (std::ranges::find(list, name) == list.end()) {
      list.push_back(name);
    }
  };
  for (const Command* command : withCommands(program)) {
    for (const Argument& argument : ownArguments(*command)) {
      if (argument.positional || argument.value.empty()) {
        continue;
      }
      for (const std::string& name : argument.names) {
        add(argument.takesPath() ? options.withPath : options.withOther, name);
        add(options.all, name);
      }
    }
  }
  return options;
}

bool takesPathByPosition(const Command& command) {
  return std::ranges::any_of(ownArguments(command), [](const Argument& argument) {
    return argument.positional && argument.takesPath();
  });
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

std::string functionName(std::string call) {
  std::ranges::replace(call, '-', '_');
  std::ranges::replace(call, ' ', '_');
  return '_' + call;
}

constexpr std::string_view bashFiles =
    "compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- \"$word\")";

/// What bash offers where `command` was called, in lines that begin with `indent`.
std::string bashOffer(const Command& command, std::string_view indent) {
  std::vector<std::string> offered;
  for (const auto& inner : command.commands()) {
    offered.push_back(inner->description().name);
  }
  for (const Argument& argument : argumentsOf(command)) {
    if (!argument.positional) {
      std::ranges::copy(argument.names, std::back_inserter(offered));
    }
  }
  const std::string words =
      fmt::format("mapfile -t COMPREPLY < <(compgen -W '{}' -- \"$word\")", fmt::join(offered, " "));
  return takesPathByPosition(command)
             ? fmt::format("{0}if [[ $word == -* ]]; then\n{0}  {1}\n{0}else\n{0}  {2}\n{0}fi\n", indent,
                           words, bashFiles)
             : fmt::format("{}{}\n", indent, words);
}

/// The function that offers what `command` takes, after those that it calls.
std::string zshFunction(const Command& command) {
  std::string before;
  std::string script = functionName(command.call()) + "() {\n";
  if (!command.commands().empty()) {
    script += "  local curcontext=$curcontext state line\n";
  }
  script += "  _arguments -S";
  const auto add = [&](std::string_view specification) {
    script += " \\\n    " + quotedForShell(specification);
  };
  if (!command.commands().empty()) {
    script += " -C";
  }
  for (const Argument& argument : argumentsOf(command)) {
    const std::string action = argument.takesPath() ? "_files" : " ";
    if (argument.positional) {
      add(fmt::format("{}:{}:{}", argument.required ? "" : ":", argument.value, action));
      continue;
    }
    const std::string description = '[' + escaped(argument.brief(), "[]:\\") + ']';
    for (const std::string& option : argument.names) {
      add(argument.value.empty() ? option + description
                                 : fmt::format("{}={}:{}:{}", option, description, argument.value, action));
    }
  }
  if (command.commands().empty()) {
    return script + "\n}\n\n";
  }
  add("(-):command:->command");
  add("(-)*:: :->arguments");
  std::string commands;
  std::string calls;
  for (const auto& inner : command.commands()) {
    const auto& [name, purpose, details, example, exampleDoes] = inner->description();
    before += zshFunction(*inner);
    commands += fmt::format("        {}\n", quotedForShell(fmt::format("{}:{}", name, purpose)));
    calls += fmt::format("        {}) {} ;;\n", name, functionName(inner->call()));
  }
  script += fmt::format(
      "\n"
      "  case $state in\n"
      "    command)\n"
      "      local -a commands=(\n"
      "{}"
      "      )\n"
      "      _describe command commands ;;\n"
      "    arguments)\n"
      "      case $line[1] in\n"
      "{}"
      "      esac ;;\n"
      "  esac\n"
      "}}\n\n",
      commands, calls);
  return before + script;
}

}  // namespace

std::string bashCompletion(const Command& program) {
  const std::string& name = program.description().name;
  const std::string function = functionName(name);
  const ValueOptions options = valueOptionsOf(program);

  std::string script = fmt::format("# bash completion for {}\n\n{}() {{\n", name, function);
  script += "  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}\n";
  script += "  # bash splits --option=value at the equals sign.\n";
  script += "  [[ $word == = ]] && word=\n";
  script += "  [[ $before == = ]] && before=${COMP_WORDS[COMP_CWORD - 2]}\n";
  script += "  COMPREPLY=()\n";
  script += "  case $before in\n";
  const auto afterOne = [](const std::vector<std::string>& names, std::string_view action) {
    return names.empty() ? std::string() : fmt::format("    {}) {} ;;\n", fmt::join(names, " | "), action);
  };
  script += afterOne(options.withPath, fmt::format("{}; return", bashFiles));
  script += afterOne(options.withOther, "return");
  script += "  esac\n";
  if (program.commands().empty()) {
    script += bashOffer(program, "  ");
  } else {
    script += "  local command= place\n";
    script += "  for ((place = 1; place < COMP_CWORD; ++place)); do\n";
    script += "    case ${COMP_WORDS[place]} in\n";
    script += fmt::format(
        "      {}) [[ ${{COMP_WORDS[place + 1]}} == = ]] && ((++place)); ((++place)) ;;\n"
        "      *) case \"$command ${{COMP_WORDS[place]}}\" in\n"
        "        {}) command+=\" ${{COMP_WORDS[place]}}\" ;;\n"
        "      esac ;;\n"
        "    esac\n"
        "  done\n"
        "  case $command in\n",
        fmt::join(options.all, " | "), fmt::join(quotedPaths(program), " | "));
    for (const Command* command : withCommands(program)) {
      script += fmt::format("    '{}')\n{}      ;;\n", pathOf(*command), bashOffer(*command, "      "));
    }
    script += "  esac\n";
  }
  return script + fmt::format("}}\n\ncomplete -F {} {}\n", function, name);
}

std::string zshCompletion(const Command& program) {
  return fmt::format("#compdef {}\n\n{}{} \"$@\"\n", program.description().name, zshFunction(program),
                     functionName(program.description().name));
}

std::string fishCompletion(const Command& program) {
  const std::string& name = program.description().name;
  std::string script = fmt::format("# fish completion for {}\n\n", name);
  const bool hasCommands = !program.commands().empty();
  const std::string function = "_" + functionName(name) + "_command";
  if (hasCommands) {
    script += fmt::format(
        "# Whether that command is called before the cursor.\n"
        "function {}\n"
        "    set -l command\n"
        "    set -l isValue no\n"
        "    for word in (commandline -opc)[2..-1]\n"
        "        if test $isValue = yes\n"
        "            set isValue no\n"
        "        else if contains -- $word {}\n"
        "            set isValue yes\n"
        "        else if contains -- \"$command $word\" {}\n"
        "            set command \"$command $word\"\n"
        "        end\n"
        "    end\n"
        "    test \"$command\" = \"$argv\"\n"
        "end\n\n",
        function, fmt::join(valueOptionsOf(program).all, " "), fmt::join(quotedPaths(program), " "));
  }
  for (const Command* command : withCommands(program)) {
    const std::string start =
        fmt::format("complete -c {}", name) +
        (hasCommands ? fmt::format(" -n '{} \"{}\"'", function, pathOf(*command)) : std::string());
    if (!takesPathByPosition(*command)) {
      script += start + " -f\n";
    }
    for (const auto& inner : command->commands()) {
      script += fmt::format("{} -a {} -d '{}'\n", start, inner->description().name,
                            escaped(inner->description().purpose, "'\\"));
    }
    for (const Argument& argument : argumentsOf(*command)) {
      if (argument.positional) {
        continue;
      }
      script += start;
      for (const std::string& option : argument.names) {
        script += option.starts_with("--") ? " -l " + option.substr(2) : " -s " + option.substr(1);
      }
      script += argument.value.empty() ? "" : argument.takesPath() ? " -r -F" : " -x";
      script += fmt::format(" -d '{}'\n", escaped(argument.brief(), "'\\"));
    }
  }
  return script;
}

}  // namespace kestrel
