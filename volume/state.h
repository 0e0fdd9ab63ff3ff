// What the engine keeps of an open medium for itself: the records read ahead, and what reading the tables met.
#pragma once

#include <cstdint>

#include "platform/platform.h"
#include "volume/media.h"

constexpr uint32_t window_bytes = 64 * 1024;

struct MediumAccess;
struct TapeData;

struct MediaState {
    const MediumAccess *access; // the row in force; null: that of md->access. A test may stand its own here
    uint64_t window_start;      // position in bytes
    uint32_t window_length;     // bytes held, 0: none
    uint64_t window_generation; // file_generation when it was read, all ones: nothing is known
    uint64_t bytes;             // true size of the medium, as of window_generation
    FileIdentity identity;      // of the image file, once it was asked for
    bool identity_known;
    TapeData *tape_data;      // where the data of a tape image are the medium; owned by its row
    uint32_t refused_entries; // entries that reading the directory has dropped
    int32_t table_result;     // of the last get_file_table for the top level
    bool only_searched;       // that call looked for a path: the list is empty, whatever the directory holds
    uint8_t window[window_bytes];
};
