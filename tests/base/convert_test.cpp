#include "base/convert.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "base/convert_inner.h"
#include "tests/base/scripted_console.h"

namespace
{

using tests::ScriptedConsole;

TEST(BigEndian, WordsAndDoubleWords)
{
    const uint8_t bytes[] = {0x00, 0x81, 0x92, 0xA3, 0xB4};
    EXPECT_EQ(get_word(bytes + 1), 0x8192);
    EXPECT_EQ(get_dword(bytes + 1), 0x8192A3B4u);
    EXPECT_EQ(get_dword(bytes), 0x008192A3u);
    uint8_t stored[7] = {9, 9, 9, 9, 9, 9, 9};
    set_word(stored, 0xF1E2);
    set_dword(stored + 3, 0xDEADBEEF);
    const uint8_t expected[7] = {0xF1, 0xE2, 9, 0xDE, 0xAD, 0xBE, 0xEF};
    EXPECT_EQ(memcmp(stored, expected, sizeof(stored)), 0);
}

TEST(BigEndian, NullReadsAsZeroAndTakesNothing)
{
    EXPECT_EQ(get_word(nullptr), 0);
    EXPECT_EQ(get_dword(nullptr), 0u);
    set_word(nullptr, 1);
    set_dword(nullptr, 1);
}

TEST(BinaryString, HighestBitFirst)
{
    char text[10] = "#########";
    EXPECT_EQ(get_binary_string(0xA1, text), text);
    EXPECT_STREQ(text, "10100001");
    EXPECT_STREQ(get_binary_string(0, text), "00000000");
    EXPECT_STREQ(get_binary_string(255, text), "11111111");
    EXPECT_EQ(get_binary_string(1, nullptr), nullptr);
}

TEST(Bcd, BothWays)
{
    EXPECT_EQ(bcd2dec(0x00), 0);
    EXPECT_EQ(bcd2dec(0x59), 59);
    EXPECT_EQ(bcd2dec(0x0F), 15);
    EXPECT_EQ(bcd2dec(0xFF), 165);
    EXPECT_EQ(dec2bcd(59), 0x59);
    EXPECT_EQ(dec2bcd(99), 0x99);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(bcd2dec(dec2bcd(static_cast<uint8_t>(i))), i);
}

TEST(Uppercase, OnlyPlainLettersChange)
{
    char text[] = "abcxyz`{AZ09_\xE4";
    to_uppercase(text);
    EXPECT_STREQ(text, "ABCXYZ`{AZ09_\xE4");
}

std::string trimmed(const char *text)
{
    char buffer[64];
    memset(buffer, '#', sizeof(buffer));
    strcpy(buffer, text);
    trim(buffer);
    return buffer;
}

TEST(Trim, BlanksAndTabsGoFromTheEnd)
{
    EXPECT_EQ(trimmed("AB \t "), "AB");
    EXPECT_EQ(trimmed("A B"), "A B");
    EXPECT_EQ(trimmed("A"), "A");
    EXPECT_EQ(trimmed("A "), "A");
}

TEST(Trim, KeepsOldTailOfTrimmedText)
{
    EXPECT_EQ(trimmed("  AB"), "ABAB");
    EXPECT_EQ(trimmed(" AB"), "ABB");
    EXPECT_EQ(trimmed("\t A"), "A A");
    EXPECT_EQ(trimmed("  AB  "), "ABAB");
}

TEST(Trim, KeepsFirstBlankOfBlankText)
{
    EXPECT_EQ(trimmed("   "), " ");
    EXPECT_EQ(trimmed("\t  "), "\t");
}

TEST(Trim, Hazard_C9_EmptyTextAndOneBlank)
{
    EXPECT_EQ(trimmed(""), "");
    EXPECT_EQ(trimmed(" "), " ");
    trim(nullptr);
}

struct NumberText {
    const char *text;
    int32_t result;
    uint32_t value;
};

constexpr NumberText number_texts[] = {
    {"0", 0, 0},
    {"12", 0, 12},
    {" \t12", 0, 12},
    {"12 34", 0, 12},
    {"12\t", 0, 12},
    {"12\r\n", 0, 12},
    {"007", 0, 7},
    {"0x10", 0, 16},
    {"0XfF", 0, 255},
    {"0x", 0, 0},
    {"  0x 5", 0, 0},
    {"12G", -1, 0},
    {"G", -1, 0},
    {"-1", -1, 0},
    {"1-", -1, 0},
    {"1.5", -1, 0},
    {"+1", -1, 0},
    {"0x1x", -1, 0},
    {"1@", -1, 0},
    {"1`", -1, 0},
    {"\xE4", -1, 0},
    {"4294967295", 0, 4294967295u},
    {"0xFFFFFFFF", 0, 4294967295u},
};

TEST(Numbers, UnsignedForms)
{
    for (const NumberText &row : number_texts) {
        uint32_t value = 777;
        EXPECT_EQ(safe_strtoul(row.text, &value), row.result) << row.text;
        EXPECT_EQ(value, row.result == 0 ? row.value : 777) << row.text;
    }
}

TEST(Numbers, KeepsLetterThatMakesHexadecimal)
{
    uint32_t value = 0;
    EXPECT_EQ(safe_strtoul("1F", &value), 0);
    EXPECT_EQ(value, 31u);
    EXPECT_EQ(safe_strtoul("F", &value), 0);
    EXPECT_EQ(value, 15u);
    EXPECT_EQ(safe_strtoul("10a", &value), 0);
    EXPECT_EQ(value, 0x10Au);
}

TEST(Numbers, KeepsTextWithoutDigitsAsZero)
{
    uint32_t value = 777;
    EXPECT_EQ(safe_strtoul("", &value), 0);
    EXPECT_EQ(value, 0u);
    int32_t number = 777;
    EXPECT_EQ(safe_strtoi("-", &number), 0);
    EXPECT_EQ(number, 0);
}

TEST(Numbers, BlanksAheadEndAt1024)
{
    uint32_t value = 777;
    EXPECT_EQ(safe_strtoul((std::string(1024, ' ') + "5").c_str(), &value), -1);
    EXPECT_EQ(value, 777u);
    EXPECT_EQ(safe_strtoul((std::string(1023, ' ') + "5").c_str(), &value), 0);
    EXPECT_EQ(value, 5u);
}

TEST(Numbers, Hazard_M14_LongNumbersSaturate)
{
    uint32_t value = 0;
    EXPECT_EQ(safe_strtoul("4294967296", &value), 0);
    EXPECT_EQ(value, 4294967295u);
    EXPECT_EQ(safe_strtoul(std::string(32, '9').c_str(), &value), 0);
    EXPECT_EQ(value, 4294967295u);
    EXPECT_EQ(safe_strtoul(std::string(500, 'f').c_str(), &value), 0);
    EXPECT_EQ(value, 4294967295u);
}

TEST(Numbers, Hazard_M14_ThirtyTwoDigitsAreCollected)
{
    uint32_t value = 777;
    EXPECT_EQ(safe_strtoul((std::string(31, '0') + "75").c_str(), &value), 0);
    EXPECT_EQ(value, 7u);
    int32_t number = 777;
    EXPECT_EQ(safe_strtoi(("-" + std::string(31, '0') + "75").c_str(), &number), 0);
    EXPECT_EQ(number, -7);
}

TEST(Numbers, WordsAndBytesHaveTheirLimits)
{
    uint16_t word = 7;
    EXPECT_EQ(safe_strtoui("65535", &word), 0);
    EXPECT_EQ(word, 65535);
    EXPECT_EQ(safe_strtoui("65536", &word), -1);
    EXPECT_EQ(safe_strtoui("x", &word), -1);
    EXPECT_EQ(word, 65535);
    uint8_t byte = 7;
    EXPECT_EQ(safe_strtouc("256", &byte), -1);
    EXPECT_EQ(byte, 7);
    EXPECT_EQ(safe_strtouc("255", &byte), 0);
    EXPECT_EQ(byte, 255);
}

TEST(Numbers, SignedForms)
{
    constexpr struct {
        const char *text;
        int32_t result, value;
    } rows[] = {
        {"-12", 0, -12},
        {"12", 0, 12},
        {" -0x10", 0, -16},
        {"-1f", 0, -31},
        {"--1", -1, 777},
        {"1-", -1, 777},
        {"2147483647", 0, INT32_MAX},
        {"2147483648", 0, INT32_MAX},
        {"-2147483648", 0, INT32_MIN},
        {"-99999999999999999999999", 0, INT32_MIN},
        {"0xFFFFFFFF", 0, INT32_MAX},
    };
    for (const auto &row : rows) {
        int32_t value = 777;
        EXPECT_EQ(safe_strtoi(row.text, &value), row.result) << row.text;
        EXPECT_EQ(value, row.value) << row.text;
    }
}

TEST(Numbers, NullPointersFail)
{
    uint32_t value = 777;
    int32_t number = 777;
    EXPECT_EQ(safe_strtoul(nullptr, &value), -1);
    EXPECT_EQ(safe_strtoi(nullptr, &number), -1);
    EXPECT_EQ(value, 777u);
    EXPECT_EQ(number, 777);
    EXPECT_EQ(safe_strtoul("1", nullptr), -1);
    EXPECT_EQ(safe_strtoui("1", nullptr), -1);
    EXPECT_EQ(safe_strtouc("1", nullptr), -1);
    EXPECT_EQ(safe_strtoi("1", nullptr), -1);
}

TEST(ConsoleLine, EndsAtALineFeedWhichIsTaken)
{
    ScriptedConsole console("first\nsecond\n");
    char line[32];
    EXPECT_EQ(safe_gets(line, sizeof(line)), line);
    EXPECT_STREQ(line, "first");
    safe_gets(line, sizeof(line));
    EXPECT_STREQ(line, "second");
}

TEST(ConsoleLine, LongLineComesInParts)
{
    ScriptedConsole console("abcdefg\n");
    char line[6] = "#####";
    safe_gets(line, 4);
    EXPECT_STREQ(line, "abc");
    EXPECT_EQ(line[4], '#');
    safe_gets(line, sizeof(line));
    EXPECT_STREQ(line, "defg");
}

TEST(ConsoleLine, Hazard_M17_NoRoomReadsNothing)
{
    ScriptedConsole console("abc\n");
    char line[4] = "###";
    EXPECT_EQ(safe_gets(line, 0), nullptr);
    EXPECT_EQ(safe_gets(nullptr, 4), nullptr);
    EXPECT_STREQ(line, "###");
    EXPECT_EQ(safe_gets(line, 1), line);
    EXPECT_STREQ(line, "");
    EXPECT_EQ(console.input, "abc\n");
}

TEST(ConsoleLine, Hazard_M17_EndOfInputIsAnEmptyLine)
{
    ScriptedConsole console("last");
    char line[32] = "#";
    EXPECT_FALSE(read_input_line(line, sizeof(line)));
    EXPECT_STREQ(line, "last");
    EXPECT_EQ(safe_gets(line, sizeof(line)), line);
    EXPECT_STREQ(line, "");
    EXPECT_FALSE(read_input_line(line, sizeof(line)));
}

struct Pair {
    uint8_t hp, host;
};

constexpr Pair pairs[] = {
    {0xB8, 0xAD}, {0xB9, 0xA8}, {0xBB, 0x9C}, {0xD8, 0x8E}, {0xDA, 0x99}, {0xDB, 0x9A}, {0xCC, 0x84}, {0xCE, 0x94},
    {0xCF, 0x81}, {0xDE, 0xE1}, {0xE1, 0xCC}, {0xE2, 0xC9}, {0xE3, 0xCB}, {0xE4, 0xCD}, {0xE5, 0xBB}, {0xE6, 0xB9},
    {0xE7, 0xBA}, {0xE8, 0xD8}, {0xE9, 0xC3}, {0xEA, 0xDA}, {0xEB, 0xC2}, {0xEC, 0xC4}, {0xED, 0xBF}, {0xEE, 0xB4},
    {0xEF, 0xD7}, {0xF1, 0xC7}, {0xF2, 0xC0}, {0xF3, 0xC1}, {0xF4, 0xC5}, {0xF5, 0xD9}, {0xF6, 0xB6}, {0xF9, 0xCF},
    {0xFA, 0xC8}, {0xFB, 0xCA}, {0xFC, 0xCE}, {0xFD, 0xBC}, {0xFE, 0xD1}, {0xFF, 0xB1},
};

TEST(HpCharacters, EachPairBothWays)
{
    for (const Pair &pair : pairs) {
        EXPECT_EQ(hp2win(pair.hp), pair.host) << int{pair.hp};
        EXPECT_EQ(win2hp(pair.host), pair.hp) << int{pair.host};
    }
}

TEST(HpCharacters, WhatHasNoPartnerStays)
{
    for (int character = 0; character < 256; ++character) {
        bool hp_known = false, host_known = false;
        for (const Pair &pair : pairs) {
            hp_known |= pair.hp == character;
            host_known |= pair.host == character;
        }
        const auto byte = static_cast<uint8_t>(character);
        EXPECT_TRUE(hp_known || hp2win(byte) == byte) << character;
        EXPECT_TRUE(host_known || win2hp(byte) == byte) << character;
    }
    EXPECT_EQ(hp2win(0x80), 0x80);
}

std::string to_host(const char *text, int32_t filter)
{
    char target[64] = "#";
    string_hp2win(target, text, filter);
    return target;
}

std::string to_hp(const char *text, int32_t filter)
{
    char target[64] = "#";
    string_win2hp(target, text, filter);
    return target;
}

TEST(HpCharacters, TextsWithoutFilterAreConvertedByteByByte)
{
    EXPECT_EQ(to_host("A:\"\\\x07 \xCC\xB8", 0), "A:\"\\\x07 \x84\xAD");
    EXPECT_EQ(to_hp("A:\"\\\x07 \x84\xAD", 0), "A:\"\\\x07 \xCC\xB8");
    EXPECT_EQ(to_host("", 0), "");
    EXPECT_EQ(to_hp("", 1), "");
}

TEST(HpCharacters, HostNameFilterTakesForbiddenCharacters)
{
    EXPECT_EQ(to_host("a\"b\\c/d:e?f*g<h>i|j", 1), "a_b_c_d_e_f_g_h_i_j");
    EXPECT_EQ(to_host("\x1F \x7E\x7F", 1), "_ ~_");
}

TEST(HpCharacters, KeepsHpLettersAsUnderscores)
{
    EXPECT_EQ(to_host("\xCC\xB8\x80", 1), "___");
}

TEST(HpCharacters, HpFilterTakesQuotesColonsAndBlanks)
{
    EXPECT_EQ(to_hp(" a b:c\"d\\e\x84 ", 1), "ab_c_d\\e\xCC");
}

TEST(HpCharacters, TextsAreConvertedInPlace)
{
    char name[] = " a:\x84";
    string_win2hp(name, name, 1);
    EXPECT_STREQ(name, "a_\xCC");
}

TEST(HpCharacters, NullTextsAreLeftAlone)
{
    char target[4] = "abc";
    string_hp2win(target, nullptr, 0);
    string_win2hp(target, nullptr, 0);
    string_hp2win(nullptr, "x", 0);
    string_win2hp(nullptr, "x", 0);
    EXPECT_STREQ(target, "abc");
}

} // namespace
