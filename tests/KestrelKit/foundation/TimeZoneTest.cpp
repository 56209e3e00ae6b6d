#include <KestrelKit/foundation/TimeZone.h>
#include <gtest/gtest.h>

#include <rapidcheck.h>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {
namespace {

using namespace std::chrono;

Instant at(sys_seconds time) {
  return Instant(Seconds(time.time_since_epoch() - ReferenceClock::referenceDateSince1970));
}

TimeZone named(std::string_view name) {
  const auto zone = TimeZone::named(name);
  EXPECT_TRUE(zone) << name;
  return zone.value_or(TimeZone::utc());
}

TimeZone ofVariable(const char* value) {
  setenv("TZ", value, 1);
  return TimeZone::current();
}

/// What the C library says about the zone of `TZ`.
seconds offsetOfTheCLibrary(sys_seconds time) {
  const std::time_t count = time.time_since_epoch().count();
  std::tm broken{};
  tzset();
  localtime_r(&count, &broken);
  return seconds(broken.tm_gmtoff);
}

const std::vector<std::string> zones{"UTC", "Europe/Berlin", "America/New_York", "America/Mexico_City",
                                     "America/Ciudad_Juarez", "America/St_Johns", "Asia/Kolkata", "Asia/Kathmandu",
                                     "Australia/Lord_Howe", "Australia/Sydney", "Pacific/Apia", "Pacific/Chatham",
                                     "Pacific/Kiritimati", "Africa/Casablanca", "Africa/Monrovia", "Europe/Dublin",
                                     "Europe/Amsterdam", "Asia/Gaza", "America/Sao_Paulo", "Antarctica/Troll",
                                     "America/Scoresbysund", "Asia/Tehran", "Etc/GMT+12", "EST5EDT"};

TEST(TimeZone, agreesWithTheCLibraryAtAnyInstant) {
  EXPECT_TRUE(rc::check([] {
    const auto name = *rc::gen::elementOf(zones);
    const sys_seconds time(seconds(*rc::gen::inRange<std::int64_t>(-5'000'000'000, 20'000'000'000)));
    const TimeZone zone = ofVariable(name.c_str());
    const auto stretch = zone.stretchAt(at(time));
    RC_ASSERT(stretch.offset == offsetOfTheCLibrary(time));
    RC_ASSERT(stretch.begin <= at(time));
    RC_ASSERT(at(time) < stretch.end);
    RC_ASSERT(named(name).stretchAt(at(time)).offset == stretch.offset);
  }));
}

TEST(TimeZone, agreesWithTheCLibraryOnRulesSpelledOut) {
  const std::vector<std::string> rules{"CET-1CEST,M3.5.0,M10.5.0/3", "EST5EDT4,M3.2.0/2:00:00,M11.1.0/2", "EAT-3",
                                       "<+0545>-5:45", "AEST-10AEDT,M10.1.0,M4.1.0/3", 
                                       "AAA3BBB,J60/0,J300/1:30", "AAA3BBB,59/0,299/25",
                                       "<-02>2<-01>,M3.5.0/-1,M10.5.0/0", "IST-1GMT0,M10.5.0,M3.5.0/1", ":UTC", "UTC0"};
  EXPECT_TRUE(rc::check([&rules] {
    const auto rule = *rc::gen::elementOf(rules);
    const sys_seconds time(seconds(*rc::gen::inRange<std::int64_t>(0, 10'000'000'000)));
    const TimeZone zone = ofVariable(rule.c_str());
    RC_ASSERT(zone.stretchAt(at(time)).offset == offsetOfTheCLibrary(time));
  }));
}

TEST(TimeZone, stretchEndsWhereTheClocksAreSet) {
  const TimeZone berlin = named("Europe/Berlin");
  const Instant summerBegins = at(sys_days{2025y / March / 30} + 1h);
  const Instant summerEnds = at(sys_days{2025y / October / 26} + 1h);
  const auto summer = berlin.stretchAt(summerBegins);
  EXPECT_EQ(summer.begin, summerBegins);
  EXPECT_EQ(summer.end, summerEnds);
  EXPECT_EQ(summer.offset, 2h);
  const Instant before(Seconds(std::nextafter(secondsSinceReferenceDate(summerBegins), 0)));
  EXPECT_EQ(berlin.stretchAt(before).offset, 1h);
  EXPECT_EQ(berlin.stretchAt(before).end, summerBegins);
}

TEST(TimeZone, ruleHoldsLongAfterTheLastSettingOnRecord) {
  const auto summer = named("Europe/Berlin").stretchAt(at(sys_days{2400y / July / 1}));
  EXPECT_EQ(summer.offset, 2h);
  EXPECT_EQ(summer.begin, at(sys_days{2400y / March / 26} + 1h));
  EXPECT_EQ(named("Europe/Berlin").stretchAt(instantSinceReferenceDate(1e14)).offset.count() % 3600, 0);
}

TEST(TimeZone, beforeTheFirstSettingThereIsLocalMeanTimeToTheSecond) {
  const auto stretch = named("America/New_York").stretchAt(at(sys_days{1800y / January / 1}));
  EXPECT_EQ(stretch.offset, -(4h + 56min + 2s));
  EXPECT_EQ(secondsSinceReferenceDate(stretch.begin), -HUGE_VAL);
}

TEST(TimeZone, utcHasOneStretchWithoutEnds) {
  const auto stretch = TimeZone::utc().stretchAt(instantSinceReferenceDate(0));
  EXPECT_EQ(stretch.offset, 0s);
  EXPECT_EQ(secondsSinceReferenceDate(stretch.begin), -HUGE_VAL);
  EXPECT_EQ(secondsSinceReferenceDate(stretch.end), HUGE_VAL);
}

TEST(TimeZone, clockTimeIsTheOffsetAheadOfUtcInWholeSeconds) {
  const TimeZone berlin = named("Europe/Berlin");
  const Instant summer = at(sys_days{2025y / March / 30} + 1h);
  EXPECT_EQ(berlin.clockTime(summer), local_days{2025y / March / 30} + 3h);
  EXPECT_EQ(berlin.clockTime(summer + Seconds(0.75)), local_days{2025y / March / 30} + 3h);
  EXPECT_EQ(berlin.clockTime(summer - Seconds(0.25)), local_days{2025y / March / 30} + 1h + 59min + 59s);
  EXPECT_EQ(TimeZone::utc().clockTime(at(sys_days{1800y / January / 1} + 1s)), local_days{1800y / January / 1} + 1s);
}

TEST(TimeZone, clockTimeEndsWhereAFloatTellsNoSecondsApart) {
  const TimeZone utc = TimeZone::utc();
  constexpr std::int64_t furthest = std::int64_t{1} << 53U;
  const auto reference = local_seconds(ReferenceClock::referenceDateSince1970);
  EXPECT_EQ(utc.clockTime(instantSinceReferenceDate(0x1p53)), reference + seconds(furthest));
  EXPECT_EQ(utc.clockTime(instantSinceReferenceDate(-0x1p53)), reference - seconds(furthest));
  for (const double since : {std::nextafter(0x1p53, HUGE_VAL), -std::nextafter(0x1p53, HUGE_VAL), 1e300, HUGE_VAL,
                             -HUGE_VAL, std::nan("")}) {
    EXPECT_EQ(utc.clockTime(instantSinceReferenceDate(since)), std::nullopt) << since;
  }
}

TEST(TimeZone, stretchShowsTheTimesOfTheInstantsInIt) {
  const TimeZone berlin = named("Europe/Berlin");
  const Instant summerBegins = at(sys_days{2025y / March / 30} + 1h);
  const Instant before(Seconds(std::nextafter(secondsSinceReferenceDate(summerBegins), 0)));
  const auto summer = berlin.stretchAt(summerBegins);
  EXPECT_TRUE(summer.contains(summerBegins));
  EXPECT_FALSE(summer.contains(before));
  EXPECT_FALSE(summer.contains(summer.end));
  EXPECT_FALSE(summer.contains(instantSinceReferenceDate(std::numeric_limits<double>::quiet_NaN())));
  EXPECT_EQ(summer.clockTime(summerBegins), local_days(2025y / March / 30) + 3h);
  EXPECT_EQ(berlin.stretchAt(before).clockTime(before), local_days(2025y / March / 30) + 2h - 1s);

  // One without ends still ends where a float tells no seconds apart.
  const auto utc = TimeZone::utc().stretchAt(Instant{});
  const double none = std::numeric_limits<double>::quiet_NaN();
  for (const double time : {0x1p54, -0x1p54, HUGE_VAL, -HUGE_VAL, none}) {
    EXPECT_EQ(utc.clockTime(instantSinceReferenceDate(time)), std::nullopt) << time;
  }
}

TEST(TimeZone, skippedTimeIsReadWithTheOffsetBeforeTheGap) {
  const TimeZone berlin = named("Europe/Berlin");
  const auto day = local_days{2025y / March / 30};
  EXPECT_EQ(berlin.instantOf(day + 1h + 59min + 59s), at(sys_days{2025y / March / 30} + 59min + 59s));
  EXPECT_EQ(berlin.instantOf(day + 2h), at(sys_days{2025y / March / 30} + 1h));
  EXPECT_EQ(berlin.instantOf(day + 2h + 30min), at(sys_days{2025y / March / 30} + 1h + 30min));
  EXPECT_EQ(berlin.instantOf(day + 3h), at(sys_days{2025y / March / 30} + 1h));
}

TEST(TimeZone, ofTwoInstantsWithOneTimeTheEarlierCounts) {
  const TimeZone berlin = named("Europe/Berlin");
  const auto day = local_days{2025y / October / 26};
  EXPECT_EQ(berlin.instantOf(day + 2h), at(sys_days{2025y / October / 26}));
  EXPECT_EQ(berlin.instantOf(day + 2h + 59min + 59s), at(sys_days{2025y / October / 26} + 59min + 59s));
  EXPECT_EQ(berlin.instantOf(day + 3h), at(sys_days{2025y / October / 26} + 2h));
}

TEST(TimeZone, dayWithoutMidnightStartsAtItsFirstInstant) {
  // São Paulo's clocks went from midnight to 01:00 on 4 November 2018, Toronto's from 23:30 on 30 March 1919 to 00:30.
  EXPECT_EQ(named("America/Sao_Paulo").startOfDay(local_days{2018y / November / 4}),
            at(sys_days{2018y / November / 4} + 3h));
  EXPECT_EQ(named("America/Toronto").startOfDay(local_days{1919y / March / 31}),
            at(sys_days{1919y / March / 31} + 4h + 30min));
}

TEST(TimeZone, ofTwoMidnightsTheEarlierStartsTheDay) {
  // Cuba's clocks go back from 01:00 to 00:00.
  EXPECT_EQ(named("America/Havana").startOfDay(local_days{2025y / November / 2}),
            at(sys_days{2025y / November / 2} + 4h));
}

TEST(TimeZone, dayThatTheClocksSkipWholeStartsWithTheNext) {
  const TimeZone apia = named("Pacific/Apia");
  EXPECT_EQ(apia.startOfDay(local_days{2011y / December / 30}), at(sys_days{2011y / December / 30} + 10h));
  EXPECT_EQ(apia.startOfDay(local_days{2011y / December / 31}), at(sys_days{2011y / December / 30} + 10h));
  EXPECT_EQ(apia.startOfDay(local_days{2011y / December / 29}), at(sys_days{2011y / December / 29} + 10h));
}

TEST(TimeZone, namedTakesIanaNamesOnly) {
  for (const char* name : {"Europe/Berlin", "UTC", "Etc/UTC", "America/Argentina/Buenos_Aires", "EST", "Etc/GMT-14", "Factory"}) {
    EXPECT_TRUE(TimeZone::named(name)) << name;
  }
  for (const char* name : {"", "/", "Europe", "Europe/", "Europe/Nowhere", "europe/berlin", " UTC", "UTC ", ":UTC",
                           "/usr/share/zoneinfo/UTC", "../zoneinfo/UTC", "posix/UTC", "right/UTC", "localtime",
                           "posixrules", "tzdata.zi", "zone.tab", "CET-1CEST", "EST5", "GMT+2", "PST", "Etc/Unknown",
                           "Europe//Berlin", "Europe//Berlin/.", "Europe/Berlin/", "//", "\xff"}) {
    EXPECT_FALSE(TimeZone::named(name)) << name;
  }
  using namespace std::string_view_literals;
  EXPECT_FALSE(TimeZone::named("UTC\0"sv));
}

TEST(TimeZone, currentReadsEveryFormOfTheVariable) {
  const Instant july = at(sys_days{2025y / July / 1});
  EXPECT_EQ(ofVariable("Europe/Berlin").stretchAt(july).offset, 2h);
  EXPECT_EQ(ofVariable(":America/New_York").stretchAt(july).offset, -4h);
  EXPECT_EQ(ofVariable("/usr/share/zoneinfo/Asia/Tokyo").stretchAt(july).offset, 9h);
  EXPECT_EQ(ofVariable("CET-1CEST").stretchAt(july).offset, 2h);
  EXPECT_EQ(ofVariable("FOO8BAR").stretchAt(july).offset, -7h);
  EXPECT_EQ(ofVariable("<-03>3").stretchAt(july).offset, -3h);
  for (const char* none : {"", ":", "garbage/ and more", "X", "EST", "/etc/passwd", "/dev/zero", "/", "EST5EDT,", "EST25",
                           "EST5EDT,M3.2.0", "EST5EDT,M13.2.0,M11.1.0", "EST5EDT,J0,J1", "EST5EDT,M3.2.0/168,M11.1.0",
                           "EST5,M3.2.0,M11.1.0", "EST5EDT:", "EST5EDT25,M3.2.0,M11.1.0", "EST5EDT,M3.2,M11.1.0",
                           "EST5EDT,M3.6.0,M11.1.0", "EST5EDT,M3.2.7,M11.1.0", "EST5EDT,M3.2.0,M11.1.0,", "<-03"}) {
    const auto expected = std::string_view(none) == "EST" ? -5h : 0h;
    EXPECT_EQ(ofVariable(none).stretchAt(july).offset, expected) << none;
  }
}

TEST(TimeZone, withoutTheVariableItIsTheSystems) {
  unsetenv("TZ");
  const sys_seconds july = sys_days{2025y / July / 1};
  EXPECT_EQ(TimeZone::current().stretchAt(at(july)).offset, offsetOfTheCLibrary(july));
}

TEST(TimeZone, zonesAreThoseOfAnotherFolderWhereThatIsChosen) {
  const std::filesystem::path folder = testing::TempDir() + "kestrel-zones-" + std::to_string(getpid());
  std::filesystem::create_directories(folder / "Here");
  std::filesystem::copy_file("/usr/share/zoneinfo/Asia/Tokyo", folder / "Here/There");
  const Instant july = at(sys_days{2025y / July / 1});
  EXPECT_FALSE(TimeZone::named("Here/There").has_value());
  setenv("TZDIR", folder.c_str(), 1);
  const auto chosen = TimeZone::named("Here/There");
  const auto usual = TimeZone::named("Europe/Berlin");
  EXPECT_EQ(ofVariable("Here/There").stretchAt(july).offset, 9h);
  setenv("TZDIR", "", 1);
  EXPECT_TRUE(TimeZone::named("Europe/Berlin").has_value());
  unsetenv("TZDIR");
  std::filesystem::remove_all(folder);
  ASSERT_TRUE(chosen.has_value());
  EXPECT_EQ(chosen->stretchAt(july).offset, 9h);
  EXPECT_FALSE(usual.has_value());
}

/// Writes `content` to a file of its own and takes it for the zone of `TZ`.
class DamagedZoneFile : public testing::Test {
 protected:
  TimeZone zoneOf(const std::string& content) {
    std::ofstream(file_, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));
    return ofVariable(file_.c_str());
  }
  ~DamagedZoneFile() override { std::filesystem::remove(file_); }

  static std::string berlin() {
    std::ifstream stream("/usr/share/zoneinfo/Europe/Berlin", std::ios::binary);
    std::string content(std::filesystem::file_size("/usr/share/zoneinfo/Europe/Berlin"), '\0');
    stream.read(content.data(), static_cast<std::streamsize>(content.size()));
    return content;
  }

 protected:
  const std::filesystem::path file_ = testing::TempDir() + "kestrel-zone-" + std::to_string(getpid());
};

TEST_F(DamagedZoneFile, wholeCopyElsewhereIsReadAsTheZone) {
  EXPECT_EQ(zoneOf(berlin()).stretchAt(at(sys_days{2025y / July / 1})).offset, 2h);
}

// What counts leap seconds sets the clocks at other instants: better no zone than one that is half a minute late.
TEST_F(DamagedZoneFile, thatCountsLeapSecondsIsNone) {
  std::string content = berlin();
  // Every header announces one leap second, which is put where RFC 8536 wants it: before the flags at the end.
  std::size_t place = 0;
  for (const std::size_t timeSize : {4U, 8U}) {
    const auto count = [&](std::size_t field) {
      std::size_t number = 0;
      for (std::size_t byte = 0; byte < 4; ++byte) {
        number = number * 256 + static_cast<unsigned char>(content[place + 20 + 4 * field + byte]);
      }
      return number;
    };
    const std::size_t upToLeaps = count(3) * (timeSize + 1) + count(4) * 6 + count(5);
    ASSERT_EQ(count(2), 0U);
    content[place + 20 + 4 * 2 + 3] = 1;
    content.insert(place + 44 + upToLeaps, std::string(timeSize + 3, '\0') + '\1');
    place += 44 + upToLeaps + timeSize + 4 + count(1) + count(0);
  }
  ASSERT_EQ(content[place], '\n');
  EXPECT_EQ(zoneOf(content).stretchAt(at(sys_days{2025y / July / 1})).offset, 0s);
}

TEST_F(DamagedZoneFile, thatIsLargerThanAnyZoneIsNone) {
  constexpr std::size_t largest = 1 << 20;
  std::string content = berlin();
  content.resize(largest, ' ');  // which makes the rule for later years none
  EXPECT_NE(zoneOf(content).stretchAt(at(sys_days{2025y / July / 1})).offset, 0s);
  EXPECT_EQ(zoneOf(content + ' ').stretchAt(at(sys_days{2025y / July / 1})).offset, 0s);
}

TEST_F(DamagedZoneFile, thatItsUserMayNotReadIsNone) {
  zoneOf(berlin());
  std::filesystem::permissions(file_, std::filesystem::perms::none);
  const uid_t user = geteuid();
  constexpr uid_t nobody = 65'534;
  ASSERT_EQ(user == 0 ? seteuid(nobody) : 0, 0);
  const auto offset = ofVariable(file_.c_str()).stretchAt(at(sys_days{2025y / July / 1})).offset;
  EXPECT_EQ(seteuid(user), 0);
  EXPECT_EQ(offset, 0s);
}

TEST_F(DamagedZoneFile, truncatedAnywhereNeverCrashes) {
  const std::string whole = berlin();
  for (std::size_t size = 0; size < whole.size(); ++size) {
    const auto offset = zoneOf(whole.substr(0, size)).stretchAt(at(sys_days{2025y / July / 1})).offset;
    ASSERT_TRUE(offset == 0s || offset == 1h || offset == 2h) << size << ": " << offset.count();
  }
}

TEST_F(DamagedZoneFile, withAnyByteChangedNeverCrashes) {
  EXPECT_TRUE(rc::check([this] {
    std::string content = berlin();
    for (const auto& [position, value] : *rc::gen::container<std::vector<std::pair<std::size_t, char>>>(
             rc::gen::pair(rc::gen::inRange<std::size_t>(0, content.size()), rc::gen::arbitrary<char>()))) {
      content[position] = value;
    }
    const TimeZone zone = zoneOf(content);
    for (const double time : {-1e15, -4e9, -1e9, 0.0, 7e8, 1e10, 1e14}) {
      const auto stretch = zone.stretchAt(instantSinceReferenceDate(time));
      RC_ASSERT(stretch.begin <= instantSinceReferenceDate(time));
      RC_ASSERT(instantSinceReferenceDate(time) < stretch.end);
      zone.startOfDay(local_days(days(static_cast<int>(time / 1e10))));
    }
  }));
}

}  // namespace
}  // namespace kestrel
