#include <KestrelKit/circadian/CircadianObservations.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields CircadianObservations::jsonFields() {
  using R = CircadianObservations;
  static constexpr JsonField fields[] = {
      field<&R::date>("date"),
      field<&R::nights>("nights"),
      field<&R::judgedMidSleepMinutes>("judgedMidSleepMinutes"),
      field<&R::hourlyActivity>("hourlyActivity"),
      field<&R::stepCounts>("stepCounts"),
      field<&R::restingHeartRate>("restingHeartRate"),
      field<&R::baselineRestingHeartRates>("baselineRestingHeartRates"),
      field<&R::expectedNights>("expectedNights"),
  };
  return fields;
}

}  // namespace kestrel
