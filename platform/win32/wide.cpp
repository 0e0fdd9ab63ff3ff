// The wide and ANSI file calls, which are the system's own.
#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#include "platform/platform.h"
#include "platform/win32/inner.h"

#include <shellapi.h>

static_assert(sizeof(FindDataA) == sizeof(WIN32_FIND_DATAA) && sizeof(FindDataW) == sizeof(WIN32_FIND_DATAW));

namespace
{

constexpr size_t longest_character = 8; // bytes of one character in any code page

// A character outside the basic plane is two wide ones.
int units_of(const wchar_t *source)
{
    return IS_HIGH_SURROGATE(source[0]) && IS_LOW_SURROGATE(source[1]) ? 2 : 1;
}

// As much as fits, not ending in half a character.
size_t cut_wide(wchar_t *target, size_t size, std::wstring_view source)
{
    size_t length = std::min(source.size(), size - 1);
    if (length < source.size() && length > 0 && IS_HIGH_SURROGATE(source[length - 1])) --length;
    memcpy(target, source.data(), length * sizeof(wchar_t));
    target[length] = L'\0';
    return length;
}

} // namespace

void *platform_no_handle()
{
    return reinterpret_cast<void *>(~uintptr_t{0});
}

bool platform_has_wide_calls()
{
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    return GetVersionExA(&version) && version.dwPlatformId == VER_PLATFORM_WIN32_NT;
}

// Character by character, as that is where the text may be cut.
int32_t platform_wide_to_ansi(char *target, size_t size, const wchar_t *source)
{
    if (size == 0) return 0;
    size_t length = 0;
    while (*source != L'\0') {
        char bytes[longest_character];
        const int units = units_of(source);
        const int count = WideCharToMultiByte(CP_ACP, 0, source, units, bytes, sizeof(bytes), nullptr, nullptr);
        if (count <= 0 || length + static_cast<size_t>(count) > size - 1) break;
        memcpy(target + length, bytes, static_cast<size_t>(count));
        length += static_cast<size_t>(count);
        source += units;
    }
    target[length] = '\0';
    return static_cast<int32_t>(length);
}

int32_t platform_ansi_to_wide(wchar_t *target, size_t size, const char *source)
{
    if (size == 0) return 0;
    target[0] = L'\0';
    const int needed = MultiByteToWideChar(CP_ACP, 0, source, -1, nullptr, 0);
    if (needed <= 0) return 0;
    const std::unique_ptr<wchar_t[]> whole(new (std::nothrow) wchar_t[static_cast<size_t>(needed)]);
    if (whole == nullptr || MultiByteToWideChar(CP_ACP, 0, source, -1, whole.get(), needed) <= 0) return 0;
    return static_cast<int32_t>(cut_wide(target, size, {whole.get(), static_cast<size_t>(needed) - 1}));
}

int32_t platform_copy_file_w(const wchar_t *from, const wchar_t *to, int32_t fail_if_exists)
{
    return CopyFileW(from, to, fail_if_exists);
}

int32_t platform_copy_file_a(const char *from, const char *to, int32_t fail_if_exists)
{
    return CopyFileA(from, to, fail_if_exists);
}

int32_t platform_create_directory_w(const wchar_t *name)
{
    return CreateDirectoryW(name, nullptr);
}

int32_t platform_create_directory_a(const char *name)
{
    return CreateDirectoryA(name, nullptr);
}

int32_t platform_remove_directory_w(const wchar_t *name)
{
    return RemoveDirectoryW(name);
}

int32_t platform_remove_directory_a(const char *name)
{
    return RemoveDirectoryA(name);
}

int32_t platform_delete_file_w(const wchar_t *name)
{
    return DeleteFileW(name);
}

int32_t platform_delete_file_a(const char *name)
{
    return DeleteFileA(name);
}

int32_t platform_move_file_w(const wchar_t *from, const wchar_t *to)
{
    return MoveFileW(from, to);
}

int32_t platform_move_file_a(const char *from, const char *to)
{
    return MoveFileA(from, to);
}

int32_t platform_set_attributes_w(const wchar_t *name, uint32_t attributes)
{
    return SetFileAttributesW(name, attributes);
}

int32_t platform_set_attributes_a(const char *name, uint32_t attributes)
{
    return SetFileAttributesA(name, attributes);
}

void *platform_create_file_w(const wchar_t *name, uint32_t access, uint32_t share, uint32_t disposition, uint32_t flags)
{
    return CreateFileW(name, access, share, nullptr, disposition, flags, nullptr);
}

void *platform_create_file_a(const char *name, uint32_t access, uint32_t share, uint32_t disposition, uint32_t flags)
{
    return CreateFileA(name, access, share, nullptr, disposition, flags, nullptr);
}

uint32_t platform_extract_icon_w(const wchar_t *file, int32_t index, void **ret_large, void **ret_small, uint32_t count)
{
    return ExtractIconExW(file, index, reinterpret_cast<HICON *>(ret_large), reinterpret_cast<HICON *>(ret_small),
                          count);
}

uint32_t platform_extract_icon_a(const char *file, int32_t index, void **ret_large, void **ret_small, uint32_t count)
{
    return ExtractIconExA(file, index, reinterpret_cast<HICON *>(ret_large), reinterpret_cast<HICON *>(ret_small),
                          count);
}

void *platform_find_first_w(const wchar_t *pattern, FindDataW *ret_data)
{
    WIN32_FIND_DATAW data;
    const HANDLE handle = FindFirstFileW(pattern, &data);
    if (handle != platform_no_handle()) memcpy(ret_data, &data, sizeof(data));
    return handle;
}

void *platform_find_first_a(const char *pattern, FindDataA *ret_data)
{
    WIN32_FIND_DATAA data;
    const HANDLE handle = FindFirstFileA(pattern, &data);
    if (handle != platform_no_handle()) memcpy(ret_data, &data, sizeof(data));
    return handle;
}

int32_t platform_find_next_w(void *handle, FindDataW *ret_data)
{
    WIN32_FIND_DATAW data;
    if (!FindNextFileW(handle, &data)) return 0;
    memcpy(ret_data, &data, sizeof(data));
    return 1;
}

int32_t platform_find_next_a(void *handle, FindDataA *ret_data)
{
    WIN32_FIND_DATAA data;
    if (!FindNextFileA(handle, &data)) return 0;
    memcpy(ret_data, &data, sizeof(data));
    return 1;
}

void platform_find_close(void *handle)
{
    FindClose(handle);
}

void platform_close_handle(void *handle)
{
    CloseHandle(handle);
}
