#pragma once

#include <KestrelKit/foundation/DateStrategy.h>
#include <KestrelKit/foundation/JsonError.h>

#include <cstdint>
#include <expected>
#include <memory>
#include <string>
#include <string_view>

namespace kestrel {

/// Whether a document stands on one line without blanks between tokens, or is indented by two spaces.
enum class JsonLayout { compact, indented };

/// Writes one JSON document from front to back. The first value that has no JSON form (a float that is not
/// finite, text that is not valid UTF-8) is noted with its path, and the document is then refused as a whole.
class JsonWriter {
 public:
  explicit JsonWriter(DateStrategy dates);
  ~JsonWriter();
  JsonWriter(const JsonWriter&) = delete;
  JsonWriter& operator=(const JsonWriter&) = delete;

  DateStrategy dateStrategy() const noexcept;

  void null();
  void boolean(bool value);
  void integer(std::int64_t value);

  /// The fewest digits that read back to the same value: plain for 1e-6 ≤ |x| < 1e15, else with an exponent.
  void number(double value);

  /// `/` and what lies outside ASCII stand plainly. Text of 4 GiB or more has no JSON form.
  void text(std::string_view value);

  /// A value that is JSON already, well-formed and without blanks between its tokens. One that would be
  /// nested deeper in this document than a decoder takes has no JSON form.
  void json(std::string_view value);

  void openObject();
  void key(std::string_view
               key);  ///< The next value belongs to `key`, which must live until its object is closed.
  void closeObject();
  void openList();
  void closeList();

  /// Ends a document with a line feed. What is written then is another one, on a line of its own.
  void endLine();

  /// In place of a value that has no JSON form: notes why.
  void refuse(std::string message);

  /// The document, or the first refusal. Call it once, after the last value.
  std::expected<std::string, JsonError> finish(JsonLayout layout);

 private:
  struct Document;
  std::unique_ptr<Document> document_;
};

}  // namespace kestrel
