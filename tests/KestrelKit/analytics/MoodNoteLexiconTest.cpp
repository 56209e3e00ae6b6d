#include <KestrelKit/analytics/MoodNoteFeatureExtractor.h>
#include <KestrelKit/analytics/MoodNoteLexicon.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {
namespace {

std::vector<std::string> split(std::string_view words) {
  std::istringstream stream{std::string(words)};
  return {std::istream_iterator<std::string>(stream), {}};
}

std::set<std::string> setOf(std::string_view words) {
  const auto list = split(words);
  return {list.begin(), list.end()};
}

/// What a score is as the sentiment of a note of one word.
double pressed(double score) {
  return std::floor(score / std::sqrt(score * score + 15) * 10'000 + 0.5) / 10'000;
}

TEST(MoodNoteLexicon, scores251WordsSoManyByScore) {
  const std::map<int, std::size_t> expected{{+5, 2}, {+4, 21}, {+3, 44}, {+2, 50}, {+1, 3},
                                            {-1, 6}, {-2, 84}, {-3, 40}, {-4, 1}};
  std::map<int, std::size_t> counts;
  std::set<std::string> words;
  for (const auto& [score, list] : MoodNoteLexicon::scored) {
    counts[score] += split(list).size();
    words.merge(setOf(list));
  }
  EXPECT_EQ(counts, expected);
  EXPECT_EQ(words.size(), 251U);  // each once
}

TEST(MoodNoteLexicon, has38Negators) {
  EXPECT_EQ(split(MoodNoteLexicon::negators).size(), 38U);
  EXPECT_EQ(setOf(MoodNoteLexicon::negators).size(), 38U);
}

TEST(MoodNoteLexicon, has22AbsolutistWords) {
  EXPECT_EQ(split(MoodNoteLexicon::absolutists).size(), 22U);
  EXPECT_EQ(setOf(MoodNoteLexicon::absolutists).size(), 22U);
}

TEST(MoodNoteLexicon, isOfLowerCaseLettersAndApostrophesWithOneBlankBetween) {
  std::vector<std::string_view> lists{MoodNoteLexicon::negators, MoodNoteLexicon::absolutists};
  for (const auto& [score, words] : MoodNoteLexicon::scored) {
    lists.push_back(words);
  }
  for (const auto list : lists) {
    EXPECT_EQ(list.find_first_not_of("abcdefghijklmnopqrstuvwxyz' "), list.npos) << list;
    EXPECT_EQ(list.find("  "), list.npos) << list;
    EXPECT_FALSE(list.starts_with(' ') || list.ends_with(' ')) << list;
  }
}

TEST(MoodNoteLexicon, eachScoredWordIsFoundWithItsScoreInEitherCase) {
  for (const auto& [score, words] : MoodNoteLexicon::scored) {
    for (const std::string& word : split(words)) {
      std::string upper = word;
      std::ranges::transform(upper, upper.begin(), [](unsigned char c) { return std::toupper(c); });
      const double expected = pressed(score);
      EXPECT_EQ(MoodNoteFeatureExtractor::sentiment(word), expected) << word;
      EXPECT_EQ(MoodNoteFeatureExtractor::sentiment(upper), expected) << word;
      // Nothing that is a letter longer or shorter says the same, unless it is a word of the lexicon itself.
      EXPECT_EQ(MoodNoteFeatureExtractor::sentiment(word + "q"), 0) << word;
      EXPECT_EQ(MoodNoteFeatureExtractor::sentiment("q" + word), 0) << word;
      EXPECT_EQ(MoodNoteFeatureExtractor::sentiment("'" + word), 0) << word;
      EXPECT_EQ(MoodNoteFeatureExtractor::sentiment(word + "'"), 0) << word;
    }
  }
}

TEST(MoodNoteLexicon, eachNegatorTurnsAWordAndSaysNothingByItself) {
  for (const std::string& negator : split(MoodNoteLexicon::negators)) {
    EXPECT_EQ(MoodNoteFeatureExtractor::sentiment(negator), 0) << negator;
    EXPECT_EQ(MoodNoteFeatureExtractor::sentiment(negator + " good"), pressed(3 * -0.74)) << negator;
  }
}

TEST(MoodNoteLexicon, eachAbsolutistWordCountsAndNoOtherDoes) {
  const auto absolutists = setOf(MoodNoteLexicon::absolutists);
  for (const std::string& word : absolutists) {
    EXPECT_EQ(MoodNoteFeatureExtractor::absolutistRatio(word), 1) << word;
    EXPECT_EQ(MoodNoteFeatureExtractor::sentiment(word), 0) << word;
  }
  std::string others;
  for (const auto& [score, words] : MoodNoteLexicon::scored) {
    others += ' ' + std::string(words);
  }
  EXPECT_EQ(MoodNoteFeatureExtractor::absolutistRatio(others), 0);
  for (const std::string& word : split(MoodNoteLexicon::negators)) {
    EXPECT_EQ(MoodNoteFeatureExtractor::absolutistRatio(word), absolutists.contains(word) ? 1 : 0) << word;
  }
}

}  // namespace
}  // namespace kestrel
