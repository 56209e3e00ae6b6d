#pragma once

#include <KestrelKit/foundation/JsonField.h>

#include <string>

namespace kestrel {

/// One night, as SleepConsolidator makes it of its intervals.
struct SleepSession {
  std::string date{};  ///< The day key of the day on which the person woke.
  double midSleepMinutes =
      0;  ///< What the clocks show in the middle of the night: minutes after midnight, 0 to 1440.
  double asleepMinutes = 0;  ///< Time asleep, from 0; less than the night lasts when the person lay awake.

  bool operator==(const SleepSession&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
