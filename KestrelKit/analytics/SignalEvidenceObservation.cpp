#include <KestrelKit/analytics/SignalEvidenceObservation.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields SignalEvidenceObservation::jsonFields() {
  using R = SignalEvidenceObservation;
  static constexpr JsonField fields[] = {
      field<&R::date>("date"),
      field<&R::sourceID>("sourceID"),
      field<&R::signalID>("signalID"),
      field<&R::value>("value"),
  };
  return fields;
}

}  // namespace kestrel
