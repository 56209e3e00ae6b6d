#pragma once

#include <KestrelKit/foundation/PropertyValue.h>

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <variant>

namespace kestrel {

/// Small values under keys that several stores, threads and, where they are kept in a file, processes share.
///
/// Keys and texts are any bytes. A date may be infinite; one that is not a number cannot be kept, and writing
/// it fails. Nothing is kept half: what a call writes is there as a whole, or not at all.
///
/// Any thread.
class SharedDefaults {
 public:
  /// What becomes of a key.
  struct Change {
    std::string_view key;
    std::optional<PropertyValue> value;  ///< Absent: the key is removed.
  };

  /// What a key is to have, given what it has; absent: what it has stays.
  using Update = std::function<std::optional<PropertyValue>(const std::optional<PropertyValue>& stored)>;

  virtual ~SharedDefaults() = default;

  /// What was written last under `key`, by whomever; absent where nothing was, or where it cannot be read.
  virtual std::optional<PropertyValue> value(std::string_view key) const = 0;

  /// Makes all of `changes`, or none; says whether they were made.
  virtual bool write(std::span<const Change> changes) = 0;

  /// Reads `key`, asks `update` and writes what it gives, and nobody else writes in between. Says whether
  /// what was asked for was done; where the key cannot be reserved, `update` is not asked. It must not call
  /// these defaults.
  virtual bool update(std::string_view key, const Update& update) = 0;

  /// What stands under `key`, if it is a T: text, an Instant, or Data.
  template <class T>
  std::optional<T> get(std::string_view key) const {
    std::optional<PropertyValue> stored = value(key);
    T* const held = stored ? std::get_if<T>(&*stored) : nullptr;
    return held ? std::optional(std::move(*held)) : std::nullopt;
  }

  /// The process's standard defaults, which are held in memory and gone when it ends.
  static const std::shared_ptr<SharedDefaults>& standard();
};

}  // namespace kestrel
