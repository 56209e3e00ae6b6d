#pragma once

#include <KestrelKit/foundation/RawEnumeration.h>

#include <cstdint>

namespace kestrel {

/// Where the classification of a day comes from: the user's own report, made by hand or found by its keyword,
/// or the classifier.
class ClassificationSource : public RawEnumeration<ClassificationSource> {
 public:
  enum Case : std::uint8_t { manual, keyword, algorithmic };

  static constexpr RawValue<Case> rawValues[] = {
      {manual, "manual"},
      {keyword, "keyword"},
      {algorithmic, "algorithmic"},
  };

  constexpr ClassificationSource(Case value) noexcept : value_(value) {}
  constexpr operator Case() const noexcept { return value_; }

 private:
  Case value_;
};

}  // namespace kestrel
