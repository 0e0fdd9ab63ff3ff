// Operations on files of an open medium.
#include "volume/operations.h"

#include "base/error.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "base/memory.h"
#include "volume/allocation.h"

namespace
{
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
} // namespace

int32_t image_delete_file(MediaDescriptor *md, FileInfo *info, int32_t mark_only)
{
    log_file(3, "image_delete_file(md=%lu, info=%lu, mark_only=%d)\n", log_pointer(md), log_pointer(info), mark_only);
    // Kept: records are taken off bytes; the next table counts anew.  [KeepsRecordsTakenOffUsedBytes]
    md->used_bytes -= info->records;
    md->free_bytes = md->data_size - md->used_bytes;
    image_free_allocation(md, info->location, info->records);
    if (mark_only != 0) {
        info->deleted = 1;
        return 0;
    }
    unlink_entry(md, info);
    my_free(info);
    return 0;
}

int32_t image_copy_file(MediaDescriptor *md, FileInfo *from_file, MediaDescriptor *dest_md, const char *to_file,
                        int32_t overwrite)
{
    log_file(3,
             "image_copy file(md=%lu, from_file=%lu, dest_md=%lu, "
             "to_file=\"%s\", overwrite=%d)\n",
             log_pointer(md), log_pointer(from_file), log_pointer(dest_md), log_text(to_file), overwrite);
    set_error(109, "copy on a medium");
    return -1;
}
