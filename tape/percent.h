// Progress of an operation on a whole tape, as percent_progress shows it, without asking it for each record.
#pragma once

#include <cstdint>

#include "base/log.h"

// Is told each new percentage in place of percent_progress, at any log level, while it isn't null; its record is the
// position in the tape. Anything but 0 ends the operation with error 101.
extern ProgressCallback tape_progress;

struct Percent {
    uint32_t total = 0;
    uint64_t due = 0; // the amount from which on the percentage is another one
};

bool show_changed_percent(Percent *percent, uint64_t current);

// False: the operation is to end.
inline bool show_percent(Percent *percent, uint64_t current)
{
    return current < percent->due || show_changed_percent(percent, current);
}
