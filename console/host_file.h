// Files of the host, as the verbs that copy need them.
#pragma once

#include <string>

#include "base/file.h"

// An open file that closes itself.
struct HostFile {
    FileHandle handle = 0; // 0: none

    HostFile() = default;
    ~HostFile();
    HostFile(const HostFile &) = delete;
    HostFile &operator=(const HostFile &) = delete;
};

bool host_file_exists(const char *path); // one that can be read

// Makes a folder with those above it that are missing. Errors set: 312.
bool make_host_folder(const std::string &path);
