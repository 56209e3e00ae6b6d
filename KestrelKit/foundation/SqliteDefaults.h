#pragma once

#include <KestrelKit/foundation/AppGroupContainer.h>
#include <KestrelKit/foundation/SharedDefaults.h>

#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace kestrel {

/// Shared defaults in one SQLite file, a suite: what one process wrote, the next read of any other sees.
///
/// A write is on the disk when it returns, and a crash at any instant loses at most the write under way. A
/// suite that another process has locked is waited for some seconds. The file is created by the first write,
/// with mode 0600; reading leaves the disk as it is, but for what a crashed writer left to be put in order. A
/// file that is removed or replaced meanwhile is opened anew.
///
/// Any thread; not across a fork.
class SqliteDefaults final : public SharedDefaults {
 public:
  /// The suite in `file`, which need not exist, in a folder that does. A symbolic link is followed and stays,
  /// also one to a file that does not exist yet. Fails, with the reason in words, where the file exists and
  /// cannot be read, or is anything but such a suite.
  [[nodiscard]] static std::expected<std::shared_ptr<SqliteDefaults>, std::string> open(
      const std::filesystem::path& file);

  /// The suite of an application group: `defaults.sqlite` in its container, which the first write creates
  /// where it is missing.
  [[nodiscard]] static std::expected<std::shared_ptr<SqliteDefaults>, std::string> open(
      const AppGroupContainer& container);

  ~SqliteDefaults() override;

  std::optional<PropertyValue> value(std::string_view key) const override;
  bool write(std::span<const Change> changes) override;
  bool update(std::string_view key, const Update& update) override;

  const std::filesystem::path& file() const noexcept { return file_; }

  /// Why a read gave nothing although there may be something, the last one that did; absent where none did.
  std::optional<std::string> readFailure() const;

  /// Why the last write or update was not made; absent where it was.
  std::optional<std::string> writeFailure() const;

 private:
  class Connection;

  // A failure is the reason, in words.

  using Work = std::function<std::expected<void, std::string>(Connection& connection)>;

  SqliteDefaults(std::filesystem::path file, std::optional<AppGroupContainer> container);

  static std::expected<std::shared_ptr<SqliteDefaults>, std::string> opened(
      const std::filesystem::path& file, const std::optional<AppGroupContainer>& container);

  std::expected<void, std::string> connect() const;
  std::expected<void, std::string> create() const;
  std::expected<void, std::string> transaction(const Work& work);
  bool transact(const Work& work);

  const std::filesystem::path file_;
  const std::optional<AppGroupContainer> container_;
  mutable std::mutex mutex_;
  mutable std::unique_ptr<Connection> connection_;  ///< Null while there is no file.
  mutable std::optional<std::string> readFailure_;
  std::optional<std::string> writeFailure_;
};

}  // namespace kestrel
