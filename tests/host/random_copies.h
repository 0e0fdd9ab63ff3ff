// Copies, moves, renames and deletions in any order on a volume of which a model is kept: results, lists and contents
// must be the model's.
#pragma once

#include <cstdint>

namespace host
{

void run_random_copies(uint64_t seed, uint32_t count);

}
