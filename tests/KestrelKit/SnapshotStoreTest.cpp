#include <KestrelKit/SnapshotStore.h>
#include <KestrelKit/foundation/MemoryDefaults.h>

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <utility>

namespace kestrel {
namespace {

const Instant noon = instantSinceReferenceDate(736'257'600.25);

/// A snapshot of which `posts` is the only figure.
DashboardSnapshot snapshotWith(std::int64_t posts) {
  DashboardSnapshot snapshot;
  snapshot.essential.emplace().viz.emplace().summary.emplace().totalPosts = posts;
  return snapshot;
}

class SnapshotStoreTest : public ::testing::Test {
 protected:
  void keep(std::string_view key, PropertyValue value) {
    const SharedDefaults::Change changes[] = {{key, std::move(value)}};
    ASSERT_TRUE(store_.defaults->write(changes));
  }

  void expectNothingToBeStored() const {
    EXPECT_EQ(store_.defaults->value("dashboard.snapshot.latest"), std::nullopt);
    EXPECT_EQ(store_.defaults->value("dashboard.snapshot.updatedAt"), std::nullopt);
  }

  const SnapshotStore store_{std::make_shared<MemoryDefaults>()};
};

TEST_F(SnapshotStoreTest, hasTheKeysThatItsReadersKnow) {
  EXPECT_EQ(store_.key, "dashboard.snapshot.latest");
  EXPECT_EQ(store_.updatedAtKey, "dashboard.snapshot.updatedAt");
}

TEST_F(SnapshotStoreTest, nothingIsStoredAtFirst) {
  EXPECT_EQ(store_.latest(), std::nullopt);
  EXPECT_EQ(store_.updatedAt(), std::nullopt);
}

TEST_F(SnapshotStoreTest, storesASnapshotAsJsonDataAndWhen) {
  store_.setLatest(snapshotWith(7), noon);
  EXPECT_EQ(store_.latest(), snapshotWith(7));
  EXPECT_EQ(store_.updatedAt(), noon);
  EXPECT_EQ(store_.defaults->get<Data>("dashboard.snapshot.latest"),
            Data{R"({"essential":{"viz":{"summary":{"total_posts":7}}}})"});
}

TEST_F(SnapshotStoreTest, takesThePresentInstantUntold) {
  const Instant before = ReferenceClock::now();
  store_.setLatest(snapshotWith(7));
  EXPECT_GE(store_.updatedAt(), before);
  EXPECT_LE(store_.updatedAt(), ReferenceClock::now());
}

TEST_F(SnapshotStoreTest, anEmptySnapshotIsStored) {
  store_.setLatest(DashboardSnapshot(), noon);
  EXPECT_EQ(store_.latest(), DashboardSnapshot());
  EXPECT_EQ(store_.updatedAt(), noon);
}

TEST_F(SnapshotStoreTest, settingTheLatestSnapshotToAbsentRemovesBothKeys) {
  store_.setLatest(snapshotWith(7), noon);
  store_.setLatest(std::nullopt, noon + Seconds(1));
  expectNothingToBeStored();
  store_.setLatest(std::nullopt, noon);
  expectNothingToBeStored();
}

TEST_F(SnapshotStoreTest, aSnapshotWithoutAJsonFormClearsTheStoredOne) {
  store_.setLatest(snapshotWith(7), noon);
  auto broken = snapshotWith(8);
  broken.essential->viz->summary->avgSentiment = std::numeric_limits<double>::quiet_NaN();
  store_.setLatest(broken, noon);
  expectNothingToBeStored();
}

TEST_F(SnapshotStoreTest, isModifiedInPlace) {
  store_.modifyLatest(
      [](std::optional<DashboardSnapshot>& snapshot) {
        EXPECT_EQ(snapshot, std::nullopt);
        snapshot = snapshotWith(1);
      },
      noon);
  EXPECT_EQ(store_.updatedAt(), noon);
  store_.modifyLatest(
      [](std::optional<DashboardSnapshot>& snapshot) { ++*snapshot->essential->viz->summary->totalPosts; },
      noon + Seconds(1));
  EXPECT_EQ(store_.latest(), snapshotWith(2));
  EXPECT_EQ(store_.updatedAt(), noon + Seconds(1));
  store_.modifyLatest([](std::optional<DashboardSnapshot>& snapshot) { snapshot.reset(); }, noon);
  expectNothingToBeStored();
}

TEST_F(SnapshotStoreTest, dataThatDoesNotDecodeIsAbsent) {
  for (const char* json : {"", "nonsense", "[]", R"({"health":7})"}) {
    keep("dashboard.snapshot.latest", Data{json});
    EXPECT_EQ(store_.latest(), std::nullopt) << json;
  }
  keep("dashboard.snapshot.latest", "{}");
  EXPECT_EQ(store_.latest(), std::nullopt) << "text is no data";
}

TEST_F(SnapshotStoreTest, dataIsReadAsTolerantlyAsASnapshotIs) {
  keep("dashboard.snapshot.latest", Data{R"({"essential":{"viz":{"daily":[{"date":"2024-05-01"},7]}}})"});
  ASSERT_TRUE(store_.latest());
  EXPECT_EQ(store_.latest()->essential->viz->dailyRaw->elements.size(), 1U);
}

TEST_F(SnapshotStoreTest, anUpdatedAtThatIsNoDateIsAbsent) {
  for (const PropertyValue& value : {PropertyValue("2024-05-01T12:00:00Z"), PropertyValue(Data{"1"})}) {
    keep("dashboard.snapshot.updatedAt", value);
    EXPECT_EQ(store_.updatedAt(), std::nullopt);
  }
}

}  // namespace
}  // namespace kestrel
