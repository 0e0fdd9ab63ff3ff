// What put refuses, as a whole or file by file.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/console/copies.h"
#include "tests/console/folder.h"
#include "tests/console/program.h"
#include "tests/support/volume_builder.h"

using tests::Bytes;
using tests::error_line;
using tests::expect_good;
using tests::image_with;
using tests::LifVolume;
using tests::listed;
using tests::one_file;
using tests::Outcome;
using tests::put;
using tests::run;
using tests::source_date;
using tests::Sources;
using tests::TemporaryFile;
using tests::volume_of;

namespace fs = std::filesystem;

TEST(PutRefusals, ExistingFilesAreRefusedBeforeAnyIsCopied)
{
    const Bytes image = tests::lif_image(tests::three_files());
    const TemporaryFile volume(image);
    const Sources sources;
    const std::string one = sources.add("ONE");
    const std::string three = sources.add("THREE.BIN");
    const Outcome outcome = put(volume, {sources.add("NEW"), one, three});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, error_line(one + ": Target already exists (file \"ONE\")") +
                                  error_line(three + ": Target already exists (file \"THREE\")") +
                                  "[tarvo] Nothing was copied.\n");
    EXPECT_EQ(volume.bytes(), image);
}

TEST(PutRefusals, TypesThatNoFileShowsWithAreRefusedBeforeAnyIsCopied)
{
    const Bytes image = tests::lif_image(tests::three_files());
    const Sources sources;
    const std::string plain = sources.add("NEW.BIN");
    for (const char *type : {"PURGE", "EOD", "#ffff", "#0"}) {
        const TemporaryFile volume(image);
        const Outcome outcome = put(volume, {sources.add("X"), "--type", type});
        EXPECT_EQ(outcome.code, 1) << type;
        EXPECT_EQ(volume.bytes(), image) << type;
    }
    const TemporaryFile volume(image);
    const std::string end = sources.add("X.EOD");
    const Outcome outcome = put(volume, {plain, end});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors,
              error_line(end + ": Not supported (file \"X\" of this type)") + "[tarvo] Nothing was copied.\n");
    EXPECT_EQ(volume.bytes(), image);
}

TEST(PutRefusals, PurgedFileIsNotInTheWay)
{
    const TemporaryFile volume(tests::lif_image(volume_of({{.name = "OLD", .type = 0}})));
    const Sources sources;
    expect_good(put(volume, {sources.add("OLD.BIN")}));
    EXPECT_EQ(listed(volume), "OLD.BIN");
}

TEST(PutRefusals, FilesOfOneNameAreRefusedBeforeAnyIsCopied)
{
    const Bytes image = tests::lif_image(one_file());
    const Sources sources;
    const std::string first = sources.add("SAME.BIN");
    const std::string second = sources.add("SAME.TXT75");
    const std::string third = sources.add("S AME");
    for (const char *option : {"-v", "--overwrite"}) {
        const TemporaryFile volume(image);
        const Outcome outcome = put(volume, {sources.add("NEW"), first, second, third, option});
        const std::string words = ": Target already exists (file \"SAME\" of " + first + ")";
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.errors,
                  error_line(second + words) + error_line(third + words) + "[tarvo] Nothing was copied.\n");
        EXPECT_EQ(volume.bytes(), image);
    }
    const TemporaryFile volume(image);
    EXPECT_EQ(put(volume, {first, first}).code, 1);
    EXPECT_EQ(volume.bytes(), image);
    const Outcome cut = put(volume, {sources.add("TENLETTERSA"), sources.add("TENLETTERSB")});
    EXPECT_EQ(cut.code, 1) << "names that the volume cuts to the same one";
    EXPECT_EQ(volume.bytes(), image);
}

TEST(PutRefusals, FileThatFailsCostsNoOther)
{
    const LifVolume contents = one_file();
    const TemporaryFile volume(tests::lif_image(contents));
    const Sources sources;
    const std::string missing = sources.folder.path("missing");
    const std::string folder = sources.folder.path("folder");
    fs::create_directory(folder);
    const std::string empty_name = sources.add(".BIN");
    const std::string large = sources.add("LARGE.BIN", Bytes(50000));
    const Outcome outcome = put(
        volume, {missing, folder, empty_name, volume.path(), large, sources.add("GOOD.BIN", Bytes(256, 'g')), "-v"});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(tests::error_lines(outcome.errors), 5U) << outcome.errors;
    const std::string cannot_open = ": Can't open file (file \"";
    const std::string lines[] = {
        missing + cannot_open + missing + "\")",
        folder + cannot_open + folder + "\")",
        empty_name + ": Bad filename (file \"\": empty filename)",
        std::string(volume.path()) + ": Can't copy/move file to itself",
        large + ": No space left on device (file \"LARGE\")",
    };
    for (const std::string &line : lines) {
        EXPECT_NE(outcome.errors.find("[tarvo] Error: " + line), std::string::npos) << line << "\n" << outcome.errors;
    }
    EXPECT_NE(outcome.errors.find("GOOD.BIN -> GOOD.BIN\n"), std::string::npos) << outcome.errors;
    EXPECT_NE(outcome.errors.find("[tarvo] 5 of 6 files were not copied:\n[tarvo]        " + missing + "\n"),
              std::string::npos)
        << outcome.errors;
    EXPECT_EQ(volume.bytes(),
              image_with(contents, {.name = "GOOD", .type = 0xE971, .date = source_date, .content = Bytes(256, 'g')}));
}

TEST(PutRefusals, UnreadableFileIsToldWithTheSystemsWords)
{
    if (!tests::can_drop_rights()) GTEST_SKIP() << "rights can only be dropped natively, by root, with setpriv";
    const Bytes image = tests::lif_image(one_file());
    const TemporaryFile volume(image);
    fs::permissions(volume.path(), fs::perms::all);
    const Sources sources;
    fs::permissions(sources.folder.path(), fs::perms::all);
    const std::string secret = sources.add("SECRET");
    fs::permissions(secret, fs::perms::owner_read);
    const Outcome outcome = tests::run_in_shell({"put", volume.path(), secret}, tests::as_nobody);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, error_line(secret + ": Can't open file (file \"" + secret + "\")") +
                                  "[tarvo]        Permission denied\n");
    EXPECT_EQ(volume.bytes(), image);
}

TEST(PutRefusals, MediumWithoutWriteAccessIsRefused)
{
    if (!tests::can_drop_rights()) GTEST_SKIP() << "rights can only be dropped natively, by root, with setpriv";
    const TemporaryFile volume(tests::lif_image(one_file()));
    fs::permissions(volume.path(), fs::perms::owner_read | fs::perms::others_read);
    const Sources sources;
    fs::permissions(sources.folder.path(), fs::perms::all);
    const std::string source = sources.add("F");
    for (const char *option : {"-v", "--dry-run"}) {
        const Outcome outcome = tests::run_in_shell({"put", volume.path(), source, option}, tests::as_nobody);
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.errors, error_line("Can't open file (Msus \"" + std::string(volume.path()) + "\")") +
                                      "[tarvo]        Permission denied\n");
    }
}

TEST(PutRefusals, MediaThatAreNotWrittenAreRefused)
{
    const Sources sources;
    const std::string source = sources.add("F");
    for (const char *extension : {".tap", ".TAPE", ".simh"}) {
        const TemporaryFile tape(tests::lif_image(one_file()), extension);
        const Outcome outcome = put(tape, {source});
        EXPECT_EQ(outcome.code, 1) << extension;
        EXPECT_EQ(tests::error_lines(outcome.errors), 1U) << outcome.errors;
        EXPECT_EQ(tape.bytes(), tests::lif_image(one_file()));
    }
    for (const char *target : {"0:", "700:", ""}) EXPECT_EQ(run({"put", target, source}).code, 1) << target;
}

TEST(PutRefusals, DirectoryOfAVolumeIsRefused)
{
    const Bytes image = tests::lif_image(one_file());
    const TemporaryFile volume(image);
    const Sources sources;
    const Outcome outcome = run({"put", std::string(volume.path()) + ":SUB", sources.add("F")});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, error_line("Not supported (directory \"SUB\" of a volume)"));
    EXPECT_EQ(volume.bytes(), image) << "its list of files would have been empty";
}

TEST(PutRefusals, FullVolumeAndFullDirectoryAreTold)
{
    LifVolume contents;
    contents.directory_length = 1;
    for (int i = 0; i < 7; i++) contents.entries.push_back({.name = "F" + std::to_string(i)});
    const TemporaryFile volume(tests::lif_image(contents));
    const Sources sources;
    const std::string more = sources.add("B.BIN");
    const Outcome outcome = put(volume, {sources.add("A.BIN"), more});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_NE(outcome.errors.find(error_line(more + ": Directory full (file \"B\")")), std::string::npos)
        << outcome.errors;
    EXPECT_EQ(listed(volume), "F0.ASCII F1.ASCII F2.ASCII F3.ASCII F4.ASCII F5.ASCII F6.ASCII A.BIN");
}
