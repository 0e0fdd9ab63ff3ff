// The System 45 family, disks of the 9845, 9835, 9831, 250 and 260, of the 9825, and DC100 tapes: recognised, and
// refused. A disk is known by its magic word, that of a 9825 (magic 0) by three more words of its record 0; a tape,
// which reaches Tarvo as an image file only, by the word $0500 at the start of record 1.
#include "volume/system45/system45.h"

#include "base/convert.h"
#include "base/error.h"
#include "volume/access.h"
#include "volume/filetypes_inner.h"
#include "volume/type_text.h"

namespace
{
constexpr uint16_t magic_9831 = 0x0200;
constexpr uint16_t magic_9845 = 0x0500; // also at the start of a tape's directory
constexpr uint16_t magic_250 = 0x0600;
constexpr uint16_t magic_9825 = 0;
constexpr uint32_t default_record_len = 128;

bool is_9825(const MediaDescriptor *md, const uint8_t *record)
{
    return md->magic == magic_9825 && get_word(record + 2) == 30 && get_word(record + 8) == 1 &&
           get_word(record + 10) == 23;
}

int32_t claims_disk(MediaDescriptor *md, const uint8_t *record)
{
    bool family = md->magic == magic_9831 || md->magic == magic_9845 || md->magic == magic_250;
    return family || is_9825(md, record) ? 1 : 0;
}

int32_t claims_tape(MediaDescriptor *md, const uint8_t *)
{
    if (md->access != ACCESS_IMAGE) return 0;
    uint8_t record[RECORD_SIZE];
    if (read_record(md, 1, record) < 0) return -1;
    md->magic = get_word(record);
    return md->magic == magic_9845 ? 1 : 0;
}

int32_t refuse_disk(MediaDescriptor *md, const uint8_t *)
{
    set_error(109, "%s", md->magic == magic_9825 ? "9825 volume" : "System 45 disk volume");
    return -1;
}

int32_t refuse_tape(MediaDescriptor *, const uint8_t *)
{
    set_error(109, "System 45 tape volume");
    return -1;
}

void complete_system45(FileInfo *info)
{
    if (info->system_string[0] == '\0') {
        const char *system = find_type_name(Sys45_system, (info->type & 0xE000) >> 8);
        set_system_text(info, system == nullptr ? "9845" : system);
    }
    if (info->record_len == 0) info->record_len = default_record_len;
}

constexpr uint8_t tape_directory_head[] = {0x05, 0x00, 0xFF, 0xFF};
}

const VolumeFormat disk45_format = {
    .name = "System 45 disk",
    .claims = claims_disk,
    .read_header = refuse_disk,
    .complete_info = complete_system45,
    .name_limit = 6,
    .has_spare_directory = true,
    .reads_spare_directory = true,
    .has_allocation_table = true,
};

const VolumeFormat tape45_format = {
    .name = "System 45 tape",
    .claims = claims_tape,
    .read_header = refuse_tape,
    .complete_info = complete_system45,
    .first_entry = sizeof tape_directory_head,
    .directory_head = tape_directory_head,
    .name_limit = 6,
    .has_spare_directory = true,
};
