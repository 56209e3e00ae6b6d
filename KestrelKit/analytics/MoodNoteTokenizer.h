#pragma once

#include "MoodNoteWord.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace kestrel {

/// Finds the words of a note, in one pass over its UTF-8 and without a copy. The result is that of these
/// steps, taken one after the other:
///
/// 1. all letters become lower case, by Unicode's full default mapping without a locale;
/// 2. each match of `https?://\S+` becomes a blank, where `\S` is all but Unicode's White_Space;
/// 3. each match of `@[a-z0-9_.-]+` becomes a blank;
/// 4. words are what stands between characters other than the letters a to z and the apostrophe `'`.
///
/// In one pass: a link begins within letters, and shows only in the colon behind them, which ends every word
/// and handle. There it is cut off the word; of a handle nothing is left either way. Beside the 26 capital
/// letters two characters have an ASCII letter in their lower case: the Kelvin sign becomes k, and the
/// capital I with a dot becomes i and a combining dot, which ends the word. No mapping by context concerns
/// ASCII.
///
/// Most words have none of that about them. They are found in blocks of 64 bytes, of which a bit each says
/// where the letters are; the careful way, byte by byte, is kept for what is special.
class MoodNoteTokenizer {
 public:
  explicit MoodNoteTokenizer(std::string_view text) noexcept
      : place_(text.data()), end_(place_ + text.size()), block_(place_) {}

  /// Calls `take` with each MoodNoteWord, in order. To be called once.
  template <class Take>
  void forEachWord(Take take) noexcept {
    while (place_ != end_) {
      if (static_cast<std::size_t>(place_ - block_) >= blockSize_) {
        readBlock();
      }
      const std::uint64_t unread = ~std::uint64_t{0} << static_cast<unsigned>(place_ - block_);
      const std::uint64_t letters = letters_ & unread;
      const std::uint64_t special = special_ & unread;
      std::uint64_t starts = letters & ~(letters << 1U);
      std::uint64_t ends = ~letters & letters << 1U;
      if (special != 0) {
        ends &= (special & -special) - 1;  // those before the first
      }
      for (; ends != 0; ends &= ends - 1, starts &= starts - 1) {
        const auto start = static_cast<std::size_t>(std::countr_zero(starts));
        const auto end = static_cast<std::size_t>(std::countr_zero(ends));
        take(wordAt(bytes_ + start, end - start));
      }
      if (special == 0) {
        place_ = block_ + blockSize_;
        continue;
      }
      // From the word on that the first special byte stands at the end of, or from that byte.
      const char* const place = block_ + std::countr_zero(special);
      place_ = std::min(place, block_ + std::countr_zero(starts));
      while (place_ <= place && place_ != end_) {
        readCarefully(take);
      }
    }
  }

 private:
  static_assert(std::endian::native == std::endian::little, "packed words have their first byte lowest");

  // ---- What a byte may be; several at once.

  static constexpr std::uint8_t ofWord = 1;
  static constexpr std::uint8_t ofHandle = 2;
  static constexpr std::uint8_t whiteSpace = 4;  // may begin a character with the property White_Space

  static constexpr auto kinds = [] {
    std::array<std::uint8_t, 256> kinds{};
    const auto add = [&](std::string_view bytes, std::uint8_t kind) {
      for (const char byte : bytes) {
        kinds[static_cast<unsigned char>(byte)] |= kind;
      }
    };
    add("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ", ofWord | ofHandle);
    add("'", ofWord);
    add("0123456789_.-", ofHandle);
    add("\t\n\v\f\r \xC2\xE1\xE2\xE3", whiteSpace);
    return kinds;
  }();

  static bool is(char byte, std::uint8_t kind) noexcept {
    return (kinds[static_cast<unsigned char>(byte)] & kind) != 0;
  }

  static constexpr char lowerCase(char letter) noexcept {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  }

  std::string_view rest() const noexcept { return {place_, end_}; }

  // ---- Blocks.

  static constexpr std::size_t largestBlock = 64;

  using Bytes [[gnu::vector_size(16)]] = unsigned char;

  /// A bit for each byte, which is 0 or 0xFF; the first the lowest.
  static std::uint64_t bitsOf(Bytes bytes) noexcept {
#ifdef __SSE2__
    return static_cast<unsigned>(_mm_movemask_epi8(std::bit_cast<__m128i>(bytes)));
#else
    constexpr Bytes places = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
    constexpr std::uint64_t sum = 0x0101'0101'0101'0101U;  // as a factor: adds up all bytes in the highest
    using Halves = std::array<std::uint64_t, 2>;
    const auto halves = std::bit_cast<Halves>(bytes & places);
    return halves[0] * sum >> 56U | halves[1] * sum >> 56U << 8U;
#endif
  }

  /// Makes what comes next the block: 64 bytes, fewer at the end of the text, and without a word that has not
  /// ended with them. Behind its end there are neither letters nor anything special.
  void readBlock() noexcept {
    block_ = place_;
    bytes_ = place_;
    blockSize_ = largestBlock;
    if (const auto left = static_cast<std::size_t>(end_ - place_); left < atTheEnd_.size()) {
      blockSize_ = std::min(largestBlock, left);
      std::memcpy(atTheEnd_.data(), place_, left);
      bytes_ = atTheEnd_.data();
    }
    takeBits();
    if (blockSize_ < largestBlock) {
      const std::uint64_t ofBlock = (std::uint64_t{1} << blockSize_) - 1;
      letters_ &= ofBlock;
      special_ &= ofBlock;
      return;
    }
    const auto unfinished = static_cast<std::size_t>(std::countl_one(letters_));
    if (unfinished == largestBlock) {
      special_ |= 1;  // a word that fills the block: beyond the plain way
    } else {
      blockSize_ -= unfinished;
      letters_ &= ~std::uint64_t{0} >> unfinished;
    }
  }

  /// Takes the bits of the 64 bytes, the first of which is worth the lowest bit.
  void takeBits() noexcept {
    letters_ = 0;
    special_ = 0;
    for (std::size_t offset = 0; offset < largestBlock; offset += sizeof(Bytes)) {
      Bytes some;
      Bytes next;
      std::memcpy(&some, bytes_ + offset, sizeof some);
      std::memcpy(&next, bytes_ + offset + 1, sizeof next);
      const Bytes fromA = (some | 0x20) - 'a';  // in either case
      letters_ |= bitsOf(std::bit_cast<Bytes>((fromA < 26) | (some == '\''))) << offset;
      const auto special = (some == '@') | ((some == ':') & (next == '/')) |
                           ((some == 0xC4) & (next == 0xB0)) |  // capital I with a dot
                           ((some == 0xE2) & (next == 0x84));   // Kelvin sign, and others
      special_ |= bitsOf(std::bit_cast<Bytes>(special)) << offset;
    }
  }

  /// The word of `length` letters at `start`, behind which at least 16 bytes may be read.
  static MoodNoteWord wordAt(const char* start, std::size_t length) noexcept {
    MoodNoteWord word;
    std::memcpy(&word.head, start, sizeof word.head);
    std::memcpy(&word.tail, start + sizeof word.head, sizeof word.tail);
    constexpr std::uint64_t lowerCase = 0x2020'2020'2020'2020U;  // leaves the apostrophe what it is
    const auto& [head, tail] = kept[std::min(length, kept.size() - 1)];
    return {(word.head | lowerCase) & head, (word.tail | lowerCase) & tail};
  }

  /// By a word's length, which of its bytes are its own. The last is for words that are too long.
  static constexpr auto kept = [] {
    std::array<std::array<std::uint64_t, 2>, MoodNoteWord::longest + 2> kept{};
    for (std::size_t length = 1; length <= MoodNoteWord::longest; ++length) {
      kept[length] = kept[length - 1];
      kept[length][(length - 1) / 8] |= std::uint64_t{0xFF} << (length - 1) % 8 * 8;
    }
    return kept;
  }();

  // ---- The careful way.

  /// Reads a word, a handle, or one byte of anything else.
  template <class Take>
  void readCarefully(Take& take) noexcept {
    if (*place_ == '@') {
      skipHandle();
    } else if (is(*place_, ofWord) || foreignLetter().size != 0) {
      readWord(take);
    } else {
      ++place_;
    }
  }

  /// A character outside ASCII whose lower case has an ASCII letter.
  struct ForeignLetter {
    std::size_t size = 0;  ///< In bytes; 0 for none.
    char letter = 0;
    bool endsWord = false;
  };

  /// The one that stands here, if one does.
  ForeignLetter foreignLetter() const noexcept {
    if (rest().starts_with("\u212A")) {  // Kelvin sign
      return {.size = 3, .letter = 'k', .endsWord = false};
    }
    if (rest().starts_with("\u0130")) {  // capital I with a dot above
      return {.size = 2, .letter = 'i', .endsWord = true};
    }
    return {};
  }

  /// Passes over letters here, calls `take` with each in lower case, and ends where a word does.
  template <class Take>
  void readLetters(std::uint8_t kind, Take take) noexcept {
    while (true) {
      const char* place = place_;
      while (place != end_ && is(*place, kind)) {
        take(lowerCase(*place++));
      }
      place_ = place;
      const auto [size, letter, endsWord] = foreignLetter();
      if (size == 0) {
        return;
      }
      take(letter);
      place_ += size;
      if (endsWord) {
        return;
      }
    }
  }

  /// Reads the letters here, and the link that they begin, if they do: it is no part of the word.
  template <class Take>
  void readWord(Take& take) noexcept {
    std::array<char, MoodNoteWord::longest> letters;
    std::size_t length = 0;
    const char* const start = place_;
    readLetters(ofWord, [&](char letter) {
      if (length < letters.size()) {
        letters[length] = letter;
      }
      ++length;
    });
    length -= skipLink(start);
    if (length != 0) {
      take(MoodNoteWord({letters.data(), length <= letters.size() ? length : 0}));
    }
  }

  void skipHandle() noexcept {
    const char* const start = ++place_;
    readLetters(ofHandle, [](char) {});
    skipLink(start);
  }

  /// Passes over the link whose `://` stands here, if its `http` or `https` ends here and begins at `start`
  /// or later. Says how many letters of the link came before the colon; 0 for no link.
  std::size_t skipLink(const char* start) noexcept {
    if (!rest().starts_with("://")) {
      return 0;
    }
    const auto before = std::string_view(start, place_);
    const auto endsWith = [&](std::string_view scheme) {
      return before.size() >= scheme.size() &&
             std::ranges::equal(before.substr(before.size() - scheme.size()), scheme, {}, lowerCase);
    };
    const std::size_t letters = endsWith("https") ? 5 : endsWith("http") ? 4 : 0;
    const char* const target = place_ + 3;
    if (letters == 0 || target == end_ || isWhiteSpaceAt(target)) {
      return 0;
    }
    place_ = std::find_if(target, end_, [&](const char& byte) { return isWhiteSpaceAt(&byte); });
    return letters;
  }

  /// Whether a character with the property White_Space (Unicode 15) stands at `place`.
  bool isWhiteSpaceAt(const char* place) const noexcept {
    static constexpr std::string_view beyondAscii[] = {
        "\u0085", "\u00A0", "\u1680", "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006",
        "\u2007", "\u2008", "\u2009", "\u200A", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000",
    };
    return is(*place, whiteSpace) &&
           (static_cast<unsigned char>(*place) < 0x80 ||
            std::ranges::any_of(beyondAscii, [text = std::string_view(place, end_)](std::string_view space) {
              return text.starts_with(space);
            }));
  }

  const char* place_;
  const char* end_;

  const char* block_;
  const char* bytes_ = nullptr;  ///< Those of the block, behind which 16 more may be read.
  std::size_t blockSize_ = 0;
  std::uint64_t letters_ = 0;  ///< A bit for each byte of the block.
  std::uint64_t special_ =
      0;  ///< Likewise: where something may begin or end that only the careful way reads.
  std::array<char, largestBlock + sizeof(MoodNoteWord)> atTheEnd_{};  ///< A copy of the last bytes.
};

}  // namespace kestrel
