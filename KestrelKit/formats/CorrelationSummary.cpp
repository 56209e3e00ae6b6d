#include <KestrelKit/formats/CorrelationSummary.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields CorrelationSummary::jsonFields() {
  using R = CorrelationSummary;
  static constexpr JsonField fields[] = {
      field<&R::totalOverlappingDays>("total_overlapping_days"),
      field<&R::highRiskDays>("high_risk_days"),
      field<&R::correlations>("correlations"),
  };
  return fields;
}

}  // namespace kestrel
