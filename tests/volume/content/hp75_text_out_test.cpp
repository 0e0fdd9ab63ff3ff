// HP 75 TEXT: its head, numbered lines, and lines that go on in the next block.
#include <gtest/gtest.h>

#include "tests/support/capture.h"
#include "tests/volume/content/outward_support.h"

using namespace tests;

namespace
{

// 28 bytes: the place and length of the text, $BE, T, a time, the name.
const Bytes head = {0,   0,   0xCC, 0x02, 0xBE, 'T', 1, 2, 3, 4, 'N', 'A', 'M', 'E',
                    ' ', ' ', ' ',  ' ',  0,    0,   0, 0, 0, 0, 0,   0,   0,   0};
const Bytes end_mark = {0x99, 0xA9, 0x02, 0x8A, 0x0E};

Bytes numbered(uint8_t tens, uint8_t hundreds, std::string_view text)
{
    return joined({{tens, hundreds, static_cast<uint8_t>(text.size())}, bytes_of(text)});
}

const Bytes ten = numbered(0x10, 0, "ab");
const char *const ten_text = "  10 ab\r\n";

}

TEST(Hp75TextOut, ServesTypeE052OfLif)
{
    for (uint32_t format = 0; format <= 6; ++format)
        for (uint32_t type = 0; type <= 0xFFFF; ++type)
            ASSERT_EQ(find_converter(format, static_cast<uint16_t>(type)) == &hp75_text, format == 3 && type == 0xE052)
                << format << ' ' << type;
    EXPECT_EQ(hp75_text.kind, 7u);
    EXPECT_EQ(hp75_text.skipped_blocks, 0u);
}

TEST(Hp75TextOut, AFileOfAFewLines)
{
    const Bytes content = joined({head, numbered(0x10, 0x00, "REM FIRST"), numbered(0x05, 0x01, "PRINT 'HELLO'"),
                                  numbered(0x98, 0x99, "END"), end_mark});
    const OutwardText outcome = outward(hp75_text, {filled_to(content, 256, 0xFF), ten});
    EXPECT_EQ(outcome.text, "  10 REM FIRST\r\n 105 PRINT 'HELLO'\r\n9998 END\r\n");
    EXPECT_EQ(outcome.step, ContentStep::end);
    EXPECT_EQ(outcome.blocks, 1u);
}

TEST(Hp75TextOut, LineNumbers)
{
    const struct {
        uint8_t tens, hundreds;
        const char *text;
    } rows[] = {{0x00, 0x00, "   0 \r\n"}, {0x01, 0x00, "   1 \r\n"},  {0x99, 0x00, "  99 \r\n"},
                {0x00, 0x01, " 100 \r\n"}, {0x99, 0x99, "9999 \r\n"},  {0x34, 0x12, "1234 \r\n"},
                {0x0F, 0x00, "  15 \r\n"}, {0xFF, 0xFF, "16665 \r\n"}, {0x99, 0xA8, "10899 \r\n"}};
    for (const auto &row : rows)
        EXPECT_EQ(text_of_block(hp75_text, joined({head, numbered(row.tens, row.hundreds, ""), {0}})), row.text);
}

TEST(Hp75TextOut, CharactersStand)
{
    Bytes content = joined({head, {0x10, 0x00, 223}});
    std::string wanted = "  10 ";
    for (int byte = 33; byte < 256; ++byte) {
        content.push_back(static_cast<uint8_t>(byte));
        wanted.push_back(static_cast<char>(byte));
    }
    EXPECT_EQ(text_of_block(hp75_text, content), wanted + "\r\n");
    EXPECT_EQ(text_of_block(hp75_text, joined({head, {0x10, 0, 4, 0, 13, 10, 0x99}})),
              std::string("  10 \0\r\n\x99\r\n", 11));
}

TEST(Hp75TextOut, AnEmptyLineHasItsNumber)
{
    EXPECT_EQ(text_of_block(hp75_text, joined({head, {0x20, 0x00, 0}, ten, end_mark})),
              std::string("  20 \r\n") + ten_text);
}

TEST(Hp75TextOut, NothingOfTheHeadButItsMarkIsRead)
{
    Bytes other(28, 0xFF);
    other[5] = 'T';
    EXPECT_EQ(text_of_block(hp75_text, joined({other, ten, end_mark})), ten_text);
}

TEST(Hp75TextOut, WithoutItsMarkAFileIsNoText)
{
    Bytes no_mark = joined({head, ten, end_mark});
    no_mark[5] = 't';
    for (const Bytes &block : {no_mark, Bytes(), Bytes{'T'}, Bytes{0, 0, 0, 0, 0xBE}, Bytes(256)}) {
        const LogCapture log(0);
        const OutwardText outcome = outward(hp75_text, {block, joined({head, ten})});
        EXPECT_EQ(outcome.text, "");
        EXPECT_EQ(outcome.step, ContentStep::foreign);
        EXPECT_EQ(outcome.blocks, 1u);
        EXPECT_TRUE(contains(log.text(), "Not a valid HP 75 TEXT file\n"));
    }
}

TEST(Hp75TextOut, WithItsMarkNothingIsLogged)
{
    const LogCapture log(0);
    EXPECT_EQ(text_of_block(hp75_text, {0, 0, 0, 0, 0, 'T'}), "");
    EXPECT_EQ(text_of_block(hp75_text, joined({head, ten})), ten_text);
    EXPECT_EQ(log.text(), "");
}

TEST(Hp75TextOut, Hazard_H9_AFirstBlockThatEndsInItsHeadHasNoLines)
{
    for (size_t size = 6; size <= 31; ++size)
        EXPECT_EQ(text_of_block(hp75_text, front_of(joined({head, {0x10, 0x00, 0x00}}), size)), "") << size;
    EXPECT_EQ(text_of_block(hp75_text, joined({head, {0x10, 0x00, 0x01, 'x'}})), "  10 x\r\n");
    EXPECT_EQ(text_of_block(hp75_text, joined({head, {0x10, 0x00, 0x00, 'x'}})), "  10 \r\n");
}

TEST(Hp75TextOut, ALineHeadOverABlocksEndIsUnread)
{
    // 253 bytes, and a head that would end in the next block.
    const Bytes lines = joined({head, numbered(0x01, 0, std::string(222, '.'))});
    ASSERT_EQ(lines.size(), 253u);
    const Bytes block = joined({lines, {0x10, 0x00, 0x02}});
    EXPECT_EQ(outward(hp75_text, {block, ten}).text, "   1 " + std::string(222, '.') + "\r\n" + ten_text);
}

TEST(Hp75TextOut, ALineHeadAtEveryOffsetNearABlocksEnd)
{
    for (size_t offset = 240; offset <= 252; ++offset) {
        const std::string dots(offset - 31, '.');
        const Bytes content = joined({head, numbered(0x01, 0, dots), numbered(0x20, 0, "cdef"), ten});
        // The head of the last line is cut by the block's end at 246, 247 and 248; of the last, four bytes are left.
        const std::string last = offset == 248 ? " 200 b" : offset == 246 || offset == 247 ? "" : ten_text;
        std::string text = "   1 ";
        text.append(dots).append("\r\n  20 cdef\r\n").append(last);
        EXPECT_EQ(text_of_file(hp75_text, content), text) << offset;
    }
}

TEST(Hp75TextOut, BehindASkippedHeadTheNextBlockBeginsWithALineOfItsOwn)
{
    for (size_t offset = 253; offset <= 256; ++offset) {
        const std::string dots(offset - 31, '.');
        const Bytes block = front_of(joined({head, numbered(0x01, 0, dots), numbered(0x20, 0, "cdef")}), 256);
        EXPECT_EQ(outward(hp75_text, {block, ten}).text, "   1 " + dots + "\r\n" + ten_text) << offset;
    }
}

TEST(Hp75TextOut, ALineGoesOnInTheNextBlock)
{
    const Bytes content = joined(
        {head, numbered(0x20, 0, std::string(220, 'x')), numbered(0x30, 0, std::string(96, 'y')), ten, end_mark});
    const OutwardText outcome = outward(hp75_text, in_blocks(content));
    EXPECT_EQ(outcome.text, "  20 " + std::string(220, 'x') + "\r\n  30 " + std::string(96, 'y') + "\r\n" + ten_text);
    EXPECT_EQ(outcome.step, ContentStep::end);
}

TEST(Hp75TextOut, ALineThatEndsWithItsBlockHasItsLineEndOnce)
{
    const Bytes block = joined({head, numbered(0x20, 0, std::string(225, 'x'))});
    ASSERT_EQ(block.size(), 256u);
    EXPECT_EQ(outward(hp75_text, {block, ten}).text, "  20 " + std::string(225, 'x') + "\r\n" + ten_text);
    EXPECT_EQ(outward(hp75_text, {block}).text, "  20 " + std::string(225, 'x') + "\r\n");
}

TEST(Hp75TextOut, Hazard_H10_ARestOf255BytesIsCarriedOverAsManyBlocksAsItTakes)
{
    std::string line;
    for (int i = 0; i < 255; ++i) line.push_back(static_cast<char>(1 + i));
    const Bytes lines = joined({head, numbered(0x01, 0, std::string(221, '.'))});
    ASSERT_EQ(lines.size(), 252u);
    const Bytes first = joined({lines, {0x20, 0x00, 255}, front_of(bytes_of(line), 1)});
    const Bytes rest = bytes_of(line.substr(1));
    const std::string wanted = "   1 " + std::string(221, '.') + "\r\n  20 " + line + "\r\n";
    EXPECT_EQ(outward(hp75_text, {first, joined({rest, {0, 0}}), ten}).text, wanted + ten_text);
    Blocks single = {first};
    for (const uint8_t byte : rest) single.push_back({byte});
    single.push_back({});
    single.push_back(ten);
    EXPECT_EQ(outward(hp75_text, single).text, wanted + ten_text);
    EXPECT_EQ(outward(hp75_text, {first, rest}).text, wanted);
    EXPECT_EQ(outward(hp75_text, {first, front_of(rest, 253)}).text, wanted.substr(0, wanted.size() - 3))
        << "cut: no line end";
}

TEST(Hp75TextOut, TheEndMarkAsTextOfALine)
{
    EXPECT_EQ(text_of_block(hp75_text, joined({head, {0x10, 0, 2, 0x99, 0xA9}, ten})),
              std::string("  10 \x99\xA9\r\n") + ten_text);
}

TEST(Hp75TextOut, TheEndMarkNeedsFourBytesOfItsBlock)
{
    EXPECT_EQ(outward(hp75_text, {joined({head, {0x99, 0xA9, 0x02}}), ten}).text, ten_text);
    EXPECT_EQ(outward(hp75_text, {joined({head, {0x99, 0xA9, 0x02, 0x8A}}), ten}).blocks, 1u);
    EXPECT_EQ(outward(hp75_text, {joined({head, ten}), end_mark, ten}).text, ten_text);
}

TEST(Hp75TextOut, WithoutAnEndMarkTheFileEndsTheText)
{
    const Bytes block = joined({head, filled_to({}, 228, 0)});
    std::string wanted;
    for (int i = 0; i < 76; ++i) wanted += "   0 \r\n";
    EXPECT_EQ(outward(hp75_text, {block}).text, wanted.substr(0, 75 * 7)) << "three bytes are left";
    EXPECT_EQ(outward(hp75_text, {block, block}).step, ContentStep::more);
}

TEST(Hp75TextOut, RandomFilesComeOutAsByteByByte)
{
    expect_as_literal({.row = hp75_text,
                       .alphabet = {0, 0, 0, 1, 2, 5, 9, 20, 0x10, 0x99, 'A'},
                       .head = head,
                       .most_yield = 27,
                       .most_more = 8});
}
