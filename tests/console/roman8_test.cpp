#include "console/roman8.h"

#include <string>

#include <gtest/gtest.h>

namespace
{

std::string from_roman8(std::string_view source)
{
    std::string target(source.size() * utf8_bytes, '\0');
    target.resize(roman8_to_utf8(target.data(), source));
    return target;
}

std::string repaired(std::string_view source)
{
    std::string target(source.size() * utf8_bytes, '\0');
    target.resize(repair_utf8(target.data(), source));
    return target;
}

std::string code_range(int first, int last)
{
    std::string text;
    for (int code = first; code <= last; ++code) text += static_cast<char>(code);
    return text;
}

const char replacement[] = "\xEF\xBF\xBD";

struct Row {
    int first; // code of the first letter
    const char *letters;
};
const Row rows[] = {
    {0xA0, "\u00A0ÀÂÈÊËÎÏ"}, {0xA8, "´ˋˆ¨˜ÙÛ₤"}, {0xB0, "¯Ýý°ÇçÑñ"}, {0xB8, "¡¿¤£¥§ƒ¢"},
    {0xC0, "âêôûáéóú"},      {0xC8, "àèòùäëöü"}, {0xD0, "ÅîØÆåíøæ"}, {0xD8, "ÄìÖÜÉïßÔ"},
    {0xE0, "ÁÃãÐðÍÌÓ"},      {0xE8, "ÒÕõŠšÚŸÿ"}, {0xF0, "Þþ·µ¶¾—¼"}, {0xF8, "½ªº«■»±\uFFFD"},
};

}

TEST(Roman8, LettersFromA0Onward)
{
    for (const Row &row : rows) {
        EXPECT_EQ(from_roman8(code_range(row.first, row.first + 7)), row.letters) << "from " << row.first;
    }
}

TEST(Roman8, LowHalfStays)
{
    const std::string low = code_range(0, 127);
    EXPECT_EQ(from_roman8(low), low);
}

TEST(Roman8, CodesFrom80To9FAreControlCharacters)
{
    for (int code = 0x80; code <= 0x9F; ++code) {
        const std::string expected = {'\xC2', static_cast<char>(code)};
        EXPECT_EQ(from_roman8(code_range(code, code)), expected) << code;
    }
}

TEST(Roman8, LastCodeHasNoMeaning)
{
    EXPECT_EQ(from_roman8("\xFF"), replacement);
}

TEST(Roman8, EveryCodeIsWellFormedAndFitsTheRoomPromised)
{
    for (int code = 0; code <= 255; ++code) {
        const std::string text = from_roman8(code_range(code, code));
        EXPECT_LE(text.size(), utf8_bytes) << code;
        EXPECT_EQ(repaired(text), text) << code;
    }
}

TEST(Roman8, EmptyTextStaysEmpty)
{
    EXPECT_EQ(from_roman8(""), "");
}

TEST(HostText, WellFormedTextStays)
{
    for (const char *text :
         {"", "abc/d.lif", "\u007F\u0080\u07FF\u0800\uD7FF\uE000\uFFFF", "\U00010000\U0010FFFF", "größe"}) {
        EXPECT_EQ(repaired(text), text);
    }
}

TEST(HostText, BytesThatBelongToNoCharacterAreReplacedOneByOne)
{
    const std::string r = replacement;
    struct Case {
        const char *name;
        std::string source;
        std::string expected;
    };
    const Case cases[] = {
        {"a byte of Latin-1", "a\xE4z", "a" + r + "z"},
        {"a follower alone", "\x80x", r + "x"},
        {"too long a form of NUL", "\xC0\x80", r + r},
        {"too long a form of two", "\xE0\x9F\xBF", r + r + r},
        {"a surrogate", "\xED\xA0\x80", r + r + r},
        {"beyond the last plane", "\xF4\x90\x80\x80", r + r + r + r},
        {"no first byte", "\xF5\xFF", r + r},
        {"a character cut off by the end", "ab\xE2\x82", "ab" + r + r},
        {"a character cut off by another", "\xE2\x82\xC3\xA4", r + r + "\u00E4"},
    };
    for (const Case &row : cases) EXPECT_EQ(repaired(row.source), row.expected) << row.name;
}
