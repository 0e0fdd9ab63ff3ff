// Other names for files of a volume, and files that go to another medium.
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

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
using tests::Names;
using tests::names_on;
using tests::Outcome;
using tests::StoredFile;
using tests::TemporaryFile;
using tests::volume_of;
using tests::VolumeCase;

namespace
{

const std::string nothing_renamed = "[tarvo] Nothing was renamed.\n";
const std::string nothing_moved = "[tarvo] Nothing was moved.\n";
const std::string other_type = "Another name changes neither type nor length of records; attr does";

Bytes empty_image(Layout layout)
{
    if (layout == Layout::lif) return tests::lif_image(tests::LifVolume());
    return layout == Layout::disk ? tests::disk45_image({}) : tests::tape45_image({});
}

}

class MvOnEach : public testing::TestWithParam<VolumeCase>
{
};

TEST_P(MvOnEach, RenamedFileIsTheSameFile)
{
    const Layout layout = GetParam().layout;
    for (const char *name : {"NEW", ":NEW"}) {
        const TemporaryFile volume(GetParam().image());
        StoredFile expected = tests::file_on(layout, volume, "BETA");
        expect_silent(change("mv", volume, {"BETA", name}));
        EXPECT_EQ(names_on(layout, volume), Names({"ALPHA", "NEW", "GAMMA"}));
        expected.name = "NEW";
        EXPECT_EQ(tests::file_on(layout, volume, "NEW"), expected);
        EXPECT_EQ(tests::content_on(layout, volume, "NEW"), Bytes(5 * 256, 'b'));
    }
}

TEST_P(MvOnEach, NewNameMaySayTheTypeThatTheFileHas)
{
    const TemporaryFile volume(GetParam().image());
    expect_silent(change("mv", volume, {"ALPHA.PROG", "ONE.PROG"}));
    expect_silent(change("mv", volume, {"GAMMA", "TWO.BDAT"}));
    expect_silent(change("mv", volume, {"TWO", "THREE.&512.BDAT"}));
    EXPECT_TRUE(tests::listed(volume).starts_with("ONE.PROG ")) << tests::listed(volume);
    EXPECT_TRUE(tests::listed(volume).ends_with(" THREE.&512.BDAT")) << tests::listed(volume);
}

TEST_P(MvOnEach, NewNameChangesNoType)
{
    const TemporaryFile volume(GetParam().image());
    const std::string refusal = error_line("GAMMA.&512.BDAT: " + other_type) + nothing_renamed;
    for (const char *name : {"NEW.DATA", "NEW.&256.BDAT", "NEW.#c801"}) {
        expect_refused(change("mv", volume, {"GAMMA", name}), refusal);
    }
    expect_refused(change("mv", volume, {"GAMMA", "disc.img"}),
                   error_line("GAMMA.&512.BDAT: Unknown file type (\"img\")") + nothing_renamed);
    EXPECT_EQ(volume.bytes(), GetParam().image());
}

TEST_P(MvOnEach, ExistingNameIsRefusedAndReplacedOnlyByOverwrite)
{
    const Layout layout = GetParam().layout;
    const TemporaryFile volume(GetParam().image());
    const Outcome refused = change("mv", volume, {"ALPHA", "BETA"});
    expect_refused(refused, error_line("ALPHA.PROG: Target already exists (file \"BETA\")") + nothing_renamed);
    EXPECT_EQ(volume.bytes(), GetParam().image());
    expect_silent(change("mv", volume, {"ALPHA", "BETA", "--overwrite"}));
    EXPECT_EQ(names_on(layout, volume), Names({"BETA", "GAMMA"}));
    EXPECT_EQ(tests::content_on(layout, volume, "BETA"), Bytes(3 * 256, 'a'));
}

TEST_P(MvOnEach, OwnNameAndOwnMediumAreNothingToDo)
{
    const TemporaryFile volume(GetParam().image());
    expect_silent(change("mv", volume, {"BETA", "BETA"}));
    expect_silent(change("mv", volume, {"*", volume.path()}));
    EXPECT_EQ(change("mv", volume, {"BETA", "NONE", "BETA"}).code, 2);
    EXPECT_EQ(volume.bytes(), GetParam().image());
}

TEST_P(MvOnEach, OtherMediumGetsTheFilesAndThisOneLosesThem)
{
    for (const VolumeCase &other : tests::three_volumes) {
        const TemporaryFile volume(GetParam().image());
        const TemporaryFile target(empty_image(other.layout));
        const Outcome outcome = change("mv", volume, {"ALPHA", "GAMMA", target.path()});
        EXPECT_EQ(outcome.code, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(names_on(GetParam().layout, volume), Names({"BETA"}));
        EXPECT_EQ(names_on(other.layout, target), Names({"ALPHA", "GAMMA"}));
        EXPECT_EQ(tests::content_on(other.layout, target, "GAMMA"), Bytes(8 * 256, 'c'));
        EXPECT_EQ(tests::content_on(GetParam().layout, volume, "BETA"), Bytes(5 * 256, 'b'));
    }
}

TEST_P(MvOnEach, ExistingNameOnTheOtherMediumKeepsAllWhereTheyAre)
{
    const TemporaryFile volume(GetParam().image());
    const TemporaryFile target(GetParam().image());
    expect_silent(change("rm", target, {"ALPHA"}));
    const Bytes before = target.bytes();
    const Outcome outcome = change("mv", volume, {"*", target.path()});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_TRUE(outcome.errors.ends_with(nothing_moved)) << outcome.errors;
    EXPECT_EQ(volume.bytes(), GetParam().image());
    EXPECT_EQ(target.bytes(), before);
    expect_silent(change("mv", volume, {"*", target.path(), "--overwrite"}));
    EXPECT_EQ(names_on(GetParam().layout, volume), Names());
    EXPECT_EQ(names_on(GetParam().layout, target), Names({"ALPHA", "BETA", "GAMMA"}));
}

TEST_P(MvOnEach, DryRunSaysWhatVerboseSaysAndChangesNothing)
{
    const TemporaryFile volume(GetParam().image());
    const TemporaryFile target(GetParam().image());
    const std::vector<Names> lines = {
        {"ALPHA", "NEW"}, {"NEW", "BETA", "--overwrite"}, {"BETA", "GAMMA", target.path(), "--overwrite"}};
    for (Names words : lines) {
        const Bytes before = volume.bytes();
        words.emplace_back("--dry-run");
        const Outcome plan = change("mv", volume, words);
        EXPECT_EQ(plan.code, 0) << plan.errors;
        EXPECT_EQ(plan.errors, "");
        EXPECT_NE(plan.output, "");
        EXPECT_EQ(volume.bytes(), before);
        EXPECT_EQ(target.bytes(), GetParam().image());
        words.back() = "-v";
        const Outcome outcome = change("mv", volume, words);
        EXPECT_EQ(outcome.code, 0);
        EXPECT_EQ(outcome.errors, plan.output);
    }
    EXPECT_EQ(names_on(GetParam().layout, volume), Names());
}

INSTANTIATE_TEST_SUITE_P(, MvOnEach, testing::ValuesIn(tests::three_volumes), testing::PrintToStringParamName());

TEST(Mv, MarkerBelongsToTheType)
{
    const TemporaryFile volume(tests::lif_image(volume_of({{.name = "ABCC______", .type = 0xEA32}, {.name = "NEW"}})));
    expect_silent(change("mv", volume, {"ABC", "NEW"})); // NEW is another name than that with a marker
    EXPECT_EQ(names_on(Layout::lif, volume), Names({"NEWC______", "NEW"}));
    expect_refused(change("mv", volume, {"NEW.CODE", "TENLETTERS"}),
                   error_line("NEW.CODE: Bad filename (file \"TENLETTERS\": filename too long)") + nothing_renamed);
    expect_silent(change("mv", volume, {"NEW.ASCII", "TENLETTERS"}));
    EXPECT_EQ(names_on(Layout::lif, volume), Names({"NEWC______", "TENLETTERS"}));
}

TEST(Mv, LongTypesAreTypesToo)
{
    const TemporaryFile volume(tests::lif_image(volume_of({{.name = "OLD", .type = 0xE217}})));
    expect_silent(change("mv", volume, {"OLD", "NEW.BAS71_SP"}));
    EXPECT_EQ(names_on(Layout::lif, volume), Names({"NEW"}));
    expect_silent(change("mv", volume, {"NEW", "A.B.BAS71_SP"}));
    EXPECT_EQ(names_on(Layout::lif, volume), Names({"A.B"}));
}

TEST(Mv, NamesThatCannotBeAreRefused)
{
    const TemporaryFile disk(tests::disk_of_three());
    const struct {
        const char *name;
        const char *words;
    } rows[] = {{"SEVENAA", "filename too long"},
                {"A\"B", "filename contains invalid character(s)"},
                {" ", "empty filename"},
                {"A A A A A A A", "filename too long"}};
    for (const auto &row : rows) {
        expect_refused(
            change("mv", disk, {"ALPHA", row.name}),
            error_line(std::string("ALPHA.PROG: Bad filename (file \"") + row.name + "\": " + row.words + ")") +
                nothing_renamed);
    }
    EXPECT_EQ(disk.bytes(), tests::disk_of_three());
    expect_silent(change("mv", disk, {"ALPHA", "A B C"}));
    EXPECT_EQ(names_on(Layout::disk, disk), Names({"ABC", "BETA", "GAMMA"})) << "blanks are left out, as by put";
    expect_silent(change("mv", disk, {"ABC", "X"}));
    EXPECT_EQ(names_on(Layout::disk, disk), Names({"X", "BETA", "GAMMA"}));
}

TEST(Mv, OneNameIsForOneFile)
{
    const TemporaryFile volume(tests::lif_of_three());
    expect_refused(change("mv", volume, {"*A", "NEW"}),
                   error_line("Can't copy/move more than one file to another (3 files and the name \"NEW\")"));
    expect_refused(change("mv", volume, {"NONE", "NEW"}), error_line("File not found (\"NONE\")"));
    EXPECT_EQ(change("mv", volume, {"NEW"}).code, 64);
    EXPECT_EQ(volume.bytes(), tests::lif_of_three());
}

TEST(Mv, ProtectedFileIsRenamedButNotMovedOrReplaced)
{
    const TemporaryFile volume(tests::disk_with_protected_gamma());
    const TemporaryFile target(empty_image(Layout::disk));
    expect_refused(change("mv", volume, {"ALPHA", "GAMMA", target.path()}),
                   error_line("GAMMA.&512.BDAT: it is protected; --force moves it") + nothing_moved);
    expect_refused(change("mv", volume, {"ALPHA", "GAMMA", "--overwrite"}),
                   error_line("ALPHA.PROG: file \"GAMMA\" is protected; --force replaces it") + nothing_renamed);
    EXPECT_EQ(volume.bytes(), tests::disk_with_protected_gamma());
    expect_silent(change("mv", volume, {"GAMMA", "DELTA"}));
    EXPECT_TRUE(tests::file_on(Layout::disk, volume, "DELTA").is_protected);
    expect_silent(change("mv", volume, {"ALPHA", "DELTA", target.path(), "--force"}));
    EXPECT_TRUE(tests::file_on(Layout::disk, target, "DELTA").is_protected);
    EXPECT_EQ(names_on(Layout::disk, volume), Names({"BETA"}));
}

TEST(Mv, InteractiveAsksForAnExistingFile)
{
    const std::string question = "File \"BETA.DATA\" already exists. Overwrite (y/n/[c]ancel)? ";
    const TemporaryFile volume(tests::disk_of_three());
    const Outcome no = change_asked("mv", volume, {"ALPHA", "BETA", "-i"}, "n\\n");
    EXPECT_EQ(no.code, 0);
    EXPECT_EQ(no.errors, question);
    const Outcome cancel = change_asked("mv", volume, {"ALPHA", "BETA", "-i"}, "c\\n");
    EXPECT_EQ(cancel.code, 1);
    EXPECT_EQ(cancel.errors, question + nothing_renamed);
    EXPECT_EQ(volume.bytes(), tests::disk_of_three());
    expect_silent(change("mv", volume, {"ALPHA", "FREE", "-i"}));
    EXPECT_EQ(change_asked("mv", volume, {"FREE", "BETA", "-i"}, "y\\n").code, 0);
    EXPECT_EQ(names_on(Layout::disk, volume), Names({"BETA", "GAMMA"}));
}

TEST(Mv, FileThatIsNotMovedStays)
{
    tests::LifVolume contents;
    contents.tracks = 1;
    const TemporaryFile target(tests::lif_image(contents)); // 12 records for files
    const TemporaryFile volume(tests::lif_of_three());
    const Outcome outcome = change("mv", volume, {"*", target.path()});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.errors, error_line("GAMMA.&512.BDAT: No space left on device (file \"GAMMA\")") +
                                  "[tarvo] 1 of 3 files were not moved:\n[tarvo]        GAMMA.&512.BDAT\n");
    EXPECT_EQ(names_on(Layout::lif, target), Names({"ALPHA", "BETA"}));
    EXPECT_EQ(names_on(Layout::lif, volume), Names({"GAMMA"}));
}

TEST(Mv, BothMediaAreBackedUp)
{
    const tests::TemporaryFolder folder;
    const std::string volume = folder.add("a.lif", tests::lif_of_three());
    const std::string target = folder.add("b.img", tests::disk_of_three());
    expect_silent(tests::run({"rm", target, "*"}));
    const Bytes before = folder.bytes("b.img");
    expect_silent(tests::run({"mv", volume, "ALPHA", target, "--backup"}));
    EXPECT_EQ(folder.names(), Names({"a.lif", "a.lif.bak", "b.img", "b.img.bak"}));
    EXPECT_EQ(folder.bytes("a.lif.bak"), tests::lif_of_three());
    EXPECT_EQ(folder.bytes("b.img.bak"), before);
}

TEST(Mv, LinkToTheMediumIsTheMedium)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "links are this system's";
    const tests::TemporaryFolder folder;
    const std::string volume = folder.add("a.lif", tests::lif_of_three());
    ASSERT_EQ(symlink("a.lif", folder.path("b.lif").c_str()), 0);
    expect_silent(tests::run({"mv", volume, "ALPHA", folder.path("b.lif")}));
    EXPECT_EQ(folder.bytes("a.lif"), tests::lif_of_three());
    expect_silent(tests::run({"mv", volume, "ALPHA", folder.path("b.lif") + ":NEW"}));
    EXPECT_EQ(names_of(tests::stored_lif(folder.bytes("a.lif"))), Names({"NEW", "BETA", "GAMMA"}));
}
