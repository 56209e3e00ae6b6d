#include <KestrelKit/analytics/SignalEvidenceResult.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields SignalEvidenceResult::jsonFields() {
  using R = SignalEvidenceResult;
  static constexpr JsonField fields[] = {
      field<&R::sourceID>("sourceID"),
      field<&R::status>("status"),
      field<&R::observedDays>("observedDays"),
      field<&R::overlappingDays>("overlappingDays"),
      field<&R::evaluatedSignals>("evaluatedSignals"),
      field<&R::strongestSignalID>("strongestSignalID"),
      field<&R::strongestComparison>("strongestComparison"),
      field<&R::standardizedDifference>("standardizedDifference"),
      field<&R::strongestLagDays>("strongestLagDays"),
      field<&R::associations>("associations"),
      field<&R::unevaluated>("unevaluated"),
  };
  return fields;
}

}  // namespace kestrel
