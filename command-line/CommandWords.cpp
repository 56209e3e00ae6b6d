#include "CommandWords.h"

#include <KestrelKit/foundation/QuotedText.h>
#include <KestrelKit/foundation/RawEnumeration.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

namespace kestrel {
namespace {

bool isAmong(const std::set<CLI::Option*>& options, const CLI::Option* option) {
  return std::ranges::find(options, option) != options.end();
}

bool isFlag(const CLI::Option& option) { return option.get_items_expected_max() == 0; }

/// Whether an option of that name takes a value, in whichever command it is one.
bool takesValue(const Command& command, const std::string& name) {
  const CLI::Option* option = command.arguments().get_option_no_throw(name);
  return (option != nullptr && !isFlag(*option)) ||
         std::ranges::any_of(command.commands(), [&](const auto& inner) { return takesValue(*inner, name); });
}

/// Whether `word` is an option where none has ended the options. A number below 0 is none.
bool isOption(std::string_view word) {
  return word.size() >= 2 && word.starts_with('-') && (word[1] < '0' || word[1] > '9');
}

bool isPositional(const CLI::Option* option) { return option->get_positional(); }

}  // namespace

CommandWords::CommandWords(Command& program, std::span<const char* const> words) : command_(&program) {
  split(program, words);
  findCommand(program);
  for (const Word& word : words_) {
    word.option.empty() ? judgeOperand(word) : judgeOption(word);
  }
  judgeTogether();
}

void CommandWords::split(const Command& program, std::span<const char* const> words) {
  bool optionsEnded = false;
  for (auto next = words.begin(); next != words.end();) {
    Word word{.text = *next++, .option = {}, .value = {}};
    if (word.text == "--" && !optionsEnded) {
      optionsEnded = true;
      continue;
    }
    if (!optionsEnded && isOption(word.text)) {
      const auto equals = word.text.find('=');
      word.option = word.text.substr(0, equals);
      word.valueIsAttached = equals != std::string::npos;
      if (word.valueIsAttached) {
        word.value = word.text.substr(equals + 1);
      } else if (takesValue(program, word.option) && next != words.end()) {
        word.value = *next++;
      }
    }
    words_.push_back(std::move(word));
  }
}

/// The operands that name commands are then no longer among the words.
void CommandWords::findCommand(Command& program) {
  command_ = &program;
  for (auto word = words_.begin(); word != words_.end();) {
    if (!word->option.empty()) {
      ++word;
      continue;
    }
    Command* const inner = command_->commandNamed(word->text);
    if (inner == nullptr) {
      return;
    }
    command_ = inner;
    word = words_.erase(word);
  }
}

void CommandWords::judgeOperand(const Word& word) {
  const auto places = command_->arguments().get_options(isPositional);
  if (places_ < places.size()) {
    given_.push_back({places[places_++], &word});
  } else if (command_->action()) {
    say(kestrel::quoted(word.text) + " is not expected");
  } else {
    std::vector<std::string_view> names;
    for (const auto& inner : command_->commands()) {
      names.push_back(inner->description().name);
    }
    say(notOneOfMessage(word.text, names));
  }
}

void CommandWords::judgeOption(const Word& word) {
  const CLI::Option* option = command_->option(word.option);
  if (option == nullptr) {
    say(kestrel::quoted(word.text) + " is not expected");
    return;
  }
  if (isFlag(*option)) {
    if (word.valueIsAttached) {
      say(word.option + " takes no value");
      return;
    }
  } else if (!word.value || (word.valueIsAttached && word.value->empty())) {
    say(word.option + " needs a value");
  } else if (contain(option)) {
    say(word.option + " is given twice");
  }
  given_.push_back({option, &word});
}

bool CommandWords::contain(const CLI::Option* option) const {
  return std::ranges::find(given_, option, &Given::option) != given_.end();
}

void CommandWords::judgeTogether() {
  if (!command_->action() && !command_->commands().empty()) {
    say("COMMAND is required");
  }
  std::vector<const CLI::Option*> all;
  for (const Command* command = command_; command != nullptr; command = command->parent()) {
    std::ranges::copy(command->arguments().get_options(), std::back_inserter(all));
  }
  for (const CLI::Option* option : all) {
    if (option->get_required() && !contain(option)) {
      say(option->get_name() + " is required");
    }
  }
  for (const Given& given : given_) {
    for (const CLI::Option* other : all) {
      if (isAmong(given.option->get_excludes(), other) && contain(other)) {
        say(given.option->get_name() + " does not go with " + other->get_name());
      }
      if (isAmong(given.option->get_needs(), other) && !contain(other)) {
        say(given.option->get_name() + " needs " + other->get_name());
      }
    }
  }
}

void CommandWords::parse() const {
  for (Command* command = command_; command != nullptr; command = command->parent()) {
    std::vector<std::string> options;
    std::vector<std::string> operands;
    const auto own = command->arguments().get_options();
    for (const Given& given : given_) {
      if (std::ranges::find(own, given.option) == own.end()) {
        continue;
      }
      (given.word->option.empty() ? operands : options).push_back(given.word->text);
      if (given.word->value && !given.word->valueIsAttached) {
        options.push_back(*given.word->value);
      }
    }
    options.emplace_back("--");  // An operand is one whatever it begins with.
    options.insert(options.end(), operands.begin(), operands.end());
    std::ranges::reverse(options);  // So the parser wants them.
    command->arguments().parse(std::move(options));
  }
}

void CommandWords::say(std::string wrong) {
  if (!wrong_) {
    wrong_ = std::move(wrong);
  }
}

}  // namespace kestrel
