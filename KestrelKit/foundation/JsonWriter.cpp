#include "JsonNesting.h"
#include "JsonPath.h"

#include <KestrelKit/foundation/JsonWriter.h>
#include <KestrelKit/foundation/Utf8.h>

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <ranges>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

// The longest text that a decoder takes.
constexpr std::size_t longest = std::numeric_limits<std::uint32_t>::max();

// Whether `c` stands in JSON text as it is, taken for a character of its own.
constexpr bool isPlain(char c) noexcept { return c >= ' ' && c != '"' && c != '\\'; }

// Whether all of `text` is ASCII that stands as it is, as most texts and nearly all keys are.
bool isPlain(std::string_view text) noexcept {
  constexpr std::uint64_t each = 0x0101'0101'0101'0101U;
  constexpr std::uint64_t high = each * 0x80;
  // A byte below another one borrows into its highest bit; one that is 0 after the exclusive or is that one.
  constexpr auto isEightPlain = [](const char* place) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, place, sizeof bytes);
    const std::uint64_t quotes = bytes ^ (each * '"');
    const std::uint64_t backslashes = bytes ^ (each * '\\');
    return (((bytes - each * ' ') | bytes | (quotes - each) | (backslashes - each)) & high) == 0;
  };
  constexpr std::size_t step = sizeof(std::uint64_t);
  if (text.size() < step) {
    return std::ranges::all_of(text, [](char c) { return isPlain(c); });
  }
  for (std::size_t place = 0; place + step < text.size(); place += step) {
    if (!isEightPlain(text.data() + place)) {
      return false;
    }
  }
  return isEightPlain(text.data() + text.size() - step);
}

// Long enough for 17 digits with sign, point, leading zeros of 1e-6 and an exponent.
constexpr std::size_t longestNumber = 32;

// A number below 1e9 of at most six decimal places, which most are that were measured or rounded; null, and
// nothing is written, for others.
//
// The division is of two numbers that a 64-bit float holds, and rounds once: that it gives `value` says that
// the decimal reads back to it. No two decimals of up to 15 digits read as the same float, so that none with
// fewer digits does.
char* writeShortDecimal(double value, char* to) noexcept {
  constexpr std::int64_t scale = 1'000'000;
  constexpr int mostPlaces = 6;
  constexpr double beyond = 1e15;
  const double scaled = std::abs(value) * scale;
  if (!(scaled < beyond)) {
    return nullptr;
  }
  // NOLINTNEXTLINE(bugprone-incorrect-roundings): whether it is the right one shows next
  const auto digits = static_cast<std::int64_t>(scaled + 0.5);
  if (static_cast<double>(digits) / scale != std::abs(value)) {
    return nullptr;
  }
  if (value < 0) {
    *to++ = '-';
  }
  to = std::to_chars(to, to + longestNumber, digits / scale).ptr;
  std::int64_t fraction = digits % scale;
  if (fraction == 0) {
    return to;
  }
  int places = mostPlaces;
  for (; fraction % 10 == 0; fraction /= 10) {
    --places;
  }
  *to++ = '.';
  for (char* place = to + places; place != to; fraction /= 10) {
    *--place = static_cast<char>('0' + fraction % 10);
  }
  return to + places;
}

char* writeNumber(double value, char* to) noexcept {
  if (value == 0) {
    constexpr std::string_view negativeZero = "-0.0";
    if (std::signbit(value)) {
      return std::ranges::copy(negativeZero, to).out;
    }
    *to = '0';
    return to + 1;
  }
  if (char* const end = writeShortDecimal(value, to)) {
    return end;
  }
  const double size = std::abs(value);
  const bool plain = size >= 1e-6 && size < 1e15;
  char* end = std::to_chars(to, to + longestNumber, value,
                            plain ? std::chars_format::fixed : std::chars_format::scientific)
                  .ptr;
  // `1.5e-07`: an exponent has at least two digits, of which the first may be a 0.
  if (!plain && end[-2] == '0' && (end[-3] == '+' || end[-3] == '-')) {
    end[-2] = end[-1];
    --end;
  }
  return end;
}

// Text that grows by doubling. Who writes asks for room once a token, and not for more than fits in memory
// beside what is there.
class GrowingText {
 public:
  // Where `size` bytes may be written; the end of what was goes to wroteUpTo().
  char* room(std::size_t size) {
    if (text_.size() - size_ < size) {
      grow(size);
    }
    return text_.data() + size_;
  }

  void wroteUpTo(const char* end) noexcept { size_ = static_cast<std::size_t>(end - text_.data()); }

  void append(std::string_view bytes) { wroteUpTo(std::ranges::copy(bytes, room(bytes.size())).out); }

  std::string take() && {
    text_.resize(size_);
    return std::move(text_);
  }

 private:
  void grow(std::size_t size) {
    constexpr std::size_t smallest = 256;
    const std::size_t needed = std::max({smallest, 2 * text_.size(), size_ + size});
    text_.resize_and_overwrite(needed, [](char*, std::size_t all) { return all; });
  }

  std::string text_;  // what is behind the first `size_` bytes is not written yet
  std::size_t size_ = 0;
};

// The well-formed document `compact`, which has no blanks between tokens, with two spaces for each level. An
// empty object or list stays on its line.
std::string indented(std::string_view compact) {
  std::string result;
  std::size_t level = 0;
  bool inText = false;
  const auto newLine = [&] { result.append(1, '\n').append(2 * level, ' '); };
  for (std::size_t place = 0; place < compact.size(); ++place) {
    const char c = compact[place];
    if (inText) {
      result += c;
      if (c == '\\') {
        result += compact[++place];
      }
      inText = c != '"';
      continue;
    }
    const bool closes = c == '}' || c == ']';
    if (closes && compact[place - 1] != (c == '}' ? '{' : '[')) {
      --level;
      newLine();
    }
    result += c;
    inText = c == '"';
    if (c == ':') {
      result += ' ';
    } else if (c == ',') {
      newLine();
    } else if ((c == '{' || c == '[') && compact[place + 1] != (c == '{' ? '}' : ']')) {
      ++level;
      newLine();
    }
  }
  return result;
}

// Whether the well-formed document `compact` has more than `most` levels of objects and lists.
bool isDeeperThan(std::size_t most, std::string_view compact) {
  std::size_t depth = 0;
  bool inText = false;
  if (compact.size() <= 2 * most) {  // each level takes two brackets
    return false;
  }
  for (std::size_t place = 0; place < compact.size(); ++place) {
    const char c = compact[place];
    if (inText && c == '\\') {
      ++place;
    } else if (c == '"') {
      inText = !inText;
    } else if (!inText && (c == '[' || c == '{')) {
      if (depth++ == most) {
        return true;
      }
    } else if (!inText && (c == ']' || c == '}')) {
      --depth;
    }
  }
  return false;
}

}  // namespace

struct JsonWriter::Document {
  enum class Kind { root, list, object };

  // What is open around the value to come.
  struct Level {
    Kind kind;
    std::size_t count;     // of the values before it
    std::string_view key;  // of the member to come
  };

  explicit Document(DateStrategy strategy) : dates(strategy) {}

  // Room for at most `size` bytes of a value, behind the comma that it may need.
  char* roomForValue(std::size_t size) {
    char* place = text.room(size + 1);
    const Level& level = levels.back();
    if (level.kind == Kind::list && level.count != 0) {
      *place++ = ',';
    }
    return place;
  }

  void wroteValueUpTo(const char* end) noexcept {
    text.wroteUpTo(end);
    ++levels.back().count;
  }

  void writeValue(std::string_view bytes) {
    wroteValueUpTo(std::ranges::copy(bytes, roomForValue(bytes.size())).out);
  }

  void open(Kind kind, char bracket) {
    char* const place = roomForValue(1);
    *place = bracket;
    text.wroteUpTo(place + 1);
    levels.push_back({.kind = kind, .count = 0, .key = {}});
  }

  void close(char bracket) {
    levels.pop_back();
    char* const place = text.room(1);
    *place = bracket;
    wroteValueUpTo(place + 1);
  }

  // What lies behind the quote that has been written, up to the quote that ends it; valid UTF-8.
  void writeEscaped(std::string_view value) {
    while (true) {
      const auto escaped =
          std::ranges::find_if(value, [](char c) { return !isPlain(c) && static_cast<signed char>(c) >= 0; });
      const auto plain = static_cast<std::size_t>(escaped - value.begin());
      text.append(value.substr(0, plain));
      if (plain == value.size()) {
        break;
      }
      writeEscape(value[plain]);
      value.remove_prefix(plain + 1);
    }
    text.append("\"");
  }

  void writeEscape(char c) {
    constexpr std::string_view meant = "\"\\\b\f\n\r\t";
    constexpr std::string_view letters = "\"\\bfnrt";
    constexpr std::string_view hexadecimal = "0123456789ABCDEF";
    if (const std::size_t which = meant.find(c); which != std::string_view::npos) {
      text.append("\\");
      text.append(letters.substr(which, 1));
    } else {
      text.append(c < 0x10 ? "\\u000" : "\\u001");
      text.append(hexadecimal.substr(static_cast<std::size_t>(c) % 0x10, 1));
    }
  }

  void note(std::string message) {
    if (error) {
      return;
    }
    std::string path;
    for (const Level& level : std::views::reverse(levels)) {
      if (level.kind == Kind::list) {
        prependElement(path, level.count);
      } else if (level.kind == Kind::object) {
        prependMember(path, level.key);
      }
    }
    error = JsonError{std::move(path), std::move(message)};
  }

  DateStrategy dates;
  GrowingText text;
  std::vector<Level> levels{{.kind = Kind::root, .count = 0, .key = {}}};
  std::optional<JsonError> error;
};

JsonWriter::JsonWriter(DateStrategy dates) : document_(std::make_unique<Document>(dates)) {}
JsonWriter::~JsonWriter() = default;

DateStrategy JsonWriter::dateStrategy() const noexcept { return document_->dates; }

void JsonWriter::null() { document_->writeValue("null"); }

void JsonWriter::boolean(bool value) { document_->writeValue(value ? "true" : "false"); }

void JsonWriter::integer(std::int64_t value) {
  char* const place = document_->roomForValue(longestNumber);
  document_->wroteValueUpTo(std::to_chars(place, place + longestNumber, value).ptr);
}

void JsonWriter::number(double value) {
  if (!std::isfinite(value)) {
    refuse("is not a finite number");
    return;
  }
  document_->wroteValueUpTo(writeNumber(value, document_->roomForValue(longestNumber)));
}

void JsonWriter::text(std::string_view value) {
  if (value.size() > longest) {
    refuse("is text of 4 GiB or more");
    return;
  }
  if (isPlain(value)) {
    char* place = document_->roomForValue(value.size() + 2);
    *place++ = '"';
    place = std::ranges::copy(value, place).out;
    *place++ = '"';
    document_->wroteValueUpTo(place);
    return;
  }
  if (invalidUtf8(value)) {
    refuse("is not valid UTF-8");
    return;
  }
  document_->writeValue("\"");
  document_->writeEscaped(value);
}

void JsonWriter::json(std::string_view value) {
  const std::size_t around = document_->levels.size() - 1;  // the first is the document itself
  if (isDeeperThan(deepestJson - around, value)) {
    refuse(fmt::format("is nested beyond {} levels", deepestJson));
    return;
  }
  document_->writeValue(value);
}

void JsonWriter::openObject() { document_->open(Document::Kind::object, '{'); }

void JsonWriter::key(std::string_view key) {
  GrowingText& text = document_->text;
  std::vector<Document::Level>& levels = document_->levels;
  const auto refuseKey = [&](const char* why) {
    const auto object = levels.back();  // the path is that of the object
    levels.pop_back();
    document_->note(why);
    levels.push_back(object);
  };
  Document::Level& object = levels.back();
  const bool isFirst = object.count == 0;
  object.key = key;
  char* place = text.room(2);
  if (!isFirst) {
    *place++ = ',';
  }
  *place++ = '"';
  text.wroteUpTo(place);
  if (key.size() > longest) {
    refuseKey("has a key of 4 GiB or more");
  } else if (isPlain(key)) {
    place = std::ranges::copy(key, text.room(key.size() + 2)).out;
    *place++ = '"';
    *place++ = ':';
    text.wroteUpTo(place);
  } else if (invalidUtf8(key)) {
    refuseKey("has a key that is not valid UTF-8");
  } else {
    document_->writeEscaped(key);
    text.append(":");
  }
}

void JsonWriter::closeObject() { document_->close('}'); }

void JsonWriter::openList() { document_->open(Document::Kind::list, '['); }

void JsonWriter::closeList() { document_->close(']'); }

void JsonWriter::endLine() { document_->text.append("\n"); }

void JsonWriter::refuse(std::string message) {
  document_->note(std::move(message));
  null();
}

std::expected<std::string, JsonError> JsonWriter::finish(JsonLayout layout) {
  if (auto& error = document_->error) {
    return std::unexpected(*std::move(error));
  }
  std::string compact = std::move(document_->text).take();
  return layout == JsonLayout::compact ? std::move(compact) : indented(compact);
}

}  // namespace kestrel
