#include <KestrelKit/formats/CorrelationTier.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields CorrelationTier::jsonFields() {
  using R = CorrelationTier;
  static constexpr JsonField fields[] = {
      field<&R::summary>("summary"),
  };
  return fields;
}

}  // namespace kestrel
