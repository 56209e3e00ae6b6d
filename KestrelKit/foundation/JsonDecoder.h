#pragma once

#include <KestrelKit/foundation/DateStrategy.h>
#include <KestrelKit/foundation/JsonError.h>
#include <KestrelKit/foundation/JsonForm.h>
#include <KestrelKit/foundation/JsonReader.h>
#include <KestrelKit/foundation/ProgrammingError.h>
#include <KestrelKit/foundation/Record.h>

#include <expected>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrel {

/// Reads values from JSON text: strict RFC 8259 in valid UTF-8, to the document's last byte. Refused are a
/// byte order mark, anything after the document, a lone surrogate escape and nesting beyond 512 levels of
/// objects and lists. Reading to that depth takes less than a megabyte of stack.
///
/// Immutable: one may serve any number of threads at once.
class JsonDecoder {
 public:
  constexpr JsonDecoder() noexcept = default;
  explicit constexpr JsonDecoder(DateStrategy dates) noexcept : dates_(dates) {}

  /// The value in `json`, or what is wrong with it first: its syntax, else the first field that does not fit.
  /// Elements that a lossy list drops are added to `dropped`, where one is given, each with its path and
  /// reason; a failed reading adds nothing, and what the list held stays.
  template <class T>
  [[nodiscard]] std::expected<T, JsonError> decode(std::string_view json,
                                                   std::vector<JsonError>* dropped = nullptr) const {
    std::optional<T> value;
    const auto read = readJson(json, dates_, dropped, &value, [](void* result, JsonReader& root) {
      *static_cast<std::optional<T>*>(result) = JsonForm<T>::read(root);
    });
    if (!read) {
      return std::unexpected(read.error());
    }
    if (!value) {
      programmingError("a JSON form found a value wrong and did not note why");
    }
    return *std::move(value);
  }

 private:
  DateStrategy dates_ = DateStrategy::secondsSinceReferenceDate;
};

}  // namespace kestrel
