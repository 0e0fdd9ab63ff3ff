// What stands in the way of a change.
#include "plugin/checks.h"

#include "base/error.h"
#include "platform/platform.h"
#include "plugin/state.h"
#include "volume/state.h"

namespace
{
constexpr uint32_t unreadable_medium = 215;
}

bool may_change(int32_t without_medium, const char *sdf_message, int32_t *ret_result)
{
    if (plugin.medium == nullptr) {
        platform_set_last_error(error_aborted);
        *ret_result = without_medium;
        return false;
    }
    if (plugin.medium->format == FORMAT_SDF) {
        plugin_message("%s", sdf_message);
        *ret_result = FILE_NOT_SUPPORTED;
        return false;
    }
    // Rewriting a directory that wasn't read whole would take the rest of its files off the medium.
    const MediaState *state = plugin.medium->state;
    if (state == nullptr) return true;
    if (state->table_result == 0 && state->refused_entries == 0 && !state->only_searched) return true;
    set_error(unreadable_medium, "directory not read whole, nothing is changed");
    plugin_report_error();
    *ret_result = without_medium;
    return false;
}
