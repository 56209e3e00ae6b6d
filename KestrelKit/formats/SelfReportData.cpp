#include <KestrelKit/formats/SelfReportData.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields SelfReportData::jsonFields() {
  using R = SelfReportData;
  static constexpr JsonField fields[] = {
      field<&R::state>("state"),   field<&R::confidence>("confidence"), field<&R::notes>("notes"),
      field<&R::source>("source"), field<&R::keyword>("keyword"),
  };
  return fields;
}

UserReport SelfReportData::userReport() const {
  return {.state = state, .percentage = confidence, .notes = notes, .origin = source, .keyword = keyword};
}

}  // namespace kestrel
