#include <KestrelKit/WatchStateTransfer.h>
#include <KestrelKit/model/JSONCoders.h>
#include <KestrelKit/model/KestrelState.h>

#include <utility>
#include <variant>

namespace kestrel {
namespace {

using Payload = WatchStateTransfer::Payload;

template <class T>
std::expected<Payload, JsonError> payloadWith(std::string_view key, const T& record) {
  auto json = JSONCoders::encoder.encode(record);
  if (!json) {
    return std::unexpected(json.error());
  }
  return Payload{{std::string(key), Data{*std::move(json)}}};
}

template <class T>
std::optional<T> recordIn(const Payload& payload, std::string_view key) {
  const auto entry = payload.find(key);
  const Data* const json = entry == payload.end() ? nullptr : std::get_if<Data>(&entry->second);
  if (json == nullptr) {
    return std::nullopt;
  }
  auto record = JSONCoders::decoder.decode<T>(json->bytes);
  return record ? std::optional(*std::move(record)) : std::nullopt;
}

}  // namespace

std::expected<Payload, JsonError> WatchStateTransfer::statePayload(const WatchStateSnapshot& snapshot) {
  return payloadWith(stateKey, snapshot);
}

std::expected<Payload, JsonError> WatchStateTransfer::receiptPayload(
    const WatchStateAcknowledgement& acknowledgement) {
  return payloadWith(receiptKey, acknowledgement);
}

std::optional<WatchStateSnapshot> WatchStateTransfer::stateIn(const Payload& payload) {
  auto snapshot = recordIn<WatchStateSnapshot>(payload, stateKey);
  if (snapshot && snapshot->version != WatchStateSnapshot::currentVersion) {
    return std::nullopt;
  }
  return snapshot;
}

std::optional<WatchStateAcknowledgement> WatchStateTransfer::receiptIn(const Payload& payload) {
  return recordIn<WatchStateAcknowledgement>(payload, receiptKey);
}

void WatchStateTransfer::recordSent(WatchConnectionEvidence& evidence, const WatchStateSnapshot& snapshot,
                                    Instant date) {
  evidence.lastSentAt = date;
  evidence.lastSentDeliveryID = snapshot.deliveryID;
  evidence.lastError.reset();
}

void WatchStateTransfer::recordAcknowledgement(WatchConnectionEvidence& evidence, const Uuid& deliveryID,
                                               Instant date) {
  if (evidence.lastSentDeliveryID != deliveryID) {
    return;
  }
  evidence.lastAcknowledgedAt = date;
  evidence.lastAcknowledgedDeliveryID = deliveryID;
  evidence.lastError.reset();
}

void WatchStateTransfer::recordReceived(WatchConnectionEvidence& evidence, const WatchStateSnapshot& snapshot,
                                        Instant date) {
  evidence.lastReceivedStateAt = date;
  evidence.lastReceivedState = KestrelState::fromStoredValue(snapshot.stateRaw).rawValue();
  evidence.lastReceivedConfidence = snapshot.confidencePercent;
  evidence.lastError.reset();
}

void WatchStateTransfer::recordError(WatchConnectionEvidence& evidence, std::string_view text) {
  evidence.lastError = text;
}

}  // namespace kestrel
