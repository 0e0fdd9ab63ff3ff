// Files out of a medium and into it.
#include <cstring>
#include <new>

#include "base/convert.h"
#include "base/error.h"
#include "base/file.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "platform/platform.h"
#include "plugin/checks.h"
#include "plugin/entry_log.h"
#include "plugin/state.h"
#include "volume/extract_inner.h"
#include "volume/insert_inner.h"
#include "volume/navigate.h"
#include "volume/operations.h"
#include "volume/type_text.h"

namespace
{
constexpr uint32_t out_of_memory = 105;
constexpr uint32_t target_exists = 210;
constexpr uint32_t default_record_len = 128;

void remember_temporary_name(const char *local_name)
{
    if (std::strlen(local_name) < sizeof plugin.temporary_name) {
        std::memcpy(plugin.temporary_name, local_name, std::strlen(local_name) + 1);
    }
}

// The directory of a remote name: the list that holds its last component; false
// when there is no such directory.
bool find_directory(const char *remote_name, FileInfo **ret_directory)
{
    MediaDescriptor *md = plugin.medium;
    *ret_directory = md->root;
    size_t length = static_cast<size_t>(last_component(remote_name) - remote_name);
    char path[4 * FILE_PATH_SIZE];
    if (length == 0) return true;
    if (length >= sizeof path) return false;
    std::memcpy(path, remote_name, length);
    path[length] = '\0';
    const char separator[] = {platform_separator(), '\0'};
    return image_change_directory(md, nullptr, path, separator, ret_directory) == 0;
}

uint16_t extraction_flags(int32_t copy_flags, const char *local_name)
{
    uint16_t flags = (copy_flags & COPY_OVERWRITE) != 0 ? EXTRACT_OVERWRITE : 0;
    if (plugin.medium->use_file_conversion == 0) return flags;
    flags |= EXTRACT_CONVERT;
    if (platform_is_host_temporary(local_name)) {
        remember_temporary_name(local_name);
    } else {
        flags |= EXTRACT_TXT;
    }
    return flags;
}

uint16_t insertion_flags(int32_t copy_flags, const char *local_name)
{
    uint16_t flags = (copy_flags & COPY_OVERWRITE) != 0 ? INSERT_OVERWRITE : 0;
    if (plugin.medium->use_file_conversion == 0) return flags;
    bool temporary = plugin.temporary_name[0] != '\0' && std::strcmp(local_name, plugin.temporary_name) == 0;
    return static_cast<uint16_t>(flags | INSERT_CONVERT | (temporary ? INSERT_FORCE : INSERT_TXT));
}

// After a failed engine call: what the host gets for it.
int32_t transfer_failure(bool tell_existing)
{
    bool exists = global_error == target_exists;
    // Kept: of a target that exists only a copy out tells by words too.  [KeepsWordsForExistingTargetOutwardOnly]
    if (!exists || tell_existing) plugin_report_error();
    return exists ? FILE_EXISTS : FILE_READ_FAILED;
}

// The two ways into the engine, with the log line of the exported function and nothing thrown beyond here.

Extraction copy_out(const FileInfo *info, const char *local_name, uint16_t flags)
{
    MediaDescriptor *md = plugin.medium;
    log_file(3,
             "image_extract_file(md=%lu, info=%lu, destination=\"%s\", to_file=\"%s\", ret_filename=%lu, flags=%X, "
             "progress=%lu)\n",
             log_pointer(md), log_pointer(info), log_text(nullptr), local_name, log_pointer(nullptr),
             static_cast<unsigned>(flags), log_callback(my_progress));
    try {
        return extract_file(md, info, {.to_file = local_name, .flags = flags, .progress = my_progress});
    } catch (const std::bad_alloc &) {
        set_error(out_of_memory, "");
        return {};
    }
}

Insertion copy_in(FileInfo *info, const char *local_name, uint16_t flags)
{
    MediaDescriptor *md = plugin.medium;
    log_file(3, "image_add_file(md=%lu, new_file=%lu, from_filename=\"%s\", flags=%X, progress=%lu)\n", log_pointer(md),
             log_pointer(info), local_name, static_cast<unsigned>(flags), log_callback(my_progress));
    try {
        return insert_file(md, info, {.name = local_name, .flags = flags, .progress = my_progress});
    } catch (const std::bad_alloc &) {
        set_error(out_of_memory, "");
        return {};
    }
}

// Whether the original of a move may go: not when the host has but a part of it, nor once the user wanted to stop.
bool original_may_go(int32_t copy_flags, bool whole)
{
    return (copy_flags & COPY_MOVE) != 0 && whole && !plugin.aborted;
}
} // namespace

int32_t FsGetFile(const char *remote_name, char *local_name, int32_t copy_flags, void *remote_info)
{
    log_entry("FsGetFile(RemoteName=\"%s\", LocalName=\"%s\", CopyFlags=%d, ri=%lu)\n", log_text(remote_name),
              log_text(local_name), copy_flags, log_pointer(remote_info));
    if ((copy_flags & COPY_RESUME) != 0) return FILE_NOT_SUPPORTED;
    if (plugin.medium == nullptr || remote_name == nullptr || local_name == nullptr) {
        platform_set_last_error(error_aborted);
        return FILE_READ_FAILED;
    }
    int32_t refused = 0;
    if ((copy_flags & COPY_MOVE) != 0 &&
        !may_change(FILE_READ_FAILED, "File delete within SDF file system is currently not supported.", &refused)) {
        return refused;
    }
    FileInfo *directory = nullptr;
    if (!find_directory(remote_name, &directory)) {
        platform_set_last_error(error_no_more_files);
        return FILE_READ_FAILED;
    }
    FileInfo *info = find_by_visible_name(directory, last_component(remote_name));
    if (info == nullptr) return FILE_NOT_FOUND;
    begin_progress(remote_name, local_name);
    const Extraction extraction = copy_out(info, local_name, extraction_flags(copy_flags, local_name));
    if (extraction.result < 0) return transfer_failure(true);
    my_progress(nullptr, 0, 100);
    if (!original_may_go(copy_flags, extraction.whole)) return FILE_OK;
    image_delete_file(plugin.medium, info, 0);
    return write_tables() ? FILE_OK : FILE_READ_FAILED;
}

int32_t FsPutFile(char *local_name, const char *remote_name, int32_t copy_flags)
{
    log_entry("FsPutFile(LocalName=\"%s\", RemoteName=\"%s\", CopyFlags=%d)\n", log_text(local_name),
              log_text(remote_name), copy_flags);
    if ((copy_flags & COPY_RESUME) != 0) return FILE_NOT_SUPPORTED;
    int32_t refused = 0;
    if (!may_change(FILE_READ_FAILED, "Transfer of files into SDF file system is currently not supported.", &refused)) {
        return refused;
    }
    if (local_name == nullptr || remote_name == nullptr) return FILE_READ_FAILED;
    FileInfo info = {};
    get_current_datetime(&info.date);
    info.record_len = default_record_len;
    set_system_text(&info, plugin.system_string);
    begin_progress(local_name, remote_name);
    uint16_t flags = insertion_flags(copy_flags, local_name);
    // Kept: the file keeps its local name, whatever the remote one says.  [KeepsLocalNameOfACopyIn]
    const Insertion insertion = copy_in(&info, local_name, flags);
    if (insertion.result < 0) return transfer_failure(false);
    my_progress(nullptr, 0, 100);
    if ((flags & INSERT_FORCE) != 0) plugin.temporary_name[0] = '\0';
    // The local file goes once the tables that name its copy are written.
    if (!write_tables()) return FILE_READ_FAILED;
    if (original_may_go(copy_flags, insertion.whole) && file_delete(local_name) < 0) plugin_report_error();
    return FILE_OK;
}
