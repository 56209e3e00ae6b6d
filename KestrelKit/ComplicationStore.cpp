#include <KestrelKit/ComplicationStore.h>
#include <KestrelKit/WidgetTimelines.h>
#include <KestrelKit/foundation/JsonDecoder.h>
#include <KestrelKit/foundation/JsonEncoder.h>

#include <string>
#include <utility>

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
  const SharedDefaults::Change changes[] = {{key, std::string(state.rawValue())}};
  defaults->write(changes);
  WidgetTimelines::reloadAll();
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
  const SharedDefaults::Change changes[] = {{phoneSnapshotKey, Data{*std::move(json)}},
                                            {phoneSnapshotReceivedAtKey, receivedAt}};
  defaults->write(changes);
  if (latestState == LatestState::isUpdated) {
    setLatestState(KestrelState::fromStoredValue(snapshot.stateRaw));
  }
  return true;
}

}  // namespace kestrel
