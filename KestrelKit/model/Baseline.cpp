#include <KestrelKit/foundation/Record.h>
#include <KestrelKit/model/Baseline.h>

namespace kestrel {

JsonFields Baseline::jsonFields() {
  using R = Baseline;
  static constexpr JsonField fields[] = {
      field<&R::avgSleep>("avgSleep"),
      field<&R::avgPosts>("avgPosts"),
      field<&R::avgSentiment>("avgSentiment"),
  };
  return fields;
}

}  // namespace kestrel
