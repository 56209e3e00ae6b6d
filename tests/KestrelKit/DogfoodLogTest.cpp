#include <KestrelKit/DogfoodLog.h>
#include <KestrelKit/foundation/Iso8601.h>
#include <KestrelKit/model/JSONCoders.h>
#include <support/RecordFields.h>
#include <support/TemporaryFolder.h>
#include <support/TextFile.h>

#include <gmock/gmock.h>
#include <rapidcheck.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace kestrel {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using Event = DogfoodLog::Event;
using Kind = DogfoodLog::Event::Kind;
using State = KestrelState;
using testing::contentOf;
using testing::write;

// Fewer cases than elsewhere: each writes files.
[[maybe_unused]] const int seeded = setenv("RC_PARAMS", "seed=20010101 max_success=100", /*overwrite=*/0);

Instant instant(std::string_view text) { return instantFromIso8601(text).value(); }

/// A line of a log.
std::string line(std::string_view timestamp, std::string_view kind, std::string_view state,
                 std::string_view date = "2024-05-01") {
  std::string text = R"({"timestamp":"@","kind":"@","date":"@","stateRaw":"@"})";
  for (const std::string_view part : {timestamp, kind, date, state}) {
    text.replace(text.find('@'), 1, part);
  }
  return text + '\n';
}

class DogfoodLogTest : public ::testing::Test {
 protected:
  /// What the log says on standard output while `operation` runs.
  template <class Operation>
  static std::string saidBy(Operation operation) {
    ::testing::internal::CaptureStdout();
    operation();
    return ::testing::internal::GetCapturedStdout();
  }

  std::vector<std::string> namesInFolder() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder.path())) {
      names.push_back(entry.path().filename());
    }
    std::ranges::sort(names);
    return names;
  }

  std::vector<std::string> dates() const {
    std::vector<std::string> dates;
    for (const Event& event : log.allEvents()) {
      dates.push_back(event.date);
    }
    return dates;
  }

  testing::TemporaryFolder folder;
  fs::path file = folder / "dogfood-log.jsonl";
  Instant now = instant("2024-05-01T08:30:00Z");
  DogfoodLog log{file, [this] { return now; }};
};

// The events

TEST(DogfoodLogEvent, readsAndWritesEachField) {
  const auto event = testing::expectStrictFields<Event>(
      JSONCoders::decoder, JSONCoders::encoder,
      {{"timestamp", R"("2024-05-01T08:30:00Z")", "1", "expected text, found a number"},
       {"kind", R"("shadow")", R"("verdict")", R"("verdict" is not one of classifier, selfReport, shadow)"},
       {"date", R"("2024-05-01")", "20240501", "expected text, found a number"},
       {"stateRaw", R"("Manic")", "[]", "expected text, found a list"},
       {"confidence", "80", "80.5", "80.5 is not an integer of 64 bits", /*isOptional=*/true},
       {"source", R"("manual")", "true", "expected text, found a boolean", /*isOptional=*/true}});
  EXPECT_EQ(event, (Event{.timestamp = instant("2024-05-01T08:30:00Z"),
                          .kind = Kind::shadow,
                          .date = "2024-05-01",
                          .stateRaw = "Manic",
                          .confidence = 80,
                          .source = "manual"}));
}

TEST(DogfoodLogEvent, hasThreeKinds) {
  std::vector<std::string> kinds;
  for (const Kind kind : Kind::allCases) {
    kinds.emplace_back(kind.rawValue());
  }
  EXPECT_THAT(kinds, ElementsAre("classifier", "selfReport", "shadow"));
}

// Recording

TEST_F(DogfoodLogTest, keepsTheLaterOfTwoClassificationsOfADayAndASelfReportUntouched) {
  EXPECT_TRUE(log.logClassification("2024-05-01", State::euthymia, 60));
  EXPECT_TRUE(log.logSelfReport("2024-05-01", State::hypomania, SelfReportSource::manual));
  now += Seconds{60};
  EXPECT_TRUE(log.logClassification("2024-05-01", State::mania, 90));
  EXPECT_THAT(log.allEvents(), ElementsAre(Event{.timestamp = now - Seconds{60},
                                                 .kind = Kind::selfReport,
                                                 .date = "2024-05-01",
                                                 .stateRaw = "Hypomania",
                                                 .source = "manual"},
                                           Event{.timestamp = now,
                                                 .kind = Kind::classifier,
                                                 .date = "2024-05-01",
                                                 .stateRaw = "Mania",
                                                 .confidence = 90}));
}

TEST_F(DogfoodLogTest, replacesOnlyEventsOfTheSameKindAndDay) {
  log.logClassification("2024-05-01", State::euthymia, 1);
  log.logShadowPrediction("2024-05-01", State::euthymia, 2);
  log.logClassification("2024-05-02", State::euthymia, 3);
  log.logShadowPrediction("2024-05-02", State::euthymia, 4);
  log.logClassification("2024-05-01 ", State::euthymia, 5);  // another text is another day
  log.logShadowPrediction("2024-05-01", State::mania, 6);
  std::vector<std::int64_t> confidences;
  for (const Event& event : log.allEvents()) {
    confidences.push_back(event.confidence.value());
  }
  EXPECT_THAT(confidences, ElementsAre(1, 3, 4, 5, 6));
}

TEST_F(DogfoodLogTest, replacesAllEventsOfTheKindAndDayThatAFileHolds) {
  write(file, line("2024-05-01T01:00:00Z", "classifier", "Mania") +
                  line("2024-05-09T01:00:00Z", "classifier", "Manic") +
                  line("2024-05-01T01:00:00Z", "shadow", "Mania"));
  log.logClassification("2024-05-01", State::euthymia, 60);
  EXPECT_EQ(contentOf(file),
            line("2024-05-01T01:00:00Z", "shadow", "Mania") +
                R"({"timestamp":"2024-05-01T08:30:00Z","kind":"classifier","date":"2024-05-01",)"
                R"("stateRaw":"Euthymia","confidence":60})"
                "\n");
}

TEST_F(DogfoodLogTest, replacesNoSelfReport) {
  for (int count = 0; count < 3; ++count) {
    log.logSelfReport("2024-05-01", State::mania, SelfReportSource::keyword);
  }
  EXPECT_EQ(log.allEvents().size(), 3U);
  EXPECT_EQ(log.allEvents().front(), log.allEvents().back());
}

TEST_F(DogfoodLogTest, writesAnEventWithoutConfidenceWithoutThatKey) {
  log.logSelfReport("2024-05-01", State::mixedEpisode, SelfReportSource::keyword);
  EXPECT_EQ(contentOf(file), R"({"timestamp":"2024-05-01T08:30:00Z","kind":"selfReport","date":"2024-05-01",)"
                             R"("stateRaw":"Mixed Episode","source":"keyword"})"
                             "\n");
}

TEST_F(DogfoodLogTest, writesWholeSecondsRoundedDown) {
  now += Seconds{0.999};
  log.logShadowPrediction("2024-05-01", State::unknown, -1);
  EXPECT_EQ(contentOf(file), R"({"timestamp":"2024-05-01T08:30:00Z","kind":"shadow","date":"2024-05-01",)"
                             R"("stateRaw":"Unknown","confidence":-1})"
                             "\n");
  EXPECT_EQ(log.allEvents().front().timestamp, instant("2024-05-01T08:30:00Z"));
}

TEST_F(DogfoodLogTest, takesADayAsItComesAndConfidencesOfAnySize) {
  const std::string day = "no day \"\\\n\u2028é👣";
  for (const std::int64_t confidence :
       {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()}) {
    log.logClassification(day, State::mania, confidence);
    EXPECT_THAT(log.allEvents(), ElementsAre(Event{.timestamp = now,
                                                   .kind = Kind::classifier,
                                                   .date = day,
                                                   .stateRaw = "Mania",
                                                   .confidence = confidence}));
  }
}

// Writing that fails

TEST_F(DogfoodLogTest, saysThatAWriteFailedAndKeepsTheLog) {
  const std::string before = line("2024-05-01T01:00:00Z", "shadow", "Mania");
  write(file, before);
  const auto expectRefused = [&](const char* said, std::string_view date, Instant time) {
    now = time;
    EXPECT_THAT(
        saidBy([&] { EXPECT_FALSE(log.logSelfReport(date, State::mania, SelfReportSource::manual)); }),
        StartsWith(said));
    EXPECT_EQ(contentOf(file), before);
  };
  for (const double seconds : {std::nan(""), HUGE_VAL, -HUGE_VAL, 1e300}) {
    expectRefused("[DogfoodLog] write failed: timestamp: ", "2024-05-01", instantSinceReferenceDate(seconds));
  }
  expectRefused("[DogfoodLog] write failed: date: is not valid UTF-8\n", "\xff",
                instant("2024-05-01T08:30:00Z"));
  EXPECT_THAT(namesInFolder(), ElementsAre("dogfood-log.jsonl"));
}

TEST_F(DogfoodLogTest, saysWhichFileCouldNotBeWrittenInOneLine) {
  DogfoodLog elsewhere(folder / "no\nfolder" / "log.jsonl");
  EXPECT_EQ(saidBy([&] { EXPECT_FALSE(elsewhere.logClassification("2024-05-01", State::mania, 1)); }),
            "[DogfoodLog] write failed: " + folder.path().string() +
                "/no\\u000Afolder/log.jsonl: No such file or directory\n");
  EXPECT_EQ(elsewhere.unreadable(), std::nullopt);
  EXPECT_THAT(namesInFolder(), IsEmpty());
}

// Reading

TEST_F(DogfoodLogTest, isEmptyWithoutAFile) {
  EXPECT_THAT(log.allEvents(), IsEmpty());
  EXPECT_THAT(log.latestEventsByDate(Kind::classifier), IsEmpty());
  EXPECT_EQ(log.exportText(), "");
  EXPECT_EQ(log.missedElevatedReports(), 0);
  EXPECT_EQ(log.unreadable(), std::nullopt);
  EXPECT_THAT(namesInFolder(), IsEmpty());
}

TEST_F(DogfoodLogTest, yieldsAllOtherEventsAroundOneCorruptLine) {
  const std::string first = line("2024-05-01T01:00:00Z", "classifier", "Mania", "first");
  const std::string last = line("2024-05-01T01:00:00Z", "shadow", "Mania", "last");
  const std::string whole = line("2024-05-01T01:00:00Z", "classifier", "Mania", "middle");
  const std::string event = whole.substr(0, whole.size() - 1);
  std::vector<std::string> corrupt{
      "",
      " ",
      "\t",
      "\r",
      "nonsense",
      "{",
      "}",
      "{}",
      "[]",
      "null",
      "0",
      "\"text\"",
      "\"",
      "\\",
      event + ",",
      event + event,
      event + " {",
      "[" + event + "]",
      "," + event,
      "\ufeff" + event,
      std::string("\0", 1),
      std::string("\0", 1) + event,
      event + '\0',
      "// " + event,
      std::string(600, '[') + std::string(600, ']'),
      "{\"x\":" + std::string(600, '[') + std::string(600, ']') + "}",
      R"({"timestamp":"2024-05-01T01:00:00Z","kind":"classifier","date":"\ud800","stateRaw":""})",
      R"({"timestamp":"2024-05-01T01:00:00.5Z","kind":"classifier","date":"","stateRaw":""})",
      R"({"timestamp":"2024-02-30T01:00:00Z","kind":"classifier","date":"","stateRaw":""})",
      R"({"timestamp":"2024-05-01T01:00:00Z","kind":"other","date":"","stateRaw":""})",
      R"({"timestamp":"2024-05-01T01:00:00Z","kind":"classifier","date":null,"stateRaw":""})",
      R"({"timestamp":"2024-05-01T01:00:00Z","kind":"classifier","date":"","stateRaw":"","confidence":"1"})",
      R"({"timestamp":"2024-05-01T01:00:00Z","kind":"classifier","date":"","stateRaw":"","confidence":1e400})",
  };
  for (std::size_t cut = 1; cut < event.size(); ++cut) {
    corrupt.push_back(event.substr(0, cut));
    corrupt.push_back(event.substr(cut));
  }
  for (const std::string& each : corrupt) {
    write(file, first + each + "\n" + last);
    EXPECT_THAT(dates(), ElementsAre("first", "last")) << each;
    write(file, each + "\n" + first + last + each);
    EXPECT_THAT(dates(), ElementsAre("first", "last")) << each;
    EXPECT_EQ(log.unreadable(), std::nullopt);
  }
}

TEST_F(DogfoodLogTest, readsLinesThatAnotherProgramWrote) {
  const std::string event = line("2024-05-01T01:00:00Z", "classifier", "Mania");
  const std::string other = R"(  { "stateRaw" : "no state", "unknown" : [{}], "date" : "\u0061",
)";
  write(
      file,
      "\n\n" + event.substr(0, event.size() - 1) + "\r\n" + other +
          R"( {"timestamp":"2024-05-01T03:00:00+02:00","kind":"shadow","kind":"selfReport","date":"","stateRaw":"",)" +
          R"("confidence":5e0,"source":null} )");
  EXPECT_THAT(log.allEvents(), ElementsAre(Event{.timestamp = instant("2024-05-01T01:00:00Z"),
                                                 .kind = Kind::classifier,
                                                 .date = "2024-05-01",
                                                 .stateRaw = "Mania"},
                                           Event{.timestamp = instant("2024-05-01T01:00:00Z"),
                                                 .kind = Kind::selfReport,
                                                 .confidence = 5}));
}

TEST_F(DogfoodLogTest, dropsCorruptLinesWithTheNextChange) {
  const std::string event = line("2024-05-01T01:00:00Z", "shadow", "Mania");
  write(file, "nonsense\n\n" + event);
  EXPECT_TRUE(log.logSelfReport("2024-05-01", State::mania, SelfReportSource::manual));
  EXPECT_THAT(contentOf(file), StartsWith(event));
  EXPECT_THAT(namesInFolder(), ElementsAre("dogfood-log.jsonl"));
}

// Logs that are there and cannot be read

TEST_F(DogfoodLogTest, readsAsEmptyWhereAnyByteIsNotUtf8) {
  const std::string event = line("2024-05-01T01:00:00Z", "shadow", "Mania");
  for (const char* wrong :
       {"\xff", "\xc3", "\xc3(", "\xed\xa0\x80", "\xf5\x80\x80\x80", "\xc0\xaf", "\x80", "\xf0\x9f\x91"}) {
    for (const std::string& text : {event + wrong, wrong + ('\n' + event), event + wrong + "\n" + event}) {
      write(file, text);
      EXPECT_THAT(log.allEvents(), IsEmpty());
      ASSERT_TRUE(log.unreadable());
      EXPECT_EQ(log.unreadable()->text(), file.string() + ": is not UTF-8 text");
      EXPECT_EQ(log.missedElevatedReports(), 0);
      EXPECT_EQ(log.exportText(), "");
    }
  }
  EXPECT_THAT(namesInFolder(), ElementsAre("dogfood-log.jsonl"));
  write(file, event);
  EXPECT_EQ(log.allEvents().size(), 1U);
  EXPECT_EQ(log.unreadable(), std::nullopt);
}

TEST_F(DogfoodLogTest, setsAnUnreadableFileAsideUnderAFreeName) {
  for (const std::string name : {".unreadable", ".unreadable-2", ".unreadable-3"}) {
    write(file, "\xff" + name);
    fs::permissions(file, fs::perms{0640});
    EXPECT_TRUE(log.logSelfReport("2024-05-01", State::mania, SelfReportSource::manual));
    EXPECT_EQ(contentOf(file.string() + name), "\xff" + name);
    EXPECT_EQ(log.allEvents().size(), 1U);
    EXPECT_EQ(log.unreadable(), std::nullopt);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms{0600});  // a new one
  }
  EXPECT_EQ(contentOf(file.string() + ".unreadable"), "\xff.unreadable");
}

TEST_F(DogfoodLogTest, readsAsEmptyWhereAFolderStandsAndLeavesIt) {
  fs::create_directory(file);
  EXPECT_THAT(log.allEvents(), IsEmpty());
  EXPECT_EQ(log.unreadable()->text(), file.string() + ": Is a directory");
  EXPECT_EQ(saidBy([&] { EXPECT_FALSE(log.logClassification("2024-05-01", State::mania, 1)); }),
            "[DogfoodLog] write failed: " + file.string() + ": Is a directory\n");
  EXPECT_EQ(log.clear().error().reason, std::errc::is_a_directory);
  EXPECT_THAT(namesInFolder(), ElementsAre("dogfood-log.jsonl"));
}

TEST_F(DogfoodLogTest, doesNotWaitForAPipeAndSetsItAside) {
  ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  EXPECT_THAT(log.allEvents(), IsEmpty());
  EXPECT_EQ(log.unreadable()->reason, std::errc::not_supported);
  EXPECT_TRUE(log.logClassification("2024-05-01", State::mania, 1));
  EXPECT_TRUE(fs::is_fifo(file.string() + ".unreadable"));
  EXPECT_EQ(log.allEvents().size(), 1U);
}

TEST_F(DogfoodLogTest, followsASymbolicLinkAndLeavesIt) {
  fs::create_directory(folder / "elsewhere");
  const fs::path target = folder / "elsewhere" / "target.jsonl";
  fs::create_symlink("elsewhere/target.jsonl", file);
  EXPECT_THAT(log.allEvents(), IsEmpty());  // it leads nowhere as yet
  EXPECT_EQ(log.unreadable(), std::nullopt);
  EXPECT_TRUE(log.logClassification("2024-05-01", State::mania, 1));
  EXPECT_TRUE(fs::is_symlink(file));
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(target)));
  EXPECT_EQ(log.allEvents().size(), 1U);

  write(target, "\xff");
  EXPECT_TRUE(log.logClassification("2024-05-01", State::mania, 1));
  EXPECT_EQ(contentOf(target.string() + ".unreadable"), "\xff");
  EXPECT_EQ(log.allEvents().size(), 1U);

  EXPECT_TRUE(log.clear());
  EXPECT_FALSE(fs::exists(target));
  EXPECT_TRUE(fs::is_symlink(file));
}

TEST_F(DogfoodLogTest, saysWhereALinkLeadsInACircle) {
  fs::create_symlink(file.filename(), file);
  EXPECT_THAT(log.allEvents(), IsEmpty());
  EXPECT_EQ(log.unreadable()->reason, std::errc::too_many_symbolic_link_levels);
  EXPECT_EQ(saidBy([&] { EXPECT_FALSE(log.logClassification("2024-05-01", State::mania, 1)); }),
            "[DogfoodLog] write failed: " + file.string() + ": Too many levels of symbolic links\n");
  EXPECT_TRUE(fs::is_symlink(file));
}

// The file

TEST_F(DogfoodLogTest, isMadeForTheUserAloneAndKeepsItsModeAfterwards) {
  log.logClassification("2024-05-01", State::mania, 1);
  EXPECT_EQ(fs::status(file).permissions(), fs::perms{0600});
  for (const int mode : {0644, 0660, 0400, 0700}) {
    fs::permissions(file, static_cast<fs::perms>(mode));
    EXPECT_TRUE(log.logClassification("2024-05-01", State::mania, 1));
    EXPECT_EQ(fs::status(file).permissions(), static_cast<fs::perms>(mode));
  }
}

TEST_F(DogfoodLogTest, removesAtItsStartWhatAWriterThatEndedLeftBehind) {
  const std::string abandoned = ".kestrel-replacement-0F0E0D0C-0B0A-0908-0706-050403020100";
  write(folder / abandoned, "half a l");
  DogfoodLog later(file);
  EXPECT_THAT(namesInFolder(), IsEmpty());
}

TEST_F(DogfoodLogTest, isClearedAndFailsToBeWhereThereIsNoFile) {
  log.logClassification("2024-05-01", State::mania, 1);
  EXPECT_TRUE(log.clear());
  EXPECT_THAT(namesInFolder(), IsEmpty());
  EXPECT_THAT(log.allEvents(), IsEmpty());
  const auto cleared = log.clear();
  ASSERT_FALSE(cleared);
  EXPECT_EQ(cleared.error().text(), file.string() + ": No such file or directory");
}

TEST_F(DogfoodLogTest, isInTheContainerOfTheSharedGroup) {
  setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
  DogfoodLog shared;
  EXPECT_EQ(shared.fileURL(), folder / "data/group.app.tidewell.shared/dogfood-log.jsonl");
  EXPECT_THAT(shared.allEvents(), IsEmpty());
  EXPECT_THAT(namesInFolder(), IsEmpty());
  EXPECT_TRUE(shared.logClassification("2024-05-01", State::mania, 1));
  EXPECT_EQ(shared.allEvents().size(), 1U);
  EXPECT_EQ(fs::status(shared.fileURL()->parent_path()).permissions(), fs::perms{0700});
  EXPECT_LT(ReferenceClock::now() - shared.allEvents().front().timestamp, Seconds{600});

  write(folder / "file", "");
  setenv("XDG_DATA_HOME", (folder / "file").c_str(), 1);
  DogfoodLog nowhere;
  EXPECT_EQ(saidBy([&] { EXPECT_FALSE(nowhere.logClassification("2024-05-01", State::mania, 1)); }),
            "[DogfoodLog] write failed: " + (folder / "file/group.app.tidewell.shared").string() +
                ": Not a directory\n");
}

TEST_F(DogfoodLogTest, doesNothingWithoutAContainerAndReadsNothing) {
  fs::current_path(folder.path());
  unsetenv("XDG_DATA_HOME");
  setenv("HOME", "no/absolute/path", 1);
  DogfoodLog homeless;
  EXPECT_EQ(homeless.fileURL(), std::nullopt);
  EXPECT_EQ(saidBy([&] {
              EXPECT_FALSE(homeless.logClassification("2024-05-01", State::mania, 1));
              EXPECT_FALSE(homeless.logShadowPrediction("2024-05-01", State::mania, 1));
              EXPECT_FALSE(homeless.logSelfReport("2024-05-01", State::mania, SelfReportSource::manual));
              EXPECT_TRUE(homeless.clear());
            }),
            "");
  EXPECT_THAT(homeless.allEvents(), IsEmpty());
  EXPECT_THAT(homeless.latestEventsByDate(Kind::classifier), IsEmpty());
  EXPECT_EQ(homeless.exportText(), "");
  EXPECT_EQ(homeless.missedElevatedReports(), 0);
  EXPECT_THAT(namesInFolder(), IsEmpty());
  fs::current_path("/");
}

// Looking at it

TEST_F(DogfoodLogTest, givesForEachDayTheEventWithTheLatestTimestamp) {
  write(file, line("2024-05-03T00:00:00Z", "classifier", "Mania", "b") +
                  line("2024-05-01T00:00:00Z", "classifier", "Euthymia", "b") +
                  line("2024-05-09T00:00:00Z", "shadow", "Psychosis", "b") +
                  line("2024-05-01T00:00:00Z", "classifier", "Manic", "a"));
  const auto latest = log.latestEventsByDate(Kind::classifier);
  ASSERT_EQ(latest.size(), 2U);
  EXPECT_EQ(latest.at("a").stateRaw, "Manic");
  EXPECT_EQ(latest.at("b").stateRaw, "Mania");
  EXPECT_EQ(log.latestEventsByDate(Kind::shadow).at("b").stateRaw, "Psychosis");
  EXPECT_THAT(log.latestEventsByDate(Kind::selfReport), IsEmpty());
}

TEST_F(DogfoodLogTest, givesTheLastInTheFileOfEqualTimestamps) {
  write(file, line("2024-05-02T00:00:00Z", "selfReport", "first") +
                  line("2024-05-02T02:00:00+02:00", "selfReport", "second") +
                  line("2024-05-01T23:59:59Z", "selfReport", "earlier"));
  EXPECT_EQ(log.latestEventsByDate(Kind::selfReport).at("2024-05-01").stateRaw, "second");
}

TEST_F(DogfoodLogTest, isExportedWithoutALineFeedAtTheEnd) {
  const std::string first = line("2024-05-02T00:00:00Z", "selfReport", "é👣");
  const std::string second = line("2024-05-01T00:00:00Z", "classifier", "Mania");
  write(file, "nonsense\n" + first + " " + second.substr(0, second.size() - 1));
  EXPECT_EQ(log.exportText() + '\n', first + second);
}

// Missed elevated reports

TEST_F(DogfoodLogTest, countsNoMissedReportWithoutAReport) {
  write(file, line("2024-05-02T00:00:00Z", "classifier", "Euthymia"));
  EXPECT_EQ(log.missedElevatedReports(), 0);
  write(file, line("2024-05-02T00:00:00Z", "selfReport", "Mania"));
  EXPECT_EQ(log.missedElevatedReports(), 0);
}

TEST_F(DogfoodLogTest, countsAReportUpToTwoDaysFromAVerdictInEitherDirection) {
  const std::pair<const char*, int> rows[] = {
      {"2024-05-03T11:59:59Z", 1}, {"2024-05-03T12:00:00Z", 1}, {"2024-05-03T12:00:01Z", 0},
      {"2024-04-29T12:00:01Z", 1}, {"2024-04-29T12:00:00Z", 1}, {"2024-04-29T11:59:59Z", 0},
      {"2024-05-01T12:00:00Z", 1},
  };
  for (const auto& [report, count] : rows) {
    const std::string verdict = line("2024-05-01T12:00:00Z", "classifier", "Euthymia");
    write(file, verdict + line(report, "selfReport", "Mania"));
    EXPECT_EQ(log.missedElevatedReports(), count) << report;
    write(file, line(report, "selfReport", "Mania") + verdict);
    EXPECT_EQ(log.missedElevatedReports(), count) << report;
  }
}

TEST_F(DogfoodLogTest, countsEveryPair) {
  const std::string report = line("2024-05-02T00:00:00Z", "selfReport", "Hypomania");
  const std::string near = line("2024-05-01T00:00:00Z", "classifier", "Euthymia");
  const std::string alsoNear = line("2024-05-04T00:00:00Z", "classifier", "Euthymia");
  const std::string far = line("2024-05-04T00:00:01Z", "classifier", "Euthymia");
  write(file, report + near + alsoNear + far);
  EXPECT_EQ(log.missedElevatedReports(), 2);
  write(file, report + report + near + near + near + alsoNear + far);
  EXPECT_EQ(log.missedElevatedReports(), 8);
}

TEST_F(DogfoodLogTest, countsStatesByTheirNamesOfToday) {
  struct Row {
    const char* state;
    bool isElevatedOrMixed;
    bool isEuthymia;
  };
  const Row rows[] = {
      {"Psychosis", false, false},
      {"Mixed Episode", true, false},
      {"Mania", true, false},
      {"Hypomania", true, false},
      {"Euthymia", false, true},
      {"Dysthymia", false, false},
      {"Moderate Depression", false, false},
      {"Severe Depression", false, false},
      {"Unknown", false, false},
      {"Manic", true, false},
      {"Hypomanic", true, false},
      {"Euthymic", false, true},
      {"Dysthymic", false, false},
      {"Major Depressive", false, false},
      {"mania", false, false},
      {"euthymia", false, false},
      {"", false, false},
  };
  for (const Row& row : rows) {
    write(file, line("2024-05-02T00:00:00Z", "selfReport", row.state) +
                    line("2024-05-02T00:00:00Z", "classifier", "Euthymia"));
    EXPECT_EQ(log.missedElevatedReports(), row.isElevatedOrMixed ? 1 : 0) << row.state;
    write(file, line("2024-05-02T00:00:00Z", "selfReport", "Mania") +
                    line("2024-05-02T00:00:00Z", "classifier", row.state));
    EXPECT_EQ(log.missedElevatedReports(), row.isEuthymia ? 1 : 0) << row.state;
  }
}

TEST_F(DogfoodLogTest, countsOnlyReportsAgainstTheClassifier) {
  write(file, line("2024-05-02T00:00:00Z", "selfReport", "Mania") +
                  line("2024-05-02T00:00:00Z", "shadow", "Euthymia") +
                  line("2024-05-02T00:00:00Z", "selfReport", "Euthymia") +
                  line("2024-05-02T00:00:00Z", "classifier", "Mania") +
                  line("2024-05-02T00:00:00Z", "shadow", "Mania"));
  EXPECT_EQ(log.missedElevatedReports(), 0);
}

TEST_F(DogfoodLogTest, countsThePairsThatAPlainCountFinds) {
  EXPECT_TRUE(rc::check([&] {
    const auto hours = *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 200));
    std::string text;
    std::vector<std::pair<bool, int>> events;
    for (const int hour : hours) {
      const bool isReport = *rc::gen::arbitrary<bool>();
      events.emplace_back(isReport, hour);
      text += line(iso8601Text(now + Seconds{3600.0 * hour}).value(), isReport ? "selfReport" : "classifier",
                   isReport ? "Mania" : "Euthymia");
    }
    std::int64_t pairs = 0;
    for (const auto& [isReport, at] : events) {
      for (const auto& [isOtherReport, otherAt] : events) {
        pairs += isReport && !isOtherReport && std::abs(at - otherAt) <= 48 ? 1 : 0;
      }
    }
    write(file, text);
    RC_ASSERT(log.missedElevatedReports() == pairs);
  }));
}

// Whatever is recorded is there

TEST_F(DogfoodLogTest, holdsWhatAModelOfItHolds) {
  EXPECT_TRUE(rc::check([&] {
    std::error_code ignored;
    fs::remove(file, ignored);
    std::vector<Event> model;
    for (const int what : *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 30))) {
      now += Seconds{1};
      const std::string date = std::to_string(what % 4);
      const State state = State::allCases[static_cast<std::size_t>(what) % State::allCases.size()];
      Event event{.timestamp = now, .date = date, .stateRaw = std::string(state.rawValue())};
      if (what % 3 == 2) {
        event.kind = Kind::selfReport;
        event.source = "keyword";
        log.logSelfReport(date, state, SelfReportSource::keyword);
      } else {
        event.kind = what % 3 == 0 ? Kind::classifier : Kind::shadow;
        event.confidence = what;
        what % 3 == 0 ? log.logClassification(date, state, what) : log.logShadowPrediction(date, state, what);
        std::erase_if(model, [&](const Event& old) { return old.kind == event.kind && old.date == date; });
      }
      model.push_back(event);
    }
    RC_ASSERT(log.allEvents() == model);
  }));
}

}  // namespace
}  // namespace kestrel
