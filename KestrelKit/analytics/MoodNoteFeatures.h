#pragma once

#include <KestrelKit/foundation/JsonField.h>

namespace kestrel {

/// What one free-text note, or one post, shows.
struct MoodNoteFeatures {
  double sentiment = 0;        ///< From -1, all bad words, to 1, all good ones; four decimals.
  double absolutistRatio = 0;  ///< The share of absolutist words among all words, 0 to 1; four decimals.
  double length = 0;           ///< In UTF-16 code units, of the text as it was given.

  bool operator==(const MoodNoteFeatures&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
