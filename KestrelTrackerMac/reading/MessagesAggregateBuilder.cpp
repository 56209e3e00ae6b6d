#include <KestrelKit/foundation/CheckedSum.h>
#include <KestrelTrackerMac/reading/MessagesAggregateBuilder.h>
#include <fmt/format.h>

namespace kestrel::companion {
namespace {

constexpr int lastLateNightHour = 4;  // the hours from midnight to 04:59; the evening before does not count

void count(std::int64_t& counter) { counter = checkedSum(counter, 1, "a count of messages"); }

}  // namespace

void MessagesAggregateBuilder::DayAccumulator::add(const MessageActivitySample& sample, int hour) {
  count(sample.isFromMe ? sentCount : receivedCount);
  conversations.insert(sample.conversationID);
  if (hour <= lastLateNightHour) {
    count(lateNightCount);
  }
  if (sample.textLength && *sample.textLength >= 1) {
    totalTextLength = checkedSum(totalTextLength, *sample.textLength, "the sum of the text lengths");
    count(textSampleCount);
  }
}

void MessagesAggregateBuilder::add(const MessageActivitySample& sample) {
  if (!hour_ || !hour_->contains(sample.timestamp)) {
    const auto hour = calendar_.hourAround(sample.timestamp);
    if (!hour) {
      return;
    }
    const auto& [year, month, day, ignored] = hour->components;
    day_ = &days_[fmt::format("{:04}-{:02}-{:02}", year, month, day)];
    hour_ = hour;
  }
  day_->add(sample, hour_->components.hour);
}

std::vector<MessageDayAggregate> MessagesAggregateBuilder::daily() const {
  std::vector<MessageDayAggregate> list;
  list.reserve(days_.size());
  for (const auto& [key, day] : days_) {
    auto& aggregate = list.emplace_back();
    aggregate.date = key;
    aggregate.sentCount = day.sentCount;
    aggregate.receivedCount = day.receivedCount;
    aggregate.activeConversationCount = static_cast<std::int64_t>(day.conversations.size());
    aggregate.lateNightCount = day.lateNightCount;
    if (day.textSampleCount != 0) {
      aggregate.averageMessageLength =
          static_cast<double>(day.totalTextLength) / static_cast<double>(day.textSampleCount);
    }
  }
  return list;
}

}  // namespace kestrel::companion
