#pragma once

#include <command-line/Failure.h>
#include <CLI/CLI.hpp>

#include <cstddef>
#include <expected>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kestrel {

/// The one document, or text, that a command reads: the file that its last argument names, or standard input
/// where it names none or `-`. Where a command has a document of its own it asks whether one is named.
class InputFile {
 public:
  /// Adds the argument to `app`. `what` says what the document is, in a sentence, and `otherwise` what is
  /// taken where none is named. To be kept as long as `app` parses.
  InputFile(CLI::App& app, const std::string& what, const std::string& otherwise = "-, standard input");
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  bool isNamed() const noexcept { return path_.has_value(); }

  /// Whether a person is about to type the document.
  bool isTyped() const;

  /// All of it, or a failure that names it and the system's reason. More than 4 GiB is refused.
  [[nodiscard]] std::expected<std::string, Failure> read() const;

  /// Takes whole lines of the input, each with the line feed that ends it, which the last one may lack.
  using LinesTaker = std::function<std::expected<void, Failure>(std::string_view lines)>;

  /// Hands all of it to `take`, some lines at a time, in order. Ends with the first failure: its own, which
  /// names the input and the system's reason, or one of `take`. Holds no more than a portion of the input, or
  /// its longest line.
  [[nodiscard]] std::expected<void, Failure> readLines(const LinesTaker& take) const;

 private:
  bool isStandardInput() const { return !path_ || path_ == "-"; }

  std::unexpected<Failure> failure(std::string_view reason, ExitStatus status) const;
  std::unexpected<Failure> systemFailure() const;

  /// Fills some of `room`, and says how much; 0 is the end.
  std::expected<std::size_t, Failure> readSome(int descriptor, std::span<char> room) const;

  std::optional<std::string> path_;
};

}  // namespace kestrel
