#pragma once

#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/model/KestrelState.h>

#include <string>

namespace kestrel {

/// The mood state of one day.
struct SignalEvidenceLabel {
  std::string date{};  ///< The day key, `yyyy-MM-dd`; see DateKey.
  KestrelState state = KestrelState::unknown;

  bool operator==(const SignalEvidenceLabel&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
