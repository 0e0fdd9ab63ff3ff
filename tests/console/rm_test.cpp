// Files off a volume.
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/console/changes.h"
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
using tests::TemporaryFile;
using tests::VolumeCase;

namespace
{

const std::string protected_words =
    error_line("GAMMA.&512.BDAT: it is protected; --force removes it") + "[tarvo] Nothing was removed.\n";

}

class RmOnEach : public testing::TestWithParam<VolumeCase>
{
};

TEST_P(RmOnEach, FileGoesAndTheOthersStayAsTheyAre)
{
    const Layout layout = GetParam().layout;
    const Bytes image = GetParam().image();
    const TemporaryFile volume(image);
    expect_silent(change("rm", volume, {"BETA"}));
    EXPECT_EQ(names_on(layout, volume), Names({"ALPHA", "GAMMA"}));
    for (const char *name : {"ALPHA", "GAMMA"}) {
        EXPECT_EQ(tests::file_on(layout, volume, name), *file_named(tests::stored(layout, image), name));
    }
    EXPECT_EQ(tests::content_on(layout, volume, "GAMMA"), Bytes(8 * 256, 'c'));
}

TEST_P(RmOnEach, PatternsMeanSeveralFiles)
{
    const TemporaryFile volume(GetParam().image());
    expect_silent(change("rm", volume, {"*TA", "ALPHA"}));
    EXPECT_EQ(names_on(GetParam().layout, volume), Names({"GAMMA"}));
    expect_silent(change("rm", volume, {"*"}));
    EXPECT_EQ(names_on(GetParam().layout, volume), Names());
}

TEST_P(RmOnEach, PatternThatMeansNothingCostsNoOtherFile)
{
    const TemporaryFile volume(GetParam().image());
    const Outcome outcome = change("rm", volume, {"NONE", "ALPHA", "X*"});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.errors, error_line("File not found (\"NONE\")") + error_line("File not found (\"X*\")") +
                                  "[tarvo] 2 of 3 files were not removed:\n[tarvo]        NONE\n[tarvo]        X*\n");
    EXPECT_EQ(names_on(GetParam().layout, volume), Names({"BETA", "GAMMA"}));
}

TEST_P(RmOnEach, NothingToRemoveLeavesTheImageAlone)
{
    const TemporaryFile volume(GetParam().image());
    expect_refused(change("rm", volume, {"alpha"}), error_line("File not found (\"alpha\")"));
    EXPECT_EQ(volume.bytes(), GetParam().image());
}

TEST_P(RmOnEach, DryRunSaysWhatVerboseSaysAndChangesNothing)
{
    const TemporaryFile volume(GetParam().image());
    const Outcome plan = change("rm", volume, {"ALPHA", "BETA", "NONE", "--dry-run"});
    EXPECT_EQ(plan.code, 2);
    EXPECT_EQ(plan.errors, error_line("File not found (\"NONE\")"));
    EXPECT_EQ(volume.bytes(), GetParam().image());
    EXPECT_NE(plan.output.find(": removed, 768 bytes, at record "), std::string::npos) << plan.output;
    const Outcome outcome = change("rm", volume, {"ALPHA", "BETA", "-v"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, plan.output);
    EXPECT_EQ(names_on(GetParam().layout, volume), Names({"GAMMA"}));
}

INSTANTIATE_TEST_SUITE_P(, RmOnEach, testing::ValuesIn(tests::three_volumes), testing::PrintToStringParamName());

TEST(Rm, RecordsOfADiskBecomeFree)
{
    const TemporaryFile volume(tests::disk_of_three());
    const tests::Runs before = tests::stored_disk(volume.bytes()).runs;
    const tests::StoredFile beta = tests::file_on(Layout::disk, volume, "BETA");
    expect_silent(change("rm", volume, {"BETA"}));
    tests::Runs expected = before;
    expected.insert(expected.begin(), {beta.start, beta.records});
    EXPECT_EQ(tests::stored_disk(volume.bytes()).runs, expected);
}

TEST(Rm, NameAndTypeMeanOneOfTwo)
{
    LifVolume contents;
    contents.entries = {{.name = "SAMEC_____", .type = 0xEA32}, {.name = "SAME", .type = 0xE950}};
    const TemporaryFile volume(tests::lif_image(contents));
    expect_silent(change("rm", volume, {"SAME.PROG"}));
    EXPECT_EQ(names_on(Layout::lif, volume), Names({"SAMEC_____"}));
}

TEST(Rm, PurgedEntryStaysForUndelete)
{
    LifVolume contents;
    contents.entries = {{.name = "OLD", .type = 0}, {.name = "NEW"}, {.name = "OLD"}};
    const TemporaryFile volume(tests::lif_image(contents));
    expect_silent(change("rm", volume, {"OLD"}));
    const tests::StoredVolume stored = tests::stored_lif(volume.bytes());
    ASSERT_EQ(stored.files.size(), 2U);
    EXPECT_TRUE(stored.files[0].purged);
    EXPECT_EQ(stored.files[1].name, "NEW");
}

TEST(Rm, ProtectedFileIsRefusedAndNothingIsRemoved)
{
    const TemporaryFile volume(tests::disk_with_protected_gamma());
    expect_refused(change("rm", volume, {"*"}), protected_words);
    EXPECT_EQ(volume.bytes(), tests::disk_with_protected_gamma());
    const Outcome plan = change("rm", volume, {"*", "--dry-run"});
    EXPECT_EQ(plan.code, 1);
    EXPECT_EQ(plan.errors, "");
    EXPECT_EQ(plan.output, "ALPHA.PROG: stays, since others are refused\nBETA.DATA: stays, since others are refused\n"
                           "GAMMA.&512.BDAT: it is protected; --force removes it\n");
    expect_silent(change("rm", volume, {"*", "--force"}));
    EXPECT_EQ(names_on(Layout::disk, volume), Names());
}

TEST(Rm, ProtectedFileOfLifIsRefusedToo)
{
    LifVolume contents;
    contents.entries = {{.name = "SECRET", .type = 0xE961, .implementation = {0x80, 0x01, 'A', 'B', 0, 0x80}}};
    const TemporaryFile volume(tests::lif_image(contents));
    expect_refused(change("rm", volume, {"SECRET"}),
                   error_line("SECRET.BDAT: it is protected; --force removes it") + "[tarvo] Nothing was removed.\n");
    expect_silent(change("rm", volume, {"SECRET", "--force"}));
}

TEST(Rm, InteractiveAsksForEachFile)
{
    const TemporaryFile volume(tests::disk_with_protected_gamma());
    const Outcome outcome = change_asked("rm", volume, {"*", "-i"}, "y\\nx\\nn\\ny\\n");
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.output, "");
    const std::string tail = " (y/n/[a]ll/[c]ancel)? ";
    EXPECT_EQ(outcome.errors, "Remove file \"ALPHA.PROG\"" + tail + "Remove file \"BETA.DATA\"" + tail +
                                  "Remove file \"BETA.DATA\"" + tail + "File \"GAMMA.&512.BDAT\" is protected. Remove" +
                                  tail);
    EXPECT_EQ(names_on(Layout::disk, volume), Names({"BETA"}));
}

TEST(Rm, InteractiveAllAnswersTheRest)
{
    const TemporaryFile volume(tests::disk_with_protected_gamma());
    EXPECT_EQ(change_asked("rm", volume, {"*", "-i"}, "n\\na\\n").code, 0);
    EXPECT_EQ(names_on(Layout::disk, volume), Names({"ALPHA"}));
}

TEST(Rm, InteractiveCancelAndTheEndOfInputRemoveNothing)
{
    for (const char *input : {"y\\nc\\n", "y\\n", ""}) {
        const TemporaryFile volume(tests::tape_of_three());
        const Outcome outcome = change_asked("rm", volume, {"*", "--interactive"}, input);
        EXPECT_EQ(outcome.code, 1) << input;
        EXPECT_TRUE(outcome.errors.ends_with("[tarvo] Nothing was removed.\n")) << outcome.errors;
        EXPECT_EQ(volume.bytes(), tests::tape_of_three()) << input;
    }
}

TEST(Rm, DryRunAsksToo)
{
    const TemporaryFile volume(tests::tape_of_three());
    const Outcome outcome = change_asked("rm", volume, {"*", "-i", "--dry-run"}, "n\\ny\\nn\\n");
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.output, "BETA.DATA: removed, 1280 bytes, at record 8\n");
    EXPECT_EQ(volume.bytes(), tests::tape_of_three());
}

// Where somebody can be asked, a protected file is.
TEST(Rm, ProtectedFileIsAskedAboutAtATerminal)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "a terminal of this system is none of the other's";
    for (const char *answer : {"y\n", "n\n"}) {
        const int control = posix_openpt(O_RDWR | O_NOCTTY);
        ASSERT_TRUE(control >= 0 && grantpt(control) == 0 && unlockpt(control) == 0);
        const std::string path = ptsname(control);
        const int held = open(path.c_str(), O_RDWR | O_NOCTTY);
        ASSERT_GE(held, 0);
        ASSERT_EQ(write(control, answer, 2), 2);
        const TemporaryFile volume(tests::disk_with_protected_gamma());
        const Outcome outcome = tests::run_in_shell({"rm", volume.path(), "ALPHA", "GAMMA"}, "% <'" + path + "'");
        EXPECT_EQ(outcome.code, 0);
        EXPECT_EQ(outcome.errors, "File \"GAMMA.&512.BDAT\" is protected. Remove (y/n/[a]ll/[c]ancel)? ");
        EXPECT_EQ(names_on(Layout::disk, volume), answer[0] == 'y' ? Names({"BETA"}) : Names({"BETA", "GAMMA"}));
        close(held);
        close(control);
    }
}
