// DC100 tapes, which reach Tarvo as image files only. Record 0 is unused; the directory fills records 1 and 2, its
// spare copy 3 and 4, files follow. Both begin with four bytes of their own, $0500FFFF, by which a tape is known.
//
// Entry, 12 bytes: name (6), type in bits 7 to 2 and bits 9 and 8 of the first record (1), its low bits (1), logical
// records (2), their length in words (2).
#include <cstring>

#include "base/convert.h"
#include "volume/access.h"
#include "volume/system45/system45_inner.h"

namespace
{
constexpr uint32_t entry_size = 12;
constexpr uint16_t end_of_directory = 0xFFFF;
constexpr uint8_t type_bits = 0xFC; // of byte 6
constexpr uint8_t location_bits = 0x03;

constexpr uint32_t tracks = 2;
constexpr uint32_t records_a_track = 426;
constexpr uint32_t directory_records = 2;
constexpr uint32_t first_file_record = 5;
}

int32_t claims_tape45(MediaDescriptor *md, const uint8_t *)
{
    if (md->access != ACCESS_IMAGE) return 0;
    uint8_t record[RECORD_SIZE];
    if (read_record(md, 1, record) < 0) return -1;
    md->magic = get_word(record);
    return md->magic == magic_9845 ? 1 : 0;
}

int32_t read_tape45_header(MediaDescriptor *md, const uint8_t *)
{
    md->sectors = records_a_track;
    md->heads = 1;
    md->cylinders = tracks;
    md->data_tracks = tracks;
    md->records = tracks * records_a_track;
    md->dir_start = 1;
    md->dir_size = directory_records;
    md->dir_entry_size = entry_size;
    md->spare_dir_start = md->dir_start + directory_records;
    md->file_area_start = first_file_record;
    // Kept: five bytes are taken off where five records are meant.  [KeepsTapeCapacityOf218107Bytes]
    md->data_size = tracks * records_a_track * RECORD_SIZE - first_file_record;
    return 0;
}

int32_t read_tape45_entry(MediaDescriptor *md, FileInfo *info, const uint8_t *entry, uint32_t *ret_size)
{
    if (get_word(entry) == end_of_directory) return 0;
    take_name45(info, entry);
    info->type = entry[6] & type_bits;
    info->location = uint32_t{entry[7]} + (entry[6] & location_bits) * 0x100U;
    info->records = get_word(entry + 8);
    info->record_len = get_word(entry + 10);
    *ret_size = complete_entry45(md, info);
    return 1;
}

void write_tape45_entry(const MediaDescriptor *, const FileInfo *info, uint8_t *entry)
{
    std::memset(entry, 0, entry_size);
    put_name45(info, entry);
    entry[6] = static_cast<uint8_t>((info->type & type_bits) | (info->location >> 8 & location_bits));
    entry[7] = static_cast<uint8_t>(info->location);
    set_word(entry + 8, static_cast<uint16_t>(info->records));
    set_word(entry + 10, static_cast<uint16_t>(info->record_len));
}

void write_tape45_end_mark(uint8_t *slot)
{
    set_word(slot, end_of_directory);
}
