#pragma once

#include <string_view>

namespace kestrel {

/// The application group of all front ends: its container holds the event log and the shared defaults.
inline constexpr std::string_view sharedAppGroup = "group.app.tidewell.shared";

}  // namespace kestrel
