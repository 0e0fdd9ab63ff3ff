// Names as users write them, against what a volume can hold.
#include "console/new_name.h"

#include <cstring>

#include "base/convert.h"
#include "base/error.h"
#include "base/log.h"
#include "console/change.h"
#include "console/name_parts.h"
#include "volume/filetypes.h"
#include "volume/format.h"
#include "volume/names.h"
#include "volume/type_text.h"

namespace
{
constexpr uint32_t plain_words = 101;
constexpr uint32_t bad_filename = 212;

bool refuse_name(const std::string &name, const char *reason)
{
    set_error(bad_filename, "file \"%s\": %s", name.c_str(), reason);
    return false;
}

// A name as the volume stores it: blanks go, and what its character set lacks.
std::string in_hp_letters(const std::string &name)
{
    std::string text(name.size() + 1, '\0');
    string_win2hp(text.data(), name.c_str(), 1);
    text.resize(std::strlen(text.c_str()));
    return text;
}

bool check_stem(const MediaDescriptor *md, const FileInfo *info, const std::string &stem)
{
    const std::string stored = in_hp_letters(stem);
    char message[NAME_MESSAGE_SIZE] = "";
    if (stem.find_first_of("\":") != std::string::npos)
        return refuse_name(stem, "filename contains invalid character(s)");
    if (check_valid_filename(md->format, stored.c_str(), nullptr, message) < 0) return refuse_name(stem, message);
    FileInfo encoded = *info;
    char visible[VISIBLE_NAME_SIZE];
    const int32_t level = loglevel;
    loglevel = 0; // a name that is too long is refused, not cut
    encode_filename(&encoded, md->format, stored.c_str());
    loglevel = level;
    decode_filename(&encoded, md->format, visible);
    if (stored.size() > volume_format(md->format).name_limit || stored != visible)
        return refuse_name(stem, "filename too long");
    return true;
}

bool knows_type(const MediaDescriptor *md, const std::string &type, uint16_t *ret_type)
{
    return set_filetype(md->format, type.c_str(), nullptr, ret_type) == 0;
}

// What a new name says of type and length must be what the file has.
bool says_the_same(const MediaDescriptor *md, const FileInfo *info, const NameParts &parts)
{
    uint16_t type = info->type;
    if (!parts.type.empty() && !knows_type(md, parts.type, &type)) return false;
    const bool same_length = parts.record.empty() || parts.record == std::to_string(info->record_len * 2);
    if (type == info->type && same_length) return true;
    set_error(plain_words, "Another name changes neither type nor length of records; attr does");
    return false;
}
}

std::string without_own_type(const MediaDescriptor *md, const FileInfo *info, const std::string &name)
{
    char text[TYPE_TEXT_SIZE];
    get_filetype(md, text, info->type, info->name); // without what may run on into the system
    for (const std::string &type : {type_name(info), std::string(text)}) {
        const std::string ending = "." + type;
        const std::string with_length = ".&" + std::to_string(info->record_len * 2) + ending;
        for (const std::string &own : {with_length, ending}) {
            if (name.size() <= own.size() || !name.ends_with(own)) continue;
            const std::string stem = name.substr(0, name.size() - own.size());
            return stem.find(".&") == std::string::npos ? stem : name; // another length
        }
    }
    return name;
}

bool check_new_name(const MediaDescriptor *md, const FileInfo *info, const std::string &name)
{
    const std::string stem = without_own_type(md, info, name);
    const NameParts parts = stem == name ? take_apart(name) : NameParts{stem, "", ""};
    FileInfo typed = *info;
    if (!parts.type.empty()) {
        if (!knows_type(md, parts.type, &typed.type)) return false;
        set_type_text(&typed, parts.type.c_str());
    }
    return check_stem(md, &typed, parts.stem);
}

bool rename_entry(const MediaDescriptor *md, FileInfo *info, const std::string &name)
{
    std::string stem = without_own_type(md, info, name);
    if (stem == name) {
        const NameParts parts = take_apart(name);
        if (!says_the_same(md, info, parts)) return false;
        stem = parts.stem;
    }
    if (!check_stem(md, info, stem)) return false;
    std::memset(info->name, 0, sizeof info->name);
    encode_filename(info, md->format, in_hp_letters(stem).c_str());
    info->name[volume_format(md->format).name_limit] = '\0';
    return true;
}
