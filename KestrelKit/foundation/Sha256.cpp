#include <KestrelKit/foundation/ProgrammingError.h>
#include <KestrelKit/foundation/Sha256.h>

#include <openssl/evp.h>

#include <cstddef>
#include <memory>

namespace kestrel {
namespace {

constexpr std::size_t digestSize = 32;

/// The two digits of each byte.
constexpr auto hexadecimal = [] {
  constexpr std::string_view digits = "0123456789abcdef";
  std::array<std::array<char, 2>, 256> pairs{};
  for (std::size_t byte = 0; byte < pairs.size(); ++byte) {
    pairs[byte] = {digits[byte / 16], digits[byte % 16]};
  }
  return pairs;
}();

struct Freeing {
  void operator()(EVP_MD* algorithm) const noexcept { EVP_MD_free(algorithm); }
  void operator()(EVP_MD_CTX* context) const noexcept { EVP_MD_CTX_free(context); }
};

}  // namespace

Sha256Digits sha256Digits(std::string_view text) {
  // Looking the algorithm up takes longer than hashing a line of text.
  static const std::unique_ptr<EVP_MD, Freeing> algorithm(EVP_MD_fetch(nullptr, "SHA256", nullptr));
  static thread_local const std::unique_ptr<EVP_MD_CTX, Freeing> context(EVP_MD_CTX_new());
  std::array<unsigned char, digestSize> digest;
  if (algorithm == nullptr || context == nullptr ||
      EVP_DigestInit_ex2(context.get(), algorithm.get(), nullptr) != 1 ||
      EVP_DigestUpdate(context.get(), text.data(), text.size()) != 1 ||
      EVP_DigestFinal_ex(context.get(), digest.data(), nullptr) != 1) {
    programmingError("libcrypto does not offer SHA-256");
  }
  Sha256Digits digits;
  for (std::size_t index = 0; index < digestSize; ++index) {
    const auto& pair = hexadecimal[digest[index]];
    digits[2 * index] = pair[0];
    digits[2 * index + 1] = pair[1];
  }
  return digits;
}

}  // namespace kestrel
