#pragma once

#include <KestrelKit/model/KestrelState.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace kestrel {

/// The crisis resources that a front end offers, and the states in which it does.
struct CrisisSupport {
  CrisisSupport() = delete;

  static constexpr std::string_view prompt =
      "If this matches how you're feeling right now, support is available.";
  static constexpr std::string_view reassurance =
      "Free, confidential, 24/7. You don't have to be in crisis to reach out.";
  static constexpr std::string_view lifelineTitle = "988 Suicide & Crisis Lifeline";
  static constexpr std::string_view textLineTitle = "Text HOME to 741741";
  static constexpr std::string_view lifelineURL = "tel:988";               ///< Starts a call.
  static constexpr std::string_view textLineURL = "sms:741741&body=HOME";  ///< Starts a text message, "HOME".
  static constexpr std::string_view lifelineAccessibilityLabel =
      "Call or text 988, the Suicide and Crisis Lifeline";
  static constexpr std::string_view textLineAccessibilityLabel = "Text HOME to 741741, the Crisis Text Line";
  static constexpr std::string_view dismissAccessibilityLabel = "Dismiss crisis resources for today";
  static constexpr std::string_view groupAccessibilityLabel = "Crisis support resources";

  static constexpr std::array<KestrelState, 3> triggerStates{
      KestrelState::psychosis, KestrelState::mixedEpisode, KestrelState::severeDepression};

  /// Whether `state` is one of the trigger states. Mania, hypomania and moderate depression deliberately are
  /// not.
  static constexpr bool shouldOffer(KestrelState state) noexcept {
    return std::ranges::find(triggerStates, state) != triggerStates.end();
  }
};

}  // namespace kestrel
