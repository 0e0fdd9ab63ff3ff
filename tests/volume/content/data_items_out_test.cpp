// Typed DATA items as text: each code, numbers at the edges of their range, and items that a block's end cuts.
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
    for (const Item &item : items) EXPECT_EQ(text_of_block(data_items, item.bytes), item.text) << item.name;
}

const Bytes seven = {0, 10, 0, 7}; // the integer 7

// Pad words up to an offset, and one byte 13 for an odd one.
Bytes up_to(size_t offset)
{
    Bytes bytes;
    if (offset % 2 != 0) bytes.push_back(13);
    while (bytes.size() < offset) bytes.insert(bytes.end(), {0, 30});
    return bytes;
}

// What a block's end cuts off is zero.
std::string digits_left(size_t bytes)
{
    std::string digits = "123456789012";
    for (size_t i = std::min(digits.size(), bytes * 2); i < digits.size(); ++i) digits[i] = '0';
    return digits.substr(0, 1) + "." + digits.substr(1);
}

}

TEST(DataItemsOut, ServesDataFilesOfBothSystem45MediaAndOfLif)
{
    for (uint32_t format = 0; format <= 6; ++format)
        for (uint32_t type = 0; type <= 0xFFFF; ++type) {
            const bool wanted = (format == 1 && (type >> 8 & 127) == 36) || (format == 2 && (type & 127) == 36) ||
                                (format == 3 && type == 0xE848);
            ASSERT_EQ(find_converter(format, static_cast<uint16_t>(type)) == &data_items, wanted)
                << format << ' ' << type;
        }
    EXPECT_EQ(data_items.kind, 1u);
    EXPECT_EQ(data_items.skipped_blocks, 0u);
}

TEST(DataItemsOut, Integers)
{
    expect_items({{"five", {0, 10, 0, 5}, "5\n"},
                  {"zero", {0, 10, 0, 0}, "0\n"},
                  {"minus one", {0, 10, 0xFF, 0xFF}, "-1\n"},
                  {"largest", {0, 10, 0x7F, 0xFF}, "32767\n"},
                  {"smallest", {0, 10, 0x80, 0x00}, "-32768\n"},
                  {"other bits beside the code", {0xFF, 0xCB, 0x01, 0x00}, "256\n"},
                  {"two", {0, 10, 0, 1, 0, 10, 0, 2}, "1\n2\n"}});
}

TEST(DataItemsOut, KeepsLineFeedAloneBehindIntegers)
{
    const Bytes items = joined({{0, 60, 0, 2, 'A', 'B'}, seven, {0, 0x12, 0x34, 0x56}, seven, {0, 62}});
    EXPECT_EQ(text_of_block(data_items, items), "AB\r\n7\n1.23456\r\n7\n");
}

TEST(DataItemsOut, Strings)
{
    expect_items({{"even length", joined({{0, 60, 0, 2, 'H', 'I'}, seven}), "HI\r\n7\n"},
                  {"odd length and a pad byte", joined({{0, 60, 0, 3, 'A', 'B', 'C', 0}, seven}), "ABC\r\n7\n"},
                  {"the pad byte is not looked at", joined({{0, 60, 0, 1, 'A', 62}, seven}), "A\r\n7\n"},
                  {"empty", joined({{0, 60, 0, 0}, seven}), "\r\n7\n"},
                  {"last piece", joined({{0, 44, 0, 2, 'O', 'K'}, seven}), "OK\r\n7\n"},
                  {"high bits are taken off", {0, 60, 0, 2, 0xC1, 0xA0}, "A \r\n"},
                  {"control characters are left out", {0, 60, 0, 8, 0, 31, 'A', 0x9F, 13, 10, 127, 0x80}, "A\x7F\r\n"},
                  {"other bits beside the code", {0x55, 0xFD, 0, 2, 'H', 'I'}, "HI\r\n"}});
}

TEST(DataItemsOut, PiecesOfALongString)
{
    const Bytes first = joined({{0, 28, 0x02, 0x00}, Bytes(252, 'a')});
    const Bytes middle = joined({{0, 12, 0x01, 0x04}, Bytes(252, 'b')});
    const Bytes last = joined({{0, 44, 0x00, 0x08}, bytes_of("the rest"), seven, {0, 62}});
    const OutwardText outcome = outward(data_items, {first, middle, last});
    EXPECT_EQ(outcome.text, std::string(252, 'a') + std::string(252, 'b') + "the rest\r\n7\n");
    EXPECT_EQ(outcome.step, ContentStep::end);
}

TEST(DataItemsOut, APieceTakesAllOfItsBlockWhateverItsLengthSays)
{
    const Bytes block = joined({seven, {0, 28, 0, 1}, {'A', 0xC2, 0x81, 0x80, 13, 62}});
    EXPECT_EQ(text_of_block(data_items, block), std::string("7\nAB\x01\0\r>", 8));
    EXPECT_EQ(text_of_block(data_items, {0, 12, 0xFF, 0xFF, 'Z'}), "Z");
}

TEST(DataItemsOut, PadWordsAndSingleBytes13LeaveNoTrace)
{
    expect_items({{"pad word", joined({{0, 30}, seven, {0, 30}}), "7\n"},
                  {"pad word with other bits", joined({{0x77, 0xDF}, seven}), "7\n"},
                  {"byte 13", joined({{13}, seven, {13, 13, 13}, seven}), "7\n7\n"},
                  {"nothing but pads", {0, 30, 0, 30, 13, 0, 30}, ""}});
}

TEST(DataItemsOut, NothingBehindTheEndOfTheDataIsText)
{
    const OutwardText outcome = outward(data_items, {joined({seven, {0, 62}, seven}), seven});
    EXPECT_EQ(outcome.text, "7\n");
    EXPECT_EQ(outcome.step, ContentStep::end);
    EXPECT_EQ(outcome.blocks, 1u);
    EXPECT_EQ(outward(data_items, {{0xC1, 0xFF}, seven}).blocks, 1u) << "other bits beside the code";
}

TEST(DataItemsOut, LongReals)
{
    expect_items({
        {"no exponent", {0x00, 0x1A, 0x12, 0x34, 0x56, 0x78, 0x90, 0x12}, "1.23456789012\r\n"},
        {"exponent 1", {0x00, 0x5A, 0x12, 0x34, 0x56, 0x78, 0x90, 0x12}, "1.23456789012E+001\r\n"},
        {"exponent 4", {0x01, 0x1A, 0x10, 0, 0, 0, 0, 0}, "1.00000000000E+004\r\n"},
        {"exponent -1", {0xFF, 0xDA, 0x98, 0x76, 0x54, 0x32, 0x10, 0x98}, "9.87654321098E-001\r\n"},
        {"largest exponent", {0x7F, 0xDA, 0x90, 0, 0, 0, 0, 0}, "9.00000000000E+511\r\n"},
        {"smallest exponent", {0x80, 0x1A, 0x90, 0, 0, 0, 0, 0}, "9.00000000000E-512\r\n"},
        {"negative", {0x00, 0x1B, 0x12, 0x34, 0x56, 0x78, 0x90, 0x12}, "-1.23456789012\r\n"},
        {"negative with exponent", {0xFF, 0x1B, 0x12, 0x34, 0x56, 0x78, 0x90, 0x12}, "-1.23456789012E-004\r\n"},
        {"zero", {0x00, 0x1A, 0, 0, 0, 0, 0, 0}, "0.00000000000\r\n"},
        {"zeros inside", {0x00, 0x1A, 0x10, 0x02, 0x03, 0x04, 0x05, 0x06}, "1.00203040506\r\n"},
    });
}

TEST(DataItemsOut, ShortReals)
{
    expect_items({
        {"no exponent", {0x00, 0x12, 0x34, 0x56}, "1.23456\r\n"},
        {"exponent 1", {0x02, 0x12, 0x34, 0x56}, "1.23456E+01\r\n"},
        {"largest exponent", {0x3E, 0x98, 0x76, 0x54}, "9.87654E+31\r\n"},
        {"negative", {0x01, 0x12, 0x34, 0x56}, "-1.23456\r\n"},
        {"negative with exponent", {0x15, 0x50, 0x00, 0x01}, "-5.00001E+10\r\n"},
        {"the two high bits mean nothing", {0xC0, 0x99, 0x99, 0x99}, "9.99999\r\n"},
        {"zero", {0, 0, 0, 0}, "0.00000\r\n"},
        {"a block of zeros", Bytes(16), "0.00000\r\n0.00000\r\n0.00000\r\n0.00000\r\n"},
    });
}

TEST(DataItemsOut, Hazard_H11_DigitsAboveNineOfARealAreHexadecimal)
{
    expect_items({{"long", {0x00, 0x1A, 0xAB, 0xCD, 0xEF, 0x01, 0xFF, 0xF0}, "A.BCDEF01FFF0\r\n"},
                  {"short", {0x02, 0x12, 0xAB, 0xCF}, "1.2ABCFE+01\r\n"}});
}

TEST(DataItemsOut, WhatCannotBeAShortRealIsRejected)
{
    for (const uint8_t code : Bytes{0xA0, 0xB1, 0xF0, 0xC8, 0x0F, 0x0E, 0x8E, 0xE6}) {
        const OutwardText outcome = outward(data_items, {joined({seven, {0, code, 0x11, 0x11}, seven}), seven});
        EXPECT_EQ(outcome.text, "7\n") << int{code};
        EXPECT_EQ(outcome.step, ContentStep::rejected) << int{code};
        EXPECT_EQ(outcome.blocks, 1u) << int{code};
    }
}

TEST(DataItemsOut, EverySecondByteOfAWordIsACodeOrTwoDigitsOrIsRejected)
{
    for (uint32_t code = 0; code < 256; ++code) {
        const Bytes block = {0, static_cast<uint8_t>(code), 0, 0, 0, 0, 0, 0};
        const uint32_t masked = code & 0x3E;
        const bool known = masked == 10 || masked == 12 || masked == 26 || masked == 28 || masked == 30 ||
                           masked == 44 || masked == 60 || masked == 62;
        const bool digits = code >> 4 <= 9 && (code & 15) <= 9;
        EXPECT_FALSE(known && digits) << code;
        const ContentStep step = outward(data_items, {block}).step;
        EXPECT_EQ(step == ContentStep::rejected, !known && !digits) << code;
        EXPECT_EQ(step == ContentStep::end, masked == 62) << code;
    }
}

TEST(DataItemsOut, AByte13ThatBeginsARealIsFiller)
{
    // A negative short real with exponent 6 begins with 13; what follows it is taken for the item.
    EXPECT_EQ(text_of_block(data_items, {13, 0x12, 0x34, 0x56, 0, 62}), "3.45600E+09\r\n");
}

TEST(DataItemsOut, Hazard_H2_NumbersThatABlockEndsInAreZeroBehindIt)
{
    expect_items({{"one byte", {0}, ""},
                  {"no byte", {}, ""},
                  {"integer of two bytes", {0, 10}, "0\n"},
                  {"integer of three bytes", {0, 10, 1}, "256\n"},
                  {"short real of two bytes", {2, 0x12}, "1.20000E+01\r\n"},
                  {"short real of three bytes", {2, 0x12, 0x34}, "1.23400E+01\r\n"}});
    for (size_t offset = 0; offset < 256; ++offset) {
        const Bytes number = {0x00, 0x5B, 0x12, 0x34, 0x56, 0x78, 0x90, 0x12};
        const Bytes block = front_of(joined({up_to(offset), number, Bytes(256, 13)}), 256);
        const size_t inside = std::min<size_t>(8, 256 - offset);
        const std::string wanted = inside < 2 ? "" : "-" + digits_left(inside - 2) + "E+001\r\n";
        EXPECT_EQ(text_of_block(data_items, block), wanted) << "at " << offset;
        EXPECT_EQ(text_of_file(data_items, joined({block, seven})), wanted + "7\n") << "at " << offset;
    }
}

TEST(DataItemsOut, Hazard_H3_AStringThatRunsOverItsBlockLosesItsRest)
{
    expect_items({{"no length", {0, 60}, "\r\n"},
                  {"half a length", {0, 60, 0}, "\r\n"},
                  {"half a length that isn't zero", {0, 60, 1}, "\r\n"},
                  {"a length and no characters", {0, 44, 0, 5}, "\r\n"},
                  {"two characters of five", {0, 44, 0, 5, 'A', 'B'}, "AB\r\n"},
                  {"the pad byte behind the block", {0, 60, 0, 1, 'A'}, "A\r\n"},
                  {"length 65535", joined({{0, 60, 0xFF, 0xFF}, Bytes(252, 'x')}), std::string(252, 'x') + "\r\n"}});
    const Bytes cut = joined({{0, 60, 0, 253}, Bytes(252, 'x')});
    EXPECT_EQ(text_of_file(data_items, joined({cut, seven})), std::string(252, 'x') + "\r\n7\n");
}

TEST(DataItemsOut, AStringAtEveryOffsetOfABlock)
{
    const Bytes string = {0, 60, 0, 5, 'A', 'B', 'C', 'D', 'E', 0};
    for (size_t offset = 0; offset < 256; ++offset) {
        const Bytes block = front_of(joined({up_to(offset), string, Bytes(256, 13)}), 256);
        const size_t characters = offset > 252 ? 0 : std::min<size_t>(5, 252 - offset);
        const std::string wanted = offset == 255 ? "" : std::string("ABCDE").substr(0, characters) + "\r\n";
        EXPECT_EQ(text_of_file(data_items, joined({block, seven})), wanted + "7\n") << "at " << offset;
    }
}

TEST(DataItemsOut, AStringThatFillsItsBlock)
{
    const Bytes block = joined({{0, 60, 0, 252}, Bytes(252, 'x')});
    EXPECT_EQ(text_of_file(data_items, joined({block, {0, 62}})), std::string(252, 'x') + "\r\n");
}

TEST(DataItemsOut, Hazard_H4_APieceWithoutItsWholeHeadIsNothing)
{
    for (const uint8_t code : Bytes{12, 28})
        for (const Bytes &cut : {Bytes{0, code}, Bytes{0, code, 'A'}, Bytes{0, code, 'A', 'B'}}) {
            EXPECT_EQ(text_of_block(data_items, cut), "") << cut.size();
            EXPECT_EQ(outward(data_items, {joined({up_to(256 - cut.size()), cut}), seven}).text, "7\n") << cut.size();
        }
}

TEST(DataItemsOut, ANewBlockBeginsWithANewItem)
{
    const Bytes block = joined({up_to(254), {0x00, 0x1A}});
    EXPECT_EQ(outward(data_items, {block, seven, {0}, seven, {}, seven}).text, "0.00000000000\r\n7\n7\n7\n");
}

TEST(DataItemsOut, RandomFilesComeOutAsByteByByte)
{
    expect_as_literal({.row = data_items,
                       .alphabet = {0, 0, 0, 0, 1, 2, 4, 10, 10, 12, 13, 26, 26, 28, 30, 44, 60, 60, 0x12, 0x5A, 'A'},
                       .head = {},
                       .most_yield = 28,
                       .most_more = 14});
}
