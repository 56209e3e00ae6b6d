#include "JsonPath.h"

#include <KestrelKit/foundation/JsonWriter.h>

#include <rapidjson/encodings.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <ranges>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

using CheckingWriter = rapidjson::Writer<rapidjson::StringBuffer, rapidjson::UTF8<>, rapidjson::UTF8<>,
                                         rapidjson::CrtAllocator, rapidjson::kWriteValidateEncodingFlag>;

/// Printable ASCII that stands in JSON as it is, which most texts and nearly all keys are.
bool isPlain(std::string_view text) noexcept {
  return std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; });
}

/// Copies plain text as a whole; the library goes from character to character.
class Writer : public CheckingWriter {
 public:
  using CheckingWriter::CheckingWriter;

  /// A text or a key, not too long for the library. False, and nothing is written, when it is not valid
  /// UTF-8.
  bool text(std::string_view value) {
    if (!isPlain(value)) {
      return String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
    }
    Prefix(rapidjson::kStringType);
    char* place = os_->Push(value.size() + 2);
    *place = '"';
    *std::ranges::copy(value, place + 1).out = '"';
    return true;
  }
};

// Long enough for 17 digits with sign, point, leading zeros of 1e-6 and an exponent.
using NumberText = std::array<char, 32>;

// The longest text that the library takes.
constexpr std::size_t longest = std::numeric_limits<rapidjson::SizeType>::max();

std::string_view numberText(double value, NumberText& text) noexcept {
  if (value == 0) {
    return std::signbit(value) ? "-0.0" : "0";
  }
  const double size = std::abs(value);
  const bool plain = size >= 1e-6 && size < 1e15;
  char* end = std::to_chars(text.data(), text.data() + text.size(), value,
                            plain ? std::chars_format::fixed : std::chars_format::scientific)
                  .ptr;
  // `1.5e-07`: an exponent has at least two digits, of which the first may be a 0.
  if (!plain && end[-2] == '0' && (end[-3] == '+' || end[-3] == '-')) {
    end[-2] = end[-1];
    --end;
  }
  return {text.data(), end};
}

// The well-formed document `compact`, which has no blanks between tokens, with two spaces for each level. An
// empty object or list stays on its line. (The library's own indenting writer does not compile with checked
// encodings.)
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

}  // namespace

struct JsonWriter::Document {
  // What is open around the value to come.
  struct Level {
    bool list;
    std::size_t index;     // of the element to come
    std::string_view key;  // of the member to come
  };

  explicit Document(DateStrategy strategy) : dates(strategy), writer(buffer) {}

  void count() noexcept {
    if (!levels.empty()) {
      ++levels.back().index;
    }
  }

  void note(std::string message) {
    if (error) {
      return;
    }
    std::string path;
    for (const Level& level : std::views::reverse(levels)) {
      if (level.list) {
        prependElement(path, level.index);
      } else {
        prependMember(path, level.key);
      }
    }
    error = JsonError{std::move(path), std::move(message)};
  }

  DateStrategy dates;
  rapidjson::StringBuffer buffer;
  Writer writer;
  std::vector<Level> levels;
  std::optional<JsonError> error;
};

JsonWriter::JsonWriter(DateStrategy dates) : document_(std::make_unique<Document>(dates)) {}
JsonWriter::~JsonWriter() = default;

DateStrategy JsonWriter::dateStrategy() const noexcept { return document_->dates; }

void JsonWriter::null() {
  document_->writer.Null();
  document_->count();
}

void JsonWriter::boolean(bool value) {
  document_->writer.Bool(value);
  document_->count();
}

void JsonWriter::integer(std::int64_t value) {
  document_->writer.Int64(value);
  document_->count();
}

void JsonWriter::number(double value) {
  if (!std::isfinite(value)) {
    refuse("is not a finite number");
    return;
  }
  NumberText buffer;
  const std::string_view text = numberText(value, buffer);
  document_->writer.RawValue(text.data(), text.size(), rapidjson::kNumberType);
  document_->count();
}

void JsonWriter::text(std::string_view value) {
  if (value.size() > longest) {
    refuse("is text of 4 GiB or more");
    return;
  }
  if (!document_->writer.text(value)) {
    document_->note("is not valid UTF-8");
  }
  document_->count();
}

void JsonWriter::openObject() {
  document_->writer.StartObject();
  document_->levels.push_back({.list = false, .index = 0, .key = {}});
}

void JsonWriter::key(std::string_view key) {
  const auto refuseKey = [&](const char* why) {
    const auto object = document_->levels.back();  // the path is that of the object
    document_->levels.pop_back();
    document_->note(why);
    document_->levels.push_back(object);
  };
  if (key.size() > longest) {
    refuseKey("has a key of 4 GiB or more");
    key = {};
  }
  if (!document_->writer.text(key)) {
    refuseKey("has a key that is not valid UTF-8");
  }
  document_->levels.back().key = key;
}

void JsonWriter::closeObject() {
  document_->levels.pop_back();
  document_->writer.EndObject();
  document_->count();
}

void JsonWriter::openList() {
  document_->writer.StartArray();
  document_->levels.push_back({.list = true, .index = 0, .key = {}});
}

void JsonWriter::closeList() {
  document_->levels.pop_back();
  document_->writer.EndArray();
  document_->count();
}

void JsonWriter::endLine() {
  document_->buffer.Put('\n');
  document_->writer.Reset(document_->buffer);
}

void JsonWriter::refuse(std::string message) {
  document_->note(std::move(message));
  null();
}

std::expected<std::string, JsonError> JsonWriter::finish(JsonLayout layout) {
  if (auto& error = document_->error) {
    return std::unexpected(*std::move(error));
  }
  const std::string_view compact{document_->buffer.GetString(), document_->buffer.GetSize()};
  return layout == JsonLayout::compact ? std::string{compact} : indented(compact);
}

}  // namespace kestrel
