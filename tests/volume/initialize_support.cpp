// Figures of volumes, as a front end would put them in.
#include "tests/volume/initialize_support.h"

#include <cstring>
#include <numeric>

#include "tests/support/capture.h"

namespace tests
{

void take_row(const MediaTableRow &row, MediaDescriptor &md)
{
    md.format = FORMAT_DISK45;
    md.magic = 0x0500;
    md.sectors = row.sectors;
    md.cylinders = row.tracks;
    md.system_tracks = row.system_tracks;
    md.data_tracks = row.data_tracks;
    md.dir_start = row.dir_start;
    md.dir_size = row.alloc_start - row.dir_start;
    md.alloc_start = row.alloc_start;
    md.alloc_size = row.alloc_end - row.alloc_start;
    md.alloc_entry_size = 4;
    md.spare_dir_start = row.spare_track * row.sectors + row.dir_start;
    md.spare_alloc_start = md.spare_dir_start + md.dir_size;
    md.file_area_start = row.system_tracks * row.sectors;
    md.data_size = row.data_tracks * row.sectors * record_bytes;
    md.interleave = static_cast<uint16_t>(row.interleave);
}

void make_small_disk(MediaDescriptor &md, uint16_t magic)
{
    md.format = FORMAT_DISK45;
    md.magic = magic;
    md.sectors = 4;
    md.cylinders = 12;
    md.system_tracks = 3;
    md.data_tracks = 9;
    md.dir_start = 1;
    md.dir_size = 2;
    md.alloc_start = 3;
    md.alloc_size = 1;
    md.alloc_entry_size = 4;
    md.spare_dir_start = 5;
    md.spare_alloc_start = 7;
    md.file_area_start = 12;
    md.data_size = 36 * record_bytes;
    md.interleave = 3;
}

void make_lif(MediaDescriptor &md, uint32_t records)
{
    md.format = FORMAT_LIF;
    md.size = records * record_bytes;
    std::memcpy(md.label, "LABELTOOLONG", 13);
    md.dir_start = 2;
    md.dir_size = 3;
    md.dir_id = 0x1000;
    md.version = 1;
    md.cylinders = 20;
    md.heads = 2;
    md.sectors = 5;
    md.date = {30, 7, 9, 15, 2, 84, 0, 0, 0};
}

int32_t initialize(MemoryMedium &medium, int32_t quickformat, ProgressCallback progress)
{
    forget_error();
    return image_initialize(&medium.md, quickformat, progress);
}

Numbers from_to(uint32_t first, uint32_t count)
{
    Numbers numbers(count);
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

Numbers joined(std::initializer_list<Numbers> parts)
{
    Numbers all;
    for (const Numbers &part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

}
