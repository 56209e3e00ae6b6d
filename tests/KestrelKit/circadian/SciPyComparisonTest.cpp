// The circular mean and deviation beside those of SciPy, which states the same definitions:
// scipy.stats.circmean and circstd, over a circle of 1440.

#include <KestrelKit/circadian/CircadianStatistics.h>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace kestrel {
namespace {

using Times = std::vector<double>;

/// Lists of 1 to 400 clock times: nights around a time of the day, closer together or wider apart, and times
/// all over the circle; whole minutes and others.
std::vector<Times> randomTimes() {
  std::mt19937_64 random(20010101);
  std::vector<Times> lists;
  for (int count = 0; count < 1000; ++count) {
    const double middle = std::uniform_real_distribution(0.0, 1440.0)(random);
    const double spread = std::exponential_distribution(1 / 90.0)(random);
    const bool isWhole = random() % 2 == 0;
    Times times(1 + random() % 400);
    for (double& time : times) {
      time = std::fmod(std::normal_distribution(middle, spread)(random) + 1440 * 100, 1440);
      if (isWhole) {
        time = std::floor(time);
      }
    }
    lists.push_back(times);
  }
  return lists;
}

struct Answer {
  double mean = 0;
  double deviation = 0;
};

/// What SciPy says of each list. Empty when this machine has no SciPy.
std::vector<Answer> askSciPy(const std::vector<Times>& lists) {
  const auto path =
      std::filesystem::temp_directory_path() / fmt::format("clock-times-{}", std::random_device()());
  {
    std::ofstream file(path);
    for (const Times& times : lists) {
      file << fmt::format("{}\n", fmt::join(times, " "));
    }
  }
  const auto command = fmt::format("/usr/bin/python3 -B '{}' < '{}'", SCIPY_CIRCULAR, path.string());
  std::vector<Answer> answers;
  std::FILE* pipe = popen(command.c_str(), "r");
  if (pipe != nullptr) {
    Answer answer;
    while (std::fscanf(pipe, "%lf %lf", &answer.mean, &answer.deviation) == 2) {
      answers.push_back(answer);
    }
    if (pclose(pipe) != 0) {
      answers.clear();
    }
  }
  std::filesystem::remove(path);
  return answers;
}

TEST(SciPyComparison, circularMeanAndDeviationAgree) {
  if (std::system("/usr/bin/python3 -c 'import scipy.stats' 2>/dev/null") != 0) {
    GTEST_SKIP() << "this machine has no SciPy (python3-scipy)";
  }
  const auto lists = randomTimes();
  const auto answers = askSciPy(lists);
  ASSERT_EQ(answers.size(), lists.size());
  for (std::size_t index = 0; index < lists.size(); ++index) {
    const double mean = CircadianStatistics::circularMeanMinutes(lists[index]).value();
    const double deviation = CircadianStatistics::sleepRegularitySDMinutes(lists[index]).value();
    // Both sum up to 400 sines that are good to 1e-16, in another order: the resultant is good to some 1e-14
    // of a length that is 0.01 at the least here, and the angle to 1e-12. The deviation of times close
    // together is the root of the little by which the resultant falls short of 1, which is good to 1e-15.
    EXPECT_LT(std::abs(std::remainder(mean - answers[index].mean, 1440)), 1e-8) << index;
    EXPECT_NEAR(deviation, answers[index].deviation, deviation > 1 ? 1e-8 : 1e-4) << index;
  }
}

}  // namespace
}  // namespace kestrel
