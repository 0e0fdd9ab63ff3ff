// What a plug-in needs of the system beyond files: its own place, a companion
// library, and the ways of hosts.
#include <dlfcn.h>
#include <link.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "platform/platform.h"
#include "platform/posix/inner.h"

namespace
{

constexpr size_t longest_path = 4096;

bool begins_with_folder(const char *path, const char *folder)
{
    size_t length = strlen(folder);
    while (length > 1 && folder[length - 1] == '/') length--;
    return strncmp(path, folder, length) == 0 && path[length] == '/';
}

} // namespace

char platform_separator()
{
    return '/';
}

// A slash could never be part of a name that is asked for.
char platform_visible_character(char character)
{
    return character == '/' ? '_' : character;
}

bool platform_is_host_temporary(const char *path)
{
    if (strstr(path, "/_tc") != nullptr) return true;
    const char *folder = secure_getenv("TMPDIR");
    return begins_with_folder(path, folder == nullptr || *folder == '\0' ? "/tmp" : folder);
}

bool platform_time_parts(uint64_t time, SystemTime *ret_time)
{
    if (time > INT64_MAX) return failed(EINVAL);
    const timespec parts = time_of_count(static_cast<int64_t>(time));
    tm universal;
    if (gmtime_r(&parts.tv_sec, &universal) == nullptr) return false;
    *ret_time = {static_cast<uint16_t>(universal.tm_year + 1900), static_cast<uint16_t>(universal.tm_mon + 1),
                 static_cast<uint16_t>(universal.tm_wday),        static_cast<uint16_t>(universal.tm_mday),
                 static_cast<uint16_t>(universal.tm_hour),        static_cast<uint16_t>(universal.tm_min),
                 static_cast<uint16_t>(universal.tm_sec),         static_cast<uint16_t>(parts.tv_nsec / 1000000)};
    return true;
}

bool platform_library_path(char *ret_path, size_t size)
{
    static const char place_in_this_library = 0;
    Dl_info info;
    void *map = nullptr;
    if (dladdr1(&place_in_this_library, &info, &map, RTLD_DL_LINKMAP) == 0 || info.dli_fname == nullptr)
        return failed(ENOENT);
    // For the program itself the name is only what it was called by.
    if (static_cast<const link_map *>(map)->l_name[0] == '\0') return platform_program_path(ret_path, size);
    const size_t length = strlen(info.dli_fname);
    if (length >= size) return failed(ENAMETOOLONG);
    memcpy(ret_path, info.dli_fname, length + 1);
    return true;
}

void *platform_open_library(const char *name)
{
    char path[longest_path];
    if (!platform_library_path(path, sizeof path)) return nullptr;
    char *last = strrchr(path, '/');
    if (last == nullptr) return nullptr; // a name without a folder would be searched for
    const size_t room = sizeof path - static_cast<size_t>(last + 1 - path);
    if (snprintf(last + 1, room, "%s", name) >= static_cast<int>(room)) return nullptr;
    return dlopen(path, RTLD_NOW | RTLD_LOCAL);
}

void *platform_library_symbol(void *library, const char *name)
{
    return dlsym(library, name);
}
