// Entries of a disk's directory, between their 16 bytes and a FileInfo.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/system45_builder.h"
#include "volume/entries.h"
#include "volume/names.h"

using namespace tests;

namespace
{

using DiskBytes = std::array<uint8_t, 16>;

struct ReadEntry {
    int32_t result = 0;
    uint32_t size = 0; // that the file takes
    FileInfo info{};
};

MediaDescriptor disk_record()
{
    MediaDescriptor md = usual_options();
    md.format = FORMAT_DISK45;
    md.magic = 0x0500;
    md.dir_entry_size = 16;
    return md;
}

ReadEntry read(const DiskBytes &bytes)
{
    MediaDescriptor md = disk_record();
    ReadEntry entry;
    entry.size = 99;
    forget_error();
    entry.result = get_file_info(&md, &entry.info, bytes.data(), &entry.size);
    return entry;
}

ReadEntry read(const DiskEntry &entry)
{
    return read(disk45_entry_bytes(entry));
}

DiskBytes written(const FileInfo &info)
{
    const MediaDescriptor md = disk_record();
    DiskBytes bytes;
    bytes.fill(0xA5);
    set_file_info(&md, &info, bytes.data());
    return bytes;
}

void expect_refused(const DiskEntry &entry, const std::string &error)
{
    const ReadEntry answer = read(entry);
    EXPECT_EQ(answer.result, -1) << error;
    EXPECT_EQ(answer.size, 0u) << error;
    EXPECT_EQ(error_text(), "Bad directory entry (" + error + ")");
}

}

TEST(Disk45EntryReading, AllFields)
{
    const ReadEntry entry = read(DiskBytes{'R', 'J', 'E', 0, 0, 0, 0x00, 0x3C, 0x00, 0xEB, 0x00, 0x80, 0xC8, 0, 0, 0});
    EXPECT_EQ(entry.result, 1);
    EXPECT_EQ(entry.size, 235u * 256u);
    EXPECT_STREQ(entry.info.name, "RJE");
    EXPECT_EQ(entry.info.type, 0xC800u);
    EXPECT_EQ(type_text(entry.info), "PROG");
    EXPECT_STREQ(entry.info.system_string, "9845");
    EXPECT_EQ(entry.info.attributes, 0u);
    EXPECT_EQ(entry.info.location, 60u);
    EXPECT_EQ(entry.info.records, 235u);
    EXPECT_EQ(entry.info.record_len, 128u);
    EXPECT_EQ(entry.info.size, 60160u);
    EXPECT_EQ(entry.info.deleted, 0u);
    EXPECT_EQ(entry.info.is_directory, 0u);
    EXPECT_EQ(entry.info.date.tm_mday, 0);
}

TEST(Disk45EntryReading, TwoZeroBytesEndTheDirectory)
{
    DiskBytes bytes = disk45_entry_bytes({.name = "ABCDEF", .start = 60});
    bytes[0] = bytes[1] = 0;
    const ReadEntry entry = read(bytes);
    EXPECT_EQ(entry.result, 0);
    EXPECT_EQ(entry.size, 0u);
}

TEST(Disk45EntryReading, Hazard_F6_APurgedEntryHasAnEmptyNameAndIsRefused)
{
    DiskBytes bytes = disk45_entry_bytes({.name = "ABCDEF", .start = 60});
    bytes[0] = 0;
    const ReadEntry entry = read(bytes);
    EXPECT_EQ(entry.result, -1);
    EXPECT_STREQ(entry.info.name, "");
    EXPECT_NE(entry.info.deleted, 0u);
    EXPECT_EQ(error_text(), "Bad directory entry (file \"\": empty filename)");
}

TEST(Disk45EntryReading, NamesAreTrimmedAtTheirEnd)
{
    const std::pair<std::string, const char *> rows[] = {{"ABCDEF", "ABCDEF"},
                                                         {"ABC   ", "ABC"},
                                                         {"A B  C", "A B  C"},
                                                         {" AB   ", " AB"},
                                                         {std::string("AB\0CDE", 6), "AB"},
                                                         {std::string("AB \0DE", 6), "AB"},
                                                         {"      ", " "}};
    for (const auto &[stored, name] : rows) {
        const ReadEntry entry = read(DiskEntry{.name = stored, .start = 60});
        EXPECT_EQ(entry.result, 1) << stored;
        EXPECT_STREQ(entry.info.name, name);
    }
}

TEST(Disk45EntryReading, NamesThatNoSystemTakesAreRefused)
{
    for (const char *name : {"A\"B", "A:B", "A\xFF"})
        expect_refused({.name = name, .start = 60},
                       "file \"" + std::string(name) + "\": filename contains invalid character(s)");
}

TEST(Disk45EntryReading, RecordZeroIsRefused)
{
    expect_refused({.name = "ABC", .start = 0}, "file \"ABC\" has location zero");
}

TEST(Disk45EntryReading, TheTypeWordHoldsTheHighBitsOfTheLocation)
{
    const struct {
        uint32_t start;
        uint16_t type, read;
    } rows[] = {{1, 0xC800, 0xC800},        {65535, 0xC800, 0xC800},    {65536, 0xC800, 0xC801},
                {0x123456, 0x2400, 0x2412}, {0x7FFFFF, 0xC800, 0xC87F}, {0x400000, 0xDD80, 0xDDC0}};
    for (const auto &[start, type, word] : rows) {
        const ReadEntry entry = read(DiskEntry{.name = "ABC", .type = type, .start = start});
        EXPECT_EQ(entry.result, 1);
        EXPECT_EQ(entry.info.location, start);
        EXPECT_EQ(entry.info.type, word);
    }
}

TEST(Disk45EntryReading, OnlyTypesAbove1FFFHaveARecordLength)
{
    const struct {
        uint16_t type;
        uint32_t length;
    } rows[] = {{0x0000, 128}, {0x0400, 128}, {0x1FFF, 128}, {0x2000, 64}, {0x2400, 64}, {0xC800, 64}, {0xFFFF, 64}};
    for (const auto &[type, length] : rows) {
        const ReadEntry entry = read(DiskEntry{.name = "ABC", .type = type, .start = 60, .records = 3, .words = 64});
        EXPECT_EQ(entry.info.record_len, length) << type;
        EXPECT_EQ(entry.info.size, length * 3 * 2) << type;
    }
}

TEST(Disk45EntryReading, WhatAFileTakesIsRoundedUpToRecords)
{
    const ReadEntry entry = read(DiskEntry{.name = "ABC", .start = 60, .records = 3, .words = 64});
    EXPECT_EQ(entry.info.size, 384u);
    EXPECT_EQ(entry.size, 512u);
    const ReadEntry empty = read(DiskEntry{.name = "ABC", .start = 60, .records = 0});
    EXPECT_EQ(empty.result, 1);
    EXPECT_EQ(empty.info.size, 0u);
    EXPECT_EQ(empty.size, 0u);
}

TEST(Disk45EntryReading, Hazard_F3_TheSizeIsTheLow32BitsOfTheProduct)
{
    const ReadEntry entry = read(DiskEntry{.name = "ABC", .start = 60, .records = 0xFFFF, .words = 0xFFFF});
    EXPECT_EQ(entry.result, 1);
    EXPECT_EQ(entry.info.records, 0xFFFFu);
    EXPECT_EQ(entry.info.record_len, 0xFFFFu);
    EXPECT_EQ(entry.info.size, 0xFFFC0002u);
    EXPECT_EQ(entry.size, 0xFFFC0100u);
    const ReadEntry wrapped = read(DiskEntry{.name = "ABC", .start = 60, .records = 0x8000, .words = 0x8000});
    EXPECT_EQ(wrapped.info.size, 0x80000000u);
    const ReadEntry rounded = read(DiskEntry{.name = "ABC", .start = 60, .records = 49981, .words = 42966});
    EXPECT_EQ(rounded.info.size, 0xFFFFFFFCu);
    EXPECT_EQ(rounded.size, 0u);
}

TEST(Disk45EntryReading, Hazard_F4_ARecordLengthOfZeroBecomes128)
{
    const ReadEntry entry = read(DiskEntry{.name = "ABC", .start = 60, .records = 3, .words = 0});
    EXPECT_EQ(entry.result, 1);
    EXPECT_EQ(entry.info.record_len, 128u);
    EXPECT_EQ(entry.info.size, 768u);
    EXPECT_EQ(entry.size, 768u);
}

TEST(Disk45EntryReading, OnlyALowerCasePProtects)
{
    DiskBytes bytes = disk45_entry_bytes({.name = "ABC", .start = 60});
    for (const auto &[mark, attributes] :
         {std::pair<uint8_t, uint8_t>{'p', 6}, {'P', 0}, {'q', 0}, {0, 0}, {' ', 0}, {0xFF, 0}}) {
        bytes[15] = mark;
        EXPECT_EQ(read(bytes).info.attributes, attributes) << mark;
    }
    bytes[15] = 0;
    bytes[14] = 'p';
    EXPECT_EQ(read(bytes).info.attributes, 0u);
}

TEST(Disk45EntryReading, TypesAndSystems)
{
    const struct {
        uint16_t type;
        const char *text, *system;
    } rows[] = {{0x0400, "DATA", "9825"},  {0x2400, "DATA", "9845A"}, {0x4800, "PROG", "9831"},
                {0x6800, "PROG", "250"},   {0x7000, "#7000", "250"},  {0x8C00, "KEYS", "9835"},
                {0xC800, "PROG", "9845"},  {0xC87F, "PROG", "9845"},  {0xD000, "BDAT", "9845"},
                {0xDC80, "ROOT", "9845"},  {0xDD80, "WORK", "9845"},  {0xDB80, "FORM", "9845"},
                {0xC600, "#c600", "9845"}, {0xA800, "PROG", "9845"},  {0x7C00, "DSET", "250"}};
    for (const auto &[type, text, system] : rows) {
        DiskBytes bytes = disk45_entry_bytes({.name = "ABC", .type = type, .start = 60});
        const ReadEntry entry = read(bytes);
        EXPECT_EQ(type_text(entry.info), text) << type;
        EXPECT_STREQ(entry.info.system_string, system) << type;
    }
}

TEST(Disk45EntryReading, WithoutTypeNamesTheTypeIsANumber)
{
    MediaDescriptor md = disk_record();
    md.use_type_names = 0;
    FileInfo info{};
    uint32_t size = 0;
    const DiskBytes bytes = disk45_entry_bytes({.name = "ABC", .start = 0x10000});
    EXPECT_EQ(get_file_info(&md, &info, bytes.data(), &size), 1);
    EXPECT_EQ(type_text(info), "#c801");
}

TEST(Disk45EntryReading, TheVisibleNameTellsOtherRecordLengths)
{
    const MediaDescriptor md = disk_record();
    const auto visible = [&md](const ReadEntry &entry) {
        char name[VISIBLE_NAME_SIZE];
        compose_filename(&md, &entry.info, name);
        return std::string(name);
    };
    EXPECT_EQ(visible(read(DiskEntry{.name = "ABC", .start = 60})), "ABC.PROG");
    EXPECT_EQ(visible(read(DiskEntry{.name = "ABCDEF", .type = 0xD000, .start = 60, .words = 256})),
              "ABCDEF.&512.BDAT");
}

TEST(Disk45EntryWriting, AllFields)
{
    FileInfo info = named("ALPHA");
    info.type = 0xC800;
    info.location = 0x3C;
    info.records = 0xEB;
    info.record_len = 0x0102;
    EXPECT_EQ(written(info),
              (DiskBytes{'A', 'L', 'P', 'H', 'A', 0, 0x00, 0x3C, 0x00, 0xEB, 0x01, 0x02, 0xC8, 0x00, 0, 0}));
}

TEST(Disk45EntryWriting, NamesOfSixAreNotTerminatedAndLongerOnesCut)
{
    FileInfo info = named("ABCDEFGHIJ");
    info.location = 0x0102;
    const DiskBytes bytes = written(info);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 6), "ABCDEF");
    EXPECT_EQ(bytes[6], 0x01);
}

TEST(Disk45EntryWriting, TheHighBitsOfTheLocationGoIntoTheTypeWord)
{
    FileInfo info = named("A");
    info.type = 0xC87F; // those of an older place
    info.location = 0x123456;
    const DiskBytes bytes = written(info);
    EXPECT_EQ((std::array<uint8_t, 2>{bytes[6], bytes[7]}), (std::array<uint8_t, 2>{0x34, 0x56}));
    EXPECT_EQ((std::array<uint8_t, 2>{bytes[12], bytes[13]}), (std::array<uint8_t, 2>{0xC8, 0x12}));
}

TEST(Disk45EntryWriting, KeepsTypeBits7And8Unwritten)
{
    const std::pair<uint16_t, uint16_t> rows[] = {
        {0xDC80, 0xDC00}, {0xDD80, 0xDC00}, {0xDF80, 0xDE00}, {0xC980, 0xC800}, {0xFFFF, 0xFE00}};
    for (const auto &[type, stored] : rows) {
        FileInfo info = named("A");
        info.type = type;
        const DiskBytes bytes = written(info);
        EXPECT_EQ(bytes[12] * 256 + bytes[13], stored) << type;
    }
}

TEST(Disk45EntryWriting, TheSecondAttributeBitIsTheProtection)
{
    FileInfo info = named("A");
    for (uint8_t attributes = 0; attributes < 8; ++attributes) {
        info.attributes = attributes;
        EXPECT_EQ(written(info)[15], (attributes & 2) != 0 ? 'p' : 0) << int{attributes};
        EXPECT_EQ(written(info)[14], 0);
    }
}

TEST(Disk45EntryWriting, APurgedFileHasAZeroInFront)
{
    FileInfo info = named("ALPHA");
    info.deleted = 1;
    const DiskBytes bytes = written(info);
    EXPECT_EQ(bytes[0], 0);
    EXPECT_EQ(std::string(bytes.begin() + 1, bytes.begin() + 5), "LPHA");
}

TEST(Disk45Entries, WhatWasReadIsWrittenAgainAsItWas)
{
    const DiskEntry rows[] = {{.name = "ALPHA", .start = 60, .records = 3},
                              {.name = "SIXSIX", .type = 0x2400, .start = 0x7FFFFF, .records = 0xFFFF, .words = 1},
                              {.name = "A", .type = 0x0400, .start = 65536},
                              {.name = "A B", .type = 0x6800, .start = 61, .words = 0xFFFF, .is_protected = true}};
    for (const DiskEntry &row : rows) EXPECT_EQ(written(read(row).info), disk45_entry_bytes(row)) << row.name;
}

TEST(Disk45Entries, AnOlderTypeGetsItsRecordLengthAtARewrite)
{
    DiskEntry row = {.name = "A", .type = 0x0400, .start = 60, .words = 99};
    DiskBytes expected = disk45_entry_bytes(row);
    expected[11] = 128;
    EXPECT_EQ(written(read(row).info), expected);
}
