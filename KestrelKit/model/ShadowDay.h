#pragma once

#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/model/KestrelState.h>

#include <optional>
#include <string>

namespace kestrel {

/// One day on which the circadian classifier is scored against the user's own label.
struct ShadowDay {
  std::string date{};                            ///< The day key, `yyyy-MM-dd`; see DateKey.
  std::optional<KestrelState> circadianState{};  ///< What the circadian classifier said; absent: nothing.
  std::optional<KestrelState> label{};           ///< What the user said; absent: not labelled.

  bool operator==(const ShadowDay&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
