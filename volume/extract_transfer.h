// The bytes of a file on their way out.
#pragma once

#include "volume/extract_inner.h"
#include "volume/format.h"

bool becomes_text(const MediaDescriptor *md, const FileInfo *info, uint16_t flags);
void log_forced_conversion(const MediaDescriptor *md, const FileInfo *info, uint16_t flags);

struct TransferOrder {
    MediaDescriptor *md;
    const FileInfo *info;
    ExtentList extents;
    FileHandle file;
    const char *name; // for messages
    uint16_t flags;
    ProgressCallback progress; // may be null
};

// Where a file stands on its medium: 0, or -1 with the error set.
int32_t find_extents(const MediaDescriptor *md, const FileInfo *info, ExtentList *ret_extents);

void log_extents(const ExtentList &list);

// extract_to_handle without a word about extents or a forced conversion.
Extraction transfer_out(const TransferOrder &order);
