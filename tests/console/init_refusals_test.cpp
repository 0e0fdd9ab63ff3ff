// What init refuses, and what it leaves behind when it fails: nothing, and what was there.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "console/exit_code.h"
#include "console/init.h"
#include "tests/console/disks.h"
#include "tests/console/folder.h"
#include "tests/support/faults.h"

using tests::Bytes;
using tests::error_line;
using tests::expect_good;
using tests::FileFault;
using tests::Names;
using tests::Outcome;
using tests::run;
using tests::TemporaryFile;
using tests::TemporaryFolder;

namespace fs = std::filesystem;

TEST(InitRefusals, CommandLinesThatMeanNoVolume)
{
    const std::pair<Names, std::string> rows[] = {
        {{}, "--media or --format is required"},
        {{"--size", "1M"}, "--media or --format is required"},
        {{"--format", "lif"}, "--media or --size is required"},
        {{"--format", "disk45"}, "--media or --size is required"},
        {{"--media", "9999"}, "There is no medium \"9999\"; --media list shows them all"},
        {{"--media", "9895", "--size", "1M"}, "--media has a size and a geometry of its own"},
        {{"--media", "9895", "--sectors", "3"}, "--media has a size and a geometry of its own"},
        {{"--media", "list"}, "--media list takes no medium"},
        {{"--media", "9895", "--json"}, "--json goes with --media list"},
        {{"--format", "tape45", "--media", "9895"}, "--media has no meaning on such a volume"},
        {{"--format", "tape45", "--size", "1M"}, "--size has no meaning on such a volume"},
        {{"--format", "tape45", "--dir", "20"}, "--dir has no meaning on such a volume"},
        {{"--format", "tape45", "--label", "X"}, "--label has no meaning on such a volume"},
        {{"--format", "lif", "--media", "9895", "--system", "9845"}, "--system has no meaning on such a volume"},
        {{"--format", "lif", "--media", "9895", "--interleave", "1"}, "--interleave has no meaning on such a volume"},
        {{"--format", "lif", "--media", "9895", "--boot", "x"}, "--boot has no meaning on such a volume"},
        {{"--format", "disk45", "--size", "1M", "--heads", "2"}, "--heads has no meaning on such a volume"},
        {{"--format", "lif", "--size", "1M", "--heads", "2"}, "--heads goes with --sectors"},
        {{"--format", "lif", "--size", "0"}, "--size takes a number of bytes below 4G, also with K or M"},
        {{"--format", "lif", "--size", "-1"}, "--size takes a number of bytes below 4G, also with K or M"},
        {{"--format", "lif", "--size", "1G"}, "--size takes a number of bytes below 4G, also with K or M"},
        {{"--format", "lif", "--size", "4096M"}, "--size takes a number of bytes below 4G, also with K or M"},
        {{"--format", "lif", "--size", "99999999999999999999"},
         "--size takes a number of bytes below 4G, also with K or M"},
        {{"--format", "lif", "--size", "1000"}, "--size isn't a whole number of records of 256 bytes"},
        {{"--format", "lif", "--size", "1K"}, "The medium is too small for the directory"},
        {{"--format", "lif", "--size", "10K", "--sectors", "7"}, "--size isn't a whole number of tracks"},
        {{"--format", "lif", "--size", "270K", "--dir", "9000"}, "The medium is too small for the directory"},
        {{"--format", "lif", "--size", "270K", "--label", "TOOLONG"},
         "The label is at most 6 printable ASCII characters"},
        {{"--format", "lif", "--size", "270K", "--label", "A\tB"}, "The label is at most 6 printable ASCII characters"},
        {{"--media", "9895", "--label", "X"}, "Such a volume has no label"},
        {{"--media", "9895", "--system", "250", "--label", "NINECHARS"},
         "The label is at most 8 printable ASCII characters"},
        {{"--media", "9895", "--boot", "x"}, "--boot goes with --system 9825"},
        {{"--media", "9895", "--system", "9825", "--dir", "10"}, "The directory of a 9825 has its size"},
        {{"--media", "9122", "--system", "9825"},
         "A disk of the 9825 has 30 records a track and its availability table at record 23; of the media these are "
         "9885 and 9895"},
        {{"--media", "9895", "--dir", "900"}, "The directory doesn't fit into the system tracks"},
        {{"--format", "disk45", "--size", "8K"}, "The medium is too small for the directory"},
        {{"--format", "disk45", "--size", "512M", "--sectors", "1"}, "The medium is too large for a System 45 disk"},
    };
    for (const auto &[words, text] : rows) {
        const TemporaryFile volume(".hpi");
        const Outcome outcome = tests::run_on("init", volume, words);
        EXPECT_EQ(outcome.code, 64) << text;
        EXPECT_EQ(outcome.errors, error_line(text) + "[tarvo]        Try \"tarvo --help\".\n");
        EXPECT_FALSE(volume.exists()) << text;
    }
    EXPECT_EQ(run({"init", "--media", "9895"}).errors,
              error_line("MEDIUM is required") + "[tarvo]        Try \"tarvo --help\".\n");
}

TEST(InitRefusals, MoreFreeRecordsThanAWordCanSay)
{
    const TemporaryFile volume(".hpi");
    const Outcome outcome = tests::run_on("init", volume, {"--media", "7912"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, error_line("Unsupported format (more than 65535 free records, which need --system 250)"));
    EXPECT_FALSE(volume.exists());
}

TEST(InitRefusals, WhatIsThereStays)
{
    for (const Bytes &old : {Bytes(100, 'x'), tests::lif_image(tests::demo_volume()), Bytes{}}) {
        const TemporaryFile volume(old, ".hpi");
        const Outcome outcome = tests::run_on("init", volume, {"--media", "9122"});
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.errors, error_line("Target already exists (file \"" + std::string(volume.path()) +
                                             "\", --force replaces it)"));
        EXPECT_EQ(volume.bytes(), old);
        expect_good(tests::run_on("init", volume, {"--media", "9122", "--force"}));
        EXPECT_EQ(volume.bytes().size(), 630784U);
    }
}

TEST(InitRefusals, MediaThatAreNoImageFiles)
{
    const TemporaryFolder folder;
    for (const std::string &medium :
         {std::string("0:"), std::string("700:"), folder.path("new.tap"), folder.path("new.hpi") + ":DIR"}) {
        const Outcome outcome = run({"init", medium, "--media", "9122", "--force"});
        EXPECT_EQ(outcome.code, 1) << medium;
        EXPECT_NE(outcome.errors.find("Not supported"), std::string::npos) << outcome.errors;
    }
    const Outcome outcome = run({"init", folder.path(), "--media", "9122", "--force"});
    EXPECT_EQ(outcome.code, 1) << "a folder";
    EXPECT_EQ(run({"init", folder.path("missing/new.hpi"), "--media", "9122"}).code, 1);
    EXPECT_EQ(folder.names(), Names({}));
}

TEST(InitRefusals, DeviceIsNotReplaced)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "devices have no names in folders there";
    const Outcome outcome = run({"init", "/dev/null", "--media", "9122", "--force"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, error_line("Not supported (new volume on what is no image file)"));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST(InitRefusals, SystemCodeOfAnotherLength)
{
    const TemporaryFolder folder;
    const std::string volume = folder.path("new.hpi");
    for (const size_t length : {size_t{0}, size_t{30719}, size_t{30721}}) {
        const std::string code = folder.add("code", Bytes(length));
        const Outcome outcome = run({"init", volume, "--media", "9885", "--system", "9825", "--boot", code});
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.errors, error_line("File read error (file \"" + code + "\", which isn't 30720 bytes long)"));
    }
    EXPECT_EQ(run({"init", volume, "--media", "9885", "--system", "9825", "--boot", folder.path("no")}).code, 1);
    EXPECT_EQ(folder.names(), Names({"code"}));
}

TEST(InitSafety, DryRunMakesNothing)
{
    const TemporaryFolder folder;
    const std::string volume = folder.path("new.hpi");
    const Outcome outcome = run({"init", volume, "--media", "9895", "--dry-run"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output, volume + ": System 45 disk of the 9845, 1152000 bytes\n"
                                       "  directory                       22 records from record 1 on\n"
                                       "  availability table               6 records from record 23 on\n"
                                       "  spare directory                 22 records from record 1741 on\n"
                                       "  spare availability table         6 records from record 1763 on\n"
                                       "  free                          4440 records from record 60 on\n"
                                       "  the file area is filled\n");
    EXPECT_EQ(folder.names(), Names({}));
    const std::string old = folder.add("old.hpi", "old");
    EXPECT_EQ(run({"init", old, "--format", "tape45", "--dry-run"}).code, 1);
    EXPECT_EQ(run({"init", old, "--format", "tape45", "--dry-run", "--force", "--quick"}).output,
              old + ": System 45 tape, 218112 bytes, in place of the old file\n  the file area stays as it is\n");
    EXPECT_EQ(folder.text("old.hpi"), "old");
}

TEST(InitSafety, ReplacedFileKeepsItsRights)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "rights are another matter there";
    const TemporaryFolder folder;
    const std::string volume = folder.add("old.hpi", "old");
    const std::string link = folder.path("link.hpi");
    fs::permissions(volume, fs::perms::owner_read | fs::perms::owner_write | fs::perms::others_read);
    fs::create_symlink("old.hpi", link);
    expect_good(run({"init", link, "--format", "tape45", "--force"}));
    EXPECT_TRUE(fs::is_symlink(link)) << "the file behind it is replaced";
    EXPECT_EQ(folder.bytes("old.hpi").size(), 218112U);
    EXPECT_EQ(fs::status(volume).permissions(),
              fs::perms::owner_read | fs::perms::owner_write | fs::perms::others_read);
    EXPECT_EQ(folder.names(), Names({"link.hpi", "old.hpi"}));
}

TEST(InitSafety, FullDiskLeavesWhatWasThere)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "there is no limit for the size of files there";
    const TemporaryFolder folder;
    const std::string volume = folder.add("old.hpi", "old");
    const std::string around = "trap '' XFSZ; ulimit -f 600; %";
    for (const std::string &target : {volume, folder.path("new.hpi")}) {
        const Outcome outcome = tests::run_in_shell({"init", target, "--media", "9122", "--force"}, around);
        EXPECT_EQ(outcome.code, 1) << outcome.errors;
        EXPECT_EQ(tests::error_lines(outcome.errors), 1U) << outcome.errors;
        EXPECT_EQ(folder.names(), Names({"old.hpi"}));
        EXPECT_EQ(folder.text("old.hpi"), "old");
    }
}

TEST(InitSafety, FolderThatCannotBeWritten)
{
    if (!tests::can_drop_rights()) GTEST_SKIP() << "rights can only be dropped natively, by root, with setpriv";
    const TemporaryFolder folder;
    fs::permissions(folder.path(), fs::perms::owner_all | fs::perms::others_read | fs::perms::others_exec);
    const Outcome outcome =
        tests::run_in_shell({"init", folder.path("new.hpi"), "--format", "tape45"}, tests::as_nobody);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors,
              error_line("Can't create file (file \"" + folder.path("new.hpi.new") + "\": Permission denied)"));
}

TEST(InitSafety, NameBesideThatIsTaken)
{
    const TemporaryFolder folder;
    folder.add("disc.hpi.new", "somebody's");
    expect_good(run({"init", folder.path("disc.hpi"), "--format", "tape45"}));
    EXPECT_EQ(folder.names(), Names({"disc.hpi", "disc.hpi.new"}));
    EXPECT_EQ(folder.text("disc.hpi.new"), "somebody's");
}

// Whatever call fails, there is the whole new volume or what was there before, and nothing beside it.
TEST(InitSafety, Hazard_K7_EachFailingCallLeavesOldOrNew)
{
    Arguments arguments;
    arguments.format = "disk45";
    arguments.volume_size = "512K";
    arguments.force = true;
    for (const FileFault fault : {FileFault::open, FileFault::seek, FileFault::read, FileFault::write,
                                  FileFault::short_write, FileFault::set_end, FileFault::size}) {
        bool reached = true;
        bool seen_old = false;
        for (uint32_t nth = 1; reached; ++nth) {
            ASSERT_LT(nth, 300U) << "no end of calls";
            const TemporaryFolder folder;
            arguments.medium = folder.add("disc.hpi", "old");
            testing::internal::CaptureStderr();
            int code = 0;
            {
                const tests::FileFaults faults(fault, nth);
                code = run_init(arguments);
                reached = faults.reached;
            }
            const std::string errors = testing::internal::GetCapturedStderr();
            EXPECT_EQ(folder.names(), Names({"disc.hpi"})) << nth;
            const Bytes now = folder.bytes("disc.hpi");
            EXPECT_EQ(code == exit_done, now.size() == 512 * 1024) << nth << errors;
            if (code == exit_done) {
                EXPECT_EQ(tests::stored_disk(now).runs.size(), 1U);
            } else {
                EXPECT_EQ(folder.text("disc.hpi"), "old");
                EXPECT_EQ(tests::error_lines(errors), 1U) << errors;
                seen_old = true;
            }
        }
        const bool matters = fault == FileFault::open || fault == FileFault::write || fault == FileFault::short_write ||
                             fault == FileFault::set_end;
        EXPECT_TRUE(seen_old || !matters) << static_cast<int>(fault);
    }
}
