// Purged files of LIF volumes come back.
#include <string>

#include <gtest/gtest.h>

#include "tests/console/changes.h"
#include "tests/console/copies.h"
#include "tests/support/system45_builder.h"

using tests::Bytes;
using tests::change;
using tests::error_line;
using tests::expect_refused;
using tests::expect_silent;
using tests::LifEntry;
using tests::LifVolume;
using tests::Names;
using tests::Outcome;
using tests::TemporaryFile;
using tests::volume_of;

namespace
{

LifEntry purged(const std::string &name)
{
    return {.name = name, .type = 0, .content = tests::lif_ascii({"still here"})};
}

// FIRST, the purged OLD at record 5, LAST.
LifVolume with_purged()
{
    return volume_of({{.name = "FIRST"}, purged("OLD"), {.name = "LAST"}});
}

}

TEST(Undelete, FileIsAsItWas)
{
    const TemporaryFile volume(tests::lif_image(with_purged()));
    expect_silent(change("undelete", volume, {"OLD", "--type", "ASCII"}));
    LifVolume expected = with_purged();
    expected.entries[1].type = 1;
    EXPECT_EQ(volume.bytes(), tests::lif_image(expected));
    EXPECT_EQ(tests::run({"cat", volume.path(), "OLD"}).output, "still here\r\n");
}

TEST(Undelete, DryRunSaysWhatVerboseSaysAndChangesNothing)
{
    const TemporaryFile volume(tests::lif_image(with_purged()));
    const Outcome plan = change("undelete", volume, {"OLD", "--type", "#e020", "--dry-run"});
    EXPECT_EQ(plan.code, 0);
    EXPECT_EQ(plan.output, "OLD.BAS8x: type BAS8x, 256 bytes, at record 5\n");
    EXPECT_EQ(volume.bytes(), tests::lif_image(with_purged()));
    EXPECT_EQ(change("undelete", volume, {"OLD", "--type", "#e020", "-v"}).errors, plan.output);
    EXPECT_EQ(tests::listed(volume), "FIRST.ASCII OLD.BAS8x LAST.ASCII");
}

TEST(Undelete, LengthOfRecordsComesBackToo)
{
    LifVolume contents = with_purged();
    contents.entries[1].implementation = {0x80, 0x01, ' ', ' ', 0x01, 0x00};
    const TemporaryFile volume(tests::lif_image(contents));
    expect_silent(change("undelete", volume, {"OLD", "--type", "BDAT"}));
    EXPECT_EQ(tests::listed(volume), "FIRST.ASCII OLD.&512.BDAT LAST.ASCII");
}

TEST(Undelete, MarkedNameIsFoundWithAndWithoutMarker)
{
    for (const char *name : {"OLD", "OLDC______"}) {
        const TemporaryFile volume(tests::lif_image(volume_of({purged("OLDC______")})));
        expect_silent(change("undelete", volume, {name, "--type", "CODE"}));
        EXPECT_EQ(tests::listed(volume), "OLD.CODE");
    }
}

TEST(Undelete, NameThatIsThereAgainIsRefused)
{
    LifVolume contents = with_purged();
    contents.entries.push_back({.name = "OLD"});
    const TemporaryFile volume(tests::lif_image(contents));
    expect_refused(change("undelete", volume, {"OLD", "--type", "ASCII"}),
                   error_line("OLD: Target already exists (file \"OLD\")"));
    EXPECT_EQ(volume.bytes(), tests::lif_image(contents));
}

TEST(Undelete, RecordsInUseAreRefused)
{
    LifVolume contents = with_purged();
    contents.entries[2].start = 5;
    const TemporaryFile volume(tests::lif_image(contents));
    expect_refused(change("undelete", volume, {"OLD", "--type", "ASCII"}),
                   error_line("OLD: Its records are in use by LAST.ASCII"));
    contents.entries[1].start = 4;
    contents.entries[1].length = 9;
    volume.replace(tests::lif_image(contents));
    expect_refused(change("undelete", volume, {"OLD", "--type", "ASCII"}),
                   error_line("OLD: Its records are in use by FIRST.ASCII"));
    EXPECT_EQ(volume.bytes(), tests::lif_image(contents));
}

TEST(Undelete, PlaceOutsideTheVolumeIsRefused)
{
    for (const uint32_t start : {1U, 3U, 159U, 100000U}) {
        LifVolume contents = with_purged();
        contents.entries[1].start = start;
        contents.entries[1].length = 2;
        contents.entries[2].start = 8;
        const TemporaryFile volume(tests::lif_image(contents));
        expect_refused(change("undelete", volume, {"OLD", "--type", "ASCII"}),
                       error_line("OLD: Its records lie outside the volume"));
        EXPECT_EQ(volume.bytes(), tests::lif_image(contents)) << start;
    }
}

TEST(Undelete, AddressSaysWhichOfSeveral)
{
    LifVolume contents = volume_of({purged("OLD"), {.name = "FIRST"}, purged("OLD")});
    const TemporaryFile volume(tests::lif_image(contents));
    expect_refused(change("undelete", volume, {"OLD", "--type", "ASCII"}),
                   error_line("OLD: Several purged files are called that, --at says which: 4, 6"));
    expect_silent(change("undelete", volume, {"OLD", "--type", "ASCII", "--at", "6"}));
    contents.entries[2].type = 1;
    EXPECT_EQ(volume.bytes(), tests::lif_image(contents));
}

TEST(Undelete, WhatIsNotPurgedIsNotFound)
{
    const TemporaryFile volume(tests::lif_image(with_purged()));
    for (const char *name : {"FIRST", "NONE", "OLD*", "old"}) {
        expect_refused(change("undelete", volume, {name, "--type", "ASCII"}),
                       error_line(std::string(name) + ": File not found (no purged file \"" + name + "\")"));
    }
    const std::string text = "OLD: File not found (no purged file \"OLD\")";
    expect_refused(change("undelete", volume, {"OLD", "--type", "ASCII", "--at", "4"}), error_line(text));
    EXPECT_EQ(change("undelete", volume, {"OLD", "--type", "ASCII", "--at", "4", "--dry-run"}).output, text + "\n");
    EXPECT_EQ(volume.bytes(), tests::lif_image(with_purged()));
}

TEST(Undelete, TypesThatEndAListAreRefused)
{
    const TemporaryFile volume(tests::lif_image(with_purged()));
    for (const char *type : {"PURGE", "#0", "EOD"}) {
        expect_refused(change("undelete", volume, {"OLD", "--type", type}),
                       error_line("OLD: Not supported (files of that type)"));
    }
    expect_refused(change("undelete", volume, {"OLD", "--type", "WORK"}),
                   error_line("OLD: Unknown file type (\"WORK\")"));
    EXPECT_EQ(volume.bytes(), tests::lif_image(with_purged()));
}

TEST(Undelete, OnlyLifVolumesKeepWhatIsNeeded)
{
    const TemporaryFile disk(tests::disk_of_three());
    expect_refused(change("undelete", disk, {"OLD", "--type", "DATA"}),
                   error_line("Not supported (undelete on a System 45 disk volume)"));
    const TemporaryFile tape(tests::tape_of_three());
    expect_refused(change("undelete", tape, {"OLD", "--type", "DATA"}),
                   error_line("Not supported (undelete on a System 45 tape volume)"));
}

TEST(Undelete, TypeIsRequired)
{
    const TemporaryFile volume(tests::lif_image(with_purged()));
    const Outcome outcome = change("undelete", volume, {"OLD"});
    EXPECT_EQ(outcome.code, 64);
    EXPECT_EQ(outcome.errors, error_line("--type is required: a purged file has lost its type") +
                                  "[tarvo]        Try \"tarvo --help\".\n");
    EXPECT_EQ(change("undelete", volume, {"OLD", "--type", "NONE"}).code, 64);
}
