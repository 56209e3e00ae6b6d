#pragma once

#include <KestrelKit/foundation/JsonField.h>

#include <cstdint>
#include <optional>
#include <string>

namespace kestrel::companion {

/// What happened on one local calendar day. Counts and lengths only: no identifier of a person or chat.
struct MessageDayAggregate {
  std::string date;                ///< The day key, `yyyy-MM-dd` in the user's calendar; unique in a list.
  std::int64_t sentCount = 0;      ///< Messages sent.
  std::int64_t receivedCount = 0;  ///< Messages received.
  std::int64_t activeConversationCount = 0;  ///< Distinct conversations with a message that day.
  std::int64_t lateNightCount = 0;           ///< Messages from 00:00 up to, not including, 05:00 local time.
  std::optional<double> averageMessageLength;  ///< Characters a message; absent when none had text.

  bool operator==(const MessageDayAggregate&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel::companion
