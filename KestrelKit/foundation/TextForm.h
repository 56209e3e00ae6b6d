#pragma once

#include <cstddef>
#include <string_view>

namespace kestrel {

/// An ASCII digit.
constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

/// Whether `text` is `form` with, for each `0` in it, a character that `isDigitHere` takes.
constexpr bool hasForm(std::string_view text, std::string_view form,
                       bool (*isDigitHere)(char) noexcept) noexcept {
  if (text.size() != form.size()) {
    return false;
  }
  for (std::size_t place = 0; place < form.size(); ++place) {
    if (form[place] == '0' ? !isDigitHere(text[place]) : text[place] != form[place]) {
      return false;
    }
  }
  return true;
}

}  // namespace kestrel
