#include <KestrelKit/foundation/SqliteDefaults.h>
#include <KestrelKit/foundation/SqliteFileSystem.h>
#include <support/TemporaryFolder.h>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <fstream>

namespace kestrel {
namespace {

// SQLite can be built without its file system in memory. Then temporary files would go to the disk.
TEST(SqliteWithoutFilesInMemory, opensNothing) {
  ASSERT_EQ(sqlite3_initialize(), SQLITE_OK);
  sqlite3_vfs* const memory = sqlite3_vfs_find("memdb");
  ASSERT_NE(memory, nullptr);
  ASSERT_EQ(sqlite3_vfs_unregister(memory), SQLITE_OK);
  EXPECT_FALSE(installSqliteFileSystem());
  EXPECT_EQ(sqlite3_vfs_find("kestrel"), nullptr);

  const testing::TemporaryFolder folder;
  std::ofstream(folder / "suite.sqlite");
  EXPECT_EQ(SqliteDefaults::open(folder / "suite.sqlite").error(), "SQLite does not take its file system");
}

}  // namespace
}  // namespace kestrel
