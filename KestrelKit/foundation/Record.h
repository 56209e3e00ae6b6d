#pragma once

#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/JsonForm.h>
#include <KestrelKit/foundation/JsonReader.h>
#include <KestrelKit/foundation/JsonWriter.h>

#include <string_view>
#include <utility>

namespace kestrel {

/// How a record declares its fields. Its header has the struct with
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

}  // namespace kestrel
