// Files of an open medium into files of the host: names, folders, and what may be overwritten.
#include "volume/extract.h"

#include <cstring>
#include <new>

#include "base/convert.h"
#include "base/error.h"
#include "base/file_inner.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "platform/platform.h"
#include "volume/extract_inner.h"
#include "volume/extract_transfer.h"
#include "volume/image_access.h"
#include "volume/names.h"

namespace
{
constexpr uint32_t exists = 210;
constexpr char text_ending[] = ".txt";

int32_t file_error(uint32_t number, const char *name)
{
    set_error(number, "file \"%s\"", name);
    return -1;
}

// ---- names -----------------------------------------------------------------------------------------------

std::string joined(const char *destination, const std::string &name)
{
    if (destination == nullptr) return name;
    std::string path = destination;
    if (path.empty() || !platform_is_separator(path.back())) path += platform_separator();
    return path + name;
}

std::string host_name(const MediaDescriptor *md, const FileInfo *info, char *ret_filename)
{
    char composed[VISIBLE_NAME_SIZE];
    compose_filename(md, info, composed);
    if (ret_filename != nullptr) std::memcpy(ret_filename, composed, sizeof composed);
    return safe_host_name(composed);
}

// ---- the file of the host --------------------------------------------------------------------------------

bool can_be_read(const char *path)
{
    FileHandle file = 0;
    if (file_open(&file, path, "rb", 0) != 1) return false;
    file_close(file);
    return true;
}

bool is_the_image(const MediaDescriptor *md, const char *path)
{
    if (md->access != ACCESS_IMAGE) return false;
    FileHandle file = 0;
    if (file_open(&file, path, "rb", 0) != 1) return false;
    FileFacts target;
    const bool known = file_calls->facts(file, &target);
    file_close(file);
    return known && is_image_file(md, target);
}

// Where nothing may be overwritten, nothing is: the file is made here or not at all.
int32_t open_target(const MediaDescriptor *md, const char *path, uint16_t flags, FileHandle *ret_file)
{
    if ((flags & EXTRACT_OVERWRITE) == 0) {
        if (file_open_new(ret_file, path)) return 0;
        const uint32_t reason = platform_last_error();
        if (can_be_read(path)) return file_error(exists, path);
        platform_set_last_error(reason);
        set_error(300, "%s", last_error());
        platform_set_last_error(reason);
        return -1;
    }
    if (is_the_image(md, path)) return file_error(208, path);
    return file_open(ret_file, path, "wb", 0) == 1 ? 0 : -1;
}

// A folder takes the place of a plain file; of nothing else.
int32_t make_folder(const MediaDescriptor *md, const char *path, uint16_t flags)
{
    if (can_be_read(path) && (flags & EXTRACT_OVERWRITE) == 0) return file_error(exists, path);
    if (is_the_image(md, path)) return file_error(208, path);
    if (platform_is_plain_file(path) && file_delete(path) < 0) return -1;
    return file_create_directory(path);
}

int32_t make_destination(const char *destination)
{
    if (destination == nullptr || destination[0] == '\0' || platform_is_directory(destination)) return 0;
    if (file_create_directory(destination) == 0 || platform_is_directory(destination)) return 0;
    set_error(312, "%s", destination);
    return -1;
}

Extraction extract_to_file(MediaDescriptor *md, const FileInfo *info, const char *path, const ExtractOrder &order,
                           const ExtentList &extents)
{
    FileHandle file = 0;
    if (open_target(md, path, order.flags, &file) < 0) return {};
    // A file made just now is no image that anybody has read, and what was read ahead of this one stays good.
    unkept_file = (order.flags & EXTRACT_OVERWRITE) == 0 ? file : 0;
    const Extraction extraction = transfer_out({md, info, extents, file, path, order.flags, order.progress});
    unkept_file = 0;
    const bool dated = md->format == FORMAT_LIF || md->format == FORMAT_SDF;
    if (extraction.result >= 0 && dated) file_set_open_time(file, &info->date);
    file_close(file);
    return extraction;
}
}

std::string safe_host_name(const char *hp_name)
{
    std::string name(std::strlen(hp_name), '\0');
    string_hp2win(name.data(), hp_name, 1);
    if (!platform_is_reserved_name(name.c_str())) return name;
    // Some systems drop dots and blanks at the end, and with them the difference between two names.
    for (size_t end = name.size(); end > 0 && (name[end - 1] == '.' || name[end - 1] == ' '); end--)
        name[end - 1] = '_';
    return "_" + name;
}

std::string extraction_path(const MediaDescriptor *md, const FileInfo *info, const ExtractOrder &order)
{
    std::string path = joined(order.destination, order.to_file != nullptr ? std::string(order.to_file)
                                                                          : host_name(md, info, order.ret_filename));
    if ((order.flags & EXTRACT_TXT) != 0 && becomes_text(md, info, order.flags)) path += text_ending;
    return path;
}

Extraction extract_file(MediaDescriptor *md, const FileInfo *info, const ExtractOrder &order)
{
    ExtentList extents;
    if (find_extents(md, info, &extents) < 0) return {};
    log_extents(extents);
    const std::string path = extraction_path(md, info, order);
    log_forced_conversion(md, info, order.flags);
    if (make_destination(order.destination) < 0) return {};
    if (info->is_directory == 0) return extract_to_file(md, info, path.c_str(), order, extents);
    const int32_t result = make_folder(md, path.c_str(), order.flags);
    return {.result = result, .whole = result >= 0 && platform_is_directory(path.c_str())};
}

int32_t image_extract_file(MediaDescriptor *md, const FileInfo *info, const char *destination, const char *to_file,
                           char *ret_filename, uint16_t flags, ProgressCallback progress)
{
    log_file(3,
             "image_extract_file(md=%lu, info=%lu, destination=\"%s\", to_file=\"%s\", ret_filename=%lu, flags=%X, "
             "progress=%lu)\n",
             log_pointer(md), log_pointer(info), log_text(destination), log_text(to_file), log_pointer(ret_filename),
             static_cast<unsigned>(flags), log_callback(progress));
    if (md == nullptr || info == nullptr) {
        set_error(103, "Null pointer");
        return -1;
    }
    try {
        return extract_file(md, info, {destination, to_file, ret_filename, flags, progress}).result;
    } catch (const std::bad_alloc &) {
        set_error(105, "");
        return -1;
    }
}
