// Commands over many files that exchange them with the host: extracting, adding; and creating.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "base/convert.h"
#include "base/error.h"
#include "base/log.h"
#include "tests/platform/scratch.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/scripted_confirm.h"
#include "tests/support/stored_volume.h"
#include "tests/support/system45_builder.h"
#include "tests/volume/dir_ops_support.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

constexpr const char *wiped = "\t\t\t\t\t\t\t";

// The folder of the host that paths without one mean.
class PresentFolder
{
  public:
    explicit PresentFolder(const std::string &folder) : old_(std::filesystem::current_path())
    {
        std::filesystem::current_path(folder);
    }
    ~PresentFolder()
    {
        std::filesystem::current_path(old_);
    }
    PresentFolder(const PresentFolder &) = delete;
    PresentFolder &operator=(const PresentFolder &) = delete;

  private:
    std::filesystem::path old_;
};

std::string records(uint32_t n, char fill)
{
    return std::string(size_t{n} * record_bytes, fill);
}

std::string only_front(const std::string &text, uint32_t bytes, uint32_t of_records)
{
    std::string whole = text.substr(0, bytes);
    whole.resize(size_t{of_records} * record_bytes);
    return whole;
}

// Records of a volume as text.
std::string stored_text(const Bytes &image, const std::string &name)
{
    const StoredVolume volume = stored_lif(image);
    const StoredFile *file = file_named(volume, name);
    if (file == nullptr) return "no such file";
    const Bytes bytes = content_of(image, *file);
    return std::string(bytes.begin(), bytes.end());
}

// A DATA file whose third item is no number: its digits aren't digits.
LifEntry invalid_data()
{
    return {.name = "BAD", .type = 0xE848, .content = {0, 10, 0, 1, 0, 10, 0, 2, 0, 0xAA, 0, 0}};
}

}

// ---- extracting ----------------------------------------------------------------------------------------------

TEST(DirOpsExtract, FilesGoToTheFolder)
{
    const OpenVolume open(three_files());
    const Scratch host;
    const std::string folder = host.path("out");
    EXPECT_EQ(printed_by(open.md, {.command = COMMAND_EXTRACT, .filespec = Names{"T*"}, .dest_path = folder}),
              std::string("Extracting TWO          \nRecord 0 (33%)Record 1 (66%)Record 2 (100%)") + wiped +
                  "Extracting THREE          \nRecord 0 (100%)" + wiped);
    EXPECT_EQ(content(folder + "/TWO.ASCII"), only_front(records(3, 'b'), 700, 3));
    EXPECT_EQ(content(folder + "/THREE.ASCII"), only_front(records(1, 'c'), 100, 1));
    EXPECT_FALSE(exists(folder + "/ONE.ASCII"));
}

TEST(DirOpsExtract, WithoutAFolderThePresentOneIsMeant)
{
    const OpenVolume open(three_files());
    const Scratch host;
    const PresentFolder here(host.folder());
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_EXTRACT, .filespec = Names{"ONE"}}), 0);
    EXPECT_EQ(content(host.path("ONE.ASCII")), records(1, 'a'));
}

TEST(DirOpsExtract, NewNameStandsAsItIs)
{
    const OpenVolume open(three_files());
    const Scratch host;
    EXPECT_EQ(
        dir_ops(open.md,
                {.command = COMMAND_EXTRACT, .filespec = Names{"ONE"}, .dest_path = host.folder(), .dest_file = "new"}),
        0);
    EXPECT_EQ(content(host.path("new")), records(1, 'a'));
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_EXTRACT, .filespec = Names{"ONE"}, .dest_file = host.path("other")}),
              0);
    EXPECT_EQ(content(host.path("other")), records(1, 'a'));
}

TEST(DirOpsExtract, ConversionIsAskedForByTheMedium)
{
    LifVolume volume = three_files();
    volume.entries[0].content = lif_ascii({"LINE"});
    const OpenVolume open(volume);
    const Scratch host;
    open.md->use_file_conversion = 1;
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_EXTRACT, .filespec = Names{"ONE"}, .dest_path = host.folder()}), 0);
    EXPECT_EQ(content(host.path("ONE.ASCII.txt")), "LINE\r\n");
}

TEST(DirOpsExtract, WithoutQuestionsWhatExistsIsOverwritten)
{
    const OpenVolume open(three_files());
    const Scratch host;
    host.file("ONE.ASCII", "old");
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_EXTRACT, .filespec = Names{"ONE"}, .dest_path = host.folder()}), 0);
    EXPECT_EQ(content(host.path("ONE.ASCII")), records(1, 'a'));
}

TEST(DirOpsExtract, YesOverwritesAndNoAndCancelLeaveTheFileAndGoOn)
{
    const OpenVolume open(three_files());
    const Scratch host;
    for (const char *name : {"ONE.ASCII", "TWO.ASCII", "THREE.ASCII"}) host.file(name, "old");
    const ScriptedConfirm script({answer_no, answer_yes, answer_cancel});
    EXPECT_EQ(
        printed_by(open.md,
                   {.command = COMMAND_EXTRACT, .dest_path = host.folder(), .confirm = ScriptedConfirm::callback}),
        std::string("Extracting ONE          \nExtracting TWO          \nRecord 0 (33%)Record 1 (66%)Record 2 (100%)") +
            wiped + "Extracting THREE          \n");
    EXPECT_EQ(script.asked, (std::vector<Question>{{3, "File \"ONE\" already exists. Overwrite"},
                                                   {3, "File \"TWO\" already exists. Overwrite"},
                                                   {3, "File \"THREE\" already exists. Overwrite"}}));
    EXPECT_EQ(content(host.path("ONE.ASCII")), "old");
    EXPECT_EQ(content(host.path("TWO.ASCII")), only_front(records(3, 'b'), 700, 3));
    EXPECT_EQ(content(host.path("THREE.ASCII")), "old");
}

TEST(DirOpsExtract, TwoPassesWithAnAnswerOfNo)
{
    const OpenVolume open(three_files());
    const Scratch host;
    const DirOrder order = {
        .command = COMMAND_EXTRACT, .dest_path = host.folder(), .confirm = ScriptedConfirm::callback};
    {
        const ScriptedConfirm silent({});
        EXPECT_EQ(dir_ops(open.md, order), 0);
    }
    host.file("TWO.ASCII", "changed");
    const ScriptedConfirm script({answer_no, answer_no, answer_no});
    EXPECT_EQ(dir_ops(open.md, order), 0);
    EXPECT_EQ(content(host.path("TWO.ASCII")), "changed");
}

TEST(DirOpsExtract, RepeatThatFailsEndsTheWalk)
{
    const OpenVolume open(three_files());
    const Scratch host;
    const LogCapture log(0);
    const ScriptedConfirm script({answer_yes});
    // The image itself exists, and is never overwritten.
    const std::string image = open.file.path();
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_EXTRACT,
                                .filespec = Names{"ONE", "TWO"},
                                .dest_file = image,
                                .confirm = ScriptedConfirm::callback}),
              -1);
    EXPECT_EQ(global_error, 208u);
    EXPECT_EQ(names_of(stored_lif(open.file.bytes())), (Names{"ONE", "TWO", "THREE"}));
}

TEST(DirOpsExtract, InvalidDataIsToldAndTheWalkGoesOn)
{
    LifVolume volume = three_files();
    volume.entries.insert(volume.entries.begin(), invalid_data());
    const OpenVolume open(volume);
    open.md->use_file_conversion = 1;
    const Scratch host;
    const LogCapture log(1);
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_EXTRACT, .dest_path = host.folder()}), 0);
    EXPECT_TRUE(contains(log.text(), "Warning: File \"BAD\" contains invalid data.\n")) << log.text();
    EXPECT_EQ(content(host.path("BAD.DATA.txt")), "1\n2\n");
    EXPECT_TRUE(exists(host.path("THREE.ASCII.txt")));
}

// Without a log the writing of a line of it fails, and that is the last error then.
TEST(DirOpsExtract, Hazard_J20_ErrorAheadOfALogLineIsLost)
{
    LifVolume volume = three_files();
    volume.entries = {invalid_data()};
    const OpenVolume open(volume);
    open.md->use_file_conversion = 1;
    const Scratch host;
    const LogCapture restored(1);
    logfile = 0;
    const DirOrder order = {.command = COMMAND_EXTRACT, .dest_path = host.folder()};
    EXPECT_EQ(dir_ops(open.md, order), 0);
    EXPECT_EQ(global_error, 303u);
    const LogCapture log(0);
    EXPECT_EQ(dir_ops(open.md, order), 0);
    EXPECT_EQ(global_error, 214u);
    EXPECT_TRUE(contains(error_text(), "BAD.DATA.txt")) << error_text();
}

TEST(DirOpsExtract, OtherErrorsEndTheWalk)
{
    const OpenVolume open(three_files());
    const Scratch host;
    const LogCapture log(1);
    host.file("folder", "a file");
    const DirOrder order = {.command = COMMAND_EXTRACT, .dest_path = host.path("folder")};
    EXPECT_EQ(printed_by(open.md, order, -1), "Extracting ONE          \n");
    EXPECT_EQ(content(host.path("folder")), "a file");
}

TEST(DirOpsExtract, NothingIsWrittenToTheMedium)
{
    const OpenVolume open(disk45_image(three_disk_files()));
    const Bytes before = open.file.bytes();
    const Scratch host;
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_EXTRACT, .dest_path = host.folder()}), 0);
    EXPECT_EQ(open.file.bytes(), before);
    EXPECT_EQ(content(host.path("GAMMA.&512.BDAT")), records(8, 'c'));
}

// ---- extracting a tree ---------------------------------------------------------------------------------------

TEST(DirOpsExtract, Hazard_J13_TreeBecomesFoldersOfTheHost)
{
    const TreeMedium tree(two_levels());
    const Scratch host;
    const std::string folder = host.path("out");
    EXPECT_EQ(printed_by(tree.md, {.command = COMMAND_EXTRACT, .dest_path = folder, .recursive = true}),
              std::string("Extracting A          \nRecord 0 (100%)") + wiped + "Creating directory \"D1\"          \n" +
                  wiped + "Extracting B          \nRecord 0 (100%)" + wiped + "Creating directory \"D2\"          \n" +
                  wiped + "Extracting C          \nRecord 0 (100%)" + wiped +
                  "Extracting E          \nRecord 0 (100%)" + wiped);
    EXPECT_EQ(content(folder + "/A.SDATA"), records(1, 'a'));
    EXPECT_EQ(content(folder + "/D1/B.SDATA"), records(1, 'b'));
    EXPECT_EQ(content(folder + "/D1/D2/C.SDATA"), records(1, 'c'));
    EXPECT_EQ(content(folder + "/E.SDATA"), records(1, 'e'));
}

TEST(DirOpsExtract, TreeGoesToThePresentFolderWithoutAnother)
{
    const TreeMedium tree(two_levels());
    const Scratch host;
    const PresentFolder here(host.folder());
    EXPECT_EQ(dir_ops(tree.md, {.command = COMMAND_EXTRACT, .recursive = true}), 0);
    EXPECT_EQ(content(host.path("A.SDATA")), records(1, 'a'));
    EXPECT_EQ(content(host.folder() + "/D1/D2/C.SDATA"), records(1, 'c'));
}

TEST(DirOpsExtract, WithoutRecursionADirectoryBecomesAnEmptyFolder)
{
    const TreeMedium tree(two_levels());
    const Scratch host;
    EXPECT_EQ(dir_ops(tree.md, {.command = COMMAND_EXTRACT, .filespec = Names{"D1"}, .dest_path = host.folder()}), 0);
    EXPECT_TRUE(std::filesystem::is_empty(host.path("D1")));
}

TEST(DirOpsExtract, EmptyDirectoryIsLeftAtOnce)
{
    const TreeMedium tree({{.name = "D1", .directory = true}, {.name = "A", .fill = 'a'}});
    const Scratch host;
    EXPECT_EQ(dir_ops(tree.md, {.command = COMMAND_EXTRACT, .dest_path = host.folder(), .recursive = true}), 0);
    EXPECT_EQ(content(host.path("A.SDATA")), records(1, 'a'));
}

TEST(DirOpsExtract, FilesOfADirectoryThatDoesNotMatchStillHaveItsFolder)
{
    const TreeMedium tree(two_levels());
    const Scratch host;
    const DirOrder order = {
        .command = COMMAND_EXTRACT, .filespec = Names{"B", "E"}, .dest_path = host.folder(), .recursive = true};
    EXPECT_EQ(dir_ops(tree.md, order), 0);
    EXPECT_EQ(content(host.folder() + "/D1/B.SDATA"), records(1, 'b'));
    EXPECT_EQ(content(host.path("E.SDATA")), records(1, 'e'));
}

TEST(DirOpsExtract, StartDirectoryLeavesItsOwnNameOut)
{
    const TreeMedium tree(two_levels());
    const Scratch host;
    const DirOrder order = {.command = COMMAND_EXTRACT,
                            .dest_path = host.folder(),
                            .start_directory = tree.find("D1"),
                            .level = 2,
                            .recursive = true};
    EXPECT_EQ(dir_ops(tree.md, order), 0);
    EXPECT_EQ(content(host.path("B.SDATA")), records(1, 'b'));
    EXPECT_EQ(content(host.folder() + "/D2/C.SDATA"), records(1, 'c'));
    EXPECT_FALSE(exists(host.path("A.SDATA")));
}

TEST(DirOpsExtract, NamesOfDirectoriesDoNotLeadOutOfTheFolder)
{
    const TreeMedium tree({{.name = "..", .directory = true, .children = {{.name = "A", .fill = 'a'}}},
                           {.name = "X/../Y", .directory = true, .children = {{.name = "B", .fill = 'b'}}},
                           {.name = "E", .fill = 'e'}});
    const Scratch host;
    const std::string folder = host.path("out");
    EXPECT_EQ(dir_ops(tree.md, {.command = COMMAND_EXTRACT, .dest_path = folder, .recursive = true}), 0);
    std::vector<std::string> found;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(host.folder()))
        found.push_back(std::filesystem::relative(entry.path(), host.folder()).generic_string());
    EXPECT_EQ(found.size(), 6u);
    for (const std::string &path : found) EXPECT_EQ(path.substr(0, 3), "out") << path;
    EXPECT_EQ(content(folder + "/___/A.SDATA"), records(1, 'a'));
    EXPECT_EQ(content(folder + "/E.SDATA"), records(1, 'e'));
}

TEST(DirOpsExtract, KeepsRepeatedFileInFirstFolder)
{
    const TreeMedium tree(two_levels());
    const Scratch host;
    std::filesystem::create_directory(host.path("D1"));
    write_file(host.folder() + "/D1/B.SDATA", {'o'});
    const ScriptedConfirm script({answer_yes});
    const DirOrder order = {.command = COMMAND_EXTRACT,
                            .filespec = Names{"B"},
                            .dest_path = host.folder(),
                            .confirm = ScriptedConfirm::callback,
                            .recursive = true};
    EXPECT_EQ(dir_ops(tree.md, order), 0);
    EXPECT_EQ(content(host.folder() + "/D1/B.SDATA"), "o");
    EXPECT_EQ(content(host.path("B.SDATA")), records(1, 'b'));
}

// ---- creating ------------------------------------------------------------------------------------------------

TEST(DirOpsCreate, FileIsFilledWithTheWord60)
{
    const OpenVolume open(three_files());
    FileInfo info = new_file("NEW", "SDATA", 600);
    EXPECT_EQ(printed_by(open.md, {.command = COMMAND_CREATE, .info = &info}), "");
    const Bytes image = open.file.bytes();
    const StoredVolume volume = stored_lif(image);
    EXPECT_EQ(names_of(volume), (Names{"ONE", "TWO", "THREE", "NEW"}));
    const StoredFile &file = volume.files[3];
    EXPECT_EQ(file.type, 0xE0D0);
    EXPECT_EQ(file.start, 10u);
    EXPECT_EQ(file.records, 3u);
    std::string wanted;
    for (int i = 0; i < 3 * 128; ++i) wanted += std::string("\0<", 2);
    EXPECT_EQ(stored_text(image, "NEW"), wanted);
}

TEST(DirOpsCreate, FileHasThePresentTime)
{
    const OpenVolume open(three_files());
    FileInfo info = new_file("NEW", "SDATA", 600);
    info.date.tm_year = 11;
    TimeRecord now = {};
    get_current_datetime(&now);
    ASSERT_EQ(dir_ops(open.md, {.command = COMMAND_CREATE, .info = &info}), 0);
    EXPECT_EQ(info.date.tm_year, now.tm_year);
    uint8_t bytes[6];
    tm2datetime(bytes, &info.date);
    const Bytes rest = stored_lif(open.file.bytes()).files[3].rest;
    EXPECT_EQ(Bytes(rest.begin(), rest.begin() + 6), Bytes(bytes, bytes + 6));
}

TEST(DirOpsCreate, FileOnADisk)
{
    const OpenVolume open(disk45_image(three_disk_files()));
    FileInfo info = new_file("NEW", "DATA", 512);
    ASSERT_EQ(dir_ops(open.md, {.command = COMMAND_CREATE, .info = &info}), 0);
    const StoredVolume volume = stored_disk(open.file.bytes());
    EXPECT_EQ(volume.files[3].type, 0x2400);
    EXPECT_EQ(volume.files[3].start, 76u);
    EXPECT_EQ(volume.files[3].count, 2u);
    EXPECT_EQ(volume.runs, (Runs{{78, 522}}));
    EXPECT_TRUE(volume.spares_agree);
}

TEST(DirOpsCreate, WhatCannotBeIsRefusedWithNothingWritten)
{
    struct Row {
        FileInfo info;
        uint32_t error;
    };
    Row rows[] = {{new_file("NEW", "NONE", 600), 200},
                  {new_file("ONE", "SDATA", 600), 210},
                  {new_file("NEW", "SDATA", 1000 * 256), 211},
                  {new_file("", "SDATA", 600), 212}};
    for (Row &row : rows) {
        const OpenVolume open(three_files());
        const LogCapture log(0);
        const Bytes before = open.file.bytes();
        EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_CREATE, .info = &row.info}), -1);
        EXPECT_EQ(global_error, row.error);
        EXPECT_EQ(open.file.bytes(), before) << row.error;
    }
    LifVolume full = lif_volume_with_files(23);
    full.records = 60;
    const OpenVolume open(full);
    FileInfo info = new_file("LAST", "SDATA", 256);
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_CREATE, .info = &info}), 0) << error_text();
    info = new_file("MORE", "SDATA", 256);
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_CREATE, .info = &info}), -1);
    EXPECT_EQ(global_error, 216u);
}

TEST(DirOpsCreate, FailedWriteLeavesTheDirectoryAsItWas)
{
    const OpenVolume open(three_files());
    const Bytes before = open.file.bytes();
    FileInfo info = new_file("NEW", "SDATA", 600);
    {
        const LogCapture log(0);
        const FileFaults faults(FileFault::write, 2);
        EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_CREATE, .info = &info}), -1);
        EXPECT_TRUE(faults.reached);
    }
    EXPECT_EQ(global_error, 303u);
    const Bytes after = open.file.bytes();
    EXPECT_EQ(Bytes(after.begin(), after.begin() + 10 * 256), Bytes(before.begin(), before.begin() + 10 * 256));
}

// ---- adding --------------------------------------------------------------------------------------------------

TEST(DirOpsAdd, FilesOfTheHostGoIn)
{
    const OpenVolume open(three_files());
    const Scratch host;
    const Names sources = {host.file("FOUR.SDATA", "4444"), host.file("FIVE", std::string(300, '5'))};
    FileInfo info{};
    EXPECT_EQ(printed_by(open.md, {.command = COMMAND_ADD, .filespec = sources, .info = &info}),
              "Adding " + sources[0] + "          \nRecord 0 (100%)" + wiped + "Adding " + sources[1] +
                  "          \nRecord 0 (50%)Record 1 (100%)" + wiped);
    const Bytes image = open.file.bytes();
    EXPECT_EQ(names_of(stored_lif(image)), (Names{"ONE", "TWO", "THREE", "FOUR", "FIVE"}));
    EXPECT_EQ(stored_text(image, "FOUR"), only_front("4444", 4, 1));
    EXPECT_EQ(stored_text(image, "FIVE"), only_front(std::string(300, '5'), 300, 2));
}

// What is found out about one file isn't taken over for the next.
TEST(DirOpsAdd, TemplateStaysAsItWas)
{
    const OpenVolume open(three_files());
    const Scratch host;
    FileInfo info{};
    const FileInfo before = info;
    const Names sources = {host.file("A.SDATA", "a"), host.file("B", "b")};
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_ADD, .filespec = sources, .info = &info}), 0);
    EXPECT_EQ(std::memcmp(&info, &before, sizeof info), 0);
    const StoredVolume volume = stored_lif(open.file.bytes());
    EXPECT_EQ(volume.files[3].type, 0xE0D0);
    EXPECT_EQ(volume.files[4].type, 0x0001);
}

TEST(DirOpsAdd, TypeOfTheTemplateIsTaken)
{
    const OpenVolume open(three_files());
    const Scratch host;
    FileInfo info = new_file("", "SDATA", 0);
    info.type = 0xE0D0;
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_ADD, .filespec = Names{host.file("A", "a")}, .info = &info}), 0);
    EXPECT_EQ(stored_lif(open.file.bytes()).files[3].type, 0xE0D0);
}

TEST(DirOpsAdd, ConversionIsAskedForByTheMedium)
{
    const OpenVolume open(three_files());
    open.md->use_file_conversion = 1;
    const Scratch host;
    FileInfo info{};
    const Names sources = {host.file("NOTE.TXT", "LINE\n"), host.file("NOTE2", "LINE\n")};
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_ADD, .filespec = sources, .info = &info}), 0);
    EXPECT_EQ(stored_text(open.file.bytes(), "NOTE").substr(0, 8), std::string("\0\4LINE\xFF\xFF", 8));
    EXPECT_EQ(stored_text(open.file.bytes(), "NOTE2").substr(0, 6), std::string("LINE\n\0", 6));
}

TEST(DirOpsAdd, WithoutQuestionsWhatExistsGivesWay)
{
    const OpenVolume open(three_files());
    const Scratch host;
    FileInfo info{};
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_ADD, .filespec = Names{host.file("ONE", "new")}, .info = &info}), 0);
    EXPECT_EQ(names_of(stored_lif(open.file.bytes())), (Names{"TWO", "THREE", "ONE"}));
    EXPECT_EQ(stored_text(open.file.bytes(), "ONE"), only_front("new", 3, 1));
}

TEST(DirOpsAdd, YesReplacesNoPassesOverAndCancelEndsTheWalk)
{
    const OpenVolume open(three_files());
    const Scratch host;
    FileInfo info{};
    const Names sources = {host.file("ONE", "new one"), host.file("TWO", "new two"), host.file("FOUR", "four"),
                           host.file("THREE", "new three"), host.file("FIVE", "five")};
    const ScriptedConfirm script({answer_no, answer_yes, answer_cancel});
    const DirOrder order = {
        .command = COMMAND_ADD, .filespec = sources, .info = &info, .confirm = ScriptedConfirm::callback};
    EXPECT_EQ(dir_ops(open.md, order), 0);
    EXPECT_EQ(script.asked, (std::vector<Question>{{3, "File \"" + sources[0] + "\" already exists. Overwrite"},
                                                   {3, "File \"" + sources[1] + "\" already exists. Overwrite"},
                                                   {3, "File \"" + sources[3] + "\" already exists. Overwrite"}}));
    const Bytes image = open.file.bytes();
    EXPECT_EQ(names_of(stored_lif(image)), (Names{"ONE", "THREE", "TWO", "FOUR"}));
    EXPECT_EQ(stored_text(image, "ONE"), records(1, 'a'));
    EXPECT_EQ(stored_text(image, "TWO"), only_front("new two", 7, 1));
    EXPECT_EQ(stored_text(image, "THREE"), only_front(records(1, 'c'), 100, 1));
}

TEST(DirOpsAdd, OtherErrorsEndTheWalkAndWhatWasDoneIsWritten)
{
    const OpenVolume open(three_files());
    const Scratch host;
    const LogCapture log(0);
    FileInfo info{};
    const Names sources = {host.file("FOUR", "4"), host.path("missing"), host.file("FIVE", "5")};
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_ADD, .filespec = sources, .info = &info}), -1);
    EXPECT_EQ(global_error, 300u);
    EXPECT_EQ(names_of(stored_lif(open.file.bytes())), (Names{"ONE", "TWO", "THREE", "FOUR"}));
}

TEST(DirOpsAdd, RepeatThatFailsEndsTheWalk)
{
    const OpenVolume open(three_files());
    const Scratch host;
    const LogCapture log(0);
    FileInfo info{};
    const Bytes before = open.file.bytes();
    const Names sources = {host.file("ONE", std::string(200 * 256, 'x')), host.file("FIVE", "5")};
    const ScriptedConfirm script({answer_yes});
    const DirOrder order = {
        .command = COMMAND_ADD, .filespec = sources, .info = &info, .confirm = ScriptedConfirm::callback};
    EXPECT_EQ(dir_ops(open.md, order), -1);
    EXPECT_EQ(global_error, 211u);
    EXPECT_EQ(open.file.bytes(), before); // nothing had succeeded, so no table was written
}

TEST(DirOpsAdd, NoNamesAtAllAreNothingToDo)
{
    const OpenVolume open(three_files());
    FileInfo info{};
    const Bytes before = open.file.bytes();
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_ADD, .info = &info}), 0);
    EXPECT_EQ(dir_ops(open.md, {.command = COMMAND_ADD, .filespec = Names{}, .info = &info}), 0);
    EXPECT_EQ(open.file.bytes(), before);
}

TEST(DirOpsAdd, LongPathIsPrintedWhole)
{
    const OpenVolume open(three_files());
    const LogCapture log(1);
    FileInfo info{};
    const std::string path(3000, 'p');
    const std::string text = printed_by(open.md, {.command = COMMAND_ADD, .filespec = Names{path}, .info = &info}, -1);
    EXPECT_EQ(text, "Adding " + path + "          \n");
}
