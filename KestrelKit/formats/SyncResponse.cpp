#include <KestrelKit/formats/SyncResponse.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields SyncResponse::SyncRecordError::jsonFields() {
  using R = SyncRecordError;
  static constexpr JsonField fields[] = {
      field<&R::index>("index"),
      field<&R::reason>("reason"),
  };
  return fields;
}

JsonFields SyncResponse::jsonFields() {
  using R = SyncResponse;
  static constexpr JsonField fields[] = {
      field<&R::accepted>("accepted"),
      field<&R::rejected>("rejected"),
  };
  return fields;
}

}  // namespace kestrel
