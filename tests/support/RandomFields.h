#pragma once

#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/Uuid.h>

#include <rapidcheck.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// Random values of the fields that records are made of: of all that JSON can carry.

namespace kestrel::testing {

/// A list of none to some elements.
template <class T>
rc::Gen<std::vector<T>> listOf(rc::Gen<T> elements) {
  return rc::gen::mapcat(rc::gen::inRange<std::size_t>(0, 6), [elements](std::size_t count) {
    return rc::gen::container<std::vector<T>>(count, elements);
  });
}

/// Text of none to some pieces, of which each can go wrong in its own way.
inline rc::Gen<std::string> anyText() {
  const auto piece =
      rc::gen::element<std::string>("", "a", "2024-05-01", "\"", "\\", "/", "\n", "\t", "\x01", "\x7f", "é",
                                    "\u2028", "⇊", "😀", "a text longer than a short one");
  return rc::gen::map(listOf(piece), [](const std::vector<std::string>& pieces) {
    std::string text;
    for (const std::string& each : pieces) {
      text += each;
    }
    return text;
  });
}

/// Any finite float, by its bits, and often one at an edge.
inline rc::Gen<double> anyFloat() {
  const auto byBits =
      rc::gen::suchThat(rc::gen::map(rc::gen::arbitrary<std::uint64_t>(),
                                     [](std::uint64_t bits) { return std::bit_cast<double>(bits); }),
                        [](double value) { return std::isfinite(value); });
  return rc::gen::oneOf(
      byBits, rc::gen::element(0.0, -0.0, 0.1, 1.0, -1.5, 1e15, 1e-6, 5e-324, 1.7976931348623157e308));
}

/// Any instant that ISO 8601 holds without loss: whole seconds of the years 1 to 9999.
inline rc::Gen<Instant> anyInstant() {
  return rc::gen::map(
      rc::gen::inRange<std::int64_t>(-63'113'904'000, 252'423'993'600),
      [](std::int64_t seconds) { return instantSinceReferenceDate(static_cast<double>(seconds)); });
}

inline rc::Gen<Uuid> anyUuid() {
  return rc::gen::map(
      rc::gen::container<std::vector<std::uint8_t>>(Uuid::static_size(), rc::gen::arbitrary<std::uint8_t>()),
      [](const std::vector<std::uint8_t>& bytes) {
        Uuid uuid{};
        std::ranges::copy(bytes, uuid.begin());
        return uuid;
      });
}

/// Any case of a raw-value enumeration.
template <class Enumeration>
rc::Gen<Enumeration> anyCase() {
  return rc::gen::map(rc::gen::inRange<std::size_t>(0, Enumeration::allCases.size()),
                      [](std::size_t index) { return Enumeration::allCases[index]; });
}

/// A value of `values`, or none.
template <class T>
rc::Gen<std::optional<T>> orNone(rc::Gen<T> values) {
  return rc::gen::oneOf(rc::gen::just(std::optional<T>()), rc::gen::map(std::move(values), [](T value) {
                          return std::optional<T>(std::move(value));
                        }));
}

/// A map of none to some texts.
template <class Map>
rc::Gen<Map> mapOf(rc::Gen<typename Map::mapped_type> values) {
  return rc::gen::map(listOf(rc::gen::pair(anyText(), std::move(values))),
                      [](const auto& entries) { return Map(entries.begin(), entries.end()); });
}

}  // namespace kestrel::testing
