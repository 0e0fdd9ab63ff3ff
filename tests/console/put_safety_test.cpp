// Overwriting, damaged volumes, backups, and runs that only say what they would do.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/console/copies.h"
#include "tests/console/folder.h"
#include "tests/console/program.h"
#include "tests/support/volume_builder.h"

using tests::Bytes;
using tests::bytes_of;
using tests::error_line;
using tests::expect_good;
using tests::LifEntry;
using tests::LifVolume;
using tests::listed;
using tests::Names;
using tests::one_file;
using tests::Outcome;
using tests::put;
using tests::run;
using tests::source_date;
using tests::Sources;
using tests::TemporaryFile;
using tests::TemporaryFolder;
using tests::volume_of;

namespace fs = std::filesystem;

TEST(PutSafety, OverwriteReplacesTheFile)
{
    const TemporaryFile volume(tests::lif_image(tests::three_files()));
    const Sources sources;
    expect_good(put(volume, {sources.add("TWO.BIN", Bytes(10, 'n')), "--overwrite"}));
    LifVolume expected = tests::three_files();
    const LifEntry old = expected.entries[1];
    expected.entries[2].start = 9; // where it stood
    expected.entries.erase(expected.entries.begin() + 1);
    expected.entries.push_back({.name = "TWO", .type = 0xE971, .date = source_date, .content = Bytes(10, 'n')});
    Bytes image = tests::lif_image(expected);
    std::copy(old.content.begin(), old.content.end(),
              image.begin() + 6 * 256); // its bytes stay, for whoever needs them
    EXPECT_EQ(volume.bytes(), image);
}

TEST(PutSafety, OldFileStaysWhenItsSuccessorFails)
{
    const TemporaryFile volume(tests::lif_image(tests::three_files()));
    const Sources sources;
    const std::string large = sources.add("TWO.BIN", Bytes(50000));
    const Outcome outcome = put(volume, {sources.add("NEW1.BIN"), large, sources.add("NEW2.BIN"), "--overwrite"});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.errors, error_line(large + ": No space left on device (file \"TWO\")") +
                                  "[tarvo] 1 of 3 files were not copied:\n[tarvo]        " + large + "\n");
    EXPECT_EQ(listed(volume), "ONE.ASCII TWO.ASCII THREE.ASCII NEW1.BIN NEW2.BIN");
    EXPECT_EQ(bytes_of(run({"cat", "--raw", volume.path(), "TWO"}).output).size(), 768U);
}

TEST(PutSafety, OldFileStaysWhenTheNewOneIsMissing)
{
    const Bytes image = tests::lif_image(tests::three_files());
    const TemporaryFile volume(image);
    const TemporaryFolder folder;
    EXPECT_EQ(put(volume, {folder.path("TWO"), "--overwrite"}).code, 1);
    EXPECT_EQ(volume.bytes(), image);
}

TEST(PutSafety, VolumeWithEntriesThatCannotBeReadIsRefusedAndTheyAreNamed)
{
    LifVolume contents = volume_of({{.name = "FIRST"}, {.name = "BAD1", .start = 0}, {.name = "LAST", .start = 10}});
    const Bytes image = tests::lif_image(contents);
    const Sources sources;
    const std::string source = sources.add("NEW.BIN");
    for (const Names &options : {Names{}, Names{"--log", "0"}, Names{"--dry-run"}, Names{"--overwrite"}}) {
        const TemporaryFile volume(image);
        Names words = {source};
        words.insert(words.end(), options.begin(), options.end());
        const Outcome outcome = put(volume, words);
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors,
                  "Warning: Corrupt directory data (file \"BAD1\" has location zero) at block 2 entry 1\r\n" +
                      error_line("Unable to read media (directory not read whole; what is missing would be lost, "
                                 "--damaged allows that)"));
        EXPECT_EQ(volume.bytes(), image);
    }
}

TEST(PutSafety, DamagedAllowsTheChangeAndNamesWhatIsLost)
{
    LifVolume contents = volume_of({{.name = "FIRST"}, {.name = "BAD1", .start = 0}, {.name = "LAST", .start = 10}});
    const Sources sources;
    const std::string source = sources.add("NEW.BIN", Bytes(256, 'n'));
    for (const Names &options : {Names{}, Names{"--log", "0"}}) {
        const TemporaryFile volume(tests::lif_image(contents));
        Names words = {source, "--damaged"};
        words.insert(words.end(), options.begin(), options.end());
        const Outcome outcome = put(volume, words);
        EXPECT_EQ(outcome.code, 0);
        EXPECT_EQ(outcome.errors,
                  "Warning: Corrupt directory data (file \"BAD1\" has location zero) at block 2 entry 1\r\n");
        LifVolume expected = volume_of({{.name = "FIRST"}, {.name = "LAST", .start = 10}});
        expected.entries.push_back({.name = "NEW", .type = 0xE971, .date = source_date, .content = Bytes(256, 'n')});
        EXPECT_EQ(volume.bytes(), tests::lif_image(expected));
    }
}

TEST(PutSafety, DirectoryBehindTheEndOfTheImageIsRefused)
{
    LifVolume contents;
    for (int i = 0; i < 16; ++i) contents.entries.push_back({.name = "F" + std::to_string(i)});
    contents.end_mark = false;
    contents.records = 3;
    const Bytes image = tests::lif_image(contents);
    const TemporaryFile volume(image);
    const Sources sources;
    const std::string source = sources.add("NEW.BIN");
    EXPECT_EQ(put(volume, {source}).code, 1);
    EXPECT_EQ(volume.bytes(), image);
    EXPECT_EQ(put(volume, {source, "--damaged"}).code, 0);
    EXPECT_EQ(listed(volume), "F0.ASCII F1.ASCII F2.ASCII F3.ASCII F4.ASCII F5.ASCII F6.ASCII F7.ASCII NEW.BIN");
}

TEST(PutSafety, BackupIsACopyFromBeforeTheChange)
{
    const TemporaryFolder folder;
    const Bytes image = tests::lif_image(one_file());
    const std::string volume = folder.add("disc.lif", image);
    const Sources sources;
    const Outcome first = run({"put", volume, sources.add("A.BIN"), "--backup", "-v"});
    EXPECT_EQ(first.code, 0) << first.errors;
    EXPECT_EQ(first.errors, volume + " -> " + volume + ".bak\n" + sources.folder.path("A.BIN") + " -> A.BIN\n");
    EXPECT_EQ(folder.bytes("disc.lif.bak"), image);
    const Bytes second = folder.bytes("disc.lif");
    EXPECT_NE(second, image);
    expect_good(run({"put", volume, sources.add("B.BIN"), "--backup"}));
    expect_good(run({"put", volume, sources.add("C.BIN"), "--backup"}));
    EXPECT_EQ(folder.bytes("disc.lif.bak"), image) << "never overwritten";
    EXPECT_EQ(folder.bytes("disc.lif.bak2"), second);
    EXPECT_EQ(folder.names(), Names({"disc.lif", "disc.lif.bak", "disc.lif.bak2", "disc.lif.bak3"}));
}

TEST(PutSafety, BackupIsOnlyMadeForAChange)
{
    const TemporaryFolder folder;
    const std::string volume = folder.add("disc.lif", tests::lif_image(one_file()));
    const Sources sources;
    const std::string first = sources.add("FIRST");
    EXPECT_EQ(run({"put", volume, first, "--backup"}).code, 1) << "it is there";
    EXPECT_EQ(run({"put", volume, sources.folder.path("missing"), "--backup"}).code, 1);
    EXPECT_EQ(run({"put", volume, sources.add("NEW"), "--backup", "--dry-run"}).code, 0);
    EXPECT_EQ(folder.names(), Names({"disc.lif"}));
}

TEST(PutSafety, WithoutItsBackupNothingIsChanged)
{
    if (!tests::can_drop_rights()) GTEST_SKIP() << "rights can only be dropped natively, by root, with setpriv";
    const TemporaryFolder folder;
    fs::permissions(folder.path(), fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec);
    const Bytes image = tests::lif_image(one_file());
    const std::string volume = folder.add("disc.lif", image);
    fs::permissions(volume, fs::perms::all);
    const Sources sources;
    fs::permissions(sources.folder.path(), fs::perms::all);
    const Outcome outcome = tests::run_in_shell({"put", volume, sources.add("NEW"), "--backup"}, tests::as_nobody);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, error_line("backup: Can't create file (file \"" + volume + ".bak\": Permission denied)"));
    EXPECT_EQ(folder.bytes("disc.lif"), image);
}

TEST(PutSafety, DryRunSaysWhatWouldBecomeOfEachFile)
{
    const Bytes image = tests::lif_image(tests::three_files());
    const TemporaryFile volume(image);
    const Sources sources;
    const std::string a = sources.add("A.&512.BDAT", Bytes(600));
    const std::string b = sources.add("B.txt", "one\ntwo\n");
    const std::string missing = sources.folder.path("missing");
    const std::string large = sources.add("LARGE", Bytes(50000));
    const std::string two = sources.add("TWO");
    const Outcome outcome = put(volume, {a, b, missing, large, two, "--txt", "--overwrite", "--dry-run"});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.errors, "");
    const std::string start = a + " -> A.&512.BDAT: type BDAT, 600 bytes, at record 10\n" + b +
                              " -> B.ASCII: type ASCII, 14 bytes made of text, at record 14\n" + missing +
                              ": Can't open file (file \"" + missing + "\"): ";
    const std::string end = large + ": No space left on device (file \"LARGE\")\n" + two +
                            " -> TWO.ASCII: type ASCII, 10 bytes, at record 15, in place of the old file\n";
    EXPECT_EQ(outcome.output.rfind(start, 0), 0U) << outcome.output;
    ASSERT_GT(outcome.output.size(), end.size());
    EXPECT_EQ(outcome.output.substr(outcome.output.size() - end.size()), end);
    EXPECT_EQ(volume.bytes(), image);
}

TEST(PutSafety, DryRunTellsTheSameAsTheCopyThatFollows)
{
    const Sources sources;
    const std::string large = sources.add("TWO.BIN", Bytes(50000));
    const Names words = {sources.add("N1.BIN", Bytes(300)), large, sources.add("N2.BIN", Bytes(300)),
                         sources.add("ONE.BIN", Bytes(300)), "--overwrite"};
    const TemporaryFile volume(tests::lif_image(tests::three_files()));
    Names planned = words;
    planned.push_back("--dry-run");
    const Outcome plan = put(volume, planned);
    EXPECT_EQ(volume.bytes(), tests::lif_image(tests::three_files()));
    EXPECT_EQ(plan.code, 2);
    EXPECT_EQ(put(volume, words).code, 2);
    const rapidjson::Document document = tests::json_of(run({"ls", "--json", volume.path()}));
    size_t checked = 0;
    for (const auto &entry : document["entries"].GetArray()) {
        const std::string name = entry["visible"].GetString();
        if (name.find(".BIN") == std::string::npos) continue;
        const std::string line =
            " -> " + name + ": type BIN, 300 bytes, at record " + std::to_string(entry["location"].GetUint());
        EXPECT_NE(plan.output.find(line), std::string::npos) << line << "\n" << plan.output;
        checked++;
    }
    EXPECT_EQ(checked, 3U);
    EXPECT_EQ(listed(volume), "TWO.ASCII THREE.ASCII N1.BIN N2.BIN ONE.BIN");
}

TEST(PutSafety, DryRunOfWhatIsRefusedAsAWholeHasALineForEachFile)
{
    const Bytes image = tests::lif_image(tests::three_files());
    const TemporaryFile volume(image);
    const Sources sources;
    const std::string one = sources.add("ONE");
    const std::string other = sources.add("NEW");
    const Outcome outcome = put(volume, {other, one, "--dry-run"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output,
              other + ": not copied, since others can't be\n" + one + ": Target already exists (file \"ONE\")\n");
    EXPECT_EQ(volume.bytes(), image);
}

TEST(PutSafety, DryRunThatCannotSayItFails)
{
    if (!tests::runs_natively() || !fs::exists("/dev/full")) GTEST_SKIP() << "there is no full device here";
    const TemporaryFile volume(tests::lif_image(one_file()));
    const Sources sources;
    const std::string source = sources.add("NEW");
    for (const char *around : {"% >/dev/full", "% >&-"}) {
        EXPECT_EQ(tests::run_in_shell({"put", volume.path(), source, "--dry-run"}, around).code, 1) << around;
    }
    const Outcome outcome = tests::run_in_shell({"put", volume.path(), source}, "% >/dev/full");
    EXPECT_EQ(outcome.code, 0) << "a copy has nothing to say there: " << outcome.errors;
}
