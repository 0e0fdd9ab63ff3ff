// A bar on standard error for a copy that takes its time; nothing where standard error is no terminal.
#pragma once

#include <cstdint>

#include "base/log.h"

// For the life of the object; one at a time. It is drawn with the first progress and gone without a trace at the end.
class ProgressBar
{
  public:
    ProgressBar(const char *name, uint64_t bytes); // of the file that is copied
    ~ProgressBar();
    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;

    // Null when there is to be no bar: the engine copies faster then.
    ProgressCallback callback() const;
};
