// New volumes. An image is made under another name and gets its own when it is whole, so that whatever fails leaves
// what was there before.
#include "console/init.h"

#include "base/file_inner.h"
#include "base/output.h"
#include "console/host_file.h"
#include "console/init_layout.h"
#include "console/media_list.h"
#include "console/medium.h"
#include "console/new_file.h"
#include "console/progress_bar.h"
#include "console/report.h"
#include "platform/platform.h"
#include "volume/format.h"
#include "volume/initialize.h"
#include "volume/open.h"
#include "volume/tape_access.h"

namespace
{
constexpr char list_word[] = "list";
constexpr uint32_t not_supported = 109;
constexpr uint32_t target_exists = 210;
constexpr uint32_t cannot_open = 300;
constexpr uint32_t read_error = 302;
constexpr uint32_t magic_9825 = 0;

// ---- the system code of a 9825 ---------------------------------------------------------------------------

bool is_9825(const MediaDescriptor &layout)
{
    return layout.format == FORMAT_DISK45 && layout.magic == magic_9825;
}

bool read_boot_code(const std::string &path)
{
    HostFile file;
    if (file_open(&file.handle, path.c_str(), "rb", 0) != 1) {
        file.handle = 0;
        const uint32_t reason = platform_last_error();
        set_error(cannot_open, "file \"%s\"", path.c_str());
        platform_set_last_error(reason);
        return false;
    }
    uint8_t more = 0;
    const bool fits = file_read(file.handle, hp9825_boot, HP9825_BOOT_SIZE) == HP9825_BOOT_SIZE &&
                      file_read(file.handle, &more, 1) == 0;
    if (!fits) set_error(read_error, "file \"%s\", which isn't %d bytes long", path.c_str(), int{HP9825_BOOT_SIZE});
    return fits;
}

// ---- what is there already -------------------------------------------------------------------------------

struct Place {
    std::string path;   // of the image file
    bool taken = false; // there is a file, which may be replaced
};

// False, with the error set, where no volume may be made.
bool look_at_place(const Arguments &arguments, Place *ret_place)
{
    if (is_tape_name(arguments.medium.c_str())) {
        set_error(not_supported, "new volume in a tape image");
        return false;
    }
    platform_set_last_error(0);
    const Medium old(image_open(arguments.medium.c_str(), nullptr, OPEN_READ_ONLY));
    if (old == nullptr) {
        if (global_error != cannot_open) return false;
        // Nothing is there, or nothing that can be read; then the new name stays untaken at the end.
        ret_place->path = path_behind_links(arguments.medium);
        return true;
    }
    FileFacts facts;
    if (old->access != ACCESS_IMAGE || !file_calls->facts(old->file, &facts) || !facts.plain) {
        set_error(not_supported, "new volume on what is no image file");
        return false;
    }
    ret_place->path = path_behind_links(old->msus);
    ret_place->taken = true;
    if (arguments.force) return true;
    set_error(target_exists, "file \"%s\", --force replaces it", old->msus);
    return false;
}

// ---- making it -------------------------------------------------------------------------------------------

// The second time only what is ahead of the files: on some media the spare tables stand among those, where the fill has
// gone over them.
bool lay_volume(const Arguments &arguments, const std::string &path, MediaDescriptor layout)
{
    const Medium medium(image_open(path.c_str(), nullptr, 0));
    if (medium == nullptr || file_prepare(medium->file, layout.size) != 1) return false;
    layout.access = medium->access;
    layout.file = medium->file;
    layout.state = medium->state;
    if (arguments.quick) return image_initialize(&layout, 1, nullptr) >= 0;
    const ProgressBar bar(arguments.medium.c_str(), layout.size);
    return image_initialize(&layout, 0, bar.callback()) >= 0 && image_initialize(&layout, 1, nullptr) >= 0;
}

bool make_volume(const Arguments &arguments, const MediaDescriptor &layout, const Place &place)
{
    NewFile file(place.path);
    return file.make() && lay_volume(arguments, file.path(), layout) && file.take_place(place.taken);
}

// ---- what is said ----------------------------------------------------------------------------------------

void warn_of_limits(const Arguments &arguments, const MediaDescriptor &layout)
{
    const char *name = arguments.medium.c_str();
    if (is_9825(layout) && arguments.boot.empty())
        report_warning_of(name, "without --boot the 120 records of the system code stay zero");
    if (is_too_large_to_fill(layout))
        report_warning_of(name, "its free space is more than 65534 records, which tarvo can't hand out");
}

void print_part(const char *name, uint32_t first, uint64_t records)
{
    output_format("  %-26s %7llu records from record %lu on\n", name, static_cast<unsigned long long>(records),
                  static_cast<unsigned long>(first));
}

void print_disk(const MediaDescriptor &layout)
{
    print_part("availability table", layout.alloc_start, layout.alloc_size);
    print_part("spare directory", layout.spare_dir_start, layout.dir_size);
    print_part("spare availability table", layout.spare_alloc_start, layout.alloc_size);
    print_part("free", layout.file_area_start, uint64_t{layout.sectors} * layout.data_tracks);
}

void print_layout(const Arguments &arguments, const MediaDescriptor &layout, const Place &place)
{
    const bool is_disk = layout.format == FORMAT_DISK45;
    output_format("%s: %s%s%s, %lu bytes%s\n", place.path.c_str(), volume_format(layout.format).name,
                  is_disk ? " of the " : "", is_disk ? computer_of(layout) : "",
                  static_cast<unsigned long>(layout.size), place.taken ? ", in place of the old file" : "");
    if (layout.dir_size != 0) print_part("directory", layout.dir_start, layout.dir_size);
    if (is_disk) print_disk(layout);
    output_text(arguments.quick ? "  the file area stays as it is\n" : "  the file area is filled\n");
}

int init_volume(const Arguments &arguments, const MediaDescriptor &layout)
{
    Place place;
    if (!look_at_place(arguments, &place)) return report_failure();
    if (!arguments.boot.empty() && !read_boot_code(arguments.boot)) return report_failure();
    if (arguments.dry_run) {
        begin_data();
        print_layout(arguments, layout, place);
        return finish_data(exit_done);
    }
    if (!make_volume(arguments, layout, place)) return report_failure();
    warn_of_limits(arguments, layout);
    return exit_done;
}

std::string usage_fault(const Arguments &arguments)
{
    const bool lists = arguments.media == list_word;
    if (lists && !arguments.medium.empty()) return "--media list takes no medium";
    if (!lists && arguments.medium.empty()) return "MEDIUM is required";
    if (!lists && arguments.json) return "--json goes with --media list";
    return "";
}
}

int run_init(const Arguments &arguments)
{
    std::string fault = usage_fault(arguments);
    if (!fault.empty()) return report_usage(fault.c_str());
    if (arguments.media == list_word) return print_media_list(arguments.json);
    if (names_a_directory(arguments)) return exit_failed;
    MediaDescriptor layout;
    if (lay_out_volume(arguments, &layout, &fault)) return init_volume(arguments, layout);
    return fault.empty() ? report_failure() : report_usage(fault.c_str());
}
