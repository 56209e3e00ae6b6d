#include <KestrelKit/formats/SyncRecord.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields SyncRecord::jsonFields() {
  using R = SyncRecord;
  static constexpr JsonField fields[] = {
      field<&R::dataType>("dataType"),
      field<&R::value>("value"),
      field<&R::stringValue>("stringValue"),
      field<&R::unit>("unit"),
      field<&R::source>("source"),
      field<&R::deviceId>("deviceId"),
      field<&R::sampleUuid>("sampleUuid"),
      field<&R::capturedAt>("capturedAt"),
      field<&R::tzIdentifier>("tzIdentifier"),
      field<&R::metadata>("metadata"),
  };
  return fields;
}

}  // namespace kestrel
