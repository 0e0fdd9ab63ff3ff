// The data of all records of a tape as one stream of bytes, in which any place is found.
#pragma once

#include <cstdint>

#include "base/file.h"

constexpr uint32_t tape_data_step = 64 * 1024;

struct TapePlace {
    uint64_t before;   // bytes of data ahead of the record
    uint64_t position; // of the record in the file
};

struct TapeData {
    uint64_t bytes;    // in all
    TapePlace *places; // of the record that holds the first byte of each step; owned
};

// Walks over the whole tape, or to its first fault. 1; 0 when it has no data up to there; -1 with error 105, 301 or
// 302. After 1 the caller gives places to my_free.
int32_t find_tape_data(TapeData *ret_data, FileHandle file);

// At most so many bytes from a place on. How many there are, or -1 with error 302.
int32_t read_tape_data(const TapeData *data, FileHandle file, uint64_t at, uint8_t *bytes, uint32_t count);
