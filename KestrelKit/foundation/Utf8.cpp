#include <KestrelKit/foundation/Utf8.h>

#include <boost/locale/utf.hpp>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace kestrel {
namespace {

/// The bits of 8 bytes that are 0 in ASCII.
constexpr std::uint64_t beyondAscii = 0x8080'8080'8080'8080U;

/// Whether at least 8 bytes begin at `place`, all of them ASCII.
bool isAsciiWord(const char* place, const char* end) noexcept {
  std::uint64_t bytes = 0;
  if (end - place < static_cast<std::ptrdiff_t>(sizeof bytes)) {
    return false;
  }
  std::memcpy(&bytes, place, sizeof bytes);
  return (bytes & beyondAscii) == 0;
}

}  // namespace

std::size_t utf16Length(std::string_view text) noexcept {
  // A code point counts where its first byte stands; one of four bytes is a surrogate pair. The comparisons
  // give -1 for true, and a byte has room for the sum of 127 of them.
  using Bytes [[gnu::vector_size(16)]] = signed char;
  constexpr std::size_t mostSums = 127;
  std::size_t length = text.size();
  while (text.size() >= sizeof(Bytes)) {
    Bytes sums{};
    for (std::size_t count = std::min(text.size() / sizeof(Bytes), mostSums); count != 0; --count) {
      Bytes bytes;
      std::memcpy(&bytes, text.data(), sizeof bytes);
      sums += (bytes < -0x40);                 // 10xxxxxx
      sums -= (bytes >= -0x10) & (bytes < 0);  // 11110xxx
      text.remove_prefix(sizeof bytes);
    }
    for (std::size_t place = 0; place < sizeof(Bytes); ++place) {
      length += static_cast<std::size_t>(std::ptrdiff_t{sums[place]});
    }
  }
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    length -= (byte & 0xC0U) == 0x80U ? 1U : 0U;
    length += byte >= 0xF0U ? 1U : 0U;
  }
  return length;
}

std::optional<std::size_t> invalidUtf8(std::string_view text) noexcept {
  const char* const end = text.data() + text.size();
  for (const char* place = text.data(); place != end;) {
    if (isAsciiWord(place, end)) {
      place += sizeof(std::uint64_t);
      continue;
    }
    const char* next = place;
    const auto codePoint = boost::locale::utf::utf_traits<char>::decode(next, end);
    if (!boost::locale::utf::is_valid_codepoint(codePoint)) {
      return static_cast<std::size_t>(place - text.data());
    }
    place = next;
  }
  return std::nullopt;
}

bool Utf8Pieces::add(std::string_view piece) noexcept {
  while (begunSize_ != 0 && !piece.empty()) {
    if (begunSize_ == begun_.size()) {
      return false;
    }
    begun_[begunSize_++] = piece.front();
    piece.remove_prefix(1);
    if (!invalidUtf8({begun_.data(), begunSize_})) {
      begunSize_ = 0;
    }
  }
  if (const auto place = invalidUtf8(piece)) {
    piece.remove_prefix(*place);
    if (piece.size() >= begun_.size()) {
      return false;
    }
    begunSize_ = static_cast<std::size_t>(std::ranges::copy(piece, begun_.begin()).out - begun_.begin());
  }
  return begunSize_ < begun_.size();
}

}  // namespace kestrel
