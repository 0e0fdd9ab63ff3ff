// The four conversions of a tape's content.
#include "tape/simh_convert.h"

#include <algorithm>

#include "base/error.h"
#include "base/file_steps.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "tape/packing.h"
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

// ---- both ends -----------------------------------------------------------------------------------------

// Both files from their begin. A file can't be turned into itself.
bool begin_ends(FileHandle from, FileHandle to)
{
    view_begin_whole(&tape_view, from);
    view_begin_whole(&other_view, to);
    return from != to || !file_is_valid(from) || refuse(208, "");
}

// A record in progress ends where the tape stands. That may make the file longer, so the view begins anew.
bool begin_tape(TapeImage *tape, TapeView *view)
{
    if (tape->state == SIMH_WRITING && (!view_begin(view, tape->fd) || end_transfer(tape, view) < 0)) return false;
    tape->state = SIMH_IDLE;
    view_begin_whole(view, tape->fd);
    rewind_tape(tape, view);
    return true;
}

bool begin_slots(TapeImage *tape, TapeView *view)
{
    if (!begin_tape(tape, view)) return false;
    tape->format = SIMH_FIXED;
    tape->num_records = 0;
    return true;
}

bool go_to_begin(TapeImage *tape, TapeView *view)
{
    const bool settled = view_settle(view);
    if (tape != nullptr) rewind_tape(tape, view);
    view->position = 0;
    return view_settle(view) && settled;
}

// What the target still has gathered is written, also when the conversion failed.
int32_t end_conversion(TapeImage *from, TapeImage *to, bool done)
{
    if (!go_to_begin(from, &tape_view)) done = false;
    if (!go_to_begin(to, &other_view)) done = false;
    return done ? 0 : -1;
}

// ---- to slots ------------------------------------------------------------------------------------------

bool block_to_slot(Packing *packing, const uint8_t *bytes, uint32_t count)
{
    if (packing->mark_pending && !write_tapemark(packing->to, packing->sink)) return false;
    packing->mark_pending = false;
    return write_record(packing->to, packing->sink, bytes, count, SIMH_WHOLE_RECORD);
}

bool mark_to_slot(Packing *packing)
{
    const uint32_t waiting = packing->fill;
    packing->fill = 0;
    if (waiting > 0 && !block_to_slot(packing, packing->block, waiting)) return false;
    packing->mark_pending = true; // Kept: tape marks in a row become one.  [KeepsOneMarkOfSeveralInARow]
    return true;
}

constexpr PackingTarget slots = {block_to_slot, mark_to_slot, "Error in SIMH magtape image\n"};

bool convert_to_slots(TapeImage *from, TapeImage *to, bool join)
{
    if (!begin_tape(from, &tape_view) || !begin_slots(to, &other_view)) return false;
    const TapeBuffer block(block_room(&tape_view, to->blocksize));
    if (block.bytes() == nullptr) return refuse(105, "");
    Packing packing = {.target = &slots,
                       .from = from,
                       .to = to,
                       .source = &tape_view,
                       .sink = &other_view,
                       .block = block.bytes(),
                       .block_size = to->blocksize,
                       .joins_records = join};
    if (!pack_records(&packing)) return false;
    if (packing.ended_with_mark && !write_tapemark(to, &other_view)) return false;
    return write_eom(to, &other_view);
}

// ---- to a plain file -----------------------------------------------------------------------------------

bool write_plain_block(const uint8_t *bytes, uint32_t count, uint32_t block_size)
{
    return view_write(&other_view, bytes, count) && view_write_zeros(&other_view, block_size - count);
}

bool block_to_file(Packing *packing, const uint8_t *bytes, uint32_t count)
{
    return write_plain_block(bytes, count, packing->block_size);
}

bool ignore_mark(Packing *)
{
    return true;
}

constexpr PackingTarget plain_file = {block_to_file, ignore_mark, "error in SIMH magtape image\n"};

bool convert_to_file(TapeImage *from, uint32_t block_size)
{
    if (!begin_tape(from, &tape_view)) return false;
    const TapeBuffer block(block_room(&tape_view, block_size));
    if (block.bytes() == nullptr) return refuse(105, "");
    Packing packing = {.target = &plain_file,
                       .from = from,
                       .to = nullptr,
                       .source = &tape_view,
                       .sink = &other_view,
                       .block = block.bytes(),
                       .block_size = block_size,
                       .joins_records = true};
    return pack_records(&packing);
}

// The bytes of data of the slot at the position, cut to a block. 0, or SIMH_END_OF_FILE where the slots end, or
// SIMH_ERROR. What isn't a length counts as none: a mark, an empty slot.
int32_t take_slot_head(const TapeImage *tape, uint32_t *ret_length)
{
    uint32_t word = 0;
    int32_t missing = take_word(&tape_view, &word);
    if (missing != 0) return missing;
    if (word == end_word) return SIMH_END_OF_FILE;
    missing = take_word(&tape_view, &word);
    if (missing != 0) return missing;
    // Kept: a slot is one block: what is longer is cut off, marks and empty slots are zeros.  [KeepsOneBlockForASlot]
    *ret_length = (word & slot_length_junk) != 0 ? 0 : std::min(word, tape->blocksize);
    return *ret_length > tape_view.end ? SIMH_END_OF_FILE : 0; // more than there is, and than the buffer holds
}

int32_t slot_to_file(const TapeImage *tape, uint8_t *block)
{
    uint32_t length = 0;
    const int32_t missing = take_slot_head(tape, &length);
    if (missing != 0) return missing;
    const uint8_t *bytes = nullptr;
    const int32_t count = view_get(&tape_view, block, length, &bytes);
    if (count < 0) return SIMH_ERROR;
    if (static_cast<uint32_t>(count) < length) return SIMH_END_OF_FILE;
    return write_plain_block(bytes, length, tape->blocksize) ? 0 : SIMH_ERROR;
}

bool convert_slots(TapeImage *from)
{
    if (!begin_tape(from, &tape_view)) return false;
    const TapeBuffer block(block_room(&tape_view, from->blocksize));
    if (block.bytes() == nullptr) return refuse(105, "");
    const uint64_t most_slots = (tape_view.end + from->blocksize - 1) / from->blocksize;
    Percent percent = {static_cast<uint32_t>(tape_view.end)};
    int32_t result = 0;
    for (uint32_t slot = 0; slot < most_slots && result == 0; slot++) {
        if (set_slot(from, &tape_view, slot) < 0) break;
        if (!show_percent(&percent, tape_view.position)) return false;
        result = slot_to_file(from, block.bytes());
    }
    return result != SIMH_ERROR;
}

// ---- from a plain file ---------------------------------------------------------------------------------

bool convert_from_file(TapeImage *to)
{
    if (!begin_tape(to, &other_view)) return false;
    if (is_fixed(to)) to->num_records = 0;
    const uint32_t block_size = to->blocksize;
    const TapeBuffer block(block_room(&tape_view, block_size));
    if (block.bytes() == nullptr) return refuse(105, "");
    Percent percent = {static_cast<uint32_t>(tape_view.end)};
    uint32_t count = block_size;
    while (count == block_size) {
        if (!show_percent(&percent, tape_view.position)) return false;
        const uint8_t *bytes = nullptr;
        const int32_t result = view_get(&tape_view, block.bytes(), block_size, &bytes);
        if (result < 0) return false;
        count = static_cast<uint32_t>(result);
        if (count > 0 && !write_record(to, &other_view, bytes, count, SIMH_WHOLE_RECORD)) return false;
    }
    return view_write_word(&other_view, end_word);
}

bool is_there(const TapeImage *tape)
{
    return tape != nullptr || refuse(103, "NULL pointer");
}

bool is_size(uint32_t bytes, const char *reason)
{
    return bytes != 0 || refuse(103, reason);
}

} // namespace

int32_t simh_simh2fixed(TapeImage *from_tape, TapeImage *to_tape, int32_t do_pack)
{
    log_file(3, "simh_simh2fixed(from_tape=%lu, to_tape=%lu, do_pack=%d)\n", log_pointer(from_tape),
             log_pointer(to_tape), do_pack);
    if (!is_there(from_tape) || !is_there(to_tape)) return -1;
    if (!is_size(to_tape->blocksize, "blocksize can't be 0")) return -1;
    if (!begin_ends(from_tape->fd, to_tape->fd)) return -1;
    return end_conversion(from_tape, to_tape, convert_to_slots(from_tape, to_tape, do_pack != 0));
}

int32_t simh_simh2hpi(TapeImage *from_tape, FileHandle to_fd, uint32_t blocksize)
{
    log_file(3, "simh_simh2hpi(from_tape=%lu, to_fd=%lu, blocksize=%lu)\n", log_pointer(from_tape), log_handle(to_fd),
             log_number(blocksize));
    if (!is_there(from_tape) || !is_size(blocksize, "blocksize can't be 0")) return -1;
    if (!begin_ends(from_tape->fd, to_fd)) return -1;
    return end_conversion(from_tape, nullptr, convert_to_file(from_tape, blocksize));
}

int32_t simh_fixed2hpi(TapeImage *from_tape, FileHandle to_fd)
{
    log_file(3, "simh_fixed2hpi(from_tape=%lu, to_fd=%lu)\n", log_pointer(from_tape), log_handle(to_fd));
    if (!is_there(from_tape) || !is_size(from_tape->blocksize, "blocksize can't be 0")) return -1;
    if (!begin_ends(from_tape->fd, to_fd)) return -1;
    return end_conversion(from_tape, nullptr, convert_slots(from_tape));
}

int32_t simh_hpi2simh(FileHandle from_fd, TapeImage *to_tape)
{
    log_file(3, "simh_hpi2simh(from_fd=%lu, to_tape=%lu)\n", log_handle(from_fd), log_pointer(to_tape));
    if (!is_there(to_tape) || !is_size(to_tape->blocksize, "record size can't be 0")) return -1;
    if (!begin_ends(from_fd, to_tape->fd)) return -1;
    return end_conversion(nullptr, to_tape, convert_from_file(to_tape));
}
