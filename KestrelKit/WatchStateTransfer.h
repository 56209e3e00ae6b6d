#pragma once

#include <KestrelKit/WatchConnectionEvidence.h>
#include <KestrelKit/WatchStateAcknowledgement.h>
#include <KestrelKit/WatchStateSnapshot.h>
#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/JsonError.h>
#include <KestrelKit/foundation/PropertyValue.h>
#include <KestrelKit/foundation/Uuid.h>

#include <expected>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace kestrel {

/// The state's way to the watch and its receipt's way back: the messages that carry them, and what each step
/// leaves in the evidence. How the platform sends a message is a front end's affair. Pure; any thread.
struct WatchStateTransfer {
  WatchStateTransfer() = delete;

  /// A message as the platform carries it. One of ours has a single entry, with a record's JSON as data and
  /// its instants as ISO 8601.
  using Payload = std::map<std::string, PropertyValue, std::less<>>;

  static constexpr std::string_view stateKey = "tidewell.currentState.v1";
  static constexpr std::string_view receiptKey = "tidewell.currentStateReceipt.v1";

  /// The message with `snapshot`, or what in it has no JSON form.
  [[nodiscard]] static std::expected<Payload, JsonError> statePayload(const WatchStateSnapshot& snapshot);

  /// The message with `acknowledgement`, or what in it has no JSON form.
  [[nodiscard]] static std::expected<Payload, JsonError> receiptPayload(
      const WatchStateAcknowledgement& acknowledgement);

  /// The state in `payload`. Absent when there is none, when it does not decode, and when it is of another
  /// version than ours: a newer sender is ignored rather than misread.
  static std::optional<WatchStateSnapshot> stateIn(const Payload& payload);

  /// The receipt in `payload`; absent when there is none, and when it does not decode.
  static std::optional<WatchStateAcknowledgement> receiptIn(const Payload& payload);

  // What is recorded; each to be applied by WatchConnectionEvidenceStore::update().

  /// `snapshot` was sent, at `date`.
  static void recordSent(WatchConnectionEvidence& evidence, const WatchStateSnapshot& snapshot, Instant date);

  /// The receipt for `deliveryID` arrived, at `date`. One for another delivery than the last sent changes
  /// nothing: a late receipt never marks a newer state as received.
  static void recordAcknowledgement(WatchConnectionEvidence& evidence, const Uuid& deliveryID, Instant date);

  /// `snapshot` was received, at `date`. Its state is read as KestrelState::fromStoredValue() does.
  static void recordReceived(WatchConnectionEvidence& evidence, const WatchStateSnapshot& snapshot,
                             Instant date);

  /// A transfer failed, with `text`.
  static void recordError(WatchConnectionEvidence& evidence, std::string_view text);
};

}  // namespace kestrel
