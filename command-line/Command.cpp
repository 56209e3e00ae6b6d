#include <command-line/Command.h>

#include <algorithm>
#include <utility>

namespace kestrel {

Command::Command(CommandDescription description)
    : description_(std::move(description)), app_("", description_.name) {
  app_.set_help_flag();  // Program adds its own.
}

Command& Command::addCommand(CommandDescription description) {
  auto& command = *commands_.emplace_back(std::make_unique<Command>(std::move(description)));
  command.parent_ = this;
  return command;
}

Command* Command::commandNamed(std::string_view name) const {
  const auto found = std::ranges::find(
      commands_, name, [](const auto& command) -> std::string_view { return command->description().name; });
  return found == commands_.end() ? nullptr : found->get();
}

std::string Command::call() const {
  return parent_ == nullptr ? description_.name : parent_->call() + ' ' + description_.name;
}

const CLI::Option* Command::option(const std::string& name) const {
  const CLI::Option* own = app_.get_option_no_throw(name);
  return own != nullptr || parent_ == nullptr ? own : parent_->option(name);
}

}  // namespace kestrel
