#include <KestrelTrackerMac/WriteProtection.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace kestrel::companion {
namespace {

namespace fs = std::filesystem;

/// A folder to write in and one to stay out of, each with a file. The protection binds a process for good, so
/// that every case runs in a child and ends it with status 0 where all was as expected.
class WriteProtection : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = (fs::temp_directory_path() / "tidewell-writes-XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    root_ = name;
    for (const fs::path& folder : {allowed(), forbidden()}) {
      fs::create_directory(folder);
      std::ofstream{folder / "file"} << "text";
    }
    if (!isThere()) {
      GTEST_SKIP() << "the kernel has no Landlock";
    }
  }
  void TearDown() override { fs::remove_all(root_); }

  fs::path allowed() const { return root_ / "allowed"; }
  fs::path forbidden() const { return root_ / "forbidden"; }

  bool protect() const { return forbidWritesExceptIn(std::array{allowed(), root_ / "absent"}); }

  /// Whether every way of writing in `folder` succeeds, or, with `expected` false, whether every one fails.
  static bool writes(const fs::path& folder, bool expected) {
    std::error_code error;
    const auto went = [&error] { return !error; };
    bool right = std::ofstream{folder / "new"}.is_open() == expected;
    right = std::ofstream{folder / "file", std::ios::app}.is_open() == expected && right;
    fs::create_directory(folder / "folder", error);
    right = went() == expected && right;
    fs::create_symlink(folder / "file", folder / "link", error);
    right = went() == expected && right;
    fs::resize_file(folder / "file", 1, error);
    right = went() == expected && right;
    fs::rename(folder / "file", folder / "renamed", error);
    right = went() == expected && right;
    fs::remove(folder / (expected ? "renamed" : "file"), error);
    return went() == expected && right;
  }

 private:
  /// Asked in a child, which is bound afterwards.
  static bool isThere() {
    const pid_t child = fork();
    if (child == 0) {
      _exit(forbidWritesExceptIn({}) ? 0 : 1);
    }
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }

  fs::path root_;
};

using WriteProtectionDeathTest = WriteProtection;

TEST_F(WriteProtectionDeathTest, writesEverywhereBefore) {
  EXPECT_EXIT(std::exit(writes(forbidden(), true) ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST_F(WriteProtectionDeathTest, writesInTheNamedFolder) {
  EXPECT_EXIT(std::exit(protect() && writes(allowed(), true) ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST_F(WriteProtectionDeathTest, writesNowhereElse) {
  EXPECT_EXIT(std::exit(protect() && writes(forbidden(), false) ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST_F(WriteProtectionDeathTest, bindsThreadsStartedLater) {
  EXPECT_EXIT(
      {
        bool right = protect();
        std::thread{[&] { right = writes(forbidden(), false) && right; }}.join();
        std::exit(right ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(WriteProtectionDeathTest, keepsFilesReadable) {
  EXPECT_EXIT(
      {
        std::string text;
        const bool right = protect() && std::ifstream{forbidden() / "file"} >> text && text == "text";
        std::exit(right ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(WriteProtectionDeathTest, keepsOpenFilesWritable) {
  EXPECT_EXIT(
      {
        std::ofstream file{forbidden() / "file"};
        const bool right = protect() && file << "more" << std::flush;
        std::exit(right ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(WriteProtectionDeathTest, passesOverFoldersThatAppearLater) {
  EXPECT_EXIT(
      {
        std::error_code error;
        const bool right = protect() && !fs::create_directory(allowed().parent_path() / "absent", error);
        std::exit(right ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace kestrel::companion
