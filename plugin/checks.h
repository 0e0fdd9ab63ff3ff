// The checks that the exports which change a medium begin with.
#pragma once

#include <cstdint>

#include "volume/media.h"

// Whether a medium is open that can be changed; otherwise the host has been told, and *ret_result is what it gets:
// 6 on SDF after the message; without_medium when none is open, or its directory could not be read whole.
bool may_change(int32_t without_medium, const char *sdf_message, int32_t *ret_result);
