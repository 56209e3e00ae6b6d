#pragma once

#include <KestrelKit/foundation/JsonField.h>

#include <string>

namespace kestrel {

/// How absolute the posts of one day sound.
struct AbsolutismDay {
  std::string date{};        ///< The day key, `yyyy-MM-dd`; see DateKey.
  double absolutismPct = 0;  ///< Absolutist words in percent of all words; 0 also where it is not known.

  bool operator==(const AbsolutismDay&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
