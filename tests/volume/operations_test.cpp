// Operations on the list of an open medium.
#include "volume/operations.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "base/memory.h"
#include "tests/support/faults.h"
#include "tests/support/medium.h"
#include "tests/support/stored_volume.h"
#include "tests/support/system45_builder.h"
#include "volume/allocation.h"
#include "volume/operations_inner.h"
#include "volume/table.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

FileInfo *heap_entry(const std::string &name)
{
    auto *info = static_cast<FileInfo *>(my_malloc(sizeof(FileInfo)));
    *info = named(name);
    return info;
}

void link(FileInfo *left, FileInfo *right)
{
    left->next = right;
    right->prev = left;
}

// A directory with two files at the top, beside a file.
struct Tree {
    Tree() : medium(lif_image(LifVolume{})), md(&medium.md)
    {
        md->format = FORMAT_LIF;
        directory = heap_entry("DIR");
        file = heap_entry("FILE");
        first = heap_entry("FIRST");
        second = heap_entry("SECOND");
        directory->is_directory = 1;
        directory->child = first;
        first->parent = second->parent = directory;
        link(directory, file);
        link(first, second);
        md->root = directory;
        md->cursor = directory;
    }

    HandMedium medium;
    MediaDescriptor *md;
    FileInfo *directory;
    FileInfo *file;
    FileInfo *first;
    FileInfo *second;
};

}

TEST(DeleteFile, KeepsRecordsTakenOffUsedBytes)
{
    const OpenVolume open(demo_volume());
    ASSERT_NE(open.md, nullptr);
    FileInfo *results = entry_named(open.md, "RESULTS");
    ASSERT_EQ(results->records, 3u);
    const uint32_t size = results->size;
    const uint32_t used = open.md->used_bytes;
    EXPECT_EQ(image_delete_file(open.md, results, 0), 0);
    EXPECT_EQ(open.md->used_bytes, used - 3);
    EXPECT_EQ(open.md->free_bytes, open.md->data_size - (used - 3));
    EXPECT_EQ(update_file_table(open.md, 0), 0);
    EXPECT_EQ(open.md->used_bytes, used - size);
    EXPECT_EQ(open.md->free_bytes, open.md->data_size - (used - size));
}

TEST(DeleteFile, MarkedEntryStaysInTheListAsPurged)
{
    const OpenVolume open(demo_volume());
    const Names before = names(open.md);
    const uint32_t used = open.md->used_bytes;
    EXPECT_EQ(image_delete_file(open.md, entry_named(open.md, "README"), 1), 0);
    EXPECT_EQ(names(open.md), before);
    EXPECT_EQ(entry_named(open.md, "README")->deleted, 1u);
    EXPECT_EQ(open.md->used_bytes, used - 1);
    EXPECT_EQ(update_file_table(open.md, 0), 0);
    const Medium again(open.file.path());
    EXPECT_EQ(names(again.md), before);
    EXPECT_EQ(entry_named(again.md, "README")->deleted, 1u);
}

TEST(DeleteFile, FirstMiddleAndLastLeaveAListWhole)
{
    const OpenVolume open(lif_volume_with_files(5));
    EXPECT_EQ(image_delete_file(open.md, entry_named(open.md, "F000000"), 0), 0);
    EXPECT_EQ(image_delete_file(open.md, entry_named(open.md, "F000002"), 0), 0);
    EXPECT_EQ(image_delete_file(open.md, entry_named(open.md, "F000004"), 0), 0);
    EXPECT_EQ(names(open.md), (Names{"F000001", "F000003"}));
    EXPECT_EQ(open.md->root->prev, nullptr);
    EXPECT_EQ(open.md->root->next->prev, open.md->root);
    EXPECT_EQ(image_delete_file(open.md, open.md->root, 0), 0);
    EXPECT_EQ(image_delete_file(open.md, open.md->root, 0), 0);
    EXPECT_EQ(open.md->root, nullptr);
    EXPECT_EQ(open.md->cursor, nullptr);
}

TEST(DeleteFile, Hazard_D2_SortedListIsUnlinkedRight)
{
    LifVolume volume = lif_volume_with_files(3);
    volume.directory_length = 2;
    volume.entries[0].start = 12;
    volume.entries[1].start = 11;
    volume.entries[2].start = 10;
    const OpenVolume open(volume, OPEN_READ_VOLUME | OPEN_SORT);
    EXPECT_EQ(names(open.md), (Names{"F000002", "F000001", "F000000"}));
    EXPECT_EQ(image_delete_file(open.md, entry_named(open.md, "F000001"), 0), 0);
    EXPECT_EQ(names(open.md), (Names{"F000002", "F000000"}));
}

TEST(DeleteFile, Hazard_J6_CursorMovesOffADeletedEntry)
{
    const OpenVolume open(lif_volume_with_files(3));
    FileInfo *middle = entry_named(open.md, "F000001");
    open.md->cursor = middle;
    EXPECT_EQ(image_delete_file(open.md, middle, 0), 0);
    EXPECT_EQ(open.md->cursor, entry_named(open.md, "F000002"));
    EXPECT_EQ(image_delete_file(open.md, open.md->cursor, 0), 0);
    EXPECT_EQ(open.md->cursor, nullptr);
}

TEST(DeleteFile, Hazard_J11_FirstOfADirectoryLeavesTheRootAlone)
{
    const Tree tree;
    EXPECT_EQ(image_delete_file(tree.md, tree.first, 0), 0);
    EXPECT_EQ(tree.md->root, tree.directory);
    EXPECT_EQ(tree.directory->child, tree.second);
    EXPECT_EQ(tree.second->prev, nullptr);
}

TEST(DeleteFile, Hazard_J12_LastOfADirectoryLeavesItEmpty)
{
    const Tree tree;
    EXPECT_EQ(image_delete_file(tree.md, tree.first, 0), 0);
    EXPECT_EQ(image_delete_file(tree.md, tree.second, 0), 0);
    EXPECT_EQ(tree.directory->child, nullptr);
    EXPECT_EQ(names(tree.md), (Names{"DIR", "FILE"}));
}

TEST(DeleteFile, LastOfADirectoryReleasesWhatIsInIt)
{
    const HeapFaults watch;
    {
        const Tree tree;
        const uint32_t before = watch.releases;
        EXPECT_EQ(image_delete_file(tree.md, tree.directory, 0), 0);
        EXPECT_EQ(watch.releases - before, 3u);
        EXPECT_EQ(names(tree.md), (Names{"FILE"}));
    }
    EXPECT_EQ(watch.releases, watch.allocations);
}

TEST(DeleteFile, MarkedDirectoryKeepsItsEntries)
{
    const Tree tree;
    EXPECT_EQ(image_delete_file(tree.md, tree.directory, 1), 0);
    EXPECT_EQ(tree.directory->child, tree.first);
}

// ---- free records of disks -----------------------------------------------------------------------------------

TEST(DeleteFile, RecordsOfADiskFileBecomeFree)
{
    const OpenVolume open(disk45_image(three_disk_files()));
    EXPECT_EQ(runs_of(*open.md), (Runs{{76, 524}}));
    EXPECT_EQ(image_delete_file(open.md, entry_named(open.md, "BETA"), 0), 0);
    EXPECT_EQ(runs_of(*open.md), (Runs{{63, 5}, {76, 524}}));
    // Four logical records of 512 bytes are eight records of the disk.
    EXPECT_EQ(image_delete_file(open.md, entry_named(open.md, "GAMMA"), 0), 0);
    EXPECT_EQ(runs_of(*open.md), (Runs{{63, 537}}));
}

TEST(DeleteFile, PartOfARecordIsFreedWithIt)
{
    DiskVolume volume;
    volume.entries = {{.name = "PART", .type = 0xD000, .records = 3, .words = 100}}; // 600 bytes
    const OpenVolume open(disk45_image(volume));
    EXPECT_EQ(image_delete_file(open.md, open.md->root, 0), 0);
    EXPECT_EQ(runs_of(*open.md), (Runs{{60, 540}}));
}

// A purged file has given its records back; another one may have them since.
TEST(DeleteFile, Hazard_D9_PurgedFileGivesNothingBackAgain)
{
    const OpenVolume open(disk45_image(three_disk_files()));
    FileInfo *beta = entry_named(open.md, "BETA");
    EXPECT_EQ(image_delete_file(open.md, beta, 1), 0);
    EXPECT_EQ(runs_of(*open.md), (Runs{{63, 5}, {76, 524}}));
    EXPECT_EQ(image_allocate(open.md, 4), 63u);
    EXPECT_EQ(image_delete_file(open.md, beta, 1), 0);
    EXPECT_EQ(image_delete_file(open.md, beta, 0), 0);
    EXPECT_EQ(runs_of(*open.md), (Runs{{67, 1}, {76, 524}}));
}

TEST(DeleteFile, Hazard_D18_CountersWrapAndTheNextTableCountsAnew)
{
    const OpenVolume open(disk45_image(three_disk_files()));
    open.md->used_bytes = 1;
    EXPECT_EQ(image_delete_file(open.md, entry_named(open.md, "ALPHA"), 0), 0);
    EXPECT_EQ(open.md->used_bytes, 0xFFFFFFFEu);
    EXPECT_EQ(open.md->free_bytes, open.md->data_size + 2);
    EXPECT_EQ(update_tables(open.md), 0);
    EXPECT_EQ(open.md->used_bytes, 13u * 256);
}

// ---- tables --------------------------------------------------------------------------------------------------

TEST(UpdateTables, Hazard_D17_MainTablesFirstAndInAscendingOrder)
{
    const OpenVolume open(disk45_image(three_disk_files()));
    std::vector<uint64_t> records;
    {
        const FileFaults watch;
        EXPECT_EQ(update_tables(open.md), 0);
        for (const FileAccess &access : watch.accesses) {
            if (access.writing) records.push_back(access.position / record_bytes);
        }
    }
    std::vector<uint64_t> wanted;
    for (const uint64_t start : {1U, 31U}) { // directory and its spare
        for (uint64_t record = 0; record < 22; ++record) wanted.push_back(start + record);
    }
    for (const uint64_t start : {23U, 53U}) { // availability table and its spare
        for (uint64_t record = 0; record < 6; ++record) wanted.push_back(start + record);
    }
    EXPECT_EQ(records, wanted);
}

TEST(UpdateTables, FirstFailureEndsThem)
{
    const OpenVolume open(disk45_image(three_disk_files()));
    const Bytes before = open.file.bytes();
    const FileFaults faults(FileFault::write, 23);
    EXPECT_EQ(update_tables(open.md), -1);
    EXPECT_EQ(faults.writes, 23u);
    EXPECT_EQ(open.file.bytes(), before); // the same tables again
}
