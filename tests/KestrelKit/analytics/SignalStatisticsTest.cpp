#include <KestrelKit/analytics/SignalEvidenceAnalyzer.h>
#include <KestrelKit/analytics/SignalStatistics.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "SignalDays.h"

namespace kestrel {
namespace {

using Statistics = SignalStatistics;

TEST(RoundedToFourDecimals, roundsToTheNearestAndHalvesAwayFromZero) {
  EXPECT_EQ(Statistics::roundedToFourDecimals(0.12344999), 0.1234);
  EXPECT_EQ(Statistics::roundedToFourDecimals(0.12346), 0.1235);
  // Halves that are exact in binary: 1/32 = 0.03125, 3/32 = 0.09375.
  EXPECT_EQ(Statistics::roundedToFourDecimals(1.0 / 32), 0.0313);
  EXPECT_EQ(Statistics::roundedToFourDecimals(-1.0 / 32), -0.0313);
  EXPECT_EQ(Statistics::roundedToFourDecimals(3.0 / 32), 0.0938);
  EXPECT_EQ(Statistics::roundedToFourDecimals(std::nextafter(1.0 / 32, 0)), 0.0312);
  EXPECT_EQ(Statistics::roundedToFourDecimals(7), 7);
  EXPECT_EQ(Statistics::roundedToFourDecimals(0), 0);
}

TEST(StandardNormalDistribution, isThatOfTheErrorFunctionToTheBoundOfItsApproximation) {
  double worst = 0;
  for (double x = -12; x <= 12; x += 1.0 / 1024) {
    const double exact = std::erfc(-x / std::numbers::sqrt2) / 2;
    worst = std::max(worst, std::abs(Statistics::standardNormalDistribution(x) - exact));
  }
  EXPECT_LE(worst, 7.5e-8);
  EXPECT_GT(worst, 6e-8);  // of the approximation, not of a better one
}

TEST(StandardNormalDistribution, hasItsEndsAndItsMiddle) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(Statistics::standardNormalDistribution(infinity), 1);
  EXPECT_EQ(Statistics::standardNormalDistribution(-infinity), 0);
  EXPECT_NEAR(Statistics::standardNormalDistribution(0), 0.5, 1e-9);
  EXPECT_EQ(Statistics::standardNormalDistribution(-0.0), Statistics::standardNormalDistribution(0.0));
  for (const double x : {0.1, 1.0, 1.96, 6.0}) {
    EXPECT_NEAR(Statistics::standardNormalDistribution(-x), 1 - Statistics::standardNormalDistribution(x),
                1e-15);
  }
}

TEST(StandardizedDifference, needsTwoValuesOnEachSide) {
  EXPECT_FALSE(Statistics::standardizedDifference({1, 5, 0}, {9, 6, 1}));
  EXPECT_FALSE(Statistics::standardizedDifference({9, 5, 1}, {1, 6, 0}));
  EXPECT_FALSE(Statistics::standardizedDifference({0, 0, 0}, {0, 0, 0}));
  EXPECT_TRUE(Statistics::standardizedDifference({2, 5, 1}, {2, 6, 1}));
}

TEST(StandardizedDifference, takesADeviationBelowATrillionthForNone) {
  // Two and two values with equal variances: the pooled deviation is their root.
  const auto difference = [](double deviation, double distance) {
    return Statistics::standardizedDifference({2, 0, deviation * deviation},
                                              {2, distance, deviation * deviation});
  };
  const double below = 0.999'999e-12;
  const double above = 1.000'001e-12;
  EXPECT_EQ(difference(below, 0), StandardizedDifference{});
  EXPECT_EQ(difference(below, std::nextafter(1e-12, 0)), StandardizedDifference{});
  EXPECT_EQ(difference(below, -std::nextafter(1e-12, 0)), StandardizedDifference{});
  EXPECT_EQ(difference(below, 1e-12), std::nullopt);
  EXPECT_EQ(difference(below, -1e-12), std::nullopt);
  ASSERT_TRUE(difference(above, 1e-12));
  EXPECT_EQ(difference(above, 1e-12)->difference, 1);
  EXPECT_EQ(difference(1, 1e-12)->difference, 0);
}

TEST(StandardizedDifference, ofThreeAndThreeDaysIsAsByHand) {
  // 1, 2, 3 and 4, 5, 6: variances 1, d = 3, SE = sqrt(6/9 + 9/8) = 1.338532, z = 2.241261, and the
  // probability beyond z on both sides is 0.025009.
  const auto result = Statistics::standardizedDifference({3, 2, 1}, {3, 5, 1}).value();
  EXPECT_EQ(result.difference, 3);
  EXPECT_EQ(result.confidenceInterval, (ConfidenceInterval{0.3765, 5.6235}));
  EXPECT_EQ(result.pValue, 0.025);
}

TEST(StandardizedDifference, isAbsentWhereAFigureLiesBeyondAFloat) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_FALSE(Statistics::standardizedDifference({5, 0, infinity}, {5, 1, 1}));
  EXPECT_FALSE(Statistics::standardizedDifference({5, 0, nan}, {5, 1, 1}));
  EXPECT_FALSE(Statistics::standardizedDifference({5, -infinity, 1}, {5, 1, 1}));
  EXPECT_FALSE(Statistics::standardizedDifference({5, infinity, 1}, {5, infinity, 1}));
  EXPECT_FALSE(Statistics::standardizedDifference({5, 0, 1e-20}, {5, 1e300, 1e-20}));
}

TEST(BenjaminiHochberg, ofTenIsAsByHand) {
  // p times ten over its rank, or the least of that at a higher rank: 0.05 at rank 5 makes 0.1 for all before
  // it.
  const std::vector<double> p{0.9, 0.01, 0.02, 0.03, 0.04, 0.05, 0.5, 0.6, 0.7, 0.8};
  const std::vector<double> expected{0.9, 0.1, 0.1, 0.1, 0.1, 0.1, 5.0 / 6, 6.0 / 7, 7.0 / 8, 8.0 / 9};
  const auto adjusted = Statistics::benjaminiHochberg(p);
  ASSERT_EQ(adjusted.size(), p.size());
  for (std::size_t place = 0; place < p.size(); ++place) {
    EXPECT_DOUBLE_EQ(adjusted[place], expected[place]) << place;
  }
}

TEST(BenjaminiHochberg, hasItsEnds) {
  EXPECT_TRUE(Statistics::benjaminiHochberg({}).empty());
  EXPECT_EQ(Statistics::benjaminiHochberg(std::vector{0.3}), std::vector{0.3});
  EXPECT_EQ(Statistics::benjaminiHochberg(std::vector{1.0, 1.0}), (std::vector{1.0, 1.0}));
  EXPECT_EQ(Statistics::benjaminiHochberg(std::vector{0.0, 1.0}), (std::vector{0.0, 1.0}));
  EXPECT_EQ(Statistics::benjaminiHochberg(std::vector{0.5, 0.5, 0.5}), (std::vector{0.5, 0.5, 0.5}));
}

// ---- Beside SciPy and statsmodels.

/// What signal_statistics_peer.py answers on `lines`, a figure a word. Empty where it fails.
std::vector<double> askPeer(const std::string& subject, const std::vector<std::string>& lines) {
  const auto path =
      std::filesystem::temp_directory_path() / fmt::format("signals-{}", std::random_device()());
  {
    std::ofstream file(path);
    file << fmt::format("{}\n", fmt::join(lines, "\n"));
  }
  const auto command =
      fmt::format("/usr/bin/python3 -B '{}' {} < '{}'", SIGNAL_STATISTICS_PEER, subject, path.string());
  std::vector<double> answers;
  std::FILE* pipe = popen(command.c_str(), "r");
  if (pipe != nullptr) {
    double answer = 0;
    while (std::fscanf(pipe, "%lf", &answer) == 1) {
      answers.push_back(answer);
    }
    if (pclose(pipe) != 0) {
      answers.clear();
    }
  }
  std::filesystem::remove(path);
  return answers;
}

bool has(const char* module) {
  return std::system(fmt::format("/usr/bin/python3 -c 'import {}' 2>/dev/null", module).c_str()) == 0;
}

TEST(BenjaminiHochberg, agreesWithStatsmodels) {
  if (!has("statsmodels.stats.multitest")) {
    GTEST_SKIP() << "this machine has no statsmodels (python3-statsmodels)";
  }
  std::mt19937_64 random(20010101);
  std::vector<std::vector<double>> families;
  std::vector<std::string> lines;
  for (int family = 0; family < 500; ++family) {
    std::vector<double> p(1 + random() % 300);
    const double power = std::uniform_real_distribution(0.3, 4.0)(random);
    const bool isRounded = family % 2 == 0;  // with ties, as in the analysis
    for (double& each : p) {
      each = std::pow(std::uniform_real_distribution(0.0, 1.0)(random), power);
      each = isRounded ? Statistics::roundedToFourDecimals(each) : each;
    }
    families.push_back(p);
    lines.push_back(fmt::format("{}", fmt::join(p, " ")));
  }
  const auto answers = askPeer("adjusted", lines);
  std::size_t next = 0;
  for (const auto& family : families) {
    for (const double adjusted : Statistics::benjaminiHochberg(family)) {
      ASSERT_LT(next, answers.size());
      EXPECT_NEAR(adjusted, answers[next++],
                  1e-14);  // both: two multiplications and divisions of figures up to 1
    }
  }
  EXPECT_EQ(next, answers.size());
}

TEST(SpearmanRho, agreesWithSciPy) {
  if (!has("scipy.stats")) {
    GTEST_SKIP() << "this machine has no SciPy (python3-scipy)";
  }
  // Pairs of lists of 2 to 300 values: few and many ties, constants, one as good as the other or not at all.
  std::mt19937_64 random(20010101);
  std::vector<std::vector<double>> lists[2];
  std::vector<std::string> lines;
  for (int pair = 0; pair < 1500; ++pair) {
    const std::size_t length = pair < 500 ? 2 + random() % 4 : 2 + random() % 299;
    const auto values = 1 + random() % (pair % 3 == 0 ? 3U : 1000U);
    const double likeness = std::uniform_real_distribution(-1.0, 1.0)(random);
    std::vector<double> first(length);
    std::vector<double> second(length);
    for (std::size_t day = 0; day < length; ++day) {
      first[day] = static_cast<double>(random() % values);
      second[day] = std::round(likeness * first[day]) + static_cast<double>(random() % values);
    }
    lines.push_back(fmt::format("{} {}", fmt::join(first, " "), fmt::join(second, " ")));
    lists[0].push_back(first);
    lists[1].push_back(second);
  }
  const auto answers = askPeer("correlated", lines);
  ASSERT_EQ(answers.size(), lines.size());
  int constants = 0;
  for (std::size_t pair = 0; pair < answers.size(); ++pair) {
    auto observations = testing::everySecondDay(lists[0][pair], "first");
    const auto more = testing::everySecondDay(lists[1][pair], "second");
    observations.insert(observations.end(), more.begin(), more.end());
    const auto pairs = SignalEvidenceAnalyzer::pairs(observations, 1);
    if (std::isnan(answers[pair])) {
      EXPECT_TRUE(pairs.empty()) << lines[pair];
      constants += 1;
      continue;
    }
    ASSERT_EQ(pairs.size(), 1U) << lines[pair];
    EXPECT_NEAR(pairs[0].spearmanRho, answers[pair], 0.5e-4 + 1e-12) << lines[pair];  // it has four decimals
  }
  EXPECT_GT(constants, 50);
  EXPECT_LT(constants, 750);
}

}  // namespace
}  // namespace kestrel
