// Progress of an operation on a whole tape.
#include "tape/percent.h"

#include "base/error.h"

constinit ProgressCallback tape_progress = nullptr;

bool show_changed_percent(Percent *percent, uint64_t current)
{
    if (percent->total == 0) return true;
    const auto position = static_cast<uint32_t>(current);
    const uint64_t next = current * 100 / percent->total + 1;
    percent->due = (next * percent->total + 99) / 100;
    if (tape_progress != nullptr) {
        if (tape_progress(nullptr, position, static_cast<uint32_t>(next - 1)) == 0) return true;
        set_error(101, "stopped");
        return false;
    }
    if (loglevel < 2) percent_progress(position, percent->total);
    return true;
}
