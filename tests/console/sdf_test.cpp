// Volumes with directories: their trees listed and copied, and names in them that mean harm.
#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/console/copies.h"
#include "tests/support/sdf_builder.h"

using tests::Bytes;
using tests::error_line;
using tests::json_of;
using tests::Names;
using tests::Outcome;
using tests::run;
using tests::sdf_directory;
using tests::sdf_file;
using tests::sdf_image;
using tests::SdfNode;
using tests::SdfVolume;
using tests::TemporaryFile;
using tests::TemporaryFolder;

namespace
{

namespace fs = std::filesystem;

TemporaryFile file_of(const SdfVolume &volume)
{
    return TemporaryFile(sdf_image(volume).bytes, ".sdf");
}

SdfVolume volume_of(const std::vector<SdfNode> &files)
{
    SdfVolume volume;
    volume.files = files;
    return volume;
}

// Lines behind the head, without their dates.
Names listed(const std::vector<std::string> &words)
{
    const Outcome outcome = run(words);
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    const std::string head_end = "=== ====\n";
    const size_t begin = outcome.output.find(head_end);
    EXPECT_NE(begin, std::string::npos) << outcome.output;
    if (begin == std::string::npos) return {};
    std::istringstream lines(outcome.output.substr(begin + head_end.size()));
    Names names;
    for (std::string line; std::getline(lines, line);) names.push_back(line.substr(0, line.find(' ')));
    return names;
}

// "ls MEDIUM WORD..." and the options.
Names ls(const TemporaryFile &volume, const Names &words)
{
    Names line = {"ls", volume.path()};
    line.insert(line.end(), words.begin(), words.end());
    return listed(line);
}

struct Got {
    Outcome outcome;
    Names paths; // of all files below the folder, directories with a slash at their ends, sorted
};

Names paths_below(const std::string &folder)
{
    Names paths;
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(folder)) {
        const std::string path = fs::relative(entry.path(), folder).generic_string();
        paths.push_back(entry.is_directory() ? path + "/" : path);
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

// "get MEDIUM -d FOLDER WORD...", in a folder inside another one in which nothing else may appear.
struct Target {
    Got get(const TemporaryFile &volume, const Names &words) const
    {
        Names line = {"get", volume.path(), "-d", outer.path("inner")};
        line.insert(line.end(), words.begin(), words.end());
        Got got;
        got.outcome = run(line);
        for (const std::string &name : outer.names()) EXPECT_EQ(name, "inner") << "outside the folder";
        if (fs::exists(outer.path("inner"))) got.paths = paths_below(outer.path("inner"));
        return got;
    }

    std::string text(const std::string &path) const
    {
        return tests::file_text(outer.path("inner/" + path));
    }

    TemporaryFolder outer;
};

const Names whole_tree = {"FIRST.DATA",
                          "LEVEL1/",
                          "LEVEL1/DATA.DATA",
                          "LEVEL1/LEVEL2/",
                          "LEVEL1/LEVEL2/DATA.DATA",
                          "LEVEL1/LEVEL2/LEVEL3/",
                          "LEVEL1/LEVEL2/LEVEL3/DATA.DATA",
                          "LEVEL1/LEVEL2/LEVEL3/LEVEL4/",
                          "LEVEL1/LEVEL2/LEVEL3/LEVEL4/DATA.DATA",
                          "LEVEL1/LEVEL2/LEVEL3/LEVEL4/LEVEL5/",
                          "LEVEL1/LEVEL2/LEVEL3/LEVEL4/LEVEL5/DEEP.DATA"};

}

TEST(SdfLs, PrintsTheCatalogue)
{
    SdfVolume contents = tests::five_levels();
    contents.free_blocks = 21; // of which those beyond the last whole byte of the map don't count
    const TemporaryFile volume = file_of(contents);
    const size_t available = 21 - volume.bytes().size() / 256 % 8;
    const Outcome outcome = run({"ls", volume.path()});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output, std::string(volume.path()) +
                                  "\nLABEL: TESTVOLUME\n"
                                  "FORMAT: SDF\n"
                                  "AVAILABLE SPACE: " +
                                  std::to_string(available) +
                                  "\n"
                                  "                           SYS  FILE   NUMBER   RECORD     MODIFIED    PUB OPEN\n"
                                  "FILE NAME             LEV TYPE  TYPE  RECORDS   LENGTH DATE       TIME ACC STAT\n"
                                  "===================== === ==== ===== ======== ======== =============== === ====\n"
                                  "FIRST                   1      DATA         4      256 15-Mar-84 09:07 MRW\n"
                                  "LEVEL1                  1      DIR          2       24 15-Mar-84 09:07 MRW\n");
}

TEST(SdfLs, TreeIsShiftedByItsLevels)
{
    const TemporaryFile volume = file_of(tests::five_levels());
    EXPECT_EQ(ls(volume, {"-R"}), (Names{"FIRST", "LEVEL1", "/DATA", "/LEVEL2", "//DATA", "//LEVEL3", "///DATA",
                                         "///LEVEL4", "////DATA", "////LEVEL5", "/////DEEP"}));
}

TEST(SdfLs, DirectoryGivesWhatIsInIt)
{
    const TemporaryFile volume = file_of(tests::five_levels());
    EXPECT_EQ(ls(volume, {"LEVEL1"}), (Names{"DATA", "LEVEL2"}));
    EXPECT_EQ(ls(volume, {"/LEVEL1/"}), (Names{"DATA", "LEVEL2"}));
    EXPECT_EQ(ls(volume, {"LEVEL1/LEVEL2/LEVEL3/LEVEL4/LEVEL5"}), Names{"DEEP"});
    EXPECT_EQ(ls(volume, {"/"}), (Names{"FIRST", "LEVEL1"}));
    EXPECT_EQ(ls(volume, {"-R", "LEVEL1/LEVEL2/LEVEL3/LEVEL4"}), (Names{"DATA", "LEVEL5", "/DEEP"}));
}

TEST(SdfLs, PatternBehindADirectory)
{
    const TemporaryFile volume = file_of(tests::five_levels());
    EXPECT_EQ(ls(volume, {"LEVEL1/D*"}), Names{"DATA"});
    EXPECT_EQ(ls(volume, {"LEVEL1/*"}), (Names{"DATA", "LEVEL2"}));
    EXPECT_EQ(ls(volume, {"LEVEL*"}), Names{"LEVEL1"}); // the entry, not what is in it
    EXPECT_EQ(ls(volume, {"-R", "D*"}), (Names{"/DATA", "//DATA", "///DATA", "////DATA", "/////DEEP"}));
    EXPECT_EQ(ls(volume, {"-R", "LEVEL1/LEVEL2/LEVEL3/D*"}), (Names{"DATA", "/DATA", "//DEEP"}));
    EXPECT_EQ(ls(volume, {"LEVEL1/LEVEL2", "FIRST", "LEVEL1/D*", "LEVEL1/L*"}),
              (Names{"DATA", "LEVEL3", "FIRST", "DATA", "LEVEL2"}));
}

TEST(SdfLs, EmptyDirectoryIsNoError)
{
    const TemporaryFile volume = file_of(volume_of({sdf_file("A", Bytes(5)), sdf_directory("EMPTY", {})}));
    EXPECT_EQ(ls(volume, {"EMPTY"}), Names{});
    EXPECT_EQ(ls(volume, {"EMPTY/"}), Names{});
    EXPECT_EQ(ls(volume, {"-R"}), (Names{"A", "EMPTY"}));
}

TEST(SdfLs, PathThatLeadsNowhereIsAnError)
{
    const TemporaryFile volume = file_of(tests::five_levels());
    for (const char *word : {"LEVEL2", "LEVEL1/NOTHING", "LEVEL1/LEVEL3/DATA", "level1", "FIRST/", "NOTHING/*"}) {
        const Outcome outcome = run({"ls", volume.path(), word});
        EXPECT_EQ(outcome.code, 1) << word;
        EXPECT_EQ(outcome.errors, error_line("File not found")) << word;
    }
}

TEST(SdfLs, NameWithASlashIsFoundAtTheTop)
{
    const TemporaryFile volume = file_of(volume_of({sdf_file("A/B", Bytes(5)), sdf_file("C", Bytes(5))}));
    EXPECT_EQ(ls(volume, {"A/B"}), Names{"A/B"});
    EXPECT_EQ(ls(volume, {"A*"}), Names{"A/B"});
}

TEST(SdfLs, NulsInsideNamesAreBlanks)
{
    const TemporaryFile volume = file_of(volume_of({sdf_file(std::string("A\0B", 3), Bytes(5))}));
    EXPECT_EQ(ls(volume, {"A B"}), Names{"A"});
}

TEST(SdfLs, JsonOfATree)
{
    const TemporaryFile volume = file_of(tests::five_levels());
    const rapidjson::Document document = json_of(run({"ls", "--json", "-R", volume.path()}));
    EXPECT_STREQ(document["format"].GetString(), "SDF");
    const auto entries = document["entries"].GetArray();
    ASSERT_EQ(entries.Size(), 11U);
    EXPECT_EQ(tests::json_text(entries[0]),
              R"({"name":"FIRST","visible":"FIRST.DATA","type":59849,"type_text":"DATA","system":"","location":)" +
                  std::to_string(entries[0]["location"].GetUint()) +
                  R"(,"size":1000,"records":4,"record_length":256,"date":"1984-03-15T09:07:30","deleted":false,)"
                  R"("directory":false,"protected":false,"hidden":false,"level":1,"name_hex":"4649525354"})");
    EXPECT_FALSE(entries[1].HasMember("path"));
    EXPECT_TRUE(entries[1]["directory"].GetBool());
    EXPECT_STREQ(entries[2]["path"].GetString(), "LEVEL1");
    EXPECT_EQ(entries[2]["level"].GetUint(), 2U);
    EXPECT_STREQ(entries[10]["name"].GetString(), "DEEP");
    EXPECT_STREQ(entries[10]["path"].GetString(), "LEVEL1/LEVEL2/LEVEL3/LEVEL4/LEVEL5");
    EXPECT_EQ(entries[10]["level"].GetUint(), 6U);
}

TEST(SdfInfo, TellsAboutTheVolume)
{
    SdfVolume contents = tests::five_levels();
    contents.password = "SECRET";
    contents.needs_check = 1;
    contents.boot_blocks = 2;
    const TemporaryFile volume = file_of(contents);
    const Outcome outcome = run({"info", volume.path()});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "");
    for (const char *line :
         {"Image format: Structured Directory Format (SDF) id=$0000 version=2\n", "Volume label: \"TESTVOLUME\"\n",
          "Block size: 256\n", "Boot area of size 2 blocks starts at block #1\n",
          "Volume is password protected (password is \"SECRET\")\n", "File system needs check (may be currupted)\n"}) {
        EXPECT_NE(outcome.output.find(line), std::string::npos) << line << outcome.output;
    }
}

TEST(SdfInfo, Json)
{
    SdfVolume contents = tests::five_levels();
    contents.password = "SECRET";
    contents.needs_check = 1;
    const TemporaryFile volume = file_of(contents);
    const rapidjson::Document document = json_of(run({"info", "--json", volume.path()}));
    EXPECT_EQ(document["format"].GetUint(), 4U);
    EXPECT_STREQ(document["password"].GetString(), "SECRET");
    EXPECT_EQ(document["needs_check"].GetUint(), 1U);
    EXPECT_EQ(document["block_size"].GetUint(), 256U);
    EXPECT_EQ(document["inode_count"].GetUint(), sdf_image(contents).inode_count);
    EXPECT_STREQ(document["backup_date"].GetString(), "1984-03-16T00:01:00");
}

// ---- get and cat -----------------------------------------------------------------------------------------

TEST(SdfGet, WholeTree)
{
    const TemporaryFile volume = file_of(tests::five_levels());
    const Target target;
    const Got got = target.get(volume, {"-R"});
    EXPECT_EQ(got.outcome.code, 0) << got.outcome.errors;
    EXPECT_EQ(got.outcome.errors, "");
    EXPECT_EQ(got.paths, whole_tree);
    EXPECT_EQ(target.text("FIRST.DATA"), std::string(1000, 'f'));
    EXPECT_EQ(target.text("LEVEL1/LEVEL2/DATA.DATA"), std::string(100, '2'));
    EXPECT_EQ(target.text("LEVEL1/LEVEL2/LEVEL3/LEVEL4/LEVEL5/DEEP.DATA"), std::string(300, 'd'));
    EXPECT_EQ(tests::written_at(target.outer.path("inner/LEVEL1/DATA.DATA")), "1984-03-15 09:07:30");
}

TEST(SdfGet, TopLevelWithoutTheOption)
{
    const TemporaryFile volume = file_of(tests::five_levels());
    const Target target;
    const Got got = target.get(volume, {});
    EXPECT_EQ(got.outcome.code, 0) << got.outcome.errors;
    EXPECT_EQ(got.paths, Names{"FIRST.DATA"});
}

TEST(SdfGet, OneDirectoryWithItsName)
{
    const TemporaryFile volume = file_of(tests::five_levels());
    const Target target;
    const Got got = target.get(volume, {"-R", "LEVEL1/LEVEL2/LEVEL3/LEVEL4"});
    EXPECT_EQ(got.outcome.code, 0) << got.outcome.errors;
    EXPECT_EQ(got.paths, (Names{"LEVEL4/", "LEVEL4/DATA.DATA", "LEVEL4/LEVEL5/", "LEVEL4/LEVEL5/DEEP.DATA"}));
}

TEST(SdfGet, EmptyDirectory)
{
    const TemporaryFile volume =
        file_of(volume_of({sdf_directory("A", {sdf_directory("B", {}), sdf_directory("C", {})})}));
    const Target target;
    EXPECT_EQ(target.get(volume, {"-R", "A/B"}).paths, Names{"B/"});
    EXPECT_EQ(target.get(volume, {"-R"}).paths, (Names{"A/", "A/B/", "A/C/", "B/"}));
}

TEST(SdfGet, DirectoryNeedsTheOption)
{
    const TemporaryFile volume = file_of(tests::five_levels());
    const Target target;
    const Got got = target.get(volume, {"LEVEL1"});
    EXPECT_EQ(got.outcome.code, 1);
    EXPECT_EQ(got.outcome.errors, error_line("File not found (\"LEVEL1\" is a directory)"));
    EXPECT_EQ(got.paths, Names{});
    EXPECT_EQ(target.get(volume, {"LEVEL1", "FIRST"}).outcome.code, 2);
}

TEST(SdfGet, FilesOfADirectoryGoToTheDestinationItself)
{
    const TemporaryFile volume = file_of(tests::five_levels());
    const Target target;
    const Got got = target.get(volume, {"LEVEL1/LEVEL2/D*", "FIRST.DATA"});
    EXPECT_EQ(got.outcome.code, 0) << got.outcome.errors;
    EXPECT_EQ(got.paths, (Names{"DATA.DATA", "FIRST.DATA"}));
    EXPECT_EQ(target.text("DATA.DATA"), std::string(100, '2'));
}

TEST(SdfGet, PatternInAllDirectories)
{
    const TemporaryFile volume = file_of(tests::five_levels());
    const Target target;
    const Got got = target.get(volume, {"-R", "DEEP", "FIRST"});
    EXPECT_EQ(got.outcome.code, 0) << got.outcome.errors;
    EXPECT_EQ(got.paths,
              (Names{"FIRST.DATA", "LEVEL1/", "LEVEL1/LEVEL2/", "LEVEL1/LEVEL2/LEVEL3/", "LEVEL1/LEVEL2/LEVEL3/LEVEL4/",
                     "LEVEL1/LEVEL2/LEVEL3/LEVEL4/LEVEL5/", "LEVEL1/LEVEL2/LEVEL3/LEVEL4/LEVEL5/DEEP.DATA"}));
}

TEST(SdfGet, OneFileByAnotherName)
{
    const TemporaryFile volume = file_of(tests::five_levels());
    const TemporaryFolder folder;
    const Outcome good = run({"get", volume.path(), "LEVEL1/LEVEL2/DATA", "-o", folder.path("out")});
    EXPECT_EQ(good.code, 0) << good.errors;
    EXPECT_EQ(folder.text("out"), std::string(100, '2'));
    for (const char *word : {"LEVEL1", "LEVEL1/LEVEL2/LEVEL3/LEVEL4/LEVEL5"}) {
        EXPECT_EQ(run({"get", "-R", volume.path(), word, "-o", folder.path("other")}).code, 64) << word;
    }
}

TEST(SdfGet, ExistingFilesStay)
{
    const TemporaryFile volume = file_of(tests::five_levels());
    const Target target;
    fs::create_directories(target.outer.path("inner/LEVEL1/LEVEL2"));
    target.outer.add("inner/LEVEL1/LEVEL2/DATA.DATA", std::string("mine"));
    const Got refused = target.get(volume, {"-R"});
    EXPECT_EQ(refused.outcome.code, 1);
    EXPECT_NE(refused.outcome.errors.find("LEVEL1/LEVEL2/DATA.DATA: Target already exists"), std::string::npos)
        << refused.outcome.errors;
    EXPECT_EQ(refused.paths, (Names{"LEVEL1/", "LEVEL1/LEVEL2/", "LEVEL1/LEVEL2/DATA.DATA"}));
    EXPECT_EQ(target.text("LEVEL1/LEVEL2/DATA.DATA"), "mine");
    const Got got = target.get(volume, {"-R", "--overwrite"});
    EXPECT_EQ(got.outcome.code, 0) << got.outcome.errors;
    EXPECT_EQ(got.paths, whole_tree);
    EXPECT_EQ(target.text("LEVEL1/LEVEL2/DATA.DATA"), std::string(100, '2'));
}

TEST(SdfGet, FolderThatCanNotBeMadeCostsWhatIsInIt)
{
    const TemporaryFile volume = file_of(tests::five_levels());
    const Target target;
    fs::create_directories(target.outer.path("inner/LEVEL1"));
    target.outer.add("inner/LEVEL1/LEVEL2", std::string("in the way"));
    const Got got = target.get(volume, {"-R"});
    EXPECT_EQ(got.outcome.code, 2);
    EXPECT_EQ(tests::error_lines(got.outcome.errors), 1U) << got.outcome.errors;
    EXPECT_NE(got.outcome.errors.find("LEVEL1/LEVEL2: Can't create directory"), std::string::npos)
        << got.outcome.errors;
    EXPECT_EQ(got.paths, (Names{"FIRST.DATA", "LEVEL1/", "LEVEL1/DATA.DATA", "LEVEL1/LEVEL2"}));
    EXPECT_EQ(target.text("LEVEL1/LEVEL2"), "in the way");
}

TEST(SdfGet, VerboseNamesEachPath)
{
    const TemporaryFile volume = file_of(tests::five_levels());
    const Target target;
    const Got got = target.get(volume, {"-v", "LEVEL1/DATA"});
    EXPECT_EQ(got.outcome.errors.rfind("LEVEL1/DATA.DATA -> ", 0), 0U) << got.outcome.errors;
}

TEST(SdfCat, FileByItsPath)
{
    SdfVolume contents = tests::five_levels();
    contents.files[1].children[0].content = {1, 0, 0, 0, 4, 'T', 'E', 'X', 'T'};
    const TemporaryFile volume = file_of(contents);
    const Outcome text = run({"cat", volume.path(), "LEVEL1/DATA"});
    EXPECT_EQ(text.code, 0) << text.errors;
    EXPECT_EQ(text.output, "TEXT\r\n");
    const Outcome raw = run({"cat", "--raw", volume.path(), "LEVEL1/LEVEL2/LEVEL3/LEVEL4/LEVEL5/DEEP.DATA"});
    EXPECT_EQ(raw.output, std::string(300, 'd'));
    EXPECT_EQ(run({"cat", volume.path(), "LEVEL1"}).errors, error_line("File not found (\"LEVEL1\" is a directory)"));
    EXPECT_EQ(run({"cat", volume.path(), "LEVEL1/NOTHING"}).code, 1);
}

// ---- what an image can't give ----------------------------------------------------------------------------

TEST(SdfGet, SeveralExtentsAreWarnedOfAndFail)
{
    SdfNode file = sdf_file("FILE", Bytes(1000, 'x'));
    file.pieces = {2};
    const TemporaryFile volume = file_of(volume_of({file}));
    const Target target;
    const Got got = target.get(volume, {});
    EXPECT_EQ(got.outcome.code, 1);
    EXPECT_NE(got.outcome.errors.find("[tarvo] Warning: FILE.DATA: it has several extents"), std::string::npos)
        << got.outcome.errors;
    EXPECT_NE(got.outcome.errors.find("FILE.DATA: File write error"), std::string::npos) << got.outcome.errors;
}

TEST(SdfGet, LargerBlocksAreWarnedOf)
{
    SdfVolume contents = volume_of({sdf_file("FILE", Bytes(1000, 'x'))});
    contents.block_size = 512;
    const TemporaryFile volume = file_of(contents);
    const Target target;
    const Got got = target.get(volume, {});
    EXPECT_EQ(got.outcome.code, 0);
    EXPECT_NE(got.outcome.errors.find("[tarvo] Warning: FILE.DATA: blocks of this volume aren't records"),
              std::string::npos)
        << got.outcome.errors;
}

TEST(SdfPut, IsRefused)
{
    const Bytes image = sdf_image(tests::five_levels()).bytes;
    const TemporaryFile volume(image, ".sdf");
    const tests::Sources sources;
    for (const Names &more : {Names{}, Names{"--damaged"}, Names{"--dry-run"}, Names{"--overwrite"}}) {
        Names line = {"put", volume.path(), sources.add("F" + std::to_string(more.size()))};
        line.insert(line.end(), more.begin(), more.end());
        const Outcome outcome = run(line);
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.errors, error_line("Not supported (change of an SDF volume)"));
        EXPECT_EQ(volume.bytes(), image);
    }
}

// ---- hostile volumes -------------------------------------------------------------------------------------

TEST(SdfGet, Hazard_C11_NamesOfDirectoriesLeadNowhere)
{
    const Names names = {"..",  ".",     "../..",     "../../x",  "/etc",   "a\\b", "..\\..\\x",
                         "C:",  "C:\\x", "a/../../b", "a:b",      "x\x01y", "con",  "..",
                         "NUL", " . ",   "-R",        "a\"b|c<>", "*?",     "~",    "$HOME"};
    std::vector<SdfNode> directories;
    for (size_t i = 0; i < names.size(); ++i) {
        directories.push_back(sdf_directory(names[i], {sdf_file("F" + std::to_string(i), Bytes(3, 'x'))}));
    }
    const TemporaryFile volume = file_of(volume_of({sdf_directory("..", directories), directories[0], directories[3]}));
    const Target target;
    const Got got = target.get(volume, {"-R"});
    size_t files = 0;
    for (const std::string &path : got.paths) {
        if (path.back() != '/') ++files;
    }
    EXPECT_EQ(files, names.size() + 2) << got.outcome.errors;
    EXPECT_EQ(got.outcome.code, 0) << got.outcome.errors;
}

TEST(SdfGet, Hazard_C11_NamesOfFilesLeadNowhere)
{
    const Names names = {"..", "../../x", "/etc/passwd", "a\\b", "C:\\x", "x\x07y"};
    std::vector<SdfNode> files;
    for (const std::string &name : names) files.push_back(sdf_file(name, Bytes(3, 'x')));
    const TemporaryFile volume = file_of(volume_of({sdf_directory("D", files)}));
    const Target target;
    EXPECT_EQ(target.get(volume, {"-R"}).paths.size(), names.size() + 1);
    EXPECT_EQ(target.get(volume, {"-R", "D"}).outcome.code, 1) << "all are there already";
}

TEST(SdfGet, NamesThatBecomeTheSameAreRefused)
{
    const TemporaryFile volume = file_of(
        volume_of({sdf_directory("A/B", {sdf_file("X", Bytes(3))}), sdf_directory("A:B", {sdf_file("X", Bytes(3))})}));
    const Target target;
    const Got got = target.get(volume, {"-R"});
    EXPECT_EQ(got.outcome.code, 1);
    EXPECT_NE(got.outcome.errors.find("A:B/X.DATA: Target already exists"), std::string::npos) << got.outcome.errors;
    EXPECT_EQ(got.paths, Names{});
}

TEST(SdfGet, Hazard_E10_LoopOfDirectoriesEnds)
{
    SdfNode loop = sdf_directory("SELF", {});
    loop.inode = 1;
    const TemporaryFile volume = file_of(volume_of({sdf_file("FILE", Bytes(3, 'x')), loop}));
    const Outcome listed = run({"ls", "-R", volume.path()});
    EXPECT_EQ(listed.code, 2);
    EXPECT_NE(listed.errors.find("maximum nesting level is 999"), std::string::npos) << listed.errors;
    EXPECT_NE(listed.output.find(" 999 "), std::string::npos);
    const Target target;
    const Got got = target.get(volume, {"-R"});
    EXPECT_NE(got.outcome.code, 0);
    EXPECT_LE(got.paths.size(), 2 * 999U);
}

TEST(SdfGet, DamagedDirectoryGivesWhatCanBeRead)
{
    SdfVolume contents = tests::five_levels();
    contents.files[0].inode = 0xFFFF;
    const TemporaryFile volume = file_of(contents);
    const Target target;
    const Got got = target.get(volume, {"-R"});
    EXPECT_EQ(got.outcome.code, 2);
    EXPECT_EQ(got.paths, Names(whole_tree.begin() + 1, whole_tree.end()));
}
