// Lines into HP 75 TEXT: a line number in BCD, a length byte, the text; a head that is written last.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "base/convert.h"
#include "tests/support/capture.h"
#include "tests/support/medium.h"
#include "tests/volume/content/inward_support.h"

using namespace tests;
using namespace tests::insertion;

namespace
{

constexpr size_t head_bytes = 28;
const Bytes end_bytes = {0x99, 0xA9, 0x02, 0x8A, 0x0E};

// What stands behind the head, without the end and the zeros that fill up.
Bytes body(const Lines &lines, const InwardOrder &order = {})
{
    const Bytes content = inward(hp75_text, lines, order);
    EXPECT_GE(content.size(), 256u);
    EXPECT_EQ(content.size() % 256, 0u);
    const size_t length = content[2] + size_t{content[3]} * 256 + 18;
    EXPECT_EQ(part_of(content, length - 5, 5), end_bytes);
    EXPECT_EQ(part_of(content, length, content.size()), repeated(0, content.size() - length));
    return part_of(content, head_bytes, length - head_bytes - 5);
}

// n lines that take n * 10 bytes, and one that takes the rest.
Lines lines_of_bytes(size_t bytes)
{
    Lines lines;
    for (; bytes > 90; bytes -= 10) lines.emplace_back("1 1234567");
    lines.push_back("1 " + std::string(bytes - 3, 'y'));
    return lines;
}

Bytes head_of(const FileInfo &info)
{
    return part_of(inward(hp75_text, {}, {.info = &info}), 0, head_bytes);
}

FileInfo dated(const TimeRecord &date)
{
    FileInfo info = named("FILE");
    info.date = date;
    return info;
}

constexpr TimeRecord march_1984 = {.tm_sec = 30,
                                   .tm_min = 7,
                                   .tm_hour = 9,
                                   .tm_mday = 15,
                                   .tm_mon = 2,
                                   .tm_year = 84,
                                   .tm_wday = 4,
                                   .tm_yday = 74,
                                   .tm_isdst = 0};

#ifndef _WIN32
class UniversalTime // for the life of an object
{
  public:
    UniversalTime() : had_(getenv("TZ") != nullptr), old_(had_ ? getenv("TZ") : "")
    {
        setenv("TZ", "UTC0", 1);
        tzset();
    }
    ~UniversalTime()
    {
        if (had_)
            setenv("TZ", old_.c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }
    UniversalTime(const UniversalTime &) = delete;
    UniversalTime &operator=(const UniversalTime &) = delete;

  private:
    bool had_;
    std::string old_;
};
#endif

}

TEST(Hp75TextIn, NoLinesIsAHeadAndTheEnd)
{
    const Bytes content = inward(hp75_text, {});
    EXPECT_EQ(content.size(), 256u);
    EXPECT_EQ(part_of(content, 0, 6), (Bytes{0, 0, 15, 0, 0xBE, 'T'}));
    EXPECT_EQ(part_of(content, 18, 10), repeated(0, 10));
    EXPECT_EQ(part_of(content, 28, 5), end_bytes);
    EXPECT_EQ(part_of(content, 33, 256), repeated(0, 223));
}

TEST(Hp75TextIn, ALineIsItsNumberItsLengthAndItsText)
{
    EXPECT_EQ(body({"10 REM"}), (Bytes{0x10, 0x00, 3, 'R', 'E', 'M'}));
    EXPECT_EQ(body({"1234 A B ", "9999 C"}), (Bytes{0x34, 0x12, 4, 'A', ' ', 'B', ' ', 0x99, 0x99, 1, 'C'}));
}

TEST(Hp75TextIn, LeadingBlanksAreNoPartOfALine)
{
    EXPECT_EQ(body({"   5 A", "    "}), (Bytes{0x05, 0, 1, 'A', 0, 0, 0}));
    EXPECT_EQ(body({"\t5 A"}), (Bytes{0, 0, 3, '5', ' ', 'A'})); // a tab is no blank
}

TEST(Hp75TextIn, ALineWithoutTextHasLengthZero)
{
    EXPECT_EQ(body({"", "7", "0010"}), (Bytes{0, 0, 0, 0x07, 0, 0, 0x10, 0, 0}));
}

TEST(Hp75TextIn, WhatFollowsTheNumberIsSkippedWhateverItIs)
{
    EXPECT_EQ(body({"10REM", "20  X", "30 ", "40Y"}),
              (Bytes{0x10, 0, 2, 'E', 'M', 0x20, 0, 2, ' ', 'X', 0x30, 0, 0, 0x40, 0, 0}));
}

TEST(Hp75TextIn, ALineWithoutNumberLosesItsFirstCharacter)
{
    EXPECT_EQ(body({"HELLO", "-5 A", "X"}), (Bytes{0, 0, 4, 'E', 'L', 'L', 'O', 0, 0, 3, '5', ' ', 'A', 0, 0, 0}));
}

TEST(Hp75TextIn, TheNumberGoesOutByHundreds)
{
    struct Row {
        const char *number;
        uint8_t low;
        uint8_t high;
    };
    const Row rows[] = {{"0", 0, 0},
                        {"99", 0x99, 0},
                        {"100", 0, 0x01},
                        {"00000000000000000000000000000042", 0x42, 0},
                        {"9900", 0, 0x99},
                        {"10000", 0, 0xA0}, // a hundred has no two digits
                        {"12345", 0x45, 0xC3},
                        {"25500", 0, 0x95},
                        {"25600", 0, 0x00},    // only a byte of the hundreds
                        {"65535", 0x35, 0xE3}, // 655 is 143 in a byte
                        {"2147483647", 0x47, 0x20}};
    for (const Row &row : rows) EXPECT_EQ(body({row.number}), (Bytes{row.low, row.high, 0})) << row.number;
}

TEST(Hp75TextIn, Hazard_I9_NumbersBeyondAllBoundsAreTheLargest)
{
    const Bytes largest = body({"99999999999999999999"});
    ASSERT_EQ(largest.size(), 3u);
    EXPECT_EQ(body({"18446744073709551616"}), largest);
    EXPECT_EQ(body({"1" + std::string(94, '0')}), largest);
    EXPECT_EQ(body({std::string(96, '9')}), largest);
}

TEST(Hp75TextIn, TheTextKeepsItsCharacters)
{
    EXPECT_EQ(body({"1 \x84\xE1\": \r\x80"}), (Bytes{0x01, 0, 7, 0x84, 0xE1, '"', ':', ' ', 13, 0x80}));
}

TEST(Hp75TextIn, NinetySixCharactersGoInWhole)
{
    const LogCapture log(1);
    const std::string line = "10 " + std::string(93, 'a');
    EXPECT_EQ(body({line}), joined({{0x10, 0, 93}, repeated('a', 93)}));
    EXPECT_EQ(body({"     " + line}), joined({{0x10, 0, 93}, repeated('a', 93)}));
    EXPECT_EQ(body({std::string(96, 'b')}), joined({{0, 0, 95}, repeated('b', 95)}));
    EXPECT_EQ(log.text(), "");
}

TEST(Hp75TextIn, ALongerLineIsCutAndSaidToBe)
{
    const std::string line = "10 " + std::string(93, 'a') + "b";
    std::string text;
    Bytes content;
    {
        const LogCapture log(1);
        content = body({"1 A", "  " + line, "2 B"}, {.source_name = "folder/text.txt"});
        text = log.text();
    }
    EXPECT_EQ(content, joined({{1, 0, 1, 'A'}, {0x10, 0, 93}, repeated('a', 93), {2, 0, 1, 'B'}}));
    const std::string said =
        "Warning: File folder/text.txt exceeds max. line length for TEXT files in line 2 (truncated).\n";
    EXPECT_EQ(text.substr(0, said.size()), said);
}

TEST(Hp75TextIn, Hazard_I7_TheLongestLineIsCutLikeAnother)
{
    EXPECT_EQ(body({"3 " + std::string(65532, 'z')}), joined({{3, 0, 94}, repeated('z', 94)}));
    EXPECT_EQ(body({std::string(65534, ' ')}), (Bytes{0, 0, 0}));
}

TEST(Hp75TextIn, ANumberOf96DigitsLeavesNoText)
{
    EXPECT_EQ(body({std::string(96, '0') + " X"}), (Bytes{0, 0, 0}));
    EXPECT_EQ(body({std::string(94, '0') + "7 X"}), (Bytes{7, 0, 0}));
}

TEST(Hp75TextIn, TheLengthOfTheHeadCountsFromItsEnd)
{
    for (const size_t bytes : {40u, 200u, 222u, 300u, 1000u, 65000u}) {
        const Bytes content = inward(hp75_text, lines_of_bytes(bytes));
        const size_t length = 28 + bytes + 5 - 18;
        EXPECT_EQ(content[2], length % 256) << bytes;
        EXPECT_EQ(content[3], length / 256) << bytes;
    }
}

TEST(Hp75TextIn, TheLastBlockIsFilledWithZeros)
{
    const Bytes content = inward(hp75_text, lines_of_bytes(222)); // 255 bytes
    ASSERT_EQ(content.size(), 256u);
    EXPECT_EQ(part_of(content, 250, 6), (Bytes{0x99, 0xA9, 0x02, 0x8A, 0x0E, 0}));
    const Bytes longer = inward(hp75_text, lines_of_bytes(224)); // 257
    ASSERT_EQ(longer.size(), 512u);
    EXPECT_EQ(part_of(longer, 257, 255), repeated(0, 255));
}

TEST(Hp75TextIn, AFullBlockIsFollowedByOneOfZeros)
{
    for (const size_t blocks : {1u, 2u, 5u}) {
        const Bytes content = inward(hp75_text, lines_of_bytes(blocks * 256 - 33));
        ASSERT_EQ(content.size(), (blocks + 1) * 256) << blocks;
        EXPECT_EQ(part_of(content, blocks * 256 - 5, 5), end_bytes);
        EXPECT_EQ(part_of(content, blocks * 256, 256), repeated(0, 256));
    }
}

TEST(Hp75TextIn, TheNameOfTheHeadEndsAtItsFirstBlank)
{
    EXPECT_EQ(text_of(part_of(head_of(named("AB")), 10, 8)), "AB      ");
    EXPECT_EQ(text_of(part_of(head_of(named("A CD")), 10, 8)), "A       ");
    EXPECT_EQ(text_of(part_of(head_of(named(" B")), 10, 8)), "        ");
    EXPECT_EQ(text_of(part_of(head_of(named("")), 10, 8)), "        ");
    EXPECT_EQ(text_of(part_of(head_of(named("ABCDEFGH")), 10, 8)), "ABCDEFGH");
    EXPECT_EQ(text_of(part_of(head_of(named("ABCDEFGHIJ")), 10, 8)), "ABCDEFGH");
    EXPECT_EQ(text_of(part_of(head_of(named("\xCC\xCE")), 10, 8)), "\xCC\xCE      ");
}

TEST(Hp75TextIn, BehindTheNameOfTheHeadStandZeros)
{
    EXPECT_EQ(part_of(head_of(named("ABCDEFGHIJ")), 18, 10), repeated(0, 10));
    EXPECT_EQ(part_of(head_of(named("A")), 0, 2), (Bytes{0, 0}));
}

TEST(Hp75TextIn, TheDateOfTheHeadCountsSecondsSince1900)
{
    std::tm time{};
    time.tm_year = 84;
    time.tm_mon = 2;
    time.tm_mday = 15;
    time.tm_hour = 9;
    time.tm_min = 7;
    time.tm_sec = 30;
    const auto seconds = static_cast<uint32_t>(std::mktime(&time) + 2208988800);
    const Bytes expected = {static_cast<uint8_t>(seconds), static_cast<uint8_t>(seconds >> 8),
                            static_cast<uint8_t>(seconds >> 16), static_cast<uint8_t>(seconds >> 24)};
    EXPECT_EQ(part_of(head_of(dated(march_1984)), 6, 4), expected);
}

#ifndef _WIN32
TEST(Hp75TextIn, TheDateOfTheHeadByItsBytes)
{
    const UniversalTime zone;
    EXPECT_EQ(part_of(head_of(dated(march_1984)), 6, 4), (Bytes{0x52, 0x53, 0x61, 0x9E}));
    TimeRecord date{};
    date.tm_mday = 1;
    date.tm_year = 70;
    EXPECT_EQ(part_of(head_of(dated(date)), 6, 4), (Bytes{0x80, 0x7E, 0xAA, 0x83}));
    date.tm_mon = 5;
    date.tm_year = 140; // 32 bits end in 2036
    EXPECT_EQ(part_of(head_of(dated(date)), 6, 4), (Bytes{0x00, 0x61, 0x1D, 0x08}));
}
#endif

TEST(Hp75TextIn, DatesThatAreNoneHarmNothing)
{
    for (const int32_t month_number : {-1, 15, 164, INT32_MAX, INT32_MIN}) {
        TimeRecord date = march_1984;
        date.tm_mon = month_number;
        date.tm_year = month_number;
        EXPECT_EQ(head_of(dated(date)).size(), head_bytes) << month_number;
    }
}
