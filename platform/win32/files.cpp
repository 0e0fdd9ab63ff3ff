// Open files: handles, and how they are read and written whole.
#include "platform/platform.h"
#include "platform/win32/inner.h"

namespace
{

DWORD disposition(OpenMode mode)
{
    switch (mode) {
    case OpenMode::create_always: return CREATE_ALWAYS;
    case OpenMode::open_or_create: return OPEN_ALWAYS;
    case OpenMode::create_new: return CREATE_NEW;
    case OpenMode::existing: return OPEN_EXISTING;
    }
    return OPEN_EXISTING;
}

bool open_file(PlatformFile *ret_file, const char *path, DWORD access, DWORD share, DWORD how, DWORD flags)
{
    const HANDLE handle = CreateFileA(path, access, share, nullptr, how, FILE_ATTRIBUTE_ARCHIVE | flags, nullptr);
    if (file_of(handle) == platform_void_file) return false;
    *ret_file = file_of(handle);
    return true;
}

// The other end of a pipe has gone, or there is no more: no failure of a read.
bool is_end(DWORD code)
{
    return code == ERROR_HANDLE_EOF || code == ERROR_BROKEN_PIPE;
}

} // namespace

bool platform_open(PlatformFile *ret_file, const char *path, bool reading, bool writing, OpenMode mode,
                   bool writethrough)
{
    const DWORD access = (reading ? GENERIC_READ : 0) | (writing ? DWORD{GENERIC_WRITE} : 0);
    return open_file(ret_file, path, access, FILE_SHARE_READ | FILE_SHARE_WRITE, disposition(mode),
                     writethrough ? FILE_FLAG_WRITE_THROUGH : 0);
}

bool platform_open_alone(PlatformFile *ret_file, const char *path)
{
    return open_file(ret_file, path, GENERIC_WRITE, 0, OPEN_EXISTING, 0);
}

void platform_close(PlatformFile file)
{
    CloseHandle(handle_of(file));
}

int64_t platform_seek(PlatformFile file, int64_t offset, SeekFrom from)
{
    constexpr DWORD methods[] = {FILE_BEGIN, FILE_CURRENT, FILE_END};
    // A pipe may take any position; whoever asks for the present one must learn that there is none.
    if (from == SeekFrom::current && GetFileType(handle_of(file)) != FILE_TYPE_DISK) {
        SetLastError(ERROR_SEEK);
        return -1;
    }
    LARGE_INTEGER distance;
    LARGE_INTEGER reached;
    distance.QuadPart = offset;
    const BOOL done = SetFilePointerEx(handle_of(file), distance, &reached, methods[static_cast<uint8_t>(from)]);
    return done ? reached.QuadPart : -1;
}

int64_t platform_read(PlatformFile file, void *buffer, uint32_t bytes)
{
    uint32_t done = 0;
    while (done < bytes) {
        DWORD count = 0;
        const BOOL good =
            ReadFile(handle_of(file), static_cast<uint8_t *>(buffer) + done, bytes - done, &count, nullptr);
        if (!good && !is_end(GetLastError())) return -1;
        if (!good || count == 0) break;
        done += count;
    }
    return done;
}

int64_t platform_write(PlatformFile file, const void *buffer, uint32_t bytes)
{
    uint32_t done = 0;
    while (done < bytes) {
        DWORD count = 0;
        const auto *place = static_cast<const uint8_t *>(buffer) + done;
        const BOOL good = WriteFile(handle_of(file), place, bytes - done, &count, nullptr);
        done += count;
        if (!good || count == 0) return done > 0 ? int64_t{done} : -1;
    }
    return done;
}

// A place goes along with each write; without waiting for another, as the handle is one that waits itself.
int64_t platform_write_at(PlatformFile file, const void *buffer, uint32_t bytes, uint64_t position)
{
    uint32_t done = 0;
    while (done < bytes) {
        DWORD count = 0;
        OVERLAPPED place = {};
        place.Offset = static_cast<DWORD>(position + done);
        place.OffsetHigh = static_cast<DWORD>((position + done) >> 32);
        const auto *next = static_cast<const uint8_t *>(buffer) + done;
        const BOOL good = WriteFile(handle_of(file), next, bytes - done, &count, &place);
        done += count;
        if (!good || count == 0) return done > 0 ? int64_t{done} : -1;
    }
    return done;
}

bool platform_set_end(PlatformFile file)
{
    return SetEndOfFile(handle_of(file));
}

bool platform_sync(PlatformFile file)
{
    return FlushFileBuffers(handle_of(file));
}

bool platform_size(PlatformFile file, uint64_t *ret_bytes)
{
    LARGE_INTEGER size;
    if (!GetFileSizeEx(handle_of(file), &size)) return false;
    *ret_bytes = static_cast<uint64_t>(size.QuadPart);
    return true;
}

bool platform_facts(PlatformFile file, FileFacts *ret_facts)
{
    if (GetFileType(handle_of(file)) != FILE_TYPE_DISK) {
        *ret_facts = {};
        return true;
    }
    BY_HANDLE_FILE_INFORMATION information;
    if (!GetFileInformationByHandle(handle_of(file), &information)) return false;
    *ret_facts = {
        {information.dwVolumeSerialNumber, uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow},
        uint64_t{information.nFileSizeHigh} << 32 | information.nFileSizeLow,
        true,
        int64_t{information.ftLastWriteTime.dwHighDateTime} << 32 | information.ftLastWriteTime.dwLowDateTime};
    return true;
}

bool platform_open_with_facts(PlatformFile *ret_file, const char *path, FileFacts *ret_facts)
{
    if (!platform_open(ret_file, path, true, false, OpenMode::existing, false)) return false;
    if (!platform_facts(*ret_file, ret_facts)) *ret_facts = {};
    return true;
}

PlatformFile platform_standard_file(StandardFile which)
{
    constexpr DWORD numbers[] = {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};
    return file_of(GetStdHandle(numbers[static_cast<uint8_t>(which)]));
}

bool platform_is_terminal(PlatformFile file)
{
    DWORD mode = 0;
    return GetConsoleMode(handle_of(file), &mode);
}
