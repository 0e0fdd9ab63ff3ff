// A file of the host, or standard input, on its way to a medium.
#pragma once

#include <string>
#include <vector>

#include "base/time_record.h"
#include "console/host_file.h"
#include "volume/insert_inner.h"

struct PutSource {
    HostFile file;
    std::vector<uint8_t> bytes; // of what can't be read twice, or doesn't know its size
    InsertSource source;
    TimeRecord date = {};
};

// Opens a file, "-" for standard input. False with error 300, 302, or 211 for more than a volume can hold.
bool open_source(const std::string &path, PutSource *ret_source);
