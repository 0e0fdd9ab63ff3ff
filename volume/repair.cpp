// Checks a volume; joins the free space of a System 45 disk by moving its files down, one after the other: through
// memory, long ones through a temporary file.
#include "volume/repair.h"

#include <algorithm>

#include "base/error.h"
#include "base/file.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "base/memory.h"
#include "volume/access.h"
#include "volume/allocation_inner.h"
#include "volume/extract.h"
#include "volume/format.h"
#include "volume/open.h"
#include "volume/operations_inner.h"
#include "volume/region.h"
#include "volume/scratch.h"
#include "volume/state.h"
#include "volume/table.h"

namespace
{
constexpr uint16_t check_flags = OPEN_READ_VOLUME | OPEN_CHECK | OPEN_SORT;
constexpr uint32_t in_memory = 1024 * 1024; // bytes of a file that needs no temporary one
constexpr uint32_t out_of_its_place = 2;    // in `deleted`: a file has left its place, another one may get it
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

// The files on their way down, one after the other.
struct Repacking {
    MediaDescriptor *md;
    uint8_t *bytes; // as many as in_memory
    char temporary[FILE_PATH_SIZE];
    const FileInfo *waiting; // the first one that may be in the way of those that move
};

int32_t read_records(const Repacking &packing, const FileInfo *info, uint32_t count)
{
    MediumStream stream;
    if (count == 0) return 0;
    if (open_stream(&stream, packing.md, info->location, count, false) < 0) return -1;
    stream.unkept = true; // the records are about to move
    int32_t result = 0;
    while (result == 0 && stream.next < count) {
        const int32_t read = read_stream(&stream, packing.bytes + size_t{stream.next} * RECORD_SIZE, count);
        if (read <= 0) result = -1;
    }
    return close_stream(&stream) < 0 ? -1 : result;
}

// From memory, or piece by piece from a file.
int32_t write_records(const Repacking &packing, const FileInfo *info, uint32_t count, const FileHandle *file)
{
    MediumStream stream;
    if (count == 0) return 0;
    if (open_stream(&stream, packing.md, info->location, count, true) < 0) return -1;
    int32_t result = 0;
    while (result == 0 && stream.next < count) {
        const uint32_t records = std::min(count - stream.next, in_memory / RECORD_SIZE);
        const auto bytes = static_cast<int32_t>(records * RECORD_SIZE);
        if (file != nullptr && file_read(*file, packing.bytes, static_cast<uint32_t>(bytes)) != bytes) {
            set_error(302, "temporary file");
            result = -1;
        } else if (write_stream(&stream, packing.bytes, records) != records) {
            result = -1;
        }
    }
    return close_stream(&stream) < 0 ? -1 : result;
}

int32_t write_back(const Repacking &packing, const FileInfo *info, uint32_t count)
{
    FileHandle file = 0;
    if (file_open(&file, packing.temporary, "rb", 0) != 1) {
        set_error(300, "temporary file");
        return -1;
    }
    const int32_t result = write_records(packing, info, count, &file);
    file_close(file);
    return result;
}

// The list is sorted and new places only go up, so a file that lies ahead of one is in nobody's way again.
bool meets_waiting_file(void *context, Region region)
{
    auto *packing = static_cast<Repacking *>(context);
    const FileInfo *&waiting = packing->waiting;
    for (; waiting != nullptr; waiting = waiting->next) {
        if (waiting->deleted != 0 || waiting->size == 0) continue;
        const Region file = file_region(waiting);
        if (file.start + file.length > region.start) return file.start < region.start + region.length;
    }
    return false;
}

// Where a file of so many records goes; 0 for nowhere. One of none takes no room, and finds a place in a full area too.
uint32_t find_place(Repacking *packing, const FileInfo *info, uint32_t count)
{
    MediaDescriptor *md = packing->md;
    if (count != 0) {
        log_file(3, "image_allocate(md=%lu, size=%u)\n", log_pointer(md), static_cast<unsigned>(count));
        return allocate_run(md, count, {meets_waiting_file, packing});
    }
    const AllocEntry *run = md->alloc_list;
    return run != nullptr && run->location <= largest_location ? run->location : info->location;
}

int32_t relocate(Repacking *packing, FileInfo *info)
{
    log_file(2, "Relocating %s...", info->name);
    const auto records = static_cast<uint32_t>(file_region(info).length);
    const bool is_small = records <= in_memory / RECORD_SIZE;
    const int32_t taken = is_small ? read_records(*packing, info, records)
                                   : image_extract_file(packing->md, info, nullptr, packing->temporary, nullptr,
                                                        EXTRACT_OVERWRITE, nullptr);
    if (taken < 0) return -1;
    // Kept: a last part of a record isn't counted, and isn't moved.  [KeepsPartRecordBehindWhenRepacking]
    const uint32_t count = info->size / RECORD_SIZE;
    info->deleted = out_of_its_place;
    const uint32_t location = find_place(packing, info, count);
    if (location == 0) {
        set_error(211, "file \"%s\"", info->name);
        return -1;
    }
    log_file(2, "(%lu->%lu)...", static_cast<unsigned long>(info->location), static_cast<unsigned long>(location));
    info->location = location;
    const int32_t written =
        is_small ? write_records(*packing, info, count, nullptr) : write_back(*packing, info, count);
    if (written < 0) return -1;
    log_file(2, "done.\n");
    return 0;
}

int32_t relocate_all(MediaDescriptor *md)
{
    const Scratch bytes(in_memory);
    Repacking packing = {.md = md, .bytes = bytes.bytes(), .temporary = {}, .waiting = md->root};
    if (!bytes || file_get_temp(packing.temporary) < 0) return -1;
    int32_t result = 0;
    for (FileInfo *info = md->root; info != nullptr && result == 0; info = info->next) {
        if (info->deleted == 0) result = relocate(&packing, info);
    }
    file_delete(packing.temporary);
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
