#pragma once

#include <KestrelKit/foundation/RawEnumeration.h>

#include <cstdint>
#include <string_view>

namespace kestrel {

/// The nine mood states. The raw value is the text that people see, and the JSON form, which is read
/// strictly.
class KestrelState : public RawEnumeration<KestrelState> {
 public:
  enum Case : std::uint8_t {
    psychosis,
    mixedEpisode,
    mania,
    hypomania,
    euthymia,
    dysthymia,
    moderateDepression,
    severeDepression,
    unknown,
  };

  static constexpr RawValue<Case> rawValues[] = {
      {psychosis, "Psychosis"},
      {mixedEpisode, "Mixed Episode"},
      {mania, "Mania"},
      {hypomania, "Hypomania"},
      {euthymia, "Euthymia"},
      {dysthymia, "Dysthymia"},
      {moderateDepression, "Moderate Depression"},
      {severeDepression, "Severe Depression"},
      {unknown, "Unknown"},
  };

  constexpr KestrelState(Case value) noexcept : value_(value) {}
  constexpr operator Case() const noexcept { return value_; }

  /// The state that a stored or transferred text stands for: a raw value or one of the names of earlier
  /// releases, compared exactly; `unknown` for any other text.
  static KestrelState fromStoredValue(std::string_view text) noexcept;

 private:
  Case value_;
};

}  // namespace kestrel
