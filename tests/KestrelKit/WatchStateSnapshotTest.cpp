#include <KestrelKit/WatchStateSnapshot.h>
#include <KestrelKit/model/JSONCoders.h>
#include <support/RecordFields.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cstdint>
#include <limits>
#include <utility>

namespace kestrel {
namespace {

const Uuid delivery = uuidFromText("2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10").value();
const Instant noon = instantSinceReferenceDate(736'257'600);  // 2024-05-01 12:00:00 UTC

TEST(WatchStateSnapshot, readsAndWritesEachField) {
  const auto snapshot = testing::expectStrictFields<WatchStateSnapshot>(
      JSONCoders::decoder, JSONCoders::encoder,
      {{"version", "2", "2.5", "2.5 is not an integer of 64 bits"},
       {"deliveryID", R"("2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10")", "7", "expected text, found a number"},
       {"stateRaw", R"("Mixed Episode")", "7", "expected text, found a number"},
       {"confidencePercent", "-5", R"("80")", "expected an integer, found text"},
       {"generatedAt", R"("2024-05-01T12:00:00Z")", "736257600", "expected text, found a number"}});
  EXPECT_EQ(snapshot, (WatchStateSnapshot{.version = 2,
                                          .deliveryID = delivery,
                                          .stateRaw = "Mixed Episode",
                                          .confidencePercent = -5,
                                          .generatedAt = noon}));
}

TEST(WatchStateSnapshot, refusesADeliveryThatIsNoUuidAndAnInstantThatIsNone) {
  constexpr std::string_view json =
      R"({"version":1,"deliveryID":"ID","stateRaw":"Mania","confidencePercent":80,"generatedAt":"AT"})";
  const auto errorWith = [&](std::string_view identity, std::string_view instant) {
    std::string text(json);
    text.replace(text.find("AT\""), 2, instant);
    text.replace(text.find("ID\","), 2, identity);
    return testing::errorOf<WatchStateSnapshot>(JSONCoders::decoder, text);
  };
  constexpr std::string_view good = "2f1c0b7a-5d5e-4c1b-9a38-0d5c4e7b9f10";
  EXPECT_EQ(errorWith(good, "2024-05-01T12:00:00+02:00"), "none");
  EXPECT_TRUE(errorWith("{2f1c0b7a-5d5e-4c1b-9a38-0d5c4e7b9f10}", "2024-05-01T12:00:00Z")
                  .starts_with("deliveryID: "));
  EXPECT_TRUE(errorWith("", "2024-05-01T12:00:00Z").starts_with("deliveryID: "));
  EXPECT_TRUE(errorWith(good, "2024-05-01T12:00:00.5Z").starts_with("generatedAt: "));
  EXPECT_TRUE(errorWith(good, "2024-05-01").starts_with("generatedAt: "));
}

TEST(WatchStateSnapshot, writesItsFieldsInTheirOrder) {
  EXPECT_EQ(JSONCoders::encoder.encode(WatchStateSnapshot::of(KestrelState::mixedEpisode, 82, noon, delivery))
                .value(),
            R"({"version":1,"deliveryID":"2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10","stateRaw":"Mixed Episode",)"
            R"("confidencePercent":82,"generatedAt":"2024-05-01T12:00:00Z"})");
}

TEST(WatchStateSnapshot, aConfidenceOfMinusFiveIsZeroAndOneOf250Is100) {
  constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
  constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
  constexpr std::pair<std::int64_t, std::int64_t> rows[] = {
      {-5, 0}, {250, 100}, {least, 0}, {-1, 0}, {0, 0}, {1, 1}, {99, 99}, {100, 100}, {101, 100}, {most, 100},
  };
  for (const auto& [given, carried] : rows) {
    EXPECT_EQ(WatchStateSnapshot::of(KestrelState::mania, given, noon, delivery).confidencePercent, carried);
  }
}

TEST(WatchStateSnapshot, carriesEachStateByItsRawValueAndTheRestAsGiven) {
  for (const KestrelState state : KestrelState::allCases) {
    EXPECT_EQ(WatchStateSnapshot::of(state, 50, noon, delivery),
              (WatchStateSnapshot{.version = 1,
                                  .deliveryID = delivery,
                                  .stateRaw = std::string(state.rawValue()),
                                  .confidencePercent = 50,
                                  .generatedAt = noon}));
  }
}

TEST(WatchStateSnapshot, differsWhenOneFieldDoes) {
  const auto snapshot = WatchStateSnapshot::of(KestrelState::mania, 50, noon, delivery);
  EXPECT_EQ(snapshot, WatchStateSnapshot(snapshot));
  auto other = snapshot;
  other.version = 2;
  EXPECT_NE(snapshot, other);
  other = snapshot;
  other.deliveryID = Uuid();
  EXPECT_NE(snapshot, other);
  other = snapshot;
  other.stateRaw = "mania";
  EXPECT_NE(snapshot, other);
  other = snapshot;
  ++other.confidencePercent;
  EXPECT_NE(snapshot, other);
  other = snapshot;
  other.generatedAt += Seconds(0.5);
  EXPECT_NE(snapshot, other);
}

TEST(WatchStateSnapshot, comesBackFromJsonAsItWasInWholeSeconds) {
  rc::check([](std::int64_t version, std::int64_t confidence, std::int32_t at) {
    const auto raw = *rc::gen::container<std::string>(rc::gen::inRange(' ', '\x7f'));
    const WatchStateSnapshot snapshot{.version = version,
                                      .deliveryID = delivery,
                                      .stateRaw = raw,
                                      .confidencePercent = confidence,
                                      .generatedAt = instantSinceReferenceDate(at)};
    const auto json = JSONCoders::encoder.encode(snapshot);
    RC_ASSERT(json.has_value());
    RC_ASSERT(JSONCoders::decoder.decode<WatchStateSnapshot>(*json).value() == snapshot);
  });
}

}  // namespace
}  // namespace kestrel
