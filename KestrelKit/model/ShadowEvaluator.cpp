#include <KestrelKit/model/ShadowEvaluator.h>
#include <KestrelKit/model/StateTheme.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

bool agree(std::optional<KestrelState> said, KestrelState label) noexcept {
  return said && StateTheme::group(*said) == StateTheme::group(label);
}

}  // namespace

ShadowSummary ShadowEvaluator::evaluate(std::span<const ShadowDay> days) {
  std::vector<const ShadowDay*> inOrder;
  inOrder.reserve(days.size());
  for (const ShadowDay& day : days) {
    inOrder.push_back(&day);
  }
  // Days of one key in the order given, which is that of their places.
  std::ranges::sort(inOrder, {}, [](const ShadowDay* day) {
    return std::pair{std::string_view{day->date}, day};
  });

  std::int64_t scored = 0;
  std::int64_t circadianHits = 0;
  std::int64_t baselineHits = 0;
  std::optional<KestrelState> previousLabel;
  for (const ShadowDay* day : inOrder) {
    const auto& label = day->label;
    if (!label) {
      continue;
    }
    if (previousLabel) {
      scored += 1;
      circadianHits += agree(day->circadianState, *label) ? 1 : 0;
      baselineHits += agree(previousLabel, *label) ? 1 : 0;
    }
    previousLabel = label;
  }
  const auto share = [&](std::int64_t hits) {
    return scored == 0 ? 0 : static_cast<double>(hits) / static_cast<double>(scored);
  };
  return {.scoredDays = scored,
          .circadianAccuracy = share(circadianHits),
          .baselineAccuracy = share(baselineHits)};
}

}  // namespace kestrel
