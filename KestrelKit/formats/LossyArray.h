#pragma once

#include <KestrelKit/formats/Discard.h>
#include <KestrelKit/foundation/JsonForm.h>

#include <optional>
#include <utility>
#include <vector>

namespace kestrel {

/// The form of a list of which one wrong element, whatever is wrong with it, costs itself alone; the others
/// keep their order. JsonDecoder can list what was lost. What is no list, or is not well-formed, is refused.
template <class T>
struct LossyForm {
  static std::optional<std::vector<T>> read(JsonReader& value) {
    std::vector<T> elements;
    const bool isList = value.forEachElement([&](JsonReader& element) {
      if (!readOnto(elements, element)) {
        JsonForm<Discard>::read(element);
      }
    });
    if (!isList) {
      return std::nullopt;
    }
    return elements;
  }

  static void write(JsonWriter& writer, const std::vector<T>& elements) {
    JsonForm<std::vector<T>>::write(writer, elements);
  }
};

/// A list that drops the elements that do not fit; in JSON a plain list.
template <class T>
struct LossyArray {
  std::vector<T> elements{};

  bool operator==(const LossyArray&) const = default;
};

template <class T>
struct JsonForm<LossyArray<T>> {
  static std::optional<LossyArray<T>> read(JsonReader& value) {
    auto elements = LossyForm<T>::read(value);
    if (!elements) {
      return std::nullopt;
    }
    return LossyArray<T>{*std::move(elements)};
  }

  static void write(JsonWriter& writer, const LossyArray<T>& array) {
    LossyForm<T>::write(writer, array.elements);
  }
};

}  // namespace kestrel
