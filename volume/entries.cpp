// One entry of a directory, by the row of its format, and the checks that all formats share.
#include "volume/entries.h"

#include "base/error.h"
#include "volume/entries_inner.h"
#include "volume/format.h"
#include "volume/names.h"

namespace
{
constexpr uint16_t bdat_98x6 = 0xE961; // with a head of a record's length
}

int32_t get_file_info(MediaDescriptor *md, FileInfo *ret_info, const uint8_t *dir_entry, uint32_t *ret_size)
{
    const VolumeFormat &format = volume_format(md->format);
    if (format.read_entry == nullptr) {
        set_error(203, "");
        *ret_size = 0;
        return -1;
    }
    int32_t result = format.read_entry(md, ret_info, dir_entry, ret_size);
    if (result <= 0) {
        *ret_size = 0;
        return result;
    }
    char message[NAME_MESSAGE_SIZE];
    if (ret_info->location == 0) {
        set_error(213, "file \"%s\" has location zero", ret_info->name);
    } else if (check_valid_filename(md->format, ret_info->name, nullptr, message) < 0) {
        set_error(213, "file \"%s\": %s", ret_info->name, message);
    } else {
        return 1;
    }
    *ret_size = 0;
    return -1;
}

void set_file_info(const MediaDescriptor *md, const FileInfo *info, uint8_t *dir_entry)
{
    const VolumeFormat &format = volume_format(md->format);
    if (format.write_entry != nullptr) format.write_entry(md, info, dir_entry);
}

void add_file_info(uint32_t format, FileInfo *info)
{
    volume_format(format).complete_info(info);
}

uint32_t count_records(const FileInfo *info)
{
    uint32_t length = info->record_len * 2;
    if (info->type == bdat_98x6) {
        // Kept: a BDAT file of no records at all shows 16777215.  [KeepsWrappedRecordCountOfEmptyBdatFile]
        return (length + info->size - 257) / length;
    }
    return (length + info->size - 1) / length;
}
