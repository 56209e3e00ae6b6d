#include <KestrelKit/formats/VizDay.h>
#include <KestrelKit/foundation/Record.h>

namespace kestrel {

JsonFields VizDay::jsonFields() {
  using R = VizDay;
  static constexpr JsonField fields[] = {
      field<&R::date>("date"),
      field<&R::posts>("posts"),
      field<&R::avgSentiment>("sentiment"),
      field<&R::sentimentStdev>("sentiment_stdev"),
      field<&R::replyCount>("reply_count"),
      field<&R::quoteCount>("quote_count"),
      field<&R::repostCount>("repost_count"),
      field<&R::likeCount>("like_count"),
      field<&R::followCount>("follow_count"),
      field<&R::mentionCount>("mention_count"),
      field<&R::linkCount>("link_count"),
      field<&R::hashtagCount>("hashtag_count"),
      field<&R::avgPostLength>("avg_post_length"),
      field<&R::absolutistRate>("absolutist_rate"),
      field<&R::lateNightPosts>("late_night_posts"),
      field<&R::postsByHour>("posts_by_hour"),
  };
  return fields;
}

}  // namespace kestrel
