#pragma once

#include <KestrelKit/formats/SnapshotSelfReport.h>
#include <KestrelKit/foundation/JsonField.h>

#include <vector>

namespace kestrel {

/// The self-reports that a snapshot document carries, read as a lossy list: a report that does not fit costs
/// itself alone.
struct SnapshotSelfReportList {
  std::vector<SnapshotSelfReport> reports{};  ///< In the order of the document.

  bool operator==(const SnapshotSelfReportList&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
