// The classifier on random input, beside the same rules written a second time, the plain way.

#include <KestrelKit/model/StateClassifier.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {
namespace {

// ---- The judge.

StateClassification judged(const DailyMetrics& day, const std::optional<UserReport>& report,
                           const Baseline& baseline) {
  const double S = day.sleep_hours;
  const double P = static_cast<double>(day.posts);
  const double A = P / (baseline.avgPosts == 0.0 ? 1.0 : baseline.avgPosts);
  const double M = day.sentiment;

  StateClassification result{.date = day.date};
  const auto decide = [&](const char* state, double confidence, std::vector<std::string> reasons) {
    result.predictedState = *KestrelState::fromRawValue(state);
    result.confidence = confidence;
    result.reasons = std::move(reasons);
  };
  bool elevated = false;
  bool hasData = true;
  bool extreme = false;
  if (S > 10) extreme = true;
  if (A < 0.1) extreme = true;

  if (S == 0.0 && day.posts == 0) {
    hasData = false;
    decide("Unknown", 0, {"Insufficient data"});
  } else if (S > 0 && S < 6) {
    elevated = true;
    if (S < 4 && A > 1.5 && day.sentiment_stdev.has_value() && *day.sentiment_stdev > 0.4) {
      decide("Mixed Episode", 0.85,
             {"Severe sleep deficit (<4h)", "High activity", "High sentiment volatility"});
    } else if (S < 4 && (A > 1.5 || M > 0.4)) {
      decide("Mania", 0.9, {"Severe sleep deficit (<4h)", "High activity/sentiment"});
    } else if (A > 1.2 || M > 0.2) {
      decide("Hypomania", 0.7, {"Moderate sleep deficit (<6h)", "Elevated activity"});
    } else {
      elevated = false;
    }
  }
  if (hasData && !elevated) {
    if (extreme && M < -0.5) {
      decide("Severe Depression", 0.85, {"Very low sentiment (<-0.5)", "Hypersomnia or near-zero activity"});
    } else if ((extreme && M < -0.3) || (!extreme && A < 0.3 && M < -0.3)) {
      decide("Moderate Depression", 0.75, {"Low sentiment", "Depressed activity or sleep"});
    } else if (S > 8 && (M < -0.1 || A < 0.6)) {
      decide("Dysthymia", 0.6, {"Lowered activity/sentiment"});
    } else {
      decide("Euthymia", 0.5, {});
    }
  }

  if (report) {
    result.isValidated = hasData && report->state == result.predictedState;
    result.predictedState = report->state;
    if (report->origin == SelfReportSource::manual) {
      result.source = ClassificationSource::manual;
      result.confidence = static_cast<double>(report->percentage) / 100.0;
      result.reasons = {report->notes ? "Self-reported: " + *report->notes : "Self-reported by user"};
      result.selfReportConfidence = static_cast<double>(report->percentage);
      result.selfReportNotes = report->notes;
    } else {
      result.source = ClassificationSource::keyword;
      result.confidence = 0.7;
      result.reasons = {report->keyword ? "Keyword detected: \"" + *report->keyword + '"'
                                        : "Keyword detected in messages"};
    }
    return result;
  }

  const double r = baseline.avgPosts == 0.0 ? P : P / baseline.avgPosts;
  const bool nearMania = S <= 4.4 && (r >= 1.35 || M >= 0.36);
  const bool nearHypomania = S <= 6.6 && (r >= 1.08 || M >= 0.18);
  if (elevated && day.avg_hrv == HrvInput::missing && S > 0 && (nearMania || nearHypomania)) {
    const std::string state{result.predictedState.rawValue()};
    auto reasons = result.reasons;
    reasons.insert(reasons.begin(), "HRV missing near " + state + " boundary; held back");
    decide("Unknown", 0, std::move(reasons));
  }
  return result;
}

// +1, -1 or 0.
int polarity(const StateClassification& day) {
  const std::string_view text = day.predictedState.rawValue();
  if (text == "Psychosis" || text == "Mixed Episode" || text == "Mania" || text == "Hypomania") return 1;
  if (text == "Dysthymia" || text == "Moderate Depression" || text == "Severe Depression") return -1;
  return 0;
}

std::vector<StateClassification> judged(const std::vector<DailyMetrics>& days, const UserReports& reports,
                                        const Baseline& baseline) {
  std::vector<StateClassification> before;
  for (const DailyMetrics& day : days) {
    const auto report = reports.find(day.date);
    before.push_back(
        judged(day, report == reports.end() ? std::nullopt : std::optional{report->second}, baseline));
  }
  auto after = before;
  for (std::size_t i = 1; i + 1 < before.size(); ++i) {
    const int here = polarity(before[i]);
    if (before[i].source == ClassificationSource::algorithmic && here != 0 &&
        polarity(before[i - 1]) == -here && polarity(before[i + 1]) == -here) {
      after[i].predictedState = KestrelState::euthymia;
      after[i].confidence = 0.5;
      after[i].reasons.insert(
          after[i].reasons.begin(),
          "Smoothed: " + std::string{before[i].predictedState.rawValue()} + " not corroborated by neighbors");
    }
  }
  return after;
}

// ---- Random input: every double, and often those around the limits of the rules.

// From `least` to below `end`, all alike from the first run on.
template <class Integer>
rc::Gen<Integer> anyOf(Integer least, Integer end) {
  return rc::gen::resize(rc::kNominalSize, rc::gen::inRange(least, end));
}

rc::Gen<double> anyDouble() {
  return rc::gen::oneOf(
      rc::gen::map(rc::gen::arbitrary<std::uint64_t>(),
                   [](std::uint64_t bits) { return std::bit_cast<double>(bits); }),
      rc::gen::element(0.0, -0.0, std::numeric_limits<double>::infinity(),
                       -std::numeric_limits<double>::infinity(), std::nan(""),
                       std::numeric_limits<double>::denorm_min()),
      rc::gen::map(anyOf(-200, 200), [](int percent) { return percent / 100.0; }),
      rc::gen::apply([](double limit, double towards) { return std::nextafter(limit, towards); },
                     rc::gen::element(4.0, 6.0, 8.0, 10.0, 4.4, 6.6, 0.4, 0.2, 0.36, 0.18, -0.5, -0.3, -0.1,
                                      0.1, 0.3, 0.6, 1.5),
                     rc::gen::element(-100.0, 0.0, 100.0, 4.0, 0.4)));
}

rc::Gen<double> anySleep() {
  return rc::gen::oneOf(anyDouble(), rc::gen::map(anyOf(0, 120), [](int tenths) { return tenths / 10.0; }));
}

DailyMetrics anyDay() {
  DailyMetrics day{
      .date = *rc::gen::element<std::string>("2024-05-01", "2024-05-02", "2024-05-03", "x", ""),
      .sleep_hours = *anySleep(),
      .posts = *rc::gen::oneOf(rc::gen::arbitrary<std::int64_t>(), anyOf<std::int64_t>(0, 20)),
      .sentiment = *anyDouble(),
      .steps = *rc::gen::arbitrary<std::int64_t>(),
      .avg_hrv = *rc::gen::element(HrvInput::missing, HrvInput::notProvided, HrvInput::measured(40))};
  if (*rc::gen::arbitrary<bool>()) {
    day.sentiment_stdev = *anyDouble();
  }
  return day;
}

UserReport anyReport() {
  UserReport report{
      .state = KestrelState::allCases[*anyOf<std::size_t>(0, KestrelState::allCases.size())],
      .percentage = *anyOf<std::int64_t>(0, 101),
      .origin = *rc::gen::element<SelfReportSource>(SelfReportSource::manual, SelfReportSource::keyword)};
  if (*rc::gen::arbitrary<bool>()) {
    report.notes =
        *rc::gen::element<std::string>("", "slept \"badly\"", "a note that is longer than a short text");
  }
  if (*rc::gen::arbitrary<bool>()) {
    report.keyword = *rc::gen::element<std::string>("", "empty");
  }
  return report;
}

Baseline anyBaseline() {
  return {.avgSleep = *anyDouble(),
          .avgPosts = *rc::gen::oneOf(anyDouble(), rc::gen::element(0.0, 1.0, 10.0)),
          .avgSentiment = *anyDouble()};
}

TEST(StateClassifierProperties, classifiesEveryDayAsTheJudgeDoesWhateverItsNumbers) {
  EXPECT_TRUE(rc::check("any day", [] {
    const DailyMetrics day = anyDay();
    const Baseline baseline = anyBaseline();
    const auto report = *rc::gen::arbitrary<bool>() ? std::optional{anyReport()} : std::nullopt;
    const auto result = StateClassifier::classify(day, report ? &*report : nullptr, baseline);
    RC_CLASSIFY(result.predictedState == KestrelState::unknown, "unknown");
    RC_CLASSIFY(polarity(result) > 0, "elevated");
    RC_CLASSIFY(polarity(result) < 0, "depressed");
    RC_ASSERT(result == judged(day, report, baseline));
    RC_ASSERT(result.confidence >= 0.0);
    RC_ASSERT(result.confidence <= 1.0);
  }));
}

// Days of strong colour, so that there is something to smooth; now and then any day at all.
DailyMetrics colouredDay() {
  DailyMetrics day = anyDay();
  switch (*anyOf(0, 9)) {
    case 0:
      break;
    case 1:
      day.sleep_hours = 7.5;
      day.posts = 10;
      day.sentiment = 0;
      break;
    case 2:
    case 3:
    case 4:
    case 5:
      day.sleep_hours = 3;
      day.posts = 20;
      break;
    default:
      day.sleep_hours = 11;
      day.posts = 10;
      day.sentiment = -0.7;
  }
  if (day.avg_hrv == HrvInput::missing && *anyOf(0, 4) > 0) {
    day.avg_hrv = HrvInput::notProvided;
  }
  return day;
}

TEST(StateClassifierProperties, smoothsOnlyLoneDaysOfTheOtherPolarityAsTheJudgeDoes) {
  EXPECT_TRUE(rc::check("any series", [] {
    std::vector<DailyMetrics> days;
    UserReports reports;
    for (int left = *anyOf(0, 12); left > 0; --left) {
      days.push_back(colouredDay());
      days.back().date = std::to_string(*anyOf(0, 40));
      if (*anyOf(0, 6) == 0) {
        reports.emplace(days.back().date, anyReport());
      }
      if (*anyOf(0, 6) == 0) {
        reports.emplace(std::to_string(*anyOf(0, 40)),
                        anyReport());  // of a day that may not be in the series
      }
    }
    if (*anyOf(0, 3) > 0) {  // mostly in the order of time
      std::ranges::sort(days, {}, &DailyMetrics::date);
    }
    const Baseline baseline = *rc::gen::arbitrary<bool>() ? Baseline{} : anyBaseline();
    const auto series = StateClassifier::classifySeries(days, reports, baseline);
    RC_ASSERT(series == judged(days, reports, baseline));

    // What changed against each day by itself is a lone day, and nothing else changed.
    std::size_t changes = 0;
    std::vector<StateClassification> alone;
    for (const DailyMetrics& day : days) {
      const auto report = reports.find(day.date);
      alone.push_back(
          StateClassifier::classify(day, report == reports.end() ? nullptr : &report->second, baseline));
    }
    for (std::size_t i = 0; i < days.size(); ++i) {
      if (series[i] == alone[i]) {
        continue;
      }
      ++changes;
      RC_ASSERT(i > 0 && i + 1 < days.size());
      RC_ASSERT(alone[i].source == ClassificationSource::algorithmic);
      RC_ASSERT(polarity(alone[i]) != 0);
      RC_ASSERT(polarity(alone[i - 1]) == -polarity(alone[i]));
      RC_ASSERT(polarity(alone[i + 1]) == -polarity(alone[i]));
      RC_ASSERT(series[i].predictedState == KestrelState::euthymia);
    }
    RC_CLASSIFY(changes > 0, "smoothed");

    // A result that is used again holds the same, whatever it held.
    std::vector<StateClassification> used = alone;
    used.resize(*anyOf<std::size_t>(0, 14));
    StateClassifier::classifySeries(days, reports, baseline, used);
    RC_ASSERT(used == series);
  }));
}

}  // namespace
}  // namespace kestrel
