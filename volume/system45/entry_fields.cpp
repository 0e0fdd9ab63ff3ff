// What the directory entries of disks and tapes have in common.
#include <cstring>

#include "volume/access.h"
#include "volume/filetypes_inner.h"
#include "volume/system45/system45_inner.h"
#include "volume/type_text.h"

namespace
{
constexpr size_t name_bytes = 6;
constexpr uint16_t system_bits = 0xE000;
constexpr uint32_t default_record_len = 128;
}

void take_name45(FileInfo *info, const uint8_t *entry)
{
    std::memcpy(info->name, entry, name_bytes);
    info->name[name_bytes] = '\0';
    size_t length = std::strlen(info->name);
    while (length > 1 && info->name[length - 1] == ' ')
        length--; // a name of blanks stays one, and the file in the list
    info->name[length] = '\0';
    info->deleted = entry[0] == 0 ? 1 : 0;
}

void put_name45(const FileInfo *info, uint8_t *entry)
{
    for (size_t i = 0; i < name_bytes && info->name[i] != '\0'; i++) entry[i] = static_cast<uint8_t>(info->name[i]);
    if (info->deleted != 0) entry[0] = 0;
}

void complete_info45(FileInfo *info)
{
    if (info->system_string[0] == '\0') {
        // Kept: the types of a tape lie below these bits, so its files are the 9825's.  [KeepsTapeFilesOfSystem9825]
        const char *system = find_type_name(Sys45_system, (info->type & system_bits) >> 8);
        set_system_text(info, system == nullptr ? "9845" : system);
    }
    if (info->record_len == 0) info->record_len = default_record_len;
}

uint32_t complete_entry45(const MediaDescriptor *md, FileInfo *info)
{
    char text[TYPE_TEXT_SIZE];
    get_filetype(md, text, info->type, info->name);
    set_type_text(info, text);
    complete_info45(info);
    info->size = info->record_len * info->records * 2;
    return static_cast<uint32_t>((uint64_t{info->size} + RECORD_SIZE - 1) / RECORD_SIZE * RECORD_SIZE);
}
