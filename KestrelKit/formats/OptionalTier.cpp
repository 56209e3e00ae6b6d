#include <KestrelKit/formats/OptionalTier.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields OptionalTier::jsonFields() {
  using R = OptionalTier;
  static constexpr JsonField fields[] = {
      field<&R::correlation>("correlation"),
  };
  return fields;
}

}  // namespace kestrel
