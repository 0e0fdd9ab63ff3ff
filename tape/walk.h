// What stands on a tape, one thing after the other; gaps are passed.
#pragma once

#include <cstdint>

#include "tape/percent.h"
#include "tape/simh.h"
#include "tape/view.h"

enum class TapeItemKind : uint8_t { record, tape_mark, end_of_medium, end_of_file, fault };

struct TapeItem {
    TapeItemKind kind;
    uint64_t position;  // of its first word
    uint32_t length;    // bytes of a record's data
    const char *reason; // of a fault
};

struct TapeWalk {
    TapeImage tape = {};
    TapeView *view = nullptr;
    Percent percent = {};
};

// Begins at the begin of the file. The walk has tape_view to itself until its last item.
void begin_walk(TapeWalk *walk, FileHandle file);

// The last three kinds are the last item. A record has the same length at both ends. A fault has error 301 or 302 set
// where the file can't be read, error 101 where tape_progress, which is told of the walk, stops it, and none otherwise.
TapeItem next_item(TapeWalk *walk);
