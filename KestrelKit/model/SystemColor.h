#pragma once

#include <KestrelKit/foundation/RawEnumeration.h>

#include <cstdint>

namespace kestrel {

/// The platform's standard named colours that the states are shown in.
class SystemColor : public RawEnumeration<SystemColor> {
 public:
  enum Case : std::uint8_t { purple, pink, red, orange, green, teal, blue, indigo, gray };

  static constexpr RawValue<Case> rawValues[] = {
      {purple, "purple"}, {pink, "pink"}, {red, "red"},       {orange, "orange"}, {green, "green"},
      {teal, "teal"},     {blue, "blue"}, {indigo, "indigo"}, {gray, "gray"},
  };

  constexpr SystemColor(Case value) noexcept : value_(value) {}
  constexpr operator Case() const noexcept { return value_; }

 private:
  Case value_;
};

}  // namespace kestrel
