#include <KestrelKit/foundation/JsonDecoder.h>
#include <KestrelKit/foundation/JsonForm.h>
#include <support/Specimen.h>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
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
