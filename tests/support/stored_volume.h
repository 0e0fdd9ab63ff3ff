// Reads LIF volumes, System 45 disks and DC100 tapes byte by byte from their layout, without the engine: what a test
// finds on an image after a change.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/free_disc.h"
#include "tests/support/volume_builder.h"

namespace tests
{

struct StoredFile {
    std::string name{}; // without the padding; of a purged one what is left of it
    uint16_t type = 0;  // as stored, without bits of the location
    uint32_t start = 0; // record
    uint32_t records = 0;
    uint32_t count = 0; // logical records; LIF: those of 256 bytes
    uint32_t words = 0; // each
    bool purged = false;
    bool is_protected = false;
    Bytes rest{}; // LIF: date and implementation bytes

    bool operator==(const StoredFile &) const = default;
};

struct StoredVolume {
    std::vector<StoredFile> files{};
    Runs runs{};              // disk: the availability table
    bool spares_agree = true; // tape: the spare directory; disk: that and the spare availability table
    uint32_t slots = 0;       // of the directory
    uint32_t first_file_record = 0;
    uint32_t end = 0; // first record behind the last one of the volume
};

enum class Layout : uint8_t { lif, disk, tape };

StoredVolume stored_lif(const Bytes &image);
StoredVolume stored_disk(const Bytes &image);
StoredVolume stored_tape(const Bytes &image);
StoredVolume stored(Layout layout, const Bytes &image);

Bytes content_of(const Bytes &image, const StoredFile &file); // its records, zeros behind the end of the image
const StoredFile *file_named(const StoredVolume &volume, const std::string &name); // null for none; purged ones too
std::vector<std::string> names_of(const StoredVolume &volume);                     // of those that aren't purged

uint16_t word_at(const Bytes &image, size_t position);
uint32_t dword_at(const Bytes &image, size_t position);

}
