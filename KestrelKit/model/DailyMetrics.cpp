#include <KestrelKit/foundation/Record.h>
#include <KestrelKit/model/DailyMetrics.h>

namespace kestrel {

JsonFields DailyMetrics::jsonFields() {
  using R = DailyMetrics;
  static constexpr JsonField fields[] = {
      field<&R::date>("date"),       field<&R::sleep_hours>("sleep_hours"),
      field<&R::posts>("posts"),     field<&R::sentiment>("sentiment"),
      field<&R::steps>("steps"),     field<&R::sentiment_stdev>("sentiment_stdev"),
      field<&R::avg_hrv>("avg_hrv"),
  };
  return fields;
}

}  // namespace kestrel
