#include <KestrelKit/circadian/SleepInterval.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields SleepInterval::jsonFields() {
  using R = SleepInterval;
  static constexpr JsonField fields[] = {
      field<&R::start>("start"),
      field<&R::end>("end"),
  };
  return fields;
}

}  // namespace kestrel
