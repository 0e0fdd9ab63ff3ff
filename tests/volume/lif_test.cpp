// One LIF entry, between its 32 bytes and a FileInfo.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/medium.h"
#include "volume/entries.h"

using namespace tests;

namespace
{

using EntryBytes = std::array<uint8_t, 32>;
using Implementation = std::array<uint8_t, 6>;

MediaDescriptor lif_medium()
{
    MediaDescriptor md = usual_options();
    md.format = FORMAT_LIF;
    md.dir_entry_size = 32;
    return md;
}

struct Read {
    int32_t result = 99;
    FileInfo info{};
    uint32_t size = 99;
};

Read read(const EntryBytes &bytes)
{
    MediaDescriptor md = lif_medium();
    Read r;
    r.result = get_file_info(&md, &r.info, bytes.data(), &r.size);
    return r;
}

Read read(const LifEntry &entry)
{
    return read(lif_entry_bytes(entry));
}

Read typed(uint16_t type, const Implementation &implementation, uint32_t length)
{
    return read(
        LifEntry{.name = "FILE", .type = type, .start = 10, .length = length, .implementation = implementation});
}

Implementation bytes_of(const FileInfo &info)
{
    Implementation bytes{};
    std::copy_n(info.lif_impl, 6, bytes.begin());
    return bytes;
}

EntryBytes written(const FileInfo &info)
{
    const MediaDescriptor md = lif_medium();
    EntryBytes bytes;
    bytes.fill(0x5A);
    set_file_info(&md, &info, bytes.data());
    return bytes;
}

Bytes part(const EntryBytes &bytes, size_t from, size_t count)
{
    return Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                 bytes.begin() + static_cast<std::ptrdiff_t>(from + count));
}

}

TEST(LifEntry, FieldsAreRead)
{
    const Read r = read(LifEntry{.name = "AB_c1", .type = 0x0001, .start = 0x01020304, .length = 5});
    EXPECT_EQ(r.result, 1);
    EXPECT_STREQ(r.info.name, "AB_c1");
    EXPECT_EQ(r.info.type, 1u);
    EXPECT_EQ(type_text(r.info), "ASCII");
    EXPECT_STREQ(r.info.system_string, "98X6");
    EXPECT_EQ(r.info.location, 0x01020304u);
    EXPECT_EQ(r.info.size, 5u * 256u);
    EXPECT_EQ(r.info.records, 5u);
    EXPECT_EQ(r.info.record_len, 128u);
    EXPECT_EQ(r.info.attributes, 0u);
    EXPECT_EQ(r.info.deleted, 0u);
    EXPECT_EQ(r.info.is_directory, 0u);
    EXPECT_EQ(r.size, 5u * 256u);
}

TEST(LifEntry, DateIsRead)
{
    const Read r = read(LifEntry{.name = "A", .start = 10, .length = 1, .date = {0x02, 0x12, 0x31, 0x23, 0x58, 0x59}});
    EXPECT_EQ(r.info.date.tm_year, 102);
    EXPECT_EQ(r.info.date.tm_mon, 11);
    EXPECT_EQ(r.info.date.tm_mday, 31);
    EXPECT_EQ(r.info.date.tm_hour, 23);
    EXPECT_EQ(r.info.date.tm_min, 58);
    EXPECT_EQ(r.info.date.tm_sec, 59);
}

TEST(LifEntry, TheEndMarkEndsTheDirectory)
{
    EXPECT_EQ(read(LifEntry{.name = "LEFTOVER", .type = 0xFFFF, .start = 10, .length = 1}).result, 0);
    EXPECT_EQ(read(LifEntry{.name = "", .type = 0xFFFF, .start = 0, .length = 0}).result, 0);
}

TEST(LifEntry, APurgedEntryIsAnEntry)
{
    const Read r = read(LifEntry{.name = "GONE", .type = 0, .start = 10, .length = 3});
    EXPECT_EQ(r.result, 1);
    EXPECT_NE(r.info.deleted, 0u);
    EXPECT_EQ(type_text(r.info), "PURGE");
    EXPECT_EQ(r.size, 3u * 256u);
}

TEST(LifEntry, LocationZeroIsRefused)
{
    forget_error();
    const Read r = read(LifEntry{.name = "FILE", .start = 0, .length = 3});
    EXPECT_EQ(r.result, -1);
    EXPECT_EQ(r.size, 0u);
    EXPECT_EQ(error_text(), "Bad directory entry (file \"FILE\" has location zero)");
}

TEST(LifEntry, APurgedEntryWithLocationZeroIsRefused)
{
    forget_error();
    EXPECT_EQ(read(LifEntry{.name = "GONE", .type = 0, .start = 0, .length = 3}).result, -1);
    EXPECT_EQ(error_text(), "Bad directory entry (file \"GONE\" has location zero)");
}

TEST(LifEntry, AnEmptyNameIsRefused)
{
    EntryBytes bytes = lif_entry_bytes({.name = "X", .start = 10, .length = 1});
    std::fill_n(bytes.begin(), 10, uint8_t{0});
    forget_error();
    const Read r = read(bytes);
    EXPECT_EQ(r.result, -1);
    EXPECT_EQ(r.size, 0u);
    EXPECT_EQ(error_text(), "Bad directory entry (file \"\": empty filename)");
}

TEST(LifEntry, ANameMayBeginWithAnyCharacter)
{
    EXPECT_EQ(read(LifEntry{.name = "1ST", .start = 10, .length = 1}).result, 1);
    EXPECT_EQ(read(LifEntry{.name = "\xFF\x01", .start = 10, .length = 1}).result, 1);
}

TEST(LifEntry, Hazard_C13_ANameOfTenCharactersHasNoTerminator)
{
    const Read r = read(LifEntry{.name = "ABCDEFGHIJ", .type = 0x4142, .start = 10, .length = 1});
    EXPECT_STREQ(r.info.name, "ABCDEFGHIJ");
}

TEST(LifEntry, Hazard_C9_ANameOfBlanksIsOneBlank)
{
    EXPECT_STREQ(read(LifEntry{.name = "", .start = 10, .length = 1}).info.name, " ");
}

TEST(LifEntry, ANameEndsAtItsFirstNul)
{
    const Read r = read(LifEntry{.name = std::string("AB\0CD", 5), .start = 10, .length = 1});
    EXPECT_STREQ(r.info.name, "AB");
}

TEST(LifEntry, KeepsOldTailOfTrimmedText)
{
    EXPECT_STREQ(read(LifEntry{.name = "  AB", .start = 10, .length = 1}).info.name, "ABAB");
}

TEST(LifEntry, KeepsOctoberAsMonth15)
{
    const Read r = read(LifEntry{.name = "A", .start = 10, .length = 1, .date = {0x84, 0x10, 0x03, 0, 0, 0}});
    EXPECT_EQ(r.info.date.tm_mon, 15);
    EXPECT_EQ(written(r.info)[21], 0x16u);
}

TEST(LifEntry, KeepsTypeTextRunningOnIntoSystemText)
{
    const Read r = typed(0xE205, {0x80, 1, 0, 0, 0, 0}, 1);
    EXPECT_EQ(type_text(r.info), "BIN71_98X6");
    EXPECT_EQ(type_text(typed(0xE207, {0x80, 1, 0, 0, 0, 0}, 1).info), "BIN71_98X6");
    EXPECT_EQ(type_text(typed(0xE0D5, {0x80, 1, 0, 0, 0, 0}, 1).info), "TEXT_SSE80");
}

TEST(LifEntry, KeepsWrappedRecordCountOfEmptyBdatFile)
{
    const Read r = typed(0xE961, {0x80, 1, 0, 0, 0x00, 0x80}, 0);
    EXPECT_EQ(r.info.size, 0u);
    EXPECT_EQ(r.info.records, 16777215u);
}

TEST(LifEntry, Hazard_B6_TheRecordCountIsComputedIn32Bits)
{
    EXPECT_EQ(typed(0xE961, {0x80, 1, 0, 0, 0x01, 0x00}, 0).info.records, (512u - 257u) / 512u);
    EXPECT_EQ(typed(0xE961, {0x80, 1, 0, 0, 0x00, 0x40}, 0).info.records, (128u - 257u) / 128u);
    EXPECT_EQ(typed(0x0001, {0x80, 1, 0, 0, 0, 0}, 0).info.records, 0u);
}

TEST(LifEntry, Hazard_B4_ALengthThatWrapsStays)
{
    const Read r = read(LifEntry{.name = "A", .start = 10, .length = 0x1000001});
    EXPECT_EQ(r.info.size, 256u);
    EXPECT_EQ(r.info.records, 1u);
    EXPECT_EQ(r.size, 256u);
}

TEST(LifEntry, Hazard_B5_ARecordLengthOfZeroIs128)
{
    EXPECT_EQ(typed(0xE961, {0x80, 1, 0, 0, 0, 0}, 3).info.record_len, 128u);
    EXPECT_EQ(typed(0xE961, {0x80, 1, 0, 0, 0, 0}, 3).info.records, 2u);
    EXPECT_EQ(typed(0xE848, {0x80, 1, 0, 0, 0, 0}, 3).info.record_len, 128u);
    EXPECT_EQ(typed(0xE848, {0, 0, 0, 0, 0, 0}, 3).info.records, 3u);
}

TEST(LifEntry, ABdatFileOfOneRecordHasNone)
{
    EXPECT_EQ(typed(0xE961, {0x80, 1, 0, 0, 0x00, 0x80}, 1).info.records, 0u);
}

TEST(LifEntry, RecordLengthOfBdatAndOf9845Files)
{
    const Read bdat = typed(0xE961, {0x80, 1, 0, 0, 0x01, 0x00}, 5);
    EXPECT_EQ(bdat.info.record_len, 256u);
    EXPECT_EQ(bdat.info.records, 2u); // 1024 bytes behind the first record
    const Read data = typed(0xE848, {0x80, 1, 0, 0, 0x00, 0x40}, 5);
    EXPECT_EQ(data.info.record_len, 64u);
    EXPECT_EQ(data.info.records, 10u);
    EXPECT_STREQ(data.info.system_string, "9845");
    EXPECT_EQ(typed(0xE950, {0x80, 1, 0, 0, 0x00, 0x40}, 5).info.record_len, 128u);
    EXPECT_EQ(typed(0xE020, {0x80, 1, 0, 0, 0x00, 0x40}, 5).info.record_len, 128u);
}

TEST(LifEntry, PartialRecordsCount)
{
    EXPECT_EQ(typed(0xE848, {0x80, 1, 0, 0, 0x00, 0xC0}, 2).info.records, 2u); // 512 bytes in records of 384
    EXPECT_EQ(typed(0xE961, {0x80, 1, 0, 0, 0x00, 0xC0}, 3).info.records, 2u);
}

TEST(LifEntry, AZeroVolumeNumberIsSet)
{
    EXPECT_EQ(bytes_of(typed(0x0001, {0, 7, 1, 2, 3, 4}, 1).info), (Implementation{128, 1, 1, 2, 3, 4}));
    EXPECT_EQ(bytes_of(typed(0x0001, {0x80, 7, 1, 2, 3, 4}, 1).info), (Implementation{0x80, 7, 1, 2, 3, 4}));
    EXPECT_EQ(bytes_of(typed(0xE848, {0, 7, 1, 2, 3, 4}, 1).info), (Implementation{128, 1, 0, 0, 3, 4}));
    EXPECT_EQ(bytes_of(typed(0xE848, {0x80, 1, 1, 2, 3, 4}, 1).info), (Implementation{0x80, 1, 1, 2, 3, 4}));
    EXPECT_EQ(bytes_of(typed(0xE020, {0, 7, 1, 2, 3, 4}, 1).info), (Implementation{128, 1, 1, 2, 0, 1}));
    EXPECT_EQ(bytes_of(typed(0xE020, {0x80, 7, 1, 2, 3, 4}, 1).info), (Implementation{0x80, 7, 1, 2, 3, 4}));
}

TEST(LifEntry, ProtectionOfBdatFiles)
{
    const Read none = typed(0xE961, {0x80, 1, 0, 'B', 0, 0x80}, 2);
    EXPECT_EQ(none.info.attributes, 0u);
    EXPECT_EQ(bytes_of(none.info), (Implementation{0x80, 1, ' ', ' ', 0, 0x80}));
    EXPECT_EQ(typed(0xE961, {0x80, 1, ' ', ' ', 0, 0x80}, 2).info.attributes, 0u);
    EXPECT_EQ(typed(0xE961, {0x80, 1, 'A', 'B', 0, 0x80}, 2).info.attributes, 6u);
    EXPECT_EQ(typed(0xE961, {0x80, 1, ' ', 'B', 0, 0x80}, 2).info.attributes, 6u);
    EXPECT_EQ(typed(0xE961, {0x80, 1, '!', 0, 0, 0x80}, 2).info.attributes, 6u);
    EXPECT_EQ(typed(0xE950, {0x80, 1, 'A', 'B', 0, 0x80}, 2).info.attributes, 0u);
}

TEST(LifEntry, SystemTexts)
{
    const struct {
        uint16_t type;
        const char *text;
    } rows[] = {{0xDC01, "64K"},  {0xE020, "SE80"}, {0xE401, "TERM"}, {0xE848, "9845"}, {0xE950, "98X6"},
                {0xEA32, "PSCL"}, {0xEC01, "250"},  {0xF001, "1000"}, {0xF401, "3000"}, {0xF801, "S300"},
                {0x0001, "98X6"}, {0xE208, "98X6"}, {0x0000, "98X6"}, {0x1234, "98X6"}};
    for (const auto &[type, text] : rows)
        EXPECT_STREQ(typed(type, {0x80, 1, 0, 0, 0, 0}, 1).info.system_string, text) << type;
}

TEST(LifEntry, PascalTypesDependOnTheName)
{
    EXPECT_EQ(type_text(read(LifEntry{.name = "ABCA______", .type = 1, .start = 9, .length = 1}).info), "ASC");
    EXPECT_EQ(type_text(read(LifEntry{.name = "ABCU______", .type = 0xEA3E, .start = 9, .length = 1}).info), "UX");
}

TEST(LifEntry, IsWritten)
{
    FileInfo info = named("NAME");
    info.location = 0x01020304;
    info.size = 0x0A00;
    info.date = {.tm_sec = 30,
                 .tm_min = 7,
                 .tm_hour = 9,
                 .tm_mday = 15,
                 .tm_mon = 2,
                 .tm_year = 84,
                 .tm_wday = 0,
                 .tm_yday = 0,
                 .tm_isdst = 0};
    std::copy_n(Implementation{0x80, 1, 2, 3, 4, 5}.begin(), 6, info.lif_impl);
    const EntryBytes expected = {'N', 'A', 'M', 'E', ' ',  ' ',  ' ',  ' ',  ' ',  ' ',  0,    1, 1, 2, 3, 4,
                                 0,   0,   0,   10,  0x84, 0x03, 0x15, 0x09, 0x07, 0x30, 0x80, 1, 2, 3, 4, 5};
    EXPECT_EQ(written(info), expected);
}

TEST(LifEntry, LengthIsRoundedUpWhenWritten)
{
    FileInfo info = named("A");
    for (const auto &[size, records] : {std::pair{0u, 0u}, {1u, 1u}, {256u, 1u}, {257u, 2u}, {0x01000000u, 0x10000u}}) {
        info.size = size;
        const EntryBytes bytes = written(info);
        EXPECT_EQ(part(bytes, 16, 4),
                  (Bytes{0, static_cast<uint8_t>(records >> 16), 0, static_cast<uint8_t>(records & 0xFF)}))
            << size;
    }
}

TEST(LifEntry, ALongNameIsWrittenWithTenCharacters)
{
    const EntryBytes bytes = written(named("ABCDEFGHIJKLMN"));
    EXPECT_EQ(part(bytes, 0, 12), (Bytes{'A', 'B', 'C', 'D', 'E', 'F', 'G', 'H', 'I', 'J', 0, 1}));
}

TEST(LifEntry, APurgedEntryIsWrittenWithTypeZero)
{
    FileInfo info = named("GONE");
    info.type = 0xE020;
    info.deleted = 1;
    EXPECT_EQ(part(written(info), 10, 2), (Bytes{0, 0}));
}

TEST(LifEntry, ADateWithoutADayIsWrittenWithoutAMonth)
{
    FileInfo info = named("A");
    info.date.tm_year = 99;
    info.date.tm_mon = 4;
    EXPECT_EQ(part(written(info), 20, 3), (Bytes{0x99, 0, 0}));
}

TEST(LifEntry, ComesBackAsItWasWritten)
{
    for (const uint16_t type : {uint16_t{1}, uint16_t{0xE961}, uint16_t{0xE848}, uint16_t{0xEA3E}}) {
        const EntryBytes bytes = lif_entry_bytes(
            {.name = "FILE", .type = type, .start = 77, .length = 6, .implementation = {0x80, 1, ' ', 'X', 1, 0}});
        EXPECT_EQ(written(read(bytes).info), bytes) << type;
    }
}
