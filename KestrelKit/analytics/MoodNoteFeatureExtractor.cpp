#include <KestrelKit/analytics/MoodNoteFeatureExtractor.h>
#include <KestrelKit/foundation/Utf8.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "MoodNoteTokenizer.h"
#include "MoodNoteWord.h"

namespace kestrel {
namespace {

constexpr double factors[] = {1, -0.74};  // of a score; the second where a negator turns it
constexpr unsigned negatorReach = 0b111;  // it reaches the three words that follow it
constexpr double flattening = 15;         // the larger, the more words it takes to come near -1 or 1

double roundedToFourDecimals(double value) noexcept { return std::floor(value * 10'000 + 0.5) / 10'000; }

/// What the words of a note add up to.
struct WordTally {
  double score = 0;
  std::size_t words = 0;
  std::size_t absolutists = 0;

  explicit WordTally(std::string_view text) noexcept {
    unsigned negators = 0;  // one bit a word, the latest the lowest
    MoodNoteTokenizer(text).forEachWord([&](const MoodNoteWord& word) {
      const MoodNoteMeaning& meaning = moodNoteMeanings[word];
      score += meaning.score * factors[(negators & negatorReach) != 0];  // 0 adds nothing
      negators = negators << 1U | unsigned{meaning.isNegator};
      absolutists += std::size_t{meaning.isAbsolutist};
      ++words;
    });
  }

  double sentiment() const noexcept {
    if (score == 0) {
      return 0;
    }
    const double pressed = score / std::sqrt(score * score + flattening);
    return pressed <= -1 ? -1 : roundedToFourDecimals(std::min(pressed, 1.0));
  }

  double absolutistRatio() const noexcept {
    return words == 0 ? 0
                      : roundedToFourDecimals(static_cast<double>(absolutists) / static_cast<double>(words));
  }
};

}  // namespace

MoodNoteFeatures MoodNoteFeatureExtractor::features(std::string_view text) {
  const WordTally tally(text);
  return {.sentiment = tally.sentiment(),
          .absolutistRatio = tally.absolutistRatio(),
          .length = static_cast<double>(utf16Length(text))};
}

double MoodNoteFeatureExtractor::sentiment(std::string_view text) { return WordTally(text).sentiment(); }

double MoodNoteFeatureExtractor::absolutistRatio(std::string_view text) {
  return WordTally(text).absolutistRatio();
}

}  // namespace kestrel
