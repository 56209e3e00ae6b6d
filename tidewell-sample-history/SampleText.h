#pragma once

#include "Chance.h"

#include <cstddef>
#include <string>

namespace kestrel {

/// How many languages there are to choose from.
extern const std::size_t sampleLanguages;

/// Something one might write to a friend, one to four sentences in the language of that number, now and then
/// with an emoji.
std::string sampleText(std::size_t language, Chance& chance);

/// The same at length: several hundred to several thousand characters.
std::string longSampleText(std::size_t language, Chance& chance);

}  // namespace kestrel
