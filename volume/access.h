// How a medium is reached: one row for an image file, a floppy drive and a GPIB drive, indexed by md->access.
#pragma once

#include <array>
#include <cstdint>

#include "volume/media.h"
#include "volume/state.h"

struct OpenOrder {                 // what image_open was asked for
    const MediaDescriptor *format; // template, may be null
    uint16_t flags;                // OPEN_...
    uint32_t address;              // GPIB
    uint32_t unit;
    uint32_t volume;
    uint32_t drive_num; // floppy
};

struct DeviceGeometry { // what a drive says of itself
    uint32_t cylinders; // a surface
    uint32_t heads;
    uint32_t sectors; // records a track
    uint32_t interleave;
};

// The records of one file in their order, on their way out of a medium or onto it. Made by open_stream.
struct MediumStream {
    MediaDescriptor *md = nullptr;
    uint32_t first = 0;   // record
    uint32_t records = 0; // in all
    bool writing = false;
    uint32_t next = 0;    // index of the record that the next transfer begins with
    bool alone = false;   // nobody else gets to the medium before the stream is closed
    bool unkept = false;  // what is read isn't worth keeping for others
    bool placed = false;  // image: the file stands where the next transfer begins
    uint32_t missing = 0; // image: records behind its end that were handed over as zeros
};

struct MediumAccess {
    const char *name;
    int32_t (*open)(MediaDescriptor *md, const OpenOrder &order); // 0, or -1 with the error set
    int32_t (*read_record)(MediaDescriptor *md, uint32_t record,
                           uint8_t *buffer) = nullptr; // 0 or -1; short reads are 0-filled
    int32_t (*write_record)(MediaDescriptor *md, uint32_t record, const uint8_t *buffer) = nullptr; // 0 or -1
    int32_t (*open_stream)(MediumStream *stream) = nullptr; // 0 or -1; absent: nothing is to be done
    // Reads at most so many records, at least one. How many, or -1 with the error set, nothing read.
    int32_t (*read_stream)(MediumStream *stream, uint8_t *buffer, uint32_t records) = nullptr;
    // Writes so many records; ends: the stream's last one is among them. How many were written: fewer, or -1, is a
    // failure, with the error set.
    int32_t (*write_stream)(MediumStream *stream, const uint8_t *buffer, uint32_t records, bool ends) = nullptr;
    int32_t (*close_stream)(MediumStream *stream) = nullptr;     // 0 or -1; absent: nothing is to be done
    uint64_t (*end_record)(MediaDescriptor *md) = nullptr;       // first record wholly behind the end of the medium
    uint64_t (*hardware_records)(MediaDescriptor *md) = nullptr; // what the drive holds; absent: no limit
    int32_t (*make_blank)(MediaDescriptor *md) = nullptr;        // what the medium's format command does; absent: none
    void (*refresh)(MediaDescriptor *md) = nullptr;              // forget what was read ahead; absent: nothing is
    void (*close)(MediaDescriptor *md) = nullptr;
    DeviceGeometry (*device_geometry)(const MediaDescriptor *md) = nullptr; // absent: the medium has none of its own
    bool extents_follow_location = false;  // all pieces of a file are read from where the first one begins
    bool clears_rest_of_directory = false; // a rewrite goes on behind the end mark
};

// The row of an open medium; null, with error 202, when md->access is none.
const MediumAccess *medium_access(const MediaDescriptor *md);

int32_t read_record(MediaDescriptor *md, uint32_t record, uint8_t *buffer); // 256 bytes, cleared first
int32_t write_record(MediaDescriptor *md, uint32_t record, const uint8_t *buffer);
uint64_t end_record(MediaDescriptor *md); // 0 when that can't be known

// Opens a stream over `records` records from `first` on. 0, or -1 with the error set and nothing to be closed.
int32_t open_stream(MediumStream *ret_stream, MediaDescriptor *md, uint32_t first, uint32_t records, bool writing);
// At most so many records into the buffer, 256 bytes each. How many, at least one; 0 when the stream is at its end; -1.
int32_t read_stream(MediumStream *stream, uint8_t *buffer, uint32_t records);
// So many records from the buffer. How many were written: fewer is a failure, with the error set.
uint32_t write_stream(MediumStream *stream, const uint8_t *buffer, uint32_t records);
int32_t close_stream(MediumStream *stream); // 0 or -1

void refresh_medium(MediaDescriptor *md); // before a table is read anew
