// The wide and ANSI file calls. The ANSI code page is UTF-8 here, and a wide name is converted to it.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>

#include "platform/platform.h"
#include "platform/posix/inner.h"
#include "platform/posix/utf8.h"

namespace
{

constexpr uint32_t attribute_read_only = 1;
constexpr uint32_t access_read = 0x80000000;
constexpr uint32_t access_write = 0x40000000;
constexpr uint32_t flag_write_through = 0x80000000;
constexpr mode_t write_permissions = S_IWUSR | S_IWGRP | S_IWOTH;

// An existing target is emptied first; the source itself can't be the target.
int open_existing_target(const char *to, const struct stat &source)
{
    const int target = open_descriptor(to, O_WRONLY | O_NONBLOCK, 0);
    if (target < 0) return -1;
    struct stat status;
    bool good = fstat(target, &status) == 0;
    if (good && !S_ISREG(status.st_mode)) good = failed(EACCES);
    if (good && status.st_dev == source.st_dev && status.st_ino == source.st_ino) good = failed(EBUSY);
    if (good && ftruncate(target, 0) == 0) return target;
    close_keeping_error(target);
    return -1;
}

bool copy_file(int source, const char *to, bool fail_if_exists)
{
    struct stat status;
    if (fstat(source, &status) != 0) return false;
    if (!S_ISREG(status.st_mode)) return failed(EACCES);
    int target = open_descriptor(to, O_WRONLY | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR);
    const bool is_new = target >= 0;
    if (!is_new && errno == EEXIST && !fail_if_exists) target = open_existing_target(to, status);
    if (target < 0) return false;
    const bool copied = copy_descriptor(source, target);
    close_keeping_error(target);
    return copied || (is_new && fail_without(to, unlink));
}

// O_ flags of a disposition, -1 for one that there isn't.
int disposition_flags(uint32_t disposition)
{
    constexpr std::array<int, 6> flags = {-1, O_CREAT | O_EXCL, O_CREAT | O_TRUNC, 0, O_CREAT, O_TRUNC};
    return disposition < flags.size() ? flags[disposition] : -1;
}

int access_flags(uint32_t access)
{
    if ((access & access_write) == 0) return O_RDONLY;
    return (access & access_read) != 0 ? O_RDWR : O_WRONLY;
}

} // namespace

void *platform_no_handle()
{
    return reinterpret_cast<void *>(~uintptr_t{0});
}

bool platform_has_wide_calls()
{
    return true;
}

int32_t platform_wide_to_ansi(char *target, size_t size, const wchar_t *source)
{
    return static_cast<int32_t>(wide_to_utf8(target, size, source));
}

int32_t platform_ansi_to_wide(wchar_t *target, size_t size, const char *source)
{
    return static_cast<int32_t>(utf8_to_wide(target, size, source));
}

int32_t platform_copy_file_a(const char *from, const char *to, int32_t fail_if_exists)
{
    const int source = open_descriptor(from, O_RDONLY | O_NONBLOCK, 0);
    if (source < 0) return 0;
    const bool copied = copy_file(source, to, fail_if_exists != 0);
    close_keeping_error(source);
    return copied;
}

int32_t platform_copy_file_w(const wchar_t *from, const wchar_t *to, int32_t fail_if_exists)
{
    const Utf8Name narrow_from(from);
    const Utf8Name narrow_to(to);
    return narrow_from.fits && narrow_to.fits &&
           platform_copy_file_a(narrow_from.text, narrow_to.text, fail_if_exists) != 0;
}

int32_t platform_create_directory_a(const char *name)
{
    return platform_create_directory(name);
}

int32_t platform_create_directory_w(const wchar_t *name)
{
    const Utf8Name narrow(name);
    return narrow.fits && platform_create_directory(narrow.text);
}

int32_t platform_remove_directory_a(const char *name)
{
    return rmdir(name) == 0;
}

int32_t platform_remove_directory_w(const wchar_t *name)
{
    const Utf8Name narrow(name);
    return narrow.fits && rmdir(narrow.text) == 0;
}

int32_t platform_delete_file_a(const char *name)
{
    return platform_delete(name);
}

int32_t platform_delete_file_w(const wchar_t *name)
{
    const Utf8Name narrow(name);
    return narrow.fits && platform_delete(narrow.text);
}

int32_t platform_move_file_a(const char *from, const char *to)
{
    return platform_move(from, to);
}

int32_t platform_move_file_w(const wchar_t *from, const wchar_t *to)
{
    const Utf8Name narrow_from(from);
    const Utf8Name narrow_to(to);
    return narrow_from.fits && narrow_to.fits && platform_move(narrow_from.text, narrow_to.text);
}

// Of the attributes this system knows only the first, and for files alone.
int32_t platform_set_attributes_a(const char *name, uint32_t attributes)
{
    struct stat status;
    if (stat(name, &status) != 0) return 0;
    if (S_ISDIR(status.st_mode)) return 1;
    const mode_t others = status.st_mode & 07777u & ~write_permissions;
    if ((attributes & attribute_read_only) != 0) return chmod(name, others) == 0;
    return (status.st_mode & S_IWUSR) != 0 || chmod(name, others | S_IWUSR) == 0;
}

int32_t platform_set_attributes_w(const wchar_t *name, uint32_t attributes)
{
    const Utf8Name narrow(name);
    return narrow.fits && platform_set_attributes_a(narrow.text, attributes) != 0;
}

void *platform_create_file_a(const char *name, uint32_t access, uint32_t, uint32_t disposition, uint32_t flags)
{
    const int how = disposition_flags(disposition);
    if (how < 0) errno = EINVAL;
    const int through = (flags & flag_write_through) != 0 ? O_DSYNC : 0;
    const int descriptor = how < 0 ? -1 : open_file(name, access_flags(access) | how | through);
    if (descriptor < 0) return platform_no_handle();
    return reinterpret_cast<void *>(file_of(descriptor));
}

void *platform_create_file_w(const wchar_t *name, uint32_t access, uint32_t share, uint32_t disposition, uint32_t flags)
{
    const Utf8Name narrow(name);
    return narrow.fits ? platform_create_file_a(narrow.text, access, share, disposition, flags) : platform_no_handle();
}

uint32_t platform_extract_icon_a(const char *, int32_t, void **, void **, uint32_t)
{
    return 0; // files have no icons here
}

uint32_t platform_extract_icon_w(const wchar_t *, int32_t, void **, void **, uint32_t)
{
    return 0;
}

void platform_close_handle(void *handle)
{
    platform_close(reinterpret_cast<uintptr_t>(handle));
}
