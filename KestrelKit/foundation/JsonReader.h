#pragma once

#include <KestrelKit/foundation/DateStrategy.h>
#include <KestrelKit/foundation/JsonError.h>
#include <KestrelKit/foundation/JsonField.h>

#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace kestrel {

/// One value of a JSON document at the moment at which it is read, as a form (JsonForm) sees it.
///
/// The document is read once, from front to back. A form takes its value with one of the reading functions;
/// what it does not take is read over. Either way the value is visited to its last byte, so that a wrong
/// value costs itself and a syntax error anywhere costs the document.
///
/// A reading function that gives nothing has noted why, with the path; the form only passes the absence on.
/// One that finds a well-formed value wrong notes it with refuse(). Of all that is noted about one value the
/// first counts, and of a repeated key only what is noted about its last value.
///
/// Not to be kept beyond the call that hands it out; one thread.
class JsonReader {
 public:
  enum class Kind { object, list, text, number, boolean, null };

  /// What stands here. A value that is not well-formed has the kind that its first character announces.
  Kind kind() const noexcept;

  DateStrategy dateStrategy() const noexcept;

  /// The text here, escapes resolved. Valid until the document has been read.
  std::optional<std::string_view> text();

  std::optional<bool> boolean();

  /// The number here as its nearest 64-bit float: any literal but one too large.
  std::optional<double> number() { return read<double>(); }

  /// The number here when it lies in the signed 64-bit range: exactly, where the literal has neither fraction
  /// nor exponent; else when its nearest 64-bit float is whole and in that range.
  std::optional<std::int64_t> integer() { return read<std::int64_t>(); }

  /// The list here, each element as integer() reads it. Absent, and noted, when no list is here or an element
  /// is wrong.
  std::optional<std::vector<std::int64_t>> integers();

  /// Reads a `null` if one is here, and says whether it was.
  bool null();

  /// The value here as JSON, whatever it is: as it stands in the document, without the blanks between its
  /// tokens.
  std::optional<std::string> json();

  /// How many elements the list here has, to make room for them, when none is an object or a list; otherwise
  /// no more than it has.
  std::size_t scalarsInList() const noexcept;

  /// A set of fields, by their place in the declaration: the lowest bit is the first one.
  using FieldSet = std::uint64_t;

  /// Reads the object here into `record`, of the type that declares `fields`, of which there are at most 64.
  /// Members that have no field are read over. Gives the fields whose keys were there; absent, and noted,
  /// when no object is here or a member is wrong.
  std::optional<FieldSet> members(JsonFields fields, void* record);

  /// Calls `visit(std::string_view key, JsonReader& value)` for each member of the object here, in order,
  /// repeated keys included; the key is valid during the call. False, and noted, when no object is here or a
  /// member is wrong.
  template <class Visit>
  bool forEachMember(Visit visit) {
    return forEachMember([](void* state, std::string_view key,
                            JsonReader& value) { (*static_cast<Visit*>(state))(key, value); },
                         &visit);
  }

  /// Calls `visit(JsonReader& element)` for each element of the list here. False, and noted, when no list is
  /// here or an element is wrong and was not dropped.
  template <class Visit>
  bool forEachElement(Visit visit) {
    return forEachElement([](void* state, JsonReader& element) { (*static_cast<Visit*>(state))(element); },
                          &visit);
  }

  /// Notes that the value here is wrong, and why; not while its members or elements are visited. Gives the
  /// absence that a form returns then.
  std::nullopt_t refuse(std::string message);

  /// Notes that the object here lacks the member `key`.
  void refuseAbsent(std::string_view key);

  /// Forgets what was noted about the value here: the form tries another reading, or does without the value.
  void forgive();

  /// A form found the value here wrong, and whoever called it gives up only this value, an element of a lossy
  /// list: the document is not refused for it. What was noted becomes the reason in the list of what was
  /// dropped, where the caller of the decoder asked for one.
  void drop();

  /// Notes that the value here, which is not wrong, breaks a rule that is taken for granted. It is a
  /// programming error, `message` behind the path, unless the document is refused or the value does not
  /// stand: an element that holds it is dropped, or its key is repeated.
  void stop(std::string message);

 private:
  struct Document;
  struct Place;
  class LastValues;
  friend std::expected<void, JsonError> readJson(std::string_view, DateStrategy, std::vector<JsonError>*,
                                                 void*, void (*)(void*, JsonReader&));

  explicit JsonReader(Place& place) noexcept : place_(&place) {}

  bool isWrong() const noexcept;

  // What number() and integer() do. They are made of these here, where their callers see it, for an optional
  // that a function returns in two registers is slow to be put together again.
  bool read(double& value);
  bool read(std::int64_t& value);
  bool readLong(std::int64_t& value);  // apart, so that the quick way saves no registers
  template <class T>
  std::optional<T> read() {
    T value{};
    return read(value) ? std::optional{value} : std::nullopt;
  }

  bool forEachMember(void (*visit)(void*, std::string_view, JsonReader&), void* state);
  bool forEachElement(void (*visit)(void*, JsonReader&), void* state);

  Place* place_;
};

/// Reads the document `json` and calls `visit(state, root)`. The first of what was noted is the error; one
/// about syntax goes before all others. What was dropped from a document that is not refused is added to
/// `dropped`, which may be null. See JsonDecoder for what a document must be.
std::expected<void, JsonError> readJson(std::string_view json, DateStrategy dates,
                                        std::vector<JsonError>* dropped, void* state,
                                        void (*visit)(void* state, JsonReader& root));

}  // namespace kestrel
