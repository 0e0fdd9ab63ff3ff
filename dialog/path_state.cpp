// Looks at a path of the host.
#include "dialog/path_state.h"

#include <windows.h>

PathState path_state(const char *path)
{
    const DWORD attributes = GetFileAttributesA(path);
    if (attributes == INVALID_FILE_ATTRIBUTES) return PathState::missing;
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? PathState::folder : PathState::file;
}
