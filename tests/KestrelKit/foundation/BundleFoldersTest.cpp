#include <KestrelKit/foundation/BundleFolders.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace kestrel {
namespace {

namespace fs = std::filesystem;

TEST(BundleFolders, areThoseOfAnInstallation) {
  EXPECT_EQ(bundleFolders("/usr/bin/kestrel", "/usr/lib/libkestrel.so"),
            (BundleFolders{"/usr/share/kestrel", "/usr/lib", "/usr/bin"}));
  EXPECT_EQ(bundleFolders("/usr/bin/kestrel", "/usr/bin/kestrel"),
            (BundleFolders{"/usr/share/kestrel", "/usr/bin", "/usr/bin"}));
}

TEST(BundleFolders, areThoseOfTheBuildTree) {
  EXPECT_EQ(
      bundleFolders("/tidewell/build/release/kestrel/kestrel", "/tidewell/build/release/kestrel/kestrel")[0],
      "/tidewell/build/release/share/kestrel");
}

// The layouts of macOS, as folders: what they hold decides which is the resource folder.
class BundleFoldersOnMac : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::path{testing::TempDir()} / "mac-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    root_ = pattern;
    fs::create_directories(app() / "Contents" / "MacOS");
  }

  void TearDown() override { fs::remove_all(root_); }

  fs::path app() const { return root_ / "Tidewell.app"; }

  fs::path root_;
};

TEST_F(BundleFoldersOnMac, areThoseOfAnApplicationBundle) {
  fs::create_directories(app() / "Contents" / "Resources");
  const fs::path program = app() / "Contents" / "MacOS" / "tidewell";
  EXPECT_EQ(bundleFoldersOnMac(program, program),
            (BundleFolders{app() / "Contents" / "Resources", app(), app()}));
}

TEST_F(BundleFoldersOnMac, takeTheApplicationItselfWhereItHasNoResources) {
  const fs::path program = app() / "Contents" / "MacOS" / "tidewell";
  EXPECT_EQ(bundleFoldersOnMac(program, program), (BundleFolders{app(), app(), app()}));
}

TEST_F(BundleFoldersOnMac, takeTheFolderOfALibraryInTheApplication) {
  fs::create_directories(app() / "Contents" / "Resources");
  const fs::path library =
      app() / "Contents" / "Frameworks" / "KestrelKit.framework" / "Versions" / "A" / "KestrelKit";
  EXPECT_EQ(bundleFoldersOnMac(app() / "Contents" / "MacOS" / "tidewell", library),
            (BundleFolders{app() / "Contents" / "Resources", library.parent_path(), app()}));
}

TEST_F(BundleFoldersOnMac, areTheFolderOfAProgramOutsideABundle) {
  EXPECT_EQ(bundleFoldersOnMac("/opt/tidewell/bin/kestrel", "/opt/tidewell/lib/libkestrel.dylib"),
            (BundleFolders{"/opt/tidewell/bin", "/opt/tidewell/lib", "/opt/tidewell/bin"}));
}

TEST_F(BundleFoldersOnMac, leadToTheBundleThatAnApplicationHoldsAmongItsResources) {
  const fs::path bundle = app() / "Contents" / "Resources" / "KestrelKit_KestrelKit.bundle";
  fs::create_directories(bundle);
  const fs::path program = app() / "Contents" / "MacOS" / "tidewell";
  EXPECT_TRUE(fs::is_directory(bundleFoldersOnMac(program, program)[0] / "KestrelKit_KestrelKit.bundle"));
}

}  // namespace
}  // namespace kestrel
