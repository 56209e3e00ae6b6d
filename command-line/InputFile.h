#pragma once

#include <command-line/Failure.h>
#include <CLI/CLI.hpp>

#include <expected>
#include <string>

namespace kestrel {

/// The one document that a command reads: the file that its last argument names, or standard input where it
/// names none or `-`.
class InputFile {
 public:
  /// Adds the argument to `app`. `what` says what the document is, in a sentence. To be kept as long as
  /// `app` parses.
  InputFile(CLI::App& app, const std::string& what);
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  /// Whether a person is about to type the document.
  bool isTyped() const;

  /// All of it, or a failure that names it and the system's reason. More than 4 GiB is refused.
  [[nodiscard]] std::expected<std::string, Failure> read() const;

 private:
  bool isStandardInput() const { return path_ == "-"; }

  std::string path_ = "-";
};

}  // namespace kestrel
