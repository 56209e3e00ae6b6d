#include <KestrelKit/WatchOutboxReplayPolicy.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

namespace kestrel {
namespace {

const Uuid delivery = uuidFromText("2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10").value();
const Uuid another = uuidFromText("00000000-0000-0000-0000-000000000001").value();
const Instant sent = instantSinceReferenceDate(0);  // Small figures, so that every float between two is seen.
const WatchStateSnapshot snapshot = WatchStateSnapshot::of(KestrelState::mania, 82, sent, delivery);
const WatchConnectionEvidence unacknowledged{.isPaired = true,
                                             .isWatchAppInstalled = true,
                                             .lastSentAt = sent,
                                             .lastSentDeliveryID = delivery,
                                             .lastAcknowledgedDeliveryID = another};
constexpr double infinity = std::numeric_limits<double>::infinity();

bool replays(const WatchConnectionEvidence& evidence, std::int64_t earlierTries = 0, double at = 60) {
  return WatchOutboxReplayPolicy::shouldReplay(snapshot, evidence, earlierTries,
                                               instantSinceReferenceDate(at));
}

TEST(WatchOutboxReplayPolicy, sendsAgainWhatTheWatchHasNotAcknowledged) {
  EXPECT_TRUE(replays(unacknowledged));
  auto evidence = unacknowledged;
  evidence.lastAcknowledgedDeliveryID.reset();
  EXPECT_TRUE(replays(evidence));
}

TEST(WatchOutboxReplayPolicy, needsAPairedWatchWithTheApplication) {
  auto evidence = unacknowledged;
  evidence.isPaired = false;
  EXPECT_FALSE(replays(evidence));
  evidence = unacknowledged;
  evidence.isWatchAppInstalled = false;
  EXPECT_FALSE(replays(evidence));
}

TEST(WatchOutboxReplayPolicy, doesNotNeedAWatchThatIsReachable) {
  for (const bool isReachable : {false, true}) {
    auto evidence = unacknowledged;
    evidence.isReachable = isReachable;
    EXPECT_TRUE(replays(evidence));
  }
}

TEST(WatchOutboxReplayPolicy, needsTheSnapshotToBeTheOneSentLast) {
  auto evidence = unacknowledged;
  evidence.lastSentDeliveryID = another;
  EXPECT_FALSE(replays(evidence));
  evidence.lastSentDeliveryID.reset();
  EXPECT_FALSE(replays(evidence));
  evidence = unacknowledged;
  evidence.lastSentAt.reset();
  EXPECT_FALSE(replays(evidence));
}

TEST(WatchOutboxReplayPolicy, needsTheSnapshotNotToBeAcknowledged) {
  auto evidence = unacknowledged;
  evidence.lastAcknowledgedDeliveryID = delivery;
  EXPECT_FALSE(replays(evidence));
}

TEST(WatchOutboxReplayPolicy, doublesThePauseWithEveryTryUpToAnHour) {
  constexpr std::pair<std::int64_t, double> rows[] = {
      {0, 30},    {1, 60},     {2, 120},    {3, 240},
      {4, 480},   {5, 960},    {6, 1'920},  {7, 3'600},
      {8, 3'600}, {63, 3'600}, {64, 3'600}, {std::numeric_limits<std::int64_t>::max(), 3'600},
  };
  for (const auto& [tries, pause] : rows) {
    EXPECT_FALSE(replays(unacknowledged, tries, std::nextafter(pause, 0))) << tries;
    EXPECT_TRUE(replays(unacknowledged, tries, pause)) << tries;
    EXPECT_TRUE(replays(unacknowledged, tries, std::nextafter(pause, infinity))) << tries;
  }
}

TEST(WatchOutboxReplayPolicy, givesUpAStateThatIsMoreThanADayOld) {
  constexpr double day = 86'400;
  EXPECT_TRUE(replays(unacknowledged, 0, std::nextafter(day, 0)));
  EXPECT_TRUE(replays(unacknowledged, 0, day));
  EXPECT_FALSE(replays(unacknowledged, 0, std::nextafter(day, infinity)));
}

TEST(WatchOutboxReplayPolicy, countsThePauseFromTheSendingAndTheLifeFromTheState) {
  auto evidence = unacknowledged;
  evidence.lastSentAt = sent + Seconds(86'371);
  EXPECT_FALSE(replays(evidence, 0, 86'400));
  evidence.lastSentAt = sent + Seconds(86'370);
  EXPECT_TRUE(replays(evidence, 0, 86'400));
}

TEST(WatchOutboxReplayPolicy, sendsNothingAtAnInstantThatIsNoneOrBeforeTheSending) {
  for (const double at : {-1.0, -infinity, infinity, std::nan("")}) {
    EXPECT_FALSE(replays(unacknowledged, 0, at)) << at;
  }
  auto evidence = unacknowledged;
  evidence.lastSentAt = instantSinceReferenceDate(std::nan(""));
  EXPECT_FALSE(replays(evidence));
  evidence.lastSentAt = instantSinceReferenceDate(-infinity);
  EXPECT_TRUE(replays(evidence)) << "sent long ago";
}

TEST(WatchOutboxReplayPolicy, aStateOfTheFutureIsNotTooOld) {
  auto early = snapshot;
  early.generatedAt += Seconds(1'000'000);
  EXPECT_TRUE(WatchOutboxReplayPolicy::shouldReplay(early, unacknowledged, 0, sent + Seconds(30)));
}

TEST(WatchOutboxReplayPolicyDeathTest, aNumberOfTriesBelowZeroIsAProgrammingError) {
  EXPECT_DEATH(replays(unacknowledged, -1), "programming error: a number of earlier tries is below 0");
}

}  // namespace
}  // namespace kestrel
