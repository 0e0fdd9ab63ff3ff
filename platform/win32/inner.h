// What the sources of this system share.
#pragma once

#include <windows.h>

#include "platform/platform.h"

inline HANDLE handle_of(PlatformFile file)
{
    return reinterpret_cast<HANDLE>(file);
}

inline PlatformFile file_of(HANDLE handle)
{
    return reinterpret_cast<PlatformFile>(handle);
}
