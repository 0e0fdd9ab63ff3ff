// Opens any bytes as an image and carries a command out over its files, or packs it. Nothing may crash, hang or leak;
// the first record stays; no file that the command isn't about changes a byte; both the volume and a second one, to
// which files may go, open again; and packing into another image makes what packing in place does.
//
// The input: the number of the command, a byte of options, the number of the access that fails, the mask of attributes,
// the type (high byte first), the lengths of the pattern and of the new name, both, the image.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "base/convert.h"
#include "base/log.h"
#include "fuzz/support.h"
#include "volume/access.h"
#include "volume/filetypes.h"
#include "volume/format.h"
#include "volume/initialize.h"
#include "volume/names.h"
#include "volume/open.h"
#include "volume/operations.h"
#include "volume/region.h"
#include "volume/repack.h"
#include "volume/repair.h"
#include "volume/type_text.h"

namespace
{

using fuzz::Bytes;
using fuzz::demand;

constexpr uint8_t to_other_volume = 0x01;
constexpr uint8_t second_format = 0x06; // which one the other volume has
constexpr uint8_t with_pattern = 0x08;
constexpr uint8_t with_new_name = 0x10;
constexpr uint8_t ask = 0x20;
constexpr uint8_t fail_an_access = 0x40;
constexpr uint8_t fail_an_allocation = 0x80;

constexpr uint32_t other_records = 400;
constexpr size_t most_reopened = size_t{1} << 20;

struct Run {
    int32_t command = 0; // of image_dir_ops; 13: the volume is packed
    uint8_t options = 0;
    uint8_t number = 0;
    uint8_t mask = 0;
    uint16_t type = 0;
    std::string pattern;
    std::string new_name;
    Bytes image;
};

constexpr int32_t commands[] = {
    COMMAND_LIST, COMMAND_CREATE, COMMAND_COPY, COMMAND_DELETE, COMMAND_MOVE, COMMAND_ATTRIBUTES, 13};

const fuzz::MemoryFile &image_file()
{
    static const fuzz::MemoryFile file("image");
    return file;
}

const fuzz::MemoryFile &other_file()
{
    static const fuzz::MemoryFile file("other");
    return file;
}

std::string text_of(std::span<const uint8_t> bytes)
{
    return {bytes.begin(), std::find(bytes.begin(), bytes.end(), 0)};
}

Run run_of(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    Run run;
    run.command = commands[input.take_byte() % std::size(commands)];
    run.options = input.take_byte();
    run.number = input.take_byte();
    run.mask = input.take_byte();
    run.type = input.take_word();
    const size_t pattern_length = input.take_byte();
    const size_t name_length = input.take_byte();
    run.pattern = text_of(input.take_bytes(pattern_length));
    run.new_name = text_of(input.take_bytes(name_length));
    run.image.assign(input.rest().begin(), input.rest().end());
    return run;
}

int32_t answer_yes(int32_t, const char *, ...)
{
    return 1;
}

// ---- the other volume -------------------------------------------------------------------------------------

// A new volume with nothing on it.
Bytes sound_volume(uint32_t format)
{
    Bytes image(size_t{other_records} * RECORD_SIZE);
    other_file().store(image);
    MediaDescriptor *md = image_open(other_file().path().c_str(), nullptr, 0);
    demand(md != nullptr);
    md->format = format;
    md->magic = 0x0500;
    md->sectors = 10;
    md->cylinders = other_records / md->sectors;
    md->heads = 1;
    md->system_tracks = 3;
    md->data_tracks = md->cylinders - md->system_tracks;
    md->dir_start = 2;
    md->dir_size = 3;
    md->alloc_start = 5;
    md->alloc_size = 2;
    md->alloc_entry_size = 4;
    md->spare_dir_start = 12;
    md->spare_alloc_start = 15;
    md->file_area_start = md->system_tracks * md->sectors;
    demand(image_initialize(md, 1, nullptr) >= 0);
    image_close(md);
    return other_file().bytes();
}

const Bytes &other_image(uint8_t options)
{
    static const Bytes images[] = {sound_volume(FORMAT_LIF), sound_volume(FORMAT_DISK45), sound_volume(FORMAT_TAPE45)};
    return images[(options & second_format) / 2 % std::size(images)];
}

// ---- the files of the volume ---------------------------------------------------------------------------------

struct Other {
    std::string name;
    Region region;
};

bool is_meant(const Run &run, const MediaDescriptor *md, const FileInfo *info)
{
    std::array<char, VISIBLE_NAME_SIZE> name{};
    decode_filename(info, md->format, name.data());
    // By the name alone: a pattern with a type means fewer.
    const bool patterned = (run.options & with_pattern) != 0;
    return !patterned || run.pattern.find('*') != std::string::npos || run.pattern.find(name.data()) == 0 ||
           run.new_name.find(name.data()) == 0;
}

// Those that the command isn't about, and that share their records with none. Names in the HP set may be turned on
// their way, so that they count as meant.
std::vector<Other> untouched_files(const Run &run, const MediaDescriptor *md)
{
    std::vector<Other> files;
    for (const FileInfo *info = md->root; info != nullptr; info = info->next) {
        if (info->deleted == 0 && !is_meant(run, md, info)) files.push_back({info->name, file_region(info)});
    }
    return files;
}

bool same_bytes(const Bytes &left, const Bytes &right, const Region &region)
{
    const uint64_t start = region.start * RECORD_SIZE;
    const uint64_t end = std::min<uint64_t>(start + region.length * RECORD_SIZE, std::max(left.size(), right.size()));
    for (uint64_t i = start; i < end; i++) {
        if ((i < left.size() ? left[i] : 0) != (i < right.size() ? right[i] : 0)) return false;
    }
    return true;
}

// ---- the run ----------------------------------------------------------------------------------------------

FileInfo template_of(const Run &run)
{
    FileInfo info{};
    info.type = run.type;
    std::memcpy(info.name, run.new_name.data(), std::min(run.new_name.size(), sizeof info.name - 1));
    info.size = uint32_t{run.number} * 100;
    info.records = run.number;
    info.record_len = run.mask;
    set_type_text(&info, run.type % 2 == 0 ? "DATA" : "ASCII");
    set_system_text(&info, run.type % 3 == 0 ? "9845" : "");
    info.date = {.tm_mday = 15, .tm_mon = 2, .tm_year = 84};
    return info;
}

int32_t carry_out(const Run &run, MediaDescriptor *md)
{
    const char *filespec[] = {run.pattern.c_str(), nullptr};
    const std::string target = other_file().path();
    FileInfo info = template_of(run);
    return image_dir_ops(md, (run.options & with_pattern) != 0 ? filespec : nullptr,
                         (run.options & to_other_volume) != 0 ? target.c_str() : nullptr,
                         (run.options & with_new_name) != 0 ? run.new_name.c_str() : nullptr, &info, run.mask,
                         run.command, (run.options & ask) != 0 ? answer_yes : nullptr, nullptr, 1, 0);
}

void set_faults(const Run &run)
{
    if ((run.options & fail_an_access) != 0) (run.mask % 2 != 0 ? fuzz::rules.reads : fuzz::rules.left) = run.number;
    if ((run.options & fail_an_allocation) != 0) fuzz::allocations_left = run.number;
}

void clear_faults()
{
    fuzz::rules = {};
    fuzz::allocations_left = UINT64_MAX;
}

void demand_reads_back()
{
    const Bytes now = image_file().bytes();
    if (now.size() > most_reopened) return;
    MediaDescriptor *md = image_open(image_file().path().c_str(), nullptr, OPEN_READ_VOLUME);
    demand(md != nullptr);
    image_close(md);
    md = image_open(other_file().path().c_str(), nullptr, OPEN_READ_VOLUME | OPEN_CHECK);
    demand(md != nullptr);
    image_close(md);
}

void use_medium(const Run &run)
{
    MediaDescriptor options{};
    options.use_typed_extensions = options.use_type_names = 1;
    MediaDescriptor *md = image_open(image_file().path().c_str(), &options, OPEN_READ_VOLUME);
    if (md == nullptr) return;
    const bool writable = volume_format(md->format).write_entry != nullptr; // the faces refuse the others
    const std::vector<Other> files = untouched_files(run, md);
    set_faults(run);
    if (writable) carry_out(run, md);
    image_close(md);
    clear_faults();
    const Bytes now = image_file().bytes();
    demand(same_bytes(run.image, now, {0, 1}));
    for (const Other &file : files) demand(same_bytes(run.image, now, file.region));
    demand_reads_back();
}

const fuzz::MemoryFile &packed_file()
{
    static const fuzz::MemoryFile file("packed");
    return file;
}

bool packs_into_another(const Run &run)
{
    packed_file().store({});
    MediaDescriptor *md =
        image_open(image_file().path().c_str(), nullptr, OPEN_READ_VOLUME | OPEN_SORT | OPEN_READ_ONLY);
    if (md == nullptr) return false;
    set_faults(run);
    const bool done = repack_to(md, packed_file().path().c_str()) == 0;
    clear_faults();
    image_close(md);
    demand(image_file().bytes() == run.image);
    return done;
}

// Both ways have the same outcome.
void pack(const Run &run)
{
    const bool into_another = packs_into_another(run);
    set_faults(run);
    const bool in_place = image_defrag(image_file().path().c_str()) == 0;
    clear_faults();
    const Bytes now = image_file().bytes();
    demand(same_bytes(run.image, now, {0, 1}));
    const bool may_differ = (run.options & (fail_an_access | fail_an_allocation)) != 0;
    if (may_differ) return;
    demand(in_place == into_another);
    demand(!in_place || now == packed_file().bytes());
}

}

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    return fuzz::prepare();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const Run run = run_of(data, size);
    loglevel = 0;
    pascal_mode = 0;
    other_file().store(other_image(run.options));
    image_file().store(run.image);
    fuzz::live_blocks = 0;
    if (run.command == 13) {
        pack(run);
    } else {
        use_medium(run);
    }
    demand(fuzz::live_blocks == 0);
    return 0;
}
