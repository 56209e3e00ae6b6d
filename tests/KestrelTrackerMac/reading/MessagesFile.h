#pragma once

#include <KestrelKit/foundation/SqliteHandles.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ios>
#include <string>
#include <system_error>

namespace kestrel::companion {

/// A small Messages database in a folder of its own, which goes with it.
class MessagesFile {
 public:
  static constexpr const char* schema =
      "CREATE TABLE message (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, text TEXT, date INTEGER, is_from_me "
      "INTEGER);"
      "CREATE TABLE chat_message_join (chat_id INTEGER, message_id INTEGER, message_date INTEGER);"
      "CREATE INDEX chat_message_join_idx_message_id_only ON chat_message_join(message_id);";

  MessagesFile() {
    std::string name = testing::TempDir() + "kestrel-messages-XXXXXX";
    EXPECT_NE(mkdtemp(name.data()), nullptr);
    folder_ = name;
    std::filesystem::permissions(folder_, std::filesystem::perms(0755));
  }
  MessagesFile(const MessagesFile&) = delete;
  MessagesFile& operator=(const MessagesFile&) = delete;
  ~MessagesFile() {
    std::error_code ignored;
    std::filesystem::permissions(folder_, std::filesystem::perms(0755), ignored);
    std::filesystem::remove_all(folder_, ignored);
  }

  const std::filesystem::path& folder() const { return folder_; }
  std::filesystem::path path() const { return folder_ / "chat.db"; }
  std::filesystem::path path(const char* suffix) const { return path().string() + suffix; }

  /// A connection that writes.
  SqliteConnection open() const {
    sqlite3* connection = nullptr;
    EXPECT_EQ(sqlite3_open(path().c_str(), &connection), SQLITE_OK);
    sqlite3_busy_timeout(connection, 60'000);
    return SqliteConnection(connection);
  }

  static void execute(const SqliteConnection& connection, const std::string& sql) {
    EXPECT_EQ(sqlite3_exec(connection.get(), sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(connection.get()) << " in " << sql;
  }
  void execute(const std::string& sql) const { execute(open(), sql); }

  std::string bytes() const { return bytes(path()); }
  static std::string bytes(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::string content(std::filesystem::file_size(file), '\0');
    stream.read(content.data(), static_cast<std::streamsize>(content.size()));
    return content;
  }
  void overwrite(const std::string& content) const {
    std::ofstream(path(), std::ios::binary)
        .write(content.data(), static_cast<std::streamsize>(content.size()));
  }

 private:
  std::filesystem::path folder_;
};

}  // namespace kestrel::companion
