// Files by their names: deleting, moving, folders, temporary files, the program's own file.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "platform/platform.h"
#include "platform/posix/inner.h"

namespace
{

constexpr mode_t directory_permissions = 0777; // less the user's mask
constexpr mode_t all_permissions = 07777;
constexpr mode_t kept_permissions = 0777;    // of a copy: whose owner may be another, so no more than that
constexpr mode_t private_permissions = 0600; // of a copy until it is whole

bool copy_bytes(int from, int to)
{
    std::array<uint8_t, 0x10000> bytes;
    for (;;) {
        const int64_t count = platform_read(file_of(from), bytes.data(), bytes.size());
        if (count <= 0) return count == 0;
        errno = ENOSPC; // in case that the device takes a part and says nothing
        if (platform_write(file_of(to), bytes.data(), static_cast<uint32_t>(count)) != count) return false;
    }
}

// A regular file; through no link at the name itself.
int open_source(const char *path)
{
    const int descriptor = open_descriptor(path, O_RDONLY | O_NONBLOCK | O_NOFOLLOW, 0);
    if (descriptor < 0) return -1;
    struct stat status;
    if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) return descriptor;
    close_keeping_error(descriptor);
    errno = EXDEV; // nothing else can be moved there
    return -1;
}

bool copy_to_new_file(int source, const char *to)
{
    const int target = open_descriptor(to, O_WRONLY | O_CREAT | O_EXCL, private_permissions);
    if (target < 0) return false;
    const bool copied = copy_descriptor(source, target);
    close_keeping_error(target);
    return copied || fail_without(to, unlink);
}

bool move_by_copying(const char *from, const char *to)
{
    const int source = open_source(from);
    if (source < 0) return false;
    const bool copied = copy_to_new_file(source, to);
    close_keeping_error(source);
    if (!copied) return false;
    return unlink(from) == 0 || fail_without(to, unlink); // it stays where it was, once
}

// The new folder is made first, so that nobody else's is there; an empty one gives way to the old one.
bool move_directory(const char *from, const char *to)
{
    if (mkdir(to, private_permissions | S_IXUSR) != 0) return false;
    return rename(from, to) == 0 || fail_without(to, rmdir);
}

// Where the system can't be told to spare an existing file: by steps of which each fails when there is one.
bool move_by_steps(const char *from, const char *to)
{
    struct stat status;
    if (lstat(from, &status) != 0) return false;
    if (S_ISDIR(status.st_mode)) return move_directory(from, to);
    if (link(from, to) != 0) return errno != EEXIST && move_by_copying(from, to);
    return unlink(from) == 0 || fail_without(to, unlink);
}

} // namespace

bool fail_without(const char *path, int (*take_away)(const char *))
{
    const int code = errno;
    take_away(path);
    return failed(code);
}

bool copy_descriptor(int from, int to)
{
    struct stat status;
    if (fstat(from, &status) != 0 || !copy_bytes(from, to)) return false;
    const std::array<timespec, 2> times = {status.st_atim, status.st_mtim};
    return fchmod(to, status.st_mode & kept_permissions) == 0 && futimens(to, times.data()) == 0 &&
           platform_sync(file_of(to));
}

bool platform_delete(const char *path)
{
    return unlink(path) == 0;
}

bool platform_move(const char *from, const char *to)
{
    if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return true;
    if (errno == EXDEV) return move_by_copying(from, to);
    return (errno == EINVAL || errno == ENOSYS) && move_by_steps(from, to);
}

bool platform_replace(const char *from, const char *to)
{
    struct stat old;
    struct stat fresh;
    if (stat(to, &old) != 0 || stat(from, &fresh) != 0) return false;
    const bool same_owner = old.st_uid == fresh.st_uid && old.st_gid == fresh.st_gid;
    if (!same_owner && chown(from, old.st_uid, old.st_gid) != 0) return false;
    return chmod(from, old.st_mode & all_permissions) == 0 && rename(from, to) == 0;
}

bool platform_real_path(const char *path, char *ret_path, size_t size)
{
    char *real = realpath(path, nullptr);
    if (real == nullptr) return false;
    const int length = snprintf(ret_path, size, "%s", real);
    free(real);
    return (length >= 0 && static_cast<size_t>(length) < size) || failed(ENAMETOOLONG);
}

bool platform_create_directory(const char *path)
{
    return mkdir(path, directory_permissions) == 0;
}

bool platform_temporary_file(char *ret_path, size_t size)
{
    constexpr int suffix_length = 4;
    const char *folder = secure_getenv("TMPDIR");
    if (folder == nullptr || *folder == '\0') folder = "/tmp";
    const int length = snprintf(ret_path, size, "%s/TRV$$XXXXXX.tmp", folder);
    if (length < 0 || static_cast<size_t>(length) >= size) return failed(ENAMETOOLONG);
    const int descriptor = mkostemps(ret_path, suffix_length, O_CLOEXEC); // readable by the user alone
    if (descriptor < 0) return false;
    close(descriptor);
    return true;
}

bool platform_program_path(char *ret_path, size_t size)
{
    const ssize_t length = readlink("/proc/self/exe", ret_path, size);
    if (length < 0) return false;
    if (static_cast<size_t>(length) >= size) return failed(ENAMETOOLONG);
    ret_path[length] = '\0';
    return true;
}

bool platform_is_separator(char character)
{
    return character == '/';
}

bool platform_is_directory(const char *path)
{
    struct stat status;
    return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

bool platform_is_plain_file(const char *path)
{
    struct stat status;
    return lstat(path, &status) == 0 && S_ISREG(status.st_mode);
}

bool platform_is_reserved_name(const char *name)
{
    const std::string_view text = name;
    return text.empty() || text == "." || text == "..";
}
