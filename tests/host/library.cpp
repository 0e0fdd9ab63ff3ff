// All that differs between the systems in this program.
#include "tests/host/library.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#else
#include <dlfcn.h>

#include <cerrno>
#endif

#include <cstdio>
#include <stdexcept>

namespace host
{

namespace
{

#ifdef _WIN32

void *open_library(const std::filesystem::path &path)
{
    return reinterpret_cast<void *>(LoadLibraryW(path.c_str()));
}

void *find_symbol(void *library, const char *name)
{
    return reinterpret_cast<void *>(GetProcAddress(reinterpret_cast<HMODULE>(library), name));
}

std::string reason()
{
    return "error " + std::to_string(GetLastError());
}

#else

void *open_library(const std::filesystem::path &path)
{
    return dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
}

void *find_symbol(void *library, const char *name)
{
    return dlsym(library, name);
}

std::string reason()
{
    const char *text = dlerror();
    return text == nullptr ? "unknown" : text;
}

#endif

template <typename Function> void find(const Library &library, const char *name, Function *ret_function)
{
    *ret_function = reinterpret_cast<Function>(find_symbol(library.handle, name));
    if (*ret_function == nullptr) throw std::runtime_error(std::string("the plug-in has no ") + name);
}

}

Library load_library(const std::filesystem::path &path)
{
    Library library;
    library.handle = open_library(path);
    if (library.handle == nullptr) throw std::runtime_error("can't load the plug-in: " + reason());
    find(library, "FsGetDefRootName", &library.FsGetDefRootName);
    find(library, "FsInit", &library.FsInit);
    find(library, "FsFindFirst", &library.FsFindFirst);
    find(library, "FsFindNext", &library.FsFindNext);
    find(library, "FsFindClose", &library.FsFindClose);
    find(library, "FsGetFile", &library.FsGetFile);
    find(library, "FsPutFile", &library.FsPutFile);
    find(library, "FsRenMovFile", &library.FsRenMovFile);
    find(library, "FsDeleteFile", &library.FsDeleteFile);
    find(library, "FsSetAttr", &library.FsSetAttr);
    find(library, "FsSetTime", &library.FsSetTime);
    find(library, "FsStatusInfo", &library.FsStatusInfo);
    find(library, "FsExecuteFile", &library.FsExecuteFile);
    return library;
}

#ifdef _WIN32

void unload_library(Library *library)
{
    FreeLibrary(reinterpret_cast<HMODULE>(library->handle));
    *library = {};
}

uint32_t last_error()
{
    return GetLastError();
}

void forget_last_error()
{
    SetLastError(0);
}

size_t count_open_files(const std::filesystem::path &folder)
{
    size_t count = 0;
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        if (!entry.is_regular_file()) continue;
        HANDLE alone = CreateFileW(entry.path().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        if (alone == INVALID_HANDLE_VALUE) {
            count++;
        } else {
            CloseHandle(alone);
        }
    }
    return count;
}

void prepare_output()
{
    _setmode(_fileno(stdout), _O_BINARY);
}

#else

void unload_library(Library *library)
{
    dlclose(library->handle);
    *library = {};
}

uint32_t last_error()
{
    return static_cast<uint32_t>(errno);
}

void forget_last_error()
{
    errno = 0;
}

size_t count_open_files(const std::filesystem::path &)
{
    size_t count = 0;
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        if (entry.is_symlink()) count++;
    }
    return count;
}

void prepare_output() {}

#endif

}
