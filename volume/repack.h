// The joining of a disk's free space: its files move down, one after the other.
#pragma once

#include <cstdint>

#include "volume/media.h"

// In its own place: md is a disk whose list of files is sorted. What breaks it off costs files. 0, or -1 with the error
// set: 203, 211, 215, 300, 302, 306, those of extraction and of writing.
int32_t repack(MediaDescriptor *md);

// Makes of an empty file what repacking would make of the image file `from`, byte for byte, and nearly every byte is
// read once and written once. Nothing is written to `from`. 0, or -1 with the error set as above, or 105, 301, 309.
int32_t repack_to(MediaDescriptor *from, const char *target);
