#include <KestrelKit/formats/CorrelationCoefficients.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields CorrelationCoefficients::jsonFields() {
  using R = CorrelationCoefficients;
  static constexpr JsonField fields[] = {
      field<&R::postsVsSleep>("posts_vs_sleep"),
      field<&R::sentimentVsSleep>("sentiment_vs_sleep"),
      field<&R::stepsVsPosts>("steps_vs_posts"),
      field<&R::stepsVsSentiment>("steps_vs_sentiment"),
  };
  return fields;
}

}  // namespace kestrel
