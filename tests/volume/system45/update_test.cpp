// Directories and availability tables of the family, written: main ones and spare copies, and what is refused.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/system45_builder.h"
#include "volume/allocation.h"
#include "volume/operations.h"
#include "volume/table.h"

using namespace tests;

namespace
{

const std::vector<std::string> three_names = {"ALPHA", "BETA", "GAMMA"};

}

TEST(Disk45Update, AnUnchangedVolumeStaysAsItWas)
{
    for (const uint16_t distance : {uint16_t{1}, uint16_t{0}, uint16_t{5}}) {
        DiskVolume volume = three_disk_files();
        volume.spare_distance = distance;
        const OpenVolume open(disk45_image(volume));
        ASSERT_TRUE(open.md != nullptr);
        const Bytes before = open.file.bytes();
        EXPECT_EQ(update_all_tables(open.md), 0) << error_text();
        EXPECT_EQ(open.file.bytes(), before) << distance;
    }
}

TEST(Disk45Update, MainAndSpareTablesAreEqualAfterAChange)
{
    const OpenVolume open(disk45_image(three_disk_files()));
    ASSERT_TRUE(open.md != nullptr);
    const Bytes before = open.file.bytes();
    EXPECT_EQ(image_delete_file(open.md, open.md->root->next, 0), 0);
    append_file(open.md, "NEW", image_allocate(open.md, 2));
    EXPECT_EQ(update_all_tables(open.md), 0) << error_text();
    const Bytes after = open.file.bytes();
    EXPECT_EQ(records_of(after, 1, 28), records_of(after, 31, 28));
    EXPECT_EQ(records_of(after, 0, 1), records_of(before, 0, 1));
    EXPECT_EQ(records_of(after, 29, 2), records_of(before, 29, 2));
    EXPECT_EQ(records_of(after, 60, 540), records_of(before, 60, 540));
    Bytes directory(22 * record_bytes);
    const auto put_entry = [&directory](size_t slot, const DiskEntry &entry) {
        const auto bytes = disk45_entry_bytes(entry);
        std::copy(bytes.begin(), bytes.end(), directory.begin() + static_cast<std::ptrdiff_t>(slot * 16));
    };
    put_entry(0, {.name = "ALPHA", .start = 60, .records = 3});
    put_entry(1, {.name = "GAMMA", .type = 0xD000, .start = 68, .records = 4, .words = 256, .is_protected = true});
    put_entry(2, {.name = "NEW", .start = 63, .records = 10});
    directory[3 * 16 + 2] = directory[3 * 16 + 3] = 0xFF;
    EXPECT_EQ(records_of(after, 1, 22), directory);
    const Bytes table = records_of(after, 23, 1);
    EXPECT_EQ(Bytes(table.begin(), table.begin() + 12), (Bytes{0, 65, 0, 3, 0, 76, 2, 12, 0xFF, 0xFF, 0, 0}));
}

TEST(Disk45Update, TheRestOfAnImagesTablesIsCleared)
{
    Bytes image = disk45_image(three_disk_files());
    std::fill_n(image.begin() + 256 + 3 * 16 + 4, 22 * 256 - 3 * 16 - 4, uint8_t{0xAB});
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(update_all_tables(open.md), 0) << error_text();
    EXPECT_EQ(open.file.bytes(), disk45_image(three_disk_files()));
}

TEST(Disk45Update, OnADriveTheDirectoryEndsWithItsMarkAndTheAvailabilityTableIsWrittenWhole)
{
    Drive45 drive(disk45_image(three_disk_files()));
    ASSERT_EQ(get_media_info(&drive.md), 0);
    ASSERT_EQ(get_file_table(&drive.md, nullptr, nullptr, 0, 0, 0, 0, 0, 0), 0);
    ASSERT_EQ(get_alloc_table(&drive.md, 0), 0);
    EXPECT_EQ(update_all_tables(&drive.md), 0) << error_text();
    EXPECT_EQ(drive.written, (std::vector<uint32_t>{1, 23, 24, 25, 26, 27, 28, 31, 53, 54, 55, 56, 57, 58}));
}

TEST(Disk45Update, AnEmptyListIsTheEndMarkAlone)
{
    const OpenVolume open(disk45_image(three_disk_files()));
    ASSERT_TRUE(open.md != nullptr);
    image_free_directory(open.md, nullptr);
    EXPECT_EQ(update_file_table(open.md, 0), 0);
    Bytes expected(22 * record_bytes);
    expected[2] = expected[3] = 0xFF;
    EXPECT_EQ(records_of(open.file.bytes(), 1, 22), expected);
}

TEST(Disk45Update, AFileThatIsOnlyMarkedAsPurgedLosesItsFirstLetter)
{
    const OpenVolume open(disk45_image(three_disk_files()));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(image_delete_file(open.md, open.md->root->next, 1), 0);
    EXPECT_EQ(update_all_tables(open.md), 0) << error_text();
    const Bytes after = open.file.bytes();
    const Bytes entry(after.begin() + 256 + 16, after.begin() + 256 + 22);
    EXPECT_EQ(entry, (Bytes{0, 'E', 'T', 'A', 0, 0}));
    const OpenVolume again(after);
    ASSERT_TRUE(again.md != nullptr);
    EXPECT_EQ(names(again.md), (std::vector<std::string>{"ALPHA", "GAMMA"}));
    EXPECT_EQ(runs_of(*again.md), (Runs{{63, 5}, {76, 524}}));
}

TEST(Disk45Update, APurgedOneLetterNameIsLeftOutSinceItWouldHideWhatFollows)
{
    DiskVolume volume = three_disk_files();
    volume.entries[0].name = "A";
    volume.entries[2].name = "C";
    const OpenVolume open(disk45_image(volume));
    ASSERT_TRUE(open.md != nullptr);
    image_delete_file(open.md, open.md->root, 1);
    image_delete_file(open.md, last_entry(open.md), 1);
    EXPECT_EQ(update_all_tables(open.md), 0) << error_text();
    EXPECT_EQ(open.md->used_bytes, 5u * 256u);
    const Bytes after = open.file.bytes();
    EXPECT_EQ(Bytes(after.begin() + 256, after.begin() + 262), (Bytes{'B', 'E', 'T', 'A', 0, 0}));
    EXPECT_EQ(Bytes(after.begin() + 272, after.begin() + 288),
              (Bytes{0, 0, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    const OpenVolume again(after);
    ASSERT_TRUE(again.md != nullptr);
    EXPECT_EQ(names(again.md), std::vector<std::string>{"BETA"});
}

TEST(Disk45Update, Hazard_D16_TypeBits7And8AreGoneAfterARewrite)
{
    DiskVolume volume = three_disk_files();
    volume.entries[0].type = 0xDC80; // ROOT
    const OpenVolume open(disk45_image(volume));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(type_text(*open.md->root), "ROOT");
    EXPECT_EQ(update_all_tables(open.md), 0) << error_text();
    const OpenVolume again(open.file.bytes());
    ASSERT_TRUE(again.md != nullptr);
    EXPECT_EQ(again.md->root->type, 0xDC00u);
    EXPECT_EQ(type_text(*again.md->root), "OPRM");
}

TEST(Disk45Update, FilesBehindRecord65535KeepTheirPlace)
{
    DiskVolume volume = three_disk_files();
    volume.tracks = 3000;
    volume.records = 600;
    volume.entries[1].start = 70000;
    volume.entries[2].start = 80000;
    const OpenVolume open(disk45_image(volume));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(locations(open.md), (std::vector<uint32_t>{60, 70000, 80000}));
    EXPECT_EQ(update_file_table(open.md, 0), 0) << error_text();
    const OpenVolume again(open.file.bytes());
    ASSERT_TRUE(again.md != nullptr);
    EXPECT_EQ(locations(again.md), (std::vector<uint32_t>{60, 70000, 80000}));
}

TEST(Disk45Update, Hazard_F7_AnEntryThatCannotSayItsPlaceIsRefused)
{
    const OpenVolume open(disk45_image(three_disk_files()));
    ASSERT_TRUE(open.md != nullptr);
    const Bytes before = open.file.bytes();
    for (const uint32_t location : {0x800000u, 0xFFFFFFFFu}) {
        last_entry(open.md)->location = location;
        for (const int32_t use_spare : {0, 1}) {
            forget_error();
            EXPECT_EQ(update_file_table(open.md, use_spare), -1);
            EXPECT_EQ(global_error, 211u);
            EXPECT_TRUE(contains(error_text(), "file \"GAMMA\"")) << error_text();
        }
    }
    EXPECT_EQ(open.file.bytes(), before);
    last_entry(open.md)->location = 0x7FFFFF;
    EXPECT_EQ(update_file_table(open.md, 0), 0) << error_text();
}

TEST(Disk45Update, MoreLogicalRecordsThanAnEntryCanSayAreRefused)
{
    const OpenVolume open(disk45_image(three_disk_files()));
    ASSERT_TRUE(open.md != nullptr);
    const Bytes before = open.file.bytes();
    last_entry(open.md)->records = 0x10000;
    last_entry(open.md)->record_len = 1;
    forget_error();
    EXPECT_EQ(update_file_table(open.md, 0), -1);
    EXPECT_EQ(global_error, 211u);
    EXPECT_EQ(open.file.bytes(), before);
}

TEST(Disk45Update, Hazard_D11_MoreEntriesThanSlotsAreRefused)
{
    DiskVolume volume;
    volume.availability_start = 3;
    volume.entries = numbered_files(32);
    const OpenVolume open(disk45_image(volume));
    ASSERT_TRUE(open.md != nullptr);
    const Bytes before = open.file.bytes();
    append_file(open.md, "MORE", 400);
    forget_error();
    EXPECT_EQ(update_file_table(open.md, 0), -1);
    EXPECT_EQ(global_error, 216u);
    EXPECT_EQ(open.file.bytes(), before);
}

TEST(Disk45Update, Hazard_D10_TablesWithALiveFileInThemAreRefused)
{
    const struct {
        uint32_t file;
        int32_t directory, availability, spare_directory, spare_availability; // results
    } rows[] = {{1, -1, 0, 0, 0},  {22, -1, -1, 0, 0}, {25, 0, -1, 0, 0},
                {29, 0, 0, -1, 0}, {50, 0, 0, -1, -1}, {58, 0, 0, 0, -1}};
    for (const auto &row : rows) {
        DiskVolume volume = three_disk_files();
        volume.entries[0].start = row.file;
        volume.entries[0].records = row.file == 50 ? 5 : 3;
        volume.entries[0].fill = 0;
        volume.entries[1].start = 100;
        const OpenVolume open(disk45_image(volume));
        ASSERT_TRUE(open.md != nullptr);
        ASSERT_EQ(names(open.md), three_names);
        const Bytes before = open.file.bytes();
        const auto expect_result = [&](int32_t result, int32_t expected) {
            EXPECT_EQ(result, expected) << row.file;
            if (expected < 0) {
                EXPECT_EQ(global_error, 213u) << row.file;
            }
        };
        expect_result(update_file_table(open.md, 0), row.directory);
        expect_result(update_alloc_table(open.md, 0), row.availability);
        expect_result(update_file_table(open.md, 1), row.spare_directory);
        expect_result(update_alloc_table(open.md, 1), row.spare_availability);
        EXPECT_EQ(open.file.bytes(), before) << row.file; // what was written is what stood there
    }
}

TEST(Disk45Update, Hazard_D21_ASpareTableThatReachesIntoAMainOneIsRefused)
{
    DiskVolume volume = three_disk_files();
    volume.records_per_track = 5;
    volume.tracks = 120;
    volume.system_tracks = 12;
    for (const uint16_t distance : {uint16_t{1}, uint16_t{3}, uint16_t{4}, uint16_t{5}}) {
        volume.spare_distance = distance; // from within the main directory to within the availability table
        const OpenVolume open(disk45_image(volume));
        ASSERT_TRUE(open.md != nullptr);
        EXPECT_EQ(update_file_table(open.md, 0), 0);
        EXPECT_EQ(update_alloc_table(open.md, 0), 0);
        const Bytes before = open.file.bytes();
        forget_error();
        EXPECT_EQ(update_file_table(open.md, 1), -1) << distance;
        EXPECT_EQ(global_error, 213u);
        const int32_t availability = distance == 1 ? -1 : 0; // six records, five further on
        forget_error();
        EXPECT_EQ(update_alloc_table(open.md, 1), availability) << distance;
        EXPECT_EQ(records_of(open.file.bytes(), 1, 28), records_of(before, 1, 28)) << distance;
    }
}

TEST(Disk45Update, Hazard_D21_ASpareTableBehindTheMediumIsRefused)
{
    DiskVolume volume = three_disk_files();
    volume.spare_distance = 0xFFFF;
    const OpenVolume open(disk45_image(volume));
    ASSERT_TRUE(open.md != nullptr);
    const Bytes before = open.file.bytes();
    EXPECT_EQ(update_file_table(open.md, 1), -1);
    EXPECT_EQ(update_alloc_table(open.md, 1), -1);
    EXPECT_EQ(open.file.bytes(), before);
}

TEST(Disk45Update, Hazard_D12_RunsThatShortEntriesCannotSayAreLogged)
{
    DiskVolume volume = three_disk_files();
    volume.tracks = 5000;
    volume.data_tracks = 4998;
    volume.records = 600;
    const OpenVolume open(disk45_image(volume));
    ASSERT_TRUE(open.md != nullptr);
    image_free_allocation(open.md, 100000, 50); // a file behind what the entries reach was deleted
    const LogCapture log(1);
    EXPECT_EQ(update_alloc_table(open.md, 0), 0);
    EXPECT_TRUE(contains(log.text(), "free space is lost")) << log.text();
    const OpenVolume again(open.file.bytes());
    ASSERT_TRUE(again.md != nullptr);
    for (const auto &[location, size] : runs_of(*again.md)) {
        EXPECT_EQ(location, 76u);
        EXPECT_EQ(size, (4998u * 30u - 16u) & 0xFFFFu);
    }
}

TEST(Disk45Update, Hazard_D12_ARunThatWouldReadAsTheEndMarkIsLeftOut)
{
    const auto hand = disc_with({{76, 10}, {65534, 1}, {65535, 5}, {70000, 9}});
    const auto table = [&hand] { return records_of(hand->file.bytes(), table_start, 1); };
    {
        const LogCapture log(1);
        EXPECT_EQ(update_alloc_table(&hand->md, 0), 0);
        EXPECT_TRUE(contains(log.text(), "free space is lost")) << log.text();
    }
    const Bytes bytes = table();
    EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 12), (Bytes{0, 76, 0, 10, 0xFF, 0xFE, 0, 1, 0xFF, 0xFF, 0, 0}));
    add_run(hand->md, 0xFFFEFFFF, 1);
    add_run(hand->md, 0xFFFF0000, 1);
    hand->md.alloc_entry_size = 8;
    EXPECT_EQ(update_alloc_table(&hand->md, 0), 0);
    const Bytes long_bytes = table();
    EXPECT_EQ(Bytes(long_bytes.begin() + 32, long_bytes.begin() + 48),
              (Bytes{0xFF, 0xFE, 0xFF, 0xFF, 0, 0, 0, 1, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0}));
}

TEST(Disk45Update, Hazard_D12_ARunThatIsTooLongForAShortEntryIsCut)
{
    const auto hand = disc_with({{76, 70000}});
    hand->md.free_bytes = 65535 * 256; // as much as is written
    const LogCapture log(1);
    EXPECT_EQ(update_alloc_table(&hand->md, 0), 0);
    EXPECT_TRUE(contains(log.text(), "free space is lost")) << log.text();
    EXPECT_FALSE(contains(log.text(), "different free space")) << log.text();
    EXPECT_EQ(get_alloc_table(&hand->md, 0), 0);
    EXPECT_EQ(runs_of(hand->md), (Runs{{76, 65535}}));
}

TEST(Tape45Update, AnUnchangedTapeStaysAsItWas)
{
    const OpenVolume open(tape45_image(three_tape_files()));
    ASSERT_TRUE(open.md != nullptr);
    const Bytes before = open.file.bytes();
    EXPECT_EQ(update_all_tables(open.md), 0) << error_text();
    EXPECT_EQ(open.file.bytes(), before);
}

TEST(Tape45Update, BothDirectoriesAreWrittenWithTheirHeads)
{
    Bytes image(10 * record_bytes, 0xAB);
    image[256] = 0x05;
    image[257] = 0x00;
    image[260] = image[261] = 0xFF;
    std::fill_n(image.begin(), 256, uint8_t{0});
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr);
    append_file(open.md, "PRIME", 0x2BC);
    EXPECT_EQ(update_all_tables(open.md), 0) << error_text();
    Bytes directory(512);
    const Bytes head = {0x05, 0x00, 0xFF, 0xFF, 'P',  'R',  'I',  'M',  'E',
                        0,    0xCA, 0xBC, 0x00, 0x0A, 0x00, 0x80, 0xFF, 0xFF};
    std::copy(head.begin(), head.end(), directory.begin());
    const Bytes after = open.file.bytes();
    EXPECT_EQ(records_of(after, 1, 2), directory);
    EXPECT_EQ(records_of(after, 3, 2), directory);
    EXPECT_EQ(records_of(after, 0, 1), records_of(image, 0, 1));
    EXPECT_EQ(records_of(after, 5, 5), records_of(image, 5, 5));
}

TEST(Tape45Update, Hazard_F7_AnEntryThatCannotSayItsPlaceIsRefused)
{
    const OpenVolume open(tape45_image(three_tape_files()));
    ASSERT_TRUE(open.md != nullptr);
    const Bytes before = open.file.bytes();
    for (const uint32_t location : {1024u, 1029u, 0x10000u}) {
        last_entry(open.md)->location = location;
        forget_error();
        EXPECT_EQ(update_file_table(open.md, 0), -1) << location;
        EXPECT_EQ(global_error, 211u) << location;
        EXPECT_EQ(update_file_table(open.md, 1), -1) << location;
    }
    EXPECT_EQ(open.file.bytes(), before);
    last_entry(open.md)->location = 1023;
    EXPECT_EQ(update_file_table(open.md, 0), 0);
}

TEST(Tape45Update, Hazard_D10_AFileOverADirectoryIsRefused)
{
    for (uint32_t location = 1; location < 5; ++location) {
        TapeVolume volume = three_tape_files();
        volume.entries[2].start = location;
        volume.entries[2].records = 1;
        volume.entries[2].words = 128;
        volume.entries[2].fill = 0;
        const OpenVolume open(tape45_image(volume));
        ASSERT_TRUE(open.md != nullptr);
        const Bytes before = open.file.bytes();
        EXPECT_EQ(update_file_table(open.md, 0), location < 3 ? -1 : 0) << location;
        EXPECT_EQ(update_file_table(open.md, 1), location < 3 ? 0 : -1) << location;
        EXPECT_EQ(open.file.bytes(), before);
    }
}

TEST(Tape45Update, Hazard_D11_MoreThan42EntriesAreRefused)
{
    TapeVolume volume;
    for (const DiskEntry &entry : numbered_files(42)) volume.entries.push_back({.name = entry.name});
    const OpenVolume open(tape45_image(volume));
    ASSERT_TRUE(open.md != nullptr);
    const Bytes before = open.file.bytes();
    append_file(open.md, "MORE", 100);
    forget_error();
    EXPECT_EQ(update_file_table(open.md, 0), -1);
    EXPECT_EQ(global_error, 216u);
    EXPECT_EQ(open.file.bytes(), before);
}
