#include "Common/TimeStamp.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <random>
#include <string>

#include "Common/CivilTime.h"

namespace {

constexpr std::int64_t kNoon2024 = 1718109005;  // 2024-06-11 12:30:05 UTC

struct Form {
  bool tFormat, fileNameForm;
};
constexpr Form kForms[] = {{false, false}, {true, false}, {false, true}, {true, true}};

TEST(FormatTimestamp, WritesWholeSecondsInUtc) {
  EXPECT_EQ(FormatTimestamp(kNoon2024, false, false).Bytes(), "2024-06-11 12:30:05 +0000");
  EXPECT_EQ(FormatTimestamp(kNoon2024, true, false).Bytes(), "2024-06-11T12:30:05+0000");
  EXPECT_EQ(FormatTimestamp(kNoon2024, false, true).Bytes(), "2024-06-11_12-30-05_+0000");
  EXPECT_EQ(FormatTimestamp(kNoon2024, true, true).Bytes(), "2024-06-11_12-30-05_+0000");
  EXPECT_EQ(FormatTimestamp(-1, false, false).Bytes(), "1969-12-31 23:59:59 +0000");
  EXPECT_EQ(FormatTimestamp(253402300800, true, false).Bytes(), "10000-01-01T00:00:00+0000");
  EXPECT_EQ(FormatTimestamp(-62135596801, true, false).Bytes(), "0000-12-31T23:59:59+0000");
  EXPECT_EQ(FormatTimestamp(0, true, false).Encoding(), Charset::Ascii);
}

TEST(FormatTimestamp, WritesMillisecondsInTheZone) {
  struct Row {
    ZonedTime time;
    const char *blank, *t, *file;
  };
  const Row rows[] = {
      {{kNoon2024, 7, 0},
       "2024-06-11 12:30:05.007 +00:00",
       "2024-06-11T12:30:05.007+00:00",
       "2024-06-11_12-30-05-007_+0000"},
      {{kNoon2024, 999, -120},
       "2024-06-11 14:30:05.999 +02:00",
       "2024-06-11T14:30:05.999+02:00",
       "2024-06-11_14-30-05-999_+0200"},
      {{kNoon2024, 60, -330},
       "2024-06-11 18:00:05.060 +05:30",
       "2024-06-11T18:00:05.060+05:30",
       "2024-06-11_18-00-05-060_+0530"},
      {{kNoon2024, 0, 210},
       "2024-06-11 09:00:05.000 -03:30",
       "2024-06-11T09:00:05.000-03:30",
       "2024-06-11_09-00-05-000_-0330"},
      {{kNoon2024, 0, -825},
       "2024-06-12 02:15:05.000 +13:45",
       "2024-06-12T02:15:05.000+13:45",
       "2024-06-12_02-15-05-000_+1345"},
      {{-1, 5, 0},
       "1969-12-31 23:59:59.005 +00:00",
       "1969-12-31T23:59:59.005+00:00",
       "1969-12-31_23-59-59-005_+0000"},
      // Contract: less than an hour west has no minus.
      {{kNoon2024, 0, 30},
       "2024-06-11 12:00:05.000 +00:30",
       "2024-06-11T12:00:05.000+00:30",
       "2024-06-11_12-00-05-000_+0030"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(FormatTimestamp(row.time, false, false).Bytes(), row.blank);
    EXPECT_EQ(FormatTimestamp(row.time, true, false).Bytes(), row.t);
    EXPECT_EQ(FormatTimestamp(row.time, false, true).Bytes(), row.file);
    EXPECT_EQ(FormatTimestamp(row.time, true, true).Bytes(), row.file);
  }
}

TEST(FormatTimestamp, GivesNothingWhereTheYearDoesNotFit) {
  for (const std::int64_t seconds :
       {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()}) {
    EXPECT_EQ(FormatTimestamp(seconds, true, false).Impl(), nullptr);
    EXPECT_EQ(FormatTimestamp(ZonedTime{seconds, 0, 60}, true, false).Impl(), nullptr);
    EXPECT_EQ(FormatTimestamp(ZonedTime{seconds, 0, -60}, true, false).Impl(), nullptr);
    EXPECT_EQ(HttpDate(seconds).Impl(), nullptr);
  }
}

TEST(ParseTimestamp, ReadsWhatIsWritten) {
  std::mt19937_64 random(7);  // fixed seed: a failure repeats
  for (int i = 0; i < 2000; ++i) {
    const ZonedTime time{static_cast<std::int64_t>(random() % 300000000000) - 60000000000,
                         static_cast<std::uint16_t>(random() % 1000),
                         static_cast<std::int16_t>(static_cast<int>(random() % 1800) - 900)};
    const auto at = CivilTimeOf(time.seconds - time.zone * 60);
    if (at->year > 9999 || (time.zone > 0 && time.zone < 60)) continue;
    for (const Form form : kForms) {
      const std::string text(FormatTimestamp(time, form.tFormat, form.fileNameForm).Bytes());
      ZonedTime back{};
      ASSERT_TRUE(ParseTimestamp(text, form.tFormat, form.fileNameForm, back)) << text;
      EXPECT_EQ(back, time) << text;
    }
  }
}

TEST(ParseTimestamp, TakesEverySignButPlusForMinus) {
  ZonedTime time{};
  for (const char* text : {"2024-06-11T09:00:05.006-03:30", "2024-06-11T09:00:05.006_03:30",
                           "2024-06-11T09:00:05.6x03:30"}) {
    ASSERT_TRUE(ParseTimestamp(text, true, false, time)) << text;
    EXPECT_EQ(time, (ZonedTime{kNoon2024, 6, 210})) << text;
  }
}

TEST(ParseTimestamp, RefusesWhatIsNotWhole) {
  for (const char* text :
       {"", "2024-06-11", "2024-06-11T12:30:05.000", "2024-06-11T12:30:05.000+", "x",
        "2024-06-11T12:30:05.000+02", "2024-06-11T12:30:05.000+02:", "2024-06-11T12:30:05+0000",
        "10000-01-01T00:00:00.000+00:00", "2024-06-11_12-30-05-007_+0000"}) {
    ZonedTime time{1, 2, 3};
    EXPECT_FALSE(ParseTimestamp(text, true, false, time)) << text;
    EXPECT_EQ(time, (ZonedTime{1, 2, 3}));
  }
}

// Sets the time zone of the process while it lives.
class InTimeZone {
public:
  explicit InTimeZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
  }
  ~InTimeZone() {
    unsetenv("TZ");
    tzset();
  }
};

TEST(ParseTimestamp, DoesNotLookAtTheZoneOfTheProcess) {
  for (const char* zone : {"America/New_York", "EST5EDT,M3.2.0,M11.1.0", "Asia/Kolkata", "UTC"}) {
    const InTimeZone zoned(zone);
    ZonedTime winter{}, summer{}, change{};
    ASSERT_TRUE(ParseTimestamp("2024-01-11T12:30:05.000+00:00", true, false, winter));
    ASSERT_TRUE(ParseTimestamp("2024-06-11T12:30:05.000+00:00", true, false, summer));
    ASSERT_TRUE(ParseTimestamp("2024-03-10T02:30:00.000-05:00", true, false, change));
    EXPECT_EQ(winter.seconds, 1704976205) << zone;
    EXPECT_EQ(summer.seconds, kNoon2024) << zone;
    EXPECT_EQ(change.seconds, 1710055800) << zone;
  }
}

TEST(CurrentZonedTime, IsNowInTheZoneOfTheProcess) {
  const InTimeZone zoned("XYZ-05:30");
  const auto before = std::chrono::system_clock::now();
  const ZonedTime now = CurrentZonedTime();
  const auto after = std::chrono::system_clock::now();
  const std::chrono::system_clock::time_point at{std::chrono::seconds(now.seconds) +
                                                 std::chrono::milliseconds(now.milliseconds)};
  EXPECT_GE(at, std::chrono::floor<std::chrono::milliseconds>(before));
  EXPECT_LE(at, after);
  EXPECT_EQ(now.zone, -330);
}

TEST(HttpDate, IsInEnglish) {
  EXPECT_EQ(HttpDate(0).Bytes(), "Thu, 01 Jan 1970 00:00:00 GMT");
  EXPECT_EQ(HttpDate(951782400).Bytes(), "Tue, 29 Feb 2000 00:00:00 GMT");
  EXPECT_EQ(HttpDate(-1).Bytes(), "Wed, 31 Dec 1969 23:59:59 GMT");
  EXPECT_EQ(HttpDate(0).Encoding(), Charset::Ascii);
}

// The oracle: the standard library's calendar, as far as it goes.
TEST(CivilTime, AgreesWithTheStandardCalendar) {
  using namespace std::chrono;
  for (std::int64_t day = -1100000; day < 1100000; day += 37) {
    const sys_days date{days(day)};
    const year_month_day expected(date);
    const std::int64_t seconds = day * 86400 + 3661;
    const auto at = CivilTimeOf(seconds);
    ASSERT_TRUE(at);
    ASSERT_EQ(at->year, static_cast<int>(expected.year())) << day;
    ASSERT_EQ(at->month, static_cast<int>(static_cast<unsigned>(expected.month()))) << day;
    ASSERT_EQ(at->day, static_cast<int>(static_cast<unsigned>(expected.day()))) << day;
    ASSERT_EQ(at->weekday, static_cast<int>(weekday(date).c_encoding())) << day;
    ASSERT_EQ(at->hour * 10000 + at->minute * 100 + at->second, 10101);
    ASSERT_EQ(SecondsOf(*at), seconds);
  }
}

TEST(CivilTime, CarriesFieldsOver) {
  EXPECT_EQ(SecondsOf({2023, 13, 1, 0, 0, 0, 0}), SecondsOf({2024, 1, 1, 0, 0, 0, 0}));
  EXPECT_EQ(SecondsOf({2023, 12, 32, 0, 0, 0, 0}), SecondsOf({2024, 1, 1, 0, 0, 0, 0}));
  EXPECT_EQ(SecondsOf({2024, 0, 31, 24, 0, 0, 0}), SecondsOf({2024, 1, 1, 0, 0, 0, 0}));
}

}  // namespace
