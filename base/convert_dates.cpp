// Dates: the packed BCD of LIF volumes (six bytes: year, month, day, hour, minute, second), the day numbers of SDF
// volumes (two big-endian double words: Julian day, seconds of the day), the host's two forms, and text.
#include "base/convert.h"

#include <charconv>
#include <cstring>
#include <iterator>

#include "base/clock_inner.h"

const char *const month[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
static_assert(std::size(month) == 12);

namespace
{

constexpr uint32_t wcx_time_before_1980 = 0x210000;

struct Date {
    int32_t year, month, day;
};

// Both ways in 64 bits, cut at the end: a day number of a damaged volume has all of its 32.
constexpr int32_t julian_day(int64_t day, int64_t month_number, int64_t year)
{
    const int64_t a = (month_number - 14) / 12;
    return static_cast<int32_t>(day - 32075 + 1461 * (year + 4800 + a) / 4 + 367 * (month_number - 2 - 12 * a) / 12 -
                                3 * ((year + 4900 + a) / 100) / 4);
}

constexpr Date gregorian(int64_t jd)
{
    int64_t l = jd + 68569;
    const int64_t n = 4 * l / 146097;
    l -= (146097 * n + 3) / 4;
    const int64_t i = 4000 * (l + 1) / 1461001;
    l = l - 1461 * i / 4 + 31;
    const int64_t j = 80 * l / 2447;
    const int64_t k = j / 11;
    return {static_cast<int32_t>(100 * (n - 49) + i + k), static_cast<int32_t>(j + 2 - 12 * k),
            static_cast<int32_t>(l - 2447 * j / 80)};
}

static_assert(julian_day(1, 1, 2000) == 2451545 && gregorian(2451545).year == 2000);

// An October from BCD is month 15; damaged bytes give any number up to 164.
const char *month_text(int32_t number)
{
    if (number >= 0 && number < 12) return month[number];
    return number == 15 ? month[9] : "???";
}

// Catalogues hold tens of thousands of dates: their texts are put together by hand. Numbers have two digits or more.
char *put_number(char *target, int32_t value, char pad)
{
    if (value < 0 || value > 99) return std::to_chars(target, target + 11, value).ptr;
    *target++ = value < 10 ? pad : static_cast<char>('0' + value / 10);
    *target++ = static_cast<char>('0' + value % 10);
    return target;
}

char *put_text(char *target, const char *text)
{
    while (*text != '\0') *target++ = *text++;
    return target;
}

uint8_t to_bcd(int32_t value)
{
    return dec2bcd(static_cast<uint8_t>(value));
}

} // namespace

void get_current_datetime(TimeRecord *ret_time)
{
    SystemTime now = {};
    clock_calls->local_time(&now);
    SystemTime2tm(ret_time, &now);
}

void datetime2tm(TimeRecord *ret_time, const uint8_t *bytes)
{
    if (ret_time == nullptr || bytes == nullptr) return;
    *ret_time = {};
    ret_time->tm_year = bytes[0] > 0x45 ? bcd2dec(bytes[0]) : bcd2dec(bytes[0]) + 100;
    if (bytes[1] != 0) // Kept: one is taken off before decoding, so $10 is month 15.  [KeepsOctoberAsMonth15]
        ret_time->tm_mon = bcd2dec(static_cast<uint8_t>(bytes[1] - 1));
    ret_time->tm_mday = bcd2dec(bytes[2]);
    ret_time->tm_hour = bcd2dec(bytes[3]);
    ret_time->tm_min = bcd2dec(bytes[4]);
    ret_time->tm_sec = bcd2dec(bytes[5]);
}

void tm2datetime(uint8_t *ret_bytes, const TimeRecord *time)
{
    if (ret_bytes == nullptr || time == nullptr) return;
    ret_bytes[0] = to_bcd(time->tm_year > 99 ? time->tm_year - 100 : time->tm_year);
    ret_bytes[1] =
        time->tm_mday == 0 ? uint8_t{0} : dec2bcd(static_cast<uint8_t>(static_cast<uint32_t>(time->tm_mon) + 1));
    ret_bytes[2] = to_bcd(time->tm_mday);
    ret_bytes[3] = to_bcd(time->tm_hour);
    ret_bytes[4] = to_bcd(time->tm_min);
    ret_bytes[5] = to_bcd(time->tm_sec);
}

int32_t date2jd(int32_t day, int32_t month_number, int32_t year)
{
    return julian_day(day, month_number, year);
}

void jd2greg(int32_t jd, int32_t *ret_year, int32_t *ret_month, int32_t *ret_day)
{
    const Date date = gregorian(jd);
    if (ret_year != nullptr) *ret_year = date.year;
    if (ret_month != nullptr) *ret_month = date.month;
    if (ret_day != nullptr) *ret_day = date.day;
}

void time_ios2tm(TimeRecord *time, const uint8_t *bytes)
{
    if (time == nullptr || bytes == nullptr) return;
    const uint32_t jd = get_dword(bytes);
    const uint32_t seconds = get_dword(bytes + 4);
    if (jd == 0 && seconds == 0) return;
    *time = {};
    const Date date = gregorian(static_cast<int32_t>(jd));
    // Kept: years up to 1899 stand as they are.  [KeepsYearsTo1899Whole]
    time->tm_year = date.year > 1899 ? date.year - 1900 : date.year;
    time->tm_mon = date.month - 1;
    time->tm_mday = date.day;
    // Kept: counted from Saturday, not from Sunday.  [KeepsWeekdayCountedFromSaturday]
    time->tm_wday = static_cast<int32_t>((uint64_t{jd} + 2) % 7);
    time->tm_hour = static_cast<int32_t>(seconds / 3600);
    time->tm_min = static_cast<int32_t>(seconds % 3600 / 60);
    time->tm_sec = static_cast<int32_t>(seconds % 60);
}

void tm2time_ios(uint8_t *ret_bytes, const TimeRecord *time)
{
    if (ret_bytes == nullptr || time == nullptr) return;
    // Kept: day, month and year go in swapped round.  [KeepsSwappedArgumentsOfTheDay]
    set_dword(ret_bytes, static_cast<uint32_t>(julian_day(time->tm_year, time->tm_mon, time->tm_mday)));
    // Kept: the hour stands in the high word.  [KeepsHourInTheHighWord]
    set_dword(ret_bytes + 4, (static_cast<uint32_t>(time->tm_hour) << 16) + static_cast<uint32_t>(time->tm_min) * 60 +
                                 static_cast<uint32_t>(time->tm_sec));
}

uint32_t tm2wcxtime(const TimeRecord *time)
{
    if (time == nullptr || time->tm_year < 80) return wcx_time_before_1980;
    const auto half_seconds = static_cast<uint32_t>(time->tm_sec / 2);
    return half_seconds | static_cast<uint32_t>(time->tm_min) << 5 | static_cast<uint32_t>(time->tm_hour) << 11 |
           static_cast<uint32_t>(time->tm_mday) << 16 | (static_cast<uint32_t>(time->tm_mon) + 1) << 21 |
           (static_cast<uint32_t>(time->tm_year) - 80) << 25;
}

void tm2SystemTime(SystemTime *ret_time, const TimeRecord *time)
{
    if (ret_time == nullptr || time == nullptr) return;
    *ret_time = {};
    ret_time->year = static_cast<uint16_t>(static_cast<uint32_t>(time->tm_year) + 1900);
    ret_time->month = static_cast<uint16_t>(static_cast<uint32_t>(time->tm_mon) + 1);
    ret_time->day_of_week = static_cast<uint16_t>(time->tm_wday);
    ret_time->day = static_cast<uint16_t>(time->tm_mday);
    ret_time->hour = static_cast<uint16_t>(time->tm_hour);
    ret_time->minute = static_cast<uint16_t>(time->tm_min);
    ret_time->second = static_cast<uint16_t>(time->tm_sec);
}

void SystemTime2tm(TimeRecord *ret_time, const SystemTime *time)
{
    if (ret_time == nullptr || time == nullptr) return;
    *ret_time = {};
    ret_time->tm_year = time->year - 1900;
    ret_time->tm_mon = time->month - 1;
    ret_time->tm_wday = time->day_of_week;
    ret_time->tm_mday = time->day;
    ret_time->tm_hour = time->hour;
    ret_time->tm_min = time->minute;
    ret_time->tm_sec = time->second;
}

void get_datetime_strings(const TimeRecord *time, char *ret_date, char *ret_time, int32_t flag)
{
    if (time == nullptr || ret_date == nullptr || ret_time == nullptr) return;
    if (time->tm_mday < 1 || time->tm_mday > 31) {
        std::strcpy(ret_date, "         ");
        std::strcpy(ret_time, "     ");
        return;
    }
    const char pad = flag == 0 ? ' ' : '0';
    char *end = put_number(ret_date, time->tm_mday, pad);
    end = put_text(put_text(put_text(end, "-"), month_text(time->tm_mon)), "-");
    end = put_number(end, time->tm_year > 99 ? time->tm_year % 100 : time->tm_year, '0');
    *end = '\0';
    end = put_text(put_number(ret_time, time->tm_hour, pad), ":");
    end = put_number(end, time->tm_min, '0');
    *end = '\0';
}
