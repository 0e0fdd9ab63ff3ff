// The test of an image: a forward pass that may print what it meets, a reverse pass that must meet as many records, and
// the pass over slots, which has the last word on the layout.
#include "tape/simh_test.h"

#include <algorithm>

#include "base/error.h"
#include "base/file_inner.h"
#include "base/file_steps.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "base/output.h"
#include "tape/simh_inner.h"
#include "tape/simh_test_inner.h"
#include "tape/words.h"

namespace
{

enum class Pass : uint8_t { goes_on, ends, fails };

unsigned long shown(uint64_t number)
{
    return static_cast<unsigned long>(number);
}

// ---- the report ----------------------------------------------------------------------------------------

void print_gap(const TapeCheck *check, uint64_t from, uint64_t to)
{
    if (check->xml && from < to) output_format("<erase-gap pos=%lu size=%lu />\n", shown(from), shown(to - from));
}

void print_fault(const TapeCheck *check, uint64_t position, const char *reason)
{
    if (check->xml) output_format("<!-- error in SIMH magtape image pos=%lu%s -->\n", shown(position), reason);
}

void print_end_of_file(const TapeCheck *check, uint64_t position)
{
    if (check->xml) output_format("<!-- end-of-file reached pos=%lu -->\n", shown(position));
}

// ---- the forward pass ----------------------------------------------------------------------------------

Pass take_mark(TapeCheck *check, uint64_t start, uint64_t position)
{
    print_gap(check, start, position - word_bytes);
    if (check->xml)
        output_format("<tape-mark file=%d pos=%lu />\n", static_cast<int>(check->sums.marks + 1),
                      shown(position - word_bytes));
    check->sums.marks++;
    return Pass::goes_on;
}

Pass take_end(const TapeCheck *check, uint64_t start, uint64_t position)
{
    print_gap(check, start, position - word_bytes);
    // Kept: this line of the report has no line end.  [KeepsLineOfEndOfMediumOpen]
    if (check->xml) output_text("<end-of-medium />");
    return Pass::ends;
}

// The word behind the data must be the length again; the position ends behind it.
Pass take_last_word(TapeCheck *check, uint64_t position, uint32_t length)
{
    TapeView *view = check->view;
    view->position = position + word_bytes + padded(length);
    if (view->position > check->size) {
        print_fault(check, position, " (record length exceeds end-of-file)");
        return Pass::fails;
    }
    uint32_t word = 0;
    if (take_word(view, &word) != 0) {
        print_end_of_file(check, position);
        view->uneven = true;
        return Pass::ends;
    }
    if (word == length) return Pass::goes_on;
    print_fault(check, position,
                (word & slot_length_junk) != 0 ? " (trailing record length not at expected position)"
                                               : " (leading & trailing record length differ)");
    return Pass::fails;
}

void count_record(TapeSums *sums, uint32_t length)
{
    sums->records++;
    sums->longest = std::max(sums->longest, length);
    sums->bytes += length;
}

Pass take_record(TapeCheck *check, uint64_t start, uint64_t position, uint32_t length)
{
    print_gap(check, start, position);
    if (check->xml) {
        output_format("<data-record num=%lu pos=%lu length=%ld />\n", shown(check->sums.records), shown(position),
                      static_cast<long>(length));
    }
    count_record(&check->sums, length);
    return take_last_word(check, position, length);
}

Pass step_forward(TapeCheck *check)
{
    uint32_t length = 0;
    if (!check->xml && pass_held_record(check->tape, check->view, &length)) {
        count_record(&check->sums, length);
        return Pass::goes_on;
    }
    const uint64_t start = check->view->position;
    const int32_t result = move_forward(check->tape, check->view, true);
    const uint64_t position = check->view->position;
    if (result >= 0) return take_record(check, start, position, static_cast<uint32_t>(result));
    switch (result) {
    case SIMH_TAPE_MARK: return take_mark(check, start, position);
    case SIMH_RUNAWAY:
        output_format("<tape runaway position pos=%lu />\n", shown(position - word_bytes));
        return Pass::goes_on;
    case SIMH_END_OF_MEDIUM: return take_end(check, start, position);
    case SIMH_END_OF_FILE:
        print_gap(check, start, position);
        print_end_of_file(check, position);
        return Pass::ends;
    default: print_fault(check, position, ""); return Pass::fails;
    }
}

// ---- the reverse pass ----------------------------------------------------------------------------------

Pass fail_reverse(const TapeCheck *check)
{
    if (check->xml)
        output_format("<!-- error in SIMH magtape image (reverse scan) pos=%lu -->\n", shown(check->view->position));
    return Pass::fails;
}

Pass fail_count(const TapeCheck *check)
{
    if (check->xml) output_text("<!-- error in SIMH magtape image (reverse scan record count mismatch) -->");
    return Pass::fails;
}

Pass step_reverse(TapeCheck *check, uint32_t *records_left)
{
    if (*records_left == 0) return Pass::ends;
    if (pass_held_record_back(check->tape, check->view)) {
        --*records_left;
        return Pass::goes_on;
    }
    const int32_t result = move_reverse(check->tape, check->view);
    if (result == SIMH_ERROR) return fail_reverse(check);
    if (result == SIMH_BEGIN_OF_TAPE) return fail_count(check);
    if (result >= 0) --*records_left;
    return Pass::goes_on;
}

} // namespace

bool check_forward(TapeCheck *check)
{
    log_file(2, "Performing forward check\n");
    check->tape->format = SIMH_VARIABLE;
    check->view->position = 0;
    Percent percent = {static_cast<uint32_t>(check->size)};
    Pass pass = Pass::goes_on;
    while (pass == Pass::goes_on) {
        pass = show_percent(&percent, check->view->position / 2) ? step_forward(check) : Pass::fails;
    }
    check->tape->num_records = check->sums.records;
    check->tape->max_record = check->sums.longest;
    return pass == Pass::ends;
}

bool check_reverse(TapeCheck *check)
{
    log_file(2, "Performing reverse check\n");
    Percent percent = {static_cast<uint32_t>(check->size)};
    uint32_t records_left = check->sums.records;
    Pass pass = Pass::goes_on;
    while (pass == Pass::goes_on) {
        const uint64_t passed = check->size - std::min(check->view->position, check->size);
        const bool goes_on = show_percent(&percent, check->size / 2 + passed / 2);
        pass = goes_on ? step_reverse(check, &records_left) : Pass::fails;
    }
    return pass == Pass::ends;
}

namespace
{

bool check_image(TapeCheck *check, const TestOrder &order)
{
    view_begin_whole(check->view, check->tape->fd);
    check->size = check->view->end;
    if (check->size == 0) {
        log_file(2, "Empty (zero length) image file.\n");
        return false;
    }
    if (order.both_ways && !(check_forward(check) && check_reverse(check))) return false;
    return check_slots(check, order.blocksize);
}

void run_test(TapeCheck *check, FileHandle fd, const TestOrder &order)
{
    TapeImage *tape = check->tape;
    reset_tape(tape);
    tape->fd = fd;
    if (!check_image(check, order)) tape->format = SIMH_UNKNOWN;
    rewind_tape(tape, check->view);
    view_settle(check->view);
}

} // namespace

int32_t test_image(FileHandle fd, TapeImage *tape, const TestOrder &order, TapeSums *ret_sums)
{
    TapeCheck check = {.tape = tape, .view = &tape_view, .xml = order.xml};
    run_test(&check, fd, order);
    output_flush();
    *ret_sums = check.sums;
    return static_cast<int32_t>(tape->format);
}

bool test_both_ways(FileHandle fd, TapeSums *ret_sums)
{
    TapeImage tape = {};
    tape.fd = fd;
    reset_tape(&tape);
    TapeCheck check = {.tape = &tape, .view = &tape_view};
    view_begin_whole(check.view, fd);
    check.size = check.view->end;
    const bool forward = check_forward(&check);
    *ret_sums = check.sums;
    return forward && (!check.view->uneven || check_reverse(&check));
}

bool test_plain_slots(FileHandle fd, TapeImage *tape, uint32_t blocksize)
{
    TapeCheck check = {.tape = tape, .view = &tape_view, .slots_are_plain = true};
    run_test(&check, fd, {.blocksize = blocksize, .both_ways = false, .xml = false});
    return is_fixed(tape) && check.slots_are_plain;
}

int32_t simh_test_image(FileHandle fd, TapeImage *tape, uint32_t blocksize, int32_t do_level_1_check, int32_t xml)
{
    log_file(3, "simh_test_image(fd=%lu, tape=%lu, blocksize=%lu, do_level_1_check=%d, xml=%d)\n", log_handle(fd),
             log_pointer(tape), log_number(blocksize), do_level_1_check, xml);
    if (tape == nullptr) {
        set_error(103, "NULL pointer");
        return SIMH_UNKNOWN;
    }
    TapeSums sums;
    return test_image(fd, tape, {.blocksize = blocksize, .both_ways = do_level_1_check != 0, .xml = xml != 0}, &sums);
}
