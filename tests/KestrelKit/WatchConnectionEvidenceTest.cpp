#include <KestrelKit/WatchConnectionEvidence.h>
#include <KestrelKit/model/JSONCoders.h>
#include <support/RecordFields.h>

#include <gtest/gtest.h>

namespace kestrel {
namespace {

TEST(WatchConnectionEvidence, readsAndWritesEachField) {
  const Uuid sent = uuidFromText("2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10").value();
  const Uuid acknowledged = uuidFromText("00000000-0000-0000-0000-000000000001").value();
  EXPECT_EQ(
      testing::expectStrictFields<WatchConnectionEvidence>(
          JSONCoders::decoder, JSONCoders::encoder,
          {{"isPaired", "true", "1", "expected a boolean, found a number"},
           {"isWatchAppInstalled", "true", R"("yes")", "expected a boolean, found text"},
           {"isReachable", "true", "[]", "expected a boolean, found a list"},
           {"lastSentAt", R"("2024-05-01T12:00:00Z")", "1", "expected text, found a number", true},
           {"lastSentDeliveryID", R"("2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10")", "1",
            "expected text, found a number", true},
           {"lastAcknowledgedAt", R"("2024-05-01T12:00:01Z")", "{}", "expected text, found an object", true},
           {"lastAcknowledgedDeliveryID", R"("00000000-0000-0000-0000-000000000001")", "false",
            "expected text, found a boolean", true},
           {"lastReceivedStateAt", R"("2024-05-01T12:00:02Z")", "[]", "expected text, found a list", true},
           {"lastReceivedState", R"("Mania")", "7", "expected text, found a number", true},
           {"lastReceivedConfidence", "80", R"("80")", "expected an integer, found text", true},
           {"lastError", R"("not reachable")", "{}", "expected text, found an object", true}}),
      (WatchConnectionEvidence{.isPaired = true,
                               .isWatchAppInstalled = true,
                               .isReachable = true,
                               .lastSentAt = instantSinceReferenceDate(736'257'600),
                               .lastSentDeliveryID = sent,
                               .lastAcknowledgedAt = instantSinceReferenceDate(736'257'601),
                               .lastAcknowledgedDeliveryID = acknowledged,
                               .lastReceivedStateAt = instantSinceReferenceDate(736'257'602),
                               .lastReceivedState = "Mania",
                               .lastReceivedConfidence = 80,
                               .lastError = "not reachable"}));
}

TEST(WatchConnectionEvidence, withAllOptionalFieldsAbsentEncodesToJustTheThreeBooleans) {
  EXPECT_EQ(JSONCoders::encoder.encode(WatchConnectionEvidence()).value(),
            R"({"isPaired":false,"isWatchAppInstalled":false,"isReachable":false})");
}

TEST(WatchConnectionEvidence, differsWhenOneFieldDoes) {
  const WatchConnectionEvidence evidence;
  const WatchConnectionEvidence others[] = {
      {.isPaired = true},
      {.isWatchAppInstalled = true},
      {.isReachable = true},
      {.lastSentAt = Instant()},
      {.lastSentDeliveryID = Uuid()},
      {.lastAcknowledgedAt = Instant()},
      {.lastAcknowledgedDeliveryID = Uuid()},
      {.lastReceivedStateAt = Instant()},
      {.lastReceivedState = ""},
      {.lastReceivedConfidence = 0},
      {.lastError = ""},
  };
  for (const auto& other : others) {
    EXPECT_NE(evidence, other);
    EXPECT_EQ(other, WatchConnectionEvidence(other));
  }
}

}  // namespace
}  // namespace kestrel
