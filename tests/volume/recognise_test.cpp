// Which file system is on a medium, and what its header says.
#include <gtest/gtest.h>

#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/medium.h"
#include "volume/open.h"

using namespace tests;

namespace
{

constexpr uint32_t second_system_offset = 1372;

Bytes image_of_records(uint32_t records)
{
    return Bytes(size_t{records} * record_bytes);
}

// A whole disc of the second file system, without a magic word that another one takes.
Bytes hfs_disc(uint32_t word = 0x11954)
{
    Bytes image = image_of_records(40);
    set_word_at(image, 0, 0x1234);
    set_dword_at(image, second_system_offset, word);
    return image;
}

void expect_refused(const Bytes &image, uint32_t error, const std::string &kind)
{
    const TemporaryFile file(image);
    forget_error();
    const Medium medium(file.path());
    EXPECT_FALSE(medium) << kind;
    EXPECT_EQ(global_error, error) << kind;
    EXPECT_TRUE(contains_ignoring_case(error_text(), kind)) << error_text();
    EXPECT_EQ(file.bytes(), image) << kind;
}

}

TEST(LifHeader, FieldsAreRead)
{
    LifVolume volume;
    volume.label = "VOL1";
    volume.directory_start = 2;
    volume.directory_length = 4;
    volume.id = 0x1234;
    volume.version = 7;
    volume.tracks = 10;
    volume.surfaces = 2;
    volume.records_per_track = 16;
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr) << error_text();
    EXPECT_EQ(open.md->format, uint32_t{FORMAT_LIF});
    EXPECT_EQ(open.md->magic, 0x8000u);
    EXPECT_STREQ(open.md->label, "VOL1  ");
    EXPECT_EQ(open.md->dir_id, 0x1234u);
    EXPECT_EQ(open.md->version, 7u);
    EXPECT_EQ(open.md->dir_start, 2u);
    EXPECT_EQ(open.md->dir_size, 4u);
    EXPECT_EQ(open.md->dir_entry_size, 32u);
    EXPECT_EQ(open.md->alloc_size, 0u);
    EXPECT_EQ(open.md->file_area_start, 6u);
    EXPECT_EQ(open.md->hfs_present, 0u);
}

TEST(LifHeader, GeometryIsDerived)
{
    LifVolume volume;
    volume.directory_length = 4;
    volume.surfaces = 2;
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->heads, 2u);
    EXPECT_EQ(open.md->cylinders, 20u);
    EXPECT_EQ(open.md->sectors, 16u);
    EXPECT_EQ(open.md->records, 320u);
    EXPECT_EQ(open.md->data_tracks, 19u);
    EXPECT_EQ(open.md->system_tracks, 1u);
    EXPECT_EQ(open.md->data_size, 16u * 19u * 256u);
    EXPECT_EQ(open.md->size, 320u * 256u);
}

TEST(LifHeader, DateIsRead)
{
    const OpenVolume open(LifVolume{});
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->date.tm_year, 84);
    EXPECT_EQ(open.md->date.tm_mon, 2);
    EXPECT_EQ(open.md->date.tm_mday, 15);
    EXPECT_EQ(open.md->date.tm_hour, 9);
    EXPECT_EQ(open.md->date.tm_min, 7);
    EXPECT_EQ(open.md->date.tm_sec, 30);
}

TEST(LifHeader, ThreeMagicWordsAreTaken)
{
    for (const uint16_t magic : {uint16_t{6}, uint16_t{8}, uint16_t{0x8000}}) {
        LifVolume volume;
        volume.magic = magic;
        volume.entries = {{.name = "A"}};
        const OpenVolume open(volume);
        ASSERT_TRUE(open.md != nullptr) << magic;
        EXPECT_EQ(open.md->format, uint32_t{FORMAT_LIF});
        EXPECT_EQ(open.md->magic, magic);
        EXPECT_EQ(names(open.md), std::vector<std::string>{"A"});
    }
}

TEST(LifHeader, ZeroGeometryTakesTheRecordsFromTheFile)
{
    LifVolume volume;
    volume.tracks = volume.surfaces = volume.records_per_track = 0;
    Bytes image = lif_image(volume);
    image.resize(image.size() + 100);
    const TemporaryFile file(image);
    const LogCapture log(2);
    const Medium medium(file.path());
    ASSERT_TRUE(medium);
    EXPECT_EQ(medium->records, 5u);
    EXPECT_EQ(medium->sectors, 0u);
    EXPECT_EQ(medium->cylinders, 0u);
    EXPECT_EQ(medium->heads, 0u);
    EXPECT_EQ(medium->data_tracks, 0u);
    EXPECT_EQ(medium->system_tracks, 0u);
    EXPECT_EQ(medium->data_size, 100u);
    EXPECT_TRUE(contains(log.text(), "No valid cylinder/head/sector data in system record (ignored)\n")) << log.text();
}

TEST(LifHeader, FullSystemTracksTakeTheCapacityFromTheFile)
{
    LifVolume volume;
    volume.tracks = 1;
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->data_tracks, 0u);
    EXPECT_EQ(open.md->system_tracks, 1u);
    EXPECT_EQ(open.md->data_size, 12u * 256u);
}

TEST(LifHeader, Hazard_B1_AProductThatWrapsToZeroIsNoGeometry)
{
    LifVolume volume;
    volume.tracks = 65536;
    volume.surfaces = 65536;
    volume.records = 20;
    volume.entries = {{.name = "A"}};
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->cylinders, 0u);
    EXPECT_EQ(open.md->records, 20u);
    EXPECT_EQ(names(open.md).size(), 1u);
}

TEST(LifHeader, Hazard_B2_DataTracksWrapWhenTheDirectoryIsLargerThanTheVolume)
{
    LifVolume volume;
    volume.tracks = 1;
    volume.directory_length = 100;
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->data_tracks, 0xFFFFFFFAu); // 1 - 7
    EXPECT_EQ(open.md->system_tracks, 7u);
}

TEST(LifHeader, Hazard_B11_TheLabelKeepsAllItsBytes)
{
    LifVolume volume;
    volume.label = std::string("\x01%n\x7F\xFFZ", 6);
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(std::string(open.md->label), volume.label);
}

TEST(LifHeader, AReadThatFailsIsAnError)
{
    HandMedium hand(lif_image(LifVolume{}));
    file_close(hand.md.file);
    hand.md.file = 0;
    forget_error();
    EXPECT_EQ(get_media_info(&hand.md), -1);
    EXPECT_NE(global_error, 0u);
}

TEST(Recognition, WorksOnARecordMadeByHand)
{
    HandMedium hand(lif_image(LifVolume{}));
    EXPECT_EQ(get_media_info(&hand.md), 0);
    EXPECT_EQ(hand.md.format, uint32_t{FORMAT_LIF});
    EXPECT_EQ(hand.md.records, 160u);
}

TEST(Recognition, AnotherAccessIsAnError)
{
    HandMedium hand(lif_image(LifVolume{}));
    hand.md.access = 3;
    forget_error();
    EXPECT_EQ(get_media_info(&hand.md), -1);
    EXPECT_EQ(global_error, 202u);
}

TEST(Recognition, UnknownMagicIsUnsupported)
{
    Bytes image = image_of_records(16);
    set_word_at(image, 0, 0x4D5A);
    expect_refused(image, 203, "Unsupported format");
    expect_refused(image_of_records(16), 203, "Unsupported format");
}

TEST(Recognition, TheMagicOfRecordOneIsShownForWhatIsUnknown)
{
    Bytes image = image_of_records(16);
    set_word_at(image, 0, 0x1111);
    set_word_at(image, 256, 0x2222);
    HandMedium hand(image);
    EXPECT_EQ(get_media_info(&hand.md), -1);
    EXPECT_EQ(global_error, 203u);
    EXPECT_EQ(hand.md.magic, 0x2222u);
    EXPECT_EQ(hand.md.format, uint32_t{FORMAT_UNKNOWN});
}

TEST(Recognition, SdfMagicWithoutBlocksIsRefused)
{
    Bytes image = image_of_records(16);
    set_word_at(image, 0, 0x0700);
    expect_refused(image, 203, "block size 0");
}

TEST(Recognition, ASecondFileSystemBehindTheLifHeaderIsNoted)
{
    for (const uint32_t word : {0x11954u, 0x95014u}) {
        Bytes image = lif_image(LifVolume{});
        set_dword_at(image, 32 * record_bytes + second_system_offset, word);
        const OpenVolume open(image);
        ASSERT_TRUE(open.md != nullptr);
        EXPECT_EQ(open.md->format, uint32_t{FORMAT_LIF});
        EXPECT_EQ(open.md->hfs_present, 1u);
        EXPECT_EQ(open.md->hfs_record, 32u);
    }
}

TEST(Recognition, AnotherWordThereIsNoSecondFileSystem)
{
    Bytes image = lif_image(LifVolume{});
    set_dword_at(image, 32 * record_bytes + second_system_offset, 0x11955);
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->hfs_present, 0u);
}

TEST(Recognition, APreferredHfsVolumeIsNotOpened)
{
    Bytes image = lif_image(LifVolume{});
    set_dword_at(image, 32 * record_bytes + second_system_offset, 0x11954);
    MediaDescriptor options = usual_options();
    options.prefer_hfs = 1;
    for (const Bytes &disc : {image, hfs_disc()}) {
        const TemporaryFile file(disc);
        forget_error();
        const Medium medium(file.path(), OPEN_READ_VOLUME, &options);
        EXPECT_FALSE(medium);
        EXPECT_EQ(error_text(), "Unsupported format (HFS file system not yet supported)");
    }
}

TEST(Recognition, PreferringHfsChangesNothingWithoutOne)
{
    MediaDescriptor options = usual_options();
    options.prefer_hfs = 1;
    const TemporaryFile file(lif_image(LifVolume{}));
    const Medium medium(file.path(), OPEN_READ_VOLUME, &options);
    ASSERT_TRUE(medium);
    EXPECT_EQ(medium->format, uint32_t{FORMAT_LIF});
}

TEST(Recognition, Hazard_B7_TheProbeOfAShortImageFindsNothing)
{
    Bytes cut = lif_image(LifVolume{});
    set_dword_at(cut, 32 * record_bytes + second_system_offset, 0x11954);
    cut.resize(32 * record_bytes + second_system_offset + 2);
    const OpenVolume partly(cut);
    ASSERT_TRUE(partly.md != nullptr);
    EXPECT_EQ(partly.md->hfs_present, 0u);
}

TEST(Recognition, Hazard_B8_AWholeHfsDiscOpensWithAnEmptyList)
{
    for (const uint32_t word : {0x11954u, 0x95014u}) {
        const OpenVolume open(hfs_disc(word));
        ASSERT_TRUE(open.md != nullptr) << error_text();
        EXPECT_EQ(open.md->format, uint32_t{FORMAT_UNKNOWN});
        EXPECT_EQ(open.md->hfs_present, 1u);
        EXPECT_EQ(open.md->hfs_record, 0u);
        EXPECT_EQ(open.md->root, nullptr);
    }
}

TEST(Recognition, AgainForgetsAnHfsVolumeThatWasThere)
{
    HandMedium hand(lif_image(LifVolume{}));
    hand.md.hfs_present = 1;
    EXPECT_EQ(get_media_info(&hand.md), 0);
    EXPECT_EQ(hand.md.hfs_present, 0u);
}
