#include <KestrelKit/foundation/JsonDecoder.h>
#include <support/Allocations.h>
#include <support/Specimen.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {
namespace {

using Texts = std::vector<std::string>;

constexpr JsonDecoder decoder;

// What decoding `json`, which is refused, allocates at most at a time, as a multiple of its size.
template <class T>
std::size_t costOfRefusing(const std::string& json) {
  const std::size_t before = Allocations::live;
  Allocations::peak = before;
  const auto value = decoder.decode<T>(json);
  EXPECT_FALSE(value);
  return (Allocations::peak - before) / json.size();
}

std::string repeated(std::string_view text, std::size_t count) {
  std::string result;
  result.reserve(text.size() * count);
  while (count-- > 0) {
    result += text;
  }
  return result;
}

// The copy of the document, and the parser's index and room for texts: no more, however much is wrong.
constexpr std::size_t parsing = 8;

TEST(JsonCost, ofAListIsOneNoteHoweverManyElementsAreWrong) {
  const std::string ones = '[' + repeated("1,", 1'000'000) + "1]";
  EXPECT_LE(costOfRefusing<Texts>(ones), parsing);
  EXPECT_LE(
      (costOfRefusing<std::map<std::string, Texts>>("{\"" + std::string(20'000, 'a') + "\":" + ones + "}")),
      parsing);
  EXPECT_LE(costOfRefusing<std::vector<testing::Ring>>(
                '[' + repeated(R"({"date":1,"inner":[1,1,1]},)", 100'000) + "1]"),
            parsing);
}

// A note, whose path starts at the member, for each key.
TEST(JsonCost, ofAnObjectIsOneNoteForEachWrongMember) {
  std::string json = "{";
  for (int key = 0; key < 100'000; ++key) {
    json += '"' + std::to_string(key) + "\":[1,1,1],";
  }
  json += "\"last\":1}";
  const auto deep = [&](std::size_t levels) {
    return repeated(R"({"date":")" + std::string(80, 'd') + R"(","inner":[)", levels) + "1" +
           repeated("]}", levels);
  };
  EXPECT_LE((costOfRefusing<std::map<std::string, Texts>>(json)), 24U);
  EXPECT_LE(costOfRefusing<testing::Ring>(deep(255)), parsing + 16);
}

// What took the square of this size would take an hour.
TEST(JsonCost, ofRepeatedKeysIsLinear) {
  EXPECT_LE(
      costOfRefusing<testing::Specimen>(R"({"notes":[)" + repeated("1,", 1'000'000) + "1]" +
                                        repeated(R"(,"name":"","emissions":{"":[1,1]})", 300'000) + "}"),
      parsing);
  EXPECT_LE(
      costOfRefusing<testing::Specimen>("{\"name\":1" + repeated(R"(,"name":1,"count":2)", 300'000) + "}"),
      parsing);
  EXPECT_LE((costOfRefusing<std::map<std::string, Texts>>("{\"a\":1" + repeated(R"(,"b":1,"b":[])", 300'000) +
                                                          "}")),
            parsing);
}

}  // namespace
}  // namespace kestrel
