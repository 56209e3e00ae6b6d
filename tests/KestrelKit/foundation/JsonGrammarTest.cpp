#include <KestrelKit/foundation/JsonDecoder.h>
#include <KestrelKit/foundation/JsonEncoder.h>
#include <KestrelKit/foundation/JsonError.h>
#include <KestrelKit/foundation/JsonText.h>
#include <support/Specimen.h>

#include <gtest/gtest.h>

#include <array>
#include <iterator>
#include <string>
#include <string_view>

// The grammar of RFC 8259, case by case, under the names that readers of JSON are usually held to: those of
// `y_` must be taken, those of `n_` refused.

namespace kestrel {
namespace {

using namespace std::string_view_literals;

struct GrammarCase {
  std::string_view name;
  std::string_view json;
};

// clang-format off
constexpr GrammarCase wellFormed[] = {
    {"y_array_arraysWithSpaces", "[[]   ]"sv},
    {"y_array_empty", "[]"sv},
    {"y_array_empty-string", "[\"\"]"sv},
    {"y_array_ending_with_newline", "[\"a\"]\n"sv},
    {"y_array_false", "[false]"sv},
    {"y_array_heterogeneous", "[null, 1, \"1\", {}]"sv},
    {"y_array_null", "[null]"sv},
    {"y_array_with_1_and_newline", "[1\n]"sv},
    {"y_array_with_leading_space", " [1]"sv},
    {"y_array_with_several_null", "[1,null,null,null,2]"sv},
    {"y_array_with_trailing_space", "[2] "sv},
    {"y_number", "[123e65]"sv},
    {"y_number_0e+1", "[0e+1]"sv},
    {"y_number_0e1", "[0e1]"sv},
    {"y_number_after_space", "[ 4]"sv},
    {"y_number_double_close_to_zero",
     "[-0.000000000000000000000000000000000000000000000000000000000000000000000000000001]"sv},
    {"y_number_int_with_exp", "[20e1]"sv},
    {"y_number_minus_zero", "[-0]"sv},
    {"y_number_negative_int", "[-123]"sv},
    {"y_number_negative_one", "[-1]"sv},
    {"y_number_negative_zero", "[-0]"sv},
    {"y_number_real_capital_e", "[1E22]"sv},
    {"y_number_real_capital_e_neg_exp", "[1E-2]"sv},
    {"y_number_real_capital_e_pos_exp", "[1E+2]"sv},
    {"y_number_real_exponent", "[123e45]"sv},
    {"y_number_real_fraction_exponent", "[123.456e78]"sv},
    {"y_number_real_neg_exp", "[1e-2]"sv},
    {"y_number_real_pos_exponent", "[1e+2]"sv},
    {"y_number_simple_int", "[123]"sv},
    {"y_number_simple_real", "[123.456789]"sv},
    {"y_object", "{\"asd\":\"sdf\", \"dfg\":\"fgh\"}"sv},
    {"y_object_basic", "{\"asd\":\"sdf\"}"sv},
    {"y_object_duplicated_key", "{\"a\":\"b\",\"a\":\"c\"}"sv},
    {"y_object_duplicated_key_and_value", "{\"a\":\"b\",\"a\":\"b\"}"sv},
    {"y_object_empty", "{}"sv},
    {"y_object_empty_key", "{\"\":0}"sv},
    {"y_object_escaped_null_in_key", "{\"foo\\u0000bar\": 42}"sv},
    {"y_object_extreme_numbers", "{ \"min\": -1.0e+28, \"max\": 1.0e+28 }"sv},
    {"y_object_long_strings",
     "{\"x\":[{\"id\": \"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx\"}], \"id\": \"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx\"}"sv},
    {"y_object_simple", "{\"a\":[]}"sv},
    {"y_object_string_unicode",
     "{\"title\":\"\\u041f\\u043e\\u043b\\u0442\\u043e\\u0440\\u0430 \\u0417\\u0435\\u043c\\u043b\\u0435\\u043a\\u043e\\u043f\\u0430\" }"sv},
    {"y_object_with_newlines", "{\n\"a\": \"b\"\n}"sv},
    {"y_string_1_2_3_bytes_UTF-8_sequences", "[\"\\u0060\\u012a\\u12AB\"]"sv},
    {"y_string_accepted_surrogate_pair", "[\"\\uD801\\udc37\"]"sv},
    {"y_string_accepted_surrogate_pairs", "[\"\\ud83d\\ude39\\ud83d\\udc8d\"]"sv},
    {"y_string_allowed_escapes", "[\"\\\"\\\\\\/\\b\\f\\n\\r\\t\"]"sv},
    {"y_string_backslash_and_u_escaped_zero", "[\"\\\\u0000\"]"sv},
    {"y_string_backslash_doublequotes", "[\"\\\"\"]"sv},
    {"y_string_comments", "[\"a/*b*/c/*d//e\"]"sv},
    {"y_string_double_escape_a", "[\"\\\\a\"]"sv},
    {"y_string_double_escape_n", "[\"\\\\n\"]"sv},
    {"y_string_escaped_control_character", "[\"\\u0012\"]"sv},
    {"y_string_escaped_noncharacter", "[\"\\uFFFF\"]"sv},
    {"y_string_in_array", "[\"asd\"]"sv},
    {"y_string_in_array_with_leading_space", "[ \"asd\"]"sv},
    {"y_string_last_surrogates_1_and_2", "[\"\\uDBFF\\uDFFF\"]"sv},
    {"y_string_nbsp_uescaped", "[\"new\\u00A0line\"]"sv},
    {"y_string_nonCharacterInUTF-8_U+10FFFF", "[\"\364\217\277\277\"]"sv},
    {"y_string_nonCharacterInUTF-8_U+FFFF", "[\"\357\277\277\"]"sv},
    {"y_string_null_escape", "[\"\\u0000\"]"sv},
    {"y_string_one-byte-utf-8", "[\"\\u002c\"]"sv},
    {"y_string_pi", "[\"π\"]"sv},
    {"y_string_reservedCharacterInUTF-8_U+1BFFF", "[\"\360\233\277\277\"]"sv},
    {"y_string_simple_ascii", "[\"asd \"]"sv},
    {"y_string_space", "\" \""sv},
    {"y_string_surrogates_U+1D11E_MUSICAL_SYMBOL_G_CLEF", "[\"\\uD834\\uDd1e\"]"sv},
    {"y_string_three-byte-utf-8", "[\"\\u0821\"]"sv},
    {"y_string_two-byte-utf-8", "[\"\\u0123\"]"sv},
    {"y_string_u+2028_line_sep", "[\"\342\200\250\"]"sv},
    {"y_string_u+2029_par_sep", "[\"\342\200\251\"]"sv},
    {"y_string_uEscape", "[\"\\u0061\\u30af\\u30EA\\u30b9\"]"sv},
    {"y_string_uescaped_newline", "[\"new\\u000Aline\"]"sv},
    {"y_string_unescaped_char_delete", "[\"\177\"]"sv},
    {"y_string_unicode", "[\"\\uA66D\"]"sv},
    {"y_string_unicode_2", "[\"⍂㈴⍂\"]"sv},
    {"y_string_unicode_escaped_double_quote", "[\"\\u0022\"]"sv},
    {"y_string_unicode_U+10FFFE_nonchar", "[\"\\uDBFF\\uDFFE\"]"sv},
    {"y_string_unicode_U+1FFFE_nonchar", "[\"\\uD83F\\uDFFE\"]"sv},
    {"y_string_unicode_U+200B_ZERO_WIDTH_SPACE", "[\"\\u200B\"]"sv},
    {"y_string_unicode_U+2064_invisible_plus", "[\"\\u2064\"]"sv},
    {"y_string_unicode_U+FDD0_nonchar", "[\"\\uFDD0\"]"sv},
    {"y_string_unicode_U+FFFE_nonchar", "[\"\\uFFFE\"]"sv},
    {"y_string_unicodeEscapedBackslash", "[\"\\u005C\"]"sv},
    {"y_string_utf8", "[\"€𝄞\"]"sv},
    {"y_string_with_del_character", "[\"a\177a\"]"sv},
    {"y_structure_lonely_false", "false"sv},
    {"y_structure_lonely_int", "42"sv},
    {"y_structure_lonely_negative_real", "-0.1"sv},
    {"y_structure_lonely_null", "null"sv},
    {"y_structure_lonely_string", "\"asd\""sv},
    {"y_structure_lonely_true", "true"sv},
    {"y_structure_string_empty", "\"\""sv},
    {"y_structure_trailing_newline", "[\"a\"]\n"sv},
    {"y_structure_true_in_array", "[true]"sv},
    {"y_structure_whitespace_array", " [] "sv},
};

constexpr GrammarCase malformed[] = {
    {"n_array_1_true_without_comma", "[1 true]"sv},
    {"n_array_a_invalid_utf8", "[a\345]"sv},
    {"n_array_colon_instead_of_comma", "[\"\": 1]"sv},
    {"n_array_comma_after_close", "[\"\"],"sv},
    {"n_array_comma_and_number", "[,1]"sv},
    {"n_array_double_comma", "[1,,2]"sv},
    {"n_array_double_extra_comma", "[\"x\",,]"sv},
    {"n_array_extra_close", "[\"x\"]]"sv},
    {"n_array_extra_comma", "[\"\",]"sv},
    {"n_array_incomplete", "[\"x\""sv},
    {"n_array_incomplete_invalid_value", "[x"sv},
    {"n_array_inner_array_no_comma", "[3[4]]"sv},
    {"n_array_invalid_utf8", "[\377]"sv},
    {"n_array_items_separated_by_semicolon", "[1:2]"sv},
    {"n_array_just_comma", "[,]"sv},
    {"n_array_just_minus", "[-]"sv},
    {"n_array_missing_value", "[   , \"\"]"sv},
    {"n_array_newlines_unclosed", "[\"a\",\n4\n,1,"sv},
    {"n_array_number_and_comma", "[1,]"sv},
    {"n_array_number_and_several_commas", "[1,,]"sv},
    {"n_array_spaces_vertical_tab_formfeed", "[\"\013a\"\\f]"sv},
    {"n_array_star_inside", "[*]"sv},
    {"n_array_unclosed", "[\"\""sv},
    {"n_array_unclosed_trailing_comma", "[1,"sv},
    {"n_array_unclosed_with_new_lines", "[1,\n1\n,1"sv},
    {"n_array_unclosed_with_object_inside", "[{}"sv},
    {"n_incomplete_false", "[fals]"sv},
    {"n_incomplete_null", "[nul]"sv},
    {"n_incomplete_true", "[tru]"sv},
    {"n_multidigit_number_then_00", "123\000"sv},
    {"n_number_++", "[++1234]"sv},
    {"n_number_+1", "[+1]"sv},
    {"n_number_+Inf", "[+Inf]"sv},
    {"n_number_-01", "[-01]"sv},
    {"n_number_-1.0.", "[-1.0.]"sv},
    {"n_number_-2.", "[-2.]"sv},
    {"n_number_-NaN", "[-NaN]"sv},
    {"n_number_.-1", "[.-1]"sv},
    {"n_number_.2e-3", "[.2e-3]"sv},
    {"n_number_0.1.2", "[0.1.2]"sv},
    {"n_number_0.3e", "[0.3e]"sv},
    {"n_number_0.3e+", "[0.3e+]"sv},
    {"n_number_0.e1", "[0.e1]"sv},
    {"n_number_0_capital_E", "[0E]"sv},
    {"n_number_0_capital_E+", "[0E+]"sv},
    {"n_number_0e", "[0e]"sv},
    {"n_number_0e+", "[0e+]"sv},
    {"n_number_1.0e", "[1.0e]"sv},
    {"n_number_1.0e+", "[1.0e+]"sv},
    {"n_number_1.0e-", "[1.0e-]"sv},
    {"n_number_1_000", "[1 000.0]"sv},
    {"n_number_1eE2", "[1eE2]"sv},
    {"n_number_2.e+3", "[2.e+3]"sv},
    {"n_number_2.e-3", "[2.e-3]"sv},
    {"n_number_2.e3", "[2.e3]"sv},
    {"n_number_9.e+", "[9.e+]"sv},
    {"n_number_expression", "[1+2]"sv},
    {"n_number_hex_1_digit", "[0x1]"sv},
    {"n_number_hex_2_digits", "[0x42]"sv},
    {"n_number_Inf", "[Inf]"sv},
    {"n_number_infinity", "[Infinity]"sv},
    {"n_number_invalid+-", "[0e+-1]"sv},
    {"n_number_invalid-negative-real", "[-123.123foo]"sv},
    {"n_number_invalid-utf-8-in-bigger-int", "[123\345]"sv},
    {"n_number_invalid-utf-8-in-exponent", "[1e1\345]"sv},
    {"n_number_invalid-utf-8-in-int", "[0\345]\n"sv},
    {"n_number_minus_infinity", "[-Infinity]"sv},
    {"n_number_minus_sign_with_trailing_garbage", "[-foo]"sv},
    {"n_number_minus_space_1", "[- 1]"sv},
    {"n_number_NaN", "[NaN]"sv},
    {"n_number_neg_int_starting_with_zero", "[-012]"sv},
    {"n_number_neg_real_without_int_part", "[-.123]"sv},
    {"n_number_neg_with_garbage_at_end", "[-1x]"sv},
    {"n_number_real_garbage_after_e", "[1ea]"sv},
    {"n_number_real_with_invalid_utf8_after_e", "[1e\345]"sv},
    {"n_number_real_without_fractional_part", "[1.]"sv},
    {"n_number_starting_with_dot", "[.123]"sv},
    {"n_number_U+FF11_fullwidth_digit_one", "[１]"sv},
    {"n_number_with_alpha", "[1.2a-3]"sv},
    {"n_number_with_alpha_char", "[1.8011670033376514H-308]"sv},
    {"n_number_with_leading_zero", "[012]"sv},
    {"n_object_bad_value", "[\"x\", truth]"sv},
    {"n_object_bracket_key", "{[: \"x\"}\n"sv},
    {"n_object_comma_instead_of_colon", "{\"x\", null}"sv},
    {"n_object_double_colon", "{\"x\"::\"b\"}"sv},
    {"n_object_emoji", "{🇨🇭}"sv},
    {"n_object_garbage_at_end", "{\"a\":\"a\" 123}"sv},
    {"n_object_key_with_single_quotes", "{key: 'value'}"sv},
    {"n_object_lone_continuation_byte_in_key_and_trailing_comma", "{\"\271\":\"0\",}"sv},
    {"n_object_missing_colon", "{\"a\" b}"sv},
    {"n_object_missing_key", "{:\"b\"}"sv},
    {"n_object_missing_semicolon", "{\"a\" \"b\"}"sv},
    {"n_object_missing_value", "{\"a\":"sv},
    {"n_object_no-colon", "{\"a\""sv},
    {"n_object_non_string_key", "{1:1}"sv},
    {"n_object_non_string_key_but_huge_number_instead", "{9999E9999:1}"sv},
    {"n_object_repeated_null_null", "{null:null,null:null}"sv},
    {"n_object_several_trailing_commas", "{\"id\":0,,,,,}"sv},
    {"n_object_single_quote", "{'a':0}"sv},
    {"n_object_trailing_comma", "{\"id\":0,}"sv},
    {"n_object_trailing_comment", "{\"a\":\"b\"}/**/"sv},
    {"n_object_trailing_comment_open", "{\"a\":\"b\"}/**//"sv},
    {"n_object_trailing_comment_slash_open", "{\"a\":\"b\"}//"sv},
    {"n_object_trailing_comment_slash_open_incomplete", "{\"a\":\"b\"}/"sv},
    {"n_object_two_commas_in_a_row", "{\"a\":\"b\",,\"c\":\"d\"}"sv},
    {"n_object_unquoted_key", "{a: \"b\"}"sv},
    {"n_object_unterminated-value", "{\"a\":\"a"sv},
    {"n_object_with_single_string", "{ \"foo\" : \"bar\", \"a\" }"sv},
    {"n_object_with_trailing_garbage", "{\"a\":\"b\"}#"sv},
    {"n_single_space", " "sv},
    {"n_string_1_surrogate_then_escape", "[\"\\uD800\\\"]"sv},
    {"n_string_1_surrogate_then_escape_u", "[\"\\uD800\\u\"]"sv},
    {"n_string_1_surrogate_then_escape_u1", "[\"\\uD800\\u1\"]"sv},
    {"n_string_1_surrogate_then_escape_u1x", "[\"\\uD800\\u1x\"]"sv},
    {"n_string_accentuated_char_no_quotes", "[é]"sv},
    {"n_string_backslash_00", "[\"\\\000\"]"sv},
    {"n_string_escape_x", "[\"\\x00\"]"sv},
    {"n_string_escaped_backslash_bad", "[\"\\\\\\\"]"sv},
    {"n_string_escaped_ctrl_char_tab", "[\"\\\t\"]"sv},
    {"n_string_escaped_emoji", "[\"\\🌀\"]"sv},
    {"n_string_incomplete_escape", "[\"\\\"]"sv},
    {"n_string_incomplete_escaped_character", "[\"\\u00A\"]"sv},
    {"n_string_incomplete_surrogate", "[\"\\uD834\\uDd\"]"sv},
    {"n_string_incomplete_surrogate_escape_invalid", "[\"\\uD800\\uD800\\x\"]"sv},
    {"n_string_invalid-utf-8-in-escape", "[\"\\u\345\"]"sv},
    {"n_string_invalid_backslash_esc", "[\"\\a\"]"sv},
    {"n_string_invalid_unicode_escape", "[\"\\uqqqq\"]"sv},
    {"n_string_invalid_utf8_after_escape", "[\"\\\345\"]"sv},
    {"n_string_leading_uescaped_thinspace", "[\\u0020\"asd\"]"sv},
    {"n_string_no_quotes_with_bad_escape", "[\\n]"sv},
    {"n_string_single_doublequote", "\""sv},
    {"n_string_single_quote", "['single quote']"sv},
    {"n_string_single_string_no_double_quotes", "abc"sv},
    {"n_string_start_escape_unclosed", "[\"\\"sv},
    {"n_string_unescaped_ctrl_char", "[\"a\000a\"]"sv},
    {"n_string_unescaped_newline", "[\"new\nline\"]"sv},
    {"n_string_unescaped_tab", "[\"\t\"]"sv},
    {"n_string_unicode_CapitalU", "\"\\UA66D\""sv},
    {"n_string_with_trailing_garbage", "\"\"x"sv},
    {"n_structure_angle_bracket_.", "<.>"sv},
    {"n_structure_angle_bracket_null", "[<null>]"sv},
    {"n_structure_array_trailing_garbage", "[1]x"sv},
    {"n_structure_array_with_extra_array_close", "[1]]"sv},
    {"n_structure_array_with_unclosed_string", "[\"asd]"sv},
    {"n_structure_ascii-unicode-identifier", "aå"sv},
    {"n_structure_capitalized_True", "[True]"sv},
    {"n_structure_close_unopened_array", "1]"sv},
    {"n_structure_comma_instead_of_closing_brace", "{\"x\": true,"sv},
    {"n_structure_double_array", "[][]"sv},
    {"n_structure_end_array", "]"sv},
    {"n_structure_incomplete_UTF8_BOM", "\357\273{}"sv},
    {"n_structure_lone-invalid-utf-8", "\345"sv},
    {"n_structure_lone-open-bracket", "["sv},
    {"n_structure_no_data", ""sv},
    {"n_structure_null-byte-outside-string", "[\000]"sv},
    {"n_structure_number_with_trailing_garbage", "2@"sv},
    {"n_structure_object_followed_by_closing_object", "{}}"sv},
    {"n_structure_object_unclosed_no_value", "{\"\":"sv},
    {"n_structure_object_with_comment", "{\"a\":/*comment*/\"b\"}"sv},
    {"n_structure_object_with_trailing_garbage", "{\"a\": true} \"x\""sv},
    {"n_structure_open_array_apostrophe", "['"sv},
    {"n_structure_open_array_comma", "[,"sv},
    {"n_structure_open_array_open_object", "[{"sv},
    {"n_structure_open_array_open_string", "[\"a"sv},
    {"n_structure_open_array_string", "[\"a\""sv},
    {"n_structure_open_object", "{"sv},
    {"n_structure_open_object_close_array", "{]"sv},
    {"n_structure_open_object_comma", "{,"sv},
    {"n_structure_open_object_open_array", "{["sv},
    {"n_structure_open_object_open_string", "{\"a"sv},
    {"n_structure_open_object_string_with_apostrophes", "{'a'"sv},
    {"n_structure_open_open", "[\"\\{[\"\\{[\"\\{[\"\\{"sv},
    {"n_structure_single_eacute", "\351"sv},
    {"n_structure_single_star", "*"sv},
    {"n_structure_trailing_#", "{\"a\":\"b\"}#{}"sv},
    {"n_structure_U+2060_word_joined", "[\342\201\240]"sv},
    {"n_structure_uescaped_LF_before_string", "[\\u000A\"\"]"sv},
    {"n_structure_unclosed_array", "[1"sv},
    {"n_structure_unclosed_array_partial_null", "[ false, nul"sv},
    {"n_structure_unclosed_array_unfinished_false", "[ true, fals"sv},
    {"n_structure_unclosed_array_unfinished_true", "[ false, tru"sv},
    {"n_structure_unclosed_object", "{\"asd\":\"asd\""sv},
    {"n_structure_unicode-identifier", "å"sv},
    {"n_structure_UTF8_BOM_no_data", "\357\273\277"sv},
    {"n_structure_whitespace_formfeed", "[\014]"sv},
    {"n_structure_whitespace_U+2060_word_joiner", "\342\201\240"sv},
};
// clang-format on

constexpr JsonDecoder decoder;

bool isTaken(std::string_view json) { return decoder.decode<JsonText>(json).has_value(); }

/// Records with `json` as the value of a key that nobody reads, and inside of one.
std::array<std::string, 2> unread(std::string_view json) {
  const auto around = [&](std::string_view before, std::string_view after) {
    return std::string(before).append(json).append(after);
  };
  return {around(R"({"date":"d","ignored":)", R"(,"inner":[]})"),
          around(R"({"date":"d","inner":[],"ignored":{"a":[0,)", "]}}")};
}

bool isTakenAsARing(std::string_view json) { return decoder.decode<testing::Ring>(json).has_value(); }

TEST(JsonGrammar, hasCasesOfEachPart) { EXPECT_GE(std::size(wellFormed) + std::size(malformed), 250U); }

TEST(JsonGrammar, takesWhatIsWellFormed) {
  for (const auto& [name, json] : wellFormed) {
    EXPECT_TRUE(isTaken(json)) << name;
    for (const std::string& document : unread(json)) {
      EXPECT_TRUE(isTakenAsARing(document)) << name;
    }
  }
}

TEST(JsonGrammar, refusesWhatIsMalformed) {
  for (const auto& [name, json] : malformed) {
    EXPECT_FALSE(isTaken(json)) << name;
    for (const std::string& document : unread(json)) {
      EXPECT_FALSE(isTakenAsARing(document)) << name;
    }
  }
}

// Without a bound that is kept, these would exhaust the stack.
TEST(JsonGrammar, refusesWhatIsNestedWithoutEnd) {
  std::string objects;
  for (int level = 0; level < 50'000; ++level) {
    objects += R"([{"":)";
  }
  const GrammarCase cases[] = {{"n_structure_open_array_object", objects}};
  EXPECT_FALSE(isTaken(cases[0].json)) << cases[0].name;
  EXPECT_FALSE(isTaken(std::string(100'000, '['))) << "n_structure_100000_opening_arrays";
}

TEST(JsonText, keepsEveryWellFormedCaseWithoutTheBlanksBetweenItsTokens) {
  for (const auto& [name, json] : wellFormed) {
    const auto text = decoder.decode<JsonText>(json);
    ASSERT_TRUE(text) << name;
    EXPECT_EQ(decoder.decode<JsonText>(text->text()), text) << name;
  }
  EXPECT_EQ(decoder.decode<JsonText>(" [ 1 , { \"a b\" : \"\\\" c\" } ] ").value().text(),
            "[1,{\"a b\":\"\\\" c\"}]");
}

TEST(JsonText, isWrittenNoDeeperThanADecoderTakesIt) {
  constexpr JsonEncoder encoder;
  const auto text = [](std::string_view json) { return decoder.decode<JsonText>(json).value(); };
  const auto lists = [](std::size_t levels) { return std::string(levels, '[') + std::string(levels, ']'); };
  const auto objects = [&](std::size_t levels) {
    std::string json = "{}";
    for (std::size_t level = 1; level < levels; ++level) {
      json = R"({"[":)" + json + '}';
    }
    return json;
  };
  for (const std::string& json : {lists(512), objects(512)}) {
    EXPECT_EQ(encoder.encode(text(json)), json);
    const JsonError tooDeep{.path = "[1]", .message = "is nested beyond 512 levels"};
    EXPECT_EQ(encoder.encode(std::vector{text("0"), text(json)}).error(), tooDeep);
  }
  // What goes down and up again, and brackets in texts, are no levels.
  const std::string manyBrackets = std::string(1'000, '[') + "\\\"" + std::string(1'000, '{');
  for (const std::string& json : {lists(511), objects(511), "[\"" + manyBrackets + "\"," + lists(510) + "]",
                                  "[" + lists(510) + "," + lists(510) + "]"}) {
    EXPECT_EQ(encoder.encode(std::vector{text("0"), text(json)}), "[0," + json + "]");
    EXPECT_TRUE(isTaken("[0," + json + "]"));
  }
}

}  // namespace
}  // namespace kestrel
