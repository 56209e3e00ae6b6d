#pragma once

#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/RawEnumeration.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace kestrel {

/// One daily health value, or one mood self-report, on its way to the receiving service.
struct SyncRecord {
  /// What the value is. Units and policy stand in the signal-processing contract.
  class DataType : public RawEnumeration<DataType> {
   public:
    enum Case : std::uint8_t {
      stepsDaily,
      sleepMinutesDaily,
      hrvMsDailyAvg,
      spo2DailyAvg,
      hrRestingDailyAvg,
      moodSelfreport,
    };

    static constexpr RawValue<Case> rawValues[] = {
        {stepsDaily, "steps_daily"},
        {sleepMinutesDaily, "sleep_minutes_daily"},
        {hrvMsDailyAvg, "hrv_ms_daily_avg"},
        {spo2DailyAvg, "spo2_daily_avg"},
        {hrRestingDailyAvg, "hr_resting_daily_avg"},
        {moodSelfreport, "mood_selfreport"},
    };

    constexpr DataType(Case value) noexcept : value_(value) {}
    constexpr operator Case() const noexcept { return value_; }

   private:
    Case value_;
  };

  /// Where the value was taken.
  class Origin : public RawEnumeration<Origin> {
   public:
    enum Case : std::uint8_t { ios, watch, manual };

    static constexpr RawValue<Case> rawValues[] = {
        {ios, "ios"},
        {watch, "watch"},
        {manual, "manual"},
    };

    constexpr Origin(Case value) noexcept : value_(value) {}
    constexpr operator Case() const noexcept { return value_; }

   private:
    Case value_;
  };

  DataType dataType = DataType::stepsDaily;
  std::optional<double> value{};             ///< In `unit`; absent for what is a text.
  std::optional<std::string> stringValue{};  ///< The value of what is a text, such as a mood self-report.
  std::optional<std::string> unit{};
  Origin source = Origin::ios;
  std::string deviceId{};
  std::string sampleUuid{};  ///< Which sample of the source it is; plain text.
  Instant capturedAt{};
  std::string tzIdentifier{};  ///< The identifier of the zone in force at `capturedAt`.
  std::optional<std::map<std::string, std::string>> metadata{};

  bool operator==(const SyncRecord&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel
