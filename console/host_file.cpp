// Files and folders of the host.
#include "console/host_file.h"

#include "base/error.h"
#include "platform/platform.h"

namespace
{
constexpr uint32_t cannot_make_folder = 312;
}

HostFile::~HostFile()
{
    if (handle != 0) file_close(handle);
}

bool host_file_exists(const char *path)
{
    HostFile file;
    return file_open(&file.handle, path, "rb", 0) == 1;
}

bool make_host_folder(const std::string &path)
{
    if (platform_create_directory(path.c_str()) || platform_is_directory(path.c_str())) return true;
    for (size_t length = 1; length < path.size(); length++) {
        if (platform_is_separator(path[length])) platform_create_directory(path.substr(0, length).c_str());
    }
    if (platform_create_directory(path.c_str())) return true;
    char words[256];
    get_win_error(words, sizeof words);
    if (platform_is_directory(path.c_str())) return true;
    set_error(cannot_make_folder, "\"%s\": %s", path.c_str(), words);
    return false;
}
