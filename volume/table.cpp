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
constexpr uint32_t longest_entry = 32;     // bytes, of any format
constexpr uint32_t longest_component = 16; // characters of a path
constexpr uint64_t most_slots = 1'000'000; // of a tree, where directories share their files without an end

struct Options { // each 0 or not
    int32_t sort;
    int32_t check;
    int32_t repair;
    int32_t recursive;
    int32_t use_spare;
};

struct Frame {           // one directory on its way into a list
    Frame *outer;        // the directory that holds it, which is read on behind it; null for the first one
    FileInfo *directory; // null at the top level
    uint32_t level;
    DirectoryPlace place;
    uint32_t extent; // index
    uint64_t record; // index in it, of the one to be read next
    uint64_t slots;  // seen so far
    FileList list;
    bool loaded;     // there is a record, with entries still to be taken
    uint32_t number; // of that record on the medium
    uint32_t entry;  // number in the record, of the next one
    uint32_t offset; // of it in bytes
    uint8_t bytes[RECORD_SIZE];
    uint32_t carried; // bytes of an entry that began at the end of the record before
    uint8_t carry[longest_entry];
};

// Directories within directories are a chain of frames, so that no depth of nesting costs any stack.
struct Walk {
    MediaDescriptor *md;
    const VolumeFormat *format;
    Options options;
    Frame *frame;      // of the innermost directory
    const char *path;  // null: nothing is searched for
    uint32_t searched; // characters of its first component
    bool found;
    uint64_t slots; // in all directories
    uint32_t bytes; // taken by the files read so far
};

enum class Step : uint8_t { next, end, failed };

// ---- entries -------------------------------------------------------------------------------------------------

// An entry that can't be read is left out, or ends everything, as the caller wants. A purged one is no loss.
Step refuse_entry(Walk *walk, bool purged)
{
    if (walk->options.repair != 0) return Step::next;
    if (walk->md->state != nullptr && !purged) walk->md->state->refused_entries++;
    if (walk->options.check != 0) return Step::failed;
    const Frame *frame = walk->frame;
    log_file(1, "Corrupt directory data (%s) at block %d entry %d\n", global_error_info,
             static_cast<int>(frame->number), static_cast<int>(frame->entry));
    return Step::next;
}

bool is_searched(const Walk *walk, const FileInfo *info)
{
    return walk->format->locate_directory != nullptr && info->is_directory != 0 &&
           std::strlen(info->name) == walk->searched && std::memcmp(info->name, walk->path, walk->searched) == 0;
}

Step fail(uint32_t number, const char *words)
{
    set_error(number, "%s", words);
    return Step::failed;
}

void log_directory(const Walk *walk, const char *path, const FileInfo *directory, int32_t level)
{
    const Options &options = walk->options;
    log_file(
        3,
        "image_get_file_table(md=%lu, path=\"%s\", directory=%lu, level=%d, use_spare=%d, do_sort=%d, do_check=%d, "
        "do_repair=%d, recursive=%d)\n",
        log_pointer(walk->md), log_text(path), log_pointer(directory), level, options.use_spare, options.sort,
        options.check, options.repair, options.recursive);
}

int32_t check_level(int32_t level)
{
    if (level <= MAX_DIRECTORY_LEVEL) return 0;
    set_error(217, "maximum nesting level is %d", MAX_DIRECTORY_LEVEL);
    return -1;
}

// Finds out where the directory of a frame stands.
int32_t locate(const Walk *walk, Frame *frame)
{
    const MediaDescriptor *md = walk->md;
    if (walk->format->locate_directory != nullptr) {
        return walk->format->locate_directory(md, frame->directory, &frame->place);
    }
    const uint32_t start = walk->options.use_spare != 0 ? md->spare_dir_start : md->dir_start;
    frame->place = {.extents = {.extents = {{start, md->dir_size}}, .count = 1, .has_more = false},
                    .slots = ~uint64_t{0}};
    return 0;
}

Step enter(Walk *walk, FileInfo *directory)
{
    const uint32_t level = walk->frame->level + 1;
    log_directory(walk, nullptr, directory, static_cast<int32_t>(level));
    if (check_level(static_cast<int32_t>(level)) < 0) return Step::failed;
    auto *frame = static_cast<Frame *>(my_malloc(sizeof(Frame)));
    if (frame == nullptr) return fail(105, "");
    frame->directory = directory;
    frame->level = level;
    if (locate(walk, frame) < 0) {
        my_free(frame);
        return Step::failed;
    }
    frame->outer = walk->frame;
    walk->frame = frame;
    return Step::next;
}

Step take_entry(Walk *walk, FileInfo *info, uint32_t size)
{
    if (walk->path != nullptr) {
        walk->found = is_searched(walk, info);
        my_free(info);
        return walk->found ? Step::end : Step::next;
    }
    Frame *frame = walk->frame;
    info->level = frame->level;
    info->parent = frame->directory;
    append_to_list(&frame->list, info);
    walk->bytes += size; // Kept: purged files count too.  [KeepsPurgedFilesInUsedBytes]
    return walk->options.recursive != 0 && info->is_directory != 0 ? enter(walk, info) : Step::next;
}

Step read_entry(Walk *walk, const uint8_t *bytes)
{
    auto *info = static_cast<FileInfo *>(my_malloc(sizeof(FileInfo)));
    if (info == nullptr) return fail(105, "");
    uint32_t size = 0;
    int32_t result = get_file_info(walk->md, info, bytes, &size);
    if (result > 0) return take_entry(walk, info, size);
    bool purged = info->deleted != 0;
    my_free(info);
    return result == 0 ? Step::end : refuse_entry(walk, purged);
}

// ---- records -------------------------------------------------------------------------------------------------

// Brings in the next record. The length comes from the medium; what it claims behind the medium's end counts as one
// corrupt entry.
Step load_record(Walk *walk)
{
    Frame *frame = walk->frame;
    const ExtentList &list = frame->place.extents;
    while (frame->extent < list.count && frame->record >= list.extents[frame->extent].length) {
        frame->extent++;
        frame->record = 0;
    }
    if (frame->extent >= list.count) return Step::end;
    const uint64_t number = list.extents[frame->extent].start + frame->record;
    frame->number = static_cast<uint32_t>(number);
    frame->entry = 0;
    if (number >= end_record(walk->md)) {
        set_error(213, "directory reaches behind the end of the medium");
        return refuse_entry(walk, false) == Step::failed ? Step::failed : Step::end;
    }
    if (read_record(walk->md, frame->number, frame->bytes) < 0) return Step::failed;
    frame->offset = frame->extent == 0 && frame->record == 0 ? walk->format->first_entry : 0;
    frame->record++;
    frame->loaded = true;
    return Step::next;
}

// The next entry of the record in hand; null when it has no whole one left. One that straddles its end is put together
// when the next record is there.
const uint8_t *take_slot(Frame *frame, uint32_t entry_size)
{
    if (frame->carried != 0) {
        frame->offset = entry_size - frame->carried;
        std::memcpy(frame->carry + frame->carried, frame->bytes, frame->offset);
        frame->carried = 0;
        return frame->carry;
    }
    if (frame->offset + entry_size <= RECORD_SIZE) {
        const uint8_t *bytes = frame->bytes + frame->offset;
        frame->offset += entry_size;
        return bytes;
    }
    frame->carried = RECORD_SIZE - frame->offset;
    std::memcpy(frame->carry, frame->bytes + frame->offset, frame->carried);
    frame->loaded = false;
    return nullptr;
}

Step step(Walk *walk)
{
    Frame *frame = walk->frame;
    if (frame->slots >= frame->place.slots) return Step::end;
    if (!frame->loaded) return load_record(walk);
    const uint8_t *bytes = take_slot(frame, walk->md->dir_entry_size);
    if (bytes == nullptr) return Step::next;
    frame->slots++;
    walk->slots++;
    if (walk->format->locate_directory != nullptr && walk->slots > most_slots) return fail(105, "");
    const Step result = read_entry(walk, bytes);
    frame->entry++;
    return result;
}

// ---- directories ---------------------------------------------------------------------------------------------

void deliver_list(Walk *walk, Frame *frame)
{
    MediaDescriptor *md = walk->md;
    if (walk->options.sort != 0) sort_list(&frame->list);
    if (frame->outer == nullptr) image_free_directory(md, frame->directory);
    if (frame->directory != nullptr) {
        frame->directory->child = frame->list.head;
        return;
    }
    md->root = frame->list.head;
    md->cursor = md->root;
    if (walk->format->header_tells_free_space) return;
    md->used_bytes = walk->bytes;
    md->free_bytes = md->data_size - md->used_bytes;
}

// Hands over the list of the innermost directory. False when it was the first one.
bool leave(Walk *walk)
{
    Frame *frame = walk->frame;
    deliver_list(walk, frame);
    if (frame->outer == nullptr) return false;
    walk->frame = frame->outer;
    my_free(frame);
    return true;
}

// What was read before a failure stays.
Step read_tree(Walk *walk, Step result)
{
    do {
        while (result == Step::next) result = step(walk);
        if (result == Step::end) result = Step::next;
    } while (leave(walk));
    return result;
}

// The first component of a path, which alone is looked for; a path of separators is none.
void begin_search(Walk *walk, const char *path)
{
    if (path == nullptr || path[0] == '\0') return;
    if (walk->format->locate_directory != nullptr) {
        while (*path == '/') path++;
        if (*path == '\0') return;
    }
    walk->path = path;
    while (walk->searched < longest_component && path[walk->searched] != '\0' && path[walk->searched] != '/') {
        walk->searched++;
    }
}

void begin_state(const Walk *walk)
{
    MediaDescriptor *md = walk->md;
    refresh_medium(md);
    if (walk->frame->directory != nullptr || md->state == nullptr) return;
    md->state->refused_entries = 0;
    md->state->only_searched = walk->path != nullptr;
}
}

int32_t get_file_table(MediaDescriptor *md, const char *path, FileInfo *directory, int32_t level, int32_t use_spare,
                       int32_t do_sort, int32_t do_check, int32_t do_repair, int32_t recursive)
{
    const VolumeFormat &format = volume_format(md->format);
    Frame first = {};
    first.directory = directory;
    first.level = level < 1 ? 1 : static_cast<uint32_t>(level);
    Walk walk = {};
    walk.md = md;
    walk.format = &format;
    walk.options = {do_sort, do_check, do_repair, recursive, use_spare};
    walk.frame = &first;
    log_directory(&walk, path, directory, level);
    if (use_spare != 0 && !format.reads_spare_directory) return 0;
    if (check_level(level) < 0) return -1;
    begin_search(&walk, path);
    begin_state(&walk);
    const Step begin = locate(&walk, &first) < 0 ? Step::failed : Step::next;
    const bool searches = walk.path != nullptr && first.place.slots != 0;
    if (md->dir_entry_size == 0 || md->dir_entry_size > longest_entry) first.place.slots = 0;
    const Step result = read_tree(&walk, begin);
    // Kept: a path only serves to test; it lists nothing.  [KeepsPathSearchListingNothing]
    if (searches && !walk.found && result != Step::failed) {
        output_text("No match found.\n");
        output_flush();
    }
    return result == Step::failed ? -1 : 0;
}
