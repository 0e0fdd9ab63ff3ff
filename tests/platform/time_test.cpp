// Clocks, the timer's resolution, and the times of files.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>

#include "platform/platform.h"
#include "tests/platform/scratch.h"

namespace
{

using tests::Opened;
using tests::Scratch;

constexpr int64_t counts = 10000000; // a second, in file times
constexpr SystemTime some_time = {1984, 3, 4, 15, 9, 7, 30, 250};

TEST(PlatformTime, CounterGoesForward)
{
    int64_t frequency = 0;
    int64_t first = 0;
    int64_t second = 0;
    ASSERT_TRUE(platform_counter_frequency(&frequency));
    EXPECT_GE(frequency, 1000000);
    ASSERT_TRUE(platform_counter(&first));
    platform_sleep(5);
    ASSERT_TRUE(platform_counter(&second));
    EXPECT_GE(second - first, frequency / 1000 * 4);
}

TEST(PlatformTime, LocalTimeIsNow)
{
    const time_t before = time(nullptr);
    SystemTime now;
    platform_local_time(&now);
    const time_t after = time(nullptr);
    tm parts = {};
    parts.tm_year = now.year - 1900;
    parts.tm_mon = now.month - 1;
    parts.tm_mday = now.day;
    parts.tm_hour = now.hour;
    parts.tm_min = now.minute;
    parts.tm_sec = now.second;
    parts.tm_isdst = -1;
    const time_t said = mktime(&parts);
    EXPECT_GE(said, before - 1);
    EXPECT_LE(said, after + 1);
    EXPECT_EQ(now.day_of_week, parts.tm_wday);
    EXPECT_LT(now.milliseconds, 1000);
}

TEST(PlatformTime, OnlyDatesThatThereAreHaveAFileTime)
{
    const struct {
        const char *name;
        SystemTime time;
        bool good;
    } rows[] = {
        {"a day", some_time, true},
        {"the last moment before 1970", {1969, 12, 0, 31, 23, 59, 59, 0}, true},
        {"29 February 2000", {2000, 2, 0, 29, 0, 0, 0, 0}, true},
        {"29 February 1900", {1900, 2, 0, 29, 0, 0, 0, 0}, false},
        {"29 February 1999", {1999, 2, 0, 29, 0, 0, 0, 0}, false},
        {"31 April", {1984, 4, 0, 31, 0, 0, 0, 0}, false},
        {"day 0", {1984, 3, 0, 0, 0, 0, 0, 0}, false},
        {"month 0", {1984, 0, 0, 1, 0, 0, 0, 0}, false},
        {"month 13", {1984, 13, 0, 1, 0, 0, 0, 0}, false},
        {"year 1600", {1600, 1, 0, 1, 0, 0, 0, 0}, false},
        {"year 30828", {30828, 1, 0, 1, 0, 0, 0, 0}, false},
        {"hour 24", {1984, 3, 0, 15, 24, 0, 0, 0}, false},
        {"minute 60", {1984, 3, 0, 15, 0, 60, 0, 0}, false},
        {"second 60", {1984, 3, 0, 15, 0, 0, 60, 0}, false},
        {"1000 milliseconds", {1984, 3, 0, 15, 0, 0, 0, 1000}, false},
        {"every field out of range", {65535, 65535, 65535, 65535, 65535, 65535, 65535, 65535}, false},
        {"a weekday that it isn't", {1984, 3, 65535, 15, 0, 0, 0, 0}, true},
    };
    for (const auto &row : rows) {
        int64_t time = 0;
        platform_set_last_error(0);
        EXPECT_EQ(platform_file_time(&row.time, &time), row.good) << row.name;
        EXPECT_EQ(platform_last_error() == 0, row.good) << row.name;
    }
}

TEST(PlatformTime, FileTimesCountFrom1601)
{
    SystemTime day = {1984, 3, 0, 15, 12, 0, 0, 0};
    int64_t noon = 0;
    int64_t next = 0;
    ASSERT_TRUE(platform_file_time(&day, &noon));
    day.second = 1;
    ASSERT_TRUE(platform_file_time(&day, &next));
    EXPECT_EQ(next - noon, counts);
    constexpr int64_t noon_in_england = (11644473600 + 448200000) * counts; // 15 March 1984, 12:00
    EXPECT_LE(std::abs(noon - noon_in_england), 14 * 3600 * counts);
}

// As a host turns it back, summer and winter alike.
TEST(PlatformTime, PanelTimesHaveOneDistanceFromLocalTimeForAllDates)
{
    const SystemTime winter = {2001, 1, 1, 15, 12, 0, 0, 0};
    const SystemTime summer = {2001, 7, 0, 15, 12, 0, 0, 0};
    const SystemTime none = {2001, 2, 0, 30, 12, 0, 0, 0};
    constexpr int64_t days_between = 181;
    int64_t first = 0;
    int64_t second = 0;
    ASSERT_TRUE(platform_panel_time(&winter, &first));
    ASSERT_TRUE(platform_panel_time(&summer, &second));
    EXPECT_EQ(second - first, days_between * 86400 * counts);
    EXPECT_FALSE(platform_panel_time(&none, &first));
}

TEST(PlatformTime, SetTimesAreReadBack)
{
    const Scratch scratch;
    const Opened opened(scratch.file("f", "abc"));
    int64_t time = 0;
    ASSERT_TRUE(platform_file_time(&some_time, &time));
    ASSERT_TRUE(platform_set_times(opened.file, time));
    SystemTime read = {};
    bool daylight = true;
    ASSERT_TRUE(platform_get_file_time(opened.file, &read, &daylight));
    EXPECT_EQ(read.year, 1984);
    EXPECT_EQ(read.month, 3);
    EXPECT_EQ(read.day_of_week, 4);
    EXPECT_EQ(read.day, 15);
    EXPECT_EQ(read.hour, 9);
    EXPECT_EQ(read.minute, 7);
    EXPECT_EQ(read.second, 30);
    EXPECT_EQ(read.milliseconds, 250);
}

TEST(PlatformTime, NoFileHasNoTime)
{
    SystemTime time = {};
    bool daylight = false;
    for (const PlatformFile file : {PlatformFile{0}, platform_void_file}) {
        platform_set_last_error(0);
        EXPECT_FALSE(platform_get_file_time(file, &time, &daylight));
        EXPECT_NE(platform_last_error(), 0u);
        EXPECT_FALSE(platform_set_times(file, counts));
    }
}

TEST(PlatformTime, TimerPeriodWithinItsCaps)
{
    uint32_t minimum = 0;
    uint32_t maximum = 0;
    ASSERT_TRUE(platform_timer_caps(&minimum, &maximum));
    EXPECT_GE(minimum, 1u);
    EXPECT_GT(maximum, minimum);
    EXPECT_TRUE(platform_timer_begin(minimum));
    EXPECT_TRUE(platform_timer_end(minimum));
    platform_set_last_error(0);
    EXPECT_FALSE(platform_timer_begin(0));
    EXPECT_NE(platform_last_error(), 0u);
}

#ifndef _WIN32
// The variable TZ for the life of an object.
class Zone
{
  public:
    explicit Zone(const char *zone) : had_(getenv("TZ") != nullptr), old_(had_ ? getenv("TZ") : "")
    {
        setenv("TZ", zone, 1);
        tzset();
    }
    ~Zone()
    {
        if (had_)
            setenv("TZ", old_.c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }
    Zone(const Zone &) = delete;
    Zone &operator=(const Zone &) = delete;

  private:
    bool had_;
    std::string old_;
};

TEST(PosixTime, EachDateHasItsOwnDaylightTime)
{
    const Zone zone("CET-1CEST,M3.5.0,M10.5.0/3");
    const struct {
        const char *name;
        SystemTime local;
        int64_t seconds; // since 1970
    } rows[] = {
        {"winter", {2001, 1, 1, 15, 12, 0, 0, 0}, 979556400},
        {"summer", {2001, 7, 0, 15, 12, 0, 0, 0}, 995191200},
        {"before 1970", {1969, 12, 3, 31, 0, 0, 0, 0}, -90000},
    };
    for (const auto &row : rows) {
        const Scratch scratch;
        const Opened opened(scratch.file("f", ""));
        int64_t time = 0;
        ASSERT_TRUE(platform_file_time(&row.local, &time)) << row.name;
        EXPECT_EQ(time, (row.seconds + 11644473600) * counts) << row.name;
        ASSERT_TRUE(platform_set_times(opened.file, time));
        SystemTime read = {};
        bool daylight = false;
        ASSERT_TRUE(platform_get_file_time(opened.file, &read, &daylight));
        EXPECT_EQ(read.hour, row.local.hour) << row.name;
        EXPECT_EQ(read.day_of_week, row.local.day_of_week) << row.name;
    }
}

TEST(PosixTime, PanelTimesHaveOneDistanceInAZoneWithSummerTimeToo)
{
    const Zone zone("CET-1CEST,M3.5.0,M10.5.0/3");
    const SystemTime winter = {2001, 1, 1, 15, 12, 0, 0, 0};
    const SystemTime summer = {2001, 7, 0, 15, 12, 0, 0, 0};
    int64_t first = 0;
    int64_t second = 0;
    ASSERT_TRUE(platform_panel_time(&winter, &first));
    ASSERT_TRUE(platform_panel_time(&summer, &second));
    EXPECT_EQ(second - first, int64_t{181} * 86400 * counts);
}

TEST(PosixTime, DaylightIsWhatThePresentHas)
{
    const Scratch scratch;
    const Opened opened(scratch.file("f", ""));
    SystemTime time;
    bool daylight = true;
    {
        const Zone zone("AAA0");
        ASSERT_TRUE(platform_get_file_time(opened.file, &time, &daylight));
        EXPECT_FALSE(daylight);
    }
    const Zone zone("AAA0BBB,0/0,365/167"); // the whole year
    ASSERT_TRUE(platform_get_file_time(opened.file, &time, &daylight));
    EXPECT_TRUE(daylight);
}

TEST(PosixTime, PeriodTooLongIsRefused)
{
    EXPECT_FALSE(platform_timer_begin(1000001));
    EXPECT_FALSE(platform_timer_end(1000001));
}
#endif

} // namespace
