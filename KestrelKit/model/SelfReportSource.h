#pragma once

#include <KestrelKit/foundation/RawEnumeration.h>

#include <cstdint>

namespace kestrel {

/// How a self-report was made: by hand, or found by its keyword.
class SelfReportSource : public RawEnumeration<SelfReportSource> {
 public:
  enum Case : std::uint8_t { manual, keyword };

  static constexpr RawValue<Case> rawValues[] = {
      {manual, "manual"},
      {keyword, "keyword"},
  };

  constexpr SelfReportSource(Case value) noexcept : value_(value) {}
  constexpr operator Case() const noexcept { return value_; }

 private:
  Case value_;
};

}  // namespace kestrel
