// New volumes from a row of the table of media, or from a size. On System 45 disks the directory is followed by the
// availability table, and both have a spare copy some tracks on; distance 0 makes the tables their own spares.
#include "console/init_layout.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstring>

#include "base/convert.h"
#include "base/error.h"
#include "volume/initialize.h"

namespace
{
constexpr uint32_t unknown_format = 203;
constexpr uint64_t most_bytes = uint64_t{0xFFFFFFFF} / RECORD_SIZE * RECORD_SIZE; // of an image
constexpr uint32_t largest_word = 0xFFFF;
constexpr uint32_t tape_records = 852;

constexpr uint32_t on_lif = 1U << FORMAT_LIF;
constexpr uint32_t on_disk = 1U << FORMAT_DISK45;

// ---- which options go with which format ------------------------------------------------------------------

struct FormatName {
    const char *name;
    uint32_t format;
};
constexpr FormatName format_names[] = {{"lif", FORMAT_LIF}, {"disk45", FORMAT_DISK45}, {"tape45", FORMAT_TAPE45}};

struct OptionUse {
    const char *name;
    bool (*given)(const Arguments &arguments);
    uint32_t formats;
};
constexpr OptionUse option_uses[] = {
    {"--media", [](const Arguments &arguments) { return !arguments.media.empty(); }, on_lif | on_disk},
    {"--size", [](const Arguments &arguments) { return !arguments.volume_size.empty(); }, on_lif | on_disk},
    {"--sectors", [](const Arguments &arguments) { return arguments.sectors != 0; }, on_lif | on_disk},
    {"--heads", [](const Arguments &arguments) { return arguments.heads != 0; }, on_lif},
    {"--dir", [](const Arguments &arguments) { return arguments.entries != 0; }, on_lif | on_disk},
    {"--label", [](const Arguments &arguments) { return !arguments.label.empty(); }, on_lif | on_disk},
    {"--system", [](const Arguments &arguments) { return !arguments.system.empty(); }, on_disk},
    {"--interleave", [](const Arguments &arguments) { return arguments.interleave >= 0; }, on_disk},
    {"--boot", [](const Arguments &arguments) { return !arguments.boot.empty(); }, on_disk},
};

uint32_t wanted_format(const Arguments &arguments)
{
    if (arguments.format.empty()) return FORMAT_DISK45;
    auto is_wanted = [&arguments](const FormatName &row) { return arguments.format == row.name; };
    const FormatName *row = std::find_if(std::begin(format_names), std::end(format_names), is_wanted);
    return row == std::end(format_names) ? uint32_t{FORMAT_UNKNOWN} : row->format;
}

std::string options_fault(const Arguments &arguments, uint32_t format)
{
    for (const OptionUse &use : option_uses) {
        if (use.given(arguments) && (use.formats & 1U << format) == 0)
            return std::string(use.name) + " has no meaning on such a volume";
    }
    if (format == FORMAT_TAPE45) return "";
    if (arguments.media.empty() && arguments.format.empty()) return "--media or --format is required";
    if (arguments.media.empty() && arguments.volume_size.empty()) return "--media or --size is required";
    const bool by_size = !arguments.volume_size.empty() || arguments.sectors != 0 || arguments.heads != 0;
    if (!arguments.media.empty() && by_size) return "--media has a size and a geometry of its own";
    if (arguments.heads != 0 && arguments.sectors == 0) return "--heads goes with --sectors";
    return "";
}

// ---- sizes -----------------------------------------------------------------------------------------------

// Bytes, or with K or M behind the number 1,024 or 1,048,576 of them. 0: it is no size, or too large.
uint64_t bytes_of(const std::string &size)
{
    uint64_t number = 0;
    const char *end = size.data() + size.size();
    const auto [rest, error] = std::from_chars(size.data(), end, number);
    if (error != std::errc{} || number > most_bytes) return 0;
    const std::string unit(rest, end);
    const uint64_t factor = unit == "K" || unit == "k" ? 1024 : unit == "M" || unit == "m" ? 1024 * 1024 : 1;
    if (factor == 1 && !unit.empty()) return 0;
    return number * factor <= most_bytes ? number * factor : 0;
}

struct Geometry {
    const MediaTableRow *row = nullptr; // null: from a size
    uint64_t records = 0;
    uint32_t heads = 0; // 0, and 0 below: not known
    uint32_t sectors = 0;
    uint32_t tracks = 0;
};

bool tracks_fit(const Geometry &geometry)
{
    return geometry.records % (uint64_t{geometry.sectors} * geometry.heads) == 0;
}

std::string take_size(const Arguments &arguments, uint32_t format, Geometry *geometry)
{
    constexpr uint32_t usual_sectors = 32; // of a disk, which can't do without
    const uint64_t bytes = bytes_of(arguments.volume_size);
    if (bytes == 0) return "--size takes a number of bytes below 4G, also with K or M";
    if (bytes % RECORD_SIZE != 0) return "--size isn't a whole number of records of 256 bytes";
    geometry->records = bytes / RECORD_SIZE;
    geometry->sectors = static_cast<uint32_t>(arguments.sectors);
    if (geometry->sectors == 0 && format == FORMAT_DISK45) geometry->sectors = usual_sectors;
    if (geometry->sectors == 0) return "";
    geometry->heads = std::max(static_cast<uint32_t>(arguments.heads), uint32_t{1});
    if (!tracks_fit(*geometry)) return "--size isn't a whole number of tracks";
    geometry->tracks = static_cast<uint32_t>(geometry->records / geometry->sectors);
    return "";
}

std::string take_geometry(const Arguments &arguments, uint32_t format, Geometry *geometry)
{
    if (arguments.media.empty()) return take_size(arguments, format, geometry);
    const MediaTableRow *row = find_medium(arguments.media);
    if (row == nullptr) return "There is no medium \"" + arguments.media + "\"; --media list shows them all";
    *geometry = {row, uint64_t{row->tracks} * row->sectors, row->heads, row->sectors, row->tracks};
    const bool is_one = geometry->records != 0 && geometry->records * RECORD_SIZE <= most_bytes;
    return is_one ? "" : "Medium \"" + arguments.media + "\" has no size that an image can have";
}

// ---- labels ----------------------------------------------------------------------------------------------

std::string take_label(const Arguments &arguments, size_t most, MediaDescriptor *md)
{
    const std::string &label = arguments.label;
    if (!label.empty() && most == 0) return "Such a volume has no label";
    auto is_plain = [](char character) { return character >= ' ' && character <= '~'; };
    if (label.size() > most || !std::all_of(label.begin(), label.end(), is_plain))
        return "The label is at most " + std::to_string(most) + " printable ASCII characters";
    label.copy(md->label, sizeof md->label - 1);
    return "";
}

uint32_t records_for(uint64_t entries, uint32_t entry_size)
{
    return static_cast<uint32_t>((entries * entry_size + RECORD_SIZE - 1) / RECORD_SIZE);
}

// ---- LIF -------------------------------------------------------------------------------------------------

constexpr uint32_t lif_entry_size = 32;

uint32_t usual_directory(uint64_t records)
{
    return static_cast<uint32_t>(std::clamp<uint64_t>(records / 128, 2, 1024));
}

std::string lay_out_lif(const Arguments &arguments, const Geometry &geometry, MediaDescriptor *md)
{
    md->dir_start = 2;
    md->dir_size = arguments.entries == 0 ? usual_directory(geometry.records)
                                          : records_for(static_cast<uint64_t>(arguments.entries), lif_entry_size);
    if (uint64_t{md->dir_start} + md->dir_size >= geometry.records) return "The medium is too small for the directory";
    md->dir_id = 0x1000;
    md->version = 1;
    md->heads = geometry.heads;
    md->sectors = geometry.sectors;
    md->cylinders = geometry.tracks;
    get_current_datetime(&md->date);
    return take_label(arguments, 6, md);
}

// ---- System 45 disks -------------------------------------------------------------------------------------

constexpr uint32_t disk_entry_size = 16;
constexpr uint32_t short_run = 4;
constexpr uint32_t long_run = 8;

struct Computer {
    const char *name;
    uint16_t magic;
    size_t longest_label = 0;
    bool has_long_runs = false;
};
constexpr Computer computers[] = {
    {"9845", 0x0500},
    {"9831", 0x0200},
    {"250", 0x0600, 8, true},
    {"9825", 0},
};

const Computer &wanted_computer(const Arguments &arguments)
{
    auto is_wanted = [&arguments](const Computer &row) { return arguments.system == row.name; };
    const Computer *row = std::find_if(std::begin(computers), std::end(computers), is_wanted);
    return row == std::end(computers) ? computers[0] : *row;
}

// The disks of the 9825 are known by these three; its system code fills tracks behind the first one.
constexpr uint32_t sectors_of_9825 = 30;
constexpr uint32_t directory_of_9825 = 1;
constexpr uint32_t availability_of_9825 = 23;
constexpr uint32_t system_tracks_of_9825 = 1 + uint32_t{HP9825_BOOT_SIZE} / RECORD_SIZE / sectors_of_9825;

// A row for a disk that none knows: both tables one behind the other, and their spares on the next tracks.
MediaTableRow row_of_size(const Geometry &geometry)
{
    MediaTableRow row = {};
    row.heads = geometry.heads;
    row.sectors = geometry.sectors;
    row.tracks = geometry.tracks;
    row.dir_start = 1;
    row.alloc_start = row.dir_start + static_cast<uint32_t>(std::clamp<uint64_t>(geometry.records / 64, 2, 512));
    row.alloc_end = row.alloc_start + (row.alloc_start - row.dir_start) / 2 + 1;
    row.spare_track = (row.alloc_end + row.sectors - 1) / row.sectors;
    row.system_tracks = 2 * row.spare_track;
    row.data_tracks = row.tracks - std::min(row.tracks, row.system_tracks);
    row.interleave = 1;
    return row;
}

// Another size of the directory moves the table behind it.
void resize_directory(const Arguments &arguments, MediaTableRow *row)
{
    if (arguments.entries == 0) return;
    const uint32_t alloc_size = row->alloc_end - row->alloc_start;
    row->alloc_start = row->dir_start + records_for(static_cast<uint64_t>(arguments.entries), disk_entry_size);
    row->alloc_end = row->alloc_start + alloc_size;
}

std::string become_9825(const Arguments &arguments, MediaTableRow *row)
{
    if (row->sectors != sectors_of_9825 || row->alloc_start != availability_of_9825)
        return "A disk of the 9825 has 30 records a track and its availability table at record 23; of the media these "
               "are 9885 and 9895";
    if (arguments.entries != 0) return "The directory of a 9825 has its size";
    row->dir_start = directory_of_9825;
    const uint32_t more = system_tracks_of_9825 - std::min(row->system_tracks, system_tracks_of_9825);
    row->system_tracks += more;
    row->data_tracks -= std::min(row->data_tracks, more);
    return "";
}

void take_row(const MediaTableRow &row, MediaDescriptor *md)
{
    md->sectors = row.sectors;
    md->cylinders = row.tracks;
    md->system_tracks = row.system_tracks;
    md->data_tracks = row.data_tracks;
    md->dir_start = row.dir_start;
    md->dir_size = row.alloc_start - row.dir_start;
    md->dir_entry_size = disk_entry_size;
    md->alloc_start = row.alloc_start;
    md->alloc_size = row.alloc_end - row.alloc_start;
    md->spare_dir_start = row.spare_track * row.sectors + row.dir_start;
    md->spare_alloc_start = md->spare_dir_start + md->dir_size;
    md->file_area_start = row.system_tracks * row.sectors;
    md->interleave = static_cast<uint16_t>(row.interleave);
}

// Tables where they can't be make a volume that nothing can be put on.
std::string places_fault(const MediaTableRow &row, const MediaDescriptor &layout, uint64_t records)
{
    const uint64_t spare_end = uint64_t{row.spare_track} * row.sectors + row.alloc_end;
    const bool in_order = row.dir_start != 0 && row.dir_start < row.alloc_start && row.alloc_start < row.alloc_end;
    if (!in_order || row.alloc_end > layout.file_area_start) return "The directory doesn't fit into the system tracks";
    if (row.spare_track != 0 && row.alloc_end > layout.spare_dir_start)
        return "The directory reaches into its spare copy";
    if (spare_end > records || layout.file_area_start >= records || row.data_tracks == 0)
        return "The medium is too small for the directory";
    const bool fits = std::max({row.tracks, row.sectors, row.alloc_end, row.spare_track, row.system_tracks,
                                row.data_tracks}) <= largest_word;
    return fits ? "" : "The medium is too large for a System 45 disk";
}

std::string lay_out_disk(const Arguments &arguments, const Geometry &geometry, MediaDescriptor *md)
{
    const Computer &computer = wanted_computer(arguments);
    const bool is_9825 = computer.magic == 0;
    if (!arguments.boot.empty() && !is_9825) return "--boot goes with --system 9825";
    MediaTableRow row = geometry.row != nullptr ? *geometry.row : row_of_size(geometry);
    if (arguments.interleave >= 0) row.interleave = static_cast<uint32_t>(arguments.interleave);
    std::string fault = is_9825 ? become_9825(arguments, &row) : "";
    if (!is_9825) resize_directory(arguments, &row);
    if (!fault.empty()) return fault;
    md->magic = computer.magic;
    md->alloc_entry_size = short_run;
    take_row(row, md);
    fault = places_fault(row, *md, geometry.records);
    if (!fault.empty()) return fault;
    // Where the row has more data tracks than the medium has room for, the image stays as long as the medium.
    const uint64_t data =
        std::min<uint64_t>(uint64_t{row.data_tracks} * row.sectors, geometry.records - md->file_area_start);
    md->data_size = static_cast<uint32_t>(data * RECORD_SIZE);
    return take_label(arguments, computer.longest_label, md);
}

// More free records than a word can say need the long entries of the 250.
bool choose_run_size(const Arguments &arguments, MediaDescriptor *md)
{
    if (uint64_t{md->sectors} * md->data_tracks <= largest_word) return true;
    if (wanted_computer(arguments).has_long_runs) {
        md->alloc_entry_size = long_run;
        return true;
    }
    set_error(unknown_format, "more than 65535 free records, which need --system 250");
    return false;
}
}

bool lay_out_volume(const Arguments &arguments, MediaDescriptor *ret_layout, std::string *ret_fault)
{
    MediaDescriptor *md = ret_layout;
    *md = {};
    md->format = wanted_format(arguments);
    *ret_fault = options_fault(arguments, md->format);
    if (!ret_fault->empty()) return false;
    if (md->format == FORMAT_TAPE45) {
        md->size = tape_records * RECORD_SIZE;
        return true;
    }
    Geometry geometry;
    *ret_fault = take_geometry(arguments, md->format, &geometry);
    if (!ret_fault->empty()) return false;
    md->size = static_cast<uint32_t>(geometry.records * RECORD_SIZE);
    *ret_fault =
        md->format == FORMAT_LIF ? lay_out_lif(arguments, geometry, md) : lay_out_disk(arguments, geometry, md);
    if (!ret_fault->empty()) return false;
    return md->format != FORMAT_DISK45 || choose_run_size(arguments, md);
}

const MediaTableRow *find_medium(const std::string &name)
{
    auto same = [](char left, char right) {
        return std::toupper(static_cast<unsigned char>(left)) == std::toupper(static_cast<unsigned char>(right));
    };
    for (const MediaTableRow *row = media_table; row->name != nullptr; row++) {
        if (std::equal(name.begin(), name.end(), row->name, row->name + std::strlen(row->name), same)) return row;
    }
    return nullptr;
}

const char *computer_of(const MediaDescriptor &layout)
{
    auto is_its = [&layout](const Computer &row) { return layout.magic == row.magic; };
    return std::find_if(std::begin(computers), std::end(computers), is_its)->name;
}

bool is_too_large_to_fill(const MediaDescriptor &layout)
{
    return layout.format == FORMAT_DISK45 && uint64_t{layout.sectors} * layout.data_tracks >= largest_word;
}
