#include "JsonNesting.h"

#include <KestrelKit/foundation/FileDescriptor.h>
#include <KestrelKit/foundation/JsonLinesFile.h>
#include <KestrelKit/foundation/Utf8.h>

#include <sys/stat.h>

#include <algorithm>
#include <bitset>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <string_view>
#include <system_error>

namespace kestrel {
namespace {

constexpr std::size_t portion = std::size_t{256} * 1024;

/// The first character of `text` that is no JSON blank, or a line feed.
std::optional<char> firstInk(std::string_view text) {
  const std::size_t place = text.find_first_not_of(" \t\r");
  return place == std::string_view::npos ? std::nullopt : std::optional(text[place]);
}

/// Whether a text that comes in pieces can still become a JSON object. What tells is the order of its tokens:
/// of what a decoder refuses something may pass, of what it takes everything does.
class BegunObject {
 public:
  /// False once nothing that can follow makes the text an object.
  bool add(std::string_view piece) noexcept {
    return std::ranges::all_of(piece, [this](char c) { return inText_ ? takeInText(c) : take(c); });
  }

 private:
  // Which tokens may come: each stands for itself, a quote for a text, and a 0 for any other scalar.
  static constexpr std::string_view nothing{};
  static constexpr std::string_view object = "{";
  static constexpr std::string_view key = "\"";
  static constexpr std::string_view keyOrEnd = "\"}";
  static constexpr std::string_view colon = ":";
  static constexpr std::string_view value = "{[0\"";
  static constexpr std::string_view elementOrEnd = "{[0\"]";
  static constexpr std::string_view moreMembersOrEnd = ",}";
  static constexpr std::string_view moreElementsOrEnd = ",]";

  static char tokenWith(char c) noexcept {
    constexpr std::string_view ofNumbersAndWords = "+-.0123456789Eaeflnrstu";
    return ofNumbersAndWords.contains(c) ? '0' : c;
  }

  bool take(char c) noexcept {
    const char token = tokenWith(c);
    const bool goesOn = inScalar_ && token == '0';
    inScalar_ = goesOn;
    if (goesOn || c == ' ' || c == '\t' || c == '\r') {
      return true;
    }
    if (!expected_.contains(token)) {
      return false;
    }
    switch (token) {
      case '{':
      case '[':
        if (depth_ == deepestJson) {
          return false;
        }
        isObject_[depth_++] = token == '{';
        expected_ = token == '{' ? keyOrEnd : elementOrEnd;
        break;
      case '}':
      case ']':
        --depth_;
        expected_ = behindValue();
        break;
      case ':':
        expected_ = value;
        break;
      case ',':
        expected_ = isObject_[depth_ - 1] ? key : value;
        break;
      default:
        inText_ = token == '"';
        inScalar_ = !inText_;
        expected_ = expected_.starts_with(key) ? colon : behindValue();
        break;
    }
    return true;
  }

  bool takeInText(char c) noexcept {
    inText_ = isEscaped_ || c != '"';
    isEscaped_ = !isEscaped_ && c == '\\';
    return static_cast<unsigned char>(c) >= ' ';
  }

  std::string_view behindValue() const noexcept {
    if (depth_ == 0) {
      return nothing;
    }
    return isObject_[depth_ - 1] ? moreMembersOrEnd : moreElementsOrEnd;
  }

  std::string_view expected_ = object;
  bool inScalar_ = false;
  bool inText_ = false;
  bool isEscaped_ = false;
  std::bitset<deepestJson> isObject_;  // and not a list, the value at each level that has begun
  std::size_t depth_ = 0;
};

using LineTaker = std::function<void(std::string_view line)>;

/// Cuts what it is given into lines.
class ObjectLines {
 public:
  ObjectLines() { resize(portion); }

  /// Where the next bytes go.
  std::span<char> room() {
    if (kept_ == size_) {
      judgeLongLine();
    }
    return std::span(buffer_.get(), size_).subspan(kept_);
  }

  /// Takes the `count` bytes that were put there.
  void add(std::size_t count, const LineTaker& take) {
    const std::string_view bytes(buffer_.get(), kept_ + count);
    std::size_t begin = 0;
    for (std::size_t feed = bytes.find('\n', kept_); feed != std::string_view::npos;
         feed = bytes.find('\n', begin)) {
      takeLine(bytes.substr(begin, feed - begin), take);
      isPassedOver_ = false;
      judged_ = 0;
      begin = feed + 1;
    }
    keep(bytes.substr(begin));
  }

  /// Takes what no line feed has ended.
  void end(const LineTaker& take) const { takeLine({buffer_.get(), kept_}, take); }

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
    std::copy_n(begun.begin(), kept_, buffer_.get());
  }

  /// Makes room behind a line that fills the buffer: a larger buffer, unless it is clear that it is no
  /// object.
  void judgeLongLine() {
    if (judged_ == 0) {
      begun_ = {};
    }
    if (begun_.add({buffer_.get() + judged_, kept_ - judged_})) {
      judged_ = kept_;
      resize(2 * size_);
    } else {
      isPassedOver_ = true;
      kept_ = 0;
    }
  }

  /// In place where the system can: another buffer beside this one would take half as much again.
  void resize(std::size_t size) {
    char* const old = buffer_.release();
    void* const resized = std::realloc(old, size);
    if (resized == nullptr) {
      buffer_.reset(old);
      if (const std::new_handler handler = std::get_new_handler()) {  // as operator new has it
        handler();
      }
      throw std::bad_alloc();
    }
    buffer_.reset(static_cast<char*>(resized));
    size_ = size;
  }

  struct Free {
    void operator()(char* bytes) const noexcept { std::free(bytes); }
  };

  std::unique_ptr<char, Free> buffer_;
  std::size_t size_ = 0;       // of the buffer
  std::size_t kept_ = 0;       // the bytes of a line that has not ended
  bool isPassedOver_ = false;  // of that line nothing is kept
  BegunObject begun_;          // the first `judged_` bytes of that line
  std::size_t judged_ = 0;
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
