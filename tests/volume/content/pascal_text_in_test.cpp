// Lines into Pascal TEXT: a header of 1024 bytes, then pages of 1024 whose lines begin with their indentation.
#include <gtest/gtest.h>

#include <random>

#include "tests/support/capture.h"
#include "tests/volume/content/inward_support.h"

using namespace tests;
using namespace tests::insertion;

namespace
{

constexpr size_t page_bytes = 1024;

// The pages behind the header.
Bytes pages(const Lines &lines, const InwardOrder &order = {})
{
    const Bytes content = inward(pascal_text, lines, order);
    EXPECT_GE(content.size(), 2 * page_bytes);
    EXPECT_EQ(content.size() % page_bytes, 0u);
    return part_of(content, page_bytes, content.size());
}

Bytes filled(Bytes page)
{
    page.resize((page.size() + page_bytes - 1) / page_bytes * page_bytes);
    return page;
}

Bytes line_bytes(uint8_t indentation_byte, size_t count)
{
    return joined({{16, indentation_byte}, repeated('x', count), {13}});
}

std::string line_of(size_t count)
{
    return std::string(count, 'x');
}

std::string blanks(size_t count)
{
    return std::string(count, ' ');
}

constexpr const char *warning =
    "Warning: File notes.txt exceeds max. line length for TEXT files in line 2 (truncated).\n";

}

TEST(PascalTextIn, TheHeaderHasItsBytes)
{
    Bytes header(page_bytes);
    header[0x73] = 0x01;
    header[0x77] = 0x01;
    header[0x7B] = 0x4E;
    header[0x7D] = 0x05;
    header[0x7F] = 0x5E;
    header[0x80] = 0x8C;
    header[0x81] = 0x11;
    header[0x82] = 0x8C;
    header[0x83] = 0x11;
    header[0x84] = 0x01;
    EXPECT_EQ(part_of(inward(pascal_text, {}), 0, page_bytes), header);
    EXPECT_EQ(part_of(inward(pascal_text, {"A", line_of(1000), line_of(100)}), 0, page_bytes), header);
}

TEST(PascalTextIn, NoLinesIsAPageOfZeros)
{
    EXPECT_EQ(pages({}), repeated(0, page_bytes));
}

TEST(PascalTextIn, ALineIsItsIndentationItsTextAndACarriageReturn)
{
    EXPECT_EQ(pages({"AB"}), filled({16, 32, 'A', 'B', 13}));
    EXPECT_EQ(pages({" A", "   B C "}), filled({16, 33, 'A', 13, 16, 35, 'B', ' ', 'C', ' ', 13}));
}

TEST(PascalTextIn, ABlankLineIsThreeBytes)
{
    EXPECT_EQ(pages({""}), filled({16, 32, 13}));
    EXPECT_EQ(pages({"", "    ", "A"}), filled({16, 32, 13, 16, 36, 13, 16, 32, 'A', 13}));
}

TEST(PascalTextIn, ATabIsNoIndentation)
{
    EXPECT_EQ(pages({" \tA"}), filled({16, 33, 9, 'A', 13}));
}

TEST(PascalTextIn, TheTextKeepsItsCharacters)
{
    EXPECT_EQ(pages({"\x84\xE1\x80\": \r\x01"}), filled({16, 32, 0x84, 0xE1, 0x80, '"', ':', ' ', 13, 1, 13}));
}

TEST(PascalTextIn, AnIndentationIsAtMost224)
{
    EXPECT_EQ(pages({blanks(222) + "A"}), filled({16, 254, 'A', 13}));
    EXPECT_EQ(pages({blanks(223) + "A"}), filled({16, 255, 'A', 13}));
    EXPECT_EQ(pages({blanks(225) + "A"}), filled({16, 0, ' ', 'A', 13}));
    EXPECT_EQ(pages({blanks(230) + "A"}), filled({16, 0, ' ', ' ', ' ', ' ', ' ', ' ', 'A', 13}));
    EXPECT_EQ(pages({blanks(226)}), filled({16, 0, ' ', ' ', 13}));
}

TEST(PascalTextIn, KeepsIndentationOf224AsZero)
{
    EXPECT_EQ(pages({blanks(224) + "A"}), filled({16, 0, 'A', 13}));
    EXPECT_EQ(pages({blanks(224)}), filled({16, 0, 13}));
}

TEST(PascalTextIn, ALineThatFillsAPageIsWhole)
{
    const LogCapture log(1);
    EXPECT_TRUE(pages({line_of(1021)}) == line_bytes(32, 1021));
    EXPECT_TRUE(pages({blanks(7) + line_of(1021)}) == line_bytes(39, 1021));
    EXPECT_EQ(log.text(), "");
}

TEST(PascalTextIn, ALongerLineIsCutAndSaidToBe)
{
    for (const size_t length : {1022u, 1023u, 1024u, 5000u, 65534u}) {
        std::string said;
        Bytes content;
        {
            const LogCapture log(1);
            content = pages({"A", line_of(length), "B"}, {.source_name = "notes.txt"});
            said = log.text();
        }
        EXPECT_TRUE(content == joined({filled({16, 32, 'A', 13}), line_bytes(32, 1021), filled({16, 32, 'B', 13})}))
            << length;
        EXPECT_EQ(said.substr(0, std::string(warning).size()), warning) << length;
    }
}

TEST(PascalTextIn, TheBlanksBeyondTheIndentationCountAsText)
{
    std::string said;
    {
        const LogCapture log(1);
        EXPECT_TRUE(pages({blanks(224 + 21) + line_of(1000)}) ==
                    joined({{16, 0}, repeated(' ', 21), repeated('x', 1000), {13}}));
        EXPECT_EQ(log.text(), "");
    }
    EXPECT_TRUE(pages({blanks(224 + 21) + line_of(1001)}) ==
                joined({{16, 0}, repeated(' ', 21), repeated('x', 1000), {13}}));
    EXPECT_TRUE(pages({blanks(65534)}) == joined({{16, 0}, repeated(' ', 1021), {13}}));
}

TEST(PascalTextIn, Hazard_I10_ALineThatFitsExactlyStaysOnItsPage)
{
    // 24 bytes are taken, 1000 free
    EXPECT_TRUE(pages({line_of(21), line_of(997)}) == joined({line_bytes(32, 21), line_bytes(32, 997)}));
    EXPECT_TRUE(pages({line_of(21), line_of(998)}) ==
                joined({filled(line_bytes(32, 21)), filled(line_bytes(32, 998))}));
    EXPECT_TRUE(pages({line_of(21), line_of(996), ""}) == // one byte is free
                joined({filled(joined({line_bytes(32, 21), line_bytes(32, 996)})), filled({16, 32, 13})}));
    EXPECT_TRUE(pages({line_of(1018), ""}) == joined({line_bytes(32, 1018), {16, 32, 13}})); // three were free
    EXPECT_TRUE(pages({line_of(1021), ""}) == joined({line_bytes(32, 1021), filled({16, 32, 13})}));
}

TEST(PascalTextIn, TheIndentationTakesNoRoom)
{
    EXPECT_TRUE(pages({line_of(21), blanks(200) + line_of(997)}) == joined({line_bytes(32, 21), line_bytes(232, 997)}));
}

TEST(PascalTextIn, RandomLinesNeverCrossAPage)
{
    std::mt19937 numbers(22);
    for (int round = 0; round < 100; ++round) {
        Lines lines;
        Bytes expected;
        size_t free = page_bytes;
        for (size_t count = 1 + numbers() % 30; count > 0; --count) {
            const size_t indentation = numbers() % 20;
            const size_t length = numbers() % (round % 2 == 0 ? 120 : 1022);
            lines.push_back(blanks(indentation) + line_of(length));
            if (length + 3 > free) {
                expected.insert(expected.end(), free, 0);
                free = page_bytes;
            }
            expected = joined({expected, line_bytes(static_cast<uint8_t>(32 + indentation), length)});
            free -= length + 3;
        }
        ASSERT_TRUE(pages(lines) == filled(expected)) << round;
    }
}
