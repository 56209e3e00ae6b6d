#include <KestrelKit/foundation/Sha256.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace kestrel {
namespace {

std::string digitsOf(std::string_view text) {
  const Sha256Digits digits = sha256Digits(text);
  return {digits.data(), digits.size()};
}

TEST(Sha256Threads, findTheSame) {
  constexpr int rounds = 200;
  std::vector<int> same(4);
  {
    std::vector<std::jthread> threads;
    threads.reserve(same.size());
    for (int& each : same) {
      threads.emplace_back([&each] {
        for (int round = 0; round < rounds; ++round) {  // of FIPS 180-4
          each +=
              digitsOf("abc") == "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad" ? 1 : 0;
        }
      });
    }
  }
  EXPECT_EQ(same, std::vector<int>(same.size(), rounds));
}

}  // namespace
}  // namespace kestrel
