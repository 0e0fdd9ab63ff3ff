// Writes the list of the top level over the directory. What can be refused is refused before the first record is
// written: a table where it can't be, or more entries than it holds.
#include <cstring>

#include "base/error.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "volume/access.h"
#include "volume/entries.h"
#include "volume/format.h"
#include "volume/region.h"
#include "volume/spare.h"
#include "volume/table.h"

namespace
{
struct Writer {
    const VolumeFormat *format;
    const FileInfo *next; // entry to be written
    uint32_t bytes;       // taken by the files written
    bool ended;           // the end mark has been written
};

uint32_t first_offset(const VolumeFormat &format, uint32_t record)
{
    return record == 0 ? format.first_entry : 0;
}

uint64_t count_slots(const MediaDescriptor *md, const VolumeFormat &format)
{
    if (md->dir_size == 0) return 0;
    uint64_t first = (RECORD_SIZE - format.first_entry) / md->dir_entry_size;
    uint64_t others = RECORD_SIZE / md->dir_entry_size;
    return first + (md->dir_size - 1) * others;
}

bool directory_holds_list(const MediaDescriptor *md, const VolumeFormat &format)
{
    uint64_t slots = count_slots(md, format);
    uint64_t entries = 0;
    for (const FileInfo *info = md->root; info != nullptr; info = info->next) entries++;
    if (entries <= slots) return true;
    set_error(216, "%lu entries", static_cast<unsigned long>(entries));
    return false;
}

bool entries_can_say(const MediaDescriptor *md, const VolumeFormat &format)
{
    for (const FileInfo *info = md->root; info != nullptr; info = info->next) {
        if (info->location <= format.largest_location && info->records <= format.most_records) continue;
        set_error(211, "file \"%s\"", info->name);
        return false;
    }
    return true;
}

// A purged entry of which nothing is left but zeros would hide all that follow it.
bool reads_as_end(MediaDescriptor *md, const Writer *writer, const uint8_t *entry)
{
    if (writer->next->deleted == 0) return false;
    FileInfo scratch = {};
    uint32_t size = 0;
    return writer->format->read_entry(md, &scratch, entry, &size) == 0;
}

// Takes the next entry of the list into a slot. False: it isn't written, the slot is free for the one behind it.
bool write_next(MediaDescriptor *md, Writer *writer, uint8_t *slot)
{
    const FileInfo *info = writer->next;
    set_file_info(md, info, slot);
    bool written = !reads_as_end(md, writer, slot);
    if (written) writer->bytes += (info->size + RECORD_SIZE - 1) / RECORD_SIZE * RECORD_SIZE;
    writer->next = info->next;
    return written;
}

void fill_record(MediaDescriptor *md, Writer *writer, uint32_t record, uint8_t *bytes)
{
    const uint32_t entry_size = md->dir_entry_size;
    std::memset(bytes, 0, RECORD_SIZE);
    uint32_t offset = first_offset(*writer->format, record);
    if (offset != 0) std::memcpy(bytes, writer->format->directory_head, offset);
    while (!writer->ended && offset + entry_size <= RECORD_SIZE) {
        if (writer->next == nullptr) {
            std::memset(bytes + offset, 0, entry_size);
            writer->format->write_end_mark(bytes + offset);
            writer->ended = true;
        } else if (write_next(md, writer, bytes + offset)) {
            offset += entry_size;
        }
    }
}
}

int32_t update_file_table(MediaDescriptor *md, int32_t use_spare)
{
    log_file(3, "image_update_file_table(md=%lu, use_spare=%d)\n", log_pointer(md), use_spare);
    const VolumeFormat &format = volume_format(md->format);
    if (use_spare != 0 && !format.has_spare_directory) return 0;
    const MediumAccess *access = medium_access(md);
    if (access == nullptr) return -1;
    if (format.write_entry == nullptr || md->dir_entry_size == 0) {
        set_error(203, "");
        return -1;
    }
    uint32_t start = use_spare != 0 ? md->spare_dir_start : md->dir_start;
    refresh_medium(md);
    const Region table = {start, md->dir_size};
    if (!table_fits(md, table) || !spare_fits(md, md->dir_start, table)) return -1;
    if (!directory_holds_list(md, format) || !entries_can_say(md, format)) return -1;
    Writer writer = {&format, md->root, 0, false};
    for (uint32_t record = 0; record < md->dir_size; record++) {
        uint8_t bytes[RECORD_SIZE];
        fill_record(md, &writer, record, bytes);
        if (write_record(md, start + record, bytes) < 0) return -1;
        if (writer.ended && !access->clears_rest_of_directory) break;
    }
    md->used_bytes = writer.bytes;
    md->free_bytes = md->data_size - md->used_bytes;
    return 0;
}
