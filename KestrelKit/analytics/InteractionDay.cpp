#include <KestrelKit/analytics/InteractionDay.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields InteractionDay::jsonFields() {
  using R = InteractionDay;
  static constexpr JsonField fields[] = {
      field<&R::date>("date"),
      field<&R::replies>("replies"),
      field<&R::quotes>("quotes"),
      field<&R::reposts>("reposts"),
  };
  return fields;
}

}  // namespace kestrel
