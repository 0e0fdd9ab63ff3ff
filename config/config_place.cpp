// Where the configuration file is looked for.
#include <cstring>

#include "config/config_inner.h"
#include "platform/platform.h"

namespace
{

constexpr char file_name[] = "tarvo.ini";

bool path_beside_library(char *path)
{
    if (!platform_library_path(path, FILE_PATH_SIZE)) return false;
    size_t length = std::strlen(path);
    while (length > 0 && !platform_is_separator(path[length - 1])) length--;
    if (length + sizeof file_name > FILE_PATH_SIZE) return false;
    std::memcpy(path + length, file_name, sizeof file_name);
    return true;
}

}

bool open_config_file(FileHandle *ret_file, char *ret_path, bool *ret_beside)
{
    *ret_beside = false;
    std::memcpy(ret_path, file_name, sizeof file_name);
    if (file_open(ret_file, ret_path, "rb", 0) == 1) return true;
    *ret_beside = path_beside_library(ret_path);
    return *ret_beside && file_open(ret_file, ret_path, "rb", 0) == 1;
}
