// The system record of a System 45 disk, record 0, in words: magic, records a track, tracks, distance of the spare
// directory in tracks, start of the directory, start of the availability table, its end, system tracks, data tracks,
// interleave. Bit 0 of byte 27 asks for long availability entries. Disks of the 250 and 260 are labelled: word 30 is
// the length, the text follows.
#include <cstring>

#include "base/convert.h"
#include "base/log.h"
#include "volume/access.h"
#include "volume/system45/system45_inner.h"

namespace
{
constexpr uint32_t disk_entry_size = 16;
constexpr uint32_t short_run_size = 4;
constexpr uint32_t long_run_size = 8;
constexpr uint32_t longest_label = 8;

// A record without geometry leaves it to the device; an image file has none.
void complete_geometry(MediaDescriptor *md)
{
    if (md->sectors != 0 && md->cylinders != 0) return;
    const MediumAccess *access = medium_access(md);
    if (access == nullptr || access->device_geometry == nullptr) {
        log_file(2, "No valid sector/track data in system record\n");
        md->records = static_cast<uint32_t>((uint64_t{md->size} + RECORD_SIZE - 1) / RECORD_SIZE);
        return;
    }
    log_file(2, "No valid sector/track data in system record, using device data\n");
    DeviceGeometry device = access->device_geometry(md);
    md->sectors = device.sectors;
    md->cylinders = device.cylinders * device.heads;
    md->records = md->cylinders * md->sectors;
}

// Records from one to the other; a table that ends ahead of its start has none.
uint32_t table_size(uint16_t start, uint16_t end)
{
    return end > start ? uint32_t{end} - start : 0;
}

void read_tables(MediaDescriptor *md, const uint8_t *record)
{
    uint16_t directory = get_word(record + 8);
    uint16_t availability = get_word(record + 10);
    md->dir_start = directory;
    md->dir_size = table_size(directory, availability);
    md->dir_entry_size = disk_entry_size;
    md->alloc_start = availability;
    md->alloc_size = table_size(availability, get_word(record + 12));
    md->alloc_entry_size = (record[27] & 1) != 0 ? long_run_size : short_run_size;
    md->spare_dir_start = get_word(record + 6) * md->sectors + md->dir_start;
    md->spare_alloc_start = md->spare_dir_start + md->dir_size;
}

void read_areas(MediaDescriptor *md, const uint8_t *record)
{
    md->system_tracks = get_word(record + 14);
    md->data_tracks = get_word(record + 16);
    md->interleave = get_word(record + 18);
    md->file_area_start = md->system_tracks * md->sectors;
    md->data_size = md->sectors * md->data_tracks * RECORD_SIZE;
    if (md->data_size == 0) md->data_size = md->size - md->file_area_start * RECORD_SIZE;
}

void read_label(MediaDescriptor *md, const uint8_t *record)
{
    uint16_t length = get_word(record + 30);
    if (md->magic != magic_250 || length > longest_label) length = 0;
    std::memcpy(md->label, record + 32, length);
    md->label[length] = '\0';
}
}

int32_t claims_disk45(MediaDescriptor *md, const uint8_t *record)
{
    bool family = md->magic == magic_9831 || md->magic == magic_9845 || md->magic == magic_250;
    return family || is_disk9825(md, record) ? 1 : 0;
}

int32_t read_disk45_header(MediaDescriptor *md, const uint8_t *record)
{
    md->sectors = get_word(record + 2);
    md->cylinders = get_word(record + 4);
    md->records = md->cylinders * md->sectors;
    md->heads = 0; // the record doesn't tell them
    complete_geometry(md);
    read_tables(md, record);
    read_areas(md, record);
    read_label(md, record);
    if (md->magic != magic_9825) return 0;
    announce_disk9825(md);
    return 1;
}
