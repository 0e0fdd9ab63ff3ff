// The system record of a new disk: geometry and tables in the order of its words; on disks of the 250 and 260 the size
// of free runs and the label besides.
#include "volume/system45/new_volume.h"

#include <cstring>

#include "base/convert.h"

namespace
{
constexpr uint16_t magic_250 = 0x0600;
constexpr uint32_t long_run = 8;
constexpr size_t label_offset = 32;
constexpr size_t longest_label = 16;
constexpr uint16_t constant_of_250 = 60; // nothing reads it

uint16_t word(uint32_t value)
{
    return static_cast<uint16_t>(value);
}

void compose_tail_of_250(const MediaDescriptor *md, uint8_t *record)
{
    const size_t length = strnlen(md->label, longest_label);
    set_word(record + 26, md->alloc_entry_size == long_run ? 1 : 0);
    set_word(record + 28, constant_of_250);
    set_word(record + 30, static_cast<uint16_t>(length));
    std::memcpy(record + label_offset, md->label, length);
}
}

void compose_disk45_header(MediaDescriptor *md, uint8_t *record)
{
    const uint32_t distance = md->spare_dir_start - md->dir_start;
    set_word(record, md->magic);
    set_word(record + 2, word(md->sectors));
    set_word(record + 4, word(md->cylinders));
    set_word(record + 6, md->sectors == 0 ? uint16_t{0} : word((md->sectors + distance - 1) / md->sectors));
    set_word(record + 8, word(md->dir_start));
    set_word(record + 10, word(md->alloc_start));
    set_word(record + 12, word(md->alloc_size + md->alloc_start));
    set_word(record + 14, word(md->system_tracks));
    set_word(record + 16, word(md->data_tracks));
    set_word(record + 18, md->interleave);
    if (md->magic == magic_250) compose_tail_of_250(md, record);
}

void compose_tape45_header(MediaDescriptor *md, uint8_t *)
{
    md->dir_start = 1;
    md->sectors = 426;
    md->data_tracks = 2;
    md->spare_dir_start = 3;
    md->file_area_start = 5;
    // Kept: a new tape is smaller than a tape that is read.  [KeepsNewTapeOf847Records]
    md->data_size = 216832;
}
