#include <KestrelKit/formats/VizTier.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields VizTier::jsonFields() {
  using R = VizTier;
  static constexpr JsonField fields[] = {
      field<&R::summary>("summary"),
      field<&R::dailyRaw>("daily"),
  };
  return fields;
}

}  // namespace kestrel
