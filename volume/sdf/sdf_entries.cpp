// Entries of directories, 24 bytes: name (16), not read (4), number of the inode (4). What is known of the file stands
// in the inode; a directory is a file too.
#include <cstring>

#include "base/convert.h"
#include "base/error.h"
#include "base/log.h"
#include "volume/access.h"
#include "volume/entries_inner.h"
#include "volume/filetypes_inner.h"
#include "volume/sdf/sdf_inner.h"
#include "volume/type_text.h"

namespace
{
constexpr uint32_t name_size = 16;
constexpr uint16_t directory_type = 0xE9C3;
constexpr uint16_t own_types = 0xE980; // that of the system's own files, with what varies masked out
constexpr uint16_t own_types_mask = 0xFF80;
constexpr uint32_t default_record_len = 128;

int32_t refuse(const char *words)
{
    set_error(213, "%s", words);
    return -1;
}

void take_name(FileInfo *info, const uint8_t *entry)
{
    uint32_t length = 0;
    for (uint32_t i = 0; i < name_size; i++) {
        info->name[i] = entry[i] == 0 ? ' ' : static_cast<char>(entry[i]);
        if (info->name[i] != ' ') length = i + 1;
    }
    info->name[length] = '\0';
}

void take_inode(const MediaDescriptor *md, FileInfo *info, const Inode &inode)
{
    info->type = inode.type;
    char text[TYPE_TEXT_SIZE];
    get_filetype(md, text, info->type, info->name);
    set_type_text(info, text);
    info->location = inode.extents[0].start;
    time_ios2tm(&info->date, inode.changed);
    info->record_len = inode.record_length / 2;
    complete_sdf_info(info);
    info->size = inode.size;
    info->records = count_records(info);
    info->is_directory = inode.type == directory_type ? 1 : 0;
}
}

void take_padded_text(char *text, const uint8_t *bytes, uint32_t size)
{
    while (size > 0 && (bytes[size - 1] == ' ' || bytes[size - 1] == 0)) size--;
    std::memcpy(text, bytes, size);
    text[size] = '\0';
}

int32_t read_sdf_entry(MediaDescriptor *md, FileInfo *info, const uint8_t *entry, uint32_t *ret_size)
{
    if (entry[0] == 0) {
        info->deleted = 1; // a free slot: nothing is lost with it
        return refuse("empty filename");
    }
    take_name(info, entry);
    info->inode = get_dword(entry + 20);
    const uint8_t *bytes = find_inode(md, info->inode);
    if (bytes == nullptr) return refuse("illegal inode number");
    const Inode inode = read_inode(bytes);
    take_inode(md, info, inode);
    *ret_size = inode.blocks * md->block_size;
    return 1;
}

void complete_sdf_info(FileInfo *info)
{
    if ((info->type & own_types_mask) != own_types) {
        const char *system = find_type_name(LIF_system, info->type >> 8);
        if (system != nullptr) set_system_text(info, system);
    }
    if (info->record_len == 0) info->record_len = default_record_len;
}

int32_t locate_sdf_directory(const MediaDescriptor *md, const FileInfo *directory, DirectoryPlace *ret_place)
{
    const uint8_t *bytes = find_inode(md, directory == nullptr ? root_inode : directory->inode);
    if (bytes == nullptr) return refuse("illegal inode number");
    const Inode inode = read_inode(bytes);
    if (inode.record_length == 0) {
        log_file(0, "Error in directory inode\n");
        return refuse("directory inode");
    }
    take_extents(md, inode, &ret_place->extents);
    // The number of entries goes by the length that the inode tells, their place by the one that they have.
    ret_place->slots = inode.size / inode.record_length;
    return 0;
}

int32_t locate_sdf_file(const MediaDescriptor *md, const FileInfo *info, ExtentList *ret_extents)
{
    const uint8_t *bytes = find_inode(md, info->inode);
    if (bytes == nullptr) return refuse("illegal inode number");
    take_extents(md, read_inode(bytes), ret_extents);
    return 0;
}
