#include <KestrelKit/foundation/QuotedText.h>

#include <fmt/format.h>
#include <unicode/uchar.h>
#include <boost/locale/utf.hpp>

#include <cstddef>
#include <cstdint>

namespace kestrel {
namespace {

using utf8 = boost::locale::utf::utf_traits<char>;

constexpr std::size_t longest = 80;

/// Whether a message must not show the character itself: it would break the line, steer the terminal or turn
/// the order of what follows.
bool isHidden(UChar32 character) noexcept {
  switch (u_charType(character)) {
    case U_CONTROL_CHAR:
    case U_LINE_SEPARATOR:
    case U_PARAGRAPH_SEPARATOR:
      return true;
    default:
      return u_hasBinaryProperty(character, UCHAR_BIDI_CONTROL) != 0;
  }
}

constexpr bool continuesCodePoint(char byte) noexcept {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

std::string escaped(std::string_view text, std::string_view alsoEscaped) {
  std::string result;
  while (!text.empty()) {
    const char* next = text.data();
    const char32_t character = utf8::decode(next, text.data() + text.size());
    const bool isValid = boost::locale::utf::is_valid_codepoint(character);
    const std::string_view bytes = text.substr(0, isValid ? static_cast<std::size_t>(next - text.data()) : 1);
    if (!isValid) {
      result += fmt::format("\\x{:02X}", static_cast<unsigned char>(bytes.front()));
    } else if (isHidden(static_cast<UChar32>(character))) {
      result += fmt::format("\\u{:04X}", static_cast<std::uint32_t>(character));
    } else {
      if (alsoEscaped.contains(bytes.front())) {
        result += '\\';
      }
      result += bytes;
    }
    text.remove_prefix(bytes.size());
  }
  return result;
}

}  // namespace

std::string onOneLine(std::string_view text) { return escaped(text, ""); }

std::string shortened(std::string_view text) {
  const bool cut = text.size() > longest;
  if (cut) {
    std::size_t end = longest;
    while (end > 0 && continuesCodePoint(text[end])) {
      --end;
    }
    text = text.substr(0, end);
  }
  std::string result = escaped(text, "\"\\");
  if (cut) {
    result += "…";
  }
  return result;
}

std::string quoted(std::string_view text) { return '"' + shortened(text) + '"'; }

}  // namespace kestrel
