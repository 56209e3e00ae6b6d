#pragma once

#include <KestrelKit/WatchConnectionEvidence.h>
#include <KestrelKit/WatchStateAcknowledgement.h>
#include <KestrelKit/WatchStateSnapshot.h>
#include <support/RandomFields.h>

#include <rapidcheck.h>

#include <cstdint>

// Random records of the way to the watch, with optional fields present and absent: what rc::gen::arbitrary
// gives.

namespace rc {

template <>
struct Arbitrary<kestrel::WatchStateSnapshot> {
  static Gen<kestrel::WatchStateSnapshot> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::WatchStateSnapshot;
    return gen::build<R>(gen::set(&R::version), gen::set(&R::deliveryID, anyUuid()),
                         gen::set(&R::stateRaw, anyText()), gen::set(&R::confidencePercent),
                         gen::set(&R::generatedAt, anyInstant()));
  }
};

template <>
struct Arbitrary<kestrel::WatchStateAcknowledgement> {
  static Gen<kestrel::WatchStateAcknowledgement> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::WatchStateAcknowledgement;
    return gen::build<R>(gen::set(&R::deliveryID, anyUuid()), gen::set(&R::receivedAt, anyInstant()));
  }
};

template <>
struct Arbitrary<kestrel::WatchConnectionEvidence> {
  static Gen<kestrel::WatchConnectionEvidence> arbitrary() {
    using namespace kestrel::testing;
    using R = kestrel::WatchConnectionEvidence;
    return gen::build<R>(
        gen::set(&R::isPaired), gen::set(&R::isWatchAppInstalled), gen::set(&R::isReachable),
        gen::set(&R::lastSentAt, orNone(anyInstant())), gen::set(&R::lastSentDeliveryID, orNone(anyUuid())),
        gen::set(&R::lastAcknowledgedAt, orNone(anyInstant())),
        gen::set(&R::lastAcknowledgedDeliveryID, orNone(anyUuid())),
        gen::set(&R::lastReceivedStateAt, orNone(anyInstant())),
        gen::set(&R::lastReceivedState, orNone(anyText())),
        gen::set(&R::lastReceivedConfidence, orNone(gen::arbitrary<std::int64_t>())),
        gen::set(&R::lastError, orNone(anyText())));
  }
};

}  // namespace rc
