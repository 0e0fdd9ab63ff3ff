// Finding files by a pattern in the last component of a path: * and ?, nothing else.
#include <dirent.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "platform/platform.h"
#include "platform/posix/inner.h"
#include "platform/posix/utf8.h"

namespace
{

constexpr uint32_t attribute_read_only = 1;
constexpr uint32_t attribute_hidden = 2;
constexpr uint32_t attribute_directory = 0x10;
constexpr uint32_t attribute_archive = 0x20;

struct Find {
    DIR *folder;
    char mask[2 * PATH_MAX]; // with each character that fnmatch() knows beside * and ? made a plain one
};

void set_mask(Find *find, std::string_view mask)
{
    if (mask == "*.*") mask = "*"; // every name, whether it has a dot or not
    size_t length = 0;
    for (const char character : mask) {
        if (character == '[' || character == '\\') find->mask[length++] = '\\';
        find->mask[length++] = character;
    }
    find->mask[length] = '\0';
}

// The folder ahead of the last separator, which for the root is the separator itself.
DIR *open_folder(std::string_view path)
{
    char name[PATH_MAX];
    if (path.empty()) path = ".";
    memcpy(name, path.data(), path.size());
    name[path.size()] = '\0';
    return opendir(name);
}

void set_time(uint32_t (&ret_time)[2], const timespec &time)
{
    const auto count = static_cast<uint64_t>(count_of_time(time));
    ret_time[0] = static_cast<uint32_t>(count);
    ret_time[1] = static_cast<uint32_t>(count >> 32);
}

uint32_t attributes_of(const char *name, const struct stat &status)
{
    uint32_t attributes = S_ISDIR(status.st_mode) ? attribute_directory : attribute_archive;
    if ((status.st_mode & S_IWUSR) == 0) attributes |= attribute_read_only;
    if (name[0] == '.' && strcmp(name, ".") != 0 && strcmp(name, "..") != 0) attributes |= attribute_hidden;
    return attributes;
}

// False for a name that has gone since the folder was read.
bool fill(const Find *find, const char *name, FindDataA *ret_data)
{
    struct stat status;
    const int folder = dirfd(find->folder);
    if (fstatat(folder, name, &status, 0) != 0 && fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0)
        return false;
    *ret_data = {};
    ret_data->attributes = attributes_of(name, status);
    set_time(ret_data->creation_time, status.st_mtim); // the system has no time of creation to give
    set_time(ret_data->access_time, status.st_atim);
    set_time(ret_data->write_time, status.st_mtim);
    ret_data->size_high = static_cast<uint32_t>(status.st_size >> 32);
    ret_data->size_low = static_cast<uint32_t>(status.st_size);
    strncpy(ret_data->name, name, sizeof(ret_data->name) - 1);
    return true;
}

// The next name that matches; false at the end and on a failure.
bool find_next(Find *find, FindDataA *ret_data)
{
    while (const dirent *entry = readdir(find->folder)) {
        if (fnmatch(find->mask, entry->d_name, 0) == 0 && fill(find, entry->d_name, ret_data)) return true;
    }
    return failed(ENOENT);
}

// The two layouts differ by their texts alone.
void widen(FindDataW *ret_data, const FindDataA &data)
{
    *ret_data = {};
    ret_data->attributes = data.attributes;
    memcpy(ret_data->creation_time, data.creation_time, sizeof(data.creation_time));
    memcpy(ret_data->access_time, data.access_time, sizeof(data.access_time));
    memcpy(ret_data->write_time, data.write_time, sizeof(data.write_time));
    ret_data->size_high = data.size_high;
    ret_data->size_low = data.size_low;
    utf8_to_wide(ret_data->name, sizeof(ret_data->name) / sizeof(wchar_t), data.name);
}

Find *start(const char *pattern)
{
    const std::string_view path = pattern;
    const size_t separator = path.rfind('/');
    const size_t mask_start = separator == path.npos ? 0 : separator + 1;
    if (path.size() >= PATH_MAX || mask_start == path.size()) {
        errno = path.empty() || mask_start == path.size() ? ENOENT : ENAMETOOLONG;
        return nullptr;
    }
    auto *find = static_cast<Find *>(malloc(sizeof(Find)));
    if (find == nullptr) return nullptr;
    set_mask(find, path.substr(mask_start));
    find->folder = open_folder(path.substr(0, mask_start));
    if (find->folder != nullptr) return find;
    free(find);
    return nullptr;
}

} // namespace

void *platform_find_first_a(const char *pattern, FindDataA *ret_data)
{
    Find *find = start(pattern);
    if (find == nullptr) return platform_no_handle();
    if (find_next(find, ret_data)) return find;
    platform_find_close(find);
    errno = ENOENT;
    return platform_no_handle();
}

void *platform_find_first_w(const wchar_t *pattern, FindDataW *ret_data)
{
    const Utf8Name narrow(pattern);
    if (!narrow.fits) return platform_no_handle();
    FindDataA data = {};
    void *handle = platform_find_first_a(narrow.text, &data);
    if (handle != platform_no_handle()) widen(ret_data, data);
    return handle;
}

int32_t platform_find_next_a(void *handle, FindDataA *ret_data)
{
    return find_next(static_cast<Find *>(handle), ret_data);
}

int32_t platform_find_next_w(void *handle, FindDataW *ret_data)
{
    FindDataA data = {};
    if (platform_find_next_a(handle, &data) == 0) return 0;
    widen(ret_data, data);
    return 1;
}

void platform_find_close(void *handle)
{
    auto *find = static_cast<Find *>(handle);
    closedir(find->folder);
    free(find);
}
