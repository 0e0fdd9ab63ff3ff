// Copying, moving and renaming many files: on one volume, to another one, and what the user is asked.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/memory_medium.h"
#include "tests/support/scripted_confirm.h"
#include "tests/support/stored_volume.h"
#include "tests/support/system45_builder.h"
#include "tests/volume/dir_ops_support.h"
#include "volume/table.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

Bytes filled(uint32_t number, uint8_t fill)
{
    return Bytes(size_t{number} * record_bytes, fill);
}

Bytes content_in(const Bytes &image, const std::string &name)
{
    const StoredVolume volume = stored_lif(image);
    const StoredFile *file = file_named(volume, name);
    return file == nullptr ? Bytes() : content_of(image, *file);
}

LifVolume without_files()
{
    LifVolume volume = three_files();
    volume.entries.clear();
    return volume;
}

// Two volumes in files; the second one isn't open.
struct Pair {
    explicit Pair(const LifVolume &from = three_files(), const LifVolume &to = without_files())
        : source(from), target(lif_image(to)), before(source.file.bytes()), target_before(target.bytes())
    {
    }

    OpenVolume source;
    TemporaryFile target;
    Bytes before;
    Bytes target_before;
};

// The volume of three files with one more by name.
LifVolume with_file(const std::string &name)
{
    LifVolume volume = three_files();
    volume.entries = {{.name = name, .content = Bytes(256, 'o')}};
    return volume;
}

}

// ---- copying -------------------------------------------------------------------------------------------------

TEST(DirOpsCopy, UnderAnotherNameOnOneVolume)
{
    const OpenVolume open(three_files());
    const LogCapture log(2);
    EXPECT_EQ(printed_by(open.md, {.command = COMMAND_COPY, .filespec = Names{"TWO"}, .dest_file = "NEW"}),
              "Record 0 (33%)Record 1 (66%)Record 2 (100%)\t\t\t\t\t\t\t");
    const Bytes image = open.file.bytes();
    EXPECT_EQ(names_of(stored_lif(image)), (Names{"ONE", "TWO", "THREE", "NEW"}));
    EXPECT_EQ(content_in(image, "NEW"), content_in(image, "TWO"));
    EXPECT_TRUE(contains(log.text(), "Copying TWO -> NEW          \n")) << log.text();
    EXPECT_TRUE(contains(log.text(), "Streaming not supported inside one image, using block access\n"));
}

TEST(DirOpsCopy, OwnNameOfTheVolumeIsTheVolume)
{
    const OpenVolume open(three_files());
    const DirOrder order = {
        .command = COMMAND_COPY, .filespec = Names{"ONE"}, .dest_path = open.file.path(), .dest_file = "NEW"};
    EXPECT_EQ(dir_ops(open.md, order), 0);
    EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE", "NEW"}));
}

TEST(DirOpsCopy, WithoutANameOnOneVolumeIsOntoItself)
{
    const OpenVolume open(three_files());
    const LogCapture log(0);
    const Bytes before = open.file.bytes();
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_COPY, .dest_path = open.file.path()}), -1);
    EXPECT_EQ(error_text(), "Can't copy/move file to itself (file \"ONE\")");
    EXPECT_EQ(open.file.bytes(), before);
}

// The walk comes to what it has added itself; the first file is copied all the same.
TEST(DirOpsCopy, KeepsCopyMetByItsOwnPattern)
{
    const OpenVolume open(three_files());
    const LogCapture log(0);
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_COPY, .filespec = Names{"O*"}, .dest_file = "OTHER"}), -1);
    EXPECT_EQ(error_text(), "Can't copy/move file to itself (file \"OTHER\")");
    EXPECT_EQ(names_of(stored_lif(open.file.bytes())), (Names{"ONE", "TWO", "THREE", "OTHER"}));
}

TEST(DirOpsCopy, AllFilesToAnotherVolume)
{
    const Pair pair;
    const LogCapture log(2);
    EXPECT_EQ(dir_ops(pair.source.md, {.command = COMMAND_COPY, .dest_path = pair.target.path()}), 0);
    EXPECT_EQ(pair.source.file.bytes(), pair.before);
    const Bytes image = pair.target.bytes();
    EXPECT_EQ(names_of(stored_lif(image)), (Names{"ONE", "TWO", "THREE"}));
    for (const char *name : {"ONE", "TWO", "THREE"})
        EXPECT_EQ(content_in(image, name), content_in(pair.before, name)) << name;
    EXPECT_EQ(stored_lif(image).files[1].rest, stored_lif(pair.before).files[1].rest);
    EXPECT_TRUE(contains(log.text(), "Copying THREE -> " + std::string(pair.target.path()) + ":THREE          \n"))
        << log.text();
    EXPECT_FALSE(contains(log.text(), "Streaming"));
}

TEST(DirOpsCopy, TargetThatEndsInAColonGetsNoSecondOne)
{
    const Pair pair;
    const LogCapture log(2);
    const std::string path = std::string(pair.target.path()) + ":";
    const DirOrder order = {.command = COMMAND_COPY, .filespec = Names{"ONE"}, .dest_path = path, .dest_file = "NEW"};
    EXPECT_EQ(dir_ops(pair.source.md, order), 0);
    EXPECT_TRUE(contains(log.text(), "Copying ONE -> " + path + "NEW          \n")) << log.text();
    EXPECT_EQ(names_of(stored_lif(pair.target.bytes())), (Names{"NEW"}));
}

TEST(DirOpsCopy, BothTablesOfTheTargetAreWritten)
{
    const OpenVolume source(three_files());
    DiskVolume empty = three_disk_files();
    empty.entries.clear();
    const TemporaryFile target(disk45_image(empty));
    EXPECT_EQ(dir_ops(source.md, {.command = COMMAND_COPY, .dest_path = target.path()}), 0);
    const StoredVolume volume = stored_disk(target.bytes());
    EXPECT_EQ(names_of(volume), (Names{"ONE", "TWO", "THREE"}));
    EXPECT_EQ(volume.runs, (Runs{{65, 535}}));
    EXPECT_TRUE(volume.spares_agree);
}

TEST(DirOpsCopy, WithoutQuestionsWhatExistsGivesWay)
{
    const Pair pair(three_files(), with_file("ONE"));
    EXPECT_EQ(
        dir_ops(pair.source.md, {.command = COMMAND_COPY, .filespec = Names{"ONE"}, .dest_path = pair.target.path()}),
        0);
    EXPECT_EQ(content_in(pair.target.bytes(), "ONE"), filled(1, 'a'));
}

TEST(DirOpsCopy, QuestionForEachFileThatExists)
{
    LifVolume to = three_files();
    for (LifEntry &entry : to.entries) entry.content = Bytes(256, 'o');
    const Pair pair(three_files(), to);
    const LogCapture log(0);
    const ScriptedConfirm script({answer_cancel, answer_yes, answer_no});
    const DirOrder order = {
        .command = COMMAND_COPY, .dest_path = pair.target.path(), .confirm = ScriptedConfirm::callback};
    EXPECT_EQ(dir_ops(pair.source.md, order), 0);
    EXPECT_EQ(script.asked, (std::vector<Question>{{3, "File \"ONE\" already exists. Overwrite"},
                                                   {3, "File \"TWO\" already exists. Overwrite"},
                                                   {3, "File \"THREE\" already exists. Overwrite"}}));
    const Bytes image = pair.target.bytes();
    EXPECT_EQ(names_of(stored_lif(image)), (Names{"ONE", "THREE", "TWO"}));
    EXPECT_EQ(content_in(image, "ONE"), filled(1, 'o'));
    EXPECT_EQ(content_in(image, "TWO"), content_in(pair.before, "TWO"));
    EXPECT_EQ(content_in(image, "THREE"), filled(1, 'o'));
}

TEST(DirOpsCopy, QuestionAheadOfTheWalkForAGivenName)
{
    const DirOrder order = {
        .command = COMMAND_COPY, .filespec = Names{"ONE"}, .dest_file = "TWO", .confirm = ScriptedConfirm::callback};
    const OpenVolume open(three_files());
    const Bytes before = open.file.bytes();
    for (const int32_t answer : {answer_no, answer_cancel, 0, 4}) {
        const ScriptedConfirm script({answer});
        EXPECT_EQ(dir_ops(open.md, order), 0);
        EXPECT_EQ(script.asked, (std::vector<Question>{{2, "File \"TWO\" already exists. Overwrite "}}));
        EXPECT_EQ(open.file.bytes(), before);
    }
    // Who has said yes once is asked again by the copy itself.
    const ScriptedConfirm script({answer_yes, answer_yes});
    EXPECT_EQ(dir_ops(open.md, order), 0);
    EXPECT_EQ(script.asked[1], (Question{3, "File \"TWO\" already exists. Overwrite"}));
    const Bytes after = open.file.bytes();
    EXPECT_EQ(names_of(stored_lif(after)), (Names{"ONE", "THREE", "TWO"}));
    EXPECT_EQ(content_in(after, "TWO"), filled(1, 'a'));
}

TEST(DirOpsCopy, KeepsQuestionByListOfSource)
{
    const DirOrder to_two = {
        .command = COMMAND_COPY, .filespec = Names{"ONE"}, .dest_file = "TWO", .confirm = ScriptedConfirm::callback};
    // On the source there is a TWO, on the target none.
    const Pair asked;
    DirOrder order = to_two;
    order.dest_path = asked.target.path();
    {
        const ScriptedConfirm script({answer_no});
        EXPECT_EQ(dir_ops(asked.source.md, order), 0);
        EXPECT_EQ(script.asked[0].kind, 2);
        EXPECT_EQ(asked.target.bytes(), asked.target_before);
    }
    // On the target there is a NEW, on the source none: only the copy itself asks.
    const Pair unasked(three_files(), with_file("NEW"));
    order.dest_path = unasked.target.path();
    order.dest_file = "NEW";
    const ScriptedConfirm script({answer_yes});
    EXPECT_EQ(dir_ops(unasked.source.md, order), 0);
    EXPECT_EQ(script.asked[0].kind, 3);
    EXPECT_EQ(content_in(unasked.target.bytes(), "NEW"), filled(1, 'a'));
}

TEST(DirOpsCopy, OtherErrorsEndTheWalkAndWhatWasDoneIsWritten)
{
    LifVolume small = without_files();
    small.tracks = 1;
    small.records_per_track = 7; // files from record 5 on: the first one still has room
    const Pair pair(three_files(), small);
    const LogCapture log(0);
    EXPECT_EQ(dir_ops(pair.source.md, {.command = COMMAND_COPY, .dest_path = pair.target.path()}), -1);
    EXPECT_EQ(error_text(), "No space left on device (file \"TWO\")");
    EXPECT_EQ(names_of(stored_lif(pair.target.bytes())), (Names{"ONE"}));
}

TEST(DirOpsCopy, RepeatThatFailsEndsTheWalk)
{
    LifVolume small = without_files();
    small.entries = {{.name = "TWO", .content = Bytes(256, 'o')}};
    small.tracks = 1;
    small.records_per_track = 7;
    const Pair pair(three_files(), small);
    const LogCapture log(0);
    const ScriptedConfirm script({answer_yes});
    const DirOrder order = {.command = COMMAND_COPY,
                            .filespec = Names{"TWO", "THREE"},
                            .dest_path = pair.target.path(),
                            .confirm = ScriptedConfirm::callback};
    EXPECT_EQ(dir_ops(pair.source.md, order), -1);
    EXPECT_EQ(global_error, 211u);
    EXPECT_EQ(pair.target.bytes(), pair.target_before);
}

// Its list would be empty, and the files of the volume lost with the next directory.
TEST(DirOpsCopy, Hazard_D14_PathIntoTheTargetIsRefused)
{
    const Pair pair(three_files(), with_file("OLD"));
    const LogCapture log(0);
    const std::string path = std::string(pair.target.path()) + ":SUB";
    EXPECT_EQ(dir_ops(pair.source.md, {.command = COMMAND_COPY, .filespec = Names{"ONE"}, .dest_path = path}), -1);
    EXPECT_EQ(global_error, 218u);
    EXPECT_EQ(std::string(global_error_info), "SUB");
    EXPECT_EQ(pair.target.bytes(), pair.target_before);
}

TEST(DirOpsCopy, Hazard_D14_TargetWhoseDirectoryCannotBeReadIsRefused)
{
    const Pair pair(three_files(), with_file("OLD"));
    const LogCapture log(0);
    const OutputCapture output;
    for (uint32_t n = 2; n < 4; ++n) { // the header is read, from then on nothing is
        const FileFaults faults(FileFault::read, n, true);
        const DirOrder order = {.command = COMMAND_COPY, .filespec = Names{"ONE"}, .dest_path = pair.target.path()};
        EXPECT_EQ(dir_ops_printing(pair.source.md, order), -1) << n;
        EXPECT_EQ(global_error, 302u) << n;
    }
    EXPECT_EQ(pair.target.bytes(), pair.target_before);
}

// An entry that is refused on reading isn't in the list, so that it goes with the next change. Whoever calls has to see
// to it.
TEST(DirOpsCopy, Hazard_D14_RefusedEntryGoesWithTheNextChange)
{
    LifVolume damaged = with_file("OLD");
    damaged.entries.push_back({.name = "BAD", .start = 0, .length = 1});
    const Pair pair(three_files(), damaged);
    const LogCapture log(0);
    EXPECT_EQ(
        dir_ops(pair.source.md, {.command = COMMAND_COPY, .filespec = Names{"ONE"}, .dest_path = pair.target.path()}),
        0);
    EXPECT_EQ(names_of(stored_lif(pair.target.bytes())), (Names{"OLD", "ONE"}));
}

// ---- moving to another volume --------------------------------------------------------------------------------

TEST(DirOpsMove, KeepsMoveToAnotherVolumeNotFound)
{
    const Pair pair;
    const LogCapture log(1);
    const DirOrder order = {.command = COMMAND_MOVE, .filespec = Names{"TWO"}, .dest_path = pair.target.path()};
    EXPECT_EQ(printed_by(pair.source.md, order, -1),
              "Moving TWO -> " + std::string(pair.target.path()) +
                  ":TWO          \nRecord 0 (33%)Record 1 (66%)Record 2 (100%)\t\t\t\t\t\t\t");
    EXPECT_EQ(global_error, 207u);
    EXPECT_EQ(names_of(stored_lif(pair.source.file.bytes())), (Names{"ONE", "THREE"}));
    EXPECT_EQ(content_in(pair.target.bytes(), "TWO"), content_in(pair.before, "TWO"));
}

TEST(DirOpsMove, AllFilesOfAVolumeGoWithoutAnError)
{
    const Pair pair;
    EXPECT_EQ(dir_ops(pair.source.md, {.command = COMMAND_MOVE, .dest_path = pair.target.path()}), 0);
    EXPECT_EQ(global_error, 0u);
    EXPECT_TRUE(stored_lif(pair.source.file.bytes()).files.empty());
    EXPECT_EQ(names_of(stored_lif(pair.target.bytes())), (Names{"ONE", "TWO", "THREE"}));
}

TEST(DirOpsMove, FileThatMayNotBeOverwrittenStays)
{
    const Pair pair(three_files(), with_file("ONE"));
    const LogCapture log(0);
    const ScriptedConfirm script({answer_no});
    const DirOrder order = {
        .command = COMMAND_MOVE, .dest_path = pair.target.path(), .confirm = ScriptedConfirm::callback};
    EXPECT_EQ(dir_ops(pair.source.md, order), -1); // by the oddity above
    EXPECT_EQ(names_of(stored_lif(pair.source.file.bytes())), (Names{"ONE"}));
    EXPECT_EQ(names_of(stored_lif(pair.target.bytes())), (Names{"ONE", "TWO", "THREE"}));
    EXPECT_EQ(content_in(pair.target.bytes(), "ONE"), filled(1, 'o'));
}

TEST(DirOpsMove, Hazard_J18_SourceThatCannotBeReadStays)
{
    MemoryMedium source(lif_image(three_files()));
    ASSERT_EQ(get_media_info(&source.md), 0);
    ASSERT_EQ(get_file_table(&source.md, nullptr, nullptr, 0, 0, 0, 1, 0, 0), 0);
    const Bytes before = source.image();
    source.unreadable = {7}; // the second record of TWO
    const TemporaryFile target(lif_image(without_files()));
    const Bytes target_before = target.bytes();
    const LogCapture log(0);
    const DirOrder order = {.command = COMMAND_MOVE, .filespec = Names{"TWO"}, .dest_path = target.path()};
    EXPECT_EQ(dir_ops(&source.md, order), -1);
    EXPECT_EQ(global_error, 302u);
    EXPECT_EQ(names(&source.md), (Names{"ONE", "TWO", "THREE"}));
    EXPECT_EQ(source.image(), before);
    EXPECT_TRUE(stored_lif(target.bytes()).files.empty());
}

// A volume under another name of its image is still itself: two lists would be written one over the other.
TEST(DirOpsMove, ImageUnderAnotherNameIsOneVolume)
{
    const OpenVolume open(three_files());
    const std::filesystem::path path = open.file.path();
    const std::string other = (path.parent_path() / "." / path.filename()).string();
    ASSERT_NE(other, open.md->msus);
    DirOrder order = {.command = COMMAND_MOVE, .filespec = Names{"TWO"}, .dest_path = other, .dest_file = "NEW"};
    EXPECT_EQ(dir_ops(open.md, order), 0);
    EXPECT_EQ(names_of(stored_lif(open.file.bytes())), (Names{"ONE", "NEW", "THREE"}));
    order.command = COMMAND_COPY;
    order.filespec = Names{"ONE"};
    order.dest_path = std::string(open.file.path()) + ":";
    order.dest_file = "COPY";
    EXPECT_EQ(dir_ops(open.md, order), 0);
    EXPECT_EQ(names_of(stored_lif(open.file.bytes())), (Names{"ONE", "NEW", "THREE", "COPY"}));
}

// ---- renaming ------------------------------------------------------------------------------------------------

TEST(DirOpsRename, OnlyTheNameChanges)
{
    const OpenVolume open(three_files());
    const LogCapture log(1);
    Bytes wanted = open.file.bytes();
    const Names pattern = {"TWO"};
    EXPECT_EQ(printed_by(open.md, {.command = COMMAND_MOVE, .filespec = pattern, .dest_file = "A"}),
              "Moving TWO -> A          \n");
    std::copy_n("A         ", 10, wanted.begin() + 2 * 256 + 32);
    EXPECT_EQ(open.file.bytes(), wanted);
}

TEST(DirOpsRename, NamesAreCutToWhatAFormatHolds)
{
    const OpenVolume lif(three_files());
    EXPECT_EQ(dir_ops(lif.md, {.command = COMMAND_MOVE, .filespec = Names{"ONE"}, .dest_file = "TWELVELETTER"}), 0);
    EXPECT_EQ(names(lif.md)[0], "TWELVELETT");
    EXPECT_EQ(names_of(stored_lif(lif.file.bytes()))[0], "TWELVELETT");
    const OpenVolume disk(disk45_image(three_disk_files()));
    EXPECT_EQ(dir_ops(disk.md, {.command = COMMAND_MOVE, .filespec = Names{"ALPHA"}, .dest_file = "SEVENTY"}), 0);
    EXPECT_EQ(names(disk.md)[0], "SEVENT");
    EXPECT_EQ(names_of(stored_disk(disk.file.bytes()))[0], "SEVENT");
    EXPECT_TRUE(stored_disk(disk.file.bytes()).spares_agree);
    const OpenVolume tape(tape45_image(three_tape_files()));
    EXPECT_EQ(dir_ops(tape.md, {.command = COMMAND_MOVE, .filespec = Names{"GAMMA"}, .dest_file = "X"}), 0);
    EXPECT_EQ(names_of(stored_tape(tape.file.bytes())), (Names{"ALPHA", "BETA", "X"}));
}

TEST(DirOpsRename, PascalNamesKeepTheMarkerOfTheirType)
{
    const OpenVolume open(demo_volume());
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_MOVE, .filespec = Names{"SORT"}, .dest_file = "MERGE"}), 0);
    EXPECT_EQ(names(open.md)[4], "MERGEC____");
    EXPECT_TRUE(contains(printed_by(open.md, {.command = COMMAND_LIST}), "MERGE         CODE"));
}

TEST(DirOpsRename, WithoutANameNothingChangesAndTablesAreWritten)
{
    const OpenVolume open(three_files());
    Bytes wanted = open.file.bytes();
    Bytes spoiled = wanted;
    spoiled[2 * 256 + 32] = 'X';
    open.file.replace(spoiled);
    const DirOrder order = {.command = COMMAND_MOVE, .filespec = Names{"ONE"}, .dest_path = open.file.path()};
    EXPECT_EQ(dir_ops(open.md, order), 0);
    EXPECT_EQ(open.file.bytes(), wanted);
}

TEST(DirOpsRename, KeepsTwoFilesOfOneNameAfterRename)
{
    const OpenVolume open(three_files());
    const ScriptedConfirm script({answer_yes});
    const DirOrder order = {
        .command = COMMAND_MOVE, .filespec = Names{"ONE"}, .dest_file = "TWO", .confirm = ScriptedConfirm::callback};
    EXPECT_EQ(dir_ops(open.md, order), 0);
    EXPECT_EQ(script.asked, (std::vector<Question>{{2, "File \"TWO\" already exists. Overwrite "}}));
    EXPECT_EQ(names_of(stored_lif(open.file.bytes())), (Names{"TWO", "TWO", "THREE"}));
}

// What reading would refuse isn't written: the file would be gone with the next change.
TEST(DirOpsRename, NameThatCannotBeReadIsRefused)
{
    for (const char *name : {"", "   ", "\t"}) {
        const OpenVolume open(three_files());
        const LogCapture log(0);
        const Bytes before = open.file.bytes();
        EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_MOVE, .filespec = Names{"ONE"}, .dest_file = name}), -1);
        EXPECT_EQ(global_error, 212u) << '"' << name << '"';
        EXPECT_EQ(names(open.md)[0], "ONE");
        EXPECT_EQ(open.file.bytes(), before);
    }
    for (const char *name : {"", "A:B", "\"A\"", "\xFF\xFF"}) {
        const OpenVolume open(tape45_image(three_tape_files()));
        const LogCapture log(0);
        const Bytes before = open.file.bytes();
        EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_MOVE, .filespec = Names{"ALPHA"}, .dest_file = name}), -1);
        EXPECT_EQ(global_error, 212u) << '"' << name << '"';
        EXPECT_EQ(open.file.bytes(), before);
    }
}

// The engine's table writers refuse the format, so that nothing of its root directory is lost.
TEST(DirOpsRename, KeepsRenameOnSdfWithoutEffect)
{
    const TreeMedium tree(two_levels());
    tree.md->format = FORMAT_SDF;
    const LogCapture log(0);
    const Bytes before = tree.hand.file.bytes();
    EXPECT_EQ(dir_ops(tree.md, {.command = COMMAND_MOVE, .filespec = Names{"A"}, .dest_file = "NEW"}), -1);
    EXPECT_EQ(global_error, 203u); // from writing the tables, which a change asks for
    EXPECT_EQ(list_of(tree.md->root), (Names{"A", "D1", "E"}));
    EXPECT_EQ(tree.hand.file.bytes(), before);
}

TEST(DirOpsRename, Hazard_J19_ChangesOfAnSdfVolumeWriteNothing)
{
    FileInfo info = new_file("X", "DATA", 256);
    const DirOrder orders[] = {{.command = COMMAND_DELETE, .filespec = Names{"A"}},
                               {.command = COMMAND_ATTRIBUTES, .info = &info, .attributes = CHANGE_DATE}};
    for (const DirOrder &order : orders) {
        const TreeMedium tree(two_levels());
        tree.md->format = FORMAT_SDF;
        const LogCapture log(0);
        const Bytes before = tree.hand.file.bytes();
        EXPECT_EQ(dir_ops(tree.md, order), -1);
        EXPECT_EQ(global_error, 203u);
        EXPECT_EQ(tree.hand.file.bytes(), before);
    }
}
