#include <KestrelKit/formats/HealthDay.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields HealthDay::jsonFields() {
  using R = HealthDay;
  static constexpr JsonField fields[] = {
      field<&R::date>("date"),
      field<&R::steps>("steps"),
      field<&R::sleepHours>("sleep_hours"),
      field<&R::avgHrv>("avg_hrv"),
      field<&R::hrvAvg>("hrv_avg"),
      field<&R::avgHeartRate>("avg_heart_rate"),
      field<&R::heartRateAvg>("heart_rate_avg"),
      field<&R::spo2Avg>("spo2_avg"),
      field<&R::source>("source"),
  };
  return fields;
}

}  // namespace kestrel
