#pragma once

#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/JsonForm.h>
#include <KestrelKit/foundation/JsonReader.h>
#include <KestrelKit/foundation/JsonWriter.h>
#include <KestrelKit/foundation/RawEnumeration.h>
#include <KestrelKit/foundation/Uuid.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kestrel::testing {

/// An enumeration whose texts differ from its names.
class Habitat : public RawEnumeration<Habitat> {
 public:
  enum Case : std::uint8_t { openSea, tidalFlat, saltMarsh };

  static constexpr RawValue<Case> rawValues[] = {
      {openSea, "open_sea"},
      {tidalFlat, "tidal flat"},
      {saltMarsh, "Salt Marsh"},
  };

  constexpr Habitat(Case value) noexcept : value_(value) {}
  constexpr operator Case() const noexcept { return value_; }

 private:
  Case value_;
};

/// A value whose absence has two reasons: no key, or `null`.
struct Depth {
  enum class Kind { notProvided, missing, measured } kind = Kind::notProvided;
  double metres = 0;

  bool operator==(const Depth&) const = default;
};

/// A record inside a record.
struct Ring {
  std::string date;
  std::optional<std::int64_t> number{};
  std::vector<Ring> inner{};

  bool operator==(const Ring&) const = default;

  static JsonFields jsonFields();
};

/// A made-up record with every form that a field can have.
struct Specimen {
  std::string name;
  std::int64_t count = 0;
  double weight = 0;
  bool alive = false;
  Habitat habitat = Habitat::openSea;
  Instant seenAt;
  Uuid identity{};
  std::vector<std::string> notes;
  std::vector<std::int64_t> hours;
  std::map<std::string, std::vector<std::string>> emissions;
  Ring ring;
  std::vector<Ring> rings;
  Depth depth;
  std::optional<std::string> nickname;
  std::optional<std::int64_t> legs;
  std::optional<double> length;
  std::optional<bool> tagged;
  std::optional<Habitat> origin;
  std::optional<Instant> lastSeenAt;
  std::optional<Uuid> parent;
  std::optional<Ring> scar;
  std::optional<std::vector<double>> samples;
  std::optional<std::map<std::string, std::string>> metadata;
  std::vector<Ring> lossy{};  ///< Read as a list that drops what does not fit.

  bool operator==(const Specimen&) const = default;

  static JsonFields jsonFields();
};

}  // namespace kestrel::testing

template <>
struct kestrel::JsonForm<kestrel::testing::Depth> {
  static std::optional<testing::Depth> read(JsonReader& value);
  static void write(JsonWriter& writer, const testing::Depth& depth);
  static bool isLeftOut(const testing::Depth& depth) noexcept;
};
