#include <KestrelKit/foundation/QuotedText.h>
#include <KestrelKit/foundation/RawEnumeration.h>

#include <fmt/format.h>

#include <algorithm>

namespace kestrel {
namespace {

/// Whether one letter is another, missing or too many. Letters are bytes here: raw values are ASCII.
bool isOneLetterOff(std::string_view text, std::string_view right) {
  const auto same = static_cast<std::size_t>(std::ranges::mismatch(text, right).in1 - text.begin());
  const std::string_view rest = text.substr(same);
  const std::string_view rightRest = right.substr(same);
  const auto next = [](std::string_view letters) {
    return letters.substr(std::min<std::size_t>(1, letters.size()));
  };
  return next(rest) == next(rightRest) || next(rest) == rightRest || rest == next(rightRest);
}

}  // namespace

std::string notOneOfMessage(std::string_view text, std::span<const std::string_view> allowed) {
  std::string message = fmt::format("{} is not one of {}", quoted(text), fmt::join(allowed, ", "));
  const auto meant =
      std::ranges::find_if(allowed, [&](std::string_view right) { return isOneLetterOff(text, right); });
  if (meant != allowed.end()) {
    message += fmt::format("; did you mean {}?", *meant);
  }
  return message;
}

}  // namespace kestrel
