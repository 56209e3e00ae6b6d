#pragma once

#include "Chance.h"

#include <tidewell-sample-history/SampleHistory.h>

#include <cstdint>
#include <vector>

namespace kestrel {

/// When the messages of `history` were sent and received: nanoseconds since the reference date, ascending,
/// one entry a message.
std::vector<std::int64_t> messageTimes(const SampleHistory& history, Chance& chance);

}  // namespace kestrel
