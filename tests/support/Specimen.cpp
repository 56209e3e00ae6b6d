#include <KestrelKit/foundation/Record.h>
#include <support/Specimen.h>

#include <utility>

namespace kestrel {

using testing::Depth;

std::optional<Depth> JsonForm<Depth>::read(JsonReader& value) {
  if (value.null()) {
    return Depth{.kind = Depth::Kind::missing};
  }
  const auto metres = value.number();
  if (!metres) {
    return std::nullopt;
  }
  return Depth{.kind = Depth::Kind::measured, .metres = *metres};
}

void JsonForm<Depth>::write(JsonWriter& writer, const Depth& depth) {
  if (depth.kind == Depth::Kind::measured) {
    writer.number(depth.metres);
  } else {
    writer.null();
  }
}

bool JsonForm<Depth>::isLeftOut(const Depth& depth) noexcept {
  return depth.kind == Depth::Kind::notProvided;
}

namespace testing {
namespace {

struct LossyRings {
  static std::optional<std::vector<Ring>> read(JsonReader& value) {
    std::vector<Ring> rings;
    const bool isList = value.forEachElement([&](JsonReader& element) {
      if (auto ring = JsonForm<Ring>::read(element)) {
        rings.push_back(std::move(*ring));
      } else {
        element.drop();
      }
    });
    if (!isList) {
      return std::nullopt;
    }
    return rings;
  }

  static void write(JsonWriter& writer, const std::vector<Ring>& rings) {
    JsonForm<std::vector<Ring>>::write(writer, rings);
  }

  static bool isLeftOut(const std::vector<Ring>& rings) noexcept { return rings.empty(); }
};

}  // namespace

JsonFields Ring::jsonFields() {
  using R = Ring;
  static constexpr JsonField fields[] = {
      field<&R::date>("date"),
      field<&R::number>("ring_number"),
      field<&R::inner>("inner"),
  };
  return fields;
}

JsonFields Specimen::jsonFields() {
  using R = Specimen;
  static constexpr JsonField fields[] = {
      field<&R::name>("name"),
      field<&R::count>("total_count"),
      field<&R::weight>("weight"),
      field<&R::alive>("alive"),
      field<&R::habitat>("habitat"),
      field<&R::seenAt>("seenAt"),
      field<&R::identity>("identity"),
      field<&R::notes>("notes"),
      field<&R::hours>("hours"),
      field<&R::emissions>("emissions"),
      field<&R::ring>("ring"),
      field<&R::rings>("rings"),
      field<&R::depth>("depth"),
      field<&R::nickname>("nickname"),
      field<&R::legs>("legs"),
      field<&R::length>("length"),
      field<&R::tagged>("tagged"),
      field<&R::origin>("origin"),
      field<&R::lastSeenAt>("last_seen_at"),
      field<&R::parent>("parent"),
      field<&R::scar>("scar"),
      field<&R::samples>("samples"),
      field<&R::metadata>("metadata"),
      field<&R::lossy, LossyRings>("lossy"),
  };
  return fields;
}

}  // namespace testing
}  // namespace kestrel
