#pragma once

#include <KestrelKit/foundation/JsonDecoder.h>
#include <KestrelKit/foundation/JsonEncoder.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel::testing {

/// One field of a record in JSON, and what happens to it.
struct FieldRow {
  std::string key;
  std::string value;        ///< As it is written.
  std::string wrong;        ///< Of another type, or no value of the field.
  std::string refusal;      ///< What `wrong` is refused with, behind the key.
  bool isOptional = false;  ///< May be left out, or `null`.
};

inline std::string objectOf(const std::vector<FieldRow>& rows) {
  std::string json;
  for (const FieldRow& row : rows) {
    json += (json.empty() ? "\"" : ",\"") + row.key + "\":" + row.value;
  }
  return '{' + json + '}';
}

template <class T>
std::string errorOf(const JsonDecoder& decoder, std::string_view json) {
  const auto value = decoder.decode<T>(json);
  return value ? "none" : value.error().text();
}

/// Expects that the record of `rows`, which are all its fields in order, is written as it was read, and that
/// each field that is left out, `null` or wrong costs the record, with a message that names it, unless the
/// field is optional. Gives the record.
template <class T>
T expectStrictFields(const JsonDecoder& decoder, const JsonEncoder& encoder,
                     const std::vector<FieldRow>& rows) {
  const auto record = decoder.decode<T>(objectOf(rows));
  EXPECT_TRUE(record) << record.error().text();
  if (!record) {
    return {};
  }
  EXPECT_EQ(encoder.encode(*record).value_or("none"), objectOf(rows));
  EXPECT_EQ(errorOf<T>(decoder, objectOf(rows).insert(1, R"("unknown":[{}],)")), "none");
  for (std::size_t index = 0; index < rows.size(); ++index) {
    const FieldRow& row = rows[index];
    auto changed = rows;
    changed[index].value = row.wrong;
    EXPECT_EQ(errorOf<T>(decoder, objectOf(changed)), row.key + ": " + row.refusal);
    changed[index].value = "null";
    const std::string nulled = errorOf<T>(decoder, objectOf(changed));
    changed.erase(changed.begin() + static_cast<std::ptrdiff_t>(index));
    const std::string leftOut = errorOf<T>(decoder, objectOf(changed));
    if (row.isOptional) {
      EXPECT_EQ(nulled, "none") << row.key;
      EXPECT_EQ(leftOut, "none") << row.key;
    } else {
      EXPECT_TRUE(nulled.starts_with(row.key + ": expected ")) << nulled;
      EXPECT_EQ(leftOut, row.key + ": is missing");
    }
  }
  return *record;
}

/// Expects that a value of each other type in the place of each field costs the record of `rows`, with a
/// message that names the field.
template <class T>
void expectOtherTypesRefused(const JsonDecoder& decoder, const std::vector<FieldRow>& rows) {
  const auto isNumber = [](std::string_view json) { return json.find_first_of("-0123456789") == 0; };
  for (std::size_t index = 0; index < rows.size(); ++index) {
    const FieldRow& row = rows[index];
    for (const std::string_view other : {"\"text\"", "1.5", "true", "[]", "{}", "null"}) {
      if (isNumber(row.value)
              ? isNumber(other)
              : row.value.front() == other.front() || (row.value == "false" && other == "true")) {
        continue;
      }
      if (other == "null" && row.isOptional) {
        continue;
      }
      auto changed = rows;
      changed[index].value = other;
      const std::string error = errorOf<T>(decoder, objectOf(changed));
      EXPECT_TRUE(error.starts_with(row.key + ": expected ")) << other << ": " << error;
    }
  }
}

}  // namespace kestrel::testing
