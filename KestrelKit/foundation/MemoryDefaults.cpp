#include <KestrelKit/foundation/MemoryDefaults.h>

#include <algorithm>
#include <cmath>

namespace kestrel {
namespace {

bool canBeKept(const SharedDefaults::Change& change) {
  const Instant* const date = change.value ? std::get_if<Instant>(&*change.value) : nullptr;
  return date == nullptr || !std::isnan(secondsSinceReferenceDate(*date));
}

}  // namespace

std::optional<PropertyValue> MemoryDefaults::value(std::string_view key) const {
  const std::lock_guard locked(mutex_);
  return stored(key);
}

bool MemoryDefaults::write(std::span<const Change> changes) {
  const std::lock_guard locked(mutex_);
  return make(changes);
}

bool MemoryDefaults::update(std::string_view key, const Update& update) {
  const std::lock_guard locked(mutex_);
  const Change change{.key = key, .value = update(stored(key))};
  return !change.value || make({&change, 1});
}

std::optional<PropertyValue> MemoryDefaults::stored(std::string_view key) const {
  const auto found = values_.find(key);
  return found == values_.end() ? std::nullopt : std::optional(found->second);
}

bool MemoryDefaults::make(std::span<const Change> changes) {
  if (!std::ranges::all_of(changes, canBeKept)) {
    return false;
  }
  for (const Change& change : changes) {
    if (change.value) {
      values_.insert_or_assign(std::string(change.key), *change.value);
    } else if (const auto found = values_.find(change.key); found != values_.end()) {
      values_.erase(found);
    }
  }
  return true;
}

}  // namespace kestrel
