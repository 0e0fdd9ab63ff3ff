// Types, lengths of records, dates and protection of files on a volume.
#include <algorithm>
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
using tests::Outcome;
using tests::StoredFile;
using tests::TemporaryFile;
using tests::volume_of;
using tests::VolumeCase;

namespace
{

const std::string nothing = "[tarvo] Nothing was changed.\n";

Bytes date_on(const TemporaryFile &volume, const std::string &name)
{
    const StoredFile file = tests::file_on(Layout::lif, volume, name);
    return Bytes(file.rest.begin(), file.rest.begin() + 6);
}

void expect_usage(const Names &words, const std::string &text)
{
    const TemporaryFile volume(tests::lif_of_three());
    const Outcome outcome = change("attr", volume, words);
    EXPECT_EQ(outcome.code, 64) << text;
    EXPECT_EQ(outcome.errors, error_line(text) + "[tarvo]        Try \"tarvo --help\".\n");
    EXPECT_EQ(volume.bytes(), tests::lif_of_three());
}

}

class AttrOnEach : public testing::TestWithParam<VolumeCase>
{
};

TEST_P(AttrOnEach, TypeChangesAndNothingElse)
{
    const Layout layout = GetParam().layout;
    const TemporaryFile volume(GetParam().image());
    const StoredFile before = tests::file_on(layout, volume, "ALPHA");
    expect_silent(change("attr", volume, {"ALPHA", "--type", "DATA"}));
    StoredFile after = tests::file_on(layout, volume, "ALPHA");
    EXPECT_NE(after.type, before.type);
    EXPECT_NE(tests::run({"ls", volume.path(), "*.DATA"}).output.find("ALPHA "), std::string::npos);
    after.type = before.type;
    after.rest = before.rest;
    EXPECT_EQ(after, before);
    EXPECT_EQ(tests::content_on(layout, volume, "ALPHA"), Bytes(3 * 256, 'a'));
    EXPECT_EQ(tests::names_on(layout, volume), Names({"ALPHA", "BETA", "GAMMA"}));
}

TEST_P(AttrOnEach, LengthOfRecordsChangesAndTheFileKeepsItsRoom)
{
    const Layout layout = GetParam().layout;
    const TemporaryFile volume(GetParam().image());
    const StoredFile before = tests::file_on(layout, volume, "GAMMA");
    expect_silent(change("attr", volume, {"GAMMA", "--record", "1024"}));
    EXPECT_EQ(tests::listed(volume).substr(tests::listed(volume).rfind(' ')), " GAMMA.&1024.BDAT");
    const StoredFile after = tests::file_on(layout, volume, "GAMMA");
    EXPECT_EQ(after.start, before.start);
    EXPECT_EQ(after.records, before.records);
    EXPECT_EQ(tests::content_on(layout, volume, "GAMMA"), Bytes(8 * 256, 'c'));
}

TEST_P(AttrOnEach, HiddenFilesAreUnknown)
{
    const TemporaryFile volume(GetParam().image());
    for (const char *word : {"on", "off"}) {
        const Outcome outcome = change("attr", volume, {"ALPHA", "--hide", word});
        EXPECT_EQ(outcome.code, 1) << word;
        EXPECT_NE(outcome.errors.find("Not supported (hidden files on a "), std::string::npos) << outcome.errors;
    }
    EXPECT_EQ(volume.bytes(), GetParam().image());
}

TEST_P(AttrOnEach, OneFileThatCannotKeepsAllAsTheyAre)
{
    const TemporaryFile volume(GetParam().image());
    const Outcome outcome = change("attr", volume, {"*", "--type", "NOSUCH"});
    EXPECT_EQ(outcome.code, 64) << outcome.errors;
    const Outcome other = change("attr", volume, {"*", "--record", "1026", "--type", "BDAT"});
    EXPECT_EQ(volume.bytes() == GetParam().image(), GetParam().layout != Layout::lif) << other.errors;
}

TEST_P(AttrOnEach, DryRunSaysWhatVerboseSaysAndChangesNothing)
{
    const TemporaryFile volume(GetParam().image());
    const Outcome plan = change("attr", volume, {"ALPHA", "GAMMA", "NONE", "--type", "BDAT", "--dry-run"});
    EXPECT_EQ(plan.code, 2);
    EXPECT_EQ(plan.errors, error_line("File not found (\"NONE\")"));
    EXPECT_NE(plan.output.find("ALPHA.PROG: type PROG (#"), std::string::npos) << plan.output;
    EXPECT_NE(plan.output.find(") becomes BDAT (#"), std::string::npos) << plan.output;
    EXPECT_NE(plan.output.find("GAMMA.&512.BDAT: stays as it is\n"), std::string::npos) << plan.output;
    EXPECT_EQ(volume.bytes(), GetParam().image());
    const Outcome outcome = change("attr", volume, {"ALPHA", "GAMMA", "--type", "BDAT", "-v"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, plan.output);
}

INSTANTIATE_TEST_SUITE_P(, AttrOnEach, testing::ValuesIn(tests::three_volumes), testing::PrintToStringParamName());

TEST(Attr, DateOfALifFile)
{
    const TemporaryFile volume(tests::lif_of_three());
    expect_silent(change("attr", volume, {"ALPHA", "--date", "1987-03-09T08:07:06"}));
    EXPECT_EQ(date_on(volume, "ALPHA"), Bytes({0x87, 0x03, 0x09, 0x08, 0x07, 0x06}));
    EXPECT_EQ(date_on(volume, "BETA"), Bytes(tests::some_date.begin(), tests::some_date.end()));
    expect_silent(change("attr", volume, {"ALPHA", "--date", "2045-12-31 23:59"}));
    EXPECT_EQ(date_on(volume, "ALPHA"), Bytes({0x45, 0x12, 0x31, 0x23, 0x59, 0}));
    expect_silent(change("attr", volume, {"ALPHA", "--date", "1946-01-01"}));
    EXPECT_EQ(date_on(volume, "ALPHA"), Bytes({0x46, 0x01, 0x01, 0, 0, 0}));
    const Outcome outcome = change("attr", volume, {"ALPHA", "--date", "1999-10-03", "-v"});
    EXPECT_EQ(outcome.errors, "ALPHA.PROG: date 1946-01-01 00:00:00 becomes 1999-10-03 00:00:00\n");
    EXPECT_EQ(date_on(volume, "ALPHA"), Bytes({0x99, 0x10, 0x03, 0, 0, 0})) << "an October";
}

TEST(Attr, DatesOfOtherVolumesAreRefused)
{
    const TemporaryFile disk(tests::disk_of_three());
    expect_refused(change("attr", disk, {"ALPHA", "--date", "1987-03-09"}),
                   error_line("ALPHA.PROG: Not supported (dates on a System 45 disk volume)") + nothing);
    const TemporaryFile tape(tests::tape_of_three());
    expect_refused(change("attr", tape, {"ALPHA", "--date", "1987-03-09"}),
                   error_line("ALPHA.PROG: Not supported (dates on a System 45 tape volume)") + nothing);
    EXPECT_EQ(disk.bytes(), tests::disk_of_three());
    EXPECT_EQ(tape.bytes(), tests::tape_of_three());
}

TEST(Attr, ProtectionOfADisk)
{
    const TemporaryFile volume(tests::disk_of_three());
    expect_silent(change("attr", volume, {"GAMMA", "--protect", "on"}));
    EXPECT_EQ(volume.bytes(), tests::disk_with_protected_gamma());
    const Outcome outcome = change("attr", volume, {"*", "--protect", "off", "-v"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "ALPHA.PROG: stays as it is\nBETA.DATA: stays as it is\n"
                              "GAMMA.&512.BDAT: no longer protected\n");
    EXPECT_EQ(volume.bytes(), tests::disk_of_three());
}

TEST(Attr, ProtectionStaysWhenSomethingElseChanges)
{
    const TemporaryFile volume(tests::disk_with_protected_gamma());
    expect_silent(change("attr", volume, {"GAMMA", "--type", "DATA"}));
    EXPECT_TRUE(tests::file_on(Layout::disk, volume, "GAMMA").is_protected);
}

TEST(Attr, ProtectionOfOtherVolumesIsRefused)
{
    LifVolume contents = volume_of(
        {{.name = "SECRET", .type = 0xE961, .implementation = {0x80, 0x01, 'A', 'B', 0, 0x80}}, {.name = "F"}});
    const Bytes image = tests::lif_image(contents);
    const TemporaryFile lif(image);
    for (const char *word : {"on", "off"}) {
        expect_refused(change("attr", lif, {"F", "--protect", word}),
                       error_line("F.ASCII: Not supported (protection on a LIF volume)") + nothing);
        expect_refused(change("attr", lif, {"SECRET", "--protect", word}),
                       error_line("SECRET.BDAT: Not supported (protection on a LIF volume)") + nothing);
        const TemporaryFile tape(tests::tape_of_three());
        expect_refused(change("attr", tape, {"ALPHA", "--protect", word}),
                       error_line("ALPHA.PROG: Not supported (protection on a System 45 tape volume)") + nothing);
        EXPECT_EQ(tape.bytes(), tests::tape_of_three());
    }
    EXPECT_EQ(lif.bytes(), image);
}

TEST(Attr, LengthThatDoesNotFillTheFileIsRefused)
{
    const TemporaryFile volume(tests::disk_of_three());
    expect_refused(change("attr", volume, {"GAMMA", "--record", "300"}),
                   error_line("GAMMA.&512.BDAT: Its 2048 bytes aren't a number of such records") + nothing);
    expect_refused(change("attr", volume, {"GAMMA", "--record", "4096"}),
                   error_line("GAMMA.&512.BDAT: Its 2048 bytes aren't a number of such records") + nothing);
    EXPECT_EQ(volume.bytes(), tests::disk_of_three());
}

TEST(Attr, TypeWithoutLengthOfRecordsIsRefused)
{
    const TemporaryFile lif(tests::lif_of_three());
    expect_refused(change("attr", lif, {"ALPHA", "--record", "512"}),
                   error_line("ALPHA.PROG: Not supported (a length of records for type PROG)") + nothing);
    const TemporaryFile disk(tests::disk_of_three());
    const Outcome outcome = change("attr", disk, {"GAMMA", "--type", "#0400"});
    EXPECT_EQ(outcome.code, 1) << "four records of 256 bytes would be left of it";
    EXPECT_NE(outcome.errors.find("Its length would change; type #0400 has records of 256 bytes"), std::string::npos)
        << outcome.errors;
    EXPECT_EQ(disk.bytes(), tests::disk_of_three());
    expect_silent(change("attr", disk, {"GAMMA", "--type", "#0400", "--record", "256"}));
    EXPECT_EQ(tests::content_on(Layout::disk, disk, "GAMMA"), Bytes(8 * 256, 'c'));
}

TEST(Attr, TypesThatEndAListAreRefused)
{
    const TemporaryFile volume(tests::lif_of_three());
    for (const char *type : {"PURGE", "EOD", "#0"}) {
        const Outcome outcome = change("attr", volume, {"ALPHA", "--type", type});
        EXPECT_EQ(outcome.code, 1) << type;
        EXPECT_NE(outcome.errors.find("Not supported (files of type "), std::string::npos) << outcome.errors;
    }
    EXPECT_EQ(volume.bytes(), tests::lif_of_three());
}

TEST(Attr, TypeThatADiskCannotStoreIsRefused)
{
    const TemporaryFile volume(tests::disk_of_three());
    expect_refused(change("attr", volume, {"ALPHA", "--type", "ROOT"}),
                   error_line("ALPHA.PROG: Not supported (files of type ROOT on a System 45 disk volume)") + nothing);
    EXPECT_EQ(volume.bytes(), tests::disk_of_three());
}

TEST(Attr, SystemSaysWhichTypeOfAName)
{
    const TemporaryFile volume(tests::disk_of_three());
    expect_silent(change("attr", volume, {"ALPHA", "--system", "9835"}));
    EXPECT_EQ(tests::file_on(Layout::disk, volume, "ALPHA").type, 0x8800);
    expect_silent(change("attr", volume, {"ALPHA", "--system", "9831", "--type", "BDAT"}));
    EXPECT_EQ(tests::file_on(Layout::disk, volume, "ALPHA").type, 0x5000);
    expect_refused(change("attr", volume, {"ALPHA", "--system", "PSCL"}),
                   error_line("ALPHA.BDAT: Unknown system (\"PSCL\")") + nothing);
}

TEST(Attr, MarkerInTheNameFollowsTheType)
{
    const TemporaryFile volume(
        tests::lif_image(volume_of({{.name = "NOTEST____", .type = 0xEA3E}, {.name = "PLAIN"}})));
    expect_silent(change("attr", volume, {"*", "--type", "CODE"}));
    EXPECT_EQ(tests::names_on(Layout::lif, volume), Names({"NOTESC____", "PLAINC____"}));
    EXPECT_EQ(tests::listed(volume), "NOTES.CODE PLAIN.CODE");
    expect_silent(change("attr", volume, {"*", "--type", "ASCII"}));
    EXPECT_EQ(tests::names_on(Layout::lif, volume), Names({"NOTES", "PLAIN"}));
}

TEST(Attr, MarkerThatMakesANameTwiceIsRefused)
{
    const Bytes image = tests::lif_image(volume_of({{.name = "ABCT______", .type = 0xEA3E},
                                                    {.name = "ABC"},
                                                    {.name = "XC________", .type = 0xEA32},
                                                    {.name = "X"}}));
    const TemporaryFile volume(image);
    expect_refused(change("attr", volume, {"ABC", "--type", "CODE"}),
                   error_line("ABC.ASCII: Target already exists (file \"ABCC______\")") + nothing);
    expect_refused(change("attr", volume, {"X.ASCII", "--type", "CODE"}),
                   error_line("X.ASCII: Target already exists (file \"XC________\")") + nothing);
    EXPECT_EQ(volume.bytes(), image);
}

TEST(Attr, CommandLinesThatCannotBe)
{
    expect_usage({"ALPHA"}, "Nothing is to be changed; give --type, --record, --date or --protect");
    expect_usage({"ALPHA", "--type", "NONE"}, "--type: there is no type \"NONE\"");
    expect_usage({"ALPHA", "--record", "33"}, "--record: 33 is odd");
    for (const char *date : {"1987", "1987-02-29", "1987-3-9", "1945-12-31", "2046-01-01", "1987-03-09T24:00",
                             "1987-03-09T08:60", "1987-03-09T08:07:60", "1987-03-09X08:07", "1987-00-09", "1987-13-09",
                             "1987-04-31", "1987-03-00", "1987-03-09T08:07:6x"}) {
        expect_usage({"ALPHA", "--date", date}, "--date: \"" + std::string(date) +
                                                    "\" is no date of 1946 to 2045, YYYY-MM-DD or YYYY-MM-DDThh:mm:ss");
    }
    for (const char *option : {"--protect", "--hide"}) {
        const TemporaryFile volume(tests::lif_of_three());
        EXPECT_EQ(change("attr", volume, {"ALPHA", option, "maybe"}).code, 64) << option;
        EXPECT_EQ(change("attr", volume, {"ALPHA", option}).code, 64) << option;
    }
}
