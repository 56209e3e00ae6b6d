#include <KestrelKit/model/HrvInput.h>

#include <gtest/gtest.h>

#include <cmath>
#include <optional>

namespace kestrel {
namespace {

TEST(HrvInput, tellsMissingAndNotProvidedApart) {
  EXPECT_NE(HrvInput::missing, HrvInput::notProvided);
  EXPECT_EQ(HrvInput::missing, HrvInput{HrvInput::missing});
  EXPECT_EQ(HrvInput::notProvided, HrvInput{HrvInput::notProvided});
}

TEST(HrvInput, isEqualWhenMeasuredWithEqualValues) {
  EXPECT_EQ(HrvInput::measured(42.5), HrvInput::measured(42.5));
  EXPECT_EQ(HrvInput::measured(0.0), HrvInput::measured(-0.0));
  EXPECT_NE(HrvInput::measured(42.5), HrvInput::measured(std::nextafter(42.5, 43)));
  EXPECT_NE(HrvInput::measured(std::nan("")), HrvInput::measured(std::nan("")));
  EXPECT_NE(HrvInput::measured(0), HrvInput::missing);
  EXPECT_NE(HrvInput::measured(0), HrvInput::notProvided);
}

TEST(HrvInput, hasAValueOnlyWhenMeasured) {
  EXPECT_EQ(HrvInput::measured(42.5).value(), 42.5);
  EXPECT_EQ(HrvInput::missing.value(), std::nullopt);
  EXPECT_EQ(HrvInput::notProvided.value(), std::nullopt);
}

}  // namespace
}  // namespace kestrel
