// Which file system a medium holds, from its first records.
#include <cstdint>

#include "base/convert.h"
#include "base/error.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "volume/access.h"
#include "volume/format.h"
#include "volume/open.h"

namespace
{
// The superblock of HFS, 8 records of it: its magic number, in two forms, stands at byte 1372.
constexpr uint32_t superblock_records = 8;
constexpr uint32_t superblock_magic = 1372;
constexpr uint32_t second_volume_record = 32; // behind a LIF boot area

int32_t probe_hfs(MediaDescriptor *md, uint32_t record)
{
    uint8_t block[superblock_records * RECORD_SIZE];
    for (uint32_t i = 0; i < superblock_records; i++) {
        if (read_record(md, record + i, block + i * RECORD_SIZE) < 0) return -1;
    }
    uint32_t magic = get_dword(block + superblock_magic);
    if (magic == 0x11954 || magic == 0x95014) {
        md->hfs_present = 1;
        md->hfs_record = record;
    }
    return 0;
}

int32_t recognise_hfs_alone(MediaDescriptor *md)
{
    if (md->access != ACCESS_IMAGE) {
        set_error(203, "magic=$%04X, maybe 9825", static_cast<unsigned>(md->magic));
        return -1;
    }
    if (probe_hfs(md, 0) < 0) return -1;
    if (md->hfs_present != 0) return 0;
    set_error(203, "");
    return -1;
}

void compare_with_device(const MediaDescriptor *md)
{
    const MediumAccess *access = medium_access(md);
    if (access == nullptr || access->device_geometry == nullptr) return;
    DeviceGeometry device = access->device_geometry(md);
    auto differ = [](uint32_t stored, uint32_t real) { return stored != 0 && real != 0 && stored != real; };
    if (differ(md->cylinders, device.cylinders * device.heads)) {
        log_file(2, "File system and device report different cylinder count (maybe spares)\n");
    }
    if (differ(md->sectors, device.sectors)) {
        log_file(2, "File system and device report different sector count (maybe spares)\n");
    }
    if (differ(md->heads, device.heads)) log_file(2, "File system and device report different head count\n");
    if (differ(md->interleave, device.interleave)) {
        log_file(2, "File system and device report different interleave factor\n");
    }
}
}

int32_t get_media_info(MediaDescriptor *md)
{
    log_file(3, "get_media_info(md=%lu)\n", log_pointer(md));
    if (md == nullptr) {
        set_error(103, "Null pointer");
        return -1;
    }
    md->hfs_present = 0;
    md->format = FORMAT_UNKNOWN;
    refresh_medium(md);
    uint8_t record[RECORD_SIZE];
    if (read_record(md, 0, record) < 0) return -1;
    md->magic = get_word(record);
    int32_t number = recognise_format(md, record);
    if (number < 0) return -1;
    const VolumeFormat &format = volume_format(static_cast<uint32_t>(number));
    int32_t result = format.read_header == nullptr ? recognise_hfs_alone(md) : format.read_header(md, record);
    if (result < 0) return -1;
    md->format = static_cast<uint32_t>(number);
    if (result > 0) return 0;
    if (format.may_hold_hfs && probe_hfs(md, second_volume_record) < 0) return -1;
    if (md->hfs_present != 0 && md->prefer_hfs != 0) {
        md->format = FORMAT_HFS;
        return 0;
    }
    compare_with_device(md);
    return 0;
}
