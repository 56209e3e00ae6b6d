// Feeds a fuzzer its seeds and some mutations of each, where libFuzzer is not at hand.
//
//   <name>_replay <folder of seeds> [mutations of each seed, by default 200]
//
// The mutations are the same in every run: their random numbers start from the seed's place in the sorted
// list.

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// One to four changes: a byte replaced, a bit flipped, a stretch removed, a stretch repeated, the end cut
// off.
Bytes mutated(Bytes bytes, std::mt19937_64& random) {
  const auto below = [&](std::size_t bound) { return static_cast<std::ptrdiff_t>(random() % bound); };
  for (auto changes = 1 + below(4); changes > 0 && !bytes.empty(); --changes) {
    const auto place = bytes.begin() + below(bytes.size());
    const auto rest = static_cast<std::size_t>(bytes.end() - place);
    const auto stretch = place + 1 + below(std::min<std::size_t>(rest, 64));
    switch (below(5)) {
      case 0:
        *place = static_cast<std::uint8_t>(below(256));
        break;
      case 1:
        *place = static_cast<std::uint8_t>(*place ^ (1U << below(8)));
        break;
      case 2:
        bytes.erase(place, stretch);
        break;
      case 3: {
        const Bytes copy(place, stretch);
        bytes.insert(bytes.begin() + below(bytes.size()), copy.begin(), copy.end());
        break;
      }
      default:
        bytes.erase(place, bytes.end());
    }
  }
  return bytes;
}

}  // namespace

int main(int count, char** arguments) {
  std::size_t mutations = 200;
  bool understood = count == 2 || count == 3;
  if (count == 3) {
    const char* const end = arguments[2] + std::strlen(arguments[2]);
    const auto read = std::from_chars(arguments[2], end, mutations);
    understood = read.ec == std::errc() && read.ptr == end;
  }
  if (!understood) {
    std::fprintf(stderr, "usage: <name>_replay <folder of seeds> [mutations of each seed]\n");
    return 2;
  }
  std::error_code error;
  std::vector<std::filesystem::path> seeds;
  for (const auto& entry : std::filesystem::directory_iterator(arguments[1], error)) {
    seeds.push_back(entry.path());
  }
  if (seeds.empty()) {
    std::fprintf(stderr, "replay: no seeds\n");
    return 1;
  }
  std::ranges::sort(seeds);
  for (std::size_t place = 0; place < seeds.size(); ++place) {
    const Bytes seed = bytesOf(seeds[place]);
    LLVMFuzzerTestOneInput(seed.data(), seed.size());
    std::mt19937_64 random(place);
    for (std::size_t n = 0; n < mutations; ++n) {
      const Bytes input = mutated(seed, random);
      LLVMFuzzerTestOneInput(input.data(), input.size());
    }
  }
  std::printf("%zu seeds, %zu mutations of each\n", seeds.size(), mutations);
}
