// A copy of records below its exported function.
#pragma once

#include "base/log.h"
#include "volume/media.h"

struct BlockCopy {
    MediaDescriptor *from;
    uint32_t from_start; // record
    MediaDescriptor *to;
    uint32_t to_start;     // record
    uint32_t count;        // records
    bool do_stream = true; // asked for; has no meaning inside one image
    bool break_on_error = true;
    ProgressCallback progress = nullptr;
};

// 0 or -1; *ret_stopped: progress made some record the last one.
int32_t copy_blocks(const BlockCopy &copy, bool *ret_stopped);
