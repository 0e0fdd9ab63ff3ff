// Spacing over records and files, and going to a record by its number.
#include <gtest/gtest.h>

#include "base/error.h"
#include "base/file.h"
#include "tape/simh.h"
#include "tests/support/capture.h"
#include "tests/tape/tape_image.h"

using namespace tests;

namespace
{

// The record ABC, odd, as it stands in the file.
const Bytes abc = {3, 0, 0, 0, 'A', 'B', 'C', 0, 3, 0, 0, 0};

// ---- spacing -------------------------------------------------------------------------------------------

// ABC DE mark FGH mark
Bytes two_files()
{
    return joined({abc, tape_record("DE"), tape_mark(), tape_record("FGH"), tape_mark()});
}

TEST(TapeSpacing, RecordsForwardAndBack)
{
    Tape tape(two_files());
    EXPECT_EQ(simh_space_records(tape, 0), 0);
    EXPECT_EQ(tape.position(), 0u);
    EXPECT_EQ(simh_space_records(tape, 2), 0);
    EXPECT_EQ(tape.position(), 22u);
    EXPECT_EQ(tape->record_number, 2u);
    EXPECT_EQ(simh_space_records(tape, -1), 0);
    EXPECT_EQ(tape.position(), 12u);
    EXPECT_EQ(tape->record_number, 1u);
    EXPECT_EQ(tape.read(), "DE");
}

TEST(TapeSpacing, RecordsEndAtAMark)
{
    Tape tape(two_files());
    EXPECT_EQ(simh_space_records(tape, 3), -4);
    EXPECT_EQ(tape.position(), 26u);
    EXPECT_EQ(tape->record_number, 2u);
    EXPECT_EQ(tape->file_number, 1u);
    EXPECT_EQ(simh_space_records(tape, -1), -4);
    EXPECT_EQ(tape.position(), 22u);
    EXPECT_EQ(simh_space_records(tape, -3), -3);
    EXPECT_EQ(tape.position(), 0u);
    EXPECT_EQ(simh_space_records(tape, -1), -3);
    EXPECT_EQ(tape.position(), 0u);
}

TEST(TapeSpacing, RecordsEndAtTheEndOfTheTape)
{
    Tape tape(joined({abc, end_of_medium()}));
    EXPECT_EQ(simh_space_records(tape, 5), -2);
    EXPECT_EQ(tape.position(), 12u);
    EXPECT_EQ(tape->record_number, 1u);
    Tape open_end(abc);
    EXPECT_EQ(simh_space_records(open_end, 5), -5);
    EXPECT_EQ(open_end.position(), 12u);
}

TEST(TapeSpacing, RecordNumberDoesNotFallBelowZero)
{
    Tape tape(two_files());
    tape.seek(22);
    EXPECT_EQ(simh_space_records(tape, -2), 0);
    EXPECT_EQ(tape.position(), 0u);
    EXPECT_EQ(tape->record_number, 0u);
}

TEST(TapeSpacing, RecordThatEndsWhereNoFileCanReturnsToTheStart)
{
    Tape tape({});
    tape.file.extend(0xFFFFFF00);
    tape.seek(0xFFFFFEE0);
    EXPECT_EQ(tape.write("AB"), 0);
    const Bytes length = little_word(0xFFFF);
    EXPECT_EQ(file_write(tape->fd, length.data(), 4), 4);
    tape.seek(0xFFFFFEE0);
    EXPECT_EQ(simh_space_records(tape, 2), -5);
    EXPECT_EQ(tape.position(), 0xFFFFFEE0);
}

TEST(TapeSpacing, FilesForwardAndBack)
{
    Tape tape(two_files());
    EXPECT_EQ(simh_space_files(tape, 0), 0);
    EXPECT_EQ(simh_space_files(tape, 1), 0);
    EXPECT_EQ(tape.position(), 26u);
    EXPECT_EQ(tape->record_number, 2u);
    EXPECT_EQ(tape->file_number, 1u);
    EXPECT_EQ(tape.read(), "FGH");
    EXPECT_EQ(simh_space_files(tape, -1), 0);
    EXPECT_EQ(tape.position(), 22u);
    EXPECT_EQ(tape->file_number, 0u);
    EXPECT_EQ(tape->record_number, 2u);
    simh_rewind(tape);
    EXPECT_EQ(simh_space_files(tape, 2), 0);
    EXPECT_EQ(tape.position(), 42u);
}

TEST(TapeSpacing, FilesThatAreNotThereLeaveTheTapeWhereItWas)
{
    Tape tape(two_files());
    EXPECT_EQ(simh_space_records(tape, 1), 0);
    EXPECT_EQ(simh_space_files(tape, 3), -5);
    EXPECT_EQ(tape.position(), 12u);
    EXPECT_EQ(tape->record_number, 1u);
    EXPECT_EQ(tape->file_number, 0u);
    EXPECT_EQ(simh_space_files(tape, -1), -3);
    EXPECT_EQ(tape.position(), 12u);
    EXPECT_EQ(tape->record_number, 1u);
}

TEST(TapeSpacing, RunawayKeepsThePositionOfFiles)
{
    Tape tape(joined({abc, gap_words(10), tape_mark()}));
    tape->unit_size = 4;
    tape->runaway_limit = 5;
    EXPECT_EQ(simh_space_files(tape, 1), -7);
    EXPECT_EQ(tape.position(), 12u + 20u);
    EXPECT_EQ(tape->record_number, 0u);
}

TEST(TapeSpacing, Hazard_L16_LargestNumbersEndWithTheTape)
{
    Tape tape(two_files());
    EXPECT_EQ(simh_space_records(tape, INT32_MIN), -3);
    EXPECT_EQ(simh_space_files(tape, INT32_MIN), -3);
    EXPECT_EQ(simh_space_files(tape, INT32_MAX), -5);
    EXPECT_EQ(simh_set_position(tape, UINT32_MAX), -5);
    EXPECT_EQ(tape.position(), 0u);
    tape->record_number = UINT32_MAX;
    EXPECT_EQ(simh_set_position(tape, 0), -3);
    EXPECT_EQ(tape.position(), 0u);
    EXPECT_EQ(tape->record_number, UINT32_MAX);
}

// ---- positions -----------------------------------------------------------------------------------------

TEST(TapePosition, CountsRecordsAcrossMarksInTheVariableLayout)
{
    Tape tape(two_files());
    EXPECT_EQ(simh_set_position(tape, 2), 0);
    EXPECT_EQ(tape.read(), "-4");
    EXPECT_EQ(simh_set_position(tape, 3), 0);
    EXPECT_EQ(tape.position(), 38u);
    EXPECT_EQ(tape->file_number, 1u);
    EXPECT_EQ(simh_set_position(tape, 1), 0);
    EXPECT_EQ(tape.position(), 12u);
    EXPECT_EQ(tape.read(), "DE");
    EXPECT_EQ(simh_set_position(tape, 2), 0);
    EXPECT_EQ(tape.position(), 22u);
}

TEST(TapePosition, RecordThatIsNotThereLeavesTheTapeWhereItWas)
{
    Tape tape(two_files());
    EXPECT_EQ(simh_set_position(tape, 1), 0);
    EXPECT_EQ(simh_set_position(tape, 9), -5);
    EXPECT_EQ(tape.position(), 12u);
    EXPECT_EQ(tape->record_number, 1u);
    EXPECT_EQ(tape->file_number, 0u);
    EXPECT_EQ(tape.read(), "DE");
}

TEST(TapePosition, RunawayIsSteppedOver)
{
    Tape tape(joined({gap_words(10), abc, gap_words(10), tape_record("DE")}));
    tape->unit_size = 4;
    tape->runaway_limit = 3;
    EXPECT_EQ(simh_set_position(tape, 2), 0);
    EXPECT_EQ(tape.position(), 102u);
}

TEST(TapePosition, FixedLayoutGoesToTheSlot)
{
    Tape tape(joined({record_slot("ABC", 8), mark_slot(8), record_slot("DEFG", 8), end_slot(8)}), SIMH_FIXED, 8);
    EXPECT_EQ(simh_set_position(tape, 2), 0);
    EXPECT_EQ(tape.position(), 48u);
    EXPECT_EQ(tape->record_number, 2u);
    EXPECT_EQ(tape.read(), "DEFG");
    EXPECT_EQ(simh_set_position(tape, 4), 0);
    EXPECT_EQ(tape.position(), 96u);
    EXPECT_EQ(simh_set_position(tape, 0), 0);
    EXPECT_EQ(tape.read(), "ABC");
    LogCapture log(2);
    EXPECT_EQ(simh_set_position(tape, 5), -1);
    EXPECT_EQ(tape.position(), 24u);
    EXPECT_EQ(log.text(), "Info:  max record number exceeded\n");
}

TEST(TapePosition, FixedLayoutTakesTheRecordNumberFromThePosition)
{
    Tape tape(joined({record_slot("ABC", 8), record_slot("DE", 8), end_slot(8)}), SIMH_FIXED, 8);
    tape.seek(24);
    tape->record_number = 77;
    EXPECT_EQ(tape.read(), "DE");
    EXPECT_EQ(tape->record_number, 2u);
    tape.seek(47);
    EXPECT_EQ(tape.read(), "DE");
}

TEST(TapePosition, KeepsSlotOfSpacing)
{
    Tape tape(joined({record_slot("ABCD", 8), record_slot("EF", 8), mark_slot(8), end_slot(8)}), SIMH_FIXED, 8);
    EXPECT_EQ(simh_space_records(tape, 1), 0);
    EXPECT_EQ(tape.position(), 16u);
    EXPECT_EQ(tape->record_number, 1u);
    EXPECT_EQ(tape.read(), "ABCD");
    EXPECT_EQ(simh_space_records(tape, 1), 0);
    EXPECT_EQ(tape.position(), 38u);
    EXPECT_EQ(simh_space_records(tape, 1), -4);
    EXPECT_EQ(tape.position(), 52u);
    EXPECT_EQ(simh_space_records(tape, -2), -4);
    EXPECT_EQ(simh_space_records(tape, -2), 0);
    EXPECT_EQ(tape.position(), 4u);
    EXPECT_EQ(tape->record_number, 0u);
}

TEST(TapePosition, Hazard_A3_SlotBehindFourGigabytesIsRefused)
{
    Tape tape(record_slot("ABC", 8), SIMH_FIXED, 8);
    tape->num_records = UINT32_MAX;
    tape->blocksize = 0x10000000;
    EXPECT_EQ(simh_set_position(tape, 16), -1);
    EXPECT_EQ(tape.position(), 0u);
    EXPECT_EQ(error_text(), "File seek failed");
}

TEST(TapePosition, Hazard_L17_LargestBlockSizesDivideByNoZero)
{
    for (const uint32_t blocksize : {0xFFFFFFF0u, 0xFFFFFFFFu, 0xFFFFFFEFu}) {
        Tape tape(record_slot("ABC", 8), SIMH_FIXED, 8);
        tape->blocksize = blocksize;
        tape.seek(24);
        EXPECT_EQ(simh_move_forward(tape, 0), -5);
        EXPECT_EQ(tape->record_number, 0u);
        const bool ends_in_a_file = blocksize == 0xFFFFFFEF;
        EXPECT_EQ(tape.read(), ends_in_a_file ? "ABC" : "-5");
        EXPECT_EQ(tape.position(), ends_in_a_file ? 0xFFFFFFFF : 24u);
    }
}

TEST(TapePosition, RewindGoesToTheBegin)
{
    Tape tape(two_files());
    EXPECT_EQ(simh_space_files(tape, 1), 0);
    simh_rewind(tape);
    EXPECT_EQ(tape.position(), 0u);
    EXPECT_EQ(tape->record_number | tape->file_number, 0u);
}

TEST(TapePosition, Hazard_A5_PositionOfAllOnesIsNotTheEndOfTheFile)
{
    Tape tape(abc);
    tape.seek(0xFFFFFFFE);
    EXPECT_EQ(simh_move_reverse(tape), -5);
    EXPECT_EQ(tape.position(), 0xFFFFFFFAu);
    tape.seek(0xFFFFFFFE);
    EXPECT_EQ(simh_move_forward(tape, 1), -5);
    EXPECT_EQ(tape.position(), 0xFFFFFFFEu);
    EXPECT_EQ(tape.write("AB"), -1);
    EXPECT_EQ(tape.bytes(), abc);
}

TEST(TapePosition, WhatHasNoTapeOrNoFileIsAnError)
{
    forget_error();
    EXPECT_EQ(simh_move_forward(nullptr, 0), -1);
    EXPECT_EQ(error_text(), "Invalid parameter (NULL pointer)");
    EXPECT_EQ(simh_move_reverse(nullptr), -1);
    EXPECT_EQ(simh_position_tape(nullptr, 1), -1);
    EXPECT_EQ(simh_space_records(nullptr, 1), -1);
    EXPECT_EQ(simh_space_files(nullptr, 1), -1);
    EXPECT_EQ(simh_set_position(nullptr, 1), -1);
    EXPECT_EQ(simh_stop(nullptr), -1);
    EXPECT_EQ(simh_initialize(nullptr, 1, 0), -1);
    EXPECT_EQ(simh_write_erase_gap(nullptr, 1), -1);
    EXPECT_EQ(simh_write_record(nullptr, "A", 1, 3), -1);
    simh_reset(nullptr);
    simh_rewind(nullptr);
    simh_write_eom(nullptr);
    simh_write_tapemark(nullptr);
    TapeImage none{};
    forget_error();
    EXPECT_EQ(simh_move_forward(&none, 0), -1);
    EXPECT_EQ(error_text(), "File seek failed");
    TapeImage nowhere{};
    nowhere.fd = file_void();
    EXPECT_EQ(simh_move_forward(&nowhere, 0), -5);
    EXPECT_EQ(simh_move_reverse(&nowhere), -3);
    EXPECT_EQ(simh_write_record(&nowhere, "A", 1, 3), -1);
}

}
