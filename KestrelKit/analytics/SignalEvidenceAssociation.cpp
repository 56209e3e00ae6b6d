#include <KestrelKit/analytics/SignalEvidenceAssociation.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields SignalEvidenceAssociation::jsonFields() {
  using R = SignalEvidenceAssociation;
  static constexpr JsonField fields[] = {
      field<&R::signalID>("signalID"),
      field<&R::comparison>("comparison"),
      field<&R::lagDays>("lagDays"),
      field<&R::pairedDays>("pairedDays"),
      field<&R::coverage>("coverage"),
      field<&R::referenceDays>("referenceDays"),
      field<&R::comparisonDays>("comparisonDays"),
      field<&R::standardizedDifference>("standardizedDifference"),
      field<&R::confidenceInterval>("confidenceInterval"),
      field<&R::pValue>("pValue"),
      field<&R::adjustedPValue>("adjustedPValue"),
  };
  return fields;
}

}  // namespace kestrel
