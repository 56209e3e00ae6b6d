#include <KestrelKit/foundation/Record.h>
#include <KestrelKit/model/ShadowDay.h>

namespace kestrel {

JsonFields ShadowDay::jsonFields() {
  using R = ShadowDay;
  static constexpr JsonField fields[] = {
      field<&R::date>("date"),
      field<&R::circadianState>("circadianState"),
      field<&R::label>("label"),
  };
  return fields;
}

}  // namespace kestrel
