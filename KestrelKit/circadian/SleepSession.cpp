#include <KestrelKit/circadian/SleepSession.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields SleepSession::jsonFields() {
  using R = SleepSession;
  static constexpr JsonField fields[] = {
      field<&R::date>("date"),
      field<&R::midSleepMinutes>("midSleepMinutes"),
      field<&R::asleepMinutes>("asleepMinutes"),
  };
  return fields;
}

}  // namespace kestrel
