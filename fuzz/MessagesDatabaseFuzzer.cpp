// The Messages database of somebody's disk, damaged in any way: it ends in a summary that adds up, or in one
// of the reader's errors, and stays what it was.
//
// An input is the database, as long as it may be. From the first beginning of a write-ahead log or of a
// rollback journal in it, it is that file instead, beside the database. An input whose database ends within a
// page, which is refused at once, is fed a second time with that page filled up.

#include <KestrelKit/foundation/Instant.h>
#include <KestrelTrackerMac/reading/MessagesAccessState.h>
#include <KestrelTrackerMac/reading/MessagesDatabase.h>
#include <KestrelTrackerMac/reading/MessagesScanError.h>
#include <KestrelTrackerMac/reading/MessagesScanSummary.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ios>
#include <string>
#include <string_view>
#include <system_error>

namespace {

using kestrel::companion::MessagesAccessState;
using kestrel::companion::MessagesScanError;

/// A folder of the process's own, in memory where the system has such a place.
class Folder {
 public:
  Folder() {
    std::string name =
        std::filesystem::exists("/dev/shm") ? "/dev/shm" : std::filesystem::temp_directory_path();
    name += "/kestrel-fuzz-XXXXXX";
    if (!mkdtemp(name.data())) {
      std::abort();
    }
    path_ = name;
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  std::filesystem::path database() const { return path_ / "chat.db"; }

 private:
  std::filesystem::path path_;
};

void require(bool condition, const char* what) {
  if (!condition) {
    std::fprintf(stderr, "messages_database: %s\n", what);
    std::abort();
  }
}

std::string read(const std::filesystem::path& path) {
  std::string content(std::filesystem::file_size(path), '\0');
  std::ifstream(path, std::ios::binary).read(content.data(), static_cast<std::streamsize>(content.size()));
  return content;
}

void write(const std::filesystem::path& path, std::string_view content) {
  std::ofstream(path, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));
}

/// What stands beside the database: nothing, or the file of that suffix.
struct SideFile {
  std::string_view suffix;
  std::string_view content;
};

/// Splits the side file off an input.
SideFile splitOff(std::string_view& input) {
  using namespace std::string_view_literals;
  struct Beginning {
    std::string_view magic;
    std::string_view suffix;
  };
  // A log's number ends in 2 or 3, for the order of bytes in its checksums.
  constexpr std::array beginnings{Beginning{"\x37\x7f\x06\x82"sv, "-wal"},
                                  Beginning{"\x37\x7f\x06\x83"sv, "-wal"},
                                  Beginning{"\xd9\xd5\x05\xf9\x20\xa1\x63\xd7"sv, "-journal"}};
  std::size_t first = input.size();
  std::string_view suffix;
  for (const auto& beginning : beginnings) {
    if (const auto place = input.find(beginning.magic); place < first) {
      first = place;
      suffix = beginning.suffix;
    }
  }
  const SideFile side{suffix, input.substr(first)};
  input.remove_suffix(side.content.size());
  return side;
}

void requireASummaryThatAddsUp(const kestrel::companion::MessagesScanSummary& summary) {
  std::string previous;
  for (const auto& day : summary.daily) {
    const auto messages = day.sentCount + day.receivedCount;
    require(day.sentCount >= 0 && day.receivedCount >= 0 && messages > 0, "a day without messages");
    require(day.activeConversationCount >= 1 && day.activeConversationCount <= messages,
            "too many conversations");
    require(day.lateNightCount >= 0 && day.lateNightCount <= messages, "too many late-night messages");
    require(!day.averageMessageLength || *day.averageMessageLength >= 1, "an average below one character");
    require(previous < day.date, "days out of order");
    previous = day.date;
  }
}

void feed(std::string_view database, const SideFile& side) {
  static const Folder folder;
  const auto path = folder.database();
  const auto besidePath = path.string() + std::string(side.suffix);
  write(path, database);
  if (!side.suffix.empty()) {
    write(besidePath, side.content);
  }

  const auto access = kestrel::companion::probeMessagesAccess(path);
  require(access == MessagesAccessState::ready || access == MessagesAccessState::unavailable,
          "access denied");
  const auto summary =
      kestrel::companion::scanMessages(path, 365, kestrel::instantSinceReferenceDate(762'876'600));
  if (summary) {
    require(access == MessagesAccessState::ready, "scanned what cannot be opened");
    requireASummaryThatAddsUp(*summary);
  } else {
    require(summary.error() != MessagesScanError::accessRequired, "access denied");
  }

  require(read(path) == database, "the database was changed");
  require(side.suffix.empty() || read(besidePath) == side.content,
          "the file beside the database was changed");
  for (const char* suffix :
       {"-wal", "-shm", "-journal"}) {  // SQLite keeps the first two where there is a log
    std::filesystem::remove(path.string() + suffix);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view database(reinterpret_cast<const char*>(data), size);
  const SideFile side = splitOff(database);
  feed(database, side);
  constexpr std::size_t pageSize = 512;  // of the seeds
  if (database.size() % pageSize != 0) {
    std::string filled(database);
    filled.resize((database.size() + pageSize - 1) / pageSize * pageSize);
    feed(filled, side);
  }
  return 0;
}
