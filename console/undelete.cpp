// A purged file back into the catalogue of a LIF volume: its entry is still there, and its records may be.
#include <algorithm>
#include <cstring>

#include "console/change.h"
#include "console/change_verbs.h"
#include "console/matches.h"
#include "console/medium.h"
#include "console/put_names.h"
#include "console/stored_entry.h"
#include "console/tables.h"
#include "volume/access.h"
#include "volume/filetypes.h"
#include "volume/format.h"
#include "volume/names.h"
#include "volume/navigate.h"
#include "volume/region.h"
#include "volume/type_text.h"

namespace
{
constexpr uint32_t plain_words = 101;
constexpr uint32_t not_supported = 109;
constexpr uint32_t file_not_found = 207;
constexpr uint32_t target_exists = 210;

bool refuse(uint32_t number, const std::string &words)
{
    set_error(number, "%s", words.c_str());
    return false;
}

// A purged file is called by what stands in the directory, or as it will be called then.
bool is_called(const FileInfo *info, const FileInfo &typed, const std::string &name)
{
    if (info->name == name) return true;
    FileInfo encoded = typed;
    encode_filename(&encoded, FORMAT_LIF, name.c_str());
    return std::strcmp(encoded.name, info->name) == 0;
}

std::vector<FileInfo *> find_purged(const MediaDescriptor *md, const Arguments &arguments, const FileInfo &typed)
{
    std::vector<FileInfo *> found;
    for (FileInfo *info = md->root; info != nullptr; info = info->next) {
        const bool there = arguments.address == 0 || info->location == static_cast<uint32_t>(arguments.address);
        if (info->deleted != 0 && there && is_called(info, typed, arguments.word)) found.push_back(info);
    }
    return found;
}

FileInfo *choose_purged(const MediaDescriptor *md, const Arguments &arguments, const FileInfo &typed)
{
    const std::vector<FileInfo *> found = find_purged(md, arguments, typed);
    if (found.size() == 1) return found.front();
    if (found.empty()) {
        refuse(file_not_found, "no purged file \"" + arguments.word + "\"");
    } else {
        std::string words = "Several purged files are called that, --at says which: ";
        for (const FileInfo *info : found)
            words += (info == found.front() ? "" : ", ") + std::to_string(info->location);
        refuse(plain_words, words);
    }
    return nullptr;
}

// What has come to the place of a purged file since.
bool place_is_free(MediaDescriptor *md, const FileInfo *info)
{
    const Region region = file_region(info);
    const uint64_t end = std::max<uint64_t>(md->records, end_record(md));
    if (region.start < md->file_area_start || region.start + region.length > end)
        return refuse(plain_words, "Its records lie outside the volume");
    const FileInfo *other = live_file_in(md, region);
    if (other == nullptr) return true;
    return refuse(plain_words, "Its records are in use by " + visible_name(md, other));
}

bool name_is_free(MediaDescriptor *md, const FileInfo *info)
{
    if (image_find_file(md, md->root, info->name, 0) == nullptr) return true;
    return refuse(target_exists, "file \"" + std::string(info->name) + "\"");
}

// The entry as it was, as far as its type says.
bool revive(MediaDescriptor *md, const FileInfo &typed, FileInfo *info)
{
    FileInfo stored;
    FileInfo revived = *info;
    revived.deleted = 0;
    revived.type = typed.type;
    if (!entry_as_stored(md, &revived, &stored)) return refuse(not_supported, "files of that type");
    stored.level = info->level;
    stored.prev = info->prev;
    stored.next = info->next;
    *info = stored;
    return true;
}

FileInfo *undelete(MediaDescriptor *md, const Arguments &arguments)
{
    FileInfo typed = {};
    set_type_text(&typed, arguments.type.c_str());
    if (set_filetype(md->format, arguments.type.c_str(), arguments.system.c_str(), &typed.type) < 0) return nullptr;
    FileInfo *info = choose_purged(md, arguments, typed);
    if (info == nullptr || !name_is_free(md, info) || !place_is_free(md, info)) return nullptr;
    return revive(md, typed, info) && back_up(arguments, md) ? info : nullptr;
}

int undelete_file(MediaDescriptor *md, const Arguments &arguments)
{
    const FileInfo *info = undelete(md, arguments);
    if (info == nullptr) {
        Tally tally;
        ErrorWords words;
        take_error(&words);
        fail_item(arguments, arguments.word, words, &tally);
        return exit_failed;
    }
    tell(arguments, visible_name(md, info) + ": type " + type_name(info) + ", " + size_and_place(info));
    return arguments.dry_run || commit_tables(md, "Nothing was brought back.") ? exit_done : exit_failed;
}
}

int run_undelete(const Arguments &arguments)
{
    if (arguments.type.empty()) return report_usage("--type is required: a purged file has lost its type");
    const std::string fault = type_usage_fault(arguments);
    if (!fault.empty()) return report_usage(fault.c_str());
    const Medium medium = open_for_change(arguments);
    if (medium == nullptr) return exit_failed;
    if (medium->format != FORMAT_LIF) {
        set_error(not_supported, "undelete on a %s volume", volume_format(medium->format).name);
        return report_failure();
    }
    return run_told(arguments, [&] { return undelete_file(medium.get(), arguments); });
}
