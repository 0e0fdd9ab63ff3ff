// The library's one export: the dialog between what the plug-in hands over and the list that the user's profile keeps.
#include "dialog/tarvo_dialog.h"

#include <windows.h>

#include <cstring>

#include "dialog/dialog_ids.h"
#include "dialog/target_rules.h"
#include "dialog/target_store.h"
#include "dialog/window.h"

namespace
{
constexpr int32_t kind_target = 1;

HMODULE this_library()
{
    constexpr DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    HMODULE library = nullptr;
    GetModuleHandleExA(flags, reinterpret_cast<const char *>(&this_library), &library);
    return library;
}

// The present look of the controls for the thread, from the library's manifest, whatever the program's own is. Where
// the system can't do it the dialog has the old look.
struct ControlLook {
    HANDLE context;
    ULONG_PTR cookie = 0;
    bool active = false;

    explicit ControlLook(HMODULE library)
    {
        ACTCTXA request = {};
        request.cbSize = sizeof request;
        request.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
        request.hModule = library;
        request.lpResourceName = MAKEINTRESOURCEA(MANIFEST_OF_LIBRARY);
        context = CreateActCtxA(&request);
        active = context != INVALID_HANDLE_VALUE && ActivateActCtx(context, &cookie) != 0;
    }
    ControlLook(const ControlLook &) = delete;
    ControlLook &operator=(const ControlLook &) = delete;
    ~ControlLook()
    {
        if (active) DeactivateActCtx(0, cookie);
        if (context != INVALID_HANDLE_VALUE) ReleaseActCtx(context);
    }
};

bool choose(Choice *choice)
{
    const HMODULE library = this_library();
    const ControlLook look(library);
    // A window of this thread only: to wait with another thread's window could block both.
    return run_window(library, GetActiveWindow(), choice);
}

int32_t choose_target(char *target, uint32_t *options)
{
    Choice choice = {std::string(target, strnlen(target, target_size - 1)), *options, load_targets()};
    if (!choose(&choice)) return 0;
    LastTargets last = load_targets(); // anew: another dialog may have been used meanwhile
    put_in_front(&last, choice.target);
    save_targets(last); // the choice counts even where the list can't be kept
    std::memcpy(target, choice.target.c_str(), choice.target.size() + 1);
    *options = choice.options;
    return 1;
}
}

extern "C" int32_t TarvoDialog(int32_t kind, char *target, uint32_t *options)
{
    if (kind != kind_target || target == nullptr || options == nullptr) return 0;
    try {
        return choose_target(target, options);
    } catch (...) {
        return 0;
    }
}
