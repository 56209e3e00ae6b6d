#pragma once

#include <KestrelKit/foundation/RawEnumeration.h>

#include <cstdint>

namespace kestrel {

/// The polarity of a mood state; `none` is that of the unknown state alone.
class StateGroup : public RawEnumeration<StateGroup> {
 public:
  enum Case : std::uint8_t { elevated, stable, depressed, none };

  static constexpr RawValue<Case> rawValues[] = {
      {elevated, "elevated"},
      {stable, "stable"},
      {depressed, "depressed"},
      {none, "none"},
  };

  constexpr StateGroup(Case value) noexcept : value_(value) {}
  constexpr operator Case() const noexcept { return value_; }

 private:
  Case value_;
};

}  // namespace kestrel
