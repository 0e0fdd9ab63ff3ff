// Free space joined on a copy, and the disks that stay as they are.
#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "console/exit_code.h"
#include "console/pack.h"
#include "tests/console/disks.h"
#include "tests/console/folder.h"
#include "tests/support/faults.h"

using tests::Bytes;
using tests::disk45_image;
using tests::disk_with_holes;
using tests::DiskVolume;
using tests::error_line;
using tests::expect_good;
using tests::file_content;
using tests::FileFault;
using tests::Names;
using tests::Outcome;
using tests::run;
using tests::run_on;
using tests::Runs;
using tests::stored_disk;
using tests::TemporaryFile;
using tests::TemporaryFolder;

namespace fs = std::filesystem;

namespace
{

const std::string stays = "[tarvo] The image is as it was.\n";

Bytes packed_holes()
{
    const TemporaryFile volume(disk45_image(disk_with_holes()));
    expect_good(run_on("pack", volume));
    return volume.bytes();
}

void expect_refused(const Bytes &image, const std::string &errors)
{
    const TemporaryFolder folder;
    const std::string volume = folder.add("disc.hpi", image);
    const Outcome outcome = run({"pack", volume});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, errors);
    EXPECT_EQ(folder.bytes("disc.hpi"), image);
    EXPECT_EQ(folder.names(), Names({"disc.hpi"}));
}

// A folder of its own for temporary files, of the test and of the programs that it runs, so that others' don't count.
class OwnTemporaryFolder
{
  public:
    OwnTemporaryFolder()
    {
        const char *old = std::getenv("TMPDIR");
        if (old != nullptr) old_ = old;
        setenv("TMPDIR", folder_.path().c_str(), 1);
    }
    ~OwnTemporaryFolder()
    {
        old_.empty() ? unsetenv("TMPDIR") : setenv("TMPDIR", old_.c_str(), 1);
    }
    OwnTemporaryFolder(const OwnTemporaryFolder &) = delete;
    OwnTemporaryFolder &operator=(const OwnTemporaryFolder &) = delete;

    Names left_over() const
    {
        Names names = folder_.names();
        std::erase_if(names, [](const std::string &name) { return !name.starts_with("TRV$$"); });
        return names;
    }

  private:
    TemporaryFolder folder_;
    std::string old_;
};

}

TEST(Pack, FreeSpaceIsInOnePiece)
{
    const Bytes before = disk45_image(disk_with_holes());
    const Bytes after = packed_holes();
    EXPECT_EQ(stored_disk(after).runs, (Runs{{76, 44}}));
    EXPECT_TRUE(stored_disk(after).spares_agree);
    for (const char *name : {"ALPHA", "BETA", "GAMMA"})
        EXPECT_EQ(file_content(after, name), file_content(before, name));
    const TemporaryFile volume(after);
    EXPECT_EQ(run_on("check", volume).code, 0);
    const Bytes again = volume.bytes();
    expect_good(run_on("pack", volume));
    EXPECT_EQ(volume.bytes(), again) << "a packed disk stays as it is";
}

TEST(Pack, SaysWhereFilesWent)
{
    const OwnTemporaryFolder own;
    const TemporaryFile volume(disk45_image(disk_with_holes()));
    const std::string moves = "ALPHA.PROG: record 63 -> 60\nBETA.DATA: record 70 -> 63\n"
                              "GAMMA.&512.BDAT: record 90 -> 68\nfree: 44 records from record 76 on\n";
    const Outcome dry = run_on("pack", volume, {"--dry-run", "--backup"});
    EXPECT_EQ(dry.code, 0);
    EXPECT_EQ(dry.output, moves);
    EXPECT_EQ(dry.errors, "");
    EXPECT_EQ(volume.bytes(), disk45_image(disk_with_holes()));
    EXPECT_EQ(own.left_over(), Names({}));
    EXPECT_FALSE(fs::exists(std::string(volume.path()) + ".bak"));
    const Outcome outcome = run_on("pack", volume, {"-v"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, moves);
    EXPECT_EQ(volume.bytes(), packed_holes());
}

TEST(Pack, BackupIsFromBefore)
{
    const TemporaryFolder folder;
    const Bytes before = disk45_image(disk_with_holes());
    const std::string volume = folder.add("disc.hpi", before);
    const Outcome outcome = run({"pack", volume, "--backup", "-v"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors.rfind(volume + " -> " + volume + ".bak\n", 0), 0U) << outcome.errors;
    EXPECT_EQ(folder.names(), Names({"disc.hpi", "disc.hpi.bak"}));
    EXPECT_EQ(folder.bytes("disc.hpi.bak"), before);
    EXPECT_EQ(folder.bytes("disc.hpi"), packed_holes());
}

TEST(Pack, ImageKeepsItsRightsAndLinksLeadToIt)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "rights are another matter there";
    const TemporaryFolder folder;
    const std::string volume = folder.add("disc.hpi", disk45_image(disk_with_holes()));
    const fs::perms rights = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_write;
    fs::permissions(volume, rights);
    fs::create_symlink("disc.hpi", folder.path("link.hpi"));
    expect_good(run({"pack", folder.path("link.hpi")}));
    EXPECT_TRUE(fs::is_symlink(folder.path("link.hpi")));
    EXPECT_EQ(folder.bytes("disc.hpi"), packed_holes());
    EXPECT_EQ(fs::status(volume).permissions(), rights);
    EXPECT_EQ(folder.names(), Names({"disc.hpi", "link.hpi"}));
}

// Another user's image stays another user's, also where its folder lets everybody rename.
TEST(Pack, ImageOfAnotherUserIsNotTaken)
{
    if (!tests::can_drop_rights()) GTEST_SKIP() << "rights can only be dropped natively, by root, with setpriv";
    const TemporaryFolder folder;
    fs::permissions(folder.path(), fs::perms::all);
    const Bytes before = disk45_image(disk_with_holes());
    const std::string volume = folder.add("disc.hpi", before);
    fs::permissions(volume, fs::perms::all);
    const Outcome outcome = tests::run_in_shell({"pack", volume}, tests::as_nobody);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors,
              error_line("Can't create file (file \"" + volume + "\": Operation not permitted)") + stays);
    EXPECT_EQ(folder.bytes("disc.hpi"), before);
    EXPECT_EQ(folder.names(), Names({"disc.hpi"}));
}

TEST(Pack, ImageThatMayOnlyBeRead)
{
    if (!tests::can_drop_rights()) GTEST_SKIP() << "rights can only be dropped natively, by root, with setpriv";
    const TemporaryFolder folder;
    fs::permissions(folder.path(), fs::perms::all);
    const std::string volume = folder.add("disc.hpi", disk45_image(disk_with_holes()));
    fs::permissions(volume, fs::perms::others_read);
    EXPECT_EQ(tests::run_in_shell({"pack", volume}, tests::as_nobody).code, 1);
    EXPECT_EQ(folder.bytes("disc.hpi"), disk45_image(disk_with_holes()));
}

TEST(Pack, PurgedFilesAreGone)
{
    DiskVolume volume = disk_with_holes();
    volume.entries.push_back({.name = std::string("\0URGED", 6), .start = 66, .fill = 'x'});
    const TemporaryFile image(disk45_image(volume));
    std::swap(volume.entries[1], volume.entries[3]); // ahead of others in the directory
    image.replace(disk45_image(volume));
    expect_good(run_on("pack", image));
    EXPECT_EQ(stored_disk(image.bytes()).files.size(), 3U);
    EXPECT_EQ(file_content(image.bytes(), "GAMMA"), std::string(8 * 256, 'c'));
    EXPECT_EQ(run_on("check", image).code, 0);
}

// ---- disks that stay as they are -----------------------------------------------------------------------------

TEST(PackRefusals, Hazard_K2_PartRecordsWouldBeLost)
{
    DiskVolume volume = disk_with_holes();
    volume.entries[1] = {.name = "PART", .type = 0xD000, .start = 70, .records = 3, .words = 100, .fill = 'p'};
    volume.runs = Runs{{60, 3}, {66, 4}, {73, 17}, {98, 22}};
    expect_refused(disk45_image(volume),
                   error_line("PART.&200.BDAT: packing would lose its last 88 bytes, a part of a record") + stays);
    // Also where the file stays in its place, and only the free run would lie over it.
    volume.entries = {{.name = "PART", .type = 0xD000, .start = 60, .records = 3, .words = 100, .fill = 'p'}};
    volume.runs = Runs{{63, 57}};
    expect_refused(disk45_image(volume),
                   error_line("PART.&200.BDAT: packing would lose its last 88 bytes, a part of a record") + stays);
}

TEST(PackRefusals, TypesThatWouldChange)
{
    DiskVolume volume = disk_with_holes();
    volume.entries[0].type = 0xDE80;
    const TemporaryFolder folder;
    const Bytes image = disk45_image(volume);
    const Outcome outcome = run({"pack", folder.add("disc.hpi", image)});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_NE(outcome.errors.find("packing would change its type"), std::string::npos) << outcome.errors;
    EXPECT_EQ(folder.bytes("disc.hpi"), image);
    EXPECT_EQ(folder.names(), Names({"disc.hpi"}));
}

TEST(PackRefusals, VolumesWithoutAFreeList)
{
    expect_refused(tests::lif_image(tests::three_files()), error_line("Unsupported format (no free list)"));
    expect_refused(tests::tape45_image(tests::three_tape_files()), error_line("Unsupported format (no free list)"));
    DiskVolume full = disk_with_holes();
    full.runs = Runs{};
    expect_refused(disk45_image(full), error_line("No space left on device (no free list)") + stays);
}

TEST(PackRefusals, Hazard_K5_AreaOf65535RecordsAndMore)
{
    DiskVolume volume = disk_with_holes();
    volume.records_per_track = 250;
    volume.tracks = 265;
    volume.system_tracks = 1;
    volume.data_tracks = 264;
    volume.long_runs = true;
    volume.records = 400;
    volume.entries = {{.name = "ALPHA", .start = 300, .records = 3, .fill = 'a'}};
    volume.runs = Runs{{250, 50}, {303, 65947}};
    expect_refused(disk45_image(volume), error_line("No space left on device (file \"ALPHA\")") + stays);
}

TEST(PackRefusals, DirectoryThatCannotBeReadWhole)
{
    DiskVolume volume = disk_with_holes();
    volume.entries.push_back({.name = "ZERO", .start = 0});
    expect_refused(disk45_image(volume),
                   error_line("Unable to read media (directory not read whole; tarvo check tells more)"));
}

TEST(PackRefusals, FilesThatShareRecords)
{
    DiskVolume volume = disk_with_holes();
    volume.entries = {{.name = "ALPHA", .start = 60, .records = 20}, {.name = "BETA", .start = 61, .records = 9}};
    volume.runs = Runs{{80, 40}};
    expect_refused(disk45_image(volume), error_line("No space left on device (file \"ALPHA\")") + stays);
}

TEST(PackRefusals, MediaThatAreNoImageFiles)
{
    EXPECT_EQ(run({"pack", "0:"}).code, 1);
    EXPECT_EQ(run({"pack", "700:"}).code, 1);
    const TemporaryFile volume(disk45_image(disk_with_holes()));
    EXPECT_EQ(run({"pack", std::string(volume.path()) + ":DIR"}).code, 1);
    EXPECT_EQ(volume.bytes(), disk45_image(disk_with_holes()));
}

TEST(PackSafety, FullDiskLeavesTheImage)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "there is no limit for the size of files there";
    const TemporaryFolder folder;
    const Bytes before = disk45_image(disk_with_holes());
    const std::string volume = folder.add("disc.hpi", before);
    const Outcome outcome = tests::run_in_shell({"pack", volume}, "trap '' XFSZ; ulimit -f 20; %");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, error_line("Can't set EOF for file (file \"" + volume + ".new\")") + stays);
    EXPECT_EQ(folder.bytes("disc.hpi"), before);
    EXPECT_EQ(folder.names(), Names({"disc.hpi"}));
}

TEST(PackSafety, NameBesideThatIsTaken)
{
    const TemporaryFolder folder;
    const std::string volume = folder.add("disc.hpi", disk45_image(disk_with_holes()));
    folder.add("disc.hpi.new", "left over");
    expect_good(run({"pack", volume}));
    EXPECT_EQ(folder.text("disc.hpi.new"), "left over");
    EXPECT_EQ(folder.bytes("disc.hpi"), packed_holes());
}

// Whatever call fails, the image is the old one or the packed one, and nothing stands beside it.
TEST(PackSafety, Hazard_K1_EachFailingCallLeavesOldOrPacked)
{
    const Bytes before = disk45_image(disk_with_holes());
    const Bytes packed = packed_holes();
    const OwnTemporaryFolder own;
    Arguments arguments;
    for (const FileFault fault : {FileFault::open, FileFault::seek, FileFault::read, FileFault::short_read,
                                  FileFault::write, FileFault::short_write, FileFault::size}) {
        bool reached = true;
        uint32_t kept = 0;
        for (uint32_t nth = 1; reached; ++nth) {
            ASSERT_LT(nth, 500U) << "no end of calls";
            const TemporaryFolder folder;
            arguments.medium = folder.add("disc.hpi", before);
            testing::internal::CaptureStderr();
            int code = 0;
            {
                const tests::FileFaults faults(fault, nth);
                code = run_pack(arguments);
                reached = faults.reached;
            }
            const std::string errors = testing::internal::GetCapturedStderr();
            EXPECT_EQ(folder.names(), Names({"disc.hpi"})) << nth;
            EXPECT_TRUE(folder.bytes("disc.hpi") == (code == exit_done ? packed : before)) << nth << errors;
            EXPECT_TRUE(reached || code == exit_done) << nth << errors;
            if (code != exit_done) {
                EXPECT_EQ(tests::error_lines(errors), 1U) << nth << errors;
                ++kept;
            }
        }
        EXPECT_TRUE(kept > 0 || fault == FileFault::size) << static_cast<int>(fault);
    }
    EXPECT_EQ(own.left_over(), Names({}));
}
