// Erase gaps: their bytes, and what they leave of the records under them.
#include <gtest/gtest.h>

#include "base/file.h"
#include "tape/simh.h"
#include "tests/support/capture.h"
#include "tests/tape/tape_image.h"

using namespace tests;

namespace
{

Bytes gap_of(uint32_t bytes)
{
    return joined({bytes % 4 == 2 ? half_gap() : Bytes{}, gap_words(bytes / 4)});
}

TEST(TapeGap, SizesAtTheEndOfTheTape)
{
    for (uint32_t size = 0; size < 40; size++) {
        Tape tape(tape_record("AB"));
        tape.seek(10);
        EXPECT_EQ(simh_write_erase_gap(tape, size), 0);
        const uint32_t even = size + size % 2;
        EXPECT_EQ(tape.bytes(), joined({tape_record("AB"), gap_of(even)})) << size;
        EXPECT_EQ(tape.position(), 10 + even);
        EXPECT_EQ(tape->record_number, 0u);
    }
}

TEST(TapeGap, FiveBytesAreSix)
{
    Tape tape({});
    EXPECT_EQ(simh_write_erase_gap(tape, 5), 0);
    EXPECT_EQ(tape.bytes(), (Bytes{0xFF, 0xFF, 0xFE, 0xFF, 0xFF, 0xFF}));
}

TEST(TapeGap, LargeGapIsWrittenInPieces)
{
    Tape tape({});
    EXPECT_EQ(simh_write_erase_gap(tape, 1000002), 0);
    EXPECT_TRUE(tape.bytes() == gap_of(1000002));
    EXPECT_EQ(tape.write("ABC"), 0);
    EXPECT_EQ(contents(tape), "ABC -5");
}

// Two records of 8 bytes with 16 of footprint each, a mark, and a last record.
Bytes stretch()
{
    return joined({tape_record("abcdefgh"), tape_record("ABCDEFGH"), tape_mark(), tape_record("xy")});
}

struct CutCase {
    uint32_t size;
    int32_t result;
    const char *left; // on the tape
};

// A gap from the begin; the first record ends at 16, the second at 32, the mark at 36, all at 46.
const CutCase cut_cases[] = {
    {16, 0, "ABCDEFGH -4 xy -5"}, // exactly to the end of a record: nothing is shortened
    {18, 0, "CDEFGH -4 xy -5"},
    {20, 0, "EFGH -4 xy -5"},
    {22, 0, "GH -4 xy -5"},
    {24, 0, "-4 xy -5"},                    // no byte of data is left, so all of the record goes
    {26, -1, "abcdefgh ABCDEFGH -4 xy -5"}, // less than a record would be left
    {28, -1, "abcdefgh ABCDEFGH -4 xy -5"},
    {30, -1, "abcdefgh ABCDEFGH -4 xy -5"},
    {32, 0, "-4 xy -5"},
    {34, 0, "xy -5"}, // the mark goes whole
    {36, 0, "xy -5"},
    {38, 0, "-5"}, // the record would keep nothing
    {40, -1, "abcdefgh ABCDEFGH -4 xy -5"},
    {42, -1, "abcdefgh ABCDEFGH -4 xy -5"},
    {44, -1, "abcdefgh ABCDEFGH -4 xy -5"},
    {46, 0, "-5"},
    {48, 0, "-5"},
};

TEST(TapeGap, OverRecordsAtEachOffset)
{
    for (const CutCase &row : cut_cases) {
        SCOPED_TRACE(row.size);
        Tape tape(stretch());
        EXPECT_EQ(simh_write_erase_gap(tape, row.size), row.result);
        if (row.result < 0) {
            EXPECT_EQ(tape.bytes(), stretch());
            EXPECT_EQ(tape.position(), 0u);
        }
        EXPECT_EQ(contents(tape), row.left);
    }
}

TEST(TapeGap, OddSizesAreTheNextEvenOnes)
{
    for (const uint32_t size : {17u, 21u, 31u, 35u}) {
        Tape odd(stretch());
        Tape even(stretch());
        EXPECT_EQ(simh_write_erase_gap(odd, size), 0);
        EXPECT_EQ(simh_write_erase_gap(even, size + 1), 0);
        EXPECT_EQ(odd.bytes(), even.bytes());
    }
}

TEST(TapeGap, ShortenedRecordHasItsLengthOnBothSides)
{
    Tape tape(stretch());
    EXPECT_EQ(simh_write_erase_gap(tape, 20), 0);
    EXPECT_EQ(tape.bytes(),
              joined({gap_words(5), {4, 0, 0, 0, 'E', 'F', 'G', 'H', 4, 0, 0, 0}, tape_mark(), tape_record("xy")}));
    EXPECT_EQ(tape.position(), 20u);
    EXPECT_EQ(tape.read(), "EFGH");
    EXPECT_EQ(tape.read_back(), "HGFE");
    EXPECT_EQ(tape.read_back(), "-3");
}

TEST(TapeGap, ShortenedOddRecordKeepsItsZeroByte)
{
    Tape tape(joined({tape_record("ab"), tape_record("ABCDEFG"), tape_record("xy")}));
    EXPECT_EQ(simh_write_erase_gap(tape, 14), 0);
    EXPECT_EQ(tape.bytes(), joined({half_gap(), gap_words(3), tape_record("EFG"), tape_record("xy")}));
    Tape one_byte(joined({tape_record("ab"), tape_record("ABCDEFG"), tape_record("xy")}));
    EXPECT_EQ(simh_write_erase_gap(one_byte, 16), 0);
    EXPECT_EQ(one_byte.bytes(), joined({gap_words(4), tape_record("G"), tape_record("xy")}));
}

TEST(TapeGap, StartsInTheMiddleOfATape)
{
    Tape tape(stretch());
    EXPECT_EQ(tape.read(), "abcdefgh");
    EXPECT_EQ(simh_write_erase_gap(tape, 16), 0);
    EXPECT_EQ(tape.position(), 32u);
    EXPECT_EQ(tape->record_number, 1u);
    EXPECT_EQ(contents(tape), "abcdefgh -4 xy -5");
}

TEST(TapeGap, KeepsTornRecordAtStartOfGap)
{
    Tape tape(stretch());
    EXPECT_EQ(simh_write_erase_gap(tape, 8), 0);
    EXPECT_EQ(
        tape.bytes(),
        joined(
            {gap_words(2), bytes_of("efgh"), {8, 0, 0, 0}, tape_record("ABCDEFGH"), tape_mark(), tape_record("xy")}));
}

TEST(TapeGap, KeepsPadUncountedByGap)
{
    // The gap covers ABC and half of DEFG. The scan steps on by 11 bytes, not 12, and so doesn't find the second
    // record.
    const Bytes image = joined({tape_record("ABC"), tape_record("DEFG"), tape_record("xy")});
    Tape tape(image);
    EXPECT_EQ(simh_write_erase_gap(tape, 16), 0);
    EXPECT_EQ(tape.bytes(), joined({gap_words(4), bytes_of("DEFG"), little_word(4), tape_record("xy")}));
    // What it takes for a length there makes it write nothing into what follows.
    Tape exact(image);
    EXPECT_EQ(simh_write_erase_gap(exact, 12), 0);
    EXPECT_EQ(exact.bytes(), joined({gap_words(3), tape_record("DEFG"), tape_record("xy")}));
}

TEST(TapeGap, WordThatLooksLikeALengthIsNoRecordWithoutItsOtherEnd)
{
    const Bytes image = joined({tape_mark(), little_word(8), bytes_of("ABCDEFGH"), little_word(9), tape_record("xy")});
    Tape tape(image);
    EXPECT_EQ(simh_write_erase_gap(tape, 12), 0);
    EXPECT_EQ(tape.bytes(), joined({gap_words(3), bytes_of("EFGH"), little_word(9), tape_record("xy")}));
}

struct StretchCase {
    const char *name;
    Bytes image;
    uint32_t size;
    Bytes after;
};

const StretchCase stretch_cases[] = {
    {"marks and gaps", joined({tape_mark(), gap_words(1), tape_mark(), tape_record("AB")}), 12,
     joined({gap_words(3), tape_record("AB")})},
    {"the last word goes whole", joined({tape_mark(), gap_words(1), tape_mark(), tape_record("AB")}), 10,
     joined({gap_words(3), tape_record("AB")})},
    {"the last half gap goes whole", joined({tape_mark(), half_gap(), gap_words(1), tape_record("AB")}), 6,
     joined({half_gap(), gap_words(2), tape_record("AB")})},
    {"end of medium", joined({tape_mark(), end_of_medium(), tape_record("AB")}), 6,
     joined({half_gap(), gap_words(1), {0xFF, 0xFF}, tape_record("AB")})},
    {"bad word", joined({tape_mark(), little_word(0x1000000), tape_record("AB")}), 6,
     joined({half_gap(), gap_words(1), {0, 1}, tape_record("AB")})},
    {"end of the file", joined({tape_mark(), {1, 0}}), 12, gap_words(3)},
    {"half gap at the end of the file", joined({tape_mark(), half_gap(), {0xFE, 0xFF}}), 6,
     joined({half_gap(), gap_words(1), {0xFE, 0xFF}})},
};

TEST(TapeGap, StepsOverWhatIsNoRecord)
{
    for (const StretchCase &row : stretch_cases) {
        SCOPED_TRACE(row.name);
        Tape tape(row.image);
        EXPECT_EQ(simh_write_erase_gap(tape, row.size), 0);
        EXPECT_EQ(tape.bytes(), row.after);
    }
}

TEST(TapeGap, Hazard_L18_RecordOfWhichLessThanNothingIsLeftIsLeftAlone)
{
    Tape tape(stretch());
    for (const uint32_t size : {25u, 26u, 27u, 28u, 29u, 30u}) {
        forget_error();
        EXPECT_EQ(simh_write_erase_gap(tape, size), -1);
        EXPECT_EQ(error_text(), "Invalid parameter (the gap ends in the last bytes of a record)");
    }
    EXPECT_EQ(tape.bytes(), stretch());
}

TEST(TapeGap, Hazard_L18_StretchBehindFourGigabytesIsRefused)
{
    Tape tape(stretch());
    tape.seek(16);
    EXPECT_EQ(simh_write_erase_gap(tape, UINT32_MAX), -1);
    EXPECT_EQ(simh_write_erase_gap(tape, UINT32_MAX - 15), -1);
    EXPECT_EQ(tape.position(), 16u);
    EXPECT_EQ(tape.bytes(), stretch());
}

TEST(TapeGap, FixedLayoutWarnsAndGoesOn)
{
    Tape tape(joined({record_slot("ABC", 8), record_slot("DE", 8)}), SIMH_FIXED, 8);
    LogCapture log(1);
    EXPECT_EQ(simh_write_erase_gap(tape, 24), 0);
    EXPECT_EQ(log.text(), "Warning: creating erase gaps should not be used on fixed length format\n");
    EXPECT_EQ(tape.bytes(), joined({empty_slot(8), record_slot("DE", 8)}));
}

}
