// Empty files on a volume.
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
using tests::Layout;
using tests::LifVolume;
using tests::Names;
using tests::names_on;
using tests::Outcome;
using tests::StoredFile;
using tests::TemporaryFile;
using tests::VolumeCase;

namespace
{

void expect_usage(const Names &words, const std::string &text)
{
    const TemporaryFile volume(tests::lif_of_three());
    const Outcome outcome = change("mk", volume, words);
    EXPECT_EQ(outcome.code, 64) << text;
    EXPECT_EQ(outcome.errors, error_line(text) + "[tarvo]        Try \"tarvo --help\".\n");
    EXPECT_EQ(volume.bytes(), tests::lif_of_three());
}

}

class MkOnEach : public testing::TestWithParam<VolumeCase>
{
};

TEST_P(MkOnEach, FileHasItsRoomAndOthersStay)
{
    const Layout layout = GetParam().layout;
    const TemporaryFile volume(GetParam().image());
    expect_silent(change("mk", volume, {"NEW", "--type", "DATA", "--size", "700"}));
    EXPECT_EQ(names_on(layout, volume), Names({"ALPHA", "BETA", "GAMMA", "NEW"}));
    const StoredFile made = tests::file_on(layout, volume, "NEW");
    EXPECT_EQ(made.records, 3U);
    const Bytes content = content_of(volume.bytes(), made);
    for (size_t i = 0; i < content.size(); i += 2) ASSERT_EQ(tests::word_at(content, i), 60U) << i;
    EXPECT_EQ(tests::content_on(layout, volume, "GAMMA"), Bytes(8 * 256, 'c'));
}

TEST_P(MkOnEach, LongerRecordsGetTheirWholeRoom)
{
    const Layout layout = GetParam().layout;
    const TemporaryFile volume(GetParam().image());
    expect_silent(change("mk", volume, {"FIRST.&512.BDAT", "--size", "600"}));
    expect_silent(change("mk", volume, {"NEXT", "--type", "BDAT", "--size", "256"}));
    const StoredFile first = tests::file_on(layout, volume, "FIRST");
    const StoredFile next = tests::file_on(layout, volume, "NEXT");
    EXPECT_GE(next.start, first.start + first.records);
    EXPECT_GE(first.records, 3U);
}

TEST_P(MkOnEach, ExistingNameIsRefused)
{
    const TemporaryFile volume(GetParam().image());
    expect_refused(change("mk", volume, {"BETA", "--size", "1"}),
                   error_line("BETA: Target already exists (file \"BETA\")"));
    EXPECT_EQ(volume.bytes(), GetParam().image());
}

TEST_P(MkOnEach, NoRoomIsToldAndNothingIsChanged)
{
    const TemporaryFile volume(GetParam().image());
    for (const char *size : {"400000", "2000000000"}) {
        const Outcome outcome = change("mk", volume, {"BIG", "--size", size});
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.errors, error_line("BIG: No space left on device (file \"BIG\")"));
        EXPECT_EQ(change("mk", volume, {"BIG", "--size", size, "--dry-run"}).output,
                  "BIG: No space left on device (file \"BIG\")\n");
    }
    EXPECT_EQ(volume.bytes(), GetParam().image());
}

TEST_P(MkOnEach, DryRunSaysWhatVerboseSaysAndChangesNothing)
{
    const TemporaryFile volume(GetParam().image());
    const Names words = {"NEW", "--type", "DATA", "--size", "700"};
    Names planned = words;
    planned.push_back("--dry-run");
    const Outcome plan = change("mk", volume, planned);
    EXPECT_EQ(plan.code, 0);
    EXPECT_EQ(plan.errors, "");
    EXPECT_EQ(volume.bytes(), GetParam().image());
    Names told = words;
    told.push_back("-v");
    EXPECT_EQ(change("mk", volume, told).errors, plan.output);
    EXPECT_EQ(plan.output, "NEW.DATA: type DATA, 768 bytes, at record " +
                               std::to_string(tests::file_on(GetParam().layout, volume, "NEW").start) + "\n");
}

INSTANTIATE_TEST_SUITE_P(, MkOnEach, testing::ValuesIn(tests::three_volumes), testing::PrintToStringParamName());

TEST(Mk, EmptyTextHasNoLines)
{
    const TemporaryFile volume(tests::lif_of_three());
    expect_silent(change("mk", volume, {"TEXT1", "--size", "500"}));
    EXPECT_EQ(tests::file_on(Layout::lif, volume, "TEXT1").type, 1);
    expect_silent(tests::run({"cat", volume.path(), "TEXT1"}));
}

TEST(Mk, DateIsNow)
{
    const TemporaryFile volume(tests::lif_of_three());
    expect_silent(change("mk", volume, {"NEW", "--size", "0"}));
    const rapidjson::Document document = tests::json_of(tests::run({"ls", "--json", volume.path(), "NEW"}));
    const std::string date = document["entries"][0]["date"].GetString();
    const TemporaryFile other(tests::lif_of_three());
    EXPECT_EQ(date.substr(0, 4), tests::written_at(other.path()).substr(0, 4)) << date;
    EXPECT_EQ(document["entries"][0]["size"].GetInt(), 0);
}

TEST(Mk, MarkerOfATypeIsPartOfTheName)
{
    const TemporaryFile volume(tests::lif_of_three());
    expect_silent(change("mk", volume, {"NEW.CODE", "--size", "256"}));
    EXPECT_EQ(names_on(Layout::lif, volume).back(), "NEWC______");
    expect_refused(change("mk", volume, {"NEW", "--type", "CODE", "--size", "256"}),
                   error_line("NEW: Target already exists (file \"NEWC______\")"));
}

TEST(Mk, WhatTheDirectoryCannotSayIsRefused)
{
    const TemporaryFile lif(tests::lif_of_three());
    expect_refused(change("mk", lif, {"NEW", "--size", "1", "--record", "512"}),
                   error_line("NEW: Not supported (a length of records for type ASCII)"));
    for (const char *type : {"PURGE", "#0", "EOD", "#ffff"}) {
        const Outcome outcome = change("mk", lif, {"NEW", "--size", "1", "--type", type});
        EXPECT_EQ(outcome.code, 1) << type;
        EXPECT_EQ(outcome.errors, error_line("NEW: Not supported (files like this on a LIF volume)")) << type;
    }
    EXPECT_EQ(lif.bytes(), tests::lif_of_three());
    const TemporaryFile disk(tests::disk_of_three());
    expect_refused(change("mk", disk, {"NEW", "--size", "1", "--type", "#1234"}),
                   error_line("NEW: Not supported (files like this on a System 45 disk volume)"));
    EXPECT_EQ(disk.bytes(), tests::disk_of_three());
}

TEST(Mk, NamesThatCannotBeAreRefused)
{
    const TemporaryFile volume(tests::disk_of_three());
    expect_refused(change("mk", volume, {"SEVENAA", "--size", "1"}),
                   error_line("SEVENAA: Bad filename (file \"SEVENAA\": filename too long)"));
    expect_refused(change("mk", volume, {"A\"B", "--size", "1"}),
                   error_line("A\"B: Bad filename (file \"A\"B\": filename contains invalid character(s))"));
    expect_refused(change("mk", volume, {"NAME.XYZ", "--size", "1"}),
                   error_line("NAME.XYZ: Unknown file type (\"XYZ\")"));
    expect_refused(change("mk", volume, {"NAME", "--size", "1", "--type", "ASCII"}),
                   error_line("NAME: Unknown file type (\"ASCII\")"));
    expect_refused(change("mk", volume, {" ", "--size", "1"}),
                   error_line(" : Bad filename (file \" \": empty filename)"));
    EXPECT_EQ(volume.bytes(), tests::disk_of_three());
}

TEST(Mk, FullDirectoryIsTold)
{
    LifVolume contents;
    contents.directory_length = 1;
    for (int i = 0; i < 8; i++) contents.entries.push_back({.name = "F" + std::to_string(i)});
    const Bytes image = tests::lif_image(contents);
    const TemporaryFile volume(image);
    expect_refused(change("mk", volume, {"NEW", "--size", "1"}), error_line("NEW: Directory full (file \"NEW\")"));
    EXPECT_EQ(volume.bytes(), image);
}

TEST(Mk, CommandLinesThatCannotBe)
{
    expect_usage({"NEW"}, "--size is required");
    expect_usage({"a/b", "--size", "1"}, "NAME is without / \\ and :");
    expect_usage({"NEW", "--size", "1", "--record", "7"}, "--record: 7 is odd");
    expect_usage({"NEW", "--size", "1", "--type", "NONE"}, "--type: there is no type \"NONE\"");
    expect_usage({"NEW", "--size", "1", "--system", "PDP"}, "--system: there is no system \"PDP\"");
}
