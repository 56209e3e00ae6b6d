// The Messages database of somebody's disk, damaged in any way: it ends in a summary that adds up, or in one of the
// reader's errors, and stays what it was.

#include <KestrelTrackerMac/reading/MessagesDatabase.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ios>
#include <string>

namespace {

using kestrel::companion::MessagesAccessState;
using kestrel::companion::MessagesScanError;

/// A folder of the process's own, in memory where the system has such a place.
class Folder {
 public:
  Folder() {
    std::string name = std::filesystem::exists("/dev/shm") ? "/dev/shm" : std::filesystem::temp_directory_path();
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Folder folder;
  const auto path = folder.database();
  // A database that ends within a page is refused at once, so the seeds' pages are filled up.
  constexpr std::size_t pageSize = 512;
  std::string content(reinterpret_cast<const char*>(data), size);
  content.resize((size + pageSize - 1) / pageSize * pageSize);
  std::ofstream(path, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));

  const auto access = kestrel::companion::probeMessagesAccess(path);
  require(access == MessagesAccessState::ready || access == MessagesAccessState::unavailable, "access denied");
  const auto summary =
      kestrel::companion::scanMessages(path, 365, kestrel::instantSinceReferenceDate(762'876'600));
  if (summary) {
    require(access == MessagesAccessState::ready, "scanned what cannot be opened");
    std::string previous;
    for (const auto& day : summary->daily) {
      const auto messages = day.sentCount + day.receivedCount;
      require(day.sentCount >= 0 && day.receivedCount >= 0 && messages > 0, "a day without messages");
      require(day.activeConversationCount >= 1 && day.activeConversationCount <= messages, "too many conversations");
      require(day.lateNightCount >= 0 && day.lateNightCount <= messages, "too many late-night messages");
      require(!day.averageMessageLength || *day.averageMessageLength >= 1, "an average below one character");
      require(previous < day.date, "days out of order");
      previous = day.date;
    }
  } else {
    require(summary.error() != MessagesScanError::accessRequired, "access denied");
  }

  std::string after(std::filesystem::file_size(path), '\0');
  std::ifstream(path, std::ios::binary).read(after.data(), static_cast<std::streamsize>(after.size()));
  require(after == content, "the database was changed");
  for (const char* suffix : {"-wal", "-shm"}) {  // what SQLite keeps beside a database that claims to have a log
    std::filesystem::remove(path.string() + suffix);
  }
  return 0;
}
