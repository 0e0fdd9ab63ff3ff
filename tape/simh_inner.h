// The operations on a tape image below its exported functions. They work at the position of a view, which they move,
// and in the fixed layout at tape->record_number, which the caller has from locate(). Results are those of simh.h.
#pragma once

#include <cstdint>

#include "tape/simh.h"
#include "tape/view.h"

constexpr uint32_t slot_overhead = 16; // bytes of a slot that are no data

inline bool is_fixed(const TapeImage *tape)
{
    return tape->format == SIMH_FIXED;
}

inline uint64_t slot_bytes(const TapeImage *tape)
{
    return uint64_t{tape->blocksize} + slot_overhead;
}

inline uint64_t slot_start(const TapeImage *tape, uint32_t slot)
{
    return slot * slot_bytes(tape);
}

void reset_tape(TapeImage *tape);

// In the fixed layout: the record number of the present position, unless a record is in progress.
void locate(TapeImage *tape, const TapeView *view);

inline int32_t short_tape_read(int32_t count)
{
    return count < 0 ? SIMH_ERROR : SIMH_END_OF_FILE;
}

// The word at the position, which moves behind it. 0, or SIMH_END_OF_FILE when it isn't all there, or SIMH_ERROR.
// Nearly always it stands in the buffer, and the passes of a test spend their time here.
inline int32_t take_word(TapeView *view, uint32_t *ret_word)
{
    const int32_t count = view_take_word(view, ret_word);
    return count == word_bytes ? 0 : short_tape_read(count);
}

// Passes a record that the buffer holds whole, the same length at both ends, and whole gap words ahead of it; not on a
// tape whose gaps have a limit. False, with nothing done, where anything else is met. Most of a tape is passed this
// way, as move_forward and the look at the last word would do it.
inline bool pass_held_record(const TapeImage *tape, TapeView *view, uint32_t *ret_length)
{
    if (tape->unit_size != 0) return false;
    uint64_t at = view->position;
    uint32_t length = gap_word;
    while (length == gap_word) {
        const uint8_t *first = held_word(view, at);
        if (first == nullptr) return false;
        length = word_at(first);
        at += word_bytes;
    }
    if (length == mark_word || length > largest_record) return false;
    at += padded(length);
    const uint8_t *last = held_word(view, at);
    if (last == nullptr || word_at(last) != length) return false;
    view->position = at + word_bytes;
    *ret_length = length;
    return true;
}

// The same going back, as move_reverse does it: only the last word of the record is looked at.
inline bool pass_held_record_back(const TapeImage *tape, TapeView *view)
{
    if (tape->unit_size != 0) return false;
    uint64_t at = view->position;
    uint32_t length = gap_word;
    while (length == gap_word) {
        const uint8_t *last = at < word_bytes ? nullptr : held_word(view, at - word_bytes);
        if (last == nullptr) return false;
        length = word_at(last);
        at -= word_bytes;
    }
    const uint64_t distance = padded(length) + word_bytes;
    if (length == mark_word || length > largest_record || at < distance) return false;
    view->position = at - distance;
    return true;
}

// ---- moves, in moves.cpp -------------------------------------------------------------------------------

int32_t move_forward(TapeImage *tape, TapeView *view, bool keep_address);
int32_t move_reverse(TapeImage *tape, TapeView *view);
int32_t space_records(TapeImage *tape, TapeView *view, int32_t count);
int32_t space_files(TapeImage *tape, TapeView *view, int32_t count);
int32_t set_slot(TapeImage *tape, TapeView *view, uint32_t slot);
int32_t set_position(TapeImage *tape, TapeView *view, uint32_t new_record);

// ---- reading, in reading.cpp ---------------------------------------------------------------------------

struct ReadOrder {
    uint8_t *buffer;
    uint32_t most_bytes; // 0 with the first part: no limit
    int32_t part;
    bool forward;
};

int32_t position_tape(TapeImage *tape, TapeView *view, bool forward);
int32_t read_record(TapeImage *tape, TapeView *view, const ReadOrder &order, int32_t *ret_eor);

// Ends any record in progress, and settles the view behind one that was written.
int32_t end_transfer(TapeImage *tape, TapeView *view);
void rewind_tape(TapeImage *tape, TapeView *view);

// ---- writing, in writing.cpp and erase_gap.cpp ---------------------------------------------------------
// After a failure the view holds anything; the caller puts it and the record back. What is gathered may still fail.

bool write_record(TapeImage *tape, TapeView *view, const void *buffer, uint32_t size, int32_t part);
bool write_tapemark(TapeImage *tape, TapeView *view);
bool write_eom(TapeImage *tape, TapeView *view);
bool write_slots(TapeImage *tape, TapeView *view, uint32_t count, bool do_format);
bool write_erase_gap(TapeView *view, uint64_t size);
