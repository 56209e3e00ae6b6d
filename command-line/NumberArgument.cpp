#include <command-line/NumberArgument.h>

#include <KestrelKit/foundation/JsonDecoder.h>

#include <algorithm>
#include <cmath>

namespace kestrel {

namespace {

template <class Number>
std::optional<Number> decoded(std::string_view text) {
  if (text.find_first_of(" \t\r\n") != std::string_view::npos) {
    return std::nullopt;  // JSON lets them stand around a value, a command line not.
  }
  const auto number = JsonDecoder().decode<Number>(text);
  return number ? std::optional(*number) : std::nullopt;
}

}  // namespace

std::optional<double> numberArgument(std::string_view text) { return decoded<double>(text); }

std::optional<std::int64_t> integerArgument(std::string_view text) { return decoded<std::int64_t>(text); }

std::optional<double> wholeNumberArgument(std::string_view text) {
  const auto number = numberArgument(text);
  return number && std::trunc(*number) == *number ? number : std::nullopt;
}

std::optional<std::int64_t> countArgument(std::string_view text) {
  const auto number = wholeNumberArgument(text);
  return number && *number >= 1 ? std::optional(static_cast<std::int64_t>(std::min(*number, 1e9)))
                                : std::nullopt;
}

}  // namespace kestrel
