#include <KestrelKit/model/DailyMetrics.h>
#include <KestrelKit/model/JSONCoders.h>
#include <support/RecordFields.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace kestrel {
namespace {

const std::string least =
    R"({"date":"2024-05-01","sleep_hours":6.5,"posts":3,"sentiment":-0.25,"steps":9000)";

std::string errorOf(const std::string& json) {
  return testing::errorOf<DailyMetrics>(JSONCoders::decoder, json);
}

DailyMetrics read(const std::string& json) {
  return JSONCoders::decoder.decode<DailyMetrics>(json).value_or(DailyMetrics{.date = errorOf(json)});
}

std::string written(const DailyMetrics& metrics) {
  const auto json = JSONCoders::encoder.encode(metrics);
  return json ? *json : json.error().text();
}

const DailyMetrics sample{
    .date = "2024-05-01", .sleep_hours = 6.5, .posts = 3, .sentiment = -0.25, .steps = 9000};

TEST(DailyMetrics, readsAndWritesEachField) {
  DailyMetrics whole = sample;
  whole.sentiment_stdev = 0.4;
  whole.avg_hrv = HrvInput::measured(42.5);
  EXPECT_EQ(testing::expectStrictFields<DailyMetrics>(
                JSONCoders::decoder, JSONCoders::encoder,
                {{"date", R"("2024-05-01")", "20240501", "expected text, found a number"},
                 {"sleep_hours", "6.5", R"("6.5")", "expected a number, found text"},
                 {"posts", "3", "3.5", "3.5 is not an integer of 64 bits"},
                 {"sentiment", "-0.25", "true", "expected a number, found a boolean"},
                 {"steps", "9000", "[]", "expected an integer, found a list"},
                 {"sentiment_stdev", "0.4", "{}", "expected a number, found an object", /*isOptional=*/true},
                 {"avg_hrv", "42.5", R"("42.5")", "expected a number, found text", /*isOptional=*/true}}),
            whole);
}

TEST(DailyMetrics, ofOnlyTheRequiredFieldsHasNoVolatilityAndAnHrvThatIsNotProvided) {
  const DailyMetrics metrics = read(least + '}');
  EXPECT_EQ(metrics, sample);
  EXPECT_EQ(metrics.sentiment_stdev, std::nullopt);
  EXPECT_EQ(metrics.avg_hrv, HrvInput::notProvided);
  EXPECT_EQ(written(metrics), least + '}');
}

TEST(DailyMetrics, whoseHrvIsNullHasAMissingOneAndIsWrittenWithNull) {
  const DailyMetrics metrics = read(least + R"(,"avg_hrv":null})");
  EXPECT_EQ(metrics.avg_hrv, HrvInput::missing);
  EXPECT_NE(metrics, sample);
  EXPECT_EQ(written(metrics), least + R"(,"avg_hrv":null})");
}

TEST(DailyMetrics, whoseHrvIsANumberHasAMeasuredOne) {
  const DailyMetrics metrics = read(least + R"(,"avg_hrv":42.5})");
  EXPECT_EQ(metrics.avg_hrv, HrvInput::measured(42.5));
  EXPECT_EQ(written(metrics), least + R"(,"avg_hrv":42.5})");
}

TEST(DailyMetrics, takesANullVolatilityAsAbsentAndDoesNotWriteIt) {
  EXPECT_EQ(written(read(least + R"(,"sentiment_stdev":null})")), least + '}');
}

TEST(DailyMetrics, takesTheLastOfARepeatedHrv) {
  EXPECT_EQ(read(least + R"(,"avg_hrv":"?","avg_hrv":null})").avg_hrv, HrvInput::missing);
  EXPECT_EQ(read(least + R"(,"avg_hrv":null,"avg_hrv":1})").avg_hrv, HrvInput::measured(1));
  EXPECT_EQ(errorOf(least + R"(,"avg_hrv":1,"avg_hrv":[]})"), "avg_hrv: expected a number, found a list");
}

TEST(DailyMetrics, takesNumbersToTheEndsOfTheirRangesAndNoDefaultBeyond) {
  EXPECT_EQ(read(R"({"date":"","sleep_hours":1e308,"posts":-9223372036854775808,"sentiment":-0,)"
                 R"("steps":9223372036854775807})"),
            (DailyMetrics{.date = "",
                          .sleep_hours = 1e308,
                          .posts = std::numeric_limits<std::int64_t>::min(),
                          .sentiment = -0.0,
                          .steps = std::numeric_limits<std::int64_t>::max()}));
  EXPECT_EQ(errorOf(least + R"(,"sleep_hours":1e400})"),
            "sleep_hours: 1e400 is too large for a 64-bit float");
  EXPECT_EQ(errorOf(least + R"(,"steps":9223372036854775808})"),
            "steps: 9223372036854775808 is not an integer of 64 bits");
  EXPECT_EQ(errorOf(least + R"(,"avg_hrv":-1e400})"), "avg_hrv: -1e400 is too large for a 64-bit float");
}

TEST(DailyMetrics, thatAreNotFiniteCannotBeWritten) {
  DailyMetrics metrics = sample;
  metrics.avg_hrv = HrvInput::measured(std::nan(""));
  EXPECT_EQ(written(metrics), "avg_hrv: is not a finite number");
  metrics.sleep_hours = std::numeric_limits<double>::infinity();
  EXPECT_EQ(written(metrics), "sleep_hours: is not a finite number");
}

TEST(DailyMetrics, readBackWhatTheyWrite) {
  EXPECT_TRUE(rc::check("any finite metrics", [](std::int64_t posts, std::int64_t steps, bool isVolatile) {
    const auto anyFinite = rc::gen::map(rc::gen::arbitrary<std::uint64_t>(), [](std::uint64_t bits) {
      const auto value = std::bit_cast<double>(bits);
      return std::isfinite(value) ? value : 0;
    });
    DailyMetrics metrics{.date = "2024-\"ä\"",
                         .sleep_hours = *anyFinite,
                         .posts = posts,
                         .sentiment = *anyFinite,
                         .steps = steps,
                         .avg_hrv = *rc::gen::element(HrvInput::missing, HrvInput::notProvided,
                                                      HrvInput::measured(*anyFinite))};
    if (isVolatile) {
      metrics.sentiment_stdev = *anyFinite;
    }
    const auto json = JSONCoders::encoder.encode(metrics);
    RC_ASSERT(json.has_value());
    RC_ASSERT((JSONCoders::decoder.decode<DailyMetrics>(*json) == metrics));
  }));
}

}  // namespace
}  // namespace kestrel
