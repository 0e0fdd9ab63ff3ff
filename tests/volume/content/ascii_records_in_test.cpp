// Lines into LIF ASCII records: a length word, the text, a blank behind an odd one; a word of all ones ends them.
#include <gtest/gtest.h>

#include <random>

#include "tests/volume/content/inward_support.h"

using namespace tests;
using namespace tests::insertion;

TEST(AsciiRecordsIn, NoLinesIsTheEndMarkAlone)
{
    EXPECT_EQ(inward(ascii_records, {}), (Bytes{0xFF, 0xFF}));
}

TEST(AsciiRecordsIn, ALineIsItsLengthAndItsText)
{
    EXPECT_EQ(inward(ascii_records, {"ABCD"}), (Bytes{0, 4, 'A', 'B', 'C', 'D', 0xFF, 0xFF}));
}

TEST(AsciiRecordsIn, AnOddLineIsFilledUpWithABlank)
{
    EXPECT_EQ(inward(ascii_records, {"A"}), (Bytes{0, 1, 'A', ' ', 0xFF, 0xFF}));
    EXPECT_EQ(inward(ascii_records, {"ABC", "DE", "F"}),
              (Bytes{0, 3, 'A', 'B', 'C', ' ', 0, 2, 'D', 'E', 0, 1, 'F', ' ', 0xFF, 0xFF}));
}

TEST(AsciiRecordsIn, AnEmptyLineIsALengthOfZero)
{
    EXPECT_EQ(inward(ascii_records, {""}), (Bytes{0, 0, 0xFF, 0xFF}));
    EXPECT_EQ(inward(ascii_records, {"", "A", "", ""}), (Bytes{0, 0, 0, 1, 'A', ' ', 0, 0, 0, 0, 0xFF, 0xFF}));
}

TEST(AsciiRecordsIn, BlanksAtBothEndsAreText)
{
    EXPECT_EQ(inward(ascii_records, {"  A "}), (Bytes{0, 4, ' ', ' ', 'A', ' ', 0xFF, 0xFF}));
}

TEST(AsciiRecordsIn, TheLengthIsBigEndian)
{
    for (const uint16_t length : Words{255, 256, 257, 300, 4095, 32768, 65533, 65534}) {
        Bytes expected = {static_cast<uint8_t>(length >> 8), static_cast<uint8_t>(length & 255)};
        expected.insert(expected.end(), length, 'x');
        if (length % 2 == 1) expected.push_back(' ');
        expected.insert(expected.end(), {0xFF, 0xFF});
        EXPECT_TRUE(inward(ascii_records, {std::string(length, 'x')}) == expected) << length;
    }
}

TEST(AsciiRecordsIn, RecordsPassTheEndOfABlockWithoutNotice)
{
    const Bytes content = inward(ascii_records, {std::string(250, 'a'), std::string(10, 'b')});
    EXPECT_EQ(content, joined({{0, 250}, repeated('a', 250), {0, 10}, repeated('b', 10), {0xFF, 0xFF}}));
}

TEST(AsciiRecordsIn, CharactersGoIntoTheHpSet)
{
    // a, o, u with two dots of the host; then letters that both sets have elsewhere, and one that has no partner
    EXPECT_EQ(inward(ascii_records, {"\x84\x94\x81"}), (Bytes{0, 3, 0xCC, 0xCE, 0xCF, ' ', 0xFF, 0xFF}));
    EXPECT_EQ(inward(ascii_records, {"\xE1\xCC\x9C\xB1"}), (Bytes{0, 4, 0xDE, 0xE1, 0xBB, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(inward(ascii_records, {"\x80\xFF"}), (Bytes{0, 2, 0x80, 0xFF, 0xFF, 0xFF}));
}

TEST(AsciiRecordsIn, NothingIsLeftOutOfAText)
{
    EXPECT_EQ(inward(ascii_records, {"\"a: b\"\t\r\x01\x7F"}),
              (Bytes{0, 10, '"', 'a', ':', ' ', 'b', '"', 9, 13, 1, 127, 0xFF, 0xFF}));
}

TEST(AsciiRecordsIn, RandomLinesAreTheirRecordsOneBehindTheOther)
{
    std::mt19937 numbers(20);
    for (int round = 0; round < 50; ++round) {
        Lines lines;
        Bytes expected;
        for (size_t count = numbers() % 12; count > 0; --count) {
            const std::string line(numbers() % 600, static_cast<char>('a' + numbers() % 26));
            lines.push_back(line);
            expected.insert(expected.end(),
                            {static_cast<uint8_t>(line.size() / 256), static_cast<uint8_t>(line.size() % 256)});
            expected.insert(expected.end(), line.begin(), line.end());
            if (line.size() % 2 == 1) expected.push_back(' ');
        }
        expected.insert(expected.end(), {0xFF, 0xFF});
        EXPECT_TRUE(inward(ascii_records, lines) == expected) << round;
    }
}
