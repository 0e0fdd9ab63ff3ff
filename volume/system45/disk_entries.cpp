// Directory entries of a System 45 disk, 16 bytes: name (6), low word of the first record (2), logical records (2),
// their length in words (2), type word with bits 16 to 22 of the first record (2), 0 (1), "p" for a protected file (1).
#include <cstring>

#include "base/convert.h"
#include "volume/system45/system45_inner.h"

namespace
{
constexpr uint32_t entry_size = 16;
constexpr uint16_t location_bits = 0x007F;     // of the type word
constexpr uint16_t type_bits = 0xFE00;         // that are written
constexpr uint16_t last_fixed_length = 0x1FFF; // types up to here have records of 256 bytes
constexpr uint32_t fixed_length = 128;         // words
constexpr uint8_t protection_mark = 'p';
}

int32_t read_disk45_entry(MediaDescriptor *md, FileInfo *info, const uint8_t *entry, uint32_t *ret_size)
{
    // Kept: a purged file whose name had one character ends it too.  [KeepsPurgedOneLetterNameEndingDirectory]
    if (get_word(entry) == 0) return 0;
    take_name45(info, entry);
    info->type = get_word(entry + 12);
    const uint32_t high = info->type & location_bits;
    info->location = high << 16 | get_word(entry + 6);
    info->records = get_word(entry + 8);
    info->record_len = info->type > last_fixed_length ? get_word(entry + 10) : fixed_length;
    if (entry[15] == protection_mark) info->attributes = ATTRIBUTE_READ_ONLY | ATTRIBUTE_SYSTEM;
    *ret_size = complete_entry45(md, info);
    return 1;
}

void write_disk45_entry(const MediaDescriptor *, const FileInfo *info, uint8_t *entry)
{
    std::memset(entry, 0, entry_size);
    put_name45(info, entry);
    set_word(entry + 6, static_cast<uint16_t>(info->location));
    set_word(entry + 8, static_cast<uint16_t>(info->records));
    set_word(entry + 10, static_cast<uint16_t>(info->record_len));
    uint32_t high_location = info->location >> 16 & location_bits;
    // Kept: bits 7 and 8 of a type are lost here, so that ROOT becomes OPRM.  [KeepsTypeBits7And8Unwritten]
    set_word(entry + 12, static_cast<uint16_t>(high_location | (info->type & type_bits)));
    if ((info->attributes & ATTRIBUTE_READ_ONLY) != 0) entry[15] = protection_mark;
}

void write_disk45_end_mark(uint8_t *slot)
{
    set_dword(slot, 0x0000FFFF);
}
