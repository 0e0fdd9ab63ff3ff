// The plug-in's state, and its talk with the host.
#include "plugin/state.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "base/error.h"
#include "platform/platform.h"
#include "volume/allocation.h"
#include "volume/navigate.h"
#include "volume/open.h"
#include "volume/table.h"

constinit PluginState plugin;

namespace
{
constexpr int32_t request_message = 8;
constexpr uint16_t open_flags = OPEN_READ_VOLUME | OPEN_RECURSIVE;
}

void plugin_message(const char *format, ...)
{
    char text[2 * ERROR_TEXT_SIZE];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    char title[] = "Tarvo Plugin";
    if (plugin.request != nullptr) plugin.request(plugin.number, request_message, title, text, nullptr, 0);
}

void plugin_report_error()
{
    char text[ERROR_TEXT_SIZE];
    get_error(text);
    plugin_message("%s", text);
}

int32_t plugin_open_medium()
{
    plugin_check_config_files();
    if (plugin.medium != nullptr) {
        plugin_message("Warning: %s already opened", plugin.target);
        return 0;
    }
    MediaDescriptor format = {};
    format.use_type_names = static_cast<uint32_t>(plugin.use_type_names);
    // Kept: the two bits come out two places too high.  [KeepsFileHeadersFourTimesTheirNumber]
    format.use_file_headers = (plugin.options & option_file_headers) >> 2;
    format.use_typed_extensions = (plugin.options & option_typed_extensions) != 0;
    format.use_file_conversion = (plugin.options & option_file_conversion) != 0;
    format.show_purged = (plugin.options & option_show_purged) != 0;
    plugin.medium = image_open(plugin.target, &format, open_flags);
    if (plugin.medium != nullptr) return 0;
    if (plugin.target[0] != '\0') plugin_message("Could not open %s", plugin.target);
    platform_set_last_error(error_aborted);
    return -1;
}

void plugin_close_medium()
{
    image_close(plugin.medium);
    plugin.medium = nullptr;
}

bool write_tables()
{
    MediaDescriptor *md = plugin.medium;
    bool written = update_file_table(md, 0) == 0 && update_file_table(md, 1) == 0 && update_alloc_table(md, 0) == 0 &&
                   update_alloc_table(md, 1) == 0;
    if (!written) plugin_report_error();
    return written;
}

void begin_progress(const char *source, const char *target)
{
    plugin.progress_source = source;
    plugin.progress_target = target;
    plugin.aborted = false;
    my_progress(nullptr, 0, 0);
}

int32_t my_progress(void *, uint32_t, uint32_t percent)
{
    if (plugin.progress == nullptr) return 0;
    char source[FILE_PATH_SIZE];
    char target[FILE_PATH_SIZE];
    snprintf(source, sizeof source, "%s", plugin.progress_source);
    snprintf(target, sizeof target, "%s", plugin.progress_target);
    int32_t answer = plugin.progress(plugin.number, source, target, static_cast<int32_t>(percent));
    if (answer != 0) plugin.aborted = true;
    return answer;
}

const char *last_component(const char *path)
{
    const char *separator = std::strrchr(path, platform_separator());
    return separator == nullptr ? path : separator + 1;
}

bool is_host_root(const char *path)
{
    return path[0] == platform_separator() && path[1] == '\0';
}

FileInfo *find_by_visible_name(FileInfo *directory, const char *name)
{
    MediaDescriptor *md = plugin.medium;
    if (md->use_typed_extensions != 0) return image_find_typed_file(md, directory, name, 0, 0);
    return image_find_file(md, directory, name, 0);
}
