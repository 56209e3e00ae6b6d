#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <utility>

namespace kestrel {

/// The result of `call`, a call to the system that gives -1 and `errno` where it fails, made again for as
/// long as a signal comes between.
template <class Call>
auto uninterrupted(Call call) {
  auto result = call();
  while (result == -1 && errno == EINTR) {
    result = call();
  }
  return result;
}

/// An open file, closed with its object.
class FileDescriptor {
 public:
  /// Opens `path` as open() does, for this process alone. Where it fails it is not open, and `errno` says
  /// why.
  FileDescriptor(const std::filesystem::path& path, int flags, mode_t mode = 0)
      : number_(uninterrupted([&] { return open(path.c_str(), flags | O_CLOEXEC, mode); })) {}
  FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~FileDescriptor() { closeNow(); }

  bool isOpen() const noexcept { return number_ >= 0; }
  int number() const noexcept { return number_; }

  /// Closes it; false where that tells of an error in writing, and `errno` says which. A signal that comes
  /// between is none: the file is closed all the same.
  bool closeNow() noexcept {
    const int number = std::exchange(number_, -1);
    return number < 0 || close(number) == 0 || errno == EINTR;
  }

 private:
  int number_;
};

}  // namespace kestrel
