// Names for a volume: a host name is STEM, STEM.TYPE or STEM.&BYTES.TYPE.
#include "console/put_names.h"

#include <algorithm>
#include <cstdio>

#include "base/convert.h"
#include "base/error.h"
#include "base/log.h"
#include "console/name_parts.h"
#include "console/stored_entry.h"
#include "volume/filetypes.h"
#include "volume/names.h"
#include "volume/navigate.h"
#include "volume/type_text.h"

namespace
{
constexpr size_t longest_stem = 200; // no volume stores that many
constexpr uint32_t formats_with_types[] = {FORMAT_LIF, FORMAT_DISK45, FORMAT_TAPE45, FORMAT_SDF};
constexpr const char *any_type = "#0";

bool knows_type(uint32_t format, const Arguments &arguments, uint16_t *ret_type)
{
    const char *type = arguments.type.empty() ? any_type : arguments.type.c_str();
    return set_filetype(format, type, arguments.system.c_str(), ret_type) == 0;
}

bool some_volume_knows(const std::string &type, const std::string &system)
{
    uint16_t word = 0;
    const char *name = type.empty() ? any_type : type.c_str();
    auto knows = [&](uint32_t format) { return set_filetype(format, name, system.c_str(), &word) == 0; };
    return std::any_of(std::begin(formats_with_types), std::end(formats_with_types), knows);
}

std::string sources_fault(const Arguments &arguments)
{
    const std::vector<std::string> &sources = arguments.words;
    const bool has_input = std::find(sources.begin(), sources.end(), "-") != sources.end();
    if (sources.size() > 1 && has_input) return "Standard input is copied alone";
    if (sources.size() > 1 && !arguments.name.empty()) return "--as is the name of one file";
    if (has_input && arguments.name.empty()) return "Standard input needs a name, --as NAME";
    if (arguments.name.find_first_of("/\\:") != std::string::npos) return "--as takes a name without / \\ and :";
    return "";
}

// A type whose name is too long for the end of a name is told by its number.
std::string type_for_name(uint32_t format, const Arguments &arguments)
{
    uint16_t word = 0;
    if (arguments.type.size() <= longest_type_ending || !knows_type(format, arguments, &word)) return arguments.type;
    char text[8];
    snprintf(text, sizeof text, "#%04x", word);
    return text;
}

std::string put_together(const MediaDescriptor *md, const Arguments &arguments, const std::string &name)
{
    NameParts parts = take_apart(name);
    if (!arguments.type.empty()) parts.type = type_for_name(md->format, arguments);
    if (arguments.record != 0) parts.record = std::to_string(arguments.record);
    // Without a type behind it a length of records would leave the engine looking for one.
    if (parts.type.empty()) parts.type = default_type(md->format);
    parts.stem.resize(std::min(parts.stem.size(), longest_stem));
    return parts.stem + (parts.record.empty() ? "" : ".&" + parts.record) + "." + parts.type;
}

std::string without_folders(const std::string &path)
{
    return path.substr(path.find_last_of("/\\:") + 1);
}

std::string visible_type(const FileInfo *info)
{
    char text[type_text_size];
    type_text(info, text);
    return text;
}

std::string without_text_ending(const Arguments &arguments, const std::string &name)
{
    return has_text_ending(arguments, name) ? name.substr(0, name.size() - 4) : name;
}

void take_name(const MediaDescriptor *md, const Arguments &arguments, const std::string &name, FileInfo *info)
{
    set_type_text(info, default_type(md->format));
    const int32_t level = loglevel;
    loglevel = 0; // the engine will say the same of the name when it copies the file
    process_filepath(md, info, without_text_ending(arguments, name).c_str(), info->system_string, 1);
    loglevel = level;
}
}

std::string put_usage_fault(const Arguments &arguments)
{
    const std::string fault = sources_fault(arguments);
    return fault.empty() ? type_usage_fault(arguments) : fault;
}

std::string type_usage_fault(const Arguments &arguments)
{
    if (arguments.record % 2 != 0) return "--record: " + std::to_string(arguments.record) + " is odd";
    if (!some_volume_knows("", arguments.system)) return "--system: there is no system \"" + arguments.system + "\"";
    if (!some_volume_knows(arguments.type, arguments.system))
        return "--type: there is no type \"" + arguments.type + "\"";
    return "";
}

const char *default_type(uint32_t format)
{
    return format == FORMAT_LIF ? "ASCII" : "DATA";
}

bool type_is_known(const MediaDescriptor *md, const Arguments &arguments)
{
    uint16_t type = 0;
    return knows_type(md->format, arguments, &type);
}

bool has_text_ending(const Arguments &arguments, const std::string &name)
{
    return arguments.txt && name.size() > 4 && (name.ends_with(".txt") || name.ends_with(".TXT"));
}

std::string name_for_engine(const MediaDescriptor *md, const Arguments &arguments, const std::string &source)
{
    std::string name = arguments.name.empty() ? without_folders(source) : arguments.name;
    if (arguments.type.empty() && arguments.record == 0) return name;
    const std::string shorter = without_text_ending(arguments, name);
    return put_together(md, arguments, shorter) + name.substr(shorter.size());
}

bool can_be_listed(MediaDescriptor *md, const Arguments &arguments, const std::string &name)
{
    FileInfo info = new_entry(arguments);
    take_name(md, arguments, name, &info);
    if (info.type == 0) set_filetype(md->format, visible_type(&info).c_str(), nullptr, &info.type);
    info.name[0] = 'A'; // any that can be, as place and length are
    info.name[1] = '\0';
    info.location = info.records = 1;
    FileInfo stored;
    return entry_as_stored(md, &info, &stored);
}

std::string stored_name(const MediaDescriptor *md, const Arguments &arguments, const std::string &name)
{
    FileInfo info = new_entry(arguments);
    take_name(md, arguments, name, &info);
    string_win2hp(info.name, info.name, 1);
    string_win2hp(info.name, info.name, 1); // the engine turns a name twice, which letters beyond ASCII show
    return info.name;
}

FileInfo new_entry(const Arguments &arguments)
{
    FileInfo info = {};
    set_system_text(&info, arguments.system.c_str());
    return info;
}
