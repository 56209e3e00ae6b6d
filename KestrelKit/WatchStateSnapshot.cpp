#include <KestrelKit/WatchStateSnapshot.h>
#include <KestrelKit/foundation/Record.h>

#include <algorithm>

namespace kestrel {

WatchStateSnapshot WatchStateSnapshot::of(KestrelState state, std::int64_t confidencePercent,
                                          Instant generatedAt, const Uuid& deliveryID) {
  return {.deliveryID = deliveryID,
          .stateRaw = std::string(state.rawValue()),
          .confidencePercent = std::clamp<std::int64_t>(confidencePercent, 0, 100),
          .generatedAt = generatedAt};
}

JsonFields WatchStateSnapshot::jsonFields() {
  using R = WatchStateSnapshot;
  static constexpr JsonField fields[] = {
      field<&R::version>("version"),         field<&R::deliveryID>("deliveryID"),
      field<&R::stateRaw>("stateRaw"),       field<&R::confidencePercent>("confidencePercent"),
      field<&R::generatedAt>("generatedAt"),
  };
  return fields;
}

}  // namespace kestrel
