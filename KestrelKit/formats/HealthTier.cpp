#include <KestrelKit/formats/HealthTier.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields HealthTier::jsonFields() {
  using R = HealthTier;
  static constexpr JsonField fields[] = {
      field<&R::healthRaw>("health"),
      field<&R::onDeviceAggregatesRaw>("onDeviceAggregates"),
  };
  return fields;
}

}  // namespace kestrel
