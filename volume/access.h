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

struct MediumAccess {
    const char *name;
    int32_t (*open)(MediaDescriptor *md, const OpenOrder &order); // 0, or -1 with the error set
    int32_t (*read_record)(MediaDescriptor *md, uint32_t record,
                           uint8_t *buffer) = nullptr; // 0 or -1; short reads are 0-filled
    int32_t (*write_record)(MediaDescriptor *md, uint32_t record, const uint8_t *buffer) = nullptr; // 0 or -1
    uint64_t (*end_record)(MediaDescriptor *md) = nullptr; // first record wholly behind the end of the medium
    void (*refresh)(MediaDescriptor *md) = nullptr;        // forget what was read ahead; absent: nothing is
    void (*close)(MediaDescriptor *md) = nullptr;
    DeviceGeometry (*device_geometry)(const MediaDescriptor *md) = nullptr; // absent: the medium has none of its own
    bool clears_rest_of_directory = false;                                  // a rewrite goes on behind the end mark
};

// The row of an open medium; null, with error 202, when md->access is none.
const MediumAccess *medium_access(const MediaDescriptor *md);

int32_t read_record(MediaDescriptor *md, uint32_t record, uint8_t *buffer); // 256 bytes, cleared first
int32_t write_record(MediaDescriptor *md, uint32_t record, const uint8_t *buffer);
uint64_t end_record(MediaDescriptor *md); // 0 when that can't be known
void refresh_medium(MediaDescriptor *md); // before a table is read anew
