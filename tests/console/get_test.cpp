// Files out of a volume: their names, bytes, text, headers and dates, and what is refused.
#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/console/copies.h"
#include "tests/console/folder.h"
#include "tests/console/program.h"
#include "tests/support/volume_builder.h"

using tests::Bytes;
using tests::error_line;
using tests::expect_good;
using tests::lif_ascii;
using tests::LifEntry;
using tests::LifVolume;
using tests::Names;
using tests::Outcome;
using tests::run;
using tests::TemporaryFile;
using tests::TemporaryFolder;
using tests::volume_of;

namespace
{

namespace fs = std::filesystem;

const Names demo_names = {"NODATE.BAS8x",      "NOTES.TEXT",  "README.ASCII",
                          "RESULTS.&512.BDAT", "SECRET.BDAT", "SORT.CODE"};

Bytes records_of(const Bytes &image, size_t first, size_t count)
{
    const auto begin = image.begin() + static_cast<std::ptrdiff_t>(first * 256);
    return Bytes(begin, begin + static_cast<std::ptrdiff_t>(count * 256));
}

Bytes padded(Bytes content)
{
    content.resize((content.size() + 255) / 256 * 256);
    return content;
}

// Runs "get VOLUME WORD... -d FOLDER".
Outcome get(const TemporaryFile &volume, Names words, const TemporaryFolder &folder)
{
    Names line = {"get", volume.path(), "-d", folder.path()};
    line.insert(line.end(), words.begin(), words.end());
    return run(line);
}

// The path that the program makes of a folder and a name.
std::string joined(const std::string &folder, const std::string &name)
{
    return folder + (tests::runs_natively() ? "/" : "\\") + name;
}

LifVolume mixed_volume() // text, bytes of no known meaning, and a purged file
{
    return volume_of({{.name = "NOTES", .content = lif_ascii({"one", "", "three"})},
                      {.name = "CODE", .type = 0xE971, .content = Bytes(300, 0xA5)},
                      {.name = "OLD", .type = 0}});
}

constexpr char notes_text[] = "one\r\nthree\r\n";

}

TEST(Get, CopiesAllFilesByTheNamesThatUsersSee)
{
    const Bytes image = tests::lif_image(tests::demo_volume());
    const TemporaryFile volume(image);
    const TemporaryFolder folder;
    expect_good(get(volume, {}, folder));
    EXPECT_EQ(folder.names(), demo_names);
    EXPECT_EQ(folder.bytes("README.ASCII"), records_of(image, 4, 1));
    EXPECT_EQ(folder.bytes("RESULTS.&512.BDAT"), records_of(image, 5, 7));
    EXPECT_EQ(folder.bytes("NOTES.TEXT"), records_of(image, 14, 8));
    EXPECT_EQ(folder.bytes("SORT.CODE"), records_of(image, 22, 3));
    EXPECT_EQ(folder.bytes("SECRET.BDAT"), records_of(image, 25, 2));
    EXPECT_EQ(folder.bytes("NODATE.BAS8x"), records_of(image, 27, 1));
    EXPECT_EQ(volume.bytes(), image) << "the volume stays as it is";
}

TEST(Get, WithoutAFolderFilesGoIntoThePresentOne)
{
    const TemporaryFile volume(tests::lif_image(mixed_volume()));
    const TemporaryFolder folder;
    const Outcome outcome = tests::run_in_shell({"get", volume.path(), "NOTES"}, "cd '" + folder.path() + "' && %");
    expect_good(outcome);
    EXPECT_EQ(folder.names(), Names({"NOTES.ASCII"}));
}

TEST(Get, FilesComeWithTheDatesOfTheVolume)
{
    LifVolume contents = tests::demo_volume();
    contents.entries.push_back({.name = "AUTUMN", .date = {0x86, 0x10, 0x31, 0x23, 0x59, 0x58}});
    contents.entries.push_back({.name = "LATE", .date = {0x86, 0x11, 0x01, 0x00, 0x00, 0x01}});
    contents.entries.push_back({.name = "BROKEN", .date = {0x99, 0x99, 0x99, 0x99, 0x99, 0x99}});
    const TemporaryFile volume(tests::lif_image(contents));
    const TemporaryFolder folder;
    expect_good(get(volume, {}, folder));
    EXPECT_EQ(tests::written_at(folder.path("README.ASCII")), "1985-06-21 14:05:12");
    EXPECT_EQ(tests::written_at(folder.path("NOTES.TEXT")), "2002-02-28 23:59:59");
    EXPECT_EQ(tests::written_at(folder.path("AUTUMN.ASCII")), "1986-10-31 23:59:58");
    EXPECT_EQ(tests::written_at(folder.path("LATE.ASCII")), "1986-11-01 00:00:01");
    const fs::file_time_type before = fs::last_write_time(volume.path()) - std::chrono::seconds(2);
    EXPECT_GE(fs::last_write_time(folder.path("NODATE.BAS8x")), before) << "a file without a date has that of its copy";
    EXPECT_GE(fs::last_write_time(folder.path("BROKEN.ASCII")), before);
}

TEST(Get, TextHasTheDatesToo)
{
    const TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const TemporaryFolder folder;
    expect_good(get(volume, {"README", "--txt"}, folder));
    EXPECT_EQ(tests::written_at(folder.path("README.ASCII.txt")), "1985-06-21 14:05:12");
    const std::string copy = folder.path("copy");
    expect_good(run({"get", volume.path(), "README", "-o", copy}));
    EXPECT_EQ(tests::written_at(copy), "1985-06-21 14:05:12");
}

TEST(Get, PatternsSelectAsInAListing)
{
    struct Case {
        Names patterns;
        Names files;
    };
    const Case cases[] = {
        {{"NOTES"}, {"NOTES.TEXT"}},
        {{"NOTES.TEXT"}, {"NOTES.TEXT"}},
        {{"*.BDAT"}, {"RESULTS.&512.BDAT", "SECRET.BDAT"}},
        {{"S*"}, {"SECRET.BDAT", "SORT.CODE"}},
        {{"*", "NOTES"}, demo_names},
        {{"SORT", "SORT.CODE", "S*"}, {"SECRET.BDAT", "SORT.CODE"}},
    };
    const TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    for (const Case &row : cases) {
        const TemporaryFolder folder;
        expect_good(get(volume, row.patterns, folder));
        EXPECT_EQ(folder.names(), row.files) << row.patterns[0];
    }
}

TEST(Get, PatternThatMatchesNothingIsAnErrorBesideTheOthers)
{
    const TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const TemporaryFolder folder;
    const Outcome outcome = get(volume, {"SORT", "NOTHING", "OLD", "NOTES"}, folder);
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.errors, error_line("File not found (\"NOTHING\")") + error_line("File not found (\"OLD\")") +
                                  "[tarvo] 2 of 4 files were not copied:\n"
                                  "[tarvo]        NOTHING\n"
                                  "[tarvo]        OLD\n");
    EXPECT_EQ(folder.names(), Names({"NOTES.TEXT", "SORT.CODE"}));
}

TEST(Get, NothingFoundAtAllIsAFailure)
{
    const TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const TemporaryFile empty(tests::lif_image(LifVolume{}));
    const TemporaryFolder folder;
    for (const TemporaryFile *each : {&volume, &empty}) {
        const Outcome outcome = get(*each, {"NOTHING"}, folder);
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.errors, error_line("File not found (\"NOTHING\")"));
    }
    const fs::path missing = folder.path("missing");
    EXPECT_EQ(run({"get", volume.path(), "X", "-d", missing.string()}).code, 1);
    EXPECT_FALSE(fs::exists(missing)) << "no folder for no file";
}

TEST(Get, VolumeWithoutFilesHasNothingToCopy)
{
    const TemporaryFile empty(tests::lif_image(LifVolume{}));
    const TemporaryFolder folder;
    expect_good(get(empty, {}, folder));
    EXPECT_EQ(folder.names(), Names());
}

TEST(Get, MissingFoldersAreMade)
{
    const TemporaryFile volume(tests::lif_image(mixed_volume()));
    const TemporaryFolder folder;
    for (const char *name : {"a", "b/c/d", "e/", "f//g/"}) {
        expect_good(run({"get", volume.path(), "NOTES", "-d", folder.path(name)}));
        EXPECT_TRUE(fs::exists(folder.path(name) + "/NOTES.ASCII")) << name;
    }
}

TEST(Get, FolderThatCannotBeMadeIsAFailureOnce)
{
    const TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const TemporaryFolder folder;
    const std::string in_the_way = folder.add("file", "x");
    for (const std::string &path : {in_the_way, in_the_way + "/more"}) {
        const Outcome outcome = run({"get", volume.path(), "-d", path});
        EXPECT_EQ(outcome.code, 1) << path;
        EXPECT_EQ(outcome.errors.rfind("[tarvo] Error: Can't create directory (\"" + path + "\": ", 0), 0U)
            << outcome.errors;
        EXPECT_EQ(tests::error_lines(outcome.errors), 1U) << outcome.errors;
    }
    EXPECT_EQ(folder.text("file"), "x");
}

TEST(Get, OutputNamesTheCopyOfOneFile)
{
    const TemporaryFile volume(tests::lif_image(mixed_volume()));
    const TemporaryFolder folder;
    expect_good(run({"get", volume.path(), "CODE", "-o", folder.path("c")}));
    EXPECT_EQ(folder.bytes("c"), padded(Bytes(300, 0xA5)));
    expect_good(run({"get", volume.path(), "N*", "--output=" + folder.path("n"), "--text"}));
    EXPECT_EQ(folder.text("n"), notes_text);
    expect_good(run({"get", volume.path(), "NOTES", "-o", folder.path("t"), "--txt"}));
    EXPECT_EQ(folder.text("t"), notes_text) << "the name stays as it was given";
    EXPECT_EQ(folder.names(), Names({"c", "n", "t"}));
}

TEST(Get, OutputOfSeveralFilesIsACommandLineThatIsWrong)
{
    const TemporaryFile volume(tests::lif_image(mixed_volume()));
    const TemporaryFolder folder;
    for (const std::string &target : {folder.path("x"), std::string("-")}) {
        const Outcome outcome = run({"get", volume.path(), "-o", target});
        EXPECT_EQ(outcome.code, 64) << target;
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors,
                  error_line("Only one file can go there, 2 match") + "[tarvo]        Try \"tarvo --help\".\n");
    }
    EXPECT_EQ(folder.names(), Names());
    EXPECT_EQ(run({"get", volume.path(), "NOTES", "-o", folder.path("x"), "-d", folder.path()}).code, 64);
    const Outcome idle = run({"get", volume.path(), "*", "NOTHING", "-o", folder.path("x")});
    EXPECT_EQ(tests::error_lines(idle.errors), 1U) << "what is wrong first: " << idle.errors;
    EXPECT_EQ(run({"get", volume.path(), "NOTES", "-o", ""}).code, 64);
    EXPECT_EQ(run({"get", volume.path(), "NOTES", "-d", ""}).code, 64);
}

TEST(Get, OutputToStandardOutputIsTheFileAlone)
{
    const TemporaryFile volume(tests::lif_image(mixed_volume()));
    const Outcome raw = run({"get", volume.path(), "CODE", "-o", "-"});
    EXPECT_EQ(raw.code, 0) << raw.errors;
    EXPECT_EQ(tests::bytes_of(raw.output), padded(Bytes(300, 0xA5)));
    const Outcome text = run({"get", volume.path(), "NOTES", "--text", "-o", "-", "-v"});
    EXPECT_EQ(text.output, notes_text);
    EXPECT_EQ(text.errors, "NOTES.ASCII -> -\n");
}

TEST(Get, TextOptionsDecideWhatIsConvertedAndHowItIsCalled)
{
    struct Case {
        Names options;
        Names files;
        const char *notes; // null: its bytes
        bool code_is_empty;
    };
    const Case cases[] = {
        {{}, {"CODE.BIN", "NOTES.ASCII"}, nullptr, false},
        {{"--text"}, {"CODE.BIN", "NOTES.ASCII"}, notes_text, false},
        {{"--force-text"}, {"CODE.BIN", "NOTES.ASCII"}, notes_text, true},
        {{"--txt"}, {"CODE.BIN", "NOTES.ASCII.txt"}, notes_text, false},
        {{"--text", "--txt"}, {"CODE.BIN", "NOTES.ASCII.txt"}, notes_text, false},
        {{"--force-text", "--txt"}, {"CODE.BIN.txt", "NOTES.ASCII.txt"}, notes_text, true},
    };
    const TemporaryFile volume(tests::lif_image(mixed_volume()));
    const Bytes notes = padded(lif_ascii({"one", "", "three"}));
    const Bytes code = padded(Bytes(300, 0xA5));
    for (const Case &row : cases) {
        const TemporaryFolder folder;
        const Outcome outcome = get(volume, row.options, folder);
        EXPECT_EQ(outcome.code, 0) << outcome.errors;
        ASSERT_EQ(folder.names(), row.files) << (row.options.empty() ? "" : row.options[0]);
        EXPECT_EQ(folder.bytes(row.files[1]), row.notes == nullptr ? notes : tests::bytes_of(row.notes));
        EXPECT_EQ(folder.bytes(row.files[0]), row.code_is_empty ? Bytes() : code);
        const char *warning = "Warning: Conversion forced for file with unknown content";
        EXPECT_EQ(outcome.errors.rfind(warning, 0), row.code_is_empty ? 0U : std::string::npos) << outcome.errors;
    }
}

TEST(Get, HeaderKeepsWhatTheDirectorySays)
{
    const TemporaryFile volume(tests::lif_image(mixed_volume()));
    const TemporaryFolder folder;
    LifEntry entry = {.name = "CODE", .type = 0xE971, .start = 0, .length = 2};
    std::array<uint8_t, 32> bytes = tests::lif_entry_bytes(entry);
    Bytes calc(bytes.begin(), bytes.end());
    std::fill(calc.begin() + 4, calc.begin() + 10, uint8_t{0}); // the name ends with zeros there
    const Bytes content = padded(Bytes(300, 0xA5));
    calc.insert(calc.end(), content.begin(), content.end());
    expect_good(get(volume, {"CODE", "--header", "hpcalc"}, folder));
    EXPECT_EQ(folder.bytes("CODE.BIN"), calc);

    entry.name = "WS_FILE";
    entry.start = 2;
    bytes = tests::lif_entry_bytes(entry);
    expect_good(get(volume, {"CODE", "--header=hpbasic", "--overwrite"}, folder));
    const Bytes basic = folder.bytes("CODE.BIN");
    ASSERT_EQ(basic.size(), 512 + content.size());
    EXPECT_EQ(Bytes(basic.begin(), basic.begin() + 8), Bytes({0x80, 0, 'H', 'F', 'S', 'L', 'I', 'F'}));
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), basic.begin() + 256));
    EXPECT_EQ(Bytes(basic.begin() + 512, basic.end()), content);

    expect_good(get(volume, {"CODE", "--header=none", "--overwrite"}, folder));
    EXPECT_EQ(folder.bytes("CODE.BIN"), content);
    expect_good(get(volume, {"NOTES", "--header=hpcalc", "--text"}, folder));
    EXPECT_EQ(folder.text("NOTES.ASCII"), notes_text) << "text has no header";
}

TEST(Get, HeaderOfAnotherFormIsACommandLineThatIsWrong)
{
    const TemporaryFile volume(tests::lif_image(mixed_volume()));
    for (const char *form : {"lif", "HPBASIC", "", "0"}) {
        const Outcome outcome = run({"get", volume.path(), "-o", "-", "CODE", "--header", form});
        EXPECT_EQ(outcome.code, 64) << form;
        EXPECT_EQ(tests::error_lines(outcome.errors), 1U) << outcome.errors;
    }
}

TEST(Get, ExistingFilesAreRefusedBeforeAnyIsCopied)
{
    const TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const TemporaryFolder folder;
    folder.add("SORT.CODE", "mine");
    folder.add("NOTES.TEXT", "mine too");
    const Outcome outcome = run({"get", volume.path(), "-d", folder.path() + "/"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors,
              error_line("NOTES.TEXT: Target already exists (file \"" + folder.path("NOTES.TEXT") + "\")") +
                  error_line("SORT.CODE: Target already exists (file \"" + folder.path("SORT.CODE") + "\")") +
                  "[tarvo] Nothing was copied.\n");
    EXPECT_EQ(folder.names(), Names({"NOTES.TEXT", "SORT.CODE"}));
    EXPECT_EQ(folder.text("SORT.CODE"), "mine");
    EXPECT_EQ(folder.text("NOTES.TEXT"), "mine too");
    const Outcome single = run({"get", volume.path(), "SORT", "-o", folder.path("NOTES.TEXT")});
    EXPECT_EQ(single.code, 1);
    EXPECT_EQ(folder.text("NOTES.TEXT"), "mine too");
    EXPECT_EQ(get(volume, {"--txt", "NOTES"}, folder).code, 0) << "with its ending it is another name";
}

TEST(Get, OverwriteReplacesExistingFiles)
{
    const Bytes image = tests::lif_image(tests::demo_volume());
    const TemporaryFile volume(image);
    const TemporaryFolder folder;
    folder.add("SORT.CODE", std::string(5000, 'x'));
    expect_good(get(volume, {"--overwrite"}, folder));
    EXPECT_EQ(folder.bytes("SORT.CODE"), records_of(image, 22, 3));
    EXPECT_EQ(folder.names(), demo_names);
}

TEST(Get, FilesOfOneNameAreRefusedBeforeAnyIsCopied)
{
    const LifVolume contents = volume_of(
        {{.name = "OTHER"}, {.name = "SAME", .content = Bytes(10, 'a')}, {.name = "SAME", .content = Bytes(10, 'b')}});
    const TemporaryFile volume(tests::lif_image(contents));
    const TemporaryFolder folder;
    const Outcome outcome = run({"get", volume.path(), "-d", folder.path() + "/"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, error_line("SAME.ASCII: Target already exists (file \"" + folder.path("SAME.ASCII") +
                                         "\" of SAME.ASCII)") +
                                  "[tarvo] Nothing was copied.\n");
    EXPECT_EQ(folder.names(), Names());
    expect_good(get(volume, {"--overwrite"}, folder));
    EXPECT_EQ(folder.bytes("SAME.ASCII"), padded(Bytes(10, 'b'))) << "the later one stays";
}

TEST(Get, NamesThatTheHostTakesForTheSameAreRefusedToo)
{
    const TemporaryFile volume(tests::lif_image(volume_of({{.name = "A/B"}, {.name = "A:B"}})));
    const TemporaryFolder folder;
    const Outcome outcome = run({"get", volume.path(), "-d", folder.path() + "/"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors,
              error_line("A:B.ASCII: Target already exists (file \"" + folder.path("A_B.ASCII") + "\" of A/B.ASCII)") +
                  "[tarvo] Nothing was copied.\n");
}

TEST(Get, VerboseNamesEachFileOnStandardError)
{
    const TemporaryFile volume(tests::lif_image(mixed_volume()));
    const TemporaryFolder folder;
    const Outcome outcome = get(volume, {"-v", "--txt"}, folder);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "NOTES.ASCII -> " + joined(folder.path(), "NOTES.ASCII.txt") + "\nCODE.BIN -> " +
                                  joined(folder.path(), "CODE.BIN") + "\n");
}

TEST(Get, FileThatFailsCostsNoOther)
{
    const TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const TemporaryFolder folder;
    fs::create_directory(folder.path("NOTES.TEXT"));
    fs::create_directory(folder.path("SORT.CODE"));
    const Outcome outcome = get(volume, {}, folder);
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(tests::error_lines(outcome.errors), 2U) << outcome.errors;
    EXPECT_NE(outcome.errors.find("[tarvo] Error: NOTES.TEXT: Can't open file ("), std::string::npos) << outcome.errors;
    EXPECT_NE(outcome.errors.find("[tarvo] 2 of 6 files were not copied:\n"
                                  "[tarvo]        NOTES.TEXT\n"
                                  "[tarvo]        SORT.CODE\n"),
              std::string::npos)
        << outcome.errors;
    EXPECT_EQ(folder.names(), demo_names);
    EXPECT_TRUE(fs::is_regular_file(folder.path("SECRET.BDAT"))) << "the one behind them";
}

TEST(Get, FolderWithoutWriteAccessFailsEachFile)
{
    if (!tests::can_drop_rights()) GTEST_SKIP() << "rights can only be dropped natively, by root, with setpriv";
    const TemporaryFile volume(tests::lif_image(mixed_volume()));
    const TemporaryFolder folder;
    fs::permissions(folder.path(), fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec);
    const Outcome outcome = tests::run_in_shell({"get", volume.path(), "-d", folder.path()}, tests::as_nobody);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_NE(outcome.errors.find("[tarvo] Error: CODE.BIN: Can't open file ("), std::string::npos) << outcome.errors;
    EXPECT_NE(outcome.errors.find("Permission denied"), std::string::npos) << outcome.errors;
    EXPECT_NE(outcome.errors.find("[tarvo] 2 of 2 files were not copied:\n"), std::string::npos) << outcome.errors;
    EXPECT_EQ(folder.names(), Names());
}

TEST(Get, FullDeviceIsAFailure)
{
    if (!tests::runs_natively() || !fs::exists("/dev/full")) GTEST_SKIP() << "there is no full device here";
    const TemporaryFile volume(tests::lif_image(mixed_volume()));
    for (const char *option : {"--text", "--header=hpcalc", "--header=none"}) {
        for (const char *file : {"NOTES", "CODE"}) {
            const Outcome outcome = run({"get", volume.path(), file, option, "-o", "/dev/full", "--overwrite"});
            EXPECT_EQ(outcome.code, 1) << option << file;
            EXPECT_NE(outcome.errors.find("File write error"), std::string::npos) << outcome.errors;
            const Outcome piped = tests::run_in_shell({"get", volume.path(), file, option, "-o", "-"}, "% >/dev/full");
            EXPECT_EQ(piped.code, 1) << option << file;
            EXPECT_NE(piped.errors.find("File write error"), std::string::npos) << piped.errors;
        }
    }
    EXPECT_EQ(run({"get", volume.path(), "NOTES", "-o", "/dev/full"}).code, 1) << "it is there already";
}

TEST(Get, DamagedDirectoryIsCopiedAsFarAsItCanBeRead)
{
    LifVolume contents = tests::three_files();
    contents.entries[1] = {.name = "TWO", .start = 0};
    contents.entries[2].start = 10;
    const TemporaryFile volume(tests::lif_image(contents));
    const TemporaryFolder folder;
    const Outcome outcome = get(volume, {"--log", "0"}, folder);
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(folder.names(), Names({"ONE.ASCII", "THREE.ASCII"}));
}

TEST(Get, Hazard_H12_EndlessFileOnASmallImageEnds)
{
    LifVolume contents = volume_of({{.name = "HUGE", .type = 0xE971, .length = 0x00FFFFFF}, {.name = "SMALL"}});
    contents.entries[1].start = 20;
    const TemporaryFile volume(tests::lif_image(contents));
    const TemporaryFolder folder;
    const Outcome outcome = get(volume, {}, folder);
    EXPECT_EQ(outcome.code, 2);
    EXPECT_NE(outcome.errors.find("[tarvo] Warning: HUGE.BIN: it reaches behind the end of the medium"),
              std::string::npos)
        << outcome.errors;
    EXPECT_NE(outcome.errors.find("[tarvo] Error: HUGE.BIN: File read error"), std::string::npos) << outcome.errors;
    EXPECT_LE(fs::file_size(folder.path("HUGE.BIN")), (160U + 65535U) * 256U);
    EXPECT_TRUE(fs::exists(folder.path("SMALL.ASCII")));
}

TEST(Get, FileOfATrimmedImageIsFilledUpWithZerosAndAWarning)
{
    LifVolume contents = volume_of({{.name = "CODE", .type = 0xE971, .content = Bytes(1000, 0xA5)}});
    contents.records = 6;
    const TemporaryFile volume(tests::lif_image(contents));
    const TemporaryFolder folder;
    const Outcome outcome = get(volume, {}, folder);
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors,
              "[tarvo] Warning: CODE.BIN: it reaches behind the end of the medium; zeros take the place "
              "of the rest\n");
    Bytes expected(512, 0xA5);
    expected.resize(1024);
    EXPECT_EQ(folder.bytes("CODE.BIN"), expected);
}

TEST(Get, Hazard_C10_NamesLeadNowhereElse)
{
    const LifVolume contents = volume_of(
        {{.name = "../../X"}, {.name = "A\\B"}, {.name = "C:D"}, {.name = "E*?\"<>|"}, {.name = "F\x01\xD8"}});
    const TemporaryFile volume(tests::lif_image(contents));
    const TemporaryFolder folder;
    expect_good(get(volume, {}, folder));
    EXPECT_EQ(folder.names(), Names({".._.._X.ASCII", "A_B.ASCII", "C_D.ASCII", "E______.ASCII", "F__.ASCII"}));
    const TemporaryFile devices(tests::lif_image(volume_of({{.name = "CON"}, {.name = "NUL"}})));
    const TemporaryFolder other;
    expect_good(get(devices, {}, other));
    EXPECT_EQ(other.names(),
              tests::runs_natively() ? Names({"CON.ASCII", "NUL.ASCII"}) : Names({"_CON.ASCII", "_NUL.ASCII"}));
}

TEST(Get, NamesAreTakenAsTheyStand)
{
    const Names names = {"-X", "[A,B]", "A B", "'Q\"", "%%n", "=="};
    LifVolume contents;
    for (const std::string &name : names) contents.entries.push_back({.name = name, .content = tests::bytes_of(name)});
    const TemporaryFile volume(tests::lif_image(contents));
    for (const std::string &name : names) {
        const Outcome outcome = run({"get", "-o", "-", "--", volume.path(), name});
        EXPECT_EQ(outcome.code, 0) << name << outcome.errors;
        EXPECT_EQ(tests::bytes_of(outcome.output), padded(tests::bytes_of(name)));
    }
}

TEST(Get, ImageItselfIsNeverWrittenTo)
{
    const Bytes image = tests::lif_image(mixed_volume());
    const TemporaryFile volume(image);
    const Outcome outcome = run({"get", volume.path(), "NOTES", "-o", volume.path(), "--overwrite"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_NE(outcome.errors.find("Can't copy/move file to itself"), std::string::npos) << outcome.errors;
    EXPECT_EQ(volume.bytes(), image);
}

TEST(Get, DirectoryOfAVolumeIsRefused)
{
    const TemporaryFile volume(tests::lif_image(mixed_volume()));
    const TemporaryFolder folder;
    const Outcome outcome = run({"get", std::string(volume.path()) + ":SUB", "-d", folder.path()});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, error_line("Not supported (directory \"SUB\" of a volume)"));
}

TEST(Get, LargeFilesComeWhole)
{
    LifVolume contents;
    contents.tracks = 0;
    Bytes content(3 * 1024 * 1024);
    for (size_t i = 0; i < content.size(); ++i) content[i] = static_cast<uint8_t>(i * 7 + (i >> 8));
    contents.entries = {{.name = "FIRST", .content = Bytes(70000, 1)},
                        {.name = "LARGE", .type = 0xE971, .content = content}};
    const TemporaryFile volume(tests::lif_image(contents));
    const TemporaryFolder folder;
    expect_good(get(volume, {}, folder));
    EXPECT_EQ(folder.bytes("LARGE.BIN"), content);
    EXPECT_EQ(folder.bytes("FIRST.ASCII"), padded(Bytes(70000, 1)));
}
