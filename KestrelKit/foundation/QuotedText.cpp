#include <KestrelKit/foundation/QuotedText.h>

#include <fmt/format.h>

#include <cstddef>

namespace kestrel {
namespace {

constexpr std::size_t longest = 80;

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
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (character == '"' || character == '\\') {
      result += '\\';
      result += character;
    } else if (byte < 0x20U || byte == 0x7FU) {
      result += fmt::format("\\u{:04X}", byte);
    } else {
      result += character;
    }
  }
  if (cut) {
    result += "…";
  }
  return result;
}

std::string quoted(std::string_view text) { return '"' + shortened(text) + '"'; }

}  // namespace kestrel
