// What the sources of this system share. A function that fails leaves the reason in errno.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <ctime>

#include "platform/platform.h"

int64_t counts_of(const timespec &time); // units of 100 ns since 1601; -1 for none
bool failed(int code);                   // makes code the last error; always false

// What has been made is taken away again; the last error stays. Always false.
bool fail_without(const char *path, int (*take_away)(const char *));

int descriptor_of(PlatformFile file); // -1 for no file and for the void handle
PlatformFile file_of(int descriptor);

// open() with the handle kept from other programs, never one of the three standard descriptors; or -1.
int open_descriptor(const char *path, int flags, mode_t permissions);
// The same for a file to be read or written; it waits for nobody, and a directory is refused.
int open_file(const char *path, int flags);
void close_keeping_error(int descriptor);

bool copy_descriptor(int from, int to); // from the present positions, with mode and times; `to` reaches the medium

// File times in units of 100 ns since 1601.
int64_t count_of_time(const timespec &time);
timespec time_of_count(int64_t count);
