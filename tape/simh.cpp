// The exported operations on a tape image: each logs its call, takes the position, ends a record in progress, has the
// operation done and leaves the file where it ended, or where it began when it failed.
#include "tape/simh.h"

#include "base/error.h"
#include "base/file_steps.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "tape/simh_inner.h"
#include "tape/words.h"

const uint32_t simh_tm = mark_word;
const uint32_t simh_eom = end_word;
const uint32_t simh_gap = gap_word;
const uint16_t simh_half_gap = 0xFFFF;

static_assert(sizeof(TapeImage) == 64);

namespace
{

constexpr uint32_t default_runaway_limit = 300; // units

// An operation at work.
struct Call {
    TapeImage *tape;
    TapeView *view = &tape_view;
    TapeImage before = {}; // the tape and the position to which a failure returns
    uint64_t start = 0;
};

void note_start(Call *call)
{
    locate(call->tape, call->view);
    call->before = *call->tape;
    call->start = call->view->position;
}

// A transfer goes on: it isn't ended first.
bool continue_call(Call *call)
{
    if (call->tape == nullptr) {
        set_error(103, "NULL pointer");
        return false;
    }
    if (!view_begin(call->view, call->tape->fd)) return false;
    log_file(3, "file position=%lu\n", log_number(static_cast<uint32_t>(call->view->position)));
    note_start(call);
    return true;
}

bool begin_call(Call *call)
{
    if (!continue_call(call)) return false;
    const bool ended = end_transfer(call->tape, call->view) >= 0;
    note_start(call);
    return ended;
}

// After an operation that only read.
int32_t end_call(Call *call, int32_t result, int32_t unreachable)
{
    if (view_settle(call->view)) return result;
    call->tape->state = SIMH_IDLE;
    call->view->position = call->start;
    view_settle(call->view);
    return unreachable;
}

// After one that wrote.
int32_t end_writing(Call *call, bool written)
{
    if (written && view_settle(call->view)) return 0;
    view_drop(call->view);
    *call->tape = call->before;
    call->view->position = call->start;
    view_settle(call->view);
    return -1;
}

// A first part ends what is in progress, but for a record whose reading simh_position_tape has only begun.
int32_t read_call(TapeImage *tape, const ReadOrder &order, int32_t *ret_eor)
{
    Call call = {tape};
    const bool begins = (order.part & SIMH_FIRST_PART) != 0;
    const bool is_inside = tape != nullptr && (tape->state == SIMH_WRITING || tape->record_done > 0);
    if (ret_eor != nullptr) *ret_eor = 0;
    if (order.buffer == nullptr && (begins || order.most_bytes > 0)) {
        set_error(103, "NULL pointer");
        return SIMH_ERROR;
    }
    if (!(begins && is_inside ? begin_call(&call) : continue_call(&call))) return SIMH_ERROR;
    return end_call(&call, read_record(tape, call.view, order, ret_eor), SIMH_ERROR);
}

} // namespace

void reset_tape(TapeImage *tape)
{
    const FileHandle file = tape->fd;
    *tape = {};
    tape->fd = file;
    tape->runaway_limit = default_runaway_limit;
}

void simh_reset(TapeImage *tape)
{
    log_file(3, "simh_reset(tape=%lu)\n", log_pointer(tape));
    if (tape == nullptr)
        set_error(103, "NULL pointer");
    else
        reset_tape(tape);
}

int32_t simh_stop(TapeImage *tape)
{
    log_file(3, "simh_stop(tape=%lu)\n", log_pointer(tape));
    Call call = {tape};
    if (!continue_call(&call)) return SIMH_ERROR;
    return end_call(&call, end_transfer(tape, call.view), SIMH_ERROR);
}

void simh_rewind(TapeImage *tape)
{
    log_file(3, "simh_rewind(tape=%lu)\n", log_pointer(tape));
    Call call = {tape};
    if (continue_call(&call)) {
        rewind_tape(tape, call.view);
        view_settle(call.view);
    } else if (tape != nullptr) { // from behind 4 GiB too
        tape->state = SIMH_IDLE;
        tape->record_number = tape->file_number = 0;
        seek_to(tape->fd, 0);
    }
}

int32_t simh_move_forward(TapeImage *tape, int32_t keep_address)
{
    log_file(3, "simh_move_forward(tape=%lu, keep_address=%d)\n", log_pointer(tape), keep_address);
    Call call = {tape};
    if (!begin_call(&call)) return SIMH_ERROR;
    return end_call(&call, move_forward(tape, call.view, keep_address != 0), SIMH_ERROR);
}

int32_t simh_move_reverse(TapeImage *tape)
{
    log_file(3, "simh_move_reverse(tape=%lu)\n", log_pointer(tape));
    Call call = {tape};
    if (!begin_call(&call)) return SIMH_ERROR;
    return end_call(&call, move_reverse(tape, call.view), SIMH_ERROR);
}

int32_t simh_position_tape(TapeImage *tape, int32_t forward)
{
    log_file(3, "simh_position_tape(tape=%lu, forward=%d)\n", log_pointer(tape), forward);
    Call call = {tape};
    if (!begin_call(&call)) return SIMH_ERROR;
    return end_call(&call, position_tape(tape, call.view, forward != 0), SIMH_ERROR);
}

int32_t simh_read_record_forward(TapeImage *tape, void *buffer, uint32_t max_buffer_size, int32_t part,
                                 int32_t *ret_eor)
{
    log_file(3, "simh_read_record_forward(tape=%lu, buffer=%lu, max_buffer_size=%lu, part=%d, ret_eor=%lu)\n",
             log_pointer(tape), log_pointer(buffer), log_number(max_buffer_size), part, log_pointer(ret_eor));
    return read_call(tape, {static_cast<uint8_t *>(buffer), max_buffer_size, part, true}, ret_eor);
}

int32_t simh_read_record_reverse(TapeImage *tape, void *buffer, uint32_t max_buffer_size, int32_t part,
                                 int32_t *ret_eor)
{
    log_file(3, "simh_read_record_reverse(tape=%lu, buffer=%lu, max_buffer_size=%lu, part=%d, ret_eor=%lu)\n",
             log_pointer(tape), log_pointer(buffer), log_number(max_buffer_size), part, log_pointer(ret_eor));
    return read_call(tape, {static_cast<uint8_t *>(buffer), max_buffer_size, part, false}, ret_eor);
}

int32_t simh_write_record(TapeImage *tape, const void *buffer, uint32_t record_size, int32_t part)
{
    log_file(3, "simh_write_record(tape=%lu, buffer=%lu, record_size=%lu, part=%d)\n", log_pointer(tape),
             log_pointer(buffer), log_number(record_size), part);
    Call call = {tape};
    if (!continue_call(&call)) return -1;
    return end_writing(&call, write_record(tape, call.view, buffer, record_size, part));
}

void simh_write_tapemark(TapeImage *tape)
{
    log_file(3, "simh_write_tapemark(tape=%lu)\n", log_pointer(tape));
    Call call = {tape};
    if (begin_call(&call)) end_writing(&call, write_tapemark(tape, call.view));
}

void simh_write_eom(TapeImage *tape)
{
    log_file(3, "simh_write_eom(tape=%lu)\n", log_pointer(tape));
    Call call = {tape};
    if (begin_call(&call)) end_writing(&call, write_eom(tape, call.view));
}

int32_t simh_write_erase_gap(TapeImage *tape, uint32_t gapsize)
{
    log_file(3, "simh_write_erase_gap(tape=%lu, gapsize=%lu)\n", log_pointer(tape), log_number(gapsize));
    Call call = {tape};
    if (!begin_call(&call)) return -1;
    if (is_fixed(tape)) log_file(1, "creating erase gaps should not be used on fixed length format\n");
    return end_writing(&call, write_erase_gap(call.view, gapsize));
}

int32_t simh_space_records(TapeImage *tape, int32_t num_records)
{
    log_file(3, "simh_space_records(tape=%lu, num_records=%d)\n", log_pointer(tape), num_records);
    Call call = {tape};
    if (!begin_call(&call)) return SIMH_ERROR;
    return end_call(&call, space_records(tape, call.view, num_records), SIMH_END_OF_FILE);
}

int32_t simh_space_files(TapeImage *tape, int32_t num_files)
{
    log_file(3, "simh_space_files(tape=%lu, num_files=%d)\n", log_pointer(tape), num_files);
    Call call = {tape};
    if (!begin_call(&call)) return SIMH_ERROR;
    return end_call(&call, space_files(tape, call.view, num_files), SIMH_END_OF_FILE);
}

int32_t simh_set_position(TapeImage *tape, uint32_t new_record)
{
    log_file(3, "simh_set_position(tape=%lu, new_record=%lu)\n", log_pointer(tape), log_number(new_record));
    Call call = {tape};
    if (!begin_call(&call)) return SIMH_ERROR;
    return end_call(&call, set_position(tape, call.view, new_record), SIMH_ERROR);
}

int32_t simh_initialize(TapeImage *tape, uint32_t num_records, int32_t do_format)
{
    log_file(3, "simh_initialize(tape=%lu, num_records=%lu, do_format=%d)\n", log_pointer(tape),
             log_number(num_records), do_format);
    Call call = {tape};
    if (!begin_call(&call)) return -1;
    rewind_tape(tape, call.view);
    const bool made = !is_fixed(tape) || write_slots(tape, call.view, num_records, do_format != 0);
    const bool ended = made && write_eom(tape, call.view);
    if (ended) rewind_tape(tape, call.view);
    return end_writing(&call, ended);
}
