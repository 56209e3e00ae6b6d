#pragma once

#include <KestrelKit/AppGroupDefaults.h>
#include <KestrelKit/WatchStateSnapshot.h>
#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/SharedDefaults.h>
#include <KestrelKit/model/KestrelState.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace kestrel {

/// The latest mood state, as complication and widgets show it, and what the phone last sent to the watch.
///
/// No operation fails: what cannot be written is lost, which the defaults can tell their opener. Any thread;
/// what reads and then writes is not one step.
class ComplicationStore {
 public:
  /// The kind under which the platform knows the complication's widget.
  static constexpr std::string_view widgetKind = "KestrelTrackerComplication";

  explicit ComplicationStore(std::shared_ptr<SharedDefaults> defaults = appGroupDefaults());

  const std::string_view key = "complication.latestState";
  const std::string_view phoneSnapshotKey = "complication.phoneStateSnapshot.v1";
  const std::string_view phoneSnapshotReceivedAtKey = "complication.phoneStateReceivedAt.v1";
  const std::shared_ptr<SharedDefaults> defaults;

  /// The latest state; `unknown` where none is stored. Former names of states are understood.
  KestrelState latestState() const;

  /// Stores the latest state and has the widgets' timelines reloaded.
  void setLatestState(KestrelState state) const;

  /// What the phone last sent; absent where nothing is stored that decodes.
  std::optional<WatchStateSnapshot> phoneSnapshot() const;

  /// When that was received; absent where no date is stored.
  std::optional<Instant> phoneSnapshotReceivedAt() const;

  /// Whether a snapshot updates the latest state, too.
  enum class LatestState : std::uint8_t { stays, isUpdated };

  /// Stores what the phone sent, and when that was received. False, and nothing is changed, where the stored
  /// snapshot was generated later, and where this one has no JSON form. One generated at the same instant is
  /// stored: what arrived last stands.
  bool storePhoneSnapshot(const WatchStateSnapshot& snapshot, Instant receivedAt,
                          LatestState latestState) const;

 private:
  SharedDefaults::Change latestStateAs(KestrelState state) const;
};

}  // namespace kestrel
