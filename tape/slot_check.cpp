// The third pass of the test of an image: is the file an array of slots of one size.
#include <algorithm>

#include "base/log.h"
#include "tape/simh_inner.h"
#include "tape/simh_test_inner.h"
#include "tape/words.h"

namespace
{

enum class Slot : uint8_t { good, behind_the_last, bad };

// The block size that the first slot tells: its length, its filler, and what of the next slot is passed on the way to
// the first word that is no gap. 32 bits: on the way it may be below 0.
// Kept: a first record whose length is no multiple of 4, or a mark in the second slot, misleads it.  [KeepsMisledSize]
bool work_out_size(TapeView *view, uint32_t *ret_size)
{
    uint32_t word = 0;
    view->position = word_bytes;
    if (take_word(view, &word) != 0 || (word & slot_length_junk) != 0) return false;
    view->position = uint64_t{word} + 3 * word_bytes;
    uint32_t size = word - 3 * word_bytes;
    do {
        if (take_word(view, &word) != 0) return false;
        size += word_bytes;
    } while (word == gap_word);
    *ret_size = size;
    return true;
}

bool only_gap(TapeView *view, uint64_t words)
{
    for (uint32_t word = 0; words > 0; words--) {
        if (take_word(view, &word) != 0 || word != gap_word) return false;
    }
    return true;
}

Slot test_slot(TapeView *view, uint64_t start, uint32_t size)
{
    view->position = start;
    uint32_t word = 0;
    const int32_t missing = take_word(view, &word);
    const bool nothing_left = missing == SIMH_END_OF_FILE && view->position == start;
    if (nothing_left || (missing == 0 && word == end_word)) return Slot::behind_the_last;
    if (missing != 0 || (word != gap_word && word != mark_word)) return Slot::bad;
    if (take_word(view, &word) != 0) return Slot::bad;
    if (word == gap_word) return only_gap(view, size / word_bytes + 2) ? Slot::good : Slot::bad;
    return (word & slot_length_junk) == 0 && word <= size ? Slot::good : Slot::bad;
}

bool ends_with_gap(TapeView *view, uint64_t end)
{
    const uint64_t left = end - view->position;
    return view->position <= end && left % word_bytes == 0 && only_gap(view, left / word_bytes);
}

// Of a slot that is good: whether a walk in either direction passes what is in it, and ends where the slot does.
bool is_plain(TapeView *view, uint64_t start, uint32_t size)
{
    const uint64_t end = start + size + slot_overhead;
    uint32_t first = 0;
    uint32_t length = 0;
    view->position = start;
    if (take_word(view, &first) != 0 || take_word(view, &length) != 0) return false;
    if (length == gap_word) return ends_with_gap(view, end);
    uint32_t last = 0;
    view->position += padded(length);
    return length != 0 && length <= largest_record && take_word(view, &last) == 0 && last == length &&
           ends_with_gap(view, end);
}

// Sizes whose slots would be larger than any file, or wrap to nothing, make no slots.
bool makes_slots(uint32_t size)
{
    return size <= UINT32_MAX - slot_overhead;
}

} // namespace

bool check_slots(TapeCheck *check, uint32_t blocksize)
{
    log_file(2, "Performing fixed block check\n");
    TapeImage *tape = check->tape;
    TapeView *view = check->view;
    if (blocksize == 0 && !work_out_size(view, &blocksize)) return true;
    Percent percent = {static_cast<uint32_t>(check->size)};
    const uint64_t slot_size = uint64_t{blocksize} + slot_overhead;
    uint32_t slots = 0;
    Slot slot = makes_slots(blocksize) ? Slot::good : Slot::bad;
    while (slot == Slot::good) {
        if (!show_percent(&percent, slots * slot_size)) return false;
        slot = test_slot(view, slots * slot_size, blocksize);
        if (slot != Slot::good) continue;
        if (check->slots_are_plain) check->slots_are_plain = is_plain(view, slots * slot_size, blocksize);
        slots++;
    }
    if (slot == Slot::behind_the_last) {
        tape->format = SIMH_FIXED;
        tape->blocksize = blocksize;
    }
    // Kept: a variable image has the slots that passed in place of its records.  [KeepsSlotCountOfVariableImage]
    tape->num_records = slots;
    tape->max_record = makes_slots(blocksize) ? std::max(check->sums.longest, blocksize) : check->sums.longest;
    return true;
}
