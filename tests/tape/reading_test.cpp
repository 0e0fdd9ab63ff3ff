// Reading records, whole and in parts, in both directions and both layouts.
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

// ---- whole records -------------------------------------------------------------------------------------

TEST(TapeReading, WholeRecordForward)
{
    Tape tape(joined({abc, tape_record("DE")}));
    EXPECT_EQ(forward(tape, 0, 3), (Part{"ABC", 1}));
    EXPECT_EQ(tape.position(), 12u);
    EXPECT_EQ(tape->record_number, 1u);
    EXPECT_EQ(tape->state, 0u);
    EXPECT_EQ(forward(tape, 100, 3), (Part{"DE", 1}));
    EXPECT_EQ(tape.position(), 22u);
    EXPECT_EQ(forward(tape, 100, 3), (Part{"-5", 0}));
    EXPECT_EQ(tape->record_number, 2u);
}

TEST(TapeReading, WholeRecordInReverseDeliversTheLastByteFirst)
{
    Tape tape(joined({abc, tape_record("DEFG")}));
    tape.seek(24);
    tape->record_number = 2;
    EXPECT_EQ(reverse(tape, 0, 3), (Part{"GFED", 1}));
    EXPECT_EQ(tape.position(), 12u);
    EXPECT_EQ(tape->record_number, 1u);
    EXPECT_EQ(reverse(tape, 3, 3), (Part{"CBA", 1}));
    EXPECT_EQ(tape.position(), 0u);
    EXPECT_EQ(tape->record_number, 0u);
    EXPECT_EQ(reverse(tape, 3, 3), (Part{"-3", 0}));
}

TEST(TapeReading, RecordNumberDoesNotFallBelowZero)
{
    Tape tape(abc);
    tape.seek(12);
    EXPECT_EQ(reverse(tape, 0, 3), (Part{"CBA", 1}));
    EXPECT_EQ(tape->record_number, 0u);
}

TEST(TapeReading, ShortBufferSkipsTheRestOfTheRecord)
{
    Tape tape(joined({tape_record("ABCDEFG"), abc}));
    EXPECT_EQ(forward(tape, 2, 3), (Part{"AB", 0}));
    EXPECT_EQ(tape.position(), 16u);
    EXPECT_EQ(reverse(tape, 2, 3), (Part{"GF", 0}));
    EXPECT_EQ(tape.position(), 0u);
}

TEST(TapeReading, EndOfRecordMayStayUnasked)
{
    Tape tape(abc);
    char buffer[8] = {};
    EXPECT_EQ(simh_read_record_forward(tape, buffer, sizeof buffer, 3, nullptr), 3);
    EXPECT_EQ(std::string(buffer), "ABC");
}

TEST(TapeReading, MarksAndEndsComeBackAsResults)
{
    Tape tape(joined({tape_mark(), gap_words(1), abc, end_of_medium()}));
    EXPECT_EQ(tape.read(), "-4");
    EXPECT_EQ(tape->file_number, 1u);
    EXPECT_EQ(tape.read(), "ABC");
    EXPECT_EQ(tape.read(), "-2");
    EXPECT_EQ(tape.position(), 20u);
    EXPECT_EQ(tape.read_back(), "CBA");
    EXPECT_EQ(tape.read_back(), "-4");
    EXPECT_EQ(tape->file_number, 0u);
    EXPECT_EQ(tape.read_back(), "-3");
}

TEST(TapeReading, RunawayIsAResultToo)
{
    Tape tape(joined({gap_words(4), abc}));
    tape->unit_size = 1;
    tape->runaway_limit = 8;
    EXPECT_EQ(tape.read(), "-7");
    EXPECT_EQ(tape.position(), 8u);
    EXPECT_EQ(tape.read(), "-7");
    EXPECT_EQ(tape.read(), "ABC");
}

TEST(TapeReading, RecordThatEndsTooEarlyLeavesTheTapeWhereItWas)
{
    Tape tape(joined({abc, little_word(6), bytes_of("DEF")}));
    EXPECT_EQ(tape.read(), "ABC");
    EXPECT_EQ(forward(tape, 0, 3), (Part{"-5", 0}));
    EXPECT_EQ(tape.position(), 12u);
    EXPECT_EQ(tape->state, 0u);
    EXPECT_EQ(tape->record_number, 1u);
    EXPECT_EQ(forward(tape, 3, 3), (Part{"DEF", 0})); // a buffer that stays inside what is there
    EXPECT_EQ(tape.position(), 12u + 14u);
}

TEST(TapeReading, LastWordOfARecordIsNotLookedAt)
{
    Tape tape(joined({little_word(2), bytes_of("AB"), little_word(77), abc}));
    EXPECT_EQ(tape.read(), "AB");
    EXPECT_EQ(tape.read(), "ABC");
    Tape without(joined({little_word(2), bytes_of("AB")}));
    EXPECT_EQ(without.read(), "AB");
    EXPECT_EQ(without.position(), 10u);
}

TEST(TapeReading, Hazard_L20_LargestRecordIsReadAndReversedInPlace)
{
    const uint32_t length = SIMH_MAX_RECORD;
    const std::string data = some_data(length);
    Tape tape(tape_record(data));
    std::string buffer(length, '\0');
    int32_t complete = 0;
    EXPECT_EQ(simh_read_record_forward(tape, buffer.data(), length, 3, &complete), static_cast<int32_t>(length));
    EXPECT_TRUE(buffer == data);
    EXPECT_EQ(simh_read_record_reverse(tape, buffer.data(), length, 3, &complete), static_cast<int32_t>(length));
    EXPECT_EQ(complete, 1);
    EXPECT_TRUE(std::equal(data.begin(), data.end(), buffer.rbegin()));
    EXPECT_EQ(tape.position(), 0u);
}

// ---- parts ---------------------------------------------------------------------------------------------

TEST(TapeParts, ForwardGoesOnWhereThePartBeforeEnded)
{
    Tape tape(joined({tape_record("ABCDEFG"), abc}));
    EXPECT_EQ(forward(tape, 3, 1), (Part{"ABC", 0}));
    EXPECT_EQ(tape->state, 2u);
    EXPECT_EQ(tape->record_start, 4u);
    EXPECT_EQ(tape->record_size, 7u);
    EXPECT_EQ(tape->record_done, 3u);
    EXPECT_EQ(tape.position(), 7u);
    EXPECT_EQ(forward(tape, 3, 0), (Part{"DEF", 0}));
    EXPECT_EQ(forward(tape, 3, 0), (Part{"G", 1})); // the record is complete, so it is left
    EXPECT_EQ(tape->state, 0u);
    EXPECT_EQ(tape.position(), 16u);
    EXPECT_EQ(tape->record_number, 1u);
    EXPECT_EQ(forward(tape, 3, 1), (Part{"ABC", 1}));
}

TEST(TapeParts, ReverseBeginsAtTheEndOfTheRecord)
{
    Tape tape(tape_record("ABCDEFG"));
    tape.seek(16);
    tape->record_number = 4;
    EXPECT_EQ(reverse(tape, 3, 1), (Part{"GFE", 0}));
    EXPECT_EQ(tape->state, 3u);
    EXPECT_EQ(reverse(tape, 3, 0), (Part{"DCB", 0}));
    EXPECT_EQ(reverse(tape, 3, 0), (Part{"A", 1}));
    EXPECT_EQ(tape.position(), 0u);
    EXPECT_EQ(tape->record_number, 3u);
}

TEST(TapeParts, LastPartLeavesTheRecord)
{
    Tape tape(joined({tape_record("ABCDEFG"), abc}));
    EXPECT_EQ(forward(tape, 2, 1), (Part{"AB", 0}));
    EXPECT_EQ(forward(tape, 2, 2), (Part{"CD", 0}));
    EXPECT_EQ(tape.position(), 16u);
    EXPECT_EQ(reverse(tape, 2, 1), (Part{"GF", 0}));
    EXPECT_EQ(reverse(tape, 2, 2), (Part{"ED", 0}));
    EXPECT_EQ(tape.position(), 0u);
}

TEST(TapeParts, Hazard_L3_NoLimitForTheFirstPartIsNothingForALaterOne)
{
    Tape tape(tape_record("ABCDEFG"));
    EXPECT_EQ(forward(tape, 0, 1), (Part{"ABCDEFG", 1}));
    simh_rewind(tape);
    EXPECT_EQ(forward(tape, 2, 1), (Part{"AB", 0}));
    EXPECT_EQ(forward(tape, 0, 0), (Part{"", 0}));
    EXPECT_EQ(forward(tape, 0, 2), (Part{"", 0}));
    EXPECT_EQ(tape.position(), 16u);
}

TEST(TapeParts, LaterPartWithoutARecordIsRefused)
{
    Tape tape(joined({abc, abc}));
    EXPECT_EQ(forward(tape, 0, 3), (Part{"ABC", 1}));
    forget_error();
    EXPECT_EQ(forward(tape, 3, 0), (Part{"-1", 0}));
    EXPECT_EQ(error_text(), "Invalid parameter (no record is being read)");
    EXPECT_EQ(reverse(tape, 3, 2), (Part{"-1", 0}));
    EXPECT_EQ(tape.position(), 12u);
}

TEST(TapeParts, FirstPartInTheMiddleOfARecordLeavesIt)
{
    Tape tape(joined({tape_record("ABCDEFG"), abc}));
    EXPECT_EQ(forward(tape, 2, 1), (Part{"AB", 0}));
    EXPECT_EQ(forward(tape, 9, 1), (Part{"ABC", 1}));
    EXPECT_EQ(tape->record_number, 2u);
    EXPECT_EQ(reverse(tape, 2, 1), (Part{"CB", 0}));
    EXPECT_EQ(forward(tape, 2, 1), (Part{"AB", 0})); // in front of ABC again
    EXPECT_EQ(reverse(tape, 2, 1), (Part{"CB", 0})); // behind it
    EXPECT_EQ(simh_stop(tape), 0);
    EXPECT_EQ(tape.position(), 16u);
}

TEST(TapeParts, RecordFoundInOneDirectionMayBeReadInTheOther)
{
    Tape tape(joined({tape_record("ABCDEFG"), abc}));
    tape.seek(16);
    EXPECT_EQ(simh_position_tape(tape, 0), 7);
    EXPECT_EQ(forward(tape, 2, 1), (Part{"AB", 0}));
    EXPECT_EQ(tape->state, 2u);
    EXPECT_EQ(simh_stop(tape), 0);
    EXPECT_EQ(tape.position(), 16u);
    EXPECT_EQ(simh_position_tape(tape, 1), 3);
    EXPECT_EQ(reverse(tape, 9, 3), (Part{"CBA", 1}));
    EXPECT_EQ(tape.position(), 16u);
}

TEST(TapeParts, BufferMustBeThere)
{
    Tape tape(abc);
    int32_t complete = 0;
    forget_error();
    EXPECT_EQ(simh_read_record_forward(tape, nullptr, 10, 3, &complete), -1);
    EXPECT_EQ(error_text(), "Invalid parameter (NULL pointer)");
    EXPECT_EQ(simh_read_record_reverse(tape, nullptr, 0, 1, &complete), -1);
    EXPECT_EQ(tape.position(), 0u);
    EXPECT_EQ(tape->state, 0u);
}

TEST(TapeParts, FailedPartEndsTheTransferAtItsStart)
{
    Tape tape(joined({little_word(10), bytes_of("ABCD")}));
    EXPECT_EQ(forward(tape, 3, 1), (Part{"ABC", 0}));
    EXPECT_EQ(forward(tape, 3, 0), (Part{"-5", 0}));
    EXPECT_EQ(tape.position(), 7u);
    EXPECT_EQ(tape->state, 0u);
}

// ---- positioning ---------------------------------------------------------------------------------------

TEST(TapePositioning, StandsAtTheFirstByteOfData)
{
    Tape tape(joined({abc, gap_words(1), tape_record("DE")}));
    tape.seek(12);
    EXPECT_EQ(simh_position_tape(tape, 1), 2);
    EXPECT_EQ(tape.position(), 20u);
    EXPECT_EQ(tape->state, 2u);
    EXPECT_EQ(tape->record_start, 20u);
    EXPECT_EQ(tape->record_size, 2u);
    EXPECT_EQ(forward(tape, 0, 3), (Part{"DE", 1}));
    EXPECT_EQ(simh_position_tape(tape, 0), 2);
    EXPECT_EQ(tape->state, 3u);
    EXPECT_EQ(tape.position(), 20u);
    EXPECT_EQ(reverse(tape, 0, 3), (Part{"ED", 1}));
    EXPECT_EQ(simh_position_tape(tape, 0), 3);
    EXPECT_EQ(tape.position(), 4u);
    EXPECT_EQ(forward(tape, 0, 3), (Part{"ABC", 1})); // a record found in reverse, read forward
    EXPECT_EQ(tape.position(), 12u);
}

TEST(TapePositioning, EndsTheRecordInProgress)
{
    Tape tape(joined({abc, tape_record("DE"), tape_mark()}));
    EXPECT_EQ(simh_position_tape(tape, 1), 3);
    EXPECT_EQ(simh_position_tape(tape, 1), 2);
    EXPECT_EQ(tape->record_number, 1u);
    EXPECT_EQ(simh_position_tape(tape, 1), -4);
    EXPECT_EQ(tape->state, 0u);
    EXPECT_EQ(tape.position(), 26u);
}

// ---- stopping ------------------------------------------------------------------------------------------

TEST(TapeStop, EndsAReadAsIfItHadGoneOn)
{
    Tape tape(joined({tape_record("ABCDEFG"), abc}));
    EXPECT_EQ(simh_stop(tape), 0);
    EXPECT_EQ(forward(tape, 3, 1), (Part{"ABC", 0}));
    LogCapture log(2);
    EXPECT_EQ(simh_stop(tape), 0);
    EXPECT_EQ(tape.position(), 16u);
    EXPECT_EQ(tape->state, 0u);
    EXPECT_EQ(tape->record_number, 1u);
    EXPECT_EQ(reverse(tape, 3, 1), (Part{"GFE", 0}));
    EXPECT_EQ(simh_stop(tape), 0);
    EXPECT_EQ(tape.position(), 0u);
    EXPECT_EQ(tape->record_number, 0u);
    EXPECT_EQ(log.text(), "Info:  terminating current tape record forward read operation.\n"
                          "Info:  terminating current tape record reverse read operation\n");
}

TEST(TapeStop, EveryMoveStopsFirst)
{
    const Bytes image = joined({tape_record("ABCDEFG"), abc, tape_record("DE")});
    Tape tape(image);
    const auto begin_to_read = [&tape] {
        simh_rewind(tape);
        EXPECT_EQ(forward(tape, 3, 1), (Part{"ABC", 0}));
    };
    begin_to_read();
    EXPECT_EQ(simh_move_forward(tape, 0), 3);
    EXPECT_EQ(tape.position(), 16u);
    begin_to_read();
    EXPECT_EQ(simh_move_reverse(tape), 7);
    begin_to_read();
    EXPECT_EQ(simh_space_records(tape, 1), 0);
    EXPECT_EQ(tape.position(), 28u);
    begin_to_read();
    EXPECT_EQ(simh_space_files(tape, -1), -3);
    EXPECT_EQ(tape.position(), 16u);
    begin_to_read();
    EXPECT_EQ(simh_set_position(tape, 2), 0);
    EXPECT_EQ(tape.position(), 28u);
    begin_to_read();
    simh_rewind(tape);
    EXPECT_EQ(tape->state, 0u);
    EXPECT_EQ(tape.position(), 0u);
    begin_to_read();
    EXPECT_EQ(simh_write_erase_gap(tape, 0), 0);
    EXPECT_EQ(tape.position(), 16u);
    EXPECT_EQ(tape.bytes(), image);
    begin_to_read();
    simh_write_tapemark(tape);
    EXPECT_EQ(contents(tape), "ABCDEFG -4 -5"); // the mark stands over the length of ABC, whose data now are one
}

}
