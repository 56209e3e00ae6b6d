#pragma once

#include <KestrelKit/circadian/CircadianFeatures.h>
#include <KestrelKit/model/HrvInput.h>
#include <KestrelKit/model/StateClassification.h>

namespace kestrel {

/// The state of a day as the person's circadian rhythm has it.
///
/// The shift of the sleep phase decides: later than usual points to the depressive side, earlier to the
/// elevated one. A dampened rest-activity rhythm, a raised resting heart rate and irregular step counts only
/// strengthen or weaken that verdict and add their reasons. The rules and limits are the product's own; a
/// table at the start of the source file has those of the phase.
struct CircadianClassifier {
  CircadianClassifier() = delete;

  /// The verdict on the day of `features`, with the deciding reason first. Confidence is scaled by how
  /// completely the nights were observed. `unknown`, with confidence 0 and one reason, when the nights cover
  /// too little, when there is no phase, and when the verdict is elevated but the day's heart-rate
  /// variability is missing from a source that supplies it. Never fails, whatever the numbers.
  static StateClassification classify(const CircadianFeatures& features, const HrvInput& hrv);
};

}  // namespace kestrel
