#include <KestrelKit/foundation/ProgrammingError.h>
#include <KestrelKit/model/StateTheme.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>

namespace kestrel {
namespace {

struct Look {
  KestrelState state;
  SystemColor color;
  std::string_view symbol;
  std::string_view shortCode;
};

constexpr Look looks[] = {
    {KestrelState::psychosis, SystemColor::purple, "✦", "PSY"},
    {KestrelState::mixedEpisode, SystemColor::pink, "↔", "MIX"},
    {KestrelState::mania, SystemColor::red, "↑", "MAN"},
    {KestrelState::hypomania, SystemColor::orange, "↗", "HYP"},
    {KestrelState::euthymia, SystemColor::green, "•", "EUT"},
    {KestrelState::dysthymia, SystemColor::teal, "↘", "DYS"},
    {KestrelState::moderateDepression, SystemColor::blue, "↓", "MOD"},
    {KestrelState::severeDepression, SystemColor::indigo, "⇊", "SEV"},
    {KestrelState::unknown, SystemColor::gray, "?", "?"},
};

constexpr bool coversAllStatesInOrder() noexcept {
  for (std::size_t index = 0; index < std::size(looks); ++index) {
    if (looks[index].state != KestrelState::allCases[index]) {
      return false;
    }
  }
  return std::size(looks) == KestrelState::allCases.size();
}
static_assert(coversAllStatesInOrder());

constexpr const Look& lookOf(KestrelState state) noexcept {
  return looks[static_cast<std::size_t>(static_cast<KestrelState::Case>(state))];
}

bool isIn(std::span<const KestrelState> states, KestrelState state) noexcept {
  return std::ranges::find(states, state) != states.end();
}

std::int64_t percentage(double confidence) {
  const double percent = std::round(confidence * 100);
  // Written so that a value that is not a number fails, too.
  if (!(percent >= -0x1p63 && percent < 0x1p63)) {
    programmingError("a confidence whose percentage is not finite or lies beyond 64 bits");
  }
  return static_cast<std::int64_t>(percent);
}

}  // namespace

StateGroup StateTheme::group(KestrelState state) noexcept {
  return isIn(elevatedStates, state)    ? StateGroup::elevated
         : isIn(stableStates, state)    ? StateGroup::stable
         : isIn(depressedStates, state) ? StateGroup::depressed
                                        : StateGroup::none;
}

SystemColor StateTheme::color(KestrelState state) noexcept { return lookOf(state).color; }

std::string_view StateTheme::symbol(KestrelState state) noexcept { return lookOf(state).symbol; }

std::string_view StateTheme::shortCode(KestrelState state) noexcept { return lookOf(state).shortCode; }

std::string StateTheme::label(KestrelState state) {
  return fmt::format("{} {}", symbol(state), state.rawValue());
}

std::string StateTheme::accessibilityDetail(std::optional<double> confidence,
                                            std::optional<std::string_view> source) {
  std::string detail;
  if (confidence) {
    detail = fmt::format("Confidence {} percent", percentage(*confidence));
  }
  if (source && !source->empty()) {
    detail += fmt::format("{}Source {}", detail.empty() ? "" : ", ", *source);
  }
  return detail.empty() ? "No additional details" : detail;
}

}  // namespace kestrel
