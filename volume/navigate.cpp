// Walks over the file list: by name, by path, and back up.
#include "volume/navigate.h"

#include <algorithm>
#include <cstring>

#include "base/convert.h"
#include "base/error.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "volume/names.h"
#include "volume/type_text.h"

namespace
{
constexpr int32_t deepest_path = 999;      // components that are followed
constexpr uint32_t most_steps = 4'000'000; // entries that are looked at before a path counts as not found

struct PathWalk {
    char separator;
    int32_t depth;
    uint32_t steps;
};

const char *skip_separators(const PathWalk &walk, const char *path)
{
    while (*path != '\0' && *path == walk.separator) path++;
    return path;
}

size_t component_length(const PathWalk &walk, const char *path)
{
    const char *end = path;
    while (*end != '\0' && *end != walk.separator) end++;
    return static_cast<size_t>(end - path);
}

// Moves over at most so many characters, never past the terminator.
const char *advance(const char *path, size_t characters)
{
    while (characters-- > 0 && *path != '\0') path++;
    return path;
}

bool name_is(const FileInfo *info, const char *component, size_t length)
{
    return std::strlen(info->name) == length && std::memcmp(info->name, component, length) == 0;
}

bool follow(PathWalk *walk, FileInfo *list, const char *path, FileInfo **ret_info);

bool descend(PathWalk *walk, FileInfo *directory, const char *rest, FileInfo **ret_info)
{
    if (walk->depth >= deepest_path) return false;
    walk->depth++;
    bool found = follow(walk, directory->child, rest, ret_info);
    walk->depth--;
    return found;
}

// One path component against the entries of one list. The path moves on with each component that was entered.
// Kept: a failed branch doesn't rewind the path for the next sibling.  [KeepsPathAdvancedAfterFailedBranch]
bool follow(PathWalk *walk, FileInfo *list, const char *path, FileInfo **ret_info)
{
    for (FileInfo *info = list; info != nullptr && walk->steps < most_steps; info = info->next) {
        walk->steps++;
        if (info->is_directory == 0) continue;
        size_t length = component_length(*walk, path);
        FileInfo *entered = info;
        if (name_is(info, path, length)) {
            path = skip_separators(*walk, path + length);
            if (*path == '\0') {
                *ret_info = info->child;
                return true;
            }
        } else if (length == 1 && path[0] == '.') {
            // Kept: it goes down into the directory met here.  [KeepsOneDotGoingDownIntoTheNextDirectory]
            path = skip_separators(*walk, advance(path, 2));
        } else if (length == 2 && path[0] == '.' && path[1] == '.') {
            // Kept: it goes into the list of the parent's children.  [KeepsTwoDotsInTheListOfTheParent]
            if (info->parent != nullptr) info = entered = info->parent;
            path = skip_separators(*walk, advance(path, 3));
        } else {
            continue;
        }
        if (descend(walk, entered, path, ret_info)) return true;
    }
    set_error(218, "%s", path);
    return false;
}

struct Wanted {
    const char *name;
    size_t length;    // of the name
    const char *type; // null: any
    bool recursive;
};

// Names of one directory differ in their lengths or at their ends more often than at their beginnings.
bool has_name(const FileInfo *info, const Wanted &wanted)
{
    if (wanted.length >= sizeof info->name || info->name[wanted.length] != '\0') return false;
    if (wanted.length != 0 && info->name[wanted.length - 1] != wanted.name[wanted.length - 1]) return false;
    return std::strcmp(info->name, wanted.name) == 0;
}

bool is_match(const MediaDescriptor *md, const FileInfo *info, const Wanted &wanted)
{
    if (!has_name(info, wanted) || (info->deleted != 0 && md->show_purged == 0)) return false;
    if (wanted.type == nullptr) return true;
    char text[type_text_size];
    type_text(info, text);
    return std::strcmp(text, wanted.type) == 0;
}

FileInfo *find(const MediaDescriptor *md, FileInfo *list, const Wanted &wanted)
{
    for (FileInfo *info = list; info != nullptr; info = info->next) {
        if (wanted.recursive && info->is_directory != 0) {
            FileInfo *found = find(md, info->child, wanted);
            if (found != nullptr) return found;
        } else if (is_match(md, info, wanted)) {
            return info;
        }
    }
    return nullptr;
}

bool arguments_missing(const MediaDescriptor *md, const char *filename)
{
    if (md != nullptr && filename != nullptr) return false;
    set_error(103, "Null pointer");
    return true;
}
}

void image_get_path(const FileInfo *info, char *ret_path, const char *separator)
{
    if (info == nullptr || ret_path == nullptr) {
        set_error(103, "Null pointer");
        return;
    }
    char scratch[FILE_PATH_SIZE] = "";
    size_t length = 0;
    for (const FileInfo *parent = info->parent; parent != nullptr; parent = parent->parent) {
        size_t name_length = std::strlen(parent->name);
        if (length + name_length + 1 >= sizeof scratch) {
            log_file(3, "Max path length %d exceeded\n", FILE_PATH_SIZE);
            continue;
        }
        std::memcpy(scratch + length, parent->name, name_length);
        length += name_length;
        scratch[length++] = '/';
    }
    const char *text = separator == nullptr ? "/" : separator;
    size_t text_length = std::strlen(text);
    // Kept: the result is a separator for each directory and no names.  [KeepsPathOfSeparatorsOnly]
    auto count = length == 0 ? 1 : std::count(scratch + 1, scratch + length, '/');
    for (; count > 0; count--) {
        std::memcpy(ret_path, text, text_length);
        ret_path += text_length;
    }
    *ret_path = '\0';
}

int32_t image_change_directory(MediaDescriptor *md, FileInfo *directory, const char *path, const char *separator,
                               FileInfo **ret_info)
{
    log_file(3, "image_change_directory(md=%lu, directory=%lu path=\"%s\", separator=\"%s\", ret_info=%lu)\n",
             log_pointer(md), log_pointer(directory), log_text(path), log_text(separator), log_pointer(ret_info));
    if (md == nullptr || path == nullptr || ret_info == nullptr) {
        set_error(103, "Null pointer");
        return -1;
    }
    *ret_info = nullptr;
    FileInfo *list = directory == nullptr ? md->root : directory;
    PathWalk walk = {separator == nullptr ? '/' : separator[0], 0, 0};
    if (walk.separator != '\0' && path[0] == walk.separator) {
        if (list != md->root) return -1;
        path++;
        if (*path == '\0') {
            *ret_info = md->root;
            return 0;
        }
    }
    FileInfo *found = nullptr;
    if (!follow(&walk, list, path, &found)) return -1;
    *ret_info = found;
    return 0;
}

FileInfo *image_find_in_dir(MediaDescriptor *md, FileInfo *directory, const char *filename, const char *type,
                            int32_t recursive)
{
    if (md == nullptr || directory == nullptr || filename == nullptr) return nullptr;
    return find(md, directory, {filename, std::strlen(filename), type, recursive != 0});
}

FileInfo *image_find_file(MediaDescriptor *md, FileInfo *directory, const char *filename, int32_t recursive)
{
    log_file(3, "image_find file(md=%lu, filename=\"%s\")\n", log_pointer(md), log_text(filename));
    if (arguments_missing(md, filename)) return nullptr;
    return image_find_in_dir(md, directory, filename, nullptr, recursive);
}

FileInfo *image_find_typed_file(MediaDescriptor *md, FileInfo *directory, const char *filename, int32_t translate,
                                int32_t recursive)
{
    log_file(3, "image_find_typed_file(md=%lu, filename=\"%s\", translate=%d)\n", log_pointer(md), log_text(filename),
             translate);
    if (arguments_missing(md, filename)) return nullptr;
    FileInfo wanted = {};
    process_filepath(md, &wanted, filename, nullptr, translate != 0 ? 1 : 0);
    char name[sizeof wanted.name];
    std::memcpy(name, wanted.name, sizeof name);
    if (translate != 0) string_win2hp(name, wanted.name, 1);
    char type[type_text_size];
    type_text(&wanted, type);
    return image_find_in_dir(md, directory, name, type, recursive);
}
