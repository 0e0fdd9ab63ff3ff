// SDF DATA records as text: a head of five bytes, and nothing that goes over a block's end.
#include <gtest/gtest.h>

#include "tests/volume/content/outward_support.h"

using namespace tests;

namespace
{

const Bytes ab = {0x01, 0x00, 0, 0, 2, 'a', 'b'}; // a record of two characters

Bytes record_of(uint32_t count, const Bytes &characters)
{
    const Bytes head = {0x80, 0x55, static_cast<uint8_t>(count >> 16), static_cast<uint8_t>(count >> 8),
                        static_cast<uint8_t>(count)};
    return joined({head, characters});
}

}

TEST(SdfRecordsOut, ServesDataFilesOfSdf)
{
    for (uint32_t format = 0; format <= 6; ++format)
        for (uint32_t type = 0; type <= 0xFFFF; ++type)
            ASSERT_EQ(find_converter(format, static_cast<uint16_t>(type)) == &sdf_records,
                      format == 4 && type == 0xE9C9)
                << format << ' ' << type;
    EXPECT_EQ(sdf_records.kind, 5u);
    EXPECT_EQ(sdf_records.skipped_blocks, 0u);
}

TEST(SdfRecordsOut, RecordsFollowWithoutPadding)
{
    EXPECT_EQ(text_of_block(sdf_records, joined({ab, record_of(3, {'c', 'd', 'e'}), ab})), "ab\r\ncde\r\nab\r\n");
}

TEST(SdfRecordsOut, TheMarkAndTheByteBehindItMeanNothing)
{
    for (int byte = 0; byte < 256; ++byte) {
        const auto mark = static_cast<uint8_t>(byte);
        const Bytes record = {mark, static_cast<uint8_t>(255 - byte), 0, 0, 1, 'x'};
        EXPECT_EQ(outward(sdf_records, {joined({record, ab}), ab}).text, "x\r\nab\r\nab\r\n") << byte;
    }
}

TEST(SdfRecordsOut, BytesWithBit7AreDroppedAndCounted)
{
    EXPECT_EQ(text_of_block(sdf_records, joined({record_of(4, {'a', 0x80, 0xFF, 'b'}), ab})), "ab\r\nab\r\n");
    EXPECT_EQ(text_of_block(sdf_records, joined({record_of(2, {0xCC, 0xCD}), ab})), "\r\nab\r\n");
}

TEST(SdfRecordsOut, BytesBelow128Stand)
{
    Bytes characters;
    std::string wanted;
    for (int byte = 0; byte < 128; ++byte) {
        characters.push_back(static_cast<uint8_t>(byte));
        wanted.push_back(static_cast<char>(byte));
    }
    EXPECT_EQ(text_of_block(sdf_records, record_of(128, characters)), wanted + "\r\n");
}

TEST(SdfRecordsOut, ARecordOfLengthZeroIsNothing)
{
    EXPECT_EQ(text_of_block(sdf_records, joined({ab, record_of(0, {}), ab})), "ab\r\nab\r\n");
    EXPECT_EQ(outward(sdf_records, {Bytes(256), ab}).text, "ab\r\n");
}

TEST(SdfRecordsOut, ARecordIsCutAtItsBlocksEnd)
{
    const Bytes block = record_of(252, Bytes(251, 'x'));
    EXPECT_EQ(outward(sdf_records, {block, ab}).text, std::string(251, 'x') + "ab\r\n");
    const Bytes endless = record_of(0xFFFFFF, Bytes(251, 'x'));
    EXPECT_EQ(outward(sdf_records, {endless, endless, ab}).text, std::string(502, 'x') + "ab\r\n");
    EXPECT_EQ(outward(sdf_records, {record_of(0x010000, Bytes(251, 'x')), ab}).text, std::string(251, 'x') + "ab\r\n");
    EXPECT_EQ(outward(sdf_records, {record_of(0x000100, Bytes(251, 'x')), ab}).text, std::string(251, 'x') + "ab\r\n");
}

TEST(SdfRecordsOut, ARecordThatFillsItsBlockHasItsLineEnd)
{
    EXPECT_EQ(outward(sdf_records, {record_of(251, Bytes(251, 'x')), ab}).text, std::string(251, 'x') + "\r\nab\r\n");
}

TEST(SdfRecordsOut, ARecordAtEveryOffsetOfABlock)
{
    for (size_t offset = 7; offset < 256; ++offset) {
        const Bytes filler = record_of(static_cast<uint32_t>(offset - 5), Bytes(offset - 5, 0x80));
        const Bytes block = front_of(joined({filler, record_of(3, {'c', 'd', 'e'}), Bytes(256)}), 256);
        const size_t characters = offset > 251 ? 0 : std::min<size_t>(3, 251 - offset);
        std::string wanted = "\r\n" + std::string("cde").substr(0, characters);
        if (characters == 3) wanted += "\r\n";
        EXPECT_EQ(outward(sdf_records, {block, ab}).text, wanted + "ab\r\n") << offset;
    }
}

TEST(SdfRecordsOut, Hazard_H7_AHeadThatABlockEndsInIsZeroBehindIt)
{
    const Bytes head = {1, 1, 1, 1, 1, 'x'};
    for (size_t size = 0; size <= 5; ++size)
        EXPECT_EQ(outward(sdf_records, {front_of(head, size), ab}).text, "ab\r\n") << size;
    EXPECT_EQ(outward(sdf_records, {head, ab}).text, "xab\r\n");
    for (size_t size = 0; size <= 5; ++size) {
        const Bytes filler = record_of(static_cast<uint32_t>(251 - size), Bytes(251 - size, 'y'));
        EXPECT_EQ(outward(sdf_records, {joined({filler, front_of(head, size)}), ab}).text,
                  std::string(251 - size, 'y') + "\r\nab\r\n")
            << size;
    }
}

TEST(SdfRecordsOut, NothingEndsTheFile)
{
    for (const Bytes &block : {Bytes(), Bytes{0xFF}, Bytes{0xFF, 0xFF}, Bytes(256, 0xFF), Bytes(256)})
        EXPECT_EQ(outward(sdf_records, {block, block, block}).blocks, 3u);
}

TEST(SdfRecordsOut, RandomFilesComeOutAsByteByByte)
{
    expect_as_literal({.row = sdf_records,
                       .alphabet = {0, 0, 0, 0, 0, 0, 1, 2, 3, 0x80, 'A'},
                       .head = {},
                       .most_yield = 8,
                       .most_more = 0});
}
