// Where the parts of a volume stand, compared in 64 bits, since every figure comes from the medium.
#pragma once

#include <cstdint>

#include "volume/media.h"

struct Region {
    uint64_t start;  // record
    uint64_t length; // records
};

bool overlap(Region left, Region right);
Region file_region(const FileInfo *info);                               // by location and size
const FileInfo *live_file_in(const MediaDescriptor *md, Region region); // the first that isn't purged; null for none

// Whether a table may be written to these records: behind the header, inside the medium, no live file in them.
// Errors set: 213.
bool table_fits(MediaDescriptor *md, Region region);
