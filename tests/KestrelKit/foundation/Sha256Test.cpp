#include <KestrelKit/foundation/Sha256.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

namespace kestrel {
namespace {

std::string digits(std::string_view text) {
  const Sha256Digits digits = sha256Digits(text);
  return {digits.data(), digits.size()};
}

// The examples of FIPS 180-4, and others by sha256sum.
TEST(Sha256, isThatOfTheStandard) {
  const std::pair<std::string, std::string_view> rows[] = {
      {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
       "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
      {std::string(1'000'000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
  };
  for (const auto& [text, expected] : rows) {
    EXPECT_EQ(digits(text), expected);
  }
}

TEST(Sha256, takesEveryByteAndBeginsAnewEachTime) {
  EXPECT_EQ(digits(std::string_view("\0", 1)),
            "6e340b9cffb37a989ca544e6bb780a2c78901d3fb33738768511a30617afa01d");
  EXPECT_EQ(digits("abc"), digits("abc"));
  EXPECT_NE(digits("abc"), digits("abd"));
}

}  // namespace
}  // namespace kestrel
