// Reads a directory into a list.
#include "volume/table.h"

#include <cstring>

#include "base/error.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "base/memory.h"
#include "base/output.h"
#include "volume/access.h"
#include "volume/entries.h"
#include "volume/format.h"
#include "volume/list.h"
#include "volume/open.h"

namespace
{
constexpr uint32_t longest_entry = 32; // bytes, of any format

struct Options {
    bool sort;
    bool check;
    bool repair;
    bool recursive;
    bool use_spare;
};

struct Walk { // one directory on its way into a list
    MediaDescriptor *md;
    FileInfo *directory; // null at the top level
    const VolumeFormat *format;
    Options options;
    uint32_t level;
    bool searching; // for a directory by its path: nothing is listed
    uint32_t start; // first record of the directory
    FileList list;
    uint32_t bytes;   // taken by the files read so far
    uint32_t carried; // bytes of an entry that began at the end of the record before
    uint8_t carry[longest_entry];
};

enum class Step : uint8_t { next, end, failed };

// An entry that can't be read is left out, or ends everything, as the caller wants. A purged one is no loss.
Step refuse_entry(Walk *walk, uint32_t record, uint32_t entry, bool purged)
{
    if (walk->options.repair) return Step::next;
    if (walk->md->state != nullptr && !purged) walk->md->state->refused_entries++;
    if (walk->options.check) return Step::failed;
    log_file(1, "Corrupt directory data (%s) at block %d entry %d\n", global_error_info,
             static_cast<int>(walk->start + record), static_cast<int>(entry));
    return Step::next;
}

Step take_entry(Walk *walk, FileInfo *info, uint32_t size)
{
    if (walk->searching) {
        my_free(info); // formats without directories hold nothing that a path could lead to
        return Step::next;
    }
    info->level = walk->level;
    info->parent = walk->directory;
    append_to_list(&walk->list, info);
    walk->bytes += size; // Kept: purged files count too.  [KeepsPurgedFilesInUsedBytes]
    if (!walk->options.recursive || info->is_directory == 0) return Step::next;
    const Options &options = walk->options;
    int32_t result = get_file_table(walk->md, nullptr, info, static_cast<int32_t>(walk->level) + 1, options.use_spare,
                                    options.sort, options.check, options.repair, 1);
    return result < 0 ? Step::failed : Step::next;
}

Step read_entry(Walk *walk, const uint8_t *bytes, uint32_t record, uint32_t entry)
{
    auto *info = static_cast<FileInfo *>(my_malloc(sizeof(FileInfo)));
    if (info == nullptr) {
        set_error(105, "");
        return Step::failed;
    }
    uint32_t size = 0;
    int32_t result = get_file_info(walk->md, info, bytes, &size);
    if (result > 0) return take_entry(walk, info, size);
    bool purged = info->deleted != 0;
    my_free(info);
    return result == 0 ? Step::end : refuse_entry(walk, record, entry, purged);
}

// An entry that straddles the end of a record is put together when the next one is there.
Step read_entries(Walk *walk, const uint8_t *record_bytes, uint32_t record)
{
    const uint32_t entry_size = walk->md->dir_entry_size;
    uint32_t offset = record == 0 ? walk->format->first_entry : 0;
    uint32_t entry = 0;
    if (walk->carried != 0) {
        offset = entry_size - walk->carried;
        std::memcpy(walk->carry + walk->carried, record_bytes, offset);
        Step step = read_entry(walk, walk->carry, record, entry++);
        if (step != Step::next) return step;
    }
    for (; offset + entry_size <= RECORD_SIZE; entry++, offset += entry_size) {
        Step step = read_entry(walk, record_bytes + offset, record, entry);
        if (step != Step::next) return step;
    }
    walk->carried = RECORD_SIZE - offset;
    std::memcpy(walk->carry, record_bytes + offset, walk->carried);
    return Step::next;
}

// The length comes from the medium; what it claims behind the medium's end counts as one corrupt entry.
Step read_records(Walk *walk)
{
    const uint64_t end = end_record(walk->md);
    uint8_t bytes[RECORD_SIZE];
    for (uint32_t record = 0; record < walk->md->dir_size; record++) {
        uint64_t number = uint64_t{walk->start} + record;
        if (number >= end) {
            set_error(213, "directory reaches behind the end of the medium");
            return refuse_entry(walk, record, 0, false) == Step::failed ? Step::failed : Step::end;
        }
        if (read_record(walk->md, static_cast<uint32_t>(number), bytes) < 0) return Step::failed;
        Step step = read_entries(walk, bytes, record);
        if (step != Step::next) return step;
    }
    return Step::end;
}

void deliver_list(Walk *walk)
{
    MediaDescriptor *md = walk->md;
    if (walk->options.sort) sort_list(&walk->list);
    image_free_directory(md, walk->directory);
    if (walk->directory != nullptr) {
        walk->directory->child = walk->list.head;
        return;
    }
    md->root = walk->list.head;
    md->cursor = md->root;
    md->used_bytes = walk->bytes;
    md->free_bytes = md->data_size - md->used_bytes;
}
}

int32_t get_file_table(MediaDescriptor *md, const char *path, FileInfo *directory, int32_t level, int32_t use_spare,
                       int32_t do_sort, int32_t do_check, int32_t do_repair, int32_t recursive)
{
    log_file(
        3,
        "image_get_file_table(md=%lu, path=\"%s\", directory=%lu, level=%d, use_spare=%d, do_sort=%d, do_check=%d, "
        "do_repair=%d, recursive=%d)\n",
        log_pointer(md), log_text(path), log_pointer(directory), level, use_spare, do_sort, do_check, do_repair,
        recursive);
    const VolumeFormat &format = volume_format(md->format);
    if (use_spare != 0 && !format.reads_spare_directory) return 0;
    if (level > MAX_DIRECTORY_LEVEL) {
        set_error(217, "maximum nesting level is %d", MAX_DIRECTORY_LEVEL);
        return -1;
    }
    Walk walk = {};
    walk.md = md;
    walk.directory = directory;
    walk.format = &format;
    walk.options = {do_sort != 0, do_check != 0, do_repair != 0, recursive != 0, use_spare != 0};
    walk.level = level < 1 ? 1 : static_cast<uint32_t>(level);
    walk.searching = path != nullptr && path[0] != '\0';
    walk.start = use_spare != 0 ? md->spare_dir_start : md->dir_start;
    refresh_medium(md);
    if (directory == nullptr && md->state != nullptr) {
        md->state->refused_entries = 0;
        md->state->only_searched = walk.searching;
    }
    bool readable = md->dir_entry_size > 0 && md->dir_entry_size <= longest_entry;
    Step step = readable ? read_records(&walk) : Step::end;
    // Kept: a path only serves to test; it lists nothing.  [KeepsPathSearchListingNothing]
    if (walk.searching && step != Step::failed) {
        output_text("No match found.\n");
        output_flush();
    }
    deliver_list(&walk);
    return step == Step::failed ? -1 : 0;
}
