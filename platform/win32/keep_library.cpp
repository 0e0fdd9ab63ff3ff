// A library that has started a thread stays loaded: while it is being left the system lets no thread end, so the
// thread could not be waited for, and its code must not go away under it.
#include <windows.h>

#include "platform/platform.h"

void platform_keep_library()
{
    static const char place_in_this_library = 0;
    HMODULE ignored = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, &place_in_this_library,
                       &ignored);
}
