// Open files: descriptors, and how they are read and written whole.
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include "platform/platform.h"
#include "platform/posix/inner.h"

static_assert(sizeof(off_t) == sizeof(int64_t));

namespace
{

constexpr uint32_t most_bytes = 0x7ffff000; // of one call
constexpr mode_t file_permissions = 0666;   // less the user's mask

int access_flags(bool reading, bool writing)
{
    if (!writing) return O_RDONLY;
    return reading ? O_RDWR : O_WRONLY;
}

int mode_flags(OpenMode mode)
{
    switch (mode) {
    case OpenMode::create_always: return O_CREAT | O_TRUNC;
    case OpenMode::open_or_create: return O_CREAT;
    case OpenMode::create_new: return O_CREAT | O_EXCL;
    case OpenMode::existing: return 0;
    }
    return 0;
}

// No directory is a file. A pipe of which this process would be both ends would wait for itself for ever. All else
// that may wait does so only from here on.
bool accept_descriptor(int descriptor, bool both_ways, struct stat *ret_status)
{
    if (fstat(descriptor, ret_status) != 0) return false;
    if (S_ISDIR(ret_status->st_mode)) return failed(EISDIR);
    if (S_ISREG(ret_status->st_mode) || S_ISBLK(ret_status->st_mode)) return true;
    if (S_ISFIFO(ret_status->st_mode) && both_ways) return failed(ESPIPE);
    return fcntl(descriptor, F_SETFL, 0) == 0;
}

FileFacts facts_of(const struct stat &status)
{
    const bool plain = S_ISREG(status.st_mode);
    return {{status.st_dev, status.st_ino},
            plain ? static_cast<uint64_t>(status.st_size) : 0,
            plain,
            counts_of(status.st_mtim)};
}

// After a call that failed: true when it should be made again. A descriptor that was handed over not waiting is
// waited for here.
bool try_again(int descriptor, short event)
{
    if (errno == EINTR) return true;
    if (errno != EAGAIN) return false;
    pollfd waiting = {descriptor, event, 0};
    return poll(&waiting, 1, -1) >= 0 || errno == EINTR;
}

} // namespace

bool failed(int code)
{
    errno = code;
    return false;
}

int descriptor_of(PlatformFile file)
{
    return file > 0 && file <= INT_MAX ? static_cast<int>(file - 1) : -1;
}

PlatformFile file_of(int descriptor)
{
    return static_cast<PlatformFile>(descriptor) + 1;
}

int open_descriptor(const char *path, int flags, mode_t permissions)
{
    int descriptor;
    do {
        descriptor = open(path, flags | O_CLOEXEC | O_NOCTTY, permissions);
    } while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0 || descriptor > STDERR_FILENO) return descriptor;
    // A standard descriptor was closed: what is printed must not end up in this file.
    const int higher = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close_keeping_error(descriptor);
    return higher;
}

void close_keeping_error(int descriptor)
{
    const int code = errno;
    close(descriptor);
    errno = code;
}

int open_file(const char *path, int flags)
{
    const int descriptor = open_descriptor(path, flags | O_NONBLOCK, file_permissions);
    if (descriptor < 0 || (flags & O_EXCL) != 0) return descriptor; // what was made just now is a file
    struct stat status;
    if (accept_descriptor(descriptor, (flags & O_ACCMODE) == O_RDWR, &status)) return descriptor;
    close_keeping_error(descriptor);
    return -1;
}

bool platform_open_with_facts(PlatformFile *ret_file, const char *path, FileFacts *ret_facts)
{
    const int descriptor = open_descriptor(path, O_RDONLY | O_NONBLOCK, file_permissions);
    if (descriptor < 0) return false;
    struct stat status;
    if (!accept_descriptor(descriptor, false, &status)) {
        close_keeping_error(descriptor);
        return false;
    }
    *ret_file = file_of(descriptor);
    *ret_facts = facts_of(status);
    return true;
}

bool platform_open(PlatformFile *ret_file, const char *path, bool reading, bool writing, OpenMode mode,
                   bool writethrough)
{
    const int descriptor =
        open_file(path, access_flags(reading, writing) | mode_flags(mode) | (writethrough ? O_DSYNC : 0));
    if (descriptor < 0) return false;
    *ret_file = file_of(descriptor);
    return true;
}

bool platform_open_alone(PlatformFile *ret_file, const char *path)
{
    return platform_open(ret_file, path, false, true, OpenMode::existing, false);
}

void platform_close(PlatformFile file)
{
    close(descriptor_of(file));
}

int64_t platform_seek(PlatformFile file, int64_t offset, SeekFrom from)
{
    constexpr int whence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    return lseek(descriptor_of(file), offset, whence[static_cast<uint8_t>(from)]);
}

int64_t platform_read(PlatformFile file, void *buffer, uint32_t bytes)
{
    const int descriptor = descriptor_of(file);
    uint32_t done = 0;
    while (done < bytes) {
        const ssize_t count =
            read(descriptor, static_cast<uint8_t *>(buffer) + done, std::min(bytes - done, most_bytes));
        if (count == 0) break;
        if (count > 0)
            done += static_cast<uint32_t>(count);
        else if (!try_again(descriptor, POLLIN))
            return -1;
    }
    return done;
}

int64_t platform_write(PlatformFile file, const void *buffer, uint32_t bytes)
{
    const int descriptor = descriptor_of(file);
    uint32_t done = 0;
    while (done < bytes) {
        const ssize_t count =
            write(descriptor, static_cast<const uint8_t *>(buffer) + done, std::min(bytes - done, most_bytes));
        if (count > 0)
            done += static_cast<uint32_t>(count);
        else if (count == 0 || !try_again(descriptor, POLLOUT))
            return done > 0 ? int64_t{done} : -1;
    }
    return done;
}

int64_t platform_write_at(PlatformFile file, const void *buffer, uint32_t bytes, uint64_t position)
{
    const int descriptor = descriptor_of(file);
    uint32_t done = 0;
    while (done < bytes) {
        const ssize_t count = pwrite(descriptor, static_cast<const uint8_t *>(buffer) + done,
                                     std::min(bytes - done, most_bytes), static_cast<off_t>(position + done));
        if (count > 0)
            done += static_cast<uint32_t>(count);
        else if (count == 0 || !try_again(descriptor, POLLOUT))
            return done > 0 ? int64_t{done} : -1;
    }
    return done;
}

bool platform_set_end(PlatformFile file)
{
    const int descriptor = descriptor_of(file);
    const off_t position = lseek(descriptor, 0, SEEK_CUR);
    if (position < 0) return false;
    int result;
    do {
        result = ftruncate(descriptor, position);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

bool platform_sync(PlatformFile file)
{
    int result;
    do {
        result = fsync(descriptor_of(file));
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

bool platform_size(PlatformFile file, uint64_t *ret_bytes)
{
    const int descriptor = descriptor_of(file);
    struct stat status;
    if (fstat(descriptor, &status) != 0) return false;
    off_t size = status.st_size;
    if (S_ISBLK(status.st_mode)) { // a device has its size only as the position of its end
        const off_t position = lseek(descriptor, 0, SEEK_CUR);
        size = lseek(descriptor, 0, SEEK_END);
        if (size < 0 || lseek(descriptor, position, SEEK_SET) < 0) return false;
    }
    *ret_bytes = static_cast<uint64_t>(size);
    return true;
}

bool platform_facts(PlatformFile file, FileFacts *ret_facts)
{
    struct stat status;
    if (fstat(descriptor_of(file), &status) != 0) return false;
    *ret_facts = facts_of(status);
    return true;
}

PlatformFile platform_standard_file(StandardFile which)
{
    constexpr int descriptors[] = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
    return file_of(descriptors[static_cast<uint8_t>(which)]);
}

bool platform_is_terminal(PlatformFile file)
{
    return isatty(descriptor_of(file)) == 1;
}
