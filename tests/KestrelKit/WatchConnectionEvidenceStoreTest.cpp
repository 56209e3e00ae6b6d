#include <KestrelKit/WatchConnectionEvidenceStore.h>
#include <KestrelKit/WatchStateTransfer.h>
#include <KestrelKit/foundation/MemoryDefaults.h>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>

namespace kestrel {
namespace {

const Uuid delivery = uuidFromText("2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10").value();
const Uuid another = uuidFromText("00000000-0000-0000-0000-000000000001").value();
const Instant noon = instantSinceReferenceDate(736'257'600);
const WatchStateSnapshot mania = WatchStateSnapshot::of(KestrelState::mania, 82, noon, delivery);

constexpr const char* key = "watch.currentStateDeliveryEvidence.v1";

class WatchConnectionEvidenceStoreTest : public ::testing::Test {
 protected:
  std::shared_ptr<SharedDefaults> defaults_ = std::make_shared<MemoryDefaults>();
  WatchConnectionEvidenceStore store_{defaults_};
  int announced_ = 0;
  NotificationObservation observation_ = Notifications::observe(WatchConnectionEvidenceStore::didChange,
                                                                store_.object, [this] { ++announced_; });

  void keep(PropertyValue value) {
    const SharedDefaults::Change changes[] = {{key, std::move(value)}};
    ASSERT_TRUE(defaults_->write(changes));
  }
};

TEST_F(WatchConnectionEvidenceStoreTest, hasTheKeyAndTheNotificationThatOthersKnow) {
  EXPECT_EQ(store_.key, key);
  EXPECT_EQ(WatchConnectionEvidenceStore::didChange, "WatchConnectionEvidenceStore.didChange");
}

TEST_F(WatchConnectionEvidenceStoreTest, hasARecordAsItIsMadeWhereNoneIsStoredThatDecodes) {
  EXPECT_EQ(store_.current(), WatchConnectionEvidence());
  for (const PropertyValue& value :
       {PropertyValue(Data{""}), PropertyValue(Data{"nonsense"}), PropertyValue(Data{R"({"isPaired":true})"}),
        PropertyValue(R"({"isPaired":true,"isWatchAppInstalled":true,"isReachable":true})")}) {
    keep(value);
    EXPECT_EQ(store_.current(), WatchConnectionEvidence());
  }
  EXPECT_EQ(announced_, 0);
}

TEST_F(WatchConnectionEvidenceStoreTest, storesAChangeAsJsonDataWithInstantsAsTextAndAnnouncesIt) {
  store_.update([](WatchConnectionEvidence& evidence) {
    evidence.isPaired = true;
    evidence.lastSentAt = noon;
  });
  EXPECT_EQ(defaults_->get<Data>(key),
            Data{R"({"isPaired":true,"isWatchAppInstalled":false,"isReachable":false,)"
                 R"("lastSentAt":"2024-05-01T12:00:00Z"})"});
  EXPECT_EQ(announced_, 1);
  EXPECT_EQ(WatchConnectionEvidenceStore(defaults_).current(),
            (WatchConnectionEvidence{.isPaired = true, .lastSentAt = noon}));
}

TEST_F(WatchConnectionEvidenceStoreTest, anUpdateThatChangesNothingPostsNoNotification) {
  store_.update([](WatchConnectionEvidence&) {});
  store_.update([](WatchConnectionEvidence& evidence) { evidence.isPaired = false; });
  EXPECT_EQ(defaults_->value(key), std::nullopt) << "nothing is written";
  store_.update([](WatchConnectionEvidence& evidence) { evidence.lastError = "error"; });
  EXPECT_EQ(announced_, 1);
  store_.update([](WatchConnectionEvidence& evidence) { evidence.lastError = "error"; });
  store_.replace(store_.current());
  EXPECT_EQ(announced_, 1);
}

TEST_F(WatchConnectionEvidenceStoreTest, anUpdateOfARecordThatDoesNotDecodeBeginsWithOneAsItIsMade) {
  keep(Data{"nonsense"});
  store_.update([](WatchConnectionEvidence&) {});
  EXPECT_EQ(defaults_->get<Data>(key), Data{"nonsense"}) << "nothing changed, nothing is written";
  store_.update([](WatchConnectionEvidence& evidence) { evidence.isReachable = true; });
  EXPECT_EQ(store_.current(), WatchConnectionEvidence{.isReachable = true});
}

TEST_F(WatchConnectionEvidenceStoreTest, replacesTheWholeRecord) {
  store_.update([](WatchConnectionEvidence& evidence) { evidence.lastError = "error"; });
  const WatchConnectionEvidence evidence{.isPaired = true, .lastReceivedState = "Mania"};
  store_.replace(evidence);
  EXPECT_EQ(store_.current(), evidence);
  EXPECT_EQ(announced_, 2);
}

TEST_F(WatchConnectionEvidenceStoreTest, whatHasNoJsonFormIsNotWrittenAndStillCountsAsAChange) {
  store_.update([](WatchConnectionEvidence& evidence) { evidence.isPaired = true; });
  store_.update([](WatchConnectionEvidence& evidence) { evidence.lastSentAt = Instant::max(); });
  EXPECT_EQ(store_.current(), WatchConnectionEvidence{.isPaired = true});
  EXPECT_EQ(announced_, 2);
}

TEST_F(WatchConnectionEvidenceStoreTest, recordsADeliveryFromItsSendingToItsReceipt) {
  store_.update([](auto& evidence) { WatchStateTransfer::recordSent(evidence, mania, noon); });
  store_.update([](auto& evidence) { WatchStateTransfer::recordError(evidence, "not reachable"); });
  EXPECT_EQ(announced_, 2);
  store_.update([](auto& evidence) {
    WatchStateTransfer::recordAcknowledgement(evidence, delivery, noon + Seconds(5));
  });
  EXPECT_EQ(announced_, 3);
  EXPECT_EQ(store_.current(), (WatchConnectionEvidence{.lastSentAt = noon,
                                                       .lastSentDeliveryID = delivery,
                                                       .lastAcknowledgedAt = noon + Seconds(5),
                                                       .lastAcknowledgedDeliveryID = delivery}));
}

TEST_F(WatchConnectionEvidenceStoreTest, aReceiptForAnotherDeliveryChangesNothingAndPostsNoNotification) {
  const auto acknowledge = [this](const Uuid& identity) {
    store_.update(
        [&](auto& evidence) { WatchStateTransfer::recordAcknowledgement(evidence, identity, noon); });
  };
  acknowledge(delivery);
  EXPECT_EQ(announced_, 0) << "nothing was sent yet";
  store_.update([](auto& evidence) { WatchStateTransfer::recordSent(evidence, mania, noon); });
  const auto before = store_.current();
  acknowledge(another);
  EXPECT_EQ(store_.current(), before);
  EXPECT_EQ(announced_, 1);
}

// Observers

TEST_F(WatchConnectionEvidenceStoreTest, anObserverMayUseTheStore) {
  std::optional<WatchConnectionEvidence> seen;
  const auto observation =
      Notifications::observe(WatchConnectionEvidenceStore::didChange, store_.object, [&] {
        seen = store_.current();
        store_.update([](WatchConnectionEvidence& evidence) { evidence.isReachable = true; });
      });
  store_.update([](WatchConnectionEvidence& evidence) { evidence.isPaired = true; });
  EXPECT_EQ(seen, (WatchConnectionEvidence{.isPaired = true, .isReachable = true}));
  EXPECT_EQ(announced_, 2);
}

TEST_F(WatchConnectionEvidenceStoreTest, anObserverMayRemoveItself) {
  int heard = 0;
  NotificationObservation own;
  own = Notifications::observe(WatchConnectionEvidenceStore::didChange, store_.object, [&] {
    ++heard;
    own.disconnect();
  });
  for (const char* error : {"one", "two"}) {
    store_.update([&](WatchConnectionEvidence& evidence) { evidence.lastError = error; });
  }
  EXPECT_EQ(heard, 1);
  EXPECT_EQ(announced_, 2);
}

TEST_F(WatchConnectionEvidenceStoreTest, anObserverMayOutliveTheStore) {
  int heard = 0;
  auto passing = std::make_unique<WatchConnectionEvidenceStore>(defaults_);
  const auto observation =
      Notifications::observe(WatchConnectionEvidenceStore::didChange, passing->object, [&] { ++heard; });
  passing.reset();
  passing = std::make_unique<WatchConnectionEvidenceStore>(defaults_);  // in the same place, probably
  passing->update([](WatchConnectionEvidence& evidence) { evidence.isPaired = true; });
  EXPECT_EQ(heard, 0);
}

TEST_F(WatchConnectionEvidenceStoreTest, anObserverIsCalledOnTheThreadThatMadeTheChange) {
  std::thread::id heardOn;
  const auto observation = Notifications::observe(WatchConnectionEvidenceStore::didChange, store_.object,
                                                  [&] { heardOn = std::this_thread::get_id(); });
  std::thread::id changedOn;
  std::thread([&] {
    changedOn = std::this_thread::get_id();
    store_.update([](WatchConnectionEvidence& evidence) { evidence.isPaired = true; });
  }).join();
  EXPECT_EQ(heardOn, changedOn);
}

TEST_F(WatchConnectionEvidenceStoreTest, aChangeThroughAnotherStoreIsReadAndAnnouncedThereAlone) {
  WatchConnectionEvidenceStore other(defaults_);
  other.update([](WatchConnectionEvidence& evidence) { evidence.isPaired = true; });
  EXPECT_TRUE(store_.current().isPaired);
  EXPECT_EQ(announced_, 0);
}

}  // namespace
}  // namespace kestrel
