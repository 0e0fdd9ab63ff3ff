// The configuration file: in the current directory first, then beside the
// library.
#include <cstdio>
#include <cstring>

#include "base/convert.h"
#include "base/file.h"
#include "base/log.h"
#include "config/config_file.h"
#include "platform/platform.h"
#include "plugin/state.h"

namespace
{
constexpr char file_name[] = "tarvo.ini";

bool path_beside_library(char *path)
{
    if (!platform_library_path(path, FILE_PATH_SIZE)) return false;
    size_t length = std::strlen(path);
    while (length > 0 && !platform_is_separator(path[length - 1])) length--;
    if (length + sizeof file_name > FILE_PATH_SIZE) return false;
    std::memcpy(path + length, file_name, sizeof file_name);
    return true;
}

// Kept: the headers' value lands on bits 2 and 3.  [KeepsConfiguredHeadersOutOfTheirBits]
void update_options()
{
    uint32_t options = plugin.options & ~(option_no_configuration | option_file_headers);
    options |= static_cast<uint32_t>(plugin.use_file_headers) << 2;
    auto set = [&options](uint32_t bit, bool on) { options = on ? options | bit : options & ~bit; };
    set(option_typed_extensions, plugin.use_typed_extensions != 0);
    set(option_file_conversion, plugin.use_file_conversion != 0);
    plugin.options = options;
}

int32_t read_settings(FileHandle file)
{
    plugin.use_type_names = 1;
    plugin.use_typed_extensions = 1;
    plugin.use_file_conversion = 0;
    plugin.use_file_headers = 0;
    std::memcpy(plugin.system_string, "9845", sizeof "9845");
    int32_t board = 0; // nothing takes these five up
    uint32_t port = 0;
    int32_t nosleep = 0;
    int32_t fastschedule = 0;
    int32_t filesystem = 0;
    return read_config_file(file, &loglevel, &board, &port, &nosleep, &fastschedule, plugin.system_string, &filesystem,
                            &plugin.use_file_headers, &plugin.use_type_names, &plugin.use_typed_extensions,
                            &plugin.use_file_conversion);
}
} // namespace

int32_t plugin_check_config_files()
{
    char path[FILE_PATH_SIZE] = "";
    FileHandle file = 0;
    std::memcpy(path, file_name, sizeof file_name);
    if (file_open(&file, path, "rb", 0) != 1) {
        if (!path_beside_library(path)) return 0;
        plugin.options |= option_no_configuration;
        if (file_open(&file, path, "rb", 0) != 1) return 0;
    }
    int32_t result = read_settings(file);
    file_close(file);
    if (result < 0) {
        plugin_message("Error in config file %s\n", path);
        plugin_report_error();
        return -1;
    }
    update_options();
    return 0;
}
