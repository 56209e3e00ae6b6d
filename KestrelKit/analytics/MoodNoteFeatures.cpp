#include <KestrelKit/analytics/MoodNoteFeatures.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields MoodNoteFeatures::jsonFields() {
  using R = MoodNoteFeatures;
  static constexpr JsonField fields[] = {
      field<&R::sentiment>("sentiment"),
      field<&R::absolutistRatio>("absolutistRatio"),
      field<&R::length>("length"),
  };
  return fields;
}

}  // namespace kestrel
