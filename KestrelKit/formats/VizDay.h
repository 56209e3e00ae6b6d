#pragma once

#include <KestrelKit/foundation/JsonField.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kestrel {

/// One day of social posts, as a dashboard snapshot carries it. What the producer did not count is absent.
struct VizDay {
  std::string date{};  ///< The day key, `yyyy-MM-dd`; see DateKey.
  std::optional<std::int64_t> posts{};
  std::optional<double> avgSentiment{};    ///< Mean over the posts, about -1 to +1.
  std::optional<double> sentimentStdev{};  ///< Of the posts, their volatility.
  std::optional<std::int64_t> replyCount{};
  std::optional<std::int64_t> quoteCount{};
  std::optional<std::int64_t> repostCount{};
  std::optional<std::int64_t> likeCount{};
  std::optional<std::int64_t> followCount{};
  std::optional<std::int64_t> mentionCount{};
  std::optional<std::int64_t> linkCount{};
  std::optional<std::int64_t> hashtagCount{};
  std::optional<double> avgPostLength{};         ///< In characters.
  std::optional<double> absolutistRate{};        ///< Absolutist words as a fraction of all words, 0 to 1.
  std::optional<std::int64_t> lateNightPosts{};  ///< What is late the producer decides.
  std::optional<std::vector<std::int64_t>> postsByHour{};  ///< Of the local hours from 0 on.

  bool operator==(const VizDay&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
