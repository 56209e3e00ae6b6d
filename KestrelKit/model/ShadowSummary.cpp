#include <KestrelKit/foundation/Record.h>
#include <KestrelKit/model/ShadowSummary.h>

namespace kestrel {

JsonFields ShadowSummary::jsonFields() {
  using R = ShadowSummary;
  static constexpr JsonField fields[] = {
      field<&R::scoredDays>("scoredDays"),
      field<&R::circadianAccuracy>("circadianAccuracy"),
      field<&R::baselineAccuracy>("baselineAccuracy"),
  };
  return fields;
}

}  // namespace kestrel
