#include <KestrelKit/circadian/ActivityRhythm.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields ActivityRhythm::jsonFields() {
  using R = ActivityRhythm;
  static constexpr JsonField fields[] = {
      field<&R::m10OnsetHour>("m10OnsetHour"),
      field<&R::m10>("m10"),
      field<&R::l5>("l5"),
      field<&R::mesor>("mesor"),
      field<&R::relativeAmplitude>("relativeAmplitude"),
  };
  return fields;
}

}  // namespace kestrel
