#include <KestrelKit/WatchStateTransfer.h>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>

namespace kestrel {
namespace {

using Payload = WatchStateTransfer::Payload;

const Uuid delivery = uuidFromText("2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10").value();
const Uuid another = uuidFromText("00000000-0000-0000-0000-000000000001").value();
const Instant noon = instantSinceReferenceDate(736'257'600);  // 2024-05-01 12:00:00 UTC
const WatchStateSnapshot mania = WatchStateSnapshot::of(KestrelState::mania, 82, noon, delivery);
const WatchStateAcknowledgement receipt{.deliveryID = delivery, .receivedAt = noon};

constexpr const char* maniaJson =
    R"({"version":1,"deliveryID":"2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10","stateRaw":"Mania",)"
    R"("confidencePercent":82,"generatedAt":"2024-05-01T12:00:00Z"})";
constexpr const char* receiptJson =
    R"({"deliveryID":"2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10","receivedAt":"2024-05-01T12:00:00Z"})";

Payload stateOf(std::string json) { return {{"tidewell.currentState.v1", Data{std::move(json)}}}; }
Payload receiptOf(std::string json) { return {{"tidewell.currentStateReceipt.v1", Data{std::move(json)}}}; }

// Payloads

TEST(WatchStateTransfer, putsAStateIntoOneEntryAsJsonBytes) {
  EXPECT_EQ(WatchStateTransfer::statePayload(mania).value(), stateOf(maniaJson));
  EXPECT_EQ(WatchStateTransfer::stateIn(stateOf(maniaJson)), mania);
}

TEST(WatchStateTransfer, putsAReceiptIntoOneEntryAsJsonBytes) {
  EXPECT_EQ(WatchStateTransfer::receiptPayload(receipt).value(), receiptOf(receiptJson));
  EXPECT_EQ(WatchStateTransfer::receiptIn(receiptOf(receiptJson)), receipt);
}

TEST(WatchStateTransfer, roundsInstantsDownToSecondsOnTheWay) {
  auto snapshot = mania;
  snapshot.generatedAt += Seconds(0.75);
  EXPECT_EQ(WatchStateTransfer::stateIn(WatchStateTransfer::statePayload(snapshot).value()), mania);
}

TEST(WatchStateTransfer, reportsWhatHasNoJsonForm) {
  auto snapshot = mania;
  snapshot.generatedAt = instantSinceReferenceDate(std::nan(""));
  EXPECT_EQ(WatchStateTransfer::statePayload(snapshot).error().path, "generatedAt");
  snapshot = mania;
  snapshot.stateRaw = "\xff";
  EXPECT_EQ(WatchStateTransfer::statePayload(snapshot).error().path, "stateRaw");
  EXPECT_EQ(WatchStateTransfer::receiptPayload({.deliveryID = delivery, .receivedAt = noon + Seconds(1e12)})
                .error()
                .path,
            "receivedAt");
}

TEST(WatchStateTransfer, aPayloadWhoseSnapshotSaysVersion2ReadsAsAbsent) {
  for (const std::int64_t version : {2, 0, -1, 3}) {
    auto snapshot = mania;
    snapshot.version = version;
    EXPECT_EQ(WatchStateTransfer::stateIn(WatchStateTransfer::statePayload(snapshot).value()), std::nullopt);
  }
}

TEST(WatchStateTransfer, anEmptyPayloadReadsAsAbsent) {
  EXPECT_EQ(WatchStateTransfer::stateIn({}), std::nullopt);
  EXPECT_EQ(WatchStateTransfer::receiptIn({}), std::nullopt);
}

TEST(WatchStateTransfer, aPayloadUnderAnotherKeyReadsAsAbsent) {
  EXPECT_EQ(WatchStateTransfer::stateIn({{"tidewell.currentState.v2", Data{maniaJson}}}), std::nullopt);
  EXPECT_EQ(WatchStateTransfer::stateIn(receiptOf(maniaJson)), std::nullopt);
  EXPECT_EQ(WatchStateTransfer::receiptIn(stateOf(receiptJson)), std::nullopt);
}

TEST(WatchStateTransfer, anEntryThatIsNoDataReadsAsAbsent) {
  EXPECT_EQ(WatchStateTransfer::stateIn({{"tidewell.currentState.v1", maniaJson}}), std::nullopt);
  EXPECT_EQ(WatchStateTransfer::stateIn({{"tidewell.currentState.v1", noon}}), std::nullopt);
  EXPECT_EQ(WatchStateTransfer::receiptIn({{"tidewell.currentStateReceipt.v1", receiptJson}}), std::nullopt);
  EXPECT_EQ(WatchStateTransfer::receiptIn({{"tidewell.currentStateReceipt.v1", noon}}), std::nullopt);
}

TEST(WatchStateTransfer, dataThatDoesNotDecodeReadsAsAbsent) {
  for (const char* json : {"", "nonsense", "[]", "{}", "null", "\xef\xbb\xbf{}", R"({"version":1})"}) {
    EXPECT_EQ(WatchStateTransfer::stateIn(stateOf(json)), std::nullopt) << json;
    EXPECT_EQ(WatchStateTransfer::receiptIn(receiptOf(json)), std::nullopt) << json;
  }
  const std::string numberForADate =
      R"({"version":1,"deliveryID":"2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10","stateRaw":"Mania",)"
      R"("confidencePercent":82,"generatedAt":736257600})";
  EXPECT_EQ(WatchStateTransfer::stateIn(stateOf(numberForADate)), std::nullopt);
}

TEST(WatchStateTransfer, readsAPayloadBesideOtherEntries) {
  Payload payload = stateOf(maniaJson);
  payload.emplace("battery", "full");
  EXPECT_EQ(WatchStateTransfer::stateIn(payload), mania);
}

TEST(WatchStateTransfer, aReceiptHasNoVersionToBeTested) {
  std::string json(receiptJson);
  json.insert(1, R"("version":2,)");
  EXPECT_EQ(WatchStateTransfer::receiptIn(receiptOf(json)), receipt);
}

// What is recorded

const WatchConnectionEvidence full{.isPaired = true,
                                   .isWatchAppInstalled = true,
                                   .isReachable = true,
                                   .lastSentAt = noon - Seconds(60),
                                   .lastSentDeliveryID = delivery,
                                   .lastAcknowledgedAt = noon - Seconds(120),
                                   .lastAcknowledgedDeliveryID = another,
                                   .lastReceivedStateAt = noon - Seconds(180),
                                   .lastReceivedState = "Euthymia",
                                   .lastReceivedConfidence = 70,
                                   .lastError = "not reachable"};

TEST(WatchStateTransfer, sendingSetsBothFieldsAndClearsTheErrorAlone) {
  auto evidence = full;
  auto expected = full;
  auto snapshot = mania;
  snapshot.deliveryID = another;
  WatchStateTransfer::recordSent(evidence, snapshot, noon);
  expected.lastSentAt = noon;
  expected.lastSentDeliveryID = another;
  expected.lastError.reset();
  EXPECT_EQ(evidence, expected);
}

TEST(WatchStateTransfer, aMatchingReceiptSetsBothAcknowledgementFieldsAndClearsLastError) {
  auto evidence = full;
  auto expected = full;
  WatchStateTransfer::recordAcknowledgement(evidence, delivery, noon);
  expected.lastAcknowledgedAt = noon;
  expected.lastAcknowledgedDeliveryID = delivery;
  expected.lastError.reset();
  EXPECT_EQ(evidence, expected);
}

TEST(WatchStateTransfer, aReceiptWhoseDeliveryDiffersFromTheLastSentChangesNothing) {
  auto evidence = full;
  WatchStateTransfer::recordAcknowledgement(evidence, another, noon);
  EXPECT_EQ(evidence, full);
}

TEST(WatchStateTransfer, aReceiptThatArrivesBeforeAnythingWasSentIsIgnored) {
  for (const Uuid& identity : {delivery, Uuid()}) {
    WatchConnectionEvidence evidence{.lastError = "kept"};
    WatchStateTransfer::recordAcknowledgement(evidence, identity, noon);
    EXPECT_EQ(evidence, WatchConnectionEvidence{.lastError = "kept"});
  }
}

TEST(WatchStateTransfer, receivingSetsItsThreeFieldsAndClearsTheErrorAlone) {
  auto evidence = full;
  auto expected = full;
  WatchStateTransfer::recordReceived(evidence, mania, noon);
  expected.lastReceivedStateAt = noon;
  expected.lastReceivedState = "Mania";
  expected.lastReceivedConfidence = 82;
  expected.lastError.reset();
  EXPECT_EQ(evidence, expected);
}

TEST(WatchStateTransfer, aReceivedSnapshotWithStateRawHypomanicIsRecordedAsHypomania) {
  const std::pair<const char*, const char*> rows[] = {
      {"Hypomanic", "Hypomania"},
      {"Hypomania", "Hypomania"},
      {"Manic", "Mania"},
      {"hypomanic", "Unknown"},
      {"", "Unknown"},
      {"Serene", "Unknown"},
  };
  for (const auto& [raw, recorded] : rows) {
    WatchConnectionEvidence evidence;
    auto snapshot = mania;
    snapshot.stateRaw = raw;
    WatchStateTransfer::recordReceived(evidence, snapshot, noon);
    EXPECT_EQ(evidence.lastReceivedState, recorded) << raw;
  }
}

TEST(WatchStateTransfer, aReceivedConfidenceIsRecordedAsItCame) {
  WatchConnectionEvidence evidence;
  auto snapshot = mania;
  snapshot.confidencePercent = 250;
  WatchStateTransfer::recordReceived(evidence, snapshot, noon);
  EXPECT_EQ(evidence.lastReceivedConfidence, 250);
}

TEST(WatchStateTransfer, anErrorSetsItsTextAlone) {
  for (const char* text : {"watch unreachable", ""}) {
    auto evidence = full;
    auto expected = full;
    WatchStateTransfer::recordError(evidence, text);
    expected.lastError = text;
    EXPECT_EQ(evidence, expected);
  }
}

}  // namespace
}  // namespace kestrel
