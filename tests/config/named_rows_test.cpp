// The sections [fsinfo] and [driveinfo]: rows added and replaced, every field, every error, and how many there may be.
#include "base/error.h"
#include "tests/config/config_support.h"

using namespace tests;

namespace
{

class NamedRows : public ConfigTest
{
};

const char media[] = "[fsinfo]";
const char drives[] = "[driveinfo]";
const std::string ten_numbers = "1,2,3,4,5,6,7,8,9,10";
const std::string media_values = "\"d\", L, " + ten_numbers;
const std::string drive_values = "\"d\", CS80, 1,2,3,4,5,6,7,8,9,10,11";

void expect_media_error(const std::string &values, const std::string &words)
{
    expect_config_error(in_section(media, "NEW = " + values), 2, words);
}

void expect_drive_error(const std::string &values, const std::string &words)
{
    expect_config_error(in_section(drives, "NEW = " + values), 2, words);
}

std::string rows_of(size_t count, const std::string &values)
{
    std::string text;
    for (size_t i = 0; i < count; i++) text += "ROW" + std::to_string(i) + " = " + values + "\n";
    return text;
}

}

TEST_F(NamedRows, EveryFieldOfAMedium)
{
    const ConfigReading reading(
        in_section(media, "disc9 = \"disc, of mine\", q, 1, 0x20, 33, ff, 4294967295, 0, 7, 8, 9, 10"));
    ASSERT_EQ(reading.result, 0) << reading.error;
    const MediaTableRow *row = custom_media("DISC9");
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row, &custom_media_table[28]) << "behind the built-in ones";
    EXPECT_STREQ(row->description, "disc, of mine");
    EXPECT_EQ(row->letter, static_cast<uint32_t>('q'));
    EXPECT_EQ(row->heads, 1u);
    EXPECT_EQ(row->sectors, 32u);
    EXPECT_EQ(row->tracks, 33u);
    EXPECT_EQ(row->system_tracks, 255u);
    EXPECT_EQ(row->data_tracks, 4294967295u);
    EXPECT_EQ(row->spare_track, 0u);
    EXPECT_EQ(row->dir_start, 7u);
    EXPECT_EQ(row->alloc_start, 8u);
    EXPECT_EQ(row->alloc_end, 9u);
    EXPECT_EQ(row->interleave, 10u);
}

TEST_F(NamedRows, EveryFieldOfADrive)
{
    const ConfigReading reading(
        in_section(drives, "drv1 = \"a drive\", SS80, 0x222, 6, 4, 0x91220, 2, 77, 3, 16, 512, 5, 1"));
    ASSERT_EQ(reading.result, 0) << reading.error;
    const GpibDriveInfo *row = custom_drive("DRV1");
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row, &custom_drive_table[47]);
    EXPECT_STREQ(row->description, "a drive");
    EXPECT_EQ(row->protocol, 3u);
    EXPECT_EQ(row->identify, 0x222);
    EXPECT_EQ(row->status_mask, 6);
    EXPECT_EQ(row->status_value, 4);
    EXPECT_EQ(row->device_number, 0x91220u);
    EXPECT_EQ(row->units, 2);
    EXPECT_EQ(row->cylinders, 77u);
    EXPECT_EQ(row->heads, 3u);
    EXPECT_EQ(row->sectors, 16u);
    EXPECT_EQ(row->block_size, 512u);
    EXPECT_EQ(row->interleave, 5);
    EXPECT_EQ(row->removable, 1u);
    EXPECT_EQ(row->is_tape, 0u);
    EXPECT_EQ(row->media_present, 0u);
    EXPECT_EQ(row->media_formatted, 0u);
}

TEST_F(NamedRows, Protocols)
{
    const std::pair<const char *, uint32_t> rows[] = {{"AMIGO", 0}, {"CS80", 2}, {"SS80", 3}};
    for (const auto &[name, number] : rows) {
        EXPECT_EQ(ConfigReading(in_section(drives, std::string("D = d,") + name + ",1,2,3,4,5,6,7,8,9,10")).result, 0);
        EXPECT_EQ(custom_drive("D")->protocol, number);
    }
    for (const char *name : {"TAPE", "2", "\"CS80 \"", "CS", "CS800", "="})
        expect_drive_error(std::string("d,") + name + ",1", "bad protocol assignment in line 2");
}

TEST_F(NamedRows, KeepsProtocolsInUpperCase)
{
    for (const char *name : {"amigo", "Cs80", "ss80"})
        expect_drive_error(std::string("d,") + name + ",1,2,3,4,5,6,7,8,9,10", "bad protocol assignment in line 2");
}

TEST_F(NamedRows, LastNumberMayBeMissing)
{
    EXPECT_EQ(ConfigReading(in_section(media, "M = d, L, 1,2,3,4,5,6,7,8,9")).result, 0);
    EXPECT_EQ(custom_media("M")->interleave, 0u);
    EXPECT_EQ(ConfigReading(in_section(drives, "D = d, CS80, 1,2,3,4,5,6,7,8,9,10")).result, 0);
    EXPECT_EQ(custom_drive("D")->removable, 0u);
    expect_media_error("d, L, 1,2,3,4,5,6,7,8", "bad parm count in line 2");
    expect_drive_error("d, CS80, 1,2,3,4,5,6,7,8,9", "bad parm count in line 2");
    expect_media_error("", "bad parm count in line 2");
    expect_drive_error("d", "bad parm count in line 2");
}

TEST_F(NamedRows, WhatComesBehindTheLastFieldIsIgnored)
{
    EXPECT_EQ(ConfigReading(in_section(media, "M = " + media_values + ", bad!,, \"\", = 13")).result, 0);
    EXPECT_EQ(custom_media("M")->interleave, 10u);
    EXPECT_EQ(ConfigReading(in_section(drives, "D = " + drive_values + ", bad!,,12")).result, 0);
    EXPECT_EQ(custom_drive("D")->removable, 11u);
}

TEST_F(NamedRows, AssignmentMustStandBehindTheName)
{
    for (const char *section : {media, drives}) {
        for (const char *line : {"NEW", "NEW d, L, 1", "NEW == d", "NEW , == d", "= NEW d"})
            expect_config_error(in_section(section, line), 2, "bad drive assignment syntax in line 2");
    }
    EXPECT_EQ(media_count(), 28u) << "nothing was added";
}

TEST_F(NamedRows, EmptyFields)
{
    expect_media_error("\"\", L, " + ten_numbers, "empty parameter in line 2");
    expect_media_error("d,, " + ten_numbers, "empty parameter in line 2");
    expect_media_error("d, L, 1,2,,4,5,6,7,8,9,10", "empty parameter in line 2");
    expect_media_error("d, L, 1,2,3,4,5,6,7,8,9,\"\"", "empty parameter in line 2");
    expect_drive_error("d, CS80,,2,3", "empty parameter in line 2");
    expect_media_error("d, L, bad,,3", "empty parameter in line 2");
}

TEST_F(NamedRows, BadNumbersAreCounted)
{
    expect_media_error("d, L, x,2,3,4,5,6,7,8,9,10", "1 bad parameter(s) in line 2");
    expect_media_error("d, L, 1,x,3,-4,5,6,7,8,9,z", "3 bad parameter(s) in line 2");
    expect_media_error("d, L, x,y", "2 bad parameter(s) in line 2");
    expect_drive_error("d, CS80, 65536,256,256,4,256,6,7,8,9,256,zz", "6 bad parameter(s) in line 2");
    EXPECT_EQ(custom_drive("NEW")->device_number, 4u) << "the others were stored";
}

TEST_F(NamedRows, LargestNumbersOfADrive)
{
    EXPECT_EQ(ConfigReading(in_section(drives, "D = d, AMIGO, 65535,255,255,4294967295,255,1,2,3,4,255,-1")).result, 0);
    EXPECT_EQ(custom_drive("D")->identify, 65535);
    EXPECT_EQ(custom_drive("D")->status_value, 255);
    EXPECT_EQ(custom_drive("D")->interleave, 255);
    EXPECT_EQ(custom_drive("D")->removable, 0xFFFFFFFFu);
}

TEST_F(NamedRows, RowOfABuiltinNameIsReplaced)
{
    EXPECT_EQ(ConfigReading(in_section(media, "9895 = \"another\", Z, 9,8,7,6,5,4,3,2,1")).result, 0);
    EXPECT_EQ(media_count(), 28u);
    const MediaTableRow &row = custom_media_table[0];
    EXPECT_STREQ(row.name, "9895");
    EXPECT_STREQ(row.description, "another");
    EXPECT_EQ(row.letter, static_cast<uint32_t>('Z'));
    EXPECT_EQ(row.heads, 9u);
    EXPECT_EQ(row.interleave, 7u) << "what the line doesn't say stays";
    EXPECT_STREQ(default_media_table[0].description, "HP9895A dual 1.15M AMIGO floppy disc");
    EXPECT_EQ(ConfigReading(in_section(drives, "7905 = " + drive_values)).result, 0);
    EXPECT_EQ(custom_drive("7905")->protocol, 2u) << "the first of two";
    EXPECT_EQ(custom_drive("7905", 1)->protocol, 0u);
    EXPECT_EQ(drive_count(), 47u);
}

TEST_F(NamedRows, RowIsReplacedByALaterLine)
{
    EXPECT_EQ(ConfigReading(in_section(media, "A = " + media_values + "\nB = " + media_values + "\nA = \"later\", L, " +
                                                  ten_numbers))
                  .result,
              0);
    EXPECT_EQ(media_count(), 30u);
    EXPECT_STREQ(custom_media("A")->description, "later");
}

TEST_F(NamedRows, KeepsSecondRowOfANameInLowerCase)
{
    EXPECT_EQ(ConfigReading(in_section(media, "9134a = " + media_values)).result, 0);
    EXPECT_EQ(media_count(), 29u);
    ASSERT_NE(custom_media("9134A", 1), nullptr);
    EXPECT_EQ(custom_media("9134A")->heads, 4u);
    EXPECT_EQ(custom_media("9134A", 1)->heads, 1u);
}

TEST_F(NamedRows, Hazard_M7_TablesAreFilledToTheirLastRow)
{
    EXPECT_EQ(ConfigReading(in_section(media, rows_of(256 - 28, media_values))).result, 0);
    EXPECT_EQ(media_count(), 256u);
    expect_config_error(in_section(media, rows_of(256 - 28 + 1, media_values)), 230,
                        "max. number of custom media (256) exceed");
    EXPECT_EQ(media_count(), 256u);
    EXPECT_EQ(ConfigReading(in_section(drives, rows_of(256 - 47, drive_values))).result, 0);
    EXPECT_EQ(drive_count(), 256u);
    expect_config_error(in_section(drives, rows_of(256 - 47 + 1, drive_values)), 211,
                        "max. number of custom drives (256) exceed");
    EXPECT_EQ(drive_count(), 256u);
}

TEST_F(NamedRows, FullTableStillTakesItsOwnRows)
{
    const std::string full = in_section(media, rows_of(256 - 28, media_values));
    EXPECT_EQ(
        ConfigReading(full + "ROW227 = \"last\", L, " + ten_numbers + "\n9895 = \"first\", L, 1,2,3,4,5,6,7,8,9\n")
            .result,
        0);
    EXPECT_STREQ(custom_media_table[255].description, "last");
    EXPECT_STREQ(custom_media_table[0].description, "first");
}

TEST_F(NamedRows, Hazard_M9_LongTextsAreCut)
{
    const std::string long_text(400, 'x');
    const std::string values = " = \"" + long_text + "\", L, " + ten_numbers;
    EXPECT_EQ(ConfigReading(in_section(media, long_text + values + "\nabcdefghijklmnopq" + values)).result, 0);
    const MediaTableRow *row = custom_media(std::string(16, 'X'));
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(std::string(row->description), std::string(256, 'x'));
    EXPECT_NE(custom_media("ABCDEFGHIJKLMNOP"), nullptr);
    EXPECT_EQ(
        ConfigReading(in_section(drives, long_text + " = \"" + long_text + "\", CS80, 1,2,3,4,5,6,7,8,9,10")).result,
        0);
    ASSERT_NE(custom_drive(std::string(16, 'X')), nullptr);
    EXPECT_EQ(std::string(custom_drive(std::string(16, 'X'))->description).size(), 256u);
}
