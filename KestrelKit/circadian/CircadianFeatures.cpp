#include <KestrelKit/circadian/CircadianFeatures.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields CircadianFeatures::jsonFields() {
  using R = CircadianFeatures;
  static constexpr JsonField fields[] = {
      field<&R::date>("date"),
      field<&R::phaseDeviationHours>("phaseDeviationHours"),
      field<&R::sleepRegularitySDMinutes>("sleepRegularitySDMinutes"),
      field<&R::durationSDMinutes>("durationSDMinutes"),
      field<&R::activity>("activity"),
      field<&R::stepVariabilityCV>("stepVariabilityCV"),
      field<&R::restingHRDeviationBpm>("restingHRDeviationBpm"),
      field<&R::coverageNights>("coverageNights"),
      field<&R::daysObserved>("daysObserved"),
  };
  return fields;
}

}  // namespace kestrel
