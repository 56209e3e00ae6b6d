#include <KestrelKit/ComplicationStore.h>
#include <KestrelKit/WidgetTimelines.h>
#include <KestrelKit/foundation/JsonDecoder.h>
#include <KestrelKit/foundation/JsonEncoder.h>

#include <string>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

/// This snapshot stays on the device, and keeps fractions of seconds: its dates are numbers.
constexpr JsonEncoder encoder;
constexpr JsonDecoder decoder;

}  // namespace

ComplicationStore::ComplicationStore(std::shared_ptr<SharedDefaults> sharedDefaults)
    : defaults(std::move(sharedDefaults)) {}

KestrelState ComplicationStore::latestState() const {
  const auto stored = defaults->get<std::string>(key);
  return stored ? KestrelState::fromStoredValue(*stored) : KestrelState(KestrelState::unknown);
}

void ComplicationStore::setLatestState(KestrelState state) const {
  const SharedDefaults::Change changes[] = {latestStateAs(state)};
  defaults->write(changes);
  WidgetTimelines::reloadAll();
}

SharedDefaults::Change ComplicationStore::latestStateAs(KestrelState state) const {
  return {key, std::string(state.rawValue())};
}

std::optional<WatchStateSnapshot> ComplicationStore::phoneSnapshot() const {
  const auto json = defaults->get<Data>(phoneSnapshotKey);
  if (!json) {
    return std::nullopt;
  }
  auto snapshot = decoder.decode<WatchStateSnapshot>(json->bytes);
  return snapshot ? std::optional(*std::move(snapshot)) : std::nullopt;
}

std::optional<Instant> ComplicationStore::phoneSnapshotReceivedAt() const {
  return defaults->get<Instant>(phoneSnapshotReceivedAtKey);
}

bool ComplicationStore::storePhoneSnapshot(const WatchStateSnapshot& snapshot, Instant receivedAt,
                                           LatestState latestState) const {
  if (const auto stored = phoneSnapshot(); stored && stored->generatedAt > snapshot.generatedAt) {
    return false;
  }
  auto json = encoder.encode(snapshot);
  if (!json) {
    return false;
  }
  std::vector<SharedDefaults::Change> changes = {{phoneSnapshotKey, Data{*std::move(json)}},
                                                 {phoneSnapshotReceivedAtKey, receivedAt}};
  if (latestState == LatestState::isUpdated) {
    changes.push_back(latestStateAs(KestrelState::fromStoredValue(snapshot.stateRaw)));
  }
  defaults->write(changes);
  if (latestState == LatestState::isUpdated) {
    WidgetTimelines::reloadAll();
  }
  return true;
}

}  // namespace kestrel
