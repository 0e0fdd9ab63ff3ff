// The records of a tape as blocks of one size.
#pragma once

#include <cstdint>

#include "tape/percent.h"
#include "tape/simh.h"
#include "tape/view.h"

struct Packing;

// What becomes of a block, at most of the block size, and of a tape mark. False: the conversion fails.
struct PackingTarget {
    bool (*take_block)(Packing *packing, const uint8_t *bytes, uint32_t count);
    bool (*take_mark)(Packing *packing);
    const char *complaint; // about a source that is no tape
};

struct Packing {
    const PackingTarget *target;
    TapeImage *from;
    TapeImage *to; // null: a plain file
    TapeView *source;
    TapeView *sink;
    uint8_t *block;      // where bytes wait for more
    uint32_t block_size; // bytes
    bool joins_records;
    uint32_t fill = 0; // bytes that wait
    bool mark_pending = false;
    bool ended_with_mark = false; // the last thing that was met
};

// The bytes of a block's buffer: no more than the source can fill, and one for the zero byte of an odd record.
uint64_t block_room(const TapeView *source, uint32_t block_size);

// Takes all records of the source.
bool pack_records(Packing *packing);
