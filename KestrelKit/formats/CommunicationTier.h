#pragma once

#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/JsonText.h>

#include <optional>

namespace kestrel {

/// What the words of the posts show, day by day. The form of the two series is their producer's affair, so
/// that each is kept as the JSON that it came as, and given back so.
struct CommunicationTier {
  std::optional<JsonText> dailySentiment{};
  std::optional<JsonText> dailyAbsolutist{};  ///< Of words such as always and never.

  bool operator==(const CommunicationTier&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
