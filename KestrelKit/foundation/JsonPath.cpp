#include "JsonPath.h"

#include <KestrelKit/foundation/QuotedText.h>

#include <algorithm>

namespace kestrel {
namespace {

constexpr bool isLetter(char c) noexcept {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

constexpr bool isIdentifier(std::string_view text) noexcept {
  return !text.empty() && isLetter(text.front()) &&
         std::ranges::all_of(text, [](char c) { return isLetter(c) || isDigit(c); });
}

}  // namespace

void appendMember(std::string& path, std::string_view key) {
  if (!isIdentifier(key)) {
    path += '[' + quoted(key) + ']';
    return;
  }
  if (!path.empty()) {
    path += '.';
  }
  path += key;
}

void appendElement(std::string& path, std::size_t index) { path += '[' + std::to_string(index) + ']'; }

bool isAtOrBelow(std::string_view path, std::string_view ancestor) noexcept {
  return path.starts_with(ancestor) &&
         (path.size() == ancestor.size() || path[ancestor.size()] == '.' || path[ancestor.size()] == '[');
}

}  // namespace kestrel
