// The records of one file as a stream: on an image file, and on a row that stands in for a drive.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/volume/insert_support.h"
#include "volume/access.h"
#include "volume/insert_inner.h"

using namespace tests;
using namespace tests::insertion;

namespace
{

Bytes read_all(MediumStream *stream, uint32_t at_a_time)
{
    Bytes bytes;
    for (;;) {
        Bytes part(size_t{at_a_time} * record_bytes, 0x55);
        const int32_t count = read_stream(stream, part.data(), at_a_time);
        EXPECT_GE(count, 0);
        if (count <= 0) return bytes;
        EXPECT_LE(static_cast<uint32_t>(count), at_a_time);
        bytes = joined({bytes, part_of(part, 0, static_cast<size_t>(count) * record_bytes)});
    }
}

struct RawImage {
    explicit RawImage(uint32_t records) : image(numbered(records * record_bytes)), file(image), medium(file.path(), 0)
    {
    }

    Bytes image;
    TemporaryFile file;
    Medium medium;
};

// ---- a drive that notes what is asked of it ---------------------------------------------------------------------

struct StandIn {
    Bytes bytes;
    std::string calls;
    uint32_t most = 1;          // records that one call reads
    uint32_t fail_transfer = 0; // the n-th fails
    uint32_t transfers = 0;
    bool fail_open = false;
    bool fail_close = false;
};

StandIn drive;

int32_t failed_with(uint32_t error)
{
    set_error(error, "%s", "");
    return -1;
}

std::string number(uint32_t value)
{
    return std::to_string(value);
}

int32_t open_drive_stream(MediumStream *stream)
{
    drive.calls += std::string(stream->writing ? "write " : "read ") + number(stream->first) + "+" +
                   number(stream->records) + "; ";
    return drive.fail_open ? failed_with(504) : 0;
}

int32_t read_drive_stream(MediumStream *stream, uint8_t *buffer, uint32_t records)
{
    if (++drive.transfers == drive.fail_transfer) return failed_with(502);
    const uint32_t count = std::min(records, drive.most);
    const size_t position = size_t{stream->first + stream->next} * record_bytes;
    std::memcpy(buffer, &drive.bytes.at(position), size_t{count} * record_bytes);
    drive.calls += number(stream->next) + "x" + number(count) + " ";
    return static_cast<int32_t>(count);
}

int32_t write_drive_stream(MediumStream *stream, const uint8_t *buffer, uint32_t records, bool ends)
{
    uint32_t done = 0;
    for (; done < records; ++done) {
        if (++drive.transfers == drive.fail_transfer) break;
        const size_t position = size_t{stream->first + stream->next + done} * record_bytes;
        std::memcpy(&drive.bytes.at(position), buffer + size_t{done} * record_bytes, record_bytes);
    }
    drive.calls += number(stream->next) + "x" + number(done) + (ends ? "! " : " ");
    if (done < records) failed_with(503);
    return done == 0 ? -1 : static_cast<int32_t>(done);
}

int32_t close_drive_stream(MediumStream *)
{
    drive.calls += "; closed";
    return drive.fail_close ? failed_with(503) : 0;
}

uint64_t end_of_drive(MediaDescriptor *)
{
    return drive.bytes.size() / record_bytes;
}

constexpr MediumAccess drive_access = {
    .name = "stand-in",
    .open = nullptr,
    .open_stream = open_drive_stream,
    .read_stream = read_drive_stream,
    .write_stream = write_drive_stream,
    .close_stream = close_drive_stream,
    .end_record = end_of_drive,
};

// A LIF volume of 100 records on the stand-in, with nothing on it; files from record 10 on.
struct DriveVolume {
    DriveVolume()
    {
        drive = StandIn{};
        drive.bytes = repeated(0xEE, 100 * record_bytes);
        state.access = &drive_access;
        md.state = &state;
        md.access = ACCESS_GPIB;
        md.format = FORMAT_LIF;
        md.records = 100;
        md.dir_start = 2;
        md.dir_size = 8;
        md.dir_entry_size = 32;
        md.file_area_start = 10;
    }
    ~DriveVolume()
    {
        image_free_directory(&md, nullptr);
    }
    DriveVolume(const DriveVolume &) = delete;
    DriveVolume &operator=(const DriveVolume &) = delete;

    Insertion insert(const Bytes &content, ProgressCallback progress = nullptr)
    {
        InsertSource source{.bytes = content.data(), .size = content.size()};
        FileInfo info{};
        forget_error();
        return insert_from(&md, &info, &source, {.name = "NEW", .progress = progress});
    }

    MediaState state{};
    MediaDescriptor md{};
};

Bytes drive_with(const Bytes &content)
{
    return with_records(repeated(0xEE, 100 * record_bytes), 10, content);
}

}

// ---- image files -------------------------------------------------------------------------------------------------

TEST(ImageStream, ReadsItsRecordsHoweverManyAtATime)
{
    const RawImage raw(300);
    for (const uint32_t at_a_time : {1u, 2u, 7u, 255u, 256u, 300u, 1000u}) {
        MediumStream stream;
        ASSERT_EQ(open_stream(&stream, raw.medium.md, 5, 290, false), 0);
        EXPECT_TRUE(read_all(&stream, at_a_time) == part_of(raw.image, 5 * 256, 290 * 256)) << at_a_time;
        uint8_t record[256];
        EXPECT_EQ(read_stream(&stream, record, 1), 0); // it stays at its end
        EXPECT_EQ(close_stream(&stream), 0);
    }
}

TEST(ImageStream, WithoutRecordsIsAtItsEnd)
{
    const RawImage raw(10);
    MediumStream stream;
    uint8_t record[256];
    ASSERT_EQ(open_stream(&stream, raw.medium.md, 3, 0, false), 0);
    EXPECT_EQ(read_stream(&stream, record, 1), 0);
    EXPECT_EQ(close_stream(&stream), 0);
    ASSERT_EQ(open_stream(&stream, raw.medium.md, 3, 0, true), 0);
    EXPECT_EQ(write_stream(&stream, record, 0), 0u);
    EXPECT_EQ(close_stream(&stream), 0);
    EXPECT_TRUE(raw.file.bytes() == raw.image);
}

TEST(ImageStream, WritesItsRecordsHoweverManyAtATime)
{
    const Bytes content = numbered(40 * 256, 9);
    for (const uint32_t at_a_time : {1u, 3u, 39u, 40u}) {
        const RawImage raw(100);
        MediumStream stream;
        ASSERT_EQ(open_stream(&stream, raw.medium.md, 50, 40, true), 0);
        for (uint32_t at = 0; at < 40; at += at_a_time) {
            const uint32_t count = std::min(at_a_time, 40 - at);
            EXPECT_EQ(write_stream(&stream, content.data() + size_t{at} * 256, count), count);
        }
        EXPECT_EQ(close_stream(&stream), 0);
        EXPECT_TRUE(raw.file.bytes() == with_records(raw.image, 50, content)) << at_a_time;
    }
}

TEST(ImageStream, WritesBehindTheEndOfTheImage)
{
    const RawImage raw(10);
    const Bytes content = numbered(5 * 256, 9);
    MediumStream stream;
    ASSERT_EQ(open_stream(&stream, raw.medium.md, 8, 5, true), 0);
    EXPECT_EQ(write_stream(&stream, content.data(), 5), 5u);
    EXPECT_EQ(close_stream(&stream), 0);
    EXPECT_TRUE(raw.file.bytes() == with_records(raw.image, 8, content));
}

TEST(ImageStream, WhatIsBehindTheEndOfTheImageReadsAsZeros)
{
    Bytes image = numbered(10 * 256);
    image.resize(9 * 256 + 100); // the last record isn't whole
    const TemporaryFile file(image);
    const Medium medium(file.path(), 0);
    MediumStream stream;
    ASSERT_EQ(open_stream(&stream, medium.md, 7, 6, false), 0);
    EXPECT_TRUE(read_all(&stream, 4) == joined({part_of(image, 7 * 256, 2 * 256 + 100), repeated(0, 156 + 3 * 256)}));
    EXPECT_EQ(stream.missing, 3u);
    ASSERT_EQ(open_stream(&stream, medium.md, 500, 2, false), 0);
    EXPECT_TRUE(read_all(&stream, 1) == repeated(0, 512));
    EXPECT_EQ(stream.missing, 2u);
    ASSERT_EQ(open_stream(&stream, medium.md, 0, 9, false), 0);
    read_all(&stream, 2);
    EXPECT_EQ(stream.missing, 0u);
}

TEST(ImageStream, OtherAccessBetweenTransfersDoesNotMoveIt)
{
    const RawImage raw(600);
    const Bytes content = numbered(4 * 256, 9);
    uint8_t record[256];
    MediumStream stream;
    ASSERT_EQ(open_stream(&stream, raw.medium.md, 100, 4, true), 0);
    for (uint32_t i = 0; i < 4; ++i) {
        EXPECT_EQ(write_stream(&stream, content.data() + size_t{i} * 256, 1), 1u);
        EXPECT_EQ(read_record(raw.medium.md, 599, record), 0);
    }
    EXPECT_EQ(close_stream(&stream), 0);
    EXPECT_TRUE(raw.file.bytes() == with_records(raw.image, 100, content));
    ASSERT_EQ(open_stream(&stream, raw.medium.md, 98, 8, false), 0);
    Bytes bytes;
    for (uint32_t i = 0; i < 8; ++i) {
        EXPECT_EQ(read_stream(&stream, record, 1), 1);
        bytes = joined({bytes, Bytes(record, record + 256)});
        EXPECT_EQ(read_record(raw.medium.md, i, record), 0);
    }
    EXPECT_TRUE(bytes == part_of(with_records(raw.image, 100, content), 98 * 256, 8 * 256));
}

TEST(ImageStream, WhatItWroteIsReadBackThroughRecords)
{
    const RawImage raw(100);
    uint8_t record[256];
    EXPECT_EQ(read_record(raw.medium.md, 50, record), 0); // read ahead now
    const Bytes content = numbered(256, 9);
    MediumStream stream;
    ASSERT_EQ(open_stream(&stream, raw.medium.md, 50, 1, true), 0);
    EXPECT_EQ(write_stream(&stream, content.data(), 1), 1u);
    EXPECT_EQ(close_stream(&stream), 0);
    EXPECT_EQ(read_record(raw.medium.md, 50, record), 0);
    EXPECT_EQ(Bytes(record, record + 256), content);
}

TEST(ImageStream, NeverWritesBehindFourGigabytes)
{
    const RawImage raw(10);
    const Bytes content = numbered(2 * 256);
    MediumStream stream;
    forget_error();
    for (const uint32_t first : {0x00FFFFFFu, 0x01000000u, 0xFFFFFFFFu}) {
        if (open_stream(&stream, raw.medium.md, first, 2, true) == 0) {
            EXPECT_LT(write_stream(&stream, content.data(), 2), 2u) << first;
            EXPECT_EQ(global_error, 303u) << first;
            close_stream(&stream);
        }
        EXPECT_TRUE(part_of(raw.file.bytes(), 0, 10 * 256) == raw.image) << first;
        if (std::filesystem::file_size(raw.file.path()) != 2560) std::filesystem::resize_file(raw.file.path(), 2560);
    }
}

TEST(ImageStream, AFailingCallIsAnErrorWithItsNumber)
{
    struct Row {
        FileFault fault;
        bool writing;
        uint32_t error;
    };
    const Row rows[] = {{FileFault::read, false, 302},
                        {FileFault::seek, false, 301},
                        {FileFault::write, true, 303},
                        {FileFault::short_write, true, 303}};
    for (const Row &row : rows) {
        const RawImage raw(50);
        Bytes buffer(20 * 256, 0x33);
        forget_error();
        MediumStream stream;
        ASSERT_EQ(open_stream(&stream, raw.medium.md, 10, 20, row.writing), 0);
        {
            const FileFaults faults(row.fault, 1, true);
            if (row.writing) {
                EXPECT_LT(write_stream(&stream, buffer.data(), 20), 20u) << row.error;
            } else {
                EXPECT_EQ(read_stream(&stream, buffer.data(), 20), -1) << row.error;
            }
            EXPECT_TRUE(faults.reached) << row.error;
        }
        EXPECT_EQ(global_error, row.error);
        close_stream(&stream);
        const Bytes after = raw.file.bytes();
        EXPECT_TRUE(part_of(after, 0, 2560) == part_of(raw.image, 0, 2560));
        EXPECT_TRUE(part_of(after, 30 * 256, after.size()) == part_of(raw.image, 30 * 256, after.size()));
    }
}

TEST(ImageStream, OfAnUnknownAccessIsRefused)
{
    MediaDescriptor md{};
    md.access = 7;
    MediumStream stream;
    forget_error();
    EXPECT_EQ(open_stream(&stream, &md, 0, 1, false), -1);
    EXPECT_EQ(global_error, 202u);
}

// ---- a drive -----------------------------------------------------------------------------------------------------

TEST(DriveStream, IsOpenedReadInPartsAndClosed)
{
    DriveVolume volume;
    drive.bytes = numbered(100 * 256);
    drive.most = 3;
    MediumStream stream;
    ASSERT_EQ(open_stream(&stream, &volume.md, 20, 8, false), 0);
    EXPECT_TRUE(read_all(&stream, 5) == part_of(drive.bytes, 20 * 256, 8 * 256));
    EXPECT_EQ(close_stream(&stream), 0);
    EXPECT_EQ(drive.calls, "read 20+8; 0x3 3x3 6x2 ; closed");
}

TEST(DriveStream, IsOpenedWrittenInPartsAndClosed)
{
    DriveVolume volume;
    const Bytes content = numbered(10 * 256);
    MediumStream stream;
    ASSERT_EQ(open_stream(&stream, &volume.md, 10, 10, true), 0);
    EXPECT_EQ(write_stream(&stream, content.data(), 6), 6u);
    EXPECT_EQ(write_stream(&stream, content.data() + 6 * 256, 3), 3u);
    EXPECT_EQ(write_stream(&stream, content.data() + 9 * 256, 1), 1u);
    EXPECT_EQ(close_stream(&stream), 0);
    EXPECT_EQ(drive.calls, "write 10+10; 0x6 6x3 9x1! ; closed");
    EXPECT_TRUE(drive.bytes == drive_with(content));
}

TEST(DriveStream, ARowWithoutOpenAndCloseNeedsNone)
{
    MediumAccess plain = drive_access;
    plain.open_stream = nullptr;
    plain.close_stream = nullptr;
    DriveVolume volume;
    volume.state.access = &plain;
    MediumStream stream;
    EXPECT_EQ(open_stream(&stream, &volume.md, 0, 1, false), 0);
    EXPECT_EQ(close_stream(&stream), 0);
    EXPECT_EQ(drive.calls, "");
}

TEST(DriveStream, ARowWithoutStreamsRefusesThem)
{
    MediumAccess none = drive_access;
    none.read_stream = nullptr;
    none.write_stream = nullptr;
    DriveVolume volume;
    volume.state.access = &none;
    MediumStream stream;
    uint8_t record[256] = {};
    ASSERT_EQ(open_stream(&stream, &volume.md, 0, 1, false), 0);
    EXPECT_EQ(read_stream(&stream, record, 1), -1);
    EXPECT_EQ(write_stream(&stream, record, 1), 0u);
}

TEST(DriveStream, AFailingTransferSaysHowFarItGot)
{
    DriveVolume volume;
    drive.fail_transfer = 5; // the record of that number
    const Bytes content = numbered(10 * 256);
    MediumStream stream;
    forget_error();
    ASSERT_EQ(open_stream(&stream, &volume.md, 10, 10, true), 0);
    EXPECT_EQ(write_stream(&stream, content.data(), 10), 4u);
    EXPECT_EQ(global_error, 503u);
    EXPECT_TRUE(drive.bytes == drive_with(part_of(content, 0, 4 * 256)));
}

// ---- files onto a drive ------------------------------------------------------------------------------------------

TEST(InsertOntoDrive, TheLastRecordIsSaidToBeTheLast)
{
    for (const size_t bytes : {1u, 256u, 257u, 1000u, 2560u}) {
        DriveVolume volume;
        const Bytes content = numbered(bytes);
        const Insertion insertion = volume.insert(content);
        EXPECT_EQ(insertion.result, 10) << bytes;
        EXPECT_TRUE(insertion.whole);
        EXPECT_TRUE(drive.bytes == drive_with(content)) << bytes;
        const auto records = static_cast<uint32_t>((bytes + 255) / 256);
        EXPECT_EQ(drive.calls.substr(0, drive.calls.find(';')), "write 10+" + number(records));
        EXPECT_EQ(drive.calls.find("! ; closed"), drive.calls.size() - 10) << drive.calls;
    }
}

TEST(InsertOntoDrive, AStopAtEachRecordWritesNoneBeyond)
{
    for (uint32_t stop = 1; stop <= 5; ++stop) {
        DriveVolume volume;
        const Bytes content = numbered(6 * 256);
        reset_progress(stop);
        const Insertion insertion = volume.insert(content, noting_progress);
        EXPECT_EQ(insertion.result, 10) << stop;
        EXPECT_TRUE(insertion.stopped);
        EXPECT_FALSE(insertion.whole);
        EXPECT_EQ(progress_calls.size(), stop);
        EXPECT_TRUE(drive.bytes == drive_with(part_of(content, 0, stop * 256))) << stop;
        EXPECT_TRUE(contains(drive.calls, "; closed")) << drive.calls;
    }
}

TEST(InsertOntoDrive, AStreamThatCannotBeOpenedLeavesTheEntry)
{
    DriveVolume volume;
    drive.fail_open = true;
    const Insertion insertion = volume.insert(numbered(1000));
    EXPECT_EQ(insertion.result, -1);
    EXPECT_EQ(global_error, 504u);
    EXPECT_EQ(names(&volume.md), (std::vector<std::string>{"NEW"}));
    EXPECT_TRUE(drive.bytes == drive_with({}));
    EXPECT_EQ(drive.calls, "write 10+4; "); // nothing to be closed
}

TEST(InsertOntoDrive, AFailingTransferClosesTheStreamAndKeepsItsError)
{
    for (uint32_t n = 1; n <= 4; ++n) {
        DriveVolume volume;
        drive.fail_transfer = n;
        const Bytes content = numbered(1000);
        const Insertion insertion = volume.insert(content);
        EXPECT_EQ(insertion.result, -1) << n;
        EXPECT_FALSE(insertion.whole);
        EXPECT_EQ(global_error, 503u) << n;
        EXPECT_EQ(names(&volume.md), (std::vector<std::string>{"NEW"}));
        EXPECT_TRUE(drive.bytes == drive_with(part_of(content, 0, (n - 1) * 256))) << n;
        EXPECT_TRUE(contains(drive.calls, "; closed")) << drive.calls;
    }
}

TEST(InsertOntoDrive, AStreamThatCannotBeClosedIsAFailure)
{
    DriveVolume volume;
    drive.fail_close = true;
    const Bytes content = numbered(1000);
    const Insertion insertion = volume.insert(content);
    EXPECT_EQ(insertion.result, -1);
    EXPECT_FALSE(insertion.whole);
    EXPECT_EQ(names(&volume.md), (std::vector<std::string>{"NEW"}));
    EXPECT_TRUE(drive.bytes == drive_with(content));
}
