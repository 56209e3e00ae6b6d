#include <KestrelKit/WatchConnectionEvidenceStore.h>
#include <KestrelKit/model/JSONCoders.h>

#include <optional>
#include <utility>
#include <variant>

namespace kestrel {
namespace {

WatchConnectionEvidence evidenceIn(const std::optional<PropertyValue>& stored) {
  const Data* const json = stored ? std::get_if<Data>(&*stored) : nullptr;
  return json ? JSONCoders::decoder.decode<WatchConnectionEvidence>(json->bytes)
                    .value_or(WatchConnectionEvidence())
              : WatchConnectionEvidence();
}

}  // namespace

WatchConnectionEvidenceStore::WatchConnectionEvidenceStore(std::shared_ptr<SharedDefaults> sharedDefaults)
    : defaults(std::move(sharedDefaults)) {}

WatchConnectionEvidence WatchConnectionEvidenceStore::current() const {
  return evidenceIn(defaults->value(key));
}

void WatchConnectionEvidenceStore::replace(const WatchConnectionEvidence& evidence) {
  update([&](WatchConnectionEvidence& current) { current = evidence; });
}

void WatchConnectionEvidenceStore::update(const std::function<void(WatchConnectionEvidence&)>& mutation) {
  bool isChanged = false;
  {
    const std::lock_guard locked(lock_);
    defaults->update(key, [&](const std::optional<PropertyValue>& stored) -> std::optional<PropertyValue> {
      const WatchConnectionEvidence before = evidenceIn(stored);
      WatchConnectionEvidence after = before;
      mutation(after);
      isChanged = after != before;
      if (!isChanged) {
        return std::nullopt;
      }
      auto json = JSONCoders::encoder.encode(after);
      return json ? std::optional<PropertyValue>(Data{*std::move(json)}) : std::nullopt;
    });
  }
  if (isChanged) {
    Notifications::post(didChange, object);
  }
}

}  // namespace kestrel
