// From a target string to an open medium, and back.
#include "volume/open.h"

#include <cstring>

#include "base/error.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "base/memory.h"
#include "platform/platform.h"
#include "volume/access.h"
#include "volume/allocation.h"
#include "volume/table.h"
#include "volume/target.h"

namespace
{
struct Request {
    OpenOrder order;
    char filespec[FILE_PATH_SIZE];
};

void copy_options(MediaDescriptor *md, const MediaDescriptor *format)
{
    if (format == nullptr) return;
    md->use_file_conversion = format->use_file_conversion;
    md->use_type_names = format->use_type_names;
    md->use_typed_extensions = format->use_typed_extensions;
    md->use_file_headers = format->use_file_headers;
    md->prefer_hfs = format->prefer_hfs;
    md->show_purged = format->show_purged;
    md->size = format->size;
}

int32_t open_medium(MediaDescriptor *md, const char *target, Request *request)
{
    OpenOrder *order = &request->order;
    if (parse_target(target, md->msus, request->filespec, &md->access, &order->address, &order->unit, &order->volume,
                     &order->drive_num) < 0) {
        return -1;
    }
    const MediumAccess *access = medium_access(md);
    return access == nullptr ? -1 : access->open(md, *order);
}

int32_t read_volume(MediaDescriptor *md, const Request &request)
{
    uint16_t flags = request.order.flags;
    if (get_media_info(md) < 0) return -1;
    if (md->format == FORMAT_HFS) {
        set_error(203, "HFS file system not yet supported");
        return -1;
    }
    // A directory that is damaged, or a table that can't be read, still leaves a medium with what was readable.
    int32_t result =
        get_file_table(md, request.filespec, nullptr, 0, 0, (flags & OPEN_SORT) != 0, (flags & OPEN_CHECK) != 0,
                       (flags & OPEN_REPAIR) != 0, (flags & OPEN_RECURSIVE) != 0);
    if (md->state != nullptr) md->state->table_result = result;
    get_alloc_table(md, 0);
    return 0;
}

// Releases a record whose medium isn't open.
void release_record(MediaDescriptor *md)
{
    my_free(md->state);
    my_free(md);
}

void free_list(FileInfo *info)
{
    while (info != nullptr) {
        FileInfo *next = info->next;
        if (info->child != nullptr) {
            // The children take the entry's place in the list, so that no depth of nesting costs any stack.
            FileInfo *last = info->child;
            while (last->next != nullptr) last = last->next;
            last->next = next;
            next = info->child;
        }
        my_free(info);
        info = next;
    }
}
}

MediaDescriptor *image_open(const char *target, const MediaDescriptor *format, uint16_t flags)
{
    log_file(3, "image_open(target=\"%s\", format=%lu, flags=$%04X)\n", log_text(target), log_pointer(format),
             static_cast<unsigned>(flags));
    auto *md = static_cast<MediaDescriptor *>(my_malloc(sizeof(MediaDescriptor)));
    if (md == nullptr) {
        set_error(105, "");
        return nullptr;
    }
    md->file = platform_void_file;
    copy_options(md, format);
    Request request = {};
    request.order.format = format;
    request.order.flags = flags;
    if (open_medium(md, target, &request) < 0) {
        uint32_t reason = platform_last_error();
        release_record(md);
        platform_set_last_error(reason);
        return nullptr;
    }
    if ((flags & OPEN_READ_VOLUME) != 0 && read_volume(md, request) < 0) {
        image_close(md);
        return nullptr;
    }
    return md;
}

void image_close(MediaDescriptor *md)
{
    log_file(3, "image_close(md=%lu)\n", log_pointer(md));
    if (md == nullptr) return;
    const MediumAccess *access = medium_access(md);
    if (access != nullptr && access->close != nullptr) access->close(md);
    image_free_directory(md, nullptr);
    for (AllocEntry *run = md->alloc_list; run != nullptr;) {
        AllocEntry *next = run->next;
        my_free(run);
        run = next;
    }
    my_free(md->inode_table);
    release_record(md);
}

void image_free_directory(MediaDescriptor *md, FileInfo *directory)
{
    log_file(3, "image_free_directory(md=%lu, directory=%lu)\n", log_pointer(md), log_pointer(directory));
    if (directory != nullptr) {
        free_list(directory->child);
        directory->child = nullptr;
        return;
    }
    if (md == nullptr) return;
    free_list(md->root);
    md->root = nullptr;
    md->cursor = nullptr;
}
