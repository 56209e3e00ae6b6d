#include <KestrelKit/formats/AggregateRecordV2.h>
#include <KestrelKit/foundation/Record.h>
#include <KestrelKit/foundation/Sha256.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstddef>
#include <limits>
#include <tuple>
#include <utility>

namespace kestrel {
namespace {

using DataType = AggregateRecordV2::DataType;

/// Puts together the content of a record behind the kind of its identity, and makes that into the identity,
/// all in one piece of memory: the two begin alike but for what parts day and type.
class Identity {
 public:
  /// `room`: how many bytes the content may have beside day and type.
  Identity(std::string_view kind, std::string_view date, DataType dataType, std::size_t room) {
    const std::string_view type = dataType.rawValue();
    contentAt_ = kind.size();
    typeAt_ = contentAt_ + date.size() + 1;
    beginningEnd_ = typeAt_ + type.size();
    text_.reserve(beginningEnd_ + std::max(room, 1 + std::tuple_size_v<Sha256Digits>));
    text_.append(kind).append(date).append(1, '|').append(type);
  }

  void append(std::string_view part) { text_.append(part); }

  void appendDecimal(std::int64_t number) {
    std::array<char, std::numeric_limits<std::int64_t>::digits10 + 2> digits{};  // and a sign
    text_.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
  }

  void appendBitPattern(double value) {
    auto bits = std::bit_cast<std::uint64_t>(value);
    std::array<char, 16> digits{};
    for (std::size_t place = digits.size(); place-- > 0; bits >>= 4U) {
      digits[place] = "0123456789abcdef"[bits & 0xfU];
    }
    text_.append(digits.data(), digits.size());
  }

  void appendReplacement(std::optional<std::string_view> replacesUpstreamRecordId) {
    if (replacesUpstreamRecordId) {
      append("|replaces:");
      append(*replacesUpstreamRecordId);
    }
  }

  /// To be called once.
  std::string ofContent() {
    const Sha256Digits digits = sha256Digits(std::string_view(text_).substr(contentAt_));
    text_[typeAt_ - 1] = ':';
    text_.resize(beginningEnd_);
    text_.append(1, ':').append(digits.data(), digits.size());
    return std::move(text_);
  }

 private:
  std::string text_;
  std::size_t contentAt_ = 0;
  std::size_t typeAt_ = 0;
  std::size_t beginningEnd_ = 0;
};

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
  constexpr std::size_t numbersAndNames = 100;  // two bit patterns, a count, the names of the parts
  Identity identity("daily:", date, dataType,
                    numbersAndNames + unit.size() + replacesUpstreamRecordId.value_or("").size());
  identity.append("|");
  identity.appendBitPattern(value);
  identity.append("|");
  identity.append(unit);
  if (sampleCount) {
    identity.append("|sampleCount:");
    identity.appendDecimal(*sampleCount);
  }
  if (quality) {
    identity.append("|quality:");
    identity.appendBitPattern(*quality);
  }
  identity.appendReplacement(replacesUpstreamRecordId);
  return identity.ofContent();
}

std::string AggregateRecordV2::dailyDeletionIdentity(
    std::string_view date, DataType dataType, std::optional<std::string_view> replacesUpstreamRecordId) {
  constexpr std::size_t names = 20;
  Identity identity("daily-delete:", date, dataType, names + replacesUpstreamRecordId.value_or("").size());
  identity.append("|deleted");
  identity.appendReplacement(replacesUpstreamRecordId);
  return identity.ofContent();
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
