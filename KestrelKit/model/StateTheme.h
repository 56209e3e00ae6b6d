#pragma once

#include <KestrelKit/model/KestrelState.h>
#include <KestrelKit/model/StateGroup.h>
#include <KestrelKit/model/SystemColor.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace kestrel {

/// How the states are shown and spoken. Pure and immutable; any thread.
struct StateTheme {
  StateTheme() = delete;

  static constexpr std::array<KestrelState, 4> elevatedStates{
      KestrelState::psychosis, KestrelState::mixedEpisode, KestrelState::mania, KestrelState::hypomania};
  static constexpr std::array<KestrelState, 1> stableStates{KestrelState::euthymia};
  static constexpr std::array<KestrelState, 3> depressedStates{
      KestrelState::dysthymia, KestrelState::moderateDepression, KestrelState::severeDepression};

  /// Which of the three lists above `state` is in.
  static StateGroup group(KestrelState state) noexcept;

  static SystemColor color(KestrelState state) noexcept;

  /// One character, an arrow for most states.
  static std::string_view symbol(KestrelState state) noexcept;

  /// Three capital letters, or `?`.
  static std::string_view shortCode(KestrelState state) noexcept;

  /// Symbol, blank, display text: `↔ Mixed Episode`.
  static std::string label(KestrelState state);

  /// What a screen reader adds to a state: `Confidence 73 percent, Source keyword`. The confidence is a
  /// fraction; its percentage is rounded half away from zero, and one that is not finite or lies beyond 64
  /// bits is a programming error. An absent confidence and an absent or empty source are left out.
  static std::string accessibilityDetail(std::optional<double> confidence,
                                         std::optional<std::string_view> source);
};

}  // namespace kestrel
