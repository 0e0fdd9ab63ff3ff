// Text on its way into the kinds of content: where a line ends, which types have a kind, and the four kinds in whole.
#include <gtest/gtest.h>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/volume/insert_support.h"
#include "volume/insert_inner.h"

using namespace tests;
using namespace tests::insertion;

namespace
{

constexpr uint16_t convert = INSERT_CONVERT | INSERT_FORCE;

// What a text becomes in a file of a type on a LIF volume.
Bytes converted(std::string_view text, const FileInfo &as = {})
{
    const OpenVolume open(roomy_volume(2000));
    const Scratch folder;
    const TemporaryFolder temporary;
    const Added added = add(open.md, folder.file("NEW", text), convert, as);
    EXPECT_EQ(added.result, 10) << added.error;
    EXPECT_EQ(temporary.files(), 0u);
    const uint32_t records = (added.info.size + 255) / 256;
    const Bytes whole = records_at(open.file, 10, records);
    EXPECT_EQ(part_of(whole, added.info.size, 256), repeated(0, whole.size() - added.info.size));
    return part_of(whole, 0, added.info.size);
}

// The lines that LIF ASCII records hold.
Lines lines_of(const Bytes &content)
{
    Lines lines;
    size_t at = 0;
    while (at + 2 <= content.size()) {
        const size_t length = content[at] * size_t{256} + content[at + 1];
        if (length == 0xFFFF) break;
        lines.push_back(text_of(part_of(content, at + 2, length)));
        at += 2 + (length + 1) / 2 * 2;
    }
    EXPECT_EQ(at + 2, content.size());
    return lines;
}

struct LineRow {
    const char *name;
    std::string_view text;
    Lines lines;
};

using namespace std::string_view_literals;

}

TEST(SourceLines, EndAtTheirLineFeeds)
{
    const LineRow rows[] = {
        {"nothing", ""sv, {}},
        {"line feed", "A\nB\n"sv, {"A", "B"}},
        {"both", "A\r\nB\r\n"sv, {"A", "B"}},
        {"no end at the end", "A\nB"sv, {"A", "B"}},
        {"carriage return alone at the end", "A\nB\r"sv, {"A", "B"}},
        {"carriage returns alone are text", "A\rB\r"sv, {"A\rB"}},
        {"line feed first", "A\n\rB\n\r"sv, {"A", "\rB", ""}},
        {"at most two are taken off", "A\r\r\nB\r\r\r\n"sv, {"A\r", "B\r\r"}},
        {"two carriage returns at the end", "A\r\r"sv, {"A"}},
        {"three carriage returns at the end", "A\r\r\r"sv, {"A\r"}},
        {"empty lines", "\n\r\n\n"sv, {"", "", ""}},
        {"an end alone", "\r"sv, {""}},
        {"blanks and tabs stay", " A\t \n"sv, {" A\t "}},
        {"control Z is text", "A\n\x1A"sv, {"A", "\x1A"}},
    };
    for (const LineRow &row : rows) EXPECT_EQ(lines_of(converted(row.text)), row.lines) << row.name;
}

TEST(SourceLines, Hazard_I7_ANulEndsTheLine)
{
    EXPECT_EQ(lines_of(converted("AB\0CD\nEF\n"sv)), (Lines{"AB", "EF"}));
    EXPECT_EQ(lines_of(converted("\0AB\n\0"sv)), (Lines{"", ""}));
    EXPECT_EQ(lines_of(converted("A\0B"sv)), (Lines{"A"}));
}

TEST(SourceLines, Hazard_I7_ANulEndsTheLineInEveryKind)
{
    EXPECT_EQ(converted("AB\0CD\nE\n"sv, typed(0xE848, "DATA")),
              (Bytes{0, 60, 0, 2, 'A', 'B', 0, 60, 0, 1, 'E', 13, 0, 62}));
    EXPECT_EQ(part_of(converted("AB\0CD\nE\n"sv, typed(0xEA3E, "TEXT")), 1024, 10),
              (Bytes{16, 32, 'A', 'B', 13, 16, 32, 'E', 13, 0}));
    EXPECT_EQ(part_of(converted("10 A\0B\n7 E\n"sv, typed(0xE052, "TXT75")), 28, 9),
              (Bytes{0x10, 0, 1, 'A', 0x07, 0, 1, 'E', 0x99}));
}

TEST(SourceLines, PiecesOf65534CharactersAreLines)
{
    const std::string most(65534, 'x');
    EXPECT_TRUE(lines_of(converted(most.substr(1) + "\nA\n")) == (Lines{most.substr(1), "A"}));
    EXPECT_TRUE(lines_of(converted(most)) == (Lines{most}));
    EXPECT_TRUE(lines_of(converted(most + "\nA\n")) == (Lines{most, "", "A"})); // the line feed is a piece of its own
    EXPECT_TRUE(lines_of(converted(most + "y\nA\n")) == (Lines{most, "y", "A"}));
    EXPECT_TRUE(lines_of(converted(most + most + "y")) == (Lines{most, most, "y"}));
    EXPECT_TRUE(lines_of(converted(most.substr(1) + "\r\nA")) ==
                (Lines{most.substr(1), "", "A"})); // its end is divided
    EXPECT_TRUE(lines_of(converted(most.substr(2) + "\r\nA")) == (Lines{most.substr(2), "A"}));
}

TEST(SourceLines, TheEndsThatAreTakenOff)
{
    struct Row {
        std::string_view text;
        uint32_t left;
    };
    const Row rows[] = {{""sv, 0},       {"\n"sv, 0},       {"\r"sv, 0},     {"\r\n"sv, 0},      {"\n\r"sv, 0},
                        {"\r\r"sv, 0},   {"\n\n"sv, 0},     {"\r\r\n"sv, 1}, {"AB"sv, 2},        {"AB\n"sv, 2},
                        {"AB\r\n"sv, 2}, {"AB\r\r\n"sv, 3}, {"A\nB"sv, 3},   {"AB\r\r\r\n"sv, 4}};
    for (const Row &row : rows)
        EXPECT_EQ(without_line_end(row.text.data(), static_cast<uint32_t>(row.text.size())), row.left) << row.text;
}

// ---- kinds --------------------------------------------------------------------------------------------------------

TEST(InsertKinds, FourTypesOfALifVolumeAreConverted)
{
    EXPECT_EQ(converted("AB\n"), (Bytes{0, 2, 'A', 'B', 0xFF, 0xFF}));
    EXPECT_EQ(converted("AB\n", typed(0xE848, "DATA")), (Bytes{0, 60, 0, 2, 'A', 'B', 0, 62}));
    EXPECT_EQ(converted("AB\n", typed(0xEA3E, "TEXT")).size(), 2048u);
    EXPECT_EQ(converted("AB\n", typed(0xE052, "TXT75")).size(), 256u);
}

TEST(InsertKinds, AllOthersGoInAsTheyAre)
{
    for (const uint16_t type :
         Words{0x0003, 0xE010, 0xE020, 0xE0D0, 0xE0D5, 0xE053, 0xE961, 0xE9C9, 0xE849, 0xEA32, 0xEA3F})
        EXPECT_EQ(converted("A\n", typed(type, "X")), (Bytes{'A', '\n'})) << type;
}

TEST(InsertKinds, System45ConvertsDataOfEverySystem)
{
    const Scratch folder;
    const std::string path = folder.file("NEW", "AB\n");
    const Bytes items = {0, 60, 0, 2, 'A', 'B', 0, 62};
    for (const uint16_t type : Words{0x2400, 0xA400, 0x24FF, 0xA4C0}) {
        const auto disc = disc_with({{30, 100}});
        EXPECT_EQ(add(&disc->md, path, convert, typed(type, "DATA")).info.size, 8u) << type;
        EXPECT_EQ(part_of(records_at(disc->file, 30, 1), 0, 8), items) << type;
    }
    for (const uint16_t type : Words{0x2600, 0x0400, 0xC800, 0x0024, 0x3C00}) {
        const auto disc = disc_with({{30, 100}});
        EXPECT_EQ(add(&disc->md, path, convert, typed(type, "X")).info.size, 3u) << type;
    }
    for (const uint16_t type : Words{36, 164, 0x1224}) {
        const auto hand = tape();
        EXPECT_EQ(add(&hand->md, path, convert, typed(type, "DATA")).info.size, 8u) << type;
    }
    for (const uint16_t type : Words{0x2400, 72, 37}) {
        const auto hand = tape();
        EXPECT_EQ(add(&hand->md, path, convert, typed(type, "X")).info.size, 3u) << type;
    }
}

TEST(InsertKinds, OtherFormatsConvertNothing)
{
    const Scratch folder;
    const std::string path = folder.file("NEW", "AB\n");
    for (const uint16_t type : Words{0xE9C9, 0x0001, 0xE848, 0x2400, 0xE052, 0xEA3E}) {
        const auto hand = tape();
        hand->md.format = FORMAT_SDF;
        hand->md.dir_entry_size = 24;
        EXPECT_EQ(add(&hand->md, path, convert, typed(type, "X")).info.size, 3u) << type;
    }
}

TEST(InsertKinds, TheTypeOfTheExtensionSettlesTheKind)
{
    const OpenVolume open(three_files());
    const Scratch folder;
    EXPECT_EQ(add(open.md, folder.file("A.TXT75", "1 A\n"), convert).info.size, 256u);
    EXPECT_EQ(add(open.md, folder.file("B.BDAT", "1 A\n"), convert, typed(1, "ASCII")).info.size, 4u);
}

TEST(InsertKinds, TheHp75HeadHasNameAndDateOfTheEntry)
{
    const OpenVolume open(three_files());
    const Scratch folder;
    const std::string path = folder.file("LONGNAME9.TXT75", "10 REM\n");
    TimeRecord time{};
    time.tm_mday = 2;
    time.tm_year = 100;
    ASSERT_EQ(file_set_time(path.c_str(), &time), 0);
    EXPECT_EQ(add(open.md, path, convert).result, 10);
    const Bytes content = records_at(open.file, 10, 1);
    EXPECT_EQ(text_of(part_of(content, 10, 8)), "LONGNAME");
    const uint32_t seconds =
        content[6] + content[7] * 0x100u + content[8] * 0x10000u + content[9] * 0x1000000u; // of 2 January 2000
    EXPECT_LE(seconds, 3155760000u + 15 * 3600);
    EXPECT_GE(seconds, 3155760000u - 15 * 3600);
    EXPECT_EQ(part_of(content, 28, 6), (Bytes{0x10, 0, 3, 'R', 'E', 'M'}));
}

TEST(InsertKinds, ACutLineIsSaidWithThePathAndItsNumber)
{
    const OpenVolume open(three_files());
    const Scratch folder;
    const std::string path = folder.file("A.TXT75.txt", "1 A\n\n" + std::string(97, '1') + "\n");
    std::string text;
    {
        const LogCapture log(1);
        EXPECT_EQ(add(open.md, path, INSERT_CONVERT | INSERT_TXT).result, 10);
        text = log.text();
    }
    EXPECT_EQ(text, "Warning: File " + path + " exceeds max. line length for TEXT files in line 3 (truncated).\n");
}

TEST(InsertKinds, ALargeTextGoesInWhole)
{
    std::string text;
    Bytes expected;
    for (int i = 0; i < 6000; ++i) {
        const std::string line = "This is line " + std::to_string(i);
        text += line + "\r\n";
        expected.insert(expected.end(), {0, static_cast<uint8_t>(line.size())});
        expected.insert(expected.end(), line.begin(), line.end());
        if (line.size() % 2 == 1) expected.push_back(' ');
    }
    expected.insert(expected.end(), {0xFF, 0xFF});
    EXPECT_TRUE(converted(text) == expected);
}

TEST(InsertKinds, TheSourceStaysAsItWas)
{
    const OpenVolume open(three_files());
    const Scratch folder;
    const std::string path = folder.file("A.txt", "A\r\nB");
    EXPECT_EQ(add(open.md, path, INSERT_CONVERT | INSERT_TXT).result, 10);
    EXPECT_EQ(content(path), "A\r\nB");
}
