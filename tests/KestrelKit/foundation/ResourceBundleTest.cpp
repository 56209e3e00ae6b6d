#include <gtest/gtest.h>

#include <sys/wait.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace kestrel {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view bundleName = "KestrelKit_KestrelKit.bundle";

// An installation in a folder of its own: bin/probe, with the library in it or in lib/.
class ResourceBundle : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::path{testing::TempDir()} / "bundle-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    root_ = fs::canonical(pattern);
    fs::create_directories(root_ / "bin");
    fs::create_directories(root_ / "lib");
  }

  void TearDown() override { fs::remove_all(root_); }

  void install(std::string_view program) {
    fs::copy_file(program, root_ / "bin" / "probe");
    fs::copy_file(PROBE_LIBRARY, root_ / "lib" / fs::path{PROBE_LIBRARY}.filename());
  }

  fs::path bundleIn(std::string_view folder) { return root_ / folder / bundleName; }

  fs::path makeBundle(std::string_view folder) {
    fs::create_directories(bundleIn(folder));
    return bundleIn(folder);
  }

  struct Outcome {
    int status;
    std::string output;
  };

  Outcome run(const std::string& arguments = {}) {
    // From another folder, by a relative path: neither may matter. `exec` lets a signal reach us as such.
    const std::string command =
        "cd '" + (root_ / "lib").string() + "' && exec ../bin/probe " + arguments + " 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
      return {-1, "the shell did not start"};
    }
    std::string output;
    std::array<char, 4096> buffer{};
    for (std::size_t read = 0; (read = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
      output.append(buffer.data(), read);
    }
    return {pclose(pipe), output};
  }

  static std::string twice(const fs::path& folder, std::string_view resource = "none") {
    return folder.string() + '\n' + folder.string() + '\n' + std::string{resource} + '\n';
  }

  fs::path root_;
};

TEST_F(ResourceBundle, isTakenFromTheFirstCandidateThatOpens) {
  install(PROBE);
  const fs::path beside = makeBundle("bin");
  EXPECT_EQ(run().output, twice(beside));
  const fs::path shared = makeBundle("share/kestrel");
  EXPECT_EQ(run().output, twice(shared));
}

TEST_F(ResourceBundle, isTakenFromTheFolderOfTheLibraryBeforeThatOfTheExecutable) {
  install(PROBE_OF_LIBRARY);
  const fs::path beside = makeBundle("bin");
  EXPECT_EQ(run().output, twice(beside));
  const fs::path library = makeBundle("lib");
  EXPECT_EQ(run().output, twice(library));
  const fs::path shared = makeBundle("share/kestrel");
  EXPECT_EQ(run().output, twice(shared));
}

TEST_F(ResourceBundle, isNoFileOfThatName) {
  install(PROBE);
  fs::create_directories(root_ / "share/kestrel");
  std::ofstream(bundleIn("share/kestrel")) << "no folder";
  const fs::path beside = makeBundle("bin");
  EXPECT_EQ(run().output, twice(beside));
}

TEST_F(ResourceBundle, isUsedOnceAndKept) {
  install(PROBE);
  const fs::path shared = makeBundle("share/kestrel");
  makeBundle("bin");
  EXPECT_EQ(run('\'' + shared.string() + '\'').output, twice(shared));
}

TEST_F(ResourceBundle, givesTheFilesInIt) {
  install(PROBE);
  const fs::path shared = makeBundle("share/kestrel");
  fs::create_directories(shared / "sample.json");
  EXPECT_EQ(run().output, twice(shared));
  fs::remove(shared / "sample.json");
  std::ofstream(shared / "sample.json") << "{}";
  EXPECT_EQ(run().output, twice(shared, (shared / "sample.json").string()));
}

TEST_F(ResourceBundle, endsTheProcessWhereNoneOpens) {
  install(PROBE);
  const Outcome outcome = run();
  EXPECT_TRUE(WIFSIGNALED(outcome.status) && WTERMSIG(outcome.status) == SIGABRT) << outcome.status;
  EXPECT_EQ(outcome.output, "programming error: unable to find bundle named KestrelKit_KestrelKit\n");
}

}  // namespace
}  // namespace kestrel
