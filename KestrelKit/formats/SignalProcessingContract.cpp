#include <KestrelKit/formats/SignalProcessingContract.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields SignalProcessingContract::jsonFields() {
  using R = SignalProcessingContract;
  static constexpr JsonField fields[] = {
      field<&R::schemaVersion>("schemaVersion"),
      field<&R::signals>("signals"),
      field<&R::collectorEmissionSets>("collectorEmissionSets"),
  };
  return fields;
}

}  // namespace kestrel
