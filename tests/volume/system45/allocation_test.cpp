// Room for new files on disks and tapes.
#include "volume/allocation.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "base/error.h"
#include "base/memory.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/system45_builder.h"
#include "volume/operations.h"

using namespace tests;

TEST(Disk45Allocation, ComesFromTheAvailabilityTable)
{
    DiskVolume volume = three_disk_files();
    volume.runs = Runs{{100, 20}, {300, 5}, {400, 50}};
    const OpenVolume open(disk45_image(volume));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(image_allocate(open.md, 5), 300u);
    EXPECT_EQ(image_allocate(open.md, 19), 100u);
    EXPECT_EQ(image_allocate(open.md, 20), 400u);
    EXPECT_EQ(runs_of(*open.md), (Runs{{119, 1}, {420, 30}}));
    EXPECT_EQ(image_allocate(open.md, 31), 0u);
}

TEST(Disk45Allocation, DeletedFilesGoBackToTheTable)
{
    const OpenVolume open(disk45_image(three_disk_files()));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(image_delete_file(open.md, open.md->root->next, 0), 0);
    EXPECT_EQ(runs_of(*open.md), (Runs{{63, 5}, {76, 524}}));
    EXPECT_EQ(image_delete_file(open.md, open.md->root, 0), 0);
    EXPECT_EQ(runs_of(*open.md), (Runs{{60, 8}, {76, 524}}));
}

TEST(Disk45Allocation, Hazard_D8_RunsOverTheTablesOrFilesAreSkipped)
{
    for (const uint32_t location : {0u, 1u, 22u, 23u, 28u, 31u, 58u, 60u, 75u, 590u}) {
        DiskVolume volume = three_disk_files();
        volume.runs = Runs{{location, 20}, {400, 50}};
        const OpenVolume open(disk45_image(volume));
        ASSERT_TRUE(open.md != nullptr);
        EXPECT_EQ(image_allocate(open.md, 20), 400u) << location;
    }
}

TEST(Disk45Allocation, Hazard_D17_SpaceOfAFileThatIsStillListedIsNotHandedOut)
{
    DiskVolume volume = three_disk_files();
    volume.runs = Runs{{63, 5}, {76, 524}}; // a deletion that was cut off between the tables
    const OpenVolume open(disk45_image(volume));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(image_allocate(open.md, 5), 76u);
}

TEST(Disk45Allocation, OverlappingFilesHideNoneOfEachOther)
{
    DiskVolume volume;
    volume.entries = {{.name = "LAST", .start = 400, .records = 5},
                      {.name = "INSIDE", .start = 110, .records = 5},
                      {.name = "EMPTY", .start = 250, .records = 0},
                      {.name = "LONG", .start = 100, .records = 100}};
    volume.runs = Runs{{150, 10}, {199, 11}, {240, 12}, {300, 13}, {395, 14}};
    const OpenVolume open(disk45_image(volume));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(image_allocate(open.md, 11), 240u); // a file without records takes none
    EXPECT_EQ(image_allocate(open.md, 10), 300u);
    EXPECT_EQ(image_allocate(open.md, 10), 0u);
    EXPECT_EQ(image_allocate(open.md, 5), 395u); // up to the file
}

TEST(Disk45Allocation, AnEmptyFileGetsAPlaceThoughTheTableIsFilledWithZeros)
{
    const OutputCapture output;
    const OpenVolume open(disk45_image(disk_of_9825()));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(image_allocate(open.md, 0), 72u);
    EXPECT_EQ(image_allocate(open.md, 1), 72u);
}

TEST(Disk45Allocation, WithoutMemoryThereIsNoSpace)
{
    const OpenVolume open(disk45_image(three_disk_files()));
    ASSERT_TRUE(open.md != nullptr);
    HeapFaults faults(1);
    forget_error();
    EXPECT_EQ(image_allocate(open.md, 5), 0u);
    EXPECT_EQ(global_error, 105u);
    EXPECT_EQ(runs_of(*open.md), (Runs{{76, 524}}));
}

TEST(Disk45Allocation, Hazard_D1_ManyRunsAndManyFilesCostNoProductOfThem)
{
    constexpr uint32_t count = 60000;
    const auto hand = disc(65535);
    AllocEntry **end = &hand->md.alloc_list;
    for (uint32_t i = 0; i < count; ++i) {
        *end = static_cast<AllocEntry *>(my_malloc(sizeof(AllocEntry)));
        ASSERT_NE(*end, nullptr);
        **end = {first_file_record + i, 1 + i % 2, nullptr};
        end = &(*end)->next;
        add_file(hand->md, first_file_record + i, 1); // every run is taken
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(image_allocate(&hand->md, 1), 0u);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_EQ(runs_of(hand->md).size(), count);
}

TEST(Tape45Allocation, FollowsTheLastFile)
{
    const OpenVolume open(tape45_image(three_tape_files()));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(image_allocate(open.md, 1), 21u);
    EXPECT_EQ(image_allocate(open.md, 831), 21u);
    EXPECT_EQ(image_allocate(open.md, 832), 0u);
    EXPECT_EQ(image_delete_file(open.md, open.md->root->next, 0), 0);
    EXPECT_EQ(image_allocate(open.md, 1), 21u); // gaps stay
    EXPECT_EQ(image_delete_file(open.md, open.md->root->next, 0), 0);
    EXPECT_EQ(image_allocate(open.md, 1), 8u);
    EXPECT_EQ(open.md->alloc_list, nullptr);
}

TEST(Tape45Allocation, BeginsWithRecordFive)
{
    const OpenVolume open(tape45_image({}));
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(image_allocate(open.md, 847), 5u);
    EXPECT_EQ(image_allocate(open.md, 848), 0u);
}

TEST(Tape45Allocation, Hazard_F7_APlaceOfMoreThanTenBitsIsNoSpace)
{
    const struct {
        uint32_t location;
        uint16_t place;
    } rows[] = {{1000, 1010}, {1013, 1023}, {1014, 0}, {1020, 0}};
    for (const auto &[location, place] : rows) {
        const OpenVolume open(tape45_image({.entries = {{.name = "LAST", .start = location, .records = 10}}}));
        ASSERT_TRUE(open.md != nullptr);
        open.md->records = 0; // a tape says where it ends
        EXPECT_EQ(image_allocate(open.md, 1), place) << location;
        open.md->records = 852;
        EXPECT_EQ(image_allocate(open.md, 1), 0u) << location;
    }
}

TEST(Tape45Allocation, Hazard_D7_AnEndThatWrapsIsNoSpace)
{
    const OpenVolume open(
        tape45_image({.entries = {{.name = "HUGE", .start = 10, .records = 0xFFFF, .words = 0xFFFF}}}));
    ASSERT_TRUE(open.md != nullptr);
    open.md->records = 0;
    EXPECT_EQ(image_allocate(open.md, 1), 0u);
}
