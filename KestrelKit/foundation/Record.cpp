#include <KestrelKit/foundation/ProgrammingError.h>
#include <KestrelKit/foundation/Record.h>

#include <cstddef>
#include <cstdint>
#include <utility>

namespace kestrel {
namespace {

// A set of fields, by their place in the declaration.
using Places = std::uint64_t;
constexpr std::size_t mostFields = 64;

}  // namespace

bool readFields(JsonReader& value, JsonFields fields, void* record) {
  if (fields.size() > mostFields) {
    programmingError("a record declares more than 64 fields");
  }
  Places seen = 0;
  std::size_t likely = 0;  // keys mostly come in the order of the declaration
  const bool isRight = value.forEachMember([&](std::string_view key, JsonReader& member) {
    for (std::size_t tried = 0; tried < fields.size(); ++tried) {
      const std::size_t place = std::exchange(likely, likely + 1 < fields.size() ? likely + 1 : 0);
      if (fields[place].key == key) {
        seen |= Places{1} << place;
        fields[place].read(member, record);
        return;
      }
    }
  });
  if (!isRight) {
    return false;
  }
  for (std::size_t index = 0; index < fields.size(); ++index) {
    if ((seen & Places{1} << index) == 0 && !fields[index].mayBeLeftOut) {
      value.refuseAbsent(fields[index].key);
      return false;
    }
  }
  return true;
}

void writeFields(JsonWriter& writer, JsonFields fields, const void* record) {
  writer.openObject();
  for (const JsonField& field : fields) {
    field.write(writer, field.key, record);
  }
  writer.closeObject();
}

}  // namespace kestrel
