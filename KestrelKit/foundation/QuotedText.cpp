#include <KestrelKit/foundation/QuotedText.h>

#include <fmt/format.h>

#include <cstddef>
#include <optional>

namespace kestrel {
namespace {

constexpr std::size_t longest = 80;

// The code point at the start of `text` where it is one that a message must not show: a control character, or
// one that breaks lines.
struct Hidden {
  unsigned codePoint;
  std::size_t bytes;
};
std::optional<Hidden> hiddenAtStart(std::string_view text) noexcept {
  const auto byteAt = [&](std::size_t place) {
    return place < text.size() ? static_cast<unsigned char>(text[place]) : 0U;
  };
  const unsigned first = byteAt(0);
  if (first < 0x20U || first == 0x7FU) {
    return Hidden{first, 1};
  }
  if (first == 0xC2U && byteAt(1) >= 0x80U && byteAt(1) <= 0x9FU) {  // U+0080 to U+009F
    return Hidden{byteAt(1), 2};
  }
  if (first == 0xE2U && byteAt(1) == 0x80U && (byteAt(2) == 0xA8U || byteAt(2) == 0xA9U)) {
    return Hidden{0x2028U + (byteAt(2) - 0xA8U), 3};
  }
  return std::nullopt;
}

constexpr bool continuesCodePoint(char byte) noexcept {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

}  // namespace

std::string shortened(std::string_view text) {
  const bool cut = text.size() > longest;
  if (cut) {
    std::size_t end = longest;
    while (end > 0 && continuesCodePoint(text[end])) {
      --end;
    }
    text = text.substr(0, end);
  }
  std::string result;
  while (!text.empty()) {
    if (const auto hidden = hiddenAtStart(text)) {
      result += fmt::format("\\u{:04X}", hidden->codePoint);
      text.remove_prefix(hidden->bytes);
      continue;
    }
    if (text.front() == '"' || text.front() == '\\') {
      result += '\\';
    }
    result += text.front();
    text.remove_prefix(1);
  }
  if (cut) {
    result += "…";
  }
  return result;
}

std::string quoted(std::string_view text) { return '"' + shortened(text) + '"'; }

}  // namespace kestrel
