#pragma once

#include <KestrelKit/WatchConnectionEvidence.h>
#include <KestrelKit/WatchStateSnapshot.h>
#include <KestrelKit/foundation/Instant.h>

#include <cstdint>

namespace kestrel {

/// When a state that the watch has not acknowledged is sent once more: the same snapshot with the same
/// delivery, so that a receipt for either sending fits. Pure; any thread.
struct WatchOutboxReplayPolicy {
  WatchOutboxReplayPolicy() = delete;

  static constexpr Seconds firstPause{30};       ///< After the first sending; each further one doubles it.
  static constexpr Seconds longestPause{3'600};  ///< No pause is longer.
  static constexpr Seconds longestLife{86'400};  ///< A state older than this is not worth sending any more.

  /// Whether `snapshot`, which was sent again `earlierTries` times already (0 or more; fewer is a programming
  /// error), is to be sent again `now`: a watch with the application is paired, this delivery was the last
  /// sent and is not the last acknowledged, the pause has passed since, and the state is not too old. Where
  /// the pause or the life has just passed to the second, it is.
  static bool shouldReplay(const WatchStateSnapshot& snapshot, const WatchConnectionEvidence& evidence,
                           std::int64_t earlierTries, Instant now);
};

}  // namespace kestrel
