// The file table, between the directory and the list.
#include "volume/table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/medium.h"
#include "volume/state.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

constexpr size_t directory_offset = 2 * record_bytes;

LifVolume with_a_bad_entry()
{
    LifVolume volume = three_files();
    volume.entries[1].start = 0;
    volume.entries[1].content.clear(); // it would stand over the header
    volume.entries[2].start = 20;
    return volume;
}

int32_t read_again(MediaDescriptor *md, int32_t do_sort, int32_t do_check, int32_t do_repair)
{
    image_free_directory(md, nullptr);
    return get_file_table(md, nullptr, nullptr, 1, 0, do_sort, do_check, do_repair, 0);
}

}

TEST(FileTable, ListsEntriesInTheirOrder)
{
    const OpenVolume open(three_files());
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE"}));
    EXPECT_EQ(locations(open.md), (std::vector<uint32_t>{5, 6, 9}));
    EXPECT_EQ(open.md->used_bytes, 5u * 256u);
    EXPECT_EQ(open.md->free_bytes, open.md->data_size - 5u * 256u);
    EXPECT_EQ(open.md->cursor, open.md->root);
}

TEST(FileTable, LinksTheList)
{
    const OpenVolume open(three_files());
    ASSERT_TRUE(open.md != nullptr && open.md->root != nullptr);
    EXPECT_EQ(open.md->root->prev, nullptr);
    for (const FileInfo *info = open.md->root; info != nullptr; info = info->next) {
        EXPECT_EQ(info->level, 1u);
        EXPECT_EQ(info->parent, nullptr);
        EXPECT_EQ(info->child, nullptr);
        if (info->next != nullptr) {
            EXPECT_EQ(info->next->prev, info);
        }
    }
}

TEST(FileTable, AnEmptyDirectory)
{
    const OpenVolume open(LifVolume{});
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->root, nullptr);
    EXPECT_EQ(open.md->cursor, nullptr);
    EXPECT_EQ(open.md->used_bytes, 0u);
    EXPECT_EQ(open.md->free_bytes, open.md->data_size);
}

TEST(FileTable, FullWithoutEndMarkIsReadToItsLastSlot)
{
    LifVolume volume = lif_volume_with_files(16);
    volume.directory_length = 2;
    volume.end_mark = false;
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(names(open.md).size(), 16u);
    EXPECT_EQ(names(open.md).back(), "F000015");
}

TEST(FileTable, NothingBehindTheEndMarkIsRead)
{
    LifVolume volume = three_files();
    volume.entries[1].type = 0xFFFF;
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(names(open.md), Names{"ONE"});
}

TEST(FileTable, KeepsPurgedFilesInUsedBytes)
{
    LifVolume volume = three_files();
    volume.entries[1].type = 0;
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE"}));
    EXPECT_NE(open.md->root->next->deleted, 0u);
    EXPECT_EQ(open.md->used_bytes, 5u * 256u);
}

TEST(FileTable, Hazard_D18_FreeBytesWrapBelowZero)
{
    LifVolume volume = three_files();
    volume.tracks = 1;
    volume.entries[0].length = 100;
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->used_bytes, 104u * 256u);
    EXPECT_EQ(open.md->free_bytes, open.md->data_size - 104u * 256u);
    EXPECT_GT(open.md->free_bytes, 0x80000000u);
}

TEST(FileTable, SortedByLocation)
{
    LifVolume volume = three_files();
    volume.entries[0].start = 50;
    volume.entries[1].start = 20;
    volume.entries[2].start = 30;
    const OpenVolume open(volume, OPEN_READ_VOLUME | OPEN_SORT);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(names(open.md), (Names{"TWO", "THREE", "ONE"}));
    EXPECT_EQ(open.md->cursor, open.md->root);
}

TEST(FileTable, SortedFilesWithTheSameLocationStayInDirectoryOrder)
{
    LifVolume volume;
    for (const char *name : {"D", "A", "C", "B"}) volume.entries.push_back({.name = name, .start = 20});
    volume.entries[2].start = 10;
    const OpenVolume open(volume, OPEN_READ_VOLUME | OPEN_SORT);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(names(open.md), (Names{"C", "D", "A", "B"}));
}

TEST(FileTable, Hazard_D2_SortedListsCanBeWalkedBackward)
{
    LifVolume volume = lif_volume_with_files(20);
    for (uint32_t i = 0; i < 20; ++i) volume.entries[i].start = 10 + (i * 7) % 20;
    volume.records = 40;
    const OpenVolume open(volume, OPEN_READ_VOLUME | OPEN_SORT);
    ASSERT_TRUE(open.md != nullptr && open.md->root != nullptr);
    EXPECT_EQ(open.md->root->prev, nullptr);
    for (const FileInfo *info = open.md->root; info->next != nullptr; info = info->next) {
        EXPECT_EQ(info->next->prev, info);
        EXPECT_LE(info->location, info->next->location);
    }
}

TEST(FileTable, Hazard_D1_ALargeDirectoryIsSortedInReasonableTime)
{
    constexpr uint32_t count = 60000;
    LifVolume volume = lif_volume_with_files(count);
    for (uint32_t i = 0; i < count; ++i) volume.entries[i].start = 100000 + i / 2;
    volume.records = volume.directory_length + 2;
    const TemporaryFile file(lif_image(volume));
    const auto start = std::chrono::steady_clock::now();
    const Medium medium(file.path(), OPEN_READ_VOLUME | OPEN_SORT);
    const auto taken = std::chrono::steady_clock::now() - start;
    ASSERT_TRUE(medium);
    const std::vector<uint32_t> order = locations(medium.md);
    EXPECT_EQ(order.size(), count);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    EXPECT_LT(taken, std::chrono::seconds(5)); // a walk for each entry would be thousands of millions of steps
}

TEST(FileTable, ABadEntryIsDroppedAndLogged)
{
    const TemporaryFile file(lif_image(with_a_bad_entry()));
    const LogCapture log(1);
    const Medium medium(file.path());
    ASSERT_TRUE(medium);
    EXPECT_EQ(names(medium.md), (Names{"ONE", "THREE"}));
    EXPECT_TRUE(contains(log.text(), "Warning: Corrupt directory data (file \"TWO\" has location zero) at block "))
        << log.text();
    EXPECT_TRUE(contains(log.text(), " entry 1\n")) << log.text();
    EXPECT_EQ(medium->used_bytes, 2u * 256u);
}

TEST(FileTable, WithCheckABadEntryEndsTheReading)
{
    const OpenVolume open(with_a_bad_entry(), OPEN_READ_VOLUME | OPEN_CHECK);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(names(open.md), Names{"ONE"});
    EXPECT_EQ(read_again(open.md, 0, 1, 0), -1);
    EXPECT_EQ(global_error, 213u);
    EXPECT_EQ(names(open.md), Names{"ONE"});
}

TEST(FileTable, WithRepairABadEntryIsDroppedInSilence)
{
    const OpenVolume open(with_a_bad_entry());
    ASSERT_TRUE(open.md != nullptr);
    const LogCapture log(1);
    EXPECT_EQ(read_again(open.md, 0, 0, 1), 0);
    EXPECT_EQ(names(open.md), (Names{"ONE", "THREE"}));
    EXPECT_EQ(read_again(open.md, 0, 1, 1), 0);
    EXPECT_EQ(names(open.md), (Names{"ONE", "THREE"}));
    EXPECT_EQ(log.text(), "");
}

TEST(FileTable, Hazard_D14_DroppedEntriesAreCounted)
{
    const OpenVolume plain(with_a_bad_entry());
    const OpenVolume sound(three_files());
    const OpenVolume checked(with_a_bad_entry(), OPEN_READ_VOLUME | OPEN_CHECK);
    ASSERT_TRUE(plain.md != nullptr && sound.md != nullptr && checked.md != nullptr);
    EXPECT_EQ(plain.md->state->refused_entries, 1u);
    EXPECT_EQ(plain.md->state->table_result, 0);
    EXPECT_EQ(sound.md->state->refused_entries, 0u);
    EXPECT_EQ(sound.md->state->table_result, 0);
    EXPECT_EQ(checked.md->state->table_result, -1);
}

TEST(FileTable, Hazard_A2_ADirectoryBehindTheImageIsCorruptWhenChecking)
{
    LifVolume volume = three_files();
    volume.directory_length = 1000;
    volume.end_mark = false;
    volume.records = 16;
    for (LifEntry &entry : volume.entries) entry.start = 2000;
    Bytes image = lif_image(volume);
    for (size_t slot = directory_offset + 96; slot < image.size(); slot += 32)
        image[slot + 15] = 1; // entries with neither name nor type, at record 1
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(read_again(open.md, 0, 0, 0), 0);
    EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE"}));
    EXPECT_EQ(read_again(open.md, 0, 1, 1), 0);
    EXPECT_EQ(read_again(open.md, 0, 1, 0), -1);
}

TEST(FileTable, Level999IsTheLast)
{
    const OpenVolume open(three_files());
    ASSERT_TRUE(open.md != nullptr);
    image_free_directory(open.md, nullptr);
    forget_error();
    EXPECT_EQ(get_file_table(open.md, nullptr, nullptr, 1000, 0, 0, 0, 0, 0), -1);
    EXPECT_EQ(error_text(), "Max. directory level exceeded (maximum nesting level is 999)");
    EXPECT_EQ(get_file_table(open.md, nullptr, nullptr, 999, 0, 0, 0, 0, 0), 0);
    EXPECT_EQ(names(open.md).size(), 3u);
}

TEST(FileTable, TheSpareDirectoryOfOtherFormatsIsNotRead)
{
    const OpenVolume open(three_files());
    ASSERT_TRUE(open.md != nullptr);
    const FileInfo *root = open.md->root;
    FileFaults counter;
    EXPECT_EQ(get_file_table(open.md, nullptr, nullptr, 1, 1, 0, 0, 0, 0), 0);
    EXPECT_EQ(open.md->root, root);
    EXPECT_EQ(counter.reads, 0u);
}

TEST(FileTable, KeepsPathSearchListingNothing)
{
    const TemporaryFile file(lif_image(three_files()));
    const OutputCapture output;
    const Medium medium(std::string(file.path()) + ":ONE");
    ASSERT_TRUE(medium);
    EXPECT_EQ(medium->root, nullptr);
    EXPECT_EQ(medium->cursor, nullptr);
    EXPECT_TRUE(contains(output.text(), "No match found.")) << output.text();
}

TEST(FileTable, LogsItsCall)
{
    const OpenVolume open(three_files());
    ASSERT_TRUE(open.md != nullptr);
    image_free_directory(open.md, nullptr);
    const LogCapture log(3);
    EXPECT_EQ(get_file_table(open.md, "", nullptr, 1, 0, 1, 0, 1, 0), 0);
    EXPECT_EQ(update_file_table(open.md, 0), 0);
    EXPECT_TRUE(contains(log.text(), "Trace: image_get_file_table(md=")) << log.text();
    EXPECT_TRUE(
        contains(log.text(),
                 ", path=\"\", directory=0, level=1, use_spare=0, do_sort=1, do_check=0, do_repair=1, recursive=0)\n"))
        << log.text();
    EXPECT_TRUE(contains(log.text(), "Trace: image_update_file_table(md=")) << log.text();
}

TEST(FileTable, WorksOnARecordMadeByHand)
{
    HandMedium hand(lif_image(three_files()));
    ASSERT_EQ(get_media_info(&hand.md), 0);
    EXPECT_EQ(get_file_table(&hand.md, nullptr, nullptr, 0, 0, 0, 0, 0, 0), 0);
    EXPECT_EQ(names(&hand.md), (Names{"ONE", "TWO", "THREE"}));
    hand.md.root->name[0] = 'X';
    EXPECT_EQ(update_file_table(&hand.md, 0), 0);
    const Medium again(hand.file.path());
    ASSERT_TRUE(again);
    EXPECT_EQ(names(again.md), (Names{"XNE", "TWO", "THREE"}));
}

TEST(FileTable, ReadingAgainReplacesTheList)
{
    const OpenVolume open(three_files());
    ASSERT_TRUE(open.md != nullptr);
    open.md->root->name[0] = 'X';
    HeapFaults counter;
    EXPECT_EQ(get_file_table(open.md, nullptr, nullptr, 1, 0, 0, 0, 0, 0), 0);
    EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE"}));
    EXPECT_EQ(counter.allocations - counter.releases, 0u);
}

TEST(FileTable, WhatOthersWroteIsSeenWhenReadAgain)
{
    const OpenVolume open(three_files());
    ASSERT_TRUE(open.md != nullptr);
    LifVolume changed = three_files();
    changed.entries[0].name = "NEW";
    open.file.replace(lif_image(changed));
    EXPECT_EQ(get_file_table(open.md, nullptr, nullptr, 1, 0, 0, 0, 0, 0), 0);
    EXPECT_EQ(names(open.md), (Names{"NEW", "TWO", "THREE"}));
}

TEST(FileTable, AReadThatFailsHalfwayIsAFailure)
{
    HandMedium hand(lif_image(three_files()));
    ASSERT_EQ(get_media_info(&hand.md), 0);
    FileFaults faults(FileFault::read, 1);
    forget_error();
    EXPECT_EQ(get_file_table(&hand.md, nullptr, nullptr, 1, 0, 0, 0, 0, 0), -1);
    EXPECT_EQ(global_error, 302u);
}

TEST(FileTable, Hazard_D19_AnAllocationThatFailsLosesNothing)
{
    for (uint32_t n = 1; n <= 3; ++n) {
        HandMedium hand(lif_image(three_files()));
        ASSERT_EQ(get_media_info(&hand.md), 0);
        HeapFaults faults(n);
        forget_error();
        EXPECT_EQ(get_file_table(&hand.md, nullptr, nullptr, 1, 0, 0, 0, 0, 0), -1);
        EXPECT_EQ(global_error, 105u);
        const size_t listed = names(&hand.md).size();
        EXPECT_LT(listed, 3u);
        image_free_directory(&hand.md, nullptr);
        EXPECT_EQ(faults.releases, faults.allocations - 1);
    }
}
