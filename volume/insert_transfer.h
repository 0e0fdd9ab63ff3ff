// The records of a file on their way onto a medium.
#pragma once

#include "volume/insert_inner.h"

struct TransferIn {
    MediaDescriptor *md;
    const FileInfo *info; // location and size are known
    InsertSource *source; // at the file's first byte; what it lacks is filled up with zeros
    const char *name;     // for messages
    ProgressCallback progress;
};

// 0, or -1 with error 302, 105 or that of the medium. *ret_stopped: progress asked to end it.
int32_t transfer_in(const TransferIn &transfer, bool *ret_stopped);
