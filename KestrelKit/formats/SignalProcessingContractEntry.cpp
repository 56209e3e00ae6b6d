#include <KestrelKit/formats/SignalProcessingContractEntry.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields SignalProcessingContractEntry::jsonFields() {
  using R = SignalProcessingContractEntry;
  static constexpr JsonField fields[] = {
      field<&R::dataType>("dataType"),
      field<&R::displayName>("displayName"),
      field<&R::sources>("sources"),
      field<&R::valueKind>("valueKind"),
      field<&R::unit>("unit"),
      field<&R::minimum>("minimum"),
      field<&R::maximum>("maximum"),
      field<&R::integer>("integer"),
      field<&R::consentTier>("consentTier"),
      field<&R::retention>("retention"),
      field<&R::backfill>("backfill"),
      field<&R::localProcessing>("localProcessing"),
      field<&R::cloudSync>("cloudSync"),
      field<&R::serverProcessing>("serverProcessing"),
      field<&R::classifierPosture>("classifierPosture"),
      field<&R::classifierPostureBySource>("classifierPostureBySource"),
      field<&R::eraseScope>("eraseScope"),
      field<&R::unevaluatedReason>("unevaluatedReason"),
  };
  return fields;
}

}  // namespace kestrel
