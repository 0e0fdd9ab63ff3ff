// The layouts are written down here a second time on purpose: a test that used the engine's own writer could not see
// a mistake that writer and reader share.
#include "tests/support/system45_builder.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "base/error.h"
#include "base/memory.h"
#include "volume/access.h"
#include "volume/allocation.h"
#include "volume/table.h"

namespace tests
{

namespace
{

template <size_t n> std::array<uint8_t, n> as_array(const Bytes &bytes)
{
    std::array<uint8_t, n> array{};
    std::copy_n(bytes.begin(), n, array.begin());
    return array;
}

// Stores what lies inside the image, so that a volume may claim places that it does not have.
void put(Bytes &image, uint64_t position, const uint8_t *bytes, size_t count)
{
    for (size_t i = 0; i < count && position + i < image.size(); ++i) image[position + i] = bytes[i];
}

void fill(Bytes &image, uint64_t record, uint64_t bytes, uint8_t value)
{
    for (uint64_t i = record * record_bytes; i < record * record_bytes + bytes && i < image.size(); ++i)
        image[i] = value;
}

template <typename Entry> uint32_t records_taken(const Entry &entry)
{
    return (uint32_t{entry.records} * entry.words * 2 + record_bytes - 1) / record_bytes;
}

template <typename Entry> std::vector<Entry> placed(std::vector<Entry> entries, uint32_t next)
{
    for (Entry &entry : entries) {
        if (!entry.start) entry.start = next;
        next = *entry.start + records_taken(entry);
    }
    return entries;
}

Bytes system_record(const DiskVolume &volume)
{
    Bytes record(record_bytes);
    const uint16_t words[] = {
        volume.magic,           volume.records_per_track,  volume.tracks,           volume.spare_distance,
        volume.directory_start, volume.availability_start, volume.availability_end, volume.system_tracks,
        volume.data_tracks,     volume.interleave};
    for (size_t i = 0; i < std::size(words); ++i) set_word_at(record, 2 * i, words[i]);
    record[27] = volume.long_runs ? 1 : 0;
    set_word_at(record, 30, volume.label_length.value_or(static_cast<uint16_t>(volume.label.size())));
    std::copy(volume.label.begin(), volume.label.end(), record.begin() + 32);
    return record;
}

Bytes directory(const DiskVolume &volume, const std::vector<DiskEntry> &entries)
{
    const uint32_t records = std::max(volume.availability_start, volume.directory_start) - volume.directory_start;
    Bytes bytes(size_t{records} * record_bytes);
    size_t slot = 0;
    for (const DiskEntry &entry : entries) {
        const std::array<uint8_t, 16> entry_bytes = disk45_entry_bytes(entry);
        put(bytes, slot, entry_bytes.data(), entry_bytes.size());
        slot += entry_bytes.size();
    }
    const uint8_t mark[] = {0, 0, 0xFF, 0xFF};
    if (volume.directory_end_mark) put(bytes, slot, mark, sizeof mark);
    return bytes;
}

Runs free_runs(const DiskVolume &volume, const std::vector<DiskEntry> &entries)
{
    if (volume.runs) return *volume.runs;
    uint32_t next = uint32_t{volume.system_tracks} * volume.records_per_track;
    const uint32_t end = next + uint32_t{volume.data_tracks} * volume.records_per_track;
    for (const DiskEntry &entry : entries) next = std::max(next, *entry.start + records_taken(entry));
    return next < end ? Runs{{next, end - next}} : Runs{};
}

Bytes availability(const DiskVolume &volume, const Runs &runs)
{
    const uint32_t records = std::max(volume.availability_end, volume.availability_start) - volume.availability_start;
    Bytes bytes(size_t{records} * record_bytes);
    Bytes entry(8);
    const size_t entry_size = volume.long_runs ? 8 : 4;
    size_t slot = 0;
    for (const auto &[location, size] : runs) {
        if (volume.long_runs) {
            set_dword_at(entry, 0, location);
            set_dword_at(entry, 4, size);
        } else {
            set_word_at(entry, 0, static_cast<uint16_t>(location));
            set_word_at(entry, 2, static_cast<uint16_t>(size));
        }
        put(bytes, slot, entry.data(), entry_size);
        slot += entry_size;
    }
    const uint8_t mark[] = {0xFF, 0xFF, 0xFF, 0xFF};
    if (volume.magic != 0) put(bytes, slot, mark, volume.long_runs ? 4 : 2);
    return bytes;
}

}

std::array<uint8_t, 16> disk45_entry_bytes(const DiskEntry &entry)
{
    Bytes bytes(16);
    std::copy_n(entry.name.begin(), std::min<size_t>(entry.name.size(), 6), bytes.begin());
    const uint32_t start = entry.start.value_or(0);
    set_word_at(bytes, 6, static_cast<uint16_t>(start & 0xFFFF));
    set_word_at(bytes, 8, entry.records);
    set_word_at(bytes, 10, entry.words);
    set_word_at(bytes, 12, static_cast<uint16_t>(entry.type | (start >> 16 & 0x7F)));
    if (entry.is_protected) bytes[15] = 'p';
    return as_array<16>(bytes);
}

std::array<uint8_t, 12> tape45_entry_bytes(const TapeEntry &entry)
{
    Bytes bytes(12);
    std::copy_n(entry.name.begin(), std::min<size_t>(entry.name.size(), 6), bytes.begin());
    const uint32_t start = entry.start.value_or(0);
    bytes[6] = static_cast<uint8_t>(entry.type | (start >> 8 & 3));
    bytes[7] = static_cast<uint8_t>(start & 0xFF);
    set_word_at(bytes, 8, entry.records);
    set_word_at(bytes, 10, entry.words);
    return as_array<12>(bytes);
}

Bytes disk45_image(const DiskVolume &volume)
{
    const uint32_t file_area = uint32_t{volume.system_tracks} * volume.records_per_track;
    const std::vector<DiskEntry> entries = placed(volume.entries, file_area);
    Bytes image(size_t{volume.records.value_or(uint32_t{volume.tracks} * volume.records_per_track)} * record_bytes);
    for (const DiskEntry &entry : entries)
        if (entry.fill != 0) fill(image, *entry.start, uint64_t{entry.records} * entry.words * 2, entry.fill);
    const Bytes record = system_record(volume);
    put(image, 0, record.data(), record.size());
    Bytes tables = directory(volume, entries);
    const Bytes runs = availability(volume, free_runs(volume, entries));
    tables.insert(tables.end(), runs.begin(), runs.end());
    const uint64_t spare = uint64_t{volume.spare_distance} * volume.records_per_track + volume.directory_start;
    put(image, spare * record_bytes, tables.data(), tables.size());
    put(image, uint64_t{volume.directory_start} * record_bytes, tables.data(), tables.size());
    return image;
}

Bytes tape45_image(const TapeVolume &volume)
{
    Bytes image(size_t{volume.records} * record_bytes);
    const std::vector<TapeEntry> entries = placed(volume.entries, 5);
    Bytes tables(2 * record_bytes);
    const uint8_t head[] = {5, 0, 0xFF, 0xFF};
    put(tables, 0, head, sizeof head);
    size_t slot = sizeof head;
    for (const TapeEntry &entry : entries) {
        const std::array<uint8_t, 12> bytes = tape45_entry_bytes(entry);
        put(tables, slot, bytes.data(), bytes.size());
        slot += bytes.size();
        if (entry.fill != 0) fill(image, *entry.start, uint64_t{entry.records} * entry.words * 2, entry.fill);
    }
    if (volume.end_mark && slot + 12 <= tables.size()) tables[slot] = tables[slot + 1] = 0xFF;
    put(image, record_bytes, tables.data(), tables.size());
    put(image, 3 * record_bytes, tables.data(), tables.size());
    return image;
}

DiskVolume three_disk_files()
{
    DiskVolume volume;
    volume.entries = {{.name = "ALPHA", .records = 3, .fill = 'a'},
                      {.name = "BETA", .type = 0x2400, .records = 5, .fill = 'b'},
                      {.name = "GAMMA", .type = 0xD000, .records = 4, .words = 256, .is_protected = true, .fill = 'c'}};
    return volume;
}

TapeVolume three_tape_files()
{
    return {.entries = {{.name = "ALPHA", .records = 3, .fill = 'a'},
                        {.name = "BETA", .type = 0x24, .records = 5, .fill = 'b'},
                        {.name = "GAMMA", .type = 0xD0, .records = 4, .words = 256, .fill = 'c'}}};
}

DiskVolume disk_with_holes()
{
    DiskVolume volume = three_disk_files();
    volume.tracks = 4;
    volume.data_tracks = 2;
    volume.entries[0].start = 63;
    volume.entries[1].start = 70;
    volume.entries[2].start = 90;
    volume.runs = Runs{{60, 3}, {66, 4}, {75, 15}, {98, 22}};
    return volume;
}

DiskVolume disk_of_9825(uint16_t tracks)
{
    DiskVolume volume = three_disk_files();
    volume.magic = 0;
    volume.tracks = tracks;
    volume.data_tracks = static_cast<uint16_t>(tracks - volume.system_tracks);
    for (DiskEntry &entry : volume.entries) {
        entry.type &= 0x1FFF; // the system of the 9825 is 0
        entry.words = 128;
        entry.is_protected = false;
    }
    return volume;
}

std::vector<DiskEntry> numbered_files(uint32_t n)
{
    std::vector<DiskEntry> entries(n);
    for (uint32_t i = 0; i < n; ++i) {
        const std::string digits = std::to_string(i);
        entries[i].name = "F" + std::string(5 - std::min<size_t>(5, digits.size()), '0') + digits;
    }
    return entries;
}

Bytes records_of(const Bytes &image, uint32_t first, uint32_t count)
{
    const auto from = image.begin() + static_cast<std::ptrdiff_t>(first) * record_bytes;
    return Bytes(from, from + static_cast<std::ptrdiff_t>(count) * record_bytes);
}

FileInfo *last_entry(const MediaDescriptor *md)
{
    FileInfo *info = md->root;
    while (info != nullptr && info->next != nullptr) info = info->next;
    return info;
}

void append_file(MediaDescriptor *md, const std::string &name, uint32_t location)
{
    auto *info = static_cast<FileInfo *>(my_malloc(sizeof(FileInfo)));
    if (info == nullptr) std::abort();
    *info = named(name);
    info->type = md->format == FORMAT_TAPE45 ? 0xC8 : 0xC800;
    info->location = location;
    info->prev = last_entry(md);
    (info->prev == nullptr ? md->root : info->prev->next) = info;
}

int32_t update_all_tables(MediaDescriptor *md)
{
    for (const int32_t use_spare : {0, 1}) {
        if (update_file_table(md, use_spare) < 0 || update_alloc_table(md, use_spare) < 0) return -1;
    }
    return 0;
}

// ---- a drive -------------------------------------------------------------------------------------------

namespace
{

Drive45 *present_drive = nullptr; // one at a time

int32_t read_drive(MediaDescriptor *, uint32_t record, uint8_t *buffer)
{
    const size_t position = size_t{record} * record_bytes;
    if (position + record_bytes > present_drive->image.size()) {
        set_error(502, "");
        return -1;
    }
    std::memcpy(buffer, present_drive->image.data() + position, record_bytes);
    return 0;
}

int32_t write_drive(MediaDescriptor *, uint32_t record, const uint8_t *buffer)
{
    present_drive->written.push_back(record);
    const size_t position = size_t{record} * record_bytes;
    if (position + record_bytes > present_drive->image.size()) {
        set_error(503, "");
        return -1;
    }
    std::memcpy(present_drive->image.data() + position, buffer, record_bytes);
    return 0;
}

uint64_t end_of_drive(MediaDescriptor *)
{
    return present_drive->image.size() / record_bytes;
}

DeviceGeometry geometry_of_drive(const MediaDescriptor *)
{
    return {77, 2, 30, 7};
}

constexpr MediumAccess drive_access = {
    .name = "drive",
    .open = nullptr,
    .read_record = read_drive,
    .write_record = write_drive,
    .end_record = end_of_drive,
    .device_geometry = geometry_of_drive,
};

}

Drive45::Drive45(Bytes content, uint32_t access) : image(std::move(content)), state(std::make_unique<MediaState>())
{
    present_drive = this;
    state->access = &drive_access;
    md.access = access;
    md.size = static_cast<uint32_t>(image.size());
    md.use_type_names = 1;
    md.use_typed_extensions = 1;
    md.state = state.get();
}

Drive45::~Drive45()
{
    image_free_directory(&md, nullptr);
    my_free(md.inode_table);
    while (md.alloc_list != nullptr) {
        AllocEntry *next = md.alloc_list->next;
        my_free(md.alloc_list);
        md.alloc_list = next;
    }
    present_drive = nullptr;
}

}
