#include <KestrelKit/foundation/TimeZone.h>
#include <KestrelKit/model/DateKey.h>

namespace kestrel {

const DayKeyFormatter& DateKey::formatter() {
  static const DayKeyFormatter formatter{TimeZone::current()};
  return formatter;
}

}  // namespace kestrel
