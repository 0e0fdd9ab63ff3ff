// Directories and availability tables of the family, read; and those that are written again as they were.
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

// Opened in silence: a 9825's disk prints which one it is.
struct QuietVolume {
    explicit QuietVolume(const Bytes &image, uint16_t flags = OPEN_READ_VOLUME) : volume(image, flags), md(volume.md) {}

    OutputCapture output;
    OpenVolume volume;
    MediaDescriptor *md;
};

}

TEST(Disk45Tables, AreReadAtOpening)
{
    const LogCapture log(1);
    const OpenVolume open(disk45_image(three_disk_files()), OPEN_READ_VOLUME | OPEN_CHECK);
    ASSERT_TRUE(open.md != nullptr) << error_text();
    EXPECT_EQ(names(open.md), three_names);
    EXPECT_EQ(locations(open.md), (std::vector<uint32_t>{60, 63, 68}));
    EXPECT_EQ(runs_of(*open.md), (Runs{{76, 524}}));
    EXPECT_EQ(open.md->used_bytes, 16u * 256u);
    EXPECT_EQ(open.md->free_bytes, 524u * 256u);
    EXPECT_EQ(last_entry(open.md)->attributes, 6u);
    EXPECT_EQ(last_entry(open.md)->record_len, 256u);
    EXPECT_EQ(log.text(), "");
}

TEST(Disk45Tables, WhatStandsBehindTheEndMarkIsNotRead)
{
    DiskVolume volume = three_disk_files();
    volume.directory_end_mark = false;
    Bytes image = disk45_image(volume);
    const auto entry = disk45_entry_bytes({.name = "GHOST", .start = 100});
    std::copy(entry.begin(), entry.end(), image.begin() + 256 + 4 * 16); // behind one slot of zeros
    const OpenVolume open(image, OPEN_READ_VOLUME | OPEN_CHECK);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(names(open.md), three_names);
}

TEST(Disk45Tables, AFullDirectoryIsReadToItsLastSlot)
{
    DiskVolume volume;
    volume.availability_start = 3; // two records
    volume.entries = numbered_files(32);
    const OpenVolume open(disk45_image(volume), OPEN_READ_VOLUME | OPEN_CHECK);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(names(open.md).size(), 32u);
    EXPECT_EQ(names(open.md).back(), "F00031");
    const Bytes before = open.file.bytes();
    EXPECT_EQ(update_all_tables(open.md), 0) << error_text();
    EXPECT_EQ(open.file.bytes(), before);
}

TEST(Disk45Tables, TheSpareDirectoryIsReadOnRequest)
{
    Bytes image = disk45_image(three_disk_files());
    std::fill_n(image.begin() + 256, 22 * 256, uint8_t{0}); // the main one is lost
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->root, nullptr);
    EXPECT_EQ(get_file_table(open.md, nullptr, nullptr, 0, 1, 0, 1, 0, 0), 0);
    EXPECT_EQ(names(open.md), three_names);
    EXPECT_EQ(get_alloc_table(open.md, 1), 0);
    EXPECT_EQ(runs_of(*open.md), (Runs{{76, 524}}));
}

TEST(Disk45Tables, ADifferenceInFreeSpaceStillOpens)
{
    DiskVolume volume = three_disk_files();
    volume.runs = Runs{{76, 500}};
    const TemporaryFile file(disk45_image(volume));
    const LogCapture log(1);
    const Medium medium(file.path());
    ASSERT_TRUE(medium);
    EXPECT_TRUE(contains(log.text(), "report different free space (134144 vs. 128000)")) << log.text();
}

TEST(Disk45Tables, LongAvailabilityEntries)
{
    DiskVolume volume = three_disk_files();
    volume.magic = 0x0600;
    volume.long_runs = true;
    const OpenVolume open(disk45_image(volume));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(runs_of(*open.md), (Runs{{76, 524}}));
    const Bytes before = open.file.bytes();
    EXPECT_EQ(update_all_tables(open.md), 0) << error_text();
    EXPECT_EQ(open.file.bytes(), before);
}

TEST(Disk45Tables, Hazard_F6_PurgedFilesAreDroppedWithALineAndAreNoDamage)
{
    DiskVolume volume = three_disk_files();
    volume.entries[1].name = std::string("\0ETA", 4);
    const TemporaryFile file(disk45_image(volume));
    const LogCapture log(1);
    const Medium medium(file.path());
    ASSERT_TRUE(medium);
    EXPECT_EQ(names(medium.md), (std::vector<std::string>{"ALPHA", "GAMMA"}));
    EXPECT_TRUE(contains(log.text(), "Corrupt directory data (file \"\": empty filename) at block 1 entry 1\n"));
    EXPECT_EQ(medium->state->refused_entries, 0u);
    EXPECT_EQ(medium->state->table_result, 0);
    const Medium checked(file.path(), OPEN_READ_VOLUME | OPEN_CHECK);
    ASSERT_TRUE(checked);
    EXPECT_EQ(names(checked.md), std::vector<std::string>{"ALPHA"});
    EXPECT_EQ(checked->state->table_result, -1);
}

TEST(Disk45Tables, OtherEntriesThatAreRefusedAreDamage)
{
    DiskVolume volume = three_disk_files();
    volume.entries[1].start = 0;
    const OpenVolume open(disk45_image(volume));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(names(open.md), (std::vector<std::string>{"ALPHA", "GAMMA"}));
    EXPECT_EQ(open.md->state->refused_entries, 1u);
}

TEST(Disk45Tables, KeepsPurgedOneLetterNameEndingDirectory)
{
    DiskVolume volume = three_disk_files();
    volume.entries[1].name = std::string("\0", 1);
    const OpenVolume open(disk45_image(volume), OPEN_READ_VOLUME | OPEN_CHECK);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(names(open.md), std::vector<std::string>{"ALPHA"});
    EXPECT_EQ(open.md->state->table_result, 0);
}

TEST(Disk45Tables, Hazard_F8_ZeroEntriesOfA9825AreEmptyRunsInsideTheImage)
{
    DiskVolume volume = disk_of_9825();
    volume.availability_end = 0xFFFF;
    volume.records = 200;
    const QuietVolume open(disk45_image(volume));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->alloc_size, 0xFFFFu - 23u);
    const Runs runs = runs_of(*open.md);
    EXPECT_LE(runs.size(), (200u - 23u) * 64u);
    EXPECT_NE(std::find(runs.begin(), runs.end(), FreeRun(72, 2238)), runs.end());
    EXPECT_TRUE(std::is_sorted(runs.begin(), runs.end()));
}

TEST(Disk45Tables, A9825IsWrittenAgainAsItWas)
{
    DiskVolume volume = disk_of_9825();
    volume.runs = Runs{{72, 10}, {100, 20}, {300, 30}};
    const QuietVolume open(disk45_image(volume));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(runs_of(*open.md).size(), 6u * 64u);
    const Bytes before = open.volume.file.bytes();
    EXPECT_EQ(update_all_tables(open.md), 0) << error_text();
    EXPECT_EQ(open.volume.file.bytes(), before);
}

TEST(Disk45Tables, Hazard_F8_EmptyRunsOfA9825PushNoRunOutOfItsTable)
{
    const QuietVolume open(disk45_image(disk_of_9825()));
    ASSERT_TRUE(open.md != nullptr);
    ASSERT_EQ(runs_of(*open.md).size(), 6u * 64u); // every slot, with those that are zero
    EXPECT_EQ(image_delete_file(open.md, open.md->root->next, 0), 0);
    const LogCapture log(1);
    EXPECT_EQ(update_all_tables(open.md), 0) << error_text();
    EXPECT_FALSE(contains(log.text(), "is lost")) << log.text();
    const QuietVolume again(open.volume.file.bytes());
    ASSERT_TRUE(again.md != nullptr);
    const Runs runs = runs_of(*again.md);
    EXPECT_NE(std::find(runs.begin(), runs.end(), FreeRun(63, 5)), runs.end());
    EXPECT_NE(std::find(runs.begin(), runs.end(), FreeRun(72, 2238)), runs.end());
}

TEST(Tape45Tables, EntriesOfASizeThatNoFormatHasAreNotRead)
{
    HandMedium hand(tape45_image(three_tape_files()));
    ASSERT_EQ(get_media_info(&hand.md), 0);
    for (const uint32_t size : {0u, 33u, 200u, 256u, 257u, 0xFFFFFFFFu}) {
        hand.md.dir_entry_size = size;
        EXPECT_EQ(get_file_table(&hand.md, nullptr, nullptr, 0, 0, 0, 1, 0, 0), 0);
        EXPECT_EQ(hand.md.root, nullptr) << size;
    }
}

TEST(Tape45Tables, AreReadAtOpening)
{
    const OpenVolume open(tape45_image(three_tape_files()), OPEN_READ_VOLUME | OPEN_CHECK);
    ASSERT_TRUE(open.md != nullptr) << error_text();
    EXPECT_EQ(names(open.md), three_names);
    EXPECT_EQ(locations(open.md), (std::vector<uint32_t>{5, 8, 13}));
    EXPECT_EQ(open.md->used_bytes, 16u * 256u);
    EXPECT_EQ(open.md->free_bytes, 218107u - 16u * 256u);
}

TEST(Tape45Tables, Hazard_F5_ADirectoryHolds42Entries)
{
    TapeVolume volume;
    for (const DiskEntry &entry : numbered_files(42)) volume.entries.push_back({.name = entry.name});
    Bytes image = tape45_image(volume);
    // The 21 entries of the second record start at its first byte, not behind a head.
    for (size_t i = 21; i < 42; ++i) {
        const size_t from = 256 + 4 + i * 12;
        const Bytes entry(image.begin() + static_cast<std::ptrdiff_t>(from),
                          image.begin() + static_cast<std::ptrdiff_t>(from + 12));
        EXPECT_EQ(entry[5], "0123456789"[i % 10]);
    }
    // Four bytes over, which begin no entry, not even with the records that follow.
    for (const uint32_t record : {2u, 4u}) std::fill_n(image.begin() + record * 256 + 252, 4, uint8_t{'X'});
    const OpenVolume open(image, OPEN_READ_VOLUME | OPEN_CHECK);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(names(open.md).size(), 42u);
    EXPECT_EQ(names(open.md).back(), "F00041");
    EXPECT_EQ(open.md->state->table_result, 0);
    EXPECT_EQ(update_file_table(open.md, 0), 0);
    EXPECT_EQ(update_file_table(open.md, 1), 0);
    EXPECT_EQ(open.file.bytes(), tape45_image(volume));
}

TEST(Tape45Tables, AnEntryThatStraddlesTwoRecordsIsPutTogether)
{
    // A directory of three records, as no tape has one: the four bytes that the second has over belong to an entry.
    HandMedium hand(tape45_image({}));
    ASSERT_EQ(get_media_info(&hand.md), 0);
    hand.md.dir_size = 3;
    Bytes image = hand.file.bytes();
    size_t at = 256 + 4;
    for (const DiskEntry &entry : numbered_files(65)) {
        const auto bytes = tape45_entry_bytes({.name = entry.name, .start = 100});
        std::copy(bytes.begin(), bytes.end(), image.begin() + static_cast<std::ptrdiff_t>(at));
        at += 12;
    }
    hand.file.replace(image);
    EXPECT_EQ(get_file_table(&hand.md, nullptr, nullptr, 0, 0, 0, 1, 0, 0), 0) << error_text();
    const std::vector<std::string> list = names(&hand.md);
    ASSERT_EQ(list.size(), 63u); // 764 bytes hold so many
    for (size_t i = 0; i < list.size(); ++i) EXPECT_EQ(list[i], numbered_files(65)[i].name);
}

TEST(Tape45Tables, EveryLocationCanBeRead)
{
    for (uint32_t location = 0; location < 1024; location += 93) {
        const OpenVolume open(tape45_image({.entries = {{.name = "ONE", .start = location}}}));
        ASSERT_TRUE(open.md != nullptr);
        EXPECT_EQ(locations(open.md), location == 0 ? std::vector<uint32_t>{} : std::vector<uint32_t>{location});
    }
}

TEST(Tape45Tables, TheSpareDirectoryIsNeverRead)
{
    Bytes image = tape45_image(three_tape_files());
    const Bytes empty = tape45_image({});
    std::copy_n(empty.begin() + 256, 512, image.begin() + 256);
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(get_file_table(open.md, nullptr, nullptr, 0, 1, 0, 0, 0, 0), 0);
    EXPECT_EQ(open.md->root, nullptr);
}
