// The clocks, the timer's resolution, and file times in units of 100 ns since 1601.
#include "platform/platform.h"
#include "platform/win32/inner.h"

#include <mmsystem.h>

namespace
{

SYSTEMTIME parts_of(const SystemTime &time)
{
    return {time.year, time.month, time.day_of_week, time.day, time.hour, time.minute, time.second, time.milliseconds};
}

SystemTime time_of(const SYSTEMTIME &parts)
{
    return {parts.wYear, parts.wMonth,  parts.wDayOfWeek, parts.wDay,
            parts.wHour, parts.wMinute, parts.wSecond,    parts.wMilliseconds};
}

bool failed(DWORD code)
{
    SetLastError(code);
    return false;
}

// Not every system refuses the 29th of February of any year; such a date comes back as another one.
bool is_time(const SYSTEMTIME &parts)
{
    constexpr WORD last_year = 30827;
    FILETIME time;
    SYSTEMTIME again;
    if (!SystemTimeToFileTime(&parts, &time) || !FileTimeToSystemTime(&time, &again)) return false;
    return (parts.wDay == again.wDay && parts.wYear <= last_year) || failed(ERROR_INVALID_PARAMETER);
}

bool succeeded(MMRESULT result)
{
    return result == TIMERR_NOERROR || failed(ERROR_INVALID_PARAMETER); // these calls leave no last error
}

} // namespace

bool platform_file_time(const SystemTime *local, int64_t *ret_time)
{
    const SYSTEMTIME parts = parts_of(*local);
    SYSTEMTIME universal;
    FILETIME time;
    if (!is_time(parts)) return false;
    if (!TzSpecificLocalTimeToSystemTime(nullptr, &parts, &universal)) return false;
    if (!SystemTimeToFileTime(&universal, &time)) return false;
    *ret_time = int64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    return true;
}

bool platform_panel_time(const SystemTime *local, int64_t *ret_time)
{
    const SYSTEMTIME parts = parts_of(*local);
    FILETIME local_time;
    FILETIME time;
    if (!is_time(parts) || !SystemTimeToFileTime(&parts, &local_time)) return false;
    if (!LocalFileTimeToFileTime(&local_time, &time)) return false;
    *ret_time = int64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    return true;
}

bool platform_set_times(PlatformFile file, int64_t time)
{
    const FILETIME all = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
    return SetFileTime(handle_of(file), &all, &all, &all);
}

bool platform_get_file_time(PlatformFile file, SystemTime *ret_local, bool *ret_daylight)
{
    FILETIME written;
    if (!GetFileTime(handle_of(file), nullptr, nullptr, &written)) return false;
    return platform_local_file_time(int64_t{written.dwHighDateTime} << 32 | written.dwLowDateTime, ret_local,
                                    ret_daylight);
}

bool platform_local_file_time(int64_t time, SystemTime *ret_local, bool *ret_daylight)
{
    const FILETIME written = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
    SYSTEMTIME universal;
    SYSTEMTIME local;
    if (!FileTimeToSystemTime(&written, &universal)) return false;
    if (!SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local)) return false;
    TIME_ZONE_INFORMATION zone;
    *ret_local = time_of(local);
    *ret_daylight = GetTimeZoneInformation(&zone) == TIME_ZONE_ID_DAYLIGHT;
    return true;
}

bool platform_counter_frequency(int64_t *ret_frequency)
{
    LARGE_INTEGER frequency;
    if (!QueryPerformanceFrequency(&frequency)) return false;
    *ret_frequency = frequency.QuadPart;
    return true;
}

bool platform_counter(int64_t *ret_count)
{
    LARGE_INTEGER count;
    if (!QueryPerformanceCounter(&count)) return false;
    *ret_count = count.QuadPart;
    return true;
}

void platform_sleep(uint32_t milliseconds)
{
    Sleep(milliseconds);
}

void platform_local_time(SystemTime *ret_time)
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    *ret_time = time_of(now);
}

bool platform_timer_caps(uint32_t *ret_minimum, uint32_t *ret_maximum)
{
    TIMECAPS caps;
    if (!succeeded(timeGetDevCaps(&caps, sizeof(caps)))) return false;
    *ret_minimum = caps.wPeriodMin;
    *ret_maximum = caps.wPeriodMax;
    return true;
}

bool platform_timer_begin(uint32_t milliseconds)
{
    return succeeded(timeBeginPeriod(milliseconds));
}

bool platform_timer_end(uint32_t milliseconds)
{
    return succeeded(timeEndPeriod(milliseconds));
}
