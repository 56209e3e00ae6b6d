#include <KestrelKit/formats/DashboardSnapshot.h>
#include <KestrelKit/foundation/JsonError.h>
#include <KestrelKit/model/JSONCoders.h>
#include <support/RandomSnapshots.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

using Dropped = std::vector<JsonError>;

// Every field, in order.
const std::string everyField =
    R"({"essential":{"viz":{"summary":{"total_posts":7,"total_days":2,"avg_sentiment":0.25},"daily":[{"date":")"
    R"(2024-05-01","posts":7,"sentiment":0.5,"sentiment_stdev":0.125,"reply_count":1,"quote_count":2,)"
    R"("repost_count":3,"like_count":4,"follow_count":5,"mention_count":6,"link_count":8,"hashtag_count":9,)"
    R"("avg_post_length":81.5,"absolutist_rate":0.03,"late_night_posts":10,"posts_by_hour":[0,7]}]},)"
    R"("communication":{"daily_sentiment":[{"date":"2024-05-01","value":0.50}],"daily_absolutist":{"a":1e400}}},)"
    R"("health":{"health":[{"date":"2024-05-01","steps":4000,"sleep_hours":7.5,"avg_hrv":41,"hrv_avg":42.5,)"
    R"("avg_heart_rate":61,"heart_rate_avg":62,"spo2_avg":0.97,"source":"watch"}],"onDeviceAggregates":[)"
    R"({"date":"2024-05-01","dataType":"photo_count_daily","value":3,"unit":"count",)"
    R"("sourceType":"photo_activity","sourceInstanceKey":"phone-1","capturedAt":"2024-05-01T20:00:00Z",)"
    R"("displayName":"Photos","lastSuccessfulAt":"2024-05-01T20:00:01Z",)"
    R"("freshnessDeadline":"2024-05-02T20:00:00Z","stale":false,"classifierStatus":"unevaluated"}]},)"
    R"("optional":{"correlation":{"summary":{"total_overlapping_days":30,"high_risk_days":2,"correlations":)"
    R"({"posts_vs_sleep":-0.5,"sentiment_vs_sleep":0.25,"steps_vs_posts":0,"steps_vs_sentiment":1}}}}})";

DashboardSnapshot decoded(std::string_view json, Dropped* dropped = nullptr) {
  const auto snapshot = JSONCoders::decoder.decode<DashboardSnapshot>(json, dropped);
  EXPECT_TRUE(snapshot) << snapshot.error().text();
  return snapshot.value_or(DashboardSnapshot{});
}

std::string errorOf(std::string_view json) {
  const auto snapshot = JSONCoders::decoder.decode<DashboardSnapshot>(json);
  return snapshot ? "none" : snapshot.error().text();
}

std::vector<VizDay> daysOf(std::string_view daily, Dropped* dropped = nullptr) {
  const auto snapshot =
      decoded(std::string(R"({"essential":{"viz":{"daily":)").append(daily).append("}}}"), dropped);
  return snapshot.essential.value().viz.value().dailyRaw.value().elements;
}

TEST(DashboardSnapshot, readsAndWritesEachField) {
  const DashboardSnapshot snapshot = decoded(everyField);
  EXPECT_EQ(JSONCoders::encoder.encode(snapshot), everyField);
  const VizTier viz = snapshot.essential.value().viz.value();
  EXPECT_EQ(viz.summary, (VizSummary{.totalPosts = 7, .totalDays = 2, .avgSentiment = 0.25}));
  EXPECT_EQ(viz.dailyRaw.value().elements,
            (std::vector<VizDay>{{.date = "2024-05-01",
                                  .posts = 7,
                                  .avgSentiment = 0.5,
                                  .sentimentStdev = 0.125,
                                  .replyCount = 1,
                                  .quoteCount = 2,
                                  .repostCount = 3,
                                  .likeCount = 4,
                                  .followCount = 5,
                                  .mentionCount = 6,
                                  .linkCount = 8,
                                  .hashtagCount = 9,
                                  .avgPostLength = 81.5,
                                  .absolutistRate = 0.03,
                                  .lateNightPosts = 10,
                                  .postsByHour = {{0, 7}}}}));
  const HealthTier health = snapshot.health.value();
  EXPECT_EQ(health.healthRaw.value().elements, (std::vector<HealthDay>{{.date = "2024-05-01",
                                                                        .steps = 4000,
                                                                        .sleepHours = 7.5,
                                                                        .avgHrv = 41,
                                                                        .hrvAvg = 42.5,
                                                                        .avgHeartRate = 61,
                                                                        .heartRateAvg = 62,
                                                                        .spo2Avg = 0.97,
                                                                        .source = "watch"}}));
  EXPECT_EQ(health.onDeviceAggregatesRaw.value().elements,
            (std::vector<OnDeviceAggregate>{{.date = "2024-05-01",
                                             .dataType = "photo_count_daily",
                                             .value = 3,
                                             .unit = "count",
                                             .sourceType = "photo_activity",
                                             .sourceInstanceKey = "phone-1",
                                             .capturedAt = "2024-05-01T20:00:00Z",
                                             .displayName = "Photos",
                                             .lastSuccessfulAt = "2024-05-01T20:00:01Z",
                                             .freshnessDeadline = "2024-05-02T20:00:00Z",
                                             .stale = false,
                                             .classifierStatus = "unevaluated"}}));
  EXPECT_EQ(snapshot.optional.value().correlation.value().summary,
            (CorrelationSummary{.totalOverlappingDays = 30,
                                .highRiskDays = 2,
                                .correlations = CorrelationCoefficients{.postsVsSleep = -0.5,
                                                                        .sentimentVsSleep = 0.25,
                                                                        .stepsVsPosts = 0,
                                                                        .stepsVsSentiment = 1}}));
}

// An empty JSON object decodes to a snapshot with all three tiers absent.
TEST(DashboardSnapshot, hasNoTiersOfAnEmptyObject) {
  EXPECT_EQ(decoded("{}"), DashboardSnapshot{});
  EXPECT_EQ(decoded(R"({"essential":null,"health":null,"optional":null})"), DashboardSnapshot{});
  EXPECT_EQ(JSONCoders::encoder.encode(DashboardSnapshot{}), "{}");
  EXPECT_EQ(errorOf("null"), "expected an object, found null");
}

TEST(DashboardSnapshot, keepsAnEmptyTierAsOne) {
  const std::string json =
      R"({"essential":{"viz":{"summary":{},"daily":[]},"communication":{}},"health":{},)"
      R"("optional":{"correlation":{"summary":{"correlations":{}}}}})";
  EXPECT_EQ(JSONCoders::encoder.encode(decoded(json)), json);
}

TEST(DashboardSnapshot, keepsTheValidDayBesideOneWithoutADate) {
  Dropped dropped;
  EXPECT_EQ(daysOf(R"([{"posts":1},{"date":"2024-05-02","posts":2}])", &dropped),
            (std::vector<VizDay>{{.date = "2024-05-02", .posts = 2}}));
  EXPECT_EQ(dropped, (Dropped{{"essential.viz.daily[0].date", "is missing"}}));
}

TEST(DashboardSnapshot, keepsTheOtherDaysBesideANumber) {
  Dropped dropped;
  EXPECT_EQ(daysOf(R"([{"date":"a"},7,{"date":"b"}])", &dropped),
            (std::vector<VizDay>{{.date = "a"}, {.date = "b"}}));
  EXPECT_EQ(dropped, (Dropped{{"essential.viz.daily[1]", "expected an object, found a number"}}));
}

TEST(DashboardSnapshot, failsWhoseDailyIsAnObject) {
  EXPECT_EQ(errorOf(R"({"essential":{"viz":{"daily":{"date":"a"}}}})"),
            "essential.viz.daily: expected a list, found an object");
}

TEST(DashboardSnapshot, keepsAHealthDayWithTheSecondSpellingAlone) {
  const auto snapshot = decoded(R"({"health":{"health":[{"date":"a","hrv_avg":40.5}]}})");
  const HealthDay day = snapshot.health.value().healthRaw.value().elements.at(0);
  EXPECT_EQ(day.avgHrv, std::nullopt);
  EXPECT_EQ(day.hrvAvg, 40.5);
}

TEST(OnDeviceAggregate, hasTheIdentityOfItsSourceInstanceDayAndDataType) {
  OnDeviceAggregate first{.date = "2024-05-01", .dataType = "steps", .sourceInstanceKey = "phone"};
  OnDeviceAggregate second = first;
  second.value = 2;
  second.sourceType = "other";
  EXPECT_EQ(first.id(), "phone|2024-05-01|steps");
  EXPECT_EQ(second.id(), first.id());
  second.date = "2024-05-02";
  EXPECT_NE(second.id(), first.id());
}

// ---- Wrong values, of each type

constexpr std::pair<std::string_view, std::string_view> valuesOfEachType[] = {
    {"{}", "an object"},  {"[]", "a list"},     {R"("x")", "text"},
    {"1.5", "a number"},  {"true", "a boolean"}, {"null", "null"},
};

struct FieldForm {
  std::string_view key;
  std::string_view expected;  // what a message calls its type
  bool isOptional = true;
};

/// A form of each field of a record, and a record that has all of them.
struct RecordForm {
  std::string_view list;  // the path of the list that holds it; empty for a tier
  std::string_view before;
  std::string_view after;  // what the record stands between
  std::vector<FieldForm> fields;
};

/// A value of the field's type.
std::string_view fitting(const FieldForm& field) {
  return field.expected == "text"        ? R"("x")"
         : field.expected == "a list"    ? "[]"
         : field.expected == "an object" ? "{}"
         : field.expected == "a boolean" ? "true"
                                         : "1";
}

/// Calls `judge(record, what is wrong with it)` for the record of `form` with each of its fields wrong in each
/// way; nothing is wrong where the text is empty.
template <class Judge>
void forEachWrongRecord(const RecordForm& form, const Judge& judge) {
  const auto withField = [&](std::size_t changed, std::optional<std::string_view> value) {
    std::string json;
    for (std::size_t index = 0; index < form.fields.size(); ++index) {
      if (index != changed || value) {
        json.append(json.empty() ? "{\"" : ",\"").append(form.fields[index].key).append("\":");
        json.append(index == changed ? *value : fitting(form.fields[index]));
      }
    }
    return json.empty() ? std::string("{}") : json + '}';
  };
  for (std::size_t index = 0; index < form.fields.size(); ++index) {
    const FieldForm& field = form.fields[index];
    const std::string key(field.key);
    judge(withField(index, std::nullopt), field.isOptional ? "" : key + ": is missing");
    for (const auto& [value, found] : valuesOfEachType) {
      if (found == field.expected || (found == "null" && field.isOptional)) {
        judge(withField(index, value), "");
      } else if (found == "a number" && field.expected == "an integer") {
        judge(withField(index, value), key + ": 1.5 is not an integer of 64 bits");
      } else {
        judge(withField(index, value), key + ": expected " + std::string(field.expected) + ", found " +
                                           std::string(found));
      }
    }
    const auto refusesLiterals = [&](std::initializer_list<std::string_view> literals, std::string_view why) {
      for (const std::string_view literal : literals) {
        judge(withField(index, literal), key + ": " + std::string(literal) + std::string(why));
      }
    };
    if (field.expected == "an integer") {
      refusesLiterals({"9223372036854775808", "-9223372036854775809", "1e19", "1e400"},
                      " is not an integer of 64 bits");
      judge(withField(index, "9223372036854775807"), "");
      judge(withField(index, "5e0"), "");
    } else if (field.expected == "a number") {
      refusesLiterals({"1e400", "-1e400"}, " is too large for a 64-bit float");
      judge(withField(index, "1e308"), "");
    }
  }
}

const RecordForm lossyElements[] = {
    {"essential.viz.daily",
     R"({"essential":{"viz":{"daily":[)",
     "]}}}",
     {{"date", "text", false},          {"posts", "an integer"},         {"sentiment", "a number"},
      {"sentiment_stdev", "a number"},  {"reply_count", "an integer"},   {"quote_count", "an integer"},
      {"repost_count", "an integer"},   {"like_count", "an integer"},    {"follow_count", "an integer"},
      {"mention_count", "an integer"},  {"link_count", "an integer"},    {"hashtag_count", "an integer"},
      {"avg_post_length", "a number"},  {"absolutist_rate", "a number"}, {"late_night_posts", "an integer"},
      {"posts_by_hour", "a list"}}},
    {"health.health",
     R"({"health":{"health":[)",
     "]}}",
     {{"date", "text", false},       {"steps", "an integer"},        {"sleep_hours", "a number"},
      {"avg_hrv", "a number"},       {"hrv_avg", "a number"},        {"avg_heart_rate", "a number"},
      {"heart_rate_avg", "a number"}, {"spo2_avg", "a number"},       {"source", "text"}}},
    {"health.onDeviceAggregates",
     R"({"health":{"onDeviceAggregates":[)",
     "]}}",
     {{"date", "text", false},       {"dataType", "text", false},          {"value", "a number", false},
      {"unit", "text", false},       {"sourceType", "text", false},        {"sourceInstanceKey", "text", false},
      {"capturedAt", "text"},        {"displayName", "text"},              {"lastSuccessfulAt", "text"},
      {"freshnessDeadline", "text"}, {"stale", "a boolean"},               {"classifierStatus", "text"}}},
};

const RecordForm tiers[] = {
    {"", "", "", {{"essential", "an object"}, {"health", "an object"}, {"optional", "an object"}}},
    {"essential.", R"({"essential":)", "}", {{"viz", "an object"}, {"communication", "an object"}}},
    {"essential.viz.", R"({"essential":{"viz":)", "}}", {{"summary", "an object"}, {"daily", "a list"}}},
    {"essential.viz.summary.",
     R"({"essential":{"viz":{"summary":)",
     "}}}",
     {{"total_posts", "an integer"}, {"total_days", "an integer"}, {"avg_sentiment", "a number"}}},
    {"health.", R"({"health":)", "}", {{"health", "a list"}, {"onDeviceAggregates", "a list"}}},
    {"optional.", R"({"optional":)", "}", {{"correlation", "an object"}}},
    {"optional.correlation.", R"({"optional":{"correlation":)", "}}", {{"summary", "an object"}}},
    {"optional.correlation.summary.",
     R"({"optional":{"correlation":{"summary":)",
     "}}}",
     {{"total_overlapping_days", "an integer"}, {"high_risk_days", "an integer"}, {"correlations", "an object"}}},
    {"optional.correlation.summary.correlations.",
     R"({"optional":{"correlation":{"summary":{"correlations":)",
     "}}}}",
     {{"posts_vs_sleep", "a number"},
      {"sentiment_vs_sleep", "a number"},
      {"steps_vs_posts", "a number"},
      {"steps_vs_sentiment", "a number"}}},
};

TEST(DashboardSnapshot, failsAsAWholeForAWrongFieldOfATier) {
  for (const RecordForm& tier : tiers) {
    forEachWrongRecord(tier, [&](const std::string& record, const std::string& wrong) {
      EXPECT_EQ(errorOf(std::string(tier.before).append(record).append(tier.after)),
                wrong.empty() ? "none" : std::string(tier.list) + wrong);
    });
  }
}

TEST(DashboardSnapshot, losesOfALossyListExactlyTheElementThatIsWrong) {
  for (const RecordForm& form : lossyElements) {
    std::string good = "{";
    for (const FieldForm& field : form.fields) {
      good.append(good == "{" ? "\"" : ",\"").append(field.key).append("\":").append(fitting(field));
    }
    good += '}';
    const auto document = [&](std::string_view between) {
      return std::string(form.before).append(good).append(between).append(good).append(form.after);
    };
    const std::string kept = JSONCoders::encoder.encode(decoded(document(","))).value();
    EXPECT_EQ(kept, document(","));
    const auto expectDropped = [&](const std::string& element, const std::string& wrong) {
      Dropped dropped;
      const DashboardSnapshot snapshot = decoded(document("," + element + ","), &dropped);
      if (wrong.empty()) {
        EXPECT_TRUE(dropped.empty()) << element;
        return;
      }
      ASSERT_EQ(dropped.size(), 1U) << element;
      EXPECT_EQ(dropped.front().text(), std::string(form.list) + "[1]" + wrong);
      EXPECT_EQ(JSONCoders::encoder.encode(snapshot), kept) << element;
      EXPECT_EQ(decoded(document("," + element + ",")), snapshot) << "without a list to fill";
    };
    forEachWrongRecord(form, [&](const std::string& record, const std::string& wrong) {
      expectDropped(record, wrong.empty() ? "" : '.' + wrong);
    });
    for (const auto& [value, found] : valuesOfEachType) {
      if (found != "an object") {
        expectDropped(std::string(value), ": expected an object, found " + std::string(found));
      }
    }
  }
}

TEST(DashboardSnapshot, namesTheHourThatIsWrong) {
  Dropped dropped;
  EXPECT_TRUE(daysOf(R"([{"date":"a","posts_by_hour":[1,2.5]},{"date":"b","posts_by_hour":[1,[]]}])", &dropped)
                  .empty());
  EXPECT_EQ(dropped, (Dropped{{"essential.viz.daily[0].posts_by_hour[1]", "2.5 is not an integer of 64 bits"},
                              {"essential.viz.daily[1].posts_by_hour[1]", "expected an integer, found a list"}}));
}

TEST(DashboardSnapshot, isRefusedForASyntaxErrorAnywhere) {
  for (const std::string_view json : {
           R"({"essential":{"viz":{"daily":[{"posts":tru}]}}})",
           R"({"essential":{"viz":{"daily":[7,01]}}})",
           R"({"essential":{"viz":{"daily":[{"date":7,"ignored":[1,]}]}}})",
           R"({"ignored":{"a":"\x"}})",
           R"({"ignored":"\ud800"})",
           R"({"essential":{"communication":{"daily_sentiment":[1 2]}}})",
           R"({"health":{"onDeviceAggregates":[null,}})",
           "{\"ignored\":\"\xFF\"}",
           "{}}",
       }) {
    Dropped dropped;
    const auto snapshot = JSONCoders::decoder.decode<DashboardSnapshot>(json, &dropped);
    ASSERT_FALSE(snapshot) << json;
    EXPECT_TRUE(snapshot.error().message.starts_with("the document ")) << snapshot.error().text();
    EXPECT_TRUE(dropped.empty());
  }
  // Every document that ends too early.
  for (std::size_t size = 0; size < everyField.size(); ++size) {
    EXPECT_NE(errorOf(std::string_view(everyField).substr(0, size)), "none") << size;
  }
}

TEST(CommunicationTier, keepsTheJsonThatItCameWith) {
  const std::pair<std::string_view, std::string_view> rows[] = {
      {"[ ]", "[]"},
      {" {\t\"a b\" :\r\n[ 1 , 2 ] } ", R"({"a b":[1,2]})"},
      {R"("a  \" , : b")", R"("a  \" , : b")"},
      {R"("\u00e9\/ ")", R"("\u00e9\/ ")"},
      {R"({"b":1,"a":2,"b":3})", R"({"b":1,"a":2,"b":3})"},
      {"1.50E+03", "1.50E+03"},
      {"123456789012345678901234567890", "123456789012345678901234567890"},
      {"1e400", "1e400"},
      {"-0", "-0"},
      {"false", "false"},
      {"[null , true]", "[null,true]"},
  };
  for (const auto& [json, kept] : rows) {
    for (const std::string_view key : {"daily_sentiment", "daily_absolutist"}) {
      const auto document = [&](std::string_view value) {
        return std::string(R"({"essential":{"communication":{")").append(key).append("\":").append(value) + "}}}";
      };
      EXPECT_EQ(JSONCoders::encoder.encode(decoded(document(json))), document(kept));
    }
  }
  const std::string nothing = R"({"essential":{"communication":{}}})";
  EXPECT_EQ(JSONCoders::encoder.encode(decoded(R"({"essential":{"communication":{"daily_sentiment":null}}})")),
            nothing);
}

TEST(DashboardSnapshot, readsBackWhatItWrites) {
  EXPECT_TRUE(rc::check("any snapshot", [](const DashboardSnapshot& snapshot) {
    const auto json = JSONCoders::encoder.encode(snapshot);
    RC_ASSERT(json.has_value());
    Dropped dropped;
    const auto back = JSONCoders::decoder.decode<DashboardSnapshot>(*json, &dropped);
    RC_ASSERT((back == snapshot));
    RC_ASSERT(dropped.empty());
    RC_ASSERT((JSONCoders::encoder.encode(*back) == json));
  }));
}

}  // namespace
}  // namespace kestrel
