#include "JsonPath.h"
#include "TextForm.h"

#include <KestrelKit/foundation/JsonReader.h>
#include <KestrelKit/foundation/ProgrammingError.h>
#include <KestrelKit/foundation/QuotedText.h>

#include <fmt/format.h>
#include <simdjson.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <functional>
#include <iterator>
#include <map>
#include <system_error>
#include <utility>

// The one file that knows the parser. It indexes the whole document first, checking UTF-8 and control
// characters, and then hands out values on demand. It validates only what is asked for, so every value is
// asked for here: texts are unescaped, literals compared, numbers held against the grammar.

namespace kestrel {
namespace ondemand = simdjson::ondemand;
namespace {

constexpr std::size_t deepest = 512;

constexpr bool isBlank(char c) noexcept { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

constexpr std::string_view withoutTrailingBlanks(std::string_view token) noexcept {
  while (!token.empty() && isBlank(token.back())) {
    token.remove_suffix(1);
  }
  return token;
}

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

// The raw text at the start of `rest`, up to the quote that ends it; the index has seen that there is one.
std::string_view upToQuote(std::string_view rest) noexcept {
  const std::string_view upToAny = rest.substr(0, rest.find('"'));
  if (!hasEscape(upToAny)) {
    return upToAny;
  }
  std::size_t place = 0;
  while (place < rest.size() && rest[place] != '"') {
    place += rest[place] == '\\' ? 2U : 1U;
  }
  return rest.substr(0, place);
}

}  // namespace

struct JsonReader::Document {
  DateStrategy dates;
  bool listsDropped;
  const char* begin;  // of the caller's text in the parser's copy
  const char* end;
  ondemand::document parsed;
  std::vector<JsonError> notes;    // about the value that is being read, with the path from there; below them
                                   // those about what it lies in
  std::vector<JsonError> dropped;  // with the path from the root
  std::optional<JsonError> syntaxError;

  bool failed() const noexcept { return syntaxError.has_value(); }

  // Notes that the document is not well-formed; only the first time counts, what follows it is its
  // consequence.
  void fail(std::string_view what, const char* where) {
    if (!failed()) {
      const auto byte = std::clamp(where, begin, end) - begin;
      syntaxError = JsonError{{}, fmt::format("the document {} at byte {}", what, byte)};
    }
  }
  void fail(const char* where) { fail("is not well-formed JSON", where); }

  // Where the parser stands.
  const char* location() {
    const char* location = end;
    return parsed.current_location().get(location) == simdjson::SUCCESS ? location : end;
  }

  template <class Visit>
  void read(Visit visit);
};

// A value, linked to the values that it lies in: the path is only put together where it is needed.
struct JsonReader::Place {
  Document& document;
  const Place* parent;
  std::string_view key;  // of a member
  std::size_t index;     // of an element
  enum class Step { root, member, element } step;
  std::size_t depth;  // the number of objects and lists that the value lies in
  ondemand::value value;
  bool taken = false;
  std::size_t notesBefore = document.notes.size();
  std::size_t droppedBefore = document.dropped.size();

  // The text of a scalar; of anything else its first character.
  std::string_view token() { return withoutTrailingBlanks(value.raw_json_token()); }
  const char* where() { return value.raw_json_token().data(); }

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
  bool isNoted() const noexcept { return isWrong() || document.dropped.size() > droppedBefore; }

  Kind kind() {
    switch (*where()) {
      case '{':
        return Kind::object;
      case '[':
        return Kind::list;
      case '"':
        return Kind::text;
      case 't':
      case 'f':
        return Kind::boolean;
      case 'n':
        return Kind::null;
      default:
        return Kind::number;
    }
  }

  std::optional<std::string_view> takeText() {
    taken = true;
    const std::string_view whole = token();
    const std::string_view raw = whole.substr(1, whole.size() - 2);
    if (hasEscape(raw)) {
      return unescaped(raw, value.get_string());
    }
    if (ondemand::raw_json_string same; value.get_raw_json_string().get(same) != simdjson::SUCCESS) {
      document.fail(where());
      return std::nullopt;
    }
    return raw;
  }

  std::optional<std::string_view> takeNumber() {
    taken = true;
    const std::string_view literal = token();
    if (!isNumber(literal)) {
      document.fail(where());
      return std::nullopt;
    }
    return literal;
  }

  std::optional<bool> takeBoolean() {
    taken = true;
    const std::string_view literal = token();
    if (literal != "true" && literal != "false") {
      document.fail(where());
      return std::nullopt;
    }
    return literal == "true";
  }

  void takeNull() {
    taken = true;
    if (token() != "null") {
      document.fail(where());
    }
  }

  template <class Visit>
  void takeMembers(Visit visit);

  template <class Visit>
  void takeElements(Visit visit) {
    taken = true;
    ondemand::array list;
    if (!descend() || value.get_array().get(list) != simdjson::SUCCESS) {
      document.fail(where());
      return;
    }
    std::size_t count = 0;
    for (auto element : list) {
      ondemand::value here;
      if (std::move(element).get(here) != simdjson::SUCCESS) {
        document.fail(document.location());
        return;
      }
      Place place{document, this, {}, count++, Step::element, depth + 1, here};
      visit(place);
      place.finish();
      if (document.failed()) {
        return;
      }
      if (auto note = place.takeNote(); note && !isWrong()) {
        place.prependStep(note->path);
        document.notes.push_back(*std::move(note));
      }
    }
  }

  // Reads over the value unless it was taken, with the same care.
  void finish() {
    if (taken || document.failed()) {
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
    if (depth < deepest) {
      return true;
    }
    document.fail("is nested beyond 512 levels", where());
    return false;
  }

  std::optional<std::string_view> keyOf(ondemand::field& field) {
    const std::string_view raw = upToQuote({field.key().raw(), document.end});
    if (!hasEscape(raw)) {
      return raw;
    }
    return unescaped(raw, field.unescaped_key());
  }

  std::optional<std::string_view> unescaped(std::string_view raw,
                                            simdjson::simdjson_result<std::string_view> result) {
    std::string_view text;
    if (std::move(result).get(text) != simdjson::SUCCESS) {
      document.fail("has a malformed escape", &raw.front());
      return std::nullopt;
    }
    return text;
  }
};

// What was noted about the members of an object, by their keys: of a repeated key only what concerns its last
// value. Members about which nothing was noted are not listed.
class JsonReader::LastValues {
 public:
  bool empty() const noexcept { return byKey_.empty(); }

  void take(Place& member) {
    const auto listed = byKey_.find(member.key);
    if (!member.isNoted()) {
      if (listed != byKey_.end()) {
        byKey_.erase(listed);
      }
      return;
    }
    Notes& notes = listed != byKey_.end() ? listed->second : byKey_[std::string{member.key}];
    notes.order = count_++;
    notes.wrong = member.takeNote();
    auto& dropped = member.document.dropped;
    const auto first = dropped.begin() + static_cast<std::ptrdiff_t>(member.droppedBefore);
    notes.dropped.assign(std::move_iterator{first}, std::move_iterator{dropped.end()});
    dropped.erase(first, dropped.end());
  }

  // Passes on the first wrong member, and what all of them dropped, in the order of the document.
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
      std::ranges::move(notes.dropped, std::back_inserter(document.dropped));
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
    std::vector<JsonError> dropped;
  };

  std::map<std::string, Notes, std::less<>> byKey_;
  std::size_t count_ = 0;
};

template <class Visit>
void JsonReader::Place::takeMembers(Visit visit) {
  taken = true;
  ondemand::object object;
  if (!descend() || value.get_object().get(object) != simdjson::SUCCESS) {
    document.fail(where());
    return;
  }
  LastValues noted;
  for (auto member : object) {
    ondemand::field field;
    if (std::move(member).get(field) != simdjson::SUCCESS) {
      document.fail(document.location());
      return;
    }
    const auto name = keyOf(field);
    if (!name) {
      return;
    }
    Place place{document, this, *name, 0, Step::member, depth + 1, field.value()};
    visit(place);
    place.finish();
    if (document.failed()) {
      return;
    }
    if (place.isNoted() || !noted.empty()) {
      noted.take(place);
    }
  }
  noted.noteIn(document);
}

// The one element of the list that the document was wrapped into.
template <class Visit>
void JsonReader::Document::read(Visit visit) {
  ondemand::array list;
  if (parsed.get_array().get(list) != simdjson::SUCCESS) {
    fail(end);
    return;
  }
  bool found = false;
  for (auto element : list) {
    ondemand::value value;
    if (std::move(element).get(value) != simdjson::SUCCESS || found) {
      fail(location());
      return;
    }
    found = true;
    Place root{*this, nullptr, {}, 0, Place::Step::root, 0, value};
    visit(root);
    root.finish();
    if (failed()) {
      return;
    }
  }
  if (const char* rest = nullptr; !found || parsed.current_location().get(rest) != simdjson::OUT_OF_BOUNDS) {
    fail(location());
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
  return {};
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

std::optional<double> JsonReader::number() {
  if (kind() != Kind::number) {
    return refuse(expected("a number", kind()));
  }
  const auto literal = place_->takeNumber();
  if (!literal) {
    return std::nullopt;
  }
  const auto value = nearestFloat(*literal);
  if (!value) {
    return refuse(fmt::format("{} is too large for a 64-bit float", shortened(*literal)));
  }
  return value;
}

std::optional<std::int64_t> JsonReader::integer() {
  if (kind() != Kind::number) {
    return refuse(expected("an integer", kind()));
  }
  const auto literal = place_->takeNumber();
  if (!literal) {
    return std::nullopt;
  }
  if (literal->find_first_of(".eE") == std::string_view::npos) {
    std::int64_t value = 0;
    if (std::from_chars(literal->data(), literal->data() + literal->size(), value).ec == std::errc{}) {
      return value;
    }
  } else if (const auto value = nearestFloat(*literal);
             value && *value >= -0x1p63 && *value < 0x1p63 && std::trunc(*value) == *value) {
    return static_cast<std::int64_t>(*value);
  }
  return refuse(fmt::format("{} is not an integer of 64 bits", shortened(*literal)));
}

bool JsonReader::null() {
  if (kind() != Kind::null) {
    return false;
  }
  place_->takeNull();
  return true;
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
  return !place_->document.failed() && !place_->isWrong();
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
  return !place_->document.failed() && !place_->isWrong();
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

void JsonReader::drop() {
  Document& document = place_->document;
  auto note = place_->takeNote();
  if (document.failed() || !document.listsDropped) {
    return;
  }
  if (!note) {
    programmingError("an element is dropped about which nothing was noted");
  }
  for (const Place* place = place_; place != nullptr; place = place->parent) {
    place->prependStep(note->path);
  }
  document.dropped.push_back(*std::move(note));
}

std::expected<void, JsonError> readJson(std::string_view json, DateStrategy dates,
                                        std::vector<JsonError>* dropped, void* state,
                                        void (*visit)(void* state, JsonReader& root)) {
  // The parser wants padding behind the text, so the text is copied; in brackets, because it knows an element
  // of a list better than a scalar at the root. What would end the list early or go on after it is not
  // well-formed.
  std::string wrapped;
  wrapped.reserve(json.size() + 2 + simdjson::SIMDJSON_PADDING);
  wrapped += '[';
  wrapped += json;
  wrapped += ']';

  ondemand::parser parser;
  JsonReader::Document document{.dates = dates,
                                .listsDropped = dropped != nullptr,
                                .begin = wrapped.data() + 1,
                                .end = wrapped.data() + 1 + json.size(),
                                .parsed = {},
                                .notes = {},
                                .dropped = {},
                                .syntaxError = {}};
  const auto indexed =
      parser.iterate(wrapped.data(), wrapped.size(), wrapped.capacity()).get(document.parsed);
  if (indexed == simdjson::UTF8_ERROR) {
    document.syntaxError = JsonError{{}, "the document is not valid UTF-8"};
  } else if (indexed == simdjson::CAPACITY || indexed == simdjson::MEMALLOC) {
    document.syntaxError = JsonError{{}, "the document is too large"};
  } else if (indexed != simdjson::SUCCESS) {
    document.fail(document.end);
  } else {
    document.read([&](JsonReader::Place& root) {
      JsonReader reader{root};
      visit(state, reader);
    });
  }

  auto& error = document.syntaxError;
  if (!error && !document.notes.empty()) {
    error = std::move(document.notes.front());
  }
  if (error) {
    return std::unexpected(*std::move(error));
  }
  if (dropped != nullptr) {
    std::ranges::move(document.dropped, std::back_inserter(*dropped));
  }
  return {};
}

}  // namespace kestrel
