#include <KestrelKit/foundation/QuotedText.h>
#include <gtest/gtest.h>

#include <string>

namespace kestrel {
namespace {

TEST(QuotedText, plainTextStandsAsItIs) {
  EXPECT_EQ(quoted("Übung ✓ 👩‍👩‍👧"), "\"Übung ✓ 👩‍👩‍👧\"");
  EXPECT_EQ(onOneLine("a \"b\" \\ Ü"), "a \"b\" \\ Ü");
}

TEST(QuotedText, quotesAndBackslashesAreEscaped) {
  EXPECT_EQ(quoted(R"(a"b\c)"), R"("a\"b\\c")");
  EXPECT_EQ(shortened(R"(a"b\c)"), R"(a\"b\\c)");
}

TEST(QuotedText, whatBreaksALineOrSteersATerminalIsEscaped) {
  EXPECT_EQ(onOneLine("a\nb\x1B[31m\x7F"), "a\\u000Ab\\u001B[31m\\u007F");
  EXPECT_EQ(onOneLine(std::string("a\0b", 3)), "a\\u0000b");
  EXPECT_EQ(onOneLine("\u0080\u0085\u009B\u009F\u00A0"), "\\u0080\\u0085\\u009B\\u009F\u00A0");
  EXPECT_EQ(onOneLine("\u2027\u2028\u2029\u2030"), "\u2027\\u2028\\u2029\u2030");
}

TEST(QuotedText, whatTurnsTheDirectionIsEscaped) {
  EXPECT_EQ(onOneLine("a\u202Etxt.exe\u2066"), "a\\u202Etxt.exe\\u2066");
}

TEST(QuotedText, whatIsNoUtf8IsEscapedByteByByte) {
  EXPECT_EQ(onOneLine("a\xFFz"), "a\\xFFz");
  EXPECT_EQ(onOneLine("\xC3"), "\\xC3");
  EXPECT_EQ(onOneLine("\xED\xA0\x80"), "\\xED\\xA0\\x80");  // a surrogate
  EXPECT_EQ(quoted("a\xC3("), "\"a\\xC3(\"");
}

TEST(QuotedText, moreThanEightyBytesEndInAnEllipsis) {
  const std::string eighty(80, 'a');
  EXPECT_EQ(shortened(eighty), eighty);
  EXPECT_EQ(shortened(eighty + 'b'), eighty + "…");
  EXPECT_EQ(shortened(std::string(79, 'a') + "Übung"), std::string(79, 'a') + "…");
  EXPECT_EQ(shortened(std::string(78, 'x') + "\u2028\u2028"), std::string(78, 'x') + "…");
  EXPECT_EQ(onOneLine(eighty + "b\n"), eighty + "b\\u000A");
}

}  // namespace
}  // namespace kestrel
