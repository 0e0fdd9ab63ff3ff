// Free space, for those who know already where the files end.
#pragma once

#include <cstdint>

#include "volume/media.h"
#include "volume/region.h"

uint64_t end_of_file(const FileInfo *info); // the first record behind a file

// Whether the system record or a table stands in these records, none of which a file may get.
bool is_system_space(const MediaDescriptor *md, Region region);

// Who knows where files are: whether one of them stands in these records.
struct FilesAsked {
    bool (*meet)(void *context, Region region);
    void *context;
};

// As image_allocate on volumes with a free list, of files that somebody else keeps an eye on.
uint16_t allocate_run(MediaDescriptor *md, uint32_t size, const FilesAsked &files);

// As image_allocate; end: the first record behind every file of the top-level list.
uint16_t allocate_records(MediaDescriptor *md, uint32_t size, uint64_t end);
