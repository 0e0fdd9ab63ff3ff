// Reading records in the fixed layout, and what every call leaves in the log.
#include <gtest/gtest.h>

#include "base/file.h"
#include "tape/simh.h"
#include "tests/support/capture.h"
#include "tests/tape/read_part.h"
#include "tests/tape/tape_image.h"

using namespace tests;

namespace
{

// The record ABC, odd, as it stands in the file.
const Bytes abc = {3, 0, 0, 0, 'A', 'B', 'C', 0, 3, 0, 0, 0};

// ---- the fixed layout ----------------------------------------------------------------------------------

// ABC, a mark, DEFGH, an empty slot, end of medium
Bytes slots()
{
    return joined({record_slot("ABC", 8), mark_slot(8), record_slot("DEFGHIJK", 8), empty_slot(8), end_slot(8)});
}

TEST(TapeSlots, StandAsTheLayoutSays)
{
    const Bytes first = {0xFE, 0xFF, 0xFF, 0xFF, 3,    0,    0,    0,    'A',  'B',  'C',  0,
                         3,    0,    0,    0,    0xFE, 0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(record_slot("ABC", 8), first);
}

TEST(TapeSlots, ReadForward)
{
    Tape tape(slots(), SIMH_FIXED, 8);
    EXPECT_EQ(forward(tape, 0, 3), (Part{"ABC", 1}));
    EXPECT_EQ(tape.position(), 24u);
    EXPECT_EQ(tape->record_number, 1u);
    EXPECT_EQ(forward(tape, 0, 3), (Part{"-4", 0}));
    EXPECT_EQ(tape.position(), 48u);
    EXPECT_EQ(tape->record_number, 2u);
    EXPECT_EQ(tape->file_number, 1u);
    EXPECT_EQ(forward(tape, 0, 3), (Part{"DEFGHIJK", 1}));
    EXPECT_EQ(tape.position(), 72u);
    EXPECT_EQ(forward(tape, 0, 3), (Part{"-6", 0}));
    EXPECT_EQ(tape.position(), 72u);
    EXPECT_EQ(simh_set_position(tape, 4), 0);
    EXPECT_EQ(forward(tape, 0, 3), (Part{"-2", 0}));
    EXPECT_EQ(tape.position(), 96u);
}

TEST(TapeSlots, ReadInReverse)
{
    Tape tape(slots(), SIMH_FIXED, 8);
    tape.seek(72);
    EXPECT_EQ(reverse(tape, 0, 3), (Part{"KJIHGFED", 1}));
    EXPECT_EQ(tape.position(), 52u); // behind the gap word of its slot
    EXPECT_EQ(tape->record_number, 2u);
    EXPECT_EQ(reverse(tape, 0, 3), (Part{"-4", 0}));
    EXPECT_EQ(tape.position(), 24u);
    EXPECT_EQ(tape->record_number, 1u);
    EXPECT_EQ(reverse(tape, 0, 3), (Part{"CBA", 1}));
    EXPECT_EQ(tape.position(), 4u);
    EXPECT_EQ(reverse(tape, 0, 3), (Part{"-3", 0}));
    EXPECT_EQ(forward(tape, 0, 3), (Part{"ABC", 1}));
    tape.seek(96);
    EXPECT_EQ(reverse(tape, 0, 3), (Part{"-6", 0}));
    EXPECT_EQ(tape.position(), 96u);
    tape.seek(120);
    EXPECT_EQ(reverse(tape, 0, 3), (Part{"-2", 0}));
    EXPECT_EQ(tape.position(), 120u);
    EXPECT_EQ(tape->record_number, 5u);
}

TEST(TapeSlots, PartsAndStop)
{
    Tape tape(slots(), SIMH_FIXED, 8);
    tape.seek(48);
    EXPECT_EQ(forward(tape, 3, 1), (Part{"DEF", 0}));
    EXPECT_EQ(forward(tape, 3, 0), (Part{"GHI", 0}));
    EXPECT_EQ(simh_stop(tape), 0);
    EXPECT_EQ(tape.position(), 72u);
    EXPECT_EQ(tape->record_number, 3u);
    EXPECT_EQ(reverse(tape, 3, 1), (Part{"KJI", 0}));
    EXPECT_EQ(simh_stop(tape), 0);
    EXPECT_EQ(tape.position(), 52u);
    EXPECT_EQ(tape->record_number, 2u);
}

TEST(TapeSlots, ShortSlotsEndTheTape)
{
    Tape tape(record_slot("ABC", 8), SIMH_FIXED, 8);
    tape.seek(24);
    EXPECT_EQ(forward(tape, 0, 3), (Part{"-5", 0}));
    Tape half_head(joined({record_slot("ABC", 8), gap_words(1), {3, 0}}), SIMH_FIXED, 8);
    half_head.seek(24);
    EXPECT_EQ(forward(half_head, 0, 3), (Part{"-5", 0}));
    EXPECT_EQ(half_head.position(), 24u);
    half_head.seek(48);
    EXPECT_EQ(reverse(half_head, 0, 3), (Part{"-5", 0}));
    EXPECT_EQ(half_head.position(), 48u);
}

TEST(TapeSlots, BitsThatNoLengthHasMakeABadSlot)
{
    for (uint32_t bit = 24; bit <= 30; bit++) {
        Tape tape(joined({gap_words(1), little_word(3 | 1u << bit), bytes_of("ABC"), Bytes(13)}), SIMH_FIXED, 8);
        EXPECT_EQ(tape.read(), "-6");
        tape.seek(24);
        EXPECT_EQ(tape.read_back(), "-6");
        EXPECT_EQ(tape.position(), 24u);
        EXPECT_EQ(tape->record_number, 1u);
    }
}

TEST(TapeSlots, KeepsHighBitOfSlotLength)
{
    Tape tape(joined({gap_words(1), little_word(0x80000003), bytes_of("ABC"), Bytes(13)}), SIMH_FIXED, 8);
    EXPECT_EQ(simh_position_tape(tape, 1), INT32_MIN + 3);
    EXPECT_EQ(tape->state, 0u);
    EXPECT_EQ(tape.position(), 0u);
}

TEST(TapeSlots, Hazard_L1_LengthWithBit31BeginsNoTransfer)
{
    Tape tape(joined({gap_words(1), little_word(0x80FFFFFF), Bytes(40)}), SIMH_FIXED, 8);
    const std::string result = std::to_string(static_cast<int32_t>(0x80FFFFFF));
    EXPECT_EQ(forward(tape, 10, 1), (Part{result, 0}));
    EXPECT_EQ(tape->state, 0u);
    tape.seek(24);
    EXPECT_EQ(reverse(tape, 10, 1), (Part{result, 0}));
    EXPECT_EQ(tape.position(), 24u);
}

TEST(TapeSlots, Hazard_L2_LengthLargerThanItsSlotStaysInTheBufferAndTheFile)
{
    const Bytes image = joined({gap_words(1), little_word(30), bytes_of("ABCD"), Bytes(12, 'x'), record_slot("DE", 8)});
    Tape tape(image, SIMH_FIXED, 8);
    EXPECT_EQ(forward(tape, 6, 3), (Part{"ABCDxx", 0}));
    EXPECT_EQ(tape.position(), 24u);
    EXPECT_EQ(forward(tape, 10, 3), (Part{"DE", 1}));
    simh_rewind(tape);
    EXPECT_EQ(forward(tape, 0, 3).data.size(), 30u);
    Tape hostile(joined({gap_words(1), little_word(0xFFFFFF), bytes_of("ABCD"), Bytes(12)}), SIMH_FIXED, 8);
    EXPECT_EQ(forward(hostile, 100, 3), (Part{"-5", 0}));
    EXPECT_EQ(hostile.position(), 0u);
}

TEST(TapeSlots, KeepsRecordNumberBehindEndOfMedium)
{
    Tape tape(slots(), SIMH_FIXED, 8);
    tape.seek(96);
    EXPECT_EQ(tape.read(), "-2");
    EXPECT_EQ(tape->record_number, 5u);
    EXPECT_EQ(tape.position(), 96u);
    EXPECT_EQ(tape.read(), "-2");
    EXPECT_EQ(tape->record_number, 5u);
}

TEST(TapeSlots, SlotOfLengthZeroDeliversNothing)
{
    Tape tape(joined({gap_words(1), little_word(0), Bytes(16), record_slot("AB", 8)}), SIMH_FIXED, 8);
    EXPECT_EQ(forward(tape, 0, 3), (Part{"", 1}));
    EXPECT_EQ(tape.position(), 24u);
}

// ---- the log -------------------------------------------------------------------------------------------

std::string without_numbers_of_addresses(std::string text, const void *address)
{
    const std::string number = std::to_string(static_cast<unsigned long>(reinterpret_cast<uintptr_t>(address)));
    for (size_t at = text.find(number); at != std::string::npos; at = text.find(number)) {
        text.replace(at, number.size(), "T");
    }
    return text;
}

TEST(TapeLog, EachCallAndItsPositionIsTraced)
{
    Tape tape(joined({abc, tape_record("DE")}));
    char *none = nullptr;
    LogCapture log(3);
    simh_reset(tape);
    simh_rewind(tape);
    simh_move_forward(tape, 1);
    simh_position_tape(tape, 1);
    simh_read_record_forward(tape, none, 0, 2, nullptr);
    simh_move_reverse(tape);
    simh_space_records(tape, -1);
    simh_space_files(tape, -2);
    simh_set_position(tape, 0);
    simh_read_record_reverse(tape, none, 0, 2, nullptr);
    simh_write_record(tape, none, 0, 3);
    simh_write_erase_gap(tape, 0);
    simh_write_eom(tape);
    simh_write_tapemark(tape);
    simh_initialize(tape, 7, 1);
    simh_stop(tape);
    EXPECT_EQ(without_numbers_of_addresses(log.text(), &tape.image),
              "Trace: simh_reset(tape=T)\n"
              "Trace: simh_rewind(tape=T)\n"
              "Trace: file position=0\n"
              "Trace: simh_move_forward(tape=T, keep_address=1)\n"
              "Trace: file position=0\n"
              "Trace: simh_position_tape(tape=T, forward=1)\n"
              "Trace: file position=0\n"
              "Trace: simh_read_record_forward(tape=T, buffer=0, max_buffer_size=0, part=2, ret_eor=0)\n"
              "Trace: file position=4\n"
              "Trace: simh_move_reverse(tape=T)\n"
              "Trace: file position=12\n"
              "Trace: simh_space_records(tape=T, num_records=-1)\n"
              "Trace: file position=0\n"
              "Trace: simh_space_files(tape=T, num_files=-2)\n"
              "Trace: file position=0\n"
              "Trace: simh_set_position(tape=T, new_record=0)\n"
              "Trace: file position=0\n"
              "Trace: simh_read_record_reverse(tape=T, buffer=0, max_buffer_size=0, part=2, ret_eor=0)\n"
              "Trace: file position=0\n"
              "Trace: simh_write_record(tape=T, buffer=0, record_size=0, part=3)\n"
              "Trace: file position=0\n"
              "Trace: Zero size record (ignored)\n"
              "Trace: simh_write_erase_gap(tape=T, gapsize=0)\n"
              "Trace: file position=0\n"
              "Trace: simh_write_eom(tape=T)\n"
              "Trace: file position=0\n"
              "Trace: simh_write_tapemark(tape=T)\n"
              "Trace: file position=0\n"
              "Trace: simh_initialize(tape=T, num_records=7, do_format=1)\n"
              "Trace: file position=4\n"
              "Trace: simh_stop(tape=T)\n"
              "Trace: file position=0\n");
}

}
