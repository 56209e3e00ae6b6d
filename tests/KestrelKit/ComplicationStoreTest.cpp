#include <KestrelKit/ComplicationStore.h>
#include <KestrelKit/WidgetTimelines.h>
#include <KestrelKit/foundation/MemoryDefaults.h>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <utility>

namespace kestrel {
namespace {

using enum ComplicationStore::LatestState;

const Uuid delivery = uuidFromText("2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10").value();
const Instant noon = instantSinceReferenceDate(736'257'600.25);
const WatchStateSnapshot mania = WatchStateSnapshot::of(KestrelState::mania, 82, noon, delivery);

WatchStateSnapshot generated(Instant at) {
  auto snapshot = mania;
  snapshot.generatedAt = at;
  return snapshot;
}

class ComplicationStoreTest : public ::testing::Test {
 protected:
  ComplicationStoreTest() {
    WidgetTimelines::setReload([this] { ++reloads_; });
  }
  ~ComplicationStoreTest() override { WidgetTimelines::setReload({}); }

  void keep(std::string_view key, PropertyValue value) {
    const SharedDefaults::Change changes[] = {{key, std::move(value)}};
    ASSERT_TRUE(store_.defaults->write(changes));
  }

  ComplicationStore store_{std::make_shared<MemoryDefaults>()};
  int reloads_ = 0;
};

TEST_F(ComplicationStoreTest, hasTheKeysThatItsReadersKnow) {
  EXPECT_EQ(store_.key, "complication.latestState");
  EXPECT_EQ(store_.phoneSnapshotKey, "complication.phoneStateSnapshot.v1");
  EXPECT_EQ(store_.phoneSnapshotReceivedAtKey, "complication.phoneStateReceivedAt.v1");
  EXPECT_EQ(ComplicationStore::widgetKind, "KestrelTrackerComplication");
}

TEST_F(ComplicationStoreTest, nothingIsStoredAtFirst) {
  EXPECT_EQ(store_.latestState(), KestrelState::unknown);
  EXPECT_EQ(store_.phoneSnapshot(), std::nullopt);
  EXPECT_EQ(store_.phoneSnapshotReceivedAt(), std::nullopt);
}

TEST_F(ComplicationStoreTest, keepsTheLatestStateByItsDisplayTextAndReloadsTheTimelines) {
  int expected = 0;
  for (const KestrelState state : KestrelState::allCases) {
    store_.setLatestState(state);
    EXPECT_EQ(store_.latestState(), state);
    EXPECT_EQ(store_.defaults->get<std::string>("complication.latestState"), state.rawValue());
    EXPECT_EQ(reloads_, ++expected);
  }
}

TEST_F(ComplicationStoreTest, anUnrecognisedTextReadsThroughTheLenientParse) {
  const std::pair<const char*, KestrelState> rows[] = {
      {"Hypomanic", KestrelState::hypomania}, {"Manic", KestrelState::mania},
      {"Mania", KestrelState::mania},         {"mania", KestrelState::unknown},
      {"Serene", KestrelState::unknown},      {"", KestrelState::unknown},
  };
  for (const auto& [text, state] : rows) {
    keep("complication.latestState", text);
    EXPECT_EQ(store_.latestState(), state) << text;
  }
  EXPECT_EQ(reloads_, 0);
}

TEST_F(ComplicationStoreTest, aLatestStateThatIsNoTextIsUnknown) {
  keep("complication.latestState", Data{"Mania"});
  EXPECT_EQ(store_.latestState(), KestrelState::unknown);
}

TEST_F(ComplicationStoreTest, storesAPhoneSnapshotWithItsInstantAsANumber) {
  EXPECT_TRUE(store_.storePhoneSnapshot(mania, noon + Seconds(2.5), stays));
  EXPECT_EQ(store_.phoneSnapshot(), mania) << "fractions of seconds are kept";
  EXPECT_EQ(store_.phoneSnapshotReceivedAt(), noon + Seconds(2.5));
  EXPECT_EQ(store_.defaults->get<Data>("complication.phoneStateSnapshot.v1"),
            Data{R"({"version":1,"deliveryID":"2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10","stateRaw":"Mania",)"
                 R"("confidencePercent":82,"generatedAt":736257600.25})"});
  EXPECT_EQ(store_.latestState(), KestrelState::unknown);
  EXPECT_EQ(reloads_, 0);
}

TEST_F(ComplicationStoreTest, aPhoneSnapshotUpdatesTheLatestStateWhereAskedTo) {
  auto snapshot = mania;
  snapshot.stateRaw = "Hypomanic";
  EXPECT_TRUE(store_.storePhoneSnapshot(snapshot, noon, isUpdated));
  EXPECT_EQ(store_.latestState(), KestrelState::hypomania);
  EXPECT_EQ(store_.defaults->get<std::string>("complication.latestState"), "Hypomania");
  EXPECT_EQ(reloads_, 1);
  snapshot.stateRaw = "Serene";
  EXPECT_TRUE(store_.storePhoneSnapshot(snapshot, noon, isUpdated));
  EXPECT_EQ(store_.defaults->get<std::string>("complication.latestState"), "Unknown");
  EXPECT_EQ(reloads_, 2);
}

TEST_F(ComplicationStoreTest, aPhoneSnapshotOlderThanTheStoredOneIsRefusedAndLeavesTheReceivedAtDate) {
  ASSERT_TRUE(store_.storePhoneSnapshot(mania, noon, isUpdated));
  const double seconds = secondsSinceReferenceDate(noon);
  const auto older = generated(instantSinceReferenceDate(std::nextafter(seconds, 0)));
  EXPECT_FALSE(store_.storePhoneSnapshot(older, noon + Seconds(60), isUpdated));
  EXPECT_EQ(store_.phoneSnapshot(), mania);
  EXPECT_EQ(store_.phoneSnapshotReceivedAt(), noon);
  EXPECT_EQ(reloads_, 1);
}

TEST_F(ComplicationStoreTest, aPhoneSnapshotOfTheSameInstantIsAccepted) {
  ASSERT_TRUE(store_.storePhoneSnapshot(mania, noon, stays));
  auto same = mania;
  same.stateRaw = "Euthymia";
  EXPECT_TRUE(store_.storePhoneSnapshot(same, noon - Seconds(60), stays));
  EXPECT_EQ(store_.phoneSnapshot(), same);
  EXPECT_EQ(store_.phoneSnapshotReceivedAt(), noon - Seconds(60));
}

TEST_F(ComplicationStoreTest, aNewerPhoneSnapshotIsAccepted) {
  ASSERT_TRUE(store_.storePhoneSnapshot(mania, noon, stays));
  const auto newer = generated(noon + Seconds(0.25));
  EXPECT_TRUE(store_.storePhoneSnapshot(newer, noon, stays));
  EXPECT_EQ(store_.phoneSnapshot(), newer);
}

TEST_F(ComplicationStoreTest, aPhoneSnapshotWithoutAJsonFormIsRefused) {
  ASSERT_TRUE(store_.storePhoneSnapshot(mania, noon, stays));
  auto broken = generated(noon + Seconds(1));
  broken.stateRaw = "\xff";
  EXPECT_FALSE(store_.storePhoneSnapshot(broken, noon + Seconds(1), isUpdated));
  EXPECT_FALSE(
      store_.storePhoneSnapshot(generated(instantSinceReferenceDate(std::nan(""))), noon, isUpdated));
  EXPECT_FALSE(store_.storePhoneSnapshot(generated(instantSinceReferenceDate(1.0 / 0.0)), noon, isUpdated));
  EXPECT_EQ(store_.phoneSnapshot(), mania);
  EXPECT_EQ(store_.phoneSnapshotReceivedAt(), noon);
  EXPECT_EQ(reloads_, 0);
}

TEST_F(ComplicationStoreTest, aStoredSnapshotThatDoesNotDecodeIsAbsentAndBlocksNothing) {
  for (const char* json : {"", "nonsense", "{}", R"({"generatedAt":99999999999})"}) {
    keep("complication.phoneStateSnapshot.v1", Data{json});
    EXPECT_EQ(store_.phoneSnapshot(), std::nullopt) << json;
    EXPECT_TRUE(store_.storePhoneSnapshot(mania, noon, stays));
    EXPECT_EQ(store_.phoneSnapshot(), mania);
  }
  keep("complication.phoneStateSnapshot.v1", "text");
  EXPECT_EQ(store_.phoneSnapshot(), std::nullopt);
}

TEST_F(ComplicationStoreTest, aReceivedAtThatIsNoDateIsAbsent) {
  for (const PropertyValue& value : {PropertyValue("2024-05-01T12:00:00Z"), PropertyValue(Data{"1"})}) {
    keep("complication.phoneStateReceivedAt.v1", value);
    EXPECT_EQ(store_.phoneSnapshotReceivedAt(), std::nullopt);
  }
}

TEST_F(ComplicationStoreTest, aHookMayUseTheStoreAndInstallAnother) {
  KestrelState seen = KestrelState::unknown;
  WidgetTimelines::setReload([&] {
    seen = store_.latestState();
    WidgetTimelines::setReload({});
  });
  store_.setLatestState(KestrelState::mania);
  EXPECT_EQ(seen, KestrelState::mania);
  store_.setLatestState(KestrelState::euthymia);
  EXPECT_EQ(seen, KestrelState::mania) << "no hook, nothing happens";
}

}  // namespace
}  // namespace kestrel
