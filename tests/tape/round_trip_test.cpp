// Conversions there and back, and what all of them refuse.
#include <gtest/gtest.h>

#include "base/error.h"
#include "base/file.h"
#include "base/log.h"
#include "tape/simh_convert.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/tape/conversions.h"
#include "tests/tape/tape_image.h"

using namespace tests;

namespace
{

// ---- round trips ---------------------------------------------------------------------------------------

TEST(TapeRoundTrip, PlainToTapeAndBack)
{
    for (const uint32_t blocksize : {4u, 256u, 1024u, 70000u, 131072u, 200000u}) {
        const Bytes content = bytes_of(some_data(blocksize * 3));
        EXPECT_TRUE(to_file(from_file(content, SIMH_VARIABLE, blocksize), blocksize) == content);
        const Bytes slots = from_file(content, SIMH_FIXED, blocksize);
        EXPECT_TRUE(slots_to_file(slots, blocksize) == content);
        EXPECT_TRUE(to_file(slots, blocksize) == content);
        EXPECT_EQ(slots.size(), 3 * (blocksize + 16) + 4);
    }
}

TEST(TapeRoundTrip, VariableToFixedKeepsTheBytesOfEachFile)
{
    Bytes image;
    std::string data;
    for (uint32_t i = 1; i <= 200; i++) {
        const std::string record = some_data((i * i * 7) % 3000 + 1, i);
        data += record;
        image = joined({image, tape_record(record), i % 5 == 0 ? gap_words(2) : Bytes{}});
    }
    for (const uint32_t blocksize : {16u, 256u, 1000u, 4096u, 1u << 20}) {
        const Bytes slots = to_slots(image, blocksize, 1);
        Bytes plain = to_file(slots, blocksize);
        const size_t blocks = (data.size() + blocksize - 1) / blocksize;
        EXPECT_TRUE(plain == slots_to_file(slots, blocksize));
        EXPECT_EQ(plain.size(), blocks * blocksize);
        plain.resize(data.size());
        EXPECT_TRUE(plain == bytes_of(data));
    }
}

TEST(TapeRoundTrip, VariableToFixedKeepsRecordsThatFit)
{
    const Bytes image = joined(
        {tape_record("ABCD"), tape_record("EF"), tape_mark(), tape_record("GHIJKL"), tape_mark(), end_of_medium()});
    Tape slots(to_slots(image, 8, 0), SIMH_FIXED, 8);
    EXPECT_EQ(contents(slots), "ABCD EF -4 GHIJKL -4 -2");
    slots->format = SIMH_VARIABLE;
    EXPECT_EQ(contents(slots), "ABCD EF -4 GHIJKL -4 -2");
    EXPECT_EQ(to_slots(slots.bytes(), 8, 0), slots.bytes());
}

// ---- what all of them refuse ---------------------------------------------------------------------------

TEST(TapeConversion, BlockSizeOfZeroIsRefused)
{
    Tape from(tape_record("AB"));
    Tape to({});
    EXPECT_EQ(simh_simh2fixed(from, to, 0), -1);
    EXPECT_EQ(error_text(), "Invalid parameter (blocksize can't be 0)");
    forget_error();
    EXPECT_EQ(simh_simh2hpi(from, to->fd, 0), -1);
    EXPECT_EQ(error_text(), "Invalid parameter (blocksize can't be 0)");
    forget_error();
    EXPECT_EQ(simh_fixed2hpi(from, to->fd), -1);
    EXPECT_EQ(error_text(), "Invalid parameter (blocksize can't be 0)");
    EXPECT_EQ(simh_hpi2simh(from->fd, to), -1);
    EXPECT_EQ(error_text(), "Invalid parameter (record size can't be 0)");
    EXPECT_EQ(to.bytes(), Bytes{});
}

TEST(TapeConversion, MissingTapeIsRefused)
{
    Tape tape(tape_record("AB"), SIMH_VARIABLE, 4);
    forget_error();
    EXPECT_EQ(simh_simh2fixed(nullptr, tape, 0), -1);
    EXPECT_EQ(error_text(), "Invalid parameter (NULL pointer)");
    EXPECT_EQ(simh_simh2fixed(tape, nullptr, 0), -1);
    EXPECT_EQ(simh_simh2hpi(nullptr, tape->fd, 4), -1);
    EXPECT_EQ(simh_fixed2hpi(nullptr, tape->fd), -1);
    EXPECT_EQ(simh_hpi2simh(tape->fd, nullptr), -1);
}

TEST(TapeConversion, FileIsNotConvertedIntoItself)
{
    Tape tape(tape_record("AB"), SIMH_VARIABLE, 4);
    TapeImage same = tape.image;
    EXPECT_EQ(simh_simh2fixed(tape, &same, 0), -1);
    EXPECT_EQ(error_text(), "Can't copy/move file to itself");
    EXPECT_EQ(simh_simh2hpi(tape, same.fd, 4), -1);
    EXPECT_EQ(simh_fixed2hpi(tape, same.fd), -1);
    EXPECT_EQ(simh_hpi2simh(same.fd, tape), -1);
    EXPECT_EQ(tape.bytes(), tape_record("AB"));
}

TEST(TapeConversion, FileThatIsOpenTwiceDoesNotGrowForEver)
{
    LogCapture log(2);
    Tape tape(bytes_of(some_data(1000)), SIMH_VARIABLE, 4);
    FileHandle again = 0;
    ASSERT_EQ(file_open(&again, tape.file.path(), "rb", 0), 1);
    EXPECT_EQ(simh_hpi2simh(again, tape), 0);
    EXPECT_EQ(tape.bytes().size(), 250u * 12u + 4u);
    file_close(again);
}

TEST(TapeConversion, WithoutMemoryNothingIsWritten)
{
    Tape from(tape_record("AB"), SIMH_FIXED, 4);
    Tape to({}, SIMH_FIXED, 4);
    const auto expect_error = [&to](int32_t result) {
        EXPECT_EQ(result, -1);
        EXPECT_EQ(error_text(), "Out of memory");
        EXPECT_EQ(to.bytes(), Bytes{});
        forget_error();
    };
    {
        HeapFaults faults(1);
        expect_error(simh_simh2fixed(from, to, 0));
    }
    {
        HeapFaults faults(1);
        expect_error(simh_simh2hpi(from, to->fd, 4));
    }
    {
        HeapFaults faults(1);
        expect_error(simh_fixed2hpi(from, to->fd));
    }
    {
        HeapFaults faults(1);
        expect_error(simh_hpi2simh(from->fd, to));
    }
}

TEST(TapeConversion, LargestBlockSizeTakesNoMoreMemoryThanTheSource)
{
    LogCapture log(2);
    Tape from(joined({tape_record("AB"), tape_record("CDE")}));
    Tape to({}, SIMH_FIXED, 0x100000);
    HeapFaults memory;
    EXPECT_EQ(simh_simh2fixed(from, to, 1), 0);
    EXPECT_LT(memory.bytes, 100u);
    EXPECT_EQ(to.position(), 0u);
    EXPECT_EQ(to.read(), "ABCDE");
}

TEST(TapeConversion, CallsAreLogged)
{
    LogCapture log(3);
    simh_simh2fixed(nullptr, nullptr, 1);
    simh_simh2hpi(nullptr, 5, 512);
    simh_fixed2hpi(nullptr, 6);
    simh_hpi2simh(7, nullptr);
    EXPECT_EQ(log.text(), "Trace: simh_simh2fixed(from_tape=0, to_tape=0, do_pack=1)\n"
                          "Trace: simh_simh2hpi(from_tape=0, to_fd=5, blocksize=512)\n"
                          "Trace: simh_fixed2hpi(from_tape=0, to_fd=6)\n"
                          "Trace: simh_hpi2simh(from_fd=7, to_tape=0)\n");
}

TEST(TapeConversion, PercentagesFollowTheSource)
{
    Tape from(joined({tape_record(some_data(12)), tape_record(some_data(12)), tape_record(some_data(12)),
                      tape_record(some_data(12))}));
    Tape to({}, SIMH_FIXED, 12);
    const auto shown = [](const auto &convert) {
        OutputCapture output;
        percent_progress(7, 100);
        EXPECT_EQ(convert(), 0);
        std::string text = output.text();
        std::erase(text, '\b');
        return text;
    };
    EXPECT_EQ(shown([&] { return simh_simh2fixed(from, to, 0); }), "7%0%25%50%75%100%");
    EXPECT_EQ(shown([&] { return simh_simh2hpi(from, to->fd, 12); }), "7%0%25%50%75%100%");
    Tape plain(Bytes(48));
    from->blocksize = 24;
    EXPECT_EQ(shown([&] { return simh_hpi2simh(plain->fd, from); }), "7%0%50%100%");
    LogCapture quiet(2);
    EXPECT_EQ(shown([&] { return simh_simh2hpi(from, to->fd, 12); }), "7%");
}

}
