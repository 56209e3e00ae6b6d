#include <command-line/NumberArgument.h>

#include <charconv>
#include <cmath>
#include <cstddef>
#include <system_error>

namespace kestrel {
namespace {

/// Takes digits off the front of `text`; how many.
std::size_t takeDigits(std::string_view& text) {
  std::size_t count = 0;
  while (count < text.size() && text[count] >= '0' && text[count] <= '9') {
    ++count;
  }
  text.remove_prefix(count);
  return count;
}

bool take(std::string_view& text, std::string_view oneOf) {
  const bool here = !text.empty() && oneOf.contains(text.front());
  if (here) {
    text.remove_prefix(1);
  }
  return here;
}

bool isJsonNumber(std::string_view text) {
  take(text, "-");
  if (!take(text, "0") && takeDigits(text) == 0) {
    return false;
  }
  if (take(text, ".") && takeDigits(text) == 0) {
    return false;
  }
  if (take(text, "eE")) {
    take(text, "+-");
    if (takeDigits(text) == 0) {
      return false;
    }
  }
  return text.empty();
}

}  // namespace

std::optional<double> numberArgument(std::string_view text) {
  if (!isJsonNumber(text)) {
    return std::nullopt;
  }
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() ? std::optional(number) : std::nullopt;
}

std::optional<double> wholeNumberArgument(std::string_view text) {
  const auto number = numberArgument(text);
  return number && std::trunc(*number) == *number ? number : std::nullopt;
}

}  // namespace kestrel
