#include <KestrelKit/AppGroupDefaults.h>
#include <KestrelKit/ComplicationStore.h>
#include <KestrelKit/SnapshotStore.h>
#include <KestrelKit/WatchConnectionEvidenceStore.h>
#include <support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace kestrel {
namespace {

namespace fs = std::filesystem;

class AppGroupDefaultsTest : public ::testing::Test {
 protected:
  AppGroupDefaultsTest() { setenv("XDG_DATA_HOME", folder_.path().c_str(), 1); }

  testing::TemporaryFolder folder_;
  fs::path suite_ = folder_ / "group.app.tidewell.shared" / "defaults.sqlite";
};

TEST_F(AppGroupDefaultsTest, storesUntoldWhichDefaultsUseTheSuiteOfTheGroup) {
  EXPECT_EQ(ComplicationStore().latestState(), KestrelState::unknown);
  EXPECT_FALSE(fs::exists(suite_.parent_path())) << "reading creates nothing";
  ComplicationStore().setLatestState(KestrelState::mania);
  SnapshotStore().setLatest(DashboardSnapshot());
  WatchConnectionEvidenceStore().update([](WatchConnectionEvidence& evidence) { evidence.isPaired = true; });
  EXPECT_TRUE(fs::exists(suite_));
  EXPECT_EQ(ComplicationStore().latestState(), KestrelState::mania);
  EXPECT_EQ(SnapshotStore().latest(), DashboardSnapshot());
  EXPECT_TRUE(WatchConnectionEvidenceStore().current().isPaired);
}

TEST_F(AppGroupDefaultsTest, aSuiteThatCannotBeOpenedFallsBackToTheStandardDefaults) {
  fs::create_directories(suite_.parent_path());
  std::ofstream(suite_) << "this is no database, whatever it is called";
  EXPECT_EQ(appGroupDefaults(), SharedDefaults::standard());
  ComplicationStore().setLatestState(KestrelState::hypomania);
  EXPECT_EQ(ComplicationStore(SharedDefaults::standard()).latestState(), KestrelState::hypomania);
  EXPECT_EQ(ComplicationStore().latestState(), KestrelState::hypomania);
}

}  // namespace
}  // namespace kestrel
