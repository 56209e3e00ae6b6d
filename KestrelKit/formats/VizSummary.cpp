#include <KestrelKit/formats/VizSummary.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields VizSummary::jsonFields() {
  using R = VizSummary;
  static constexpr JsonField fields[] = {
      field<&R::totalPosts>("total_posts"),
      field<&R::totalDays>("total_days"),
      field<&R::avgSentiment>("avg_sentiment"),
  };
  return fields;
}

}  // namespace kestrel
