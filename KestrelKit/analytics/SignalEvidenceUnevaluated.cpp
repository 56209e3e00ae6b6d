#include <KestrelKit/analytics/SignalEvidenceUnevaluated.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields SignalEvidenceUnevaluated::jsonFields() {
  using R = SignalEvidenceUnevaluated;
  static constexpr JsonField fields[] = {
      field<&R::signalID>("signalID"),
      field<&R::comparison>("comparison"),
      field<&R::lagDays>("lagDays"),
      field<&R::reason>("reason"),
  };
  return fields;
}

}  // namespace kestrel
