#include <KestrelKit/foundation/Uuid.h>

#include <gtest/gtest.h>

namespace kestrel {
namespace {

constexpr std::string_view upper = "01234567-89AB-CDEF-0123-456789ABCDEF";

TEST(Uuid, isReadInEitherCaseAndWrittenInUpperCase) {
  for (const std::string_view text :
       {"01234567-89AB-CDEF-0123-456789ABCDEF", "01234567-89ab-cdef-0123-456789abcdef",
        "01234567-89aB-cDef-0123-456789AbcdEF"}) {
    const auto uuid = uuidFromText(text);
    ASSERT_TRUE(uuid) << text;
    EXPECT_EQ(uuidText(*uuid), upper);
  }
}

TEST(Uuid, keepsTheOrderOfItsBytes) {
  const auto uuid = uuidFromText(upper);
  ASSERT_TRUE(uuid);
  EXPECT_EQ(uuid->data[0], 0x01);
  EXPECT_EQ(uuid->data[4], 0x89);
  EXPECT_EQ(uuid->data[15], 0xEF);
}

TEST(Uuid, takesNoOtherForm) {
  for (const std::string_view text :
       {"", "0123456789ABCDEF0123456789ABCDEF", "{01234567-89AB-CDEF-0123-456789ABCDEF}",
        "01234567-89AB-CDEF-0123-456789ABCDE", "01234567-89AB-CDEF-0123-456789ABCDEF0",
        "01234567-89AB-CDEF-0123456789ABCDEF-", "G1234567-89AB-CDEF-0123-456789ABCDEF",
        "0123456-789AB-CDEF-0123-456789ABCDEF", "01234567 89AB CDEF 0123 456789ABCDEF",
        " 1234567-89AB-CDEF-0123-456789ABCDEF", "urn:uuid:01234567-89AB-CDEF-0123-456"}) {
    EXPECT_EQ(uuidFromText(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace kestrel
