// The system record of a disk: its fields, and what is derived from them.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/system45_builder.h"

using namespace tests;

namespace
{

// Record 0 of a disk as it stands, ten words, in an image of so many records.
Bytes image_with_words(const std::vector<uint16_t> &words, uint32_t records = 100)
{
    Bytes image(size_t{records} * record_bytes);
    for (size_t i = 0; i < words.size(); ++i) set_word_at(image, 2 * i, words[i]);
    return image;
}

const std::vector<uint16_t> usual_words = {0x0500, 30, 150, 1, 1, 23, 29, 2, 148, 7};

std::vector<uint16_t> with_word(size_t index, uint16_t value)
{
    std::vector<uint16_t> words = usual_words;
    words[index] = value;
    return words;
}

DiskVolume labelled(const std::string &label)
{
    DiskVolume volume;
    volume.magic = 0x0600;
    volume.label = label;
    return volume;
}

}

TEST(Disk45Header, FieldsOfADualDriveDisc)
{
    Bytes image(150 * 30 * record_bytes);
    const uint8_t record[] = {0x05, 0x00, 0x00, 0x1E, 0x00, 0x96, 0x00, 0x01, 0x00, 0x01,
                              0x00, 0x17, 0x00, 0x1D, 0x00, 0x02, 0x00, 0x94, 0x00, 0x07};
    std::copy(std::begin(record), std::end(record), image.begin());
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr) << error_text();
    const MediaDescriptor &md = *open.md;
    EXPECT_EQ(md.format, uint32_t{FORMAT_DISK45});
    EXPECT_EQ(md.magic, 0x0500u);
    EXPECT_EQ(md.size, 1152000u);
    EXPECT_EQ(md.sectors, 30u);
    EXPECT_EQ(md.cylinders, 150u);
    EXPECT_EQ(md.heads, 0u);
    EXPECT_EQ(md.records, 4500u);
    EXPECT_EQ(md.dir_start, 1u);
    EXPECT_EQ(md.dir_size, 22u);
    EXPECT_EQ(md.dir_entry_size, 16u);
    EXPECT_EQ(md.alloc_start, 23u);
    EXPECT_EQ(md.alloc_size, 6u);
    EXPECT_EQ(md.alloc_entry_size, 4u);
    EXPECT_EQ(md.spare_dir_start, 31u);
    EXPECT_EQ(md.spare_alloc_start, 53u);
    EXPECT_EQ(md.system_tracks, 2u);
    EXPECT_EQ(md.data_tracks, 148u);
    EXPECT_EQ(md.interleave, 7u);
    EXPECT_EQ(md.file_area_start, 60u);
    EXPECT_EQ(md.data_size, 30u * 148u * 256u);
    EXPECT_STREQ(md.label, "");
    EXPECT_EQ(md.hfs_present, 0u);
    EXPECT_EQ(md.date.tm_mday, 0);
}

TEST(Disk45Header, ThreeMagicWordsAreTaken)
{
    for (const uint16_t magic : {uint16_t{0x0200}, uint16_t{0x0500}, uint16_t{0x0600}}) {
        DiskVolume volume = three_disk_files();
        volume.magic = magic;
        const OpenVolume open(disk45_image(volume));
        ASSERT_TRUE(open.md != nullptr) << magic;
        EXPECT_EQ(open.md->format, uint32_t{FORMAT_DISK45});
        EXPECT_EQ(open.md->magic, magic);
        EXPECT_EQ(names(open.md), (std::vector<std::string>{"ALPHA", "BETA", "GAMMA"}));
    }
}

TEST(Disk45Header, LowBitOfByte27AsksForLongAvailabilityEntries)
{
    for (const uint16_t magic : {uint16_t{0x0200}, uint16_t{0x0500}, uint16_t{0x0600}, uint16_t{0}}) {
        Bytes image = image_with_words(usual_words);
        set_word_at(image, 0, magic);
        for (const auto &[value, size] : {std::pair<uint8_t, uint32_t>{0, 4}, {1, 8}, {0xFE, 4}, {0xFF, 8}}) {
            image[27] = value;
            const OutputCapture output;
            const OpenVolume open(image);
            ASSERT_TRUE(open.md != nullptr) << magic;
            EXPECT_EQ(open.md->alloc_entry_size, size) << magic << ' ' << int{value};
        }
    }
}

TEST(Disk45Header, SpareTablesStandTracksBehindTheMainOnes)
{
    const struct {
        uint16_t distance;
        uint32_t directory, availability;
    } rows[] = {{0, 1, 23}, {1, 31, 53}, {2, 61, 83}, {75, 2251, 2273}};
    for (const auto &[distance, directory, availability] : rows) {
        const OpenVolume open(image_with_words(with_word(3, distance)));
        ASSERT_TRUE(open.md != nullptr);
        EXPECT_EQ(open.md->spare_dir_start, directory) << distance;
        EXPECT_EQ(open.md->spare_alloc_start, availability) << distance;
    }
}

TEST(Disk45Header, LabelsOfUpToEightCharacters)
{
    for (const char *label : {"", "A", "SEVEN77", "LABEL888"}) {
        const OpenVolume open(disk45_image(labelled(label)));
        ASSERT_TRUE(open.md != nullptr) << label;
        EXPECT_STREQ(open.md->label, label);
    }
}

TEST(Disk45Header, OnlyThe250HasALabel)
{
    for (const uint16_t magic : {uint16_t{0x0200}, uint16_t{0x0500}}) {
        DiskVolume volume = labelled("LABEL");
        volume.magic = magic;
        const OpenVolume open(disk45_image(volume));
        ASSERT_TRUE(open.md != nullptr);
        EXPECT_STREQ(open.md->label, "") << magic;
    }
}

TEST(Disk45Header, TheLabelIsNotTrimmed)
{
    const OpenVolume open(disk45_image(labelled(" AB  ")));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_STREQ(open.md->label, " AB  ");
}

TEST(Disk45Header, Hazard_F1_ALabelLengthAboveEightIsNoLabel)
{
    for (const uint16_t length : {uint16_t{9}, uint16_t{17}, uint16_t{255}, uint16_t{0x7FFF}, uint16_t{0x8000},
                                  uint16_t{0xFFF0}, uint16_t{0xFFFF}}) {
        DiskVolume volume = labelled("LABEL888");
        volume.label_length = length;
        const OpenVolume open(disk45_image(volume));
        ASSERT_TRUE(open.md != nullptr) << length;
        EXPECT_STREQ(open.md->label, "") << length;
        EXPECT_EQ(open.md->dir_id, 0u);
    }
}

TEST(Disk45Header, Hazard_F2_TablesThatEndAheadOfTheirStartAreEmpty)
{
    const struct {
        uint16_t directory, availability, end;
        uint32_t dir_size, alloc_size;
    } rows[] = {{24, 23, 29, 0, 6}, {0xFFFF, 23, 29, 0, 6}, {1, 23, 22, 22, 0},
                {1, 23, 0, 22, 0},  {23, 23, 23, 0, 0},     {1, 0, 0, 0, 0}};
    for (const auto &[directory, availability, end, dir_size, alloc_size] : rows) {
        std::vector<uint16_t> words = usual_words;
        words[4] = directory;
        words[5] = availability;
        words[6] = end;
        const TemporaryFile file(image_with_words(words));
        FileFaults counter;
        const Medium medium(file.path(), OPEN_READ_VOLUME | OPEN_CHECK);
        ASSERT_TRUE(medium) << directory;
        EXPECT_EQ(medium->dir_size, dir_size) << directory;
        EXPECT_EQ(medium->alloc_size, alloc_size) << end;
        EXPECT_EQ(medium->spare_alloc_start, medium->spare_dir_start + dir_size);
        EXPECT_EQ(medium->root, nullptr);
        EXPECT_LT(counter.reads, 20u);
    }
}

TEST(Disk45Header, WithoutTracksOrSectorsTheRecordsComeFromTheFile)
{
    for (const size_t missing : {size_t{1}, size_t{2}}) {
        Bytes image = image_with_words(with_word(missing, 0));
        image.resize(image.size() + 1);
        const TemporaryFile file(image);
        const LogCapture log(2);
        const Medium medium(file.path());
        ASSERT_TRUE(medium);
        EXPECT_EQ(medium->records, 101u);
        EXPECT_EQ(medium->sectors, missing == 1 ? 0u : 30u);
        EXPECT_EQ(medium->cylinders, missing == 2 ? 0u : 150u);
        EXPECT_TRUE(contains(log.text(), "No valid sector/track data in system record\n")) << log.text();
        EXPECT_EQ(medium->dir_size, 22u);
        EXPECT_EQ(medium->interleave, 7u);
    }
}

TEST(Disk45Header, WithoutDataTracksTheCapacityComesFromTheFile)
{
    const OpenVolume open(image_with_words(with_word(8, 0)));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->data_size, 100u * 256u - 60u * 256u);
    const OpenVolume sectorless(image_with_words(with_word(1, 0)));
    ASSERT_TRUE(sectorless.md != nullptr);
    EXPECT_EQ(sectorless.md->file_area_start, 0u);
    EXPECT_EQ(sectorless.md->data_size, 100u * 256u);
}

TEST(Disk45Header, TheLargestFiguresAreTakenAsTheyAre)
{
    const OpenVolume open(image_with_words({0x0500, 0xFFFF, 0xFFFF, 0xFFFF, 1, 23, 29, 0xFFFF, 0xFFFF, 0xFFFF}));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->records, 0xFFFE0001u);
    EXPECT_EQ(open.md->spare_dir_start, 0xFFFE0002u);
    EXPECT_EQ(open.md->file_area_start, 0xFFFE0001u);
    EXPECT_EQ(open.md->data_size, 0xFE000100u); // the low 32 bits
    EXPECT_EQ(open.md->interleave, 0xFFFFu);
}

TEST(Disk45Header, NoSecondFileSystemIsLookedFor)
{
    Bytes image = image_with_words(usual_words);
    set_dword_at(image, 32 * record_bytes + 1372, 0x11954);
    MediaDescriptor options = usual_options();
    options.prefer_hfs = 1;
    const TemporaryFile file(image);
    const Medium medium(file.path(), OPEN_READ_VOLUME, &options);
    ASSERT_TRUE(medium) << error_text();
    EXPECT_EQ(medium->format, uint32_t{FORMAT_DISK45});
    EXPECT_EQ(medium->hfs_present, 0u);
}

TEST(Disk45Header, AReadThatFailsIsAnError)
{
    const TemporaryFile file(disk45_image(three_disk_files()));
    const Medium medium(file.path(), 0);
    ASSERT_TRUE(medium);
    FileFaults faults(FileFault::read, 1, true);
    forget_error();
    EXPECT_EQ(get_media_info(medium.md), -1);
    EXPECT_EQ(global_error, 302u);
    EXPECT_EQ(medium->format, uint32_t{FORMAT_UNKNOWN});
}

TEST(Disk45OnADrive, WithoutGeometryTheDriveIsAsked)
{
    for (const uint32_t access : {uint32_t{ACCESS_FLOPPY}, uint32_t{ACCESS_GPIB}}) {
        for (const size_t missing : {size_t{1}, size_t{2}}) {
            Drive45 drive(image_with_words(with_word(missing, 0), 77 * 2 * 30), access);
            const LogCapture log(2);
            EXPECT_EQ(get_media_info(&drive.md), 0) << error_text();
            EXPECT_EQ(drive.md.sectors, 30u);
            EXPECT_EQ(drive.md.cylinders, 154u);
            EXPECT_EQ(drive.md.heads, 0u);
            EXPECT_EQ(drive.md.records, 4620u);
            EXPECT_EQ(drive.md.spare_dir_start, 31u);
            EXPECT_TRUE(contains(log.text(), "No valid sector/track data in system record, using device data\n"));
            EXPECT_FALSE(contains(log.text(), "report different")) << log.text();
        }
    }
}

TEST(Disk45OnADrive, ADifferentGeometryIsAWarning)
{
    Drive45 drive(image_with_words({0x0500, 29, 150, 1, 1, 23, 29, 2, 148, 6}, 77 * 2 * 30));
    const LogCapture log(2);
    EXPECT_EQ(get_media_info(&drive.md), 0);
    const std::string text = log.text();
    EXPECT_TRUE(contains(text, "File system and device report different cylinder count (maybe spares)\n")) << text;
    EXPECT_TRUE(contains(text, "File system and device report different sector count (maybe spares)\n")) << text;
    EXPECT_TRUE(contains(text, "File system and device report different interleave factor\n")) << text;
    EXPECT_FALSE(contains(text, "head count")) << text; // the record doesn't tell them
}

TEST(Disk45OnADrive, AnEqualGeometryIsNoWarning)
{
    Drive45 drive(image_with_words({0x0500, 30, 154, 1, 1, 23, 29, 2, 152, 7}, 77 * 2 * 30));
    const LogCapture log(2);
    EXPECT_EQ(get_media_info(&drive.md), 0);
    EXPECT_FALSE(contains(log.text(), "report different")) << log.text();
}
