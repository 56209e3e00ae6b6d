#pragma once

#include <KestrelKit/foundation/DateStrategy.h>
#include <KestrelKit/foundation/JsonError.h>
#include <KestrelKit/foundation/JsonForm.h>
#include <KestrelKit/foundation/JsonWriter.h>
#include <KestrelKit/foundation/Record.h>

#include <expected>
#include <span>
#include <string>

namespace kestrel {

/// Writes values as JSON text: keys in declaration order, an absent field not at all.
///
/// Immutable: one may serve any number of threads at once.
class JsonEncoder {
 public:
  constexpr JsonEncoder() noexcept = default;
  explicit constexpr JsonEncoder(DateStrategy dates) noexcept : dates_(dates) {}

  /// `value` as one document without a line feed at its end, or the first field that has no JSON form: a
  /// float or instant that is not finite, an instant outside the years 0001 to 9999 as ISO 8601, text that is
  /// not UTF-8 or is 4 GiB or longer, a JsonText that lies so deep that no decoder would take it.
  template <class T>
  [[nodiscard]] std::expected<std::string, JsonError> encode(const T& value,
                                                             JsonLayout layout = JsonLayout::compact) const {
    JsonWriter writer{dates_};
    JsonForm<T>::write(writer, value);
    return writer.finish(layout);
  }

  /// Each of `values` as a document on one line, ended by a line feed (JSON Lines), or the first field that
  /// has no JSON form.
  template <class T>
  [[nodiscard]] std::expected<std::string, JsonError> encodeLines(std::span<const T> values) const {
    JsonWriter writer{dates_};
    for (const T& value : values) {
      JsonForm<T>::write(writer, value);
      writer.endLine();
    }
    return writer.finish(JsonLayout::compact);
  }

 private:
  DateStrategy dates_ = DateStrategy::secondsSinceReferenceDate;
};

}  // namespace kestrel
