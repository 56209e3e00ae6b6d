#pragma once

#include <KestrelKit/foundation/SharedDefaults.h>

#include <functional>
#include <map>
#include <mutex>
#include <string>

namespace kestrel {

/// Shared defaults of one process, held in memory. Any thread.
class MemoryDefaults final : public SharedDefaults {
 public:
  std::optional<PropertyValue> value(std::string_view key) const override;
  bool write(std::span<const Change> changes) override;
  bool update(std::string_view key, const Update& update) override;

 private:
  std::optional<PropertyValue> stored(std::string_view key) const;
  bool make(std::span<const Change> changes);

  mutable std::mutex mutex_;
  std::map<std::string, PropertyValue, std::less<>> values_;
};

}  // namespace kestrel
