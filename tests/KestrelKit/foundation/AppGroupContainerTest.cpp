#include <KestrelKit/foundation/AppGroupContainer.h>

#include <gmock/gmock.h>
#include <pwd.h>
#include <support/TemporaryFolder.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <system_error>

namespace kestrel {
namespace {

namespace fs = std::filesystem;
using testing::TemporaryFolder;

class AppGroupContainerTest : public ::testing::Test {
 protected:
  static std::optional<fs::path> folder() {
    const auto container = AppGroupContainer::of("group.some.thing");
    return container ? std::optional(container->folder()) : std::nullopt;
  }

  static mode_t mode(const fs::path& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0U;
  }

  AppGroupContainerTest() { unsetenv("XDG_DATA_HOME"); }
};

TEST_F(AppGroupContainerTest, isUnderTheDataFolderWhereThatIsAbsolute) {
  setenv("HOME", "/home/juno", 1);
  setenv("XDG_DATA_HOME", "/somewhere/data", 1);
  EXPECT_EQ(folder(), "/somewhere/data/group.some.thing");
}

TEST_F(AppGroupContainerTest, isElseUnderTheHome) {
  setenv("HOME", "/home/juno", 1);
  EXPECT_EQ(folder(), "/home/juno/.local/share/group.some.thing");
  for (const char* noFolder : {"", "relative/data", "~/data"}) {
    setenv("XDG_DATA_HOME", noFolder, 1);
    EXPECT_EQ(folder(), "/home/juno/.local/share/group.some.thing") << noFolder;
  }
}

TEST_F(AppGroupContainerTest, isAbsentWhereTheHomeIsNoAbsolutePath) {
  setenv("HOME", "relative", 1);
  EXPECT_EQ(folder(), std::nullopt);
  setenv("XDG_DATA_HOME", "/somewhere/data", 1);
  EXPECT_EQ(folder(), "/somewhere/data/group.some.thing");
}

TEST_F(AppGroupContainerTest, isElseUnderTheHomeOfTheUserDatabase) {
  const passwd* const user = getpwuid(getuid());
  ASSERT_NE(user, nullptr);
  const fs::path expected = fs::path(user->pw_dir) / ".local/share/group.some.thing";
  unsetenv("HOME");
  EXPECT_EQ(folder(), expected);
  setenv("HOME", "", 1);
  EXPECT_EQ(folder(), expected);
}

TEST_F(AppGroupContainerTest, isAbsentForAUserWhomTheDatabaseDoesNotKnow) {
  constexpr uid_t stranger = 4'321'987;
  ASSERT_EQ(getpwuid(stranger), nullptr);
  unsetenv("HOME");
  const uid_t user = getuid();
  if (setreuid(stranger, geteuid()) != 0) {
    GTEST_SKIP() << "only root becomes another user";
  }
  EXPECT_EQ(folder(), std::nullopt);
  EXPECT_EQ(setreuid(user, geteuid()), 0);
}

TEST_F(AppGroupContainerTest, isMadeForTheUserAloneWithWhatIsMissingAboveIt) {
  const TemporaryFolder home;
  fs::permissions(home.path(), fs::perms{0755});
  setenv("HOME", home.path().c_str(), 1);
  const mode_t before = umask(0);
  EXPECT_EQ(AppGroupContainer::of("group.some.thing").value().create(), std::error_code());
  umask(before);
  for (const char* made : {".local", ".local/share", ".local/share/group.some.thing"}) {
    EXPECT_EQ(mode(home / made), 0700U) << made;
  }
  EXPECT_EQ(mode(home.path()), 0755U);
}

TEST_F(AppGroupContainerTest, keepsAFolderThatIsThere) {
  const TemporaryFolder data;
  setenv("XDG_DATA_HOME", data.path().c_str(), 1);
  fs::create_directory(data / "group.some.thing");
  fs::permissions(data / "group.some.thing", fs::perms{0750});
  EXPECT_EQ(AppGroupContainer::of("group.some.thing").value().create(), std::error_code());
  EXPECT_EQ(mode(data / "group.some.thing"), 0750U);
}

TEST_F(AppGroupContainerTest, cannotBeMadeWhereAFileStands) {
  const TemporaryFolder data;
  setenv("XDG_DATA_HOME", data.path().c_str(), 1);
  std::ofstream(data / "group.some.thing");
  EXPECT_EQ(AppGroupContainer::of("group.some.thing").value().create(), std::errc::not_a_directory);
  setenv("XDG_DATA_HOME", (data / "group.some.thing" / "below").c_str(), 1);
  EXPECT_EQ(AppGroupContainer::of("group.some.thing").value().create(), std::errc::not_a_directory);
}

TEST_F(AppGroupContainerTest, isNotMadeBehindALinkThatLeadsNowhere) {
  const TemporaryFolder data;
  fs::create_symlink(data / "nowhere", data / "link");
  setenv("XDG_DATA_HOME", (data / "link" / "below").c_str(), 1);
  EXPECT_EQ(AppGroupContainer::of("group.some.thing").value().create(), std::errc::file_exists);
  EXPECT_FALSE(fs::exists(data / "nowhere"));
}

}  // namespace
}  // namespace kestrel
