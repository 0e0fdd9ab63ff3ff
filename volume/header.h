// The headers that may stand ahead of a file's bytes on the host and keep what its directory entry said.
#pragma once

#include <cstdint>

#include "volume/media.h"

constexpr uint32_t most_header_bytes = 512;

struct FileHeader {
    const char *name;                                                            // as users call it
    uint32_t bytes;                                                              // ahead of the file's own
    void (*compose)(const FileInfo *info, uint32_t records, uint8_t *ret_bytes); // records of 256 bytes; zeroed before
    // Takes type, size, date and lif_impl out of a header that is there whole. False: it is none.
    bool (*parse)(const uint8_t *bytes, FileInfo *info);
    bool checked = false;   // one that isn't there is worth a word
    uint32_t taken_off = 0; // bytes that the size loses when the header was taken
};

// The row for md->use_file_headers; null for none, and for numbers that have none.
const FileHeader *file_header(uint32_t form);

// The number of a form by its name; -1 for no such form. "none" is 0.
int32_t header_form(const char *name);
