// Where laying out a volume ends: at the end of the drive, when its user says so, at a record that can't be written.
// And what makes a medium blank.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/medium.h"
#include "tests/volume/extract_support.h"
#include "tests/volume/initialize_support.h"

using namespace tests;

// ---- limits, progress, failures ------------------------------------------------------------------------------

TEST(Initialize, OtherFormatsAreRefusedWithNothingWritten)
{
    for (const uint32_t format : {0u, 4u, 5u, 6u, 0xFFFFFFFFu}) {
        MemoryMedium medium(48);
        make_small_disk(medium.md);
        medium.md.format = format;
        EXPECT_EQ(initialize(medium, 0), -1);
        EXPECT_EQ(global_error, 203u) << format;
        EXPECT_TRUE(medium.written.empty());
    }
}

TEST(Initialize, FillEndsWithTheDrive)
{
    MemoryMedium medium(40);
    make_small_disk(medium.md);
    medium.limit_to_hardware();
    const LogCapture log(2);
    EXPECT_EQ(initialize(medium, 0), 0);
    EXPECT_EQ(log.text(), "Info:  Block count for selected media format exceeds hardware limit\n");
    EXPECT_EQ(medium.written, joined({{0, 1, 5, 3, 7}, from_to(12, 28)}));
    EXPECT_EQ(medium.streams[0], "write 12+28");
}

TEST(Initialize, DriveThatEndsAheadOfTheFileAreaGetsNoFill)
{
    MemoryMedium medium(12);
    make_small_disk(medium.md);
    medium.limit_to_hardware();
    EXPECT_EQ(initialize(medium, 0), 0);
    EXPECT_EQ(medium.written, (Numbers{0, 1, 5, 3, 7}));
    EXPECT_TRUE(medium.streams.empty());
}

TEST(Initialize, ImageFileHasNoLimit)
{
    const TemporaryFile image(Bytes(10 * record_bytes));
    {
        const Medium medium(image.path(), 0);
        make_small_disk(*medium.md);
        EXPECT_EQ(image_initialize(medium.md, 0, nullptr), 0);
    }
    EXPECT_EQ(image.bytes().size(), 48u * record_bytes);
}

TEST(Initialize, ProgressIsToldBytesRecordAndPercentage)
{
    MemoryMedium medium(48);
    make_small_disk(medium.md);
    medium.md.data_size = 3 * record_bytes;
    const ProgressLog told;
    EXPECT_EQ(initialize(medium, 0, ProgressLog::callback), 0);
    EXPECT_EQ(told.calls, (ProgressCalls{{256, 0, 33}, {512, 1, 66}, {768, 2, 100}}));
}

TEST(Initialize, AnswerOtherThanZeroMakesARecordTheLast)
{
    MemoryMedium medium(48);
    make_small_disk(medium.md);
    const ProgressLog told(0);
    EXPECT_EQ(initialize(medium, 0, ProgressLog::callback), 0);
    EXPECT_EQ(medium.written, (Numbers{0, 1, 5, 3, 7, 12})); // the tables are complete
    EXPECT_EQ(told.calls.size(), 1u);
    EXPECT_EQ(medium.streams.back(), "close");
}

TEST(Initialize, Hazard_K7_NothingToFill)
{
    MemoryMedium medium(48);
    make_small_disk(medium.md);
    medium.md.data_size = 0;
    const ProgressLog told;
    EXPECT_EQ(initialize(medium, 0, ProgressLog::callback), 0);
    EXPECT_TRUE(told.calls.empty());
    EXPECT_EQ(medium.written, (Numbers{0, 1, 5, 3, 7}));
}

TEST(Initialize, EachRecordThatCannotBeWrittenEndsIt)
{
    for (const uint32_t format : {uint32_t{FORMAT_DISK45}, uint32_t{FORMAT_TAPE45}, uint32_t{FORMAT_LIF}}) {
        MemoryMedium whole(900);
        make_lif(whole.md, 900);
        if (format == FORMAT_DISK45) make_small_disk(whole.md, 0);
        whole.md.format = format;
        const MediaDescriptor start = whole.md;
        ASSERT_EQ(initialize(whole, quick), 0);
        for (const uint32_t record : whole.written) {
            MemoryMedium medium(900);
            MediaState *state = medium.md.state;
            medium.md = start;
            medium.md.state = state;
            medium.unwritable = {record};
            EXPECT_EQ(initialize(medium, quick), -1) << format << ' ' << record;
            EXPECT_EQ(global_error, 303u);
            const auto at = std::find(whole.written.begin(), whole.written.end(), record);
            EXPECT_EQ(medium.written, Numbers(whole.written.begin(), at)) << format << ' ' << record;
        }
    }
}

TEST(Initialize, FailuresOfTheFillLeaveTheTables)
{
    for (const uint32_t record : {12u, 20u, 47u}) {
        MemoryMedium medium(48);
        make_small_disk(medium.md);
        medium.unwritable = {record};
        EXPECT_EQ(initialize(medium, 0), -1);
        EXPECT_EQ(medium.written, joined({{0, 1, 5, 3, 7}, from_to(12, record - 12)}));
        EXPECT_EQ(medium.streams.back(), "close");
    }
    MemoryMedium unopened(48);
    make_small_disk(unopened.md);
    unopened.failing_open = true;
    EXPECT_EQ(initialize(unopened, 0), -1);
    MemoryMedium unclosed(48);
    make_small_disk(unclosed.md);
    unclosed.failing_close = true;
    EXPECT_EQ(initialize(unclosed, 0), -1);
    MemoryMedium full(48);
    make_small_disk(full.md);
    const HeapFaults heap(1);
    EXPECT_EQ(initialize(full, 0), -1);
    EXPECT_EQ(global_error, 105u);
}

TEST(Initialize, CallIsLogged)
{
    MemoryMedium medium(48);
    make_small_disk(medium.md);
    const LogCapture log(3);
    EXPECT_EQ(initialize(medium, quick), 0);
    EXPECT_TRUE(contains(log.text(), "Trace: image_initialize(md=")) << log.text();
    EXPECT_TRUE(contains(log.text(), ", quickformat=1, progress=0)\n"));
}

TEST(Initialize, NoMedium)
{
    forget_error();
    EXPECT_EQ(image_initialize(nullptr, 0, nullptr), -1);
    EXPECT_EQ(global_error, 103u);
}

// ---- making a medium blank -----------------------------------------------------------------------------------

TEST(Format, ImageBecomesZerosUpToTheEndOfItsLastRecord)
{
    for (const uint32_t bytes : {0u, 1u, 256u, 1000u, 300000u}) {
        const TemporaryFile image(Bytes(bytes, 0x55));
        const Medium medium(image.path(), 0);
        ASSERT_TRUE(medium);
        EXPECT_EQ(image_format(medium.md), 0);
        EXPECT_EQ(image.bytes(), Bytes((bytes + 255) / 256 * 256)) << bytes;
    }
}

TEST(Format, SizeOfTheRecordCountsNotThatOfTheFile)
{
    const TemporaryFile image(Bytes(10 * record_bytes, 0x55));
    const Medium medium(image.path(), 0);
    medium->size = 4 * record_bytes;
    Bytes wanted(10 * record_bytes, 0x55);
    std::fill_n(wanted.begin(), 4 * record_bytes, uint8_t{0});
    EXPECT_EQ(image_format(medium.md), 0);
    EXPECT_EQ(image.bytes(), wanted);
}

TEST(Format, FailedWritesAreNotLookedAt)
{
    const TemporaryFile image(Bytes(300000, 0x55));
    const Medium medium(image.path(), 0);
    const LogCapture log(0);
    {
        const FileFaults faults(FileFault::write, 2);
        EXPECT_EQ(image_format(medium.md), 0);
        EXPECT_TRUE(faults.reached);
    }
    const Bytes after = image.bytes();
    EXPECT_EQ(after.front(), 0);
    EXPECT_EQ(after.back(), 0); // it went on behind the failure
    EXPECT_NE(std::count(after.begin(), after.end(), 0x55), 0);
}

TEST(Format, DriveHasACommandOfItsOwn)
{
    MemoryMedium medium(10);
    EXPECT_EQ(image_format(&medium.md), 7);
    EXPECT_EQ(medium.blank_makings, 1u);
    EXPECT_TRUE(medium.written.empty());
}

TEST(Format, MediumWithoutSuchACommand)
{
    MediaDescriptor md{};
    for (const uint32_t access : {uint32_t{ACCESS_FLOPPY}, uint32_t{ACCESS_GPIB}, 3u}) {
        md.access = access;
        forget_error();
        EXPECT_EQ(image_format(&md), -1);
        EXPECT_EQ(global_error, 202u);
        EXPECT_EQ(std::string(global_error_info), std::to_string(access));
    }
    forget_error();
    EXPECT_EQ(image_format(nullptr), -1);
    EXPECT_EQ(global_error, 103u);
}

TEST(Format, NoMemory)
{
    const TemporaryFile image(Bytes(1000, 0x55));
    const Medium medium(image.path(), 0);
    const HeapFaults heap(1);
    forget_error();
    EXPECT_EQ(image_format(medium.md), -1);
    EXPECT_EQ(global_error, 105u);
    EXPECT_EQ(image.bytes(), Bytes(1000, 0x55));
}
