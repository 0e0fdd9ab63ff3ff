// The row of clock calls that a test may replace, so that time passes as the test wants it.
#pragma once

#include <cstdint>

#include "platform/platform.h"

struct ClockCalls {
    bool (*frequency)(int64_t *ret_frequency) = platform_counter_frequency; // counts a second
    bool (*counter)(int64_t *ret_count) = platform_counter;
    void (*local_time)(SystemTime *ret_time) = platform_local_time;
    void (*sleep)(uint32_t milliseconds) = platform_sleep;
    bool (*timer_caps)(uint32_t *ret_minimum, uint32_t *ret_maximum) = platform_timer_caps;
    bool (*timer_begin)(uint32_t milliseconds) = platform_timer_begin;
    bool (*timer_end)(uint32_t milliseconds) = platform_timer_end;
};

extern const ClockCalls *clock_calls; // never null; what the log, the conversions and the timing use

// Microseconds of so many counts; the seconds are taken apart first, so that no product passes 64 bits.
// 0 for a frequency that is none, or a counter that went back.
uint64_t counts_to_usec(int64_t counts, int64_t frequency);

double nap_loops_per_usec(); // what calibrate_nap has measured, 0 before
