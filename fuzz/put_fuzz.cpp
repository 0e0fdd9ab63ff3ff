// Opens any bytes as an image and copies any file of the host onto it, writes the tables and opens it again. Nothing
// may crash or leak; the bytes of the other files and the volume's first record stay; no more is written than a file
// may have; no temporary file is left; and a copy that counts as whole is one.
//
// The input: a byte of flags, a byte of options, the number of the access that fails, the type (high byte first), the
// length of the name, that of the source (low byte first), the name, the source, the image.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "fuzz/support.h"
#include "volume/access.h"
#include "volume/allocation.h"
#include "volume/format.h"
#include "volume/insert.h"
#include "volume/insert_inner.h"
#include "volume/names.h"
#include "volume/open.h"
#include "volume/region.h"
#include "volume/table.h"

namespace
{

using fuzz::Bytes;
using fuzz::demand;

constexpr uint8_t insert_flags = INSERT_OVERWRITE | INSERT_CONVERT | INSERT_FORCE | INSERT_TXT;
constexpr uint8_t header_shift = 4;
constexpr uint8_t header_mask = 3;
constexpr uint8_t from_memory = 0x40; // the name is then any text
constexpr uint8_t only_plan = 0x80;

constexpr uint8_t typed_extensions = 0x01;
constexpr uint8_t type_names = 0x02;
constexpr uint8_t pascal_names = 0x04;
constexpr uint8_t sort_list = 0x08;
constexpr uint8_t show_purged = 0x10;
constexpr uint8_t fail_an_allocation = 0x20;
constexpr uint8_t fail_a_write = 0x40;
constexpr uint8_t stop_early = 0x80;

constexpr uint64_t most_records = 65535; // of a file
constexpr size_t longest_name = 200;
constexpr uint64_t most_reopened = uint64_t{4} << 20; // bytes; a larger image may have a million entries to refuse

struct Run {
    uint8_t flags = 0;
    uint8_t options = 0;
    uint8_t number = 0;
    uint16_t type = 0;
    std::string name;
    Bytes source;
    Bytes image;
};

struct Other { // a file that was there before
    const FileInfo *info;
    Region region;
};

const fuzz::MemoryFile &image_file()
{
    static const fuzz::MemoryFile file("image");
    return file;
}

// A folder of this process alone, in which temporary files come to stand too.
const std::filesystem::path &folder()
{
    static const std::filesystem::path path = [] {
        std::string name = std::filesystem::temp_directory_path() / "put_fuzz_XXXXXX";
        demand(mkdtemp(name.data()) != nullptr && setenv("TMPDIR", name.c_str(), 1) == 0);
        return name;
    }();
    return path;
}

uint32_t last_record; // that a copy goes on to

int32_t stop_behind_last(void *, uint32_t record, uint32_t)
{
    return record >= last_record ? 1 : 0;
}

Run run_of(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    Run run;
    run.flags = input.take_byte();
    run.options = input.take_byte();
    run.number = input.take_byte();
    run.type = input.take_word();
    const size_t name_length = input.take_byte();
    const size_t low = input.take_byte();
    const size_t source_length = low | static_cast<size_t>(input.take_byte()) << 8;
    const auto name = input.take_bytes(name_length);
    run.name.assign(name.begin(), std::find(name.begin(), name.end(), 0));
    const auto source = input.take_bytes(source_length);
    run.source.assign(source.begin(), source.end());
    run.image.assign(input.rest().begin(), input.rest().end());
    return run;
}

// A name that a file of the host can have, as near as it can be to the one that is asked for.
std::string host_path(const std::string &name)
{
    std::string usable = name.substr(0, longest_name);
    std::replace(usable.begin(), usable.end(), '/', '_');
    if (usable.empty() || usable == "." || usable == "..") usable += "_";
    return folder() / usable;
}

void write_source(const std::string &path, const Bytes &bytes)
{
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    demand(file.flush().good());
}

Insertion insert_named(const Run &run, MediaDescriptor *md, FileInfo *info, InsertOrder order)
{
    const std::string path = host_path(run.name);
    write_source(path, run.source);
    order.name = path.c_str();
    const Insertion done = insert_file(md, info, order);
    demand(unlink(path.c_str()) == 0);
    return done;
}

Insertion insert_source(const Run &run, MediaDescriptor *md, FileInfo *info, InsertOrder order)
{
    InsertSource source;
    source.bytes = run.source.data();
    source.size = run.source.size();
    order.name = run.name.c_str();
    info->date = {.tm_mday = 15, .tm_mon = 2, .tm_year = 84};
    return insert_from(md, info, &source, order);
}

Insertion insert(const Run &run, MediaDescriptor *md)
{
    InsertOrder order;
    order.flags = run.flags & insert_flags;
    order.progress = (run.options & stop_early) != 0 ? stop_behind_last : nullptr;
    order.only_plan = (run.flags & only_plan) != 0;
    last_record = run.number;
    FileInfo info{};
    info.type = run.type;
    const bool memory = (run.flags & from_memory) != 0;
    const Insertion done = memory ? insert_source(run, md, &info, order) : insert_named(run, md, &info, order);
    demand(std::filesystem::is_empty(folder()));
    return done;
}

std::vector<Other> other_files(const MediaDescriptor *md)
{
    std::vector<Other> files;
    for (const FileInfo *info = md->root; info != nullptr; info = info->next) {
        if (info->deleted == 0 && info->is_directory == 0) files.push_back({info, file_region(info)});
    }
    return files;
}

// Those that are still in the list. The new entry may stand where a released one stood.
std::vector<Other> remaining(const std::vector<Other> &files, const MediaDescriptor *md, const FileInfo *entry)
{
    std::vector<const FileInfo *> present;
    for (const FileInfo *info = md->root; info != nullptr; info = info->next) {
        if (info != entry) present.push_back(info);
    }
    std::sort(present.begin(), present.end());
    std::vector<Other> left;
    std::copy_if(files.begin(), files.end(), std::back_inserter(left), [&present](const Other &file) {
        return std::binary_search(present.begin(), present.end(), file.info);
    });
    return left;
}

// The same bytes in both, zeros behind their ends.
bool same_bytes(const Bytes &left, const Bytes &right, uint64_t start, uint64_t length)
{
    const uint64_t end = std::min<uint64_t>(start + length, std::max(left.size(), right.size()));
    for (uint64_t i = start; i < end; i++) {
        if ((i < left.size() ? left[i] : 0) != (i < right.size() ? right[i] : 0)) return false;
    }
    return true;
}

void demand_others_unchanged(const Run &run, const std::vector<Other> &files)
{
    const Bytes now = image_file().bytes();
    demand(same_bytes(run.image, now, 0, RECORD_SIZE));
    for (const Other &file : files) {
        demand(same_bytes(run.image, now, file.region.start * RECORD_SIZE, file.region.length * RECORD_SIZE));
    }
}

void demand_insertion(const Run &run, MediaDescriptor *md, const Insertion &done)
{
    demand(fuzz::rules.bytes <= most_records * RECORD_SIZE);
    if ((run.flags & only_plan) != 0) demand(image_file().bytes() == run.image);
    if (done.result >= 0) demand(done.entry != nullptr);
    if (done.deleted_old) demand((run.flags & INSERT_OVERWRITE) != 0);
    if (!done.whole) return;
    demand(done.entry != nullptr && !done.stopped && static_cast<uint32_t>(done.result) == done.entry->location);
    const bool as_it_is = (run.flags & INSERT_CONVERT) == 0 && (run.flags >> header_shift & header_mask) == 0;
    if (!as_it_is || (run.flags & only_plan) != 0) return;
    const Bytes now = image_file().bytes();
    const uint64_t start = uint64_t{done.entry->location} * RECORD_SIZE;
    const bool whole_records = volume_format(md->format).says_logical_records; // the entry is as long as they are
    demand(done.entry->size == run.source.size() || (whole_records && done.entry->size > run.source.size()));
    demand(start + run.source.size() <= now.size());
    demand(std::equal(run.source.begin(), run.source.end(), now.begin() + static_cast<ptrdiff_t>(start)));
    demand(live_file_in(md, {done.entry->location, 1}) == done.entry || run.source.empty());
}

bool write_tables(MediaDescriptor *md)
{
    bool well = true;
    for (int32_t spare = 0; spare < 2; spare++) {
        if (update_file_table(md, spare) < 0) well = false;
        if (update_alloc_table(md, spare) < 0) well = false;
    }
    return well;
}

void demand_reopens(const std::vector<uint32_t> &locations)
{
    MediaDescriptor *md = image_open(image_file().path().c_str(), nullptr, OPEN_READ_VOLUME);
    demand(md != nullptr);
    for (const uint32_t location : locations) {
        const FileInfo *info = md->root;
        while (info != nullptr && info->location != location) info = info->next;
        demand(info != nullptr);
    }
    image_close(md);
}

void set_faults(const Run &run, MediaDescriptor *md)
{
    fuzz::rules.watched = md->file;
    if ((run.options & fail_a_write) != 0) fuzz::rules.left = run.number;
    if ((run.options & fail_an_allocation) != 0) fuzz::allocations_left = run.number;
}

// The locations that the directory must show afterwards.
std::vector<uint32_t> change(const Run &run, MediaDescriptor *md)
{
    const std::vector<Other> before = other_files(md);
    set_faults(run, md);
    const Insertion done = insert(run, md);
    fuzz::allocations_left = UINT64_MAX;
    const std::vector<Other> after = remaining(before, md, done.entry);
    demand(before.size() - after.size() == (done.deleted_old ? 1 : 0));
    demand_insertion(run, md, done);
    demand_others_unchanged(run, after);
    if ((run.flags & only_plan) != 0 || !write_tables(md)) return {};
    demand_others_unchanged(run, after);
    std::vector<uint32_t> locations;
    for (const Other &file : after) locations.push_back(file.info->location);
    if (done.entry != nullptr) locations.push_back(done.entry->location);
    return locations;
}

void use_medium(const Run &run)
{
    MediaDescriptor options{};
    options.use_typed_extensions = (run.options & typed_extensions) != 0 ? 1 : 0;
    options.use_type_names = (run.options & type_names) != 0 ? 1 : 0;
    options.show_purged = (run.options & show_purged) != 0 ? 1 : 0;
    options.use_file_headers = run.flags >> header_shift & header_mask;
    pascal_mode = (run.options & pascal_names) != 0 ? 1 : 0;
    uint16_t flags = OPEN_READ_VOLUME;
    if ((run.options & sort_list) != 0) flags |= OPEN_SORT;
    MediaDescriptor *md = image_open(image_file().path().c_str(), &options, flags);
    if (md == nullptr) return;
    const std::vector<uint32_t> locations = change(run, md);
    fuzz::rules = {};
    image_close(md);
    if (image_file().bytes().size() <= most_reopened) demand_reopens(locations);
}

}

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    atexit([] { std::filesystem::remove_all(folder()); });
    return folder().empty() ? 1 : fuzz::prepare();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const Run run = run_of(data, size);
    image_file().store(run.image);
    fuzz::live_blocks = 0;
    use_medium(run);
    demand(fuzz::live_blocks == 0);
    return 0;
}
