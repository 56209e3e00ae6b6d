#include <KestrelKit/foundation/Uuid.h>

#include <boost/uuid/string_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

#include <cstddef>

namespace kestrel {
namespace {

constexpr std::string_view form = "00000000-0000-0000-0000-000000000000";

constexpr bool isHexDigit(char c) noexcept {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// The generator takes braces and other groupings too, and throws; what passes here it always takes.
constexpr bool hasForm(std::string_view text) noexcept {
  if (text.size() != form.size()) {
    return false;
  }
  for (std::size_t place = 0; place < form.size(); ++place) {
    if (form[place] == '-' ? text[place] != '-' : !isHexDigit(text[place])) {
      return false;
    }
  }
  return true;
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
  if (!hasForm(text)) {
    return std::nullopt;
  }
  return boost::uuids::string_generator{}(text.begin(), text.end());
}

}  // namespace kestrel
