#include <KestrelKit/model/StateClassifier.h>
#include <support/Allocations.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <string>
#include <vector>

namespace kestrel {
namespace {

// Every kind of day, again and again: two lone ones that are smoothed among them, one that is held back and
// one without data.
std::vector<DailyMetrics> seriesOf(std::size_t count) {
  const DailyMetrics kinds[] = {
      {.date = "2024-05-01", .sleep_hours = 3, .posts = 20, .sentiment_stdev = 0.5},
      {.date = "2024-05-02", .sleep_hours = 11, .posts = 10, .sentiment = -0.6},
      {.date = "2024-05-03", .sleep_hours = 3, .posts = 20},
      {.date = "2024-05-04", .sleep_hours = 11, .posts = 10, .sentiment = -0.4},
      {.date = "2024-05-05", .sleep_hours = 7.5, .posts = 10},
      {.date = "2024-05-06", .sleep_hours = 5, .posts = 13, .avg_hrv = HrvInput::missing},
      {.date = "2024-05-07"},
      {.date = "a day key of more than fifteen bytes", .sleep_hours = 9, .posts = 5},
      {.date = "2024-05-09", .sleep_hours = 7.5, .posts = 10},
      {.date = "2024-05-10", .sleep_hours = 7.5, .posts = 10},
      {.date = "2024-05-11", .sleep_hours = 7.5, .posts = 10},
  };
  std::vector<DailyMetrics> days;
  for (std::size_t index = 0; index < count; ++index) {
    days.push_back(kinds[index % std::size(kinds)]);
  }
  return days;
}

const UserReports reports{
    {"2024-05-09",
     {.state = KestrelState::mania, .percentage = 80, .notes = "a note of more than fifteen bytes"}},
    {"2024-05-10",
     {.state = KestrelState::mania, .origin = SelfReportSource::keyword, .keyword = "a keyword"}},
    {"2024-05-11", {.state = KestrelState::mania, .percentage = 80}},
};

std::size_t cost(const std::string& text) { return text.capacity() > std::string{}.capacity() ? 1U : 0U; }

// One allocation for each text that does not fit into its own object, one for each list of reasons.
std::size_t costOf(const std::vector<StateClassification>& series) {
  std::size_t count = 0;
  for (const StateClassification& day : series) {
    count += cost(day.date) + cost(day.selfReportNotes.value_or(""));
    count += day.reasons.empty() ? 0U : 1U;
    for (const std::string& reason : day.reasons) {
      count += cost(reason);
    }
  }
  return count;
}

TEST(StateClassifierCost, isNoAllocationBeyondTheTextsOfARecordAndItsListOfReasons) {
  for (const std::size_t count : {0U, 1U, 2U, 3U, 1000U, 100'000U}) {
    const auto days = seriesOf(count);
    const std::size_t before = Allocations::count;
    const auto series = StateClassifier::classifySeries(days, reports, {});
    const std::size_t taken = Allocations::count - before;
    EXPECT_EQ(taken, costOf(series) + (count == 0 ? 0U : 1U)) << count;  // one for the result itself
  }
}

TEST(StateClassifierCost, isNoAllocationAtAllInAResultThatHeldTheSameDays) {
  const auto days = seriesOf(1000);
  auto series = StateClassifier::classifySeries(days, reports, {});
  const std::size_t before = Allocations::count;
  StateClassifier::classifySeries(days, reports, {}, series);
  EXPECT_EQ(Allocations::count - before, 0U);
}

TEST(StateClassifierCost, ofOneDayIsThatOfItsRecord) {
  for (const DailyMetrics& day : seriesOf(11)) {
    const auto report = reports.find(day.date);
    const std::size_t before = Allocations::count;
    const auto result =
        StateClassifier::classify(day, report == reports.end() ? nullptr : &report->second, {});
    const std::size_t taken = Allocations::count - before;
    EXPECT_EQ(taken, costOf({result})) << day.date;
  }
}

}  // namespace
}  // namespace kestrel
