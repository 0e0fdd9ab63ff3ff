// The volume header and the file attributes table, which is read whole, since every entry of a directory is but a
// number in it.
//
// Header, record 0: magic (2), needs a check (2), label (16), date (8), bytes a block (4), start and size of the boot
// area (4 each), start of the attributes table (4), version (4), largest block (4), password (16), last backup (8).
// Attributes table: an array of inodes. The first describes the table itself, the second the root directory; from byte
// 384 on, over other inodes, lies a map with a bit for each free block.
#include <algorithm>
#include <bit>

#include "base/convert.h"
#include "base/error.h"
#include "base/log.h"
#include "base/memory.h"
#include "volume/access.h"
#include "volume/sdf/sdf_inner.h"

namespace
{
constexpr uint32_t entry_size = 24;
constexpr uint32_t text_size = 16; // label and password
constexpr uint32_t free_map = 384; // byte of the attributes table
constexpr uint32_t map_bits = 8;   // blocks a byte
constexpr uint32_t spare_bytes =
    RECORD_SIZE + inode_size; // behind the table: a record that it takes in part, a zero inode

// Where the drive tells of none, the medium is as long as it is.
void take_geometry(MediaDescriptor *md)
{
    const MediumAccess *access = medium_access(md);
    md->sectors = md->heads = md->cylinders = 0;
    md->records = static_cast<uint32_t>((uint64_t{md->size} + RECORD_SIZE - 1) / RECORD_SIZE);
    if (access == nullptr || access->device_geometry == nullptr) return;
    const DeviceGeometry device = access->device_geometry(md);
    md->sectors = device.sectors;
    md->heads = device.heads;
    md->cylinders = device.cylinders * device.heads;
    md->records = md->cylinders * md->sectors;
}

void take_header(MediaDescriptor *md, const uint8_t *record)
{
    md->needs_check = get_word(record + 2);
    md->block_size = get_dword(record + 28);
    md->boot_start = get_dword(record + 32);
    md->boot_size = get_dword(record + 36);
    md->fat_start = get_dword(record + 40);
    md->largest_block = get_dword(record + 48);
    time_ios2tm(&md->date, record + 20);
    time_ios2tm(&md->backup_date, record + 68);
    take_padded_text(md->password, record + 52, text_size);
}

uint64_t medium_bytes(MediaDescriptor *md)
{
    return end_record(md) * RECORD_SIZE;
}

bool block_size_fits(MediaDescriptor *md)
{
    const uint32_t size = md->block_size;
    if (size != 0 && size % RECORD_SIZE == 0 && size <= medium_bytes(md)) return true;
    set_error(203, "block size %lu", static_cast<unsigned long>(size));
    return false;
}

// Reads one run of the table behind what is there of it, as long as there is room.
int32_t read_run(MediaDescriptor *md, Region run, uint32_t capacity)
{
    const uint64_t end = std::min(run.start + run.length, end_record(md));
    for (uint64_t record = run.start; record < end && md->inode_count < capacity; record++) {
        uint8_t *place = md->inode_table + size_t{md->inode_count} * inode_size;
        if (read_record(md, static_cast<uint32_t>(record), place) < 0) return -1;
        md->inode_count += RECORD_SIZE / inode_size;
    }
    return 0;
}

int32_t make_table(MediaDescriptor *md, uint64_t bytes)
{
    my_free(md->inode_table); // of a medium that is looked at once more
    md->inode_table = nullptr;
    md->inode_count = 0;
    // A table larger than its medium isn't asked for.
    if (bytes <= medium_bytes(md)) md->inode_table = static_cast<uint8_t *>(my_malloc(bytes + spare_bytes));
    if (md->inode_table != nullptr) return 0;
    set_error(105, "");
    return -1;
}

// *ret_bytes is the length of the table, which the medium may not have in full; what lacks is zero.
int32_t read_table(MediaDescriptor *md, uint64_t *ret_bytes)
{
    uint8_t record[RECORD_SIZE];
    const Region first = in_records(md, {md->fat_start, 1});
    if (first.start < end_record(md) && read_record(md, static_cast<uint32_t>(first.start), record) < 0) return -1;
    if (first.start >= end_record(md)) std::fill(std::begin(record), std::end(record), uint8_t{0});
    const Inode inode = read_inode(record);
    *ret_bytes = uint64_t{inode.blocks} * md->block_size;
    if (make_table(md, *ret_bytes) < 0) return -1;
    const auto capacity = static_cast<uint32_t>(*ret_bytes / inode_size);
    for (uint32_t i = 0; i < inode.count; i++) {
        if (read_run(md, in_records(md, inode.extents[i]), capacity) < 0) return -1;
    }
    log_file(3, "Inode table of size %lu detected with max. %lu entries\n", static_cast<unsigned long>(*ret_bytes),
             static_cast<unsigned long>(capacity));
    if (inode.has_map) log_file(1, "Inode table file contains extent maps which are currently not supported\n");
    return 0;
}

// Only shown: the walk goes by the inode itself.
void take_root(MediaDescriptor *md)
{
    const uint8_t *bytes = find_inode(md, root_inode);
    if (bytes == nullptr) return;
    const Inode root = read_inode(bytes);
    const uint32_t records_a_block = md->block_size / RECORD_SIZE;
    md->dir_start = records_a_block * root.extents[0].start;
    md->dir_size = records_a_block * root.blocks;
}

void count_free_space(MediaDescriptor *md, uint64_t table_bytes)
{
    const uint32_t blocks = md->largest_block + 1; // none where that is the largest number
    const uint64_t end = std::min<uint64_t>(uint64_t{free_map} + blocks / map_bits, table_bytes);
    uint32_t free_blocks = 0;
    for (uint64_t byte = free_map; byte < end; byte++) {
        free_blocks += static_cast<uint32_t>(std::popcount(md->inode_table[byte]));
    }
    md->free_bytes = free_blocks * md->block_size;
    md->data_size = blocks * md->block_size;
    md->used_bytes = md->data_size - md->free_bytes;
}
}

int32_t read_sdf_header(MediaDescriptor *md, const uint8_t *record)
{
    take_padded_text(md->label, record + 4, text_size);
    md->version = static_cast<uint16_t>(get_dword(record + 44));
    take_geometry(md);
    take_header(md, record);
    if (!block_size_fits(md)) return -1;
    uint64_t table_bytes = 0;
    if (read_table(md, &table_bytes) < 0) return -1;
    take_root(md);
    count_free_space(md, table_bytes);
    md->dir_entry_size = entry_size;
    return 0;
}
