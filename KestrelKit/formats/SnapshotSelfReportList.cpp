#include <KestrelKit/formats/LossyArray.h>
#include <KestrelKit/formats/SnapshotSelfReportList.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields SnapshotSelfReportList::jsonFields() {
  using R = SnapshotSelfReportList;
  static constexpr JsonField fields[] = {
      field<&R::reports, LossyForm<SnapshotSelfReport>>("reports"),
  };
  return fields;
}

}  // namespace kestrel
