#include <KestrelTrackerMac/reading/MessagesAggregateBuilder.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <rapidcheck.h>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <limits>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace kestrel::companion {

void PrintTo(const MessageDayAggregate& day, std::ostream* out) {
  *out << day.date << " sent " << day.sentCount << " received " << day.receivedCount << " conversations "
       << day.activeConversationCount << " late " << day.lateNightCount << " length ";
  if (day.averageMessageLength) {
    *out << *day.averageMessageLength;
  } else {
    *out << "none";
  }
}

namespace {

using namespace std::chrono;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto most = std::numeric_limits<std::int64_t>::max();

MessagesAggregateBuilder builderIn(std::string_view zone) {
  return MessagesAggregateBuilder(Calendar::gregorian(TimeZone::named(zone).value()));
}

Instant at(sys_time<milliseconds> time) { return ReferenceClock::fromSystem(time); }

MessageActivitySample received(sys_time<milliseconds> time, std::int64_t conversation = 1,
                               std::optional<std::int64_t> length = {}) {
  return {.timestamp = at(time), .isFromMe = false, .conversationID = conversation, .textLength = length};
}

const sys_days march5 = 2025y / March / 5;

TEST(MessagesAggregateBuilder, withoutSamplesTheListIsEmpty) {
  EXPECT_THAT(builderIn("UTC").daily(), IsEmpty());
}

TEST(MessagesAggregateBuilder, countsSentAndReceivedApart) {
  auto builder = builderIn("UTC");
  auto sent = received(march5 + 12h);
  sent.isFromMe = true;
  builder.add(sent);
  builder.add(sent);
  builder.add(received(march5 + 12h));
  EXPECT_THAT(builder.daily(), ElementsAre(MessageDayAggregate{.date = "2025-03-05",
                                                               .sentCount = 2,
                                                               .receivedCount = 1,
                                                               .activeConversationCount = 1,
                                                               .lateNightCount = 0,
                                                               .averageMessageLength = {}}));
}

TEST(MessagesAggregateBuilder, countsAConversationOnceADayAndOnEachDay) {
  auto builder = builderIn("UTC");
  builder.add(received(march5 + 9h, 7));
  builder.add(received(march5 + 21h, 7));
  builder.add(received(march5 + 24h, 7));
  builder.add(received(march5 + 25h, -3));
  const auto daily = builder.daily();
  ASSERT_EQ(daily.size(), 2U);
  EXPECT_EQ(daily[0].activeConversationCount, 1);
  EXPECT_EQ(daily[1].activeConversationCount, 2);
}

TEST(MessagesAggregateBuilder, countsLateNightFromMidnightUpTo0459) {
  const auto lateNight = [](sys_time<milliseconds> time) {
    auto builder = builderIn("UTC");
    builder.add(received(time));
    return builder.daily().at(0).lateNightCount;
  };
  EXPECT_EQ(lateNight(march5 + 0h), 1);
  EXPECT_EQ(lateNight(march5 + 4h + 59min), 1);
  EXPECT_EQ(lateNight(march5 + 4h + 59min + 59s + 999ms), 1);
  EXPECT_EQ(lateNight(march5 + 5h), 0);
  EXPECT_EQ(lateNight(march5 + 23h + 59min), 0);
  EXPECT_EQ(lateNight(march5 - 1ms), 0);
}

TEST(MessagesAggregateBuilder, lateNightEndsBetweenNeighbouringFloats) {
  auto builder = builderIn("UTC");
  const Instant five = at(march5 + 5h);
  const Instant justBefore(Seconds(std::nextafter(secondsSinceReferenceDate(five), 0)));
  builder.add({.timestamp = five, .isFromMe = false, .conversationID = 1, .textLength = {}});
  EXPECT_EQ(builder.daily().at(0).lateNightCount, 0);
  builder.add({.timestamp = justBefore, .isFromMe = false, .conversationID = 1, .textLength = {}});
  EXPECT_EQ(builder.daily().at(0).lateNightCount, 1);
}

TEST(MessagesAggregateBuilder, averagesTheTextsThatAreNotEmpty) {
  auto builder = builderIn("UTC");
  builder.add(received(march5 + 12h, 1, 3));
  builder.add(received(march5 + 12h, 1, 0));
  builder.add(received(march5 + 12h, 1, std::nullopt));
  builder.add(received(march5 + 12h, 1, -1));
  builder.add(received(march5 + 12h, 1, 4));
  EXPECT_EQ(builder.daily().at(0).averageMessageLength, 3.5);
}

TEST(MessagesAggregateBuilder, dayWithoutAnyTextHasNoAverage) {
  auto builder = builderIn("UTC");
  builder.add(received(march5 + 12h, 1, 0));
  builder.add(received(march5 + 12h, 1, std::nullopt));
  EXPECT_EQ(builder.daily().at(0).averageMessageLength, std::nullopt);
  builder.add(received(march5 + 12h, 1, 1));
  EXPECT_EQ(builder.daily().at(0).averageMessageLength, 1.0);
}

TEST(MessagesAggregateBuilder, keysArePaddedWithZerosAndSorted) {
  auto builder = builderIn("UTC");
  builder.add(received(march5));
  builder.add(received(sys_days{2025y / January / 1}));
  builder.add(received(sys_days{2024y / December / 31}));
  std::vector<std::string> keys;
  for (const auto& day : builder.daily()) {
    keys.push_back(day.date);
  }
  EXPECT_THAT(keys, ElementsAre("2024-12-31", "2025-01-01", "2025-03-05"));
}

TEST(MessagesAggregateBuilder, theZoneDecidesTheDay) {
  auto builder = builderIn("Asia/Tokyo");
  builder.add(received(march5 + 23h + 30min));
  EXPECT_EQ(builder.daily().at(0).date, "2025-03-06");
  EXPECT_EQ(builder.daily().at(0).lateNightCount, 0);  // 08:30 in Tokyo
}

TEST(MessagesAggregateBuilder, anotherCalendarGivesItsOwnNumbers) {
  MessagesAggregateBuilder builder(Calendar::ofLocale("th_TH", TimeZone::utc()));
  builder.add(received(march5));
  EXPECT_EQ(builder.daily().at(0).date, "2568-03-05");
}

TEST(MessagesAggregateBuilder, ignoresASampleWhoseTimeHasNoName) {
  auto builder = builderIn("UTC");
  for (const double time : {HUGE_VAL, -HUGE_VAL, std::numeric_limits<double>::quiet_NaN(), 1e300}) {
    builder.add({.timestamp = instantSinceReferenceDate(time),
                 .isFromMe = true,
                 .conversationID = 1,
                 .textLength = 1});
  }
  EXPECT_THAT(builder.daily(), IsEmpty());
  builder.add(received(march5));
  builder.add({.timestamp = instantSinceReferenceDate(1e300),
               .isFromMe = false,
               .conversationID = 1,
               .textLength = {}});
  EXPECT_EQ(builder.daily().at(0).receivedCount, 1);
}

TEST(MessagesAggregateBuilder, countsBothPassesOfTheHourThatComesTwice) {
  auto builder = builderIn("Europe/Berlin");
  builder.add(received(sys_days{2025y / October / 26} + 30min));       // 02:30 in summer time
  builder.add(received(sys_days{2025y / October / 26} + 90min));       // 02:30 in winter time
  builder.add(received(sys_days{2025y / October / 26} + 3h + 59min));  // 04:59
  builder.add(received(sys_days{2025y / October / 26} + 4h));          // 05:00
  EXPECT_EQ(builder.daily().at(0).lateNightCount, 3);
}

TEST(MessagesAggregateBuilderDeathTest, totalTextLengthBeyond64BitsIsAProgrammingError) {
  auto builder = builderIn("UTC");
  builder.add(received(march5, 1, most - 1));
  builder.add(received(march5, 1, 1));
  EXPECT_EQ(builder.daily().at(0).averageMessageLength, static_cast<double>(most) / 2);
  EXPECT_DEATH(builder.add(received(march5, 1, 1)), "^programming error: the sum of the text lengths lies beyond 64 bits\n");
}

TEST(MessagesAggregateBuilderDeathTest, everyCountBeyond64BitsIsAProgrammingError) {
  using Day = MessagesAggregateBuilder::DayAccumulator;
  for (const auto member : {&Day::receivedCount, &Day::lateNightCount, &Day::textSampleCount}) {
    Day day;
    day.*member = most - 1;
    day.add(received(march5, 1, 1), /*hour=*/4);
    EXPECT_EQ(day.*member, most);
    EXPECT_DEATH(day.add(received(march5, 1, 1), /*hour=*/4), "a count of messages lies beyond 64 bits");
  }
  Day day;
  day.sentCount = most;
  auto sent = received(march5);
  sent.isFromMe = true;
  EXPECT_DEATH(day.add(sent, /*hour=*/12), "a count of messages lies beyond 64 bits");
}

TEST(MessagesAggregateBuilder, agreesWithAPlainCountOfRandomSamples) {
  EXPECT_TRUE(rc::check([] {
    const auto zone =
        *rc::gen::element<std::string>("UTC", "America/St_Johns", "Europe/Berlin", "Pacific/Apia");
    setenv("TZ", zone.c_str(), 1);
    tzset();
    auto builder = builderIn(zone);
    struct Plain {
      std::int64_t sent = 0, received = 0, late = 0, length = 0, texts = 0;
      std::set<std::int64_t> conversations;
    };
    std::map<std::string, Plain> plain;
    // Some two weeks around each of two clock changes, so that days collect several samples.
    const auto samples =
        *rc::gen::container<std::vector<std::tuple<bool, std::int64_t, bool, std::int64_t, int>>>(
            rc::gen::tuple(rc::gen::arbitrary<bool>(), rc::gen::inRange<std::int64_t>(0, 1'200'000),
                           rc::gen::arbitrary<bool>(), rc::gen::inRange<std::int64_t>(-3, 3),
                           rc::gen::inRange(-2, 5)));
    for (const auto& [spring, second, mine, conversation, length] : samples) {
      const std::time_t time = (spring ? 1'742'700'000 : 1'760'900'000) + second;
      builder.add({.timestamp = at(sys_seconds(seconds(time))),
                   .isFromMe = mine,
                   .conversationID = conversation,
                   .textLength = length == -2 ? std::nullopt : std::optional<std::int64_t>(length)});
      std::tm broken{};
      localtime_r(&time, &broken);
      char key[32];
      std::strftime(key, sizeof key, "%Y-%m-%d", &broken);
      Plain& day = plain[key];
      ++(mine ? day.sent : day.received);
      day.conversations.insert(conversation);
      day.late += broken.tm_hour < 5;
      day.length += std::max(length, 0);
      day.texts += length > 0;
    }
    std::vector<MessageDayAggregate> expected;
    for (const auto& [key, day] : plain) {
      expected.push_back({.date = key,
                          .sentCount = day.sent,
                          .receivedCount = day.received,
                          .activeConversationCount = static_cast<std::int64_t>(day.conversations.size()),
                          .lateNightCount = day.late,
                          .averageMessageLength = {}});
      if (day.texts > 0) {
        expected.back().averageMessageLength =
            static_cast<double>(day.length) / static_cast<double>(day.texts);
      }
    }
    RC_ASSERT(builder.daily() == expected);
  }));
}

}  // namespace
}  // namespace kestrel::companion
