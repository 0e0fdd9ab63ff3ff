// The file layer below its exported functions: what the engine needs beyond 32-bit sizes, and the row of
// system calls that a test may replace to make them fail.
#pragma once

#include <cstdint>

#include "platform/platform.h"

struct FileCalls {
    bool (*open)(PlatformFile *ret_file, const char *path, bool reading, bool writing, OpenMode mode,
                 bool writethrough) = platform_open;
    bool (*open_with_facts)(PlatformFile *ret_file, const char *path, FileFacts *ret_facts) = platform_open_with_facts;
    void (*close)(PlatformFile file) = platform_close;
    int64_t (*seek)(PlatformFile file, int64_t offset, SeekFrom from) = platform_seek;
    int64_t (*read)(PlatformFile file, void *buffer, uint32_t bytes) = platform_read;
    int64_t (*write)(PlatformFile file, const void *buffer, uint32_t bytes) = platform_write;
    int64_t (*write_at)(PlatformFile file, const void *buffer, uint32_t bytes, uint64_t position) = platform_write_at;
    bool (*set_end)(PlatformFile file) = platform_set_end;
    bool (*sync)(PlatformFile file) = platform_sync;
    bool (*size)(PlatformFile file, uint64_t *ret_bytes) = platform_size;
    bool (*open_alone)(PlatformFile *ret_file, const char *path) = platform_open_alone;
    bool (*facts)(PlatformFile file, FileFacts *ret_facts) = platform_facts;
    bool (*set_times)(PlatformFile file, int64_t time) = platform_set_times;
};

extern const FileCalls *file_calls; // never null; what every file_* function uses

// Counts up with each write, cut, paste or change of size that this process makes through the file layer, so
// that whoever keeps bytes of a file knows when to read them again.
extern uint64_t file_generation;

// A file of which nobody keeps bytes: what is written to it doesn't count. 0: there is none.
extern uint64_t unkept_file;

bool file_size_in_bytes(uint64_t file, uint64_t *ret_bytes); // the whole 64-bit size; sets no error

// Opens a file for reading, with what is known of it. False, with error 300 and the system's words.
bool file_open_with_facts(uint64_t *ret_file, const char *path, FileFacts *ret_facts);

// Bytes from a position on; where the file stands is of no account, and afterwards unknown. Bytes written, fewer when
// the device is full; -1 with error 303.
int32_t file_write_at(uint64_t file, uint64_t position, const void *buffer, uint32_t num_bytes);

// Cuts a file at so many bytes, or fills it up to them with zeros. Where it stands afterwards is unknown. Errors 301,
// 309.
bool file_resize(uint64_t file, uint64_t bytes);

// Makes a file for writing where there is none of that name. False, with error 300 and the system's words.
bool file_open_new(uint64_t *ret_file, const char *path);

struct TimeRecord;
bool file_time_of(const FileFacts &facts, TimeRecord *ret_time); // file_get_time from what is known; false for no date
bool file_set_open_time(uint64_t file, const TimeRecord *time);  // file_set_time for an open file; error 311
