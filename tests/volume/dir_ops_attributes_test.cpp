// Changing attributes of many files: what each bit of the mask takes from the template.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/stored_volume.h"
#include "tests/support/system45_builder.h"
#include "tests/volume/dir_ops_support.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

FileInfo changed()
{
    FileInfo info = new_file("IGNORED", "BDAT", 12345);
    std::memcpy(info.system_string, "98X6", 5);
    info.attributes = ATTRIBUTE_READ_ONLY | ATTRIBUTE_SYSTEM;
    info.record_len = 64;
    info.date = {1, 2, 3, 4, 4, 92, 0, 0, 0};
    info.lif_impl[0] = 0x80;
    info.lif_impl[1] = 1;
    info.lif_impl[2] = 'P';
    info.lif_impl[3] = 'W';
    return info;
}

int32_t change(MediaDescriptor *md, FileInfo *info, uint8_t mask, const std::string &name)
{
    return dir_ops(md, {.command = COMMAND_ATTRIBUTES, .filespec = Names{name}, .info = info, .attributes = mask});
}

const Bytes old_rest = {0x84, 0x03, 0x15, 0x09, 0x07, 0x30, 0x80, 0x01, 0, 0, 0, 0};

}

TEST(DirOpsAttributes, IsPrinted)
{
    const OpenVolume open(three_files());
    FileInfo info = changed();
    EXPECT_EQ(
        printed_by(open.md,
                   {.command = COMMAND_ATTRIBUTES, .filespec = Names{"T*"}, .info = &info, .attributes = CHANGE_DATE}),
        "Changing attributes for TWO          \nChanging attributes for THREE          \n");
}

TEST(DirOpsAttributes, EmptyMaskWritesTheTablesAsTheyWere)
{
    const OpenVolume open(disk45_image(three_disk_files()));
    const Bytes before = open.file.bytes();
    FileInfo info = changed();
    EXPECT_EQ(change(open.md, &info, 0, "*"), 0);
    EXPECT_EQ(open.file.bytes(), before);
}

TEST(DirOpsAttributes, TypeTakesAttributesAlong)
{
    const OpenVolume open(three_files());
    FileInfo info = changed();
    EXPECT_EQ(change(open.md, &info, CHANGE_TYPE, "TWO"), 0);
    EXPECT_EQ(type_text(*entry_named(open.md, "TWO")), "BDAT");
    EXPECT_EQ(entry_named(open.md, "TWO")->attributes, ATTRIBUTE_READ_ONLY | ATTRIBUTE_SYSTEM);
    const StoredVolume volume = stored_lif(open.file.bytes());
    EXPECT_EQ(volume.files[0].type, 1);
    EXPECT_EQ(volume.files[1].type, 0xE961);
    EXPECT_EQ(volume.files[1].rest, old_rest); // date and implementation bytes have bits of their own
    EXPECT_EQ(volume.files[2].type, 1);
}

TEST(DirOpsAttributes, ProtectionOfADiskFile)
{
    const OpenVolume open(disk45_image(three_disk_files()));
    FileInfo info = new_file("", "PROG", 0);
    info.attributes = ATTRIBUTE_READ_ONLY;
    EXPECT_EQ(change(open.md, &info, CHANGE_TYPE, "ALPHA"), 0);
    info.attributes = 0;
    set_type_text(info, "BDAT");
    EXPECT_EQ(change(open.md, &info, CHANGE_TYPE, "GAMMA"), 0);
    const StoredVolume volume = stored_disk(open.file.bytes());
    EXPECT_TRUE(volume.files[0].is_protected);
    EXPECT_FALSE(volume.files[1].is_protected);
    EXPECT_FALSE(volume.files[2].is_protected);
    EXPECT_TRUE(volume.spares_agree);
}

TEST(DirOpsAttributes, SystemTakesImplementationBytesAlong)
{
    const OpenVolume open(demo_volume());
    FileInfo info = changed();
    EXPECT_EQ(change(open.md, &info, CHANGE_SYSTEM, "RESULTS"), 0);
    const Bytes rest = stored_lif(open.file.bytes()).files[1].rest;
    EXPECT_EQ(Bytes(rest.begin() + 6, rest.end()), (Bytes{0x80, 1, 'P', 'W', 0, 0}));
    EXPECT_EQ(stored_lif(open.file.bytes()).files[1].type, 0xE961);
}

// The system decides between types of one name.
TEST(DirOpsAttributes, TypeIsFoundByTheNewSystem)
{
    const OpenVolume open(disk45_image(three_disk_files()));
    FileInfo info = new_file("", "PROG", 0);
    std::memcpy(info.system_string, "9831", 5);
    EXPECT_EQ(change(open.md, &info, CHANGE_SYSTEM, "ALPHA"), 0);
    EXPECT_EQ(stored_disk(open.file.bytes()).files[0].type, 0x4800);
    std::memcpy(info.system_string, "9845", 5);
    EXPECT_EQ(change(open.md, &info, CHANGE_TYPE | CHANGE_SYSTEM, "BETA"), 0);
    EXPECT_EQ(stored_disk(open.file.bytes()).files[1].type, 0xC800);
}

TEST(DirOpsAttributes, RecordLength)
{
    const OpenVolume open(disk45_image(three_disk_files()));
    FileInfo info = changed();
    info.record_len = 100;
    EXPECT_EQ(change(open.md, &info, CHANGE_RECORD_LENGTH, "BETA"), 0);
    const StoredVolume volume = stored_disk(open.file.bytes());
    EXPECT_EQ(volume.files[1].words, 100u);
    EXPECT_EQ(volume.files[1].type, 0x2400);
    EXPECT_EQ(volume.files[1].count, 5u);
}

TEST(DirOpsAttributes, LongerRecordsClaimNothingOfTheNextFile)
{
    DiskVolume volume;
    volume.entries = {{.name = "EVEN", .type = 0x2400, .records = 4}, {.name = "ODD", .type = 0x2400, .records = 5}};
    const Bytes before = disk45_image(volume);
    const OpenVolume open(before);
    FileInfo info = changed();
    info.record_len = 256;
    EXPECT_EQ(change(open.md, &info, CHANGE_RECORD_LENGTH, "EVEN"), 0);
    const StoredVolume after = stored_disk(open.file.bytes());
    EXPECT_EQ(after.files[0].words, 256u);
    EXPECT_EQ(after.files[0].count, 2u);
    const Bytes changed_once = open.file.bytes();
    EXPECT_EQ(change(open.md, &info, CHANGE_RECORD_LENGTH, "ODD"), -1);
    EXPECT_EQ(global_error, 211u);
    EXPECT_EQ(open.file.bytes(), changed_once);
}

TEST(DirOpsAttributes, Date)
{
    const OpenVolume open(three_files());
    FileInfo info = changed();
    EXPECT_EQ(change(open.md, &info, CHANGE_DATE, "TWO"), 0);
    const StoredVolume volume = stored_lif(open.file.bytes());
    EXPECT_EQ(volume.files[1].rest, (Bytes{0x92, 0x05, 0x04, 0x03, 0x02, 0x01, 0x80, 0x01, 0, 0, 0, 0}));
    EXPECT_EQ(volume.files[0].rest, old_rest);
}

TEST(DirOpsAttributes, BitsAboveTheFourthMeanNothing)
{
    const OpenVolume open(three_files());
    const Bytes before = open.file.bytes();
    FileInfo info = changed();
    EXPECT_EQ(change(open.md, &info, 0xF0, "*"), 0);
    EXPECT_EQ(open.file.bytes(), before);
}

TEST(DirOpsAttributes, TypeThatIsNoneEndsAtOnceWithNothingWritten)
{
    const OpenVolume open(three_files());
    const LogCapture log(0);
    const Bytes before = open.file.bytes();
    FileInfo info = changed();
    set_type_text(info, "NONE");
    EXPECT_EQ(change(open.md, &info, CHANGE_TYPE | CHANGE_DATE, "*"), -1);
    EXPECT_EQ(error_text(), "Unknown file type (\"NONE\")");
    EXPECT_EQ(open.file.bytes(), before);
    const OpenVolume disk(disk45_image(three_disk_files()));
    const Bytes disk_before = disk.file.bytes();
    std::memcpy(info.system_string, "XXXX", 5);
    EXPECT_EQ(change(disk.md, &info, CHANGE_SYSTEM, "BETA"), -1);
    EXPECT_EQ(global_error, 201u);
    EXPECT_EQ(disk.file.bytes(), disk_before);
}

// A failure at the second file leaves the first one's change unwritten too.
TEST(DirOpsAttributes, KeepsChangesUnwrittenAfterABadType)
{
    DiskVolume volume = three_disk_files();
    volume.entries[2].type = 0x1600;
    const OpenVolume open(disk45_image(volume));
    const LogCapture log(0);
    const Bytes before = open.file.bytes();
    FileInfo info = new_file("", "", 0);
    std::memcpy(entry_named(open.md, "BETA")->type_string, "NONE", 5);
    std::memcpy(info.system_string, "9845", 5);
    EXPECT_EQ(change(open.md, &info, CHANGE_SYSTEM | CHANGE_RECORD_LENGTH, "*"), -1);
    EXPECT_EQ(global_error, 200u);
    EXPECT_EQ(open.file.bytes(), before);
}
