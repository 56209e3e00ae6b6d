#include <KestrelKit/circadian/SleepStageInterval.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields SleepStageInterval::jsonFields() {
  using R = SleepStageInterval;
  static constexpr JsonField fields[] = {
      field<&R::start>("start"),
      field<&R::end>("end"),
      field<&R::stage>("stage"),
  };
  return fields;
}

}  // namespace kestrel
