// Pascal TEXT behind its four blocks of head: indentation, padding, and both across a block's end.
#include <gtest/gtest.h>

#include "tests/volume/content/outward_support.h"

using namespace tests;

TEST(PascalTextOut, ServesTextFilesOfLifBehindFourBlocks)
{
    for (uint32_t format = 0; format <= 6; ++format)
        for (uint32_t type = 0; type <= 0xFFFF; ++type)
            ASSERT_EQ(find_converter(format, static_cast<uint16_t>(type)) == &pascal_text,
                      format == 3 && type == 0xEA3E)
                << format << ' ' << type;
    EXPECT_EQ(pascal_text.kind, 4u);
    EXPECT_EQ(pascal_text.skipped_blocks, 4u);
}

TEST(PascalTextOut, LinesWithAndWithoutIndentation)
{
    const Bytes block = {16, 36, 'i', 'n', 13, 'o', 'u', 't', 13, 16, 32, 13, 16, 33, 'x', 16, 35, 'y', 13};
    EXPECT_EQ(text_of_block(pascal_text, block), "    in\r\nout\r\n\r\n x   y\r\n");
}

TEST(PascalTextOut, Indentations)
{
    for (uint32_t value = 0; value < 256; ++value) {
        const Bytes block = {'a', 16, static_cast<uint8_t>(value), 'b'};
        const std::string blanks(value < 32 ? 0 : value - 32, ' ');
        EXPECT_EQ(text_of_block(pascal_text, block), "a" + blanks + "b") << value;
    }
}

TEST(PascalTextOut, Hazard_H6_AnIndentationBelow32IsNone)
{
    EXPECT_EQ(text_of_block(pascal_text, {16, 31, 'a', 16, 0, 'b', 16, 13, 'c', 16, 16, 'd'}), "abcd");
}

TEST(PascalTextOut, CharactersKeepTheirSet)
{
    Bytes block;
    std::string wanted;
    for (int byte = 1; byte < 256; ++byte) {
        if (byte == 13 || byte == 16) continue;
        block.push_back(static_cast<uint8_t>(byte));
        wanted.push_back(static_cast<char>(byte));
    }
    EXPECT_EQ(text_of_block(pascal_text, block), wanted);
}

TEST(PascalTextOut, ZerosBehindALineArePadding)
{
    EXPECT_EQ(text_of_block(pascal_text, {'a', 13, 0, 0, 0, 'b', 13, 0, 0}), "a\r\nb\r\n");
    EXPECT_EQ(text_of_block(pascal_text, {0, 0, 'a', 13}), "a\r\n");
    EXPECT_EQ(text_of_block(pascal_text, Bytes(256)), "");
}

TEST(PascalTextOut, ZerosInsideALineAreText)
{
    EXPECT_EQ(text_of_block(pascal_text, {'a', 0, 0, 'b', 0, 13, 0}), std::string("a\0\0b\0\r\n", 7));
}

TEST(PascalTextOut, AnIndentationSaysNothingAboutPadding)
{
    EXPECT_EQ(text_of_block(pascal_text, {13, 16, 34, 0, 'a', 16, 34, 0}), std::string("\r\n  a  \0", 8));
}

TEST(PascalTextOut, WhetherZerosArePaddingIsKnownInTheNextBlock)
{
    EXPECT_EQ(outward(pascal_text, {{'a'}, {0, 'b', 13}, {0, 0}, {0, 'c'}}).text, std::string("a\0b\r\nc", 6));
    EXPECT_EQ(outward(pascal_text, {{'a', 13}, {}, {0, 'b'}}).text, "a\r\nb");
}

TEST(PascalTextOut, AnIndentationThatABlocksEndCutsOffIsACharacter)
{
    const Bytes text(255, 'x');
    EXPECT_EQ(outward(pascal_text, {joined({text, {16}}), {36, 'y', 13}}).text, std::string(255, 'x') + "$y\r\n");
    EXPECT_EQ(outward(pascal_text, {{16}, {32, 'y'}}).text, " y");
    EXPECT_EQ(outward(pascal_text, {{13, 16}, {0, 'y'}}).text, "\r\ny");
}

TEST(PascalTextOut, ALineWithEveryBlockEndInIt)
{
    const Bytes line = {16, 35, 'a', 'b', 'c', 13, 0, 0};
    for (size_t cut = 0; cut <= line.size(); ++cut) {
        const Bytes first = front_of(line, cut);
        const Bytes second(line.begin() + static_cast<std::ptrdiff_t>(cut), line.end());
        const std::string indentation = cut == 1 ? "#" : "   ";
        EXPECT_EQ(outward(pascal_text, {first, second}).text, indentation + "abc\r\n") << cut;
    }
}

TEST(PascalTextOut, NoBlockIsTheLast)
{
    for (const Bytes &block : {Bytes(), Bytes{0}, Bytes{13}, Bytes{16}, Bytes(256, 0xFF), Bytes(256, 16)})
        EXPECT_EQ(outward(pascal_text, {block, block}).blocks, 2u);
}

TEST(PascalTextOut, RandomFilesComeOutAsByteByByte)
{
    expect_as_literal({.row = pascal_text,
                       .alphabet = {0, 0, 13, 13, 16, 16, 32, 33, 40, 255, 'A'},
                       .head = {},
                       .most_yield = 223 * 4, // an indentation is two bytes
                       .most_more = 0});
}
