#include <KestrelKit/model/StateClassifier.h>
#include <KestrelKit/model/StateTheme.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace kestrel {
namespace {

// What the rules look at.
struct Day {
  double sleep;  // hours; 0 without data
  std::int64_t posts;
  double activity;                   // posts ÷ the person's usual posts
  double sentiment;                  // mean, about -1 to +1
  std::optional<double> volatility;  // of the sentiment; absent, it exceeds nothing

  bool isExtreme() const noexcept { return sleep > 10 || activity < 0.1; }

  // The limits of mania and of hypomania, widened by a tenth: whatever an elevated rule takes is near, and
  // would be if the rules were a little wider.
  bool isNearElevatedBoundary() const noexcept {
    return sleep > 0 && ((sleep <= 4.4 && (activity >= 1.35 || sentiment >= 0.36)) ||
                         (sleep <= 6.6 && (activity >= 1.08 || sentiment >= 0.18)));
  }
};

struct Rule {
  KestrelState state;
  double confidence;
  bool (*holds)(const Day& day) noexcept;
  std::array<std::string_view, 3> reasons;  // as many as are not empty
};

// The first rule that holds decides; the last one always does.
constexpr Rule rules[] = {
    {KestrelState::unknown,
     0.0,
     [](const Day& day) noexcept { return day.sleep == 0 && day.posts == 0; },
     {"Insufficient data"}},

    {KestrelState::mixedEpisode,
     0.85,
     [](const Day& day) noexcept {
       return day.sleep > 0 && day.sleep < 4 && day.activity > 1.5 && day.volatility > 0.4;
     },
     {"Severe sleep deficit (<4h)", "High activity", "High sentiment volatility"}},

    {KestrelState::mania,
     0.9,
     [](const Day& day) noexcept {
       return day.sleep > 0 && day.sleep < 4 && (day.activity > 1.5 || day.sentiment > 0.4);
     },
     {"Severe sleep deficit (<4h)", "High activity/sentiment"}},

    {KestrelState::hypomania,
     0.7,
     [](const Day& day) noexcept {
       return day.sleep > 0 && day.sleep < 6 && (day.activity > 1.2 || day.sentiment > 0.2);
     },
     {"Moderate sleep deficit (<6h)", "Elevated activity"}},

    {KestrelState::severeDepression,
     0.85,
     [](const Day& day) noexcept { return day.isExtreme() && day.sentiment < -0.5; },
     {"Very low sentiment (<-0.5)", "Hypersomnia or near-zero activity"}},

    {KestrelState::moderateDepression,
     0.75,
     [](const Day& day) noexcept { return (day.isExtreme() || day.activity < 0.3) && day.sentiment < -0.3; },
     {"Low sentiment", "Depressed activity or sleep"}},

    {KestrelState::dysthymia,
     0.6,
     [](const Day& day) noexcept { return day.sleep > 8 && (day.sentiment < -0.1 || day.activity < 0.6); },
     {"Lowered activity/sentiment"}},

    {KestrelState::euthymia, 0.5, [](const Day&) noexcept { return true; }, {}},
};

constexpr double keywordConfidence = 0.7;
constexpr double smoothedConfidence = 0.5;

// How a day is judged, before it is written down.
struct Verdict {
  const Rule* rule;
  const UserReport* report;  // replaces what the rule says; null: there is none
  bool isHeldBack;           // the rule's state is withheld

  KestrelState state() const noexcept {
    if (report != nullptr) {
      return report->state;
    }
    return isHeldBack ? KestrelState{KestrelState::unknown} : rule->state;
  }
};

Verdict verdictOn(const DailyMetrics& metrics, const UserReport* report, const Baseline& baseline) noexcept {
  const Day day{
      .sleep = metrics.sleep_hours,
      .posts = metrics.posts,
      .activity = static_cast<double>(metrics.posts) / (baseline.avgPosts == 0 ? 1 : baseline.avgPosts),
      .sentiment = metrics.sentiment,
      .volatility = metrics.sentiment_stdev};
  const Rule& rule = *std::ranges::find_if(rules, [&](const Rule& each) { return each.holds(day); });
  const bool isHeldBack = StateTheme::group(rule.state) == StateGroup::elevated &&
                          metrics.avg_hrv == HrvInput::missing && day.isNearElevatedBoundary();
  return {.rule = &rule, .report = report, .isHeldBack = isHeldBack};
}

// Finds the reports of days. These mostly come in the order of their keys: then the report is the one that
// the last search ended at, or the next, however many reports there are.
class ReportSearch {
 public:
  explicit ReportSearch(const UserReports& reports) noexcept : reports_(reports), found_(reports.begin()) {}

  // Null: there is none. `date` must live until the next call.
  const UserReport* of(std::string_view date) {
    if (date < last_) {
      found_ = reports_.lower_bound(date);
    } else if (isBefore(date)) {
      ++found_;
      if (isBefore(date)) {
        found_ = reports_.lower_bound(date);
      }
    }
    last_ = date;
    return found_ != reports_.end() && found_->first == date ? &found_->second : nullptr;
  }

 private:
  bool isBefore(std::string_view date) const noexcept {
    return found_ != reports_.end() && found_->first < date;
  }

  const UserReports& reports_;
  UserReports::const_iterator found_;  // the first that is not before the last date
  std::string_view last_;
};

// Whether a day stands alone against both of its neighbours.
bool isLone(StateGroup before, StateGroup day, StateGroup after) noexcept {
  return before == after && ((day == StateGroup::elevated && before == StateGroup::depressed) ||
                             (day == StateGroup::depressed && before == StateGroup::elevated));
}

// The joined parts, in the memory that `text` has or in one piece that fits.
void join(std::string& text, std::initializer_list<std::string_view> parts) {
  std::size_t size = 0;
  for (const std::string_view part : parts) {
    size += part.size();
  }
  text.clear();
  text.reserve(size);
  for (const std::string_view part : parts) {
    text += part;
  }
}

void writeReasons(const Verdict& verdict, bool isSmoothed, std::vector<std::string>& reasons) {
  const auto& texts = verdict.rule->reasons;
  const auto end = std::ranges::find(texts, std::string_view{});
  const std::string_view state = verdict.rule->state.rawValue();
  const bool isWithheld = verdict.isHeldBack || isSmoothed;
  reasons.resize(static_cast<std::size_t>(end - texts.begin()) + (isWithheld ? 1 : 0));
  if (verdict.isHeldBack) {
    join(reasons.front(), {"HRV missing near ", state, " boundary; held back"});
  } else if (isSmoothed) {
    join(reasons.front(), {"Smoothed: ", state, " not corroborated by neighbors"});
  }
  std::copy(texts.begin(), end, reasons.begin() + (isWithheld ? 1 : 0));
}

void writeReport(const Verdict& verdict, StateClassification& result) {
  const UserReport& report = *verdict.report;
  const KestrelState rulesState = verdict.rule->state;
  result.predictedState = report.state;
  result.isValidated = rulesState != KestrelState::unknown && rulesState == report.state;
  result.reasons.resize(1);
  std::string& reason = result.reasons.front();
  if (report.origin == SelfReportSource::manual) {
    const auto percentage = static_cast<double>(report.percentage);
    result.confidence = percentage / 100;
    result.source = ClassificationSource::manual;
    result.selfReportConfidence = percentage;
    result.selfReportNotes = report.notes;
    if (report.notes) {
      join(reason, {"Self-reported: ", *report.notes});
    } else {
      reason = "Self-reported by user";
    }
  } else {
    result.confidence = keywordConfidence;
    result.source = ClassificationSource::keyword;
    result.selfReportConfidence.reset();
    result.selfReportNotes.reset();
    if (report.keyword) {
      join(reason, {"Keyword detected: \"", *report.keyword, "\""});
    } else {
      reason = "Keyword detected in messages";
    }
  }
}

// Sets every field of `result`. What the user reported is neither held back nor smoothed.
void write(const DailyMetrics& day, const Verdict& verdict, bool isSmoothed, StateClassification& result) {
  result.date = day.date;
  result.isConfirmed.reset();
  if (verdict.report != nullptr) {
    writeReport(verdict, result);
    return;
  }
  result.predictedState = isSmoothed ? KestrelState{KestrelState::euthymia} : verdict.state();
  result.confidence = isSmoothed ? smoothedConfidence : verdict.isHeldBack ? 0 : verdict.rule->confidence;
  writeReasons(verdict, isSmoothed, result.reasons);
  result.source = ClassificationSource::algorithmic;
  result.selfReportConfidence.reset();
  result.selfReportNotes.reset();
  result.isValidated.reset();
}

}  // namespace

StateClassification StateClassifier::classify(const DailyMetrics& day, const UserReport* report,
                                              const Baseline& baseline) {
  StateClassification result;
  write(day, verdictOn(day, report, baseline), /*isSmoothed=*/false, result);
  return result;
}

std::vector<StateClassification> StateClassifier::classifySeries(std::span<const DailyMetrics> days,
                                                                 const UserReports& reports,
                                                                 const Baseline& baseline) {
  std::vector<StateClassification> result;
  classifySeries(days, reports, baseline, result);
  return result;
}

void StateClassifier::classifySeries(std::span<const DailyMetrics> days, const UserReports& reports,
                                     const Baseline& baseline, std::vector<StateClassification>& result) {
  result.resize(days.size());
  if (days.empty()) {
    return;
  }
  ReportSearch search{reports};
  const auto verdictAt = [&](std::size_t index) {
    const DailyMetrics& day = days[index];
    return verdictOn(day, search.of(day.date), baseline);
  };
  // A day is written down as soon as the next one is judged. What lies outside the series has no polarity.
  StateGroup before = StateGroup::none;
  Verdict verdict = verdictAt(0);
  StateGroup group = StateTheme::group(verdict.state());
  for (std::size_t index = 0; index < days.size(); ++index) {
    Verdict nextVerdict = verdict;
    StateGroup after = StateGroup::none;
    if (index + 1 < days.size()) {
      nextVerdict = verdictAt(index + 1);
      after = StateTheme::group(nextVerdict.state());
    }
    write(days[index], verdict, isLone(before, group, after), result[index]);
    before = group;
    verdict = nextVerdict;
    group = after;
  }
}

}  // namespace kestrel
