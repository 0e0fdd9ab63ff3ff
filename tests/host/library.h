// The plug-in as a file manager has it: a library loaded by its path, thirteen functions found by their names, and the
// system's last error, through which the plug-in says more than its results do.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "plugin/plugin.h"

namespace host
{

struct Library {
    void *handle = nullptr;
    decltype(&::FsGetDefRootName) FsGetDefRootName = nullptr;
    decltype(&::FsInit) FsInit = nullptr;
    decltype(&::FsFindFirst) FsFindFirst = nullptr;
    decltype(&::FsFindNext) FsFindNext = nullptr;
    decltype(&::FsFindClose) FsFindClose = nullptr;
    decltype(&::FsGetFile) FsGetFile = nullptr;
    decltype(&::FsPutFile) FsPutFile = nullptr;
    decltype(&::FsRenMovFile) FsRenMovFile = nullptr;
    decltype(&::FsDeleteFile) FsDeleteFile = nullptr;
    decltype(&::FsSetAttr) FsSetAttr = nullptr;
    decltype(&::FsSetTime) FsSetTime = nullptr;
    decltype(&::FsStatusInfo) FsStatusInfo = nullptr;
    decltype(&::FsExecuteFile) FsExecuteFile = nullptr;
};

Library load_library(const std::filesystem::path &path); // throws std::runtime_error
void unload_library(Library *library);

uint32_t last_error();
void forget_last_error();

// How many files this process has open; where the system doesn't tell, how many files of the folder somebody has open.
size_t count_open_files(const std::filesystem::path &folder);

void prepare_output(); // line ends stay as they are written

}
