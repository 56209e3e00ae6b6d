#include <KestrelKit/formats/Discard.h>
#include <KestrelKit/formats/LossyArray.h>
#include <KestrelKit/foundation/JsonDecoder.h>
#include <KestrelKit/foundation/JsonEncoder.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace kestrel {
namespace {

using Integers = LossyArray<std::int64_t>;
using Dropped = std::vector<JsonError>;

constexpr JsonDecoder decoder;

TEST(LossyArray, keepsTheElementsThatFitInTheirOrder) {
  Dropped dropped;
  EXPECT_EQ(decoder.decode<Integers>(R"([3,null,"x",1,[2],{"a":2},2.5,2,true,1e400])", &dropped),
            (Integers{{3, 1, 2}}));
  EXPECT_EQ(dropped, (Dropped{{"[1]", "expected an integer, found null"},
                              {"[2]", "expected an integer, found text"},
                              {"[4]", "expected an integer, found a list"},
                              {"[5]", "expected an integer, found an object"},
                              {"[6]", "2.5 is not an integer of 64 bits"},
                              {"[8]", "expected an integer, found a boolean"},
                              {"[9]", "1e400 is not an integer of 64 bits"}}));
  EXPECT_EQ(decoder.decode<Integers>("[]"), Integers{});
  EXPECT_EQ(decoder.decode<Integers>("[null]"), Integers{});
}

TEST(LossyArray, isRefusedWhereThereIsNoList) {
  for (const std::string_view json :
       {"{}", "1", "\"[]\"", "true", "null", "[1,]", "[1 2]", "[tru]", "[\"\\q\"]"}) {
    EXPECT_FALSE(decoder.decode<Integers>(json)) << json;
  }
}

TEST(LossyArray, isWrittenAsAPlainList) {
  EXPECT_EQ(JsonEncoder().encode(Integers{{3, 1}}), "[3,1]");
  EXPECT_EQ(JsonEncoder().encode(Integers{}), "[]");
}

TEST(LossyArray, namesWhatListsInsideLost) {
  Dropped dropped;
  EXPECT_EQ(decoder.decode<LossyArray<Integers>>("[[1,null],7,[2]]", &dropped),
            (LossyArray<Integers>{{Integers{{1}}, Integers{{2}}}}));
  EXPECT_EQ(dropped, (Dropped{{"[0][1]", "expected an integer, found null"},
                              {"[1]", "expected a list, found a number"}}));
}

TEST(Discard, isAnyValueThatIsWellFormed) {
  for (const std::string_view json :
       {"{}", R"({"a":[1,{"b":null}]})", "[]", "\"x\"", "1e400", "true", "null"}) {
    Dropped dropped;
    EXPECT_EQ(decoder.decode<Discard>(json, &dropped), Discard{}) << json;
    EXPECT_TRUE(dropped.empty());
  }
  for (const std::string_view json : {"", "{", "[1,]", "tru", "01", "\"\\u12\"", R"({"a":[1,{"b":nul}]})"}) {
    EXPECT_FALSE(decoder.decode<Discard>(json)) << json;
  }
}

}  // namespace
}  // namespace kestrel
