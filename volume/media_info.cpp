// The summary of an open medium.
#include "base/convert.h"
#include "base/output.h"
#include "volume/catalogue.h"

namespace
{
struct MagicName {
    uint16_t magic;
    const char *system;
};

constexpr MagicName systems[] = {
    {512, "HP9831"},
    {1280, "HP9835/9845"},
    {1536, "HP250/260"},
    {1792, "HP500"},
};

unsigned long number(uint32_t value)
{
    return value;
}

void print_format(const MediaDescriptor *md)
{
    unsigned id = md->dir_id;
    unsigned version = md->version;
    switch (md->format) {
    case FORMAT_DISK45: output_text("Image format: System 45 native disk format\n"); break;
    case FORMAT_TAPE45: output_text("Image format: System 45 native DC100 tape format\n"); break;
    case FORMAT_LIF:
        output_format("Image format: Logical Interchange Format (LIF) id=$%04X version=%u\n", id, version);
        break;
    case FORMAT_SDF:
        output_format("Image format: Structured Directory Format (SDF) id=$%04X version=%u\n", id, version);
        break;
    case FORMAT_HFS: output_text("Image format: Hiearchical File System (HFS)\n"); break;
    default: output_format("Image format: unknown (ID $%04X)\n", static_cast<unsigned>(md->magic)); break;
    }
    for (const MagicName &row : systems) {
        if (row.magic == md->magic) output_format("System type: %s\n", row.system);
    }
}

void print_date(const char *title, const TimeRecord *time)
{
    char date[32];
    char clock[32];
    get_datetime_strings(time, date, clock, 1);
    output_format("%s date & time: %s %s\n", title, date, clock);
}

void print_label(const MediaDescriptor *md)
{
    if (md->format != FORMAT_LIF && md->format != FORMAT_SDF) return;
    output_format("Volume label: \"%s\"\n", md->label);
    print_date("Creation", &md->date);
    if (md->format == FORMAT_LIF) return;
    print_date("Last backup", &md->backup_date);
    output_format("Block size: %lu\n", number(md->block_size));
    output_format("Largest block: %lu\n", number(md->largest_block));
}

void print_geometry(const MediaDescriptor *md)
{
    if (md->format == FORMAT_DISK45) output_format("Interleave factor: %d\n", md->interleave);
    output_format("Sectors per track: %lu\n", number(md->sectors));
    if (md->heads != 0) output_format("Number of heads or surfaces: %lu\n", number(md->heads));
    output_format("Total number of user accessable tracks: %lu\n", number(md->cylinders));
    output_format("Total number of user accessable records: %lu\n", number(md->records));
}

void print_sdf_areas(const MediaDescriptor *md)
{
    if (md->boot_size != 0) {
        output_format("Boot area of size %lu blocks starts at block #%lu\n", number(md->boot_size),
                      number(md->boot_start));
    } else {
        output_text("File system has no boot area\n");
    }
    output_format("File attributes table starts at block #%lu\n", number(md->fat_start));
    output_format("Root directory starts at record #%lu\n", number(md->dir_start));
    output_format("Root directory size: %lu records\n", number(md->dir_size));
}

void print_areas(const MediaDescriptor *md)
{
    if (md->format == FORMAT_SDF) {
        print_sdf_areas(md);
    } else {
        output_text("System area starts at record #0\n");
        output_format("Directory starts at record #%lu\n", number(md->dir_start));
        output_format("Directory size: %lu records\n", number(md->dir_size));
    }
    if (md->alloc_size != 0) {
        output_format("Allocation table starts at record #%lu\n", number(md->alloc_start));
        output_format("Allocation table size: %lu records\n", number(md->alloc_size));
    }
    if (md->format == FORMAT_DISK45 || md->format == FORMAT_TAPE45) {
        output_format("Spare directory starts at record #%lu\n", number(md->spare_dir_start));
    }
    if (md->format == FORMAT_DISK45) {
        output_format("Spare allocation table starts at record #%lu\n", number(md->spare_alloc_start));
    }
    if (md->format != FORMAT_SDF) output_format("File area starts at record #%lu\n", number(md->file_area_start));
}

void print_state(const MediaDescriptor *md)
{
    output_format("Total number of system tracks: %lu\n", number(md->system_tracks));
    output_format("Total number of usable data tracks: %lu\n", number(md->data_tracks));
    if (md->format == FORMAT_SDF) {
        if (md->password[0] != '\0') {
            output_format("Volume is password protected (password is \"%s\")\n", md->password);
        } else {
            output_text("Volume is not password protected\n");
        }
        if (md->needs_check != 0) output_text("File system needs check (may be currupted)\n");
    }
    if (md->hfs_present != 0) output_format("HFS volume detected at record #%lu\n", number(md->hfs_record));
    output_text("\n");
}
}

void print_media_info(const MediaDescriptor *md)
{
    print_format(md);
    if (md->format == FORMAT_HFS) {
        output_format("HFS volume at record #%lu\n", number(md->hfs_record));
        output_text("HFS file system is not yet supported by Tarvo.\n");
    } else {
        output_format("Image size: %lu bytes\n", number(md->size));
        print_label(md);
        print_geometry(md);
        print_areas(md);
        print_state(md);
    }
    output_flush();
}
