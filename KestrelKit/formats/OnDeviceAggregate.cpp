#include <KestrelKit/formats/OnDeviceAggregate.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields OnDeviceAggregate::jsonFields() {
  using R = OnDeviceAggregate;
  static constexpr JsonField fields[] = {
      field<&R::date>("date"),
      field<&R::dataType>("dataType"),
      field<&R::value>("value"),
      field<&R::unit>("unit"),
      field<&R::sourceType>("sourceType"),
      field<&R::sourceInstanceKey>("sourceInstanceKey"),
      field<&R::capturedAt>("capturedAt"),
      field<&R::displayName>("displayName"),
      field<&R::lastSuccessfulAt>("lastSuccessfulAt"),
      field<&R::freshnessDeadline>("freshnessDeadline"),
      field<&R::stale>("stale"),
      field<&R::classifierStatus>("classifierStatus"),
  };
  return fields;
}

std::string OnDeviceAggregate::id() const { return sourceInstanceKey + '|' + date + '|' + dataType; }

}  // namespace kestrel
