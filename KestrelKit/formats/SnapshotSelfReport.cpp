#include <KestrelKit/formats/SnapshotSelfReport.h>
#include <KestrelKit/foundation/Iso8601.h>
#include <KestrelKit/foundation/JsonForm.h>
#include <KestrelKit/foundation/Record.h>
#include <KestrelKit/model/SelfReportSource.h>

#include <charconv>
#include <cmath>
#include <cstddef>
#include <string_view>

namespace kestrel {
namespace {

/// An integer, or a finite number rounded half away from zero; absent for anything else. A finite number
/// beyond 64 bits is a programming error, unless the report is dropped for another reason or the document is
/// refused.
struct TolerantPercentage {
  using Form = JsonForm<std::optional<std::int64_t>>;

  static std::optional<std::optional<std::int64_t>> read(JsonReader& value) {
    if (value.kind() != JsonReader::Kind::number) {
      return std::optional<std::int64_t>{};
    }
    if (const auto integer = value.integer()) {
      return integer;
    }
    value.forgive();
    const auto number = value.number();
    if (!number) {
      value.forgive();
      return std::optional<std::int64_t>{};
    }
    const double rounded = std::round(*number);
    if (rounded < -0x1p63 || rounded >= 0x1p63) {
      value.stop("a confidence lies beyond 64 bits");
      return std::optional<std::int64_t>{};
    }
    return static_cast<std::int64_t>(rounded);
  }

  static void write(JsonWriter& writer, const std::optional<std::int64_t>& value) {
    Form::write(writer, value);
  }
  static bool isLeftOut(const std::optional<std::int64_t>& value) noexcept { return Form::isLeftOut(value); }
};

/// The instant in a text that has a fraction of a second: `2024-05-01T08:30:00.250Z`.
std::optional<Instant> instantWithFraction(std::string_view text) {
  constexpr std::size_t point = std::string_view("2024-05-01T08:30:00").size();
  const std::size_t end = text.find_first_not_of("0123456789", point + 1);
  if (text.size() <= point || text[point] != '.' || end == point + 1 || end == std::string_view::npos) {
    return std::nullopt;
  }
  const auto whole = instantFromIso8601(std::string(text.substr(0, point)).append(text.substr(end)));
  double fraction = 0;
  std::from_chars(text.data() + point, text.data() + end, fraction);  // below what a float holds: 0
  if (!whole) {
    return std::nullopt;
  }
  const Instant instant = *whole + Instant::duration(fraction);
  // In the last second of the year 9999 the nearest float can be the year after.
  return iso8601Text(instant) ? std::optional{instant} : std::nullopt;
}

/// Text; absent where it is no instant. A whole second is written, as everywhere.
struct TolerantInstant {
  using Form = JsonForm<std::optional<Instant>>;

  static std::optional<std::optional<Instant>> read(JsonReader& value) {
    if (value.null()) {
      return std::optional<Instant>{};
    }
    const auto text = value.text();
    if (!text) {
      return std::nullopt;
    }
    const auto instant = instantWithFraction(*text);
    return instant ? instant : instantFromIso8601(*text);
  }

  static void write(JsonWriter& writer, const std::optional<Instant>& value) { Form::write(writer, value); }
  static bool isLeftOut(const std::optional<Instant>& value) noexcept { return Form::isLeftOut(value); }
};

}  // namespace

JsonFields SnapshotSelfReport::jsonFields() {
  using R = SnapshotSelfReport;
  static constexpr JsonField fields[] = {
      field<&R::date>("date"),
      field<&R::state>("state"),
      field<&R::confidence, TolerantPercentage>("confidence"),
      field<&R::source>("source"),
      field<&R::notes>("notes"),
      field<&R::observedAt, TolerantInstant>("observedAt"),
  };
  return fields;
}

KestrelState SnapshotSelfReport::kestrelState() const { return KestrelState::fromStoredValue(state); }

bool SnapshotSelfReport::isKeyword() const noexcept {
  return source == SelfReportSource(SelfReportSource::keyword).rawValue();
}

}  // namespace kestrel
