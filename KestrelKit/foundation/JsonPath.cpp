#include "JsonPath.h"
#include "TextForm.h"

#include <KestrelKit/foundation/QuotedText.h>

#include <algorithm>

namespace kestrel {
namespace {

constexpr bool isLetter(char c) noexcept {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

constexpr bool isIdentifier(std::string_view text) noexcept {
  return !text.empty() && isLetter(text.front()) &&
         std::ranges::all_of(text, [](char c) { return isLetter(c) || isDigit(c); });
}

void prepend(std::string& path, std::string_view step) {
  if (!path.empty() && path.front() != '[') {
    path.insert(0, 1, '.');
  }
  path.insert(0, step);
}

}  // namespace

void prependMember(std::string& path, std::string_view key) {
  prepend(path, isIdentifier(key) ? shortened(key) : '[' + quoted(key) + ']');
}

void prependElement(std::string& path, std::size_t index) {
  prepend(path, '[' + std::to_string(index) + ']');
}

}  // namespace kestrel
