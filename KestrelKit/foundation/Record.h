#pragma once

#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/JsonForm.h>
#include <KestrelKit/foundation/JsonReader.h>
#include <KestrelKit/foundation/JsonWriter.h>

#include <concepts>
#include <optional>
#include <string_view>
#include <utility>

namespace kestrel {

/// A plain struct that declares its fields. Its header has the struct with
///
///     static JsonFields jsonFields();
///
/// and the source file beside it lists the fields, once, in the order in which they are written:
///
///     JsonFields VizSummary::jsonFields() {
///       using R = VizSummary;
///       static constexpr JsonField fields[] = {
///           field<&R::totalPosts>("total_posts"),
///           field<&R::avgSentiment>("avg_sentiment"),
///       };
///       return fields;
///     }
///
/// Encoding, decoding, the order of keys and the paths of errors come from that list. Whether a field is
/// required is its type's affair: a `std::optional` may be left out. Unknown keys are ignored; of a repeated
/// key the last stands. At most 64 fields.
template <class T>
concept Record = std::default_initializable<T> && requires {
  { T::jsonFields() } -> std::same_as<JsonFields>;
};

namespace record_detail {

template <class Owner, class Type>
Owner ownerOf(Type Owner::*);
template <class Owner, class Type>
Type typeOf(Type Owner::*);

}  // namespace record_detail

/// The field of `key` that `member` holds, in the form of the member's type unless it names another.
template <auto member, class Form = JsonForm<decltype(record_detail::typeOf(member))>>
consteval JsonField field(std::string_view key) {
  using Owner = decltype(record_detail::ownerOf(member));
  using Type = decltype(record_detail::typeOf(member));
  constexpr bool mayBeLeftOut = requires(const Type& value) { Form::isLeftOut(value); };
  return {
      .key = key,
      .read =
          [](JsonReader& value, void* record) {
            if (auto read = Form::read(value)) {
              static_cast<Owner*>(record)->*member = *std::move(read);
            }
          },
      .write =
          [](JsonWriter& writer, std::string_view name, const void* record) {
            const Type& value = static_cast<const Owner*>(record)->*member;
            if constexpr (mayBeLeftOut) {
              if (Form::isLeftOut(value)) {
                return;
              }
            }
            writer.key(name);
            Form::write(writer, value);
          },
      .mayBeLeftOut = mayBeLeftOut,
  };
}

/// Reads the object at `value` into `record`, a fresh one of the type that declares `fields`; false when
/// something was wrong, and noted.
bool readFields(JsonReader& value, JsonFields fields, void* record);

/// Writes `record`, of the type that declares `fields`, as an object.
void writeFields(JsonWriter& writer, JsonFields fields, const void* record);

template <Record T>
struct JsonForm<T> {
  static std::optional<T> read(JsonReader& value) {
    std::optional<T> record{std::in_place};
    if (!readInto(value, *record)) {
      record.reset();
    }
    return record;
  }

  static bool readInto(JsonReader& value, T& record) { return readFields(value, T::jsonFields(), &record); }

  static void write(JsonWriter& writer, const T& record) { writeFields(writer, T::jsonFields(), &record); }
};

}  // namespace kestrel
