// Opening a medium for a verb.
#pragma once

#include <cstdint>
#include <memory>

#include "console/report.h"
#include "console/verbs.h"
#include "volume/media.h"

struct MediumCloser {
    void operator()(MediaDescriptor *md) const;
};
using Medium = std::unique_ptr<MediaDescriptor, MediumCloser>;

// How a medium was read.
struct Reading {
    Medium medium;          // null: it couldn't be opened
    bool whole = true;      // false: its directory couldn't be read whole
    bool has_words = false; // then `words` say why the directory ends early
    ErrorWords words = {};
};

// For its life the log leaves its warnings out, unless other levels were asked for: somebody tells of faults in words
// of their own.
struct QuietLog {
    const int32_t level;

    QuietLog();
    ~QuietLog();
    QuietLog(const QuietLog &) = delete;
    QuietLog &operator=(const QuietLog &) = delete;
};

// Opens the medium with its volume for reading only. A failure is reported here.
Reading open_for_reading(const Arguments &arguments);

// The same for copying files out of it: a target that names a directory of the volume is refused, since nothing of it
// is read.
Reading open_for_copying(const Arguments &arguments);

// Whether the target names a directory of the volume, which is then reported as not supported.
bool names_a_directory(const Arguments &arguments);

// Says why a directory ends early, if it does. Returns code, or exit_partly for exit_done when it isn't whole.
int report_reading(const Reading &reading, int code);

// Opens the medium for a change. Null when that can't be, or mustn't: what stands in the way has been reported.
Medium open_for_change(const Arguments &arguments);

// Opens the medium without the log's warnings.
//   flags  OPEN_... besides those that read the volume
Reading open_for_inspection(const Arguments &arguments, uint16_t flags);

// The same as open_for_change once more, without looking for what stands in the way.
Medium open_again(const Arguments &arguments);

// False with error 109 for media that are only read.
bool is_changeable(const MediaDescriptor *md);
