// The medium of the plug-in: opened for an operation, closed after it, its tables written once by a change.
#include "platform/platform.h"
#include "plugin/state.h"
#include "volume/allocation.h"
#include "volume/open.h"
#include "volume/state.h"
#include "volume/table.h"

namespace
{
constexpr uint16_t open_flags = OPEN_READ_VOLUME | OPEN_RECURSIVE;
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

void reread_tables()
{
    MediaDescriptor *md = plugin.medium;
    const int32_t result = get_file_table(md, nullptr, nullptr, 0, 0, 0, 0, 0, 1);
    if (md->state != nullptr) md->state->table_result = result;
    get_alloc_table(md, 0);
}

bool write_tables()
{
    MediaDescriptor *md = plugin.medium;
    bool written = update_file_table(md, 0) == 0 && update_file_table(md, 1) == 0 && update_alloc_table(md, 0) == 0 &&
                   update_alloc_table(md, 1) == 0;
    if (!written) plugin_report_error();
    return written;
}
