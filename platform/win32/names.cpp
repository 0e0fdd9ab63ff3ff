// Files by their names: deleting, moving, folders, temporary files, the program's own file.
#include "platform/platform.h"
#include "platform/win32/inner.h"

namespace
{

bool failed(DWORD code)
{
    SetLastError(code);
    return false;
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
