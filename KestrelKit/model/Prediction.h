#pragma once

#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/model/KestrelState.h>

#include <string>

namespace kestrel {

/// The forecast of one day.
struct Prediction {
  std::string date{};  ///< The day key, `yyyy-MM-dd`; see DateKey.
  KestrelState predictedState = KestrelState::unknown;
  double probability = 0;  ///< 0 to 1.

  bool operator==(const Prediction&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
