// The clocks, the timer's resolution, and file times. A file time is counted in units of 100 ns since 1601.
#include <sys/prctl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>

#include "platform/platform.h"
#include "platform/posix/inner.h"

namespace
{

constexpr int64_t nanoseconds = 1000000000; // of a second
constexpr int64_t counts = 10000000;        // of a second
constexpr int64_t count_nanoseconds = 100;
constexpr int64_t seconds_to_1970 = 11644473600; // from 1601
constexpr int first_year = 1601;
constexpr int last_year = 30827;
constexpr uint32_t shortest_period = 1; // milliseconds
constexpr uint32_t longest_period = 1000000;

bool is_leap_year(int year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

bool is_date(const SystemTime &time)
{
    constexpr std::array<uint8_t, 12> days = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (time.year < first_year || time.year > last_year || time.month < 1 || time.month > 12) return false;
    const int leap_day = time.month == 2 && is_leap_year(time.year) ? 1 : 0;
    return time.day >= 1 && time.day <= days[time.month - 1u] + leap_day;
}

bool is_time(const SystemTime &time)
{
    return is_date(time) && time.hour < 24 && time.minute < 60 && time.second < 60 && time.milliseconds < 1000;
}

bool break_down(const timespec &time, SystemTime *ret_time)
{
    tm local;
    if (localtime_r(&time.tv_sec, &local) == nullptr) return false;
    const int year = local.tm_year + 1900;
    if (year < first_year || year > last_year) return failed(EOVERFLOW);
    ret_time->year = static_cast<uint16_t>(year);
    ret_time->month = static_cast<uint16_t>(local.tm_mon + 1);
    ret_time->day_of_week = static_cast<uint16_t>(local.tm_wday);
    ret_time->day = static_cast<uint16_t>(local.tm_mday);
    ret_time->hour = static_cast<uint16_t>(local.tm_hour);
    ret_time->minute = static_cast<uint16_t>(local.tm_min);
    ret_time->second = static_cast<uint16_t>(std::min(local.tm_sec, 59)); // no leap second
    ret_time->milliseconds = static_cast<uint16_t>(time.tv_nsec / 1000000);
    return true;
}

tm parts_of(const SystemTime &time)
{
    tm parts = {};
    parts.tm_year = time.year - 1900;
    parts.tm_mon = time.month - 1;
    parts.tm_mday = time.day;
    parts.tm_hour = time.hour;
    parts.tm_min = time.minute;
    parts.tm_sec = time.second;
    return parts;
}

// mktime() looks for the zone's file at each call, which a catalogue of thousands of dates can't bear; this asks for
// the zone's distance at the time in question, twice, since the first answer may lie across a change of the clocks.
bool seconds_of_local(tm parts, time_t *ret_seconds)
{
    const time_t as_universal = timegm(&parts);
    time_t seconds = as_universal;
    for (int round = 0; round < 2; ++round) {
        tm local;
        if (localtime_r(&seconds, &local) == nullptr) return false;
        seconds = as_universal - local.tm_gmtoff;
    }
    *ret_seconds = seconds;
    return true;
}

bool daylight_time_is_now()
{
    const time_t now = time(nullptr);
    tm local;
    return localtime_r(&now, &local) != nullptr && local.tm_isdst > 0;
}

} // namespace

int64_t count_of_time(const timespec &time)
{
    return (time.tv_sec + seconds_to_1970) * counts + time.tv_nsec / count_nanoseconds;
}

timespec time_of_count(int64_t count)
{
    return {count / counts - seconds_to_1970, count % counts * count_nanoseconds};
}

bool platform_file_time(const SystemTime *local, int64_t *ret_time)
{
    if (!is_time(*local)) return failed(EINVAL);
    const tm parts = parts_of(*local);
    time_t seconds = 0;
    if (!seconds_of_local(parts, &seconds)) return false;
    *ret_time = count_of_time({seconds, local->milliseconds * 1000000L});
    return true;
}

bool platform_panel_time(const SystemTime *local, int64_t *ret_time)
{
    if (!is_time(*local)) return failed(EINVAL);
    const time_t now = time(nullptr);
    tm present;
    if (localtime_r(&now, &present) == nullptr) return false;
    tm parts = parts_of(*local);
    *ret_time = count_of_time({timegm(&parts) - present.tm_gmtoff, local->milliseconds * 1000000L});
    return true;
}

bool platform_set_times(PlatformFile file, int64_t time)
{
    const std::array<timespec, 2> times = {time_of_count(time), time_of_count(time)};
    return futimens(descriptor_of(file), times.data()) == 0;
}

int64_t counts_of(const timespec &time)
{
    constexpr int64_t last_second = INT64_MAX / counts - seconds_to_1970 - 1;
    if (time.tv_sec < -seconds_to_1970 || time.tv_sec > last_second) return -1;
    return (time.tv_sec + seconds_to_1970) * counts + time.tv_nsec / count_nanoseconds;
}

bool platform_local_file_time(int64_t time, SystemTime *ret_local, bool *ret_daylight)
{
    if (time < 0) return failed(EOVERFLOW);
    const timespec parts = {time / counts - seconds_to_1970, time % counts * count_nanoseconds};
    if (!break_down(parts, ret_local)) return false;
    *ret_daylight = daylight_time_is_now();
    return true;
}

bool platform_get_file_time(PlatformFile file, SystemTime *ret_local, bool *ret_daylight)
{
    struct stat status;
    return fstat(descriptor_of(file), &status) == 0 &&
           platform_local_file_time(counts_of(status.st_mtim), ret_local, ret_daylight);
}

bool platform_counter_frequency(int64_t *ret_frequency)
{
    *ret_frequency = nanoseconds;
    return true;
}

bool platform_counter(int64_t *ret_count)
{
    timespec now;
    if (clock_gettime(CLOCK_MONOTONIC, &now) != 0) return false;
    *ret_count = now.tv_sec * nanoseconds + now.tv_nsec;
    return true;
}

void platform_sleep(uint32_t milliseconds)
{
    timespec rest = {milliseconds / 1000, milliseconds % 1000 * 1000000L};
    while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
    }
}

void platform_local_time(SystemTime *ret_time)
{
    timespec now;
    *ret_time = {};
    if (clock_gettime(CLOCK_REALTIME, &now) == 0) break_down(now, ret_time);
}

bool platform_timer_caps(uint32_t *ret_minimum, uint32_t *ret_maximum)
{
    *ret_minimum = shortest_period;
    *ret_maximum = longest_period;
    return true;
}

// The slack is what a wait of this thread may be late; it is made smaller where the period is, never larger.
bool platform_timer_begin(uint32_t milliseconds)
{
    if (milliseconds < shortest_period || milliseconds > longest_period) return failed(EINVAL);
    const int present = prctl(PR_GET_TIMERSLACK, 0, 0, 0, 0);
    if (present < 0) return false;
    const auto slack = std::min(static_cast<unsigned long>(present), milliseconds * 1000000ul);
    return prctl(PR_SET_TIMERSLACK, std::max(slack, 1ul), 0, 0, 0) == 0;
}

bool platform_timer_end(uint32_t milliseconds)
{
    if (milliseconds < shortest_period || milliseconds > longest_period) return failed(EINVAL);
    return prctl(PR_SET_TIMERSLACK, 0ul, 0, 0, 0) == 0; // 0: the thread's own
}
