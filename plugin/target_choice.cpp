// The choice of a target: in the dialog of the companion library, or, where
// there is none, in a line that the host asks for.
#include <cstdio>
#include <cstring>

#include "platform/platform.h"
#include "plugin/state.h"

namespace
{
constexpr int32_t request_line = 0;

using TargetDialog = int32_t (*)(int32_t kind, char *target, uint32_t *options);

TargetDialog find_dialog()
{
    void *library = platform_open_library("tarvodialog64.dll");
    if (library == nullptr) return nullptr;
    return reinterpret_cast<TargetDialog>(platform_library_symbol(library, "TarvoDialog"));
}

void ask_host()
{
    if (plugin.request == nullptr) return;
    char title[] = "Tarvo Plugin";
    char text[] = "Image file, floppy drive (0: to 3:) or GPIB drive (7AAUV:)";
    char answer[FILE_PATH_SIZE];
    std::memcpy(answer, plugin.target, sizeof answer);
    if (plugin.request(plugin.number, request_line, title, text, answer, sizeof answer) == 0) return;
    answer[sizeof answer - 1] = '\0';
    std::memcpy(plugin.target, answer, sizeof answer);
}
} // namespace

int32_t plugin_select_target()
{
    TargetDialog dialog = find_dialog();
    if (dialog != nullptr) {
        dialog(1, plugin.target, &plugin.options);
    } else {
        ask_host();
    }
    return plugin.target[0] == '\0' ? -1 : 0;
}
