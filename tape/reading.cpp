// Reading records, whole or in parts, in both directions.
#include <algorithm>

#include "base/error.h"
#include "base/log.h"
#include "tape/simh_inner.h"
#include "tape/words.h"

namespace
{

bool is_reading(const TapeImage *tape)
{
    return tape->state == SIMH_READING_FORWARD || tape->state == SIMH_READING_REVERSE;
}

int32_t refuse(uint32_t error, const char *reason)
{
    set_error(error, "%s", reason);
    return SIMH_ERROR;
}

// ---- going to a record's data --------------------------------------------------------------------------

int32_t enter_record(TapeImage *tape, TapeView *view, bool forward)
{
    const int32_t length = forward ? move_forward(tape, view, false) : move_reverse(tape, view);
    if (length >= 0) view->position += word_bytes;
    return length;
}

// The position ends behind the slot's length word, if it is one.
int32_t read_slot_head(const TapeImage *tape, TapeView *view, uint32_t slot)
{
    if (slot_start(tape, slot) > last_position) return refuse(301, "");
    view->position = slot_start(tape, slot);
    uint32_t word = 0;
    int32_t missing = take_word(view, &word);
    if (missing != 0) return missing;
    if (word == mark_word) return SIMH_TAPE_MARK;
    if (word == end_word) return SIMH_END_OF_MEDIUM;
    missing = take_word(view, &word);
    if (missing != 0) return missing;
    if ((word & slot_length_junk) != 0) return SIMH_BAD_SLOT;
    // Kept: a length with its highest bit set is handed back as the negative number it is.  [KeepsHighBitOfSlotLength]
    return static_cast<int32_t>(word);
}

int32_t enter_next_slot(TapeImage *tape, TapeView *view)
{
    const uint64_t start = view->position;
    const int32_t length = read_slot_head(tape, view, tape->record_number);
    if (length >= 0) return length;
    view->position = start;
    // Kept: the end of the medium counts as a record, though the position stays.  [KeepsRecordNumberBehindEndOfMedium]
    if (length == SIMH_END_OF_MEDIUM) tape->record_number++;
    if (length == SIMH_TAPE_MARK) {
        tape->record_number++;
        tape->file_number++;
        view->position = std::min(slot_start(tape, tape->record_number), last_position);
    }
    return length;
}

int32_t enter_slot_before(TapeImage *tape, TapeView *view)
{
    if (tape->record_number == 0) return SIMH_BEGIN_OF_TAPE;
    const uint64_t start = view->position;
    const int32_t length = read_slot_head(tape, view, tape->record_number - 1);
    if (length >= 0) return length;
    view->position = start;
    if (length == SIMH_TAPE_MARK) {
        tape->record_number--;
        tape->file_number--;
        view->position = slot_start(tape, tape->record_number);
    }
    return length;
}

int32_t enter_slot(TapeImage *tape, TapeView *view, bool forward)
{
    return forward ? enter_next_slot(tape, view) : enter_slot_before(tape, view);
}

// ---- the transfer --------------------------------------------------------------------------------------

uint32_t bytes_left(const TapeImage *tape)
{
    return tape->record_size - std::min(tape->record_done, tape->record_size);
}

// Begins or continues a record. 0 with the bytes to deliver, or a result below 0.
int32_t begin_part(TapeImage *tape, TapeView *view, const ReadOrder &order, uint32_t *ret_amount)
{
    if ((order.part & SIMH_FIRST_PART) == 0) {
        if (!is_reading(tape)) return refuse(103, "no record is being read");
        *ret_amount = std::min(order.most_bytes, bytes_left(tape));
        return 0;
    }
    if (!is_reading(tape)) {
        const int32_t length = position_tape(tape, view, order.forward);
        if (length < 0) return length;
    }
    tape->state = order.forward ? SIMH_READING_FORWARD : SIMH_READING_REVERSE;
    tape->record_done = 0;
    *ret_amount = order.most_bytes == 0 ? tape->record_size : std::min(order.most_bytes, tape->record_size);
    return 0;
}

int32_t deliver(const TapeImage *tape, TapeView *view, const ReadOrder &order, uint32_t amount)
{
    const uint64_t begin = tape->record_start;
    view->position = begin + (order.forward ? tape->record_done : bytes_left(tape) - amount);
    if (amount == 0) return 0;
    const int32_t count = view_read(view, order.buffer, amount);
    if (count < 0) return SIMH_ERROR;
    if (static_cast<uint32_t>(count) < amount) return SIMH_END_OF_FILE;
    if (!order.forward) std::reverse(order.buffer, order.buffer + amount);
    return 0;
}

// Where reading a record to its end, or leaving it, ends up; false where no file reaches.
bool leave_record(TapeImage *tape, TapeView *view, bool forward)
{
    const uint64_t begin = tape->record_start;
    if (!forward) {
        if (begin < word_bytes) return false;
        view->position = begin - word_bytes;
        if (tape->record_number > 0) tape->record_number--;
        return true;
    }
    view->position = is_fixed(tape) ? begin + tape->blocksize + slot_overhead - 2 * word_bytes
                                    : begin + padded(tape->record_size) + word_bytes;
    if (view->position > last_position) return false;
    tape->record_number++;
    return true;
}

int32_t stop_reading(TapeImage *tape, TapeView *view)
{
    const bool forward = tape->state == SIMH_READING_FORWARD;
    log_file(2, forward ? "terminating current tape record forward read operation.\n"
                        : "terminating current tape record reverse read operation\n");
    return read_record(tape, view, {nullptr, 0, SIMH_LAST_PART, forward}, nullptr);
}

int32_t stop_writing(TapeImage *tape, TapeView *view)
{
    log_file(2, "terminating current tape record write operation.\n");
    const uint64_t start = view->position;
    if (write_record(tape, view, nullptr, 0, SIMH_LAST_PART) && view_settle(view)) return 0;
    view_drop(view);
    view->position = start;
    return SIMH_ERROR;
}

} // namespace

int32_t position_tape(TapeImage *tape, TapeView *view, bool forward)
{
    const int32_t length = is_fixed(tape) ? enter_slot(tape, view, forward) : enter_record(tape, view, forward);
    if (length < 0) return length;
    tape->state = forward ? SIMH_READING_FORWARD : SIMH_READING_REVERSE;
    tape->record_start = static_cast<uint32_t>(view->position);
    tape->record_size = static_cast<uint32_t>(length);
    tape->record_done = 0;
    return length;
}

int32_t read_record(TapeImage *tape, TapeView *view, const ReadOrder &order, int32_t *ret_eor)
{
    const uint64_t start = view->position;
    uint32_t amount = 0;
    int32_t result = begin_part(tape, view, order, &amount);
    if (result < 0) return result;
    result = deliver(tape, view, order, amount);
    if (result < 0) {
        tape->state = SIMH_IDLE;
        view->position = start;
        return result;
    }
    tape->record_done += amount;
    const bool complete = bytes_left(tape) == 0;
    if (ret_eor != nullptr) *ret_eor = complete;
    if (!complete && (order.part & SIMH_LAST_PART) == 0) return static_cast<int32_t>(amount);
    tape->state = SIMH_IDLE;
    if (leave_record(tape, view, order.forward)) return static_cast<int32_t>(amount);
    view->position = start;
    return SIMH_END_OF_FILE;
}

int32_t end_transfer(TapeImage *tape, TapeView *view)
{
    int32_t result = 0;
    if (is_reading(tape)) result = stop_reading(tape, view);
    if (tape->state == SIMH_WRITING) result = stop_writing(tape, view);
    tape->state = SIMH_IDLE;
    return result;
}

void rewind_tape(TapeImage *tape, TapeView *view)
{
    end_transfer(tape, view);
    view->position = 0;
    tape->record_number = 0;
    tape->file_number = 0;
}
