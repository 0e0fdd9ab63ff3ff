// Operations on files of an open medium.
#include "volume/operations.h"

#include <algorithm>
#include <cstring>

#include "base/convert.h"
#include "base/error.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "base/memory.h"
#include "volume/access.h"
#include "volume/allocation.h"
#include "volume/copy_inner.h"
#include "volume/filetypes.h"
#include "volume/format.h"
#include "volume/names.h"
#include "volume/navigate.h"
#include "volume/new_entry.h"
#include "volume/open.h"
#include "volume/operations_inner.h"
#include "volume/table.h"
#include "volume/type_map.h"
#include "volume/type_text.h"

namespace
{
constexpr uint32_t default_record_len = 128; // words

void unlink_entry(MediaDescriptor *md, FileInfo *info)
{
    if (md->cursor == info) md->cursor = info->next;
    if (info->next != nullptr) info->next->prev = info->prev;
    if (info->prev != nullptr) {
        info->prev->next = info->next;
    } else if (info->parent != nullptr) {
        info->parent->child = info->next;
    } else {
        md->root = info->next;
    }
}

uint32_t records_of(const FileInfo &info)
{
    return static_cast<uint32_t>((uint64_t{info.size} + RECORD_SIZE - 1) / RECORD_SIZE);
}

// A name without a length of its own takes none away. How many logical records the file has follows where it isn't as
// long as before, so that its entry still says all of it.
void keep_length(const MediaDescriptor *md, const FileInfo *from_file, const MediaDescriptor *dest_md, FileInfo *copy)
{
    if (copy->record_len == default_record_len) copy->record_len = from_file->record_len;
    if (copy->record_len == 0) copy->record_len = default_record_len;
    if (copy->record_len == from_file->record_len && md->format == dest_md->format) return;
    const uint64_t length = uint64_t{copy->record_len} * 2;
    copy->records = static_cast<uint32_t>((copy->size + length - 1) / length);
}

// A type that the new name gives is the target's own already; the old file's becomes what it is called there.
void describe_copy(const MediaDescriptor *md, const FileInfo *from_file, const MediaDescriptor *dest_md,
                   const char *to_file, FileInfo *copy)
{
    char system[sizeof from_file->system_string + 1] = {};
    std::memcpy(system, from_file->system_string, sizeof from_file->system_string);
    process_filepath(dest_md, copy, to_file, system, 1);
    keep_length(md, from_file, dest_md, copy);
    if (copy->type != from_file->type || md->format == dest_md->format) return;
    copy->type = map_type(md->format, dest_md->format, copy->type);
    char text[TYPE_TEXT_SIZE];
    get_filetype(dest_md, text, copy->type, copy->name);
    set_type_text(copy, text);
}

int32_t file_error(uint32_t number, const FileInfo *info)
{
    set_error(number, "file \"%s\"", info->name);
    return -1;
}

// What a damaged entry claims beyond its volume isn't copied. An image may have lost its last records.
bool lies_on_volume(MediaDescriptor *md, const FileInfo *info)
{
    const uint64_t end = std::max<uint64_t>(md->records, end_record(md));
    return end == 0 || uint64_t{info->location} + records_of(*info) <= end;
}

int32_t make_way(const MediaDescriptor *md, const FileInfo *from_file, MediaDescriptor *dest_md, const CopyOrder &order,
                 FileInfo *copy, Copying *done)
{
    // Kept: a name of the HP character set is turned too, and once more for its entry.  [KeepsCopiedNamesTurnedTwice]
    string_win2hp(copy->name, copy->name, 1);
    if (md == dest_md && std::strcmp(copy->name, from_file->name) == 0) return file_error(208, copy);
    FileInfo *old = image_find_file(dest_md, dest_md->root, copy->name, 0);
    if (old == nullptr) return 0;
    if (!order.overwrite) return file_error(210, copy);
    if (check_entry(dest_md, copy) < 0) return -1;
    image_delete_file(dest_md, old, 0);
    done->deleted_old = true;
    return 0;
}
}

int32_t image_delete_file(MediaDescriptor *md, FileInfo *info, int32_t mark_only)
{
    log_file(3, "image_delete_file(md=%lu, info=%lu, mark_only=%d)\n", log_pointer(md), log_pointer(info), mark_only);
    // Kept: records are taken off bytes; the next table counts anew.  [KeepsRecordsTakenOffUsedBytes]
    md->used_bytes -= info->records;
    md->free_bytes = md->data_size - md->used_bytes;
    // What is purged already has given its records back.
    if (info->deleted == 0) image_free_allocation(md, info->location, records_of(*info));
    if (mark_only != 0) {
        info->deleted = 1;
        return 0;
    }
    unlink_entry(md, info);
    if (info->child != nullptr) image_free_directory(md, info);
    my_free(info);
    return 0;
}

Copying copy_file(MediaDescriptor *md, const FileInfo *from_file, MediaDescriptor *dest_md, const CopyOrder &order)
{
    Copying done;
    FileInfo copy = *from_file;
    if (!lies_on_volume(md, from_file)) {
        file_error(211, from_file);
        return done;
    }
    describe_copy(md, from_file, dest_md, order.to_file, &copy);
    if (copy.records > volume_format(dest_md->format).most_records) {
        file_error(211, &copy); // before an old file gives way
        return done;
    }
    if (make_way(md, from_file, dest_md, order, &copy, &done) < 0) return done;
    done.entry = create_entry(dest_md, &copy, nullptr);
    if (done.entry == nullptr) return done;
    bool stopped = false;
    const BlockCopy blocks = {.from = md,
                              .from_start = from_file->location,
                              .to = dest_md,
                              .to_start = copy.location,
                              .count = records_of(*from_file),
                              .progress = order.progress};
    done.result = order.only_plan ? 0 : copy_blocks(blocks, &stopped);
    done.whole = done.result == 0 && !stopped && !order.only_plan;
    return done;
}

int32_t image_copy_file(MediaDescriptor *md, FileInfo *from_file, MediaDescriptor *dest_md, const char *to_file,
                        int32_t overwrite)
{
    log_file(3,
             "image_copy file(md=%lu, from_file=%lu, dest_md=%lu, "
             "to_file=\"%s\", overwrite=%d)\n",
             log_pointer(md), log_pointer(from_file), log_pointer(dest_md), log_text(to_file), overwrite);
    if (md == nullptr || from_file == nullptr || dest_md == nullptr) {
        set_error(103, "Null pointer");
        return -1;
    }
    const CopyOrder order = {.to_file = to_file, .overwrite = overwrite != 0, .progress = standard_progress_callback};
    return copy_file(md, from_file, dest_md, order).result;
}

bool may_be_called(const MediaDescriptor *md, const FileInfo *entry, const char *name)
{
    char type[type_text_size];
    char message[NAME_MESSAGE_SIZE];
    type_text(entry, type);
    const size_t length = std::min<size_t>(std::strlen(name), volume_format(md->format).name_limit);
    const bool blank = std::strspn(name, " \t") >= length;
    if (check_valid_filename(md->format, blank ? "" : name, type, message) == 0) return true;
    set_error(212, "file \"%s\": %s", name, message);
    return false;
}

int32_t update_tables(MediaDescriptor *md)
{
    const bool written = update_file_table(md, 0) == 0 && update_file_table(md, 1) == 0 &&
                         update_alloc_table(md, 0) == 0 && update_alloc_table(md, 1) == 0;
    return written ? 0 : -1;
}
