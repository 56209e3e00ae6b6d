#include <KestrelKit/foundation/RawEnumeration.h>
#include <support/Specimen.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

namespace kestrel {
namespace {

using testing::Habitat;

// A table that was not told of the last case.
class Forgetful : public RawEnumeration<Forgetful> {
 public:
  enum Case : std::uint8_t { listed, unlisted };

  static constexpr RawValue<Case> rawValues[] = {
      {listed, "listed"},
  };

  constexpr Forgetful(Case value) noexcept : value_(value) {}
  constexpr operator Case() const noexcept { return value_; }

 private:
  Case value_;
};

static_assert(Habitat::fromRawValue("tidal flat") == Habitat::tidalFlat);
static_assert(Habitat{Habitat::saltMarsh}.rawValue() == "Salt Marsh");
static_assert(Habitat::allCases.size() == 3 && Habitat::allCases[2] == Habitat::saltMarsh);

TEST(RawEnumeration, listsAllCasesInDeclarationOrder) {
  EXPECT_TRUE(std::ranges::equal(
      Habitat::allCases, std::vector<Habitat>{Habitat::openSea, Habitat::tidalFlat, Habitat::saltMarsh}));
}

TEST(RawEnumeration, readsBackWhatItPrints) {
  for (const Habitat habitat : Habitat::allCases) {
    EXPECT_EQ(Habitat::fromRawValue(habitat.rawValue()), habitat);
  }
}

TEST(RawEnumerationDeathTest, stopsAtACaseThatItsTableDoesNotList) {
  EXPECT_EQ(Forgetful{Forgetful::listed}.rawValue(), "listed");
  EXPECT_DEATH(Forgetful{Forgetful::unlisted}.rawValue(), "a case of an enumeration has no raw value");
}

TEST(RawEnumeration, isExactAboutTheRawValue) {
  for (const std::string_view text : {"", "Open_sea", "openSea", "open_sea ", "open_se", "open_seas"}) {
    EXPECT_EQ(Habitat::fromRawValue(text), std::nullopt) << text;
  }
}

TEST(RawEnumeration, saysWhatWouldHaveBeenRight) {
  EXPECT_EQ(Habitat::notOneOf("reef"), "\"reef\" is not one of open_sea, tidal flat, Salt Marsh");
}

TEST(RawEnumeration, saysWhatWasMeantWhereOneLetterIsOff) {
  const std::pair<std::string_view, std::string_view> rows[] = {
      {"open_see", "open_sea"},     {"Open_sea", "open_sea"},    {"open_se", "open_sea"},
      {"pen_sea", "open_sea"},      {"open_seas", "open_sea"},   {"oopen_sea", "open_sea"},
      {"tidal_flat", "tidal flat"}, {"tidalflat", "tidal flat"}, {"Salt  Marsh", "Salt Marsh"},
  };
  for (const auto& [text, meant] : rows) {
    EXPECT_EQ(Habitat::notOneOf(text), '"' + std::string(text) +
                                           "\" is not one of open_sea, tidal flat, Salt Marsh; " +
                                           "did you mean " + std::string(meant) + '?');
  }
  for (const std::string_view text : {"", "o", "openSea", "open_s", "opne_sea", "open_sea  ", "TIDAL FLAT"}) {
    EXPECT_EQ(Habitat::notOneOf(text),
              '"' + std::string(text) + "\" is not one of open_sea, tidal flat, Salt Marsh");
  }
}

TEST(RawEnumeration, saysTheFirstOfSeveralThatMayHaveBeenMeant) {
  const std::string_view allowed[] = {"cat", "bat", "b"};
  EXPECT_EQ(notOneOfMessage("rat", allowed), "\"rat\" is not one of cat, bat, b; did you mean cat?");
  EXPECT_EQ(notOneOfMessage("", allowed), "\"\" is not one of cat, bat, b; did you mean b?");
  EXPECT_EQ(notOneOfMessage("bat", {}), "\"bat\" is not one of ");
}

TEST(RawEnumeration, quotesAForeignTextInOneShortLine) {
  EXPECT_EQ(Habitat::notOneOf("a\n\"b\\\x7f"),
            "\"a\\u000A\\\"b\\\\\\u007F\" is not one of open_sea, tidal flat, Salt Marsh");
  EXPECT_EQ(Habitat::notOneOf(std::string(80, 'x')),
            '"' + std::string(80, 'x') + "\" is not one of open_sea, tidal flat, Salt Marsh");
  EXPECT_EQ(Habitat::notOneOf(std::string(81, 'x')),
            '"' + std::string(80, 'x') + "…\" is not one of open_sea, tidal flat, Salt Marsh");
  EXPECT_EQ(Habitat::notOneOf(std::string(79, 'x') + "ää"),
            '"' + std::string(79, 'x') + "…\" is not one of open_sea, tidal flat, Salt Marsh");
}

TEST(RawEnumeration, hashesAndSwitches) {
  const std::unordered_set<Habitat> set(Habitat::allCases.begin(), Habitat::allCases.end());
  EXPECT_EQ(set.size(), 3U);
  const auto number = [](Habitat habitat) {
    switch (habitat) {
      case Habitat::openSea:
        return 0;
      case Habitat::tidalFlat:
        return 1;
      case Habitat::saltMarsh:
        return 2;
    }
    return -1;
  };
  EXPECT_EQ(number(Habitat::saltMarsh), 2);
}

}  // namespace
}  // namespace kestrel
