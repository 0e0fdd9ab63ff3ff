// Lines into typed DATA items: strings that never cross a block of 256 bytes, longer ones in pieces.
#include <gtest/gtest.h>

#include <random>

#include "tests/volume/content/inward_support.h"

using namespace tests;
using namespace tests::insertion;

namespace
{

constexpr uint8_t whole = 60;
constexpr uint8_t first = 28;
constexpr uint8_t middle = 12;
constexpr uint8_t last = 44;

const Bytes filler = {0, 30};
const Bytes end_word = {0, 62};

Bytes head(uint8_t code, uint32_t length)
{
    return {0, code, static_cast<uint8_t>(length >> 8), static_cast<uint8_t>(length & 255)};
}

Bytes text(size_t count)
{
    return repeated('x', count);
}

std::string line_of(size_t length)
{
    return std::string(length, 'x');
}

// What stands in the volume for lines of so many characters, told once more and in another way: by going through the
// file a byte at a time.
class SlowItems
{
  public:
    void line(uint32_t length)
    {
        if (length + 4 <= free()) {
            piece(whole, length, length);
            return finish();
        }
        uint32_t rest = length;
        uint8_t code = first;
        while (rest + 4 > free()) {
            const uint32_t taken = free() - 4;
            piece(code, rest, taken);
            rest -= taken;
            code = middle;
        }
        piece(last, rest, rest);
        finish();
    }
    Bytes bytes = {};

  private:
    uint32_t free() const
    {
        return 256 - static_cast<uint32_t>(bytes.size() % 256);
    }
    void piece(uint8_t code, uint32_t length, uint32_t characters)
    {
        const Bytes start = head(code, length);
        bytes.insert(bytes.end(), start.begin(), start.end());
        bytes.insert(bytes.end(), characters, 'x');
    }
    void finish()
    {
        if (bytes.size() % 2 == 1) bytes.push_back(13);
        while (bytes.size() % 256 > 251) bytes.insert(bytes.end(), filler.begin(), filler.end());
    }
};

Bytes slow_items(const Lines &lines)
{
    SlowItems items;
    for (const std::string &line : lines) items.line(static_cast<uint32_t>(line.size()));
    return joined({items.bytes, end_word});
}

}

TEST(DataItemsIn, NoLinesIsTheEndWordAlone)
{
    EXPECT_EQ(inward(data_items, {}), (Bytes{0, 62}));
}

TEST(DataItemsIn, ALineIsAStringOfItsLength)
{
    EXPECT_EQ(inward(data_items, {"ABCD"}), (Bytes{0, 60, 0, 4, 'A', 'B', 'C', 'D', 0, 62}));
}

TEST(DataItemsIn, AnOddStringIsFilledUpWithACarriageReturn)
{
    EXPECT_EQ(inward(data_items, {"ABC"}), (Bytes{0, 60, 0, 3, 'A', 'B', 'C', 13, 0, 62}));
    EXPECT_EQ(inward(data_items, {"A", "B"}), (Bytes{0, 60, 0, 1, 'A', 13, 0, 60, 0, 1, 'B', 13, 0, 62}));
}

TEST(DataItemsIn, AnEmptyLineIsAnEmptyString)
{
    EXPECT_EQ(inward(data_items, {"", "A", ""}), (Bytes{0, 60, 0, 0, 0, 60, 0, 1, 'A', 13, 0, 60, 0, 0, 0, 62}));
}

TEST(DataItemsIn, NumbersAreStringsLikeAllOthers)
{
    EXPECT_EQ(inward(data_items, {"12", "-1.5E+003"}),
              (Bytes{0, 60, 0, 2, '1', '2', 0, 60, 0, 9, '-', '1', '.', '5', 'E', '+', '0', '0', '3', 13, 0, 62}));
}

TEST(DataItemsIn, CharactersGoIntoTheHpSetAndNoneIsLeftOut)
{
    EXPECT_EQ(inward(data_items, {"\x81\x84\x94\xE1"}), (Bytes{0, 60, 0, 4, 0xCF, 0xCC, 0xCE, 0xDE, 0, 62}));
    EXPECT_EQ(inward(data_items, {"\": \x80"}), (Bytes{0, 60, 0, 4, '"', ':', ' ', 0x80, 0, 62}));
}

TEST(DataItemsIn, CharactersGoIntoTheHpSetInEveryPiece)
{
    const Bytes content = inward(data_items, {std::string(600, '\x84')});
    EXPECT_EQ(content, joined({{0, 28, 2, 88},
                               repeated(0xCC, 252),
                               {0, 12, 1, 92},
                               repeated(0xCC, 252),
                               {0, 44, 0, 96},
                               repeated(0xCC, 96),
                               {0, 62}}));
}

// The end of a block behind one string, told by the length of that string.
TEST(DataItemsIn, TheLastFourBytesOfABlockAreFilled)
{
    struct Row {
        size_t length;
        Bytes behind; // up to where the next string begins
    };
    const Row rows[] = {
        {245, {13}},               // 249 and the pad: six
        {246, {}},                 // 250: six
        {247, {13, 0, 30, 0, 30}}, // four: twice
        {248, {0, 30, 0, 30}},     // four: twice
        {249, {13, 0, 30}},        // two
        {250, {0, 30}},            // two
        {251, {13}},               // the pad fills the block
        {252, {}},                 // the text fills it
    };
    for (const Row &row : rows) {
        const Bytes expected = joined({head(whole, static_cast<uint32_t>(row.length)),
                                       text(row.length),
                                       row.behind,
                                       head(whole, 1),
                                       {'B', 13},
                                       end_word});
        Lines lines = {line_of(row.length), "B"};
        EXPECT_EQ(inward(data_items, lines), expected) << row.length;
    }
}

TEST(DataItemsIn, ALineThatFillsABlockIsOneString)
{
    EXPECT_EQ(inward(data_items, {line_of(252)}), joined({{0, 60, 0, 252}, text(252), {0, 62}}));
}

TEST(DataItemsIn, ALineBeyondABlockIsCutIntoPieces)
{
    EXPECT_EQ(inward(data_items, {line_of(253)}),
              joined({{0, 28, 0, 253}, text(252), {0, 44, 0, 1}, {'x', 13}, {0, 62}}));
    EXPECT_EQ(inward(data_items, {line_of(504)}),
              joined({{0, 28, 1, 248}, text(252), {0, 44, 0, 252}, text(252), {0, 62}}));
    EXPECT_EQ(inward(data_items, {line_of(505)}),
              joined({{0, 28, 1, 249}, text(252), {0, 12, 0, 253}, text(252), {0, 44, 0, 1}, {'x', 13}, {0, 62}}));
}

TEST(DataItemsIn, Hazard_I8_TheLongestLineHas261Pieces)
{
    Bytes expected = joined({{0, 28, 0xFF, 0xFE}, text(252)});
    uint32_t rest = 65534 - 252;
    for (int piece = 0; piece < 259; ++piece, rest -= 252) expected = joined({expected, head(middle, rest), text(252)});
    EXPECT_EQ(rest, 14u);
    expected = joined({expected, {0, 44, 0, 14}, text(14), {0, 62}});
    EXPECT_TRUE(inward(data_items, {line_of(65534)}) == expected);
}

TEST(DataItemsIn, APieceInAStartedBlockFillsItsRest)
{
    EXPECT_EQ(
        inward(data_items, {"ABCD", line_of(300)}),
        joined({{0, 60, 0, 4, 'A', 'B', 'C', 'D'}, {0, 28, 1, 44}, text(244), {0, 44, 0, 56}, text(56), {0, 62}}));
    EXPECT_EQ(inward(data_items, {line_of(246), "ABC"}), // six bytes are free: the head and two characters
              joined({{0, 60, 0, 246}, text(246), {0, 28, 0, 3, 'A', 'B'}, {0, 44, 0, 1, 'C', 13}, {0, 62}}));
    EXPECT_EQ(inward(data_items, {line_of(246), "AB"}),
              joined({{0, 60, 0, 246}, text(246), {0, 60, 0, 2, 'A', 'B'}, {0, 62}}));
}

TEST(DataItemsIn, TheLastPieceIsFinishedAsAWholeStringIs)
{
    struct Row {
        size_t length;
        Bytes behind;
    };
    const Row rows[] = {
        {498, {}}, {499, {13, 0, 30, 0, 30}}, {500, {0, 30, 0, 30}}, {501, {13, 0, 30}}, {502, {0, 30}}, {503, {13}},
        {504, {}}};
    for (const Row &row : rows) {
        const auto length = static_cast<uint32_t>(row.length);
        const Bytes expected = joined({head(first, length),
                                       text(252),
                                       head(last, length - 252),
                                       text(length - 252),
                                       row.behind,
                                       head(whole, 1),
                                       {'B', 13},
                                       end_word});
        EXPECT_EQ(inward(data_items, {line_of(row.length), "B"}), expected) << row.length;
    }
}

// Every fill of the block, and lines that end around its end.
TEST(DataItemsIn, NoStringCrossesABlockWhateverIsFree)
{
    for (size_t used = 4; used <= 250; used += 2) {
        const size_t free = 256 - used;
        for (size_t length = free - 6; length <= free + 250; ++length) {
            if (length > free + 2 && length < free + 242) continue;
            const Lines lines = {line_of(used - 4), line_of(length), ""};
            ASSERT_TRUE(inward(data_items, lines) == slow_items(lines)) << used << " used, " << length << " more";
        }
    }
}

TEST(DataItemsIn, TheLastStringIsFollowedByTheEndWordInTheNextBlock)
{
    const Bytes content = inward(data_items, {line_of(251)});
    ASSERT_EQ(content.size(), 258u);
    EXPECT_EQ(part_of(content, 255, 3), (Bytes{13, 0, 62}));
}

TEST(DataItemsIn, RandomLinesAreAsTheSlowWayMakesThem)
{
    std::mt19937 numbers(21);
    for (int round = 0; round < 150; ++round) {
        const uint32_t longest = round % 3 == 0 ? 2000 : 270;
        Lines lines(numbers() % 20);
        for (std::string &line : lines) line = line_of(numbers() % longest);
        ASSERT_TRUE(inward(data_items, lines) == slow_items(lines)) << round;
    }
}
