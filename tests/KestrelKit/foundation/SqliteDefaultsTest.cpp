#include <KestrelKit/foundation/AppGroupContainer.h>
#include <KestrelKit/foundation/SqliteDefaults.h>
#include <KestrelKit/foundation/SqliteHandles.h>
#include <support/TemporaryFolder.h>

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <set>
#include <sstream>
#include <string>

namespace kestrel {
namespace {

namespace fs = std::filesystem;
using Suite = std::shared_ptr<SqliteDefaults>;

bool set(SharedDefaults& defaults, std::string_view key, std::optional<PropertyValue> value) {
  const SharedDefaults::Change changes[] = {{key, std::move(value)}};
  return defaults.write(changes);
}

std::string refusalOf(const fs::path& file) {
  const auto suite = SqliteDefaults::open(file);
  return suite ? "none" : suite.error();
}

void write(const fs::path& file, std::string_view bytes) { std::ofstream(file) << bytes; }

std::string bytesOf(const fs::path& file) {
  std::ostringstream bytes;
  bytes << std::ifstream(file).rdbuf();
  return bytes.str();
}

unsigned modeOf(const fs::path& file) {
  struct stat status {};
  return stat(file.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

std::set<std::string> namesIn(const fs::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) {
    names.insert(entry.path().filename());
  }
  return names;
}

/// What a program that is not ours does to a database.
void run(const fs::path& file, const char* sql) {
  sqlite3* handle = nullptr;
  ASSERT_EQ(sqlite3_open(file.c_str(), &handle), SQLITE_OK);
  const SqliteConnection connection(handle);
  ASSERT_EQ(sqlite3_exec(handle, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(handle);
}

/// Does `work` in a process without the privileges of root, and gives what it gives there.
int asNobody(const std::function<int()>& work) {
  constexpr uid_t nobody = 65'534;
  const pid_t child = fork();
  if (child == 0) {
    _exit(geteuid() == 0 && setuid(nobody) != 0 ? 99 : work());
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

class SqliteDefaultsTest : public ::testing::Test {
 protected:
  testing::TemporaryFolder folder_;
  fs::path file_ = folder_ / "suite.sqlite";

  Suite opened() { return SqliteDefaults::open(file_).value(); }

  /// Whether a process without the privileges of root reads "value" under "key", before and after a write
  /// that fails for want of rights.
  bool nobodyReadsButCannotWrite() {
    return asNobody([&] {
             const Suite suite = opened();
             const bool isRead = suite->value("key") == PropertyValue("value") && !suite->readFailure();
             const bool isWritten = set(*suite, "key", "next");
             return isRead && !isWritten && suite->writeFailure() == "attempt to write a readonly database" &&
                            suite->value("key") == PropertyValue("value")
                        ? 0
                        : 1;
           }) == 0;
  }
};

TEST_F(SqliteDefaultsTest, readingCreatesNoFile) {
  const Suite suite = opened();
  EXPECT_EQ(suite->value("key"), std::nullopt);
  EXPECT_EQ(suite->readFailure(), std::nullopt);
  EXPECT_EQ(namesIn(folder_.path()), std::set<std::string>());
}

TEST_F(SqliteDefaultsTest, readingLeavesAFileAsItIs) {
  EXPECT_TRUE(set(*opened(), "key", "value"));
  const std::string before = bytesOf(file_);
  EXPECT_EQ(opened()->value("key"), PropertyValue("value"));
  EXPECT_EQ(opened()->value("absent"), std::nullopt);
  EXPECT_EQ(bytesOf(file_), before);
  EXPECT_EQ(namesIn(folder_.path()), std::set<std::string>{"suite.sqlite"});
}

TEST_F(SqliteDefaultsTest, theFirstWriteCreatesOneFileForItsOwnerAlone) {
  const mode_t before = umask(0);
  const Suite suite = opened();
  ASSERT_TRUE(set(*suite, "key", "value"));
  EXPECT_EQ(modeOf(file_), 0600U);
  EXPECT_EQ(namesIn(folder_.path()), std::set<std::string>{"suite.sqlite"});
  umask(before);
}

TEST_F(SqliteDefaultsTest, keepsTheModeOfAFileThatIsThere) {
  ASSERT_TRUE(set(*opened(), "key", "value"));
  chmod(file_.c_str(), 0640);
  ASSERT_TRUE(set(*opened(), "key", "next"));
  EXPECT_EQ(modeOf(file_), 0640U);
}

TEST_F(SqliteDefaultsTest, anotherConnectionSeesAWriteAtItsNextRead) {
  const Suite reader = opened();
  const Suite writer = opened();
  EXPECT_EQ(reader->value("key"), std::nullopt);
  for (const char* text : {"one", "two", "three"}) {
    ASSERT_TRUE(set(*writer, "key", text));
    EXPECT_EQ(reader->value("key"), PropertyValue(text));
  }
  ASSERT_TRUE(set(*writer, "key", std::nullopt));
  EXPECT_EQ(reader->value("key"), std::nullopt);
}

TEST_F(SqliteDefaultsTest, anotherProcessSeesAWriteAtItsNextRead) {
  const Suite suite = opened();
  ASSERT_TRUE(set(*suite, "key", "of the parent"));
  const pid_t child = fork();
  if (child == 0) {
    const Suite own = opened();
    const bool seen = own->value("key") == PropertyValue("of the parent");
    _exit(seen && set(*own, "key", "of the child") ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(suite->value("key"), PropertyValue("of the child"));
}

TEST_F(SqliteDefaultsTest, aFileThatIsRemovedMeanwhileIsMadeAnew) {
  const Suite suite = opened();
  ASSERT_TRUE(set(*suite, "key", "value"));
  fs::remove(file_);
  EXPECT_EQ(suite->value("key"), std::nullopt);
  EXPECT_EQ(suite->readFailure(), std::nullopt);
  ASSERT_TRUE(set(*suite, "other", "value"));
  EXPECT_EQ(opened()->value("other"), PropertyValue("value"));
  EXPECT_EQ(opened()->value("key"), std::nullopt);
}

TEST_F(SqliteDefaultsTest, aFileThatIsReplacedMeanwhileIsReadAnew) {
  const Suite suite = opened();
  ASSERT_TRUE(set(*suite, "key", "old"));
  const fs::path other = folder_ / "other.sqlite";
  ASSERT_TRUE(set(*SqliteDefaults::open(other).value(), "key", "new"));
  fs::rename(other, file_);
  EXPECT_EQ(suite->value("key"), PropertyValue("new"));
  ASSERT_TRUE(set(*suite, "key", "newest"));
  EXPECT_EQ(opened()->value("key"), PropertyValue("newest"));
}

TEST_F(SqliteDefaultsTest, aSymbolicLinkIsFollowed) {
  const fs::path link = folder_ / "link";
  ASSERT_TRUE(set(*opened(), "key", "value"));
  fs::create_symlink(file_, link);
  const Suite suite = SqliteDefaults::open(link).value();
  ASSERT_TRUE(set(*suite, "key", "through the link"));
  EXPECT_EQ(opened()->value("key"), PropertyValue("through the link"));
  EXPECT_TRUE(fs::is_symlink(link));
}

TEST_F(SqliteDefaultsTest, aNameMayLookLikeAnAddress) {
  const fs::path before = fs::current_path();
  fs::current_path(folder_.path());
  ASSERT_TRUE(set(*SqliteDefaults::open("file:x?mode=memory").value(), "key", "value"));
  fs::current_path(before);
  EXPECT_EQ(namesIn(folder_.path()), std::set<std::string>{"file:x?mode=memory"});
}

TEST_F(SqliteDefaultsTest, anEmptyFileIsASuiteWithNothingInIt) {
  write(file_, "");
  const Suite suite = opened();
  EXPECT_EQ(suite->value("key"), std::nullopt);
  EXPECT_EQ(suite->readFailure(), std::nullopt);
  EXPECT_TRUE(set(*suite, "key", "value"));
  EXPECT_EQ(opened()->value("key"), PropertyValue("value"));
}

// What cannot be opened

TEST_F(SqliteDefaultsTest, aFileThatIsNoDatabaseIsNotOpenedAndStaysAsItIs) {
  for (const std::string& bytes : {std::string("not a database at all"), std::string(4096, 'x')}) {
    write(file_, bytes);
    EXPECT_EQ(refusalOf(file_), "file is not a database") << bytes.size();
    EXPECT_EQ(bytesOf(file_), bytes);
    fs::remove(file_);
  }
}

TEST_F(SqliteDefaultsTest, anotherProgramsDatabaseIsNotOpenedAndStaysAsItIs) {
  run(file_, "CREATE TABLE message (text); INSERT INTO message VALUES ('dear')");
  const std::string before = bytesOf(file_);
  EXPECT_EQ(refusalOf(file_), "is a database, but none of shared defaults");
  EXPECT_EQ(bytesOf(file_), before);
  run(file_, "DROP TABLE message; PRAGMA application_id = 7");
  EXPECT_EQ(refusalOf(file_), "is a database, but none of shared defaults");
}

TEST_F(SqliteDefaultsTest, aDatabaseThatTakesThePlaceMeanwhileIsLeftAlone) {
  const Suite suite = opened();
  run(file_, "CREATE TABLE message (text)");
  const std::string before = bytesOf(file_);
  EXPECT_EQ(suite->value("key"), std::nullopt);
  EXPECT_EQ(suite->readFailure(), "is a database, but none of shared defaults");
  EXPECT_FALSE(set(*suite, "key", "value"));
  EXPECT_EQ(suite->writeFailure(), "is a database, but none of shared defaults");
  EXPECT_EQ(bytesOf(file_), before);
}

TEST_F(SqliteDefaultsTest, aMissingFolderIsSaid) {
  EXPECT_EQ(refusalOf(folder_ / "missing" / "suite.sqlite"), "No such file or directory");
  write(folder_ / "file", "");
  EXPECT_EQ(refusalOf(folder_ / "file" / "suite.sqlite"), "Not a directory");
  EXPECT_EQ(namesIn(folder_.path()), std::set<std::string>{"file"});
}

TEST_F(SqliteDefaultsTest, aFolderInItsPlaceIsSaid) {
  fs::create_directory(file_);
  EXPECT_EQ(refusalOf(file_), "Is a directory");
}

TEST_F(SqliteDefaultsTest, aPipeInItsPlaceIsNotWaitedFor) {
  ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
  EXPECT_NE(refusalOf(file_), "none");
}

TEST_F(SqliteDefaultsTest, aLinkToNothingIsFollowedToMakeAFile) {
  fs::create_directory(folder_ / "elsewhere");
  fs::create_symlink("elsewhere/link", file_);
  fs::create_symlink("target.sqlite", folder_ / "elsewhere" / "link");
  const Suite suite = opened();
  EXPECT_EQ(suite->value("key"), std::nullopt);
  EXPECT_EQ(suite->readFailure(), std::nullopt);
  EXPECT_EQ(namesIn(folder_ / "elsewhere"), std::set<std::string>{"link"});
  ASSERT_TRUE(set(*suite, "key", "value"));
  EXPECT_EQ(opened()->value("key"), PropertyValue("value"));
  EXPECT_TRUE(fs::is_symlink(file_));
  EXPECT_EQ(namesIn(folder_ / "elsewhere"), (std::set<std::string>{"link", "target.sqlite"}));
  EXPECT_EQ(fs::symlink_status(folder_ / "elsewhere" / "target.sqlite").permissions(), fs::perms{0600});
}

TEST_F(SqliteDefaultsTest, aLinkToWhereNothingCanBeMadeIsAFailedWrite) {
  fs::create_symlink("missing/target.sqlite", file_);
  const Suite suite = opened();
  EXPECT_EQ(suite->value("key"), std::nullopt);
  EXPECT_FALSE(set(*suite, "key", "value"));
  EXPECT_EQ(suite->writeFailure(), "No such file or directory");
  EXPECT_EQ(namesIn(folder_.path()), std::set<std::string>{"suite.sqlite"});
}

TEST_F(SqliteDefaultsTest, aLinkThatLeadsInACircleIsSaid) {
  fs::create_symlink(file_.filename(), file_);
  EXPECT_NE(refusalOf(file_), "none");
  EXPECT_EQ(namesIn(folder_.path()), std::set<std::string>{"suite.sqlite"});
}

TEST_F(SqliteDefaultsTest, aFileWithoutPermissionIsSaid) {
  chmod(folder_.path().c_str(), 0777);
  ASSERT_TRUE(set(*opened(), "key", "value"));
  chmod(file_.c_str(), 0);
  EXPECT_EQ(asNobody([&] { return refusalOf(file_) == "Permission denied" ? 0 : 1; }), 0);
}

TEST_F(SqliteDefaultsTest, aFileThatMayOnlyBeReadIsReadAndWhatCannotBeWrittenIsSaid) {
  chmod(folder_.path().c_str(), 0777);
  ASSERT_TRUE(set(*opened(), "key", "value"));
  chmod(file_.c_str(), 0444);
  EXPECT_TRUE(nobodyReadsButCannotWrite());
}

TEST_F(SqliteDefaultsTest, aFolderThatMayOnlyBeReadIsReadAndWhatCannotBeWrittenIsSaid) {
  ASSERT_TRUE(set(*opened(), "key", "value"));
  chmod(file_.c_str(), 0666);
  chmod(folder_.path().c_str(), 0555);
  EXPECT_TRUE(nobodyReadsButCannotWrite());
  EXPECT_EQ(asNobody([&] {
              const Suite suite = SqliteDefaults::open(folder_ / "new.sqlite").value();
              return !set(*suite, "key", "value") && suite->writeFailure() == "Permission denied" ? 0 : 1;
            }),
            0);
  chmod(folder_.path().c_str(), 0700);
}

// What goes wrong later

TEST_F(SqliteDefaultsTest, theOpenerIsToldWhetherTheLastWriteSucceeded) {
  const Suite suite = opened();
  EXPECT_EQ(suite->writeFailure(), std::nullopt);
  ASSERT_TRUE(set(*suite, "key", "value"));
  EXPECT_EQ(suite->writeFailure(), std::nullopt);
  EXPECT_FALSE(set(*suite, "key", instantSinceReferenceDate(std::nan(""))));
  EXPECT_NE(suite->writeFailure(), std::nullopt);
  EXPECT_EQ(suite->value("key"), PropertyValue("value"));
  EXPECT_NE(suite->writeFailure(), std::nullopt) << "a read says nothing of the last write";
  ASSERT_TRUE(set(*suite, "key", "next"));
  EXPECT_EQ(suite->writeFailure(), std::nullopt);
}

TEST_F(SqliteDefaultsTest, aDamagedPageIsSaidAndNotTakenForNothing) {
  {
    const Suite suite = opened();
    for (int number = 0; number < 500; ++number) {
      ASSERT_TRUE(set(*suite, "key " + std::to_string(number), Data{std::string(300, 'x')}));
    }
  }
  std::string bytes = bytesOf(file_);
  std::fill(bytes.begin() + 4096, bytes.end(), '\x5a');
  write(file_, bytes);
  const Suite suite = opened();
  EXPECT_EQ(suite->value("key 7"), std::nullopt);
  EXPECT_EQ(suite->readFailure(), "database disk image is malformed");
  EXPECT_FALSE(set(*suite, "key 7", "value"));
  EXPECT_EQ(suite->writeFailure(), "database disk image is malformed");
}

TEST_F(SqliteDefaultsTest, aTableThatIsDamagedMeanwhileIsSaidAndNotTakenForNothing) {
  write(file_, "");
  const Suite suite = opened();
  ASSERT_TRUE(set(*opened(), "key", "value"));
  run(file_, "PRAGMA writable_schema = ON; UPDATE sqlite_schema SET sql = 'CREATE TABLE nonsense'");
  EXPECT_EQ(suite->value("key"), std::nullopt);
  ASSERT_NE(suite->readFailure(), std::nullopt);
  EXPECT_EQ(suite->readFailure()->find("malformed database schema (defaults)"), 0U) << *suite->readFailure();
  EXPECT_FALSE(set(*suite, "key", "next"));
  EXPECT_EQ(suite->writeFailure(), suite->readFailure());
  bool wasAsked = false;
  EXPECT_FALSE(suite->update("key", [&](const auto&) {
    wasAsked = true;
    return PropertyValue("next");
  }));
  EXPECT_FALSE(wasAsked) << "what is stored is not known";
  EXPECT_EQ(suite->writeFailure(), suite->readFailure());
}

TEST_F(SqliteDefaultsTest, aTableThatIsNotOursIsSaidAndNotTakenForNothing) {
  const std::pair<const char*, const char*> rows[] = {
      {"DROP TABLE defaults; CREATE TABLE other (key)", "no such table: defaults"},
      {"DROP TABLE defaults; CREATE TABLE defaults (key)", "no such column: value"},
  };
  for (const auto& [change, reason] : rows) {
    fs::remove(file_);
    ASSERT_TRUE(set(*opened(), "key", "value"));
    run(file_, change);
    const Suite suite = opened();
    EXPECT_EQ(suite->value("key"), std::nullopt);
    EXPECT_EQ(suite->readFailure(), reason);
    EXPECT_FALSE(set(*suite, "key", "value"));
  }
}

TEST_F(SqliteDefaultsTest, aValueOfAKindThatIsNotOursReadsAsAbsent) {
  ASSERT_TRUE(set(*opened(), "key", "value"));
  run(file_, "UPDATE defaults SET value = 7");
  const Suite suite = opened();
  EXPECT_EQ(suite->value("key"), std::nullopt);
  EXPECT_TRUE(set(*suite, "key", "value"));
  EXPECT_EQ(suite->value("key"), PropertyValue("value"));
}

TEST_F(SqliteDefaultsTest, whoHoldsTheLockIsWaitedFor) {
  ASSERT_TRUE(set(*opened(), "key", "1"));
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  if (child == 0) {
    const Suite own = opened();
    own->update("key", [&](const auto&) {
      const char byte = 'x';
      (void)!::write(ready[1], &byte, 1);
      // Long enough for the parent to find the lock held, and it may be longer.
      usleep(100'000);
      return PropertyValue("2");
    });
    _exit(0);
  }
  char byte = 0;
  ASSERT_EQ(::read(ready[0], &byte, 1), 1);
  const Suite suite = opened();
  EXPECT_TRUE(suite->update("key", [](const std::optional<PropertyValue>& stored) {
    return PropertyValue(std::get<std::string>(stored.value()) + "3");
  }));
  EXPECT_EQ(suite->value("key"), PropertyValue("23"));
  int status = 0;
  waitpid(child, &status, 0);
}

TEST_F(SqliteDefaultsTest, aLockThatIsNeverReleasedIsWaitedForInVainAndSaid) {
  ASSERT_TRUE(set(*opened(), "key", "value"));
  sqlite3* handle = nullptr;
  ASSERT_EQ(sqlite3_open(file_.c_str(), &handle), SQLITE_OK);
  const SqliteConnection holder(handle);
  const Suite suite = opened();
  ASSERT_EQ(sqlite3_exec(handle, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
  bool wasAsked = false;
  EXPECT_FALSE(suite->update("key", [&](const auto&) {
    wasAsked = true;
    return PropertyValue("next");
  }));
  EXPECT_FALSE(wasAsked);
  EXPECT_EQ(suite->writeFailure(), "database is locked");
  EXPECT_EQ(suite->value("key"), PropertyValue("value"))
      << "a writer that has not begun to write hides nothing";
  ASSERT_EQ(sqlite3_exec(handle, "ROLLBACK", nullptr, nullptr, nullptr), SQLITE_OK);
  EXPECT_TRUE(set(*suite, "key", "next"));
}

TEST_F(SqliteDefaultsTest, aFullDiskLosesNothing) {
  const fs::path disk = folder_ / "disk";
  fs::create_directory(disk);
  if (mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=256k") != 0) {
    GTEST_SKIP() << "this machine does not let a test mount a small disk";
  }
  {
    const Suite suite = SqliteDefaults::open(disk / "suite.sqlite").value();
    EXPECT_TRUE(set(*suite, "key", "value"));
    const SharedDefaults::Change changes[] = {{"key", "next"}, {"large", Data{std::string(300'000, 'x')}}};
    EXPECT_FALSE(suite->write(changes));
    EXPECT_EQ(suite->writeFailure(), "database or disk is full");
    EXPECT_EQ(suite->value("key"), PropertyValue("value"));
    EXPECT_EQ(suite->value("large"), std::nullopt);

    write(disk / "ballast", std::string(1U << 20U, 'x'));  // takes what is left
    EXPECT_FALSE(set(*suite, "key", "next"));
    EXPECT_EQ(suite->value("key"), PropertyValue("value"));
    const Suite another = SqliteDefaults::open(disk / "another.sqlite").value();
    EXPECT_FALSE(set(*another, "key", "value"));
    EXPECT_EQ(another->value("key"), std::nullopt);

    fs::remove(disk / "ballast");
    EXPECT_TRUE(set(*suite, "key", "next"));
    EXPECT_EQ(suite->value("key"), PropertyValue("next"));
    EXPECT_TRUE(set(*another, "key", "value"));
  }
  EXPECT_EQ(umount2(disk.c_str(), MNT_DETACH), 0);
}

// The application group's

TEST_F(SqliteDefaultsTest, theGroupsSuiteCreatesItsContainerAtTheFirstWrite) {
  const mode_t before = umask(0);
  const fs::path data = folder_ / "data";
  setenv("XDG_DATA_HOME", data.c_str(), 1);
  const auto container = AppGroupContainer::of("group.test").value();
  const Suite suite = SqliteDefaults::open(container).value();
  EXPECT_EQ(suite->value("key"), std::nullopt);
  EXPECT_FALSE(fs::exists(data));
  ASSERT_TRUE(set(*suite, "key", "value"));
  EXPECT_EQ(modeOf(data / "group.test"), 0700U);
  EXPECT_EQ(modeOf(data / "group.test" / "defaults.sqlite"), 0600U);
  EXPECT_EQ(SqliteDefaults::open(container).value()->value("key"), PropertyValue("value"));
  umask(before);
}

TEST_F(SqliteDefaultsTest, aContainerThatCannotBeMadeIsAFailedWrite) {
  write(folder_ / "data", "a file");
  setenv("XDG_DATA_HOME", (folder_ / "data").c_str(), 1);
  const Suite suite = SqliteDefaults::open(AppGroupContainer::of("group.test").value()).value();
  EXPECT_EQ(suite->value("key"), std::nullopt);
  EXPECT_FALSE(set(*suite, "key", "value"));
  EXPECT_EQ(suite->writeFailure(), "Not a directory");
}

}  // namespace
}  // namespace kestrel
