#include <KestrelKit/WatchStateAcknowledgement.h>
#include <KestrelKit/model/JSONCoders.h>
#include <support/RecordFields.h>

#include <gtest/gtest.h>

namespace kestrel {
namespace {

TEST(WatchStateAcknowledgement, readsAndWritesEachField) {
  EXPECT_EQ(
      testing::expectStrictFields<WatchStateAcknowledgement>(
          JSONCoders::decoder, JSONCoders::encoder,
          {{"deliveryID", R"("2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10")", "[]", "expected text, found a list"},
           {"receivedAt", R"("2024-05-01T12:00:00Z")", "true", "expected text, found a boolean"}}),
      (WatchStateAcknowledgement{.deliveryID = uuidFromText("2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10").value(),
                                 .receivedAt = instantSinceReferenceDate(736'257'600)}));
}

}  // namespace
}  // namespace kestrel
