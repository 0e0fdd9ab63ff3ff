// Reaching a medium: the window over an image file, and a drive with a geometry of its own.
#include "volume/access.h"

#include <gtest/gtest.h>

#include <cstring>

#include "base/error.h"
#include "base/file.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/medium.h"
#include "tests/support/volume_builder.h"
#include "volume/open.h"
#include "volume/table.h"

using namespace tests;

namespace
{

// An image of numbered records: each holds its own number in its first two bytes.
Bytes numbered_records(uint32_t count)
{
    Bytes image(size_t{count} * record_bytes, 0xEE);
    for (uint32_t record = 0; record < count; record++) {
        set_word_at(image, size_t{record} * record_bytes, static_cast<uint16_t>(record));
    }
    return image;
}

uint32_t number_in(const uint8_t *record)
{
    return record[0] * 256u + record[1];
}

struct RawImage {
    explicit RawImage(uint32_t records) : file(numbered_records(records)), medium(file.path(), 0) {}

    uint32_t read(uint32_t record)
    {
        std::memset(bytes, 0x55, sizeof bytes);
        EXPECT_EQ(0, read_record(medium.md, record, bytes));
        return number_in(bytes);
    }

    TemporaryFile file;
    Medium medium;
    uint8_t bytes[record_bytes] = {};
};

// ---- a drive, made of an image in memory ---------------------------------------------------------------

Bytes drive_image;
uint32_t drive_writes = 0;

int32_t read_drive(MediaDescriptor *, uint32_t record, uint8_t *buffer)
{
    size_t position = size_t{record} * record_bytes;
    if (position + record_bytes > drive_image.size()) {
        set_error(502, "");
        return -1;
    }
    std::memcpy(buffer, drive_image.data() + position, record_bytes);
    return 0;
}

int32_t write_drive(MediaDescriptor *, uint32_t record, const uint8_t *buffer)
{
    drive_writes++;
    std::memcpy(drive_image.data() + size_t{record} * record_bytes, buffer, record_bytes);
    return 0;
}

uint64_t end_of_drive(MediaDescriptor *)
{
    return drive_image.size() / record_bytes;
}

DeviceGeometry geometry_of_drive(const MediaDescriptor *)
{
    return {77, 2, 30, 7}; // an 8 inch disc: cylinders, heads, records a track, interleave
}

constexpr MediumAccess drive_access = {
    .name = "drive",
    .open = nullptr,
    .read_record = read_drive,
    .write_record = write_drive,
    .end_record = end_of_drive,
    .device_geometry = geometry_of_drive,
};

struct Drive {
    explicit Drive(const LifVolume &volume)
    {
        drive_image = lif_image(volume);
        drive_image.resize(size_t{77} * 2 * 30 * record_bytes);
        drive_writes = 0;
        state.access = &drive_access;
        md.access = ACCESS_GPIB;
        md.size = static_cast<uint32_t>(drive_image.size());
        md.use_type_names = 1;
        md.state = &state;
    }
    ~Drive()
    {
        image_free_directory(&md, nullptr);
        drive_image.clear();
    }
    Drive(const Drive &) = delete;
    Drive &operator=(const Drive &) = delete;

    MediaState state{};
    MediaDescriptor md{};
};

LifVolume without_geometry()
{
    LifVolume volume = three_files();
    volume.tracks = volume.surfaces = volume.records_per_track = 0;
    return volume;
}

}

TEST(ImageRecords, InAnyOrderHoldWhatTheFileHas)
{
    RawImage image(1000);
    for (uint32_t record : {0u, 1u, 255u, 256u, 999u, 3u, 511u, 512u, 0u}) EXPECT_EQ(record, image.read(record));
}

TEST(ImageRecords, InOrderTakeAReadForEach64KilobytesAndNoMore)
{
    RawImage image(1024);
    FileFaults counted;
    for (uint32_t record = 0; record < 1024; record++) ASSERT_EQ(record, image.read(record));
    EXPECT_EQ(4u, counted.reads);
    EXPECT_EQ(1024u * record_bytes, counted.bytes_read);
}

TEST(ImageRecords, WrittenThroughTheMediumAreReadBackAtOnce)
{
    RawImage image(300);
    EXPECT_EQ(7u, image.read(7));
    uint8_t changed[record_bytes] = {0x12, 0x34};
    ASSERT_EQ(0, write_record(image.medium.md, 7, changed));
    EXPECT_EQ(0x1234u, image.read(7));
    EXPECT_EQ(0x12, image.file.bytes()[7 * record_bytes]) << "others see it too";
}

TEST(ImageRecords, WrittenPastTheMediumByThisProcessAreSeenAtOnce)
{
    RawImage image(300);
    EXPECT_EQ(9u, image.read(9));
    const uint8_t changed[record_bytes] = {0x43, 0x21};
    ASSERT_EQ(0, file_writerecord(image.medium->file, 9, record_bytes, changed));
    EXPECT_EQ(0x4321u, image.read(9));
}

TEST(ImageRecords, WrittenByOthersAreSeenByTheNextReadingOfATable)
{
    LifVolume volume = three_files();
    OpenVolume open(volume);
    ASSERT_EQ((std::vector<std::string>{"ONE", "TWO", "THREE"}), names(open.md));
    volume.entries[1].name = "CHANGED";
    open.file.replace(lif_image(volume));
    ASSERT_EQ(0, get_file_table(open.md, nullptr, nullptr, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ((std::vector<std::string>{"ONE", "CHANGED", "THREE"}), names(open.md));
}

TEST(ImageRecords, BehindTheEndAreZeroAndNoFailure)
{
    RawImage image(10);
    EXPECT_EQ(0u, image.read(10));
    EXPECT_EQ(0u, image.read(0xFFFFFFFF));
    EXPECT_EQ(10u, end_record(image.medium.md));
}

TEST(ImageRecords, Hazard_A3_APositionNeverWrapsToTheHeadOfTheFile)
{
    RawImage image(10);
    EXPECT_EQ(0u, image.read(0x1000001)) << "record 1 would stand at that number of bytes, cut to 32 bits";
    const uint8_t bytes[record_bytes] = {0xAA};
    EXPECT_EQ(-1, write_record(image.medium.md, 0x1000001, bytes));
    EXPECT_EQ("File write error - check write protection", error_text());
    EXPECT_EQ(1u, image.read(1));
}

TEST(ImageRecords, AWindowThatCantBeReadLeavesItsGoodRecordsReadable)
{
    RawImage image(300);
    FileFaults fault(FileFault::read, 1);
    EXPECT_EQ(42u, image.read(42));
    EXPECT_TRUE(fault.reached);
}

TEST(ImageRecords, ThatCantBeReadAtAllAreAFailure)
{
    RawImage image(300);
    FileFaults fault(FileFault::read, 1, true);
    EXPECT_EQ(-1, read_record(image.medium.md, 42, image.bytes));
    EXPECT_EQ("File read error", error_text());
}

TEST(ImageRecords, AFileThatGrowsIsReadToItsNewEnd)
{
    RawImage image(3);
    EXPECT_EQ(0u, image.read(3));
    const uint8_t bytes[record_bytes] = {0x77, 0x88};
    ASSERT_EQ(0, write_record(image.medium.md, 3, bytes));
    EXPECT_EQ(0x7788u, image.read(3));
    EXPECT_EQ(4u, end_record(image.medium.md));
}

TEST(UnknownAccess, IsAnErrorForEveryUseOfTheMedium)
{
    MediaDescriptor md = {};
    md.access = 3;
    uint8_t bytes[record_bytes] = {};
    EXPECT_EQ(-1, read_record(&md, 0, bytes));
    EXPECT_EQ("Unknown access type (3)", error_text());
    EXPECT_EQ(-1, write_record(&md, 0, bytes));
    EXPECT_EQ(0u, end_record(&md));
    EXPECT_EQ(-1, get_media_info(&md));
}

TEST(LifOnADrive, WithoutGeometryTakesTheDrives)
{
    Drive drive(without_geometry());
    LogCapture log(2);
    ASSERT_EQ(0, get_media_info(&drive.md));
    EXPECT_EQ(30u, drive.md.sectors);
    EXPECT_EQ(2u, drive.md.heads);
    EXPECT_EQ(154u, drive.md.cylinders);
    EXPECT_EQ(4620u, drive.md.records);
    EXPECT_EQ("Info:  No valid cylinder/head/sector data in system record, using device data\n", log.text());
}

TEST(LifOnADrive, WithAnotherGeometryIsReadWithWarningsOnly)
{
    LifVolume volume = three_files();
    volume.tracks = 70;
    volume.surfaces = 1;
    volume.records_per_track = 16;
    Drive drive(volume);
    LogCapture log(2);
    ASSERT_EQ(0, get_media_info(&drive.md));
    EXPECT_EQ(16u, drive.md.sectors) << "what the volume says holds";
    EXPECT_EQ("Info:  File system and device report different cylinder count (maybe spares)\n"
              "Info:  File system and device report different sector count (maybe spares)\n"
              "Info:  File system and device report different head count\n",
              log.text());
}

TEST(LifOnADrive, WithTheDrivesGeometrySaysNothing)
{
    LifVolume volume = three_files();
    volume.tracks = 77;
    volume.surfaces = 2;
    volume.records_per_track = 30;
    Drive drive(volume);
    LogCapture log(2);
    ASSERT_EQ(0, get_media_info(&drive.md));
    EXPECT_EQ("", log.text());
}

TEST(LifOnADrive, IsWrittenUpToTheRecordWithTheEndMark)
{
    LifVolume volume = three_files();
    volume.tracks = 77;
    volume.surfaces = 2;
    volume.records_per_track = 30;
    Drive drive(volume);
    ASSERT_EQ(0, get_media_info(&drive.md));
    ASSERT_EQ(0, get_file_table(&drive.md, nullptr, nullptr, 0, 0, 0, 0, 0, 0));
    ASSERT_EQ(3u, drive.md.dir_size);
    ASSERT_EQ(0, update_file_table(&drive.md, 0));
    EXPECT_EQ(1u, drive_writes) << "three entries and the end mark take one of the three records";
}

TEST(UnknownVolumeOnADrive, IsRefusedWithItsMagicAndAGuess)
{
    Drive drive(three_files());
    drive_image[0] = 0x12;
    drive_image[1] = 0x34;
    EXPECT_EQ(-1, get_media_info(&drive.md));
    EXPECT_EQ("Unsupported format (magic=$1234, maybe 9825)", error_text());
}

TEST(UnknownVolumeOnADrive, IsNoTapeThoughItsSecondRecordLooksLikeOne)
{
    Drive drive(three_files());
    drive_image[0] = drive_image[1] = 0;
    drive_image[record_bytes] = 0x05;
    EXPECT_EQ(-1, get_media_info(&drive.md));
    EXPECT_EQ("Unsupported format (magic=$0000, maybe 9825)", error_text());
}

TEST(ADrive, ThatCantBeReadIsAFailureOfItsOwn)
{
    Drive drive(three_files());
    drive_image.resize(record_bytes / 2);
    EXPECT_EQ(-1, get_media_info(&drive.md));
    EXPECT_EQ("Read error on device", error_text());
}
