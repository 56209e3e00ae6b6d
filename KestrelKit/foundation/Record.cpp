#include <KestrelKit/foundation/ProgrammingError.h>
#include <KestrelKit/foundation/Record.h>

#include <cstddef>
#include <limits>

namespace kestrel {

bool readFields(JsonReader& value, JsonFields fields, void* record) {
  constexpr std::size_t mostFields = std::numeric_limits<JsonReader::FieldSet>::digits;
  if (fields.size() > mostFields) {
    programmingError("a record declares more than 64 fields");
  }
  const auto seen = value.members(fields, record);
  if (!seen) {
    return false;
  }
  for (std::size_t index = 0; index < fields.size(); ++index) {
    if ((*seen & JsonReader::FieldSet{1} << index) == 0 && !fields[index].mayBeLeftOut) {
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
