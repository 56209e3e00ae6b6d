#include <KestrelKit/foundation/JsonForm.h>
#include <KestrelKit/foundation/ProgrammingError.h>

#include <cstddef>
#include <cstdint>

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
  Places wrong = 0;
  std::size_t likely = 0;  // keys mostly come in the order of the declaration
  const bool isObject = value.forEachMember([&](std::string_view key, JsonReader& member) {
    for (std::size_t tried = 0; tried < fields.size(); ++tried, likely = (likely + 1) % fields.size()) {
      if (fields[likely].key != key) {
        continue;
      }
      const Places place = Places{1} << likely;
      if ((seen & place) != 0) {
        value.forget(key);
      }
      seen |= place;
      wrong = fields[likely].read(member, record) ? wrong & ~place : wrong | place;
      likely = (likely + 1) % fields.size();
      return;
    }
  });
  if (!isObject) {
    return false;
  }
  for (std::size_t index = 0; index < fields.size(); ++index) {
    const Places place = Places{1} << index;
    if ((seen & place) == 0 && !fields[index].mayBeLeftOut) {
      value.refuseAbsent(fields[index].key);
      wrong |= place;
    }
  }
  return wrong == 0;
}

void writeFields(JsonWriter& writer, JsonFields fields, const void* record) {
  writer.openObject();
  for (const JsonField& field : fields) {
    field.write(writer, field.key, record);
  }
  writer.closeObject();
}

}  // namespace kestrel
