// The test of an image: what it decides, and what it prints of the tape.
#include "tape/simh_test.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "base/file.h"
#include "base/log.h"
#include "tape/simh_test_inner.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/random_choice.h"
#include "tests/tape/tape_image.h"

using namespace tests;

namespace
{

struct Report {
    int32_t format;
    std::string text;
};

// The report without percentages among its lines.
Report report_of(const Bytes &image, uint32_t blocksize = 0, int32_t both_ways = 1)
{
    Tape tape(image);
    TapeImage tested{};
    LogCapture log(2);
    OutputCapture output;
    const int32_t format = simh_test_image(tape->fd, &tested, blocksize, both_ways, 1);
    EXPECT_EQ(tape.position(), 0u);
    EXPECT_EQ(static_cast<int32_t>(tested.format), format);
    EXPECT_EQ(tape.bytes(), image);
    return {format, output.text()};
}

// Format, number of records, largest record, block size.
std::string facts_of(const Bytes &image, uint32_t blocksize = 0, int32_t both_ways = 1)
{
    Tape tape(image);
    tape.seek(static_cast<uint32_t>(image.size()));
    OutputCapture output;
    TapeImage tested{};
    tested.unit_size = 1;
    tested.state = 2;
    const int32_t format = simh_test_image(tape->fd, &tested, blocksize, both_ways, 0);
    EXPECT_EQ(tape.position(), 0u);
    EXPECT_EQ(tested.fd, tape->fd);
    EXPECT_EQ(tested.runaway_limit, 300u);
    EXPECT_EQ(tested.unit_size | tested.state | tested.record_number | tested.file_number, 0u);
    return std::to_string(format) + " " + std::to_string(tested.num_records) + " " + std::to_string(tested.max_record) +
           " " + std::to_string(tested.blocksize);
}

// The first two passes over an image. A limit for gaps, if only one that is never reached, has each word looked at.
std::string passes_over(const Bytes &image, bool by_words)
{
    Tape tape(image);
    tape->unit_size = by_words ? 1 : 0;
    tape->runaway_limit = UINT32_MAX;
    LogCapture log(2);
    TapeView *view = &tape_view;
    view_begin_whole(view, tape->fd);
    TapeCheck check = {.tape = &tape.image, .view = view, .size = view->end};
    const bool forward = check_forward(&check);
    const std::string middle = std::to_string(view->position);
    const bool reverse = forward && check_reverse(&check);
    const TapeSums &sums = check.sums;
    return std::to_string(forward) + " " + middle + " " + std::to_string(reverse) + " " +
           std::to_string(view->position) + ": " + std::to_string(sums.records) + " " + std::to_string(sums.marks) +
           " " + std::to_string(sums.longest) + " " + std::to_string(sums.bytes) + " " +
           std::to_string(tape->num_records) + " " + std::to_string(tape->max_record);
}

Bytes random_piece(RandomChoice *choice)
{
    switch (choice->below(8)) {
    case 0: return tape_mark();
    case 1: return gap_words(choice->from_to(1, 4));
    case 2: return joined({half_gap(), gap_words(1)});
    case 3: return record_slot(std::string(choice->below(9), 'r'), 8);
    case 4: return little_word(choice->one_in(2) ? 0xFFFF0000 + choice->below(0x10000) : choice->below(40));
    default: return tape_record(std::string(choice->from_to(1, 40), static_cast<char>(choice->below(256))));
    }
}

// ---- the report ----------------------------------------------------------------------------------------

struct ReportCase {
    const char *name;
    Bytes image;
    int32_t format;
    const char *text;
};

const ReportCase report_cases[] = {
    {"records, marks and the end of the medium",
     joined({tape_record("ABC"), tape_record("DE"), tape_mark(), tape_record("F"), tape_mark(), end_of_medium()}), 1,
     "<data-record num=0 pos=0 length=3 />\n"
     "<data-record num=1 pos=12 length=2 />\n"
     "<tape-mark file=1 pos=22 />\n"
     "<data-record num=2 pos=26 length=1 />\n"
     "<tape-mark file=2 pos=36 />\n"
     "<end-of-medium />"},
    {"gaps in front of each",
     joined({gap_words(2), tape_record("ABC"), half_gap(), gap_words(1), tape_mark(), gap_words(1), end_of_medium()}),
     1,
     "<erase-gap pos=0 size=8 />\n"
     "<data-record num=0 pos=8 length=3 />\n"
     "<erase-gap pos=20 size=6 />\n"
     "<tape-mark file=1 pos=26 />\n"
     "<erase-gap pos=30 size=4 />\n"
     "<end-of-medium />"},
    {"no end mark", joined({tape_record("AB")}), 1,
     "<data-record num=0 pos=0 length=2 />\n"
     "<!-- end-of-file reached pos=10 -->\n"},
    {"gap in front of the end of the file", joined({tape_record("AB"), gap_words(3)}), 1,
     "<data-record num=0 pos=0 length=2 />\n"
     "<erase-gap pos=10 size=12 />\n"
     "<!-- end-of-file reached pos=22 -->\n"},
    {"half a word at the end", joined({tape_mark(), {1, 2}}), 1,
     "<tape-mark file=1 pos=0 />\n"
     "<erase-gap pos=4 size=2 />\n"
     "<!-- end-of-file reached pos=6 -->\n"},
    {"bad word", joined({tape_record("AB"), gap_words(1), little_word(0x1000000)}), 0,
     "<data-record num=0 pos=0 length=2 />\n"
     "<!-- error in SIMH magtape image pos=18 -->\n"},
    {"record longer than the file", joined({tape_record("AB"), little_word(9), Bytes(8, 'x')}), 0,
     "<data-record num=0 pos=0 length=2 />\n"
     "<data-record num=1 pos=10 length=9 />\n"
     "<!-- error in SIMH magtape image pos=10 (record length exceeds end-of-file) -->\n"},
    {"no word behind the data", joined({little_word(4), bytes_of("ABCD")}), 0,
     "<data-record num=0 pos=0 length=4 />\n"
     "<!-- end-of-file reached pos=0 -->\n"
     "<!-- error in SIMH magtape image (reverse scan) pos=8 -->\n"},
    {"half a word behind the data", joined({little_word(4), bytes_of("ABCD"), {4, 0}}), 0,
     "<data-record num=0 pos=0 length=4 />\n"
     "<!-- end-of-file reached pos=0 -->\n"
     "<!-- error in SIMH magtape image (reverse scan) pos=10 -->\n"},
    {"junk behind the data", joined({little_word(2), bytes_of("AB"), little_word(0x41000002)}), 0,
     "<data-record num=0 pos=0 length=2 />\n"
     "<!-- error in SIMH magtape image pos=0 (trailing record length not at expected position) -->\n"},
    {"another length behind the data", joined({little_word(2), bytes_of("AB"), little_word(3)}), 0,
     "<data-record num=0 pos=0 length=2 />\n"
     "<!-- error in SIMH magtape image pos=0 (leading & trailing record length differ) -->\n"},
    {"length with its highest bit behind the data", joined({little_word(2), bytes_of("AB"), little_word(0x80000002)}),
     0,
     "<data-record num=0 pos=0 length=2 />\n"
     "<!-- error in SIMH magtape image pos=0 (leading & trailing record length differ) -->\n"},
    {"only the end of the medium", end_of_medium(), 1, "<end-of-medium />"},
    {"only a gap", gap_words(1), 1, "<erase-gap pos=0 size=4 />\n<!-- end-of-file reached pos=4 -->\n"},
    {"one byte", {7}, 1, "<erase-gap pos=0 size=1 />\n<!-- end-of-file reached pos=1 -->\n"},
};

TEST(TapeReport, EachLine)
{
    for (const ReportCase &row : report_cases) {
        SCOPED_TRACE(row.name);
        const Report report = report_of(row.image);
        EXPECT_EQ(report.text, row.text);
        EXPECT_EQ(report.format, row.format);
        EXPECT_EQ(facts_of(row.image)[0], static_cast<char>('0' + row.format));
    }
}

TEST(TapeReport, KeepsLineOfEndOfMediumOpen)
{
    EXPECT_EQ(report_of(end_of_medium()).text, "<end-of-medium />");
}

TEST(TapeReport, OnlyTheThirdPassPrintsNothing)
{
    EXPECT_EQ(report_of(tape_record("AB"), 0, 0).text, "");
    EXPECT_EQ(report_of({}).text, "");
}

TEST(TapeReport, WithoutItOnlyPercentagesArePrinted)
{
    Tape tape(joined({tape_record("AB"), tape_mark(), little_word(0x1000000)}));
    TapeImage tested{};
    LogCapture log(2);
    OutputCapture output;
    EXPECT_EQ(simh_test_image(tape->fd, &tested, 0, 1, 0), 0);
    EXPECT_EQ(output.text(), "");
}

TEST(TapeReport, RunawayIsPrintedAlways)
{
    Tape tape(joined({gap_words(5), tape_record("AB")}));
    tape->unit_size = 4;
    tape->runaway_limit = 2;
    for (const bool xml : {false, true}) {
        OutputCapture output;
        LogCapture log(2);
        TapeView *view = &tape_view;
        view_begin_whole(view, tape->fd);
        TapeCheck check = {.tape = &tape.image, .view = view, .size = view->end, .xml = xml};
        EXPECT_TRUE(check_forward(&check));
        const std::string lines = "<tape runaway position pos=4 />\n<tape runaway position pos=12 />\n";
        const std::string record = "<erase-gap pos=16 size=4 />\n<data-record num=0 pos=20 length=2 />\n"
                                   "<!-- end-of-file reached pos=30 -->\n";
        EXPECT_EQ(output.text(), xml ? lines + record : lines);
        EXPECT_TRUE(check_reverse(&check));
    }
}

TEST(TapeReport, Hazard_L6_BeginOfTheTapeEndsTheReversePass)
{
    // The forward pass finds a record whose data hold a gap and a mark where the reverse pass looks for its end.
    Tape tape(joined({tape_record("AB"), tape_mark(), tape_mark()}));
    LogCapture log(2);
    OutputCapture output;
    TapeView *view = &tape_view;
    view_begin_whole(view, tape->fd);
    TapeCheck check = {.tape = &tape.image, .view = view, .size = view->end, .xml = true, .sums = {.records = 2}};
    view->position = view->end;
    EXPECT_FALSE(check_reverse(&check));
    EXPECT_EQ(output.text(), "<!-- error in SIMH magtape image (reverse scan record count mismatch) -->");
}

TEST(TapeReport, Hazard_L6_TruncatedRecordOfMarksEndsTheReversePass)
{
    // The data read as marks, whose count the reverse pass doesn't take for records; it ends at the length word.
    const Report report = report_of(joined({little_word(16), Bytes(16)}));
    EXPECT_EQ(report.format, 0);
    EXPECT_EQ(report.text, "<data-record num=0 pos=0 length=16 />\n"
                           "<!-- end-of-file reached pos=0 -->\n"
                           "<!-- error in SIMH magtape image (reverse scan) pos=4 -->\n");
}

TEST(TapeReport, Hazard_L6_EndMarksInReverseArePassed)
{
    const Report report = report_of(joined({little_word(12), Bytes(12, 0xFF)}));
    EXPECT_EQ(report.format, 0);
    EXPECT_TRUE(contains(report.text, "(reverse scan) pos=4 -->"));
}

TEST(TapeReport, PercentagesGoThroughBothPasses)
{
    Bytes image;
    for (int i = 0; i < 10; i++) image = joined({image, tape_record(some_data(2))});
    Tape tape(image);
    TapeImage tested{};
    OutputCapture output;
    percent_progress(7, 100); // another one than the first below
    EXPECT_EQ(simh_test_image(tape->fd, &tested, 0, 1, 0), 1);
    std::string text = output.text();
    std::erase(text, '\b');
    EXPECT_EQ(text, "7%0%5%10%15%20%25%30%35%40%45%50%55%60%65%70%75%80%85%90%95%100%");
}

TEST(TapePasses, RecordsPassedAtOnceAreThoseOfTheWords)
{
    RandomChoice choice(20);
    uint32_t good = 0;
    const uint32_t tapes = random_steps();
    for (uint32_t i = 0; i < tapes; i++) {
        Bytes image;
        const uint32_t pieces = choice.from_to(1, 12);
        for (uint32_t piece = 0; piece < pieces; piece++) image = joined({image, random_piece(&choice)});
        if (choice.one_in(3)) image[choice.below(static_cast<uint32_t>(image.size()))] = 0xFF;
        if (choice.one_in(3)) image.resize(choice.from_to(1, static_cast<uint32_t>(image.size())));
        const std::string passes = passes_over(image, false);
        ASSERT_EQ(passes, passes_over(image, true)) << testing::PrintToString(image);
        good += passes.starts_with("1") ? 1u : 0u;
    }
    EXPECT_GT(good, tapes / 10);
    EXPECT_LT(good, tapes);
}

TEST(TapePasses, SumsAreThoseOfTheForwardPass)
{
    Tape tape(joined({tape_record("ABC"), tape_mark(), gap_words(2), tape_record(some_data(300)), tape_mark(),
                      tape_mark(), tape_record("DE"), end_of_medium(), tape_record("not reached")}));
    for (const bool xml : {false, true}) {
        LogCapture log(2);
        OutputCapture output;
        TapeSums sums;
        EXPECT_EQ(test_image(tape->fd, &tape.image, {.blocksize = 0, .both_ways = true, .xml = xml}, &sums), 1);
        EXPECT_EQ(sums.records, 3u);
        EXPECT_EQ(sums.marks, 3u);
        EXPECT_EQ(sums.longest, 300u);
        EXPECT_EQ(sums.bytes, 305u);
    }
}

// ---- what it decides -----------------------------------------------------------------------------------

TEST(TapeTest, EmptyFileIsNone)
{
    Tape tape({});
    TapeImage tested{};
    LogCapture log(2);
    EXPECT_EQ(simh_test_image(tape->fd, &tested, 0, 1, 1), 0);
    EXPECT_EQ(log.text(), "Info:  Empty (zero length) image file.\n");
}

TEST(TapeTest, PassesAreLogged)
{
    Tape tape(tape_record("AB"));
    TapeImage tested{};
    LogCapture log(2);
    EXPECT_EQ(simh_test_image(tape->fd, &tested, 0, 1, 0), 1);
    EXPECT_EQ(log.text(), "Info:  Performing forward check\nInfo:  Performing reverse check\n"
                          "Info:  Performing fixed block check\n");
    LogCapture short_log(3);
    EXPECT_EQ(simh_test_image(file_void(), &tested, 7, 0, 1), 0);
    EXPECT_TRUE(contains(short_log.text(), ", blocksize=7, do_level_1_check=0, xml=1)\n"));
}

TEST(TapeTest, VariableImage)
{
    const Bytes image = joined({tape_record("ABC"), tape_record(some_data(300)), tape_mark(), tape_record("DE")});
    EXPECT_EQ(facts_of(image), "1 3 300 0"); // the second word is no length, so no slots are looked at
    EXPECT_EQ(facts_of(image, 0, 0), "0 0 0 0");
}

TEST(TapeTest, OnlyTheEndOfTheMediumIsVariable)
{
    EXPECT_EQ(facts_of(end_of_medium()), "1 0 0 0");
    EXPECT_EQ(facts_of(end_of_medium(), 0, 0), "0 0 0 0");
    EXPECT_EQ(facts_of(end_of_medium(), 512), "2 0 512 512"); // an array of no slots
}

TEST(TapeTest, FixedImageHasTheLastWord)
{
    const Bytes image = joined({record_slot(some_data(16), 16), record_slot("ABC", 16), mark_slot(16), empty_slot(16),
                                record_slot("D", 16), end_slot(16)});
    EXPECT_EQ(facts_of(image), "2 5 16 16");
    EXPECT_EQ(facts_of(image, 16), "2 5 16 16");
    EXPECT_EQ(facts_of(image, 0, 0), "2 5 16 16");
    EXPECT_EQ(facts_of(image, 12), "1 0 16 0");
}

TEST(TapeTest, FixedImageMayEndWithoutItsEndMark)
{
    EXPECT_EQ(facts_of(joined({record_slot("ABCD", 8), record_slot("EF", 8)})), "2 2 8 8");
    EXPECT_EQ(facts_of(joined({record_slot("ABCD", 8), record_slot("EF", 8), little_word(0xFFFFFFFF)})), "2 2 8 8");
}

TEST(TapeTest, ShortFirstRecordTellsTheBlockSizeToo)
{
    EXPECT_EQ(facts_of(joined({record_slot("ABCD", 32), record_slot(some_data(32), 32), end_slot(32)})), "2 2 32 32");
}

TEST(TapeTest, KeepsMisledSize)
{
    // A half gap, or an odd length, in front of the filler; and a mark where the next record was expected.
    const Bytes even = joined({record_slot("AB", 8), record_slot("ABCD", 8), end_slot(8)});
    EXPECT_EQ(facts_of(even), "1 0 4 0");
    EXPECT_EQ(facts_of(even, 8), "2 2 8 8");
    const Bytes odd = joined({record_slot("ABC", 8), record_slot("ABCD", 8), end_slot(8)});
    EXPECT_EQ(facts_of(odd), "1 0 4 0");
    EXPECT_EQ(facts_of(odd, 8), "2 2 8 8");
    const Bytes mark = joined({record_slot("ABCD", 8), mark_slot(8), record_slot("ABCD", 8), end_slot(8)});
    EXPECT_EQ(facts_of(mark), "1 2 4 0");
    EXPECT_EQ(facts_of(mark, 8), "2 3 8 8");
}

TEST(TapeTest, KeepsSlotCountOfVariableImage)
{
    EXPECT_EQ(facts_of(joined({tape_record("ABC"), tape_record("DE")}), 8), "1 0 8 0");
    EXPECT_EQ(facts_of(joined({record_slot("ABCD", 8), tape_record("AB"), tape_record("CD")})), "1 2 4 0");
}

TEST(TapeTest, MarkWithARecordInItsSlotIsAccepted)
{
    EXPECT_EQ(facts_of(joined({tape_mark(), tape_record("ABCDEFGH"), gap_words(1)}), 8), "2 1 8 8");
}

struct SlotCase {
    const char *name;
    Bytes second_slot;
    bool fixed;
};

const SlotCase slot_cases[] = {
    {"record", record_slot("ABC", 8), true},
    {"record of the whole size", record_slot("ABCDEFGH", 8), true},
    {"length zero", joined({gap_words(1), little_word(0), Bytes(16)}), true},
    {"length above the size", joined({gap_words(1), little_word(9), Bytes(16)}), false},
    {"length with bit 24", joined({gap_words(1), little_word(0x1000003), Bytes(16)}), false},
    {"length with bit 30", joined({gap_words(1), little_word(0x40000003), Bytes(16)}), false},
    {"length with bit 31", joined({gap_words(1), little_word(0x80000003), Bytes(16)}), false},
    {"end of medium as length", joined({gap_words(1), end_of_medium(), Bytes(16)}), false},
    {"bad first word", joined({little_word(1), little_word(3), Bytes(16)}), false},
    {"half gap first", joined({half_gap(), gap_words(5), half_gap()}), false},
    {"mark", mark_slot(8), true},
    {"empty", empty_slot(8), true},
    {"gap that isn't whole", joined({gap_words(5), little_word(3)}), false},
    {"mark whose gap isn't whole", joined({tape_mark(), gap_words(3), little_word(3), gap_words(1)}), false},
    {"end of medium", end_slot(8), true},
    {"nothing", {}, true},
    {"one byte", {0xFE}, false},
    {"three bytes", {0xFE, 0xFF, 0xFF}, false},
    {"only the gap word", gap_words(1), false},
    {"half a length", joined({gap_words(1), {3, 0}}), false},
    {"gap that ends with the file", gap_words(5), false},
    {"record cut off", joined({gap_words(1), little_word(4)}), true},
};

TEST(TapeTest, EachWordOfASlot)
{
    for (const SlotCase &row : slot_cases) {
        SCOPED_TRACE(row.name);
        const std::string facts = facts_of(joined({record_slot("ABCD", 8), row.second_slot}), 8, 0);
        EXPECT_EQ(facts[0], row.fixed ? '2' : '0');
    }
}

TEST(TapeTest, SecondWordThatIsNoLengthLeavesTheFormat)
{
    EXPECT_EQ(facts_of(joined({mark_slot(8), record_slot("ABCD", 8)})), "1 1 4 0");
    EXPECT_EQ(facts_of(joined({mark_slot(8), record_slot("ABCD", 8)}), 8), "2 2 8 8");
    EXPECT_EQ(facts_of(joined({tape_mark(), {1, 0}}), 0, 0), "0 0 0 0");
    EXPECT_EQ(facts_of(joined({gap_words(1), little_word(100), Bytes(20)}), 0, 0), "0 0 0 0"); // ends behind the file
    EXPECT_EQ(facts_of(joined({gap_words(1), tape_record("ABCD"), gap_words(9)}), 0, 0), "0 0 0 0"); // only gap
}

TEST(TapeTest, Hazard_L9_LengthThatWrapsThePositionIsLongerThanTheFile)
{
    constexpr uint32_t records = 255;
    constexpr uint64_t distance = SIMH_MAX_RECORD + 9; // from one to the next
    const Bytes length = little_word(SIMH_MAX_RECORD);
    Tape tape({});
    tape.file.extend(records * distance + 2000);
    for (uint64_t i = 0; i <= records; i++) {
        const bool first = i == 0;
        tape.seek(static_cast<uint32_t>(i * distance - (first ? 0 : 4)));
        const Bytes words = first ? length : joined({length, length});
        ASSERT_EQ(file_write(tape->fd, words.data(), static_cast<uint32_t>(words.size())), words.size());
    }
    TapeImage tested{};
    LogCapture log(2);
    OutputCapture output;
    EXPECT_EQ(simh_test_image(tape->fd, &tested, 0, 1, 1), 0);
    EXPECT_TRUE(contains(output.text(), "<data-record num=255 pos=4278192120 length=16777215 />\n"
                                        "<!-- error in SIMH magtape image pos=4278192120 (record length exceeds "
                                        "end-of-file) -->\n"));
}

TEST(TapeTest, Hazard_A4_FileOfFourGigabytesIsNotEmpty)
{
    Tape tape(joined({tape_record("AB"), end_of_medium()}));
    for (const uint64_t bytes : {uint64_t{0x100000000}, uint64_t{0x140000000}}) {
        tape.file.extend(bytes);
        TapeImage tested{};
        LogCapture log(2);
        EXPECT_EQ(simh_test_image(tape->fd, &tested, 1024, 1, 0), 1);
        EXPECT_EQ(tested.num_records, 0u);
        EXPECT_FALSE(contains(log.text(), "Empty"));
    }
}

TEST(TapeTest, Hazard_L7_PassesReadInLargeBlocks)
{
    Bytes image;
    for (uint32_t i = 0; i < 4000; i++) {
        const Bytes slot = record_slot(some_data(1024, i), 1024);
        image.insert(image.end(), slot.begin(), slot.end());
    }
    Tape tape(image);
    TapeImage tested{};
    LogCapture log(2);
    FileFaults calls;
    EXPECT_EQ(simh_test_image(tape->fd, &tested, 0, 1, 0), 2);
    const size_t blocks = image.size() / 65536 + 1;
    EXPECT_LE(calls.reads, 3 * blocks);
    EXPECT_LE(calls.seeks, 3 * blocks);
}

TEST(TapeTest, Hazard_L10_SlotSizeThatWrapsIsNotFixed)
{
    for (const uint32_t blocksize : {0xFFFFFFF0u, 0xFFFFFFF1u, 0xFFFFFFFFu}) {
        EXPECT_EQ(facts_of(joined({record_slot("ABCD", 8), end_slot(8)}), blocksize), "1 0 4 0");
    }
    // Worked out: 4 - 12 + 4, and 0 - 12 + 4.
    EXPECT_EQ(facts_of(joined({gap_words(1), tape_record("ABCD"), tape_mark()})), "1 0 4 0");
    EXPECT_EQ(facts_of(Bytes(64)), "1 0 0 0");
}

TEST(TapeTest, ErrorsAreSetForNoImage)
{
    for (const ReportCase &row : report_cases) {
        forget_error();
        report_of(row.image);
        EXPECT_EQ(global_error, 0u) << row.name;
    }
}

TEST(TapeTest, WithoutTapeOrFile)
{
    Tape tape(tape_record("AB"));
    forget_error();
    EXPECT_EQ(simh_test_image(tape->fd, nullptr, 0, 1, 0), 0);
    EXPECT_EQ(error_text(), "Invalid parameter (NULL pointer)");
    TapeImage tested{};
    EXPECT_EQ(simh_test_image(file_void(), &tested, 0, 1, 0), 0);
    EXPECT_EQ(simh_test_image(0, &tested, 0, 1, 0), 0);
}

TEST(TapeTest, LargeRecordsAndManyOfThemPassTheWindows)
{
    Bytes image;
    uint32_t count = 0;
    for (const uint32_t length : {0xFFFFFFu, 1u, 131072u, 131064u, 131071u, 65536u}) {
        image = joined({image, tape_record(some_data(length))});
        count++;
    }
    for (uint32_t i = 0; i < 3000; i++) {
        const Bytes record = tape_record(some_data(1 + i % 400, i));
        image.insert(image.end(), record.begin(), record.end());
        if (i % 7 == 0) image.insert(image.end(), {0xFE, 0xFF, 0xFF, 0xFF});
        count++;
    }
    EXPECT_EQ(facts_of(image), "1 " + std::to_string(count) + " 16777215 0");
}

}

// What the first two passes would find in slots that are plain is nothing.
TEST(TapeTest, PlainSlotsPassTheOtherPassesToo)
{
    struct Row {
        const char *name;
        Bytes second_slot;
        bool plain;
    };
    const Row rows[] = {
        {"record of the whole size", record_slot("ABCDEFGH", 8), true},
        {"record with whole gap words behind it", record_slot("ABCD", 8), true},
        {"odd record", record_slot("ABC", 8), true},
        {"record with a half gap behind it", record_slot("AB", 8), false},
        {"mark", mark_slot(8), true},
        {"nothing", empty_slot(8), true},
        {"mark with a record in its slot", joined({tape_mark(), tape_record("ABCDEFGH"), gap_words(1)}), true},
        {"length zero", joined({gap_words(1), little_word(0), Bytes(16)}), false},
        {"two lengths", joined({gap_words(1), little_word(4), bytes_of("ABCD"), little_word(3), gap_words(2)}), false},
        {"no gap behind it", joined({gap_words(1), tape_record("ABCD"), Bytes(8)}), false},
        {"a slot that ends with the file", joined({gap_words(1), little_word(4), bytes_of("AB")}), false},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        Tape tape(joined({record_slot("ABCDEFGH", 8), row.second_slot}));
        TapeImage tested{};
        LogCapture log(2);
        EXPECT_EQ(test_plain_slots(tape->fd, &tested, 8), row.plain);
        EXPECT_EQ(tape.position(), 0u);
        TapeSums sums;
        const int32_t format = test_image(tape->fd, &tested, {.blocksize = 8, .both_ways = true, .xml = false}, &sums);
        EXPECT_TRUE(!row.plain || format == SIMH_FIXED);
    }
    Tape variable(tape_record("ABCDEFGH"));
    TapeImage tested{};
    EXPECT_FALSE(test_plain_slots(variable->fd, &tested, 8));
}

TEST(TapePasses, BothWaysAreThoseOfTheTest)
{
    RandomChoice choice(21);
    uint32_t good = 0;
    const uint32_t tapes = random_steps();
    for (uint32_t i = 0; i < tapes; i++) {
        Bytes image;
        const uint32_t pieces = choice.from_to(1, 6);
        for (uint32_t piece = 0; piece < pieces; piece++) image = joined({image, random_piece(&choice)});
        if (choice.one_in(3)) image.resize(choice.from_to(1, static_cast<uint32_t>(image.size())));
        Tape tape(image);
        TapeImage tested{};
        LogCapture log(2);
        TapeSums sums;
        TapeSums expected;
        const bool passes = test_both_ways(tape->fd, &sums);
        const TestOrder order = {.blocksize = 0, .both_ways = true, .xml = false};
        ASSERT_EQ(passes, test_image(tape->fd, &tested, order, &expected) != SIMH_UNKNOWN)
            << testing::PrintToString(image);
        EXPECT_EQ(sums.records, expected.records);
        good += passes ? 1u : 0u;
    }
    EXPECT_GT(good, tapes / 10);
    EXPECT_LT(good, tapes);
}

TEST(TapeTest, RandomPlainSlotsPassTheOtherPassesToo)
{
    RandomChoice choice(8);
    uint32_t plain = 0;
    const uint32_t tapes = random_steps();
    for (uint32_t i = 0; i < tapes; i++) {
        Bytes image;
        const uint32_t slots = choice.from_to(1, 5);
        for (uint32_t slot = 0; slot < slots; slot++) {
            const uint32_t kind = choice.below(10);
            const std::string text(choice.from_to(1, 8), static_cast<char>(choice.below(256)));
            image = joined({image, kind == 0 ? mark_slot(8) : kind == 1 ? empty_slot(8) : record_slot(text, 8)});
        }
        if (choice.one_in(4)) {
            uint8_t &byte = image[choice.below(static_cast<uint32_t>(image.size()))];
            byte = static_cast<uint8_t>(byte ^ (1u << choice.below(8)));
        }
        Tape tape(image);
        TapeImage tested{};
        LogCapture log(2);
        if (!test_plain_slots(tape->fd, &tested, 8)) continue;
        plain++;
        TapeSums sums;
        ASSERT_EQ(test_image(tape->fd, &tested, {.blocksize = 8, .both_ways = true, .xml = false}, &sums), SIMH_FIXED)
            << testing::PrintToString(image);
    }
    EXPECT_GT(plain, tapes / 10);
    EXPECT_LT(plain, tapes);
}
