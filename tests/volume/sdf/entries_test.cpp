// Entries of SDF directories, and the inodes that tell about the files.
#include <gtest/gtest.h>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/sdf_builder.h"
#include "tests/volume/sdf/literal.h"
#include "volume/entries.h"
#include "volume/names.h"

using namespace tests;

namespace
{

constexpr uint32_t alpha_inode = 4;

// The literal volume with some bytes of ALPHA's inode replaced, opened.
struct Alpha {
    explicit Alpha(size_t field = 0, const std::string &digits = "") : volume(image(field, digits)), md(volume.md) {}

    static Bytes image(size_t field, const std::string &digits)
    {
        Bytes bytes = literal_sdf();
        put_hex(bytes, literal_tail + field, digits);
        return bytes;
    }

    int32_t read(const std::string &name, uint32_t inode = alpha_inode)
    {
        forget_error();
        info = {};
        return get_file_info(md, &info, sdf_entry(name, inode).data(), &size);
    }

    OpenVolume volume;
    MediaDescriptor *md;
    FileInfo info{};
    uint32_t size = 77;
};

std::string visible(const MediaDescriptor *md, const FileInfo &info)
{
    char name[VISIBLE_NAME_SIZE];
    compose_filename(md, &info, name);
    return name;
}

}

TEST(SdfEntry, EachField)
{
    Alpha alpha;
    ASSERT_EQ(alpha.read("ALPHA"), 1) << error_text();
    const FileInfo &info = alpha.info;
    EXPECT_STREQ(info.name, "ALPHA");
    EXPECT_EQ(info.type, 0xE9C9);
    EXPECT_STREQ(info.type_string, "DATA");
    EXPECT_STREQ(info.system_string, "");
    EXPECT_EQ(info.location, 8u);
    EXPECT_EQ(info.size, 300u);
    EXPECT_EQ(info.records, 2u);
    EXPECT_EQ(info.record_len, 128u);
    EXPECT_EQ(info.inode, alpha_inode);
    EXPECT_EQ(info.is_directory, 0u);
    EXPECT_EQ(info.deleted, 0u);
    EXPECT_EQ(info.attributes, 0);
    EXPECT_EQ((std::vector<int32_t>{info.date.tm_year, info.date.tm_mon, info.date.tm_mday, info.date.tm_hour,
                                    info.date.tm_min, info.date.tm_sec}),
              (std::vector<int32_t>{84, 2, 15, 9, 7, 6}));
    EXPECT_EQ(alpha.size, 512u); // two blocks
    EXPECT_EQ(visible(alpha.md, info), "ALPHA.DATA");
}

TEST(SdfEntry, Directory)
{
    Alpha alpha;
    ASSERT_EQ(alpha.read("DIR", 5), 1) << error_text();
    EXPECT_EQ(alpha.info.is_directory, 1u);
    EXPECT_EQ(alpha.info.type, 0xE9C3);
    EXPECT_EQ(alpha.info.record_len, 12u);
    EXPECT_EQ(visible(alpha.md, alpha.info), "DIR");
}

TEST(SdfEntry, Names)
{
    struct Row {
        std::string entry;
        const char *name;
    };
    const Row rows[] = {
        {"A", "A"},
        {"ABCDEFGHIJKLMNOP", "ABCDEFGHIJKLMNOP"},
        {std::string("A\0", 2), "A"},
        {std::string("AB\0\0  \0 ", 8), "AB"},
        {std::string("A\0B", 3), "A B"},
        {std::string("A\0\0 \0C\0\0\0\0\0\0\0\0\0Z", 16), "A    C         Z"},
        {" A", " A"},
        {"A B", "A B"},
        {"9 to 5", "9 to 5"},
        {"../x", "../x"},
        {"\xC5\xC9", "\xC5\xC9"},
    };
    Alpha alpha;
    for (const Row &row : rows) {
        ASSERT_EQ(alpha.read(row.entry), 1) << row.name << error_text();
        EXPECT_STREQ(alpha.info.name, row.name);
    }
}

TEST(SdfEntry, WithoutANameIsRefused)
{
    Alpha alpha;
    for (const std::string &name : {std::string("\0", 1), std::string("\0BC", 3), std::string(16, '\0')}) {
        EXPECT_EQ(alpha.read(name), -1);
        EXPECT_EQ(error_text(), "Bad directory entry (empty filename)");
        EXPECT_EQ(alpha.size, 0u);
    }
}

TEST(SdfEntry, OfBlanksIsRefused)
{
    Alpha alpha;
    EXPECT_EQ(alpha.read(" "), -1);
    EXPECT_EQ(error_text(), "Bad directory entry (file \"\": empty filename)");
    EXPECT_EQ(alpha.size, 0u);
}

TEST(SdfEntry, InodeNumberAboveTheTableIsRefused)
{
    Alpha alpha;
    for (const uint32_t inode : {7U, 8U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(alpha.read("ALPHA", inode), -1);
        EXPECT_EQ(error_text(), "Bad directory entry (illegal inode number)");
        EXPECT_EQ(alpha.size, 0u);
    }
}

TEST(SdfEntry, Hazard_E7_InodeNumberOfTheTablesEndIsTakenAndItsFileRefused)
{
    Alpha alpha;
    EXPECT_EQ(alpha.md->inode_count, 6u);
    EXPECT_EQ(alpha.read("ALPHA", 6), -1);
    EXPECT_EQ(error_text(), "Bad directory entry (file \"ALPHA\" has location zero)");
    EXPECT_EQ(alpha.size, 0u);
}

TEST(SdfEntry, LocationZeroIsRefused)
{
    Alpha alpha(40, "00000000");
    EXPECT_EQ(alpha.read("ALPHA"), -1);
    EXPECT_EQ(error_text(), "Bad directory entry (file \"ALPHA\" has location zero)");
}

TEST(SdfEntry, RecordLengths)
{
    struct Row {
        const char *bytes;
        uint32_t words;
        uint32_t records;
        const char *visible;
    };
    const Row rows[] = {
        {"00000000", 128, 2, "ALPHA.DATA"}, // none: 256
        {"00000001", 128, 2, "ALPHA.DATA"}, // half a word is none either
        {"00000002", 1, 150, "ALPHA.&2.DATA"},
        {"00000100", 128, 2, "ALPHA.DATA"},
        {"0000012C", 150, 1, "ALPHA.&300.DATA"},
        {"0000012D", 150, 1, "ALPHA.&300.DATA"},
        {"FFFFFFFF", 0x7FFFFFFF, 0, "ALPHA.&4294967294.DATA"}, // the sum wraps
    };
    for (const Row &row : rows) {
        Alpha alpha(112, row.bytes);
        ASSERT_EQ(alpha.read("ALPHA"), 1) << row.bytes;
        EXPECT_EQ(alpha.info.record_len, row.words) << row.bytes;
        EXPECT_EQ(alpha.info.records, row.records) << row.bytes;
        EXPECT_EQ(visible(alpha.md, alpha.info), row.visible);
    }
}

TEST(SdfEntry, RecordsOfABdatFileAreThoseBehindItsHead)
{
    Alpha alpha(6, "E961");
    ASSERT_EQ(alpha.read("ALPHA"), 1);
    EXPECT_EQ(alpha.info.records, 1u);
    EXPECT_STREQ(alpha.info.type_string, "BDAT");
    EXPECT_STREQ(alpha.info.system_string, "98X6");
}

TEST(SdfEntry, SystemOfATypeByItsHighByte)
{
    struct Row {
        const char *type;
        const char *system;
    };
    for (const Row &row : {Row{"E9C9", ""}, Row{"E980", ""}, Row{"E97F", "98X6"}, Row{"EA32", "PSCL"},
                           Row{"E020", "SE80"}, Row{"0001", ""}}) {
        Alpha alpha(6, row.type);
        ASSERT_EQ(alpha.read("ALPHA"), 1) << row.type;
        EXPECT_STREQ(alpha.info.system_string, row.system) << row.type;
    }
}

TEST(SdfEntry, DateOfZeroIsNone)
{
    Alpha alpha(104, "00000000 00000000");
    ASSERT_EQ(alpha.read("ALPHA"), 1);
    EXPECT_EQ(alpha.info.date.tm_mday, 0);
    EXPECT_EQ(alpha.info.date.tm_year, 0);
}

TEST(SdfEntry, SizeThatTheFileTakesIsThatOfItsBlocks)
{
    Alpha alpha(28, "00000007");
    ASSERT_EQ(alpha.read("ALPHA"), 1);
    EXPECT_EQ(alpha.size, 7 * 256u);
}

TEST(SdfEntry, IsNotWritten)
{
    Alpha alpha;
    ASSERT_EQ(alpha.read("ALPHA"), 1);
    Bytes entry(24, 0x55);
    set_file_info(alpha.md, &alpha.info, entry.data());
    EXPECT_EQ(entry, Bytes(24, 0x55));
}

TEST(SdfEntry, Hazard_E8_WithoutATableEachInodeNumberIsRefused)
{
    MediaDescriptor md{};
    md.format = FORMAT_SDF;
    md.block_size = 256;
    md.inode_count = 0xFFFFFFFF;
    FileInfo info{};
    uint32_t size = 1;
    for (const uint32_t inode : {0U, 1U, 5U}) {
        EXPECT_EQ(get_file_info(&md, &info, sdf_entry("ALPHA", inode).data(), &size), -1);
        EXPECT_EQ(error_text(), "Bad directory entry (illegal inode number)");
    }
}
