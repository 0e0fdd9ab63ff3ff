// A new file on a medium, with nothing in it: its records say so in the way of its type.
#include <algorithm>
#include <cstring>
#include <iterator>

#include "base/convert.h"
#include "console/change.h"
#include "console/change_verbs.h"
#include "console/matches.h"
#include "console/medium.h"
#include "console/name_parts.h"
#include "console/new_name.h"
#include "console/put_names.h"
#include "console/stored_entry.h"
#include "console/tables.h"
#include "volume/entries.h"
#include "volume/filetypes.h"
#include "volume/format.h"
#include "volume/insert.h"
#include "volume/names.h"
#include "volume/new_entry.h"
#include "volume/type_text.h"

namespace
{
constexpr uint32_t not_supported = 109;
constexpr uint32_t no_room = 211;

// What a program of that computer takes for the end of a file's data.
struct EmptyRow {
    uint32_t format;
    uint16_t type;
    uint16_t pattern;
};
constexpr EmptyRow empty_rows[] = {
    {FORMAT_LIF, 0x0001, 0xFFFF}, // ASCII
};
constexpr uint16_t usual_pattern = 60;

uint16_t pattern_of(uint32_t format, uint16_t type)
{
    const auto *row = std::find_if(std::begin(empty_rows), std::end(empty_rows), [=](const EmptyRow &candidate) {
        return candidate.format == format && candidate.type == type;
    });
    return row == std::end(empty_rows) ? usual_pattern : row->pattern;
}

std::string usage_fault(const Arguments &arguments)
{
    if (arguments.word.find_first_of("/\\:") != std::string::npos) return "NAME is without / \\ and :";
    if (arguments.room < 0) return "--size is required";
    return type_usage_fault(arguments);
}

// ---- the entry -----------------------------------------------------------------------------------------

// The type that --type or the name asks for. Errors set: 200, 201.
bool take_type(const MediaDescriptor *md, const Arguments &arguments, const NameParts &parts, FileInfo *info)
{
    std::string type = arguments.type.empty() ? parts.type : arguments.type;
    if (type.empty()) type = default_type(md->format);
    set_type_text(info, type.c_str());
    return set_filetype(md->format, type.c_str(), arguments.system.c_str(), &info->type) == 0;
}

// The engine leaves out blanks, and turns the other letters into the volume's.
bool take_name(const MediaDescriptor *md, const Arguments &arguments, const NameParts &parts, FileInfo *info)
{
    if (!check_new_name(md, info, arguments.word)) return false;
    std::string stem = parts.stem;
    std::erase(stem, ' ');
    encode_filename(info, md->format, stem.c_str());
    return true;
}

void take_length(const Arguments &arguments, const NameParts &parts, FileInfo *info)
{
    auto bytes = static_cast<uint32_t>(arguments.record);
    if (bytes == 0 && !parts.record.empty()) safe_strtoul(parts.record.c_str(), &bytes);
    info->record_len = bytes / 2; // 0: as the type has it
}

bool refuse(uint32_t number, const std::string &words)
{
    set_error(number, "%s", words.c_str());
    return false;
}

// How much there is of it, as the directory will say it.
bool take_size(MediaDescriptor *md, const Arguments &arguments, FileInfo *info)
{
    const uint32_t length = info->record_len;
    add_file_info(md->format, info);
    if (length != 0 && info->record_len != length)
        return refuse(not_supported, "a length of records for type " + type_name(info));
    const uint64_t bytes = uint64_t{info->record_len} * 2;
    info->size = static_cast<uint32_t>(arguments.room);
    info->records = static_cast<uint32_t>((info->size + bytes - 1) / bytes);
    if (info->records > volume_format(md->format).most_records)
        return refuse(no_room, "file \"" + std::string(info->name) + "\"");
    FileInfo stored;
    info->location = 1; // any that can be
    if (!entry_as_stored(md, info, &stored) || stored.type != info->type || stored.record_len != info->record_len)
        return refuse(not_supported, "files like this on a " + std::string(volume_format(md->format).name) + " volume");
    info->size = stored.size;
    return true;
}

bool make_entry(MediaDescriptor *md, const Arguments &arguments, FileInfo *info)
{
    const NameParts parts = take_apart(arguments.word);
    take_length(arguments, parts, info);
    get_current_datetime(&info->date);
    return take_type(md, arguments, parts, info) && take_name(md, arguments, parts, info) &&
           take_size(md, arguments, info);
}

// ---- the file ------------------------------------------------------------------------------------------

bool create(MediaDescriptor *md, const Arguments &arguments, FileInfo *info)
{
    if (arguments.dry_run) return create_entry(md, info, nullptr) != nullptr;
    return back_up(arguments, md) && image_create_file(md, info, 1, pattern_of(md->format, info->type)) >= 0;
}

int make_file(MediaDescriptor *md, const Arguments &arguments)
{
    FileInfo info = {};
    Tally tally;
    if (!make_entry(md, arguments, &info) || !create(md, arguments, &info)) {
        ErrorWords words;
        take_error(&words);
        fail_item(arguments, arguments.word, words, &tally);
        return exit_failed;
    }
    tell(arguments, visible_name(md, &info) + ": type " + type_name(&info) + ", " + size_and_place(&info));
    return arguments.dry_run || commit_tables(md, "Nothing was made.") ? exit_done : exit_failed;
}
}

int run_mk(const Arguments &arguments)
{
    const std::string fault = usage_fault(arguments);
    if (!fault.empty()) return report_usage(fault.c_str());
    const Medium medium = open_for_change(arguments);
    if (medium == nullptr) return exit_failed;
    return run_told(arguments, [&] { return make_file(medium.get(), arguments); });
}
