// Files by their names: deleting, moving, folders, temporary files, the program's own file.
#include <algorithm>
#include <cctype>
#include <iterator>
#include <string>
#include <string_view>

#include "platform/platform.h"
#include "platform/win32/inner.h"

namespace
{

constexpr std::string_view long_name_mark = "\\\\?\\";
constexpr DWORD longest_path = 0x8000;

bool failed(DWORD code)
{
    SetLastError(code);
    return false;
}

// With its drive, without which some systems replace no file.
bool full_path(const char *path, std::string *ret_path)
{
    ret_path->resize(longest_path);
    const DWORD length = GetFullPathNameA(path, longest_path, ret_path->data(), nullptr);
    if (length == 0) return false;
    if (length >= longest_path) return failed(ERROR_BUFFER_OVERFLOW);
    ret_path->resize(length);
    return true;
}

} // namespace

bool platform_delete(const char *path)
{
    return DeleteFileA(path);
}

bool platform_move(const char *from, const char *to)
{
    return MoveFileExA(from, to, MOVEFILE_COPY_ALLOWED | MOVEFILE_WRITE_THROUGH);
}

bool platform_replace(const char *from, const char *to)
{
    std::string full_from;
    std::string full_to;
    return full_path(from, &full_from) && full_path(to, &full_to) &&
           ReplaceFileA(full_to.c_str(), full_from.c_str(), nullptr, 0, nullptr, nullptr);
}

bool platform_real_path(const char *path, char *ret_path, size_t size)
{
    const HANDLE file = CreateFileA(path, 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    std::string real(longest_path, '\0');
    const DWORD length = GetFinalPathNameByHandleA(file, real.data(), longest_path, VOLUME_NAME_DOS);
    CloseHandle(file);
    if (length == 0) return false;
    if (length >= longest_path) return failed(ERROR_BUFFER_OVERFLOW);
    real.resize(length);
    // What others call C:\... has a mark in front; a share keeps the name that it was given.
    const bool is_drive = real.starts_with(long_name_mark) && real.find(':') == long_name_mark.size() + 1;
    const std::string result = is_drive ? real.substr(long_name_mark.size()) : std::string(path);
    if (result.size() >= size) return failed(ERROR_BUFFER_OVERFLOW);
    result.copy(ret_path, result.size());
    ret_path[result.size()] = '\0';
    return true;
}

bool platform_create_directory(const char *path)
{
    return CreateDirectoryA(path, nullptr);
}

bool platform_temporary_file(char *ret_path, size_t size)
{
    char folder[MAX_PATH + 1];
    if (size < MAX_PATH) return failed(ERROR_INSUFFICIENT_BUFFER);
    const DWORD length = GetTempPathA(MAX_PATH, folder);
    if (length == 0) return false;
    if (length > MAX_PATH) return failed(ERROR_BUFFER_OVERFLOW);
    return GetTempFileNameA(folder, "TRV$$", 0, ret_path) != 0;
}

bool platform_program_path(char *ret_path, size_t size)
{
    const DWORD length = GetModuleFileNameA(nullptr, ret_path, static_cast<DWORD>(size));
    if (length == 0) return false;
    return length < size || failed(ERROR_INSUFFICIENT_BUFFER);
}

bool platform_is_separator(char character)
{
    return character == '\\' || character == '/';
}

bool platform_is_directory(const char *path)
{
    const DWORD attributes = GetFileAttributesA(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool platform_is_plain_file(const char *path)
{
    constexpr DWORD others = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE | FILE_ATTRIBUTE_REPARSE_POINT;
    const DWORD attributes = GetFileAttributesA(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & others) == 0;
}

// The names of devices count with any extension; the system drops dots and blanks at a name's end.
bool platform_is_reserved_name(const char *name)
{
    constexpr std::string_view devices[] = {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};
    constexpr std::string_view numbered[] = {"COM", "LPT"};
    const std::string_view text = name;
    if (text.empty() || text.back() == '.' || text.back() == ' ') return true;
    std::string stem(text.substr(0, text.find('.')));
    while (!stem.empty() && stem.back() == ' ') stem.pop_back();
    for (char &character : stem) character = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
    if (std::find(std::begin(devices), std::end(devices), stem) != std::end(devices)) return true;
    if (stem.size() != 4 || stem[3] < '0' || stem[3] > '9') return false;
    return std::find(std::begin(numbered), std::end(numbered), stem.substr(0, 3)) != std::end(numbered);
}
