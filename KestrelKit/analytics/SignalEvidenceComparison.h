#pragma once

#include <KestrelKit/foundation/RawEnumeration.h>

#include <cstdint>

namespace kestrel {

/// Which days are compared with those labelled euthymia.
class SignalEvidenceComparison : public RawEnumeration<SignalEvidenceComparison> {
 public:
  enum Case : std::uint8_t {
    elevatedVsEuthymia,   ///< Mania, hypomania.
    depressedVsEuthymia,  ///< Dysthymia, moderate and severe depression.
    mixedVsEuthymia,      ///< Mixed episode.
    psychosisVsEuthymia,  ///< Psychosis.
  };

  static constexpr RawValue<Case> rawValues[] = {
      {elevatedVsEuthymia, "elevatedVsEuthymia"},
      {depressedVsEuthymia, "depressedVsEuthymia"},
      {mixedVsEuthymia, "mixedVsEuthymia"},
      {psychosisVsEuthymia, "psychosisVsEuthymia"},
  };

  constexpr SignalEvidenceComparison(Case value) noexcept : value_(value) {}
  constexpr operator Case() const noexcept { return value_; }

 private:
  Case value_;
};

}  // namespace kestrel
