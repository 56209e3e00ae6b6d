// JSON text, as a record with every form of field: what the decoder takes it gives back.

#include <KestrelKit/model/JSONCoders.h>
#include <KestrelKit/model/StateClassification.h>
#include <support/Specimen.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "RoundTrip.h"

using namespace kestrel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view json{reinterpret_cast<const char*>(data), size};
  fuzz::checkRoundTrip<testing::Specimen>(JSONCoders::encoder, JSONCoders::decoder, json);
  fuzz::checkRoundTrip<testing::Specimen>(JsonEncoder{}, JsonDecoder{}, json);
  fuzz::checkRoundTrip<std::vector<StateClassification>>(JSONCoders::encoder, JSONCoders::decoder, json);
  return 0;
}
