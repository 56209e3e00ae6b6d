#include <support/LiteralMoodNote.h>

#include <KestrelKit/analytics/MoodNoteLexicon.h>

#include <unicode/locid.h>
#include <unicode/regex.h>
#include <unicode/unistr.h>
#include <unicode/utypes.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace kestrel::testing {
namespace {

/// What is a matter of the ICU that is at hand, such as an expression that does not compile, ends the test.
void require(UErrorCode error) {
  if (U_FAILURE(error)) {
    std::abort();
  }
}

std::vector<std::string> split(std::string_view words) {
  std::istringstream stream{std::string(words)};
  return {std::istream_iterator<std::string>(stream), {}};
}

/// An expression, compiled once.
class Expression {
 public:
  explicit Expression(const char* text) {
    UErrorCode error = U_ZERO_ERROR;
    pattern_.reset(icu::RegexPattern::compile(icu::UnicodeString::fromUTF8(text), /*flags=*/0, error));
    require(error);
  }

  /// `text` with a blank in the place of each match.
  icu::UnicodeString blankedIn(const icu::UnicodeString& text) const {
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<icu::RegexMatcher> matcher(pattern_->matcher(text, error));
    icu::UnicodeString blanked = matcher->replaceAll(" ", error);
    require(error);
    return blanked;
  }

  std::vector<std::string> matchesIn(const icu::UnicodeString& text) const {
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<icu::RegexMatcher> matcher(pattern_->matcher(text, error));
    std::vector<std::string> matches;
    while (matcher->find(error)) {
      matcher->group(error).toUTF8String(matches.emplace_back());
    }
    require(error);
    return matches;
  }

 private:
  std::unique_ptr<icu::RegexPattern> pattern_;
};

/// The pieces between characters that are in no word are the longest matches of those that are.
std::vector<std::string> words(const icu::UnicodeString& note) {
  static const Expression link("https?://\\P{White_Space}+");
  static const Expression handle("@[a-z0-9_.-]+");
  static const Expression word("[a-z']+");
  icu::UnicodeString text = note;
  text.toLower(icu::Locale::getRoot());
  return word.matchesIn(handle.blankedIn(link.blankedIn(text)));
}

double rounded(double x) { return std::floor(x * 10000 + 0.5) / 10000; }

double sentiment(const std::vector<std::string>& words) {
  static const auto scores = [] {
    std::unordered_map<std::string, double> found;
    for (const auto& [score, scored] : MoodNoteLexicon::scored) {
      for (const auto& word : split(scored)) {
        found.emplace(word, score);
      }
    }
    return found;
  }();
  static const auto negatorList = split(MoodNoteLexicon::negators);
  static const std::unordered_set<std::string> negators(negatorList.begin(), negatorList.end());
  double sum = 0;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const auto found = scores.find(words[i]);
    if (found == scores.end()) {
      continue;
    }
    bool isNegated = false;
    for (std::size_t j = i - std::min<std::size_t>(i, 3); j < i; ++j) {
      isNegated = isNegated || negators.contains(words[j]);
    }
    sum += isNegated ? found->second * -0.74 : found->second;
  }
  if (sum == 0) {
    return 0;
  }
  const double s = sum / std::sqrt(sum * sum + 15);
  return s <= -1 ? -1 : rounded(std::min(s, 1.0));
}

double absolutistRatio(const std::vector<std::string>& words) {
  static const auto list = split(MoodNoteLexicon::absolutists);
  static const std::unordered_set<std::string> absolutists(list.begin(), list.end());
  if (words.empty()) {
    return 0;
  }
  const auto count =
      std::ranges::count_if(words, [](const auto& word) { return absolutists.contains(word); });
  return rounded(static_cast<double>(count) / static_cast<double>(words.size()));
}

}  // namespace

MoodNoteFeatures literalFeatures(std::string_view text) {
  const auto note = icu::UnicodeString::fromUTF8({text.data(), static_cast<int32_t>(text.size())});
  const auto found = words(note);
  return {.sentiment = sentiment(found),
          .absolutistRatio = absolutistRatio(found),
          .length = static_cast<double>(note.length())};
}

}  // namespace kestrel::testing
