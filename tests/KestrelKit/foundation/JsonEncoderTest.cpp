#include <KestrelKit/foundation/JsonDecoder.h>
#include <KestrelKit/foundation/JsonEncoder.h>
#include <KestrelKit/foundation/JsonForm.h>
#include <KestrelKit/foundation/JsonWriter.h>
#include <support/Specimen.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <sys/mman.h>

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {
namespace {

using namespace std::string_literals;
using testing::Ring;

constexpr JsonEncoder encoder;

template <class T>
std::string json(const T& value) {
  const auto text = encoder.encode(value);
  return text ? *text : text.error().text();
}

TEST(JsonEncoder, writesFloatsPlainlyFromAMillionthUpToBelow1e15) {
  const std::pair<double, const char*> rows[] = {
      {7, "7"},
      {100000, "100000"},
      {0.00012, "0.00012"},
      {-2.5, "-2.5"},
      {0.1, "0.1"},
      {1.0 / 3, "0.3333333333333333"},
      {123456789012345.6, "123456789012345.6"},
      {1e14, "100000000000000"},
      {999999999999999, "999999999999999"},
      {std::nextafter(1e15, 0), "999999999999999.9"},
      {1e15, "1e+15"},
      {1234567890123456, "1.234567890123456e+15"},
      {1e20, "1e+20"},
      {1.5e100, "1.5e+100"},
      {1e-6, "0.000001"},
      {std::nextafter(1e-6, 0), "9.999999999999997e-7"},
      {1.5e-7, "1.5e-7"},
      {-1e-10, "-1e-10"},
      {1e-300, "1e-300"},
      {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
      {std::numeric_limits<double>::denorm_min(), "5e-324"},
      {0.0, "0"},
      {-0.0, "-0.0"},
  };
  for (const auto& [value, text] : rows) {
    EXPECT_EQ(json(value), text);
  }
}

TEST(JsonEncoder, readsBackEveryFloatItWrites) {
  EXPECT_TRUE(rc::check("any bit pattern", [](std::uint64_t bits) {
    const auto value = std::bit_cast<double>(bits);
    RC_PRE(std::isfinite(value));
    const auto back = JsonDecoder{}.decode<double>(json(value));
    RC_ASSERT(back.has_value());
    RC_ASSERT(std::bit_cast<std::uint64_t>(*back) == bits);
  }));
}

TEST(JsonEncoder, writesIntegersToTheEndsOfTheirRange) {
  EXPECT_EQ(json(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
  EXPECT_EQ(json(std::numeric_limits<std::int64_t>::max()), "9223372036854775807");
}

TEST(JsonEncoder, writesSlashesAndForeignCharactersPlainly) {
  EXPECT_EQ(json("a/b ⇊ é 𝄞 \x7f"s), "\"a/b ⇊ é 𝄞 \x7f\"");
}

TEST(JsonEncoder, escapesWhatMustBe) {
  EXPECT_EQ(json("\"\\\b\f\n\r\t\0\x1f"s), R"("\"\\\b\f\n\r\t\u0000\u001F")");
}

TEST(JsonEncoder, writesMapsInOrderOfCodePoints) {
  // U+FFFD comes before U+1D11E, though not as 16-bit units.
  const std::map<std::string, bool> map{
      {"𝄞", true}, {"b", true}, {"\xEF\xBF\xBD", true}, {"B", true}, {"", true}};
  EXPECT_EQ(json(map), "{\"\":true,\"B\":true,\"b\":true,\"\xEF\xBF\xBD\":true,\"𝄞\":true}");
}

TEST(JsonEncoder, namesTheFieldThatHasNoJsonForm) {
  const std::map<std::string, std::vector<std::optional<double>>> map{
      {"a", {1}}, {"b", {2, std::nullopt, std::numeric_limits<double>::infinity()}}, {"c", {}}};
  EXPECT_EQ(json(map), "b[2]: is not a finite number");
  EXPECT_EQ(json(std::vector{1.0, std::nan("")}), "[1]: is not a finite number");
  EXPECT_EQ(json(std::vector{"a"s, "\xFF"s}), "[1]: is not valid UTF-8");
  EXPECT_EQ(json(std::map<std::string, std::map<std::string, bool>>{{"a", {{"\xFF", true}}}}),
            "a: has a key that is not valid UTF-8");
  EXPECT_EQ(json(Ring{.date = "d", .number = 1, .inner = {Ring{.date = "\xED\xA0\x80"}}}),
            "inner[0].date: is not valid UTF-8");
}

TEST(JsonEncoder, writesTextOfEachAsciiCharacterSoThatItReadsBack) {
  for (char c = 0; c != 127; ++c) {
    for (const std::string& text : {std::string(1, c), "plain" + std::string(1, c), c + "plain"s}) {
      EXPECT_EQ(JsonDecoder{}.decode<std::string>(json(text)), text);
      const std::map<std::string, std::string> map{{text, text}};
      EXPECT_EQ((JsonDecoder{}.decode<std::map<std::string, std::string>>(json(map))), map);
    }
  }
}

template <class T>
std::string jsonLines(const std::vector<T>& values) {
  const auto text = encoder.encodeLines(std::span<const T>(values));
  return text ? *text : text.error().text();
}

TEST(JsonEncoderLines, areADocumentEachEndedByALineFeed) {
  EXPECT_EQ(jsonLines<double>({}), "");
  EXPECT_EQ(jsonLines<double>({1, 0.5}), "1\n0.5\n");
  EXPECT_EQ(jsonLines<std::string>({"a\nb", ""}), "\"a\\nb\"\n\"\"\n");
  const std::vector<Ring> rings{{.date = "d", .number = 1, .inner = {Ring{.date = "e"}}}, {.date = "é"}};
  EXPECT_EQ(jsonLines(rings), json(rings[0]) + '\n' + json(rings[1]) + '\n');
}

TEST(JsonEncoderLines, nameTheFirstFieldThatHasNoJsonForm) {
  EXPECT_EQ(jsonLines<std::vector<double>>({{1}, {1, std::nan("")}, {std::nan("")}}),
            "[1]: is not a finite number");
}

// 4 GiB of text that only takes addresses: it must not be read.
class EndlessText : public ::testing::Test {
 protected:
  static constexpr std::size_t size = std::size_t{1} << 32U;

  EndlessText()
      : memory_(mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {}
  ~EndlessText() override { munmap(memory_, size); }

  std::string_view text() const {
    EXPECT_NE(memory_, MAP_FAILED);
    return {static_cast<const char*>(memory_), size};
  }

 private:
  void* memory_;
};

TEST_F(EndlessText, isRefusedAndNotCut) {
  JsonWriter writer{DateStrategy::iso8601};
  writer.openList();
  writer.text("short");
  writer.text(text());
  writer.closeList();
  EXPECT_EQ(writer.finish(JsonLayout::compact).error().text(), "[1]: is text of 4 GiB or more");
}

TEST_F(EndlessText, isRefusedAsAKey) {
  JsonWriter writer{DateStrategy::iso8601};
  writer.openList();
  writer.openObject();
  writer.key(text());
  writer.null();
  writer.closeObject();
  writer.closeList();
  EXPECT_EQ(writer.finish(JsonLayout::compact).error().text(), "[0]: has a key of 4 GiB or more");
}

TEST(JsonEncoder, shortensTheKeysOfAPath) {
  const auto error = [](const std::string& key) {
    return json(std::map<std::string, std::vector<double>>{{key, {std::nan("")}}});
  };
  EXPECT_EQ(error(std::string(80, 'a')), std::string(80, 'a') + "[0]: is not a finite number");
  EXPECT_EQ(error(std::string(81, 'a')), std::string(80, 'a') + "…[0]: is not a finite number");
}

TEST(JsonEncoder, writesInstantsByItsDateStrategy) {
  constexpr JsonEncoder iso{DateStrategy::iso8601};
  EXPECT_EQ(json(instantSinceReferenceDate(1.5)), "1.5");
  EXPECT_EQ(iso.encode(instantSinceReferenceDate(1.5)), "\"2001-01-01T00:00:01Z\"");
  EXPECT_EQ(json(instantSinceReferenceDate(std::nan(""))), "is not a finite number");
  EXPECT_EQ(iso.encode(instantSinceReferenceDate(std::nan(""))).error().text(),
            "is not an instant of the years 0001 to 9999");
}

TEST(JsonEncoder, indentsByTwoSpaces) {
  const auto indented = [](const auto& value) {
    return encoder.encode(value, JsonLayout::indented).value_or("none");
  };
  EXPECT_EQ(indented(7.0), "7");
  EXPECT_EQ(indented(std::vector<bool>{}), "[]");
  EXPECT_EQ(indented(std::map<std::string, bool>{}), "{}");
  EXPECT_EQ(indented(std::map<std::string, std::vector<std::string>>{{"a,[:", {}}, {"b", {"{\"\\", "x"}}}),
            "{\n"
            "  \"a,[:\": [],\n"
            "  \"b\": [\n"
            "    \"{\\\"\\\\\",\n"
            "    \"x\"\n"
            "  ]\n"
            "}");
}

}  // namespace
}  // namespace kestrel
