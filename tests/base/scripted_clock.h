// A clock that a test moves, or makes fail. One object at a time.
#pragma once

#include <vector>

#include "base/clock_inner.h"

namespace tests
{

class ScriptedClock
{
  public:
    ScriptedClock()
    {
        present = this;
        calls_.frequency = read_frequency;
        calls_.counter = read_counter;
        calls_.local_time = read_local_time;
        calls_.sleep = sleep;
        calls_.timer_caps = timer_caps;
        calls_.timer_begin = timer_begin;
        calls_.timer_end = timer_end;
        clock_calls = &calls_;
    }

    ~ScriptedClock()
    {
        clock_calls = old_calls_;
        present = nullptr;
    }

    ScriptedClock(const ScriptedClock &) = delete;
    ScriptedClock &operator=(const ScriptedClock &) = delete;

    int64_t frequency = 10000000; // 0: asking for it fails
    int64_t counter = 0;
    int64_t step = 0; // added at each reading
    bool counter_works = true;
    uint32_t readings = 0;
    SystemTime local_time = {2024, 3, 2, 5, 10, 20, 30, 456};
    std::vector<uint32_t> sleeps;
    bool caps_work = true, begin_works = true, end_works = true;
    std::vector<uint32_t> begun, ended; // periods in milliseconds; the system takes 2 to 50

  private:
    static bool read_frequency(int64_t *ret_frequency)
    {
        *ret_frequency = present->frequency;
        return present->frequency != 0;
    }

    static bool read_counter(int64_t *ret_count)
    {
        ++present->readings;
        if (!present->counter_works) return false;
        *ret_count = present->counter;
        present->counter += present->step;
        return true;
    }

    static void read_local_time(SystemTime *ret_time)
    {
        *ret_time = present->local_time;
    }

    static void sleep(uint32_t milliseconds)
    {
        present->sleeps.push_back(milliseconds);
    }

    static bool timer_caps(uint32_t *ret_minimum, uint32_t *ret_maximum)
    {
        *ret_minimum = 2;
        *ret_maximum = 50;
        return present->caps_work;
    }

    static bool timer_begin(uint32_t milliseconds)
    {
        if (present->begin_works) present->begun.push_back(milliseconds);
        return present->begin_works;
    }

    static bool timer_end(uint32_t milliseconds)
    {
        present->ended.push_back(milliseconds);
        return present->end_works;
    }

    inline static ScriptedClock *present = nullptr;
    ClockCalls calls_;
    const ClockCalls *old_calls_ = clock_calls;
};

} // namespace tests
