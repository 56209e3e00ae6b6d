#include <KestrelKit/foundation/QuotedText.h>
#include <command-line/StandardStreams.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>
#include <system_error>
#include <tuple>

namespace kestrel {
namespace {

std::expected<void, std::string> writeAll(int stream, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(stream, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (!canGoOn(stream, POLLOUT)) {
      return std::unexpected(std::generic_category().message(errno));
    }
  }
  return {};
}

std::mutex errorStream;  // Who writes to standard error; guards the two below.
bool passingLineIsShown = false;
bool errorIsSaid = false;

/// ECMA-48: to the first column, and erase to the end of the line.
constexpr std::string_view wipe = "\r\x1b[K";

void writeError(std::string_view text) {
  std::ignore = writeAll(STDERR_FILENO, text);  // There is nowhere left to say that it failed.
}

}  // namespace

void reserveStandardStreams() noexcept {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) == -1) {
      // The lowest number that is free, which is this one's. The output streams cannot be written through it.
      (void)open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
  }
}

bool canGoOn(int descriptor, short direction) noexcept {
  const int error = errno;
  if (error == EAGAIN || error == EWOULDBLOCK) {
    pollfd wanted{.fd = descriptor, .events = direction, .revents = 0};
    while (poll(&wanted, 1, -1) < 0 && errno == EINTR) {
    }
    errno = error;
    return true;
  }
  return error == EINTR;
}

std::expected<void, std::string> writeToStandardOutput(std::string_view text) {
  return writeAll(STDOUT_FILENO, text);
}

void writeErrorLine(std::string_view program, std::string_view message) {
  // Before the lock: where memory runs out for it, that is said through here as well.
  const std::string line = fmt::format("{}{}: {}\n", wipe, program, onOneLine(message));
  const std::scoped_lock lock(errorStream);
  writeError(std::string_view(line).substr(passingLineIsShown ? 0 : wipe.size()));
  passingLineIsShown = false;
  errorIsSaid = true;
}

void showPassingLine(std::string_view line) {
  const std::string wiping = fmt::format("{}{}", wipe, line);
  const std::scoped_lock lock(errorStream);
  if (!errorIsSaid) {
    writeError(wiping);
    passingLineIsShown = true;
  }
}

void wipePassingLine() {
  const std::scoped_lock lock(errorStream);
  if (passingLineIsShown) {
    writeError(wipe);
    passingLineIsShown = false;
  }
}

}  // namespace kestrel
