// The clock calls of the system, and the arithmetic of its performance counter.
#include "base/clock_inner.h"

namespace
{
constexpr ClockCalls system_clock_calls;
}

constinit const ClockCalls *clock_calls = &system_clock_calls;

uint64_t counts_to_usec(int64_t counts, int64_t frequency)
{
    if (counts < 0 || frequency <= 0) return 0;
    const auto count = static_cast<uint64_t>(counts);
    const auto per_second = static_cast<uint64_t>(frequency);
    return count / per_second * 1000000 + count % per_second * 1000000 / per_second;
}
