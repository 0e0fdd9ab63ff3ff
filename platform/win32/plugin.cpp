// What a plug-in needs of the system beyond files: its own place, a companion
// library, and the ways of hosts.
#include "platform/platform.h"
#include "platform/win32/inner.h"

#include <cstdio>
#include <cstring>

char platform_separator()
{
    return '\\';
}

char platform_visible_character(char character)
{
    return character;
}

bool platform_is_host_temporary(const char *path)
{
    return strstr(path, "\\_tc") != nullptr;
}

bool platform_time_parts(uint64_t time, SystemTime *ret_time)
{
    const FILETIME file_time = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
    SYSTEMTIME parts;
    if (!FileTimeToSystemTime(&file_time, &parts)) return false;
    *ret_time = {parts.wYear, parts.wMonth,  parts.wDayOfWeek, parts.wDay,
                 parts.wHour, parts.wMinute, parts.wSecond,    parts.wMilliseconds};
    return true;
}

bool platform_library_path(char *ret_path, size_t size)
{
    static const char place_in_this_library = 0;
    HMODULE library = nullptr;
    const DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (!GetModuleHandleExA(flags, &place_in_this_library, &library)) return false;
    const DWORD length = GetModuleFileNameA(library, ret_path, static_cast<DWORD>(size));
    return length > 0 && length < size;
}

void *platform_open_library(const char *name)
{
    char path[MAX_PATH];
    if (!platform_library_path(path, sizeof path)) return nullptr;
    char *last = strrchr(path, '\\');
    if (last == nullptr) return nullptr;
    const size_t room = sizeof path - static_cast<size_t>(last + 1 - path);
    if (snprintf(last + 1, room, "%s", name) < static_cast<int>(room)) {
        HMODULE beside = LoadLibraryExA(path, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
        if (beside != nullptr) return reinterpret_cast<void *>(beside);
    }
    return reinterpret_cast<void *>(LoadLibraryExA(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
}

void *platform_library_symbol(void *library, const char *name)
{
    return reinterpret_cast<void *>(GetProcAddress(reinterpret_cast<HMODULE>(library), name));
}
