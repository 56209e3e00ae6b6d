// Reads and writes a dashboard snapshot of 22,000 days of posts, and so do nlohmann-json, whose tree is what
// it would otherwise be read into, and simdjson, whose tape is the least that a reader of JSON can do.
//
//   dashboard_snapshot_benchmark [ROUNDS]    figures, as the medians of rounds in which all take turns
//   dashboard_snapshot_benchmark --memory    the peak of one decoding, beyond text and records

#include <KestrelKit/formats/DashboardSnapshot.h>
#include <KestrelKit/model/JSONCoders.h>

#include <fmt/format.h>
#include <malloc.h>
#include <simdjson.h>
#include <sys/resource.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Timing.h"

using namespace kestrel;
using benchmark::median;
using benchmark::processorMilliseconds;

namespace {

constexpr int days = 22'000;

/// Counts as a person's posts have them, mostly small; figures rounded to four decimals, as the product
/// rounds them, but for the mean length of a post, which has all its digits.
VizDay randomDay(std::mt19937_64& random, int number) {
  const auto count = [&](std::uint64_t end) { return static_cast<std::int64_t>(random() % end); };
  const auto rounded = [&](double least, double range) {
    constexpr double scale = 1e4;
    return std::round((least + range * static_cast<double>(random() % 1'000'000) / 1e6) * scale) / scale;
  };
  VizDay day{
      .date = fmt::format("{:04}-{:02}-{:02}", 1980 + number / 336, 1 + number / 28 % 12, 1 + number % 28),
      .posts = count(40),
      .avgSentiment = rounded(-1, 2),
      .sentimentStdev = rounded(0, 1),
      .replyCount = count(20),
      .quoteCount = count(10),
      .repostCount = count(20),
      .likeCount = count(2000),
      .followCount = count(10),
      .mentionCount = count(10),
      .linkCount = count(10),
      .hashtagCount = count(30),
      .avgPostLength = static_cast<double>(count(9000)) / 37,
      .absolutistRate = rounded(0, 0.1),
      .lateNightPosts = count(10),
      .postsByHour = std::vector<std::int64_t>(24),
  };
  for (std::int64_t& posts : *day.postsByHour) {
    posts = random() % 3 == 0 ? count(120) : 0;
  }
  return day;
}

std::string snapshotText() {
  constexpr std::uint64_t seed = 20010101;
  std::mt19937_64 random(seed);
  LossyArray<VizDay> daily;
  for (int number = 0; number < days; ++number) {
    daily.elements.push_back(randomDay(random, number));
  }
  return JSONCoders::encoder
      .encode(DashboardSnapshot{.essential = EssentialTier{.viz = VizTier{.dailyRaw = std::move(daily)}}})
      .value();
}

long peakKibibytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

long residentKibibytes() {
  std::ifstream file("/proc/self/statm");
  long pages = 0;
  file >> pages >> pages;
  return pages * 4;
}

/// The text and the records stay, so that what is freed beside them is what the decoding needed for itself.
int tellMemory() {
  std::string text = snapshotText();
  text.shrink_to_fit();
  malloc_trim(0);
  std::ofstream("/proc/self/clear_refs") << 5;  // the peak begins anew
  const auto snapshot = JSONCoders::decoder.decode<DashboardSnapshot>(text);
  const long peak = peakKibibytes();
  malloc_trim(0);
  const long after = residentKibibytes();
  const double document = static_cast<double>(text.size()) / 1024;
  fmt::print("document {:.0f} KiB, with the records {} KiB, peak {} KiB: {:.2f} documents beyond them\n",
             document, after, peak, static_cast<double>(peak - after) / document);
  return snapshot ? 0 : 1;
}

struct Figures {
  std::vector<double> records;  // text to records
  std::vector<double> tree;     // text to nlohmann-json's tree
  std::vector<double> recordsAndFree;
  std::vector<double> treeAndFree;
  std::vector<double> tape;  // text to simdjson's tape, in a parser that has its memory
  std::vector<double> text;  // records to text
  std::vector<double> dump;  // nlohmann-json's tree to text
};

int tellTimes(int rounds) {
  const std::string text = snapshotText();
  const simdjson::padded_string padded(text);
  simdjson::dom::parser parser;
  Figures figures;
  for (int round = 0; round < rounds; ++round) {
    DashboardSnapshot snapshot;
    nlohmann::json tree;
    figures.tape.push_back(processorMilliseconds([&] {
      if (parser.parse(padded).error() != simdjson::SUCCESS) {
        std::abort();
      }
    }));
    figures.records.push_back(processorMilliseconds(
        [&] { snapshot = JSONCoders::decoder.decode<DashboardSnapshot>(text).value(); }));
    figures.tree.push_back(processorMilliseconds([&] { tree = nlohmann::json::parse(text); }));
    figures.recordsAndFree.push_back(processorMilliseconds([&] {
      if (!JSONCoders::decoder.decode<DashboardSnapshot>(text)) {
        std::abort();
      }
    }));
    figures.treeAndFree.push_back(processorMilliseconds([&] {
      if (nlohmann::json::parse(text).empty()) {
        std::abort();
      }
    }));
    std::string written;
    figures.text.push_back(
        processorMilliseconds([&] { written = JSONCoders::encoder.encode(snapshot).value(); }));
    std::string dumped;
    figures.dump.push_back(processorMilliseconds([&] { dumped = tree.dump(); }));
    if (written != text || dumped.size() < text.size() / 2) {
      std::abort();
    }
  }
  const auto ratio = [](const std::vector<double>& above, const std::vector<double>& below) {
    std::vector<double> ratios;
    for (std::size_t round = 0; round < above.size(); ++round) {
      ratios.push_back(above[round] / below[round]);
    }
    return median(std::move(ratios));
  };
  fmt::print("document {:.2f} MB, {} days, median of {} rounds, processor time\n",
             static_cast<double>(text.size()) / 1e6, days, rounds);
  fmt::print("text to records   {:6.1f} ms\n", median(figures.records));
  fmt::print("simdjson's tape   {:6.1f} ms: to records {:.2f} times as long\n", median(figures.tape),
             ratio(figures.records, figures.tape));
  fmt::print("nlohmann's parse  {:6.1f} ms: {:.2f} times as long as to records\n", median(figures.tree),
             ratio(figures.tree, figures.records));
  fmt::print("likewise, and freed: {:.1f} ms and {:.1f} ms, {:.2f} times as long\n",
             median(figures.recordsAndFree), median(figures.treeAndFree),
             ratio(figures.treeAndFree, figures.recordsAndFree));
  fmt::print("records to text   {:6.1f} ms: {:.0f} MB/s\n", median(figures.text),
             static_cast<double>(text.size()) / 1e3 / median(figures.text));
  fmt::print("nlohmann's dump   {:6.1f} ms: {:.2f} times as long as to text\n", median(figures.dump),
             ratio(figures.dump, figures.text));
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1 && std::string_view(argv[1]) == "--memory") {
    return tellMemory();
  }
  constexpr int usualRounds = 21;
  return tellTimes(argc > 1 ? std::max(1, std::atoi(argv[1])) : usualRounds);  // NOLINT(cert-err34-c)
}
