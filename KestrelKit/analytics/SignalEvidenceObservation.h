#pragma once

#include <KestrelKit/foundation/JsonField.h>

#include <string>

namespace kestrel {

/// One value of one signal on one day.
struct SignalEvidenceObservation {
  std::string date{};      ///< The day key, `yyyy-MM-dd`; see DateKey.
  std::string sourceID{};  ///< The device, app or feed that produced the value.
  std::string signalID{};  ///< The signal's name within that source.
  double value = 0;        ///< In the signal's own unit.

  bool operator==(const SignalEvidenceObservation&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
