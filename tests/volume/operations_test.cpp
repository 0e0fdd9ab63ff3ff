// Operations on the list of an open medium.
#include "volume/operations.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "base/memory.h"
#include "tests/support/medium.h"
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
