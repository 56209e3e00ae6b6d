#pragma once

#include <KestrelKit/foundation/RawEnumeration.h>

#include <cstdint>

namespace kestrel {

/// Why a comparison could not be evaluated.
class SignalEvidenceReason : public RawEnumeration<SignalEvidenceReason> {
 public:
  enum Case : std::uint8_t {
    insufficientSamples,    ///< One group at least has too few days.
    insufficientVariation,  ///< The values do not vary within the groups, or there is no spread to be had of
                            ///< them.
  };

  static constexpr RawValue<Case> rawValues[] = {
      {insufficientSamples, "insufficient_samples"},
      {insufficientVariation, "insufficient_variation"},
  };

  constexpr SignalEvidenceReason(Case value) noexcept : value_(value) {}
  constexpr operator Case() const noexcept { return value_; }

 private:
  Case value_;
};

}  // namespace kestrel
