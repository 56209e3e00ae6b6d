#include <KestrelKit/foundation/JsonDecoder.h>
#include <KestrelKit/foundation/JsonEncoder.h>
#include <KestrelKit/foundation/Record.h>
#include <support/Specimen.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

using testing::Depth;
using testing::Habitat;
using testing::Ring;
using testing::Specimen;

constexpr JsonEncoder encoder{DateStrategy::iso8601};
constexpr JsonDecoder decoder{DateStrategy::iso8601};

// Every required field, in the order of the declaration.
const std::vector<std::pair<std::string, std::string>> requiredMembers = {
    {"name", R"("Äsche")"},
    {"total_count", "3"},
    {"weight", "0.5"},
    {"alive", "true"},
    {"habitat", R"("tidal flat")"},
    {"seenAt", R"("2024-05-01T08:30:00Z")"},
    {"identity", R"("01234567-89AB-CDEF-0123-456789ABCDEF")"},
    {"notes", R"(["a","b"])"},
    {"hours", "[1,-2]"},
    {"emissions", R"({"ios":["x","y"],"none":[]})"},
    {"ring", R"({"date":"d","inner":[]})"},
    {"rings", R"([{"date":"e","ring_number":1,"inner":[{"date":"f","inner":[]}]}])"},
};

const std::vector<std::pair<std::string, std::string>> optionalMembers = {
    {"depth", "42.5"},
    {"nickname", R"("")"},
    {"legs", "0"},
    {"length", "-0.0"},
    {"tagged", "false"},
    {"origin", R"("Salt Marsh")"},
    {"last_seen_at", R"("2001-01-01T00:00:00Z")"},
    {"parent", R"("FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF")"},
    {"scar", R"({"date":"","inner":[]})"},
    {"samples", "[1,2.5]"},
    {"metadata", R"({"a":"1","b":""})"},
    {"lossy", R"([{"date":"g","inner":[]}])"},
};

std::string objectOf(const std::vector<std::pair<std::string, std::string>>& members) {
  std::string json;
  for (const auto& [key, value] : members) {
    json += (json.empty() ? "\"" : ",\"") + key + "\":" + value;
  }
  return '{' + json + '}';
}

std::vector<std::pair<std::string, std::string>> allMembers() {
  auto members = requiredMembers;
  members.insert(members.end(), optionalMembers.begin(), optionalMembers.end());
  return members;
}

std::string objectWith(const std::string& key, const std::string& value) {
  auto members = allMembers();
  std::ranges::find(members, key, &std::pair<std::string, std::string>::first)->second = value;
  return objectOf(members);
}

std::string errorOf(const std::string& json) {
  const auto specimen = decoder.decode<Specimen>(json);
  return specimen ? "none" : specimen.error().text();
}

Specimen decoded(const std::string& json) {
  auto specimen = decoder.decode<Specimen>(json);
  EXPECT_TRUE(specimen) << specimen.error().text();
  return specimen.value_or(Specimen{});
}

std::string encoded(const Specimen& specimen) { return encoder.encode(specimen).value_or("refused"); }

TEST(Record, readsEveryFormOfField) {
  const Specimen specimen = decoded(objectOf(allMembers()));
  const Specimen expected{
      .name = "Äsche",
      .count = 3,
      .weight = 0.5,
      .alive = true,
      .habitat = Habitat::tidalFlat,
      .seenAt = instantSinceReferenceDate(736'245'000),  // 8521 days and 8.5 hours
      .identity = *uuidFromText("01234567-89AB-CDEF-0123-456789ABCDEF"),
      .notes = {"a", "b"},
      .hours = {1, -2},
      .emissions = {{"ios", {"x", "y"}}, {"none", {}}},
      .ring = {.date = "d"},
      .rings = {{.date = "e", .number = 1, .inner = {{.date = "f"}}}},
      .depth = {.kind = Depth::Kind::measured, .metres = 42.5},
      .nickname = "",
      .legs = 0,
      .length = -0.0,
      .tagged = false,
      .origin = Habitat::saltMarsh,
      .lastSeenAt = Instant{},
      .parent = *uuidFromText("ffffffff-ffff-ffff-ffff-ffffffffffff"),
      .scar = Ring{},
      .samples = std::vector{1.0, 2.5},
      .metadata = std::map<std::string, std::string>{{"a", "1"}, {"b", ""}},
      .lossy = {{.date = "g"}},
  };
  EXPECT_EQ(specimen, expected);
}

TEST(Record, writesKeysInDeclarationOrderAndGivesBackWhatItRead) {
  EXPECT_EQ(encoded(decoded(objectOf(allMembers()))), objectOf(allMembers()));
  auto reversed = allMembers();
  std::ranges::reverse(reversed);
  EXPECT_EQ(encoded(decoded(objectOf(reversed))), objectOf(allMembers()));
}

TEST(Record, leavesOutWhatIsAbsent) {
  EXPECT_EQ(encoded(decoded(objectOf(requiredMembers))), objectOf(requiredMembers));
}

TEST(Record, readsNullInAnOptionalFieldAsAbsent) {
  for (const auto& [key, value] : optionalMembers) {
    if (key == "depth" || key == "lossy") {
      continue;
    }
    auto members = requiredMembers;
    members.emplace_back(key, "null");
    EXPECT_EQ(encoded(decoded(objectOf(members))), objectOf(requiredMembers)) << key;
  }
}

TEST(Record, keepsThreeWaysOfAThreeWayField) {
  EXPECT_EQ(decoded(objectOf(requiredMembers)).depth.kind, Depth::Kind::notProvided);
  auto members = requiredMembers;
  members.emplace_back("depth", "null");
  EXPECT_EQ(decoded(objectOf(members)).depth.kind, Depth::Kind::missing);
  EXPECT_EQ(encoded(decoded(objectOf(members))), objectOf(members));
  members.back().second = "42.5";
  EXPECT_EQ(decoded(objectOf(members)).depth, (Depth{.kind = Depth::Kind::measured, .metres = 42.5}));
  EXPECT_EQ(encoded(decoded(objectOf(members))), objectOf(members));
}

TEST(Record, missesEachRequiredFieldByName) {
  for (std::size_t index = 0; index < requiredMembers.size(); ++index) {
    auto members = requiredMembers;
    members.erase(members.begin() + static_cast<std::ptrdiff_t>(index));
    EXPECT_EQ(errorOf(objectOf(members)), requiredMembers[index].first + ": is missing");
  }
}

TEST(Record, refusesNullInARequiredField) {
  for (const auto& [key, value] : requiredMembers) {
    EXPECT_TRUE(errorOf(objectWith(key, "null")).starts_with(key + ": expected ")) << key;
    EXPECT_TRUE(errorOf(objectWith(key, "null")).ends_with(", found null")) << key;
  }
}

TEST(Record, namesThePathOfWhatIsWrong) {
  const std::tuple<std::string, std::string, std::string> rows[] = {
      {"name", "7", "name: expected text, found a number"},
      {"total_count", "1.5", "total_count: 1.5 is not an integer of 64 bits"},
      {"total_count", "true", "total_count: expected an integer, found a boolean"},
      {"weight", "1e400", "weight: 1e400 is too large for a 64-bit float"},
      {"weight", "\"1\"", "weight: expected a number, found text"},
      {"alive", "1", "alive: expected a boolean, found a number"},
      {"habitat", "\"reef\"", "habitat: \"reef\" is not one of open_sea, tidal flat, Salt Marsh"},
      {"habitat", "1", "habitat: expected text, found a number"},
      {"origin", "\"Open_sea\"",
       "origin: \"Open_sea\" is not one of open_sea, tidal flat, Salt Marsh; did you mean open_sea?"},
      {"seenAt", "\"2024-05-01\"", "seenAt: \"2024-05-01\" is not an instant such as 2024-05-01T08:30:00Z"},
      {"identity", "\"x\"", "identity: \"x\" is not a UUID"},
      {"notes", R"(["a",{}])", "notes[1]: expected text, found an object"},
      {"notes", R"([null])", "notes[0]: expected text, found null"},
      {"hours", "[1,2,[]]", "hours[2]: expected an integer, found a list"},
      {"emissions", R"({"ios":["a",1]})", "emissions.ios[1]: expected text, found a number"},
      {"emissions", R"({"the \"first\".":1})",
       "emissions[\"the \\\"first\\\".\"]: expected a list, found a number"},
      {"ring", "{}", "ring.date: is missing"},
      {"ring", "[]", "ring: expected an object, found a list"},
      {"rings", R"([{"date":"a","inner":[{"date":"b","inner":[]},{"date":1,"inner":[]}]}])",
       "rings[0].inner[1].date: expected text, found a number"},
      {"scar", "{\"date\":\"d\"}", "scar.inner: is missing"},
      {"samples", "[null]", "samples[0]: expected a number, found null"},
      {"metadata", R"({"2024-05-01":null})", "metadata[\"2024-05-01\"]: expected text, found null"},
      {"depth", "\"deep\"", "depth: expected a number, found text"},
      {"lossy", "{}", "lossy: expected a list, found an object"},
  };
  for (const auto& [key, value, error] : rows) {
    EXPECT_EQ(errorOf(objectWith(key, value)), error);
  }
  EXPECT_EQ(errorOf("[]"), "expected an object, found a list");
}

TEST(Record, reportsTheFirstErrorOfTheDocument) {
  auto members = allMembers();
  members[2].second = "null";
  members[1].second = "null";
  EXPECT_EQ(errorOf(objectOf(members)), "total_count: expected an integer, found null");
}

TEST(Record, ignoresUnknownKeys) {
  EXPECT_EQ(errorOf(R"({"Name":1,"name ":{},)" + objectOf(requiredMembers).substr(1)), "none");
}

TEST(Record, comparesKeysAfterEscapesAreResolved) {
  const std::string json = objectOf(requiredMembers);
  EXPECT_EQ(decoded(R"({"\u006eame":"x")" + json.substr(json.find(','))).name, "x");
}

TEST(Record, letsTheLastOfARepeatedKeyStand) {
  const std::string json = objectOf(allMembers());
  const auto with = [&](const std::string& members) {
    return json.substr(0, json.size() - 1) + ',' + members + '}';
  };
  EXPECT_EQ(decoded(with(R"("name":"x","name":"y")")).name, "y");
  EXPECT_EQ(decoded(with(R"("nickname":null)")).nickname, std::nullopt);
  EXPECT_EQ(decoded(with(R"("depth":null)")).depth.kind, Depth::Kind::missing);
  EXPECT_EQ(decoded(with(R"("notes":[])")).notes.size(), 0U);
  EXPECT_EQ(decoded(with(R"("n\u0061me":"z")")).name, "z");
  // A wrong value that does not stand does no harm, a wrong one that stands does.
  EXPECT_EQ(decoded(with(R"("name":1,"rings":[{}],"name":"x","rings":[])")).name, "x");
  EXPECT_EQ(errorOf(with(R"("name":"x","name":1)")), "name: expected text, found a number");
  EXPECT_EQ(errorOf(with(R"("ring":{"date":1},"rings":[{"date":2}],"ring":{"date":"d","inner":[]})")),
            "rings[0].date: expected text, found a number");
  EXPECT_EQ(decoded(with(R"("metadata":{"a":1,"b":"c","a":"d"})")).metadata,
            (std::map<std::string, std::string>{{"a", "d"}, {"b", "c"}}));
  EXPECT_EQ(errorOf(with(R"("metadata":{"a":"1","a":[]})")), "metadata.a: expected text, found a list");
}

TEST(Record, dropsWhatDoesNotFitFromALossyList) {
  const std::string json = objectWith(
      "lossy",
      R"([{"date":"a","inner":[]},7,{"inner":[]},null,{"date":1,"inner":[{}]},{"date":"b","inner":[]}])");
  std::vector<JsonError> dropped{{"before", "kept"}};
  const auto specimen = decoder.decode<Specimen>(json, &dropped);
  ASSERT_TRUE(specimen) << specimen.error().text();
  EXPECT_EQ(specimen->lossy, (std::vector<Ring>{{.date = "a"}, {.date = "b"}}));
  EXPECT_EQ(dropped, (std::vector<JsonError>{{"before", "kept"},
                                             {"lossy[1]", "expected an object, found a number"},
                                             {"lossy[2].date", "is missing"},
                                             {"lossy[3]", "expected an object, found null"},
                                             {"lossy[4].date", "expected text, found a number"}}));
  EXPECT_EQ(decoder.decode<Specimen>(json), specimen);
}

TEST(Record, namesNothingDroppedThatDoesNotStandOrOfADocumentThatIsRefused) {
  const std::string json = objectWith("lossy", "[1]");
  std::vector<JsonError> dropped;
  ASSERT_TRUE(decoder.decode<Specimen>(json.substr(0, json.size() - 1) + R"(,"lossy":[[]]})", &dropped));
  EXPECT_EQ(dropped, (std::vector<JsonError>{{"lossy[0]", "expected an object, found a list"}}));
  dropped.clear();
  EXPECT_FALSE(decoder.decode<Specimen>(json.substr(0, json.size() - 1) + R"(,"name":1})", &dropped));
  EXPECT_FALSE(decoder.decode<Specimen>(json + ']', &dropped));
  EXPECT_TRUE(dropped.empty());
}

TEST(Record, namesWhatWasDroppedInTheOrderOfTheDocument) {
  const std::string json = objectOf(allMembers());
  std::vector<JsonError> dropped;
  // The list that stands is the last one, after a field whose first value was wrong.
  ASSERT_TRUE(decoder.decode<Specimen>(
      json.substr(0, json.size() - 1) + R"(,"name":1,"lossy":[true],"lossy":[0,null],"name":"x"})",
      &dropped));
  EXPECT_EQ(dropped, (std::vector<JsonError>{{"lossy[0]", "expected an object, found a number"},
                                             {"lossy[1]", "expected an object, found null"}}));
}

TEST(Record, leavesAListOfWhatWasDroppedBeforeAlone) {
  const std::vector<JsonError> before{{"lossy", "of another document"}, {"lossy[0].date", "likewise"}};
  const std::string json = objectOf(allMembers());
  std::vector<JsonError> dropped = before;
  ASSERT_TRUE(
      decoder.decode<Specimen>(json.substr(0, json.size() - 1) + R"(,"lossy":[],"lossy":[]})", &dropped));
  EXPECT_EQ(dropped, before);
  EXPECT_FALSE(decoder.decode<Specimen>(objectWith("lossy", "[1,2") + '}', &dropped));
  EXPECT_EQ(dropped, before);
}

TEST(Record, namesTheFieldThatCannotBeWritten) {
  Specimen specimen = decoded(objectOf(allMembers()));
  specimen.seenAt = instantSinceReferenceDate(1e300);
  EXPECT_EQ(encoder.encode(specimen).error().text(), "seenAt: is not an instant of the years 0001 to 9999");
  EXPECT_TRUE(JsonEncoder{}.encode(specimen));
}

// ---- On random records: writing, reading and writing again gives the same text, and reading it the same
// record.

// Small containers, many records.
template <class T>
rc::Gen<T> few(rc::Gen<T> gen) {
  return rc::gen::resize(4, std::move(gen));
}

rc::Gen<std::string> anyText() {
  return rc::gen::apply(
      [](const std::vector<int>& points) {
        std::string text;
        for (const int choice : points) {
          constexpr std::string_view pieces[] = {"a",    "Z", "\"", "\\", "/", "\n",
                                                 "\x01", "ä", "⇊",  "𝄞",  " ", "\x7f"};
          text += pieces[static_cast<std::size_t>(choice)];
        }
        return text;
      },
      few(rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 12))));
}

rc::Gen<double> anyFloat() {
  return rc::gen::suchThat(rc::gen::arbitrary<double>(), [](double x) { return x - x == 0; });
}

rc::Gen<Instant> anyInstant() {
  return rc::gen::map(
      rc::gen::inRange<std::int64_t>(-63'000'000'000, 252'000'000'000),
      [](std::int64_t seconds) { return instantSinceReferenceDate(static_cast<double>(seconds)); });
}

rc::Gen<Habitat> anyHabitat() {
  return rc::gen::map(rc::gen::inRange<std::size_t>(0, 3),
                      [](std::size_t index) { return Habitat::allCases[index]; });
}

rc::Gen<Uuid> anyUuid() {
  return rc::gen::map(rc::gen::container<std::vector<std::uint8_t>>(16, rc::gen::arbitrary<std::uint8_t>()),
                      [](const std::vector<std::uint8_t>& bytes) {
                        Uuid uuid{};
                        std::ranges::copy(bytes, uuid.begin());
                        return uuid;
                      });
}

template <class T>
std::optional<T> maybe(const rc::Gen<T>& gen) {
  return *rc::gen::arbitrary<bool>() ? std::optional<T>{*gen} : std::nullopt;
}

template <class T>
std::vector<T> some(const rc::Gen<T>& gen) {
  return *few(rc::gen::container<std::vector<T>>(gen));
}

Ring anyRing(int levels) {
  Ring ring{.date = *anyText(), .number = maybe(rc::gen::arbitrary<std::int64_t>()), .inner = {}};
  for (int count = levels == 0 ? 0 : *rc::gen::inRange(0, 3); count > 0; --count) {
    ring.inner.push_back(anyRing(levels - 1));
  }
  return ring;
}

Specimen anySpecimen() {
  Specimen specimen{
      .name = *anyText(),
      .count = *rc::gen::arbitrary<std::int64_t>(),
      .weight = *anyFloat(),
      .alive = *rc::gen::arbitrary<bool>(),
      .habitat = *anyHabitat(),
      .seenAt = *anyInstant(),
      .identity = *anyUuid(),
      .notes = some(anyText()),
      .hours = some(rc::gen::arbitrary<std::int64_t>()),
      .emissions = *few(rc::gen::container<std::map<std::string, std::vector<std::string>>>(
          anyText(), rc::gen::container<std::vector<std::string>>(anyText()))),
      .ring = anyRing(2),
      .rings = {anyRing(1), anyRing(0)},
      .depth = {},
      .nickname = maybe(anyText()),
      .legs = maybe(rc::gen::arbitrary<std::int64_t>()),
      .length = maybe(anyFloat()),
      .tagged = maybe(rc::gen::arbitrary<bool>()),
      .origin = maybe(anyHabitat()),
      .lastSeenAt = maybe(anyInstant()),
      .parent = maybe(anyUuid()),
      .scar = {},
      .samples = maybe(few(rc::gen::container<std::vector<double>>(anyFloat()))),
      .metadata = maybe(few(rc::gen::container<std::map<std::string, std::string>>(anyText(), anyText()))),
      .lossy = {anyRing(1)},
  };
  switch (*rc::gen::inRange(0, 3)) {
    case 0:
      specimen.depth = {.kind = Depth::Kind::missing};
      break;
    case 1:
      specimen.depth = {.kind = Depth::Kind::measured, .metres = *anyFloat()};
      break;
    default:
      specimen.scar = anyRing(0);
  }
  return specimen;
}

TEST(Record, readsBackEveryRecordItWrites) {
  EXPECT_TRUE(rc::check("encode, decode, encode", [] {
    const Specimen specimen = anySpecimen();
    const auto json = encoder.encode(specimen);
    RC_ASSERT(json.has_value());
    const auto back = decoder.decode<Specimen>(*json);
    RC_ASSERT(back.has_value());
    RC_ASSERT(*back == specimen);
    RC_ASSERT((encoder.encode(*back) == json));
    const auto indented = encoder.encode(specimen, JsonLayout::indented);
    RC_ASSERT(indented.has_value());
    RC_ASSERT((decoder.decode<Specimen>(*indented) == back));
  }));
}

// Whose fields are more than the bits that tell which of them were there.
struct Overfull {
  bool field = false;

  static JsonFields jsonFields() {
    static const std::vector<JsonField> fields(65, kestrel::field<&Overfull::field>("field"));
    return fields;
  }
};

TEST(RecordDeathTest, ofMoreThan64FieldsStops) {
  EXPECT_DEATH(static_cast<void>(decoder.decode<Overfull>("{}")), "a record declares more than 64 fields");
}

}  // namespace
}  // namespace kestrel
