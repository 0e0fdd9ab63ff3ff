// What all verbs that change files of a medium do alike: copies ahead of the change, volumes that can't be read whole
// or written, and media that are only read.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/console/changes.h"
#include "tests/console/copies.h"
#include "tests/support/sdf_builder.h"
#include "tests/support/volume_builder.h"

using tests::Bytes;
using tests::error_line;
using tests::LifVolume;
using tests::Names;
using tests::Outcome;
using tests::TemporaryFile;
using tests::TemporaryFolder;
using tests::volume_of;

namespace fs = std::filesystem;

namespace
{

// A verb with what stands behind the medium on its line, for a volume with FIRST and the purged OLD.
struct LineCase {
    const char *name;
    const char *verb;
    Names words;
};

std::ostream &operator<<(std::ostream &stream, const LineCase &line)
{
    return stream << line.name;
}

const LineCase lines[] = {
    {"Copy", "cp", {"FIRST", "NEW"}},
    {"Rename", "mv", {"FIRST", "NEW"}},
    {"Remove", "rm", {"FIRST"}},
    {"Make", "mk", {"NEW", "--size", "100"}},
    {"Attributes", "attr", {"FIRST", "--date", "1987-03-09"}},
    {"Undelete", "undelete", {"OLD", "--type", "ASCII"}},
};

LifVolume two_files()
{
    return volume_of({{.name = "FIRST", .content = Bytes(300, '1')}, {.name = "OLD", .type = 0}});
}

Names line_of(const LineCase &line, const std::string &volume, const Names &options = {})
{
    Names words = {line.verb, volume};
    words.insert(words.end(), line.words.begin(), line.words.end());
    words.insert(words.end(), options.begin(), options.end());
    return words;
}

}

class EachChange : public testing::TestWithParam<LineCase>
{
};

TEST_P(EachChange, BackupIsACopyFromBeforeTheChange)
{
    const TemporaryFolder folder;
    const Bytes image = tests::lif_image(two_files());
    const std::string volume = folder.add("disc.lif", image);
    const Outcome outcome = tests::run(line_of(GetParam(), volume, {"--backup", "-v"}));
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_TRUE(outcome.errors.starts_with(volume + " -> " + volume + ".bak\n")) << outcome.errors;
    EXPECT_EQ(folder.bytes("disc.lif.bak"), image);
    EXPECT_NE(folder.bytes("disc.lif"), image);
}

TEST_P(EachChange, DryRunMakesNoBackup)
{
    const TemporaryFolder folder;
    const std::string volume = folder.add("disc.lif", tests::lif_image(two_files()));
    const Outcome outcome = tests::run(line_of(GetParam(), volume, {"--backup", "--dry-run", "-v"}));
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    EXPECT_NE(outcome.output, "");
    EXPECT_EQ(folder.names(), Names({"disc.lif"}));
    EXPECT_EQ(folder.bytes("disc.lif"), tests::lif_image(two_files()));
}

TEST_P(EachChange, WithoutItsBackupNothingIsChanged)
{
    if (!tests::can_drop_rights()) GTEST_SKIP() << "rights can only be dropped natively, by root, with setpriv";
    const TemporaryFolder folder;
    fs::permissions(folder.path(), fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec);
    const std::string volume = folder.add("disc.lif", tests::lif_image(two_files()));
    fs::permissions(volume, fs::perms::all);
    const Outcome outcome = tests::run_in_shell(line_of(GetParam(), volume, {"--backup"}), tests::as_nobody);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_NE(outcome.errors.find("Can't create file (file \"" + volume + ".bak\": Permission denied)"),
              std::string::npos)
        << outcome.errors;
    EXPECT_EQ(folder.bytes("disc.lif"), tests::lif_image(two_files()));
}

TEST_P(EachChange, MediumWithoutWriteAccessIsRefused)
{
    if (!tests::can_drop_rights()) GTEST_SKIP() << "rights can only be dropped natively, by root, with setpriv";
    const TemporaryFile volume(tests::lif_image(two_files()));
    fs::permissions(volume.path(), fs::perms::owner_read | fs::perms::group_read);
    for (const char *option : {"-v", "--dry-run"}) {
        const Outcome outcome = tests::run_in_shell(line_of(GetParam(), volume.path(), {option}), tests::as_nobody);
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.errors, error_line("Can't open file (Msus \"" + std::string(volume.path()) + "\")") +
                                      "[tarvo]        Permission denied\n");
    }
}

TEST_P(EachChange, VolumeWithEntriesThatCannotBeReadIsOnlyChangedWithDamaged)
{
    LifVolume contents = two_files();
    contents.entries.push_back({.name = "BAD1", .start = 0});
    const Bytes image = tests::lif_image(contents);
    const TemporaryFile volume(image);
    const std::string warning =
        "Warning: Corrupt directory data (file \"BAD1\" has location zero) at block 2 entry 2\r\n";
    for (const char *option : {"-v", "--dry-run"}) {
        const Outcome outcome = tests::run(line_of(GetParam(), volume.path(), {option}));
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors,
                  warning + error_line("Unable to read media (directory not read whole; what is missing would be lost, "
                                       "--damaged allows that)"));
        EXPECT_EQ(volume.bytes(), image);
    }
    const Outcome outcome = tests::run(line_of(GetParam(), volume.path(), {"--damaged"}));
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, warning);
    EXPECT_NE(volume.bytes(), image);
    EXPECT_EQ(file_named(tests::stored_lif(volume.bytes()), "BAD1"), nullptr);
}

TEST_P(EachChange, MediaThatAreNotWrittenAreRefused)
{
    const Bytes sdf = tests::sdf_image({.files = {tests::sdf_file("FIRST", Bytes(300, '1'))}}).bytes;
    const TemporaryFile volume(sdf);
    const Outcome outcome = tests::run(line_of(GetParam(), volume.path()));
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(tests::error_lines(outcome.errors), 1U) << outcome.errors;
    EXPECT_NE(outcome.errors.find("SDF"), std::string::npos) << outcome.errors;
    EXPECT_EQ(volume.bytes(), sdf);
    const TemporaryFile tape(tests::lif_image(two_files()), ".tap");
    EXPECT_EQ(tests::run(line_of(GetParam(), tape.path())).code, 1);
    EXPECT_EQ(tape.bytes(), tests::lif_image(two_files()));
    const TemporaryFile missing;
    EXPECT_EQ(tests::run(line_of(GetParam(), missing.path())).code, 1);
    EXPECT_FALSE(missing.exists());
    for (const char *target : {"0:", "700:"}) EXPECT_EQ(tests::run(line_of(GetParam(), target)).code, 1) << target;
}

TEST_P(EachChange, DirectoryOfAVolumeIsRefused)
{
    const TemporaryFile volume(tests::lif_image(two_files()));
    const Outcome outcome = tests::run(line_of(GetParam(), std::string(volume.path()) + ":SUB"));
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, error_line("Not supported (directory \"SUB\" of a volume)"));
    EXPECT_EQ(volume.bytes(), tests::lif_image(two_files()));
}

TEST_P(EachChange, DryRunThatCannotSayItFails)
{
    if (!tests::runs_natively() || !fs::exists("/dev/full")) GTEST_SKIP() << "there is no full device here";
    const TemporaryFile volume(tests::lif_image(two_files()));
    const Names words = line_of(GetParam(), volume.path(), {"--dry-run"});
    for (const char *around : {"% >/dev/full", "% >&-"})
        EXPECT_EQ(tests::run_in_shell(words, around).code, 1) << around;
    EXPECT_EQ(volume.bytes(), tests::lif_image(two_files()));
}

INSTANTIATE_TEST_SUITE_P(, EachChange, testing::ValuesIn(lines), testing::PrintToStringParamName());

TEST(ChangeSafety, TargetThatIsNotWrittenIsRefused)
{
    const TemporaryFile volume(tests::lif_of_three());
    LifVolume sdf = two_files();
    sdf.magic = 0x0700;
    const TemporaryFile target(tests::lif_image(sdf));
    for (const char *verb : {"cp", "mv"})
        EXPECT_EQ(tests::change(verb, volume, {"ALPHA", target.path()}).code, 1) << verb;
    EXPECT_EQ(target.bytes(), tests::lif_image(sdf));
    EXPECT_EQ(volume.bytes(), tests::lif_of_three());
}

TEST(ChangeSafety, CopyNeedsNoRightToWriteItsSource)
{
    if (!tests::can_drop_rights()) GTEST_SKIP() << "rights can only be dropped natively, by root, with setpriv";
    const TemporaryFile volume(tests::lif_of_three());
    fs::permissions(volume.path(), fs::perms::owner_read | fs::perms::group_read);
    const TemporaryFile target(tests::lif_image(two_files()));
    fs::permissions(target.path(), fs::perms::all);
    EXPECT_EQ(tests::run_in_shell({"cp", volume.path(), "ALPHA", target.path()}, tests::as_nobody).code, 0);
    EXPECT_EQ(tests::run_in_shell({"mv", volume.path(), "BETA", target.path()}, tests::as_nobody).code, 1);
    EXPECT_EQ(tests::names_on(tests::Layout::lif, target), Names({"FIRST", "ALPHA"}));
}
