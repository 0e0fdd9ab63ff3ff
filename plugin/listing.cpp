// A listing: the whole file table is read when the medium is opened, and a
// cursor walks along it.
#include <cstring>

#include "base/convert.h"
#include "base/error.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "platform/platform.h"
#include "plugin/entry_log.h"
#include "plugin/state.h"
#include "volume/names.h"
#include "volume/navigate.h"

namespace
{
constexpr uint32_t attribute_read_only = 0x01;
constexpr uint32_t attribute_hidden = 0x02;
constexpr uint32_t attribute_system = 0x04;
constexpr uint32_t attribute_directory = 0x10;
constexpr int32_t october_from_bcd = 15;

uint32_t host_attributes(const FileInfo *info)
{
    uint32_t attributes = 0;
    if ((info->attributes & ATTRIBUTE_HIDDEN) != 0) attributes |= attribute_hidden;
    if ((info->attributes & ATTRIBUTE_READ_ONLY) != 0) attributes |= attribute_read_only;
    if ((info->attributes & ATTRIBUTE_SYSTEM) != 0) attributes |= attribute_system;
    if (info->is_directory != 0) attributes |= attribute_directory;
    return attributes;
}

// An entry without a date has no time at all.
void fill_time(const FileInfo *info, uint32_t *ret_time)
{
    TimeRecord date = info->date;
    if (date.tm_mon == october_from_bcd) date.tm_mon = 9;
    SystemTime local;
    tm2SystemTime(&local, &date);
    int64_t time = 0;
    if (!platform_panel_time(&local, &time)) time = 0;
    ret_time[0] = static_cast<uint32_t>(time);
    ret_time[1] = static_cast<uint32_t>(static_cast<uint64_t>(time) >> 32);
}

void fill_record(const MediaDescriptor *md, const FileInfo *info, FindDataA *find_data)
{
    find_data->attributes = host_attributes(info);
    fill_time(info, find_data->write_time);
    find_data->size_low = info->size;
    char name[VISIBLE_NAME_SIZE];
    compose_filename(md, info, name);
    char alternate[VISIBLE_NAME_SIZE];
    string_hp2win(alternate, name, 1);
    static_assert(sizeof name <= sizeof find_data->name);
    for (size_t i = 0; name[i] != '\0'; i++) find_data->name[i] = platform_visible_character(name[i]);
    std::memcpy(find_data->alternate_name, alternate, sizeof find_data->alternate_name - 1);
    find_data->alternate_name[sizeof find_data->alternate_name - 1] = '\0';
}

// Delivers the entry under the cursor and moves on; false, with a cleared
// record, at the end.
bool deliver_entry(FindDataA *find_data)
{
    MediaDescriptor *md = plugin.medium;
    while (md->show_purged == 0 && md->cursor != nullptr && md->cursor->deleted != 0) md->cursor = md->cursor->next;
    *find_data = {};
    if (md->cursor == nullptr) {
        platform_set_last_error(error_no_more_files);
        return false;
    }
    fill_record(md, md->cursor, find_data);
    md->cursor = md->cursor->next;
    return true;
}

// A handle is the medium that its listing had open; that may be closed by now.
bool is_open_handle(const void *handle)
{
    if (handle != nullptr && handle == plugin.medium) return true;
    platform_set_last_error(error_aborted);
    return false;
}

void *no_handle()
{
    return reinterpret_cast<void *>(~uintptr_t{0});
}

bool open_for_listing()
{
    if (plugin.target[0] == '\0' && plugin_select_target() < 0) {
        platform_set_last_error(error_aborted);
        return false;
    }
    if (plugin.medium != nullptr || plugin_open_medium() == 0) return true;
    plugin_report_error();
    platform_set_last_error(error_aborted);
    return false;
}
} // namespace

void *FsFindFirst(const char *path, FindDataA *find_data)
{
    log_entry("FsFindFirst(Path=\"%s\", FindData=%lu)\n", log_text(path), log_pointer(find_data));
    if (path == nullptr || find_data == nullptr) {
        platform_set_last_error(error_aborted);
        return no_handle();
    }
    if (!open_for_listing()) return no_handle();
    MediaDescriptor *md = plugin.medium;
    const char separator[] = {platform_separator(), '\0'};
    if (image_change_directory(md, nullptr, path, separator, &md->cursor) < 0) {
        *find_data = {};
        platform_set_last_error(error_no_more_files);
        return md;
    }
    if (!deliver_entry(find_data)) return md;
    // Kept: only the first entry has no alternate name.  [KeepsFirstEntryWithoutAlternateName]
    std::memset(find_data->alternate_name, 0, sizeof find_data->alternate_name);
    return md;
}

int32_t FsFindNext(void *handle, FindDataA *find_data)
{
    log_file(3, "FsFindNext(Hdl=%lu, FindData=%lu)\n", log_pointer(handle), log_pointer(find_data));
    if (find_data == nullptr || !is_open_handle(handle)) return 0;
    return deliver_entry(find_data) ? 1 : 0;
}

int32_t FsFindClose(void *handle)
{
    log_file(3, "FsFindClose(Hdl=%lu)\n", log_pointer(handle));
    if (is_open_handle(handle)) plugin.medium->cursor = plugin.medium->root;
    return 0;
}
