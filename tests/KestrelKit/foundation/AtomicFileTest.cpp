#include <KestrelKit/foundation/AtomicFile.h>
#include <support/TemporaryFolder.h>
#include <support/TextFile.h>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace kestrel {
namespace {

namespace fs = std::filesystem;
using testing::contentOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::write;

class AtomicFile : public ::testing::Test {
 protected:
  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder.path())) {
      names.push_back(entry.path().filename());
    }
    std::ranges::sort(names);
    return names;
  }

  testing::TemporaryFolder folder;
  fs::path file = folder / "file";
};

TEST_F(AtomicFile, isMadeAndReplacedWhole) {
  for (const std::string& bytes : {std::string("first"), std::string(), std::string("\0\xff\n", 3),
                                   std::string(std::size_t{5} << 20U, 'x'), std::string("short")}) {
    EXPECT_TRUE(replaceFile(file, bytes));
    EXPECT_EQ(contentOf(file), bytes);
    EXPECT_THAT(names(), ElementsAre("file"));
  }
}

TEST_F(AtomicFile, isANewFileSoThatOtherLinksKeepTheOldBytes) {
  write(file, "old");
  fs::create_hard_link(file, folder / "link");
  EXPECT_TRUE(replaceFile(file, "new"));
  EXPECT_EQ(contentOf(folder / "link"), "old");
}

TEST_F(AtomicFile, keepsItsModeAndIsPrivateWhenNew) {
  const mode_t before = umask(0);
  EXPECT_TRUE(replaceFile(file, "new"));
  umask(before);
  EXPECT_EQ(fs::status(file).permissions(), fs::perms{0600});
  for (const int mode : {0, 0400, 0644, 0666, 0755, 02640}) {
    fs::permissions(file, static_cast<fs::perms>(mode));
    EXPECT_TRUE(replaceFile(file, "newer"));
    EXPECT_EQ(fs::status(file).permissions(), static_cast<fs::perms>(mode));
  }
}

TEST_F(AtomicFile, keepsItsOwnerWhereTheSuperuserReplacesIt) {
  write(file, "theirs");
  if (chown(file.c_str(), 4321, 8765) != 0) {
    GTEST_SKIP() << "only root gives files away";
  }
  EXPECT_TRUE(replaceFile(file, "still theirs"));
  struct stat status {};
  ASSERT_EQ(stat(file.c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, 4321U);
  EXPECT_EQ(status.st_gid, 8765U);
}

TEST_F(AtomicFile, isReplacedBehindLinksThatStay) {
  fs::create_directory(folder / "a");
  fs::create_directory(folder / "b");
  fs::create_symlink("a/second", file);
  fs::create_symlink("../b/target", folder / "a/second");
  for (const char* bytes : {"new", "newer"}) {  // the links lead nowhere at first
    EXPECT_TRUE(replaceFile(file, bytes));
    EXPECT_EQ(contentOf(folder / "b/target"), bytes);
    EXPECT_TRUE(fs::is_symlink(file));
    EXPECT_TRUE(fs::is_symlink(folder / "a/second"));
    EXPECT_FALSE(fs::is_symlink(folder / "b/target"));
  }
}

TEST_F(AtomicFile, mayBeNamedFromTheCurrentFolder) {
  const fs::path before = fs::current_path();
  fs::current_path(folder.path());
  EXPECT_TRUE(replaceFile("relative", "new"));
  removeAbandonedReplacements("relative");
  EXPECT_EQ(setAside("relative", ".aside"), "relative.aside");
  fs::current_path(before);
  EXPECT_THAT(names(), ElementsAre("relative.aside"));
}

TEST_F(AtomicFile, saysWhyItCouldNotBeReplacedAndLeavesNothingBehind) {
  const auto errorOf = [](const fs::path& path) { return replaceFile(path, "new").error().reason; };
  EXPECT_EQ(errorOf(folder / "none" / "file"), std::errc::no_such_file_or_directory);
  EXPECT_EQ(errorOf(folder.path()), std::errc::is_a_directory);
  EXPECT_EQ(errorOf(folder / std::string(300, 'x')), std::errc::filename_too_long);
  EXPECT_EQ(errorOf(""), std::errc::no_such_file_or_directory);
  EXPECT_EQ(errorOf("/proc/file"), std::errc::no_such_file_or_directory);
  fs::create_symlink("file", file);
  EXPECT_EQ(errorOf(file), std::errc::too_many_symbolic_link_levels);
  fs::remove(file);
  fs::create_directory(file);
  EXPECT_EQ(errorOf(file), std::errc::is_a_directory);
  EXPECT_EQ(replaceFile(file, "new").error().text(), file.string() + ": Is a directory");
  EXPECT_EQ(replaceFile("", "new").error().text(), "\"\": No such file or directory");
  EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(AtomicFile, takesALongName) {
  const fs::path longName = folder / std::string(255, 'x');
  EXPECT_TRUE(replaceFile(longName, "new"));
  EXPECT_EQ(contentOf(longName), "new");
}

// What was abandoned

constexpr const char* abandoned = ".kestrel-replacement-0F0E0D0C-0B0A-0908-0706-050403020100";

TEST_F(AtomicFile, isRidOfWhatAWriterThatEndedLeftBehind) {
  write(folder / abandoned, "half");
  fs::create_symlink(folder.path(), folder / "link");
  removeAbandonedReplacements(folder / "link" / "file");
  EXPECT_THAT(names(), ElementsAre("link"));
}

TEST_F(AtomicFile, isRidOfWhatAnotherThanRootMayOnlyRead) {
  // Where root runs this, nobody is the user.
  constexpr uid_t nobody = 65'534;
  write(folder / abandoned, "half");
  fs::permissions(folder / abandoned, fs::perms{0400});
  const uid_t user = geteuid();
  if (user == 0) {
    ASSERT_EQ(chown(folder.path().c_str(), nobody, nobody), 0);
    ASSERT_EQ(chown((folder / abandoned).c_str(), nobody, nobody), 0);
    ASSERT_EQ(seteuid(nobody), 0);
  }
  removeAbandonedReplacements(file);
  EXPECT_EQ(seteuid(user), 0);
  EXPECT_THAT(names(), IsEmpty());
}

TEST_F(AtomicFile, keepsWhatAWriterThatLivesIsWriting) {
  write(folder / abandoned, "half");
  const int writer = open((folder / abandoned).c_str(), O_WRONLY | O_CLOEXEC);
  ASSERT_EQ(flock(writer, LOCK_EX), 0);
  removeAbandonedReplacements(file);
  EXPECT_THAT(names(), ElementsAre(abandoned));
  close(writer);
  removeAbandonedReplacements(file);
  EXPECT_THAT(names(), IsEmpty());
}

TEST_F(AtomicFile, keepsWhatIsOnlyNamedAlike) {
  const std::vector<std::string> alike{".kestrel-replacement-", ".kestrel-replacement-1",
                                       std::string(abandoned) + "0", std::string(abandoned).substr(1),
                                       "x" + std::string(abandoned)};
  for (const std::string& name : alike) {
    write(folder / name, "");
  }
  fs::create_directory(folder / abandoned);
  removeAbandonedReplacements(file);
  EXPECT_EQ(names().size(), alike.size() + 1);
  removeAbandonedReplacements(folder / "none" / "file");
}

// Setting aside

TEST_F(AtomicFile, isSetAsideUnderTheFirstFreeName) {
  for (const char* name : {"file.old", "file.old-2", "file.old-3"}) {
    write(file, name);
    EXPECT_EQ(setAside(file, ".old"), folder / name);
  }
  for (const char* name : {"file.old", "file.old-2", "file.old-3"}) {
    EXPECT_EQ(contentOf(folder / name), name);
  }
  fs::create_symlink("nowhere", folder / "file.old-4");  // is not free
  write(file, "");
  EXPECT_EQ(setAside(file, ".old"), folder / "file.old-5");
}

TEST_F(AtomicFile, isPutBackUnlessAnotherHasItsName) {
  fs::create_symlink("target", file);
  write(folder / "target", "old");
  const auto aside = setAside(file, ".old");
  EXPECT_EQ(aside, folder / "target.old");
  putBack(*aside, file);
  EXPECT_EQ(contentOf(folder / "target"), "old");
  EXPECT_THAT(names(), ElementsAre("file", "target"));

  EXPECT_EQ(setAside(file, ".old"), aside);
  write(folder / "target", "new");
  putBack(*aside, file);
  EXPECT_EQ(contentOf(folder / "target"), "new");
  EXPECT_EQ(contentOf(*aside), "old");
}

TEST_F(AtomicFile, isNotSetAsideWhereThereIsNoneOrAFolder) {
  EXPECT_EQ(setAside(file, ".old").error().reason, std::errc::no_such_file_or_directory);
  fs::create_directory(file);
  EXPECT_EQ(setAside(file, ".old").error().reason, std::errc::is_a_directory);
  EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(AtomicFile, isNeitherSetAsideNorRemovedWhereItIsADevice) {
  if (mknod(file.c_str(), S_IFCHR | 0600, makedev(1, 3)) != 0) {
    fs::create_symlink("/dev/null", file);  // which nobody but root could rename
  }
  EXPECT_EQ(setAside(file, ".old").error().reason, std::errc::not_supported);
  EXPECT_EQ(removeFile(file).error().reason, std::errc::not_supported);
  EXPECT_TRUE(fs::is_character_file(file));
  EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(AtomicFile, isRemovedBehindALink) {
  write(folder / "target", "");
  fs::create_symlink("target", file);
  EXPECT_TRUE(removeFile(file));
  EXPECT_THAT(names(), ElementsAre("file"));
  EXPECT_EQ(removeFile(file).error().reason, std::errc::no_such_file_or_directory);
}

TEST_F(AtomicFile, isNotFollowedRoundACircleOfLinks) {
  fs::create_symlink("other", file);
  fs::create_symlink("file", folder / "other");
  write(folder / abandoned, "half");
  EXPECT_EQ(setAside(file, ".old").error().reason, std::errc::too_many_symbolic_link_levels);
  EXPECT_EQ(removeFile(file).error().reason, std::errc::too_many_symbolic_link_levels);
  removeAbandonedReplacements(file);  // nobody knows in which folder
  EXPECT_THAT(names(), ElementsAre(abandoned, "file", "other"));
}

}  // namespace
}  // namespace kestrel
