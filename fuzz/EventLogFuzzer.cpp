// The event log: any bytes as its file. A line that is no event never costs another, bytes that are no UTF-8
// cost the whole log, and what was read and recorded is what is read again.

#include <KestrelKit/DogfoodLog.h>
#include <KestrelKit/foundation/Utf8.h>
#include <KestrelKit/model/JSONCoders.h>

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

using namespace kestrel;

namespace {

using Event = DogfoodLog::Event;

/// A folder of this process, in memory where the machine has such a file system, so that it is quick.
const std::filesystem::path& folder() {
  static const std::filesystem::path made = [] {
    std::error_code isNone;
    const bool isThere = std::filesystem::is_directory("/dev/shm", isNone);
    std::string pattern =
        (isThere ? std::filesystem::path("/dev/shm") : std::filesystem::temp_directory_path()) /
        "event-log-fuzzer-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
      std::abort();
    }
    std::atexit([] { std::filesystem::remove_all(folder()); });
    return std::filesystem::path(pattern);
  }();
  return made;
}

/// The definition, line by line.
std::vector<Event> eventsOf(std::string_view text) {
  std::vector<Event> events;
  if (invalidUtf8(text)) {
    return events;
  }
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(line.size() < text.size() ? line.size() + 1 : line.size());
    if (auto event = JSONCoders::decoder.decode<Event>(line)) {
      events.push_back(*std::move(event));
    }
  }
  return events;
}

void require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input{reinterpret_cast<const char*>(data), size};
  const std::filesystem::path file = folder() / "log.jsonl";
  std::ofstream(file, std::ios::binary) << input;

  const Instant now = instantSinceReferenceDate(736'245'000);
  DogfoodLog log(file, [&] { return now; });
  auto events = eventsOf(input);
  require(log.allEvents() == events);
  require(log.unreadable().has_value() == invalidUtf8(input).has_value());
  require(eventsOf(log.exportText()) == events);
  require(log.missedElevatedReports() >= 0);

  require(log.logSelfReport("2024-05-01", KestrelState::mania, SelfReportSource::manual));
  events.push_back({.timestamp = now,
                    .kind = Event::Kind::selfReport,
                    .date = "2024-05-01",
                    .stateRaw = "Mania",
                    .confidence = {},
                    .source = "manual"});
  require(log.allEvents() == events);
  std::error_code ignored;
  std::filesystem::remove(file.string() + ".unreadable", ignored);
  return 0;
}
