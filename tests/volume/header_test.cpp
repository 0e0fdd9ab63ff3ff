// The two headers that may stand ahead of a file's bytes on the host, byte for byte, and the way back from them.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/capture.h"
#include "tests/support/medium.h"
#include "tests/volume/content/outward_support.h"
#include "volume/header.h"

using namespace tests;

namespace
{

// 11 March 1987, 21:43:59.
const TimeRecord date = {.tm_sec = 59,
                         .tm_min = 43,
                         .tm_hour = 21,
                         .tm_mday = 11,
                         .tm_mon = 2,
                         .tm_year = 87,
                         .tm_wday = 0,
                         .tm_yday = 0,
                         .tm_isdst = 0};

FileInfo some_file()
{
    FileInfo info{};
    std::memcpy(info.name, "LETTER", 7);
    info.type = 0xE961;
    info.location = 77;
    info.size = 0x01020300;
    info.date = date;
    const uint8_t implementation[6] = {0x80, 0x01, 'A', 'B', 0x12, 0x34};
    std::memcpy(info.lif_impl, implementation, sizeof info.lif_impl);
    return info;
}

Bytes composed(uint32_t form, const FileInfo &info, uint32_t records)
{
    const FileHeader *header = file_header(form);
    Bytes bytes(header->bytes);
    header->compose(&info, records, bytes.data());
    return bytes;
}

// The directory entry in either header, without its name and the first record.
Bytes rest_of_entry(const Bytes &count)
{
    return joined({count, {0x87, 0x03, 0x11, 0x21, 0x43, 0x59}, {0x80, 0x01, 'A', 'B', 0x12, 0x34}});
}

const Bytes volume_record = joined({
    {0x80, 0x00, 'H', 'F', 'S', 'L', 'I', 'F'},
    {0, 0, 0, 1},
    {0x10, 0x00, 0, 0},
    {0, 0, 0, 1},
    {0, 0, 0, 0},
    {0, 0, 0, 1},
    {0, 0, 0, 1},
    {0x00, 0x01, 0x02, 0x05},
    {0x11, 0x11, 0x11, 0x11, 0x11, 0x11},
    Bytes(206),
    {0x11, 0x11, 0x11, 0x11, 0x11, 0x11},
    {0, 0},
});

const Bytes directory_record = joined({
    bytes_of("WS_FILE   "),
    {0xE9, 0x61},
    {0, 0, 0, 2},
    rest_of_entry({0x00, 0x01, 0x02, 0x03}),
    Bytes(10),
    {0xFF, 0xFF},
    Bytes(212),
});

const Bytes hpcalc_bytes = joined({
    {'L', 'E', 'T', 'T', 'E', 'R', 0, 0, 0, 0},
    {0xE9, 0x61},
    {0, 0, 0, 0},
    rest_of_entry({0x00, 0x01, 0x02, 0x03}),
});

void expect_taken(const FileInfo &info, uint32_t size)
{
    EXPECT_EQ(info.type, 0xE961);
    EXPECT_EQ(info.size, size);
    EXPECT_EQ(info.date.tm_year, 87);
    EXPECT_EQ(info.date.tm_mon, 2);
    EXPECT_EQ(info.date.tm_mday, 11);
    EXPECT_EQ(info.date.tm_hour, 21);
    EXPECT_EQ(info.date.tm_min, 43);
    EXPECT_EQ(info.date.tm_sec, 59);
    const uint8_t implementation[6] = {0x80, 0x01, 'A', 'B', 0x12, 0x34};
    EXPECT_EQ(std::memcmp(info.lif_impl, implementation, 6), 0);
    EXPECT_STREQ(info.name, "KEEPS");
    EXPECT_EQ(info.location, 5u);
}

FileInfo file_to_fill()
{
    FileInfo info{};
    std::memcpy(info.name, "KEEPS", 6);
    info.location = 5;
    return info;
}

const Bytes hpbasic_bytes = joined({volume_record, directory_record});

}

TEST(FileHeader, OneRowForEachForm)
{
    EXPECT_EQ(file_header(0), nullptr);
    ASSERT_NE(file_header(1), nullptr);
    ASSERT_NE(file_header(2), nullptr);
    for (const uint32_t form : {3u, 4u, 255u, 0x10000u, 0x10001u, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_EQ(file_header(form), nullptr) << form;
    EXPECT_EQ(file_header(1)->bytes, 512u);
    EXPECT_EQ(file_header(2)->bytes, 32u);
    EXPECT_LE(file_header(1)->bytes, most_header_bytes);
}

TEST(FileHeader, FormsByTheirNames)
{
    EXPECT_EQ(header_form("none"), 0);
    EXPECT_EQ(header_form(file_header(1)->name), 1);
    EXPECT_EQ(header_form(file_header(2)->name), 2);
    for (const char *name : {"", "n", "hp", "nonesuch", "HPBASIC2", "0", "1"}) EXPECT_EQ(header_form(name), -1) << name;
}

TEST(FileHeader, HpbasicByteForByte)
{
    ASSERT_EQ(volume_record.size(), 256u);
    ASSERT_EQ(directory_record.size(), 256u);
    EXPECT_EQ(composed(1, some_file(), 0x010203), hpbasic_bytes);
}

TEST(FileHeader, HpcalcByteForByte)
{
    ASSERT_EQ(hpcalc_bytes.size(), 32u);
    EXPECT_EQ(composed(2, some_file(), 0x010203), hpcalc_bytes);
}

TEST(FileHeader, TheCountOfRecordsFillsFourBytes)
{
    const Bytes empty = composed(1, some_file(), 0);
    EXPECT_EQ(Bytes(empty.begin() + 32, empty.begin() + 36), (Bytes{0, 0, 0, 2}));
    EXPECT_EQ(Bytes(empty.begin() + 272, empty.begin() + 276), (Bytes{0, 0, 0, 0}));
    const Bytes large = composed(1, some_file(), 0xFFFFFE);
    EXPECT_EQ(Bytes(large.begin() + 32, large.begin() + 36), (Bytes{0x01, 0, 0, 0}));
    const Bytes calc = composed(2, some_file(), 0xFFFFFE);
    EXPECT_EQ(Bytes(calc.begin() + 16, calc.begin() + 20), (Bytes{0, 0xFF, 0xFF, 0xFE}));
}

TEST(FileHeader, OnlyHpcalcHoldsTheName)
{
    FileInfo info = some_file();
    std::memcpy(info.name, "TENLETTERS", 11);
    EXPECT_EQ(composed(1, info, 0x010203), hpbasic_bytes);
    const Bytes ten = composed(2, info, 0x010203);
    EXPECT_EQ(front_of(ten, 12), joined({bytes_of("TENLETTERS"), {0xE9, 0x61}}));
    std::memcpy(info.name, "SIXTEENLETTERSXX", 17);
    const Bytes sixteen = composed(2, info, 0x010203);
    EXPECT_EQ(front_of(sixteen, 12), joined({bytes_of("SIXTEENLET"), {0xE9, 0x61}}));
    EXPECT_EQ(Bytes(sixteen.begin() + 12, sixteen.end()), Bytes(hpcalc_bytes.begin() + 12, hpcalc_bytes.end()));
    std::memset(info.name, 0, sizeof info.name);
    EXPECT_EQ(front_of(composed(2, info, 1), 10), Bytes(10));
    std::memcpy(info.name, "\xCC\xDE", 3);
    EXPECT_EQ(front_of(composed(2, info, 1), 3), (Bytes{0xCC, 0xDE, 0})) << "in the HP character set";
}

TEST(FileHeader, Dates)
{
    FileInfo info = some_file();
    info.date.tm_year = 126;
    Bytes bytes = composed(2, info, 1);
    EXPECT_EQ(bytes[20], 0x26);
    info.date = {};
    bytes = composed(2, info, 1);
    EXPECT_EQ(Bytes(bytes.begin() + 20, bytes.begin() + 26), Bytes(6));
    info.date = date;
    info.date.tm_mon = 15; // an October of a LIF volume
    bytes = composed(1, info, 1);
    EXPECT_EQ(bytes[256 + 21], 0x16);
}

TEST(FileHeader, HpbasicIsTakenApart)
{
    FileInfo info = file_to_fill();
    EXPECT_TRUE(file_header(1)->parse(hpbasic_bytes.data(), &info));
    expect_taken(info, 0x01020300);
    EXPECT_EQ(file_header(1)->taken_off, 512u);
}

TEST(FileHeader, HpcalcIsTakenApart)
{
    FileInfo info = file_to_fill();
    EXPECT_TRUE(file_header(2)->parse(hpcalc_bytes.data(), &info));
    expect_taken(info, 0x01020300);
    EXPECT_EQ(file_header(2)->taken_off, 0u);
}

TEST(FileHeader, HpbasicIsKnownByItsMagicAndItsName)
{
    for (size_t position = 0; position < 512; ++position) {
        Bytes changed = hpbasic_bytes;
        changed[position] ^= 0x20;
        FileInfo info = file_to_fill();
        const bool looked_at = position < 8 || (position >= 256 && position < 266);
        EXPECT_EQ(file_header(1)->parse(changed.data(), &info), !looked_at) << position;
        EXPECT_TRUE(!looked_at || (info.type == 0 && info.size == 0 && info.date.tm_mday == 0)) << position;
    }
}

TEST(FileHeader, HpcalcIsNotCheckedAtAll)
{
    FileInfo info = file_to_fill();
    EXPECT_TRUE(file_header(2)->parse(Bytes(32).data(), &info));
    EXPECT_EQ(info.size, 0u);
    EXPECT_TRUE(file_header(2)->parse(Bytes(32, 0xFF).data(), &info));
    EXPECT_EQ(info.type, 0xFFFF);
    EXPECT_EQ(info.size, 0xFFFFFF00u);
    EXPECT_STREQ(info.name, "KEEPS");
}

TEST(FileHeader, TheSizeIsTheCountTimes256InItsLow32Bits)
{
    Bytes bytes = hpcalc_bytes;
    set_dword_at(bytes, 16, 0x01000001);
    FileInfo info = file_to_fill();
    EXPECT_TRUE(file_header(2)->parse(bytes.data(), &info));
    EXPECT_EQ(info.size, 256u);
}

TEST(FileHeader, WhatWasComposedIsTakenApart)
{
    for (const uint32_t form : {1u, 2u}) {
        FileInfo info = file_to_fill();
        EXPECT_TRUE(file_header(form)->parse(composed(form, some_file(), 0x010203).data(), &info)) << form;
        expect_taken(info, 0x01020300);
    }
}
