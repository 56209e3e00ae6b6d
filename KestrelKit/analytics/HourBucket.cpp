#include <KestrelKit/analytics/HourBucket.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields HourBucket::jsonFields() {
  using R = HourBucket;
  static constexpr JsonField fields[] = {
      field<&R::hour>("hour"),
      field<&R::posts>("posts"),
  };
  return fields;
}

}  // namespace kestrel
