// The header of an SDF volume and its attributes table.
#include <gtest/gtest.h>

#include <algorithm>

#include "base/error.h"
#include "base/output.h"
#include "tests/support/capture.h"
#include "tests/support/sdf_builder.h"
#include "tests/support/system45_builder.h"
#include "tests/volume/sdf/literal.h"
#include "volume/catalogue.h"
#include "volume/catalogue_inner.h"

using namespace tests;

namespace
{

constexpr char map_warning[] = "Inode table file contains extent maps which are currently not supported\n";

void expect_date(const TimeRecord &date, const std::vector<int32_t> &fields)
{
    EXPECT_EQ((std::vector<int32_t>{date.tm_year, date.tm_mon, date.tm_mday, date.tm_hour, date.tm_min, date.tm_sec}),
              fields);
}

void expect_refused(const Bytes &image, const std::string &words)
{
    forget_error();
    const OpenVolume open(image);
    EXPECT_EQ(open.md, nullptr);
    EXPECT_EQ(error_text(), words);
}

Bytes with_block_size(uint32_t size)
{
    Bytes image = literal_sdf();
    set_dword_at(image, 28, size);
    return image;
}

}

TEST(SdfHeader, EachField)
{
    const OpenVolume open(literal_sdf());
    ASSERT_TRUE(open.md != nullptr) << error_text();
    EXPECT_EQ(open.md->format, uint32_t{FORMAT_SDF});
    EXPECT_EQ(open.md->magic, 0x0700);
    EXPECT_EQ(open.md->needs_check, 1u);
    EXPECT_STREQ(open.md->label, "MY VOLUME");
    expect_date(open.md->date, {84, 2, 15, 9, 7, 6});
    EXPECT_EQ(open.md->block_size, 256u);
    EXPECT_EQ(open.md->boot_start, 1u);
    EXPECT_EQ(open.md->boot_size, 1u);
    EXPECT_EQ(open.md->fat_start, 2u);
    EXPECT_EQ(open.md->version, 0x5678);
    EXPECT_EQ(open.md->largest_block, 11u);
    EXPECT_STREQ(open.md->password, "SECRET");
    expect_date(open.md->backup_date, {84, 2, 16, 16, 0, 0});
    EXPECT_EQ(open.md->dir_entry_size, 24u);
}

TEST(SdfHeader, ImageHasNoGeometry)
{
    const OpenVolume open(literal_sdf());
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->records, 12u);
    EXPECT_EQ(open.md->sectors, 0u);
    EXPECT_EQ(open.md->heads, 0u);
    EXPECT_EQ(open.md->cylinders, 0u);
}

TEST(SdfHeader, PartOfARecordAtTheEndCountsAsOne)
{
    Bytes image = literal_sdf();
    image.resize(image.size() + 1);
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->records, 13u);
}

TEST(SdfHeader, RootDirectoryAsItIsShown)
{
    SdfVolume volume = five_levels();
    volume.block_size = 512;
    const SdfImage image = sdf_image(volume);
    const OpenVolume open(image.bytes);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->dir_start, 2 * image.extents.at(1)[0].start);
    EXPECT_EQ(open.md->dir_size, 2u);
}

TEST(SdfHeader, EachSetBitOfTheMapIsAFreeBlock)
{
    const OpenVolume open(literal_sdf());
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->free_bytes, 256u); // the map of 12 blocks has one whole byte: 08
    EXPECT_EQ(open.md->data_size, 12 * 256u);
    EXPECT_EQ(open.md->used_bytes, 11 * 256u);
    for (uint32_t bit = 0; bit < 8; ++bit) {
        Bytes image = literal_sdf();
        image[literal_table + 384] = static_cast<uint8_t>(1U << bit);
        const OpenVolume other(image);
        ASSERT_TRUE(other.md != nullptr);
        EXPECT_EQ(other.md->free_bytes, 256u);
    }
}

TEST(SdfHeader, FreeSpaceCountsInBlocks)
{
    SdfVolume volume = five_levels();
    volume.block_size = 1024;
    volume.free_blocks = 20;
    const SdfImage image = sdf_image(volume);
    const OpenVolume open(image.bytes);
    ASSERT_TRUE(open.md != nullptr);
    const auto blocks = static_cast<uint32_t>(image.bytes.size() / 1024);
    EXPECT_EQ(open.md->data_size, blocks * 1024);
    EXPECT_EQ(open.md->free_bytes, (20 - blocks % 8) * 1024); // blocks of a last byte in part aren't looked at
    EXPECT_EQ(open.md->used_bytes + open.md->free_bytes, open.md->data_size);
}

TEST(SdfHeader, Hazard_E14_LabelAndPasswordOfSixteenCharactersAreWhole)
{
    SdfVolume volume = five_levels();
    volume.label = "ABCDEFGHIJKLMNOP";
    volume.password = "abcdefghijklmnop";
    const OpenVolume open(sdf_image(volume).bytes);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_STREQ(open.md->label, "ABCDEFGHIJKLMNOP");
    EXPECT_STREQ(open.md->password, "abcdefghijklmnop");
}

TEST(SdfHeader, LabelAndPasswordOfBlanksAndNulsAreEmpty)
{
    Bytes image = literal_sdf();
    put_hex(image, 4, "20 00 20 00 00 00 20 20 20 20 20 20 20 20 20 20");
    put_hex(image, 52, "20 20 00 00 00 00 20 20 20 20 20 20 20 20 20 00");
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_STREQ(open.md->label, "");
    EXPECT_STREQ(open.md->password, "");
}

TEST(SdfHeader, DatesOfZeroAreNone)
{
    Bytes image = literal_sdf();
    set_dword_at(image, 20, 0);
    set_dword_at(image, 24, 0);
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr);
    expect_date(open.md->date, {0, 0, 0, 0, 0, 0});
}

TEST(SdfHeader, AttributesTableOfTwoPieces)
{
    const OpenVolume open(literal_sdf());
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->inode_count, 6u);
    const Bytes image = literal_sdf();
    EXPECT_TRUE(std::equal(open.md->inode_table, open.md->inode_table + 512, image.begin() + literal_table));
    EXPECT_TRUE(std::equal(open.md->inode_table + 512, open.md->inode_table + 768, image.begin() + literal_tail));
    EXPECT_EQ(names(open.md), (std::vector<std::string>{"ALPHA", "DIR"}));
}

TEST(SdfHeader, AttributesTableEndsAtItsAllocatedBlocks)
{
    Bytes image = literal_sdf();
    set_dword_at(image, literal_table + 28, 2);
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->inode_count, 4u); // though the extents have room for six
}

TEST(SdfHeader, AttributesTableEndsWithItsExtents)
{
    Bytes image = literal_sdf();
    set_dword_at(image, literal_table + 28, 9);
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->inode_count, 6u); // though there would be room for eighteen
}

TEST(SdfHeader, LogTellsOfTheAttributesTable)
{
    const LogCapture log(3);
    const OpenVolume open(literal_sdf());
    EXPECT_TRUE(contains(log.text(), "Inode table of size 768 detected with max. 6 entries\n")) << log.text();
    EXPECT_FALSE(contains(log.text(), map_warning)) << log.text();
}

TEST(SdfHeader, ExtentMapOfTheTableIsAWarning)
{
    Bytes image = literal_sdf();
    set_dword_at(image, literal_table + 72, 7);
    const LogCapture log(1);
    const OpenVolume open(image);
    EXPECT_TRUE(open.md != nullptr);
    EXPECT_TRUE(contains(log.text(), map_warning)) << log.text();
}

TEST(SdfHeader, ASecondFileSystemIsNotLookedFor)
{
    Bytes image = literal_sdf();
    image.resize(64 * record_bytes);
    set_dword_at(image, 32 * record_bytes + 1372, 0x11954);
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->hfs_present, 0u);
}

TEST(SdfHeader, ADriveTellsTheGeometry)
{
    Drive45 drive(literal_sdf());
    ASSERT_EQ(get_media_info(&drive.md), 0) << error_text();
    EXPECT_EQ(drive.md.sectors, 30u);
    EXPECT_EQ(drive.md.heads, 2u);
    EXPECT_EQ(drive.md.cylinders, 154u); // of both surfaces
    EXPECT_EQ(drive.md.records, 154u * 30);
    EXPECT_EQ(drive.md.inode_count, 6u);
}

TEST(SdfHeader, LookedAtOnceMoreTheTableIsReadAnew)
{
    const OpenVolume open(literal_sdf());
    ASSERT_TRUE(open.md != nullptr);
    Bytes image = literal_sdf();
    set_dword_at(image, literal_table + 28, 2);
    open.file.replace(image);
    ASSERT_EQ(get_media_info(open.md), 0);
    EXPECT_EQ(open.md->inode_count, 4u);
}

TEST(SdfHeader, SummaryOfAVolume)
{
    const OpenVolume open(literal_sdf());
    ASSERT_TRUE(open.md != nullptr);
    const OutputCapture output;
    print_media_info(open.md);
    EXPECT_EQ(output.text(), "Image format: Structured Directory Format (SDF) id=$0000 version=22136\n"
                             "System type: HP500\n"
                             "Image size: 3072 bytes\n"
                             "Volume label: \"MY VOLUME\"\n"
                             "Creation date & time: 15-Mar-84 09:07\n"
                             "Last backup date & time: 16-Mar-84 16:00\n"
                             "Block size: 256\n"
                             "Largest block: 11\n"
                             "Sectors per track: 0\n"
                             "Total number of user accessable tracks: 0\n"
                             "Total number of user accessable records: 12\n"
                             "Boot area of size 1 blocks starts at block #1\n"
                             "File attributes table starts at block #2\n"
                             "Root directory starts at record #6\n"
                             "Root directory size: 1 records\n"
                             "Total number of system tracks: 0\n"
                             "Total number of usable data tracks: 0\n"
                             "Volume is password protected (password is \"SECRET\")\n"
                             "File system needs check (may be currupted)\n"
                             "\n");
}

TEST(SdfHeader, Hazard_B9_LabelNameAndPasswordAreNeverAFormat)
{
    SdfVolume volume;
    volume.label = "%s%n%x%d%s%s%n%n";
    volume.password = "%n%n%s";
    volume.files = {sdf_file("%n%s%n", Bytes(3))};
    const OpenVolume open(sdf_image(volume).bytes);
    ASSERT_TRUE(open.md != nullptr && open.md->root != nullptr);
    const OutputCapture output;
    print_media_info(open.md);
    print_list_header(open.md);
    print_list_entry(open.md, open.md->root, 0);
    output_flush();
    for (const char *part : {"\"%s%n%x%d%s%s%n%n\"", "\"%n%n%s\"", "LABEL: %s%n%x%d%s%s%n%n\n", "\n%n%s%n  "}) {
        EXPECT_TRUE(contains(output.text(), part)) << part << output.text();
    }
}

TEST(SdfHeader, Hazard_E1_BlockSizesThatAreNoneAreRefused)
{
    for (const uint32_t size : {0U, 1U, 128U, 255U, 257U, 384U, 0x80000001U, 0xFFFFFFFFU}) {
        expect_refused(with_block_size(size), "Unsupported format (block size " + std::to_string(size) + ")");
    }
}

TEST(SdfHeader, Hazard_E1_BlocksLongerThanTheMediumAreRefused)
{
    for (const uint32_t size : {13 * 256U, 0x80000000U, 0xFFFFFF00U}) {
        expect_refused(with_block_size(size), "Unsupported format (block size " + std::to_string(size) + ")");
    }
}
