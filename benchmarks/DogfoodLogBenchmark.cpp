// What recording an event costs beside the bare writing of the same bytes, and where it goes.
//
//   dogfood_log_benchmark [ROUNDS]
//
// A log of 3,650 events, ten years of days. Each round, in turns: the bare write, flush and rename of the
// log's bytes; the recording of one event, in place of one of the same day; its four parts by themselves.
// Prints medians by the clock and in processor time, and how fast the log is read. Works in the folder for
// temporary files, or in that which TMPDIR names. Takes at least 5 ROUNDS, by default 101.

#include <KestrelKit/DogfoodLog.h>
#include <KestrelKit/foundation/AtomicFile.h>
#include <KestrelKit/foundation/CivilDay.h>
#include <KestrelKit/foundation/FileDescriptor.h>
#include <KestrelKit/foundation/JsonLinesFile.h>
#include <KestrelKit/model/JSONCoders.h>
#include <fmt/format.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Timing.h"

namespace {

namespace fs = std::filesystem;
using kestrel::DogfoodLog;
using kestrel::JSONCoders;
using kestrel::benchmark::median;
using kestrel::benchmark::processorMilliseconds;
using Event = DogfoodLog::Event;

constexpr int eventCount = 3650;

std::vector<Event> tenYears() {
  std::vector<Event> events;
  for (int day = 0; day < eventCount; ++day) {
    const std::chrono::local_days date =
        std::chrono::local_days{std::chrono::year{2014} / 1 / 1} + std::chrono::days{day};
    events.push_back({.timestamp = kestrel::instantSinceReferenceDate(410'227'200.0 + day * 86'400.0),
                      .kind = Event::Kind::classifier,
                      .date = kestrel::civilDayText(date).value(),
                      .stateRaw = "Moderate Depression",
                      .confidence = day % 101});
  }
  return events;
}

/// What the simplest program would do that is safe: no permissions kept, no folder flushed, no link followed.
bool replaceBarely(const fs::path& file, std::string_view bytes) {
  const fs::path temporary = file.string() + ".new";
  kestrel::FileDescriptor opened(temporary, O_WRONLY | O_CREAT | O_TRUNC, 0600);
  return opened.isOpen() &&
         write(opened.number(), bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) &&
         fsync(opened.number()) == 0 && opened.closeNow() &&
         std::rename(temporary.c_str(), file.c_str()) == 0;
}

/// The same, and the folder flushed.
bool replaceBarelyForGood(const fs::path& file, std::string_view bytes) {
  const kestrel::FileDescriptor folder(file.parent_path(), O_RDONLY | O_DIRECTORY);
  return replaceBarely(file, bytes) && folder.isOpen() && fsync(folder.number()) == 0;
}

/// What one kind of work takes, in milliseconds, a value a round.
struct Times {
  std::vector<double> clock{};
  std::vector<double> processor{};

  template <class Work>
  void take(const Work& work) {
    const auto begin = std::chrono::steady_clock::now();
    processor.push_back(processorMilliseconds([&] {
      if (!work()) {
        fmt::print(stderr, "dogfood_log_benchmark: something failed\n");
        std::exit(1);
      }
    }));
    clock.push_back(
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count());
  }
};

}  // namespace

int main(int count, char** arguments) {
  constexpr int fewestRounds = 5;
  const int rounds = count > 1 ? std::atoi(arguments[1]) : 101;  // NOLINT(cert-err34-c): 0 is refused below
  if (rounds < fewestRounds) {
    fmt::print(stderr, "dogfood_log_benchmark: at least {} rounds are needed\n", fewestRounds);
    return 1;
  }
  std::string pattern = fs::temp_directory_path() / "dogfood-log-XXXXXX";
  const fs::path folder = mkdtemp(pattern.data());
  const fs::path file = folder / "log.jsonl";
  const std::string text = JSONCoders::encoder.encodeLines(std::span<const Event>(tenYears())).value();

  Times bare;
  Times bareForGood;
  Times recording;
  Times reading;
  Times changing;
  Times encoding;
  Times writing;
  for (int round = 0; round < rounds; ++round) {
    bare.take([&] { return replaceBarely(file, text); });
    bareForGood.take([&] { return replaceBarelyForGood(file, text); });
    DogfoodLog log(file);
    recording.take(
        [&] { return log.logClassification("2014-01-01", kestrel::KestrelState::euthymia, round % 101); });

    std::vector<Event> events;
    reading.take([&] {
      auto read = kestrel::readJsonLines<Event>(file, JSONCoders::decoder);
      events = read ? *std::move(read) : std::vector<Event>();
      return events.size() == eventCount;
    });
    changing.take([&] {
      const Event event = events.back();
      std::erase_if(events,
                    [&](const Event& old) { return old.kind == event.kind && old.date == event.date; });
      events.push_back(event);
      return events.size() == eventCount;
    });
    std::string encoded;
    encoding.take([&] {
      encoded = JSONCoders::encoder.encodeLines(std::span<const Event>(events)).value();
      return true;
    });
    writing.take([&] { return kestrel::replaceFile(file, encoded).has_value(); });
  }
  std::error_code ignored;
  fs::remove_all(folder, ignored);

  fmt::print("{} events, {} bytes, {} rounds\n\n", eventCount, text.size(), rounds);
  fmt::print("| | by the clock, ms | processor time, ms |\n|---|--:|--:|\n");
  const std::pair<const char*, const Times*> rows[] = {
      {"bare write, flush and rename", &bare},
      {"the same, and the folder flushed", &bareForGood},
      {"recording an event", &recording},
      {"of it reading", &reading},
      {"of it changing", &changing},
      {"of it encoding", &encoding},
      {"of it writing", &writing},
  };
  for (const auto& [name, times] : rows) {
    fmt::print("| {} | {:.2f} | {:.2f} |\n", name, median(times->clock), median(times->processor));
  }
  const auto more = [](const std::vector<double>& times, const std::vector<double>& than) {
    std::vector<double> differences;
    for (std::size_t round = 0; round < times.size(); ++round) {
      differences.push_back(times[round] - than[round]);
    }
    return median(differences);
  };
  const auto speed = [&](const std::vector<double>& times) {
    return static_cast<double>(text.size()) / 1e3 / median(times);
  };
  fmt::print(
      "\nRecording takes {:.2f} ms more of processor time than the bare writing, and by the clock {:.2f} ms "
      "more, "
      "of those {:.2f} without the flush of the folder (medians of the differences). Reading: {:.0f} MB/s by "
      "the "
      "clock, {:.0f} MB/s of processor time.\n",
      more(recording.processor, bare.processor), more(recording.clock, bare.clock),
      more(recording.clock, bareForGood.clock), speed(reading.clock), speed(reading.processor));
}
