// LIF ASCII records as text, with the ends of blocks at every place of a record.
#include <gtest/gtest.h>

#include "tests/volume/content/outward_support.h"

using namespace tests;

namespace
{

const Bytes end_mark = {0xFF, 0xFF};
const Bytes ab = {0, 2, 'a', 'b'}; // a record of two characters

}

TEST(AsciiRecordsOut, ServesType1OfLif)
{
    for (uint32_t format = 0; format <= 6; ++format)
        for (uint32_t type = 0; type <= 0xFFFF; ++type)
            ASSERT_EQ(find_converter(format, static_cast<uint16_t>(type)) == &ascii_records, format == 3 && type == 1)
                << format << ' ' << type;
    EXPECT_EQ(ascii_records.kind, 3u);
    EXPECT_EQ(ascii_records.skipped_blocks, 0u);
}

TEST(AsciiRecordsOut, LinesOfOddAndEvenLength)
{
    const Bytes content = joined({{0, 5, 'H', 'E', 'L', 'L', 'O', ' '}, ab, {0, 1, '!', 0x00}, ab, end_mark});
    const OutwardText outcome = outward(ascii_records, {content, ab});
    EXPECT_EQ(outcome.text, "HELLO\r\nab\r\n!\r\nab\r\n");
    EXPECT_EQ(outcome.step, ContentStep::end);
    EXPECT_EQ(outcome.blocks, 1u);
}

TEST(AsciiRecordsOut, ARecordOfLengthZeroIsNothing)
{
    EXPECT_EQ(text_of_block(ascii_records, joined({ab, {0, 0}, ab, {0, 0, 0, 0}, ab, end_mark})), "ab\r\nab\r\nab\r\n");
    EXPECT_EQ(outward(ascii_records, {Bytes(256), Bytes(256), ab}).text, "ab\r\n");
}

TEST(AsciiRecordsOut, CharactersChangeTheirSet)
{
    EXPECT_EQ(text_of_block(ascii_records, {0, 4, 0xCC, 0xDE, 0xFF, 'x'}), "\x84\xE1\xB1x\r\n");
}

TEST(AsciiRecordsOut, ControlCharactersAndAllOthersStand)
{
    Bytes record = {0, 184};
    std::string wanted;
    for (int byte = 0; byte < 184; ++byte) {
        record.push_back(static_cast<uint8_t>(byte));
        wanted.push_back(static_cast<char>(byte));
    }
    EXPECT_EQ(text_of_block(ascii_records, record), wanted + "\r\n");
}

TEST(AsciiRecordsOut, ARecordAtEveryOffsetOfABlock)
{
    for (size_t before = 2; before <= 256; before += 2) {
        const size_t filler = before - 2;
        const Bytes content = joined({{static_cast<uint8_t>(filler >> 8), static_cast<uint8_t>(filler)},
                                      Bytes(filler, '.'),
                                      {0, 9, 'A', 'B', 'C', 'D', 'E', 'F', 'G', 'H', 'I', '#'},
                                      {0, 10, 'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i', 'j'},
                                      ab,
                                      end_mark});
        const std::string lines = "ABCDEFGHI\r\nabcdefghij\r\nab\r\n";
        const std::string first = filler == 0 ? "" : std::string(filler, '.') + "\r\n";
        EXPECT_EQ(text_of_file(ascii_records, content), first + lines) << before;
        EXPECT_EQ(outward(ascii_records, in_blocks(content)).step, ContentStep::end) << before;
    }
}

TEST(AsciiRecordsOut, AFileCutAtEveryByteGivesWhatIsThere)
{
    const Bytes content = joined({{0, 3, 'A', 'B', 'C', '#'}, {0, 2, 'D', 'E'}, end_mark});
    const char *const wanted[] = {"",
                                  "",
                                  "",
                                  "A",
                                  "AB",
                                  "ABC\r\n",
                                  "ABC\r\n",
                                  "ABC\r\n",
                                  "ABC\r\n",
                                  "ABC\r\nD",
                                  "ABC\r\nDE\r\n",
                                  "ABC\r\nDE\r\n",
                                  "ABC\r\nDE\r\n"};
    for (size_t size = 0; size <= content.size(); ++size)
        EXPECT_EQ(text_of_block(ascii_records, front_of(content, size)), wanted[size]) << size;
}

TEST(AsciiRecordsOut, ARecordOverManyBlocks)
{
    std::string line;
    for (int i = 0; i < 1001; ++i) line.push_back(static_cast<char>('a' + i % 26));
    const Bytes content = joined({ab, lif_ascii({line, "next"})});
    EXPECT_EQ(text_of_file(ascii_records, content), "ab\r\n" + line + "\r\nnext\r\n");
}

TEST(AsciiRecordsOut, ARecordThatEndsWithItsBlock)
{
    const Bytes content = joined({{0, 254}, Bytes(254, 'x'), {0, 253}, Bytes(253, 'y'), {'#'}, ab});
    EXPECT_EQ(text_of_file(ascii_records, content),
              std::string(254, 'x') + "\r\n" + std::string(253, 'y') + "\r\nab\r\n");
}

TEST(AsciiRecordsOut, ARecordLongerThanTheFileIsCutWithoutALineEnd)
{
    const Bytes content = joined({ab, {0xFF, 0xFE}, Bytes(600, 'x')});
    const OutwardText outcome = outward(ascii_records, in_blocks(content));
    EXPECT_EQ(outcome.text, "ab\r\n" + std::string(600, 'x'));
    EXPECT_EQ(outcome.step, ContentStep::more);
}

TEST(AsciiRecordsOut, TheEndMarkInsideARecordIsText)
{
    EXPECT_EQ(text_of_block(ascii_records, joined({{0, 4, 'a', 'b', 0xFF, 0xFF}, ab})), "ab\xB1\xB1\r\nab\r\n");
}

TEST(AsciiRecordsOut, TheEndMarkInABlockOfItsOwn)
{
    const Bytes block = joined({{0, 254}, Bytes(254, 'x')});
    const OutwardText outcome = outward(ascii_records, {block, joined({end_mark, ab}), ab});
    EXPECT_EQ(outcome.text, std::string(254, 'x') + "\r\n");
    EXPECT_EQ(outcome.step, ContentStep::end);
    EXPECT_EQ(outcome.blocks, 2u);
}

TEST(AsciiRecordsOut, Hazard_H5_OneOddByteLeftInABlockIsNoRecord)
{
    EXPECT_EQ(text_of_block(ascii_records, {}), "");
    EXPECT_EQ(text_of_block(ascii_records, {0x41}), "");
    EXPECT_EQ(text_of_block(ascii_records, {0xFF}), "");
    EXPECT_EQ(outward(ascii_records, {{0xFF}, ab}).text, "ab\r\n");
    EXPECT_EQ(outward(ascii_records, {joined({ab, {0x00}}), ab}).text, "ab\r\nab\r\n");
    EXPECT_EQ(outward(ascii_records, {{0, 3, 'A'}, {'B', 'C', 0, 2, 'D', 'E'}}).text, "ABC\r\nDE\r\n");
    EXPECT_EQ(outward(ascii_records, {{0, 3, 'A'}, {'B'}}).text, "A");
    EXPECT_EQ(outward(ascii_records, {{0, 2, 'A'}, {'B', '#', 0, 2, 'D', 'E'}}).text, "AB\r\nDE\r\n");
}

TEST(AsciiRecordsOut, RandomFilesComeOutAsByteByByte)
{
    expect_as_literal({.row = ascii_records,
                       .alphabet = {0, 0, 0, 0, 0, 1, 2, 3, 4, 5, 'A', 0xFF},
                       .head = {},
                       .most_yield = 8,
                       .most_more = 2});
}
