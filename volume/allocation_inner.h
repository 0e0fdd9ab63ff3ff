// Free space, for those who know already where the files end.
#pragma once

#include <cstdint>

#include "volume/media.h"

uint64_t end_of_file(const FileInfo *info); // the first record behind a file

// As image_allocate; end: the first record behind every file of the top-level list.
uint16_t allocate_records(MediaDescriptor *md, uint32_t size, uint64_t end);
