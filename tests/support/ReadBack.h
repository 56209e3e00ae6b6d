#pragma once

#include <KestrelKit/model/JSONCoders.h>

#include <gtest/gtest.h>
#include <rapidcheck.h>

namespace kestrel::testing {

/// Expects that any `T` is read as what was written, and written again as it was.
template <class T>
void expectToReadBackWhatItWrites() {
  EXPECT_TRUE(rc::check([](const T& value) {
    const auto json = JSONCoders::encoder.encode(value);
    RC_ASSERT(json.has_value());
    const auto back = JSONCoders::decoder.decode<T>(*json);
    RC_ASSERT(back.has_value());
    RC_ASSERT((*back == value));
    RC_ASSERT((JSONCoders::encoder.encode(*back) == json));
  }));
}

}  // namespace kestrel::testing
