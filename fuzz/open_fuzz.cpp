// Opens any bytes as an image, with any flags, looks at everything that can be seen of it and closes it. Nothing may
// crash or hang, no block of the private heap may be left, and the image is afterwards what it was.
//
// The input: two bytes of flags, low byte first, then the image. The flags are those of image_open; bits that would
// write, and those that it doesn't have, choose options of the medium instead.
#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "base/convert.h"
#include "base/error.h"
#include "base/log.h"
#include "base/output.h"
#include "fuzz/support.h"
#include "volume/allocation.h"
#include "volume/catalogue.h"
#include "volume/catalogue_inner.h"
#include "volume/filetypes.h"
#include "volume/names.h"
#include "volume/navigate.h"
#include "volume/open.h"
#include "volume/table.h"

namespace
{

using fuzz::demand;

constexpr uint16_t open_flags =
    OPEN_READ_VOLUME | OPEN_CHECK | OPEN_SORT | OPEN_REPAIR | OPEN_NO_QUERY | OPEN_RECURSIVE | OPEN_READ_ONLY;
constexpr uint16_t leave_volume_unread = 0x0001; // together with OPEN_READ_VOLUME off
constexpr uint16_t full_log = 0x0002;
constexpr uint16_t show_purged = 0x0040;
constexpr uint16_t typed_extensions = 0x0080;
constexpr uint16_t pascal_names = 0x0200;
constexpr uint16_t type_names = 0x0800;
constexpr uint16_t prefer_second_system = 0x2000;
constexpr uint16_t other_pattern = 0x4000;
constexpr uint16_t fail_an_allocation = 0x8000; // the one whose number the image's last byte gives

constexpr uint32_t most_searches = 50; // each goes through the whole list

const fuzz::MemoryFile &image_file()
{
    static const fuzz::MemoryFile file("image");
    return file;
}

void look_at_entry(MediaDescriptor *md, const FileInfo *info, bool search)
{
    std::array<char, VISIBLE_NAME_SIZE> visible{};
    compose_filename(md, info, visible.data());
    std::array<char, VISIBLE_NAME_SIZE> plain{};
    decode_filename(info, md->format, plain.data());
    std::array<char, VISIBLE_NAME_SIZE> host{};
    string_hp2win(host.data(), visible.data(), 1);
    std::array<char, MAX_DIRECTORY_LEVEL + 1> path{};
    image_get_path(info, path.data(), "/");
    std::array<char, NAME_MESSAGE_SIZE> message{};
    check_valid_filename(md->format, plain.data(), nullptr, message.data());
    std::array<char, 32> date{};
    std::array<char, 32> time{};
    get_datetime_strings(&info->date, date.data(), time.data(), 0);
    std::array<char, TYPE_TEXT_SIZE> type{};
    get_filetype(md, type.data(), info->type, info->name);
    if (!search) return;
    image_find_file(md, nullptr, info->name, 0);
    image_find_typed_file(md, nullptr, visible.data(), 0, 1);
    image_find_typed_file(md, nullptr, host.data(), 1, 1);
    FileInfo *reached = nullptr;
    image_change_directory(md, nullptr, plain.data(), "/", &reached);
}

// Every entry once, the neighbours agreeing with each other; directories by a list of those still to be seen.
void walk(MediaDescriptor *md)
{
    uint32_t searches = 0;
    std::vector<const FileInfo *> heads = {md->root};
    while (!heads.empty()) {
        const FileInfo *info = heads.back();
        heads.pop_back();
        for (const FileInfo *before = nullptr; info != nullptr; before = info, info = info->next) {
            demand(info->prev == before);
            look_at_entry(md, info, searches++ < most_searches);
            if (info->child != nullptr) heads.push_back(info->child);
        }
    }
}

void print_line(void *, const MediaDescriptor *md, const FileInfo *info)
{
    print_list_entry(md, info, 0);
}

void print_all(const MediaDescriptor *md, const char *const *filespec)
{
    print_media_info(md);
    print_list_header(md);
    const uint32_t printed = visit_matching(md, filespec, print_line, nullptr);
    output_flush();
    demand(printed <= match_count(md, nullptr));
    demand(match_count(md, filespec) <= match_count(md, nullptr));
}

void use_medium(const std::string &target, uint16_t bits)
{
    MediaDescriptor options{};
    options.show_purged = (bits & show_purged) != 0;
    options.use_typed_extensions = (bits & typed_extensions) != 0;
    options.use_type_names = (bits & type_names) != 0;
    options.prefer_hfs = (bits & prefer_second_system) != 0;
    pascal_mode = (bits & pascal_names) != 0;
    loglevel = (bits & full_log) != 0 ? 5 : 0;
    auto flags = static_cast<uint16_t>(bits & open_flags);
    if ((bits & leave_volume_unread) == 0) flags |= OPEN_READ_VOLUME;

    MediaDescriptor *md = image_open(target.c_str(), &options, flags);
    std::array<char, ERROR_TEXT_SIZE> words{};
    get_error(words.data());
    if (md == nullptr) return;
    const std::array<const char *, 3> filespec = {"F*0?", "*.ASCII", nullptr};
    print_all(md, (bits & other_pattern) != 0 ? filespec.data() : nullptr);
    walk(md);
    image_close(md);
}

}

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    return fuzz::prepare();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2) return 0;
    const auto bits = static_cast<uint16_t>(data[0] | data[1] << 8);
    const fuzz::Bytes image(data + 2, data + size);
    image_file().store(image);
    fuzz::allocations_left = (bits & fail_an_allocation) != 0 ? data[size - 1] : UINT64_MAX;
    fuzz::live_blocks = 0;
    use_medium(image_file().path(), bits);
    demand(fuzz::live_blocks == 0);
    demand(image_file().bytes() == image);
    return 0;
}
