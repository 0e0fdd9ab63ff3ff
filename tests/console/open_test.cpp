// Media that can't be opened, rights, and a standard output that doesn't take the data.
#include <cstdio>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/console/program.h"
#include "tests/support/volume_builder.h"

using tests::as_nobody;
using tests::can_drop_rights;
using tests::error_line;
using tests::Outcome;
using tests::run;
using tests::run_in_shell;

namespace
{

const char *const reading_verbs[] = {"ls", "info"};
// The verbs that open a medium, and the words behind it that they need.
struct MediumVerb {
    const char *verb;
    std::vector<std::string> words;
};
const MediumVerb medium_verbs[] = {
    {"ls", {}}, {"info", {}}, {"get", {"X"}}, {"cat", {"X"}}, {"put", {"-", "--as", "X"}},
};

Outcome run_verb(const MediumVerb &row, const std::string &medium)
{
    std::vector<std::string> words = {row.verb, medium};
    words.insert(words.end(), row.words.begin(), row.words.end());
    return run(words);
}

// The engine's words for a file that can't be opened, and one line of the system's.
void expect_cannot_open(const Outcome &outcome, const std::string &path)
{
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.output, "");
    const std::string first = error_line("Can't open file (Msus \"" + path + "\")");
    ASSERT_EQ(outcome.errors.rfind(first, 0), 0U) << outcome.errors;
    const std::string second = outcome.errors.substr(first.size());
    const std::string begin = "[tarvo]        ";
    ASSERT_EQ(second.rfind(begin, 0), 0U) << outcome.errors;
    EXPECT_GT(second.size(), begin.size() + 3) << "the system's words are missing: " << outcome.errors;
    EXPECT_EQ(second.find('\n'), second.size() - 1) << outcome.errors;
}

void expect_failure(const Outcome &outcome, const std::string &text)
{
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, error_line(text));
}

}

TEST(OpenMedium, MissingFileTellsTheSystemsWords)
{
    const tests::TemporaryFile missing;
    for (const MediumVerb &verb : medium_verbs) {
        const Outcome outcome = run_verb(verb, missing.path());
        expect_cannot_open(outcome, missing.path());
        if (!tests::runs_natively()) continue;
        EXPECT_NE(outcome.errors.find("[tarvo]        No such file or directory\n"), std::string::npos)
            << outcome.errors;
    }
}

TEST(OpenMedium, DirectoryIsRefused)
{
    const std::string folder = std::filesystem::temp_directory_path().string();
    for (const MediumVerb &verb : medium_verbs) expect_cannot_open(run_verb(verb, folder), folder);
}

TEST(OpenMedium, FileWithoutReadAccessIsRefused)
{
    if (!can_drop_rights()) GTEST_SKIP() << "rights can only be dropped natively, by root, with setpriv";
    const tests::TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    std::filesystem::permissions(volume.path(), std::filesystem::perms::owner_write);
    const Outcome outcome = run_in_shell({"ls", volume.path()}, as_nobody);
    expect_cannot_open(outcome, volume.path());
    EXPECT_NE(outcome.errors.find("[tarvo]        Permission denied\n"), std::string::npos) << outcome.errors;
}

TEST(OpenMedium, FileWithoutWriteAccessIsRead)
{
    if (!can_drop_rights()) GTEST_SKIP() << "rights can only be dropped natively, by root, with setpriv";
    const tests::TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    using std::filesystem::perms;
    std::filesystem::permissions(volume.path(), perms::owner_read | perms::group_read | perms::others_read);
    for (const char *verb : reading_verbs) {
        const Outcome outcome = run_in_shell({verb, volume.path()}, as_nobody);
        EXPECT_EQ(outcome.code, 0) << outcome.errors;
        EXPECT_EQ(outcome.output, run({verb, volume.path()}).output);
    }
}

TEST(OpenMedium, ReadingLeavesTheFileAsItIs)
{
    const tests::TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const tests::Bytes before = volume.bytes();
    const auto written = std::filesystem::last_write_time(volume.path());
    for (const char *verb : reading_verbs) EXPECT_EQ(run({verb, volume.path()}).code, 0);
    EXPECT_EQ(volume.bytes(), before);
    EXPECT_EQ(std::filesystem::last_write_time(volume.path()), written);
}

TEST(OpenMedium, FileWithoutAVolumeIsAnUnsupportedFormat)
{
    const tests::TemporaryFile empty(tests::Bytes{});
    const tests::TemporaryFile zeros(tests::Bytes(1024));
    for (const MediumVerb &verb : medium_verbs) {
        expect_failure(run_verb(verb, empty.path()), "Unsupported format");
        expect_failure(run_verb(verb, zeros.path()), "Unsupported format");
    }
}

TEST(OpenMedium, EmptyTargetIsNoTarget)
{
    for (const MediumVerb &verb : medium_verbs) {
        expect_failure(run_verb(verb, ""), "Invalid parameter (Empty target string)");
    }
}

TEST(OpenMedium, FloppyAndGpibDrivesAreNotSupported)
{
    for (const std::string target : {"0:", "3:", "700:"}) {
        for (const MediumVerb &verb : medium_verbs) {
            const Outcome outcome = run_verb(verb, target);
            EXPECT_EQ(outcome.code, 1) << target;
            EXPECT_EQ(outcome.output, "") << target;
            EXPECT_EQ(outcome.errors.rfind("[tarvo] Error: Not supported", 0), 0U) << target << outcome.errors;
            EXPECT_EQ(tests::error_lines(outcome.errors), 1U) << outcome.errors;
        }
    }
}

TEST(OpenMedium, SdfVolumesWithoutBlocksAreRefused)
{
    tests::LifVolume contents;
    contents.magic = 0x0700;
    contents.records_per_track = 0; // where the other format has the low half of its block size
    const tests::TemporaryFile volume(tests::lif_image(contents));
    for (const MediumVerb &verb : medium_verbs) {
        const Outcome outcome = run_verb(verb, volume.path());
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.errors.rfind("[tarvo] Error: Unsupported format (block size ", 0), 0U) << outcome.errors;
    }
}

TEST(OpenMedium, BadGpibTargetNamesIt)
{
    expect_failure(run({"ls", "799:"}), "Bad msus specifier (\"799:\")");
}

TEST(OpenMedium, TooLongAPathHasNoWordsOfTheSystem)
{
    const Outcome outcome = run({"ls", std::string(300, 'a')});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors.rfind("[tarvo] Error: Can't open file", 0), 0U) << outcome.errors;
    EXPECT_EQ(outcome.errors.find('\n'), outcome.errors.size() - 1) << outcome.errors;
}

TEST(StandardOutput, FullDeviceIsAFailure)
{
    if (!tests::runs_natively() || !std::filesystem::exists("/dev/full"))
        GTEST_SKIP() << "there is no full device here";
    const tests::TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const std::vector<std::string> command_lines[] = {
        {"ls", volume.path()},
        {"ls", "--json", volume.path()},
        {"info", volume.path()},
        {"info", "--json", volume.path()},
        {"ls", "--purged", volume.path()},
        {"--version"},
        {"--help"},
        {"help", "ls"},
        {"completion", "bash"},
    };
    for (const std::vector<std::string> &words : command_lines) {
        const Outcome outcome = run_in_shell(words, "% >/dev/full");
        EXPECT_EQ(outcome.code, 1) << words[0];
        EXPECT_EQ(outcome.errors, error_line("File write error - check write protection")) << words[0];
    }
}

TEST(StandardOutput, FullDeviceIsSeenInALargeListingToo)
{
    if (!tests::runs_natively() || !std::filesystem::exists("/dev/full"))
        GTEST_SKIP() << "there is no full device here";
    const tests::TemporaryFile volume(tests::lif_image(tests::lif_volume_with_files(5000)));
    for (const std::vector<std::string> &words :
         {std::vector<std::string>{"ls", volume.path()}, {"ls", "--json", volume.path()}}) {
        const Outcome outcome = run_in_shell(words, "% >/dev/full");
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.errors, error_line("File write error - check write protection"));
    }
}

TEST(StandardOutput, ClosedOneIsAFailureAndTheMediumStaysAsItIs)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "a program always has a standard output here";
    const tests::TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const tests::Bytes before = volume.bytes();
    for (const char *verb : reading_verbs) {
        const Outcome outcome = run_in_shell({verb, volume.path()}, "% >&-");
        EXPECT_EQ(outcome.code, 1) << verb;
        EXPECT_EQ(outcome.errors, error_line("File write error - check write protection")) << verb;
    }
    EXPECT_EQ(volume.bytes(), before);
}

TEST(StandardOutput, ClosedStandardErrorHidesNoOutcome)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "a program always has a standard error here";
    const tests::TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const Outcome good = run_in_shell({"ls", volume.path()}, "% 2>&-");
    EXPECT_EQ(good.code, 0);
    EXPECT_EQ(good.output, run({"ls", volume.path()}).output);
    EXPECT_EQ(run_in_shell({"ls", volume.path(), "NOTHING"}, "% 2>&-").code, 1);
}
