// A copy of an image file ahead of a change.
#include "console/backup.h"

#include "base/error.h"
#include "console/host_file.h"
#include "platform/platform.h"

namespace
{
constexpr uint32_t not_supported = 109;
constexpr uint32_t target_exists = 210;
constexpr uint32_t cannot_create = 307;
constexpr uint32_t most_backups = 99;

bool find_free_name(const MediaDescriptor *md, std::string *ret_path)
{
    for (uint32_t number = 1; number <= most_backups; number++) {
        *ret_path = std::string(md->msus) + ".bak" + (number == 1 ? "" : std::to_string(number));
        if (!host_file_exists(ret_path->c_str())) return true;
    }
    set_error(target_exists, "file \"%s\" and all before it", ret_path->c_str());
    return false;
}
}

bool make_backup(const MediaDescriptor *md, std::string *ret_path)
{
    if (md->access != ACCESS_IMAGE) {
        set_error(not_supported, "backup of what is no image file");
        return false;
    }
    if (!find_free_name(md, ret_path)) return false;
    if (platform_copy_file_a(md->msus, ret_path->c_str(), 1) != 0) return true;
    char words[256];
    get_win_error(words, sizeof words);
    set_error(cannot_create, "file \"%s\": %s", ret_path->c_str(), words);
    return false;
}
