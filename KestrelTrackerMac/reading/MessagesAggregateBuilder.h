#pragma once

#include <KestrelKit/foundation/Calendar.h>
#include <KestrelTrackerMac/reading/MessageActivitySample.h>
#include <KestrelTrackerMac/reading/MessageDayAggregate.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace kestrel::companion {

/// Folds messages into one record for each day of a calendar. Conversations are only counted; who they were
/// with does not leave the builder. Not for several threads at once.
class MessagesAggregateBuilder {
 public:
  /// `calendar` and its time zone decide on which day a message falls.
  explicit MessagesAggregateBuilder(Calendar calendar) : calendar_(std::move(calendar)) {}

  MessagesAggregateBuilder(const MessagesAggregateBuilder&) = delete;
  MessagesAggregateBuilder& operator=(const MessagesAggregateBuilder&) = delete;

  /// Counts `sample` on its day. One whose time the calendar cannot name is ignored. Cheap as long as
  /// neighbours come from the same hour. A count or a sum beyond 64 bits is a programming error.
  void add(const MessageActivitySample& sample);

  /// One record for each day with a sample, ascending by date.
  std::vector<MessageDayAggregate> daily() const;

  /// The figures of one day so far.
  struct DayAccumulator {
    std::int64_t sentCount = 0;
    std::int64_t receivedCount = 0;
    std::unordered_set<std::int64_t> conversations;
    std::int64_t lateNightCount = 0;
    std::int64_t totalTextLength = 0;  ///< Of the texts that are not empty, …
    std::int64_t textSampleCount = 0;  ///< … of which there were so many.

    /// Counts `sample`, whose clock showed `hour`.
    void add(const MessageActivitySample& sample, int hour);
  };

 private:
  Calendar calendar_;
  std::map<std::string, DayAccumulator> days_;  ///< By day key.

  std::optional<Calendar::Hour> hour_;  ///< That of the last sample that had one, …
  DayAccumulator* day_ = nullptr;       ///< … and its day in `days_`, which never moves it.
};

}  // namespace kestrel::companion
