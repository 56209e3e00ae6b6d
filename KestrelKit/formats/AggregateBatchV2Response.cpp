#include <KestrelKit/formats/AggregateBatchV2Response.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields AggregateBatchV2Response::jsonFields() {
  using R = AggregateBatchV2Response;
  static constexpr JsonField fields[] = {
      field<&R::accepted>("accepted"),
      field<&R::batchId>("batchId"),
      field<&R::schemaVersion>("schemaVersion"),
  };
  return fields;
}

}  // namespace kestrel
