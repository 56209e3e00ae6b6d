#pragma once

#include <KestrelKit/foundation/JsonForm.h>

#include <cstdint>
#include <optional>

namespace kestrel {

/// The heart-rate variability of one day, or the reason why there is none. Only `missing` lets a classifier
/// hold an elevated verdict back: a source that never supplies the value says nothing about the day.
class HrvInput {
 public:
  /// A measured value, in the unit of its source.
  static constexpr HrvInput measured(double value) noexcept { return {Case::measured, value}; }

  static const HrvInput notProvided;  ///< The source does not supply it at all.
  static const HrvInput missing;      ///< The source supplies it, but recorded none for this day.

  /// The measured value; absent in both other cases.
  constexpr std::optional<double> value() const noexcept {
    return case_ == Case::measured ? std::optional{value_} : std::nullopt;
  }

  bool operator==(const HrvInput&) const = default;

 private:
  enum class Case : std::uint8_t { measured, notProvided, missing };

  constexpr HrvInput(Case which, double value) noexcept : case_(which), value_(value) {}

  Case case_;
  double value_;  ///< 0 unless measured.
};

inline constexpr HrvInput HrvInput::notProvided{Case::notProvided, 0};
inline constexpr HrvInput HrvInput::missing{Case::missing, 0};

/// Measured: the number. Missing: `null`. Not provided: no key; so it is for the member of an object, and in
/// a list it is `null`, too.
template <>
struct JsonForm<HrvInput> {
  static std::optional<HrvInput> read(JsonReader& value);
  static void write(JsonWriter& writer, const HrvInput& input);
  static bool isLeftOut(const HrvInput& input) noexcept { return input == HrvInput::notProvided; }
};

}  // namespace kestrel
