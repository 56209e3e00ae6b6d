#include <KestrelKit/formats/CommunicationTier.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields CommunicationTier::jsonFields() {
  using R = CommunicationTier;
  static constexpr JsonField fields[] = {
      field<&R::dailySentiment>("daily_sentiment"),
      field<&R::dailyAbsolutist>("daily_absolutist"),
  };
  return fields;
}

}  // namespace kestrel
