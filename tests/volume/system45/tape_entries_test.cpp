// Entries of a tape's directory, between their 12 bytes and a FileInfo.
#include <gtest/gtest.h>

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

using TapeBytes = std::array<uint8_t, 12>;

struct ReadEntry {
    int32_t result = 0;
    uint32_t size = 0; // that the file takes
    FileInfo info{};
};

MediaDescriptor tape_record()
{
    MediaDescriptor md = usual_options();
    md.format = FORMAT_TAPE45;
    md.dir_entry_size = 12;
    return md;
}

ReadEntry read(const TapeBytes &bytes)
{
    MediaDescriptor md = tape_record();
    ReadEntry entry;
    entry.size = 99;
    forget_error();
    entry.result = get_file_info(&md, &entry.info, bytes.data(), &entry.size);
    return entry;
}

ReadEntry read(const TapeEntry &entry)
{
    return read(tape45_entry_bytes(entry));
}

TapeBytes written(const FileInfo &info)
{
    const MediaDescriptor md = tape_record();
    TapeBytes bytes;
    bytes.fill(0xA5);
    set_file_info(&md, &info, bytes.data());
    return bytes;
}

}

TEST(Tape45EntryReading, AllFields)
{
    const ReadEntry entry = read(TapeBytes{'P', 'R', 'I', 'M', 'E', 0, 0xCA, 0x34, 0x00, 0x07, 0x00, 0x40});
    EXPECT_EQ(entry.result, 1);
    EXPECT_EQ(entry.size, 1024u);
    EXPECT_STREQ(entry.info.name, "PRIME");
    EXPECT_EQ(entry.info.type, 0xC8u);
    EXPECT_EQ(type_text(entry.info), "PROG");
    EXPECT_EQ(entry.info.location, 0x234u);
    EXPECT_EQ(entry.info.records, 7u);
    EXPECT_EQ(entry.info.record_len, 64u);
    EXPECT_EQ(entry.info.size, 896u);
    EXPECT_EQ(entry.info.attributes, 0u);
    EXPECT_EQ(entry.info.deleted, 0u);
    EXPECT_EQ(entry.info.date.tm_mday, 0);
}

TEST(Tape45EntryReading, TwoBytes255EndTheDirectory)
{
    TapeBytes bytes = tape45_entry_bytes({.name = "ABCDEF", .start = 60});
    bytes[0] = bytes[1] = 0xFF;
    EXPECT_EQ(read(bytes).result, 0);
    bytes[1] = 'B';
    EXPECT_EQ(read(bytes).result, -1); // a name with an invalid character
    EXPECT_EQ(read(TapeBytes{}).result, -1);
}

TEST(Tape45EntryReading, Hazard_F6_APurgedEntryHasAnEmptyNameAndIsRefused)
{
    TapeBytes bytes = tape45_entry_bytes({.name = "ABCDEF", .start = 60});
    bytes[0] = 0;
    const ReadEntry entry = read(bytes);
    EXPECT_EQ(entry.result, -1);
    EXPECT_NE(entry.info.deleted, 0u);
    EXPECT_STREQ(entry.info.name, "");
    EXPECT_EQ(error_text(), "Bad directory entry (file \"\": empty filename)");
}

TEST(Tape45EntryReading, TheLocationHasTenBits)
{
    for (const uint32_t start : {1u, 255u, 256u, 511u, 512u, 852u, 1023u}) {
        const ReadEntry entry = read(TapeEntry{.name = "ABC", .start = start});
        EXPECT_EQ(entry.result, 1) << start;
        EXPECT_EQ(entry.info.location, start);
        EXPECT_EQ(entry.info.type, 0xC8u) << start;
    }
    EXPECT_EQ(read(TapeEntry{.name = "ABC", .start = 0}).result, -1);
    EXPECT_EQ(error_text(), "Bad directory entry (file \"ABC\" has location zero)");
}

TEST(Tape45EntryReading, Types)
{
    const std::pair<uint8_t, const char *> rows[] = {{0xC8, "PROG"}, {0x24, "DATA"}, {0xCC, "KEYS"}, {0xD0, "BDAT"},
                                                     {0x7C, "OPRM"}, {0xDC, "OPRM"}, {0xFC, "OPRM"}, {0xC4, "DATA"},
                                                     {0x08, "PROG"}, {0x00, "BKUP"}};
    for (const auto &[type, text] : rows)
        EXPECT_EQ(type_text(read(TapeEntry{.name = "ABC", .type = type, .start = 60}).info), text) << int{type};
}

TEST(Tape45EntryReading, KeepsTapeFilesOfSystem9825)
{
    for (const uint8_t type : {uint8_t{0x08}, uint8_t{0x24}, uint8_t{0xC8}, uint8_t{0xFC}})
        EXPECT_STREQ(read(TapeEntry{.name = "ABC", .type = type, .start = 60}).info.system_string, "9825");
}

TEST(Tape45EntryReading, Hazard_F3_TheSizeIsTheLow32BitsOfTheProduct)
{
    const ReadEntry entry = read(TapeEntry{.name = "ABC", .start = 60, .records = 0xFFFF, .words = 0xFFFF});
    EXPECT_EQ(entry.info.size, 0xFFFC0002u);
}

TEST(Tape45EntryReading, Hazard_F4_ARecordLengthOfZeroBecomes128)
{
    const ReadEntry entry = read(TapeEntry{.name = "ABC", .start = 60, .records = 2, .words = 0});
    EXPECT_EQ(entry.info.record_len, 128u);
    EXPECT_EQ(entry.info.size, 512u);
}

TEST(Tape45EntryWriting, AllFields)
{
    FileInfo info = named("PRIME");
    info.type = 0xC8;
    info.location = 0x234;
    info.records = 7;
    info.record_len = 64;
    info.attributes = 7; // a tape has none
    EXPECT_EQ(written(info), (TapeBytes{'P', 'R', 'I', 'M', 'E', 0, 0xCA, 0x34, 0x00, 0x07, 0x00, 0x40}));
}

TEST(Tape45EntryWriting, APurgedFileHasAZeroInFront)
{
    FileInfo info = named("PRIMES");
    info.deleted = 1;
    const TapeBytes bytes = written(info);
    EXPECT_EQ(bytes[0], 0);
    EXPECT_EQ(std::string(bytes.begin() + 1, bytes.begin() + 6), "RIMES");
}

TEST(Tape45EntryWriting, OnlyTheUpperSixBitsOfATypeAreWritten)
{
    FileInfo info = named("A");
    info.type = 0xC8FF;
    info.location = 0x100;
    EXPECT_EQ(written(info)[6], 0xFD);
}

TEST(Tape45Entries, WhatWasReadIsWrittenAgainAsItWas)
{
    const TapeEntry rows[] = {{.name = "ALPHA", .start = 5, .records = 3},
                              {.name = "SIXSIX", .type = 0xFC, .start = 1023, .records = 0xFFFF, .words = 1},
                              {.name = "A", .type = 0, .start = 851, .words = 0xFFFF}};
    for (const TapeEntry &row : rows) EXPECT_EQ(written(read(row).info), tape45_entry_bytes(row)) << row.name;
}

TEST(Tape45Entries, TheVisibleNameTellsOtherRecordLengths)
{
    const MediaDescriptor md = tape_record();
    char name[VISIBLE_NAME_SIZE];
    const ReadEntry entry = read(TapeEntry{.name = "ABCDEF", .type = 0xD0, .start = 60, .words = 256});
    compose_filename(&md, &entry.info, name);
    EXPECT_STREQ(name, "ABCDEF.&512.BDAT");
}
