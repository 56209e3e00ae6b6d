// What it costs to classify a series of days, and how that grows with the series.
//
//   state_classifier_benchmark [ROUNDS]
//
// Prints two tables: nanoseconds a day from 1,000 to 10,000,000 days, in a result that is made anew and in
// one that the caller provides, without reports and with one on every tenth day; and the time a day at
// 10,000,000 days against that at 1,000,000, the median of ROUNDS (by default 5) in which the two take turns.
//
//   state_classifier_benchmark new|provided DAYS
//
// Classifies DAYS days, once without reports and once with them, for benchmarks/classifier-instructions to
// count.

#include <KestrelKit/foundation/CivilDay.h>
#include <KestrelKit/model/StateClassifier.h>
#include <fmt/format.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "Timing.h"

namespace {

using namespace kestrel;
using kestrel::benchmark::median;
using kestrel::benchmark::processorMilliseconds;

// The day keys of the years 0001 to 9999, and from the first again.
std::string dayKey(std::size_t index) {
  constexpr std::size_t keys = 3'652'059;
  const std::chrono::local_days first{std::chrono::year{1} / std::chrono::January / 1};
  return civilDayText(first + std::chrono::days{index % keys}).value_or("");
}

// Every third night short, every fourth long; posts, sentiment and its deviation all over their ranges, so
// that every rule takes its share, days are held back and days are smoothed.
std::vector<DailyMetrics> seriesOf(std::size_t count) {
  std::vector<DailyMetrics> days;
  days.reserve(count);
  std::uint64_t random = 1;
  const auto below = [&](std::uint64_t bound) {
    random = random * 6'364'136'223'846'793'005U + 1'442'695'040'888'963'407U;
    return static_cast<double>((random >> 33U) % bound);
  };
  for (std::size_t index = 0; index < count; ++index) {
    const double night = index % 3 == 0 ? 2 + below(40) / 10 : index % 4 == 0 ? 8 + below(40) / 10 : below(8);
    days.push_back({.date = dayKey(index),
                    .sleep_hours = night,
                    .posts = static_cast<std::int64_t>(below(20)),
                    .sentiment = below(200) / 100 - 1,
                    .steps = 9000,
                    .avg_hrv = index % 5 == 0 ? HrvInput::missing : HrvInput::measured(40)});
    if (index % 2 == 0) {
      days.back().sentiment_stdev = below(80) / 100;
    }
  }
  return days;
}

UserReports reportsOn(const std::vector<DailyMetrics>& days) {
  UserReports reports;
  for (std::size_t index = 0; index < days.size(); index += 10) {
    reports.insert_or_assign(
        days[index].date,
        UserReport{.state = KestrelState::hypomania, .percentage = 80, .notes = "awake early, many plans"});
  }
  return reports;
}

// By its name the counting of instructions knows what to count.
[[gnu::noinline]] std::vector<StateClassification> classifyAnew(const std::vector<DailyMetrics>& days,
                                                                const UserReports& reports) {
  return StateClassifier::classifySeries(days, reports, {});
}

[[gnu::noinline]] void classifyInto(std::vector<StateClassification>& result,
                                    const std::vector<DailyMetrics>& days, const UserReports& reports) {
  StateClassifier::classifySeries(days, reports, {}, result);
}

// ---- Instructions.

void countOnce(std::string_view where, std::size_t count) {
  const auto days = seriesOf(count);
  for (const UserReports& reports : {UserReports{}, reportsOn(days)}) {
    if (where == "new") {
      classifyAnew(days, reports);
    } else {
      auto result = StateClassifier::classifySeries(days, reports, {});
      classifyInto(result, days, reports);
    }
  }
}

// ---- Time.

constexpr std::size_t million = 1'000'000;

struct Series {
  std::vector<DailyMetrics> days;
  UserReports reports;
  std::vector<StateClassification> result;  // what the caller provides: it held these days before
};

Series prepared(std::size_t count, bool withReports) {
  Series series{.days = seriesOf(count), .reports = {}, .result = {}};
  if (withReports) {
    series.reports = reportsOn(series.days);
  }
  StateClassifier::classifySeries(series.days, series.reports, {}, series.result);
  return series;
}

// Nanoseconds a day; as many runs as make ten million days, so that short series are not lost in the clock.
template <typename Work>
double nanosecondsADay(std::size_t days, const Work& work) {
  const std::size_t runs = 10 * million / days;
  return processorMilliseconds([&] {
           for (std::size_t run = 0; run < runs; ++run) {
             work();
           }
         }) *
         1e6 / static_cast<double>(runs * days);
}

double provided(Series& series) {
  return nanosecondsADay(series.days.size(),
                         [&] { classifyInto(series.result, series.days, series.reports); });
}

double anew(const Series& series) {
  return nanosecondsADay(series.days.size(), [&] { classifyAnew(series.days, series.reports); });
}

void measure(int rounds) {
  fmt::print("| days | new | provided | new, reports | provided, reports |\n|--:|--:|--:|--:|--:|\n");
  for (std::size_t count = 1000; count <= 10 * million; count *= 10) {
    fmt::print("| {}", count);
    for (const bool withReports : {false, true}) {
      Series series = prepared(count, withReports);
      fmt::print(" | {:.0f} | {:.0f}", anew(series), provided(series));
      std::fflush(stdout);
    }
    fmt::print(" |\n");
  }

  fmt::print("\n| provided | 1,000,000, ns a day | 10,000,000, ns a day | ratio |\n|---|--:|--:|--:|\n");
  for (const bool withReports : {false, true}) {
    Series one = prepared(million, withReports);
    Series ten = prepared(10 * million, withReports);
    std::vector<double> ones;
    std::vector<double> tens;
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
      if (round % 2 == 0) {
        ones.push_back(provided(one));
        tens.push_back(provided(ten));
      } else {
        tens.push_back(provided(ten));
        ones.push_back(provided(one));
      }
      ratios.push_back(tens.back() / ones.back());
    }
    fmt::print("| {} | {:.0f} | {:.0f} | {:.2f} |\n", withReports ? "with reports" : "without reports",
               median(ones), median(tens), median(ratios));
    std::fflush(stdout);
  }
}

}  // namespace

int main(int count, char** arguments) {
  if (count == 3) {
    countOnce(arguments[1], std::strtoull(arguments[2], nullptr, 10));
    return 0;
  }
  const int rounds = count == 2 ? std::atoi(arguments[1]) : 5;  // NOLINT(cert-err34-c): 0 is refused below
  if (rounds < 1) {
    fmt::print(stderr, "usage: state_classifier_benchmark [ROUNDS] | new|provided DAYS\n");
    return 2;
  }
  measure(rounds);
}
