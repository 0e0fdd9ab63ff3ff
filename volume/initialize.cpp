// Lays out a new volume: header, first record of the directory and of the availability table, and the fill of the file
// area. End marks in the first records make the rest of the tables unread.
#include "volume/initialize.h"

#include <algorithm>
#include <cstring>

#include "base/convert.h"
#include "base/error.h"
#include "base/log_pointer.h"
#include "volume/access.h"
#include "volume/format.h"
#include "volume/scratch.h"

uint8_t hp9825_boot[HP9825_BOOT_SIZE];

namespace
{
constexpr uint32_t short_entry = 4; // bytes of a run: two words
constexpr uint32_t long_entry = 8;  // two double words
constexpr uint32_t boot_records = uint32_t{HP9825_BOOT_SIZE} / RECORD_SIZE;

// The 9825 is the one whose volumes begin with the word 0.
bool is_9825(const MediaDescriptor *md)
{
    return md->format == FORMAT_DISK45 && md->magic == 0;
}

int32_t write_system_record(MediaDescriptor *md, const VolumeFormat &format)
{
    uint8_t record[RECORD_SIZE] = {};
    format.compose_header(md, record);
    if (write_record(md, 0, record) < 0) return -1;
    return is_9825(md) ? write_record(md, md->spare_dir_start - 1, record) : 0;
}

void compose_directory(const VolumeFormat &format, uint8_t *record)
{
    if (format.first_entry != 0) std::memcpy(record, format.directory_head, format.first_entry);
    format.write_end_mark(record + format.first_entry);
}

int32_t write_boot_image(MediaDescriptor *md)
{
    for (uint32_t index = 0; index < boot_records; index++) {
        if (write_record(md, md->sectors + index, hp9825_boot + size_t{index} * RECORD_SIZE) < 0) return -1;
    }
    return 0;
}

int32_t write_directories(MediaDescriptor *md, const VolumeFormat &format)
{
    uint8_t record[RECORD_SIZE] = {};
    compose_directory(format, record);
    if (write_record(md, md->dir_start, record) < 0) return -1;
    if (is_9825(md) && write_boot_image(md) < 0) return -1;
    return format.has_spare_directory ? write_record(md, md->spare_dir_start, record) : 0;
}

// One run over the whole file area, and the end mark.
void compose_availability(const MediaDescriptor *md, uint8_t *record)
{
    const uint32_t size = md->sectors * md->data_tracks;
    if (md->alloc_entry_size == short_entry) {
        set_word(record, static_cast<uint16_t>(md->file_area_start));
        set_word(record + 2, static_cast<uint16_t>(size));
        std::memset(record + short_entry, 0xFF, 2);
    } else if (md->alloc_entry_size == long_entry) {
        set_dword(record, md->file_area_start);
        set_dword(record + 4, size);
        std::memset(record + long_entry, 0xFF, 4);
    } else {
        log_file(1, "alloc entry size not set\n");
    }
}

int32_t write_availability(MediaDescriptor *md, const VolumeFormat &format)
{
    if (!format.has_allocation_table) return 0;
    uint8_t record[RECORD_SIZE] = {};
    compose_availability(md, record);
    if (write_record(md, md->alloc_start, record) < 0) return -1;
    return write_record(md, md->spare_alloc_start, record);
}

// ---- the file area -----------------------------------------------------------------------------------------

uint32_t records_to_fill(MediaDescriptor *md)
{
    const uint64_t count = (uint64_t{md->data_size} + RECORD_SIZE - 1) / RECORD_SIZE;
    const MediumAccess *access = medium_access(md);
    if (access == nullptr || access->hardware_records == nullptr) return static_cast<uint32_t>(count);
    const uint64_t records = access->hardware_records(md);
    const uint64_t limit = records - std::min<uint64_t>(records, md->file_area_start);
    if (count <= limit) return static_cast<uint32_t>(count);
    log_file(2, "Block count for selected media format exceeds hardware limit\n");
    return static_cast<uint32_t>(limit);
}

bool goes_on(const MediumStream &stream, ProgressCallback progress)
{
    if (progress == nullptr) return true;
    auto *context = reinterpret_cast<void *>(static_cast<uintptr_t>(uint64_t{stream.next} * RECORD_SIZE));
    return progress(context, stream.next - 1, static_cast<uint32_t>(uint64_t{stream.next} * 100 / stream.records)) == 0;
}

int32_t fill_stream(MediumStream *stream, const VolumeFormat &format, ProgressCallback progress)
{
    const uint32_t room = progress == nullptr ? transfer_bytes / RECORD_SIZE : 1;
    const Scratch bytes(size_t{room} * RECORD_SIZE);
    if (!bytes) return -1;
    for (size_t index = 0; index < size_t{room} * RECORD_SIZE; index++) {
        bytes.bytes()[index] = format.fill_pattern[index % sizeof format.fill_pattern];
    }
    while (stream->next < stream->records) {
        const uint32_t count = std::min(room, stream->records - stream->next);
        if (write_stream(stream, bytes.bytes(), count) != count) return -1;
        if (!goes_on(*stream, progress)) break;
    }
    return 0;
}

int32_t fill_file_area(MediaDescriptor *md, const VolumeFormat &format, ProgressCallback progress)
{
    const uint32_t count = records_to_fill(md);
    MediumStream stream;
    if (count == 0) return 0;
    if (open_stream(&stream, md, md->file_area_start, count, true) < 0) return -1;
    stream.alone = progress == nullptr;
    const int32_t result = fill_stream(&stream, format, progress);
    return close_stream(&stream) < 0 ? -1 : result;
}
}

int32_t image_format(MediaDescriptor *md)
{
    if (md == nullptr) {
        set_error(103, "Null pointer");
        return -1;
    }
    const MediumAccess *access = medium_access(md);
    if (access == nullptr) return -1;
    if (access->make_blank != nullptr) return access->make_blank(md);
    set_error(202, "%lu", static_cast<unsigned long>(md->access));
    return -1;
}

int32_t image_initialize(MediaDescriptor *md, int32_t quickformat, ProgressCallback progress)
{
    log_file(3, "image_initialize(md=%lu, quickformat=%d, progress=%lu)\n", log_pointer(md), quickformat,
             log_callback(progress));
    if (md == nullptr) {
        set_error(103, "Null pointer");
        return -1;
    }
    const VolumeFormat &format = volume_format(md->format);
    if (format.compose_header == nullptr) {
        set_error(203, "");
        return -1;
    }
    if (write_system_record(md, format) < 0 || write_directories(md, format) < 0 ||
        write_availability(md, format) < 0) {
        return -1;
    }
    return quickformat != 0 ? 0 : fill_file_area(md, format, progress);
}
