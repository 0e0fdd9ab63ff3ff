// Opens any bytes as an image and copies its files out, in all modes, into a file of the host that takes only so much.
// Nothing may crash, hang or leak, the image is afterwards what it was, and a copy that counts as whole is one.
//
// The input: a byte of options, a byte that gives the room on the host or the access that fails, the image.
#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "base/convert.h"
#include "fuzz/support.h"
#include "volume/extract.h"
#include "volume/extract_inner.h"
#include "volume/names.h"
#include "volume/open.h"

namespace
{

using fuzz::Bytes;
using fuzz::demand;

constexpr uint8_t typed_extensions = 0x01;
constexpr uint8_t pascal_names = 0x02;
constexpr uint8_t sort_list = 0x04;
constexpr uint8_t full_host = 0x08;
constexpr uint8_t fail_a_read = 0x10;
constexpr uint8_t fail_an_allocation = 0x20;
constexpr uint8_t without_progress = 0x40; // many records move at once then
constexpr uint8_t stop_early = 0x80;

constexpr uint32_t most_files = 12;
constexpr uint64_t usual_room = uint64_t{1} << 20; // bytes on the host
constexpr uint64_t most_records_behind_end = 65535;

struct Mode {
    uint16_t flags;
    uint32_t header;
    size_t bytes_ahead = 0; // of the file's own
};

constexpr Mode modes[] = {
    {.flags = 0, .header = 0},
    {.flags = 0, .header = 1, .bytes_ahead = 512},
    {.flags = 0, .header = 2, .bytes_ahead = 32},
    {.flags = EXTRACT_CONVERT, .header = 1},
    {.flags = EXTRACT_CONVERT | EXTRACT_FORCE, .header = 0},
};

struct Run {
    uint8_t options = 0;
    uint8_t number = 0;
    Bytes image;
};

const fuzz::MemoryFile &image_file()
{
    static const fuzz::MemoryFile file("image");
    return file;
}

const fuzz::MemoryFile &host_file()
{
    static const fuzz::MemoryFile file("host");
    return file;
}

uint32_t last_record; // that a copy goes on to

int32_t stop_behind_last(void *, uint32_t record, uint32_t)
{
    return record >= last_record ? 1 : 0;
}

void demand_safe_name(const std::string &name)
{
    demand(!name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos);
}

void try_names(const MediaDescriptor *md, const FileInfo *info)
{
    std::array<char, VISIBLE_NAME_SIZE> visible{};
    compose_filename(md, info, visible.data());
    const std::string name = safe_host_name(visible.data());
    demand_safe_name(name);
    ExtractOrder order;
    order.destination = "folder";
    order.flags = EXTRACT_CONVERT | EXTRACT_TXT;
    const std::string path = extraction_path(md, info, order);
    const size_t separator = path.find('/');
    demand(separator != std::string::npos && path.substr(0, separator) == "folder");
    demand_safe_name(path.substr(separator + 1));
}

// The bytes of a file as they stand on the image, zeros behind its end.
Bytes stored_bytes(const Bytes &image, const FileInfo *info)
{
    Bytes bytes(info->size);
    const uint64_t start = uint64_t{info->location} * RECORD_SIZE;
    if (start >= image.size()) return bytes;
    const auto count = std::min<uint64_t>(info->size, image.size() - start);
    std::copy_n(image.begin() + static_cast<ptrdiff_t>(start), count, bytes.begin());
    return bytes;
}

void demand_whole(const Run &run, const FileInfo *info, const Mode &mode)
{
    if ((mode.flags & EXTRACT_CONVERT) != 0) return;
    const Bytes copy = host_file().bytes();
    demand(copy.size() == mode.bytes_ahead + info->size);
    const Bytes stored = stored_bytes(run.image, info);
    demand(std::equal(stored.begin(), stored.end(), copy.begin() + static_cast<ptrdiff_t>(mode.bytes_ahead)));
}

struct Bounds {
    uint64_t room; // bytes on the host
    bool watched;  // progress stops what claims more than the image has
};

void copy_out(const Run &run, MediaDescriptor *md, const FileInfo *info, const Mode &mode, const Bounds &bounds)
{
    host_file().store({});
    fuzz::rules.watched = host_file().handle();
    fuzz::rules.room = bounds.room;
    fuzz::rules.bytes = 0;
    md->use_file_headers = mode.header;
    const ProgressCallback progress = bounds.watched ? stop_behind_last : nullptr;
    const Extraction done = extract_to_handle(md, info, host_file().handle(), "host", mode.flags, progress);
    demand(!(done.whole && done.stopped) && !(done.whole && done.result < 0));
    demand(bounds.watched || !done.stopped);
    // A file in several pieces may bring the image twice.
    if (mode.flags == 0)
        demand(fuzz::rules.bytes <= 2 * run.image.size() + (most_records_behind_end + 3) * RECORD_SIZE);
    if (done.whole) demand_whole(run, info, mode);
}

void copy_all(const Run &run, MediaDescriptor *md)
{
    const auto image_records = static_cast<uint32_t>(run.image.size() / RECORD_SIZE);
    last_record = (run.options & stop_early) != 0 ? run.number : image_records + most_files;
    const uint64_t room = (run.options & full_host) != 0 ? run.number * uint64_t{64} : usual_room;
    const bool unwatched = (run.options & without_progress) != 0;
    uint32_t files = 0;
    for (const FileInfo *info = md->root; info != nullptr && files < most_files; info = info->next) {
        try_names(md, info);
        if (info->is_directory != 0) continue;
        if (files++ == 0 && unwatched) copy_out(run, md, info, modes[0], {.room = UINT64_MAX, .watched = false});
        const bool watched = !unwatched || info->size > run.image.size() + usual_room;
        for (const Mode &mode : modes) copy_out(run, md, info, mode, {.room = room, .watched = watched});
    }
}

void use_medium(const Run &run)
{
    MediaDescriptor options{};
    options.use_typed_extensions = (run.options & typed_extensions) != 0 ? 1 : 0;
    options.show_purged = 1;
    pascal_mode = (run.options & pascal_names) != 0 ? 1 : 0;
    uint16_t flags = OPEN_READ_VOLUME | OPEN_READ_ONLY | OPEN_RECURSIVE;
    if ((run.options & sort_list) != 0) flags |= OPEN_SORT;
    MediaDescriptor *md = image_open(image_file().path().c_str(), &options, flags);
    if (md == nullptr) return;
    if ((run.options & fail_a_read) != 0) fuzz::rules.reads = run.number;
    if ((run.options & fail_an_allocation) != 0) fuzz::allocations_left = run.number;
    copy_all(run, md);
    fuzz::rules = {};
    fuzz::allocations_left = UINT64_MAX;
    image_close(md);
}

}

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    return fuzz::prepare();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    Run run;
    run.options = input.take_byte();
    run.number = input.take_byte();
    run.image.assign(input.rest().begin(), input.rest().end());
    image_file().store(run.image);
    fuzz::live_blocks = 0;
    use_medium(run);
    demand(fuzz::live_blocks == 0);
    demand(image_file().bytes() == run.image);
    return 0;
}
