#pragma once

#include <string_view>

namespace kestrel {

/// What every front end shows about the nature of the tool.
struct Disclaimer {
  Disclaimer() = delete;

  static constexpr std::string_view text =
      "Tidewell is a tracking and personal-insight tool. It is not a medical device, not FDA-cleared, and not a "
      "substitute for clinical care.";
};

}  // namespace kestrel
