#include <KestrelKit/model/Predictor.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

using State = KestrelState;

DayKeyFormatter in(std::string_view zone) { return DayKeyFormatter{*TimeZone::named(zone)}; }

// Three days; only the last one counts, and only its date and state.
std::vector<StateClassification> historyTo(const std::string& date, State state) {
  return {
      {.date = "9999-12-31", .predictedState = State::mania},
      {.date = "no day", .predictedState = State::mania},
      {.date = date, .predictedState = state, .confidence = 0.1, .source = ClassificationSource::keyword}};
}

std::vector<std::string> datesOf(const std::vector<Prediction>& predictions) {
  std::vector<std::string> dates;
  for (const Prediction& prediction : predictions) {
    dates.push_back(prediction.date);
  }
  return dates;
}

using Dates = std::vector<std::string>;

TEST(Predictor, forecastsNothingFromTwoClassifications) {
  auto history = historyTo("2024-05-01", State::euthymia);
  history.erase(history.begin());
  EXPECT_EQ(Predictor::predict(history, 2, in("UTC")), std::vector<Prediction>{});
  EXPECT_EQ(Predictor::predict({}, 2, in("UTC")), std::vector<Prediction>{});
}

TEST(Predictor, forecastsTheNextTwoDaysFromThreeThatEndInEuthymia) {
  EXPECT_EQ(Predictor::predict(historyTo("2024-02-28", State::euthymia), 2, in("Europe/Berlin")),
            (std::vector<Prediction>{
                {.date = "2024-02-29", .predictedState = State::euthymia, .probability = 0.8},
                {.date = "2024-03-01", .predictedState = State::euthymia, .probability = 0.8}}));
}

TEST(Predictor, givesEveryStateItsProbabilityAndUnknownThatOfTheOthers) {
  const std::pair<State, double> rows[] = {
      {State::psychosis, 0.4},           {State::mixedEpisode, 0.45},    {State::mania, 0.5},
      {State::hypomania, 0.6},           {State::euthymia, 0.8},         {State::dysthymia, 0.7},
      {State::moderateDepression, 0.65}, {State::severeDepression, 0.7}, {State::unknown, 0.6},
  };
  for (const auto& [state, probability] : rows) {
    EXPECT_EQ(Predictor::predict(historyTo("2024-05-01", state), 1, in("UTC")),
              (std::vector<Prediction>{
                  {.date = "2024-05-02", .predictedState = state, .probability = probability}}));
  }
}

TEST(Predictor, forecastsNothingAfterALastDateThatIsNoDay) {
  for (const char* date : {"", "2024-5-1", "2024-02-30", "yesterday", "10000-01-01"}) {
    EXPECT_EQ(Predictor::predict(historyTo(date, State::mania), 3, in("UTC")), std::vector<Prediction>{})
        << date;
  }
}

TEST(Predictor, trustsTheOrderOfTheHistory) {
  std::vector<StateClassification> history{{.date = "2024-05-09", .predictedState = State::mania},
                                           {.date = "2024-05-08", .predictedState = State::mania},
                                           {.date = "2024-05-07", .predictedState = State::dysthymia}};
  EXPECT_EQ(Predictor::predict(history, 1, in("UTC")),
            (std::vector<Prediction>{
                {.date = "2024-05-08", .predictedState = State::dysthymia, .probability = 0.7}}));
}

TEST(Predictor, repeatsAKeyAcrossTheNightInWhichTheClocksAreSetBack) {
  // In Berlin 2024-10-27 has 25 hours: 24 hours after its midnight it is 23:00 of the same day.
  EXPECT_EQ(datesOf(Predictor::predict(historyTo("2024-10-26", State::mania), 3, in("Europe/Berlin"))),
            (Dates{"2024-10-27", "2024-10-27", "2024-10-28"}));
}

TEST(Predictor, skipsNoKeyAcrossTheNightInWhichTheClocksAreSetForward) {
  // In Berlin 2024-03-31 has 23 hours: 24 hours after its midnight it is 01:00 of the next day.
  EXPECT_EQ(datesOf(Predictor::predict(historyTo("2024-03-30", State::mania), 3, in("Europe/Berlin"))),
            (Dates{"2024-03-31", "2024-04-01", "2024-04-02"}));
}

TEST(Predictor, leavesOutDaysBeyondTheYear9999) {
  for (const std::int64_t days :
       {std::int64_t{2}, std::int64_t{3}, std::numeric_limits<std::int64_t>::max()}) {
    EXPECT_EQ(datesOf(Predictor::predict(historyTo("9999-12-29", State::mania), days, in("UTC"))),
              (Dates{"9999-12-30", "9999-12-31"}));
  }
  EXPECT_EQ(datesOf(Predictor::predict(historyTo("9999-12-31", State::mania), 1, in("Pacific/Apia"))),
            Dates{});
}

TEST(PredictorDeathTest, stopsForFewerThanOneDay) {
  const auto history = historyTo("2024-05-01", State::mania);
  for (const std::int64_t days :
       {std::int64_t{0}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::min()}) {
    EXPECT_DEATH((void)Predictor::predict(history, days, in("UTC")),
                 "programming error: a forecast of fewer than 1 day");
  }
  EXPECT_DEATH((void)Predictor::predict({}, 0, in("UTC")),
               "programming error: a forecast of fewer than 1 day");
}

}  // namespace
}  // namespace kestrel
