#pragma once

#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/JsonReader.h>
#include <KestrelKit/foundation/JsonWriter.h>
#include <KestrelKit/foundation/RawEnumeration.h>
#include <KestrelKit/foundation/Uuid.h>

#include <concepts>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace kestrel {

/// How a value of type T stands in JSON: two functions,
///
///     static std::optional<T> read(JsonReader& value);        // absent: noted in the reader
///     static void write(JsonWriter& writer, const T& value);
///
/// another one where T is large, which the elements of a list are read with,
///
///     static bool readInto(JsonReader& value, T& fresh);      // false: noted in the reader
///
/// and one more where a member of that type may be left out of its object,
///
///     static bool isLeftOut(const T& value);
///
/// in which case a member whose key is absent keeps the value that the record is made with. A type with a
/// form of its own specializes this template; a field that differs from its type names a form of its own
/// (field() in Record.h).
template <class T>
struct JsonForm;

template <>
struct JsonForm<bool> {
  static std::optional<bool> read(JsonReader& value) { return value.boolean(); }
  static void write(JsonWriter& writer, bool value) { writer.boolean(value); }
};

template <>
struct JsonForm<std::int64_t> {
  static std::optional<std::int64_t> read(JsonReader& value) { return value.integer(); }
  static void write(JsonWriter& writer, std::int64_t value) { writer.integer(value); }
};

template <>
struct JsonForm<double> {
  static std::optional<double> read(JsonReader& value) { return value.number(); }
  static void write(JsonWriter& writer, double value) { writer.number(value); }
};

template <>
struct JsonForm<std::string> {
  static std::optional<std::string> read(JsonReader& value);
  static void write(JsonWriter& writer, std::string_view value) { writer.text(value); }
};

/// As the coder's date strategy has it.
template <>
struct JsonForm<Instant> {
  static std::optional<Instant> read(JsonReader& value);
  static void write(JsonWriter& writer, Instant value);
};

template <>
struct JsonForm<Uuid> {
  static std::optional<Uuid> read(JsonReader& value);
  static void write(JsonWriter& writer, const Uuid& value);
};

/// The raw value; strict.
template <RawEnumerated T>
struct JsonForm<T> {
  static std::optional<T> read(JsonReader& value) {
    const auto text = value.text();
    if (!text) {
      return std::nullopt;
    }
    const auto result = T::fromRawValue(*text);
    if (!result) {
      return value.refuse(T::notOneOf(*text));
    }
    return result;
  }

  static void write(JsonWriter& writer, T value) { writer.text(value.rawValue()); }
};

/// Absent and `null` are absent; what is absent is not written, or is `null` in a list.
template <class T>
struct JsonForm<std::optional<T>> {
  static std::optional<std::optional<T>> read(JsonReader& value) {
    if (value.null()) {
      return std::optional<T>{};
    }
    auto read = JsonForm<T>::read(value);
    if (!read) {
      return std::nullopt;
    }
    return read;
  }

  static void write(JsonWriter& writer, const std::optional<T>& value) {
    if (value) {
      JsonForm<T>::write(writer, *value);
    } else {
      writer.null();
    }
  }

  static bool isLeftOut(const std::optional<T>& value) noexcept { return !value; }
};

/// Adds the value to the end of `list`, without moving it there if its form can help it; false, and noted,
/// and nothing added, when it is wrong.
template <class T>
bool readOnto(std::vector<T>& list, JsonReader& value) {
  if constexpr (requires(T& fresh) { JsonForm<T>::readInto(value, fresh); }) {
    if (!JsonForm<T>::readInto(value, list.emplace_back())) {
      list.pop_back();
      return false;
    }
    return true;
  } else {
    auto read = JsonForm<T>::read(value);
    if (!read) {
      return false;
    }
    list.push_back(*std::move(read));
    return true;
  }
}

/// A list; one wrong element costs the list.
template <class T>
struct JsonForm<std::vector<T>> {
  static std::optional<std::vector<T>> read(JsonReader& value) {
    if constexpr (std::same_as<T, std::int64_t>) {
      return value.integers();
    } else {
      std::vector<T> list;
      if constexpr (std::is_arithmetic_v<T>) {
        list.reserve(value.scalarsInList());
      }
      if (!value.forEachElement([&](JsonReader& element) { readOnto(list, element); })) {
        return std::nullopt;
      }
      return list;
    }
  }

  static void write(JsonWriter& writer, const std::vector<T>& list) {
    writer.openList();
    for (const auto& element : list) {
      JsonForm<T>::write(writer, element);
    }
    writer.closeList();
  }
};

/// An object with free keys, written in ascending order of their code points, which is the order of their
/// UTF-8.
template <class T>
struct JsonForm<std::map<std::string, T>> {
  static std::optional<std::map<std::string, T>> read(JsonReader& value) {
    std::map<std::string, T> map;
    const bool isWhole = value.forEachMember([&](std::string_view key, JsonReader& member) {
      if (auto read = JsonForm<T>::read(member)) {
        map.insert_or_assign(std::string{key}, std::move(*read));
      }
    });
    if (!isWhole) {
      return std::nullopt;
    }
    return map;
  }

  static void write(JsonWriter& writer, const std::map<std::string, T>& map) {
    writer.openObject();
    for (const auto& [key, value] : map) {
      writer.key(key);
      JsonForm<T>::write(writer, value);
    }
    writer.closeObject();
  }
};

}  // namespace kestrel
