#include <command-line/Progress.h>
#include <command-line/StandardStreams.h>
#include <fmt/format.h>
#include <unistd.h>

#include <chrono>
#include <system_error>

namespace kestrel {

Progress::Progress() {
  if (isatty(STDERR_FILENO) == 1) {
    try {
      teller_ = std::thread([this] { tell(); });
    } catch (const std::system_error&) {
      // No thread is to be had. The work goes on untold.
    }
  }
}

Progress::~Progress() {
  if (teller_.joinable()) {
    {
      const std::scoped_lock lock(mutex_);
      isEnded_ = true;
    }
    ended_.notify_one();
    teller_.join();
    wipePassingLine();
  }
}

void Progress::tell() {
  const auto begin = std::chrono::steady_clock::now();
  std::unique_lock lock(mutex_);
  for (std::chrono::seconds worked(1); !ended_.wait_until(lock, begin + worked, [this] { return isEnded_; });
       ++worked) {
    showPassingLine(fmt::format("working, {} s", worked.count()));
  }
}

}  // namespace kestrel
