// Words against the tree of a volume.
#include "console/matches.h"

#include <algorithm>

#include "base/error.h"
#include "console/roman8.h"
#include "volume/format.h"
#include "volume/names.h"
#include "volume/navigate.h"

namespace
{
constexpr char separator[] = "/";

bool has_directories(const MediaDescriptor *md)
{
    return volume_format(md->format).locate_directory != nullptr;
}

// False when the path leads nowhere. *ret_list is null for an empty directory.
bool follow_path(MediaDescriptor *md, const std::string &path, const FileInfo **ret_list)
{
    FileInfo *list = nullptr;
    const bool found = image_change_directory(md, nullptr, path.c_str(), separator, &list) == 0;
    *ret_list = list;
    return found;
}

std::string last_part(const std::string &path)
{
    return path.substr(path.rfind(separator[0]) + 1);
}

// The directory that a path names, of which only the list is known: the entry above that, or for an empty one the entry
// of that name in the directory ahead of it.
const FileInfo *directory_of(MediaDescriptor *md, std::string path, const FileInfo *list)
{
    if (list != nullptr) return list->parent;
    while (path.ends_with(separator[0])) path.pop_back();
    const std::string name = last_part(path);
    path.resize(path.size() - name.size());
    const FileInfo *outer = md->root;
    if (!path.empty() && !follow_path(md, path, &outer)) return nullptr;
    for (; outer != nullptr; outer = outer->next) {
        if (outer->is_directory != 0 && name == outer->name) return outer;
    }
    return nullptr;
}

Choice choice_of(MediaDescriptor *md, const std::string &word)
{
    Choice choice = {.word = word, .list = md->root, .pattern = word};
    if (!has_directories(md)) return choice;
    const FileInfo *list = nullptr;
    if (follow_path(md, word, &list)) {
        return {.word = word, .list = list, .directory = directory_of(md, word, list), .whole = true, .pattern = {}};
    }
    const size_t slash = word.rfind(separator[0]);
    if (slash == std::string::npos || slash + 1 == word.size()) return choice;
    if (!follow_path(md, word.substr(0, slash + 1), &list)) return choice;
    choice.list = list;
    choice.pattern = word.substr(slash + 1);
    return choice;
}

void count_file(void *context, const MediaDescriptor *, const FileInfo *info)
{
    if (info->deleted == 0 && info->is_directory == 0) ++*static_cast<uint32_t *>(context);
}

void collect(void *context, const MediaDescriptor *, const FileInfo *info)
{
    if (info->deleted == 0 && info->is_directory == 0)
        static_cast<std::vector<const FileInfo *> *>(context)->push_back(info);
}

bool is_idle(const MediaDescriptor *md, const Choice &choice, bool recursive)
{
    if (choice.whole) return false;
    uint32_t files = 0;
    visit_group(md, {choice.list, choice.directory, {choice.pattern}}, recursive, count_file, &files);
    return files == 0;
}
}

std::vector<Choice> choices_of(MediaDescriptor *md, const std::vector<std::string> &words)
{
    std::vector<Choice> choices;
    if (words.empty()) choices.push_back({.word = {}, .list = md->root, .whole = true, .pattern = {}});
    for (const std::string &word : words) choices.push_back(choice_of(md, word));
    global_error = 0; // a path that leads nowhere is no failure yet
    return choices;
}

std::vector<ChoiceGroup> groups_of(const std::vector<Choice> &choices)
{
    std::vector<ChoiceGroup> groups;
    for (const Choice &choice : choices) {
        auto same = [&choice](const ChoiceGroup &group) {
            return !choice.whole && !group.patterns.empty() && group.list == choice.list;
        };
        auto group = std::find_if(groups.begin(), groups.end(), same);
        if (group == groups.end()) group = groups.insert(groups.end(), {choice.list, choice.directory, {}});
        if (!choice.whole) group->patterns.push_back(choice.pattern);
    }
    return groups;
}

uint32_t visit_group(const MediaDescriptor *md, const ChoiceGroup &group, bool recursive, EntryVisitor visit,
                     void *context)
{
    std::vector<const char *> filespec;
    filespec.reserve(group.patterns.size() + 1);
    for (const std::string &pattern : group.patterns) filespec.push_back(pattern.c_str());
    filespec.push_back(nullptr);
    return visit_selected(md, {group.list, filespec.data(), recursive}, visit, context);
}

std::vector<std::string> idle_words(const MediaDescriptor *md, const std::vector<Choice> &choices, bool recursive)
{
    std::vector<std::string> idle;
    for (const Choice &choice : choices) {
        if (is_idle(md, choice, recursive)) idle.push_back(choice.word);
    }
    return idle;
}

std::vector<const FileInfo *> matching_files(const MediaDescriptor *md, const std::vector<std::string> &patterns)
{
    std::vector<const FileInfo *> files;
    visit_group(md, {md->root, nullptr, patterns}, patterns.empty(), collect, &files);
    return files;
}

std::vector<std::string> idle_patterns(const MediaDescriptor *md, const std::vector<std::string> &patterns)
{
    std::vector<std::string> idle;
    for (const std::string &pattern : patterns) {
        if (matching_files(md, {pattern}).empty()) idle.push_back(pattern);
    }
    return idle;
}

std::string visible_name(const MediaDescriptor *md, const FileInfo *info)
{
    char name[VISIBLE_NAME_SIZE];
    char text[VISIBLE_NAME_SIZE * utf8_bytes];
    compose_filename(md, info, name);
    return {text, roman8_to_utf8(text, name)};
}

std::string visible_path(const MediaDescriptor *md, const FileInfo *info)
{
    std::string path = visible_name(md, info);
    for (const FileInfo *parent = info->parent; parent != nullptr; parent = parent->parent) {
        path.insert(0, visible_name(md, parent) + separator);
    }
    return path;
}
