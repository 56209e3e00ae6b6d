#include <KestrelKit/foundation/Record.h>
#include <KestrelKit/model/Prediction.h>

namespace kestrel {

JsonFields Prediction::jsonFields() {
  using R = Prediction;
  static constexpr JsonField fields[] = {
      field<&R::date>("date"),
      field<&R::predictedState>("predictedState"),
      field<&R::probability>("probability"),
  };
  return fields;
}

}  // namespace kestrel
