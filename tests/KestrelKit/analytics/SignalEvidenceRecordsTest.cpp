#include <KestrelKit/analytics/SignalEvidenceLabel.h>
#include <KestrelKit/analytics/SignalEvidenceObservation.h>
#include <KestrelKit/analytics/SignalEvidenceResult.h>
#include <KestrelKit/analytics/SignalPairAssociation.h>
#include <KestrelKit/model/JSONCoders.h>
#include <gtest/gtest.h>
#include <support/RecordFields.h>

#include <string>
#include <string_view>
#include <vector>

namespace kestrel {
namespace {

using testing::errorOf;
using testing::expectStrictFields;
using testing::FieldRow;

template <class T>
T expectFields(const std::vector<FieldRow>& rows) {
  return expectStrictFields<T>(JSONCoders::decoder, JSONCoders::encoder, rows);
}

constexpr const char* notText = "expected text, found a number";
constexpr const char* notNumber = "expected a number, found text";
constexpr const char* notInteger = "1.5 is not an integer of 64 bits";
constexpr const char* noComparison =
    R"("elevated" is not one of elevatedVsEuthymia, depressedVsEuthymia, mixedVsEuthymia, psychosisVsEuthymia)";

const FieldRow comparisonRow{"comparison", R"("mixedVsEuthymia")", R"("elevated")", noComparison};
const FieldRow signalRow{"signalID", R"("steps")", "7", notText};

template <class T>
std::vector<std::string> rawValuesOf() {
  std::vector<std::string> texts;
  for (const T value : T::allCases) {
    texts.emplace_back(value.rawValue());
  }
  return texts;
}

using Texts = std::vector<std::string>;

TEST(SignalEvidenceStatus, hasFiveTextsInOrder) {
  EXPECT_EQ(rawValuesOf<SignalEvidenceStatus>(),
            (Texts{"noData", "insufficientOverlap", "insufficientVariation", "noClearAssociation",
                   "associationObserved"}));
}

TEST(SignalEvidenceComparison, hasFourTextsInOrder) {
  EXPECT_EQ(rawValuesOf<SignalEvidenceComparison>(),
            (Texts{"elevatedVsEuthymia", "depressedVsEuthymia", "mixedVsEuthymia", "psychosisVsEuthymia"}));
}

TEST(SignalEvidenceReason, hasTwoTexts) {
  EXPECT_EQ(rawValuesOf<SignalEvidenceReason>(), (Texts{"insufficient_samples", "insufficient_variation"}));
}

TEST(SignalEvidenceObservation, hasItsFields) {
  EXPECT_EQ(expectFields<SignalEvidenceObservation>({{"date", R"("2024-05-01")", "7", notText},
                                                     {"sourceID", R"("watch")", "7", notText},
                                                     signalRow,
                                                     {"value", "-0.5", R"("1")", notNumber}}),
            (SignalEvidenceObservation{"2024-05-01", "watch", "steps", -0.5}));
}

TEST(SignalEvidenceLabel, hasItsFields) {
  const auto label = expectFields<SignalEvidenceLabel>(
      {{"date", R"("2024-05-01")", "7", notText},
       {"state", R"("Mania")", R"("Manic")",
        R"("Manic" is not one of Psychosis, Mixed Episode, Mania, Hypomania, Euthymia, Dysthymia, )"
        "Moderate Depression, Severe Depression, Unknown; did you mean Mania?"}});
  EXPECT_EQ(label, (SignalEvidenceLabel{"2024-05-01", KestrelState::mania}));
}

const std::vector<FieldRow> associationRows{
    signalRow,
    comparisonRow,
    {"lagDays", "3", "1.5", notInteger},
    {"pairedDays", "12", "1.5", notInteger},
    {"coverage", "0.75", R"("1")", notNumber},
    {"referenceDays", "7", "1.5", notInteger},
    {"comparisonDays", "5", "1.5", notInteger},
    {"standardizedDifference", "-0.4", R"("1")", notNumber},
    {"confidenceInterval", "[-1.2,0.4]", "[0.4,-1.2]", "is not a list of a lower and an upper end"},
    {"pValue", "0.1", R"("1")", notNumber},
    {"adjustedPValue", "0.2", R"("1")", notNumber},
};

TEST(SignalEvidenceAssociation, hasItsFields) {
  EXPECT_EQ(expectFields<SignalEvidenceAssociation>(associationRows),
            (SignalEvidenceAssociation{.signalID = "steps",
                                       .comparison = SignalEvidenceComparison::mixedVsEuthymia,
                                       .lagDays = 3,
                                       .pairedDays = 12,
                                       .coverage = 0.75,
                                       .referenceDays = 7,
                                       .comparisonDays = 5,
                                       .standardizedDifference = -0.4,
                                       .confidenceInterval = {-1.2, 0.4},
                                       .pValue = 0.1,
                                       .adjustedPValue = 0.2}));
}

TEST(ConfidenceInterval, isAListOfItsTwoEnds) {
  const auto error = [](std::string_view json) {
    return errorOf<ConfidenceInterval>(JSONCoders::decoder, json);
  };
  EXPECT_EQ(error("[1,2]"), "none");
  EXPECT_EQ(error("[1,1]"), "none");
  EXPECT_EQ(error("[-0.0,0]"), "none");
  for (const char* json : {"[]", "[1]", "[1,2,3]", "[2,1]"}) {
    EXPECT_TRUE(error(json).ends_with("is not a list of a lower and an upper end")) << error(json);
  }
  EXPECT_EQ(error(R"([1,"2"])"), "[1]: expected a number, found text");
}

TEST(SignalEvidenceUnevaluated, hasItsFields) {
  const std::vector<FieldRow> rows{signalRow,
                                   comparisonRow,
                                   {"lagDays", "7", "1.5", notInteger, /*isOptional=*/true},
                                   {"reason", R"("insufficient_variation")", R"("none")",
                                    R"("none" is not one of insufficient_samples, insufficient_variation)"}};
  EXPECT_EQ(expectFields<SignalEvidenceUnevaluated>(rows),
            (SignalEvidenceUnevaluated{.signalID = "steps",
                                       .comparison = SignalEvidenceComparison::mixedVsEuthymia,
                                       .lagDays = 7,
                                       .reason = SignalEvidenceReason::insufficientVariation}));
}

TEST(SignalEvidenceResult, hasItsFields) {
  const std::vector<FieldRow> rows{
      {"sourceID", R"("watch")", "7", notText},
      {"status", R"("associationObserved")", R"("ok")",
       R"("ok" is not one of noData, insufficientOverlap, insufficientVariation, noClearAssociation, associationObserved)"},
      {"observedDays", "30", "1.5", notInteger},
      {"overlappingDays", "20", "1.5", notInteger},
      {"evaluatedSignals", "1", "1.5", notInteger},
      {"strongestSignalID", R"("steps")", "7", notText, /*isOptional=*/true},
      {"strongestComparison", R"("mixedVsEuthymia")", R"("elevated")", noComparison, /*isOptional=*/true},
      {"standardizedDifference", "-0.4", R"("1")", notNumber, /*isOptional=*/true},
      {"strongestLagDays", "3", "1.5", notInteger, /*isOptional=*/true},
      {"associations", '[' + testing::objectOf(associationRows) + ']', "{}",
       "expected a list, found an object"},
      {"unevaluated", "[]", "{}", "expected a list, found an object"},
  };
  const auto result = expectFields<SignalEvidenceResult>(rows);
  EXPECT_EQ(result.associations.size(), 1U);
  EXPECT_EQ(result.strongestSignalID, "steps");
  EXPECT_EQ(result.strongestLagDays, 3);
}

TEST(SignalPairAssociation, hasItsFields) {
  EXPECT_EQ(expectFields<SignalPairAssociation>({{"firstSourceID", R"("ring")", "7", notText},
                                                 {"firstSignalID", R"("pulse")", "7", notText},
                                                 {"secondSourceID", R"("watch")", "7", notText},
                                                 {"secondSignalID", R"("steps")", "7", notText},
                                                 {"pairedDays", "30", "1.5", notInteger},
                                                 {"spearmanRho", "-0.25", R"("1")", notNumber}}),
            (SignalPairAssociation{"ring", "pulse", "watch", "steps", 30, -0.25}));
}

}  // namespace
}  // namespace kestrel
