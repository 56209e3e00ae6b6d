#include <KestrelKit/formats/VizDay.h>
#include <KestrelKit/model/JSONCoders.h>
#include <support/RecordFields.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kestrel {
namespace {

testing::FieldRow count(const std::string& key, int value) {
  return {key, std::to_string(value), "1.5", "1.5 is not an integer of 64 bits", /*isOptional=*/true};
}

testing::FieldRow number(const std::string& key, const std::string& value) {
  return {key, value, R"("1")", "expected a number, found text", /*isOptional=*/true};
}

std::string errorOf(const std::string& json) { return testing::errorOf<VizDay>(JSONCoders::decoder, json); }

TEST(VizDay, hasItsFields) {
  const auto day = testing::expectStrictFields<VizDay>(
      JSONCoders::decoder, JSONCoders::encoder,
      {
          {"date", R"("2024-05-01")", "7", "expected text, found a number"},
          count("posts", 1),
          number("sentiment", "-0.25"),
          number("sentiment_stdev", "0.5"),
          count("reply_count", 2),
          count("quote_count", 3),
          count("repost_count", 4),
          count("like_count", 5),
          count("follow_count", 6),
          count("mention_count", 7),
          count("link_count", 8),
          count("hashtag_count", 9),
          number("avg_post_length", "80.5"),
          number("absolutist_rate", "0.125"),
          count("late_night_posts", 10),
          {"posts_by_hour", "[0,11]", R"({"0":1})", "expected a list, found an object", /*isOptional=*/true},
      });
  EXPECT_EQ(day, (VizDay{.date = "2024-05-01",
                         .posts = 1,
                         .avgSentiment = -0.25,
                         .sentimentStdev = 0.5,
                         .replyCount = 2,
                         .quoteCount = 3,
                         .repostCount = 4,
                         .likeCount = 5,
                         .followCount = 6,
                         .mentionCount = 7,
                         .linkCount = 8,
                         .hashtagCount = 9,
                         .avgPostLength = 80.5,
                         .absolutistRate = 0.125,
                         .lateNightPosts = 10,
                         .postsByHour = {{0, 11}}}));
}

TEST(VizDay, needsNothingButItsDate) {
  const auto day = JSONCoders::decoder.decode<VizDay>(R"({"date":"2024-05-01"})");
  ASSERT_TRUE(day);
  EXPECT_EQ(*day, (VizDay{.date = "2024-05-01"}));
  EXPECT_EQ(JSONCoders::encoder.encode(*day), R"({"date":"2024-05-01"})");
  EXPECT_EQ(errorOf("{}"), "date: is missing");
}

TEST(VizDay, hasADateThatIsPlainText) {
  for (const char* date : {"", "today", "2024-02-30"}) {
    EXPECT_EQ(errorOf(R"({"date":")" + std::string(date) + R"("})"), "none");
  }
}

TEST(VizDay, keepsAnEmptyListOfHoursApartFromNone) {
  const std::string json = R"({"date":"","posts_by_hour":[]})";
  const auto day = JSONCoders::decoder.decode<VizDay>(json);
  ASSERT_TRUE(day);
  EXPECT_EQ(day->postsByHour, (std::vector<std::int64_t>{}));
  EXPECT_EQ(JSONCoders::encoder.encode(*day), json);
  EXPECT_EQ(errorOf(R"({"date":"","posts_by_hour":[1,null]})"),
            "posts_by_hour[1]: expected an integer, found null");
}

}  // namespace
}  // namespace kestrel
