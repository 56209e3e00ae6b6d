#pragma once

#include <KestrelKit/analytics/MoodNoteLexicon.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kestrel {

/// A word of a note in lower case, packed into two numbers so that it is looked up without a loop over its
/// letters: its first 8 bytes and the next 8, the first byte the lowest, zeros behind the end. A longer word
/// is in no lexicon, and is all zeros.
struct MoodNoteWord {
  static constexpr std::size_t longest = 16;

  std::uint64_t head = 0;
  std::uint64_t tail = 0;

  constexpr MoodNoteWord() noexcept = default;

  constexpr explicit MoodNoteWord(std::string_view lowerCase) noexcept {
    if (lowerCase.size() <= longest) {
      for (std::size_t place = 0; place < lowerCase.size(); ++place) {
        (place < 8 ? head : tail) |= std::uint64_t{static_cast<unsigned char>(lowerCase[place])}
                                     << place % 8 * 8;
      }
    }
  }

  constexpr MoodNoteWord(std::uint64_t first8, std::uint64_t next8) noexcept : head(first8), tail(next8) {}

  constexpr bool operator==(const MoodNoteWord&) const = default;
};

/// What a word says; as it is made, nothing.
struct MoodNoteMeaning {
  std::int8_t score = 0;
  bool isNegator = false;
  bool isAbsolutist = false;
};

/// The lexicon, each word once, in a hash table that the compiler fills without a collision: a look at one
/// place tells what a word says, without a branch that the processor could guess wrong.
class MoodNoteMeanings {
 public:
  consteval MoodNoteMeanings() {
    for (auto [score, words] : MoodNoteLexicon::scored) {
      while (!words.empty()) {
        enterFirst(words).score = static_cast<std::int8_t>(score);
      }
    }
    for (auto words = MoodNoteLexicon::negators; !words.empty();) {
      enterFirst(words).isNegator = true;
    }
    for (auto words = MoodNoteLexicon::absolutists; !words.empty();) {
      enterFirst(words).isAbsolutist = true;
    }
    chooseMultiplier();
    for (std::size_t number = 1; number < count_; ++number) {
      numbers_[placeOf(entries_[number].word)] = static_cast<std::uint16_t>(number);
    }
  }

  constexpr const MoodNoteMeaning& operator[](MoodNoteWord word) const noexcept {
    const std::size_t number = numbers_[placeOf(word)];
    const auto& [head, tail] = entries_[number].word;
    const std::uint64_t difference = (head ^ word.head) | (tail ^ word.tail);
    const std::uint64_t differs = (difference | (0 - difference)) >> 63U;
    return entries_[number & (differs - 1)].meaning;
  }

 private:
  static constexpr unsigned placeBits = 13;  // so many that one multiplier in some hundreds has no collision
  static constexpr std::size_t placeCount = std::size_t{1} << placeBits;

  struct Entry {
    MoodNoteWord word{};
    MoodNoteMeaning meaning{};
  };

  /// Takes the first of `words`, which blanks separate, off them, and gives its meaning, which may be
  /// changed.
  constexpr MoodNoteMeaning& enterFirst(std::string_view& words) {
    const std::size_t size = std::min(words.find(' '), words.size());
    const MoodNoteWord word(words.substr(0, size));
    words.remove_prefix(std::min(size + 1, words.size()));
    std::size_t number = 1;
    while (number < count_ && entries_[number].word != word) {
      ++number;
    }
    count_ = std::max(count_, number + 1);
    entries_[number].word = word;
    return entries_[number].meaning;
  }

  /// From where it is on, the first multiplier without a collision.
  constexpr void chooseMultiplier() {
    std::array<std::uint64_t, placeCount> takenBy{};
    for (std::size_t number = 1; number < count_; ++number) {
      auto& taken = takenBy[placeOf(entries_[number].word)];
      if (taken == multiplier_) {
        multiplier_ += 2;
        number = 0;
      } else {
        taken = multiplier_;
      }
    }
  }

  constexpr std::size_t placeOf(MoodNoteWord word) const noexcept {
    return (word.head ^ std::rotl(word.tail, 29)) * multiplier_ >> (64 - placeBits);
  }

  std::uint64_t multiplier_ =
      0x9E37'79B9'7F4A'83A9U;  // the first from 2^64 over the golden ratio on; see Knuth, TAOCP, 6.4
  std::array<std::uint16_t, placeCount> numbers_{};
  std::array<Entry, 320> entries_{};  // the first is what all other words say
  std::size_t count_ = 1;
};

inline constexpr MoodNoteMeanings moodNoteMeanings;

}  // namespace kestrel
