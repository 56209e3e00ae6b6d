#include <KestrelKit/analytics/BlueskySummary.h>
#include <KestrelKit/foundation/Record.h>
#include <fmt/format.h>

namespace kestrel {

JsonFields BlueskySummary::jsonFields() {
  using R = BlueskySummary;
  static constexpr JsonField fields[] = {
      field<&R::days>("days"),
      field<&R::totalPosts>("totalPosts"),
      field<&R::avgPostsPerDay>("avgPostsPerDay"),
      field<&R::avgPostLength>("avgPostLength"),
      field<&R::absolutismRatePct>("absolutismRatePct"),
      field<&R::totalReplies>("totalReplies"),
      field<&R::totalQuotes>("totalQuotes"),
      field<&R::totalReposts>("totalReposts"),
      field<&R::totalLikes>("totalLikes"),
      field<&R::totalFollows>("totalFollows"),
      field<&R::totalMentions>("totalMentions"),
      field<&R::totalLinks>("totalLinks"),
      field<&R::totalHashtags>("totalHashtags"),
      field<&R::totalLateNightPosts>("totalLateNightPosts"),
  };
  return fields;
}

std::string BlueskySummary::id() const {
  return fmt::format("{}|{}|{}|{}|{}|{}|{}|{}|{}|{}", totalPosts, totalReplies, totalQuotes, totalReposts,
                     totalLikes, totalFollows, totalMentions, totalLinks, totalHashtags, totalLateNightPosts);
}

}  // namespace kestrel
