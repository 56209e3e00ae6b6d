#pragma once

#include <KestrelKit/foundation/JsonWriter.h>
#include <KestrelKit/model/JSONCoders.h>
#include <command-line/Command.h>
#include <command-line/Failure.h>
#include <command-line/InputFile.h>
#include <command-line/Progress.h>

#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

// What the commands are made of that read one JSON document, or none, and print one.

namespace kestrel {

/// Adds `--pretty` for all commands of `program`.
void addPrettyOption(Command& program);

/// How `--pretty` has the output of `command`.
JsonLayout layoutOf(const Command& command);

/// What `command` prints of `value`: its JSON and a line feed. Refused when it has no JSON form.
template <class T>
std::expected<std::string, Failure> printed(const Command& command, const T& value) {
  auto text = JSONCoders::encoder.encode(value, layoutOf(command));
  if (!text) {
    return std::unexpected(Failure{ExitStatus::refused, text.error().text()});
  }
  return *std::move(text) + '\n';
}

/// What `print` makes of the document in `file`, which `decode` reads from its text. A document that is none
/// is refused with the place where.
template <class Decode, class Print>
std::expected<std::string, Failure> printedFrom(const InputFile& file, const Decode& decode,
                                                const Print& print) {
  std::optional<Progress> progress;
  if (!file.isTyped()) {  // What a person types must not be written over.
    progress.emplace();
  }
  auto text = file.read();
  if (!text) {
    return std::unexpected(text.error());
  }
  if (!progress) {
    progress.emplace();
  }
  const auto input = decode(std::string_view(*text));
  if (!input) {
    return std::unexpected(Failure{ExitStatus::refused, input.error().text()});
  }
  std::string().swap(*text);  // A large one takes as much memory as what was read from it.
  return print(*input);
}

/// What `command` prints of the result that `operation` has for the `Input` in `file`.
template <class Input, class Operation>
std::expected<std::string, Failure> converted(const Command& command, const InputFile& file,
                                              const Operation& operation) {
  return printedFrom(
      file, [](std::string_view text) { return JSONCoders::decoder.decode<Input>(text); },
      [&](const Input& input) { return printed(command, operation(input)); });
}

/// Lets `command` read one JSON document, an `Input`, and print the result that `operation` has for it.
/// `what` says in a sentence what the document is.
template <class Input, class Operation>
void convertJson(Command& command, const std::string& what, Operation operation) {
  const auto file = std::make_shared<InputFile>(command.arguments(), what);
  command.setAction([&command, file, operation = std::move(operation)] {
    return converted<Input>(command, *file, operation);
  });
}

}  // namespace kestrel
