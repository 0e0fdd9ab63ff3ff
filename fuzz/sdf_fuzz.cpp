// Opens any bytes as a volume with directories: its tree hangs together, stays below the limits and is the same when it
// is read again; its files come out or end in an error. Nothing may crash, hang or leak, and the image is afterwards
// what it was.
//
// The input: a byte of options, a byte that gives the access that fails, and the size of a block unless the options
// leave it to the image; the image.
#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

#include "base/convert.h"
#include "base/output.h"
#include "fuzz/support.h"
#include "volume/catalogue.h"
#include "volume/catalogue_inner.h"
#include "volume/extract_inner.h"
#include "volume/names.h"
#include "volume/navigate.h"
#include "volume/open.h"
#include "volume/state.h"
#include "volume/table.h"

namespace
{

using fuzz::Bytes;
using fuzz::demand;

constexpr uint8_t check = 0x01;
constexpr uint8_t repair = 0x02;
constexpr uint8_t sort_lists = 0x04;
constexpr uint8_t fail_a_read = 0x08;
constexpr uint8_t fail_an_allocation = 0x10;
constexpr uint8_t blocks_of_image = 0x20;
constexpr uint8_t without_progress = 0x40;
constexpr uint8_t as_text = 0x80;

constexpr size_t block_size_field = 28;
constexpr uint32_t inode_bytes = 128;
constexpr uint64_t most_entries = 1'000'000;
constexpr uint64_t large_tree = 20'000; // of which not everything is tried
constexpr uint32_t most_files = 8;
constexpr uint64_t room_on_host = uint64_t{1} << 20;

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

bool has(const Run &run, uint8_t option)
{
    return (run.options & option) != 0;
}

void look_at_entry(const MediaDescriptor *md, const FileInfo *info)
{
    demand(info->name[0] != '\0' && info->location != 0);
    demand(info->inode <= md->inode_count);
    demand(info->record_len != 0);
    std::array<char, VISIBLE_NAME_SIZE> visible{};
    compose_filename(md, info, visible.data());
    const std::string host = safe_host_name(visible.data());
    demand(!host.empty() && host != "." && host != ".." && host.find('/') == std::string::npos);
}

// Returns how many entries the tree has; each stands where its neighbours say.
uint64_t walk(const MediaDescriptor *md)
{
    uint64_t count = 0;
    const FileInfo *parent = nullptr;
    const FileInfo *before = nullptr;
    for (const FileInfo *info = md->root; info != nullptr;) {
        count++;
        demand(info->parent == parent && info->prev == before);
        demand(info->level == (parent == nullptr ? 1 : parent->level + 1) && info->level <= MAX_DIRECTORY_LEVEL);
        demand(info->child == nullptr || info->is_directory != 0);
        if (count < large_tree) look_at_entry(md, info);
        before = info;
        if (info->child != nullptr) {
            parent = info;
            before = nullptr;
            info = info->child;
            continue;
        }
        while (info->next == nullptr && info->parent != nullptr) info = info->parent;
        parent = info->parent;
        before = info;
        info = info->next;
    }
    return count;
}

void print_line(void *, const MediaDescriptor *md, const FileInfo *info)
{
    print_list_entry(md, info, info->level);
}

int32_t never_stop(void *, uint32_t, uint32_t)
{
    return 0;
}

void copy_out(const Run &run, MediaDescriptor *md, const FileInfo *info)
{
    host_file().store({});
    fuzz::rules.watched = host_file().handle();
    fuzz::rules.room = room_on_host;
    fuzz::rules.bytes = 0;
    const uint16_t flags = has(run, as_text) ? EXTRACT_CONVERT : 0;
    const ProgressCallback progress = has(run, without_progress) ? nullptr : never_stop;
    const Extraction done = extract_to_handle(md, info, host_file().handle(), "host", flags, progress);
    demand(!done.whole || done.result >= 0);
    demand(fuzz::rules.bytes <= room_on_host);
    if (done.whole && !has(run, as_text)) demand(host_file().bytes().size() == info->size);
}

void copy_some(const Run &run, MediaDescriptor *md)
{
    uint32_t files = 0;
    for (const FileInfo *info = md->root; info != nullptr && files < most_files; info = info->next) {
        if (info->is_directory != 0) continue;
        files++;
        copy_out(run, md, info);
    }
}

void try_paths(MediaDescriptor *md)
{
    for (const FileInfo *info = md->root; info != nullptr; info = info->next) {
        if (info->is_directory == 0) continue;
        FileInfo *list = nullptr;
        if (image_change_directory(md, nullptr, info->name, "/", &list) == 0 && list != nullptr) {
            demand(list->parent != nullptr);
        }
        image_find_file(md, md->root, info->name, 1);
        return;
    }
}

void read_again(const Run &run, MediaDescriptor *md, uint64_t count)
{
    const int32_t result = md->state->table_result;
    const int32_t again =
        get_file_table(md, nullptr, nullptr, 0, 0, has(run, sort_lists), has(run, check), has(run, repair), 1);
    demand(again == result && walk(md) == count);
    get_file_table(md, "A/B", nullptr, 0, 0, 0, 0, 0, 1);
    demand(md->root == nullptr && md->cursor == nullptr);
}

void use_medium(const Run &run, MediaDescriptor *md)
{
    demand(md->format == FORMAT_SDF);
    demand(uint64_t{md->inode_count} * inode_bytes <= run.image.size() + RECORD_SIZE);
    print_media_info(md);
    print_list_header(md);
    const uint64_t count = walk(md);
    demand(count <= most_entries);
    if (count > large_tree) return;
    const uint32_t printed = visit_selected(md, {md->root, nullptr, true}, print_line, nullptr);
    output_flush();
    demand(printed == count);
    try_paths(md);
    copy_some(run, md);
    if (!has(run, fail_a_read) && !has(run, fail_an_allocation)) read_again(run, md, count);
}

void open_and_use(const Run &run)
{
    MediaDescriptor options{};
    options.use_type_names = 1;
    options.use_typed_extensions = 1;
    uint16_t flags = OPEN_READ_VOLUME | OPEN_READ_ONLY | OPEN_RECURSIVE;
    if (has(run, check)) flags |= OPEN_CHECK;
    if (has(run, repair)) flags |= OPEN_REPAIR;
    if (has(run, sort_lists)) flags |= OPEN_SORT;
    if (has(run, fail_a_read)) fuzz::rules.reads = run.number;
    if (has(run, fail_an_allocation)) fuzz::allocations_left = run.number;
    MediaDescriptor *md = image_open(image_file().path().c_str(), &options, flags);
    if (md != nullptr) use_medium(run, md);
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
    if (run.image.size() < RECORD_SIZE) return 0;
    set_word(run.image.data(), 0x0700);
    if (!has(run, blocks_of_image)) {
        set_dword(run.image.data() + block_size_field, static_cast<uint32_t>(RECORD_SIZE << (run.number & 3)));
    }
    image_file().store(run.image);
    fuzz::live_blocks = 0;
    open_and_use(run);
    demand(fuzz::live_blocks == 0);
    demand(image_file().bytes() == run.image);
    return 0;
}
