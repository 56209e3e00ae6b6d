#include <kestrel/JsonCommand.h>

namespace kestrel {
namespace {

constexpr const char* pretty = "--pretty";

}  // namespace

void addPrettyOption(Command& program) {
  program.arguments().add_flag(pretty)->description("Indent the JSON by two spaces.");
}

JsonLayout layoutOf(const Command& command) {
  return command.option(pretty)->empty() ? JsonLayout::compact : JsonLayout::indented;
}

}  // namespace kestrel
