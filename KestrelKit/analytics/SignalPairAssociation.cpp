#include <KestrelKit/analytics/SignalPairAssociation.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields SignalPairAssociation::jsonFields() {
  using R = SignalPairAssociation;
  static constexpr JsonField fields[] = {
      field<&R::firstSourceID>("firstSourceID"),   field<&R::firstSignalID>("firstSignalID"),
      field<&R::secondSourceID>("secondSourceID"), field<&R::secondSignalID>("secondSignalID"),
      field<&R::pairedDays>("pairedDays"),         field<&R::spearmanRho>("spearmanRho"),
  };
  return fields;
}

}  // namespace kestrel
