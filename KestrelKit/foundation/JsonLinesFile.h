#pragma once

#include <KestrelKit/foundation/FileError.h>
#include <KestrelKit/foundation/JsonDecoder.h>
#include <KestrelKit/foundation/Record.h>

#include <expected>
#include <filesystem>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrel {

/// Hands each line of `file` that can be a JSON object, one that begins with a brace, to `take`, without the
/// line feed that ends it and perhaps without blanks at its start. Fails with the system's reason, with
/// `illegal_byte_sequence` where the file as a whole is not UTF-8, and with `not_supported` for what is neither
/// file nor folder (a pipe is not waited for); what was handed out by then counts for nothing.
///
/// Reads a portion at a time. Only a line that can still become an object is held whole, however long: one
/// that is longer than a portion (256 KiB) and whose tokens come in no order that an object has is passed over.
[[nodiscard]] std::expected<void, FileError> readObjectLines(
    const std::filesystem::path& file, const std::function<void(std::string_view line)>& take);

/// The records of a JSON Lines file, in order: one a line, as `decoder` reads it. A line that is none is
/// passed over. Fails as readObjectLines().
template <Record T>
[[nodiscard]] std::expected<std::vector<T>, FileError> readJsonLines(const std::filesystem::path& file,
                                                                     const JsonDecoder& decoder) {
  std::vector<T> records;
  const auto read = readObjectLines(file, [&](std::string_view line) {
    if (auto record = decoder.decode<T>(line)) {
      records.push_back(*std::move(record));
    }
  });
  if (!read) {
    return std::unexpected(read.error());
  }
  return records;
}

}  // namespace kestrel
