#include <KestrelKit/foundation/Calendar.h>
#include <gtest/gtest.h>
#include <unicode/calendar.h>
#include <unicode/gregocal.h>
#include <unicode/timezone.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <memory>
#include <ostream>
#include <rapidcheck.h>
#include <string>
#include <vector>

namespace kestrel {

void PrintTo(const Calendar::Components& shown, std::ostream* out) {
  *out << shown.year << '-' << shown.month << '-' << shown.day << ' ' << shown.hour << 'h';
}

namespace {

using namespace std::chrono;
using Components = Calendar::Components;

Instant at(sys_seconds time) {
  return Instant(Seconds(time.time_since_epoch() - ReferenceClock::referenceDateSince1970));
}
Instant before(Instant instant) {
  return Instant(Seconds(std::nextafter(secondsSinceReferenceDate(instant), -HUGE_VAL)));
}

Calendar gregorianIn(std::string_view zone) { return Calendar::gregorian(TimeZone::named(zone).value()); }
Calendar utcOfLocale(std::string_view locale) { return Calendar::ofLocale(locale, TimeZone::utc()); }

const std::vector<std::string> zones{"UTC", "Europe/Berlin", "America/New_York", "America/Mexico_City",
                                     "America/St_Johns", "Asia/Kolkata", "Asia/Kathmandu", "Australia/Lord_Howe",
                                     "Pacific/Apia", "Pacific/Chatham", "Africa/Casablanca", "Africa/Monrovia",
                                     "Europe/Dublin", "Europe/Amsterdam", "America/Sao_Paulo", "Antarctica/Troll"};

/// The plain way: the C library, asked once per instant. Its calendar is the proleptic Gregorian one.
Components plainly(const std::string& zone, sys_seconds time) {
  setenv("TZ", zone.c_str(), 1);
  tzset();
  const std::time_t count = time.time_since_epoch().count();
  std::tm broken{};
  localtime_r(&count, &broken);
  return {broken.tm_year + 1900, broken.tm_mon + 1, broken.tm_mday, broken.tm_hour};
}

TEST(Calendar, componentsAreThoseOfTheClockOnTheWall) {
  const Instant evening = at(sys_days{2025y / March / 4} + 23h + 30min);
  EXPECT_EQ(gregorianIn("UTC").components(evening), (Components{2025, 3, 4, 23}));
  EXPECT_EQ(gregorianIn("Asia/Kolkata").components(evening), (Components{2025, 3, 5, 5}));
  EXPECT_EQ(gregorianIn("America/New_York").components(evening), (Components{2025, 3, 4, 18}));
}

TEST(Calendar, hourEndsWithItsLastFractionOfASecond) {
  const Calendar utc = gregorianIn("UTC");
  const Instant five = at(sys_days{2025y / March / 5} + 5h);
  EXPECT_EQ(utc.components(before(five)), (Components{2025, 3, 5, 4}));
  EXPECT_EQ(utc.components(five), (Components{2025, 3, 5, 5}));
  const Instant referenceDate = instantSinceReferenceDate(0);
  EXPECT_EQ(utc.components(referenceDate), (Components{2001, 1, 1, 0}));
  EXPECT_EQ(utc.components(before(referenceDate)), (Components{2000, 12, 31, 23}));
}

TEST(Calendar, instantThatIsNotFiniteHasNoComponents) {
  for (const double none : {HUGE_VAL, -HUGE_VAL, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_EQ(gregorianIn("UTC").components(instantSinceReferenceDate(none)), std::nullopt);
    EXPECT_EQ(gregorianIn("UTC").addingDays(instantSinceReferenceDate(none), 1), std::nullopt);
  }
}

TEST(Calendar, instantThatWouldBeClampedHasNoComponents) {
  // ICU's calendars hold the days from 2133147020 before 1970 to 2128265844 after, the last only at its midnight.
  const Instant first = at(sys_seconds(days(-2'133'147'020)));
  const Instant end = at(sys_seconds(days(2'128'265'844)));
  for (const char* calendar : {"gregorian", "buddhist", "chinese", "coptic", "dangi", "ethiopic", "hebrew", "indian",
                               "islamic", "islamic-civil", "islamic-umalqura", "japanese", "persian", "roc"}) {
    const Calendar utc = utcOfLocale(std::string("en@calendar=") + calendar);
    EXPECT_TRUE(utc.components(first)) << calendar;
    EXPECT_FALSE(utc.components(before(first))) << calendar;
    EXPECT_TRUE(utc.components(before(end))) << calendar;
    EXPECT_FALSE(utc.components(end)) << calendar;
    EXPECT_FALSE(utc.components(instantSinceReferenceDate(1e17))) << calendar;
    EXPECT_FALSE(utc.components(instantSinceReferenceDate(std::numeric_limits<double>::max()))) << calendar;
    EXPECT_FALSE(utc.addingDays(before(end), 1)) << calendar;
    EXPECT_FALSE(utc.addingDays(end, -1)) << calendar;
    EXPECT_FALSE(utc.addingDays(first, std::numeric_limits<std::int64_t>::max())) << calendar;
    EXPECT_FALSE(utc.addingDays(first, std::numeric_limits<std::int64_t>::min())) << calendar;
  }
}

TEST(Calendar, gregorianRuleHoldsBefore1582) {
  const Calendar utc = gregorianIn("UTC");
  EXPECT_EQ(utc.components(at(sys_days{1582y / October / 10})), (Components{1582, 10, 10, 0}));
  EXPECT_EQ(utc.components(before(at(sys_days{1500y / March / 1}))), (Components{1500, 2, 28, 23}));
  EXPECT_EQ(utc.components(at(sys_days{1y / January / 1})), (Components{1, 1, 1, 0}));
  // The year of its era: the day before the first of January of the year 1 lies in the year 1 before Christ.
  EXPECT_EQ(utc.components(before(at(sys_days{1y / January / 1}))), (Components{1, 12, 31, 23}));
}

TEST(Calendar, otherCalendarsNameTheDayInTheirOwnWay) {
  // 14 June 2024, as almanacs of each calendar give it.
  const Instant day = at(sys_days{2024y / June / 14} + 12h);
  EXPECT_EQ(utcOfLocale("th_TH").components(day), (Components{2567, 6, 14, 12}));
  EXPECT_EQ(utcOfLocale("en_US@calendar=japanese").components(day), (Components{6, 6, 14, 12}));
  EXPECT_EQ(utcOfLocale("fa_IR").components(day), (Components{1403, 3, 25, 12}));
  EXPECT_EQ(utcOfLocale("zh_TW@calendar=roc").components(day), (Components{113, 6, 14, 12}));
  EXPECT_EQ(utcOfLocale("ar_SA@calendar=islamic-umalqura").components(day), (Components{1445, 12, 8, 12}));
  EXPECT_EQ(utcOfLocale("am_ET@calendar=ethiopic").components(day), (Components{2016, 10, 7, 12}));
  EXPECT_EQ(utcOfLocale("en_US@calendar=chinese").components(day), (Components{41, 5, 9, 12}));
}

TEST(Calendar, localeMayComeAsTheCLibraryWritesIt) {
  const Instant day = at(sys_days{2024y / June / 14});
  for (const char* gregorian : {"C", "POSIX", "C.UTF-8", "de_DE.UTF-8", "de_DE@euro", "en_US.ISO-8859-1@euro", "",
                                "no such locale", "de_DE@calendar=nonsense", "@", ".", "th_TH@calendar=gregorian",
                                "th_TH.UTF-8@calendar=gregorian"}) {
    EXPECT_EQ(utcOfLocale(gregorian).components(day)->year, 2024) << gregorian;
  }
  for (const char* buddhist : {"th_TH.UTF-8", "th_TH", "de_DE.UTF-8@calendar=buddhist", "de_DE@calendar=buddhist",
                               "de_DE@calendar=buddhist.UTF-8", "C@calendar=buddhist"}) {
    EXPECT_EQ(utcOfLocale(buddhist).components(day)->year, 2567) << buddhist;
  }
}

TEST(Calendar, currentFollowsTheFirstLocaleVariableThatIsSet) {
  const auto yearNow = [](const char* all, const char* time, const char* lang) {
    setenv("LC_ALL", all, 1);
    setenv("LC_TIME", time, 1);
    setenv("LANG", lang, 1);
    return Calendar::current().components(at(sys_days{2024y / June / 14}))->year;
  };
  EXPECT_EQ(yearNow("th_TH.UTF-8", "C", "C"), 2567);
  EXPECT_EQ(yearNow("C", "th_TH.UTF-8", "th_TH.UTF-8"), 2024);
  EXPECT_EQ(yearNow("", "th_TH.UTF-8", "C"), 2567);
  EXPECT_EQ(yearNow("", "C", "th_TH.UTF-8"), 2024);
  EXPECT_EQ(yearNow("", "", "th_TH.UTF-8"), 2567);
  EXPECT_EQ(yearNow("", "", ""), 2024);
  unsetenv("LC_ALL");
  unsetenv("LC_TIME");
  unsetenv("LANG");
  EXPECT_EQ(Calendar::current().components(at(sys_days{2024y / June / 14}))->year, 2024);
}

TEST(Calendar, currentIsInTheZoneOfTheEnvironment) {
  setenv("TZ", "Asia/Tokyo", 1);
  EXPECT_EQ(Calendar::current().components(at(sys_days{2025y / March / 5}))->hour, 9);
  setenv("TZ", "America/New_York", 1);
  EXPECT_EQ(Calendar::current().components(at(sys_days{2025y / March / 5}))->hour, 19);
}

TEST(Calendar, hourAgreesWithThePlainWayAtRandomInstants) {
  EXPECT_TRUE(rc::check([] {
    const auto zone = *rc::gen::elementOf(zones);
    sys_seconds time(seconds(*rc::gen::inRange<std::int64_t>(-6'000'000'000, 13'000'000'000)));
    if (*rc::gen::arbitrary<bool>()) {  // as likely as not within two hours of a change of the clocks
      const double change = secondsSinceReferenceDate(TimeZone::named(zone)->stretchAt(at(time)).end);
      RC_PRE(std::isfinite(change));
      time = sys_seconds(seconds(static_cast<std::int64_t>(change) + *rc::gen::inRange<std::int64_t>(-7200, 7200)) +
                         ReferenceClock::referenceDateSince1970);
    }
    const auto hour = gregorianIn(zone).hourAround(at(time)).value();
    RC_ASSERT(hour.contains(at(time)));
    RC_ASSERT(hour.components == plainly(zone, time));
    RC_ASSERT(hour.end - hour.begin <= 1h);

    // Everywhere within, and just inside both ends, the components are the same …
    const auto length = static_cast<std::int64_t>((hour.end - hour.begin).count());
    const auto inside = hour.begin + Seconds(static_cast<double>(*rc::gen::inRange<std::int64_t>(0, length)));
    for (const Instant each : {hour.begin, inside, before(hour.end)}) {
      const sys_seconds wholeSecond(seconds(static_cast<std::int64_t>(std::floor(secondsSinceReferenceDate(each))) +
                                            ReferenceClock::referenceDateSince1970.count()));
      RC_ASSERT(plainly(zone, wholeSecond) == hour.components);
      RC_ASSERT(gregorianIn(zone).components(each) == hour.components);
    }
    // … and the neighbours join without a gap.
    RC_ASSERT(gregorianIn(zone).hourAround(hour.end)->begin == hour.end);
    RC_ASSERT(gregorianIn(zone).hourAround(before(hour.begin))->end == hour.begin);
  }));
}

TEST(Calendar, hourEndsEarlyWhereTheClocksAreSetWithinIt) {
  // Lord Howe Island sets its clocks by half an hour: 02:00 becomes 01:30, so hour 1 comes in two pieces.
  const Calendar lordHowe = gregorianIn("Australia/Lord_Howe");
  const Instant set = at(sys_days{2025y / April / 5} + 15h);
  const auto first = lordHowe.hourAround(before(set)).value();
  const auto second = lordHowe.hourAround(set).value();
  EXPECT_EQ(first.components, (Components{2025, 4, 6, 1}));
  EXPECT_EQ(first.end - first.begin, 1h);
  EXPECT_EQ(second.components, first.components);
  EXPECT_EQ(second.begin, set);
  EXPECT_EQ(second.end - second.begin, 30min);
}

TEST(Calendar, hourEndsAtTheVeryInstantAtWhichTheClocksAreSet) {
  // St. John's set its clocks one minute after midnight: on 30 October 2005 that took them back to the day before.
  const Calendar stJohns = gregorianIn("America/St_Johns");
  const Instant set = at(sys_days{2005y / October / 30} + 2h + 31min);
  const auto midnight = stJohns.hourAround(before(set)).value();
  EXPECT_EQ(midnight.components, (Components{2005, 10, 30, 0}));
  EXPECT_EQ(midnight.end, set);
  EXPECT_EQ(midnight.end - midnight.begin, 1min);
  const auto eveningAgain = stJohns.hourAround(set).value();
  EXPECT_EQ(eveningAgain.components, (Components{2005, 10, 29, 23}));
  EXPECT_EQ(eveningAgain.begin, set);
  EXPECT_EQ(eveningAgain.end - eveningAgain.begin, 59min);
}

TEST(Calendar, hourAgreesWithIcuInEveryCalendar) {
  // Zones whose rules have not changed since the data that ICU carries were made.
  const std::vector<std::string> settled{"UTC", "Europe/Berlin", "Asia/Kolkata", "Australia/Lord_Howe", "Asia/Tokyo"};
  const std::vector<std::string> calendars{"buddhist", "chinese", "coptic", "dangi", "ethiopic", "hebrew", "indian",
                                           "islamic", "islamic-civil", "islamic-umalqura", "japanese", "persian",
                                           "roc"};
  EXPECT_TRUE(rc::check([&] {
    const auto zone = *rc::gen::elementOf(settled);
    const auto locale = "en_US@calendar=" + *rc::gen::elementOf(calendars);
    const auto time = *rc::gen::inRange<std::int64_t>(-1'000'000'000, 2'000'000'000);

    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::TimeZone> icuZone(icu::TimeZone::createTimeZone(zone.c_str()));
    const std::unique_ptr<icu::Calendar> icuCalendar(
        icu::Calendar::createInstance(*icuZone, icu::Locale::createFromName(locale.c_str()), status));
    icuCalendar->setTime(static_cast<UDate>(time) * 1000, status);
    const Components expected{icuCalendar->get(UCAL_YEAR, status), icuCalendar->get(UCAL_MONTH, status) + 1,
                              icuCalendar->get(UCAL_DAY_OF_MONTH, status),
                              icuCalendar->get(UCAL_HOUR_OF_DAY, status)};
    RC_ASSERT(U_SUCCESS(status));
    const Calendar calendar = Calendar::ofLocale(locale, TimeZone::named(zone).value());
    RC_ASSERT(calendar.components(at(sys_seconds(seconds(time)))) == expected);
  }));
}

TEST(Calendar, gregorianDayIsTheSameWithAndWithoutIcu) {
  // Days within and beyond what the C++ calendar types hold, about -32767 to 32767 for the years.
  UErrorCode status = U_ZERO_ERROR;
  icu::GregorianCalendar proleptic(*icu::TimeZone::getGMT(), icu::Locale("en_US"), status);
  proleptic.setGregorianChange(-184'303'902'528'000'000.0, status);
  const auto askIcu = [&](std::int64_t day) {
    proleptic.setTime((static_cast<UDate>(day) + 0.5) * 86'400'000, status);
    return Components{proleptic.get(UCAL_YEAR, status), proleptic.get(UCAL_MONTH, status) + 1,
                      proleptic.get(UCAL_DAY_OF_MONTH, status), 12};
  };
  const Calendar utc = gregorianIn("UTC");
  const auto ask = [&](std::int64_t day) { return utc.components(local_seconds(days(day) + 12h)); };
  for (const local_days edge :
       {local_days(year::min() / January / 1), local_days(year::max() / December / 31),
        local_days(0y / January / 1), local_days(1y / January / 1)}) {
    const std::int64_t day = edge.time_since_epoch().count();
    for (const std::int64_t each : {day - 1, day, day + 1}) {
      EXPECT_EQ(ask(each), askIcu(each)) << each;
    }
  }
  EXPECT_TRUE(rc::check([&] {
    const auto day = *rc::gen::inRange<std::int64_t>(-20'000'000, 20'000'000);
    RC_ASSERT(ask(day) == askIcu(day));
  }));
  ASSERT_TRUE(U_SUCCESS(status));
}

TEST(Calendar, componentsOfAClockTimeNeedNoZone) {
  const local_seconds lastSecond = local_days(2025y / March / 5) - 1s;
  EXPECT_EQ(gregorianIn("UTC").components(lastSecond), (Components{2025, 3, 4, 23}));
  EXPECT_EQ(gregorianIn("Asia/Tokyo").components(lastSecond), (Components{2025, 3, 4, 23}));
  EXPECT_EQ(utcOfLocale("th_TH").components(lastSecond), (Components{2568, 3, 4, 23}));
  EXPECT_EQ(gregorianIn("UTC").components(local_seconds(days(3'000'000'000))), std::nullopt);
}

TEST(Calendar, addingDaysKeepsTheTimeOnTheClocks) {
  const Calendar newYork = gregorianIn("America/New_York");
  // 14:10 in summer and in winter, across the change of 3 November 2024.
  const Instant summer = at(sys_days{2024y / November / 2} + 18h + 10min);
  const Instant winter = at(sys_days{2024y / November / 4} + 19h + 10min);
  EXPECT_EQ(newYork.addingDays(summer, 2), winter);
  EXPECT_EQ(newYork.addingDays(winter, -2), summer);
  EXPECT_EQ(newYork.addingDays(winter, 0), winter);
  EXPECT_EQ(newYork.addingDays(summer + Seconds(0.25), 2), winter + Seconds(0.25));
}

TEST(Calendar, addingDaysIntoAGapReadsWithTheOffsetBefore) {
  const Calendar berlin = gregorianIn("Europe/Berlin");
  const Instant halfPastTwo = at(sys_days{2025y / March / 29} + 1h + 30min);
  EXPECT_EQ(berlin.addingDays(halfPastTwo, 1), at(sys_days{2025y / March / 30} + 1h + 30min));
  EXPECT_EQ(berlin.addingDays(at(sys_days{2025y / March / 31} + 30min), -1),
            at(sys_days{2025y / March / 30} + 1h + 30min));
}

TEST(Calendar, addingDaysIntoAnOverlapTakesTheEarlier) {
  const Calendar berlin = gregorianIn("Europe/Berlin");
  EXPECT_EQ(berlin.addingDays(at(sys_days{2025y / October / 27} + 1h + 30min), -1),
            at(sys_days{2025y / October / 26} + 30min));
  const Instant later = at(sys_days{2025y / October / 26} + 1h + 30min);
  EXPECT_EQ(berlin.addingDays(later, 0), later);
}

TEST(Calendar, addingDaysAgreesWithTheCLibrary) {
  EXPECT_TRUE(rc::check([] {
    const auto zone = *rc::gen::elementOf(zones);
    const sys_seconds time(seconds(*rc::gen::inRange<std::int64_t>(0, 4'000'000'000)));
    const auto count = *rc::gen::inRange(-400, 400);
    const Calendar calendar = gregorianIn(zone);
    const Instant moved = calendar.addingDays(at(time), count).value();

    // Unless the clocks skip it, the time on the clocks is the same, the wanted number of days away; and no earlier
    // instant shows it.
    setenv("TZ", zone.c_str(), 1);
    tzset();
    const std::time_t from = time.time_since_epoch().count();
    const std::time_t to = static_cast<std::time_t>(secondsSinceReferenceDate(moved)) +
                           ReferenceClock::referenceDateSince1970.count();
    const auto wallTime = [](std::time_t instant) {
      std::tm broken{};
      localtime_r(&instant, &broken);
      return instant + broken.tm_gmtoff;
    };
    const auto wanted = wallTime(from) + std::time_t{86400} * count;
    RC_PRE(count != 0);
    if (wallTime(to) == wanted) {
      for (const std::time_t shift : {1800, 3600, 7200, 86400}) {
        RC_ASSERT(wallTime(to - shift) != wanted);
      }
    } else {
      for (std::time_t shift = -90000; shift <= 90000; shift += 900) {
        RC_ASSERT(wallTime(to + shift) != wanted);
      }
    }
  }));
}

}  // namespace
}  // namespace kestrel
