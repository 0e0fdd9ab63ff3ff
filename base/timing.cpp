// Waits on the performance counter, the sleeping wait, the system's timer resolution and what the system is.
#include "base/timing.h"

#include <algorithm>

#include "base/clock_inner.h"
#include "base/log.h"
#include "platform/platform.h"

constinit int32_t os_type = 0;
constinit int32_t term_type = 0;

namespace
{

struct UsecCounter {
    int64_t frequency; // counts a second, 0: no reference taken yet
    int64_t reference;
};

constexpr uint32_t calibration_loops = 10000;

constinit UsecCounter usec_counter = {};
constinit double loops_per_usec = 0;
constinit uint32_t tuned_period = 0; // milliseconds, 0: the system's own

void count_empty_loop()
{
    volatile uint32_t rounds = 0;
    while (rounds < calibration_loops) rounds = rounds + 1;
}

} // namespace

void get_os_type(void)
{
    os_type = platform_is_nt_family() ? 3 : 2;
}

void get_term_type(void)
{
    term_type = 1;
    log_file(3, "Terminal is Win32 console\n");
}

void reset_usec_counter(void)
{
    if (!clock_calls->frequency(&usec_counter.frequency)) {
        usec_counter.frequency = 0;
        log_file(1, "QueryPerformanceFrequency() failed.\n");
    }
    if (!clock_calls->counter(&usec_counter.reference)) {
        usec_counter.frequency = 0;
        log_file(1, "QueryPerformanceCounter() failed.\n");
    }
}

uint32_t get_usec_counter(void)
{
    int64_t now = 0;
    if (!clock_calls->counter(&now)) return 0;
    return static_cast<uint32_t>(counts_to_usec(now - usec_counter.reference, usec_counter.frequency));
}

int32_t calibrate_nap(void)
{
    int64_t frequency = 0;
    int64_t marks[4] = {};
    if (!clock_calls->frequency(&frequency) || frequency <= 0) return 0;
    if (!clock_calls->counter(&marks[0]) || !clock_calls->counter(&marks[1])) return 0;
    if (!clock_calls->counter(&marks[2])) return 0;
    count_empty_loop();
    if (!clock_calls->counter(&marks[3])) return 0;
    // A coarse counter may show no time at all; one count is then the most that can have passed.
    const int64_t counts = std::max<int64_t>((marks[3] - marks[2]) - (marks[1] - marks[0]), 1);
    const double seconds = static_cast<double>(counts) / static_cast<double>(frequency);
    loops_per_usec = calibration_loops / seconds / 1e6;
    return 1;
}

double nap_loops_per_usec()
{
    return loops_per_usec;
}

void my_nap(uint32_t microseconds)
{
    if (microseconds == 0) return;
    int64_t frequency = 0;
    int64_t start = 0;
    if (!clock_calls->frequency(&frequency) || frequency <= 0 || !clock_calls->counter(&start)) {
        my_sleep(microseconds / 1000 + 1); // nothing to poll: too long is right, too short is not
        return;
    }
    int64_t now = start;
    while (counts_to_usec(now - start, frequency) < microseconds) {
        if (!clock_calls->counter(&now)) return;
    }
}

void my_sleep(uint32_t milliseconds)
{
    if (milliseconds != 0) clock_calls->sleep(milliseconds);
}

void tune_scheduler(uint32_t resolution)
{
    if (os_type != 3) return;
    if (tuned_period != 0) restore_scheduler();
    uint32_t minimum = 0;
    uint32_t maximum = 0;
    if (!clock_calls->timer_caps(&minimum, &maximum)) {
        log_file(1, "Can't get time device capabilities\n");
        return;
    }
    const uint32_t period = std::max(std::min(resolution, maximum), minimum);
    if (!clock_calls->timer_begin(period)) {
        log_file(1, "timeBeginPeriod() failed with resolution %d\n", static_cast<int>(period));
        return;
    }
    tuned_period = period;
    log_file(3, "Fast scheduling enabled (resolution %d ms)\n", static_cast<int>(period));
}

void restore_scheduler(void)
{
    if (tuned_period == 0) return;
    const bool restored = clock_calls->timer_end(tuned_period);
    tuned_period = 0;
    if (restored)
        log_file(3, "Scheduler restored\n");
    else
        log_file(1, "timeEndPeriod() failed\n");
}
