// The file systems: one row each, indexed by md->format. A new one is a new folder and a new row.
#pragma once

#include <cstdint>

#include "volume/media.h"
#include "volume/region.h"

constexpr uint32_t most_extents = 4;

struct ExtentList { // where a file stands, piece by piece
    Region extents[most_extents];
    uint32_t count;
    bool has_more; // there are others, which aren't read
};

struct DirectoryPlace {
    ExtentList extents;
    uint64_t slots; // for entries, where these take less room than the extents have
};

struct VolumeFormat {
    const char *name; // shown to users
    // Is this its record 0? 1 yes, 0 no, -1 a further record that it looks at can't be read.
    int32_t (*claims)(MediaDescriptor *md, const uint8_t *record) = nullptr;
    // 0; 1: nothing else is to be looked for on this medium; -1 with the error set.
    int32_t (*read_header)(MediaDescriptor *md, const uint8_t *record) = nullptr;
    // As get_file_info, without what all formats share. Absent: error 203.
    int32_t (*read_entry)(MediaDescriptor *md, FileInfo *info, const uint8_t *entry, uint32_t *ret_size) = nullptr;
    // Where the entries of a directory stand, null for the top level: 0, or -1 with the error set. Absent: only the top
    // level has entries, at md->dir_start, and paths lead nowhere.
    int32_t (*locate_directory)(const MediaDescriptor *md, const FileInfo *directory,
                                DirectoryPlace *ret_place) = nullptr;
    // Where a file stands: 0, or -1 with the error set. Absent: in one piece at its location.
    int32_t (*locate_file)(const MediaDescriptor *md, const FileInfo *info, ExtentList *ret_extents) = nullptr;
    void (*write_entry)(const MediaDescriptor *md, const FileInfo *info, uint8_t *entry) = nullptr; // absent: read only
    void (*write_end_mark)(uint8_t *slot) = nullptr;
    void (*complete_info)(FileInfo *info); // as add_file_info
    // Record 0 of a new volume, into zeroed bytes; places that always are the same go into md. Absent: none can be laid
    // out.
    void (*compose_header)(MediaDescriptor *md, uint8_t *record) = nullptr;
    uint8_t fill_pattern[4] = {0xFF, 0xFF, 0xFF, 0xFF}; // of the file area of a new volume
    uint32_t first_entry = 0;                           // bytes ahead of the first entry of the directory
    const uint8_t *directory_head = nullptr;            // these bytes
    uint32_t name_limit = 16;                           // characters
    uint32_t largest_location = 0xFFFFFFFF;             // first record that an entry can say
    uint32_t most_records = 0xFFFFFFFF;                 // logical records that an entry can say
    bool says_logical_records = false;                  // an entry: how many and how long, not bytes
    bool has_spare_directory = false;                   // written with each change of the main one
    bool reads_spare_directory = false;
    bool has_allocation_table = false;
    bool header_tells_free_space = false; // the sizes of files don't
    bool may_hold_hfs = false;            // record 32 is probed for a second file system
};

// The row of a format; that of the unknown format for a number that has none.
const VolumeFormat &volume_format(uint32_t format);

// The number of the format whose volume begins with this record: FORMAT_UNKNOWN for none, -1 for a failed read.
int32_t recognise_format(MediaDescriptor *md, const uint8_t *record);
