#include <KestrelKit/SnapshotStore.h>
#include <KestrelKit/model/JSONCoders.h>

#include <utility>

namespace kestrel {

SnapshotStore::SnapshotStore(std::shared_ptr<SharedDefaults> sharedDefaults)
    : defaults(std::move(sharedDefaults)) {}

std::optional<DashboardSnapshot> SnapshotStore::latest() const {
  const auto json = defaults->get<Data>(key);
  if (!json) {
    return std::nullopt;
  }
  auto snapshot = JSONCoders::decoder.decode<DashboardSnapshot>(json->bytes);
  return snapshot ? std::optional(*std::move(snapshot)) : std::nullopt;
}

void SnapshotStore::setLatest(const std::optional<DashboardSnapshot>& snapshot, Instant now) const {
  SharedDefaults::Change changes[] = {{key, std::nullopt}, {updatedAtKey, std::nullopt}};
  if (snapshot) {
    if (auto json = JSONCoders::encoder.encode(*snapshot)) {
      changes[0].value = Data{*std::move(json)};
      changes[1].value = now;
    }
  }
  defaults->write(changes);
}

void SnapshotStore::modifyLatest(const std::function<void(std::optional<DashboardSnapshot>&)>& change,
                                 Instant now) const {
  auto snapshot = latest();
  change(snapshot);
  setLatest(snapshot, now);
}

std::optional<Instant> SnapshotStore::updatedAt() const { return defaults->get<Instant>(updatedAtKey); }

}  // namespace kestrel
