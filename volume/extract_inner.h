// Copying out, below its exported function: for the faces, which want to know more than the result says.
#pragma once

#include <cstdint>
#include <string>

#include "base/file.h"
#include "base/log.h"
#include "volume/extract.h"
#include "volume/media.h"

struct ExtractOrder {
    const char *destination = nullptr;   // folder of the host; may be null
    const char *to_file = nullptr;       // name on the host as it stands; null: made from the entry's
    char *ret_filename = nullptr;        // VISIBLE_NAME_SIZE bytes, may be null: the name that was made
    uint16_t flags = 0;                  // EXTRACT_...
    ProgressCallback progress = nullptr; // may be null
};

struct Extraction {
    int32_t result = -1;  // as that of image_extract_file
    bool whole = false;   // nothing was left out, nobody stopped it: the original may go
    bool stopped = false; // progress asked for it
};

// As image_extract_file.
Extraction extract_file(MediaDescriptor *md, const FileInfo *info, const ExtractOrder &order);

// The same into an open file of the host, from its present position on; it stays open, its time isn't set. Flags that
// are about a file's name mean nothing here. name is for messages.
Extraction extract_to_handle(MediaDescriptor *md, const FileInfo *info, FileHandle file, const char *name,
                             uint16_t flags, ProgressCallback progress);

// The path that extract_file would write to.
std::string extraction_path(const MediaDescriptor *md, const FileInfo *info, const ExtractOrder &order);

// A name for the host from one in the HP character set: nothing in it leads to another folder or to a device.
std::string safe_host_name(const char *hp_name);
