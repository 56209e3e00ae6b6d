#pragma once

#include <KestrelKit/foundation/JsonField.h>

#include <cstdint>
#include <string>

namespace kestrel {

/// The activity of a person's account on the social network Bluesky over some days. An average over nothing
/// is 0.
struct BlueskySummary {
  std::int64_t days = 0;  ///< Days with at least one post.
  std::int64_t totalPosts = 0;
  double avgPostsPerDay = 0;     ///< Over the days with at least one post.
  double avgPostLength = 0;      ///< Over the posts of the days whose average length is known.
  double absolutismRatePct = 0;  ///< Absolutist words in percent, averaged over posts likewise.
  std::int64_t totalReplies = 0;
  std::int64_t totalQuotes = 0;
  std::int64_t totalReposts = 0;
  std::int64_t totalLikes = 0;
  std::int64_t totalFollows = 0;
  std::int64_t totalMentions = 0;
  std::int64_t totalLinks = 0;
  std::int64_t totalHashtags = 0;
  std::int64_t totalLateNightPosts = 0;

  bool operator==(const BlueskySummary&) const = default;

  static JsonFields jsonFields();

  /// What tells it from other summaries: the ten totals in their order, joined by `|`.
  std::string id() const;
};

}  // namespace kestrel
