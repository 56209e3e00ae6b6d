#include <command-line/NumberArgument.h>
#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>

namespace kestrel {
namespace {

TEST(WholeNumberArgument, readsWholeNumbersHoweverJsonWritesThem) {
  EXPECT_EQ(wholeNumberArgument("0"), 0.0);
  EXPECT_EQ(wholeNumberArgument("5"), 5.0);
  EXPECT_EQ(wholeNumberArgument("-7"), -7.0);
  EXPECT_EQ(wholeNumberArgument("5.0"), 5.0);
  EXPECT_EQ(wholeNumberArgument("5e0"), 5.0);
  EXPECT_EQ(wholeNumberArgument("1E+3"), 1000.0);
  EXPECT_EQ(wholeNumberArgument("50e-1"), 5.0);
  EXPECT_EQ(wholeNumberArgument("99999999999999999999"), 1e20);
  EXPECT_EQ(wholeNumberArgument("1.7976931348623157e308"), std::numeric_limits<double>::max());
}

TEST(WholeNumberArgument, refusesFractions) {
  for (const char* text : {"5.5", "0.25", "5e-1", "0.0001"}) {
    EXPECT_EQ(wholeNumberArgument(text), std::nullopt) << '"' << text << '"';
  }
}

TEST(WholeNumberArgument, refusesWhatIsNoNumberInJson) {
  for (const char* text :
       {"",         " ",    "+5",   "0x10",  ".5",  "5.",  "05",    "-",     "--5",   "1e",  "1e+",
        "5 ",       " 5",   "5\n",  "\t5",   "5,0", "5_0", "1,000", "abc",   "inf",   "nan", "NaN",
        "Infinity", "true", "null", "\"5\"", "[5]", "5 5", "٥",     "1e400", "-1e400"}) {
    EXPECT_EQ(wholeNumberArgument(text), std::nullopt) << '"' << text << '"';
  }
  EXPECT_EQ(wholeNumberArgument(std::string("5\0", 2)), std::nullopt);
}

}  // namespace
}  // namespace kestrel
