// What the circadian features of many people cost, beside the same figures computed with NumPy.
//
//   circadian_features_benchmark SCRIPT [ROUNDS]
//
// SCRIPT is benchmarks/circadian_features.py. Ten thousand people with a year each: 365 nights, 24 hourly
// totals, 365 step counts, 365 resting heart rates. Each round, in turns: ours; one sequence of NumPy calls
// for each person; one two-dimensional NumPy computation over all people. Checks in every round that all
// three give the same figures, and prints medians and ratios, once for nights whose middle is a whole minute,
// as consolidated nights have it, and once for any. Takes at least 5 ROUNDS, which is also what it takes by
// default.

#include <KestrelKit/circadian/CircadianFeatures.h>
#include <KestrelKit/circadian/CircadianObservations.h>
#include <KestrelKit/circadian/CircadianStatistics.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "Timing.h"

namespace {

using kestrel::CircadianFeatures;
using kestrel::CircadianObservations;
using kestrel::CircadianStatistics;
using kestrel::benchmark::median;

constexpr int people = 10'000;
constexpr int days = 365;
constexpr int hours = 24;

[[noreturn]] void fail(std::string_view what) {
  fmt::print(stderr, "circadian_features_benchmark: {}\n", what);
  std::exit(1);
}

std::vector<CircadianObservations> observe(bool wholeMinutes) {
  std::mt19937_64 random(1);
  const auto normal = [&](double mean, double deviation) {
    return std::normal_distribution(mean, deviation)(random);
  };
  std::vector<CircadianObservations> all(people);
  for (auto& person : all) {
    person.date = "2024-12-31";
    const double middle = normal(210, 90);
    const auto midSleep = [&] {
      const double minutes = std::fmod(normal(middle, 50) + 10 * 1440, 1440);
      return wholeMinutes ? std::floor(minutes) : minutes;
    };
    for (int day = 0; day < days; ++day) {
      person.nights.push_back(
          {.date = "2024-12-31", .midSleepMinutes = midSleep(), .asleepMinutes = normal(430, 40)});
      person.stepCounts.push_back(static_cast<std::int64_t>(std::max(0.0, normal(8000, 3000))));
      person.baselineRestingHeartRates.push_back(static_cast<std::int64_t>(normal(60, 4)));
    }
    person.judgedMidSleepMinutes = midSleep();
    person.hourlyActivity.emplace();
    for (int hour = 0; hour < hours; ++hour) {
      person.hourlyActivity->push_back(
          std::floor(std::max(0.0, 400 * std::sin((hour - 7) * 0.2) + normal(100, 60))));
    }
    person.restingHeartRate = static_cast<std::int64_t>(normal(62, 5));
    person.expectedNights = days;
  }
  return all;
}

template <typename Number>
void write(std::ofstream& file, const std::vector<Number>& numbers) {
  file.write(reinterpret_cast<const char*>(numbers.data()),
             static_cast<std::streamsize>(numbers.size() * sizeof(Number)));
}

/// The arrays that the script reads, one after the other, each for all people.
void writeObservations(const std::filesystem::path& path, const std::vector<CircadianObservations>& all) {
  std::ofstream file(path, std::ios::binary);
  std::vector<double> floats;
  std::vector<std::int64_t> integers;
  for (const auto& person : all) {
    for (const auto& night : person.nights) {
      floats.push_back(night.midSleepMinutes);
    }
  }
  for (const auto& person : all) {
    for (const auto& night : person.nights) {
      floats.push_back(night.asleepMinutes);
    }
  }
  for (const auto& person : all) {
    floats.insert(floats.end(), person.hourlyActivity->begin(), person.hourlyActivity->end());
  }
  for (const auto& person : all) {
    floats.push_back(*person.judgedMidSleepMinutes);
  }
  for (const auto& person : all) {
    integers.insert(integers.end(), person.stepCounts.begin(), person.stepCounts.end());
  }
  for (const auto& person : all) {
    integers.insert(integers.end(), person.baselineRestingHeartRates.begin(),
                    person.baselineRestingHeartRates.end());
  }
  for (const auto& person : all) {
    integers.push_back(*person.restingHeartRate);
  }
  write(file, floats);
  write(file, integers);
}

/// Our figures, in the order in which the script has its own.
void writeFeatures(const std::filesystem::path& path, const std::vector<CircadianFeatures>& all) {
  std::ofstream file(path, std::ios::binary);
  std::vector<double> figures;
  for (const auto& each : all) {
    figures.insert(figures.end(),
                   {*each.phaseDeviationHours, *each.sleepRegularitySDMinutes, *each.durationSDMinutes,
                    each.activity->m10OnsetHour, each.activity->m10, each.activity->l5, each.activity->mesor,
                    each.activity->relativeAmplitude, *each.stepVariabilityCV, *each.restingHRDeviationBpm,
                    each.coverageNights, static_cast<double>(each.daysObserved)});
  }
  write(file, figures);
}

struct NumPyTimes {
  double perPerson = 0;  ///< Milliseconds.
  double together = 0;
};

/// Has the script compute the same and compare it.
NumPyTimes askNumPy(const std::string& script, const std::filesystem::path& folder) {
  const auto command =
      fmt::format("/usr/bin/python3 -B '{}' '{}' {} {}", script, folder.string(), people, days);
  NumPyTimes times;
  std::FILE* pipe = popen(command.c_str(), "r");
  const bool answered =
      pipe != nullptr && std::fscanf(pipe, "%lf %lf", &times.perPerson, &times.together) == 2;
  if (pipe == nullptr || pclose(pipe) != 0 || !answered) {
    fail("the script failed: it needs Debian's python3-numpy, and figures that agree");
  }
  return times;
}

}  // namespace

int main(int count, char** arguments) {
  constexpr int fewestRounds = 5;
  const int rounds =
      count > 2 ? std::atoi(arguments[2]) : fewestRounds;  // NOLINT(cert-err34-c): 0 is refused below
  if (count < 2 || rounds < fewestRounds) {
    fail("usage: circadian_features_benchmark SCRIPT [ROUNDS], with 5 rounds at least");
  }
  const auto folder =
      std::filesystem::temp_directory_path() / fmt::format("circadian-features-{}", std::random_device()());
  std::filesystem::create_directory(folder);

  fmt::print(
      "| middle of the nights | ours, ms | NumPy a person, ms | ratio | NumPy at once, ms | ratio |\n");
  fmt::print("|---|--:|--:|--:|--:|--:|\n");
  for (const bool wholeMinutes : {true, false}) {
    const auto observations = observe(wholeMinutes);
    writeObservations(folder / "observations", observations);
    std::vector<double> ours;
    std::vector<double> perPerson;
    std::vector<double> together;
    std::vector<double> perPersonRatio;
    std::vector<double> togetherRatio;
    for (int round = 0; round < rounds; ++round) {
      std::vector<CircadianFeatures> features(people);
      ours.push_back(kestrel::benchmark::processorMilliseconds(
          [&] { std::ranges::transform(observations, features.begin(), CircadianStatistics::features); }));
      writeFeatures(folder / "features", features);
      const auto numPy = askNumPy(arguments[1], folder);
      perPerson.push_back(numPy.perPerson);
      together.push_back(numPy.together);
      perPersonRatio.push_back(perPerson.back() / ours.back());
      togetherRatio.push_back(together.back() / ours.back());
    }
    fmt::print("| {} | {:.0f} | {:.0f} | {:.1f} | {:.0f} | {:.2f} |\n",
               wholeMinutes ? "whole minutes" : "any time", median(ours), median(perPerson),
               median(perPersonRatio), median(together), median(togetherRatio));
    std::fflush(stdout);
  }
  std::filesystem::remove_all(folder);
}
