// Files move down through memory, in their own place long ones through a temporary file; into another image they go
// straight, with what lies between them.
#include "volume/repack.h"

#include <algorithm>

#include "base/error.h"
#include "base/file.h"
#include "base/file_inner.h"
#include "base/file_steps.h"
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
#include "volume/waiting_files.h"

namespace
{
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
    MediaDescriptor *from; // where the files are; md itself when they move in their own place
    uint8_t *bytes;        // as many as in_memory
    WaitingFiles *waiting; // those that are still in the way of the ones that move
    uint64_t filled = 0;   // in another image: the bytes ahead of it are there
    uint64_t claimed = 0;  // records that the present file takes by its size
    char temporary[FILE_PATH_SIZE] = {};
};

bool moves_in_place(const Repacking &packing)
{
    return packing.from == packing.md;
}

// ---- in its own place ------------------------------------------------------------------------------------

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

bool fits_memory(uint32_t records)
{
    return records <= in_memory / RECORD_SIZE;
}

int32_t take_out(const Repacking &packing, FileInfo *info, uint32_t records)
{
    if (fits_memory(records)) return read_records(packing, info, records);
    return image_extract_file(packing.md, info, nullptr, packing.temporary, nullptr, EXTRACT_OVERWRITE, nullptr);
}

// ---- into another image ----------------------------------------------------------------------------------

bool fail_to_write(const Repacking &packing)
{
    set_error(303, "file \"%s\"", packing.md->msus);
    return false;
}

// What lies ahead of a position and in no file is taken over as it is.
bool fill_up_to(Repacking *packing, uint64_t end)
{
    if (packing->filled >= end) return true;
    if (!seek_to(packing->from->file, packing->filled)) return false;
    while (packing->filled < end) {
        const auto wanted = static_cast<uint32_t>(std::min<uint64_t>(transfer_bytes, end - packing->filled));
        const int32_t count = file_read(packing->from->file, packing->bytes, wanted);
        if (count <= 0) return count == 0; // the image ends
        if (file_write_at(packing->md->file, packing->filled, packing->bytes, static_cast<uint32_t>(count)) != count)
            return fail_to_write(*packing);
        packing->filled += static_cast<uint32_t>(count);
    }
    return true;
}

bool carry_records(const Repacking &packing, MediumStream *from, MediumStream *to)
{
    while (from->next < from->records) {
        const int32_t count = read_stream(from, packing.bytes, transfer_bytes / RECORD_SIZE);
        if (count <= 0) return false;
        const auto records = static_cast<uint32_t>(count);
        if (write_stream(to, packing.bytes, records) != records) return fail_to_write(packing);
    }
    return true;
}

int32_t carry_over(Repacking *packing, uint32_t old_location, uint32_t location, uint32_t count)
{
    MediumStream from;
    MediumStream to;
    const uint64_t start = uint64_t{location} * RECORD_SIZE;
    if (count == 0) return 0;
    if (!fill_up_to(packing, start)) return -1;
    if (open_stream(&from, packing->from, old_location, count, false) < 0) return -1;
    from.unkept = true; // each record is read once
    bool done = open_stream(&to, packing->md, location, count, true) == 0;
    if (done) {
        done = carry_records(*packing, &from, &to);
        if (close_stream(&to) < 0) done = false;
    }
    if (close_stream(&from) < 0) done = false;
    packing->filled = std::max(packing->filled, start + uint64_t{count} * RECORD_SIZE);
    return done ? 0 : -1;
}

// ---- the files -------------------------------------------------------------------------------------------

// A file with a part of a record claims that record too, and may not claim one of a table.
bool is_in_the_way(void *context, Region region)
{
    const auto *packing = static_cast<const Repacking *>(context);
    return packing->waiting->meet(region) || is_system_space(packing->md, {region.start, packing->claimed});
}

// Where a file of so many records goes; 0 for nowhere. One of none takes no room, and finds a place in a full area too.
uint32_t find_place(Repacking *packing, const FileInfo *info, uint32_t count)
{
    MediaDescriptor *md = packing->md;
    if (count != 0) {
        log_file(3, "image_allocate(md=%lu, size=%u)\n", log_pointer(md), static_cast<unsigned>(count));
        return allocate_run(md, count, {is_in_the_way, packing});
    }
    for (const AllocEntry *run = md->alloc_list; run != nullptr; run = run->next) {
        if (run->location <= largest_location && !is_system_space(md, {run->location, packing->claimed}))
            return run->location;
    }
    return info->location;
}

int32_t put_down(Repacking *packing, const FileInfo *info, uint32_t old_location, uint32_t count)
{
    if (!moves_in_place(*packing)) return carry_over(packing, old_location, info->location, count);
    const auto records = static_cast<uint32_t>(file_region(info).length);
    return fits_memory(records) ? write_records(*packing, info, count, nullptr) : write_back(*packing, info, count);
}

int32_t relocate(Repacking *packing, FileInfo *info)
{
    log_file(2, "Relocating %s...", info->name);
    const auto records = static_cast<uint32_t>(file_region(info).length);
    if (moves_in_place(*packing) && take_out(*packing, info, records) < 0) return -1;
    // Kept: a last part of a record isn't counted, and isn't moved.  [KeepsPartRecordBehindWhenRepacking]
    const uint32_t count = info->size / RECORD_SIZE;
    packing->claimed = records;
    if (info->size != 0) packing->waiting->leave();
    info->deleted = out_of_its_place;
    const uint32_t old_location = info->location;
    const uint32_t location = find_place(packing, info, count);
    if (location == 0) {
        set_error(211, "file \"%s\"", info->name);
        return -1;
    }
    log_file(2, "(%lu->%lu)...", static_cast<unsigned long>(old_location), static_cast<unsigned long>(location));
    info->location = location;
    if (put_down(packing, info, old_location, count) < 0) return -1;
    log_file(2, "done.\n");
    return 0;
}

int32_t relocate_files(Repacking *packing)
{
    MediaDescriptor *md = packing->md;
    int32_t result = 0;
    for (FileInfo *info = md->root; info != nullptr && result == 0; info = info->next) {
        if (info->deleted == 0) result = relocate(packing, info);
    }
    for (FileInfo *info = md->root; info != nullptr; info = info->next) {
        if (info->deleted == out_of_its_place) info->deleted = 0;
    }
    return result;
}

int32_t relocate_in_place(Repacking *packing)
{
    if (file_get_temp(packing->temporary) < 0) return -1;
    const int32_t result = relocate_files(packing);
    file_delete(packing->temporary);
    return result;
}

bool find_size(const MediaDescriptor *md, uint64_t *ret_bytes)
{
    if (file_size_in_bytes(md->file, ret_bytes)) return true;
    set_error(302, "file \"%s\"", md->msus);
    return false;
}

int32_t relocate_into_other(Repacking *packing)
{
    uint64_t end = 0;
    if (!find_size(packing->from, &end)) return -1;
    unkept_file = packing->md->file; // what is read ahead of the other one stays good
    const bool done = relocate_files(packing) == 0 && fill_up_to(packing, end);
    unkept_file = 0;
    refresh_medium(packing->md);
    return done ? 0 : -1;
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

bool can_be_repacked(MediaDescriptor *md)
{
    if (!volume_format(md->format).has_allocation_table) {
        set_error(203, "no free list");
        return false;
    }
    if (!has_whole_list(md)) return false;
    if (md->alloc_list != nullptr) return true;
    set_error(211, "no free list");
    return false;
}

int32_t repack_from(MediaDescriptor *md, MediaDescriptor *from, uint64_t filled)
{
    if (!can_be_repacked(md)) return -1;
    const Scratch bytes(in_memory);
    WaitingFiles waiting(md->root);
    if (!bytes || !waiting.known()) return -1;
    reset_free_list(md);
    Repacking packing = {.md = md, .from = from, .bytes = bytes.bytes(), .waiting = &waiting, .filled = filled};
    const int32_t result = moves_in_place(packing) ? relocate_in_place(&packing) : relocate_into_other(&packing);
    return result < 0 ? -1 : update_tables(md);
}

// What opening a volume reads: its head and its tables, wherever they are.
uint64_t bytes_of_head(const MediaDescriptor *md)
{
    const uint64_t directory_end = uint64_t{md->dir_start} + md->dir_size;
    const uint64_t table_end = uint64_t{md->alloc_start} + md->alloc_size;
    return std::max({uint64_t{1}, uint64_t{md->file_area_start}, directory_end, table_end}) * RECORD_SIZE;
}

// A file as long as the image that begins with the tables of that one.
bool begin_image(MediaDescriptor *from, const char *target, uint64_t head)
{
    uint64_t bytes = 0;
    MediaDescriptor *md = image_open(target, nullptr, 0);
    if (md == nullptr) return false;
    const Scratch piece(in_memory);
    bool done = piece && find_size(from, &bytes);
    if (done && !file_resize(md->file, bytes)) {
        set_error(309, "file \"%s\"", target);
        done = false;
    }
    if (done) {
        Repacking packing = {.md = md, .from = from, .bytes = piece.bytes(), .waiting = nullptr};
        done = fill_up_to(&packing, std::min(head, bytes));
    }
    image_close(md);
    return done;
}
}

int32_t repack(MediaDescriptor *md)
{
    return repack_from(md, md, 0);
}

int32_t repack_to(MediaDescriptor *from, const char *target)
{
    const uint64_t head = bytes_of_head(from);
    if (!begin_image(from, target, head)) return -1;
    MediaDescriptor *md = image_open(target, nullptr, OPEN_READ_VOLUME | OPEN_CHECK | OPEN_SORT);
    if (md == nullptr) return -1;
    const int32_t result = repack_from(md, from, head);
    image_close(md);
    return result;
}
