#include <KestrelKit/formats/EssentialTier.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields EssentialTier::jsonFields() {
  using R = EssentialTier;
  static constexpr JsonField fields[] = {
      field<&R::viz>("viz"),
      field<&R::communication>("communication"),
  };
  return fields;
}

}  // namespace kestrel
