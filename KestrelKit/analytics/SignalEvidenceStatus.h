#pragma once

#include <KestrelKit/foundation/RawEnumeration.h>

#include <cstdint>

namespace kestrel {

/// What the analysis found in one source, from nothing at all to an association.
class SignalEvidenceStatus : public RawEnumeration<SignalEvidenceStatus> {
 public:
  enum Case : std::uint8_t {
    noData,                 ///< No observation.
    insufficientOverlap,    ///< In no comparison had both groups enough days.
    insufficientVariation,  ///< None could be evaluated, and in one at least the values did not vary.
    noClearAssociation,     ///< Evaluated; nothing both large and sure enough.
    associationObserved,
  };

  static constexpr RawValue<Case> rawValues[] = {
      {noData, "noData"},
      {insufficientOverlap, "insufficientOverlap"},
      {insufficientVariation, "insufficientVariation"},
      {noClearAssociation, "noClearAssociation"},
      {associationObserved, "associationObserved"},
  };

  constexpr SignalEvidenceStatus(Case value) noexcept : value_(value) {}
  constexpr operator Case() const noexcept { return value_; }

 private:
  Case value_;
};

}  // namespace kestrel
