// Checks a volume; joins the free space of a System 45 disk by moving its files down, one after the other, through a
// temporary file.
#include "volume/repair.h"

#include <new>

#include "base/error.h"
#include "base/file.h"
#include "base/log.h"
#include "base/memory.h"
#include "volume/access.h"
#include "volume/allocation.h"
#include "volume/extract.h"
#include "volume/format.h"
#include "volume/open.h"
#include "volume/operations_inner.h"
#include "volume/state.h"
#include "volume/table.h"

namespace
{
constexpr uint16_t check_flags = OPEN_READ_VOLUME | OPEN_CHECK | OPEN_SORT;
constexpr uint32_t out_of_its_place = 2; // in `deleted`: a file has left its place, another one may get it
constexpr uint32_t largest_location = 65535;

// All free space as one run.
void reset_free_list(MediaDescriptor *md)
{
    AllocEntry *run = md->alloc_list;
    while (run->next != nullptr) {
        AllocEntry *next = run->next;
        run->next = next->next;
        my_free(next);
    }
    run->location = md->file_area_start;
    run->size = md->data_size / RECORD_SIZE;
    md->used_bytes = 0;
    md->free_bytes = md->data_size;
}

int32_t write_records(MediaDescriptor *md, const FileInfo *info, uint32_t count, FileHandle file)
{
    MediumStream stream;
    if (open_stream(&stream, md, info->location, count, true) < 0) return -1;
    int32_t result = 0;
    for (uint32_t index = 0; index < count && result == 0; index++) {
        uint8_t record[RECORD_SIZE];
        if (file_read(file, record, RECORD_SIZE) != RECORD_SIZE) {
            set_error(302, "temporary file");
            result = -1;
        } else if (write_stream(&stream, record, 1) != 1) {
            result = -1;
        }
    }
    return close_stream(&stream) < 0 ? -1 : result;
}

int32_t write_back(MediaDescriptor *md, const FileInfo *info, uint32_t count, const char *temporary)
{
    FileHandle file = 0;
    if (file_open(&file, temporary, "rb", 0) != 1) {
        set_error(300, "temporary file");
        return -1;
    }
    const int32_t result = count == 0 ? 0 : write_records(md, info, count, file);
    file_close(file);
    return result;
}

// Where a file of so many records goes; 0 for nowhere. One of none takes no room, and finds a place in a full area too.
uint32_t find_place(MediaDescriptor *md, const FileInfo *info, uint32_t count)
{
    if (count != 0) return image_allocate(md, count);
    const AllocEntry *run = md->alloc_list;
    return run != nullptr && run->location <= largest_location ? run->location : info->location;
}

int32_t relocate(MediaDescriptor *md, FileInfo *info, const char *temporary)
{
    log_file(2, "Relocating %s...", info->name);
    if (image_extract_file(md, info, nullptr, temporary, nullptr, EXTRACT_OVERWRITE, nullptr) < 0) return -1;
    // Kept: a last part of a record isn't counted, and isn't moved.  [KeepsPartRecordBehindWhenRepacking]
    const uint32_t count = info->size / RECORD_SIZE;
    info->deleted = out_of_its_place;
    const uint32_t location = find_place(md, info, count);
    if (location == 0) {
        set_error(211, "file \"%s\"", info->name);
        return -1;
    }
    log_file(2, "(%lu->%lu)...", static_cast<unsigned long>(info->location), static_cast<unsigned long>(location));
    info->location = location;
    if (write_back(md, info, count, temporary) < 0) return -1;
    log_file(2, "done.\n");
    return 0;
}

int32_t relocate_all(MediaDescriptor *md)
{
    char temporary[FILE_PATH_SIZE];
    if (file_get_temp(temporary) < 0) return -1;
    int32_t result = 0;
    for (FileInfo *info = md->root; info != nullptr && result == 0; info = info->next) {
        if (info->deleted == 0) result = relocate(md, info, temporary);
    }
    file_delete(temporary);
    for (FileInfo *info = md->root; info != nullptr; info = info->next) {
        if (info->deleted == out_of_its_place) info->deleted = 0;
    }
    return result;
}

// What isn't in the list would be written over, and its entry with it. A check ends at the first entry that is refused,
// a purged one too, which is no loss; so the list is read again without.
bool has_whole_list(MediaDescriptor *md)
{
    if (md->state == nullptr || md->state->table_result == 0) return true;
    if (get_file_table(md, nullptr, nullptr, 0, 0, 1, 0, 0, 0) < 0) return false;
    if (md->state->refused_entries == 0) return true;
    set_error(215, "directory not read whole, nothing is changed");
    return false;
}

int32_t defragment(MediaDescriptor *md)
{
    if (!volume_format(md->format).has_allocation_table) {
        set_error(203, "no free list");
        return -1;
    }
    if (!has_whole_list(md)) return -1;
    if (md->alloc_list == nullptr) {
        set_error(211, "no free list");
        return -1;
    }
    reset_free_list(md);
    return relocate_all(md) < 0 ? -1 : update_tables(md);
}
}

int32_t image_check(const char *target, int32_t repair)
{
    const auto flags = static_cast<uint16_t>(check_flags | (repair != 0 ? OPEN_REPAIR : 0));
    MediaDescriptor *md = image_open(target, nullptr, flags);
    if (md == nullptr) return -1;
    const int32_t result = md->state == nullptr ? 0 : md->state->table_result;
    image_close(md);
    return result;
}

int32_t image_defrag(const char *target)
{
    MediaDescriptor *md = image_open(target, nullptr, check_flags);
    if (md == nullptr) return -1;
    const int32_t result = defragment(md);
    image_close(md);
    return result;
}
