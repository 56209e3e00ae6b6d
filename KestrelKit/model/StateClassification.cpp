#include <KestrelKit/foundation/Record.h>
#include <KestrelKit/model/StateClassification.h>

namespace kestrel {

JsonFields StateClassification::jsonFields() {
  using R = StateClassification;
  static constexpr JsonField fields[] = {
      field<&R::date>("date"),
      field<&R::predictedState>("predictedState"),
      field<&R::confidence>("confidence"),
      field<&R::reasons>("reasons"),
      field<&R::source>("source"),
      field<&R::isConfirmed>("isConfirmed"),
      field<&R::selfReportConfidence>("selfReportConfidence"),
      field<&R::selfReportNotes>("selfReportNotes"),
      field<&R::isValidated>("isValidated"),
  };
  return fields;
}

}  // namespace kestrel
