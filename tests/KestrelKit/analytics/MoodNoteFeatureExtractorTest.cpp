#include <KestrelKit/analytics/MoodNoteFeatureExtractor.h>
#include <support/LiteralMoodNote.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrel {

namespace {

using Extractor = MoodNoteFeatureExtractor;

/// A sum of scores as a sentiment, by a formula of its own: below -1 nothing, beyond it halves upward.
double pressed(double sum) {
  return std::floor(sum / std::hypot(sum, std::sqrt(15.0)) * 10'000 + 0.5) / 10'000;
}

constexpr double turned = -0.74;

// ---- Sentiment.

TEST(MoodNoteSentiment, inNotGoodAtAllGoodContributesItsScoreTimesMinus074) {
  EXPECT_EQ(Extractor::sentiment("not good at all"), pressed(3 * turned));
  EXPECT_EQ(Extractor::sentiment("not good at all"), -0.4973);
}

TEST(MoodNoteSentiment, aNegatorReachesTheThreeWordsThatFollowItAndNotTheFourth) {
  EXPECT_EQ(Extractor::sentiment("not good"), pressed(3 * turned));
  EXPECT_EQ(Extractor::sentiment("not a good"), pressed(3 * turned));
  EXPECT_EQ(Extractor::sentiment("not a b good"), pressed(3 * turned));
  EXPECT_EQ(Extractor::sentiment("not a b c good"), pressed(3));
  EXPECT_EQ(Extractor::sentiment("good not"), pressed(3));
  EXPECT_EQ(Extractor::sentiment("not good good good good"), pressed(3 * 3 * turned + 3));
}

TEST(MoodNoteSentiment, severalNegatorsTurnAWordOnce) {
  EXPECT_EQ(Extractor::sentiment("no never not good"), pressed(3 * turned));
  EXPECT_EQ(Extractor::sentiment("not not good"), pressed(3 * turned));
  EXPECT_EQ(Extractor::sentiment("not a good not bad"), pressed(3 * turned + -3 * turned));
}

TEST(MoodNoteSentiment, aTurnedWordIsWeaker) {
  EXPECT_EQ(Extractor::sentiment("not hell"), pressed(-4 * turned));
  EXPECT_GT(Extractor::sentiment("good"), -Extractor::sentiment("not good"));
}

TEST(MoodNoteSentiment, aSingleWordScoredPlus5Gives07906) {
  EXPECT_EQ(Extractor::sentiment("superb"), 0.7906);
  EXPECT_EQ(Extractor::sentiment("Thrilled!"), 0.7906);
  EXPECT_EQ(Extractor::sentiment("hell"), -0.7184);
  EXPECT_EQ(Extractor::sentiment("cool"), 0.25);
  EXPECT_EQ(Extractor::sentiment("numb"), -0.25);
}

TEST(MoodNoteSentiment, isRoundedToFourDecimals) {
  EXPECT_EQ(Extractor::sentiment("good"), 0.6124);    // 0.612372…
  EXPECT_EQ(Extractor::sentiment("bad"), -0.6124);    // the nearer one, not the one above
  EXPECT_EQ(Extractor::sentiment("not sad"), 0.357);  // 1.48 ÷ √17.1904 = 0.356959…
  EXPECT_EQ(Extractor::sentiment("not nice"), -0.4973);
}

TEST(MoodNoteSentiment, wordsThatAddUpToNothingGive0) {
  const double sentiment = Extractor::sentiment("good bad");
  EXPECT_EQ(sentiment, 0);
  EXPECT_FALSE(std::signbit(sentiment));
  EXPECT_FALSE(std::signbit(Extractor::sentiment("not at all")));
}

TEST(MoodNoteSentiment, isClampedAtTheLowEndAndCappedAtTheHighEnd) {
  const auto repeated = [](std::string_view word, int times) {
    std::string text;
    for (int each = 0; each < times; ++each) {
      text += word;
    }
    return text;
  };
  EXPECT_EQ(Extractor::sentiment(repeated("superb ", 20)), 0.9993);  // 100 ÷ √10015
  EXPECT_EQ(Extractor::sentiment(repeated("hell ", 20)), -0.9988);   // -80 ÷ √6415
  for (const int times : {100, 1000, 1'000'000}) {  // from a sum of some 390 on nothing is left when rounded
    EXPECT_EQ(Extractor::sentiment(repeated("superb ", times)), 1);
    EXPECT_EQ(Extractor::sentiment(repeated("hell ", times)), -1);
  }
}

// ---- The ratio.

TEST(MoodNoteAbsolutistRatio, everyOccurrenceCountsAmongAllWords) {
  EXPECT_EQ(Extractor::absolutistRatio("always never all of it"), 0.6);
  EXPECT_EQ(Extractor::absolutistRatio("all all ALL"), 1);
  EXPECT_EQ(Extractor::absolutistRatio("all in all"), 0.6667);
  EXPECT_EQ(Extractor::absolutistRatio("all of it"), 0.3333);
  EXPECT_EQ(Extractor::absolutistRatio("ever so often, whatever"), 0.25);
}

TEST(MoodNoteAbsolutistRatio, halvesAreRoundedUpward) {
  std::string text = "all";
  for (int others = 0; others < 31; ++others) {
    text += " x";
  }
  EXPECT_EQ(Extractor::absolutistRatio(text), 0.0313);  // 1 of 32: 0.03125
}

TEST(MoodNoteAbsolutistRatio, neverIsANegatorAndAnAbsolutistWord) {
  EXPECT_EQ(Extractor::absolutistRatio("never good"), 0.5);
  EXPECT_EQ(Extractor::sentiment("never good"), pressed(3 * turned));
}

// ---- Words.

TEST(MoodNoteWords, aTextOfALinkAndAHandleHasNoneAndItsFullLength) {
  const std::string text = "https://example.org/good?all#never @juno.best-friend";
  EXPECT_EQ(
      Extractor::features(text),
      (MoodNoteFeatures{.sentiment = 0, .absolutistRatio = 0, .length = static_cast<double>(text.size())}));
}

TEST(MoodNoteWords, aTextWithoutWordsHasSentiment0AndRatio0) {
  for (const char* text : {"", " ", "\n", "123 4.5", "—", "ärger"}) {
    EXPECT_EQ(Extractor::sentiment(text), 0) << text;
    EXPECT_EQ(Extractor::absolutistRatio(text), 0) << text;
  }
}

TEST(MoodNoteWords, aContractionWithACurlyApostropheIsTwoWordsAndNoNegator) {
  EXPECT_EQ(Extractor::sentiment("can’t love"), pressed(3));
  EXPECT_EQ(Extractor::absolutistRatio("can’t ever"), 0.3333);
  EXPECT_EQ(Extractor::sentiment("can't love"), pressed(3 * turned));
  EXPECT_EQ(Extractor::absolutistRatio("can't ever"), 0.5);
}

/// How many words a text has, told by the ratio of the one absolutist word that is added.
std::int64_t words(const std::string& text) {
  return std::llround(1 / Extractor::absolutistRatio("all\n" + text)) - 1;
}

TEST(MoodNoteWords, endAtAllButLettersAndTheStraightApostrophe) {
  const std::pair<const char*, std::int64_t> rows[] = {
      {"good-natured", 2}, {"good2go", 2},       {"naïve", 2},      {"it's", 1},     {"'tis ' ''", 3},
      {"a_b.c", 3},        {"good\u0301day", 2}, {"ｇｏｏｄ", 0},   {"ß", 0},        {"x\0y", 1},
      {"ſo", 1},           {"\u200Bgood", 1},    {"go\u00ADod", 2}, {"a\u2019b", 2}, {"don`t", 2},
  };
  for (const auto& [text, count] : rows) {
    EXPECT_EQ(words(text), count) << text;
  }
  EXPECT_EQ(words(std::string("x\0y", 3)), 2);
}

TEST(MoodNoteWords, lowerCaseComesFirst) {
  EXPECT_EQ(Extractor::sentiment("GOOD"), pressed(3));
  EXPECT_EQ(Extractor::sentiment("hTTpS://GOOD.EXAMPLE/BAD good"), pressed(3));
  EXPECT_EQ(Extractor::sentiment("@GOOD.BAD-9 good"), pressed(3));
  EXPECT_EQ(Extractor::sentiment("CAN'T love"), pressed(3 * turned));
}

TEST(MoodNoteWords, theKelvinSignIsAK) {
  EXPECT_EQ(Extractor::sentiment("\u212Aind than\u212As than\u212A"), pressed(2 + 2 + 2));
  EXPECT_EQ(Extractor::sentiment("@bac\u212Abad"), 0);
}

TEST(MoodNoteWords, theCapitalIWithADotIsAnIAndSplits) {
  EXPECT_EQ(words("W\u0130N"), 2);  // wi, n
  EXPECT_EQ(Extractor::sentiment("W\u0130N"), 0);
  EXPECT_EQ(Extractor::sentiment("@x\u0130bad"), pressed(-3));
}

TEST(MoodNoteWords, linksAreLeftOutBeforeHandles) {
  EXPECT_EQ(words("@x:good"), 1);
  EXPECT_EQ(words("@xhttp://y z"), 1);
  EXPECT_EQ(words("@http://y z"), 1);
  EXPECT_EQ(words("http://a@good z"), 1);
  EXPECT_EQ(words("x@good.bad y"), 2);
  EXPECT_EQ(words("@@@ a@"), 1);
}

TEST(MoodNoteWords, aLinkNeedsSomethingBehindItsSlashes) {
  EXPECT_EQ(words("http:// good"), 2);
  EXPECT_EQ(words("http://"), 1);
  EXPECT_EQ(words("http:/good"), 2);
  EXPECT_EQ(words("http//good"), 2);
  EXPECT_EQ(words("ftp://good"), 2);
  EXPECT_EQ(words("http:///"), 0);
  EXPECT_EQ(words("http://\u200B"), 0);  // no white space
  EXPECT_EQ(words("http://\u00A0good"), 2);
}

TEST(MoodNoteWords, aLinkBeginsAmongLetters) {
  EXPECT_EQ(words("seehttp://good bad"), 2);
  EXPECT_EQ(Extractor::sentiment("goodhttps://x"), pressed(3));
  EXPECT_EQ(Extractor::sentiment("goodshttp://x"), 0);
  EXPECT_EQ(words("httphttps://x"), 1);
  EXPECT_EQ(words("httpss://x"), 2);
  EXPECT_EQ(Extractor::sentiment("congratulationshttp://x"),
            pressed(3));  // longer than any word, with the link
}

TEST(MoodNoteWords, aLinkEndsAtEachCharacterOfWhiteSpaceAndAtNoOther) {
  const char* const spaces[] = {"\t",     "\n",     "\v",     "\f",     "\r",     " ",      "\u0085",
                                "\u00A0", "\u1680", "\u2000", "\u2001", "\u2002", "\u2003", "\u2004",
                                "\u2005", "\u2006", "\u2007", "\u2008", "\u2009", "\u200A", "\u2028",
                                "\u2029", "\u202F", "\u205F", "\u3000"};
  for (const std::string space : spaces) {
    EXPECT_EQ(words("http://x" + space + "y"), 1) << space;
    EXPECT_EQ(words("http://" + space + "y"), 2) << space;
  }
  const char* const others[] = {"\u180E", "\u200B", "\u200C", "\u200D", "\u2060", "\uFEFF", "\u2800",
                                "\u3164", "\u001C", "\u001F", "\u0084", "\u0086", "\u00A1", "\u1FFF",
                                "\u202A", "\u2027", "\u3001", "\u1681", "\u007F"};
  for (const std::string other : others) {
    EXPECT_EQ(words("http://x" + other + "y"), 0) << other;
  }
}

TEST(MoodNoteWords, wordsOfAnyLengthAreOneWord) {
  for (const std::size_t length : {15U, 16U, 17U, 31U, 62U, 63U, 64U, 65U, 127U, 128U, 129U, 1000U}) {
    const std::string word(length, 'x');
    EXPECT_EQ(words(word), 1) << length;
    EXPECT_EQ(words(word + " " + word), 2) << length;
    EXPECT_EQ(Extractor::sentiment(word + " good"), pressed(3)) << length;
    EXPECT_EQ(Extractor::sentiment("not " + word + " good"), pressed(3 * turned)) << length;
    EXPECT_EQ(words(word + "http://x"), 1) << length;
    EXPECT_EQ(words("@" + word), 0) << length;
    EXPECT_EQ(words("http://" + word), 0) << length;
  }
}

TEST(MoodNoteWords, areTheSameAtEveryDistanceFromTheStart) {
  for (const std::string_view note :
       {"congratulations", "not a good day @home https://x.y/z all \u212A \u0130 can’t can't", "http://",
        "@"}) {
    for (std::size_t distance = 0; distance <= 130; ++distance) {
      for (const std::string& before : {std::string(distance, ' '), std::string(distance, 'x') + ' '}) {
        for (const std::size_t after : {0U, 1U, 15U, 16U, 63U, 64U}) {
          const std::string text = before + std::string(note) + std::string(after, '\n');
          ASSERT_EQ(Extractor::features(text), testing::literalFeatures(text)) << text;
        }
      }
    }
  }
}

// ---- The length.

TEST(MoodNoteLength, isThatOfTheTextAsGivenInUtf16CodeUnits) {
  const std::pair<const char*, double> rows[] = {
      {"", 0},
      {"good", 4},
      {"née", 3},
      {"ne\u0301e", 4},
      {"日本語", 3},
      {"👍", 2},
      {"👩‍👩‍👧", 8},
      {"\n", 1},
      {"\uFFFF", 1},
      {"\U00010000", 2},
      {"\U0010FFFF", 2},
      {"İ", 1},
      {" http://x @y ", 13},
  };
  for (const auto& [text, length] : rows) {
    EXPECT_EQ(Extractor::features(text).length, length) << text;
  }
}

TEST(MoodNoteFeatures, haveTheSentimentAndTheRatioThatAreGivenAlone) {
  const std::string text = "never all that good";
  EXPECT_EQ(Extractor::features(text),
            (MoodNoteFeatures{Extractor::sentiment(text), Extractor::absolutistRatio(text), 19}));
}

// ---- Any text.

void append(std::string& text, std::uint32_t codePoint) {
  const auto tail = [&](unsigned shift) {
    text += static_cast<char>(0x80U | ((codePoint >> shift) & 0x3FU));
  };
  if (codePoint < 0x80) {
    text += static_cast<char>(codePoint);
  } else if (codePoint < 0x800) {
    text += static_cast<char>(0xC0U | codePoint >> 6U);
    tail(0);
  } else if (codePoint < 0x10000) {
    text += static_cast<char>(0xE0U | codePoint >> 12U);
    tail(6);
    tail(0);
  } else {
    text += static_cast<char>(0xF0U | codePoint >> 18U);
    tail(12);
    tail(6);
    tail(0);
  }
}

constexpr bool isSurrogate(std::uint32_t codePoint) { return codePoint >= 0xD800 && codePoint < 0xE000; }

/// What texts are made of, so that every rule of the tokenizer has its share.
constexpr std::string_view fragments[] = {
    // Words that say something, and how they end.
    "good", "BAD", "Superb", "hell", "kind", "win", "congratulations", "disappointing", "not", "never",
    "can't", "without", "all", "everything", "so", "x", "the", "'", "''", " ", " ", " ", " ", " ", "\n", "\t",
    "-", "9", ".", "_", ",", "\u2019",
    // Links and handles.
    "@", "@", "@home", "http", "https", "HTTPS", "h", "tp", "ttp", "s", ":", "://", "://", "http://",
    "https://", "/", "//", "a@b", "http://x", "@http://",
    // Letters whose lower case has ASCII in it, and some whose has not.
    "\u212A", "\u0130", "\u212B", "\u0131", "\u0132", "\u017F", "\u0307", "\u03A3", "\u1E9E", "\u00C4",
    // White space, and what looks like it.
    "\u0085", "\u00A0", "\u1680", "\u180E", "\u2003", "\u200A", "\u200B", "\u200D", "\u2028", "\u2029",
    "\u202F", "\u205F", "\u2060", "\u3000", "\uFEFF", "\u0084", "\u0086", "\u1681", "\u2027", "\u202E",
    "\u3001",
    // Scripts.
    "день", "ΣΟΦΟΣ", "שלום", "سلام", "नमस्ते", "สวัสดี", "日本", "한국", "ᏣᎳᎩ", "𐐔𐐇", "გამარჯობა", "đặc",
    "👍🏽"};

/// Fragments, runs of letters and single code points in any order.
std::string randomText() {
  std::string text;
  const auto choices = *rc::gen::container<std::vector<std::uint32_t>>(rc::gen::arbitrary<std::uint32_t>());
  for (const std::uint32_t choice : choices) {
    const std::uint32_t which = choice % 256;
    const std::uint32_t rest = choice / 256;
    if (which < 8) {
      text.append(rest % 70, static_cast<char>((rest / 70 % 2 == 0 ? 'a' : 'A') + rest / 140 % 26));
    } else if (which < 24) {
      const std::uint32_t codePoint = rest % 0x11'0000;
      append(text, isSurrogate(codePoint) ? 0xFFFD : codePoint);
    } else {
      text += fragments[rest % std::size(fragments)];
    }
  }
  return text;
}

TEST(MoodNoteFeaturesOfAnyText, areThoseOfTheDefinitionTakenLiterally) {
  EXPECT_TRUE(rc::check([] {
    const std::string text = randomText();
    RC_ASSERT(Extractor::features(text) == testing::literalFeatures(text));
  }));
}

TEST(MoodNoteFeaturesOfAnyText, areThoseOfTheDefinitionTakenLiterallyForEveryCodePoint) {
  // Alone, among letters, at the end of a link and of a handle.
  for (std::uint32_t codePoint = 0; codePoint <= 0x10'FFFF; ++codePoint) {
    if (isSurrogate(codePoint)) {
      continue;
    }
    std::string character;
    append(character, codePoint);
    std::string text = "all x";
    for (const char* next : {"x http://x", "x http://", "x @x", "x "}) {
      text += character + next;
    }
    ASSERT_EQ(Extractor::features(text), testing::literalFeatures(text)) << text << std::hex << codePoint;
  }
}

TEST(MoodNoteFeaturesOfAnyText, stayBetweenTheirEnds) {
  EXPECT_TRUE(rc::check([] {
    const auto features = Extractor::features(randomText());
    RC_ASSERT(features.sentiment >= -1 && features.sentiment <= 1);
    RC_ASSERT(features.absolutistRatio >= 0 && features.absolutistRatio <= 1);
    RC_ASSERT(std::floor(features.length) == features.length);
  }));
}

TEST(MoodNoteFeaturesOfAnyText, ofBytesThatAreNoTextComeBackBetweenTheirEnds) {
  EXPECT_TRUE(rc::check([](const std::vector<char>& bytes) {
    // Memory of exactly that size, so that a sanitizer sees what is read beyond.
    const auto exact = std::make_unique<char[]>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), exact.get());
    const auto features = Extractor::features({exact.get(), bytes.size()});
    RC_ASSERT(features.sentiment >= -1 && features.sentiment <= 1);
    RC_ASSERT(features.absolutistRatio >= 0 && features.absolutistRatio <= 1);
  }));
}

TEST(MoodNoteFeaturesOfAnyText, readNothingBeyondTheText) {
  for (std::size_t size = 0; size <= 200; ++size) {
    for (const std::string_view pattern :
         {"x", "good ", "http://x ", "@x ", "\u212A", "\u0130", "not\u2019t "}) {
      std::string text;
      while (text.size() < size) {
        text += pattern;
      }
      text.resize(size);
      const auto exact = std::make_unique<char[]>(size);
      std::copy(text.begin(), text.end(), exact.get());
      const auto features = Extractor::features({exact.get(), size});
      text += "\x01";  // what follows does not count
      EXPECT_EQ(Extractor::sentiment(std::string_view(text).substr(0, size)), features.sentiment);
    }
  }
}

TEST(MoodNoteFeaturesOfAnyText, of100MegabytesOnOneLineAreFoundInOnePass) {
  std::string text;
  for (const std::string_view pattern : {"not good at all, ", "@", "http://", "x", "http://x"}) {
    text.clear();
    text.reserve(100'000'000 + pattern.size());
    while (text.size() < 100'000'000) {
      text += pattern;
    }
    EXPECT_EQ(Extractor::features(text).length, static_cast<double>(text.size()));
  }
}

}  // namespace
}  // namespace kestrel
