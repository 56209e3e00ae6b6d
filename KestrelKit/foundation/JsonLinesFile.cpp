#include <KestrelKit/foundation/FileDescriptor.h>
#include <KestrelKit/foundation/JsonLinesFile.h>
#include <KestrelKit/foundation/Utf8.h>

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <system_error>
#include <vector>

namespace kestrel {
namespace {

constexpr std::size_t portion = std::size_t{256} * 1024;

/// The first character of `text` that is no JSON blank, or a line feed.
std::optional<char> firstInk(std::string_view text) {
  const std::size_t place = text.find_first_not_of(" \t\r");
  return place == std::string_view::npos ? std::nullopt : std::optional(text[place]);
}

using LineTaker = std::function<void(std::string_view line)>;

/// Cuts what it is given into lines.
class ObjectLines {
 public:
  /// Where the next bytes go.
  std::span<char> room() {
    if (kept_ == buffer_.size()) {
      buffer_.resize(2 * kept_);
    }
    return std::span(buffer_).subspan(kept_);
  }

  /// Takes the `count` bytes that were put there.
  void add(std::size_t count, const LineTaker& take) {
    const std::string_view bytes(buffer_.data(), kept_ + count);
    std::size_t begin = 0;
    for (std::size_t feed = bytes.find('\n', kept_); feed != std::string_view::npos;
         feed = bytes.find('\n', begin)) {
      takeLine(bytes.substr(begin, feed - begin), take);
      isPassedOver_ = false;
      begin = feed + 1;
    }
    keep(bytes.substr(begin));
  }

  /// Takes what no line feed has ended.
  void end(const LineTaker& take) const { takeLine({buffer_.data(), kept_}, take); }

 private:
  void takeLine(std::string_view line, const LineTaker& take) const {
    if (!isPassedOver_ && firstInk(line) == '{') {
      take(line);
    }
  }

  /// Keeps the beginning of a line, unless it is clear by now that it is no object.
  void keep(std::string_view begun) {
    const auto ink = firstInk(begun);
    isPassedOver_ = isPassedOver_ || (ink && *ink != '{');
    kept_ = isPassedOver_ || !ink ? 0 : begun.size();
    std::copy_n(begun.begin(), kept_, buffer_.begin());
  }

  std::vector<char> buffer_ = std::vector<char>(portion);
  std::size_t kept_ = 0;       // the bytes of a line that has not ended
  bool isPassedOver_ = false;  // of that line nothing is kept
};

std::error_code lastError() { return {errno, std::system_category()}; }

}  // namespace

std::expected<void, FileError> readObjectLines(const std::filesystem::path& file, const LineTaker& take) {
  const auto failure = [&](std::error_code reason) {
    return std::unexpected(FileError{.file = file, .reason = reason});
  };
  const FileDescriptor opened(file, O_RDONLY | O_NONBLOCK);
  struct stat status {};
  if (!opened.isOpen() || fstat(opened.number(), &status) != 0) {
    return failure(lastError());
  }
  if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) {  // reading a folder says that it is one
    return failure(make_error_code(std::errc::not_supported));
  }
  ObjectLines lines;
  Utf8Pieces text;
  while (true) {
    const std::span<char> room = lines.room();
    const ssize_t count = uninterrupted([&] { return read(opened.number(), room.data(), room.size()); });
    if (count < 0) {
      return failure(lastError());
    }
    if (count == 0) {
      break;
    }
    const auto size = static_cast<std::size_t>(count);
    if (!text.add({room.data(), size})) {
      return failure(make_error_code(std::errc::illegal_byte_sequence));
    }
    lines.add(size, take);
  }
  if (!text.isWhole()) {
    return failure(make_error_code(std::errc::illegal_byte_sequence));
  }
  lines.end(take);
  return {};
}

}  // namespace kestrel
