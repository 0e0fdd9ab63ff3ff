// The steps of which the file operations are made. Each sets the error that belongs to it when it fails; none is
// for the void handle. Positions have 64 bits here, so that no sum of them wraps.
#pragma once

#include <cstdint>

#include "base/file.h"

inline unsigned long log_handle(FileHandle file)
{
    return static_cast<unsigned long>(file);
}

inline unsigned long log_number(uint32_t number)
{
    return number;
}

bool seek_to(FileHandle file, uint64_t position);               // error 301
bool seek_to_end(FileHandle file, uint64_t *ret_end);           // error 301
bool present_position(FileHandle file, uint64_t *ret_position); // error 301

// At most what an int32_t counts. Bytes, fewer at the end of the file or when the device is full; -1 for an error.
int32_t read_here(FileHandle file, void *buffer, uint32_t bytes);                            // error 302
int32_t write_here(FileHandle file, const void *buffer, uint32_t bytes);                     // error 303
int32_t write_there(FileHandle file, uint64_t position, const void *buffer, uint32_t bytes); // error 303

// All of it or failure.
bool read_whole(FileHandle file, void *buffer, uint32_t bytes);        // error 302
bool write_whole(FileHandle file, const void *buffer, uint32_t bytes); // error 303
