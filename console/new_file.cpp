// Files that take another one's place: what is half done never bears the name that users know.
#include "console/new_file.h"

#include "base/error.h"
#include "base/file_inner.h"
#include "console/host_file.h"
#include "platform/platform.h"

namespace
{
constexpr uint32_t target_exists = 210;
constexpr uint32_t cannot_open = 300;
constexpr uint32_t cannot_create = 307;
constexpr uint32_t most_names = 99;

void fail_to_create(const std::string &path)
{
    char words[256];
    get_win_error(words, sizeof words);
    set_error(cannot_create, "file \"%s\": %s", path.c_str(), words);
}

bool make_empty(const std::string &path)
{
    HostFile file;
    if (file_open_new(&file.handle, path.c_str())) return true;
    file.handle = 0;
    return false;
}
}

NewFile::NewFile(const std::string &target) : target_(target) {}

NewFile::~NewFile()
{
    if (!path_.empty()) platform_delete(path_.c_str());
}

bool NewFile::make()
{
    for (uint32_t number = 1; number <= most_names; number++) {
        const std::string path = target_ + ".new" + (number == 1 ? "" : std::to_string(number));
        if (path.size() >= FILE_PATH_SIZE) {
            set_error(cannot_open, "file \"%s\", a name that is too long", path.c_str());
            return false;
        }
        if (make_empty(path)) {
            path_ = path;
            return true;
        }
        const uint32_t reason = platform_last_error();
        if (host_file_exists(path.c_str())) continue;
        platform_set_last_error(reason);
        fail_to_create(path);
        return false;
    }
    set_error(target_exists, "file \"%s.new%u\" and all before it", target_.c_str(), static_cast<unsigned>(most_names));
    return false;
}

bool NewFile::make_elsewhere()
{
    char path[FILE_PATH_SIZE];
    if (file_get_temp(path) < 0) return false;
    path_ = path;
    return true;
}

bool NewFile::take_place(bool replacing)
{
    const bool done =
        replacing ? platform_replace(path_.c_str(), target_.c_str()) : platform_move(path_.c_str(), target_.c_str());
    if (done) {
        path_.clear();
        return true;
    }
    const uint32_t reason = platform_last_error();
    if (!replacing && host_file_exists(target_.c_str())) {
        set_error(target_exists, "file \"%s\"", target_.c_str());
        return false;
    }
    platform_set_last_error(reason);
    fail_to_create(target_);
    return false;
}

std::string path_behind_links(const std::string &path)
{
    char real[FILE_PATH_SIZE];
    if (platform_is_plain_file(path.c_str()) || !platform_real_path(path.c_str(), real, sizeof real)) return path;
    return real;
}
