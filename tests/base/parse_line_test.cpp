// Lines taken apart: each character in each state, quoted texts, limits, and where a fault shows.
#include "base/parse_line.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "base/error.h"
#include "tests/support/capture.h"

using namespace std::string_literals;
using tests::error_text;

namespace
{

struct Limits {
    uint32_t bytes = 1024;
    uint32_t tokens = 256;
};

// Buffer and cells have just the size that is told, so that one too many is found.
struct Parsed {
    explicit Parsed(const std::string &line, const Limits &limits = {})
    {
        const auto buffer = std::make_unique<char[]>(limits.bytes);
        const auto cells = std::make_unique<char *[]>(limits.tokens);
        const std::vector<char> own(line.begin(), line.end());
        tests::forget_error();
        result =
            parse_line(7, own.data(), "=", ",", " \t", ";", buffer.get(), limits.bytes, limits.tokens, cells.get());
        for (int32_t i = 0; i < result; i++) tokens.emplace_back(cells[static_cast<size_t>(i)]);
    }

    std::string joined() const
    {
        std::string text;
        for (size_t i = 0; i < tokens.size(); i++) text += (i > 0 ? "|" : "") + tokens[i];
        return text;
    }

    int32_t result;
    std::vector<std::string> tokens;
};

struct Cell {
    const char *name; // state and kind of character
    std::string line; // what brings the state, the character, and what shows the state behind it
    const char *tokens;
};

const Cell cells[] = {
    {"between, blank", "a  Z\n", "a|Z"},
    {"between, tab", "a \tZ\n", "a|Z"},
    {"between, NUL", "a \0Z\n"s, "a|Z"},
    {"between, quote", "a \"Y Z\"\n", "a|Y Z"},
    {"between, assign", "a =Z\n", "a|=|Z"},
    {"between, line feed", "a \nZ", "a"},
    {"between, carriage return", "a \rZ", "a"},
    {"between, comment", "a ;Z\n", "a"},
    {"between, separator", "a ,,Z\n", "a||Z"},
    {"between, other", "a Z\n", "a|Z"},
    {"behind, blank", "a, ,Z\n", "a||Z"},
    {"behind, tab", "a,\t,Z\n", "a||Z"},
    {"behind, NUL", "a,\0,Z\n"s, "a||Z"},
    {"behind, quote", "a,\"Y Z\"\n", "a|Y Z"},
    {"behind, assign", "a,=Z\n", "a|=|Z"},
    {"behind, line feed", "a,\nZ", "a"},
    {"behind, carriage return", "a,\rZ", "a"},
    {"behind, comment", "a,;Z\n", "a"},
    {"behind, separator", "a,,,Z\n", "a|||Z"},
    {"behind, other", "a,Z\n", "a|Z"},
    {"quoted, blank", "\"q Z\"\n", "q Z"},
    {"quoted, tab", "\"q\tZ\"\n", "q\tZ"},
    {"quoted, quote", "\"q\",,Z\n", "q||Z"},
    {"quoted, assign", "\"q=Z\"\n", "q=Z"},
    {"quoted, comment", "\"q;Z\"\n", "q;Z"},
    {"quoted, separator", "\"q,,Z\"\n", "q,,Z"},
    {"quoted, other", "\"qZ\"\n", "qZ"},
    {"assign, blank", "a= ,,Z\n", "a|=||Z"},
    {"assign, tab", "a=\tZ\n", "a|=|Z"},
    {"assign, NUL", "a=\0Z\n"s, "a|=|Z"},
    {"assign, quote", "a=\"Y Z\"\n", "a|=|Y Z"},
    {"assign, assign", "a==Z\n", "a|==|Z"},
    {"assign, line feed", "a=\nZ", "a|="},
    {"assign, carriage return", "a=\rZ", "a|="},
    {"assign, comment", "a=;Z\n", "a|="},
    {"assign, separator", "a=,,Z\n", "a|=||Z"},
    {"assign, other", "a=Z\n", "a|=|Z"},
    {"word, blank", "w ,,Z\n", "w||Z"},
    {"word, tab", "w\tZ\n", "w|Z"},
    {"word, NUL", "w\0Z\n"s, "w|Z"},
    {"word, assign", "w=Z\n", "w|=|Z"},
    {"word, line feed", "w\nZ", "w"},
    {"word, carriage return", "w\rZ", "w"},
    {"word, comment", "w;Z\n", "w"},
    {"word, separator", "w,,Z\n", "w||Z"},
    {"word, other", "wZ\n", "wZ"},
};

void expect_fault(const Parsed &parsed, int32_t offset, const std::string &words)
{
    EXPECT_EQ(parsed.result, -offset) << words;
    EXPECT_EQ(global_error, 108u);
    EXPECT_EQ(error_text(), "Error in config file (" + words + ")");
}

std::string words_and_signs(size_t tokens) // "a=a=..."
{
    std::string line;
    for (size_t i = 0; i < tokens; i++) line += i % 2 == 0 ? 'a' : '=';
    return line + "\n";
}

}

TEST(ParseLine, EachCharacterInEachState)
{
    for (const Cell &cell : cells) {
        const Parsed parsed(cell.line);
        EXPECT_EQ(parsed.joined(), cell.tokens) << cell.name;
        EXPECT_EQ(global_error, 0u) << cell.name;
    }
}

TEST(ParseLine, FaultsOfQuotes)
{
    expect_fault(Parsed("\"q\nZ\""), 2, "unmatched quote in line 7");
    expect_fault(Parsed("\"q\rZ\""), 2, "unmatched quote in line 7");
    expect_fault(Parsed("w\"\n"), 1, "misplaced quote in line 7");
    expect_fault(Parsed("key = va\"lue\"\n"), 8, "misplaced quote in line 7");
    expect_fault(Parsed("key = \"value\n"), 12, "unmatched quote in line 7");
}

TEST(ParseLine, LinesWithNothingInThem)
{
    for (const char *line : {"\n", "\r\n", " \t \n", ";\n", "  ; a comment = \"\n", ",\n", " , \n"}) {
        EXPECT_EQ(Parsed(line).result, 0) << line;
        EXPECT_EQ(global_error, 0u) << line;
    }
}

TEST(ParseLine, TheFormsOfAFile)
{
    EXPECT_EQ(Parsed("[defaults]\r\n").joined(), "[defaults]");
    EXPECT_EQ(Parsed("loglevel = 3 ; calls\n").joined(), "loglevel|=|3");
    EXPECT_EQ(Parsed("0xE008 = \"BIN 8x\",,SE80\n").joined(), "0xE008|=|BIN 8x||SE80");
    EXPECT_EQ(Parsed("9895=\"a, b; c = d\" , H,2,30\n").joined(), "9895|=|a, b; c = d|H|2|30");
    EXPECT_EQ(Parsed(",a\n").joined(), "a") << "one separator alone delivers nothing";
    EXPECT_EQ(Parsed("a,b,\n").joined(), "a|b") << "nor does one at the end";
}

TEST(ParseLine, EmptyQuotesAreAnEmptyToken)
{
    const Parsed parsed("a=\"\"\n");
    EXPECT_EQ(parsed.result, 3);
    EXPECT_EQ(parsed.joined(), "a|=|");
    EXPECT_EQ(Parsed("\"a\"\"b\"c\n").joined(), "a|b|c");
}

TEST(ParseLine, BackslashesOfAQuotedText)
{
    EXPECT_EQ(Parsed(R"("a\"b")"
                     "\n")
                  .joined(),
              R"(a"b)");
    EXPECT_EQ(Parsed(R"("a\\b")"
                     "\n")
                  .joined(),
              R"(a\b)");
    EXPECT_EQ(Parsed(R"("a\b")"
                     "\n")
                  .joined(),
              "ab");
    EXPECT_EQ(Parsed(R"(a\b)"
                     "\n")
                  .joined(),
              R"(a\b)")
        << "outside of quotes it is like any other";
}

TEST(ParseLine, KeepsBackslashesOfAQuotedText)
{
    EXPECT_EQ(Parsed(R"("a\\\b")"
                     "\n")
                  .joined(),
              R"(a\\b)");
    EXPECT_EQ(Parsed(R"("a\\\\b")"
                     "\n")
                  .joined(),
              R"(a\\\b)");
    expect_fault(Parsed(R"("C:\\")"
                        "\n"),
                 6, "unmatched quote in line 7");
}

TEST(ParseLine, KeepsNulAsBlank)
{
    EXPECT_EQ(Parsed("a=1\0b=2\n"s).joined(), "a|=|1|b|=|2");
    const Parsed parsed("\"a\0b\"\n"s);
    EXPECT_EQ(parsed.result, 1);
    EXPECT_EQ(parsed.joined(), "a");
}

TEST(ParseLine, KeepsLongLineWithoutNumber)
{
    expect_fault(Parsed("abcd\n", {.bytes = 4}), 4, "line too long in line %");
}

TEST(ParseLine, Hazard_M3_LonePercentSignPrintsAsItStands)
{
    expect_fault(Parsed(std::string(30, '%') + "\n", {.bytes = 8}), 8, "line too long in line %");
}

TEST(ParseLine, Hazard_M11_TokensThatJustFit)
{
    for (const uint32_t most : {1u, 2u, 5u, 256u}) {
        EXPECT_EQ(Parsed(words_and_signs(most), {.tokens = most}).result, static_cast<int32_t>(most));
        expect_fault(Parsed(words_and_signs(most + 1), {.tokens = most}), static_cast<int32_t>(most),
                     "too many entries in line 7");
    }
}

TEST(ParseLine, Hazard_M11_BytesThatJustFit)
{
    const std::string lines[] = {"ab=\"c d\",,x y\n", "abcdefg\n", "\"abc\"\n", "a,,,,b\n", "a;b\n"};
    for (const std::string &line : lines) {
        const Parsed whole(line);
        uint32_t bytes = 0;
        for (const std::string &token : whole.tokens) bytes += static_cast<uint32_t>(token.size()) + 1;
        EXPECT_EQ(Parsed(line, {.bytes = bytes}).tokens, whole.tokens) << line;
        for (uint32_t fewer = 0; fewer < bytes; fewer++) {
            EXPECT_LT(Parsed(line, {.bytes = fewer}).result, 0) << line << fewer;
            EXPECT_EQ(error_text(), "Error in config file (line too long in line %)");
        }
    }
}

TEST(ParseLine, FaultsAtTheVeryBeginningAreFaultsToo)
{
    expect_fault(Parsed("a\n", {.tokens = 0}), 1, "too many entries in line 7");
    expect_fault(Parsed("a\n", {.bytes = 0}), 1, "line too long in line %");
}

TEST(ParseLine, OtherSigns)
{
    char buffer[32];
    char *tokens[8];
    const char *line = "a:b/c#d e\n";
    ASSERT_EQ(parse_line(1, line, ":", "/", "#", "", buffer, sizeof buffer, 8, tokens), 5);
    EXPECT_STREQ(tokens[0], "a");
    EXPECT_STREQ(tokens[1], ":");
    EXPECT_STREQ(tokens[2], "b");
    EXPECT_STREQ(tokens[3], "c");
    EXPECT_STREQ(tokens[4], "d e");
    ASSERT_EQ(parse_line(1, line, ":", "/", "#:", ":", buffer, sizeof buffer, 8, tokens), 4) << "first of all a blank";
    EXPECT_STREQ(tokens[1], "b");
}

TEST(ParseLine, MissingPointers)
{
    char buffer[8];
    char *cell = nullptr;
    for (int missing = 0; missing < 7; missing++) {
        auto given = [missing](int which, const char *text) { return which == missing ? nullptr : text; };
        tests::forget_error();
        EXPECT_EQ(parse_line(1, given(0, "a\n"), given(1, "="), given(2, ","), given(3, " "), given(4, ";"),
                             missing == 5 ? nullptr : buffer, sizeof buffer, 1, missing == 6 ? nullptr : &cell),
                  -1);
        EXPECT_EQ(error_text(), "Invalid parameter (NULL pointer)");
    }
}

TEST(ParseLine, AnyBytesStayInsideTheLimits)
{
    const std::string common = "=,;\"\\ \t\r a0";
    std::mt19937 random(1);
    auto below = [&random](size_t limit) { return static_cast<uint32_t>(random() % limit); };
    uint32_t good = 0;
    uint32_t bad = 0;
    for (int round = 0; round < 20000; round++) {
        std::string line;
        for (uint32_t length = below(40); length > 0; length--)
            line += below(4) == 0 ? static_cast<char>(below(256)) : common[below(common.size())];
        line += '\n';
        const Parsed parsed(line, {.bytes = below(32), .tokens = below(8)});
        if (parsed.result < 0) {
            EXPECT_EQ(global_error, 108u);
            EXPECT_LE(-parsed.result, static_cast<int32_t>(line.size()));
        }
        (parsed.result < 0 ? bad : good)++;
    }
    EXPECT_GT(good, 1000u);
    EXPECT_GT(bad, 1000u);
}
