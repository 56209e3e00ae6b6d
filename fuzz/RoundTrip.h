#pragma once

#include <KestrelKit/foundation/JsonDecoder.h>
#include <KestrelKit/foundation/JsonEncoder.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace kestrel::fuzz {

inline void require(bool held, const char* what) {
  if (!held) {
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
  }
}

/// What holds of `json` read as a `T`: an accepted value, written and read again, is the same and is written
/// the same, indented or not. One that is refused is refused with a message of one line, and adds to no list.
template <class T>
void checkRoundTrip(const JsonEncoder& encoder, const JsonDecoder& decoder, std::string_view json) {
  std::vector<JsonError> dropped;
  const auto value = decoder.decode<T>(json, &dropped);
  if (!value) {
    const auto text = value.error().text();
    require(!text.empty() && text.find('\n') == text.npos, "an error is one line");
    require(dropped.empty(), "a refused document drops nothing");
    return;
  }
  const auto written = encoder.encode(*value);
  require(written.has_value(), "what was read can be written");
  for (const JsonLayout layout : {JsonLayout::compact, JsonLayout::indented}) {
    const auto again = encoder.encode(*value, layout);
    require(again.has_value(), "in both layouts");
    const auto back = decoder.decode<T>(*again, &dropped);
    require(back.has_value() && *back == *value, "what was written reads back the same");
    require(encoder.encode(*back) == written, "and is written the same");
  }
}

}  // namespace kestrel::fuzz
