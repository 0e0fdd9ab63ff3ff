// BDAT items as text: strings with and without a line end, numbers with their digits from behind, and what a block's
// end cuts.
#include <gtest/gtest.h>

#include "tests/volume/content/outward_support.h"

using namespace tests;

namespace
{

struct Item {
    const char *name;
    Bytes bytes;
    std::string text;
};

void expect_items(const std::vector<Item> &items)
{
    for (const Item &item : items) EXPECT_EQ(text_of_block(bdat_items, item.bytes), item.text) << item.name;
}

const Bytes seven = {0, 0, 0, 0, 0xFF, 0x07, 0, 0}; // the integer 7
const Bytes ab = {0xDF, 2, 0, 'a', 'b'};            // a line of two characters

Bytes real(uint8_t first, uint8_t second)
{
    return {first, second, 0x59, 0x53, 0x26, 0x59, 0x41, 0x31};
}

Bytes filler(size_t size) // a piece of a string, all of it dots
{
    const Bytes head = {0xCF, static_cast<uint8_t>(size - 3), 0};
    return joined({head, Bytes(size - 3, '.')});
}

}

TEST(BdatItemsOut, ServesTypeE010OfLif)
{
    for (uint32_t format = 0; format <= 6; ++format)
        for (uint32_t type = 0; type <= 0xFFFF; ++type)
            ASSERT_EQ(find_converter(format, static_cast<uint16_t>(type)) == &bdat_items, format == 3 && type == 0xE010)
                << format << ' ' << type;
    EXPECT_EQ(bdat_items.kind, 6u);
    EXPECT_EQ(bdat_items.skipped_blocks, 0u);
}

TEST(BdatItemsOut, ThereIsNoWayBackForThisKindAndForSdfRecords)
{
    for (const ContentConverter *row : {&bdat_items, &sdf_records}) {
        EXPECT_TRUE(row->outward != nullptr) << row->name;
        EXPECT_TRUE(row->line == nullptr) << row->name;
    }
    for (const ContentConverter *row : {&data_items, &ascii_records, &pascal_text, &hp75_text})
        EXPECT_TRUE(row->outward != nullptr && row->line != nullptr) << row->name;
    EXPECT_EQ(content_converters().size(), 6u);
}

TEST(BdatItemsOut, Strings)
{
    expect_items({{"whole", joined({{0xDF, 5, 0}, bytes_of("HELLO"), ab}), "HELLO\r\nab\r\n"},
                  {"last piece", joined({{0x6F, 5, 0}, bytes_of("HELLO"), ab}), "HELLO\r\nab\r\n"},
                  {"first piece", joined({{0xCF, 5, 0}, bytes_of("HELLO"), ab}), "HELLOab\r\n"},
                  {"middle piece", joined({{0x7F, 5, 0}, bytes_of("HELLO"), ab}), "HELLOab\r\n"},
                  {"no padding behind an odd length", joined({{0xDF, 1, 0, 'x'}, ab}), "x\r\nab\r\n"},
                  {"empty line", joined({{0xDF, 0, 0}, ab, {0x6F, 0, 0}, ab}), "\r\nab\r\n\r\nab\r\n"},
                  {"empty piece", joined({{0xCF, 0, 0, 0x7F, 0, 0}, ab}), "ab\r\n"},
                  {"the host's characters", {0xDF, 3, 0, 0xCC, 0xDE, 0xFF}, "\x84\xE1\xB1\r\n"},
                  {"control characters stand", {0xDF, 4, 0, 13, 10, 0, 1}, std::string("\r\n\0\x01\r\n", 6)},
                  {"marks inside are text", {0xCF, 4, 0, 0x7F, 0x6F, 'x', 'y'}, "\x7Foxy"}});
}

TEST(BdatItemsOut, AStringInPiecesOverThreeBlocks)
{
    const Bytes first = joined({{0xCF, 253, 0}, Bytes(253, 'a')});
    const Bytes middle = joined({{0x7F, 253, 0}, Bytes(253, 'b')});
    const Bytes last = joined({{0x6F, 3, 0}, Bytes(3, 'c'), seven, {0xEF}, ab});
    const OutwardText outcome = outward(bdat_items, {first, middle, last});
    EXPECT_EQ(outcome.text, std::string(253, 'a') + std::string(253, 'b') + "ccc\r\n7\r\n");
    EXPECT_EQ(outcome.step, ContentStep::more);
}

TEST(BdatItemsOut, AFillByteEndsTheBlockAndNotTheFile)
{
    for (const uint8_t fill : {uint8_t{0xEF}, uint8_t{0xFF}}) {
        EXPECT_EQ(outward(bdat_items, {joined({ab, {fill}, ab}), ab}).text, "ab\r\nab\r\n");
        EXPECT_EQ(outward(bdat_items, {Bytes(256, fill), Bytes(256, fill), ab}).text, "ab\r\n");
        EXPECT_EQ(outward(bdat_items, {{fill}, ab}).text, "ab\r\n");
    }
}

TEST(BdatItemsOut, Integers)
{
    expect_items({{"seven", seven, "7\r\n"},
                  {"five digits", {0, 0, 0, 0, 0xFF, 0x45, 0x23, 0x01}, "12345\r\n"},
                  {"negative", {0, 0, 0, 0, 0xFF, 0x45, 0x23, 0x91}, "-12345\r\n"},
                  {"negative by any digit", {0, 0, 0, 0, 0xFF, 0x01, 0x00, 0x10}, "-1\r\n"},
                  {"largest", {0, 0, 0, 0, 0xFF, 0x99, 0x99, 0x09}, "99999\r\n"},
                  {"zero", {0, 0, 0, 0, 0xFF, 0, 0, 0}, "0\r\n"},
                  {"negative zero", {0, 0, 0, 0, 0xFF, 0, 0, 0x90}, "-0\r\n"},
                  {"the first four bytes mean nothing", {0x12, 0x34, 0x56, 0x78, 0xFF, 0x20, 0x10, 0}, "1020\r\n"}});
}

TEST(BdatItemsOut, Reals)
{
    expect_items({{"exponent 0", real(0x00, 0x00), "3.14159265359E000\r\n"},
                  {"negative", real(0x00, 0x09), "-3.14159265359E000\r\n"},
                  {"negative by any digit", real(0x00, 0x01), "-3.14159265359E000\r\n"},
                  {"exponent 499", real(0x99, 0x40), "3.14159265359E499\r\n"},
                  {"exponent -1", real(0x99, 0x90), "3.14159265359E-001\r\n"},
                  {"exponent -2", real(0x98, 0x90), "3.14159265359E-002\r\n"},
                  {"exponent -500", real(0x00, 0x50), "3.14159265359E-500\r\n"},
                  {"exponent -388", real(0x12, 0x60), "3.14159265359E-388\r\n"},
                  {"negative with exponent", real(0x87, 0x99), "-3.14159265359E-013\r\n"},
                  {"zero", Bytes(8), "0.00000000000E000\r\n"}});
}

TEST(BdatItemsOut, KeepsNibblesOfPositiveExponentSwapped)
{
    expect_items({{"low digit first below 500", real(0x21, 0x00), "3.14159265359E012\r\n"},
                  {"with hundreds", real(0x21, 0x30), "3.14159265359E312\r\n"},
                  {"high digit first above", real(0x21, 0x90), "3.14159265359E-079\r\n"}});
}

TEST(BdatItemsOut, Hazard_H11_DigitsAboveNineOfARealAreHexadecimal)
{
    const Bytes digits = {0x00, 0x00, 0xF0, 0x21, 0x0A, 0xFE, 0xDC, 0xAB};
    expect_items({{"digits", digits, "A.BDCFE0A21F0E000\r\n"},
                  {"exponent", real(0xBA, 0x10), "3.14159265359E1AB\r\n"},
                  {"hundreds", real(0x55, 0xF0), "3.14159265359E+555\r\n"}});
}

TEST(BdatItemsOut, EveryOtherFirstByteBeginsANumber)
{
    for (int byte = 0; byte < 256; ++byte) {
        const auto first = static_cast<uint8_t>(byte);
        const bool mark = byte == 0xEF || byte == 0xFF || byte == 0xDF || byte == 0x6F || byte == 0xCF || byte == 0x7F;
        const Bytes number = {first, 0, 0, 0, 0xFF, 0x07, 0, 0};
        EXPECT_EQ(text_of_block(bdat_items, number) == "7\r\n", !mark) << byte;
    }
}

TEST(BdatItemsOut, TheRestOfAStringBehindItsBlockIsUnread)
{
    const Bytes cut = joined({{0xDF, 254, 0}, Bytes(253, 'x')});
    EXPECT_EQ(outward(bdat_items, {cut, ab}).text, std::string(253, 'x') + "ab\r\n");
    const Bytes full = joined({{0xDF, 253, 0}, Bytes(253, 'x')});
    EXPECT_EQ(outward(bdat_items, {full, ab}).text, std::string(253, 'x') + "\r\nab\r\n");
    const Bytes endless = joined({{0xDF, 0xFF, 0xFF}, Bytes(253, 'x')});
    EXPECT_EQ(outward(bdat_items, {endless, endless}).text, std::string(506, 'x'));
    EXPECT_EQ(outward(bdat_items, {joined({{0xDF, 0x00, 0x01}, Bytes(253, 'x')}), ab}).text,
              std::string(253, 'x') + "ab\r\n");
}

TEST(BdatItemsOut, AStringAtEveryOffsetOfABlock)
{
    const Bytes string = {0xDF, 3, 0, 'c', 'd', 'e'};
    for (size_t offset = 3; offset < 256; ++offset) {
        const Bytes block = front_of(joined({filler(offset), string, Bytes(256, 0xFF)}), 256);
        const size_t characters = offset > 253 ? 0 : std::min<size_t>(3, 253 - offset);
        std::string wanted = std::string(offset - 3, '.') + std::string("cde").substr(0, characters);
        if (characters == 3) wanted += "\r\n";
        EXPECT_EQ(outward(bdat_items, {block, ab}).text, wanted + "ab\r\n") << offset;
    }
}

TEST(BdatItemsOut, Hazard_H8_ALengthThatABlockEndsInIsZeroBehindIt)
{
    expect_items({{"no byte", {}, ""},
                  {"a mark alone", {0xDF}, ""},
                  {"half a length of zero", {0xDF, 0}, "\r\n"},
                  {"half a length", {0xDF, 5}, ""},
                  {"a length and no characters", {0xDF, 5, 0}, ""},
                  {"half a length of a piece", {0x7F, 0}, ""}});
}

TEST(BdatItemsOut, Hazard_H8_NumbersThatABlockEndsInAreZeroBehindIt)
{
    const char *const reals[] = {"",
                                 "",
                                 "0.00000000000E012\r\n",
                                 "0.00000000059E012\r\n",
                                 "0.00000005359E012\r\n",
                                 "0.00000265359E012\r\n",
                                 "0.00059265359E012\r\n",
                                 "0.04159265359E012\r\n",
                                 "3.14159265359E012\r\n"};
    const char *const integers[] = {"",
                                    "",
                                    "0.00000000000E000\r\n",
                                    "0.00000000000E000\r\n",
                                    "0.00000000000E000\r\n",
                                    "0\r\n",
                                    "45\r\n",
                                    "2345\r\n",
                                    "12345\r\n"};
    const Bytes integer = {0, 0, 0, 0, 0xFF, 0x45, 0x23, 0x01};
    for (size_t size = 0; size <= 8; ++size) {
        EXPECT_EQ(text_of_block(bdat_items, front_of(real(0x21, 0), size)), reals[size]) << size;
        EXPECT_EQ(text_of_block(bdat_items, front_of(integer, size)), integers[size]) << size;
        const Bytes block = joined({filler(256 - size), front_of(integer, size)});
        EXPECT_EQ(outward(bdat_items, {block, ab}).text, std::string(253 - size, '.') + integers[size] + "ab\r\n");
    }
}

TEST(BdatItemsOut, RandomFilesComeOutAsByteByByte)
{
    expect_as_literal({.row = bdat_items,
                       .alphabet = {0, 0, 0, 1, 2, 5, 0xDF, 0x6F, 0xCF, 0x7F, 0x99, 0x90, 0x12, 'A', 0xFF},
                       .head = {},
                       .most_yield = 21,
                       .most_more = 21});
}
