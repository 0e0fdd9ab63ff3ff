// Inodes, 128 bytes each: type at 6 (2), allocated blocks at 28 (4), number of extents at 38 (2), extents from 40 on,
// each first block and length (4 each), extent map at 72 (4), size at 76 (4), date at 104 (8), record length at 112
// (4).
#include <algorithm>

#include "base/convert.h"
#include "volume/sdf/sdf_inner.h"

namespace
{
constexpr uint32_t no_map = 0xFFFFFFFF;
constexpr uint32_t extent_size = 8;
}

Inode read_inode(const uint8_t *bytes)
{
    Inode inode = {.type = get_word(bytes + 6),
                   .blocks = get_dword(bytes + 28),
                   .count = std::min<uint32_t>(get_word(bytes + 38), inode_extents),
                   .extents = {},
                   .has_map = get_dword(bytes + 72) != no_map,
                   .size = get_dword(bytes + 76),
                   .changed = bytes + 104,
                   .record_length = get_dword(bytes + 112)};
    const uint8_t *place = bytes + 40;
    for (BlockExtent &extent : inode.extents) {
        extent = {get_dword(place), get_dword(place + 4)};
        place += extent_size;
    }
    return inode;
}

const uint8_t *find_inode(const MediaDescriptor *md, uint32_t number)
{
    if (md->inode_table == nullptr || number > md->inode_count) return nullptr;
    return md->inode_table + size_t{number} * inode_size;
}

Region in_records(const MediaDescriptor *md, BlockExtent extent)
{
    const uint64_t records_a_block = md->block_size / RECORD_SIZE;
    return {extent.start * records_a_block, extent.length * records_a_block};
}

void take_extents(const MediaDescriptor *md, const Inode &inode, ExtentList *ret_extents)
{
    ret_extents->count = inode.count;
    ret_extents->has_more = inode.has_map;
    for (uint32_t i = 0; i < inode.count; i++) ret_extents->extents[i] = in_records(md, inode.extents[i]);
}
