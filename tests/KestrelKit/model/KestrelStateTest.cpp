#include <KestrelKit/model/ClassificationSource.h>
#include <KestrelKit/model/JSONCoders.h>
#include <KestrelKit/model/KestrelState.h>
#include <KestrelKit/model/SelfReportSource.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace kestrel {
namespace {

template <class T>
std::vector<std::string_view> rawValues() {
  std::vector<std::string_view> texts;
  for (const T value : T::allCases) {
    texts.push_back(value.rawValue());
  }
  return texts;
}

TEST(KestrelState, hasNineStatesInOrder) {
  EXPECT_EQ(
      rawValues<KestrelState>(),
      (std::vector<std::string_view>{"Psychosis", "Mixed Episode", "Mania", "Hypomania", "Euthymia",
                                     "Dysthymia", "Moderate Depression", "Severe Depression", "Unknown"}));
}

TEST(ClassificationSource, hasThreeSourcesInOrder) {
  EXPECT_EQ(rawValues<ClassificationSource>(),
            (std::vector<std::string_view>{"manual", "keyword", "algorithmic"}));
}

TEST(SelfReportSource, hasTwoSourcesInOrder) {
  EXPECT_EQ(rawValues<SelfReportSource>(), (std::vector<std::string_view>{"manual", "keyword"}));
}

TEST(KestrelState, readsStoredTextLeniently) {
  const std::pair<std::string_view, KestrelState> rows[] = {
      {"Major Depressive", KestrelState::severeDepression},
      {"Manic", KestrelState::mania},
      {"Hypomanic", KestrelState::hypomania},
      {"Euthymic", KestrelState::euthymia},
      {"Dysthymic", KestrelState::dysthymia},
      {"Moderate Depression", KestrelState::moderateDepression},
      {"mania", KestrelState::unknown},
      {"manic", KestrelState::unknown},
      {"Manic ", KestrelState::unknown},
      {"Psychotic", KestrelState::unknown},
      {"Mixed", KestrelState::unknown},
      {"Moderate Depressive", KestrelState::unknown},
      {"Unknown", KestrelState::unknown},
      {"", KestrelState::unknown},
      {"\xFF", KestrelState::unknown},
  };
  for (const auto& [text, state] : rows) {
    EXPECT_EQ(KestrelState::fromStoredValue(text), state) << text;
  }
  for (const KestrelState state : KestrelState::allCases) {
    EXPECT_EQ(KestrelState::fromStoredValue(state.rawValue()), state);
  }
}

TEST(KestrelState, isReadStrictlyFromItsRawValue) {
  EXPECT_EQ(KestrelState::fromRawValue("Mixed Episode"), KestrelState::mixedEpisode);
  for (const std::string_view text : {"Manic", "mania", "Mania ", "", "mixedEpisode"}) {
    EXPECT_EQ(KestrelState::fromRawValue(text), std::nullopt) << text;
  }
}

TEST(KestrelState, refusesInJsonTheAliasThatStoredTextMayHave) {
  const auto state = JSONCoders::decoder.decode<KestrelState>("\"Manic\"");
  ASSERT_FALSE(state);
  EXPECT_EQ(
      state.error().text(),
      "\"Manic\" is not one of Psychosis, Mixed Episode, Mania, Hypomania, Euthymia, Dysthymia, Moderate "
      "Depression, Severe Depression, Unknown; did you mean Mania?");
  EXPECT_EQ(KestrelState::fromStoredValue("Manic"), KestrelState::mania);
}

TEST(KestrelState, isItsRawValueInJson) {
  for (const KestrelState state : KestrelState::allCases) {
    const std::string json = '"' + std::string{state.rawValue()} + '"';
    EXPECT_EQ(JSONCoders::encoder.encode(state).value_or(""), json);
    EXPECT_EQ(JSONCoders::decoder.decode<KestrelState>(json).value_or(KestrelState::unknown), state);
  }
}

}  // namespace
}  // namespace kestrel
