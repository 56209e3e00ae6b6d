#include <KestrelKit/model/JSONCoders.h>
#include <KestrelKit/model/ShadowDay.h>
#include <support/RecordFields.h>

#include <gtest/gtest.h>

#include <string>

namespace kestrel {
namespace {

TEST(ShadowDay, readsAndWritesEachField) {
  EXPECT_EQ(
      testing::expectStrictFields<ShadowDay>(
          JSONCoders::decoder, JSONCoders::encoder,
          {{"date", R"("2024-05-02")", "1", "expected text, found a number"},
           {"circadianState", R"("Mania")", "[]", "expected text, found a list", /*isOptional=*/true},
           {"label", R"("Hypomania")", "true", "expected text, found a boolean", /*isOptional=*/true}}),
      (ShadowDay{
          .date = "2024-05-02", .circadianState = KestrelState::mania, .label = KestrelState::hypomania}));
}

TEST(ShadowDay, isStrictAboutItsStates) {
  EXPECT_TRUE(testing::errorOf<ShadowDay>(JSONCoders::decoder, R"({"date":"","label":"Manic"})")
                  .starts_with("label: \"Manic\" is not one of Psychosis, "));
}

}  // namespace
}  // namespace kestrel
