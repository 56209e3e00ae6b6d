#include <KestrelKit/foundation/CivilDay.h>

#include <gtest/gtest.h>

namespace kestrel {
namespace {

using namespace std::chrono;

TEST(CivilDay, readsAndWritesEveryDayOfFourCenturies) {
  for (sys_days day = 1600y / January / 1; day < sys_days{2001y / January / 1}; day += days{1}) {
    const year_month_day date{day};
    const auto text = civilDayText(local_days{date});
    ASSERT_TRUE(text);
    ASSERT_EQ(civilDayFromText(*text), local_days{date}) << *text;
  }
}

TEST(CivilDay, holdsTheYears0001To9999) {
  EXPECT_EQ(civilDayText(local_days{1y / January / 1}), "0001-01-01");
  EXPECT_EQ(civilDayText(local_days{9999y / December / 31}), "9999-12-31");
  EXPECT_EQ(civilDayText(local_days{0y / December / 31}), std::nullopt);
  EXPECT_EQ(civilDayText(local_days{year{10000} / January / 1}), std::nullopt);
  // Days whose year has no place in the calendar types' 16 bits, where it would come out within the range.
  for (const int cycles : {-200, -2, 2, 200}) {
    EXPECT_EQ(civilDayText(local_days{days{cycles * 65'536LL * 146'097 / 400}}), std::nullopt) << cycles;
  }
  EXPECT_EQ(civilDayFromText("0001-01-01"), local_days{1y / January / 1});
  EXPECT_EQ(civilDayFromText("0000-12-31"), std::nullopt);
}

TEST(CivilDay, takesOnlyDaysThatExist) {
  EXPECT_EQ(civilDayFromText("2024-02-29"), local_days{2024y / February / 29});
  for (const std::string_view text : {"2023-02-29", "1900-02-29", "2024-02-30", "2024-04-31", "2024-00-10",
                                      "2024-13-10", "2024-01-00", "2024-01-32"}) {
    EXPECT_EQ(civilDayFromText(text), std::nullopt) << text;
  }
}

TEST(CivilDay, takesNoOtherForm) {
  for (const std::string_view text :
       {"", "2024-5-01", "2024-05-1", "24-05-01", "2024/05/01", "20240501", "2024-05-01 ", " 2024-05-01",
        "+024-05-01", "-024-05-01", "2024-05-01T", "02024-05-01", "2024-05-0x", "２024-05-1", "2024-05- 1"}) {
    EXPECT_EQ(civilDayFromText(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace kestrel
