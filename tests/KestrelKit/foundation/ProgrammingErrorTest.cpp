#include <KestrelKit/foundation/ProgrammingError.h>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>

namespace kestrel {
namespace {

TEST(ProgrammingErrorDeathTest, abortsAndSaysWhatWasViolated) {
  EXPECT_EXIT(programmingError("the sum of 2 counts lies beyond 64 bits"), testing::KilledBySignal(SIGABRT),
              "^programming error: the sum of 2 counts lies beyond 64 bits\n");
}

TEST(ProgrammingErrorDeathTest, endsAsTheProcessChose) {
  EXPECT_EXIT(
      {
        setProgrammingErrorEnding([] { std::_Exit(4); });
        programmingError("anything");
      },
      testing::ExitedWithCode(4), "^programming error: anything\n");
}

TEST(ProgrammingErrorDeathTest, abortsWhenNoEndingIsChosen) {
  EXPECT_EXIT(
      {
        setProgrammingErrorEnding([] { std::_Exit(4); });
        setProgrammingErrorEnding(nullptr);
        programmingError("anything");
      },
      testing::KilledBySignal(SIGABRT), "^programming error: anything\n");
}

TEST(ProgrammingErrorDeathTest, abortsWhenTheChosenEndingReturns) {
  EXPECT_EXIT(
      {
        setProgrammingErrorEnding([] {});
        programmingError("anything");
      },
      testing::KilledBySignal(SIGABRT), "anything");
}

}  // namespace
}  // namespace kestrel
