// The exports that begin, end and steer, and the lines that all of them log.
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "base/log.h"
#include "base/log_pointer.h"
#include "platform/platform.h"
#include "plugin/entry_log.h"
#include "plugin/state.h"

namespace
{
constexpr char root_name[] = "TARVO";
constexpr int32_t operation_listing = 1;
constexpr int32_t operation_ignored = 11;
} // namespace

void log_entry(const char *format, ...)
{
    if ((loglevel & 7) < 3) return;
    char text[2048];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    log_file(3, "---------------------------------------------------\n");
    size_t length = std::strlen(text);
    if (text[length - 1] != '\n') text[length - 1] = '\n'; // a name that long is cut
    log_file(3, "%s", text);
}

void FsGetDefRootName(char *name, int32_t maxlen)
{
    log_file(3, "FsGetDefRootName(name=%lu, maxlen=%d)\n", log_pointer(name), maxlen);
    if (name == nullptr || maxlen < 1) return;
    snprintf(name, static_cast<size_t>(maxlen), "%s", root_name);
}

int32_t FsInit(int32_t number, HostProgress progress, HostLog log, HostRequest request)
{
    auto place = [](auto callback) { return static_cast<unsigned long>(reinterpret_cast<uintptr_t>(callback)); };
    log_file(3, "FsInit(PluginNr=%d, pProgressProc=%lu, pLogProc=%lu, pRequestProc=%lu)\n", number, place(progress),
             place(log), place(request));
    plugin.number = number;
    plugin.progress = progress;
    plugin.log = log;
    plugin.request = request;
    plugin.target[0] = '\0';
    plugin.temporary_name[0] = '\0';
    return 0;
}

void FsStatusInfo(const char *remote_directory, int32_t start_end, int32_t operation)
{
    log_file(3, "FsStatusInfo(RemoteDir=\"%s\", InfoStartEnd=%d, InfoOperation=%d)\n", log_text(remote_directory),
             start_end, operation);
    if (operation == operation_ignored) return;
    if (start_end == 1) {
        plugin_close_medium();
    } else if (start_end == 0 && operation != operation_listing && plugin_open_medium() < 0) {
        plugin_report_error();
        platform_set_last_error(error_aborted);
    }
}

int32_t FsExecuteFile(void *main_window, const char *remote_name, const char *verb)
{
    log_entry("FsExecuteFile(MainWin=%lu, RemoteName=\"%s\", Verb=\"%s\")\n", log_pointer(main_window),
              log_text(remote_name), log_text(verb));
    if (verb == nullptr || std::strcmp(verb, "properties") != 0) return -1;
    if (remote_name != nullptr && is_host_root(remote_name)) plugin_select_target();
    return 0;
}
