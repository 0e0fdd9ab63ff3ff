// Free space. A System 45 disk keeps a list of free runs; on other volumes free is what lies behind the last file.
// Both come from the medium, so records about to be handed out are checked against everything that is known to be
// there.
#include "volume/allocation.h"

#include <algorithm>
#include <cstring>

#include "base/convert.h"
#include "base/error.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "base/memory.h"
#include "volume/access.h"
#include "volume/allocation_inner.h"
#include "volume/format.h"
#include "volume/list.h"
#include "volume/live_files.h"
#include "volume/region.h"
#include "volume/spare.h"
#include "volume/survey.h"

namespace
{
constexpr uint32_t short_entry = 4; // bytes: two words
constexpr uint32_t long_entry = 8;  // two double words
constexpr uint32_t largest_position = 0xFFFF;
constexpr uint32_t largest_run = 0xFFFF;

bool entry_size_known(const MediaDescriptor *md)
{
    if (md->alloc_entry_size == short_entry || md->alloc_entry_size == long_entry) return true;
    set_error(213, "alloc entry size not set");
    return false;
}

struct RunList {
    AllocEntry *head;
    AllocEntry *tail;
    uint32_t bytes; // free
};

bool take_run(const MediaDescriptor *md, RunList *list, const uint8_t *entry)
{
    auto *run = static_cast<AllocEntry *>(my_malloc(sizeof(AllocEntry)));
    if (run == nullptr) {
        set_error(105, "");
        return false;
    }
    bool is_short = md->alloc_entry_size == short_entry;
    run->location = is_short ? get_word(entry) : get_dword(entry);
    run->size = is_short ? get_word(entry + 2) : get_dword(entry + 4);
    list->bytes += run->size * RECORD_SIZE;
    (list->tail == nullptr ? list->head : list->tail->next) = run;
    list->tail = run;
    return true;
}

int32_t read_runs(MediaDescriptor *md, uint32_t start, RunList *list)
{
    const uint64_t end = end_record(md);
    for (uint32_t record = 0; record < md->alloc_size; record++) {
        uint64_t number = uint64_t{start} + record;
        if (number >= end) return 0;
        uint8_t bytes[RECORD_SIZE];
        if (read_record(md, static_cast<uint32_t>(number), bytes) < 0) return -1;
        for (uint32_t offset = 0; offset < RECORD_SIZE; offset += md->alloc_entry_size) {
            if (get_word(bytes + offset) == 0xFFFF) return 0;
            if (!take_run(md, list, bytes + offset)) return -1;
        }
    }
    return 0;
}

void free_runs(AllocEntry *run)
{
    while (run != nullptr) {
        AllocEntry *next = run->next;
        my_free(run);
        run = next;
    }
}

struct RunWriter {
    const AllocEntry *next;
    bool ended;
    bool lossy; // a run could not be written, or not all of it
    uint32_t bytes;
};

void write_run(const MediaDescriptor *md, RunWriter *writer, uint8_t *entry)
{
    const AllocEntry *run = writer->next;
    uint32_t size = run->size;
    if (md->alloc_entry_size == short_entry) {
        size = std::min(size, largest_run);
        set_word(entry, static_cast<uint16_t>(run->location));
        set_word(entry + 2, static_cast<uint16_t>(size));
    } else {
        set_dword(entry, run->location);
        set_dword(entry + 4, size);
    }
    writer->bytes += size * RECORD_SIZE;
    writer->lossy |= size != run->size;
    writer->next = run->next;
}

// Goes on to the next run that is written. An entry whose first word is 65535 would end the table. The table of a 9825
// is filled up with zero entries, which were read as empty runs and come again as what is left of it.
void find_next_run(const MediaDescriptor *md, RunWriter *writer)
{
    const uint32_t first_unwritable = md->alloc_entry_size == short_entry ? 0xFFFF : 0xFFFF0000;
    for (; writer->next != nullptr; writer->next = writer->next->next) {
        const AllocEntry *run = writer->next;
        bool filling = md->magic == 0 && run->location == 0 && run->size == 0;
        if (!filling && run->location < first_unwritable) return;
        writer->lossy |= !filling;
    }
}

void fill_record(const MediaDescriptor *md, RunWriter *writer, uint8_t *bytes)
{
    std::memset(bytes, 0, RECORD_SIZE);
    for (uint32_t offset = 0; !writer->ended && offset < RECORD_SIZE; offset += md->alloc_entry_size) {
        if (writer->next != nullptr) {
            write_run(md, writer, bytes + offset);
            find_next_run(md, writer);
            continue;
        }
        // The table of a 9825, whose magic is 0, has no end mark.
        if (md->magic != 0) std::memset(bytes + offset, 0xFF, md->alloc_entry_size == short_entry ? 2 : 4);
        writer->ended = true;
    }
}

bool may_hand_out(MediaDescriptor *md, const FilesAsked &files, Region region)
{
    uint64_t end = md->records != 0 ? md->records : end_record(md);
    return region.start <= largest_position && region.start + region.length <= end && !is_system_space(md, region) &&
           !files.meet(files.context, region);
}

bool meets_live_file(void *context, Region region)
{
    return static_cast<const LiveFiles *>(context)->meet(region);
}

uint16_t allocate_between_files(MediaDescriptor *md, uint32_t size)
{
    LiveFiles live(md);
    return live.known() ? allocate_run(md, size, {meets_live_file, &live}) : uint16_t{0};
}

uint16_t allocate_behind_files(const MediaDescriptor *md, uint32_t size, uint64_t end)
{
    const uint64_t largest = std::min(largest_position, volume_format(md->format).largest_location);
    // The stored start of the file area is a sum of two figures of the header and may have wrapped.
    uint64_t position = std::max({uint64_t{md->file_area_start}, uint64_t{md->dir_start} + md->dir_size, end});
    if (position > largest) return 0;
    if (md->records != 0 && position + size > md->records) return 0;
    return static_cast<uint16_t>(position);
}
}

int32_t get_alloc_table(MediaDescriptor *md, int32_t use_spare)
{
    log_file(3, "image_get_alloc_table(md=%lu, use_spare=%d)\n", log_pointer(md), use_spare);
    if (!volume_format(md->format).has_allocation_table) return 0;
    if (!entry_size_known(md)) return -1;
    refresh_medium(md);
    RunList list = {};
    int32_t result = read_runs(md, use_spare != 0 ? md->spare_alloc_start : md->alloc_start, &list);
    free_runs(md->alloc_list);
    md->alloc_list = sort_runs(list.head);
    if (result < 0) return -1;
    if (list.bytes != md->free_bytes) {
        log_file(1, "File table and allocation table report different free space (%lu vs. %lu)\n",
                 static_cast<unsigned long>(md->free_bytes), static_cast<unsigned long>(list.bytes));
    }
    return 0;
}

int32_t update_alloc_table(MediaDescriptor *md, int32_t use_spare)
{
    log_file(3, "image_update_alloc_table(md=%lu, use_spare=%d)\n", log_pointer(md), use_spare);
    if (!volume_format(md->format).has_allocation_table) return 0;
    uint32_t start = use_spare != 0 ? md->spare_alloc_start : md->alloc_start;
    refresh_medium(md);
    const Region table = {start, md->alloc_size};
    if (!entry_size_known(md) || !table_fits(md, table) || !spare_fits(md, md->alloc_start, table)) return -1;
    RunWriter writer = {md->alloc_list, false, false, 0};
    find_next_run(md, &writer);
    for (uint32_t record = 0; record < md->alloc_size; record++) {
        uint8_t bytes[RECORD_SIZE];
        fill_record(md, &writer, bytes);
        if (write_record(md, start + record, bytes) < 0) return -1;
    }
    if (writer.next != nullptr) log_file(1, "Allocation table is full, free space is lost\n");
    if (writer.lossy) log_file(1, "Allocation table can't hold all runs, free space is lost\n");
    if (writer.bytes != md->free_bytes) {
        log_file(1, "File and allocation table report different free space (%lu vs. %lu)\n",
                 static_cast<unsigned long>(md->free_bytes), static_cast<unsigned long>(writer.bytes));
    }
    return 0;
}

// The first record behind a file, by its logical records: damaged entries may give any figure. Those of a BDAT file
// leave its header record out, so that what the directory says of its size counts too.
uint64_t end_of_file(const FileInfo *info)
{
    uint64_t records = ((uint64_t{info->records} * info->record_len + 128) * 2 - 1) / RECORD_SIZE;
    return info->location + std::max(records, file_region(info).length);
}

namespace
{
// From the middle of a run: what is ahead of it stays one, with whatever stands there, what is behind it becomes
// another.
bool cut_run(AllocEntry *run, uint64_t start, uint32_t size)
{
    const uint64_t end = uint64_t{run->location} + run->size;
    const auto rest = static_cast<uint32_t>(end - start - size);
    if (rest != 0) {
        auto *behind = static_cast<AllocEntry *>(my_malloc(sizeof(AllocEntry)));
        if (behind == nullptr) return false;
        *behind = {static_cast<uint32_t>(start + size), rest, run->next};
        run->next = behind;
    }
    run->size = static_cast<uint32_t>(start - run->location);
    return true;
}

// On some media the spare tables stand among the files, and a new volume has one free run over all of it: where no run
// has room at its start, there may be some behind them.
uint16_t allocate_behind_spares(MediaDescriptor *md, uint32_t size, const FilesAsked &files)
{
    const uint64_t places[] = {uint64_t{md->spare_dir_start} + md->dir_size,
                               uint64_t{md->spare_alloc_start} + md->alloc_size};
    for (AllocEntry *run = md->alloc_list; run != nullptr; run = run->next) {
        for (const uint64_t place : places) {
            const bool inside = place > run->location && place + size <= uint64_t{run->location} + run->size;
            if (!inside || run->size >= largest_run || !may_hand_out(md, files, {place, size})) continue;
            return cut_run(run, place, size) ? static_cast<uint16_t>(place) : uint16_t{0};
        }
    }
    return 0;
}
}

bool is_system_space(const MediaDescriptor *md, Region region)
{
    const Region taken[] = {
        {0, 1},
        {md->dir_start, md->dir_size},
        {md->alloc_start, md->alloc_size},
        {md->spare_dir_start, md->dir_size},
        {md->spare_alloc_start, md->alloc_size},
    };
    auto meets = [region](const Region &table) { return table.length != 0 && overlap(table, region); };
    return std::any_of(std::begin(taken), std::end(taken), meets);
}

// Best fit: the smallest run that is large enough, of equal ones the first. A run that holds something else is no run.
uint16_t allocate_run(MediaDescriptor *md, uint32_t size, const FilesAsked &files)
{
    const uint32_t checked = std::max(size, uint32_t{1}); // an empty file has a place too
    AllocEntry **best = nullptr;
    // Kept: a run of 65535 or more records is never taken.  [KeepsRunsOf65535RecordsUnused]
    uint32_t best_size = largest_run;
    for (AllocEntry **link = &md->alloc_list; *link != nullptr; link = &(*link)->next) {
        const AllocEntry *run = *link;
        if (run->size < size || run->size >= best_size || !may_hand_out(md, files, {run->location, checked})) continue;
        best = link;
        best_size = run->size;
    }
    if (best == nullptr) return size == 0 ? uint16_t{0} : allocate_behind_spares(md, size, files);
    AllocEntry *run = *best;
    auto location = static_cast<uint16_t>(run->location);
    run->location += size;
    run->size -= size;
    if (run->size == 0) {
        *best = run->next;
        my_free(run);
    }
    return location;
}

uint16_t allocate_records(MediaDescriptor *md, uint32_t size, uint64_t end)
{
    log_file(3, "image_allocate(md=%lu, size=%u)\n", log_pointer(md), static_cast<unsigned>(size));
    if (size > largest_run) return 0;
    if (volume_format(md->format).has_allocation_table) return allocate_between_files(md, size);
    return allocate_behind_files(md, size, end);
}

uint16_t image_allocate(MediaDescriptor *md, uint32_t size)
{
    ListSurvey survey;
    survey_list(md, &survey);
    return allocate_records(md, size, survey.end);
}

void image_free_allocation(MediaDescriptor *md, uint32_t location, uint32_t size)
{
    log_file(3, "image_free_allocation(md=%lu, location=%lu, size=%lu)\n", log_pointer(md),
             static_cast<unsigned long>(location), static_cast<unsigned long>(size));
    // A run of nothing would take a slot of the table, and keep the runs on both sides apart.
    if (!volume_format(md->format).has_allocation_table || size == 0) return;
    const uint64_t end = uint64_t{location} + size;
    AllocEntry **link = &md->alloc_list;
    for (; *link != nullptr && (*link)->location <= location; link = &(*link)->next) {
        AllocEntry *run = *link;
        if (uint64_t{run->location} + run->size != location) continue;
        run->size += size;
        AllocEntry *next = run->next;
        if (next != nullptr && next->location == end) {
            run->size += next->size;
            run->next = next->next;
            my_free(next);
        }
        return;
    }
    if (*link != nullptr && (*link)->location == end) {
        (*link)->location = location;
        (*link)->size += size;
        return;
    }
    auto *run = static_cast<AllocEntry *>(my_malloc(sizeof(AllocEntry)));
    if (run == nullptr) {
        set_error(105, "");
        return;
    }
    *run = {location, size, *link};
    *link = run;
}
