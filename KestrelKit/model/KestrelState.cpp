#include <KestrelKit/model/KestrelState.h>

namespace kestrel {
namespace {

struct Alias {
  std::string_view text;
  KestrelState state;
};

// What earlier releases stored.
constexpr Alias legacyAliases[] = {
    {"Manic", KestrelState::mania},
    {"Hypomanic", KestrelState::hypomania},
    {"Euthymic", KestrelState::euthymia},
    {"Dysthymic", KestrelState::dysthymia},
    {"Major Depressive", KestrelState::severeDepression},
};

}  // namespace

KestrelState KestrelState::fromStoredValue(std::string_view text) noexcept {
  for (const auto& alias : legacyAliases) {
    if (alias.text == text) {
      return alias.state;
    }
  }
  return fromRawValue(text).value_or(unknown);
}

}  // namespace kestrel
