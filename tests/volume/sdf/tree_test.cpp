// Directories of SDF volumes into lists, and paths through them.
#include <gtest/gtest.h>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/sdf_builder.h"
#include "tests/volume/sdf/literal.h"
#include "volume/navigate.h"
#include "volume/state.h"
#include "volume/table.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

constexpr uint16_t whole_tree = OPEN_READ_VOLUME | OPEN_RECURSIVE;
constexpr size_t size_field = 76; // of an inode
constexpr size_t record_length_field = 112;

Names list_of(const FileInfo *info)
{
    Names list;
    for (; info != nullptr; info = info->next) list.emplace_back(info->name);
    return list;
}

// Every path of the tree, in the order of the walk; what hangs together wrongly is a failure.
void add_paths(const FileInfo *list, const FileInfo *parent, const std::string &path, uint32_t level, Names *ret_paths)
{
    const FileInfo *before = nullptr;
    for (const FileInfo *info = list; info != nullptr; before = info, info = info->next) {
        EXPECT_EQ(info->prev, before);
        EXPECT_EQ(info->parent, parent);
        EXPECT_EQ(info->level, level);
        ret_paths->push_back(path + info->name);
        add_paths(info->child, info, path + info->name + "/", level + 1, ret_paths);
    }
}

Names paths_of(const MediaDescriptor *md)
{
    Names paths;
    add_paths(md->root, nullptr, "", 1, &paths);
    return paths;
}

int32_t read_table(MediaDescriptor *md, const char *path, FileInfo *directory = nullptr, int32_t level = 0)
{
    forget_error();
    return get_file_table(md, path, directory, level, 0, 0, 0, 0, 1);
}

// What a search for a path prints; it must leave the list empty.
std::string search(MediaDescriptor *md, const char *path)
{
    const OutputCapture output;
    EXPECT_EQ(read_table(md, path), 0);
    EXPECT_EQ(md->root, nullptr);
    return output.text();
}

Names reached(MediaDescriptor *md, const std::string &path)
{
    FileInfo *list = nullptr;
    forget_error();
    if (image_change_directory(md, nullptr, path.c_str(), "/", &list) < 0) return {"-1", error_text()};
    return list_of(list);
}

Bytes with_field(Bytes image, size_t position, uint32_t value)
{
    set_dword_at(image, position, value);
    return image;
}

}

TEST(SdfTree, OnlyTheTopLevelWithoutTheFlag)
{
    const OpenVolume open(sdf_image(five_levels()).bytes);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(paths_of(open.md), (Names{"FIRST", "LEVEL1"}));
}

TEST(SdfTree, FiveLevels)
{
    const OpenVolume open(sdf_image(five_levels()).bytes, whole_tree);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(paths_of(open.md),
              (Names{"FIRST", "LEVEL1", "LEVEL1/DATA", "LEVEL1/LEVEL2", "LEVEL1/LEVEL2/DATA", "LEVEL1/LEVEL2/LEVEL3",
                     "LEVEL1/LEVEL2/LEVEL3/DATA", "LEVEL1/LEVEL2/LEVEL3/LEVEL4", "LEVEL1/LEVEL2/LEVEL3/LEVEL4/DATA",
                     "LEVEL1/LEVEL2/LEVEL3/LEVEL4/LEVEL5", "LEVEL1/LEVEL2/LEVEL3/LEVEL4/LEVEL5/DEEP"}));
    EXPECT_EQ(open.md->cursor, open.md->root);
    EXPECT_EQ(open.md->state->refused_entries, 0u);
}

TEST(SdfTree, BlocksOfSeveralRecords)
{
    SdfVolume volume = five_levels();
    volume.block_size = 1024;
    volume.boot_blocks = 3;
    const OpenVolume open(sdf_image(volume).bytes, whole_tree);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(paths_of(open.md).size(), 11u);
    EXPECT_EQ(open.md->boot_size, 3u);
}

TEST(SdfTree, EntriesAcrossRecordsAndExtents)
{
    SdfVolume volume = sdf_volume_with_files(100); // 2400 bytes: every second record begins within an entry
    SdfNode directory = sdf_directory("DIR", volume.files);
    directory.pieces = {1, 3, 2};
    volume.files = {directory};
    const OpenVolume open(sdf_image(volume).bytes, whole_tree);
    ASSERT_TRUE(open.md != nullptr && open.md->root != nullptr);
    Names wanted;
    for (uint32_t i = 0; i < 100; ++i) wanted.push_back("F0000" + std::to_string(100 + i).substr(1));
    EXPECT_EQ(list_of(open.md->root->child), wanted);
}

TEST(SdfTree, SizeOfTheDirectoryEndsIt)
{
    const SdfImage image = sdf_image(sdf_volume_with_files(30));
    const size_t size = image.inode_at(1) + size_field;
    for (const uint32_t entries : {0U, 1U, 10U, 11U, 29U}) {
        for (const uint32_t rest : {0U, 23U}) {
            const OpenVolume open(with_field(image.bytes, size, entries * 24 + rest), whole_tree);
            ASSERT_TRUE(open.md != nullptr);
            EXPECT_EQ(list_of(open.md->root).size(), entries);
            EXPECT_EQ(open.md->state->table_result, 0);
        }
    }
}

TEST(SdfTree, RecordLengthTellsTheNumberOfEntriesAndNotTheirPlaces)
{
    const SdfImage image = sdf_image(sdf_volume_with_files(30));
    const OpenVolume open(with_field(image.bytes, image.inode_at(1) + record_length_field, 48), whole_tree);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(list_of(open.md->root).size(), 15u);
    EXPECT_STREQ(open.md->root->next->name, "F000001");
}

TEST(SdfTree, EmptyDirectory)
{
    const OpenVolume open(literal_sdf(), whole_tree);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(paths_of(open.md), (Names{"ALPHA", "DIR"}));
    EXPECT_EQ(reached(open.md, "DIR"), Names{});
    EXPECT_EQ(open.md->state->table_result, 0);
}

TEST(SdfTree, RecordLengthOfZeroIsAnError)
{
    const LogCapture log(0);
    const OpenVolume open(with_field(literal_sdf(), literal_table + 128 + record_length_field, 0), whole_tree);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(open.md->root, nullptr);
    EXPECT_EQ(open.md->state->table_result, -1);
    EXPECT_TRUE(contains(log.text(), "Error in directory inode\n")) << log.text();
}

TEST(SdfTree, RecordLengthOfZeroDeeperEndsTheReading)
{
    Bytes image = with_field(literal_sdf(), literal_tail + 128 + record_length_field, 0);
    std::swap_ranges(image.begin() + literal_root, image.begin() + literal_root + 24,
                     image.begin() + literal_root + 24); // DIR, ALPHA
    const OpenVolume open(image, whole_tree);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(paths_of(open.md), Names{"DIR"});
    EXPECT_EQ(open.md->state->table_result, -1);
}

TEST(SdfTree, FreeSpaceIsThatOfTheHeader)
{
    const OpenVolume open(literal_sdf(), whole_tree);
    ASSERT_TRUE(open.md != nullptr);
    ASSERT_EQ(read_table(open.md, nullptr), 0);
    EXPECT_EQ(open.md->free_bytes, 256u);
    EXPECT_EQ(open.md->used_bytes, 11 * 256u);
}

TEST(SdfTree, CorruptEntryIsLeftOut)
{
    SdfVolume volume = five_levels();
    volume.files[0].inode = 0xFFFF;
    const SdfImage image = sdf_image(volume);
    const LogCapture log(1);
    const OpenVolume open(image.bytes, whole_tree);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(names(open.md), Names{"LEVEL1"});
    EXPECT_EQ(open.md->state->refused_entries, 1u);
    const std::string block = std::to_string(image.extents.at(1)[0].start);
    EXPECT_TRUE(contains(log.text(), "Corrupt directory data (illegal inode number) at block " + block + " entry 0\n"))
        << log.text();
}

TEST(SdfTree, CheckEndsAtACorruptEntryAndRepairPassesIt)
{
    SdfVolume volume = five_levels();
    std::swap(volume.files[0], volume.files[1]);
    volume.files[0].children[0].inode = 0xFFFF; // LEVEL1/DATA
    const Bytes image = sdf_image(volume).bytes;
    const OpenVolume checked(image, whole_tree | OPEN_CHECK);
    ASSERT_TRUE(checked.md != nullptr);
    EXPECT_EQ(checked.md->state->table_result, -1);
    EXPECT_EQ(paths_of(checked.md), Names{"LEVEL1"});
    const LogCapture log(1);
    const OpenVolume repaired(image, whole_tree | OPEN_CHECK | OPEN_REPAIR);
    ASSERT_TRUE(repaired.md != nullptr);
    EXPECT_EQ(paths_of(repaired.md).size(), 10u);
    EXPECT_FALSE(contains(log.text(), "Corrupt")) << log.text();
}

TEST(SdfTree, FreeSlotsAreNoLoss)
{
    SdfVolume volume = five_levels();
    volume.files.insert(volume.files.begin(), sdf_file(std::string(16, '\0'), {}));
    const OpenVolume open(sdf_image(volume).bytes, whole_tree);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(paths_of(open.md).size(), 11u);
    EXPECT_EQ(open.md->state->refused_entries, 0u);
}

TEST(SdfTree, EachListIsSorted)
{
    SdfVolume volume = five_levels();
    const SdfImage image = sdf_image(volume);
    const OpenVolume open(with_field(image.bytes, image.inode_at("LEVEL1/DATA") + 40, 5000), whole_tree | OPEN_SORT);
    ASSERT_TRUE(open.md != nullptr);
    const FileInfo *level1 = entry_named(open.md, "LEVEL1");
    ASSERT_TRUE(level1 != nullptr);
    EXPECT_EQ(list_of(level1->child), (Names{"LEVEL2", "DATA"}));
}

TEST(SdfTree, OneDirectoryAgain)
{
    const OpenVolume open(sdf_image(five_levels()).bytes);
    ASSERT_TRUE(open.md != nullptr);
    FileInfo *level1 = entry_named(open.md, "LEVEL1");
    ASSERT_TRUE(level1 != nullptr);
    EXPECT_EQ(level1->child, nullptr);
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(read_table(open.md, nullptr, level1, 2), 0);
        EXPECT_EQ(paths_of(open.md).size(), 11u); // levels and parents with it
    }
}

TEST(SdfTree, DirectoryWithoutAnInodeIsAnErrorAndLosesItsList)
{
    const OpenVolume open(sdf_image(five_levels()).bytes, whole_tree);
    ASSERT_TRUE(open.md != nullptr);
    FileInfo *level1 = entry_named(open.md, "LEVEL1");
    level1->inode = open.md->inode_count + 1;
    EXPECT_EQ(read_table(open.md, nullptr, level1, 2), -1);
    EXPECT_EQ(error_text(), "Bad directory entry (illegal inode number)");
    EXPECT_EQ(level1->child, nullptr);
}

TEST(SdfTree, LogTellsOfEachDirectory)
{
    const LogCapture log(3);
    const OpenVolume open(literal_sdf(), whole_tree);
    EXPECT_TRUE(contains(log.text(), "directory=0, level=0, use_spare=0, do_sort=0, do_check=0, do_repair=0, "
                                     "recursive=1)\n"))
        << log.text();
    EXPECT_TRUE(contains(log.text(), "level=2, use_spare=0, do_sort=0, do_check=0, do_repair=0, recursive=1)\n"))
        << log.text();
}

// ---- a path as an argument -------------------------------------------------------------------------------

TEST(SdfSearch, PathListsNothing)
{
    const OpenVolume open(sdf_image(five_levels()).bytes, whole_tree);
    ASSERT_TRUE(open.md != nullptr);
    for (const char *path : {"LEVEL1", "/LEVEL1", "//LEVEL1", "LEVEL1/", "LEVEL1/NOTHING"}) {
        EXPECT_EQ(search(open.md, path), "") << path;
        EXPECT_TRUE(open.md->state->only_searched);
    }
    for (const char *path : {"level1", "LEVEL", "LEVEL11", "FIRST", "LEVEL2", "."}) {
        EXPECT_EQ(search(open.md, path), "No match found.\n") << path;
    }
}

TEST(SdfSearch, PathOfSeparatorsIsNone)
{
    const OpenVolume open(sdf_image(five_levels()).bytes, whole_tree);
    ASSERT_TRUE(open.md != nullptr);
    for (const char *path : {"", "/", "///"}) {
        const OutputCapture output;
        ASSERT_EQ(read_table(open.md, path), 0);
        EXPECT_EQ(paths_of(open.md).size(), 11u) << path;
        EXPECT_EQ(output.text(), "");
        EXPECT_FALSE(open.md->state->only_searched);
    }
}

TEST(SdfSearch, ComponentIsCutAtSixteenCharacters)
{
    SdfVolume volume;
    volume.files = {sdf_directory("ABCDEFGHIJKLMNOP", {})};
    const OpenVolume open(sdf_image(volume).bytes, whole_tree);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(search(open.md, "ABCDEFGHIJKLMNOPQRS/X"), "");
}

TEST(SdfSearch, EmptyDirectoryIsNotSearched)
{
    const OpenVolume open(with_field(literal_sdf(), literal_table + 128 + size_field, 0), whole_tree);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(search(open.md, "DIR"), "");
}

TEST(SdfSearch, TargetWithAPathOpensWithAnEmptyList)
{
    const TemporaryFile file(sdf_image(five_levels()).bytes);
    const OutputCapture output;
    const Medium medium(std::string(file.path()) + ":LEVEL1/LEVEL2", whole_tree);
    ASSERT_TRUE(medium) << error_text();
    EXPECT_EQ(medium->root, nullptr);
    EXPECT_EQ(output.text(), "");
}

// ---- paths through the tree in memory --------------------------------------------------------------------

TEST(SdfPaths, LeadToEachDirectory)
{
    const OpenVolume open(sdf_image(five_levels()).bytes, whole_tree);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(reached(open.md, "/"), (Names{"FIRST", "LEVEL1"}));
    EXPECT_EQ(reached(open.md, "LEVEL1"), (Names{"DATA", "LEVEL2"}));
    EXPECT_EQ(reached(open.md, "/LEVEL1//LEVEL2/"), (Names{"DATA", "LEVEL3"}));
    EXPECT_EQ(reached(open.md, "LEVEL1/LEVEL2/LEVEL3/LEVEL4/LEVEL5"), Names{"DEEP"});
    EXPECT_EQ(reached(open.md, "LEVEL2"), (Names{"-1", "Directory not found (LEVEL2)"}));
    EXPECT_EQ(reached(open.md, "LEVEL1/DATA"), (Names{"-1", "Directory not found (DATA)"}));
}

TEST(SdfPaths, FilesAreFoundAnywhere)
{
    const OpenVolume open(sdf_image(five_levels()).bytes, whole_tree);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(image_find_file(open.md, open.md->root, "DEEP", 0), nullptr);
    const FileInfo *deep = image_find_file(open.md, open.md->root, "DEEP", 1);
    ASSERT_TRUE(deep != nullptr);
    EXPECT_EQ(deep->level, 6u);
    EXPECT_EQ(image_find_typed_file(open.md, open.md->root, "DEEP.DATA", 0, 1), deep);
    EXPECT_EQ(match_count(open.md, nullptr), 2u);
}
