// The configuration file, as the plug-in takes it up.
#include <cstring>

#include "base/file.h"
#include "base/log.h"
#include "config/config_file.h"
#include "config/config_inner.h"
#include "config/custom_inner.h"
#include "gpib/controllers/settings.h"
#include "plugin/state.h"

namespace
{
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
    int32_t fastschedule = 0; // nothing takes these two up
    int32_t filesystem = 0;
    return read_config_file(file, &loglevel, &board_select, &port_address, &gpib_limit_load, &fastschedule,
                            plugin.system_string, &filesystem, &plugin.use_file_headers, &plugin.use_type_names,
                            &plugin.use_typed_extensions, &plugin.use_file_conversion);
}
} // namespace

int32_t plugin_check_config_files()
{
    char path[FILE_PATH_SIZE] = "";
    FileHandle file = 0;
    bool beside = false;
    const bool opened = open_config_file(&file, path, &beside);
    if (beside) plugin.options |= option_no_configuration;
    if (!opened) return 0;
    int32_t result = read_settings(file);
    if (result < 0) {
        plugin_message("Error in config file %s\n", path);
        plugin_report_error(); // ahead of the closing, whose log line may change the error
    } else {
        use_custom_tables();
        update_options();
    }
    file_close(file);
    return result;
}
