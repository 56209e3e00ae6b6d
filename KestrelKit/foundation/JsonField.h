#pragma once

#include <span>
#include <string_view>

namespace kestrel {

class JsonReader;
class JsonWriter;

/// One field of a record: its JSON key and the two ways between JSON and the member. Made by field() in
/// Record.h.
struct JsonField {
  std::string_view key;  ///< Plain: what JSON would have to escape is not in it.
  void (*read)(JsonReader& value,
               void* record);  ///< Leaves the member alone when the value is wrong, and noted.
  void (*write)(JsonWriter& writer, std::string_view key, const void* record);
  bool mayBeLeftOut;
};

/// The fields of a record in the order in which they are written. All that the header of a record needs to
/// know of JSON; its source file lists them with Record.h.
using JsonFields = std::span<const JsonField>;

}  // namespace kestrel
