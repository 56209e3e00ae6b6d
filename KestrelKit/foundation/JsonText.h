#pragma once

#include <KestrelKit/foundation/JsonForm.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kestrel {

/// A JSON value of whatever form, kept as the text that it came as, without the blanks between its tokens:
/// its numbers with all their digits, its keys in their order, repeated ones included. Well-formed; a decoder
/// makes one. Two are equal when their texts are.
class JsonText {
 public:
  std::string_view text() const noexcept { return text_; }

  bool operator==(const JsonText&) const = default;

 private:
  friend JsonForm<JsonText>;

  explicit JsonText(std::string text) noexcept : text_(std::move(text)) {}

  std::string text_;
};

/// Any value; in an optional member `null` is absent.
template <>
struct JsonForm<JsonText> {
  static std::optional<JsonText> read(JsonReader& value) {
    auto text = value.json();
    if (!text) {
      return std::nullopt;
    }
    return JsonText{*std::move(text)};
  }

  static void write(JsonWriter& writer, const JsonText& value) { writer.json(value.text()); }
};

}  // namespace kestrel
