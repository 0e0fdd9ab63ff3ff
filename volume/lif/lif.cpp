// The Logical Interchange Format: a header record, one directory, contiguous files.
//
// Header, record 0: magic (2), label (6), directory start (4), id (2), 0 (2), directory length (4), version (2), 0 (2),
// tracks a surface (4), surfaces (4), records a track (4), date (6).
// Entry, 32 bytes: name (10), type (2), first record (4), records (4), date (6), implementation bytes (6).
#include "volume/lif/lif.h"

#include <cstring>

#include "base/convert.h"
#include "base/error.h"
#include "base/log.h"
#include "volume/access.h"
#include "volume/entries_inner.h"
#include "volume/filetypes_inner.h"
#include "volume/lif/lif_header.h"
#include "volume/type_text.h"

namespace
{
constexpr uint32_t entry_size = 32;
constexpr uint32_t name_size = 10;
constexpr uint16_t end_of_directory = 0xFFFF;
constexpr uint8_t class_9845 = 0xE8;
constexpr uint8_t class_series80 = 0xE0;
constexpr uint32_t default_record_len = 128;

int32_t claims_lif(MediaDescriptor *md, const uint8_t *)
{
    return md->magic == 0x8000 || md->magic == 6 || md->magic == 8 ? 1 : 0;
}

// A header without geometry leaves it to the device; an image file has none.
void complete_geometry(MediaDescriptor *md)
{
    if (md->sectors != 0 && md->cylinders != 0 && md->heads != 0) return;
    const MediumAccess *access = medium_access(md);
    if (access == nullptr || access->device_geometry == nullptr) {
        log_file(2, "No valid cylinder/head/sector data in system record (ignored)\n");
        md->records = static_cast<uint32_t>((uint64_t{md->size} + RECORD_SIZE - 1) / RECORD_SIZE);
        return;
    }
    log_file(2, "No valid cylinder/head/sector data in system record, using device data\n");
    DeviceGeometry device = access->device_geometry(md);
    md->sectors = device.sectors;
    md->heads = device.heads;
    md->cylinders = device.cylinders * device.heads;
    md->records = md->cylinders * md->sectors;
}

int32_t read_header(MediaDescriptor *md, const uint8_t *record)
{
    std::memcpy(md->label, record + 2, 6);
    md->label[6] = '\0';
    md->dir_id = get_word(record + 12);
    md->version = get_word(record + 20);
    md->sectors = get_dword(record + 32);
    md->heads = get_dword(record + 28);
    md->cylinders = md->heads * get_dword(record + 24);
    md->records = md->cylinders * md->sectors;
    complete_geometry(md);
    md->dir_start = get_dword(record + 8);
    md->dir_size = get_dword(record + 16);
    md->file_area_start = md->dir_start + md->dir_size;
    if (md->sectors != 0) {
        // The sum behind it wraps where a directory is larger than its volume; the figures are only shown.
        md->data_tracks = md->cylinders - (md->file_area_start + md->sectors - 1) / md->sectors;
        md->system_tracks = md->cylinders - md->data_tracks;
    }
    md->data_size = md->sectors * md->data_tracks * RECORD_SIZE;
    if (md->data_size == 0) md->data_size = md->size - md->file_area_start * RECORD_SIZE;
    md->dir_entry_size = entry_size;
    datetime2tm(&md->date, record + 36);
    return 0;
}

// Bytes 26 to 31 of an entry: volume number and last-volume flag (2), protection of a BDAT file (2), record length in
// words (2). A pair that was never written gets its defaults.
void complete_implementation_bytes(FileInfo *info, bool has_length)
{
    uint8_t *bytes = info->lif_impl;
    if (bytes[0] == 0) {
        bytes[0] = 128;
        bytes[1] = 1;
        if (info->type >> 8 == class_9845) bytes[2] = bytes[3] = 0;
        if (info->type >> 8 == class_series80) set_word(bytes + 4, 1);
    }
    if (!has_length) return;
    if (info->record_len == 0) {
        info->record_len = get_word(bytes + 4);
    } else {
        set_word(bytes + 4, static_cast<uint16_t>(info->record_len));
    }
}

void complete_protection(FileInfo *info)
{
    uint8_t *bytes = info->lif_impl + 2;
    if (bytes[0] == 0) bytes[0] = bytes[1] = ' ';
    if (bytes[0] > ' ' || bytes[1] > ' ') info->attributes = ATTRIBUTE_READ_ONLY | ATTRIBUTE_SYSTEM;
}

void complete_lif(FileInfo *info)
{
    bool bdat = std::memcmp(info->type_string, "BDAT", sizeof "BDAT") == 0;
    const char *system = find_type_name(LIF_system, info->type >> 8);
    // Kept: the system text continues a type text of six or more.  [KeepsTypeTextRunningOnIntoSystemText]
    set_system_text(info, system == nullptr ? "98X6" : system);
    bool has_length = bdat || info->type >> 8 == class_9845;
    complete_implementation_bytes(info, has_length);
    if (bdat) complete_protection(info);
    if (!has_length || info->record_len == 0) info->record_len = default_record_len;
}

int32_t read_entry(MediaDescriptor *md, FileInfo *info, const uint8_t *entry, uint32_t *ret_size)
{
    info->type = get_word(entry + 10);
    if (info->type == end_of_directory) return 0;
    std::memcpy(info->name, entry, name_size);
    info->name[name_size] = '\0';
    trim(info->name);
    datetime2tm(&info->date, entry + 20);
    char text[TYPE_TEXT_SIZE];
    get_filetype(md, text, info->type, info->name);
    set_type_text(info, text);
    info->location = get_dword(entry + 12);
    std::memcpy(info->lif_impl, entry + 26, sizeof info->lif_impl);
    info->record_len = 0;
    complete_lif(info);
    info->size = get_dword(entry + 16) * RECORD_SIZE;
    info->records = count_records(info);
    info->deleted = info->type == 0 ? 1 : 0;
    *ret_size = info->size;
    return 1;
}

void write_entry(const MediaDescriptor *, const FileInfo *info, uint8_t *entry)
{
    std::memset(entry, 0, entry_size);
    std::memset(entry, ' ', name_size);
    const void *end = std::memchr(info->name, 0, name_size);
    size_t length = end == nullptr ? name_size : static_cast<size_t>(static_cast<const char *>(end) - info->name);
    std::memcpy(entry, info->name, length);
    set_word(entry + 10, info->deleted != 0 ? uint16_t{0} : info->type);
    set_dword(entry + 12, info->location);
    set_dword(entry + 16, static_cast<uint32_t>((uint64_t{info->size} + RECORD_SIZE - 1) / RECORD_SIZE));
    tm2datetime(entry + 20, &info->date);
    std::memcpy(entry + 26, info->lif_impl, sizeof info->lif_impl);
}

void write_end_mark(uint8_t *slot)
{
    set_word(slot + 10, end_of_directory);
}
}

const VolumeFormat lif_format = {
    .name = "LIF",
    .claims = claims_lif,
    .read_header = read_header,
    .read_entry = read_entry,
    .write_entry = write_entry,
    .write_end_mark = write_end_mark,
    .complete_info = complete_lif,
    .compose_header = compose_lif_header,
    .name_limit = 10,
    .may_hold_hfs = true,
};
