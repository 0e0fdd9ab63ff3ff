#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "base/convert.h"
#include "tests/base/scripted_clock.h"

namespace
{

TimeRecord time_of(int32_t year, int32_t month_number, int32_t day, int32_t hour, int32_t minute, int32_t second)
{
    return {second, minute, hour, day, month_number, year, 0, 0, 0};
}

TimeRecord lif_date(std::initializer_list<uint8_t> bytes)
{
    TimeRecord time;
    memset(&time, 0x55, sizeof(time));
    datetime2tm(&time, bytes.begin());
    return time;
}

std::string lif_bytes(const TimeRecord &time)
{
    uint8_t bytes[6];
    tm2datetime(bytes, &time);
    char text[32];
    snprintf(text, sizeof(text), "%02X %02X %02X %02X %02X %02X", bytes[0], bytes[1], bytes[2], bytes[3], bytes[4],
             bytes[5]);
    return text;
}

TEST(Months, TextsAreExported)
{
    EXPECT_STREQ(month[0], "Jan");
    EXPECT_STREQ(month[4], "May");
    EXPECT_STREQ(month[11], "Dec");
}

TEST(LifDate, FieldsAreDecoded)
{
    const TimeRecord time = lif_date({0x84, 0x12, 0x31, 0x23, 0x58, 0x59});
    EXPECT_EQ(time.tm_year, 84);
    EXPECT_EQ(time.tm_mon, 11);
    EXPECT_EQ(time.tm_mday, 31);
    EXPECT_EQ(time.tm_hour, 23);
    EXPECT_EQ(time.tm_min, 58);
    EXPECT_EQ(time.tm_sec, 59);
    EXPECT_EQ(time.tm_wday, 0);
    EXPECT_EQ(time.tm_yday, 0);
    EXPECT_EQ(time.tm_isdst, 0);
}

TEST(LifDate, ZeroBytesAreTheYear2000WithoutMonthAndDay)
{
    const TimeRecord time = lif_date({0, 0, 0, 0, 0, 0});
    EXPECT_EQ(time.tm_year, 100);
    EXPECT_EQ(time.tm_mon, 0);
    EXPECT_EQ(time.tm_mday, 0);
}

TEST(LifDate, CenturyTurnsAtTheByte46)
{
    EXPECT_EQ(lif_date({0x46, 1, 1, 0, 0, 0}).tm_year, 46);
    EXPECT_EQ(lif_date({0x99, 1, 1, 0, 0, 0}).tm_year, 99);
    EXPECT_EQ(lif_date({0x45, 1, 1, 0, 0, 0}).tm_year, 145);
    EXPECT_EQ(lif_date({0x00, 1, 1, 0, 0, 0}).tm_year, 100);
    EXPECT_EQ(lif_date({0x3F, 1, 1, 0, 0, 0}).tm_year, 145);
    EXPECT_EQ(lif_date({0xFF, 1, 1, 0, 0, 0}).tm_year, 165);
}

TEST(LifDate, KeepsOctoberAsMonth15)
{
    EXPECT_EQ(lif_date({0x84, 0x10, 1, 0, 0, 0}).tm_mon, 15);
    EXPECT_EQ(lif_bytes(time_of(84, 9, 1, 0, 0, 0)), "84 10 01 00 00 00");
}

TEST(LifDate, OtherMonthsComeBackAsWritten)
{
    for (int32_t number = 0; number < 12; ++number) {
        uint8_t bytes[6];
        const TimeRecord written = time_of(99, number, 28, 1, 2, 3);
        tm2datetime(bytes, &written);
        TimeRecord read;
        datetime2tm(&read, bytes);
        EXPECT_EQ(read.tm_mon, number == 9 ? 15 : number);
        EXPECT_EQ(read.tm_mday, 28);
        EXPECT_EQ(read.tm_year, 99);
    }
}

TEST(LifDate, DamagedMonthsStayNumbers)
{
    EXPECT_EQ(lif_date({0x84, 0xFF, 1, 0, 0, 0}).tm_mon, 164);
    EXPECT_EQ(lif_date({0x84, 0x01, 1, 0, 0, 0}).tm_mon, 0);
}

TEST(LifDate, YearsFrom2000AreWrittenWithoutTheCentury)
{
    EXPECT_EQ(lif_bytes(time_of(124, 11, 31, 23, 59, 58)), "24 12 31 23 59 58");
    EXPECT_EQ(lif_bytes(time_of(99, 0, 1, 0, 0, 0)), "99 01 01 00 00 00");
    EXPECT_EQ(lif_bytes(time_of(100, 0, 1, 0, 0, 0)), "00 01 01 00 00 00");
}

TEST(LifDate, MissingDayClearsTheMonth)
{
    EXPECT_EQ(lif_bytes(time_of(100, 0, 0, 0, 0, 0)), "00 00 00 00 00 00");
    EXPECT_EQ(lif_bytes(time_of(84, 5, 0, 1, 2, 3)), "84 00 00 01 02 03");
}

TEST(LifDate, NullPointersAreLeftAlone)
{
    TimeRecord time = time_of(84, 5, 6, 7, 8, 9);
    uint8_t bytes[6] = {1, 2, 3, 4, 5, 6};
    datetime2tm(nullptr, bytes);
    datetime2tm(&time, nullptr);
    tm2datetime(nullptr, &time);
    tm2datetime(bytes, nullptr);
    EXPECT_EQ(time.tm_mon, 5);
    EXPECT_EQ(bytes[5], 6);
}

TEST(JulianDay, KnownDates)
{
    EXPECT_EQ(date2jd(1, 1, 2000), 2451545);
    EXPECT_EQ(date2jd(24, 5, 1968), 2440001);
    EXPECT_EQ(date2jd(31, 12, 1899), 2415020);
    EXPECT_EQ(date2jd(29, 2, 2024), 2460370);
    EXPECT_EQ(date2jd(1, 3, 2024), 2460371);
}

TEST(JulianDay, DatesComeBack)
{
    for (int32_t jd = 2415021; jd < 2415021 + 146097; jd += 13) {
        int32_t year, month_number, day;
        jd2greg(jd, &year, &month_number, &day);
        ASSERT_EQ(date2jd(day, month_number, year), jd);
        ASSERT_GE(month_number, 1);
        ASSERT_LE(month_number, 12);
        ASSERT_GE(day, 1);
        ASSERT_LE(day, 31);
    }
}

TEST(JulianDay, Hazard_E13_LargestNumbersDoNotOverflow)
{
    int32_t year, month_number, day;
    jd2greg(INT32_MAX, &year, &month_number, &day);
    EXPECT_EQ(year, 5874898);
    EXPECT_EQ(date2jd(day, month_number, year), INT32_MAX);
    jd2greg(600000000, &year, &month_number, &day); // from here on, four times it needs more than 32 bits
    EXPECT_EQ(date2jd(day, month_number, year), 600000000);
    jd2greg(INT32_MIN, &year, &month_number, &day);
    EXPECT_LT(year, 0);
    EXPECT_EQ(date2jd(INT32_MAX, 1, 2000), static_cast<int32_t>(uint32_t{INT32_MAX} + 2451544u));
    jd2greg(2451545, nullptr, nullptr, nullptr);
}

TimeRecord sdf_date(uint32_t jd, uint32_t seconds)
{
    uint8_t bytes[8];
    set_dword(bytes, jd);
    set_dword(bytes + 4, seconds);
    TimeRecord time = time_of(1, 2, 3, 4, 5, 6);
    time_ios2tm(&time, bytes);
    return time;
}

TEST(SdfDate, DayAndSeconds)
{
    const TimeRecord time = sdf_date(2446067, 86399); // 1 January 1985
    EXPECT_EQ(time.tm_year, 85);
    EXPECT_EQ(time.tm_mon, 0);
    EXPECT_EQ(time.tm_mday, 1);
    EXPECT_EQ(time.tm_hour, 23);
    EXPECT_EQ(time.tm_min, 59);
    EXPECT_EQ(time.tm_sec, 59);
}

TEST(SdfDate, OctoberIsMonthNine)
{
    EXPECT_EQ(sdf_date(static_cast<uint32_t>(date2jd(5, 10, 1987)), 0).tm_mon, 9);
}

TEST(SdfDate, TwoZeroWordsLeaveTheRecord)
{
    const TimeRecord time = sdf_date(0, 0);
    EXPECT_EQ(time.tm_year, 1);
    EXPECT_EQ(time.tm_sec, 6);
}

TEST(SdfDate, OneZeroWordIsADate)
{
    EXPECT_EQ(sdf_date(0, 61).tm_min, 1);
    EXPECT_EQ(sdf_date(2446067, 0).tm_mday, 1);
}

TEST(SdfDate, KeepsYearsTo1899Whole)
{
    EXPECT_EQ(sdf_date(2415020, 0).tm_year, 1899);
    EXPECT_EQ(sdf_date(2415021, 0).tm_year, 0);
}

TEST(SdfDate, KeepsWeekdayCountedFromSaturday)
{
    EXPECT_EQ(sdf_date(2451545, 0).tm_wday, 0); // 1 January 2000 was a Saturday
    EXPECT_EQ(sdf_date(2451546, 0).tm_wday, 1);
    EXPECT_EQ(sdf_date(2451551, 0).tm_wday, 6);
}

TEST(SdfDate, Hazard_E13_DamagedWordsGiveSomeDate)
{
    for (const uint32_t jd : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu, 0x20000000u}) {
        const TimeRecord time = sdf_date(jd, 0xFFFFFFFF);
        EXPECT_EQ(time.tm_hour, 1193046);
        EXPECT_GE(time.tm_wday, 0);
        EXPECT_LT(time.tm_wday, 7);
    }
}

TEST(SdfDate, KeepsSwappedArgumentsOfTheDay)
{
    const TimeRecord time = time_of(85, 3, 17, 0, 0, 0);
    uint8_t bytes[8];
    tm2time_ios(bytes, &time);
    EXPECT_EQ(get_dword(bytes), static_cast<uint32_t>(date2jd(85, 3, 17)));
    EXPECT_EQ(get_dword(bytes), 1727413u);
}

TEST(SdfDate, KeepsHourInTheHighWord)
{
    const TimeRecord time = time_of(85, 3, 17, 13, 2, 5);
    uint8_t bytes[8];
    tm2time_ios(bytes, &time);
    EXPECT_EQ(get_dword(bytes + 4), 13u * 65536 + 2 * 60 + 5);
}

TEST(HostTime, PackedFields)
{
    const TimeRecord time = time_of(124, 2, 5, 10, 20, 31);
    EXPECT_EQ(tm2wcxtime(&time), 44u << 25 | 3u << 21 | 5u << 16 | 10u << 11 | 20u << 5 | 15u);
    const TimeRecord first = time_of(80, 0, 1, 0, 0, 0);
    EXPECT_EQ(tm2wcxtime(&first), 0x210000u);
}

TEST(HostTime, YearsBefore1980AreTheFirstDayOfIt)
{
    const TimeRecord time = time_of(79, 11, 31, 23, 59, 59);
    EXPECT_EQ(tm2wcxtime(&time), 0x210000u);
    EXPECT_EQ(tm2wcxtime(nullptr), 0x210000u);
}

TEST(HostTime, SystemTimeBothWays)
{
    TimeRecord time = time_of(124, 2, 5, 10, 20, 31);
    time.tm_wday = 2;
    SystemTime system = {1, 1, 1, 1, 1, 1, 1, 999};
    tm2SystemTime(&system, &time);
    EXPECT_EQ(system.year, 2024);
    EXPECT_EQ(system.month, 3);
    EXPECT_EQ(system.day_of_week, 2);
    EXPECT_EQ(system.day, 5);
    EXPECT_EQ(system.hour, 10);
    EXPECT_EQ(system.minute, 20);
    EXPECT_EQ(system.second, 31);
    EXPECT_EQ(system.milliseconds, 0);
    TimeRecord back;
    memset(&back, 0x55, sizeof(back));
    SystemTime2tm(&back, &system);
    EXPECT_EQ(memcmp(&back, &time, sizeof(time)), 0);
}

TEST(HostTime, CurrentTimeIsTheLocalTime)
{
    const tests::ScriptedClock clock;
    TimeRecord time;
    memset(&time, 0x55, sizeof(time));
    get_current_datetime(&time);
    EXPECT_EQ(time.tm_year, 124);
    EXPECT_EQ(time.tm_mon, 2);
    EXPECT_EQ(time.tm_mday, 5);
    EXPECT_EQ(time.tm_wday, 2);
    EXPECT_EQ(time.tm_hour, 10);
    EXPECT_EQ(time.tm_min, 20);
    EXPECT_EQ(time.tm_sec, 30);
    EXPECT_EQ(time.tm_yday, 0);
    EXPECT_EQ(time.tm_isdst, 0);
    get_current_datetime(nullptr);
}

std::string date_text(const TimeRecord &time, int32_t flag)
{
    char date[32], clock[32];
    memset(date, '#', sizeof(date));
    memset(clock, '#', sizeof(clock));
    get_datetime_strings(&time, date, clock, flag);
    return std::string(date) + "|" + clock;
}

TEST(DateText, BlanksOrZerosAhead)
{
    EXPECT_EQ(date_text(time_of(99, 4, 3, 9, 5, 0), 0), " 3-May-99| 9:05");
    EXPECT_EQ(date_text(time_of(99, 4, 3, 9, 5, 0), 1), "03-May-99|09:05");
    EXPECT_EQ(date_text(time_of(99, 4, 13, 19, 55, 0), 0), "13-May-99|19:55");
}

TEST(DateText, YearsFrom2000AreTwoDigits)
{
    EXPECT_EQ(date_text(time_of(100, 0, 1, 0, 0, 0), 0), " 1-Jan-00| 0:00");
    EXPECT_EQ(date_text(time_of(124, 11, 31, 0, 0, 0), 0), "31-Dec-24| 0:00");
    EXPECT_EQ(date_text(time_of(5, 11, 31, 0, 0, 0), 0), "31-Dec-05| 0:00");
}

TEST(DateText, DayOutsideOfAMonthIsBlank)
{
    const std::string blank = std::string(9, ' ') + "|" + std::string(5, ' ');
    EXPECT_EQ(date_text(time_of(99, 4, 0, 9, 5, 0), 0), blank);
    EXPECT_EQ(date_text(time_of(99, 4, 32, 9, 5, 0), 1), blank);
    EXPECT_EQ(date_text(time_of(99, 4, -1, 9, 5, 0), 1), blank);
}

TEST(DateText, Hazard_G7_Month15IsOctoberAndOthersAreUnknown)
{
    EXPECT_EQ(date_text(time_of(84, 15, 3, 9, 5, 0), 0), " 3-Oct-84| 9:05");
    EXPECT_EQ(date_text(time_of(84, 9, 3, 9, 5, 0), 0), " 3-Oct-84| 9:05");
    for (const int32_t number : {-1, 12, 14, 16, 164, INT32_MAX, INT32_MIN})
        EXPECT_EQ(date_text(time_of(84, number, 3, 9, 5, 0), 0), " 3-"
                                                                 "???"
                                                                 "-84| 9:05");
}

TEST(DateText, Hazard_G8_LongNumbersStayInTheirBuffers)
{
    EXPECT_EQ(date_text(time_of(INT32_MIN, 4, 3, INT32_MIN, INT32_MIN, 0), 1),
              "03-May--2147483648|-2147483648:-2147483648");
    EXPECT_EQ(date_text(time_of(165, 4, 3, 165, 165, 0), 0), " 3-May-65|165:165");
}

TEST(DateText, NullPointersAreLeftAlone)
{
    const TimeRecord time = time_of(99, 4, 3, 9, 5, 0);
    char date[32] = "date", clock[32] = "clock";
    get_datetime_strings(nullptr, date, clock, 0);
    get_datetime_strings(&time, nullptr, clock, 0);
    get_datetime_strings(&time, date, nullptr, 0);
    EXPECT_STREQ(date, "date");
    EXPECT_STREQ(clock, "clock");
}

} // namespace
