// One file of a volume on standard output.
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
using tests::lif_ascii;
using tests::LifVolume;
using tests::Outcome;
using tests::run;
using tests::TemporaryFile;
using tests::volume_of;

namespace
{

LifVolume mixed_volume()
{
    return volume_of({{.name = "NOTES", .content = lif_ascii({"one", "tw\x1B[7mo\t\x07", "three"})},
                      {.name = "CODE", .type = 0xE971, .content = Bytes(256, 0xA5)},
                      {.name = "OLD", .type = 0},
                      {.name = "TWIN"},
                      {.name = "TWIN"}});
}

void expect_failure(const Outcome &outcome, const std::string &text)
{
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, error_line(text));
}

}

TEST(Cat, PrintsKnownContentAsText)
{
    const TemporaryFile volume(tests::lif_image(mixed_volume()));
    const Outcome outcome = run({"cat", volume.path(), "NOTES"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output, "one\r\ntw\x1B[7mo\t\x07\r\nthree\r\n") << "control bytes as they are";
}

TEST(Cat, LogGoesElsewhere)
{
    const TemporaryFile volume(tests::lif_image(mixed_volume()));
    const Outcome outcome = run({"cat", "--log", "5", volume.path(), "NOTES"});
    EXPECT_EQ(outcome.output, run({"cat", volume.path(), "NOTES"}).output);
    EXPECT_NE(outcome.errors.find("image_open("), std::string::npos) << outcome.errors;
}

TEST(Cat, IsTheTextThatGetMakes)
{
    const std::string volume = tests::sample("text.lif");
    if (volume.empty()) GTEST_SKIP() << "TARVO_SAMPLES doesn't name the folder of sample volumes";
    const tests::TemporaryFolder folder;
    for (const char *name : {"NOTES", "LONG", "PROG75"}) {
        EXPECT_EQ(run({"get", volume, name, "--text", "-o", folder.path(name)}).code, 0) << name;
        const Outcome outcome = run({"cat", volume, name});
        EXPECT_EQ(outcome.code, 0) << outcome.errors;
        EXPECT_EQ(outcome.output, folder.text(name)) << name;
        EXPECT_GT(outcome.output.size(), 60U) << name;
    }
}

TEST(Cat, RawPrintsTheBytes)
{
    const Bytes image = tests::lif_image(mixed_volume());
    const TemporaryFile volume(image);
    const Outcome outcome = run({"cat", "--raw", volume.path(), "NOTES.ASCII"});
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_EQ(tests::bytes_of(outcome.output), Bytes(image.begin() + 4 * 256, image.begin() + 5 * 256));
}

TEST(Cat, UnknownContentComesAsItsBytes)
{
    const TemporaryFile volume(tests::lif_image(mixed_volume()));
    const Outcome outcome = run({"cat", volume.path(), "CODE"});
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_EQ(tests::bytes_of(outcome.output), Bytes(256, 0xA5));
}

TEST(Cat, EmptyFilePrintsNothing)
{
    const TemporaryFile volume(tests::lif_image(volume_of({{.name = "EMPTY", .type = 0xE971, .length = 0}})));
    const Outcome outcome = run({"cat", volume.path(), "EMPTY"});
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_EQ(outcome.output, "");
}

TEST(Cat, FileThatIsNotThereIsAFailure)
{
    const TemporaryFile volume(tests::lif_image(mixed_volume()));
    for (const char *name : {"NOTHING", "notes", "OLD", ""}) {
        expect_failure(run({"cat", volume.path(), name}), std::string("File not found (\"") + name + "\")");
    }
}

TEST(Cat, SeveralFilesAreACommandLineThatIsWrong)
{
    const TemporaryFile volume(tests::lif_image(mixed_volume()));
    for (const char *name : {"TWIN", "T*", "*"}) {
        const Outcome outcome = run({"cat", volume.path(), name});
        EXPECT_EQ(outcome.code, 64) << name;
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors.rfind("[tarvo] Error: Only one file can go there, ", 0), 0U) << outcome.errors;
    }
    EXPECT_EQ(run({"cat", volume.path(), "N*"}).code, 0) << "a pattern that means one file is a name";
    EXPECT_EQ(run({"cat", volume.path()}).code, 64);
    EXPECT_EQ(run({"cat", volume.path(), "NOTES", "CODE"}).code, 64);
    EXPECT_EQ(run({"cat", volume.path(), "NOTES", "--text"}).code, 64);
}

TEST(Cat, ContentThatIsNotWhatItsTypeSaysIsAFailure)
{
    const LifVolume contents = volume_of({{.name = "PROG", .type = 0xE052, .content = Bytes(256, 0x11)}});
    const TemporaryFile volume(tests::lif_image(contents));
    const Outcome outcome = run({"cat", volume.path(), "PROG"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "Error: Not a valid HP 75 TEXT file\r\n" +
                                  error_line("PROG.TXT75: Not a convertable file or errors in data structure "
                                             "(file \"PROG.TXT75\")"));
    EXPECT_EQ(run({"cat", "--raw", volume.path(), "PROG"}).code, 0);
}

TEST(Cat, StandardOutputThatTakesNothingIsAFailure)
{
    if (!tests::runs_natively() || !std::filesystem::exists("/dev/full"))
        GTEST_SKIP() << "there is no full device here";
    const TemporaryFile volume(tests::lif_image(mixed_volume()));
    for (const char *around : {"% >/dev/full", "% >&-"}) {
        for (const char *name : {"NOTES", "CODE"}) {
            const Outcome outcome = tests::run_in_shell({"cat", volume.path(), name}, around);
            EXPECT_EQ(outcome.code, 1) << around << name;
            EXPECT_EQ(outcome.errors.find("[tarvo] Error: "), 0U) << outcome.errors;
            EXPECT_NE(outcome.errors.find("File write error - check write protection"), std::string::npos)
                << outcome.errors;
        }
    }
}

TEST(Cat, ReaderThatLeavesEarlyEndsTheProgram)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "pipes end differently here";
    LifVolume contents;
    contents.tracks = 0;
    contents.entries = {{.name = "LARGE", .type = 0xE971, .content = Bytes(4 * 1024 * 1024, 'x')}};
    const TemporaryFile volume(tests::lif_image(contents));
    const Outcome outcome = tests::run_in_shell({"cat", volume.path(), "LARGE"}, "% | head -c 10");
    EXPECT_EQ(outcome.output, "xxxxxxxxxx");
    EXPECT_EQ(outcome.code, 0) << "that of head";
}

TEST(Cat, DamagedDirectoryShowsInTheExitCodeAlone)
{
    LifVolume contents = mixed_volume();
    contents.entries[2] = {.name = "BAD", .start = 0};
    contents.entries[3].start = 20;
    const TemporaryFile volume(tests::lif_image(contents));
    const Outcome outcome = run({"cat", "--log", "0", volume.path(), "CODE"});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(tests::bytes_of(outcome.output), Bytes(256, 0xA5));
}
