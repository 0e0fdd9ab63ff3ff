// Writing records, whole and in parts, tape marks, the end of the medium, and new tapes.
#include <gtest/gtest.h>

#include "base/file.h"
#include "base/log.h"
#include "tape/simh.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/tape/tape_image.h"

using namespace tests;

namespace
{

// The record ABC, odd, as it stands in the file.
const Bytes abc = {3, 0, 0, 0, 'A', 'B', 'C', 0, 3, 0, 0, 0};

// ---- the variable layout -------------------------------------------------------------------------------

TEST(TapeWriting, WholeRecords)
{
    Tape tape({});
    EXPECT_EQ(tape.write("ABC"), 0);
    EXPECT_EQ(tape.bytes(), abc);
    EXPECT_EQ(tape.position(), 12u);
    EXPECT_EQ(tape->record_number, 1u);
    EXPECT_EQ(tape->state, 0u);
    EXPECT_EQ(tape.write("DE"), 0);
    EXPECT_EQ(tape.bytes(), joined({abc, {2, 0, 0, 0, 'D', 'E', 2, 0, 0, 0}}));
    EXPECT_EQ(tape->num_records, 0u);
}

TEST(TapeWriting, WritesOverWhatStandsThere)
{
    Tape tape(joined({abc, tape_record("DEFG"), abc}));
    tape.seek(12);
    EXPECT_EQ(tape.write("HIJK"), 0);
    EXPECT_EQ(contents(tape), "ABC HIJK ABC -5");
}

TEST(TapeWriting, RecordOfNothingIsLeftOut)
{
    Tape tape({});
    LogCapture log(3);
    EXPECT_EQ(simh_write_record(tape, nullptr, 0, 3), 0);
    EXPECT_TRUE(tape.bytes().empty());
    EXPECT_EQ(tape->record_number, 0u);
    EXPECT_TRUE(contains(log.text(), "Trace: Zero size record (ignored)\n"));
}

TEST(TapeWriting, LargestRecord)
{
    const std::string data = some_data(SIMH_MAX_RECORD);
    Tape tape({});
    EXPECT_EQ(tape.write(data), 0);
    EXPECT_TRUE(tape.bytes() == tape_record(data));
    EXPECT_EQ(tape.write(data + "A"), -1);
    EXPECT_EQ(error_text(), "Invalid parameter (record too long)");
    EXPECT_EQ(tape.position(), data.size() + 9);
}

TEST(TapeWriting, DataMustBeThere)
{
    Tape tape({});
    EXPECT_EQ(simh_write_record(tape, nullptr, 1, 3), -1);
    EXPECT_EQ(error_text(), "Invalid parameter (NULL pointer)");
    EXPECT_TRUE(tape.bytes().empty());
}

TEST(TapeWriting, TapeMark)
{
    Tape tape(abc);
    tape.seek(12);
    simh_write_tapemark(tape);
    EXPECT_EQ(tape.bytes(), joined({abc, {0, 0, 0, 0}}));
    EXPECT_EQ(tape.position(), 16u);
    EXPECT_EQ(tape->file_number, 1u);
    EXPECT_EQ(tape->record_number, 0u);
}

TEST(TapeWriting, EndOfMediumIsOverwrittenByWhatComesNext)
{
    Tape tape(abc);
    tape.seek(12);
    simh_write_eom(tape);
    EXPECT_EQ(tape.bytes(), joined({abc, {0xFF, 0xFF, 0xFF, 0xFF}}));
    EXPECT_EQ(tape.position(), 12u);
    EXPECT_EQ(tape.read(), "-2");
    EXPECT_EQ(tape.write("DE"), 0);
    EXPECT_EQ(contents(tape), "ABC DE -5");
}

TEST(TapeWriting, UnknownFormatWritesAsVariable)
{
    Tape tape({}, SIMH_UNKNOWN);
    EXPECT_EQ(tape.write("ABC"), 0);
    EXPECT_EQ(tape.bytes(), abc);
}

// ---- parts ---------------------------------------------------------------------------------------------

TEST(TapeWritingParts, LengthIsCorrectedAtTheEnd)
{
    Tape tape(abc);
    tape.seek(12);
    EXPECT_EQ(tape.write("DE", 1), 0);
    EXPECT_EQ(tape->state, 1u);
    EXPECT_EQ(tape->record_start, 12u);
    EXPECT_EQ(tape->record_size, 2u);
    EXPECT_EQ(tape.position(), 18u);
    EXPECT_EQ(tape.write("FGH", 0), 0);
    EXPECT_EQ(tape->record_size, 5u);
    EXPECT_EQ(tape.write("IJ", 2), 0);
    EXPECT_EQ(tape->state, 0u);
    EXPECT_EQ(tape->record_number, 1u);
    EXPECT_EQ(tape.bytes(), joined({abc, tape_record("DEFGHIJ")}));
    EXPECT_EQ(tape.position(), 28u);
}

TEST(TapeWritingParts, LastPartOfNothing)
{
    Tape tape({});
    EXPECT_EQ(tape.write("ABC", 1), 0);
    EXPECT_EQ(simh_write_record(tape, nullptr, 0, 2), 0);
    EXPECT_EQ(tape.bytes(), abc);
}

TEST(TapeWritingParts, FirstPartOfNothing)
{
    Tape tape({});
    EXPECT_EQ(simh_write_record(tape, nullptr, 0, 1), 0);
    EXPECT_EQ(tape.write("A", 0), 0);
    EXPECT_EQ(tape.write("BC", 2), 0);
    EXPECT_EQ(tape.bytes(), abc);
    EXPECT_EQ(simh_write_record(tape, nullptr, 0, 1), 0);
    EXPECT_EQ(simh_write_record(tape, nullptr, 0, 2), 0);
    EXPECT_EQ(tape.bytes(), abc);
    EXPECT_EQ(tape->record_number, 1u);
}

TEST(TapeWritingParts, LongerThanAnyRecordIsRefusedInTheMiddle)
{
    Tape tape({});
    const std::string data = some_data(SIMH_MAX_RECORD);
    EXPECT_EQ(tape.write(data, 1), 0);
    EXPECT_EQ(tape.write("A", 0), -1);
    EXPECT_EQ(tape->state, 1u);
    EXPECT_EQ(simh_stop(tape), 0);
    EXPECT_TRUE(tape.bytes() == tape_record(data));
}

TEST(TapeWritingParts, LaterPartWithoutARecordIsRefused)
{
    Tape tape(abc);
    for (const int32_t part : {0, 2}) {
        EXPECT_EQ(tape.write("DE", part), -1);
        EXPECT_EQ(error_text(), "Invalid parameter (no record is being written)");
    }
    EXPECT_EQ(tape.bytes(), abc);
    EXPECT_EQ(tape.position(), 0u);
}

TEST(TapeWritingParts, StopAndEveryMoveEndTheRecord)
{
    Tape tape({});
    EXPECT_EQ(tape.write("ABC", 1), 0);
    LogCapture log(2);
    EXPECT_EQ(simh_stop(tape), 0);
    EXPECT_EQ(log.text(), "Info:  terminating current tape record write operation.\n");
    EXPECT_EQ(tape.bytes(), abc);
    EXPECT_EQ(tape.write("DE", 1), 0);
    EXPECT_EQ(tape.write("FG"), 0);
    EXPECT_EQ(tape.write("HI", 1), 0);
    simh_write_tapemark(tape);
    EXPECT_EQ(tape.write("JK", 1), 0);
    EXPECT_EQ(simh_move_reverse(tape), 2);
    EXPECT_EQ(tape.read(), "JK");
    EXPECT_EQ(tape.write("LM", 1), 0);
    simh_write_eom(tape);
    EXPECT_EQ(tape.write("NO", 1), 0);
    simh_rewind(tape);
    EXPECT_EQ(tape.position(), 0u);
    EXPECT_EQ(contents(tape), "ABC DE FG HI -4 JK LM NO -5");
}

TEST(TapeWritingParts, ReadThatBeginsEndsTheRecordBeingWritten)
{
    Tape tape(joined({Bytes(10), tape_record("DE")}));
    EXPECT_EQ(tape.write("AB", 1), 0);
    EXPECT_EQ(tape.read(), "DE");
    EXPECT_EQ(contents(tape), "AB DE -5");
}

// ---- the fixed layout ----------------------------------------------------------------------------------

TEST(TapeSlotWriting, RecordFillsItsSlot)
{
    const std::string alphabet = "ABCDEFGHIJKLMNOP";
    for (const uint32_t blocksize : {4u, 8u, 16u}) {
        for (uint32_t length = 1; length <= blocksize; length++) {
            Tape tape({}, SIMH_FIXED, blocksize);
            EXPECT_EQ(tape.write(alphabet.substr(0, length)), 0);
            EXPECT_EQ(tape.bytes(), record_slot(alphabet.substr(0, length), blocksize)) << length;
            EXPECT_EQ(tape.position(), blocksize + 16);
            EXPECT_EQ(tape->record_number, 1u);
            EXPECT_EQ(tape->num_records, 1u);
        }
    }
}

TEST(TapeSlotWriting, FillerOfEachRemainder)
{
    const struct {
        std::string data;
        Bytes slot;
    } rows[] = {
        {"ABCD", {0xFE, 0xFF, 0xFF, 0xFF, 4, 0, 0, 0, 'A', 'B', 'C', 'D', 4, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF}},
        {"ABC", {0xFE, 0xFF, 0xFF, 0xFF, 3, 0, 0, 0, 'A', 'B', 'C', 0, 3, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF}},
        {"AB", {0xFE, 0xFF, 0xFF, 0xFF, 2, 0, 0, 0, 'A', 'B', 2, 0, 0, 0, 0xFF, 0xFF, 0xFE, 0xFF, 0xFF, 0xFF}},
        {"A", {0xFE, 0xFF, 0xFF, 0xFF, 1, 0, 0, 0, 'A', 0, 1, 0, 0, 0, 0xFF, 0xFF, 0xFE, 0xFF, 0xFF, 0xFF}},
    };
    for (const auto &row : rows) {
        Tape tape({}, SIMH_FIXED, 4);
        EXPECT_EQ(tape.write(row.data), 0);
        EXPECT_EQ(tape.bytes(), row.slot);
        simh_rewind(tape);
        EXPECT_EQ(tape.read(), row.data);
        EXPECT_EQ(tape.read_back(), std::string(row.data.rbegin(), row.data.rend()));
        tape->format = SIMH_VARIABLE;
        EXPECT_EQ(contents(tape), row.data + " -5");
    }
}

TEST(TapeSlotWriting, Hazard_L13_RecordOfNothingIsAnEmptySlotOfTheSameSize)
{
    Tape tape({}, SIMH_FIXED, 8);
    EXPECT_EQ(tape.write("ABC"), 0);
    EXPECT_EQ(simh_write_record(tape, nullptr, 0, 3), 0);
    EXPECT_EQ(tape.write("DE"), 0);
    EXPECT_EQ(tape.bytes(), joined({record_slot("ABC", 8), empty_slot(8), record_slot("DE", 8)}));
    EXPECT_EQ(tape->num_records, 3u);
    EXPECT_EQ(simh_set_position(tape, 1), 0);
    EXPECT_EQ(tape.read(), "-6");
}

TEST(TapeSlotWriting, Hazard_L15_RecordLargerThanTheSlotIsRefused)
{
    const Bytes image = joined({record_slot("ABC", 8), record_slot("DE", 8)});
    Tape tape(image, SIMH_FIXED, 8);
    for (const uint32_t length : {9u, 12u, 13u, 24u}) {
        EXPECT_EQ(tape.write(some_data(length)), -1);
        EXPECT_EQ(error_text(), "Invalid parameter (record longer than a slot)");
    }
    EXPECT_EQ(tape.bytes(), image);
    EXPECT_EQ(tape.position(), 0u);
    EXPECT_EQ(tape->record_number, 0u);
}

TEST(TapeSlotWriting, NumberOfRecordsRisesOnlyAtTheEnd)
{
    Tape tape(joined({record_slot("ABC", 8), record_slot("DE", 8)}), SIMH_FIXED, 8);
    EXPECT_EQ(tape.write("FG"), 0);
    EXPECT_EQ(tape->num_records, 2u);
    tape.seek(48);
    EXPECT_EQ(tape.write("HI"), 0);
    EXPECT_EQ(tape->num_records, 3u);
    EXPECT_EQ(contents(tape), "FG DE HI -5");
}

TEST(TapeSlotWriting, RecordBehindAReadInReverseHasTheSlotOfWhatWasRead)
{
    Tape tape(joined({record_slot("ABC", 8), record_slot("DE", 8)}), SIMH_FIXED, 8);
    tape.seek(48);
    EXPECT_EQ(tape.read_back(), "ED");
    EXPECT_EQ(tape.write("FGHI"), 0);
    EXPECT_EQ(tape.bytes(), joined({record_slot("ABC", 8), record_slot("FGHI", 8)}));
}

TEST(TapeSlotWriting, TapeMarkIsASlot)
{
    Tape tape(record_slot("ABC", 8), SIMH_FIXED, 8);
    tape.seek(24);
    simh_write_tapemark(tape);
    const Bytes mark = {0,    0,    0,    0,    0xFE, 0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0xFF, 0xFF,
                        0xFE, 0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(tape.bytes(), joined({record_slot("ABC", 8), mark}));
    EXPECT_EQ(tape.position(), 48u);
    EXPECT_EQ(tape->record_number, 2u);
    EXPECT_EQ(tape->num_records, 2u);
    EXPECT_EQ(tape->file_number, 1u);
    tape.seek(4); // inside the first slot
    simh_write_tapemark(tape);
    EXPECT_EQ(tape.bytes(), joined({mark, mark}));
    EXPECT_EQ(tape->num_records, 2u);
}

TEST(TapeSlotWriting, EndOfMediumIsASlotWhereNoneWas)
{
    Tape tape(joined({record_slot("ABC", 8), record_slot("DE", 8)}), SIMH_FIXED, 8);
    tape.seek(48);
    simh_write_eom(tape);
    EXPECT_EQ(tape.bytes(), joined({record_slot("ABC", 8), record_slot("DE", 8), end_slot(8)}));
    EXPECT_EQ(tape.position(), 72u);
    EXPECT_EQ(tape->record_number, 3u);
    EXPECT_EQ(tape->num_records, 3u);
    tape.seek(24);
    simh_write_eom(tape); // over the first word of a slot that is there
    Bytes cut = joined({record_slot("ABC", 8), record_slot("DE", 8), end_slot(8)});
    cut[24] = 0xFF;
    EXPECT_EQ(tape.bytes(), cut);
    EXPECT_EQ(tape.position(), 28u);
    EXPECT_EQ(tape->record_number, 2u);
    EXPECT_EQ(tape->num_records, 3u);
    EXPECT_EQ(contents(tape), "ABC -2");
}

TEST(TapeSlotWriting, BlockSizeOfTwoMoreThanAMultipleOfFourKeepsItsSlotsWhole)
{
    Tape tape({}, SIMH_FIXED, 10);
    EXPECT_EQ(tape.write("ABCDEFGHIJ"), 0);
    simh_write_tapemark(tape);
    EXPECT_EQ(tape.write("ABCD"), 0);
    simh_write_tapemark(tape);
    simh_write_eom(tape);
    EXPECT_EQ(tape.position(), 5u * 26u);
    EXPECT_EQ(contents(tape), "ABCDEFGHIJ -4 ABCD -4 -2");
    tape->format = SIMH_VARIABLE;
    EXPECT_EQ(contents(tape), "ABCDEFGHIJ -4 ABCD -4 -2");
}

TEST(TapeSlotWriting, OddBlockSizeKeepsItsSlotsInPlace)
{
    Tape tape({}, SIMH_FIXED, 7);
    EXPECT_EQ(tape.write("ABCDEFG"), 0);
    simh_write_tapemark(tape);
    EXPECT_EQ(tape.write("ABCD"), 0);
    simh_write_eom(tape);
    EXPECT_EQ(tape.bytes().size(), 4u * 23u);
    EXPECT_EQ(contents(tape), "ABCDEFG -4 ABCD -2");
}

TEST(TapeSlotWriting, KeepsGapWordOverwrittenByParts)
{
    Tape tape({}, SIMH_FIXED, 8);
    EXPECT_EQ(tape.write("AB", 1), 0);
    EXPECT_EQ(tape.write("CD", 2), 0);
    const Bytes words = joined({little_word(4), little_word(2), bytes_of("ABCD"), little_word(4)});
    EXPECT_EQ(tape.bytes(), joined({words, half_gap(), gap_words(2)})); // filler as for two bytes
}

TEST(TapeSlotWriting, Hazard_L14_PartsOfTheFixedLayoutStayInsideTheirFile)
{
    Tape tape({}, SIMH_FIXED, 8);
    EXPECT_EQ(tape.write("ABCD", 1), 0);
    EXPECT_EQ(simh_stop(tape), 0);
    EXPECT_EQ(tape.bytes(), joined({little_word(4), little_word(4), bytes_of("ABCD"), little_word(4), gap_words(5)}));
    EXPECT_EQ(tape->state, 0u);
}

// ---- new tapes -----------------------------------------------------------------------------------------

TEST(TapeInitialize, VariableLayoutIsAnEndOfMedium)
{
    Tape tape({});
    EXPECT_EQ(simh_initialize(tape, 5, 1), 0);
    EXPECT_EQ(tape.bytes(), end_of_medium());
    EXPECT_EQ(tape.position(), 0u);
    EXPECT_EQ(tape->num_records, 0u);
}

TEST(TapeInitialize, FixedLayoutHasEmptySlots)
{
    LogCapture log(2);
    Tape tape({}, SIMH_FIXED, 8);
    EXPECT_EQ(simh_initialize(tape, 2, 0), 0);
    EXPECT_EQ(tape.bytes(), joined({empty_slot(8), empty_slot(8), end_slot(8)}));
    EXPECT_EQ(tape.position(), 0u);
    EXPECT_EQ(tape->record_number, 0u);
    EXPECT_EQ(tape->num_records, 3u);
}

TEST(TapeInitialize, FixedLayoutHasRecordsOfZeros)
{
    LogCapture log(2);
    Tape tape({}, SIMH_FIXED, 8);
    EXPECT_EQ(simh_initialize(tape, 2, 1), 0);
    const Bytes slot = joined({gap_words(1), little_word(8), Bytes(8), little_word(8), gap_words(1)});
    EXPECT_EQ(tape.bytes(), joined({slot, slot, end_slot(8)}));
    EXPECT_EQ(contents(tape), std::string(8, '\0') + " " + std::string(8, '\0') + " -2");
}

TEST(TapeInitialize, BeginsAtTheBeginOfTheFile)
{
    Tape tape(joined({abc, abc}));
    tape.seek(12);
    EXPECT_EQ(simh_initialize(tape, 0, 0), 0);
    EXPECT_EQ(contents(tape), "-2");
}

TEST(TapeInitialize, NoRecordsAtAll)
{
    Tape tape({}, SIMH_FIXED, 8);
    EXPECT_EQ(simh_initialize(tape, 0, 1), 0);
    EXPECT_EQ(tape.bytes(), end_slot(8));
}

TEST(TapeInitialize, ShowsPercentagesBelowLevelTwo)
{
    Tape tape({}, SIMH_FIXED, 8);
    OutputCapture output;
    percent_progress(7, 100); // another one than the first below
    EXPECT_EQ(simh_initialize(tape, 4, 0), 0);
    const std::string shown = "7%\b\b0%\b\b25%\b\b\b50%\b\b\b75%\b\b\b";
    EXPECT_EQ(output.text(), shown);
    LogCapture log(2);
    EXPECT_EQ(simh_initialize(tape, 4, 0), 0);
    EXPECT_EQ(output.text(), shown);
}

TEST(TapeInitialize, WithoutMemoryNothingIsWritten)
{
    Tape tape({}, SIMH_FIXED, 8);
    HeapFaults faults(1);
    EXPECT_EQ(simh_initialize(tape, 4, 0), -1);
    EXPECT_EQ(error_text(), "Out of memory");
    EXPECT_TRUE(tape.bytes().empty());
}

TEST(TapeInitialize, Hazard_L19_SlotsThatNoFileHoldsAreRefused)
{
    Tape tape({}, SIMH_FIXED, 0x10000 - 16);
    EXPECT_EQ(simh_initialize(tape, 0x10000, 0), -1); // 4 GiB, which wraps to 0
    EXPECT_EQ(simh_initialize(tape, 0xFFFF, 0), -1);  // with the end of the medium
    EXPECT_EQ(simh_initialize(tape, UINT32_MAX, 1), -1);
    tape->blocksize = 0xFFFFFFF0;
    EXPECT_EQ(simh_initialize(tape, 1, 0), -1);
    tape->blocksize = SIMH_MAX_RECORD + 1;
    EXPECT_EQ(simh_initialize(tape, 1, 1), -1);
    EXPECT_EQ(error_text(), "Invalid parameter (record too long)");
    EXPECT_TRUE(tape.bytes().empty());
}

}
