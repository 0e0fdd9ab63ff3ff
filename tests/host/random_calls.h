// Calls in any order, with targets and names that exist, don't, or are hostile.
#pragma once

#include <cstdint>

namespace host
{

void run_random_calls(uint64_t seed, uint32_t count);

// What the callbacks answer meanwhile.
int32_t random_progress();
int32_t random_request(int32_t kind, char *answer, int32_t size);

}
