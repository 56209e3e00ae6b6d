#pragma once

#include <KestrelKit/analytics/MoodNoteFeatures.h>

#include <string_view>

namespace kestrel::testing {

/// The features of a note as their definition has them, one step after the other with ICU: what the library
/// finds in one pass is compared with it, and timed against it. `text` is valid UTF-8. One thread.
MoodNoteFeatures literalFeatures(std::string_view text);

}  // namespace kestrel::testing
