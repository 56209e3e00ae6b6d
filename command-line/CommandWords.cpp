#include "CommandWords.h"

#include <KestrelKit/foundation/QuotedText.h>

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

namespace kestrel {
namespace {

bool isAmong(const std::set<CLI::Option*>& options, const CLI::Option* option) {
  return std::ranges::find(options, option) != options.end();
}

}  // namespace

CommandWords::CommandWords(const CLI::App& app, std::span<const char* const> words) {
  const auto places = app.get_options([](const CLI::Option* option) { return option->get_positional(); });
  auto place = places.begin();
  bool optionsEnded = false;
  for (auto next = words.begin(); next != words.end();) {
    const std::string_view word = *next++;
    if (word == "--" && !optionsEnded) {
      optionsEnded = true;
      continue;
    }
    if (optionsEnded || word.size() < 2 || !word.starts_with('-')) {
      if (place == places.end()) {
        say(quoted(word) + " is not expected");
      } else {
        given_.push_back(*place++);
      }
      continue;
    }
    const auto equals = word.find('=');
    const std::string name(word.substr(0, equals));
    const CLI::Option* option = app.get_option_no_throw(name);
    if (option == nullptr) {
      say(quoted(word) + " is not expected");
      continue;
    }
    const bool valueIsAttached = equals != std::string_view::npos;
    if (option->get_items_expected_max() == 0) {
      if (valueIsAttached) {
        say(name + " takes no value");
        continue;
      }
    } else if (valueIsAttached ? equals + 1 == word.size() : next == words.end()) {
      say(name + " needs a value");
    } else {
      if (contain(option)) {
        say(name + " is given twice");
      }
      if (!valueIsAttached) {
        ++next;
      }
    }
    given_.push_back(option);
  }
  judgeTogether(app);
}

bool CommandWords::contain(const CLI::Option* option) const {
  return std::ranges::find(given_, option) != given_.end();
}

void CommandWords::judgeTogether(const CLI::App& app) {
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_required() && !contain(option)) {
      say(option->get_name() + " is required");
    }
  }
  for (const CLI::Option* option : given_) {
    for (const CLI::Option* other : app.get_options()) {
      if (isAmong(option->get_excludes(), other) && contain(other)) {
        say(option->get_name() + " does not go with " + other->get_name());
      }
      if (isAmong(option->get_needs(), other) && !contain(other)) {
        say(option->get_name() + " needs " + other->get_name());
      }
    }
  }
}

void CommandWords::say(std::string wrong) {
  if (!wrong_) {
    wrong_ = std::move(wrong);
  }
}

}  // namespace kestrel
