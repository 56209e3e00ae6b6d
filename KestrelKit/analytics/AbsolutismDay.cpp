#include <KestrelKit/analytics/AbsolutismDay.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields AbsolutismDay::jsonFields() {
  using R = AbsolutismDay;
  static constexpr JsonField fields[] = {
      field<&R::date>("date"),
      field<&R::absolutismPct>("absolutismPct"),
  };
  return fields;
}

}  // namespace kestrel
