// Files of a volume to another one, and under another name.
#include <string>

#include <gtest/gtest.h>

#include "tests/console/changes.h"
#include "tests/console/copies.h"
#include "tests/support/system45_builder.h"

using tests::Bytes;
using tests::change;
using tests::change_asked;
using tests::error_line;
using tests::expect_refused;
using tests::expect_silent;
using tests::Layout;
using tests::LifVolume;
using tests::Names;
using tests::names_on;
using tests::Outcome;
using tests::StoredFile;
using tests::TemporaryFile;
using tests::volume_of;
using tests::VolumeCase;

namespace
{

const std::string nothing = "[tarvo] Nothing was copied.\n";

Bytes content_of_name(const std::string &name)
{
    if (name == "ALPHA") return Bytes(3 * 256, 'a');
    return name == "BETA" ? Bytes(5 * 256, 'b') : Bytes(8 * 256, 'c');
}

Bytes empty_image(Layout layout)
{
    if (layout == Layout::lif) return tests::lif_image(LifVolume());
    return layout == Layout::disk ? tests::disk45_image({}) : tests::tape45_image({});
}

}

class CpOnEach : public testing::TestWithParam<VolumeCase>
{
};

TEST_P(CpOnEach, CopyUnderANewNameIsAlikeAndBehindTheOthers)
{
    const Layout layout = GetParam().layout;
    const TemporaryFile volume(GetParam().image());
    expect_silent(change("cp", volume, {"GAMMA", "NEW"}));
    EXPECT_EQ(names_on(layout, volume), Names({"ALPHA", "BETA", "GAMMA", "NEW"}));
    StoredFile copy = tests::file_on(layout, volume, "NEW");
    const StoredFile original = tests::file_on(layout, volume, "GAMMA");
    EXPECT_EQ(copy.start, original.start + 8);
    copy.start = original.start;
    copy.name = original.name;
    EXPECT_EQ(copy, original);
    EXPECT_EQ(tests::content_on(layout, volume, "NEW"), content_of_name("GAMMA"));
}

TEST_P(CpOnEach, NameMayHaveItsTypeAndLength)
{
    const TemporaryFile volume(GetParam().image());
    expect_silent(change("cp", volume, {"GAMMA", "ONE.BDAT"}));
    expect_silent(change("cp", volume, {"GAMMA", "TWO.&512.BDAT"}));
    expect_silent(change("cp", volume, {"GAMMA", "THREE.DATA"}));
    EXPECT_TRUE(tests::listed(volume).ends_with(" ONE.&512.BDAT TWO.&512.BDAT THREE.&512.DATA"))
        << tests::listed(volume);
}

TEST_P(CpOnEach, OtherMediumGetsTheFilesByTheirNames)
{
    for (const VolumeCase &other : tests::three_volumes) {
        const TemporaryFile volume(GetParam().image());
        const TemporaryFile target(empty_image(other.layout));
        const Outcome outcome = change("cp", volume, {"*", target.path()});
        EXPECT_EQ(outcome.code, 0) << outcome.errors;
        EXPECT_EQ(volume.bytes(), GetParam().image());
        EXPECT_EQ(names_on(other.layout, target), Names({"ALPHA", "BETA", "GAMMA"})) << other.name;
        for (const char *name : {"ALPHA", "BETA", "GAMMA"}) {
            EXPECT_EQ(tests::content_on(other.layout, target, name), content_of_name(name)) << other.name << name;
        }
    }
}

TEST_P(CpOnEach, OtherMediumMayHaveAnotherName)
{
    for (const VolumeCase &other : tests::three_volumes) {
        const TemporaryFile volume(GetParam().image());
        const TemporaryFile target(empty_image(other.layout));
        expect_silent(change("cp", volume, {"BETA", std::string(target.path()) + ":NEW"}));
        EXPECT_EQ(names_on(other.layout, target), Names({"NEW"})) << other.name;
        EXPECT_EQ(tests::content_on(other.layout, target, "NEW"), content_of_name("BETA"));
    }
}

TEST_P(CpOnEach, ItselfIsNoTarget)
{
    const TemporaryFile volume(GetParam().image());
    const std::string words = "Can't copy/move file to itself (file \"BETA\")";
    for (const std::string &target : {std::string("BETA"), std::string(":BETA"), std::string(volume.path())}) {
        const Outcome outcome = change("cp", volume, {"BETA", target});
        EXPECT_EQ(outcome.code, 1) << target;
        EXPECT_NE(outcome.errors.find(words), std::string::npos) << outcome.errors;
    }
    EXPECT_EQ(volume.bytes(), GetParam().image());
}

TEST_P(CpOnEach, ExistingNameIsRefusedBeforeAnyIsCopied)
{
    const TemporaryFile volume(GetParam().image());
    const TemporaryFile target(GetParam().image());
    expect_silent(change("rm", target, {"ALPHA"}));
    const Bytes before = target.bytes();
    const Outcome outcome = change("cp", volume, {"*", target.path()});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(tests::error_lines(outcome.errors), 2U) << outcome.errors;
    EXPECT_NE(outcome.errors.find("Target already exists (file \"BETA\")"), std::string::npos);
    EXPECT_TRUE(outcome.errors.ends_with(nothing));
    EXPECT_EQ(target.bytes(), before);
    const Outcome own = change("cp", volume, {"ALPHA", "BETA"});
    EXPECT_EQ(own.code, 1);
    EXPECT_NE(own.errors.find("Target already exists (file \"BETA\")"), std::string::npos) << own.errors;
    EXPECT_EQ(volume.bytes(), GetParam().image());
}

TEST_P(CpOnEach, OverwriteReplaces)
{
    const Layout layout = GetParam().layout;
    const TemporaryFile volume(GetParam().image());
    expect_silent(change("cp", volume, {"ALPHA", "BETA", "--overwrite"}));
    EXPECT_EQ(names_on(layout, volume), Names({"ALPHA", "GAMMA", "BETA"}));
    EXPECT_EQ(tests::content_on(layout, volume, "BETA"), content_of_name("ALPHA"));
    EXPECT_EQ(tests::content_on(layout, volume, "GAMMA"), content_of_name("GAMMA"));
}

TEST_P(CpOnEach, DryRunSaysWhatVerboseSaysAndChangesNothing)
{
    const TemporaryFile volume(GetParam().image());
    const TemporaryFile target(GetParam().image());
    Names words = {"ALPHA", "GAMMA", "NONE", target.path(), "--overwrite", "--dry-run"};
    const Outcome plan = change("cp", volume, words);
    EXPECT_EQ(plan.code, 2);
    EXPECT_EQ(plan.errors, error_line("File not found (\"NONE\")"));
    EXPECT_EQ(target.bytes(), GetParam().image());
    EXPECT_NE(plan.output.find(", in place of the old file\n"), std::string::npos) << plan.output;
    const Outcome outcome = change("cp", volume, {"ALPHA", "GAMMA", target.path(), "--overwrite", "-v"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, plan.output);
    EXPECT_EQ(names_on(GetParam().layout, target), Names({"BETA", "ALPHA", "GAMMA"}));
    EXPECT_EQ(volume.bytes(), GetParam().image());
}

INSTANTIATE_TEST_SUITE_P(, CpOnEach, testing::ValuesIn(tests::three_volumes), testing::PrintToStringParamName());

TEST(Cp, VerboseShowsWhatBecomesOfTheType)
{
    const TemporaryFile volume(tests::disk_of_three());
    const TemporaryFile target(empty_image(Layout::lif));
    const Outcome outcome = change("cp", volume, {"ALPHA", "BETA", target.path(), "-v"});
    const std::string place = " -> " + std::string(target.path()) + ":";
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "ALPHA.PROG" + place +
                                  "ALPHA.PROG: type PROG (#c800) becomes PROG (#e990), 768 bytes, at record 4\n"
                                  "BETA.DATA" +
                                  place +
                                  "BETA.DATA: type DATA (#2400) becomes DATA (#e848), 1280 bytes, at record 7\n");
    EXPECT_EQ(tests::file_on(Layout::lif, target, "ALPHA").type, 0xE990);
}

TEST(Cp, LengthOfRecordsComesAlongBetweenFormats)
{
    tests::DiskVolume contents;
    contents.entries = {{.name = "LONG", .type = 0x2400, .records = 4, .words = 256, .fill = 'l'}};
    const TemporaryFile disk(tests::disk45_image(contents));
    const TemporaryFile lif(empty_image(Layout::lif));
    expect_silent(change("cp", disk, {"LONG", lif.path()}));
    EXPECT_EQ(tests::listed(lif), "LONG.&512.DATA");
    const TemporaryFile back(empty_image(Layout::disk));
    expect_silent(change("cp", lif, {"LONG", back.path()}));
    EXPECT_EQ(tests::listed(back), "LONG.&512.DATA");
    EXPECT_EQ(tests::content_on(Layout::disk, back, "LONG"), Bytes(8 * 256, 'l'));
}

TEST(Cp, RecordsThatATypeCannotHaveAreCountedAnew)
{
    tests::TapeVolume contents;
    contents.entries = {{.name = "OLD", .type = 0x04, .records = 4, .words = 256, .fill = 'o'}};
    const TemporaryFile tape(tests::tape45_image(contents));
    const TemporaryFile disk(empty_image(Layout::disk));
    expect_silent(change("cp", tape, {"OLD", disk.path()}));
    const StoredFile copy = tests::file_on(Layout::disk, disk, "OLD");
    EXPECT_EQ(copy.type, 0x0400);
    EXPECT_EQ(copy.records, 8U) << "all of it is there";
    EXPECT_EQ(tests::content_on(Layout::disk, disk, "OLD"), Bytes(8 * 256, 'o'));
}

TEST(Cp, NameThatIsCutIsTold)
{
    const TemporaryFile volume(
        tests::lif_image(volume_of({{.name = "LONGNAME1"}, {.name = "OTHERC____", .type = 0xEA32}})));
    const TemporaryFile target(empty_image(Layout::disk));
    const Outcome outcome = change("cp", volume, {"*", target.path()});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(tests::error_lines(outcome.errors), 0U);
    EXPECT_NE(outcome.errors.find("[tarvo] Warning: LONGNAME1.ASCII: its name becomes LONGNA."), std::string::npos)
        << outcome.errors;
    EXPECT_EQ(names_on(Layout::disk, target), Names({"LONGNA", "OTHER"})) << "without the marker";
}

TEST(Cp, NamesThatAreCutToOneAreRefused)
{
    const TemporaryFile volume(tests::lif_image(volume_of({{.name = "LONGNAME1"}, {.name = "LONGNAME2"}})));
    const TemporaryFile target(empty_image(Layout::disk));
    for (const char *option : {"-v", "--overwrite"}) {
        expect_refused(change("cp", volume, {"*", target.path(), option}),
                       error_line("LONGNAME2.ASCII: Target already exists (file \"LONGNA\" of LONGNAME1.ASCII)") +
                           nothing);
    }
    EXPECT_EQ(target.bytes(), empty_image(Layout::disk));
}

TEST(Cp, MarkerBelongsToTheType)
{
    const TemporaryFile volume(tests::lif_image(volume_of({{.name = "ABCC______", .type = 0xEA32}})));
    expect_silent(change("cp", volume, {"ABC", "NEW"}));
    EXPECT_EQ(names_on(Layout::lif, volume), Names({"ABCC______", "NEWC______"}));
    const TemporaryFile target(empty_image(Layout::lif));
    expect_silent(change("cp", volume, {"*", target.path()}));
    EXPECT_EQ(names_on(Layout::lif, target), Names({"ABCC______", "NEWC______"}));
}

TEST(Cp, NameWithFullStopComesAlong)
{
    const TemporaryFile volume(tests::lif_image(volume_of({{.name = "A.B"}, {.name = "C"}})));
    const TemporaryFile target(empty_image(Layout::disk));
    expect_silent(change("cp", volume, {"A.B", target.path()}));
    EXPECT_EQ(names_on(Layout::disk, target), Names({"A.B"}));
    expect_silent(change("cp", volume, {"C", "D.E.ASCII"}));
    EXPECT_EQ(names_on(Layout::lif, volume), Names({"A.B", "C", "D.E"}));
}

TEST(Cp, OneNameIsForOneFile)
{
    const TemporaryFile volume(tests::lif_of_three());
    expect_refused(change("cp", volume, {"*", "NEW"}),
                   error_line("Can't copy/move more than one file to another (3 files and the name \"NEW\")"));
    const TemporaryFile target(tests::lif_of_three());
    EXPECT_EQ(change("cp", volume, {"ALPHA", "BETA", std::string(target.path()) + ":NEW"}).code, 1);
    EXPECT_EQ(volume.bytes(), tests::lif_of_three());
    EXPECT_EQ(target.bytes(), tests::lif_of_three());
}

TEST(Cp, NamesThatCannotBeAreRefused)
{
    const TemporaryFile volume(tests::disk_of_three());
    expect_refused(change("cp", volume, {"ALPHA", "SEVENAA"}),
                   error_line("ALPHA.PROG: Bad filename (file \"SEVENAA\": filename too long)") + nothing);
    expect_refused(change("cp", volume, {"ALPHA", "other.img"}),
                   error_line("ALPHA.PROG: Unknown file type (\"img\")") + nothing);
    EXPECT_EQ(volume.bytes(), tests::disk_of_three());
}

TEST(Cp, FileOfTheHostIsTakenForAMedium)
{
    const tests::TemporaryFolder folder;
    const std::string volume = folder.add("disc.lif", tests::lif_of_three());
    const std::string other = folder.add("NEW", std::string("no volume at all"));
    const std::string here = "cd '" + folder.path() + "' && %";
    const Outcome outcome = tests::run_in_shell({"cp", "disc.lif", "ALPHA", "NEW"}, here);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, error_line("Unsupported format") +
                                  "[tarvo]        \"NEW\" is a file of the host; \":NEW\" is a name on the medium.\n");
    EXPECT_EQ(folder.bytes("disc.lif"), tests::lif_of_three());
    expect_silent(tests::run_in_shell({"cp", "disc.lif", "ALPHA", ":NEW"}, here));
    EXPECT_EQ(names_of(tests::stored_lif(folder.bytes("disc.lif"))), Names({"ALPHA", "BETA", "GAMMA", "NEW"}));
    EXPECT_EQ(folder.text("NEW"), "no volume at all");
}

TEST(Cp, DestinationsThatCannotBe)
{
    const TemporaryFile volume(tests::lif_of_three());
    const tests::TemporaryFolder folder;
    for (const std::string &target : {folder.path(), std::string(":"), std::string(":A/B"), std::string()}) {
        EXPECT_EQ(change("cp", volume, {"ALPHA", target}).code, 64) << target;
    }
    EXPECT_EQ(change("cp", volume, {"ALPHA"}).code, 64);
    EXPECT_EQ(change("cp", volume, {"ALPHA", folder.path("missing.lif")}).code, 1);
    EXPECT_EQ(change("cp", volume, {"ALPHA", "0:"}).code, 1);
    EXPECT_EQ(volume.bytes(), tests::lif_of_three());
    EXPECT_EQ(folder.names(), Names());
}

TEST(Cp, ProtectedFileIsOnlyReplacedByForce)
{
    const TemporaryFile volume(tests::disk_with_protected_gamma());
    const std::string words = error_line("ALPHA.PROG: file \"GAMMA\" is protected; --force replaces it") + nothing;
    expect_refused(change("cp", volume, {"ALPHA", "GAMMA", "--overwrite"}), words);
    expect_refused(change_asked("cp", volume, {"ALPHA", "GAMMA", "-i"}, "y\\n"), words);
    EXPECT_EQ(volume.bytes(), tests::disk_with_protected_gamma());
    expect_silent(change("cp", volume, {"GAMMA", "NEW"}));
    EXPECT_TRUE(tests::file_on(Layout::disk, volume, "NEW").is_protected);
    expect_silent(change("cp", volume, {"ALPHA", "GAMMA", "--overwrite", "--force"}));
    EXPECT_EQ(tests::content_on(Layout::disk, volume, "GAMMA"), content_of_name("ALPHA"));
}

TEST(Cp, InteractiveAsksForExistingFilesOnly)
{
    const TemporaryFile volume(tests::tape_of_three());
    const TemporaryFile target(tests::tape_of_three());
    expect_silent(change("rm", target, {"BETA"}));
    const Outcome outcome = change_asked("cp", volume, {"*", target.path(), "-i", "-v"}, "n\\ny\\n");
    EXPECT_EQ(outcome.code, 0);
    EXPECT_TRUE(outcome.errors.starts_with("File \"ALPHA.PROG\" already exists. Overwrite (y/n/[c]ancel)? "
                                           "File \"GAMMA.&512.BDAT\" already exists. Overwrite (y/n/[c]ancel)? BETA"))
        << outcome.errors;
    EXPECT_EQ(names_on(Layout::tape, target), Names({"ALPHA", "BETA", "GAMMA"}));
    const Bytes before = target.bytes();
    for (const char *input : {"y\\nc\\n", ""}) {
        const Outcome ended = change_asked("cp", volume, {"*", target.path(), "-i"}, input);
        EXPECT_EQ(ended.code, 1);
        EXPECT_TRUE(ended.errors.ends_with(nothing)) << ended.errors;
        EXPECT_EQ(target.bytes(), before);
    }
}

TEST(Cp, FileWithoutRoomCostsNoOther)
{
    LifVolume contents;
    contents.tracks = 1;
    const TemporaryFile target(tests::lif_image(contents)); // 12 records for files
    const TemporaryFile volume(tests::lif_of_three());
    const Outcome outcome = change("cp", volume, {"GAMMA", "BETA", "ALPHA", target.path()});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.errors, error_line("GAMMA.&512.BDAT: No space left on device (file \"GAMMA\")") +
                                  "[tarvo] 1 of 3 files were not copied:\n[tarvo]        GAMMA.&512.BDAT\n");
    EXPECT_EQ(names_on(Layout::lif, target), Names({"ALPHA", "BETA"}));
}

TEST(Cp, OldFileStaysWhereTheNewOneHasNoRoom)
{
    LifVolume contents = volume_of({{.name = "GAMMA", .content = Bytes(10 * 256, 'g')}});
    contents.tracks = 1;
    const Bytes image = tests::lif_image(contents);
    const TemporaryFile target(image);
    const TemporaryFile volume(tests::lif_of_three());
    const Outcome outcome = change("cp", volume, {"GAMMA", target.path(), "--overwrite"});
    expect_refused(outcome, error_line("GAMMA.&512.BDAT: No space left on device (file \"GAMMA\")"));
    EXPECT_EQ(target.bytes(), image);
}

TEST(Cp, FullDirectoryIsTold)
{
    LifVolume contents;
    contents.directory_length = 1;
    for (int i = 0; i < 8; i++) contents.entries.push_back({.name = "F" + std::to_string(i)});
    const Bytes image = tests::lif_image(contents);
    const TemporaryFile volume(image);
    expect_refused(change("cp", volume, {"F0", "NEW"}), error_line("F0.ASCII: Directory full (file \"NEW\")"));
    EXPECT_EQ(volume.bytes(), image);
}

TEST(Cp, FileBehindTheEndOfItsVolumeIsNotCopied)
{
    LifVolume contents = volume_of({{.name = "FAR", .start = 150, .length = 100}});
    const TemporaryFile volume(tests::lif_image(contents));
    const TemporaryFile target(empty_image(Layout::lif));
    expect_refused(change("cp", volume, {"FAR", target.path()}),
                   error_line("FAR.ASCII: No space left on device (file \"FAR\")"));
    EXPECT_EQ(target.bytes(), empty_image(Layout::lif));
}

TEST(Cp, DamagedSourceIsReadAsFarAsItCanBe)
{
    const TemporaryFile volume(tests::lif_image(volume_of({{.name = "GOOD"}, {.name = "BAD", .start = 0}})));
    const TemporaryFile target(empty_image(Layout::lif));
    EXPECT_EQ(change("cp", volume, {"GOOD", target.path()}).code, 2);
    EXPECT_EQ(names_on(Layout::lif, target), Names({"GOOD"}));
    EXPECT_EQ(change("cp", volume, {"GOOD", "NEW"}).code, 1) << "that would lose BAD";
    EXPECT_EQ(change("cp", volume, {"GOOD", "NEW", "--damaged"}).code, 0);
    EXPECT_EQ(names_on(Layout::lif, volume), Names({"GOOD", "NEW"}));
}
