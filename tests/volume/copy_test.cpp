// Runs of records from one medium to another, held against a copy that does one record after the other.
#include "volume/copy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/medium.h"
#include "tests/support/memory_medium.h"
#include "tests/volume/extract_support.h"
#include "volume/copy_inner.h"

using namespace tests;

namespace
{

constexpr uint16_t as_bytes = 0; // opened without reading a volume

struct RecordRun {
    uint32_t from = 0;
    uint32_t to = 0;
    uint32_t count = 0;
};

// What is behind the end reads as zeros, and an image that is written behind its end grows.
void copy_literally(const Bytes &from, Bytes &to, const RecordRun &run)
{
    for (uint32_t i = 0; i < run.count; ++i) {
        Bytes record(record_bytes);
        const size_t position = size_t{run.from + i} * record_bytes;
        for (size_t at = 0; at < record_bytes && position + at < from.size(); ++at) record[at] = from[position + at];
        const size_t target = size_t{run.to + i} * record_bytes;
        to.resize(std::max(to.size(), target + record_bytes));
        std::copy(record.begin(), record.end(), to.begin() + static_cast<std::ptrdiff_t>(target));
    }
}

Bytes noise(std::mt19937 &random, size_t size)
{
    Bytes bytes(size);
    for (uint8_t &byte : bytes) byte = static_cast<uint8_t>(random());
    return bytes;
}

uint32_t below(std::mt19937 &random, uint32_t limit)
{
    return static_cast<uint32_t>(random() % limit);
}

struct Case {
    explicit Case(uint32_t seed) : random(seed)
    {
        from = noise(random, below(random, 30 * record_bytes));
        to = noise(random, below(random, 30 * record_bytes));
        run = {below(random, 35), below(random, 35), below(random, 30)};
        one_image = below(random, 2) == 0;
        told = below(random, 2) == 0;
        stream = static_cast<int32_t>(below(random, 2));
        break_on_error = static_cast<int32_t>(below(random, 2));
    }

    std::mt19937 random;
    Bytes from;
    Bytes to;
    RecordRun run;
    bool one_image;
    bool told; // of each record
    int32_t stream;
    int32_t break_on_error;
};

void expect_as_literally(uint32_t seed)
{
    Case the_case(seed);
    const RecordRun &run = the_case.run;
    const TemporaryFile from(the_case.from);
    const TemporaryFile to(the_case.to);
    const ProgressLog told;
    {
        const Medium source(from.path(), as_bytes);
        const Medium target(to.path(), as_bytes);
        ASSERT_TRUE(source && target);
        MediaDescriptor *target_md = the_case.one_image ? source.md : target.md;
        EXPECT_EQ(image_blockcopy(source.md, run.from, target_md, run.to, run.count, the_case.stream,
                                  the_case.break_on_error, the_case.told ? ProgressLog::callback : nullptr),
                  0)
            << error_text();
    }
    if (the_case.one_image) {
        Bytes wanted = the_case.from;
        for (uint32_t i = 0; i < run.count; ++i) {
            const Bytes present = wanted;
            copy_literally(present, wanted, {run.from + i, run.to + i, 1});
        }
        EXPECT_EQ(from.bytes(), wanted);
        EXPECT_EQ(to.bytes(), the_case.to);
    } else {
        copy_literally(the_case.from, the_case.to, run);
        EXPECT_EQ(from.bytes(), the_case.from);
        EXPECT_EQ(to.bytes(), the_case.to);
    }
    EXPECT_EQ(told.calls.size(), the_case.told ? run.count : 0u);
}

Bytes numbered(uint32_t records)
{
    Bytes bytes;
    for (uint32_t i = 0; i < records; ++i) bytes.insert(bytes.end(), record_bytes, static_cast<uint8_t>(i));
    return bytes;
}

int32_t copy(MemoryMedium &from, MemoryMedium &to, const RecordRun &run, int32_t break_on_error,
             ProgressCallback progress = nullptr)
{
    forget_error();
    return image_blockcopy(&from.md, run.from, &to.md, run.to, run.count, 1, break_on_error, progress);
}

}

TEST(BlockCopy, IsTheSameAsOneRecordAfterTheOther)
{
    const LogCapture log(0);
    for (uint32_t seed = 1; seed <= 400 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        expect_as_literally(seed);
    }
}

TEST(BlockCopy, LargeRunIsCopiedWhole)
{
    const TemporaryFile from(counting(1500 * record_bytes));
    const TemporaryFile to(Bytes(10));
    {
        const Medium source(from.path(), as_bytes);
        const Medium target(to.path(), as_bytes);
        EXPECT_EQ(image_blockcopy(source.md, 1, target.md, 2, 1499, 1, 1, nullptr), 0);
    }
    const Bytes wanted = from.bytes();
    Bytes copied = to.bytes();
    EXPECT_EQ(copied.size(), 1501u * record_bytes);
    copied.erase(copied.begin(), copied.begin() + 2 * record_bytes);
    EXPECT_TRUE(std::equal(copied.begin(), copied.end(), wanted.begin() + record_bytes, wanted.end()));
}

TEST(BlockCopy, OverlappingRangesOfOneImageAreCopiedForward)
{
    const TemporaryFile image(numbered(8));
    {
        const Medium medium(image.path(), as_bytes);
        EXPECT_EQ(image_blockcopy(medium.md, 1, medium.md, 2, 4, 0, 1, nullptr), 0);
    }
    Bytes wanted = numbered(8);
    for (size_t i = 2 * record_bytes; i < 6 * record_bytes; ++i)
        wanted[i] = 1; // each record is read after it was written
    EXPECT_EQ(image.bytes(), wanted);
    {
        const Medium medium(image.path(), as_bytes);
        EXPECT_EQ(image_blockcopy(medium.md, 5, medium.md, 4, 3, 0, 1, nullptr), 0);
    }
    for (size_t i = 0; i < record_bytes; ++i) {
        wanted[4 * record_bytes + i] = 1;
        wanted[5 * record_bytes + i] = 6;
        wanted[6 * record_bytes + i] = 7;
    }
    EXPECT_EQ(image.bytes(), wanted);
}

TEST(BlockCopy, ProgressIsToldBytesRecordAndPercentage)
{
    MemoryMedium from(numbered(5));
    MemoryMedium to(10);
    const ProgressLog told;
    EXPECT_EQ(copy(from, to, {1, 2, 3}, 1, ProgressLog::callback), 0);
    EXPECT_EQ(told.calls, (ProgressCalls{{256, 0, 33}, {512, 1, 66}, {768, 2, 100}}));
}

TEST(BlockCopy, AnswerOtherThanZeroMakesARecordTheLast)
{
    MemoryMedium from(numbered(5));
    MemoryMedium to(10);
    const ProgressLog told(1);
    EXPECT_EQ(copy(from, to, {0, 0, 5}, 1, ProgressLog::callback), 0);
    EXPECT_EQ(to.written, (std::vector<uint32_t>{0, 1}));
    EXPECT_EQ(to.record(1), Bytes(record_bytes, 1));
    bool stopped = false;
    const BlockCopy order = {
        .from = &from.md, .from_start = 0, .to = &to.md, .to_start = 0, .count = 5, .progress = ProgressLog::callback};
    EXPECT_EQ(copy_blocks(order, &stopped), 0);
    EXPECT_TRUE(stopped);
}

TEST(BlockCopy, StreamsAreOpenedOverTheWholeRunAndClosed)
{
    MemoryMedium from(numbered(8));
    MemoryMedium to(10);
    EXPECT_EQ(copy(from, to, {1, 2, 5}, 1), 0);
    EXPECT_EQ(from.streams, (std::vector<std::string>{"read 1+5", "close"}));
    EXPECT_EQ(to.streams, (std::vector<std::string>{"write 2+5", "close"}));
    EXPECT_EQ(to.last_end, 4u);
}

TEST(BlockCopy, Hazard_K9_NoRecordsAtAll)
{
    MemoryMedium from(numbered(3));
    MemoryMedium to(3);
    const ProgressLog told;
    EXPECT_EQ(copy(from, to, {1, 1, 0}, 1, ProgressLog::callback), 0);
    EXPECT_TRUE(to.written.empty());
    EXPECT_TRUE(told.calls.empty());
    EXPECT_TRUE(from.streams.empty());
}

// ---- what can't be read or written ---------------------------------------------------------------------------

TEST(BlockCopy, FirstReadErrorEndsIt)
{
    for (const ProgressCallback progress : {ProgressCallback{nullptr}, ProgressCallback{ProgressLog::callback}}) {
        MemoryMedium from(numbered(6));
        MemoryMedium to(6);
        from.unreadable = {3};
        const ProgressLog told;
        EXPECT_EQ(copy(from, to, {0, 0, 6}, 1, progress), -1);
        EXPECT_EQ(global_error, 302u);
        EXPECT_EQ(to.written, (std::vector<uint32_t>{0, 1, 2}));
        EXPECT_EQ(from.streams.back(), "close");
        EXPECT_EQ(to.streams.back(), "close");
    }
}

TEST(BlockCopy, IgnoredReadErrorsLeaveZeros)
{
    for (const ProgressCallback progress : {ProgressCallback{nullptr}, ProgressCallback{ProgressLog::callback}}) {
        MemoryMedium from(numbered(6));
        MemoryMedium to(Bytes(6 * record_bytes, 0xEE));
        from.unreadable = {1, 4, 5};
        const ProgressLog told;
        const LogCapture log(1);
        EXPECT_EQ(copy(from, to, {1, 0, 5}, 0, progress), 0);
        Bytes wanted;
        for (const uint8_t fill : Bytes{0, 2, 3, 0, 0}) wanted.insert(wanted.end(), record_bytes, fill);
        wanted.insert(wanted.end(), record_bytes, 0xEE);
        EXPECT_EQ(to.image(), wanted);
        EXPECT_EQ(log.text(), "Warning: Read error at record 0 (ignored)\n"
                              "Warning: Read error at record 3 (ignored)\n"
                              "Warning: Read error at record 4 (ignored)\n");
    }
}

TEST(BlockCopy, WriteErrorEndsIt)
{
    for (const int32_t break_on_error : {0, 1}) {
        MemoryMedium from(numbered(6));
        MemoryMedium to(6);
        to.unwritable = {2};
        EXPECT_EQ(copy(from, to, {0, 0, 6}, break_on_error), -1);
        EXPECT_EQ(global_error, 303u);
        EXPECT_EQ(to.written, (std::vector<uint32_t>{0, 1}));
    }
}

TEST(BlockCopy, StreamThatCannotBeOpenedLeavesNoneOpen)
{
    for (const bool writing : {false, true}) {
        MemoryMedium from(numbered(6));
        MemoryMedium to(6);
        from.failing_open = to.failing_open = writing;
        EXPECT_EQ(copy(from, to, {0, 0, 6}, 0), -1);
        EXPECT_EQ(global_error, writing ? 303u : 302u);
        EXPECT_TRUE(to.written.empty());
    }
}

TEST(BlockCopy, StreamThatFailsToCloseIsAFailure)
{
    for (const bool writing : {false, true}) {
        MemoryMedium from(numbered(6));
        MemoryMedium to(6);
        from.failing_close = to.failing_close = writing;
        EXPECT_EQ(copy(from, to, {0, 0, 6}, 1), -1);
        EXPECT_EQ(to.image(), numbered(6));
    }
}

TEST(BlockCopy, EachCallOfTheFileLayerFailsOnce)
{
    const LogCapture log(0);
    for (const FileFault fault : {FileFault::seek, FileFault::read, FileFault::write, FileFault::short_write}) {
        bool reached = true;
        for (uint32_t n = 1; reached; ++n) {
            ASSERT_LT(n, 200u);
            const TemporaryFile from(counting(40 * record_bytes));
            const TemporaryFile to(Bytes(40 * record_bytes, 0xEE));
            const Medium source(from.path(), as_bytes);
            const Medium target(to.path(), as_bytes);
            const FileFaults faults(fault, n);
            const int32_t result = image_blockcopy(source.md, 0, target.md, 0, 30, 1, 1, nullptr);
            reached = faults.reached;
            const Bytes after = to.bytes();
            const Bytes wanted = from.bytes();
            if (result == 0) {
                EXPECT_TRUE(std::equal(after.begin(), after.begin() + 30 * record_bytes, wanted.begin())) << n;
            }
            // A window that can't be read is read record by record; what can't be written is lost.
            if (fault == FileFault::write || fault == FileFault::short_write) {
                EXPECT_EQ(result, reached ? -1 : 0) << n;
            }
            EXPECT_EQ(Bytes(after.begin() + 30 * record_bytes, after.end()), Bytes(10 * record_bytes, 0xEE)) << n;
            EXPECT_EQ(from.bytes(), counting(40 * record_bytes));
        }
    }
}

TEST(BlockCopy, NoMemory)
{
    MemoryMedium from(numbered(6));
    MemoryMedium to(6);
    const HeapFaults heap(1);
    EXPECT_EQ(copy(from, to, {0, 0, 6}, 1), -1);
    EXPECT_EQ(global_error, 105u);
    EXPECT_TRUE(to.written.empty());
}

TEST(BlockCopy, RunBehindTheLastPositionOfAFileFailsToBeWritten)
{
    const TemporaryFile from(numbered(4));
    const TemporaryFile to(numbered(2));
    const Medium source(from.path(), as_bytes);
    const Medium target(to.path(), as_bytes);
    const LogCapture log(0);
    EXPECT_EQ(image_blockcopy(source.md, 0, target.md, 0xFFFFFFFF, 4, 1, 1, nullptr), -1);
    EXPECT_EQ(global_error, 303u);
    EXPECT_EQ(to.bytes(), numbered(2));
    // Read from there, everything is zero, and nothing wraps to the first records.
    EXPECT_EQ(image_blockcopy(source.md, 0xFFFFFFFE, target.md, 0, 2, 1, 1, nullptr), 0);
    EXPECT_EQ(to.bytes(), Bytes(2 * record_bytes));
}

// ---- what is said --------------------------------------------------------------------------------------------

TEST(BlockCopy, CallIsLogged)
{
    MemoryMedium from(numbered(6));
    MemoryMedium to(6);
    const LogCapture log(3);
    EXPECT_EQ(copy(from, to, {1, 2, 3}, 1), 0);
    EXPECT_TRUE(contains(log.text(), "Trace: image_blockcopy(from_md=")) << log.text();
    EXPECT_TRUE(contains(log.text(), ", to_start=2, count=3, do_stream=1, break_on_error=1, progress=0)\n"));
    EXPECT_FALSE(contains(log.text(), "Streaming not supported"));
}

TEST(BlockCopy, StreamingInsideOneImageIsToldOff)
{
    MemoryMedium medium(numbered(8));
    for (const int32_t stream : {1, 0}) {
        const LogCapture log(2);
        EXPECT_EQ(image_blockcopy(&medium.md, 0, &medium.md, 4, 2, stream, 1, nullptr), 0);
        EXPECT_EQ(log.text(),
                  stream != 0 ? "Info:  Streaming not supported inside one image, using block access\n" : "");
    }
}

TEST(BlockCopy, MissingMedia)
{
    MemoryMedium medium(numbered(8));
    forget_error();
    EXPECT_EQ(image_blockcopy(nullptr, 0, &medium.md, 0, 1, 1, 1, nullptr), -1);
    EXPECT_EQ(global_error, 103u);
    forget_error();
    EXPECT_EQ(image_blockcopy(&medium.md, 0, nullptr, 0, 1, 1, 1, nullptr), -1);
    EXPECT_EQ(global_error, 103u);
    EXPECT_TRUE(medium.written.empty());
}
