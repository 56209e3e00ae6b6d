#pragma once

#include <KestrelKit/foundation/JsonFields.h>
#include <KestrelKit/foundation/JsonForm.h>
#include <KestrelKit/foundation/JsonReader.h>
#include <KestrelKit/foundation/JsonWriter.h>

#include <concepts>
#include <optional>
#include <string_view>

namespace kestrel {

/// One field of a record: its JSON key and the two ways between JSON and the member.
struct JsonField {
  std::string_view key;
  bool (*read)(JsonReader& value, void* record);  ///< False: noted in the reader.
  void (*write)(JsonWriter& writer, std::string_view key, const void* record);
  bool mayBeLeftOut;
};

/// A plain struct that declares its fields. The header declares the struct and
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
/// Encoding, decoding, the order of keys and the paths of errors come from that list. Whether a field is required is
/// the type's affair: a `std::optional` may be left out. Unknown keys are ignored; of a repeated key the last stands.
template <class T>
concept Record = std::default_initializable<T> && requires {
  { T::jsonFields() } -> std::same_as<JsonFields>;
};

namespace detail {

template <class Owner, class Type>
Owner ownerOf(Type Owner::*);
template <class Owner, class Type>
Type typeOf(Type Owner::*);

/// Reads the object at `value` into `record`, a fresh one; false when something was wrong.
bool readFields(JsonReader& value, JsonFields fields, void* record);
void writeFields(JsonWriter& writer, JsonFields fields, const void* record);

}  // namespace detail

/// The field of `key` that `member` holds; in the form of the member's type, unless it names another.
template <auto member, class Form = JsonForm<decltype(detail::typeOf(member))>>
consteval JsonField field(std::string_view key) {
  using Owner = decltype(detail::ownerOf(member));
  using Type = decltype(detail::typeOf(member));
  constexpr bool mayBeLeftOut = requires(const Type& value) { Form::isLeftOut(value); };
  return {
      .key = key,
      .read =
          [](JsonReader& value, void* record) {
            auto read = Form::read(value);
            if (!read) {
              return false;
            }
            static_cast<Owner*>(record)->*member = *std::move(read);
            return true;
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

template <Record T>
struct JsonForm<T> {
  static std::optional<T> read(JsonReader& value) {
    std::optional<T> record{std::in_place};
    if (!detail::readFields(value, T::jsonFields(), &*record)) {
      record.reset();
    }
    return record;
  }

  static void write(JsonWriter& writer, const T& record) { detail::writeFields(writer, T::jsonFields(), &record); }
};

}  // namespace kestrel
