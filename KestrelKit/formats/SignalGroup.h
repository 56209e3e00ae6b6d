#pragma once

#include <KestrelKit/foundation/RawEnumeration.h>

#include <cstdint>

namespace kestrel {

/// The groups in which a person gives or refuses consent to signals.
class SignalGroup : public RawEnumeration<SignalGroup> {
 public:
  enum Case : std::uint8_t { essential, cardiacRhythm, mentalAudio, bodyNutrition, reproductive, symptoms };

  static constexpr RawValue<Case> rawValues[] = {
      {essential, "essential"},
      {cardiacRhythm, "cardiacRhythm"},
      {mentalAudio, "mentalAudio"},
      {bodyNutrition, "bodyNutrition"},
      {reproductive, "reproductive"},
      {symptoms, "symptoms"},
  };

  constexpr SignalGroup(Case value) noexcept : value_(value) {}
  constexpr operator Case() const noexcept { return value_; }

 private:
  Case value_;
};

}  // namespace kestrel
