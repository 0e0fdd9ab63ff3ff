// What the sources of the Structured Directory Format share. The file system counts in blocks of md->block_size bytes;
// whatever stands here is in blocks unless it says otherwise.
#pragma once

#include <array>
#include <cstdint>

#include "volume/format.h"

constexpr uint32_t inode_size = 128; // bytes
constexpr uint32_t attributes_inode = 0;
constexpr uint32_t root_inode = 1;
constexpr uint32_t inode_extents = most_extents; // what an inode has room for

struct BlockExtent {
    uint32_t start;
    uint32_t length;
};

struct Inode {
    uint16_t type;
    uint32_t blocks;                                // allocated
    uint32_t count;                                 // of extents, at most inode_extents
    std::array<BlockExtent, inode_extents> extents; // those behind the last one as they stand
    bool has_map;                                   // more extents stand elsewhere
    uint32_t size;                                  // bytes
    const uint8_t *changed;                         // the date, as time_ios2tm takes it
    uint32_t record_length;                         // bytes; of a directory: an entry's
};

Inode read_inode(const uint8_t *bytes); // which must outlive it

// The inode of a number that may come from anywhere; its table ends with a zero one. Null for a number above
// md->inode_count, and without a table.
const uint8_t *find_inode(const MediaDescriptor *md, uint32_t number);

Region in_records(const MediaDescriptor *md, BlockExtent extent);
void take_extents(const MediaDescriptor *md, const Inode &inode, ExtentList *ret_extents);

// The text ends behind its last character that is neither blank nor NUL; text has room for a terminator.
void take_padded_text(char *text, const uint8_t *bytes, uint32_t size);

// ---- what the row consists of
int32_t read_sdf_header(MediaDescriptor *md, const uint8_t *record);
int32_t read_sdf_entry(MediaDescriptor *md, FileInfo *info, const uint8_t *entry, uint32_t *ret_size);
void complete_sdf_info(FileInfo *info);
int32_t locate_sdf_directory(const MediaDescriptor *md, const FileInfo *directory, DirectoryPlace *ret_place);
int32_t locate_sdf_file(const MediaDescriptor *md, const FileInfo *info, ExtentList *ret_extents);
