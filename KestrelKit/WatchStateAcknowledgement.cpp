#include <KestrelKit/WatchStateAcknowledgement.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields WatchStateAcknowledgement::jsonFields() {
  using R = WatchStateAcknowledgement;
  static constexpr JsonField fields[] = {
      field<&R::deliveryID>("deliveryID"),
      field<&R::receivedAt>("receivedAt"),
  };
  return fields;
}

}  // namespace kestrel
