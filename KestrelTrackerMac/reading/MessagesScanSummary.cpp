#include <KestrelKit/foundation/Record.h>
#include <KestrelTrackerMac/reading/MessagesScanSummary.h>

namespace kestrel::companion {

JsonFields MessagesScanSummary::jsonFields() {
  using R = MessagesScanSummary;
  static constexpr JsonField fields[] = {
      field<&R::requestedDays>("requestedDays"),
      field<&R::scannedAt>("scannedAt"),
      field<&R::daily>("daily"),
  };
  return fields;
}

}  // namespace kestrel::companion
