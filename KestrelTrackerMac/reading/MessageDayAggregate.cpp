#include <KestrelKit/foundation/Record.h>
#include <KestrelTrackerMac/reading/MessageDayAggregate.h>

namespace kestrel::companion {

JsonFields MessageDayAggregate::jsonFields() {
  using R = MessageDayAggregate;
  static constexpr JsonField fields[] = {
      field<&R::date>("date"),
      field<&R::sentCount>("sentCount"),
      field<&R::receivedCount>("receivedCount"),
      field<&R::activeConversationCount>("activeConversationCount"),
      field<&R::lateNightCount>("lateNightCount"),
      field<&R::averageMessageLength>("averageMessageLength"),
  };
  return fields;
}

}  // namespace kestrel::companion
