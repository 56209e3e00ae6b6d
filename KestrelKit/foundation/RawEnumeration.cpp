#include <KestrelKit/foundation/QuotedText.h>
#include <KestrelKit/foundation/RawEnumeration.h>

#include <fmt/format.h>

namespace kestrel {

std::string notOneOfMessage(std::string_view text, std::span<const std::string_view> allowed) {
  return fmt::format("{} is not one of {}", quoted(text), fmt::join(allowed, ", "));
}

}  // namespace kestrel
