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
#include "volume/operations_inner.h"

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

// The name from which the engine makes that of the target: it adds the marker of a Pascal type itself.
const char *name_of_copy(const FileInfo *info, const FileInfo *target, char *plain)
{
    const uint32_t format = plugin.medium->format;
    FileInfo trial = *info;
    decode_filename(target, format, plain);
    encode_filename(&trial, format, plain);
    return std::strcmp(trial.name, target->name) == 0 ? plain : target->name;
}

// The engine's copy, with the log line of its exported function. The list may have lost the file that gave way, and
// hold one that isn't whole: a failed copy leaves none of that for the next write.
int32_t copy_entry(const FileInfo *info, const FileInfo *target, bool overwrite)
{
    MediaDescriptor *md = plugin.medium;
    char plain[VISIBLE_NAME_SIZE];
    const char *name = name_of_copy(info, target, plain);
    log_file(3, "image_copy file(md=%lu, from_file=%lu, dest_md=%lu, to_file=\"%s\", overwrite=%d)\n", log_pointer(md),
             log_pointer(info), log_pointer(md), name, overwrite ? 1 : 0);
    const Copying copying = copy_file(md, info, md, {.to_file = name, .overwrite = overwrite});
    if (copying.result >= 0) return FILE_OK;
    plugin_report_error();
    if (copying.deleted_old || copying.entry != nullptr) reread_tables();
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
    }
    fill_target(&target, new_name);
    if (move != 0 && !may_be_called(plugin.medium, info, target.name)) {
        plugin_report_error();
        return FILE_WRITE_FAILED;
    }
    // A copy takes the file's place itself.
    if (move != 0 && found != nullptr) image_delete_file(plugin.medium, found, 0);
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
