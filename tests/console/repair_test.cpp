// Tables written anew: what goes, what stays, and what is said of it.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "console/check.h"
#include "console/exit_code.h"
#include "tests/console/disks.h"
#include "tests/console/folder.h"
#include "tests/support/faults.h"

using tests::Bytes;
using tests::disk45_image;
using tests::DiskVolume;
using tests::error_line;
using tests::FileFault;
using tests::LifVolume;
using tests::Names;
using tests::Outcome;
using tests::run;
using tests::run_on;
using tests::Runs;
using tests::stored_disk;
using tests::TemporaryFile;
using tests::TemporaryFolder;
using tests::with_byte;

namespace
{

LifVolume with_bad_entry()
{
    LifVolume volume = tests::three_files();
    volume.entries[1] = {.name = "TWO", .start = 0, .length = 3};
    volume.entries[2].start = 9;
    return volume;
}

const std::string bad_entry =
    "entry 1 in record 2 of the directory: Bad directory entry (file \"TWO\" has location zero)\n";

}

TEST(Repair, EntriesThatCannotBeReadAreLeftOut)
{
    const TemporaryFile volume(tests::lif_image(with_bad_entry()));
    const Outcome outcome = run_on("repair", volume);
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output, "repaired: " + bad_entry);
    EXPECT_EQ(tests::listed(volume), "ONE.ASCII THREE.ASCII");
    EXPECT_EQ(run_on("check", volume).code, 0);
}

TEST(Repair, FilesStayAsTheyAre)
{
    const Bytes before = tests::lif_image(with_bad_entry());
    const TemporaryFile volume(before);
    ASSERT_EQ(run_on("repair", volume).code, 0);
    const Bytes after = volume.bytes();
    ASSERT_EQ(after.size(), before.size());
    EXPECT_TRUE(std::equal(before.begin(), before.begin() + 2 * 256, after.begin())) << "the head";
    EXPECT_TRUE(std::equal(before.begin() + 5 * 256, before.end(), after.begin() + 5 * 256)) << "all behind the tables";
}

TEST(Repair, SpareTablesBecomeTheMainOnes)
{
    const Bytes good = disk45_image(tests::disk_with_holes());
    const TemporaryFile volume(with_byte(with_byte(good, 31 * 256 + 2, 'X'), 53 * 256 + 1, 1));
    const Outcome outcome = run_on("repair", volume);
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_EQ(outcome.output, "repaired: the spare directory differs from the main one, first in record 31\n"
                              "repaired: the spare availability table differs from the main one, first in record 53\n");
    EXPECT_EQ(volume.bytes(), good);
    const Bytes tape = tests::tape45_image(tests::three_tape_files());
    const TemporaryFile damaged(with_byte(tape, 3 * 256 + 5, 'X'));
    EXPECT_EQ(run_on("repair", damaged).code, 0);
    EXPECT_EQ(damaged.bytes(), tape);
}

TEST(Repair, FreeSpaceIsWhatFilesLeave)
{
    const Runs wrong[] = {{}, {{60, 3}}, {{60, 60}}, {{60, 10}, {62, 3}, {110, 100}}};
    const Bytes good = disk45_image(tests::disk_with_holes());
    for (const Runs &runs : wrong) {
        DiskVolume damaged = tests::disk_with_holes();
        damaged.runs = runs;
        const TemporaryFile volume(disk45_image(damaged));
        const Outcome outcome = run_on("repair", volume);
        EXPECT_EQ(outcome.code, 0) << outcome.errors << outcome.output;
        EXPECT_EQ(outcome.output.rfind("repaired: ", 0), 0U);
        EXPECT_EQ(volume.bytes(), good);
    }
}

TEST(Repair, FreeSpaceLeavesSpareTablesAlone)
{
    DiskVolume volume = tests::disk_with_holes();
    volume.spare_distance = 3;
    volume.availability_end = 24;
    volume.tracks = 5;
    volume.data_tracks = 3;
    volume.entries.resize(1);
    volume.runs = Runs{{60, 4}};
    const TemporaryFile image(disk45_image(volume));
    EXPECT_EQ(run_on("repair", image).code, 0);
    EXPECT_EQ(stored_disk(image.bytes()).runs, (Runs{{60, 3}, {66, 25}, {114, 36}}));
}

TEST(Repair, SoundVolumeIsNotWritten)
{
    const TemporaryFolder folder;
    const std::string volume = folder.add("disc.hpi", disk45_image(tests::disk_with_holes()));
    tests::set_written_at(volume, "1987-03-09 08:07:06");
    const Outcome outcome = run({"repair", volume, "--backup"});
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(tests::written_at(volume), "1987-03-09 08:07:06");
    EXPECT_EQ(folder.names(), Names({"disc.hpi"})) << "there is nothing to keep a copy of";
}

TEST(Repair, WhatIsWrongWithFilesIsLeft)
{
    LifVolume volume = with_bad_entry();
    volume.entries.push_back({.name = "ONE", .start = 30});
    const TemporaryFile image(tests::lif_image(volume));
    const Outcome outcome = run_on("repair", image);
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.output,
              "repaired: " + bad_entry + "left: ONE.ASCII at record 30 bears the name of ONE.ASCII at record 5\n");
    const Bytes repaired = image.bytes();
    const Outcome again = run_on("repair", image);
    EXPECT_EQ(again.code, 3) << "there is nothing more that it could do";
    EXPECT_EQ(again.output, "left: ONE.ASCII at record 30 bears the name of ONE.ASCII at record 5\n");
    EXPECT_EQ(image.bytes(), repaired);
}

TEST(Repair, DryRunOnlySays)
{
    LifVolume volume = with_bad_entry();
    volume.entries.push_back({.name = "ONE", .start = 30});
    const TemporaryFile image(tests::lif_image(volume));
    const Bytes before = image.bytes();
    const Outcome outcome = run_on("repair", image, {"--dry-run", "--backup"});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.output, "to be repaired: " + bad_entry +
                                  "left: ONE.ASCII at record 30 bears the name of ONE.ASCII at record 5\n");
    EXPECT_EQ(image.bytes(), before);
    EXPECT_FALSE(std::filesystem::exists(std::string(image.path()) + ".bak"));
}

TEST(Repair, BackupIsFromBefore)
{
    const TemporaryFolder folder;
    const Bytes before = tests::lif_image(with_bad_entry());
    EXPECT_EQ(run({"repair", folder.add("disc.lif", before), "--backup"}).code, 0);
    EXPECT_EQ(folder.names(), Names({"disc.lif", "disc.lif.bak"}));
    EXPECT_EQ(folder.bytes("disc.lif.bak"), before);
    EXPECT_NE(folder.bytes("disc.lif"), before);
}

TEST(Repair, TablesWhereTheyCannotBeAreNotWritten)
{
    LifVolume volume;
    for (int i = 0; i < 16; ++i) volume.entries.push_back({.name = "F" + std::to_string(i)});
    volume.end_mark = false;
    volume.records = 3;
    const Bytes before = tests::lif_image(volume);
    const TemporaryFile image(before);
    const Outcome outcome = run_on("repair", image);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, error_line("Bad directory entry (table behind the end of the medium)"));
    EXPECT_EQ(image.bytes(), before);
}

TEST(Repair, WhatCannotBeRepaired)
{
    const TemporaryFile nothing;
    EXPECT_EQ(run_on("repair", nothing).code, 1);
    const TemporaryFile other(Bytes(1000, 0x55));
    EXPECT_EQ(run_on("repair", other).errors, error_line("Unsupported format"));
    const TemporaryFile volume(tests::lif_image(with_bad_entry()));
    EXPECT_EQ(run({"repair", std::string(volume.path()) + ":DIR"}).code, 1);
    EXPECT_EQ(volume.bytes(), tests::lif_image(with_bad_entry()));
}

// A table that was written in part may be torn, which is told; the volume opens and no file has changed.
TEST(Repair, EachFailingCallIsToldAndTheVolumeOpens)
{
    DiskVolume damaged = tests::disk_with_holes();
    damaged.runs = Runs{{60, 60}};
    damaged.entries.push_back({.name = "ZERO", .start = 0});
    const Bytes before = disk45_image(damaged);
    Arguments arguments;
    for (const FileFault fault : {FileFault::open, FileFault::seek, FileFault::read, FileFault::write,
                                  FileFault::short_write, FileFault::size}) {
        bool reached = true;
        for (uint32_t nth = 1; reached; ++nth) {
            ASSERT_LT(nth, 300U) << "no end of calls";
            const TemporaryFile volume(before);
            arguments.medium = volume.path();
            testing::internal::CaptureStderr();
            testing::internal::CaptureStdout();
            int code = 0;
            {
                const tests::FileFaults faults(fault, nth);
                code = run_repair(arguments);
                reached = faults.reached;
            }
            const std::string output = testing::internal::GetCapturedStdout();
            const std::string errors = testing::internal::GetCapturedStderr();
            EXPECT_TRUE(reached || code == exit_done) << errors << output;
            const bool told_as_left = code == exit_partly && output.find("\nleft: ") != std::string::npos;
            EXPECT_EQ(tests::error_lines(errors), code == exit_done || told_as_left ? 0U : 1U) << nth << errors;
            const Bytes after = volume.bytes();
            EXPECT_TRUE(std::equal(before.begin() + 60 * 256, before.end(), after.begin() + 60 * 256)) << nth;
            testing::internal::CaptureStdout();
            const int check = run_check(arguments);
            const std::string checked = testing::internal::GetCapturedStdout();
            EXPECT_TRUE(check == exit_done || (check == exit_faults && code != exit_done)) << nth << checked;
        }
    }
}
