#pragma once

#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/RawEnumeration.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kestrel {

/// What one on-device collector computed for one day, or the deletion of such a value. Its identity comes
/// from its content: a value sent again is the same record, a changed one names the record that it replaces.
///
/// Decoding checks types and the data type only; it does not compute the identity again.
struct AggregateRecordV2 {
  /// What a daily value counts or measures. Units, ranges and policy stand in the signal-processing contract.
  class DataType : public RawEnumeration<DataType> {
   public:
    enum Case : std::uint8_t {
      motionActiveMinutesDaily,
      calendarEventCountDaily,
      calendarBusyMinutesDaily,
      calendarLateNightEventCountDaily,
      photoCountDaily,
      weatherTemperatureMaxCDaily,
      weatherTemperatureMinCDaily,
      weatherSunshineMinutesDaily,
      weatherDaylightMinutesDaily,
      weatherPrecipitationMMDaily,
      weatherCodeDaily,
      workoutCountDaily,
      workoutMinutesDaily,
      workoutTypeDiversityDaily,
      workoutLateEveningMinutesDaily,
      exerciseMinutesDaily,
      standHoursDaily,
      activeEnergyKcalDaily,
    };

    // clang-format off
    static constexpr RawValue<Case> rawValues[] = {
        {motionActiveMinutesDaily,         "motion_active_minutes_daily"},
        {calendarEventCountDaily,          "calendar_event_count_daily"},
        {calendarBusyMinutesDaily,         "calendar_busy_minutes_daily"},
        {calendarLateNightEventCountDaily, "calendar_late_night_event_count_daily"},
        {photoCountDaily,                  "photo_count_daily"},
        {weatherTemperatureMaxCDaily,      "weather_temperature_max_c_daily"},
        {weatherTemperatureMinCDaily,      "weather_temperature_min_c_daily"},
        {weatherSunshineMinutesDaily,      "weather_sunshine_minutes_daily"},
        {weatherDaylightMinutesDaily,      "weather_daylight_minutes_daily"},
        {weatherPrecipitationMMDaily,      "weather_precipitation_mm_daily"},
        {weatherCodeDaily,                 "weather_code_daily"},
        {workoutCountDaily,                "workout_count_daily"},
        {workoutMinutesDaily,              "workout_minutes_daily"},
        {workoutTypeDiversityDaily,        "workout_type_diversity_daily"},
        {workoutLateEveningMinutesDaily,   "workout_late_evening_minutes_daily"},
        {exerciseMinutesDaily,             "exercise_minutes_daily"},
        {standHoursDaily,                  "stand_hours_daily"},
        {activeEnergyKcalDaily,            "active_energy_kcal_daily"},
    };
    // clang-format on

    constexpr DataType(Case value) noexcept : value_(value) {}
    constexpr operator Case() const noexcept { return value_; }

   private:
    Case value_;
  };

  std::string upstreamRecordId{};  ///< The dailyIdentity(), or dailyDeletionIdentity() of a deletion.
  std::string date{};              ///< The day key, `yyyy-MM-dd`; see DateKey.
  Instant capturedAt{};            ///< When the collector computed it.
  DataType dataType = DataType::motionActiveMinutesDaily;
  std::optional<double> value{};                          ///< In `unit`; absent in a deletion.
  std::optional<std::string> unit{};                      ///< Absent in a deletion.
  std::optional<std::int64_t> sampleCount{};              ///< How many samples the value was computed from.
  std::optional<double> quality{};                        ///< As the collector rates it, 0 to 1.
  std::optional<std::string> replacesUpstreamRecordId{};  ///< The identity of the record it supersedes.
  std::optional<bool> deleted{};                          ///< True in a deletion, otherwise mostly absent.
  std::int64_t schemaVersion = 2;
  std::string originKind{"local_permission"};  ///< So for records made on the device.
  std::string originId{};                      ///< Which permission on the device the value was read with.

  bool operator==(const AggregateRecordV2&) const = default;

  static JsonFields jsonFields();

  /// The record of a value, with its identity.
  static AggregateRecordV2 daily(std::string_view date, Instant capturedAt, DataType dataType, double value,
                                 std::string_view unit, std::string_view originId,
                                 std::optional<std::int64_t> sampleCount = std::nullopt,
                                 std::optional<double> quality = std::nullopt,
                                 std::optional<std::string_view> replacesUpstreamRecordId = std::nullopt);

  /// The record that deletes the one it names, with its identity.
  static AggregateRecordV2 dailyDeletion(std::string_view date, Instant capturedAt, DataType dataType,
                                         std::optional<std::string_view> replacesUpstreamRecordId,
                                         std::string_view originId);

  /// `daily:`, day key, `:`, data type, `:` and, in lower-case hexadecimal, the SHA-256 of
  ///
  ///     date|dataType|value|unit|sampleCount:12|quality:value|replaces:identity
  ///
  /// in UTF-8, of which the last three parts stand there only when they are given. A value is its 64-bit
  /// pattern in 16 hexadecimal digits: what differs in the last bit has another identity, and so have 0.0
  /// and -0.0. No text is checked or normalized.
  static std::string dailyIdentity(std::string_view date, DataType dataType, double value,
                                   std::string_view unit,
                                   std::optional<std::int64_t> sampleCount = std::nullopt,
                                   std::optional<double> quality = std::nullopt,
                                   std::optional<std::string_view> replacesUpstreamRecordId = std::nullopt);

  /// `daily-delete:`, day key, `:`, data type, `:` and likewise the SHA-256 of
  ///
  ///     date|dataType|deleted|replaces:identity
  ///
  /// of which the last part stands there only when it is given.
  static std::string dailyDeletionIdentity(
      std::string_view date, DataType dataType,
      std::optional<std::string_view> replacesUpstreamRecordId = std::nullopt);

  /// The identity that this record would have without sample count, quality and replacement: the same for all
  /// records of one day, type, value and unit, and for all deletions of one day and type. Absent where a
  /// record that is no deletion lacks value or unit.
  std::optional<std::string> baseContentIdentity() const;
};

}  // namespace kestrel
