#include <KestrelKit/formats/AggregateSourceDeleteResponse.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields AggregateSourceDeleteResponse::jsonFields() {
  using R = AggregateSourceDeleteResponse;
  static constexpr JsonField fields[] = {
      field<&R::deleted>("deleted"),
      field<&R::sourceInstanceKey>("sourceInstanceKey"),
  };
  return fields;
}

}  // namespace kestrel
