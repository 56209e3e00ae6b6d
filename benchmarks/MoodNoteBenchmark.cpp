// What it costs to read the mood off notes, and how that grows with them.
//
//   mood_note_benchmark KESTREL [ROUNDS]
//
// Notes of 20 to 240 letters, a line each: in ASCII, and in mixed scripts, where every second word is
// Russian, Japanese, Arabic, … or has a curly apostrophe or an accent. Each round, for 1, 10 and 100 MB: the
// features of every line, in memory; and all of `KESTREL note --lines`, which is the program kestrel, from a
// file into /dev/null. At 1 MB also the same features taken step by step with ICU's regular expressions,
// which must be equal. Prints the medians of ROUNDS (by default 5) in MB of text a second of processor time,
// and how many times faster than with ICU that is.

#include <KestrelKit/analytics/MoodNoteFeatureExtractor.h>
#include <KestrelKit/analytics/MoodNoteLexicon.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <support/LiteralMoodNote.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "Timing.h"

namespace {

using namespace kestrel;
using kestrel::benchmark::median;
using kestrel::benchmark::processorMilliseconds;

[[noreturn]] void fail(std::string_view what) {
  fmt::print(stderr, "mood_note_benchmark: {}\n", what);
  std::exit(1);
}

// ---- Notes.

std::vector<std::string> split(std::string_view words) {
  std::istringstream stream{std::string(words)};
  return {std::istream_iterator<std::string>(stream), {}};
}

constexpr std::string_view usualWords =
    "the a I was and to it of in my for with that but so we on at this day today work sleep slept up down "
    "about "
    "really felt feel some people friend went home again still morning evening coffee";

constexpr std::string_view foreignWords =
    "día mañana сегодня был плохой день спал мало 今日は 良い天気 하루 종일 피곤 เหนื่อย اليوم متعب היום עייף "
    "đặc biệt żółty şüphe "
    "İstanbul “well” can’t — … 👍 😴 Ærø naïve";

/// At least `size` bytes of notes. A sixth of the usual words is one of the lexicon; now and then comes a
/// link, a handle, a capital letter, a mark of punctuation.
std::string notes(std::size_t size, bool inMixedScripts) {
  std::mt19937_64 random(1);
  const auto oneOf = [&](const std::vector<std::string>& words) { return words[random() % words.size()]; };
  const auto usual = split(usualWords);
  const auto foreign = split(foreignWords);
  auto known = split(MoodNoteLexicon::negators);
  for (const auto& [score, words] : MoodNoteLexicon::scored) {
    std::ranges::copy(split(words), std::back_inserter(known));
  }
  std::string text;
  while (text.size() < size) {
    for (auto words = 4 + random() % 45; words != 0; --words) {
      const auto kind = random() % 100;
      std::string word = kind == 0   ? "@juno.example"
                         : kind == 1 ? fmt::format("https://example.org/a/b?c={}", random() % 1000)
                         : kind < 17 ? oneOf(known)
                                     : oneOf(usual);
      if (inMixedScripts && random() % 2 == 0) {
        word = oneOf(foreign);
      } else if (random() % 10 == 0 && word[0] >= 'a') {
        word[0] = static_cast<char>(word[0] - 'a' + 'A');
      }
      text += word;
      if (random() % 10 == 0) {
        text += ".,!?:"[random() % 5];
      }
      text += words == 1 ? '\n' : ' ';
    }
  }
  return text;
}

// ---- Work.

/// The sum of the features, so that all of them are needed, of every line.
template <class FeaturesOf>
double sumOver(std::string_view text, const FeaturesOf& featuresOf) {
  double sum = 0;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    const MoodNoteFeatures features = featuresOf(text.substr(0, end));
    sum += features.sentiment + features.absolutistRatio + features.length;
    text.remove_prefix(end + 1);
  }
  return sum;
}

/// The processor time, in milliseconds, of `kestrel note --lines file`.
double commandMilliseconds(const char* kestrel, const std::string& file) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  std::string words[] = {kestrel, "note", "--lines", file};
  char* const arguments[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data(), nullptr};
  pid_t child = 0;
  const int error = posix_spawn(&child, kestrel, &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  rusage usage{};
  if (error != 0 || wait4(child, &status, 0, &usage) != child || status != 0) {
    fail("the command did not end well");
  }
  const auto milliseconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
  };
  return milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
}

}  // namespace

int main(int count, char** arguments) {
  const int rounds = count == 3 ? std::atoi(arguments[2]) : 5;  // NOLINT(cert-err34-c): 0 is refused below
  if (count < 2 || count > 3 || rounds < 1) {
    fmt::print(stderr, "usage: mood_note_benchmark KESTREL [ROUNDS]\n");
    return 2;
  }
  const auto file =
      std::filesystem::temp_directory_path() / fmt::format("mood-note-benchmark-{}.txt", getpid());
  fmt::print(
      "| text | MB | features, MB/s | note --lines, MB/s | ICU, MB/s | ratio |\n|---|--:|--:|--:|--:|--:|\n");
  for (const bool inMixedScripts : {false, true}) {
    for (const std::size_t megabytes : {1U, 10U, 100U}) {
      const std::string text = notes(megabytes * 1'000'000, inMixedScripts);
      std::ofstream(file) << text;
      std::vector<double> ours;
      std::vector<double> command;
      std::vector<double> icu;
      // So often that what is short is not lost in the clock.
      const std::size_t times = 100 / megabytes;
      const auto speed = [&](double milliseconds, std::size_t repetitions) {
        return static_cast<double>(text.size() * repetitions) / milliseconds / 1e3;
      };
      for (int round = 0; round < rounds; ++round) {
        double sum = 0;
        ours.push_back(speed(processorMilliseconds([&] {
                               for (std::size_t time = 0; time < times; ++time) {
                                 sum = sumOver(text, MoodNoteFeatureExtractor::features);
                               }
                             }),
                             times));
        command.push_back(speed(commandMilliseconds(arguments[1], file), 1));
        if (megabytes == 1) {
          double literal = 0;
          icu.push_back(
              speed(processorMilliseconds([&] { literal = sumOver(text, testing::literalFeatures); }), 1));
          if (literal != sum) {
            fail("the features differ");
          }
        }
      }
      fmt::print("| {} | {} | {:.0f} | {:.0f} |", inMixedScripts ? "mixed scripts" : "ASCII", megabytes,
                 median(ours), median(command));
      if (icu.empty()) {
        fmt::print(" | |\n");
      } else {
        fmt::print(" {:.1f} | {:.0f} |\n", median(icu), median(ours) / median(icu));
      }
      std::fflush(stdout);
    }
  }
  std::filesystem::remove(file);
}
