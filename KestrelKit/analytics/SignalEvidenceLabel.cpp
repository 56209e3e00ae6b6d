#include <KestrelKit/analytics/SignalEvidenceLabel.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields SignalEvidenceLabel::jsonFields() {
  using R = SignalEvidenceLabel;
  static constexpr JsonField fields[] = {
      field<&R::date>("date"),
      field<&R::state>("state"),
  };
  return fields;
}

}  // namespace kestrel
