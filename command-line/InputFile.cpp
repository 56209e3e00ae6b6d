#include <command-line/InputFile.h>

#include "StandardStreams.h"

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

/// How much there is to read: the size of a file and a byte that shows its end, else a pipe's usual portion.
std::size_t likelySize(int descriptor) {
  constexpr std::size_t portion = 65'536;
  struct stat status {};
  return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)
             ? std::max(portion, static_cast<std::size_t>(status.st_size) + 1)
             : portion;
}

}  // namespace

InputFile::InputFile(CLI::App& app, const std::string& what) {
  app.add_option("FILE", path_, what)->type_name("FILE")->default_str("-, standard input");
}

bool InputFile::isTyped() const { return isStandardInput() && isatty(STDIN_FILENO) == 1; }

std::expected<std::string, Failure> InputFile::read() const {
  const auto failure = [&](std::string_view reason, ExitStatus status) {
    const std::string name = isStandardInput() ? "standard input" : path_.empty() ? "\"\"" : path_;
    return std::unexpected(Failure{status, fmt::format("{}: {}", name, reason)});
  };
  const Descriptor descriptor(isStandardInput() ? nullptr : &path_);
  if (descriptor.number() < 0) {
    return failure(std::generic_category().message(errno), ExitStatus::fileFailed);
  }
  std::string text;
  std::size_t room = likelySize(descriptor.number());
  for (std::size_t size = 0; room <= largest;) {
    text.resize(room);
    const ssize_t count = ::read(descriptor.number(), text.data() + size, room - size);
    if (count == 0) {
      text.resize(size);
      return text;
    }
    if (count > 0) {
      size += static_cast<std::size_t>(count);
      room = size == room ? 2 * room : room;
    } else if (!canGoOn(descriptor.number(), POLLIN)) {
      return failure(std::generic_category().message(errno), ExitStatus::fileFailed);
    }
  }
  return failure("more than 4 GiB are no document", ExitStatus::refused);
}

}  // namespace kestrel
