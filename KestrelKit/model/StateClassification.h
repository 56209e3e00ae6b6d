#pragma once

#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/model/ClassificationSource.h>
#include <KestrelKit/model/KestrelState.h>

#include <optional>
#include <string>
#include <vector>

namespace kestrel {

/// The mood state of one day, as a classifier or the user has it.
struct StateClassification {
  std::string date{};  ///< The day key, `yyyy-MM-dd`; see DateKey.
  KestrelState predictedState = KestrelState::unknown;
  double confidence = 0;               ///< 0 to 1.
  std::vector<std::string> reasons{};  ///< English sentences, the deciding one first; may be empty.
  ClassificationSource source = ClassificationSource::algorithmic;
  std::optional<bool> isConfirmed{};             ///< Whether the user confirmed it; absent: was not asked.
  std::optional<double> selfReportConfidence{};  ///< 0 to 100, percent as reported; absent without a self-report by hand.
  std::optional<std::string> selfReportNotes{};
  std::optional<bool> isValidated{};  ///< Absent is not false.

  bool operator==(const StateClassification&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
