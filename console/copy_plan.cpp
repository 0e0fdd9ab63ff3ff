// The names that copies get, held against what is there.
#include "console/copy_plan.h"

#include <cstring>
#include <unordered_map>

#include "base/convert.h"
#include "base/log.h"
#include "console/name_parts.h"
#include "console/new_name.h"
#include "volume/filetypes.h"
#include "volume/format.h"
#include "volume/names.h"
#include "volume/navigate.h"

namespace
{
constexpr uint32_t same_file = 208;
constexpr uint32_t target_exists = 210;

// The file's own name as it fits another format.
void adapt_name(const MediaDescriptor *from_md, const MediaDescriptor *md, FileInfo *info)
{
    if (from_md->format == md->format) return;
    char name[VISIBLE_NAME_SIZE];
    decode_filename(info, from_md->format, name);
    encode_filename(info, md->format, name);
    info->name[volume_format(md->format).name_limit] = '\0';
}

// As the engine makes it, which turns each name twice into the volume's letters.
std::string name_in_directory(const MediaDescriptor *md, const CopyItem &item)
{
    FileInfo copy = item.from;
    const int32_t level = loglevel;
    loglevel = 0; // the engine says the same when it copies the file
    const char *to_file = item.to_file.empty() ? nullptr : item.to_file.c_str();
    process_filepath(md, &copy, to_file, copy.system_string, 1);
    loglevel = level;
    string_win2hp(copy.name, copy.name, 1);
    string_win2hp(copy.name, copy.name, 1);
    return copy.name;
}

// A name without full stops keeps the type that the file has.
std::string name_for_copy(const MediaDescriptor *md, const FileInfo *info, const std::string &name)
{
    const std::string stem = without_own_type(md, info, name);
    return stem.find('.') == std::string::npos ? stem : name;
}

// A type that the name gives is one of this volume, whatever system the file is of.
void take_system(const MediaDescriptor *md, const std::string &type, FileInfo *info)
{
    char system[sizeof info->system_string + 1] = {};
    uint16_t ignored = 0;
    std::memcpy(system, info->system_string, sizeof info->system_string);
    if (!type.empty() && set_filetype(md->format, type.c_str(), system, &ignored) < 0) info->system_string[0] = '\0';
}

void plan_name(const CopyRun &run, CopyItem *item)
{
    const MediaDescriptor *md = target_of(run);
    const std::string &name = run.destination.name;
    if (name.empty()) {
        adapt_name(run.source.medium.get(), md, &item->from);
    } else if (check_new_name(md, item->file.info, name)) {
        item->to_file = name_for_copy(run.source.medium.get(), item->file.info, name);
        take_system(md, take_apart(item->to_file).type, &item->from);
    } else {
        item->file.obstacle = error_words();
    }
    item->stored = name_in_directory(md, *item);
}

bool goes_to_itself(const CopyRun &run, const CopyItem &item)
{
    return run.other == nullptr && item.stored == item.file.info->name;
}

void find_old(const CopyRun &run, CopyItem *item)
{
    MediaDescriptor *md = target_of(run);
    item->old = image_find_file(md, md->root, item->stored.c_str(), 0);
    if (item->old != nullptr) item->old_name = item->old->name;
}

std::string obstacle_of_old(const Arguments &arguments, const CopyItem &item)
{
    if (item.old == nullptr) return "";
    if (!arguments.overwrite && !arguments.interactive) {
        set_error(target_exists, "file \"%s\"", item.stored.c_str());
        return error_words();
    }
    if (!is_protected(item.old) || arguments.force) return "";
    return "file \"" + item.stored + "\" is protected; --force replaces it";
}

std::string find_obstacle(const CopyRun &run, const CopyItem &item)
{
    if (goes_to_itself(run, item)) {
        set_error(same_file, "file \"%s\"", item.stored.c_str());
        return error_words();
    }
    if (run.moving && is_protected(item.file.info) && !run.arguments.force) return "it is protected; --force moves it";
    return obstacle_of_old(run.arguments, item);
}

// Two files that would get one name.
void find_twins(CopyRun *run)
{
    std::unordered_map<std::string, const CopyItem *> first;
    for (CopyItem &item : run->items) {
        const auto [place, is_first] = first.emplace(item.stored, &item);
        if (is_first || !item.file.obstacle.empty()) continue;
        set_error(target_exists, "file \"%s\" of %s", item.stored.c_str(), place->second->file.shown.c_str());
        item.file.obstacle = error_words();
    }
}
}

MediaDescriptor *target_of(const CopyRun &run)
{
    return run.other != nullptr ? run.other.get() : run.source.medium.get();
}

void plan_copies(CopyRun *run, std::vector<ChangeItem> files)
{
    run->items.reserve(files.size());
    for (ChangeItem &file : files) {
        CopyItem item = {.file = std::move(file), .from = {}, .to_file = "", .stored = ""};
        item.from = *item.file.info;
        plan_name(*run, &item);
        find_old(*run, &item);
        if (item.file.obstacle.empty()) item.file.obstacle = find_obstacle(*run, item);
        run->items.push_back(std::move(item));
    }
    find_twins(run);
}
