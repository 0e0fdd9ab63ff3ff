// Commands over many files: what is refused before anything happens, the walk, deleting, the listing.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/stored_volume.h"
#include "tests/support/system45_builder.h"
#include "tests/volume/dir_ops_support.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

constexpr int32_t no_command = 13;

// A refusal leaves list and image as they were.
void expect_refused(const DirOrder &order, uint32_t error, const std::string &detail = "")
{
    const OpenVolume open(three_files());
    const LogCapture log(0);
    const Bytes before = open.file.bytes();
    EXPECT_EQ(dir_ops(open.md, order), -1);
    EXPECT_EQ(global_error, error);
    EXPECT_EQ(std::string(global_error_info), detail);
    EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE"}));
    EXPECT_EQ(open.file.bytes(), before);
}

// A tree of an SDF volume: two levels, hidden and read-only letters, a name of 16 characters.
struct SdfTree {
    SdfTree() : tree(two_levels()), md(tree.md)
    {
        md->format = FORMAT_SDF;
        for (const char *name : {"A", "D1", "B", "D2", "C", "E"}) {
            FileInfo *info = tree.find(name);
            set_type_text(*info, info->is_directory != 0 ? "DIR" : "DATA");
            info->date = {30, 7, 9, 15, 2, 84, 0, 0, 0};
        }
        tree.find("A")->attributes = ATTRIBUTE_SYSTEM | ATTRIBUTE_HIDDEN | ATTRIBUTE_READ_ONLY;
        tree.find("B")->attributes = ATTRIBUTE_HIDDEN;
        tree.find("C")->attributes = ATTRIBUTE_READ_ONLY;
        tree.find("E")->attributes = ATTRIBUTE_SYSTEM;
    }

    TreeMedium tree;
    MediaDescriptor *md;
};

std::string without_head(const std::string &text)
{
    const std::string ruler = " ====\n";
    return text.substr(text.find(ruler) + ruler.size());
}

}

// ---- refusals ------------------------------------------------------------------------------------------------

TEST(DirOps, CopyAndMoveNeedATarget)
{
    expect_refused({.command = COMMAND_COPY, .filespec = Names{"ONE"}}, 205);
    expect_refused({.command = COMMAND_MOVE, .filespec = Names{"ONE"}}, 205);
}

TEST(DirOps, SeveralFilesDoNotGoIntoOne)
{
    expect_refused({.command = COMMAND_COPY, .filespec = Names{"T*"}, .dest_file = "NEW"}, 206);
    expect_refused({.command = COMMAND_MOVE, .dest_file = "NEW"}, 206);
}

TEST(DirOps, SeveralFilesAreCountedBeforeATargetIsOpened)
{
    expect_refused({.command = COMMAND_COPY, .dest_path = "/nowhere/at/all.lif", .dest_file = "NEW"}, 206);
}

TEST(DirOps, TargetThatCannotBeOpened)
{
    expect_refused({.command = COMMAND_COPY, .filespec = Names{"ONE"}, .dest_path = "nowhere.lif"}, 300,
                   "Msus \"nowhere.lif\"");
    expect_refused({.command = COMMAND_MOVE, .filespec = Names{"ONE"}, .dest_path = ""}, 103, "Empty target string");
}

TEST(DirOps, CopyOntoItselfIsRefusedAndMoveOntoItselfIsDone)
{
    expect_refused({.command = COMMAND_COPY, .filespec = Names{"ONE"}, .dest_file = "ONE"}, 208);
    const OpenVolume open(three_files());
    const Bytes before = open.file.bytes();
    EXPECT_EQ(printed_by(open.md, {.command = COMMAND_MOVE, .filespec = Names{"ONE"}, .dest_file = "ONE"}), "");
    EXPECT_EQ(global_error, 0u);
    EXPECT_EQ(open.file.bytes(), before);
}

TEST(DirOps, PatternThatMatchesNothing)
{
    for (const int32_t command : {5, 6, 10, 12, no_command}) {
        FileInfo info{};
        expect_refused({.command = command, .filespec = Names{"NONE"}, .info = &info}, 207);
    }
    expect_refused({.command = COMMAND_MOVE, .filespec = Names{"NONE"}, .dest_file = "NEW"}, 207);
}

TEST(DirOps, EmptyVolumeMatchesNothingWithoutAnError)
{
    LifVolume empty = three_files();
    empty.entries.clear();
    for (const int32_t command : {5, 6, 10, no_command}) {
        const OpenVolume open(empty);
        ASSERT_EQ(open.md->root, nullptr);
        EXPECT_EQ(dir_ops(open.md, {.command = command, .filespec = Names{"NONE"}}), 0) << command;
        EXPECT_EQ(global_error, 0u) << command;
    }
}

TEST(DirOps, UnknownCommandFailsAtTheFirstFileThatMatches)
{
    for (const int32_t command : {0, 1, 4, no_command, -1}) {
        expect_refused({.command = command, .filespec = Names{"T*"}}, 209);
        expect_refused({.command = command, .filespec = Names{"NONE"}}, 207);
    }
}

TEST(DirOps, MissingArguments)
{
    EXPECT_EQ(dir_ops(nullptr, {.command = COMMAND_LIST}), -1);
    EXPECT_EQ(global_error, 103u);
    expect_refused({.command = COMMAND_CREATE}, 103, "Null pointer");
    expect_refused({.command = COMMAND_ADD}, 103, "Null pointer");
    expect_refused({.command = COMMAND_ATTRIBUTES}, 103, "Null pointer");
}

TEST(DirOps, Hazard_J15_NullTextsAreLoggedAndMatchEverything)
{
    const OpenVolume open(three_files());
    const LogCapture log(3);
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_DELETE}), 0);
    EXPECT_TRUE(contains(log.text(), "filespec=\"(null)\", dest_path=\"(null)\", dest_file=\"(null)\", info=0, "
                                     "command=10, confirm=0)\n"))
        << log.text();
    EXPECT_EQ(open.md->root, nullptr);
}

TEST(DirOps, CallIsLogged)
{
    const OpenVolume open(three_files());
    const LogCapture log(3);
    dir_ops(open.md, {.command = COMMAND_DELETE, .filespec = Names{"ONE", "TWO"}, .dest_path = "P", .dest_file = "F"});
    EXPECT_TRUE(contains(log.text(), "filespec=\"ONE\", dest_path=\"P\", dest_file=\"F\", info=0, command=10, "))
        << log.text();
}

// ---- the walk and deleting -----------------------------------------------------------------------------------

TEST(DirOpsDelete, FilesThatMatchGoFromListAndMedium)
{
    const OpenVolume open(three_files());
    EXPECT_EQ(printed_by(open.md, {.command = COMMAND_DELETE, .filespec = Names{"T*"}}),
              "Removing TWO          \nRemoving THREE          \n");
    EXPECT_EQ(names(open.md), (Names{"ONE"}));
    EXPECT_EQ(names_of(stored_lif(open.file.bytes())), (Names{"ONE"}));
}

TEST(DirOpsDelete, FirstEntryGoesAndTheWalkGoesOnWithTheNewFirst)
{
    const OpenVolume open(three_files());
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_DELETE, .filespec = Names{"ONE", "TWO"}}), 0);
    EXPECT_EQ(names(open.md), (Names{"THREE"}));
    EXPECT_EQ(open.md->root->prev, nullptr);
}

TEST(DirOpsDelete, AllFilesGoWithoutAnError)
{
    const OpenVolume open(disk45_image(three_disk_files()));
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_DELETE, .filespec = Names{"*"}}), 0);
    EXPECT_EQ(global_error, 0u);
    EXPECT_EQ(open.md->root, nullptr);
    const StoredVolume volume = stored_disk(open.file.bytes());
    EXPECT_TRUE(volume.files.empty());
    EXPECT_TRUE(volume.spares_agree);
    EXPECT_EQ(volume.runs, (Runs{{60, 540}}));
}

TEST(DirOpsDelete, BothTablesOfADiskAndBothDirectoriesOfATapeAreWritten)
{
    const OpenVolume disk(disk45_image(three_disk_files()));
    EXPECT_EQ(dir_ops(disk.md, {.command = COMMAND_DELETE, .filespec = Names{"BETA"}}), 0);
    const StoredVolume on_disk = stored_disk(disk.file.bytes());
    EXPECT_EQ(names_of(on_disk), (Names{"ALPHA", "GAMMA"}));
    EXPECT_EQ(on_disk.runs, (Runs{{63, 5}, {76, 524}}));
    EXPECT_TRUE(on_disk.spares_agree);
    const OpenVolume tape(tape45_image(three_tape_files()));
    EXPECT_EQ(dir_ops(tape.md, {.command = COMMAND_DELETE, .filespec = Names{"BETA"}}), 0);
    const StoredVolume on_tape = stored_tape(tape.file.bytes());
    EXPECT_EQ(names_of(on_tape), (Names{"ALPHA", "GAMMA"}));
    EXPECT_TRUE(on_tape.spares_agree);
}

TEST(DirOpsDelete, PurgedEntriesArePassedOverUnlessTheyAreShown)
{
    LifVolume volume = three_files();
    volume.entries[1].type = 0;
    const OpenVolume open(volume);
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_DELETE, .filespec = Names{"TWO"}}), -1);
    EXPECT_EQ(global_error, 207u);
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_DELETE, .filespec = Names{"ONE"}}), 0);
    EXPECT_EQ(names(open.md), (Names{"TWO", "THREE"}));
    open.md->show_purged = 1;
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_DELETE, .filespec = Names{"TWO"}}), 0);
    EXPECT_EQ(names(open.md), (Names{"THREE"}));
}

TEST(DirOpsDelete, NamesMatchWithTheirTypes)
{
    const OpenVolume open(demo_volume());
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_DELETE, .filespec = Names{"RESULTS.ASCII"}}), -1);
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_DELETE, .filespec = Names{"*.BDAT", "NOTES.TEXT"}}), 0);
    EXPECT_EQ(names_of(stored_lif(open.file.bytes())), (Names{"README", "SORTC_____", "NODATE"}));
}

TEST(DirOpsDelete, NothingIsPrintedAtLogLevelZero)
{
    const OpenVolume open(three_files());
    const LogCapture log(0);
    EXPECT_EQ(printed_by(open.md, {.command = COMMAND_DELETE, .filespec = Names{"ONE"}}), "");
}

TEST(DirOpsDelete, Hazard_J11_FirstOfADirectoryGoesAndTheWalkStaysInIt)
{
    const TreeMedium tree(two_levels());
    EXPECT_EQ(printed_by(tree.md, {.command = COMMAND_DELETE, .filespec = Names{"B", "C", "E"}, .recursive = true}),
              "Removing B          \nRemoving C          \nRemoving E          \n");
    EXPECT_EQ(list_of(tree.md->root), (Names{"A", "D1"}));
    EXPECT_EQ(list_of(tree.find("D1")->child), (Names{"D2"}));
    EXPECT_EQ(tree.find("D2")->child, nullptr);
}

TEST(DirOpsDelete, Hazard_J12_DirectoryGoesWithAllThatIsInIt)
{
    HeapFaults heap;
    {
        const TreeMedium tree(two_levels());
        const uint32_t before = heap.releases;
        EXPECT_EQ(dir_ops(tree.md, {.command = COMMAND_DELETE, .filespec = Names{"D1"}, .recursive = true}), 0);
        EXPECT_EQ(heap.releases - before, 4u); // D1, B, D2, C
        EXPECT_EQ(list_of(tree.md->root), (Names{"A", "E"}));
    }
    EXPECT_EQ(heap.releases, heap.allocations);
}

// The month of each file that was written in October is another one behind any change.
TEST(DirOpsDelete, Hazard_D15_OctoberChangesWithTheDirectory)
{
    LifVolume volume = three_files();
    volume.entries[0].date = {0x84, 0x10, 0x15, 0x09, 0x07, 0x30};
    const OpenVolume open(volume);
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_DELETE, .filespec = Names{"TWO"}}), 0);
    const StoredVolume after = stored_lif(open.file.bytes());
    EXPECT_EQ(Bytes(after.files[0].rest.begin(), after.files[0].rest.begin() + 3), (Bytes{0x84, 0x16, 0x15}));
    EXPECT_EQ(Bytes(after.files[1].rest.begin(), after.files[1].rest.begin() + 3), (Bytes{0x84, 0x03, 0x15}));
}

TEST(DirOpsDelete, Hazard_D16_TypeBits7And8GoWithTheDirectory)
{
    DiskVolume volume = three_disk_files();
    volume.entries[0].type = 0xDC80; // ROOT
    const OpenVolume open(disk45_image(volume));
    EXPECT_EQ(type_text(*open.md->root), "ROOT");
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_DELETE, .filespec = Names{"BETA"}}), 0);
    EXPECT_EQ(stored_disk(open.file.bytes()).files[0].type, 0xDC00);
}

TEST(DirOpsDelete, Hazard_F6_PurgedEntryWithoutANameGoesToo)
{
    TapeVolume volume = three_tape_files();
    volume.entries[1].name = std::string("\0\0\0\0\0\0", 6);
    const OpenVolume open(tape45_image(volume));
    const LogCapture log(0);
    EXPECT_EQ(names(open.md), (Names{"ALPHA", "GAMMA"}));
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_DELETE, .filespec = Names{"ALPHA"}}), 0);
    const StoredVolume after = stored_tape(open.file.bytes());
    ASSERT_EQ(after.files.size(), 1u);
    EXPECT_EQ(after.files[0].name, "GAMMA");
}

TEST(DirOpsDelete, Hazard_D14_RefusedEntryGoesToo)
{
    LifVolume volume = three_files();
    volume.entries[1] = {.name = "TWO", .start = 0, .length = 3};
    volume.entries[2].start = 40;
    const OpenVolume open(volume);
    const LogCapture log(0);
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_DELETE, .filespec = Names{"ONE"}}), 0);
    EXPECT_EQ(names_of(stored_lif(open.file.bytes())), (Names{"THREE"}));
}

TEST(DirOps, WithoutRecursionTheTopLevelIsAll)
{
    const TreeMedium tree(two_levels());
    EXPECT_EQ(dir_ops(tree.md, {.command = COMMAND_DELETE, .filespec = Names{"C"}}), -1);
    EXPECT_EQ(global_error, 207u);
}

TEST(DirOps, StartDirectoryIsWhereTheWalkBegins)
{
    const TreeMedium tree(two_levels());
    FileInfo *start = tree.find("D1");
    EXPECT_EQ(dir_ops(tree.md, {.command = COMMAND_DELETE, .filespec = Names{"A"}, .start_directory = start}), -1);
    EXPECT_EQ(global_error, 207u);
    const DirOrder first = {
        .command = COMMAND_DELETE, .filespec = Names{"B"}, .start_directory = start, .level = 2, .recursive = true};
    EXPECT_EQ(dir_ops(tree.md, first), 0);
    const DirOrder second = {
        .command = COMMAND_DELETE, .filespec = Names{"C"}, .start_directory = start, .level = 2, .recursive = true};
    EXPECT_EQ(dir_ops(tree.md, second), 0);
    EXPECT_EQ(list_of(tree.find("D1")->child), (Names{"D2"}));
    EXPECT_EQ(list_of(tree.md->root), (Names{"A", "D1", "E"}));
}

TEST(DirOps, Hazard_J17_DeepestTreeIsWalkedToItsEnd)
{
    Node innermost = {.name = "LAST", .fill = 'x'};
    for (int level = 999; level > 1; --level) {
        Node outer = {.name = "D", .directory = true};
        outer.children.push_back(std::move(innermost));
        innermost = std::move(outer);
    }
    std::vector<Node> nodes;
    nodes.push_back(std::move(innermost));
    const TreeMedium tree(nodes);
    ASSERT_EQ(tree.find("LAST")->level, 999u);
    EXPECT_EQ(dir_ops(tree.md, {.command = COMMAND_DELETE, .filespec = Names{"LAST"}, .recursive = true}), 0);
    EXPECT_EQ(tree.find("LAST"), nullptr);
}

// ---- the listing ---------------------------------------------------------------------------------------------

TEST(DirOpsList, LifLines)
{
    LifVolume volume = three_files();
    volume.entries[1] = {.name = "COUNTS",
                         .type = 0xE961,
                         .length = 5,
                         .date = {0x85, 0x12, 0x24, 0x18, 0x30, 0x00},
                         .implementation = {0x80, 0x01, 'A', 'B', 0x01, 0x00}};
    const OpenVolume open(volume);
    EXPECT_EQ(printed_by(open.md, {.command = COMMAND_LIST}),
              std::string(open.file.path()) + "\nVOLUME LABEL: TESTVL\n"
                                              "FILE NAME PRO TYPE  REC/FILE BYTE/REC   ADDRESS     DATE     TIME\n"
                                              "\n"
                                              "ONE           ASCII        1      256         5    15-Mar-84  9:07\n"
                                              "COUNTS     *  BDAT         2      512         7    24-Dec-85 18:30\n"
                                              "THREE         ASCII        1      256        11    15-Mar-84  9:07\n");
}

TEST(DirOpsList, DiskAndTapeLines)
{
    const OpenVolume disk(disk45_image(three_disk_files()));
    EXPECT_EQ(printed_by(disk.md, {.command = COMMAND_LIST, .filespec = Names{"*A"}}),
              "NAME  PRO TYPE REC/FILE  BYTES/REC   ADDRESS\n"
              "?7           18\n"
              "\n"
              "ALPHA     PROG      3      256         60\n"
              "BETA      DATA      5      256         63\n"
              "GAMMA   * BDAT      4      512         68\n");
    const OpenVolume tape(tape45_image(three_tape_files()));
    EXPECT_EQ(printed_by(tape.md, {.command = COMMAND_LIST, .filespec = Names{"B*"}}),
              "NAME  PRO TYPE REC/FILE  BYTES/REC   ADDRESS\n"
              "T15          2\n"
              "\n"
              "BETA      DATA      5      256          8\n");
}

TEST(DirOpsList, SdfLinesWithTheirThreeLetters)
{
    const SdfTree sdf;
    const std::string text = printed_by(sdf.md, {.command = COMMAND_LIST});
    EXPECT_EQ(without_head(text), "A                       1      DATA         1      256 15-Mar-84 09:07    \n"
                                  "D1                      1      DIR          1      256 15-Mar-84 09:07 MRW\n"
                                  "E                       1      DATA         1      256 15-Mar-84 09:07  RW\n");
}

TEST(DirOpsList, SdfTreeIsIndentedByLevel)
{
    const SdfTree sdf;
    const std::string text = printed_by(sdf.md, {.command = COMMAND_LIST, .recursive = true});
    EXPECT_EQ(without_head(text), "A                       1      DATA         1      256 15-Mar-84 09:07    \n"
                                  "D1                      1      DIR          1      256 15-Mar-84 09:07 MRW\n"
                                  "/B                      2      DATA         1      256 15-Mar-84 09:07 M W\n"
                                  "/D2                     2      DIR          1      256 15-Mar-84 09:07 MRW\n"
                                  "//C                     3      DATA         1      256 15-Mar-84 09:07 MR \n"
                                  "E                       1      DATA         1      256 15-Mar-84 09:07  RW\n");
}

// Where the walk begins in a directory, the level that its caller gives counts for the indent, not that of the entry.
TEST(DirOpsList, IndentGoesByTheLevelOfTheWalk)
{
    const SdfTree sdf;
    DirOrder order = {.command = COMMAND_LIST, .start_directory = sdf.tree.find("D1"), .level = 1, .recursive = true};
    EXPECT_EQ(without_head(printed_by(sdf.md, order)),
              "B                       2      DATA         1      256 15-Mar-84 09:07 M W\n"
              "D2                      2      DIR          1      256 15-Mar-84 09:07 MRW\n"
              "/C                      3      DATA         1      256 15-Mar-84 09:07 MR \n");
    order.level = 4;
    EXPECT_EQ(without_head(printed_by(sdf.md, order)),
              "///B                    2      DATA         1      256 15-Mar-84 09:07 M W\n"
              "///D2                   2      DIR          1      256 15-Mar-84 09:07 MRW\n"
              "////C                   3      DATA         1      256 15-Mar-84 09:07 MR \n");
}

TEST(DirOpsList, Hazard_J14_DeepNamesMoveByFiveAndStayInTheirField)
{
    const SdfTree sdf;
    FileInfo *deep = sdf.tree.find("C");
    std::memcpy(deep->name, "SIXTEENLETTERSXX", 17);
    for (const int32_t level : {5, 900, 0x7FFFFFFF}) {
        const DirOrder order = {.command = COMMAND_LIST,
                                .filespec = Names{"SIX*"},
                                .start_directory = sdf.tree.find("D1"),
                                .level = level,
                                .recursive = true};
        EXPECT_EQ(without_head(printed_by(sdf.md, order)),
                  "/////SIXTEENLETTERSXX   3      DATA         1      256 15-Mar-84 09:07 MR \n")
            << level;
    }
}

TEST(DirOpsList, UnknownFormatPrintsNothing)
{
    const TreeMedium tree(two_levels());
    for (const uint32_t format : {FORMAT_UNKNOWN, FORMAT_HFS}) {
        tree.md->format = format;
        EXPECT_EQ(printed_by(tree.md, {.command = COMMAND_LIST, .recursive = true}), "");
    }
}

TEST(DirOpsList, PurgedFilesAreListedWhereTheyAreShown)
{
    LifVolume volume = three_files();
    volume.entries[1].type = 0;
    const OpenVolume open(volume);
    EXPECT_FALSE(contains(printed_by(open.md, {.command = COMMAND_LIST}), "TWO"));
    open.md->show_purged = 1;
    EXPECT_TRUE(contains(printed_by(open.md, {.command = COMMAND_LIST}), "TWO           PURGE"));
}

TEST(DirOpsList, ListingChangesNothing)
{
    const OpenVolume open(three_files());
    const FileFaults watch;
    dir_ops(open.md, {.command = COMMAND_LIST});
    // Only what was printed went out, into the file that catches it.
    for (const FileAccess &access : watch.accesses) EXPECT_TRUE(access.writing && access.bytes < 1000);
    EXPECT_EQ(names_of(stored_lif(open.file.bytes())), (Names{"ONE", "TWO", "THREE"}));
}
