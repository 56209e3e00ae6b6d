#include <KestrelKit/formats/AggregateRecordV2.h>
#include <KestrelKit/foundation/Record.h>
#include <KestrelKit/foundation/Sha256.h>

#include <array>
#include <bit>
#include <charconv>
#include <cstddef>
#include <limits>

namespace kestrel {
namespace {

using DataType = AggregateRecordV2::DataType;

void appendDecimal(std::string& text, std::int64_t number) {
  std::array<char, std::numeric_limits<std::int64_t>::digits10 + 2> digits{};  // and a sign
  text.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

void appendBitPattern(std::string& text, double value) {
  constexpr char digits[] = "0123456789abcdef";
  const auto bits = std::bit_cast<std::uint64_t>(value);
  for (int shift = 60; shift >= 0; shift -= 4) {
    text += digits[bits >> shift & 0xf];
  }
}

void appendReplacement(std::string& content, std::optional<std::string_view> replacesUpstreamRecordId) {
  if (replacesUpstreamRecordId) {
    content.append("|replaces:").append(*replacesUpstreamRecordId);
  }
}

std::string identity(std::string_view kind, std::string_view date, std::string_view dataType,
                     std::string_view content) {
  const Sha256Digits digits = sha256Digits(content);
  std::string text;
  text.reserve(kind.size() + 1 + date.size() + 1 + dataType.size() + 1 + digits.size());
  text.append(kind).append(1, ':').append(date).append(1, ':').append(dataType).append(1, ':');
  return text.append(digits.data(), digits.size());
}

}  // namespace

JsonFields AggregateRecordV2::jsonFields() {
  using R = AggregateRecordV2;
  static constexpr JsonField fields[] = {
      field<&R::upstreamRecordId>("upstreamRecordId"),
      field<&R::date>("date"),
      field<&R::capturedAt>("capturedAt"),
      field<&R::dataType>("dataType"),
      field<&R::value>("value"),
      field<&R::unit>("unit"),
      field<&R::sampleCount>("sampleCount"),
      field<&R::quality>("quality"),
      field<&R::replacesUpstreamRecordId>("replacesUpstreamRecordId"),
      field<&R::deleted>("deleted"),
      field<&R::schemaVersion>("schemaVersion"),
      field<&R::originKind>("originKind"),
      field<&R::originId>("originId"),
  };
  return fields;
}

AggregateRecordV2 AggregateRecordV2::daily(std::string_view date, Instant capturedAt, DataType dataType,
                                           double value, std::string_view unit, std::string_view originId,
                                           std::optional<std::int64_t> sampleCount,
                                           std::optional<double> quality,
                                           std::optional<std::string_view> replacesUpstreamRecordId) {
  AggregateRecordV2 record{.upstreamRecordId = dailyIdentity(date, dataType, value, unit, sampleCount,
                                                             quality, replacesUpstreamRecordId),
                           .date = std::string(date),
                           .capturedAt = capturedAt,
                           .dataType = dataType,
                           .value = value,
                           .unit = std::string(unit),
                           .sampleCount = sampleCount,
                           .quality = quality,
                           .originId = std::string(originId)};
  record.replacesUpstreamRecordId = replacesUpstreamRecordId;
  return record;
}

AggregateRecordV2 AggregateRecordV2::dailyDeletion(std::string_view date, Instant capturedAt,
                                                   DataType dataType,
                                                   std::optional<std::string_view> replacesUpstreamRecordId,
                                                   std::string_view originId) {
  AggregateRecordV2 record{
      .upstreamRecordId = dailyDeletionIdentity(date, dataType, replacesUpstreamRecordId),
      .date = std::string(date),
      .capturedAt = capturedAt,
      .dataType = dataType,
      .deleted = true,
      .originId = std::string(originId)};
  record.replacesUpstreamRecordId = replacesUpstreamRecordId;
  return record;
}

std::string AggregateRecordV2::dailyIdentity(std::string_view date, DataType dataType, double value,
                                             std::string_view unit, std::optional<std::int64_t> sampleCount,
                                             std::optional<double> quality,
                                             std::optional<std::string_view> replacesUpstreamRecordId) {
  const std::string_view type = dataType.rawValue();
  constexpr std::size_t numbersAndNames = 100;  // two bit patterns, a count, the names of the parts
  std::string content;
  content.reserve(date.size() + type.size() + unit.size() + replacesUpstreamRecordId.value_or("").size() +
                  numbersAndNames);
  content.append(date).append(1, '|').append(type).append(1, '|');
  appendBitPattern(content, value);
  content.append(1, '|').append(unit);
  if (sampleCount) {
    content.append("|sampleCount:");
    appendDecimal(content, *sampleCount);
  }
  if (quality) {
    content.append("|quality:");
    appendBitPattern(content, *quality);
  }
  appendReplacement(content, replacesUpstreamRecordId);
  return identity("daily", date, type, content);
}

std::string AggregateRecordV2::dailyDeletionIdentity(
    std::string_view date, DataType dataType, std::optional<std::string_view> replacesUpstreamRecordId) {
  const std::string_view type = dataType.rawValue();
  std::string content;
  content.append(date).append(1, '|').append(type).append("|deleted");
  appendReplacement(content, replacesUpstreamRecordId);
  return identity("daily-delete", date, type, content);
}

std::optional<std::string> AggregateRecordV2::baseContentIdentity() const {
  if (deleted.value_or(false)) {
    return dailyDeletionIdentity(date, dataType);
  }
  if (!value || !unit) {
    return std::nullopt;
  }
  return dailyIdentity(date, dataType, *value, *unit);
}

}  // namespace kestrel
