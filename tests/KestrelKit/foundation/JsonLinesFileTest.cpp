#include <KestrelKit/foundation/JsonLinesFile.h>
#include <KestrelKit/foundation/Utf8.h>
#include <support/TemporaryFolder.h>
#include <support/TextFile.h>

#include <gmock/gmock.h>
#include <rapidcheck.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace kestrel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// What is read at a time.
constexpr std::size_t portion = std::size_t{256} * 1024;

class JsonLinesFile : public ::testing::Test {
 protected:
  std::vector<std::string> linesOf(std::string_view text) const {
    testing::write(file, text);
    std::vector<std::string> lines;
    const auto read = readObjectLines(file, [&](std::string_view line) { lines.emplace_back(line); });
    EXPECT_TRUE(read) << read.error().text();
    return lines;
  }

  testing::TemporaryFolder folder;
  std::filesystem::path file = folder / "lines";
};

TEST_F(JsonLinesFile, handsOutTheLinesThatBeginWithABrace) {
  EXPECT_THAT(linesOf(""), IsEmpty());
  EXPECT_THAT(linesOf("\n\n \n"), IsEmpty());
  EXPECT_THAT(linesOf("{1\n{2"), ElementsAre("{1", "{2"));
  EXPECT_THAT(linesOf("{1\n{2\n"), ElementsAre("{1", "{2"));
  EXPECT_THAT(linesOf("\n{1\r\n\t {2}\n[3]\n\"{4\"\n{\n}"), ElementsAre("{1\r", "\t {2}", "{"));
}

TEST_F(JsonLinesFile, handsOutLinesWhereverTheyAreCut) {
  for (std::size_t before = portion - 8; before <= portion + 2; ++before) {
    const std::string line = "{\"" + std::string(before - 3, 'x') + '\n';
    ASSERT_EQ(line.size(), before);
    EXPECT_TRUE(linesOf(line + "{é}\n{👣") ==
                (std::vector<std::string>{line.substr(0, before - 1), "{é}", "{👣"}));
    const std::string passedOver = std::string(before - 1, 'x') + '\n';
    EXPECT_THAT(linesOf(passedOver + "{é}\n{👣"), ElementsAre("{é}", "{👣"));
    const std::string blank = std::string(before - 1, ' ') + '\n';
    EXPECT_THAT(linesOf(blank + "{é}\n{👣"), ElementsAre("{é}", "{👣"));
  }
}

TEST_F(JsonLinesFile, handsOutALongLineWhole) {
  for (const std::size_t size : {2 * portion - 1, 2 * portion, 2 * portion + 1, 9 * portion}) {
    const std::string line = "{\"" + std::string(size - 2, 'x');
    EXPECT_TRUE(linesOf(line) == std::vector{line});
    EXPECT_TRUE(linesOf("\n{}\n" + line + "\n{}") == (std::vector<std::string>{"{}", line, "{}"}));
  }
}

TEST_F(JsonLinesFile, passesOverALongLineThatCannotBecomeAnObject) {
  const auto nested = [](std::size_t levels) {
    std::string text = R"({"a":)";
    for (std::size_t level = 1; level < levels; ++level) {
      text += level % 2 == 0 ? R"({"a":)" : "[";
    }
    return text;
  };
  const std::string filler(portion, ' ');
  const std::vector<std::string> possible{
      "{",
      "{}",
      R"({"a")",
      R"({"a":)",
      R"({"a":1)",
      R"({"a":[1,true)",
      R"({"\\\"{[]}:,)",
      R"({"a":{},"b":[[]],"c":-1e+5,"d":null)",
      nested(512),
  };
  for (const std::string& begun : possible) {
    EXPECT_EQ(linesOf("{}\n" + begun + filler + "\n{}").size(), 3U) << begun;
  }
  const std::vector<std::string> impossible{
      "{x",
      "{{",
      "{[",
      "{1",
      "{,",
      "{]",
      R"({"a",)",
      R"({"a"1)",
      R"({"a":,)",
      R"({"a":})",
      R"({"a":1]})",
      R"({"a":[1}})",
      R"({"a":[1,]})",
      R"({"a":1,})",
      R"({"a":1 2)",
      R"({"a":"b" "c")",
      "{}1",
      "{}{",
      "{\"a\x01",
      "{\"a\\\x01",
      R"({"a":[[],,)",
      std::string("{\"a\":\0", 6),
      R"({"a":'b')",
      nested(513),
  };
  for (const std::string& begun : impossible) {
    EXPECT_EQ(linesOf("{}\n" + begun + filler + "\n{}").size(), 2U) << begun;
    const std::string blanks(portion - begun.size() / 2, '\t');  // the cut goes through it
    EXPECT_EQ(linesOf('{' + blanks + begun.substr(1) + filler + filler + "\n{}").size(), 1U) << begun;
  }
}

/// A well-formed value as text, with blanks where they may stand.
rc::Gen<std::string> json(int levels) {
  const auto scalar = rc::gen::elementOf(std::vector<std::string>{
      "1", "-0", "1.5E-7", "true", "false", "null", R"("")", R"("\\")", R"("\"{")", R"("]é👣\u00e9\/")"});
  if (levels == 0) {
    return scalar;
  }
  const auto values = rc::gen::resize(4, rc::gen::container<std::vector<std::string>>(json(levels - 1)));
  const auto joined = [](const std::vector<std::string>& all, std::string_view before) {
    std::string text;
    for (const std::string& each : all) {
      text += (text.empty() ? " " : "\t, ") + std::string(before) + each + ' ';
    }
    return text;
  };
  return rc::gen::oneOf(
      scalar, rc::gen::map(values, [=](const auto& all) { return '[' + joined(all, "") + ']'; }),
      rc::gen::map(values, [=](const auto& all) { return '{' + joined(all, R"("\\\"":)") + '}'; }));
}

TEST_F(JsonLinesFile, handsOutEveryLongObjectWhereverItIsCut) {
  EXPECT_TRUE(rc::check([this] {
    const std::string value = *json(3);
    const std::string blanks(portion - *rc::gen::inRange<std::size_t>(2, value.size() + 8), ' ');
    const std::string line =
        '{' + blanks + R"("a":)" + value + R"(,"b":")" + std::string(portion, 'x') + R"("})";
    RC_ASSERT(linesOf(line) == std::vector{line});
  }));
}

TEST_F(JsonLinesFile, mustBeUtf8ToItsLastByteWhereverItIsCut) {
  for (const std::string_view wrong : {"\xff", "\xe2\x82", "\xf0\x9f\x91", "\xe2(\xa1", "\xed\xbf\xbf"}) {
    for (std::size_t before = portion - 4; before <= portion + 1; ++before) {
      testing::write(file, std::string(before, 'x') + std::string(wrong));
      EXPECT_EQ(readObjectLines(file, [](std::string_view) {}).error().reason,
                std::errc::illegal_byte_sequence);
      testing::write(file, std::string(before, 'x') + std::string(wrong) + std::string(portion, '\n'));
      EXPECT_EQ(readObjectLines(file, [](std::string_view) {}).error().reason,
                std::errc::illegal_byte_sequence);
    }
  }
}

TEST_F(JsonLinesFile, saysWhyItCannotBeRead) {
  const auto errorOf = [](const std::filesystem::path& path) {
    return readObjectLines(path, [](std::string_view) {}).error();
  };
  EXPECT_EQ(errorOf(file).reason, std::errc::no_such_file_or_directory);
  EXPECT_EQ(errorOf(folder.path()).reason, std::errc::is_a_directory);
  EXPECT_EQ(errorOf("/dev/zero").reason, std::errc::not_supported);
  EXPECT_EQ(errorOf("/dev/zero").file, "/dev/zero");
}

TEST(Utf8Pieces, areValidWhereTheWholeIsHoweverItIsCut) {
  EXPECT_TRUE(rc::check([] {
    const auto pieces =
        *rc::gen::container<std::vector<std::string>>(rc::gen::container<std::string>(rc::gen::elementOf(
            std::string("a\x7f\x80\xbf\xc2\xc3\xe0\xe2\x82\xac\xed\xa0\xef\xf0\x9f\x91\xa3\xf4\xf5"))));
    Utf8Pieces text;
    std::string whole;
    bool mayBecomeValid = true;
    for (const std::string& piece : pieces) {
      whole += piece;
      mayBecomeValid = mayBecomeValid && text.add(piece);
    }
    RC_ASSERT((mayBecomeValid && text.isWhole()) == !invalidUtf8(whole));
  }));
  EXPECT_TRUE(rc::check([](const std::vector<std::string>& cuts) {
    const std::string whole = "aé€👣\n";
    Utf8Pieces text;
    for (std::size_t round = 0; round < cuts.size(); ++round) {
      for (std::size_t place = 0; place < whole.size();) {
        const std::size_t size = 1 + cuts[round].size() % 5;
        RC_ASSERT(text.add(std::string_view(whole).substr(place, size)));
        place += size;
      }
      RC_ASSERT(text.isWhole());
    }
  }));
}

}  // namespace
}  // namespace kestrel
