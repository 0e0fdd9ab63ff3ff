// Moves over a tape in both directions.
#include <gtest/gtest.h>

#include <cstring>

#include "base/file.h"
#include "tape/simh.h"
#include "tape/words.h"
#include "tests/support/faults.h"
#include "tests/tape/tape_image.h"

using namespace tests;

namespace
{

static_assert(classify(0) == TapeWord::tape_mark);
static_assert(classify(1) == TapeWord::record);
static_assert(classify(0xFFFFFF) == TapeWord::record);
static_assert(classify(0x1000000) == TapeWord::bad);
static_assert(classify(0x80000001) == TapeWord::bad);
static_assert(classify(0xFFFEFFFF) == TapeWord::half_gap);
static_assert(classify(0xFFFFFFFD) == TapeWord::bad);
static_assert(classify(0xFFFFFFFE) == TapeWord::gap);
static_assert(classify(0xFFFFFFFF) == TapeWord::end_of_medium);

// In reverse the low half is the end of what stands in front of the half gap.
static_assert(classify_reverse(0xFFFF0000) == TapeWord::half_gap);
static_assert(classify_reverse(0xFFFF00FF) == TapeWord::half_gap);
static_assert(classify_reverse(0xFFFF8000) == TapeWord::half_gap);
static_assert(classify_reverse(0xFFFF80AB) == TapeWord::half_gap);
static_assert(classify_reverse(0xFFFF0100) == TapeWord::bad);
static_assert(classify_reverse(0xFFFF4000) == TapeWord::bad);
static_assert(classify_reverse(0xFFFEFFFF) == TapeWord::bad);
static_assert(classify_reverse(0xFFFFFFFE) == TapeWord::gap);
static_assert(classify_reverse(0xFFFFFFFF) == TapeWord::end_of_medium);
static_assert(classify_reverse(0) == TapeWord::tape_mark);
static_assert(classify_reverse(0xFFFFFF) == TapeWord::record);

// The record ABC, odd, as it stands in the file.
const Bytes abc = {3, 0, 0, 0, 'A', 'B', 'C', 0, 3, 0, 0, 0};

TEST(TapeWords, ExportedWordsStandInTheFileAsTheirBytes)
{
    EXPECT_EQ(little_word(simh_tm), tape_mark());
    EXPECT_EQ(little_word(simh_eom), end_of_medium());
    EXPECT_EQ(little_word(simh_gap), gap_words(1));
    EXPECT_EQ(simh_half_gap, 0xFFFF);
}

TEST(TapeImageRecord, ResetKeepsTheFileAndSetsTheRunawayLimit)
{
    Tape tape(abc);
    const FileHandle file = tape->fd;
    std::memset(&tape.image, 0x5A, sizeof(TapeImage));
    tape->fd = file;
    simh_reset(tape);
    EXPECT_EQ(tape->fd, file);
    EXPECT_EQ(tape->runaway_limit, 300u);
    EXPECT_EQ(tape->unit_size | tape->blocksize | tape->format | tape->record_number | tape->file_number, 0u);
    EXPECT_EQ(tape->record_start | tape->record_size | tape->record_done | tape->num_records, 0u);
    EXPECT_EQ(tape->max_record | tape->state | tape->reserved_format | tape->reserved_records, 0u);
}

// ---- forward -------------------------------------------------------------------------------------------

struct ForwardCase {
    const char *name;
    Bytes image;
    int32_t result;
    uint32_t position;      // without keep_address
    uint32_t kept_position; // with it
};

const ForwardCase forward_cases[] = {
    {"record", abc, 3, 0, 0},
    {"record behind gap", joined({gap_words(2), abc}), 3, 8, 8},
    {"record behind half gap", joined({half_gap(), gap_words(1), abc}), 3, 6, 6},
    {"record behind half gaps and gaps", joined({half_gap(), gap_words(1), half_gap(), gap_words(2), abc}), 3, 16, 16},
    {"largest record", little_word(0xFFFFFF), 0xFFFFFF, 0, 0},
    {"tape mark", tape_mark(), -4, 4, 4},
    {"tape mark behind gap", joined({gap_words(1), tape_mark(), abc}), -4, 8, 8},
    {"end of medium", joined({end_of_medium(), abc}), -2, 0, 4},
    {"end of medium behind gap", joined({gap_words(3), end_of_medium()}), -2, 0, 16},
    {"nothing", {}, -5, 0, 0},
    {"one byte", {7}, -5, 0, 1},
    {"three bytes", {3, 0, 0}, -5, 0, 3},
    {"gap and the end", gap_words(5), -5, 0, 20},
    {"gap and half a word", joined({gap_words(1), {1, 0}}), -5, 0, 6},
    {"half gap cut off", joined({half_gap(), {0xFE, 0xFF}}), -5, 0, 4},
    {"half gap cut in its last byte", joined({half_gap(), {0xFE, 0xFF, 0xFF}}), -5, 0, 5},
    {"length with bit 24", little_word(0x1000000), -1, 0, 4},
    {"length with bit 31", little_word(0x80000003), -1, 0, 4},
    {"bad word behind gap", joined({gap_words(2), little_word(0xFFFFFFFD)}), -1, 0, 12},
};

TEST(TapeForward, StopsAtTheNextRecordOrWhatEndsTheWalk)
{
    for (const ForwardCase &row : forward_cases) {
        SCOPED_TRACE(row.name);
        Tape tape(row.image);
        EXPECT_EQ(simh_move_forward(tape, 0), row.result);
        EXPECT_EQ(tape.position(), row.position);
        tape.seek(0);
        EXPECT_EQ(simh_move_forward(tape, 1), row.result);
        EXPECT_EQ(tape.position(), row.kept_position);
        EXPECT_EQ(tape->file_number, row.result == -4 ? 2u : 0u);
        EXPECT_EQ(tape.bytes(), row.image);
    }
}

TEST(TapeForward, BehindTheLastRecordWithoutEndMarkIsThePhysicalEnd)
{
    Tape tape(abc);
    EXPECT_EQ(tape.read(), "ABC");
    EXPECT_EQ(tape.position(), 12u);
    EXPECT_EQ(simh_move_forward(tape, 0), -5);
    EXPECT_EQ(tape.position(), 12u);
}

TEST(TapeForward, SecondHalfOfAHalfGapIsNotLookedAt)
{
    Tape tape(joined({half_gap(), {0xFE, 0xFF}, {0x12, 0x34}, abc}));
    EXPECT_EQ(simh_move_forward(tape, 0), 3);
    EXPECT_EQ(tape.position(), 6u);
}

TEST(TapeForward, Hazard_L7_GapIsReadInLargeBlocks)
{
    const uint32_t words = 1 << 20; // 4 MB
    Tape tape(joined({gap_words(words), abc}));
    FileFaults calls;
    EXPECT_EQ(simh_move_forward(tape, 0), 3);
    EXPECT_LE(calls.reads, words * 4 / 65536 + 5);
    EXPECT_EQ(simh_move_reverse(tape), -3);
    EXPECT_LE(calls.reads, 2 * (words * 4 / 65536 + 5));
    EXPECT_EQ(tape.position(), 0u);
}

TEST(TapeForward, GapLargerThanAnyWindowIsPassed)
{
    const uint32_t words = 300000;
    Tape tape(joined({gap_words(words), abc}));
    EXPECT_EQ(simh_move_forward(tape, 0), 3);
    EXPECT_EQ(tape.position(), words * 4);
    tape.seek(words * 4 + 12);
    EXPECT_EQ(simh_move_reverse(tape), 3);
    EXPECT_EQ(simh_move_reverse(tape), -3);
    EXPECT_EQ(tape.position(), 0u);
}

// ---- reverse -------------------------------------------------------------------------------------------

struct ReverseCase {
    const char *name;
    Bytes image;
    uint32_t start;
    int32_t result;
    uint32_t position;
};

const ReverseCase reverse_cases[] = {
    {"odd record", abc, 12, 3, 0},
    {"even record", tape_record("ABCD"), 12, 4, 0},
    {"record in front of gap", joined({abc, gap_words(2)}), 20, 3, 0},
    {"record in front of half gap", joined({abc, half_gap(), gap_words(1)}), 18, 3, 0},
    {"length with a high byte in front of half gap", joined({tape_record(some_data(0x1FF)), half_gap(), gap_words(1)}),
     0x200 + 8 + 6, 0x1FF, 0},
    {"begin", abc, 0, -3, 0},
    {"three bytes behind the begin", abc, 3, -3, 3},
    {"gap at the begin", gap_words(3), 12, -3, 0},
    {"half gap at the begin", joined({half_gap(), gap_words(1)}), 6, -3, 0},
    {"tape mark", joined({abc, tape_mark()}), 16, -4, 12},
    {"tape mark in front of half gap", joined({tape_mark(), half_gap(), gap_words(1)}), 10, -4, 0},
    {"end of medium", joined({abc, end_of_medium()}), 16, -2, 12},
    {"behind the end", abc, 40, -5, 36},
    {"half behind the end", abc, 14, -5, 10},
    {"bad word", joined({abc, little_word(0x1000000)}), 16, -1, 16},
    {"bad word in front of gap", joined({little_word(0x7F000000), gap_words(2)}), 12, -1, 12},
};

TEST(TapeReverse, StopsAtTheRecordBeforeOrWhatEndsTheWalk)
{
    for (const ReverseCase &row : reverse_cases) {
        SCOPED_TRACE(row.name);
        Tape tape(row.image);
        tape->file_number = 5;
        tape.seek(row.start);
        EXPECT_EQ(simh_move_reverse(tape), row.result);
        EXPECT_EQ(tape.position(), row.position);
        EXPECT_EQ(tape->file_number, row.result == -4 ? 4u : 5u);
        EXPECT_EQ(tape.bytes(), row.image);
    }
}

TEST(TapeReverse, HalfGapIsOneGapOfSixBytesBothWays)
{
    Tape tape(joined({abc, {0xFF, 0xFF, 0xFE, 0xFF, 0xFF, 0xFF}, tape_record("DE")}));
    tape.seek(12);
    EXPECT_EQ(simh_move_forward(tape, 0), 2);
    EXPECT_EQ(tape.position(), 18u);
    EXPECT_EQ(simh_move_reverse(tape), 3);
    EXPECT_EQ(tape.position(), 0u);
}

TEST(TapeReverse, WalksWhatWasWalkedForward)
{
    Tape tape(joined({abc, tape_mark(), gap_words(2), tape_record("DE"), half_gap(), gap_words(1), tape_mark()}));
    EXPECT_EQ(contents(tape), "ABC -4 DE -4 -5");
    EXPECT_EQ(tape->file_number, 2u);
    EXPECT_EQ(tape->record_number, 2u);
    EXPECT_EQ(tape.read_back(), "-4");
    EXPECT_EQ(tape.read_back(), "ED");
    EXPECT_EQ(tape.read_back(), "-4");
    EXPECT_EQ(tape.read_back(), "CBA");
    EXPECT_EQ(tape.read_back(), "-3");
    EXPECT_EQ(tape->file_number, 0u);
    EXPECT_EQ(tape->record_number, 0u);
}

TEST(TapeReverse, Hazard_L4_LengthLargerThanWhatStandsInFrontIsAnError)
{
    Tape tape(joined({abc, little_word(9)}));
    tape.seek(16);
    EXPECT_EQ(simh_move_reverse(tape), -1);
    EXPECT_EQ(tape.position(), 16u);
    tape.seek(12);
    EXPECT_EQ(simh_move_reverse(tape), 3);
}

TEST(TapeReverse, Hazard_L5_HalfGapsAloneEndAtTheBegin)
{
    Tape tape(joined({{0, 0}, half_gap(), {0, 0}, half_gap(), {0, 0}, half_gap()}));
    tape.seek(12);
    EXPECT_EQ(simh_move_reverse(tape), -1); // 00 00 FF FF, then FF FF 00 00 two bytes further
    tape.seek(4);
    EXPECT_EQ(simh_move_reverse(tape), -3);
    EXPECT_EQ(tape.position(), 0u);
}

// ---- runaway -------------------------------------------------------------------------------------------

TEST(TapeRunaway, Hazard_L8_EndsBehindTheGapReadSoFar)
{
    Tape tape(joined({gap_words(10), abc}));
    tape->unit_size = 4;
    tape->runaway_limit = 3;
    EXPECT_EQ(simh_move_forward(tape, 0), -7);
    EXPECT_EQ(tape.position(), 12u);
    EXPECT_EQ(simh_move_forward(tape, 1), -7);
    EXPECT_EQ(tape.position(), 24u);
    EXPECT_EQ(simh_move_forward(tape, 0), -7);
    EXPECT_EQ(simh_move_forward(tape, 0), 3);
    EXPECT_EQ(tape.position(), 40u);
    EXPECT_EQ(simh_move_reverse(tape), -7);
    EXPECT_EQ(tape.position(), 28u);
}

TEST(TapeRunaway, HalfGapCountsSixForwardAndTwoInReverse)
{
    Tape tape(joined({abc, half_gap(), gap_words(1), abc}));
    tape->unit_size = 1;
    tape.seek(12);
    tape->runaway_limit = 7;
    EXPECT_EQ(simh_move_forward(tape, 0), 3);
    tape.seek(12);
    tape->runaway_limit = 6;
    EXPECT_EQ(simh_move_forward(tape, 0), -7);
    EXPECT_EQ(tape.position(), 18u);
    EXPECT_EQ(simh_move_reverse(tape), -7);
    EXPECT_EQ(tape.position(), 12u);
    tape.seek(18);
    tape->runaway_limit = 7;
    EXPECT_EQ(simh_move_reverse(tape), 3);
}

TEST(TapeRunaway, UnitOrLimitOfZeroTurnsItOff)
{
    Tape tape(joined({gap_words(2000), abc}));
    EXPECT_EQ(simh_move_forward(tape, 0), 3);
    tape.seek(0);
    tape->unit_size = 4;
    EXPECT_EQ(simh_move_forward(tape, 0), -7); // 4 * 300
    EXPECT_EQ(tape.position(), 1200u);
    tape.seek(0);
    tape->runaway_limit = 0;
    EXPECT_EQ(simh_move_forward(tape, 0), 3);
}

}
