#include <KestrelKit/foundation/ProgrammingError.h>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace kestrel {
namespace {

TEST(ProgrammingErrorDeathTest, abortsAndSaysWhatWasViolated) {
  EXPECT_EXIT(programmingError("the sum of 2 counts lies beyond 64 bits"), testing::KilledBySignal(SIGABRT),
              "^programming error: the sum of 2 counts lies beyond 64 bits\n");
}

TEST(ProgrammingErrorDeathTest, endsAsTheProcessChose) {
  EXPECT_EXIT(
      {
        setProgrammingErrorEnding([](std::string_view violation) {
          std::fprintf(stderr, "broken: %s\n", std::string(violation).c_str());
          std::_Exit(4);
        });
        programmingError("a count below 1");
      },
      testing::ExitedWithCode(4), "^broken: a count below 1\n$");
}

TEST(ProgrammingErrorDeathTest, abortsWhenNoEndingIsChosen) {
  EXPECT_EXIT(
      {
        setProgrammingErrorEnding([](std::string_view) { std::_Exit(4); });
        setProgrammingErrorEnding(nullptr);
        programmingError("anything");
      },
      testing::KilledBySignal(SIGABRT), "^programming error: anything\n");
}

TEST(ProgrammingErrorDeathTest, abortsWhenTheChosenEndingReturns) {
  EXPECT_EXIT(
      {
        setProgrammingErrorEnding([](std::string_view) {});
        programmingError("anything");
      },
      testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace kestrel
