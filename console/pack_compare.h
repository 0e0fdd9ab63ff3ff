// A packed copy, held against the disk that it was made of.
#pragma once

#include <string>

#include "base/log.h"
#include "console/report.h"
#include "volume/media.h"

struct PackDifference {
    std::string name; // of the file, or of the copy
    std::string words;
};

// Whether both hold the same files, and the copy has no faults. Both were read with OPEN_SORT.
//   progress  may be null; called with the percentage of the files compared
bool packed_is_same(MediaDescriptor *old, MediaDescriptor *packed, ProgressCallback progress,
                    PackDifference *ret_difference);

const FileInfo *next_live(const FileInfo *info); // this entry, or the first one behind it that isn't purged
