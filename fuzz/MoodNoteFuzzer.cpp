// Any bytes as a note: a text has the features of their definition, taken step by step with ICU; of what is
// no text something comes back that a note could have.

#include <KestrelKit/analytics/MoodNoteFeatureExtractor.h>
#include <KestrelKit/foundation/Utf8.h>
#include <support/LiteralMoodNote.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "RoundTrip.h"

using namespace kestrel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view note{reinterpret_cast<const char*>(data), size};
  const auto features = MoodNoteFeatureExtractor::features(note);
  fuzz::require(features.sentiment >= -1 && features.sentiment <= 1, "a sentiment lies between -1 and 1");
  fuzz::require(features.absolutistRatio >= 0 && features.absolutistRatio <= 1,
                "a ratio lies between 0 and 1");
  if (!invalidUtf8(note)) {
    fuzz::require(features == testing::literalFeatures(note), "features are those of their definition");
  }
  return 0;
}
