#include <KestrelKit/formats/DashboardSnapshot.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields DashboardSnapshot::jsonFields() {
  using R = DashboardSnapshot;
  static constexpr JsonField fields[] = {
      field<&R::essential>("essential"),
      field<&R::health>("health"),
      field<&R::optional>("optional"),
  };
  return fields;
}

}  // namespace kestrel
