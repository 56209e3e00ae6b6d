#include <KestrelKit/analytics/TrendResult.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields TrendResult::jsonFields() {
  using R = TrendResult;
  static constexpr JsonField fields[] = {
      field<&R::value>("value"),
      field<&R::label>("label"),
      field<&R::currentValue>("currentValue"),
      field<&R::previousValue>("previousValue"),
  };
  return fields;
}

}  // namespace kestrel
