// Moves over a tape: what is this word, can what it announces be taken, what comes next. Both walks add up the gap that
// they pass, for the runaway of a tape that is only gap.
#include <algorithm>

#include "base/error.h"
#include "base/log.h"
#include "tape/simh_inner.h"
#include "tape/words.h"

namespace
{

struct Gap {
    uint64_t passed; // bytes
    uint64_t limit;  // 0: none

    bool runs_away(uint32_t bytes)
    {
        passed += bytes;
        return limit != 0 && limit <= passed;
    }
};

Gap no_gap_yet(const TapeImage *tape)
{
    return {0, uint64_t{tape->unit_size} * tape->runaway_limit};
}

// The second half of the gap word behind a half gap; what it holds isn't looked at.
int32_t take_half_gap(TapeView *view)
{
    uint8_t bytes[half_gap_bytes];
    const int32_t count = view_look(view, view->position, bytes, half_gap_bytes);
    if (count > 0) view->position += static_cast<uint32_t>(count);
    view->uneven = true;
    return count == half_gap_bytes ? 0 : short_tape_read(count);
}

int32_t advance(TapeImage *tape, TapeView *view)
{
    Gap gap = no_gap_yet(tape);
    for (;;) {
        uint32_t word = 0;
        int32_t missing = take_word(view, &word);
        if (missing != 0) return missing;
        switch (classify(word)) {
        case TapeWord::gap:
            if (gap.runs_away(word_bytes)) return SIMH_RUNAWAY;
            break;
        case TapeWord::half_gap:
            missing = take_half_gap(view);
            if (missing != 0) return missing;
            if (gap.runs_away(word_bytes + half_gap_bytes)) return SIMH_RUNAWAY;
            break;
        case TapeWord::tape_mark: tape->file_number++; return SIMH_TAPE_MARK;
        case TapeWord::end_of_medium: return SIMH_END_OF_MEDIUM;
        case TapeWord::record: view->position -= word_bytes; return static_cast<int32_t>(word);
        case TapeWord::bad: return SIMH_ERROR;
        }
    }
}

// From in front of a record's last word to in front of its first.
int32_t retreat_over(TapeView *view, uint32_t length)
{
    const uint64_t distance = padded(length) + word_bytes;
    if (view->position < distance) return SIMH_ERROR;
    view->position -= distance;
    return static_cast<int32_t>(length);
}

int32_t retreat(TapeImage *tape, TapeView *view, uint64_t start)
{
    Gap gap = no_gap_yet(tape);
    for (;;) {
        if (view->position < word_bytes) {
            if (gap.passed > 0) view->position = 0; // half of a gap that stands there is passed too
            return SIMH_BEGIN_OF_TAPE;
        }
        view->position -= word_bytes;
        const uint64_t front = view->position;
        uint32_t word = 0;
        const int32_t missing = take_word(view, &word);
        view->position = front;
        if (missing != 0) return missing;
        switch (classify_reverse(word)) {
        case TapeWord::gap:
            if (gap.runs_away(word_bytes)) return SIMH_RUNAWAY;
            break;
        case TapeWord::half_gap:
            view->position += half_gap_bytes;
            if (gap.runs_away(half_gap_bytes)) return SIMH_RUNAWAY;
            break;
        case TapeWord::tape_mark: tape->file_number--; return SIMH_TAPE_MARK;
        case TapeWord::end_of_medium: return SIMH_END_OF_MEDIUM;
        case TapeWord::record: {
            const int32_t length = retreat_over(view, word);
            if (length < 0) view->position = start;
            return length;
        }
        case TapeWord::bad: view->position = start; return SIMH_ERROR;
        }
    }
}

// ---- spacing -------------------------------------------------------------------------------------------

struct Place {
    uint64_t position;
    uint32_t record_number;
    uint32_t file_number;
};

Place place_of(const TapeImage *tape, const TapeView *view)
{
    return {view->position, tape->record_number, tape->file_number};
}

void return_to(const Place &place, TapeImage *tape, TapeView *view)
{
    view->position = place.position;
    tape->record_number = place.record_number;
    tape->file_number = place.file_number;
}

int32_t pass_record(TapeImage *tape, TapeView *view)
{
    const int32_t length = move_forward(tape, view, false);
    if (length < 0) return length;
    // Kept: in the fixed layout this stops inside the slot, which the next operation finds again.  [KeepsSlotOfSpacing]
    view->position += padded(static_cast<uint32_t>(length)) + 2 * word_bytes;
    tape->record_number++;
    return length;
}

int32_t pass_record_back(TapeImage *tape, TapeView *view)
{
    const int32_t length = move_reverse(tape, view);
    if (length < 0) return length;
    if (tape->record_number > 0) tape->record_number--;
    return length;
}

int32_t pass_file(TapeImage *tape, TapeView *view, int32_t step)
{
    int32_t result = 0;
    while (result == 0) result = space_records(tape, view, step);
    return result == SIMH_TAPE_MARK ? 0 : result;
}

int32_t step_towards(uint32_t from, uint32_t to)
{
    const int64_t distance = int64_t{to} - from;
    return static_cast<int32_t>(std::clamp<int64_t>(distance, INT32_MIN, INT32_MAX));
}

} // namespace

void locate(TapeImage *tape, const TapeView *view)
{
    const bool is_known = tape->state != SIMH_IDLE; // inside a record
    if (is_fixed(tape) && !is_known) tape->record_number = static_cast<uint32_t>(view->position / slot_bytes(tape));
}

int32_t move_forward(TapeImage *tape, TapeView *view, bool keep_address)
{
    const uint64_t start = view->position;
    view->backward = false;
    const int32_t result = advance(tape, view);
    const bool stopped = result == SIMH_ERROR || result == SIMH_END_OF_MEDIUM || result == SIMH_END_OF_FILE;
    if (stopped && !keep_address) view->position = start;
    return result;
}

int32_t move_reverse(TapeImage *tape, TapeView *view)
{
    view->backward = true;
    const int32_t result = retreat(tape, view, view->position);
    view->backward = false;
    return result;
}

int32_t space_records(TapeImage *tape, TapeView *view, int32_t count)
{
    locate(tape, view);
    const Place start = place_of(tape, view);
    for (int64_t left = count; left != 0; left += count > 0 ? -1 : 1) {
        const int32_t result = count > 0 ? pass_record(tape, view) : pass_record_back(tape, view);
        if (result < 0) return result;
        if (view->position > last_position) {
            return_to(start, tape, view);
            return SIMH_END_OF_FILE;
        }
    }
    return 0;
}

int32_t space_files(TapeImage *tape, TapeView *view, int32_t count)
{
    const Place start = place_of(tape, view);
    for (int64_t left = count; left != 0; left += count > 0 ? -1 : 1) {
        const int32_t result = pass_file(tape, view, count > 0 ? 1 : -1);
        if (result == 0) continue;
        if (result == SIMH_RUNAWAY)
            tape->record_number = start.record_number;
        else
            return_to(start, tape, view);
        return result;
    }
    return 0;
}

int32_t set_slot(TapeImage *tape, TapeView *view, uint32_t slot)
{
    if (slot > tape->num_records) {
        log_file(2, "max record number exceeded\n");
        return SIMH_ERROR;
    }
    if (slot_start(tape, slot) > last_position) {
        set_error(301, "");
        return SIMH_ERROR;
    }
    view->position = slot_start(tape, slot);
    tape->record_number = slot;
    return 0;
}

int32_t set_position(TapeImage *tape, TapeView *view, uint32_t new_record)
{
    if (is_fixed(tape)) return set_slot(tape, view, new_record);
    const Place start = place_of(tape, view);
    while (tape->record_number != new_record) {
        const int32_t result = space_records(tape, view, step_towards(tape->record_number, new_record));
        if (result == 0 || result == SIMH_TAPE_MARK || result == SIMH_RUNAWAY) continue;
        return_to(start, tape, view);
        return result;
    }
    return 0;
}
