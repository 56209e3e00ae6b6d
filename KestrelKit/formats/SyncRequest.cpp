#include <KestrelKit/formats/SyncRequest.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields SyncRequest::jsonFields() {
  using R = SyncRequest;
  static constexpr JsonField fields[] = {
      field<&R::records>("records"),
  };
  return fields;
}

}  // namespace kestrel
