#include <KestrelKit/formats/AggregateBatchV2.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields AggregateBatchV2::jsonFields() {
  using R = AggregateBatchV2;
  static constexpr JsonField fields[] = {
      field<&R::batchId>("batchId"),
      field<&R::sourceType>("sourceType"),
      field<&R::sourceInstanceKey>("sourceInstanceKey"),
      field<&R::platform>("platform"),
      field<&R::capturedTimezone>("capturedTimezone"),
      field<&R::records>("records"),
  };
  return fields;
}

}  // namespace kestrel
