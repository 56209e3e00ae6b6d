#include <KestrelKit/model/JSONCoders.h>
#include <KestrelKit/model/StateClassification.h>

#include <gtest/gtest.h>

#include <string>

namespace kestrel {
namespace {

const std::string required =
    R"({"date":"2024-05-01","predictedState":"Mixed Episode","confidence":0.75,"reasons":["Short sleep: 4.0h"],)"
    R"("source":"keyword")";

StateClassification sample() {
  return {.date = "2024-05-01",
          .predictedState = KestrelState::mixedEpisode,
          .confidence = 0.75,
          .reasons = {"Short sleep: 4.0h"},
          .source = ClassificationSource::keyword};
}

std::string errorOf(const std::string& json) {
  const auto value = JSONCoders::decoder.decode<StateClassification>(json);
  return value ? "none" : value.error().text();
}

TEST(StateClassification, isReadWithoutItsOptionalFieldsWhichStayAbsent) {
  const auto value = JSONCoders::decoder.decode<StateClassification>(required + '}');
  ASSERT_TRUE(value);
  EXPECT_EQ(*value, sample());
  EXPECT_EQ(value->isConfirmed, std::nullopt);
  EXPECT_EQ(value->selfReportConfidence, std::nullopt);
  EXPECT_EQ(value->selfReportNotes, std::nullopt);
  EXPECT_EQ(value->isValidated, std::nullopt);
  EXPECT_EQ(JSONCoders::encoder.encode(*value).value_or(""), required + '}');
}

TEST(StateClassification, isWrittenInDeclarationOrder) {
  StateClassification value = sample();
  value.isValidated = true;
  value.selfReportNotes = "a/b";
  value.selfReportConfidence = 1;
  value.isConfirmed = false;
  EXPECT_EQ(
      JSONCoders::encoder.encode(value).value_or(""),
      required +
          R"(,"isConfirmed":false,"selfReportConfidence":1,"selfReportNotes":"a/b","isValidated":true})");
}

TEST(StateClassification, failsWithoutReasons) {
  EXPECT_EQ(errorOf(R"({"date":"d","predictedState":"Mania","confidence":1,"source":"manual"})"),
            "reasons: is missing");
}

TEST(StateClassification, failsWithoutAnyOtherRequiredField) {
  EXPECT_EQ(errorOf(R"({"predictedState":"Mania","confidence":1,"reasons":[],"source":"manual"})"),
            "date: is missing");
  EXPECT_EQ(errorOf(R"({"date":"d","confidence":1,"reasons":[],"source":"manual"})"),
            "predictedState: is missing");
  EXPECT_EQ(errorOf(R"({"date":"d","predictedState":"Mania","reasons":[],"source":"manual"})"),
            "confidence: is missing");
  EXPECT_EQ(errorOf(R"({"date":"d","predictedState":"Mania","confidence":1,"reasons":[]})"),
            "source: is missing");
}

TEST(StateClassification, isStrictAboutItsEnumerations) {
  EXPECT_TRUE(
      errorOf(R"({"date":"d","predictedState":"Manic","confidence":1,"reasons":[],"source":"manual"})")
          .starts_with("predictedState: \"Manic\" is not one of Psychosis, "));
  EXPECT_EQ(errorOf(R"({"date":"d","predictedState":"Mania","confidence":1,"reasons":[],"source":"Manual"})"),
            "source: \"Manual\" is not one of manual, keyword, algorithmic; did you mean manual?");
}

TEST(StateClassification, keepsTheThreeValuesOfItsFlagsApart) {
  const auto read = [](const std::string& flag) {
    return JSONCoders::decoder.decode<StateClassification>(required + flag + '}')
        .value_or(StateClassification{});
  };
  const auto absent = read("");
  const auto null = read(R"(,"isConfirmed":null)");
  const auto no = read(R"(,"isConfirmed":false)");
  const auto yes = read(R"(,"isConfirmed":true)");
  EXPECT_EQ(absent, null);
  EXPECT_NE(absent, no);
  EXPECT_NE(no, yes);
  EXPECT_NE(absent, yes);
  EXPECT_EQ(JSONCoders::encoder.encode(no).value_or(""), required + R"(,"isConfirmed":false})");
}

TEST(StateClassification, takesAnyDateTextAndAnyConfidence) {
  EXPECT_EQ(
      errorOf(R"({"date":"","predictedState":"Mania","confidence":-7e9,"reasons":[],"source":"manual"})"),
      "none");
}

TEST(JSONCoders, carryInstantsAsIso8601) {
  EXPECT_EQ(JSONCoders::encoder.encode(instantSinceReferenceDate(0.75)).value_or(""),
            "\"2001-01-01T00:00:00Z\"");
  EXPECT_EQ(JSONCoders::decoder.decode<Instant>("\"2001-01-01T02:00:00+02:00\"").value_or(Instant::max()),
            Instant{});
}

}  // namespace
}  // namespace kestrel
