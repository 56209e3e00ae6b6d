#include "JsonNesting.h"
#include "JsonPath.h"
#include "TextForm.h"

#include <KestrelKit/foundation/JsonReader.h>
#include <KestrelKit/foundation/ProgrammingError.h>
#include <KestrelKit/foundation/QuotedText.h>

#include <fmt/format.h>
#include <simdjson.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <memory_resource>
#include <system_error>
#include <utility>

// The one file that knows the parser, and of that its first stage alone. It finds the tokens of the whole
// document at once: where an object, list, colon, comma or scalar begins outside of texts. It refuses what is
// not UTF-8, texts that are not closed and control characters in them. What the tokens are, and whether they
// may follow each other, is judged here, in one pass that visits every one.

namespace kestrel {
namespace {

constexpr bool isBlank(char c) noexcept { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// RFC 8259, section 6: [ minus ] int [ frac ] [ exp ].
constexpr bool isNumber(std::string_view literal) noexcept {
  std::size_t place = 0;
  const auto at = [&](char c) { return place < literal.size() && literal[place] == c; };
  const auto digits = [&] {
    const std::size_t start = place;
    while (place < literal.size() && isDigit(literal[place])) {
      ++place;
    }
    return place - start;
  };
  if (at('-')) {
    ++place;
  }
  if (at('0')) {
    ++place;
  } else if (digits() == 0) {
    return false;
  }
  if (at('.')) {
    ++place;
    if (digits() == 0) {
      return false;
    }
  }
  if (at('e') || at('E')) {
    ++place;
    if (at('+') || at('-')) {
      ++place;
    }
    if (digits() == 0) {
      return false;
    }
  }
  return place == literal.size();
}

// A number of at most 18 digits without an exponent, which is most of them: the digits without the point, and
// how many of them stand behind it.
struct Decimal {
  std::int64_t digits;
  std::size_t places;
};

// The number `token`, which blanks may follow, in one pass. Absent for other numbers, and for what is none.
constexpr std::optional<Decimal> shortDecimal(std::string_view token) noexcept {
  const char* place = token.data();
  const char* const end = place + token.size();
  std::uint64_t digits = 0;  // may overflow, and does not count then
  const auto takeDigits = [&] {
    const char* const first = place;
    for (; place != end && isDigit(*place); ++place) {
      digits = 10 * digits + static_cast<std::uint64_t>(*place - '0');
    }
    return static_cast<std::size_t>(place - first);
  };
  const bool isNegative = place != end && *place == '-';
  place += isNegative ? 1 : 0;
  const char* const first = place;
  const std::size_t whole = takeDigits();
  std::size_t places = 0;
  if (place != end && *place == '.') {
    ++place;
    places = takeDigits();
    if (places == 0) {
      return std::nullopt;
    }
  }
  constexpr std::size_t mostDigits = 18;
  const bool isEnded = place == end || isBlank(*place);
  if (!isEnded || whole == 0 || (whole > 1 && *first == '0') || whole + places > mostDigits) {
    return std::nullopt;
  }
  const auto value = static_cast<std::int64_t>(digits);
  return Decimal{isNegative ? -value : value, places};
}

// What shortInteger() gives for what is none.
constexpr std::int64_t notShort = -1;

constexpr std::size_t mostShortDigits = sizeof(std::uint64_t);

// The number that `size` digits at `place` make, 1 to 8 of them; notShort when one is no digit or they begin
// with a zero that may not be there. Reads 8 bytes. The digits are looked at all at once, as the bytes of one
// word: a loop over them ends each time at another place, and that a processor guesses the place wrong costs
// more than all else. Likewise the result is no optional, which in two registers is slow to take apart.
inline std::int64_t shortInteger(const char* place, std::size_t size) noexcept {
  constexpr auto each = [](std::uint64_t byte) { return byte * 0x0101010101010101; };
  std::uint64_t word = 0;
  std::memcpy(&word, place, sizeof word);
  if constexpr (std::endian::native == std::endian::big) {
    word = std::byteswap(word);
  }
  // Digits become their values; what lies behind them leaves the word, and zeros come in before them.
  word = (word ^ each('0')) << ((64 - 8 * size) % 64);
  constexpr std::uint64_t highest = 0x80;
  const std::uint64_t others = ((word + each(highest - 10)) | word) & each(highest);
  const auto zeroBefore = static_cast<std::uint64_t>((*place == '0') & (size > 1));  // not &&: no guess
  if ((others | zeroBefore) != 0) {
    return notShort;
  }
  word = (word * (1 + (10ULL << 8U)) >> 8U) & 0x00FF00FF00FF00FF;     // pairs of digits
  word = (word * (1 + (100ULL << 16U)) >> 16U) & 0x0000FFFF0000FFFF;  // fours
  return static_cast<std::int64_t>(word * (1 + (10'000ULL << 32U)) >> 32U);
}

// Powers of ten that a 64-bit float holds exactly.
constexpr std::array<double, 19> powersOfTen{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8, 1e9,
                                             1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18};

// Whether a 64-bit float holds the digits exactly.
constexpr bool isExact(const Decimal& decimal) noexcept {
  constexpr std::int64_t exact = std::int64_t{1} << 53;
  return decimal.digits <= exact && decimal.digits >= -exact && decimal.digits != 0;  // -0 has a sign
}

// Of what isExact(): both sides of the division are, so that its rounding is the only one (Clinger 1990).
constexpr double nearestFloat(const Decimal& decimal) noexcept {
  return static_cast<double>(decimal.digits) / powersOfTen[decimal.places];
}

// Whether the number `literal`, too large or too small for a float, is too small: by the decimal exponent of
// its first digit that is not 0.
bool isTooSmall(std::string_view literal) noexcept {
  const std::size_t mark = literal.find_first_of("eE");
  const std::string_view mantissa = literal.substr(0, mark);
  const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
  const std::size_t leading = mantissa.find_first_of("123456789");
  const auto place = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(leading);
  if (mark == std::string_view::npos) {
    return place <= 0;
  }
  std::string_view digits = literal.substr(mark + 1);
  const bool negative = digits.front() == '-';
  if (digits.front() == '+' || negative) {
    digits.remove_prefix(1);
  }
  std::int64_t exponent = 0;
  if (std::from_chars(digits.data(), digits.data() + digits.size(), exponent).ec != std::errc{}) {
    return negative;  // beyond 64 bits, and so beyond what any mantissa makes good
  }
  return negative ? place <= exponent : place <= 0 && exponent <= -place;
}

std::optional<double> nearestFloat(std::string_view literal) noexcept {
  double value = 0;
  if (std::from_chars(literal.data(), literal.data() + literal.size(), value).ec == std::errc{}) {
    return value;
  }
  if (isTooSmall(literal)) {
    return literal.front() == '-' ? -0.0 : 0.0;
  }
  return std::nullopt;
}

bool hasEscape(std::string_view raw) noexcept { return raw.find('\\') != std::string_view::npos; }

// The UTF-16 unit that the four hexadecimal digits at the start of `text` name, in either case.
std::optional<std::uint32_t> takeUnit(std::string_view& text) noexcept {
  constexpr std::size_t size = 4;
  std::uint32_t unit = 0;
  const char* const end = text.data() + std::min(size, text.size());
  if (std::from_chars(text.data(), end, unit, 16).ptr != text.data() + size) {
    return std::nullopt;
  }
  text.remove_prefix(size);
  return unit;
}

// The code point of the escape whose `\u` has been taken from `text`: one unit, or a pair of surrogates.
std::optional<std::uint32_t> takeCodePoint(std::string_view& text) noexcept {
  constexpr auto isHigh = [](std::uint32_t unit) { return unit >= 0xD800 && unit < 0xDC00; };
  constexpr auto isLow = [](std::uint32_t unit) { return unit >= 0xDC00 && unit < 0xE000; };
  const auto unit = takeUnit(text);
  if (!unit || isLow(*unit)) {
    return std::nullopt;
  }
  if (!isHigh(*unit)) {
    return unit;
  }
  if (!text.starts_with("\\u")) {
    return std::nullopt;
  }
  text.remove_prefix(2);
  const auto second = takeUnit(text);
  if (!second || !isLow(*second)) {
    return std::nullopt;
  }
  return 0x10000 + ((*unit - 0xD800) << 10U) + (*second - 0xDC00);
}

char* writeUtf8(std::uint32_t codePoint, char* to) noexcept {
  const auto byte = [&](std::uint32_t value) { *to++ = static_cast<char>(value); };
  const auto next = [&](unsigned shift) { byte(0x80U | ((codePoint >> shift) & 0x3FU)); };
  if (codePoint < 0x80) {
    byte(codePoint);
  } else if (codePoint < 0x800) {
    byte(0xC0U | (codePoint >> 6U));
    next(0);
  } else if (codePoint < 0x10000) {
    byte(0xE0U | (codePoint >> 12U));
    next(6);
    next(0);
  } else {
    byte(0xF0U | (codePoint >> 18U));
    next(12);
    next(6);
    next(0);
  }
  return to;
}

// Writes the text between the quotes to `to`, which has room for as many bytes, escapes resolved. Gives the
// end of what was written; null when an escape is none of RFC 8259, section 7, or a surrogate stands alone.
char* unescape(std::string_view raw, char* to) noexcept {
  constexpr std::string_view letters = "\"\\/bfnrt";
  constexpr std::string_view meant = "\"\\/\b\f\n\r\t";
  while (!raw.empty()) {
    const std::size_t plain = std::min(raw.find('\\'), raw.size());
    to = std::copy_n(raw.data(), plain, to);
    raw.remove_prefix(plain);
    if (raw.empty()) {
      break;
    }
    const char letter = raw.size() > 1 ? raw[1] : '\0';
    raw.remove_prefix(std::min<std::size_t>(2, raw.size()));
    if (letter == 'u') {
      const auto codePoint = takeCodePoint(raw);
      if (!codePoint) {
        return nullptr;
      }
      to = writeUtf8(*codePoint, to);
    } else if (const std::size_t which = letters.find(letter); which != std::string_view::npos) {
      *to++ = meant[which];
    } else {
      return nullptr;
    }
  }
  return to;
}

// The well-formed value `json` without the blanks between its tokens.
std::string withoutBlanks(std::string_view json) {
  std::string result;
  result.reserve(json.size());
  bool inText = false;
  for (std::size_t place = 0; place < json.size(); ++place) {
    const char c = json[place];
    if (inText && c == '\\') {
      result += c;
      result += json[++place];
      continue;
    }
    if (inText || !isBlank(c)) {
      result += c;
    }
    inText = inText != (c == '"');
  }
  return result;
}

}  // namespace

struct JsonReader::Document {
  // Where a token begins in the text, in order.
  using Token = const std::uint32_t*;

  // What is passed on beside the values.
  struct Remark {
    JsonError error;  // with the path from the root
    bool stops;       // the program; otherwise an element was dropped
  };

  DateStrategy dates;
  bool listsDropped;
  std::string_view text;
  Token next;                    // the first token that was not taken
  Token last;                    // behind the last one
  Token firstNearEnd;            // those before it have one behind them, and the bytes of a short integer
  std::vector<JsonError> notes;  // about the value that is being read, with the path from there; below them
                                 // those about what it lies in
  std::vector<Remark> remarks;
  std::optional<JsonError> syntaxError;
  std::pmr::monotonic_buffer_resource unescaped;  // texts that had escapes

  bool failed() const noexcept { return syntaxError.has_value(); }
  bool isRemarked() const noexcept { return !notes.empty() || !remarks.empty(); }

  // Notes that the document is not well-formed; only the first time counts, what follows it is its
  // consequence.
  void fail(std::string_view what, const char* where) {
    if (!failed()) {
      syntaxError = JsonError{{}, fmt::format("the document {} at byte {}", what, where - text.data())};
    }
  }
  void fail(const char* where) { fail("is not well-formed JSON", where); }

  const char* place(Token token) const noexcept {
    return text.data() + (token != last ? *token : text.size());
  }

  // The first character of a token; a null character, with which none begins, behind the last one.
  char first(Token token) const noexcept { return token != last ? text[*token] : '\0'; }

  // What stands from `begin` up to the blanks before `token`.
  std::string_view upTo(Token token, const char* begin) const noexcept {
    const char* end = place(token);
    while (end != begin && isBlank(end[-1])) {
      --end;
    }
    return {begin, end};
  }

  // The text between the quotes of the token that ends before `following`. The index has seen that it is
  // closed, and what is not blank behind a text is a token of its own.
  std::string_view betweenQuotes(Token token, Token following) const noexcept {
    const std::string_view quoted = upTo(following, place(token));
    return quoted.substr(1, quoted.size() - 2);
  }

  // Whether the token `name` is the text of `key`, which needs no escapes, with a colon close behind it.
  bool isMember(Token name, std::string_view key) const noexcept {
    constexpr std::size_t quotesAndColon = 3;
    if (name == last || text.size() - *name < key.size() + quotesAndColon) {
      return false;
    }
    const char* const quoted = text.data() + *name;
    const char* const behind = quoted + 1 + key.size();
    return behind[0] == '"' && behind[1] == ':' && *quoted == '"' &&
           std::string_view{quoted + 1, key.size()} == key;
  }

  // The token there as an integer if it is one of at most 8 digits with another token close behind it;
  // else notShort.
  std::int64_t shortInteger(Token token) const noexcept {
    if (token >= firstNearEnd || token[1] - *token > mostShortDigits) {
      return notShort;
    }
    return kestrel::shortInteger(text.data() + *token, token[1] - *token);
  }

  // Escapes resolved. Lives as long as the document.
  std::optional<std::string_view> resolved(std::string_view raw) {
    if (!hasEscape(raw)) {
      return raw;
    }
    char* const begin = static_cast<char*>(unescaped.allocate(raw.size(), alignof(char)));
    const char* const end = unescape(raw, begin);
    if (end == nullptr) {
      fail("has a malformed escape", raw.data());
      return std::nullopt;
    }
    return std::string_view{begin, end};
  }

  template <class Visit>
  void read(Visit visit);
};

// A value, linked to the values that it lies in: the path is only put together where it is needed.
struct JsonReader::Place {
  enum class Step { root, member, element };

  Place(Document& document_, const Place* parent_, Step step_, std::size_t depth_)
      : document(document_), parent(parent_), step(step_), depth(depth_) {
    goOn();
    noteFromHere();
  }

  Document& document;
  const Place* parent;
  std::string_view key;   // of a member
  std::size_t index = 0;  // of an element
  Step step;
  std::size_t depth;  // the number of objects and lists that the value lies in
  Document::Token token;
  bool taken;
  std::size_t notesBefore;
  std::size_t remarksBefore;

  // Becomes the place of the value to come.
  void goOn() noexcept {
    token = document.next;
    taken = false;
  }

  // What is noted from now on is about the value here.
  void noteFromHere() noexcept {
    notesBefore = document.notes.size();
    remarksBefore = document.remarks.size();
  }

  const char* where() const noexcept { return document.place(token); }

  // Puts the step that leads here before `path`.
  void prependStep(std::string& path) const {
    switch (step) {
      case Step::root:
        break;
      case Step::member:
        prependMember(path, key);
        break;
      case Step::element:
        prependElement(path, index);
        break;
    }
  }

  // Makes `path`, which starts here, one from the root.
  void prependSteps(std::string& path) const {
    for (const Place* place = this; place != nullptr; place = place->parent) {
      place->prependStep(path);
    }
  }

  // What was noted about the value here and what it holds. It is one note: the first.
  std::optional<JsonError> takeNote() {
    auto& notes = document.notes;
    if (!isWrong()) {
      return std::nullopt;
    }
    std::optional<JsonError> note{std::move(notes.back())};
    notes.pop_back();
    return note;
  }

  bool isWrong() const noexcept { return document.notes.size() > notesBefore; }
  bool isRemarked() const noexcept {
    return document.isRemarked() && (isWrong() || document.remarks.size() > remarksBefore);
  }

  Kind kind() const noexcept {
    static constexpr auto kinds = [] {
      std::array<Kind, 256> byFirst{};
      byFirst.fill(Kind::number);
      byFirst['{'] = Kind::object;
      byFirst['['] = Kind::list;
      byFirst['"'] = Kind::text;
      byFirst['t'] = Kind::boolean;
      byFirst['f'] = Kind::boolean;
      byFirst['n'] = Kind::null;
      return byFirst;
    }();
    return kinds[static_cast<unsigned char>(document.first(token))];
  }

  // Takes the first token of the value.
  void take() noexcept {
    taken = true;
    document.next = token + (token != document.last ? 1 : 0);
  }

  // The token here, which is a scalar, and the blanks behind it.
  std::string_view takeToken() noexcept {
    take();
    return {where(), document.place(document.next)};
  }

  std::string_view takeScalar() noexcept {
    take();
    return document.upTo(document.next, where());
  }

  std::optional<std::string_view> takeText() {
    take();
    return document.resolved(document.betweenQuotes(token, document.next));
  }

  // The number here that is not short.
  std::optional<std::string_view> takeNumber() {
    const std::string_view literal = takeScalar();
    if (!isNumber(literal)) {
      document.fail(where());
      return std::nullopt;
    }
    return literal;
  }

  // Goes on, over integers that are quickly read and followed by another element, and adds them to `list`:
  // many at a time, for as far as a compiler can tell each one added may change what is read here.
  void passShortIntegers(std::vector<std::int64_t>& list) {
    std::array<std::int64_t, 32> values;
    std::size_t count = 0;
    do {
      for (count = 0; count < values.size(); ++count, token += 2) {
        values[count] = document.shortInteger(token);
        if (values[count] == notShort || document.text[token[1]] != ',') {
          break;
        }
      }
      if (list.empty()) {
        list.reserve(count + 1);
      }
      list.insert(list.end(), values.data(), values.data() + count);
      index += count;
    } while (count == values.size());
    document.next = token;
  }

  std::optional<bool> takeBoolean() {
    const std::string_view literal = takeScalar();
    if (literal != "true" && literal != "false") {
      document.fail(where());
      return std::nullopt;
    }
    return literal == "true";
  }

  void takeNull() {
    if (takeScalar() != "null") {
      document.fail(where());
    }
  }

  // `likelyKey()` is asked for the key that likely comes next, if any does: it needs no escapes.
  template <class Visit, class LikelyKey>
  void takeMembers(Visit visit, LikelyKey likelyKey);

  template <class Visit>
  void takeMembers(Visit visit) {
    takeMembers(visit, [] { return std::string_view{}; });
  }

  template <class Visit>
  void takeElements(Visit visit) {
    if (!descend()) {
      return;
    }
    if (document.first(document.next) == ']') {
      ++document.next;
      return;
    }
    Place place{document, this, Step::element, depth + 1};
    while (true) {
      visit(place);
      place.finish();
      if (document.failed()) [[unlikely]] {
        return;
      }
      if (place.isRemarked()) [[unlikely]] {
        if (auto note = place.takeNote(); note && !isWrong()) {
          place.prependStep(note->path);
          document.notes.push_back(*std::move(note));
        }
        place.noteFromHere();
      }
      if (!isFollowed(']')) {
        return;
      }
      ++place.index;
      place.goOn();
    }
  }

  // Reads over the value unless it was taken, with the same care.
  void finish() {
    if (taken || document.failed()) [[likely]] {
      return;
    }
    switch (kind()) {
      case Kind::object:
        takeMembers([](Place&) {});
        break;
      case Kind::list:
        takeElements([](Place&) {});
        break;
      case Kind::text:
        takeText();
        break;
      case Kind::number:
        takeNumber();
        break;
      case Kind::boolean:
        takeBoolean();
        break;
      case Kind::null:
        takeNull();
        break;
    }
  }

 private:
  bool descend() {
    take();
    if (depth < deepestJson) {
      return true;
    }
    document.fail(fmt::format("is nested beyond {} levels", deepestJson), where());
    return false;
  }

  // The key of a member, and the colon behind it; `likely` is what it likely is.
  bool takeKey(std::string_view likely, std::string_view& found) {
    if (!document.isMember(document.next, likely)) [[unlikely]] {
      return takeAnyKey(found);
    }
    found = likely;
    document.next += 2;
    return true;
  }

  bool takeAnyKey(std::string_view& found) {
    const Document::Token name = document.next;
    const Document::Token colon = name + 1;
    if (document.first(name) != '"') {
      document.fail(document.place(name));
      return false;
    }
    if (document.first(colon) != ':') {
      document.fail(document.place(colon));
      return false;
    }
    const auto resolved = document.resolved(document.betweenQuotes(name, colon));
    if (!resolved) {
      return false;
    }
    found = *resolved;
    document.next = colon + 1;
    return true;
  }

  // Behind a member or element: whether another one follows. If not, `close` does, or the document fails.
  bool isFollowed(char close) {
    const char c = document.first(document.next);
    if (c != ',' && c != close) [[unlikely]] {
      document.fail(document.place(document.next));
      return false;
    }
    ++document.next;
    return c == ',';
  }
};

// What was noted about the members of an object, by their keys: of a repeated key only what concerns its last
// value. Members about which nothing was noted are not listed.
class JsonReader::LastValues {
 public:
  bool empty() const noexcept { return byKey_.empty(); }

  // Leaves nothing noted about the member, so that the next one's notes begin where its did.
  void take(Place& member) {
    const auto listed = byKey_.find(member.key);
    if (!member.isRemarked()) {
      if (listed != byKey_.end()) {
        byKey_.erase(listed);
      }
      return;
    }
    Notes& notes = listed != byKey_.end() ? listed->second : byKey_[std::string{member.key}];
    notes.order = count_++;
    notes.wrong = member.takeNote();
    auto& remarks = member.document.remarks;
    const auto first = remarks.begin() + static_cast<std::ptrdiff_t>(member.remarksBefore);
    notes.remarks.assign(std::move_iterator{first}, std::move_iterator{remarks.end()});
    remarks.erase(first, remarks.end());
  }

  // Passes on the first wrong member, and what was remarked about all of them, in the order of the document.
  void noteIn(Document& document) {
    std::vector<decltype(byKey_)::value_type*> inOrder;
    inOrder.reserve(byKey_.size());
    for (auto& entry : byKey_) {
      inOrder.push_back(&entry);
    }
    std::ranges::sort(inOrder, {}, [](const auto* entry) { return entry->second.order; });
    bool isFirst = true;
    for (auto* entry : inOrder) {
      auto& [key, notes] = *entry;
      std::ranges::move(notes.remarks, std::back_inserter(document.remarks));
      if (notes.wrong && std::exchange(isFirst, false)) {
        prependMember(notes.wrong->path, key);
        document.notes.push_back(*std::move(notes.wrong));
      }
    }
  }

 private:
  struct Notes {
    std::size_t order;
    std::optional<JsonError> wrong;
    std::vector<Document::Remark> remarks;
  };

  std::map<std::string, Notes, std::less<>> byKey_;
  std::size_t count_ = 0;
};

template <class Visit, class LikelyKey>
void JsonReader::Place::takeMembers(Visit visit, LikelyKey likelyKey) {
  if (!descend()) {
    return;
  }
  if (document.first(document.next) == '}') {
    ++document.next;
    return;
  }
  LastValues noted;
  Place place{document, this, Step::member, depth + 1};
  do {
    if (!takeKey(likelyKey(), place.key)) {
      return;
    }
    place.goOn();
    visit(place);
    place.finish();
    if (document.failed()) [[unlikely]] {
      return;
    }
    if (place.isRemarked() || !noted.empty()) [[unlikely]] {
      noted.take(place);
    }
  } while (isFollowed('}'));
  if (!document.failed() && !noted.empty()) {
    noted.noteIn(document);
  }
}

template <class Visit>
void JsonReader::Document::read(Visit visit) {
  Place root{*this, nullptr, Place::Step::root, 0};
  visit(root);
  root.finish();
  if (next != last) {
    fail(place(next));
  }
}

namespace {

constexpr std::string_view nameOf(JsonReader::Kind kind) noexcept {
  switch (kind) {
    case JsonReader::Kind::object:
      return "an object";
    case JsonReader::Kind::list:
      return "a list";
    case JsonReader::Kind::text:
      return "text";
    case JsonReader::Kind::number:
      return "a number";
    case JsonReader::Kind::boolean:
      return "a boolean";
    case JsonReader::Kind::null:
      return "null";
  }
  std::unreachable();
}

// The place of the field of `key`, which is mostly the text itself of the likely one and otherwise one soon
// behind it; behind the last, where there is none.
std::size_t fieldOf(std::string_view key, JsonFields fields, std::size_t likely) noexcept {
  if (likely < fields.size() && fields[likely].key.data() == key.data()) [[likely]] {
    return likely;
  }
  const auto firstOf = [key](JsonFields some) {
    return static_cast<std::size_t>(std::ranges::find(some, key, &JsonField::key) - some.begin());
  };
  const std::size_t ahead = likely + firstOf(fields.subspan(likely));
  if (ahead < fields.size()) {
    return ahead;
  }
  const std::size_t before = firstOf(fields.first(likely));
  return before < likely ? before : fields.size();
}

std::string expected(std::string_view what, JsonReader::Kind found) {
  return fmt::format("expected {}, found {}", what, nameOf(found));
}

}  // namespace

JsonReader::Kind JsonReader::kind() const noexcept { return place_->kind(); }

DateStrategy JsonReader::dateStrategy() const noexcept { return place_->document.dates; }

std::optional<std::string_view> JsonReader::text() {
  if (kind() != Kind::text) {
    return refuse(expected("text", kind()));
  }
  return place_->takeText();
}

std::optional<bool> JsonReader::boolean() {
  if (kind() != Kind::boolean) {
    return refuse(expected("a boolean", kind()));
  }
  return place_->takeBoolean();
}

bool JsonReader::read(double& value) {
  if (place_->kind() != Kind::number) {
    refuse(expected("a number", kind()));
    return false;
  }
  constexpr std::size_t longestExact = 17;  // mostly: 2^53 has 16 digits, and there is a point
  const std::string_view token = place_->takeToken();
  const auto decimal = token.size() <= longestExact ? shortDecimal(token) : std::nullopt;
  if (decimal && isExact(*decimal)) {
    value = nearestFloat(*decimal);
    return true;
  }
  const auto literal = place_->takeNumber();
  if (!literal) {
    return false;
  }
  const auto nearest = nearestFloat(*literal);
  if (!nearest) {
    refuse(fmt::format("{} is too large for a 64-bit float", shortened(*literal)));
    return false;
  }
  value = *nearest;
  return true;
}

bool JsonReader::read(std::int64_t& value) {
  value = place_->document.shortInteger(place_->token);
  if (value == notShort) [[unlikely]] {
    return readLong(value);
  }
  place_->take();
  return true;
}

bool JsonReader::readLong(std::int64_t& value) {
  if (kind() != Kind::number) {
    refuse(expected("an integer", kind()));
    return false;
  }
  if (const auto decimal = shortDecimal(place_->takeToken()); decimal && decimal->places == 0) {
    value = decimal->digits;
    return true;
  }
  const auto literal = place_->takeNumber();
  if (!literal) {
    return false;
  }
  if (literal->find_first_of(".eE") == std::string_view::npos) {
    if (std::from_chars(literal->data(), literal->data() + literal->size(), value).ec == std::errc{}) {
      return true;
    }
  } else if (const auto nearest = nearestFloat(*literal);
             nearest && *nearest >= -0x1p63 && *nearest < 0x1p63 && std::trunc(*nearest) == *nearest) {
    value = static_cast<std::int64_t>(*nearest);
    return true;
  }
  refuse(fmt::format("{} is not an integer of 64 bits", shortened(*literal)));
  return false;
}

std::optional<std::vector<std::int64_t>> JsonReader::integers() {
  if (kind() != Kind::list) {
    return refuse(expected("a list", kind()));
  }
  std::vector<std::int64_t> list;
  place_->takeElements([&](Place& element) {
    element.passShortIntegers(list);
    if (const auto value = JsonReader{element}.integer()) {
      list.push_back(*value);
    }
  });
  if (isWrong()) {
    return std::nullopt;
  }
  return list;
}

bool JsonReader::null() {
  if (place_->document.first(place_->token) != 'n') {
    return false;
  }
  place_->takeNull();
  return true;
}

std::optional<std::string> JsonReader::json() {
  place_->finish();
  Document& document = place_->document;
  if (document.failed()) {
    return std::nullopt;
  }
  return withoutBlanks(document.upTo(document.next, place_->where()));
}

std::size_t JsonReader::scalarsInList() const noexcept {
  const Document& document = place_->document;
  if (kind() != Kind::list || document.first(place_->token + 1) == ']') {
    return 0;
  }
  std::size_t elements = 1;
  for (auto behind = place_->token + 2; behind < document.last; behind += 2) {
    const char c = document.text[*behind];
    if (c != ',') {
      return c == ']' ? elements : 0;
    }
    ++elements;
  }
  return 0;
}

bool JsonReader::isWrong() const noexcept { return place_->document.failed() || place_->isWrong(); }

std::optional<JsonReader::FieldSet> JsonReader::members(JsonFields fields, void* record) {
  if (kind() != Kind::object) {
    return refuse(expected("an object", kind()));
  }
  FieldSet seen = 0;
  std::size_t likely = 0;  // keys mostly come in the order of the declaration
  place_->takeMembers(
      [&](Place& member) {
        const std::size_t place = fieldOf(member.key, fields, likely);
        if (place == fields.size()) [[unlikely]] {
          return;
        }
        likely = place + 1 < fields.size() ? place + 1 : 0;
        seen |= FieldSet{1} << place;
        JsonReader reader{member};
        fields[place].read(reader, record);
      },
      [&] { return fields.empty() ? std::string_view{} : fields[likely].key; });
  if (isWrong()) {
    return std::nullopt;
  }
  return seen;
}

bool JsonReader::forEachMember(void (*visit)(void*, std::string_view, JsonReader&), void* state) {
  if (kind() != Kind::object) {
    refuse(expected("an object", kind()));
    return false;
  }
  place_->takeMembers([&](Place& member) {
    JsonReader reader{member};
    visit(state, member.key, reader);
  });
  return !isWrong();
}

bool JsonReader::forEachElement(void (*visit)(void*, JsonReader&), void* state) {
  if (kind() != Kind::list) {
    refuse(expected("a list", kind()));
    return false;
  }
  place_->takeElements([&](Place& element) {
    JsonReader reader{element};
    visit(state, reader);
  });
  return !isWrong();
}

std::nullopt_t JsonReader::refuse(std::string message) {
  if (!place_->isWrong()) {
    place_->document.notes.push_back({{}, std::move(message)});
  }
  return std::nullopt;
}

void JsonReader::refuseAbsent(std::string_view key) {
  if (!place_->isWrong()) {
    std::string path;
    prependMember(path, key);
    place_->document.notes.push_back({std::move(path), "is missing"});
  }
}

void JsonReader::forgive() { place_->takeNote(); }

void JsonReader::drop() {
  Document& document = place_->document;
  auto& remarks = document.remarks;
  const auto within = remarks.begin() + static_cast<std::ptrdiff_t>(place_->remarksBefore);
  remarks.erase(std::remove_if(within, remarks.end(), std::mem_fn(&Document::Remark::stops)), remarks.end());
  auto note = place_->takeNote();
  if (note && document.listsDropped) {
    place_->prependSteps(note->path);
    remarks.push_back({*std::move(note), /*stops=*/false});
  }
}

void JsonReader::stop(std::string message) {
  JsonError error{{}, std::move(message)};
  place_->prependSteps(error.path);
  place_->document.remarks.push_back({std::move(error), /*stops=*/true});
}

std::expected<void, JsonError> readJson(std::string_view json, DateStrategy dates,
                                        std::vector<JsonError>* dropped, void* state,
                                        void (*visit)(void* state, JsonReader& root)) {
  const auto unreadable = [](const char* why) { return std::unexpected(JsonError{{}, why}); };
  std::unique_ptr<simdjson::internal::dom_parser_implementation> parser;
  if (const auto& best = simdjson::get_active_implementation();
      best->create_dom_parser_implementation(json.size(), /*max_depth=*/1, parser) != simdjson::SUCCESS) {
    return unreadable("the document is too large");
  }
  const auto indexed = parser->stage1(reinterpret_cast<const std::uint8_t*>(json.data()), json.size(),
                                      simdjson::stage1_mode::regular);
  if (indexed == simdjson::UTF8_ERROR) {
    return unreadable("the document is not valid UTF-8");
  }
  const JsonReader::Document::Token tokens = parser->structural_indexes.get();
  const auto last = tokens + parser->n_structural_indexes;
  auto firstNearEnd = last - (last != tokens ? 1 : 0);
  while (firstNearEnd != tokens && json.size() - firstNearEnd[-1] < mostShortDigits) {
    --firstNearEnd;
  }
  JsonReader::Document document{.dates = dates,
                                .listsDropped = dropped != nullptr,
                                .text = json,
                                .next = tokens,
                                .last = last,
                                .firstNearEnd = firstNearEnd,
                                .notes = {},
                                .remarks = {},
                                .syntaxError = {},
                                .unescaped = {}};
  if (indexed != simdjson::SUCCESS) {
    document.fail(json.data() + json.size());
  } else {
    document.read([&](JsonReader::Place& root) {
      JsonReader reader{root};
      visit(state, reader);
    });
  }

  if (document.syntaxError) {
    return std::unexpected(*std::move(document.syntaxError));
  }
  if (!document.notes.empty()) {
    return std::unexpected(std::move(document.notes.front()));
  }
  for (auto& [error, stops] : document.remarks) {
    if (stops) {
      programmingError(error.text());
    } else if (dropped != nullptr) {
      dropped->push_back(std::move(error));
    }
  }
  return {};
}

}  // namespace kestrel
