#pragma once

#include <KestrelKit/analytics/MoodNoteFeatures.h>

#include <string_view>

namespace kestrel {

/// Reads the mood off a free-text note, or a social post, by counting words of MoodNoteLexicon. Pure; any
/// thread. Nothing fails: a text without words has sentiment 0 and ratio 0.
///
/// Words are what stands between characters other than the letters a to z, in either case, and the straight
/// apostrophe; web links and handles (`@name`) are left out first. Text is UTF-8; of bytes that are none
/// nothing is promised but that a result comes back.
///
/// The sentiment adds up the scores of the words, each turned and weakened (× -0.74) when one of the three
/// words before it is a negator, and presses the sum s into -1 to 1 as s ÷ √(s² + 15). Both constants are
/// those of C. Hutto and E. Gilbert, VADER: A Parsimonious Rule-based Model for Sentiment Analysis of Social
/// Media Text, ICWSM 2014. Rounding is to four decimals, halves upward.
struct MoodNoteFeatureExtractor {
  MoodNoteFeatureExtractor() = delete;

  static MoodNoteFeatures features(std::string_view text);

  /// The sentiment alone.
  static double sentiment(std::string_view text);

  /// The share of absolutist words alone.
  static double absolutistRatio(std::string_view text);
};

}  // namespace kestrel
