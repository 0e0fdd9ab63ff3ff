// The rows of the System 45 family: disks of the 9845, 9835, 9831, 250, 260 and, without a magic word, of the 9825, and
// DC100 tapes.
#include "volume/system45/system45.h"

#include "volume/system45/new_volume.h"
#include "volume/system45/system45_inner.h"

namespace
{
constexpr uint8_t tape_directory_head[] = {0x05, 0x00, 0xFF, 0xFF};
}

const VolumeFormat disk45_format = {
    .name = "System 45 disk",
    .claims = claims_disk45,
    .read_header = read_disk45_header,
    .read_entry = read_disk45_entry,
    .write_entry = write_disk45_entry,
    .write_end_mark = write_disk45_end_mark,
    .complete_info = complete_info45,
    .compose_header = compose_disk45_header,
    // Kept: the fourth byte isn't like the others.  [KeepsFourthByteOfFill]
    .fill_pattern = {0x00, 0x00, 0x00, 0xFF},
    .name_limit = 6,
    .largest_location = 0x7FFFFF,
    .most_records = 0xFFFF,
    .says_logical_records = true,
    .has_spare_directory = true,
    .reads_spare_directory = true,
    .has_allocation_table = true,
};

const VolumeFormat tape45_format = {
    .name = "System 45 tape",
    .claims = claims_tape45,
    .read_header = read_tape45_header,
    .read_entry = read_tape45_entry,
    .write_entry = write_tape45_entry,
    .write_end_mark = write_tape45_end_mark,
    .complete_info = complete_info45,
    .compose_header = compose_tape45_header,
    .first_entry = sizeof tape_directory_head,
    .directory_head = tape_directory_head,
    .name_limit = 6,
    .largest_location = 0x3FF,
    .most_records = 0xFFFF,
    .says_logical_records = true,
    .has_spare_directory = true,
};
