#pragma once

#include <KestrelKit/AppGroupDefaults.h>
#include <KestrelKit/formats/DashboardSnapshot.h>
#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/SharedDefaults.h>

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

namespace kestrel {

/// The dashboard's latest snapshot, which every front end draws from.
///
/// No operation fails: what cannot be written is lost, which the defaults can tell their opener. Any thread;
/// what reads and then writes is not one step.
class SnapshotStore {
 public:
  explicit SnapshotStore(std::shared_ptr<SharedDefaults> defaults = appGroupDefaults());

  const std::string_view key = "dashboard.snapshot.latest";
  const std::string_view updatedAtKey = "dashboard.snapshot.updatedAt";
  const std::shared_ptr<SharedDefaults> defaults;

  /// The latest snapshot; absent where none is stored that decodes.
  std::optional<DashboardSnapshot> latest() const;

  /// Stores `snapshot` as written `now`. An absent one clears what is stored, and so does one without a JSON
  /// form (a figure that is not finite): better none than an old one.
  void setLatest(const std::optional<DashboardSnapshot>& snapshot, Instant now = ReferenceClock::now()) const;

  /// Has `change` change the latest snapshot, and stores what comes of it as setLatest() does.
  void modifyLatest(const std::function<void(std::optional<DashboardSnapshot>& snapshot)>& change,
                    Instant now = ReferenceClock::now()) const;

  /// When the latest snapshot was stored; absent where no date is stored.
  std::optional<Instant> updatedAt() const;
};

}  // namespace kestrel
