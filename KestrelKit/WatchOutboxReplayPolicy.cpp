#include <KestrelKit/WatchOutboxReplayPolicy.h>
#include <KestrelKit/foundation/ProgrammingError.h>

#include <algorithm>
#include <cmath>

namespace kestrel {
namespace {

using Policy = WatchOutboxReplayPolicy;

Seconds pauseAfter(std::int64_t earlierTries) {
  constexpr std::int64_t enoughForTheLongest = 10;
  const int doublings = static_cast<int>(std::min(earlierTries, enoughForTheLongest));
  static_assert(Policy::firstPause * (1 << enoughForTheLongest) > Policy::longestPause);
  return std::min(Seconds(std::ldexp(Policy::firstPause.count(), doublings)), Policy::longestPause);
}

}  // namespace

bool WatchOutboxReplayPolicy::shouldReplay(const WatchStateSnapshot& snapshot,
                                           const WatchConnectionEvidence& evidence, std::int64_t earlierTries,
                                           Instant now) {
  if (earlierTries < 0) {
    programmingError("a number of earlier tries is below 0");
  }
  return evidence.isPaired && evidence.isWatchAppInstalled &&
         evidence.lastSentDeliveryID == snapshot.deliveryID &&
         evidence.lastAcknowledgedDeliveryID != snapshot.deliveryID && evidence.lastSentAt &&
         now - *evidence.lastSentAt >= pauseAfter(earlierTries) && now - snapshot.generatedAt <= longestLife;
}

}  // namespace kestrel
