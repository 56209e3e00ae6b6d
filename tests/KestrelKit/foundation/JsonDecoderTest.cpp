#include <KestrelKit/foundation/JsonDecoder.h>
#include <KestrelKit/foundation/JsonForm.h>
#include <support/Specimen.h>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <map>
#include <optional>
#include <random>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {
namespace {

// Takes any value by not touching it.
struct Anything {};

}  // namespace

template <>
struct JsonForm<Anything> {
  static std::optional<Anything> read(JsonReader&) { return Anything{}; }
};

namespace {

// A form that breaks its contract: it gives nothing and does not say why.
struct Silence {};

}  // namespace

template <>
struct JsonForm<Silence> {
  static std::optional<Silence> read(JsonReader&) { return std::nullopt; }
};

namespace {

using namespace std::string_literals;
using testing::Ring;

constexpr JsonDecoder decoder;

template <class T>
std::string errorOf(std::string_view json) {
  const auto value = decoder.decode<T>(json);
  return value ? "none" : value.error().text();
}

bool isWellFormed(std::string_view json) {
  const auto value = decoder.decode<Anything>(json);
  EXPECT_TRUE(value || value.error().path.empty());
  return value.has_value();
}

struct Case {
  const char* name;
  std::string json;
};

std::string nested(std::size_t levels, std::string_view open, std::string_view close) {
  std::string json;
  for (std::size_t level = 0; level < levels; ++level) {
    json += open;
  }
  for (std::size_t level = 0; level < levels; ++level) {
    json += close;
  }
  return json;
}

// Values that are well-formed wherever they stand.
const Case goodValues[] = {
    {"null", "null"},
    {"true", "true"},
    {"false", "false"},
    {"zero", "0"},
    {"minus zero", "-0"},
    {"fraction", "-0.0"},
    {"digits", "1234567890"},
    {"long integer", std::string(400, '9')},
    {"long fraction", "0." + std::string(2000, '3')},
    {"exponent", "1e5"},
    {"capital exponent", "1E5"},
    {"signed exponents", "[1e+05, 1e-05, 1.5E+0, 0e0, 0E+1]"},
    {"beyond a float", "1e400"},
    {"below a float", "1e-400"},
    {"exponent beyond 64 bits", "1e99999999999999999999"},
    {"empty text", "\"\""},
    {"two-byte characters", "\"äöü\""},
    {"three-byte characters", "\"€⇊\""},
    {"four-byte characters", "\"𝄞\""},
    {"last code point", "\"\xF4\x8F\xBF\xBF\""},
    {"noncharacter", "\"\xEF\xBF\xBF\""},
    {"simple escapes", R"("\"\\\/\b\f\n\r\t")"},
    {"unicode escapes", R"("\u0000\u0041\u00e9\uFFFF")"},
    {"surrogate pair", R"("\uD834\uDD1E")"},
    {"surrogate pairs at the ends", R"("\ud800\udc00\udbff\udfff")"},
    {"escaped backslash before u", R"("\\ud800")"},
    {"escaped backslash before the quote", R"("\\")"},
    {"delete character", "\"\x7f\""},
    {"line separators", "\"\xE2\x80\xA8\xE2\x80\xA9\""},
    {"structure inside text", R"("[{,:}]")"},
    {"empty list", "[]"},
    {"empty list with blanks", "[ \t\r\n ]"},
    {"empty object", "{}"},
    {"empty object with blanks", "{ \t\r\n }"},
    {"mixed list", R"([null,true,"x",1,[],{}])"},
    {"mixed object", R"({"a":null,"b":[{"c":{}}]})"},
    {"empty key", R"({"":1})"},
    {"repeated key", R"({"a":1,"a":2})"},
    {"escaped key", R"({"\u0061\n\"":1})"},
    {"blanks everywhere", " [ 1 , { \"a\" : 2 } ] "},
    {"byte order mark inside text", "\"\xEF\xBB\xBF\""},
};

// Values that are not well-formed wherever they stand.
const Case badValues[] = {
    {"nothing", ""},
    {"blanks alone", " \n"},
    {"leading zero", "01"},
    {"minus leading zero", "-01"},
    {"minus alone", "-"},
    {"plus", "+1"},
    {"double minus", "--1"},
    {"minus apart", "- 1"},
    {"point without digits", "1."},
    {"point without integer", ".5"},
    {"minus point", "-.5"},
    {"point before exponent", "1.e5"},
    {"exponent without digits", "1e"},
    {"exponent sign without digits", "1e+"},
    {"fractional exponent", "1e5.5"},
    {"two exponents", "1e5e5"},
    {"two points", "1.2.3"},
    {"hexadecimal", "0x1F"},
    {"letters after digits", "12a"},
    {"quote after digits", "1\"a\""},
    {"full-width digit", "\xEF\xBC\x91"},
    {"not a number", "NaN"},
    {"minus infinity", "-Infinity"},
    {"infinity", "Infinity"},
    {"capital literal", "True"},
    {"cut true", "tru"},
    {"cut false", "fals"},
    {"cut null", "nul"},
    {"long literal", "nulll"},
    {"literal with a quote", "true\"a\""},
    {"bare word", "word"},
    {"single quotes", "'a'"},
    {"open text", "\"abc"},
    {"open text after a backslash", "\"abc\\"},
    {"escaped closing quote", R"("abc\")"},
    {"unknown escape", R"("\x41")"},
    {"unknown escape a", R"("\a")"},
    {"capital escape", R"("\U0041")"},
    {"short unicode escape", R"("\u004")"},
    {"unicode escape without digits", R"("\u")"},
    {"unicode escape with a wrong digit", R"("\u00G1")"},
    {"unicode escape with a sign", R"("\u-041")"},
    {"line feed in text", "\"a\nb\""},
    {"tab in text", "\"a\tb\""},
    {"null character in text", "\"a\0b\""s},
    {"last control character in text", "\"\x1f\""},
    {"high surrogate alone", R"("\ud800")"},
    {"last high surrogate alone", R"("\udbff")"},
    {"low surrogate alone", R"("\udc00")"},
    {"last low surrogate alone", R"("\udfff")"},
    {"high surrogate before text", R"("\ud800abcdefgh")"},
    {"high surrogate before another escape", R"("\ud800\n")"},
    {"high surrogate before a letter's escape", R"("\ud800\u0041")"},
    {"two high surrogates", R"("\ud800\ud800")"},
    {"surrogates the wrong way round", R"("\udc00\ud800")"},
    {"high surrogate after a pair", R"("\ud800\udc00\ud800")"},
    {"lone surrogate in a key", R"({"\ud800":1})"},
    {"low surrogate in a key", R"({"a\"\udc00":1})"},
    {"wrong escape in a key", R"({"\q":1})"},
    {"control character in a key", "{\"a\nb\":1}"},
    {"text after text", "\"a\"\"b\""},
    {"letter after text", "\"a\"b"},
    {"trailing comma in a list", "[1,]"},
    {"leading comma in a list", "[,1]"},
    {"comma alone in a list", "[,]"},
    {"two commas in a list", "[1,,2]"},
    {"no comma in a list", "[1 2]"},
    {"colon in a list", "[1:2]"},
    {"colon after text in a list", R"(["a":1])"},
    {"open list", "[1"},
    {"open list after a comma", "[1,"},
    {"list closed as an object", "[1}"},
    {"object closed as a list", R"({"a":1])"},
    {"trailing comma in an object", R"({"a":1,})"},
    {"leading comma in an object", R"({,"a":1})"},
    {"no comma in an object", R"({"a":1 "b":2})"},
    {"no colon", R"({"a" 1})"},
    {"two colons", R"({"a"::1})"},
    {"no value", R"({"a":})"},
    {"key alone", R"({"a"})"},
    {"comma for a colon", R"({"a",1})"},
    {"key without quotes", "{a:1}"},
    {"number as a key", "{1:1}"},
    {"null as a key", "{null:1}"},
    {"list as a key", "{[]:1}"},
    {"open object", R"({"a":1)"},
    {"open object after a comma", R"({"a":1,)"},
    {"comment", "/* a */1"},
    {"line comment", "1 // a"},
    {"comment in a list", "[1/**/]"},
    {"form feed between tokens", "[\f1]"},
    {"no-break space between tokens",
     "[\xC2\xA0"
     "1]"},
    {"null character between tokens",
     "[\0"
     "1]"s},
    {"null character after a number", "[1\0]"s},
    {"byte order mark",
     "\xEF\xBB\xBF"
     "1"},
    {"error deep inside", R"({"a":[{"b":[1,{"c":tru}]}]})"},
    {"wrong number deep inside", R"([[[[{"a":[01]}]]]])"},
    {"invalid byte", "\"\xFF\""},
    {"continuation byte alone", "\"\x80\""},
    {"cut character", "\"\xE2\x82\""},
    {"overlong character", "\"\xC0\xAF\""},
    {"overlong three bytes", "\"\xE0\x80\xAF\""},
    {"surrogate in UTF-8", "\"\xED\xA0\x80\""},
    {"beyond the last code point", "\"\xF4\x90\x80\x80\""},
    {"invalid byte in a key", "{\"\xFF\":1}"},
    {"513 lists", nested(513, "[", "]")},
};

// Whole documents that are not well-formed, some of whose texts would be well-formed inside another one.
const Case badDocuments[] = {
    {"two numbers", "1 2"},
    {"two values with a comma", "1,2"},
    {"two objects", "{}{}"},
    {"letter after an object", "{}x"},
    {"bracket after an object", "{}]"},
    {"brace after an object", "{}}"},
    {"closing bracket", "]"},
    {"closing brace", "}"},
    {"closed and opened again", "1] [2"},
    {"list closed twice", "[1]]"},
    {"member without an object", R"("a":1)"},
    {"null character at the end", "{}\0"s},
    {"byte order mark at the end", "{}\xEF\xBB\xBF"},
};

TEST(JsonDecoder, takesWhatIsWellFormed) {
  for (const auto& [name, json] : goodValues) {
    EXPECT_TRUE(isWellFormed(json)) << name;
    EXPECT_TRUE(isWellFormed("\r\n\t " + json + "\r\n\t ")) << name;
    EXPECT_TRUE(isWellFormed("[0," + json + ",1]")) << name;
  }
}

TEST(JsonDecoder, refusesWhatIsNotWellFormed) {
  for (const auto& [name, json] : badValues) {
    EXPECT_FALSE(isWellFormed(json)) << name;
    EXPECT_FALSE(isWellFormed("[0," + json + ",1]")) << name;
    EXPECT_FALSE(isWellFormed("{\"a\":" + json + ",\"b\":1}")) << name;
  }
  for (const auto& [name, json] : badDocuments) {
    EXPECT_FALSE(isWellFormed(json)) << name;
  }
}

TEST(JsonDecoder, refusesEveryProperStartOfADocument) {
  const std::string json = R"({"a":[1,-2.5e3,true,null,"x\u0041\n€"],"b":{"c":{}}})";
  ASSERT_TRUE(isWellFormed(json));
  for (std::size_t length = 0; length < json.size(); ++length) {
    EXPECT_FALSE(isWellFormed(std::string_view{json}.substr(0, length))) << length;
  }
}

// The same value where nobody reads it, where another kind is wanted, and in an element that is dropped.
TEST(JsonDecoder, findsASyntaxErrorAnywhere) {
  for (const auto& [name, json] : badValues) {
    for (const std::string& document : {
             R"({"date":"d","inner":[],"ignored":)" + json + "}",
             R"({"date":"d","inner":[],"ring_number":)" + json + "}",
             R"({"date":)" + json + R"(,"inner":[]})",
             R"({"date":"d","inner":)" + json + "}",
             R"({"date":"d","inner":[{"date":7,"inner":)" + json + "}]}",
             R"({"date":"d","inner":[],"date":)" + json + R"(,"date":"d"})",
         }) {
      const auto ring = decoder.decode<Ring>(document);
      ASSERT_FALSE(ring) << name << ": " << document;
      EXPECT_TRUE(ring.error().path.empty() && ring.error().message.starts_with("the document "))
          << document << ": " << ring.error().text();
    }
  }
}

TEST(JsonDecoder, ignoresWhatIsWellFormedUnderAnUnknownKey) {
  for (const auto& [name, json] : goodValues) {
    EXPECT_EQ(errorOf<Ring>(R"({"date":"d","ignored":)" + json + R"(,"inner":[]})"), "none") << name;
  }
}

TEST(JsonDecoder, refusesEveryLoneSurrogateEscape) {
  for (unsigned unit = 0xD800; unit <= 0xDFFF; ++unit) {
    EXPECT_FALSE(isWellFormed(fmt::format(R"("\u{:04x}")", unit))) << unit;
    EXPECT_FALSE(isWellFormed(fmt::format(R"({{"a\u{:04x}b":0}})", unit))) << unit;
    for (const unsigned next : {0x0000U, 0x0041U, 0xD7FFU, 0xD800U, 0xDBFFU, 0xE000U, 0xFFFFU}) {
      EXPECT_FALSE(isWellFormed(fmt::format(R"("\u{:04X}\u{:04X}")", unit, next))) << unit << ' ' << next;
    }
    for (const unsigned next : {0xDC00U, 0xDFFFU}) {
      EXPECT_EQ(isWellFormed(fmt::format(R"("\u{:04X}\u{:04X}")", unit, next)), unit < 0xDC00)
          << unit << ' ' << next;
    }
  }
}

TEST(JsonDecoder, takes512LevelsAndNoMore) {
  for (const auto& [open, close] : {std::pair{"[", "]"}, std::pair{"[[{\"a\":[", "]}]]"}}) {
    const std::size_t levels = std::string_view{close}.size();
    EXPECT_TRUE(isWellFormed(nested(512 / levels, open, close)));
    EXPECT_FALSE(isWellFormed('[' + nested(512 / levels, open, close) + ']'));
  }
  EXPECT_EQ(errorOf<Anything>(nested(513, "[", "]")), "the document is nested beyond 512 levels at byte 512");
  // Under an ignored key, which lies one level down.
  const auto ring = [](std::size_t levels) {
    return R"({"date":"d","inner":[],"x":)" + nested(levels, "[", "]") + "}";
  };
  EXPECT_EQ(errorOf<Ring>(ring(511)), "none");
  EXPECT_NE(errorOf<Ring>(ring(512)), "none");
  EXPECT_FALSE(isWellFormed(nested(100'000, "[", "]")));
  EXPECT_FALSE(isWellFormed(std::string(100'000, '[')));
  EXPECT_FALSE(isWellFormed(nested(100'000, "{\"a\":", "}")));
}

TEST(JsonDecoder, saysWhereTheSyntaxIsWrong) {
  EXPECT_EQ(errorOf<Anything>(R"({"a":tru})"), "the document is not well-formed JSON at byte 5");
  EXPECT_EQ(errorOf<Anything>("[1,2"), "the document is not well-formed JSON at byte 4");
  EXPECT_EQ(errorOf<Anything>("\"\xFF\""), "the document is not valid UTF-8");
  EXPECT_EQ(errorOf<Anything>(R"([1,"\udc00"])"), "the document has a malformed escape at byte 4");
}

TEST(JsonDecoder, resolvesEscapes) {
  const auto text = [](std::string_view json) {
    return decoder.decode<std::string>(json).value_or("refused");
  };
  EXPECT_EQ(text(R"("\"\\\/\b\f\n\r\t")"), "\"\\/\b\f\n\r\t");
  EXPECT_EQ(text(R"("\u0000a")"), "\0a"s);
  EXPECT_EQ(text(R"("\u00e9\u20AC")"), "é€");
  EXPECT_EQ(text(R"("\uD834\uDD1E!")"), "𝄞!");
  EXPECT_EQ(text(R"("plain ⇊")"), "plain ⇊");
  EXPECT_EQ(text(R"("")"), "");
}

TEST(JsonDecoder, readsScalarsAtTheRoot) {
  EXPECT_EQ(decoder.decode<std::int64_t>(" 12 ").value_or(0), 12);
  EXPECT_EQ(decoder.decode<bool>("true").value_or(false), true);
  EXPECT_EQ(decoder.decode<std::optional<bool>>("null").value_or(true), std::nullopt);
  EXPECT_EQ(decoder.decode<Instant>("1.5").value_or(Instant{}), instantSinceReferenceDate(1.5));
}

TEST(JsonDecoder, readsIntegersExactlyToTheEndsOfTheirRange) {
  constexpr auto least = std::numeric_limits<std::int64_t>::min();
  constexpr auto most = std::numeric_limits<std::int64_t>::max();
  const std::pair<std::string_view, std::int64_t> good[] = {
      {"0", 0},
      {"-0", 0},
      {"-1", -1},
      {"9223372036854775807", most},
      {"-9223372036854775808", least},
      {"9007199254740993", 9007199254740993},  // has no 64-bit float
      {"5.0", 5},
      {"5e0", 5},
      {"-5.000E+0", -5},
      {"50e-1", 5},
      {"1.5e1", 15},
      {"-0.0", 0},
      {"1e18", 1'000'000'000'000'000'000},
      {"1e-400", 0},                                         // its nearest float is 0
      {"9223372036854774784.0", 9'223'372'036'854'774'784},  // the greatest float in the range
      {"9223372036854775295.9", 9'223'372'036'854'774'784},  // rounds down to it
      {"-9223372036854775808.0", least},
      {"-9223372036854776832.0", least},              // half-way to the next float, ties to even
      {"9007199254740993.0", 9'007'199'254'740'992},  // its nearest float
  };
  for (const auto& [json, value] : good) {
    EXPECT_EQ(errorOf<std::int64_t>(json), "none") << json;
    EXPECT_EQ(decoder.decode<std::int64_t>(json).value_or(-77), value) << json;
  }
  for (const std::string_view json :
       {"9223372036854775808", "-9223372036854775809", "18446744073709551616", "9223372036854775807.0",
        "9223372036854775296.0", "9223372036854775808.0", "-9223372036854776833.0", "-9223372036854777856.0",
        "1e19", "-1e19", "5.5", "5e-1", "0.1", "1e400", "-1e400"}) {
    EXPECT_EQ(errorOf<std::int64_t>(json), std::string{json} + " is not an integer of 64 bits");
  }
}

TEST(JsonDecoder, readsAnyLiteralAsItsNearestFloat) {
  constexpr auto most = std::numeric_limits<double>::max();
  const std::pair<std::string, double> good[] = {
      {"0", 0},
      {"5", 5},
      {"0.1", 0.1},
      {"-2.5e-3", -0.0025},
      {"9007199254740993", 9007199254740992.0},
      {"9007199254740993.0000000000000000000000000000001", 9007199254740994.0},
      {"123456789012345678901234567890", 123456789012345678901234567890.0},
      {"1" + std::string(308, '0'), 1e308},
      {"1" + std::string(400, '0') + "e-400", 1},
      {"0." + std::string(400, '0') + "1e401", 1},
      {"1.7976931348623157e308", most},
      {"1.7976931348623158e308", most},  // rounds down
      {"4.9406564584124654e-324", std::numeric_limits<double>::denorm_min()},
      {"2.4703282292062328e-324", std::numeric_limits<double>::denorm_min()},  // just over half of it
      {"2.4703282292062327e-324", 0},
      {"1e-400", 0},
      {"0." + std::string(400, '0') + "1", 0},
      {"123456e-400", 0},
      {"1e-99999999999999999999", 0},
      {"0e99999999999999999999", 0},
      {"0.000e400", 0},
  };
  for (const auto& [json, value] : good) {
    EXPECT_EQ(errorOf<double>(json), "none") << json;
    EXPECT_EQ(decoder.decode<double>(json).value_or(-77), value) << json;
    EXPECT_FALSE(std::signbit(decoder.decode<double>(json).value_or(-77)) && value == 0) << json;
  }
  for (const std::string_view json : {"-0", "-0.0", "-0e5", "-1e-400", "-1e-99999999999999999999"}) {
    const double value = decoder.decode<double>(json).value_or(-77);
    EXPECT_TRUE(value == 0 && std::signbit(value)) << json;
  }
  for (const std::string& json :
       {"1e400"s, "-1e400"s, "1.7976931348623159e308"s, "1e309"s, "1e99999999999999999999"s,
        "1" + std::string(309, '0'), "1000" + std::string(400, '0') + "e-80"}) {
    EXPECT_NE(errorOf<double>(json), "none") << json;
  }
  EXPECT_EQ(errorOf<double>("1e400"), "1e400 is too large for a 64-bit float");
}

TEST(JsonDecoder, refusesADocumentOf4GiBUnread) {
  constexpr std::size_t size = std::size_t{1} << 32U;
  void* const memory = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(memory, MAP_FAILED);
  EXPECT_EQ(errorOf<Anything>({static_cast<const char*>(memory), size}), "the document is too large");
  munmap(memory, size);
}

// What the number `literal` is by RFC 8259 and the C library; absent when it is none, or not of that type.
struct Meaning {
  bool isNumber;
  std::optional<std::int64_t> integer;
  std::optional<double> number;
};

Meaning meaningOf(const std::string& literal) {
  static const std::regex number("-?(0|[1-9][0-9]*)(\\.[0-9]+)?([eE][+-]?[0-9]+)?");
  Meaning meaning{.isNumber = std::regex_match(literal, number), .integer = {}, .number = {}};
  if (!meaning.isNumber) {
    return meaning;
  }
  if (const double value = std::strtod(literal.c_str(), nullptr); std::isfinite(value)) {
    meaning.number = value;
  }
  if (literal.find_first_of(".eE") == std::string::npos) {
    errno = 0;
    const long long value = std::strtoll(literal.c_str(), nullptr, 10);
    if (errno == 0) {
      meaning.integer = value;
    }
  } else if (const auto value = meaning.number;
             value && *value >= -0x1p63 && *value < 0x1p63 && std::trunc(*value) == *value) {
    meaning.integer = static_cast<std::int64_t>(*value);
  }
  return meaning;
}

// Alone, in a record and in a list, with and without blanks, followed by another one and as the last one.
void expectMeaning(const std::string& literal) {
  const Meaning meaning = meaningOf(literal);
  const std::string lists[] = {"[" + literal + "]", "[7," + literal + ",12345678,9]", "[7,8," + literal + "]",
                               "[7 , " + literal + " , 1\n]", "[7," + literal + "\t,1] "};
  const auto expectElement = [&](const auto& list, const auto& value, std::size_t place, const auto& json) {
    ASSERT_EQ(list.has_value(), value.has_value()) << json;
    if (value) {
      ASSERT_GT(list->size(), place) << json;
      EXPECT_EQ((*list)[place], *value) << json;
      EXPECT_EQ(std::signbit(static_cast<double>((*list)[place])), std::signbit(static_cast<double>(*value)));
      EXPECT_EQ(list->size(), 1 + static_cast<std::size_t>(std::ranges::count(json, ','))) << json;
    } else {
      EXPECT_EQ(list.error().path.empty(), !meaning.isNumber) << json;
    }
  };
  for (std::size_t place = 0; place < std::size(lists); ++place) {
    const std::size_t element = place == 0 ? 0 : place == 2 ? 2 : 1;
    const std::string& list = lists[place];
    expectElement(decoder.decode<std::vector<std::int64_t>>(list), meaning.integer, element, list);
    expectElement(decoder.decode<std::vector<double>>(list), meaning.number, element, list);
  }
  EXPECT_EQ(decoder.decode<std::int64_t>(literal).has_value(), meaning.integer.has_value()) << literal;
  EXPECT_EQ(decoder.decode<std::int64_t>(literal).value_or(-77), meaning.integer.value_or(-77)) << literal;
  EXPECT_EQ(decoder.decode<double>(literal).has_value(), meaning.number.has_value()) << literal;
  EXPECT_EQ(decoder.decode<double>(literal).value_or(-77), meaning.number.value_or(-77)) << literal;
  for (const std::string& rest : {R"(,"inner":[],"padding":0})"s, R"( ,"inner":[]})"s}) {
    const auto ring = decoder.decode<Ring>(R"({"date":"d","ring_number":)" + literal + rest);
    EXPECT_EQ(ring.has_value(), meaning.integer.has_value()) << literal;
    EXPECT_EQ(ring.value_or(Ring{.date = "", .number = -77}).number, meaning.integer.value_or(-77)) << literal;
  }
}

TEST(JsonDecoder, readsNumbersOfEveryLengthAlikeWhereverTheyStand) {
  for (const char digit : {'0', '1', '9'}) {
    for (std::size_t size = 1; size <= 21; ++size) {
      for (const std::string& before : {""s, "-"s, "0"s, "-0"s, "1"s, "-9"s, "0."s, "-0.0"s, "12345678."s}) {
        for (const std::string& behind :
             {""s, "0"s, ".0"s, ".5"s, "e0"s, "E1"s, "a"s, "-"s, "."s, "/"s, ":"s}) {
          expectMeaning(before + std::string(size, digit) + behind);
        }
      }
    }
  }
}

TEST(JsonDecoder, readsNumbersAtTheBoundariesOfItsQuickWays) {
  // clang-format off
  const std::string literals[] = {
      // as many digits as are read at once, and one more
      "7", "0", "-0", "-1", "99999999", "100000000", "-99999999", "00000000", "01234567", "-01",
      // 15 to 18 digits; 2^53, to which a float holds every integer
      "999999999999999", "1000000000000000", "99999999999999999", "999999999999999999",
      "9007199254740992", "9007199254740993", "-9007199254740992", "-9007199254740993",
      "900719925474099.2", "900719925474099.3", "0.9007199254740993", "0.1234567890123456",
      "0.12345678901234567", "0.123456789012345678", "0.000000000000000001", "0.0000000000000000001",
      // 19 and 20 digits; the ends of 64 bits
      "1000000000000000000", "9223372036854775807", "9223372036854775808", "-9223372036854775808",
      "-9223372036854775809", "18446744073709551615", "18446744073709551616", "18446744073709551617",
      // powers of ten that a float holds exactly, and those beyond
      "1e22", "1e23", "-1e22", "-1e23", "9007199254740991e22", "9007199254740993e22", "123456789e22",
      "123456789e23", "1e-22", "1e-23", "9007199254740991e-22", "123456789012345e-22", "123456789012345e-23",
      "1.7976931348623157e308", "1.7976931348623159e308",
  };
  // clang-format on
  for (const std::string& literal : literals) {
    expectMeaning(literal);
  }
}

// Digits at random, with what may and may not stand before, between and behind them.
TEST(JsonDecoder, readsRandomNumbersAsTheCLibraryDoes) {
  std::mt19937_64 random(20240501);
  const auto upTo = [&](std::uint64_t most) { return random() % (most + 1); };
  const auto digits = [&](std::size_t least, std::size_t most) {
    std::string text(least + upTo(most - least), '0');
    for (char& c : text) {
      c = static_cast<char>('0' + upTo(9));
    }
    return text;
  };
  for (int round = 0; round < 20'000; ++round) {
    std::string literal = (upTo(2) == 0 ? "-" : "") + digits(1, upTo(3) == 0 ? 20 : 9);
    if (upTo(2) == 0) {
      literal += '.' + digits(upTo(9) == 0 ? 0 : 1, 19);
    }
    if (upTo(3) == 0) {
      literal += (upTo(1) == 0 ? "e" : "E-") + digits(1, 2);
    }
    if (upTo(9) == 0) {
      constexpr std::string_view others = "!#$%&'()*+-./;<=>?@AEZ^_`aez|~\x7f";
      literal[upTo(literal.size() - 1)] = others[upTo(others.size() - 1)];
    }
    expectMeaning(literal);
    if (HasFailure()) {
      return;
    }
  }
}

TEST(JsonDecoder, findsWhatIsWrongInAListOfIntegersWhereItStands) {
  using Integers = std::vector<std::int64_t>;
  EXPECT_EQ(errorOf<Integers>("[1,22,333,null,4,true]"), "[3]: expected an integer, found null");
  EXPECT_EQ(errorOf<Integers>("[1,22,1.5,4]"), "[2]: 1.5 is not an integer of 64 bits");
  EXPECT_EQ(errorOf<Integers>("[null,1,22,true]"), "[0]: expected an integer, found null");
  EXPECT_EQ(errorOf<Integers>("[1,[2],3]"), "[1]: expected an integer, found a list");
  EXPECT_EQ(errorOf<Integers>("[1,22,]        "), "the document is not well-formed JSON at byte 6");
  EXPECT_EQ(errorOf<Integers>("[1,22,,3]      "), "the document is not well-formed JSON at byte 6");
  EXPECT_EQ(errorOf<Integers>("[1,22:3]       "), "the document is not well-formed JSON at byte 5");
  EXPECT_EQ(errorOf<Integers>("[1,22}         "), "the document is not well-formed JSON at byte 5");
  EXPECT_EQ(errorOf<Integers>("[1,22          "), "the document is not well-formed JSON at byte 15");
  EXPECT_EQ(errorOf<Integers>("[1,022,3]      "), "the document is not well-formed JSON at byte 3");
  EXPECT_EQ(errorOf<Integers>("[true,022,3]   "), "the document is not well-formed JSON at byte 6");
  EXPECT_EQ(errorOf<Integers>("{}"), "expected a list, found an object");
  EXPECT_EQ(decoder.decode<Integers>(" [ ] "), Integers{});
  EXPECT_EQ((errorOf<std::vector<Integers>>("[[1,2,3],[4,5,\"6\",7],[8]]")),
            "[1][2]: expected an integer, found text");
}

TEST(JsonDecoder, readsListsOfIntegersOfEveryLength) {
  using Integers = std::vector<std::int64_t>;
  for (std::int64_t size = 1; size <= 100; ++size) {
    Integers list;
    std::string json = "[";
    std::string wrong = "[";
    for (std::int64_t element = 0; element < size; ++element) {
      const std::string before = element == 0 ? "" : ",";
      list.push_back(element * element);
      json += before + std::to_string(element * element);
      wrong += before + (element == size - 1 ? "null,7" : "1");
    }
    EXPECT_EQ(decoder.decode<Integers>(json + "]"), list);
    EXPECT_EQ(decoder.decode<Integers>(json + "        ]"), list);
    EXPECT_EQ(errorOf<Integers>(wrong + "]"),
              "[" + std::to_string(size - 1) + "]: expected an integer, found null");
  }
}

// The key that the declaration lets expect, and those that look like it.
TEST(JsonDecoder, takesKeysHoweverTheyAreWritten) {
  const Ring ring{.date = "d", .number = 5};
  for (const std::string_view json : {
           R"({"date":"d","ring_number":5,"inner":[]})",
           R"({"date" :"d","ring_number"  : 5,"inner":[]})",
           R"({ "date"
             :"d" , "ring_number":5,"inner":[]})",
           R"({"d\u0061te":"d","ring\u005Fnumber":5,"\u0069nner":[]})",
           R"({"inner":[],"ring_number":5,"date":"d"})",
           R"({"dat":1,"date":"d","ring_numbers":1,"ring_number":5,"ring_numbeR":1,"inner":[]})",
           R"({"datE":1,"Date":2,"date\"":3,"\"date":4,"date":"d","ring_number":5,"":6,"inner":[]})",
           R"({"date":"x","date":"d","ring_number":6,"ring_number":5,"inner":[]})",
       }) {
    EXPECT_EQ(errorOf<Ring>(json), "none") << json;
    EXPECT_EQ(decoder.decode<Ring>(json).value_or(Ring{}), ring) << json;
  }
  EXPECT_EQ(errorOf<Ring>(R"({"date","inner":[]})"), "the document is not well-formed JSON at byte 7");
  EXPECT_EQ(errorOf<Ring>(R"({"date"})"), "the document is not well-formed JSON at byte 7");
  EXPECT_EQ(errorOf<Ring>(R"({"date":})"), "the document is not well-formed JSON at byte 8");
  EXPECT_EQ(errorOf<Ring>(R"({"date")"), "the document is not well-formed JSON at byte 7");
  EXPECT_EQ(errorOf<Ring>(R"({"date":)"), "the document is not well-formed JSON at byte 8");
  EXPECT_EQ(errorOf<Ring>(R"({"date":"d","inner":[],"ring_number":5,"date":7})"),
            "date: expected text, found a number");
}

// An element that is dropped or refused leaves nothing of itself in the list that it was read into.
TEST(JsonDecoder, leavesNothingOfAWrongElement) {
  const auto ring = decoder.decode<Ring>(R"({"date":"d","inner":[{"date":"e","inner":[]},{"date":"f"}]})");
  ASSERT_FALSE(ring);
  EXPECT_EQ(ring.error().text(), "inner[1].inner: is missing");
}

TEST(JsonDecoder, judgesANumberByTheFieldThatTakesIt) {
  EXPECT_EQ(errorOf<Ring>(R"({"date":"d","inner":[],"ignored":1e400})"), "none");
  EXPECT_EQ(errorOf<Ring>(R"({"date":"d","inner":[],"ring_number":1e400})"),
            "ring_number: 1e400 is not an integer of 64 bits");
}

TEST(JsonDecoder, keepsKindsApart) {
  const std::pair<const char*, std::string> kinds[] = {{"{}", "an object"},   {"[]", "a list"},
                                                       {"\"1\"", "text"},     {"1", "a number"},
                                                       {"true", "a boolean"}, {"null", "null"}};
  for (const auto& [json, kind] : kinds) {
    const auto refusal = [&](const std::string& wanted) { return "expected " + wanted + ", found " + kind; };
    EXPECT_EQ(errorOf<bool>(json), kind == "a boolean" ? "none" : refusal("a boolean"));
    EXPECT_EQ(errorOf<std::int64_t>(json), kind == "a number" ? "none" : refusal("an integer"));
    EXPECT_EQ(errorOf<double>(json), kind == "a number" ? "none" : refusal("a number"));
    EXPECT_EQ(errorOf<std::string>(json), kind == "text" ? "none" : refusal("text"));
    EXPECT_EQ(errorOf<std::vector<bool>>(json), kind == "a list" ? "none" : refusal("a list"));
    EXPECT_EQ((errorOf<std::map<std::string, bool>>(json)),
              kind == "an object" ? "none" : refusal("an object"));
  }
}

TEST(JsonDecoder, keepsApartKeysThatDifferOnlyWhereAMessageCutsThem) {
  using Texts = std::map<std::string, std::string>;
  const std::string stem(80, ' ');
  const std::string json = fmt::format(R"({{"{0}A":1,"{0}B":"x","{0}B":"y"}})", stem);
  EXPECT_EQ(errorOf<Texts>(json), "[\"" + stem + "…\"]: expected text, found a number");
  EXPECT_EQ(decoder.decode<Texts>(fmt::format(R"({{"{0}A":1,"{0}B":"x","{0}A":"y"}})", stem)),
            (Texts{{stem + "A", "y"}, {stem + "B", "x"}}));
  // Likewise what lies below such keys, and identifiers.
  const std::string word(80, 'w');
  EXPECT_EQ((errorOf<std::map<std::string, Texts>>(
                fmt::format(R"({{"{0}A":{{"k":1}},"{0}B":{{"k":2}},"{0}B":{{}}}})", word))),
            word + "….k: expected text, found a number");
}

TEST(JsonDecoder, namesTheEarliestOfWhatStaysWrong) {
  using Numbers = std::map<std::string, std::vector<std::int64_t>>;
  EXPECT_EQ(errorOf<Numbers>(R"({"z":[0,true,null],"a":1})"), "z[1]: expected an integer, found a boolean");
  EXPECT_EQ(errorOf<Numbers>(R"({"z":[true],"a":1,"z":null})"), "a: expected a list, found a number");
  EXPECT_EQ(errorOf<Numbers>(R"({"z":[true],"a":1,"a":[1],"z":[[]]})"),
            "z[0]: expected an integer, found a list");
  EXPECT_EQ(errorOf<Numbers>(R"({"z":[true],"a":1,"a":[1],"z":[]})"), "none");
  // A key is the same however it is escaped.
  EXPECT_EQ(errorOf<Numbers>(R"({"z":[true],"\u007a":[]})"), "none");
}

TEST(JsonDecoder, shortensTheKeysOfAPath) {
  using Texts = std::map<std::string, std::vector<std::string>>;
  const auto error = [](const std::string& key) { return errorOf<Texts>("{\"" + key + "\":[1]}"); };
  EXPECT_EQ(error(std::string(80, 'a')), std::string(80, 'a') + "[0]: expected text, found a number");
  EXPECT_EQ(error(std::string(81, 'a')), std::string(80, 'a') + "…[0]: expected text, found a number");
  EXPECT_EQ(error(std::string(81, '-')),
            "[\"" + std::string(80, '-') + "…\"][0]: expected text, found a number");
}

TEST(JsonDecoderDeathTest, stopsAtAFormThatGivesNothingAndDoesNotSayWhy) {
  EXPECT_DEATH(static_cast<void>(decoder.decode<Silence>("1")), "did not note why");
  EXPECT_EQ(errorOf<Silence>("1 2"), "the document is not well-formed JSON at byte 2");
}

TEST(JsonDecoder, readsInstantsByItsDateStrategy) {
  constexpr JsonDecoder iso{DateStrategy::iso8601};
  EXPECT_EQ(iso.decode<Instant>("\"2001-01-01T00:00:01Z\"").value_or(Instant{}),
            instantSinceReferenceDate(1));
  EXPECT_EQ(iso.decode<Instant>("1").error().text(), "expected text, found a number");
  EXPECT_EQ(iso.decode<Instant>("\"2001-01-01\"").error().text(),
            "\"2001-01-01\" is not an instant such as 2024-05-01T08:30:00Z");
  EXPECT_EQ(errorOf<Instant>("\"2001-01-01T00:00:01Z\""), "expected a number, found text");
}

TEST(JsonDecoder, takesAMegabyteOfText) {
  std::string json = "\"";
  for (int count = 0; count < 100'000; ++count) {
    json += "äb\\n\\u00e4\\\\";
  }
  json += '"';
  const auto text = decoder.decode<std::string>(json);
  ASSERT_TRUE(text);
  EXPECT_EQ(text->size(), 700'000U);
}

}  // namespace
}  // namespace kestrel
