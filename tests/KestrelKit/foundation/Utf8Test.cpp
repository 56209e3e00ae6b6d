#include <KestrelKit/foundation/Utf8.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

using namespace std::string_literals;

/// The bytes that a code point may have, one line a form: table 3-7 of the Unicode Standard.
struct Form {
  std::vector<std::pair<unsigned char, unsigned char>> bytes;
};

const Form forms[] = {
    {{{0x00, 0x7F}}},
    {{{0xC2, 0xDF}, {0x80, 0xBF}}},
    {{{0xE0, 0xE0}, {0xA0, 0xBF}, {0x80, 0xBF}}},
    {{{0xE1, 0xEC}, {0x80, 0xBF}, {0x80, 0xBF}}},
    {{{0xED, 0xED}, {0x80, 0x9F}, {0x80, 0xBF}}},
    {{{0xEE, 0xEF}, {0x80, 0xBF}, {0x80, 0xBF}}},
    {{{0xF0, 0xF0}, {0x90, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}}},
    {{{0xF1, 0xF3}, {0x80, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}}},
    {{{0xF4, 0xF4}, {0x80, 0x8F}, {0x80, 0xBF}, {0x80, 0xBF}}},
};

/// The size of the code point that `text` begins with; 0 for none.
std::size_t sizeOfFirst(std::string_view text) {
  for (const auto& [bytes] : forms) {
    std::size_t matching = 0;
    while (matching < bytes.size() && matching < text.size() &&
           static_cast<unsigned char>(text[matching]) >= bytes[matching].first &&
           static_cast<unsigned char>(text[matching]) <= bytes[matching].second) {
      ++matching;
    }
    if (matching == bytes.size()) {
      return matching;
    }
  }
  return 0;
}

std::optional<std::size_t> plainInvalidUtf8(std::string_view text) {
  for (std::size_t place = 0; place < text.size();) {
    const std::size_t size = sizeOfFirst(text.substr(place));
    if (size == 0) {
      return place;
    }
    place += size;
  }
  return std::nullopt;
}

TEST(Utf8, isValidFromTheFirstToTheLastCodePoint) {
  for (const std::string& text :
       {""s, "\0"s, "a"s, "\x7F"s, "\u0080"s, "\u07FF"s, "\u0800"s, "\uD7FF"s, "\uE000"s, "\uFFFF"s,
        "\U00010000"s, "\U0010FFFF"s, "plain text of more than 8 bytes"s}) {
    EXPECT_EQ(invalidUtf8(text), std::nullopt) << text;
  }
}

TEST(Utf8, isInvalidWhereABrokenCodePointBegins) {
  const std::pair<std::string, const char*> rows[] = {
      {"\x80", "a continuation"},
      {"\xBF", "a continuation"},
      {"\xC0\x80", "a long form of 0"},
      {"\xC1\xBF", "a long form"},
      {"\xC3", "cut off after one of two"},
      {"\xC3(", "a letter for a continuation"},
      {"\xE0\x9F\xBF", "a long form"},
      {"\xE2\x84", "cut off after two of three"},
      {"\xE2\x84\xC3", "a start for a continuation"},
      {"\xED\xA0\x80", "a surrogate"},
      {"\xED\xBF\xBF", "a surrogate"},
      {"\xF0\x8F\xBF\xBF", "a long form"},
      {"\xF0\x9F\x91", "cut off after three of four"},
      {"\xF4\x90\x80\x80", "beyond the last code point"},
      {"\xF5\x80\x80\x80", "beyond the last code point"},
      {"\xFF", "no byte of UTF-8"},
  };
  for (const auto& [bytes, what] : rows) {
    for (const std::size_t before : {0U, 1U, 7U, 8U, 9U, 100U}) {
      for (const std::string& after : {""s, "a"s, "more text behind it"s}) {
        EXPECT_EQ(invalidUtf8(std::string(before, 'a') + bytes + after), before) << what;
      }
    }
  }
}

TEST(Utf8, isToldFromOtherBytesAsTheUnicodeStandardSays) {
  EXPECT_TRUE(rc::check([] {
    const auto anyByte =
        rc::gen::oneOf(rc::gen::inRange(0, 256),
                       rc::gen::element(0x00, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC1, 0xC2, 0xDF,
                                        0xE0, 0xE1, 0xEC, 0xED, 0xEE, 0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5));
    std::string text;
    for (const int byte : *rc::gen::container<std::vector<int>>(anyByte)) {
      text += static_cast<char>(byte);
    }
    RC_ASSERT(invalidUtf8(text) == plainInvalidUtf8(text));
  }));
}

TEST(Utf8, hasALengthInUtf16) {
  const std::pair<std::string, std::size_t> rows[] = {
      {"", 0},       {"\0"s, 1},    {"abc", 3},        {"é", 1},          {"日本", 2},
      {"\uFFFF", 1}, {"\uE000", 1}, {"\U00010000", 2}, {"\U0010FFFF", 2}, {"a👍b", 4},
  };
  for (const auto& [text, length] : rows) {
    EXPECT_EQ(utf16Length(text), length) << text;
  }
}

TEST(Utf8, hasALengthInUtf16ThatIsTheSumOverItsCodePoints) {
  // Longer than what is summed at a time: 127 times 16 bytes.
  for (const std::string& character : {"a"s, "é"s, "日"s, "\uFFFF"s, "👍"s, "aé日👍"s}) {
    const std::size_t units = character == "👍" ? 2 : character == "aé日👍" ? 5 : 1;
    std::string text;
    for (std::size_t count = 0; count < 6000; ++count) {
      if (count % 97 == 0 || count < 100) {
        ASSERT_EQ(utf16Length(text), count * units) << character;
      }
      text += character;
    }
  }
}

}  // namespace
}  // namespace kestrel
