#include <command-line/InputFile.h>
#include <command-line/StandardStreams.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <string_view>
#include <system_error>

namespace kestrel {
namespace {

/// A file that was opened here, closed again; or standard input, left open.
class Descriptor {
 public:
  explicit Descriptor(const std::string* path)
      : number_(path == nullptr ? STDIN_FILENO : open(path->c_str(), O_RDONLY | O_CLOEXEC)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ > STDIN_FILENO) {
      close(number_);
    }
  }

  int number() const noexcept { return number_; }

 private:
  int number_;
};

/// Larger documents have no decoder.
constexpr std::size_t largest = std::size_t{1} << 32U;

/// What a pipe mostly has at a time.
constexpr std::size_t portion = 65'536;

/// How much there is to read: the size of a file and a byte that shows its end, else a pipe's portion.
std::size_t likelySize(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)
             ? std::max(portion, static_cast<std::size_t>(status.st_size) + 1)
             : portion;
}

}  // namespace

InputFile::InputFile(CLI::App& app, const std::string& what, const std::string& otherwise) {
  app.add_option("FILE", path_, what)->type_name("FILE")->default_str(otherwise);
}

bool InputFile::isTyped() const { return isStandardInput() && isatty(STDIN_FILENO) == 1; }

std::unexpected<Failure> InputFile::failure(std::string_view reason, ExitStatus status) const {
  const std::string name = isStandardInput() ? "standard input" : path_->empty() ? "\"\"" : *path_;
  return std::unexpected(Failure{status, fmt::format("{}: {}", name, reason)});
}

std::unexpected<Failure> InputFile::systemFailure() const {
  return failure(std::generic_category().message(errno), ExitStatus::fileFailed);
}

std::expected<std::size_t, Failure> InputFile::readSome(int descriptor, std::span<char> room) const {
  ssize_t count = 0;
  do {
    count = ::read(descriptor, room.data(), room.size());
  } while (count < 0 && canGoOn(descriptor, POLLIN));
  if (count < 0) {
    return systemFailure();
  }
  return static_cast<std::size_t>(count);
}

std::expected<std::string, Failure> InputFile::read() const {
  const Descriptor descriptor(isStandardInput() ? nullptr : &*path_);
  if (descriptor.number() < 0) {
    return systemFailure();
  }
  std::string text;
  std::size_t room = likelySize(descriptor.number());
  for (std::size_t size = 0; room <= largest;) {
    text.resize(room);
    const auto count = readSome(descriptor.number(), std::span(text).subspan(size));
    if (!count) {
      return std::unexpected(count.error());
    }
    if (*count == 0) {
      text.resize(size);
      return text;
    }
    size += *count;
    room = size == room ? 2 * room : room;
  }
  return failure("more than 4 GiB are no document", ExitStatus::refused);
}

std::expected<void, Failure> InputFile::readLines(const LinesTaker& take) const {
  const Descriptor descriptor(isStandardInput() ? nullptr : &*path_);
  if (descriptor.number() < 0) {
    return systemFailure();
  }
  std::string text(portion, '\0');
  for (std::size_t size = 0;;) {
    if (size == text.size()) {
      text.resize(2 * size);  // A line that is longer.
    }
    const auto count = readSome(descriptor.number(), std::span(text).subspan(size));
    if (!count) {
      return std::unexpected(count.error());
    }
    const std::string_view before(text.data(), size);
    const std::string_view read(text.data() + size, *count);
    if (read.empty()) {
      return before.empty() ? std::expected<void, Failure>() : take(before);
    }
    size += read.size();
    if (const std::size_t feed = read.rfind('\n'); feed != std::string_view::npos) {
      const std::size_t whole = before.size() + feed + 1;
      if (auto taken = take({text.data(), whole}); !taken) {
        return taken;
      }
      std::copy(text.data() + whole, text.data() + size, text.data());
      size -= whole;
    }
  }
}

}  // namespace kestrel
