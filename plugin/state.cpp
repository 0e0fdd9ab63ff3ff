// The plug-in's state, and its talk with the host.
#include "plugin/state.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "base/error.h"
#include "platform/platform.h"
#include "volume/navigate.h"

constinit PluginState plugin;

namespace
{
constexpr int32_t request_message = 8;
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
