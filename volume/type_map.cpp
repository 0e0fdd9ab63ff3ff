// Types of files between the formats, one row each. Not every row has its reverse.
#include "volume/type_map.h"

#include <algorithm>
#include <iterator>

#include "volume/media.h"

namespace
{
struct TypeRow {
    uint32_t from_format;
    uint32_t to_format;
    uint16_t mask; // of the word that is compared
    uint16_t from;
    uint16_t to;
};

constexpr TypeRow rows[] = {
    {FORMAT_TAPE45, FORMAT_LIF, 0x00FF, 36, 0xE848},
    {FORMAT_TAPE45, FORMAT_LIF, 0x00FF, 72, 0xE990},
    {FORMAT_TAPE45, FORMAT_LIF, 0x00FF, 76, 0xE998},
    {FORMAT_TAPE45, FORMAT_LIF, 0x00FF, 88, 0xE9B0},
    {FORMAT_LIF, FORMAT_DISK45, 0xFFFF, 0xE848, 0x2400},
    {FORMAT_LIF, FORMAT_DISK45, 0xFFFF, 0xE850, 0xC800},
    {FORMAT_LIF, FORMAT_DISK45, 0xFFFF, 0xE990, 0xC800},
    {FORMAT_LIF, FORMAT_DISK45, 0xFFFF, 0xE858, 0xCC00},
    {FORMAT_LIF, FORMAT_DISK45, 0xFFFF, 0xE998, 0xCC00},
    {FORMAT_LIF, FORMAT_DISK45, 0xFFFF, 0xE870, 0xD800},
    {FORMAT_LIF, FORMAT_DISK45, 0xFFFF, 0xE9B0, 0xD800},
    {FORMAT_LIF, FORMAT_DISK45, 0xFFFF, 0xE9B8, 0xDE00},
    {FORMAT_LIF, FORMAT_TAPE45, 0xFFFF, 0xE848, 36},
    {FORMAT_LIF, FORMAT_TAPE45, 0xFFFF, 0xE850, 72},
    {FORMAT_LIF, FORMAT_TAPE45, 0xFFFF, 0xE990, 72},
    {FORMAT_LIF, FORMAT_TAPE45, 0xFFFF, 0xE858, 76},
    {FORMAT_LIF, FORMAT_TAPE45, 0xFFFF, 0xE998, 76},
    // Kept: $E9B0 goes to a disc as $E870 does, and not to a tape.  [KeepsTypeE9B0OffTapes]
    {FORMAT_LIF, FORMAT_TAPE45, 0xFFFF, 0xE870, 88},
    {FORMAT_LIF, FORMAT_TAPE45, 0xFFFF, 0xE9B8, 92},
    {FORMAT_DISK45, FORMAT_LIF, 0xFF00, 0x2400, 0xE848},
    {FORMAT_DISK45, FORMAT_LIF, 0xFF00, 0xC800, 0xE990},
    {FORMAT_DISK45, FORMAT_LIF, 0xFF00, 0xCC00, 0xE998},
    {FORMAT_DISK45, FORMAT_LIF, 0xFF00, 0xD800, 0xE9B0},
};

constexpr uint16_t first_system_type = 9217; // on a disc, words from here on name their system

uint16_t tape_to_disk(uint16_t type)
{
    const auto word = static_cast<uint16_t>(type << 8);
    return word >= first_system_type ? word | 0x8000 : word;
}
}

uint16_t map_type(uint32_t from_format, uint32_t to_format, uint16_t type)
{
    if (from_format == FORMAT_TAPE45 && to_format == FORMAT_DISK45) return tape_to_disk(type);
    if (from_format == FORMAT_DISK45 && to_format == FORMAT_TAPE45) return static_cast<uint16_t>((type >> 8) & 127);
    const TypeRow *row = std::find_if(std::begin(rows), std::end(rows), [=](const TypeRow &candidate) {
        return candidate.from_format == from_format && candidate.to_format == to_format &&
               (type & candidate.mask) == candidate.from;
    });
    return row == std::end(rows) ? type : row->to;
}
