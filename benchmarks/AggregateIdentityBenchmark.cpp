// What the identities of daily values cost beside hashing the same texts.
//
//   aggregate_identity_benchmark [ROUNDS]
//
// Names a million values by their content, and hashes the million contents, which were put together before,
// with libcrypto alone: its algorithm looked up once, one context for all. Prints the median of ROUNDS (by
// default 11) in which the two take turns, without and with the optional parts.

#include <KestrelKit/formats/AggregateRecordV2.h>
#include <fmt/format.h>
#include <openssl/evp.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Timing.h"

namespace {

using namespace kestrel;
using kestrel::benchmark::median;
using kestrel::benchmark::processorMilliseconds;
using DataType = AggregateRecordV2::DataType;

constexpr std::size_t million = 1'000'000;

struct Value {
  std::string date;
  DataType dataType;
  double value;
  std::string unit;
  std::optional<std::int64_t> sampleCount;
  std::optional<double> quality;
  std::optional<std::string> replaced;

  std::string identity() const {
    return AggregateRecordV2::dailyIdentity(date, dataType, value, unit, sampleCount, quality, replaced);
  }
};

std::vector<Value> valuesOf(bool withParts) {
  std::vector<Value> values;
  values.reserve(million);
  for (std::size_t index = 0; index < million; ++index) {
    values.push_back({.date = fmt::format("20{:02}-{:02}-{:02}", index % 100, 1 + index % 12, 1 + index % 28),
                      .dataType = DataType::allCases[index % DataType::allCases.size()],
                      .value = static_cast<double>(index) / 7,
                      .unit = "min",
                      .sampleCount = {},
                      .quality = {},
                      .replaced = {}});
    if (withParts) {
      Value& value = values.back();
      value.replaced = value.identity();
      value.sampleCount = static_cast<std::int64_t>(index % 97);
      value.quality = static_cast<double>(index % 100) / 100;
    }
  }
  return values;
}

std::vector<std::string> contentsOf(const std::vector<Value>& values) {
  std::vector<std::string> contents;
  contents.reserve(values.size());
  for (const Value& value : values) {
    contents.push_back(fmt::format("{}|{}|{:016x}|{}", value.date, value.dataType.rawValue(),
                                   std::bit_cast<std::uint64_t>(value.value), value.unit));
    if (value.sampleCount) {
      contents.back() += fmt::format("|sampleCount:{}|quality:{:016x}|replaces:{}", *value.sampleCount,
                                     std::bit_cast<std::uint64_t>(*value.quality), *value.replaced);
    }
  }
  return contents;
}

using Digest = std::array<unsigned char, 32>;

class Hash {
 public:
  Hash() = default;
  Hash(const Hash&) = delete;
  Hash& operator=(const Hash&) = delete;
  ~Hash() {
    EVP_MD_CTX_free(context_);
    EVP_MD_free(algorithm_);
  }

  Digest of(std::string_view text) {
    Digest digest{};
    EVP_DigestInit_ex2(context_, algorithm_, nullptr);
    EVP_DigestUpdate(context_, text.data(), text.size());
    EVP_DigestFinal_ex(context_, digest.data(), nullptr);
    return digest;
  }

 private:
  EVP_MD* algorithm_ = EVP_MD_fetch(nullptr, "SHA256", nullptr);
  EVP_MD_CTX* context_ = EVP_MD_CTX_new();
};

// Both sides must have hashed the same.
bool agree(const std::string& identity, const Digest& digest) {
  std::string digits;
  for (const unsigned char byte : digest) {
    digits += fmt::format("{:02x}", byte);
  }
  return identity.ends_with(digits);
}

bool measure(bool withParts, int rounds) {
  const auto values = valuesOf(withParts);
  const auto contents = contentsOf(values);
  Hash hash;
  std::vector<double> ours;
  std::vector<double> bare;
  std::vector<double> ratios;
  bool allAgree = true;
  const auto nameAll = [&] {
    ours.push_back(processorMilliseconds([&] {
      for (std::size_t index = 0; index < million; ++index) {
        const std::string identity = values[index].identity();
        if (index % 99'991 == 0) {
          allAgree = allAgree && agree(identity, hash.of(contents[index]));
        }
      }
    }));
  };
  const auto hashAll = [&] {
    unsigned seen = 0;
    bare.push_back(processorMilliseconds([&] {
      for (const std::string& content : contents) {
        seen += hash.of(content)[0];
      }
    }));
    allAgree = allAgree && seen > 0;
  };
  for (int round = 0; round < rounds; ++round) {
    if (round % 2 == 0) {
      nameAll();
      hashAll();
    } else {
      hashAll();
      nameAll();
    }
    ratios.push_back(ours.back() / bare.back());
  }
  fmt::print("| {} | {:.0f} | {:.0f} | {:.2f} |\n", withParts ? "all parts" : "value and unit", median(bare),
             median(ours), median(ratios));
  return allAgree;
}

}  // namespace

int main(int count, char** arguments) {
  const int rounds = count == 2 ? std::atoi(arguments[1]) : 11;  // NOLINT(cert-err34-c): 0 is refused below
  if (rounds < 1 || count > 2) {
    fmt::print(stderr, "usage: aggregate_identity_benchmark [ROUNDS]\n");
    return 2;
  }
  fmt::print("| content | libcrypto, ms | identities, ms | ratio |\n|---|--:|--:|--:|\n");
  if (!measure(false, rounds) || !measure(true, rounds)) {
    fmt::print(stderr, "the two have not hashed the same\n");
    return 1;
  }
}
