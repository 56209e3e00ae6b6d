#pragma once

#include <KestrelKit/formats/AggregateRecordV2.h>
#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/RawEnumeration.h>
#include <KestrelKit/foundation/Uuid.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kestrel {

/// What one collector on a device computed, on its way to the receiving service.
struct AggregateBatchV2 {
  /// What the collector reads.
  class SourceType : public RawEnumeration<SourceType> {
   public:
    enum Case : std::uint8_t { appleHealth, motionActivity, calendar, photoActivity, weather };

    // clang-format off
    static constexpr RawValue<Case> rawValues[] = {
        {appleHealth,    "apple_health"},
        {motionActivity, "motion_activity"},
        {calendar,       "calendar"},
        {photoActivity,  "photo_activity"},
        {weather,        "weather"},
    };
    // clang-format on

    constexpr SourceType(Case value) noexcept : value_(value) {}
    constexpr operator Case() const noexcept { return value_; }

   private:
    Case value_;
  };

  Uuid batchId{};
  SourceType sourceType = SourceType::appleHealth;
  std::string sourceInstanceKey{};  ///< The collecting source; what is erased is erased by it.
  std::string platform{};           ///< The kind of device: `ios`, `watchos` or `macos`.
  std::string capturedTimezone{};   ///< The identifier of the zone in force when the batch was captured.
  std::vector<AggregateRecordV2> records{};

  bool operator==(const AggregateBatchV2&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
