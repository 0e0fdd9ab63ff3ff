// Builds volumes of the System 45 family byte by byte from their layout, without the engine: disks, disks of the 9825,
// DC100 tapes.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/free_disc.h"
#include "tests/support/medium.h"
#include "tests/support/volume_builder.h"
#include "volume/state.h"

namespace tests
{

struct DiskEntry {
    std::string name;                // up to 6 bytes, NUL-padded
    uint16_t type = 0xC800;          // PROG of the 9845; bits of the location are filled in
    std::optional<uint32_t> start{}; // record; none: behind the entry before, or at the begin of the file area
    uint16_t records = 1;            // logical ones
    uint16_t words = 128;            // each
    bool is_protected = false;
    uint8_t fill = 0; // of the file's own records
};

struct DiskVolume {
    uint16_t magic = 0x0500;
    uint16_t records_per_track = 30;
    uint16_t tracks = 20;
    uint16_t spare_distance = 1; // tracks
    uint16_t directory_start = 1;
    uint16_t availability_start = 23;
    uint16_t availability_end = 29;
    uint16_t system_tracks = 2;
    uint16_t data_tracks = 18;
    uint16_t interleave = 7;
    bool long_runs = false; // entries of 8 bytes in the availability table
    std::string label{};
    std::optional<uint16_t> label_length{}; // none: that of the label
    std::vector<DiskEntry> entries{};
    std::optional<Runs> runs{};        // none: what is left behind the last file
    bool directory_end_mark = true;    // where a slot is left
    std::optional<uint32_t> records{}; // of the image; none: what the geometry says
};

struct TapeEntry {
    std::string name;
    uint8_t type = 0xC8; // PROG; bits of the location are filled in
    std::optional<uint32_t> start{};
    uint16_t records = 1;
    uint16_t words = 128;
    uint8_t fill = 0;
};

struct TapeVolume {
    std::vector<TapeEntry> entries{};
    bool end_mark = true;
    uint32_t records = 852; // of the image
};

std::array<uint8_t, 16> disk45_entry_bytes(const DiskEntry &entry); // start 0 where it isn't given
std::array<uint8_t, 12> tape45_entry_bytes(const TapeEntry &entry);

Bytes disk45_image(const DiskVolume &volume); // with spare tables equal to the main ones
Bytes tape45_image(const TapeVolume &volume);

// ALPHA, BETA and GAMMA, which is protected and has records of 512 bytes.
DiskVolume three_disk_files();
TapeVolume three_tape_files();

// ALPHA at 63, BETA at 70, GAMMA (protected, of 512-byte records) at 90, with holes between; 4 tracks of 30 records.
DiskVolume disk_with_holes();

// The disk of a 9825: magic 0, no end mark in the availability table.
DiskVolume disk_of_9825(uint16_t tracks = 77);

// n files of one record, F00000 onward, one behind the other; the directory must have room for them.
std::vector<DiskEntry> numbered_files(uint32_t n);

Bytes records_of(const Bytes &image, uint32_t first, uint32_t count);

// ---- of an open volume
FileInfo *last_entry(const MediaDescriptor *md);
void append_file(MediaDescriptor *md, const std::string &name, uint32_t location); // a program of ten records
int32_t update_all_tables(MediaDescriptor *md); // main ones, then spare ones; -1 when one of them fails

// A drive with an image in memory and the geometry of an 8 inch disc: 77 cylinders, 2 heads, 30 records a track,
// interleave 7. A test opens it by itself.
class Drive45
{
  public:
    explicit Drive45(Bytes content, uint32_t access = ACCESS_GPIB);
    ~Drive45(); // releases the lists that the engine hung on the record
    Drive45(const Drive45 &) = delete;
    Drive45 &operator=(const Drive45 &) = delete;

    Bytes image;
    std::vector<uint32_t> written; // numbers of the records, in order
    std::unique_ptr<MediaState> state;
    MediaDescriptor md{};
};

}
