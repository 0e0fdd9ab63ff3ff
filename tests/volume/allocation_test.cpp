// Room for a new file: from the free list of a System 45 disc, behind the last file elsewhere.
#include "volume/allocation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/free_disc.h"

using namespace tests;

TEST(DiscAllocation, TakesTheSmallestRunThatIsLargeEnough)
{
    const auto hand = disc_with({{100, 50}, {200, 20}, {300, 30}, {400, 10}});
    EXPECT_EQ(image_allocate(&hand->md, 15), 200u);
    EXPECT_EQ(runs_of(hand->md), (Runs{{100, 50}, {215, 5}, {300, 30}, {400, 10}}));
}

TEST(DiscAllocation, TakesTheFirstOfEqualRuns)
{
    const auto hand = disc_with({{100, 50}, {200, 20}, {300, 20}});
    EXPECT_EQ(image_allocate(&hand->md, 10), 200u);
}

TEST(DiscAllocation, Hazard_D3_AnExactFitLeavesTheList)
{
    const auto hand = disc_with({{100, 20}, {200, 50}, {300, 60}});
    EXPECT_EQ(image_allocate(&hand->md, 20), 100u);
    EXPECT_EQ(runs_of(hand->md), (Runs{{200, 50}, {300, 60}}));
    EXPECT_EQ(image_allocate(&hand->md, 50), 200u);
    EXPECT_EQ(image_allocate(&hand->md, 60), 300u);
    EXPECT_EQ(hand->md.alloc_list, nullptr);
    EXPECT_EQ(image_allocate(&hand->md, 1), 0u);
}

TEST(DiscAllocation, RunsThatAreTooSmallAreNoSpace)
{
    const auto hand = disc_with({{100, 20}, {200, 50}});
    EXPECT_EQ(image_allocate(&hand->md, 51), 0u);
    EXPECT_EQ(runs_of(hand->md), (Runs{{100, 20}, {200, 50}}));
}

TEST(DiscAllocation, Hazard_D4_OnlyHugeRunsAreNoSpace)
{
    const auto hand = disc_with({{70000, 70000}}, 140000);
    EXPECT_EQ(image_allocate(&hand->md, 65535), 0u);
    EXPECT_EQ(runs_of(hand->md), (Runs{{70000, 70000}}));
}

TEST(DiscAllocation, KeepsRunsOf65535RecordsUnused)
{
    for (const uint32_t run : {65535u, 65536u, 70000u}) {
        const auto hand = disc_with({{100, run}}, 80000);
        for (const uint32_t size : {1u, 1000u, 65535u})
            EXPECT_EQ(image_allocate(&hand->md, size), 0u) << run << ' ' << size;
        EXPECT_EQ(runs_of(hand->md), (Runs{{100, run}}));
    }
}

TEST(DiscAllocation, RunsBelow65535AreTaken)
{
    const auto hand = disc_with({{100, 65534}}, 80000);
    EXPECT_EQ(image_allocate(&hand->md, 65534), 100u);
    EXPECT_EQ(hand->md.alloc_list, nullptr);
}

TEST(DiscAllocation, Hazard_D5_ASizeAbove65535IsNoSpace)
{
    const auto hand = disc_with({{100, 1000}, {2000, 65534}}, 80000);
    for (const uint32_t size : {65536u, 65537u, 0x10001u, 0xFFFFFFFFu})
        EXPECT_EQ(image_allocate(&hand->md, size), 0u) << size;
    EXPECT_EQ(runs_of(hand->md), (Runs{{100, 1000}, {2000, 65534}}));
}

TEST(DiscAllocation, Hazard_D6_PositionAbove65535IsNoSpace)
{
    const auto hand = disc_with({{70000, 100}}, 80000);
    EXPECT_EQ(image_allocate(&hand->md, 10), 0u);
    EXPECT_EQ(runs_of(hand->md), (Runs{{70000, 100}}));
    add_run(hand->md, 70200, 200);
    EXPECT_EQ(image_allocate(&hand->md, 10), 0u);
    const auto last = disc_with({{65535, 100}, {70000, 50}}, 80000);
    EXPECT_EQ(image_allocate(&last->md, 60), 65535u);
}

TEST(DiscAllocation, Hazard_D8_RunsOverHeaderAndTablesAreSkipped)
{
    for (const uint32_t location : {0u, 1u, 4u, 5u, 6u, 7u, 12u}) {
        const auto hand = disc_with({{location, 20}, {1000, 50}});
        EXPECT_EQ(image_allocate(&hand->md, 20), 1000u) << location;
        EXPECT_EQ(runs_of(hand->md), (Runs{{location, 20}, {1020, 30}})) << location;
    }
}

TEST(DiscAllocation, Hazard_D8_RunsOverLiveFilesAreSkipped)
{
    const auto hand = disc_with({{95, 20}, {200, 50}});
    add_file(hand->md, 100, 10);
    EXPECT_EQ(image_allocate(&hand->md, 10), 200u);
    EXPECT_EQ(image_allocate(&hand->md, 5), 95u); // the head of the run is free
}

TEST(DiscAllocation, Hazard_D8_PurgedFilesAreNoObstacle)
{
    const auto hand = disc_with({{95, 20}, {200, 50}});
    add_file(hand->md, 100, 10, 1);
    EXPECT_EQ(image_allocate(&hand->md, 10), 95u);
}

TEST(DiscAllocation, Hazard_D8_RunsBehindTheMediumAreSkipped)
{
    const auto hand = disc_with({{1000, 50}, {1995, 20}, {5000, 20}, {0xFFFFFFF0, 0x20}});
    EXPECT_EQ(image_allocate(&hand->md, 20), 1000u);
    EXPECT_EQ(image_allocate(&hand->md, 5), 1995u); // what fits is taken
}

TEST(DiscAllocation, Hazard_D8_WithoutASoundRunThereIsNoSpace)
{
    const Runs runs = {{0, 20}, {100, 20}, {5000, 20}};
    const auto hand = disc_with(runs);
    add_file(hand->md, 100, 1);
    EXPECT_EQ(image_allocate(&hand->md, 10), 0u);
    EXPECT_EQ(runs_of(hand->md), runs);
}

TEST(FreeingRecords, JoinsTheRunBefore)
{
    const auto hand = disc_with({{100, 20}, {300, 10}});
    image_free_allocation(&hand->md, 120, 5);
    EXPECT_EQ(runs_of(hand->md), (Runs{{100, 25}, {300, 10}}));
}

TEST(FreeingRecords, JoinsTheRunBehind)
{
    const auto hand = disc_with({{100, 20}, {300, 10}});
    image_free_allocation(&hand->md, 290, 10);
    EXPECT_EQ(runs_of(hand->md), (Runs{{100, 20}, {290, 20}}));
    image_free_allocation(&hand->md, 90, 10);
    EXPECT_EQ(runs_of(hand->md), (Runs{{90, 30}, {290, 20}}));
}

TEST(FreeingRecords, BetweenTwoRunsThatTouchLeavesOne)
{
    const auto hand = disc_with({{50, 1}, {100, 20}, {130, 10}, {500, 1}});
    image_free_allocation(&hand->md, 120, 10);
    EXPECT_EQ(runs_of(hand->md), (Runs{{50, 1}, {100, 40}, {500, 1}}));
}

TEST(FreeingRecords, MakesANewRunInOrder)
{
    const auto hand = disc_with({{100, 20}, {300, 10}});
    image_free_allocation(&hand->md, 200, 5);
    image_free_allocation(&hand->md, 50, 5);
    image_free_allocation(&hand->md, 400, 5);
    EXPECT_EQ(runs_of(hand->md), (Runs{{50, 5}, {100, 20}, {200, 5}, {300, 10}, {400, 5}}));
}

TEST(FreeingRecords, IntoAnEmptyList)
{
    const auto hand = disc();
    image_free_allocation(&hand->md, 200, 5);
    EXPECT_EQ(runs_of(hand->md), (Runs{{200, 5}}));
}

TEST(FreeingRecords, AnEmptyFileLeavesNoRun)
{
    const auto hand = disc_with({{100, 20}, {300, 10}});
    image_free_allocation(&hand->md, 300, 0);
    image_free_allocation(&hand->md, 200, 0);
    EXPECT_EQ(runs_of(hand->md), (Runs{{100, 20}, {300, 10}}));
}

TEST(FreeingRecords, OtherFormatsHaveNothingToFree)
{
    const auto hand = disc();
    for (const uint32_t format : {0u, 2u, 3u, 4u, 5u}) {
        hand->md.format = format;
        image_free_allocation(&hand->md, 200, 5);
        EXPECT_EQ(hand->md.alloc_list, nullptr);
    }
}

TEST(FreeingRecords, Hazard_D9_ARangeThatWrapsDoesNotJoinTheFirstRun)
{
    const auto hand = disc_with({{0x10, 20}, {300, 10}});
    image_free_allocation(&hand->md, 0xFFFFFFF0, 0x20);
    const Runs runs = runs_of(hand->md);
    EXPECT_NE(std::find(runs.begin(), runs.end(), FreeRun(0x10, 20)), runs.end());
    EXPECT_NE(std::find(runs.begin(), runs.end(), FreeRun(300, 10)), runs.end());
    EXPECT_TRUE(std::is_sorted(runs.begin(), runs.end()));
}

TEST(FreeingRecords, WithoutMemoryTheRangeIsLost)
{
    const auto hand = disc_with({{100, 20}});
    HeapFaults faults(1);
    forget_error();
    image_free_allocation(&hand->md, 200, 5);
    EXPECT_EQ(global_error, 105u);
    EXPECT_EQ(runs_of(hand->md), (Runs{{100, 20}}));
}

TEST(LifAllocation, FollowsTheLastFile)
{
    LifVolume volume;
    volume.entries = {{.name = "A", .start = 50, .length = 10}, {.name = "B", .start = 20, .length = 5}};
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(image_allocate(open.md, 100), 60u);
    EXPECT_EQ(image_allocate(open.md, 1), 60u); // nothing is taken until a file stands there
}

TEST(LifAllocation, BeginsWithTheFileArea)
{
    const OpenVolume open(LifVolume{});
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(image_allocate(open.md, 156), 4u);
    EXPECT_EQ(image_allocate(open.md, 157), 0u);
}

TEST(LifAllocation, PurgedFilesKeepTheirSpace)
{
    LifVolume volume;
    volume.entries = {{.name = "A", .start = 20, .length = 5}, {.name = "B", .type = 0, .start = 50, .length = 10}};
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(image_allocate(open.md, 1), 60u);
}

TEST(LifAllocation, WithoutARecordCountThereIsNoEnd)
{
    const OpenVolume open(LifVolume{});
    ASSERT_TRUE(open.md != nullptr);
    open.md->records = 0;
    EXPECT_EQ(image_allocate(open.md, 65535), 4u);
}

TEST(LifAllocation, ABdatFileEndsBehindItsLastRecordThoughItsHeaderIsNotCounted)
{
    LifVolume volume;
    volume.entries = {
        {.name = "A", .type = 0xE961, .start = 50, .length = 11, .implementation = {0x80, 1, 0, 0, 0, 0x80}}};
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->root->records, 10u);
    EXPECT_EQ(image_allocate(open.md, 1), 61u);
}

TEST(LifAllocation, PartialRecordsAreRoundedUp)
{
    LifVolume volume;
    volume.entries = {
        {.name = "A", .type = 0xE848, .start = 50, .length = 3, .implementation = {0x80, 1, 0, 0, 0x00, 0x60}}};
    const OpenVolume open(volume); // four records of 192 bytes
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->root->records, 4u);
    EXPECT_EQ(image_allocate(open.md, 1), 53u);
    open.md->root->records = 3; // 576 bytes
    EXPECT_EQ(image_allocate(open.md, 1), 53u);
}

TEST(LifAllocation, Hazard_D5_ASizeAbove65535IsNoSpace)
{
    const OpenVolume open(LifVolume{});
    ASSERT_TRUE(open.md != nullptr);
    open.md->records = 0;
    EXPECT_EQ(image_allocate(open.md, 65536), 0u);
    EXPECT_EQ(image_allocate(open.md, 0xFFFFFFFF), 0u);
}

TEST(LifAllocation, Hazard_D6_PositionAbove65535IsNoSpace)
{
    LifVolume volume;
    volume.entries = {{.name = "A", .start = 69990, .length = 10}};
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    open.md->records = 0;
    EXPECT_EQ(image_allocate(open.md, 1), 0u);
    open.md->root->location = 65525;
    EXPECT_EQ(image_allocate(open.md, 1), 65535u);
    open.md->root->location = 65526;
    EXPECT_EQ(image_allocate(open.md, 1), 0u);
}

TEST(LifAllocation, Hazard_D7_AnEndThatWrapsIsNoSpace)
{
    const struct {
        uint32_t location, records, record_len;
    } files[] = {{0xFFFFFFF0, 0x20, 128}, {10, 0x80000000, 2}, {10, 0xFFFFFFFF, 128}, {10, 0x10000, 0x10000}};
    for (const auto &[location, records, record_len] : files) {
        LifVolume volume;
        volume.entries = {{.name = "A", .start = 50, .length = 10}};
        const OpenVolume open(volume);
        ASSERT_TRUE(open.md != nullptr);
        open.md->records = 0;
        open.md->root->location = location;
        open.md->root->records = records;
        open.md->root->record_len = record_len;
        EXPECT_EQ(image_allocate(open.md, 1), 0u) << location << ' ' << records;
    }
}

namespace
{

// The spare tables at 100 to 105, in the middle of all that is free.
std::unique_ptr<HandMedium> disc_with_spares_among_files()
{
    auto hand = disc_with({{30, 1970}});
    hand->md.spare_dir_start = 100;
    hand->md.spare_alloc_start = 104;
    return hand;
}

}

TEST(AllocateAroundSpares, FilesStandBehindThemWhereThereIsNoRoomAhead)
{
    const auto hand = disc_with_spares_among_files();
    EXPECT_EQ(image_allocate(&hand->md, 60), 30);
    EXPECT_EQ(image_allocate(&hand->md, 60), 106);
    EXPECT_EQ(runs_of(hand->md), (Runs{{90, 16}, {166, 1834}}));
    EXPECT_EQ(image_allocate(&hand->md, 10), 90);
    EXPECT_EQ(image_allocate(&hand->md, 1834), 166);
    EXPECT_EQ(runs_of(hand->md), (Runs{{100, 6}}));
    EXPECT_EQ(image_allocate(&hand->md, 1), 0) << "only the spare tables are left";
}

TEST(AllocateAroundSpares, FilesUpToThemAndRightBehindThem)
{
    const auto hand = disc_with_spares_among_files();
    EXPECT_EQ(image_allocate(&hand->md, 70), 30);
    EXPECT_EQ(runs_of(hand->md), (Runs{{100, 1900}}));
    EXPECT_EQ(image_allocate(&hand->md, 1895), 0);
    EXPECT_EQ(image_allocate(&hand->md, 1894), 106);
    EXPECT_EQ(runs_of(hand->md), (Runs{{100, 6}}));
}

TEST(AllocateAroundSpares, AFileBehindThemGoesBackIntoTheRun)
{
    const auto hand = disc_with_spares_among_files();
    ASSERT_EQ(image_allocate(&hand->md, 100), 106);
    image_free_allocation(&hand->md, 106, 100);
    EXPECT_EQ(runs_of(hand->md), (Runs{{30, 1970}}));
}

TEST(AllocateAroundSpares, WithoutMemoryThereIsNoRoom)
{
    const auto hand = disc_with_spares_among_files();
    const HeapFaults faults(1);
    EXPECT_EQ(image_allocate(&hand->md, 100), 0);
    EXPECT_EQ(runs_of(hand->md), (Runs{{30, 1970}}));
}
