#pragma once

#include <KestrelKit/foundation/ProgrammingError.h>

#include <array>
#include <concepts>
#include <cstddef>
#include <functional>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace kestrel {

/// One case of an enumeration and the text that stands for it.
template <class Case>
struct RawValue {
  Case value;
  std::string_view text;
};

/// What `text` is refused with where one of `allowed` is wanted: `"steps" is not one of steps_daily, …`.
/// Where one letter is another, missing or too many it ends with `; did you mean steps_daily?`.
std::string notOneOfMessage(std::string_view text, std::span<const std::string_view> allowed);

/// All cases of a raw-value enumeration in declaration order, as a contiguous range.
template <class Self>
class AllCases {
 public:
  static constexpr auto begin() noexcept { return cases().begin(); }
  static constexpr auto end() noexcept { return cases().end(); }
  static constexpr std::size_t size() noexcept { return cases().size(); }
  constexpr Self operator[](std::size_t index) const noexcept { return cases()[index]; }

 private:
  template <std::size_t... index>
  static constexpr auto made(std::index_sequence<index...>) noexcept {
    return std::array<Self, sizeof...(index)>{Self::rawValues[index].value...};
  }

  template <class Of>
  static constexpr auto made_ = made(std::make_index_sequence<std::size(Of::rawValues)>{});

  static constexpr const auto& cases() noexcept { return made_<Self>; }
};

/// The base of an enumeration whose cases carry texts, which are also their JSON form. The table `rawValues`
/// is the only list: parsing, printing, `allCases`, JSON and the message about a foreign text come from it.
///
///     class SelfReportSource : public RawEnumeration<SelfReportSource> {
///      public:
///       enum Case : std::uint8_t { manual, keyword };
///
///       static constexpr RawValue<Case> rawValues[] = {
///           {manual, "manual"},
///           {keyword, "keyword"},
///       };
///
///       constexpr SelfReportSource(Case value) noexcept : value_(value) {}
///       constexpr operator Case() const noexcept { return value_; }
///
///      private:
///       Case value_;
///     };
///
/// Values compare, switch and order as their `Case`, and hash. Any thread.
template <class Self>
class RawEnumeration {
 public:
  static constexpr AllCases<Self> allCases{};

  /// The case that `text` stands for, compared exactly; absent for any other text.
  static constexpr std::optional<Self> fromRawValue(std::string_view text) noexcept {
    for (const auto& raw : Self::rawValues) {
      if (raw.text == text) {
        return Self{raw.value};
      }
    }
    return std::nullopt;
  }

  /// The text of this case. One that the table does not list, which can only be a last one, is a programming
  /// error.
  constexpr std::string_view rawValue() const noexcept {
    static_assert(listsCasesInOrder(), "rawValues must list the cases from the first, in declaration order");
    const typename Self::Case value = static_cast<const Self&>(*this);
    const auto place = static_cast<std::size_t>(value);
    if (place >= std::size(Self::rawValues)) {
      programmingError("a case of an enumeration has no raw value");
    }
    return Self::rawValues[place].text;
  }

  /// What a text that is no raw value is refused with.
  static std::string notOneOf(std::string_view text) {
    std::array<std::string_view, std::size(Self::rawValues)> allowed;
    for (std::size_t index = 0; index < allowed.size(); ++index) {
      allowed[index] = Self::rawValues[index].text;
    }
    return notOneOfMessage(text, allowed);
  }

 private:
  friend Self;
  constexpr RawEnumeration() noexcept = default;

  static constexpr bool listsCasesInOrder() noexcept {
    std::size_t index = 0;
    for (const auto& raw : Self::rawValues) {
      if (static_cast<std::size_t>(raw.value) != index++) {
        return false;
      }
    }
    return true;
  }
};

/// A raw-value enumeration.
template <class T>
concept RawEnumerated = std::derived_from<T, RawEnumeration<T>>;

}  // namespace kestrel

template <kestrel::RawEnumerated T>
struct std::hash<T> {
  std::size_t operator()(T value) const noexcept {
    return static_cast<std::size_t>(static_cast<typename T::Case>(value));
  }
};
