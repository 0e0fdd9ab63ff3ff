// Tapes and disks of the 9825: told by other words than a magic one in record 0.
#include <gtest/gtest.h>

#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/system45_builder.h"

using namespace tests;

namespace
{

std::string refusal(const Bytes &image)
{
    const TemporaryFile file(image);
    forget_error();
    const Medium medium(file.path());
    EXPECT_FALSE(medium);
    return error_text();
}

std::string refusal_on_drive(const Bytes &image, uint32_t access)
{
    Drive45 drive(image, access);
    forget_error();
    EXPECT_EQ(get_media_info(&drive.md), -1);
    EXPECT_EQ(drive.md.format, uint32_t{FORMAT_UNKNOWN});
    return error_text();
}

}

TEST(Tape45Recognition, GoesByTheFirstWordOfRecordOne)
{
    Bytes image(852 * record_bytes);
    image[256] = 0x05;
    image[258] = image[259] = image[260] = image[261] = 0xFF; // its directory is empty
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr) << error_text();
    EXPECT_EQ(open.md->format, uint32_t{FORMAT_TAPE45});
    EXPECT_EQ(open.md->magic, 0x0500u);
    EXPECT_EQ(open.md->root, nullptr);
}

TEST(Tape45Recognition, FixedValues)
{
    const OpenVolume open(tape45_image({.records = 10}));
    ASSERT_TRUE(open.md != nullptr);
    const MediaDescriptor &md = *open.md;
    EXPECT_EQ(md.size, 2560u);
    EXPECT_EQ(md.sectors, 426u);
    EXPECT_EQ(md.heads, 1u);
    EXPECT_EQ(md.cylinders, 2u);
    EXPECT_EQ(md.data_tracks, 2u);
    EXPECT_EQ(md.system_tracks, 0u);
    EXPECT_EQ(md.records, 852u);
    EXPECT_EQ(md.dir_start, 1u);
    EXPECT_EQ(md.dir_size, 2u);
    EXPECT_EQ(md.dir_entry_size, 12u);
    EXPECT_EQ(md.spare_dir_start, 3u);
    EXPECT_EQ(md.file_area_start, 5u);
    EXPECT_EQ(md.alloc_size, 0u);
    EXPECT_EQ(md.alloc_list, nullptr);
}

TEST(Tape45Recognition, KeepsTapeCapacityOf218107Bytes)
{
    const OpenVolume open(tape45_image({}));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->data_size, 218107u);
    EXPECT_EQ(open.md->used_bytes, 0u);
    EXPECT_EQ(open.md->free_bytes, 218107u);
}

TEST(Tape45Recognition, WhatRecordZeroHoldsDoesNotMatterUnlessItIsAnotherFileSystem)
{
    Bytes image = tape45_image(three_tape_files());
    set_word_at(image, 0, 0x1234);
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->format, uint32_t{FORMAT_TAPE45});
    set_word_at(image, 0, 0x0500);
    const OpenVolume disk(image);
    ASSERT_TRUE(disk.md != nullptr);
    EXPECT_EQ(disk.md->format, uint32_t{FORMAT_DISK45});
}

TEST(Tape45Recognition, ADriveHoldsNone)
{
    for (const uint32_t access : {uint32_t{ACCESS_FLOPPY}, uint32_t{ACCESS_GPIB}}) {
        Bytes image = tape45_image(three_tape_files());
        EXPECT_EQ(refusal_on_drive(image, access), "Unsupported format (magic=$0000, maybe 9825)");
        set_word_at(image, 0, 0xABCD);
        EXPECT_EQ(refusal_on_drive(image, access), "Unsupported format (magic=$ABCD, maybe 9825)");
    }
}

TEST(Tape45Recognition, NoSecondFileSystemIsLookedFor)
{
    for (const uint32_t record : {0u, 32u}) {
        Bytes image = tape45_image({});
        set_dword_at(image, record * record_bytes + 1372, 0x11954);
        const OpenVolume open(image);
        ASSERT_TRUE(open.md != nullptr);
        EXPECT_EQ(open.md->hfs_present, 0u);
    }
}

TEST(Tape45Recognition, EveryFailingReadIsAnError)
{
    for (const uint32_t n : {1u, 2u}) { // the window, then the record alone
        const TemporaryFile file(tape45_image(three_tape_files()));
        const Medium medium(file.path(), 0);
        ASSERT_TRUE(medium);
        FileFaults faults(FileFault::read, n, true);
        forget_error();
        const int32_t result = get_media_info(medium.md);
        EXPECT_EQ(result, faults.reached ? -1 : 0) << n;
        if (faults.reached) {
            EXPECT_EQ(global_error, 302u) << n;
        }
    }
}

TEST(Tape45Recognition, AFailingReadOfRecordOneIsAnErrorOnARecordMadeByHandToo)
{
    HandMedium hand(tape45_image(three_tape_files()));
    FileFaults faults(FileFault::read, 2); // each record is read by itself
    forget_error();
    EXPECT_EQ(get_media_info(&hand.md), -1);
    EXPECT_EQ(global_error, 302u);
}

TEST(Disk9825Recognition, NamesTheRomByTheNumberOfTracks)
{
    const struct {
        uint16_t tracks;
        const char *line;
    } rows[] = {{67, "9825 with 98217A ROM\n"},
                {77, "9825 with 98288A ROM\n"},
                {66, "9825 with unknown ROM\n"},
                {154, "9825 with unknown ROM\n"}};
    for (const auto &[tracks, line] : rows) {
        const TemporaryFile file(disk45_image(disk_of_9825(tracks)));
        const OutputCapture output;
        const Medium medium(file.path());
        ASSERT_TRUE(medium) << tracks;
        EXPECT_EQ(output.text(), line);
        EXPECT_EQ(medium->format, uint32_t{FORMAT_DISK45});
        EXPECT_EQ(medium->magic, 0u);
        EXPECT_EQ(medium->cylinders, tracks);
    }
}

TEST(Disk9825Recognition, ReadsTheFieldsAsOnOtherDisks)
{
    const OutputCapture output;
    const OpenVolume open(disk45_image(disk_of_9825()));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->sectors, 30u);
    EXPECT_EQ(open.md->records, 2310u);
    EXPECT_EQ(open.md->dir_start, 1u);
    EXPECT_EQ(open.md->dir_size, 22u);
    EXPECT_EQ(open.md->alloc_start, 23u);
    EXPECT_EQ(open.md->alloc_size, 6u);
    EXPECT_EQ(open.md->alloc_entry_size, 4u);
    EXPECT_EQ(open.md->spare_dir_start, 31u);
    EXPECT_EQ(open.md->spare_alloc_start, 53u);
    EXPECT_EQ(open.md->file_area_start, 60u);
    EXPECT_EQ(open.md->data_size, 75u * 30u * 256u);
    EXPECT_EQ(open.md->interleave, 7u);
    EXPECT_EQ(names(open.md), (std::vector<std::string>{"ALPHA", "BETA", "GAMMA"}));
}

TEST(Disk9825Recognition, TakesAllThreeWords)
{
    for (const size_t offset : {size_t{2}, size_t{8}, size_t{10}}) {
        Bytes image = disk45_image(disk_of_9825());
        image[offset + 1] = static_cast<uint8_t>(image[offset + 1] + 1);
        EXPECT_EQ(refusal(image), "Unsupported format") << offset;
        for (const uint32_t access : {uint32_t{ACCESS_FLOPPY}, uint32_t{ACCESS_GPIB}})
            EXPECT_EQ(refusal_on_drive(image, access), "Unsupported format (magic=$0000, maybe 9825)") << offset;
    }
}

TEST(Disk9825Recognition, OnADriveNothingIsComparedWithIt)
{
    Drive45 drive(disk45_image(disk_of_9825(67)));
    const OutputCapture output;
    const LogCapture log(2);
    EXPECT_EQ(get_media_info(&drive.md), 0) << error_text();
    EXPECT_EQ(drive.md.format, uint32_t{FORMAT_DISK45});
    EXPECT_EQ(output.text(), "9825 with 98217A ROM\n");
    EXPECT_EQ(log.text(), "");
}

TEST(Disk9825Recognition, NoSecondFileSystemIsLookedFor)
{
    Bytes image = disk45_image(disk_of_9825());
    set_dword_at(image, 32 * record_bytes + 1372, 0x11954);
    const OutputCapture output;
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->hfs_present, 0u);
}
