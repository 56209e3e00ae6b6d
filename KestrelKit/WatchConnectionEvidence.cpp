#include <KestrelKit/WatchConnectionEvidence.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields WatchConnectionEvidence::jsonFields() {
  using R = WatchConnectionEvidence;
  static constexpr JsonField fields[] = {
      field<&R::isPaired>("isPaired"),
      field<&R::isWatchAppInstalled>("isWatchAppInstalled"),
      field<&R::isReachable>("isReachable"),
      field<&R::lastSentAt>("lastSentAt"),
      field<&R::lastSentDeliveryID>("lastSentDeliveryID"),
      field<&R::lastAcknowledgedAt>("lastAcknowledgedAt"),
      field<&R::lastAcknowledgedDeliveryID>("lastAcknowledgedDeliveryID"),
      field<&R::lastReceivedStateAt>("lastReceivedStateAt"),
      field<&R::lastReceivedState>("lastReceivedState"),
      field<&R::lastReceivedConfidence>("lastReceivedConfidence"),
      field<&R::lastError>("lastError"),
  };
  return fields;
}

}  // namespace kestrel
