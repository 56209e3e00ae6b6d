#pragma once

#include <KestrelKit/foundation/RawEnumeration.h>

#include <cstdint>

namespace kestrel {

/// How the values inside one period are combined.
class TrendAggregation : public RawEnumeration<TrendAggregation> {
 public:
  enum Case : std::uint8_t {
    sum,
    average,  ///< Over the values, not over the days.
  };

  static constexpr RawValue<Case> rawValues[] = {
      {sum, "sum"},
      {average, "average"},
  };

  constexpr TrendAggregation(Case value) noexcept : value_(value) {}
  constexpr operator Case() const noexcept { return value_; }

 private:
  Case value_;
};

}  // namespace kestrel
