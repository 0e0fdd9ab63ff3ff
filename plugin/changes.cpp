// Changes to entries of a medium: name, place in the directory, attributes,
// date.
#include <cstdio>
#include <cstring>

#include "base/convert.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "platform/platform.h"
#include "plugin/checks.h"
#include "plugin/entry_log.h"
#include "plugin/state.h"
#include "volume/format.h"
#include "volume/names.h"
#include "volume/operations.h"

namespace
{
constexpr int32_t done = 1;
constexpr int32_t failed = 0;

FileInfo *find_at_top(const char *path)
{
    return find_by_visible_name(plugin.medium->root, last_component(path));
}

// The record that says what the renamed or copied file is to be.
void fill_target(FileInfo *target, const char *new_name)
{
    const char *component = last_component(new_name);
    if (plugin.medium->use_typed_extensions != 0) {
        process_filepath(plugin.medium, target, component, nullptr, 0);
        plugin_message("filename=%s", target->name);
        return;
    }
    size_t length = strnlen(component, sizeof target->name - 1);
    std::memcpy(target->name, component, length);
    target->name[length] = '\0';
}

// Only the name changes; the type stays, whatever the new extension says.
void rename_entry(FileInfo *info, const char *name)
{
    size_t limit = volume_format(plugin.medium->format).name_limit;
    std::memset(info->name, 0, limit + 1);
    std::memcpy(info->name, name, strnlen(name, limit));
}

int32_t copy_entry(FileInfo *info, FileInfo *target, bool overwrite)
{
    if (image_copy_file(plugin.medium, info, plugin.medium, target->name, overwrite) >= 0) return FILE_OK;
    plugin_report_error();
    return FILE_WRITE_FAILED;
}
} // namespace

int32_t FsRenMovFile(const char *old_name, const char *new_name, int32_t move, int32_t overwrite, void *remote_info)
{
    log_entry("FsRenMovFile(OldName=\"%s\", NewName=\"%s\", Move=%d, "
              "OverWrite=%d, ri=%lu)\n",
              log_text(old_name), log_text(new_name), move, overwrite, log_pointer(remote_info));
    int32_t refused = 0;
    if (!may_change(FILE_WRITE_FAILED,
                    "Rename/move of files within SDF file system is currently "
                    "not supported.",
                    &refused)) {
        return refused;
    }
    if (old_name == nullptr || new_name == nullptr) return FILE_WRITE_FAILED;
    FileInfo *info = find_at_top(old_name);
    if (info == nullptr) return FILE_NOT_FOUND;
    FileInfo target = {};
    FileInfo *found = find_at_top(new_name);
    if (found != nullptr) {
        if (overwrite == 0) return FILE_EXISTS;
        if (found == info && move != 0) return FILE_OK; // a file takes its own place
        target = *found;
        // A copy takes the file's place itself; one that fails leaves nothing for a later write to lose.
        if (move != 0) image_delete_file(plugin.medium, found, 0);
    }
    fill_target(&target, new_name);
    begin_progress(old_name, new_name);
    int32_t result = FILE_OK;
    if (move != 0) {
        rename_entry(info, target.name);
    } else {
        result = copy_entry(info, &target, overwrite != 0);
    }
    if (result != FILE_OK) return result;
    my_progress(nullptr, 0, 100);
    return write_tables() ? FILE_OK : FILE_WRITE_FAILED;
}

int32_t FsDeleteFile(const char *remote_name)
{
    log_entry("FsDeleteFile(RemoteName=\"%s\")\n", log_text(remote_name));
    int32_t refused = 0;
    if (!may_change(failed, "File delete within SDF file system is currently not supported.", &refused)) {
        return refused;
    }
    FileInfo *info = remote_name == nullptr ? nullptr : find_at_top(remote_name);
    if (info == nullptr) return failed;
    if (image_delete_file(plugin.medium, info, 0) < 0) {
        plugin_report_error();
        return failed;
    }
    return write_tables() ? done : failed;
}

int32_t FsSetAttr(const char *remote_name, int32_t new_attributes)
{
    log_entry("FsSetAttr(RemoteName=\"%s\", NewAttr=%d)\n", log_text(remote_name), new_attributes);
    int32_t refused = 0;
    if (!may_change(failed,
                    "Changing file attributes within SDF file system is "
                    "currently not supported.",
                    &refused)) {
        return refused;
    }
    FileInfo *info = remote_name == nullptr ? nullptr : find_at_top(remote_name);
    if (info == nullptr) return failed;
    info->attributes = 0;
    if ((new_attributes & 1) != 0) info->attributes |= ATTRIBUTE_READ_ONLY;
    if ((new_attributes & 2) != 0) info->attributes |= ATTRIBUTE_HIDDEN;
    if ((new_attributes & 4) != 0) info->attributes |= ATTRIBUTE_SYSTEM;
    return write_tables() ? done : failed;
}

int32_t FsSetTime(const char *remote_name, const HostTime *creation, const HostTime *last_access,
                  const HostTime *last_write)
{
    log_entry("FsSetTime(RemoteName=\"%s\", CreationTime=%lu, "
              "LastAccessTime=%lu, LastWriteTime=%lu)\n",
              log_text(remote_name), log_pointer(creation), log_pointer(last_access), log_pointer(last_write));
    int32_t refused = 0;
    if (!may_change(failed,
                    "Changing file time within SDF file system is currently not "
                    "supported.",
                    &refused)) {
        return refused;
    }
    FileInfo *info = remote_name == nullptr ? nullptr : find_at_top(remote_name);
    if (info == nullptr || last_write == nullptr) return failed;
    SystemTime time;
    if (!platform_time_parts(uint64_t{last_write->high} << 32 | last_write->low, &time)) return failed;
    // Kept: no change of zone here, unlike in a listing.  [KeepsUniversalTimeInDirectory]
    SystemTime2tm(&info->date, &time);
    return write_tables() ? done : failed;
}
