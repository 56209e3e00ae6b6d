#include "TextForm.h"

#include <KestrelKit/foundation/Uuid.h>

#include <boost/uuid/string_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

namespace kestrel {
namespace {

constexpr bool isHexDigit(char c) noexcept {
  return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

}  // namespace

std::string uuidText(const Uuid& uuid) {
  std::string text = boost::uuids::to_string(uuid);
  for (char& c : text) {
    if (c >= 'a' && c <= 'f') {
      c = static_cast<char>(c - 'a' + 'A');
    }
  }
  return text;
}

std::optional<Uuid> uuidFromText(std::string_view text) noexcept {
  // The generator takes braces and other groupings too, and throws; what passes here it always takes.
  if (!hasForm(text, "00000000-0000-0000-0000-000000000000", isHexDigit)) {
    return std::nullopt;
  }
  return boost::uuids::string_generator{}(text.begin(), text.end());
}

}  // namespace kestrel
