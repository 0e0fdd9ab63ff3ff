// Writing records, tape marks, the end of the medium, and empty slots. A slot of the fixed layout is always written
// whole.
#include "base/error.h"
#include "base/log.h"
#include "tape/simh_inner.h"
#include "tape/tape_buffer.h"
#include "tape/words.h"

namespace
{

bool refuse(uint32_t error, const char *reason)
{
    set_error(error, "%s", reason);
    return false;
}

// What part of a record was asked for, and can it be.
bool may_write(const TapeImage *tape, const void *buffer, uint32_t size, int32_t part)
{
    const bool begins = (part & SIMH_FIRST_PART) != 0;
    const bool ends = (part & SIMH_LAST_PART) != 0;
    if (buffer == nullptr && size > 0) return refuse(103, "NULL pointer");
    if (!begins && tape->state != SIMH_WRITING) return refuse(103, "no record is being written");
    const uint64_t whole = size + (begins ? uint64_t{0} : tape->record_size);
    if (whole > largest_record) return refuse(103, "record too long");
    if (is_fixed(tape) && ends && size > tape->blocksize) return refuse(103, "record longer than a slot");
    return true;
}

bool go_to_slot(const TapeImage *tape, TapeView *view)
{
    if (slot_start(tape, tape->record_number) > last_position) return refuse(301, "");
    view->position = slot_start(tape, tape->record_number);
    return true;
}

// A slot has been written.
void count_slot(TapeImage *tape)
{
    if (tape->num_records == tape->record_number) tape->num_records++;
}

// ---- records -------------------------------------------------------------------------------------------

bool begin_record(TapeImage *tape, TapeView *view)
{
    if (end_transfer(tape, view) < 0) return false;
    locate(tape, view);
    if (is_fixed(tape) && !go_to_slot(tape, view)) return false;
    tape->record_start = static_cast<uint32_t>(view->position);
    tape->record_size = 0;
    tape->record_done = 0;
    tape->state = SIMH_WRITING;
    return !is_fixed(tape) || view_write_word(view, gap_word);
}

// The first bytes of a record bring its length word with them.
bool write_data(TapeImage *tape, TapeView *view, const void *buffer, uint32_t size)
{
    if (size == 0) return true;
    if (tape->record_size == 0 && !view_write_word(view, size)) return false;
    tape->record_size += size;
    return view_write(view, buffer, size);
}

// Kept: in the fixed layout this hits the gap word ahead of the length.  [KeepsGapWordOverwrittenByParts]
bool correct_length(const TapeImage *tape, TapeView *view)
{
    const uint64_t behind = view->position;
    view->position = tape->record_start;
    const bool written = view_write_word(view, tape->record_size);
    view->position = behind;
    return written;
}

uint64_t filler_of(const TapeImage *tape, uint32_t size)
{
    if (size == 0) return uint64_t{tape->blocksize} + slot_overhead - word_bytes;
    return uint64_t{tape->blocksize} - size + word_bytes - size % 2;
}

// A record without a byte has no length words: they would read as tape marks.
bool end_record(TapeImage *tape, TapeView *view, uint32_t size)
{
    const uint32_t whole = tape->record_size;
    tape->state = SIMH_IDLE;
    if (whole == 0 && !is_fixed(tape)) return true;
    if (whole % 2 != 0 && !view_write_zeros(view, 1)) return false;
    if (whole > 0 && !view_write_word(view, whole)) return false;
    if (whole != size && !correct_length(tape, view)) return false;
    if (is_fixed(tape)) {
        if (!view_write_gap(view, filler_of(tape, size))) return false;
        count_slot(tape);
    }
    tape->record_number++;
    return true;
}

// ---- slots ---------------------------------------------------------------------------------------------

// An empty slot, or one with a record of zeros.
void build_slot(const TapeImage *tape, uint8_t *slot, bool with_record)
{
    const uint32_t size = with_record ? tape->blocksize : 0;
    if (size == 0) {
        fill_gap(slot, slot_bytes(tape));
        return;
    }
    const uint64_t behind = 2 * word_bytes + padded(size);
    store_word(slot, gap_word);
    store_word(slot + word_bytes, size);
    store_word(slot + behind, size);
    fill_gap(slot + behind + word_bytes, filler_of(tape, size));
}

} // namespace

bool write_record(TapeImage *tape, TapeView *view, const void *buffer, uint32_t size, int32_t part)
{
    if (!may_write(tape, buffer, size, part)) return false;
    if (!is_fixed(tape) && part == SIMH_WHOLE_RECORD && size == 0) {
        log_file(3, "Zero size record (ignored)\n");
        return true;
    }
    if ((part & SIMH_FIRST_PART) != 0 && !begin_record(tape, view)) return false;
    if (!write_data(tape, view, buffer, size)) return false;
    return (part & SIMH_LAST_PART) == 0 || end_record(tape, view, size);
}

bool write_tapemark(TapeImage *tape, TapeView *view)
{
    if (is_fixed(tape)) {
        if (!go_to_slot(tape, view) || !view_write_word(view, mark_word)) return false;
        if (!view_write_gap(view, slot_bytes(tape) - word_bytes)) return false;
        count_slot(tape);
        tape->record_number++;
    } else if (!view_write_word(view, mark_word)) {
        return false;
    }
    tape->file_number++;
    return true;
}

bool write_eom(TapeImage *tape, TapeView *view)
{
    if (!is_fixed(tape)) {
        const uint64_t front = view->position;
        const bool written = view_write_word(view, end_word);
        view->position = front;
        return written;
    }
    if (!go_to_slot(tape, view) || !view_write_word(view, end_word)) return false;
    const bool is_new = tape->record_number == tape->num_records;
    if (is_new && !view_write_gap(view, slot_bytes(tape) - word_bytes)) return false;
    count_slot(tape);
    tape->record_number++;
    return true;
}

bool write_slots(TapeImage *tape, TapeView *view, uint32_t count, bool do_format)
{
    const uint64_t bytes = slot_bytes(tape);
    if (bytes > last_position || (count + uint64_t{1}) * bytes > last_position) return refuse(303, "");
    if (do_format && tape->blocksize > largest_record) return refuse(103, "record too long");
    const TapeBuffer slot(bytes);
    if (slot.bytes() == nullptr) return refuse(105, "");
    build_slot(tape, slot.bytes(), do_format);
    for (uint32_t i = 0; i < count; i++) {
        if (loglevel < 2) percent_progress(i, count);
        if (!view_write(view, slot.bytes(), static_cast<uint32_t>(bytes))) return false;
    }
    tape->num_records = count;
    tape->record_number = count;
    return true;
}
