// Conversions between the layouts and plain files.
#include "tape/simh_convert.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "base/file.h"
#include "tape/simh_test.h"
#include "tests/support/capture.h"
#include "tests/tape/conversions.h"
#include "tests/tape/tape_image.h"

using namespace tests;

namespace
{

// ---- variable to fixed ---------------------------------------------------------------------------------

TEST(TapeToSlots, EachRecordHasASlot)
{
    const Bytes slots = to_slots(joined({tape_record("ABCD"), tape_record("EF"), end_of_medium()}), 8, 0);
    EXPECT_EQ(slots, joined({record_slot("ABCD", 8), record_slot("EF", 8), end_slot(8)}));
}

TEST(TapeToSlots, LongRecordIsCutAndItsTailIsAShortBlock)
{
    EXPECT_EQ(to_slots(tape_record("ABCDEFGHIJ"), 4, 0),
              joined({record_slot("ABCD", 4), record_slot("EFGH", 4), record_slot("IJ", 4), end_slot(4)}));
}

TEST(TapeToSlots, MultipleOfTheBlockSizeHasNoShortBlock)
{
    EXPECT_EQ(to_slots(tape_record("ABCDEFGH"), 4, 0),
              joined({record_slot("ABCD", 4), record_slot("EFGH", 4), end_slot(4)}));
}

TEST(TapeToSlots, KeepsPadByteInShortBlock)
{
    EXPECT_EQ(
        to_slots(joined({tape_record("ABCDE"), tape_record("FG")}), 4, 0),
        joined({record_slot("ABCD", 4), record_slot(std::string("E\0", 2), 4), record_slot("FG", 4), end_slot(4)}));
}

TEST(TapeToSlots, MarkStandsInFrontOfTheNextRecord)
{
    EXPECT_EQ(to_slots(joined({tape_record("AB"), tape_mark(), tape_record("CD"), end_of_medium()}), 4, 0),
              joined({record_slot("AB", 4), mark_slot(4), record_slot("CD", 4), end_slot(4)}));
}

TEST(TapeToSlots, MarkAtTheEndIsWrittenToo)
{
    EXPECT_EQ(to_slots(joined({tape_record("AB"), tape_mark(), end_of_medium()}), 4, 0),
              joined({record_slot("AB", 4), mark_slot(4), end_slot(4)}));
    EXPECT_EQ(to_slots(tape_mark(), 4, 1), joined({mark_slot(4), end_slot(4)}));
}

TEST(TapeToSlots, KeepsOneMarkOfSeveralInARow)
{
    EXPECT_EQ(to_slots(joined({tape_record("AB"), tape_mark(), tape_mark(), tape_record("CD"), tape_mark(), tape_mark(),
                               tape_mark(), end_of_medium()}),
                       4, 0),
              joined({record_slot("AB", 4), mark_slot(4), record_slot("CD", 4), mark_slot(4), end_slot(4)}));
}

TEST(TapeToSlots, NothingIsAnEndOfMedium)
{
    EXPECT_EQ(to_slots({}, 4, 0), end_slot(4));
    EXPECT_EQ(to_slots(end_of_medium(), 4, 1), end_slot(4));
    EXPECT_EQ(to_slots(gap_words(3), 4, 1), end_slot(4));
}

TEST(TapeToSlots, GapsAreLeftOut)
{
    EXPECT_EQ(to_slots(joined({gap_words(2), tape_record("AB"), half_gap(), gap_words(1), tape_record("CD")}), 4, 0),
              joined({record_slot("AB", 4), record_slot("CD", 4), end_slot(4)}));
}

TEST(TapeToSlots, PackedRecordsAreJoinedWithinAFile)
{
    const Bytes image = joined({tape_record("AB"), tape_record("CDE"), tape_record("FGHIJKLMN"), tape_record("O"),
                                tape_mark(), tape_record("PQ"), tape_record("R"), end_of_medium()});
    EXPECT_EQ(to_slots(image, 4, 1), joined({record_slot("ABCD", 4), record_slot("EFGH", 4), record_slot("IJKL", 4),
                                             record_slot("MNO", 4), mark_slot(4), record_slot("PQR", 4), end_slot(4)}));
}

TEST(TapeToSlots, Hazard_L12_PackedBlockThatIsJustFullHasRoomForAZeroByte)
{
    const Bytes image = joined({tape_record("A"), tape_record("BCD"), tape_record("E"), tape_mark()});
    EXPECT_EQ(to_slots(image, 4, 1), joined({record_slot("ABCD", 4), record_slot("E", 4), mark_slot(4), end_slot(4)}));
    EXPECT_EQ(to_slots(joined({tape_record("A"), tape_record("BCD")}), 4, 1),
              joined({record_slot("ABCD", 4), end_slot(4)}));
}

TEST(TapeToSlots, OddRecordsKeepTheirPlaceWhateverIsTakenOfThem)
{
    // 3 bytes wait; 1 of the 5 completes the block, and the 4 that are left are a block: the zero byte is still passed.
    EXPECT_EQ(to_slots(joined({tape_record("ABC"), tape_record("DEFGH"), tape_record("I")}), 4, 1),
              joined({record_slot("ABCD", 4), record_slot("EFGH", 4), record_slot("I", 4), end_slot(4)}));
    // A block size of 5, and even records of which an odd rest is left.
    EXPECT_EQ(to_slots(joined({tape_record("ABCDEFGH"), tape_record("IJKLM"), tape_record("NO")}), 5, 0).size(),
              5u * 21u);
}

TEST(TapeToSlots, RunawayIsPassed)
{
    LogCapture log(2);
    Tape from(joined({gap_words(9), tape_record("AB")}));
    from->unit_size = 4;
    from->runaway_limit = 2;
    Tape to({}, SIMH_FIXED, 4);
    EXPECT_EQ(simh_simh2fixed(from, to, 0), 0);
    EXPECT_EQ(to.bytes(), joined({record_slot("AB", 4), end_slot(4)}));
}

struct EarlyEnd {
    const char *name;
    Bytes source;
    std::string left; // of the tape
};

const EarlyEnd early_ends[] = {
    {"in the data", joined({tape_record("AB"), little_word(4), bytes_of("CDE")}), "AB"},
    {"in front of the last word", joined({tape_record("AB"), little_word(4), bytes_of("CDEF")}), "AB CDEF"},
    {"in the last word", joined({tape_record("AB"), little_word(4), bytes_of("CDEF"), {4, 0}}), "AB CDEF"},
    {"in front of the zero byte", joined({tape_record("AB"), little_word(3), bytes_of("CDE")}), "AB"},
    {"behind some blocks", joined({little_word(12), bytes_of("ABCDEFGH"), bytes_of("IJ")}), "ABCD EFGH"},
    {"in a length", joined({tape_record("AB"), {9, 0}}), "AB"},
};

TEST(TapeToSlots, SourceThatEndsEarlyEndsTheWalk)
{
    for (const EarlyEnd &row : early_ends) {
        SCOPED_TRACE(row.name);
        Tape to(to_slots(row.source, 4, 0), SIMH_FIXED, 4);
        EXPECT_EQ(contents(to), row.left + " -2");
    }
}

TEST(TapeToSlots, PackedBytesThatWaitAreWrittenAtTheEnd)
{
    EXPECT_EQ(to_slots(joined({tape_record("AB"), little_word(4), bytes_of("CDE")}), 8, 1),
              joined({record_slot("AB", 8), end_slot(8)}));
    EXPECT_EQ(to_slots(joined({tape_record("ABCDEF"), little_word(4), bytes_of("G")}), 4, 1),
              joined({record_slot("ABCD", 4), record_slot("EF", 4), end_slot(4)}));
}

TEST(TapeToSlots, BadWordIsAnError)
{
    OutputCapture percentages;
    Tape from(joined({tape_record("AB"), little_word(0x1000000)}));
    Tape to({}, SIMH_FIXED, 4);
    from.seek(3);
    to.seek(5);
    LogCapture log(0);
    EXPECT_EQ(simh_simh2fixed(from, to, 0), -1);
    EXPECT_EQ(error_text(), "Not a convertable file or errors in data structure (SIMH magtape image)");
    EXPECT_EQ(log.text(), "Error: Error in SIMH magtape image\n");
    EXPECT_EQ(to.bytes(), record_slot("AB", 4)); // as far as it got
    EXPECT_EQ(from.position(), 0u);
    EXPECT_EQ(to.position(), 0u);
}

TEST(TapeToSlots, ResultPassesTheTest)
{
    Bytes image;
    for (uint32_t i = 1; i <= 40; i++) {
        image =
            joined({image, tape_record(some_data(i * 37 % 90 + 1, i)), i % 9 == 0 ? tape_mark() : gap_words(i % 3)});
    }
    for (const int32_t do_pack : {0, 1}) {
        Tape slots(to_slots(image, 32, do_pack));
        TapeImage tested{};
        LogCapture log(2);
        EXPECT_EQ(simh_test_image(slots->fd, &tested, 32, 1, 0), 2);
        EXPECT_EQ(tested.blocksize, 32u);
        EXPECT_EQ(tested.num_records, slots.bytes().size() / 48 - 1);
    }
}

TEST(TapeToSlots, TargetHasItsSlotsCounted)
{
    LogCapture log(2);
    Tape from(joined({tape_record("AB"), tape_record("CD")}));
    Tape to({}, SIMH_UNKNOWN, 4);
    to->num_records = 99;
    EXPECT_EQ(simh_simh2fixed(from, to, 0), 0);
    EXPECT_EQ(to->num_records, 3u);
    EXPECT_EQ(contents(to), "AB CD -2");
}

TEST(TapeToSlots, LongerTargetKeepsWhatIsBehindTheEnd)
{
    LogCapture log(2);
    Tape from(tape_record("AB"));
    Tape to(Bytes(100, 'x'), SIMH_FIXED, 4);
    EXPECT_EQ(simh_simh2fixed(from, to, 0), 0);
    EXPECT_EQ(to.bytes(), joined({record_slot("AB", 4), end_slot(4), Bytes(60, 'x')}));
}

TEST(TapeToSlots, RecordInProgressIsEndedOnBothSides)
{
    LogCapture log(2);
    Tape from({});
    Tape to({}, SIMH_VARIABLE, 4);
    EXPECT_EQ(from.write("AB", 1), 0);
    EXPECT_EQ(to.write("xyz", 1), 0);
    EXPECT_EQ(simh_simh2fixed(from, to, 0), 0);
    EXPECT_EQ(from.bytes(), tape_record("AB"));
    EXPECT_EQ(contents(to), "AB -2");
}

// ---- to a plain file -----------------------------------------------------------------------------------

TEST(TapeToFile, AllDataAreOneStreamOfBlocks)
{
    const Bytes image = joined({tape_record("AB"), tape_mark(), tape_record("CDE"), gap_words(1), tape_mark(),
                                tape_record("FGHIJKLMN"), end_of_medium(), tape_record("xx")});
    EXPECT_EQ(to_file(image, 4), bytes_of(std::string("ABCDEFGHIJKLMN\0\0", 16)));
    EXPECT_EQ(to_file(image, 14), bytes_of("ABCDEFGHIJKLMN"));
    EXPECT_EQ(to_file(image, 1), bytes_of("ABCDEFGHIJKLMN"));
    EXPECT_EQ(to_file(image, 20), joined({bytes_of("ABCDEFGHIJKLMN"), Bytes(6)}));
}

TEST(TapeToFile, NothingIsAnEmptyFile)
{
    EXPECT_EQ(to_file({}, 4), Bytes{});
    EXPECT_EQ(to_file(joined({tape_mark(), tape_mark(), end_of_medium()}), 4), Bytes{});
}

TEST(TapeToFile, SourceThatEndsEarlyEndsTheWalk)
{
    EXPECT_EQ(to_file(joined({tape_record("AB"), little_word(4), bytes_of("CDE")}), 4), bytes_of("ABCD"));
    EXPECT_EQ(to_file(joined({tape_record("AB"), little_word(4), bytes_of("C")}), 4),
              bytes_of(std::string("AB\0\0", 4)));
}

TEST(TapeToFile, BadWordIsAnError)
{
    OutputCapture percentages;
    Tape from(joined({tape_record("ABCD"), tape_record("EF"), little_word(0x80000001)}));
    Tape to({});
    LogCapture log(0);
    EXPECT_EQ(simh_simh2hpi(from, to->fd, 4), -1);
    EXPECT_EQ(log.text(), "Error: error in SIMH magtape image\n");
    EXPECT_EQ(to.bytes(), bytes_of("ABCD"));
    EXPECT_EQ(to.position(), 0u);
}

TEST(TapeToFile, SlotsBecomeBlocks)
{
    const Bytes image = joined({record_slot("ABC", 8), mark_slot(8), record_slot("DEFGHIJK", 8), empty_slot(8),
                                record_slot("L", 8), end_slot(8), record_slot("xx", 8)});
    EXPECT_EQ(slots_to_file(image, 8),
              joined({bytes_of("ABC"), Bytes(5), Bytes(8), bytes_of("DEFGHIJK"), Bytes(8), bytes_of("L"), Bytes(7)}));
}

TEST(TapeToFile, SlotsEndWithTheFile)
{
    EXPECT_EQ(slots_to_file(joined({record_slot("ABC", 8), record_slot("DE", 8)}), 8),
              joined({bytes_of("ABC"), Bytes(5), bytes_of("DE"), Bytes(6)}));
    EXPECT_EQ(slots_to_file(joined({record_slot("ABC", 8), gap_words(1), {3, 0}}), 8),
              joined({bytes_of("ABC"), Bytes(5)}));
    EXPECT_EQ(slots_to_file(joined({record_slot("ABC", 8), gap_words(1), little_word(3), bytes_of("DE")}), 8),
              joined({bytes_of("ABC"), Bytes(5)}));
    EXPECT_EQ(slots_to_file({}, 8), Bytes{});
}

TEST(TapeToFile, SlotsThatAreNotKnownAreLeftOut)
{
    Tape from(joined({record_slot("AB", 8), record_slot("CD", 8), record_slot("EF", 8)}), SIMH_FIXED, 8);
    from->num_records = 1;
    Tape to({});
    LogCapture log(2);
    EXPECT_EQ(simh_fixed2hpi(from, to->fd), 0);
    EXPECT_EQ(to.bytes(), joined({bytes_of("AB"), Bytes(6), bytes_of("CD"), Bytes(6)}));
    EXPECT_EQ(log.text(), "Info:  max record number exceeded\n");
}

TEST(TapeToFile, KeepsOneBlockForASlot)
{
    // A length above the block size, and one with its highest bit set.
    const Bytes image = joined({gap_words(1), little_word(20), bytes_of("ABCDEFGHIJKLMNOP"), gap_words(1),
                                little_word(0x80000002), bytes_of("abcdefghijklmnop")});
    EXPECT_EQ(slots_to_file(image, 8), bytes_of("ABCDEFGHabcdefgh"));
}

TEST(TapeToFile, Hazard_L11_LengthOfASlotStaysInTheBlock)
{
    for (const uint32_t length : {9u, 0xFFFFFFu, 0x80FFFFFFu, 0x80000000u}) {
        const Bytes image = joined({gap_words(1), little_word(length), Bytes(16, 'x'), record_slot("AB", 8)});
        EXPECT_EQ(slots_to_file(image, 8), joined({Bytes(8, 'x'), bytes_of("AB"), Bytes(6)})) << length;
    }
}

// ---- from a plain file ---------------------------------------------------------------------------------

TEST(TapeFromFile, BlocksBecomeRecords)
{
    const Bytes records = joined({tape_record("ABCD"), tape_record("EFGH"), tape_record("IJK")});
    EXPECT_EQ(from_file(bytes_of("ABCDEFGHIJK"), SIMH_VARIABLE, 4), joined({records, end_of_medium()}));
    EXPECT_EQ(from_file(bytes_of("ABCDEFGHIJK"), SIMH_UNKNOWN, 4), joined({records, end_of_medium()}));
}

TEST(TapeFromFile, MultipleOfTheBlockSizeHasNoEmptyRecord)
{
    EXPECT_EQ(from_file(bytes_of("ABCDEFGH"), SIMH_VARIABLE, 4),
              joined({tape_record("ABCD"), tape_record("EFGH"), end_of_medium()}));
    EXPECT_EQ(from_file({}, SIMH_VARIABLE, 4), end_of_medium());
}

TEST(TapeFromFile, BlocksBecomeSlots)
{
    EXPECT_EQ(from_file(bytes_of("ABCDEFGHIJ"), SIMH_FIXED, 4),
              joined({record_slot("ABCD", 4), record_slot("EFGH", 4), record_slot("IJ", 4), end_of_medium()}));
}

TEST(TapeFromFile, SlotsPassTheTest)
{
    for (const uint32_t size : {64u, 60u, 63u, 1000u, 1001u}) {
        Tape slots(from_file(bytes_of(some_data(size)), SIMH_FIXED, 32));
        TapeImage tested{};
        LogCapture log(2);
        EXPECT_EQ(simh_test_image(slots->fd, &tested, 32, 1, 0), 2);
        EXPECT_EQ(tested.num_records, (size + 31) / 32);
    }
}

TEST(TapeFromFile, BlockLargerThanAnyRecordIsRefused)
{
    LogCapture log(2);
    Tape from({});
    from.file.extend(0x1000001);
    Tape to({}, SIMH_VARIABLE, 0x1000000);
    EXPECT_EQ(simh_hpi2simh(from->fd, to), -1);
    EXPECT_EQ(error_text(), "Invalid parameter (record too long)");
    EXPECT_EQ(to.bytes(), Bytes{});
    to->blocksize = UINT32_MAX;
    from.file.replace(bytes_of("ABC"));
    EXPECT_EQ(simh_hpi2simh(from->fd, to), 0);
    EXPECT_EQ(contents(to), "ABC -2");
}

}
