// Out of a volume and in again, and the other way: what comes back as it was, and what by design does not.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <random>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/volume/insert_support.h"
#include "volume/extract.h"
#include "volume/names.h"
#include "volume/table.h"

using namespace tests;
using namespace tests::insertion;

namespace
{

constexpr uint16_t convert = INSERT_CONVERT | INSERT_FORCE;

// A file of a volume as the host gets it.
Bytes taken_out(MediaDescriptor *md, const FileInfo *info, uint16_t flags = 0)
{
    const Scratch folder;
    const std::string path = folder.path("out");
    EXPECT_GE(image_extract_file(md, info, nullptr, path.c_str(), nullptr, flags, nullptr), 0) << error_text();
    return exists(path) ? read_file(path) : Bytes{};
}

struct Target { // a volume with room, and a folder for the sources
    explicit Target(uint32_t headers = 0) : open(roomy_volume(3000))
    {
        open.md->use_file_headers = headers;
    }
    FileInfo *put(const std::string &name, const Bytes &bytes, uint16_t flags = 0)
    {
        const Added added = add(open.md, folder.file(name, text_of(bytes)), flags | INSERT_OVERWRITE);
        EXPECT_GE(added.result, 10) << name << " " << added.error;
        return entry_named(open.md, added.info.name);
    }
    Bytes out(const std::string &name, const Bytes &bytes, uint16_t in_flags, uint16_t out_flags)
    {
        FileInfo *info = put(name, bytes, in_flags);
        if (info == nullptr) return {};
        return taken_out(open.md, info, out_flags);
    }

    OpenVolume open;
    Scratch folder;
};

std::string text_through(const std::string &name, const std::string &text)
{
    Target target;
    return text_of(target.out(name, bytes_of(text), convert, EXTRACT_CONVERT));
}

std::string with_ends(const Lines &lines, const char *end)
{
    std::string text;
    for (const std::string &line : lines) text += line + end;
    return text;
}

std::string printable(std::mt19937 *numbers, size_t length)
{
    std::string line(length, ' ');
    for (char &character : line) character = static_cast<char>('!' + (*numbers)() % 94);
    return line;
}

std::string sample(const char *name)
{
    const char *folder = std::getenv("TARVO_SAMPLES");
    const std::string path = folder == nullptr ? "" : (std::filesystem::path(folder) / name).string();
    return exists(path) ? path : "";
}

// The records of a LIF ASCII file without their fill bytes.
Lines ascii_lines(const Bytes &content)
{
    Lines lines;
    for (size_t at = 0; at + 2 <= content.size();) {
        const size_t length = content[at] * size_t{256} + content[at + 1];
        if (length == 0xFFFF) return lines;
        lines.push_back(text_of(part_of(content, at + 2, length)));
        at += 2 + (length + 1) / 2 * 2;
    }
    ADD_FAILURE() << "no end mark";
    return lines;
}

}

// ---- as it is ----------------------------------------------------------------------------------------------------

TEST(RoundTrip, BytesOfEverySizeComeBack)
{
    for (const size_t bytes : {0u, 1u, 255u, 256u, 257u, 1000u, 65536u, 70001u}) {
        Target target;
        const Bytes content = numbered(bytes);
        EXPECT_TRUE(target.out("FILE.BAS8x", content, 0, 0) == content) << bytes;
    }
}

TEST(RoundTrip, AReopenedVolumeHasWholeRecords)
{
    Target target;
    target.put("FILE.BAS8x", numbered(1000));
    EXPECT_EQ(update_file_table(target.open.md, 0), 0);
    const Medium again(target.open.file.path());
    EXPECT_TRUE(taken_out(again.md, entry_named(again.md, "FILE")) == in_records(numbered(1000)));
}

TEST(RoundTrip, NamesComposedOnTheWayOutAreTakenApartOnTheWayIn)
{
    LifVolume volume = demo_volume();
    const OpenVolume from(volume);
    for (const char *name : {"README", "RESULTS", "NOTEST____", "SORTC_____", "SECRET", "NODATE"}) {
        const Scratch folder;
        const FileInfo *info = entry_named(from.md, name);
        char visible[VISIBLE_NAME_SIZE] = "";
        ASSERT_EQ(image_extract_file(from.md, info, folder.folder().c_str(), nullptr, visible, 0, nullptr) >= 0, true);
        const OpenVolume to(roomy_volume(400));
        const Added added = add(to.md, folder.path(visible));
        EXPECT_EQ(added.result, 10) << visible;
        EXPECT_STREQ(added.info.name, name);
        EXPECT_EQ(added.info.type, info->type) << visible;
        EXPECT_EQ(added.info.record_len, info->record_len) << visible;
        EXPECT_EQ(added.info.size, info->size) << visible;
        EXPECT_TRUE(records_at(to.file, 10, info->size / 256) ==
                    records_at(from.file, info->location, info->size / 256))
            << visible;
    }
}

// ---- behind a header ---------------------------------------------------------------------------------------------

TEST(RoundTrip, AFileThroughABasicHeaderLosesTwoRecords)
{
    for (const uint32_t records : {0u, 1u, 2u, 3u, 10u}) {
        Target target(1);
        const Bytes content = numbered(records * 256);
        target.open.md->use_file_headers = 0;
        FileInfo *info = target.put("FILE.BDAT", content);
        target.open.md->use_file_headers = 1;
        const Bytes outside = taken_out(target.open.md, info);
        EXPECT_EQ(outside.size(), 512 + content.size()) << records;
        const FileInfo *back = target.put("FILE.BDAT", outside);
        EXPECT_EQ(back->size, records < 2 ? 0u : records * 256 - 512) << records;
        EXPECT_EQ(back->type, 0xE961u);
        EXPECT_TRUE(records_at(target.open.file, 10, back->size / 256) == part_of(content, 0, back->size)) << records;
    }
}

TEST(RoundTrip, AFileThroughACalcHeaderComesBackWhole)
{
    for (const uint32_t records : {0u, 1u, 2u, 10u}) {
        Target target;
        const Bytes content = numbered(records * 256);
        FileInfo *info = target.put("FILE.X-M41", content);
        info->date.tm_year = 83;
        info->date.tm_mon = 5;
        info->lif_impl[2] = 77;
        target.open.md->use_file_headers = 2;
        const Bytes outside = taken_out(target.open.md, info);
        EXPECT_EQ(outside.size(), 32 + content.size());
        const FileInfo *back = target.put("OTHER", outside);
        EXPECT_EQ(back->size, content.size());
        EXPECT_EQ(back->type, 0xE070u);
        EXPECT_EQ(back->date.tm_year, 83);
        EXPECT_EQ(back->date.tm_mon, 5);
        EXPECT_EQ(back->lif_impl[2], 77);
        EXPECT_STREQ(back->name, "OTHER"); // the header's name is not read
    }
}

TEST(RoundTrip, TheLastRecordBehindAHeaderIsAWholeOne)
{
    Target target;
    FileInfo *info = target.put("FILE.X-M41", numbered(700));
    target.open.md->use_file_headers = 2;
    const Bytes outside = taken_out(target.open.md, info);
    const FileInfo *back = target.put("FILE.X-M41", outside);
    EXPECT_EQ(back->size, 768u); // a header counts records
    EXPECT_TRUE(records_at(target.open.file, 10, 3) == in_records(numbered(700)));
}

// ---- texts -------------------------------------------------------------------------------------------------------

TEST(RoundTrip, RandomLinesComeBackAsAsciiRecords)
{
    std::mt19937 numbers(40);
    for (int round = 0; round < 40; ++round) {
        Lines lines;
        for (size_t count = numbers() % 20; count > 0; --count)
            lines.push_back(printable(&numbers, 1 + numbers() % (round % 4 == 0 ? 3000 : 100)));
        EXPECT_EQ(text_through("A.ASCII", with_ends(lines, "\n")), with_ends(lines, "\r\n")) << round;
    }
}

TEST(RoundTrip, RandomLinesComeBackAsDataItems)
{
    std::mt19937 numbers(41);
    for (int round = 0; round < 40; ++round) {
        Lines lines;
        for (size_t count = numbers() % 20; count > 0; --count)
            lines.push_back(printable(&numbers, numbers() % (round % 4 == 0 ? 3000 : 270)));
        EXPECT_EQ(text_through("A.DATA", with_ends(lines, "\r\n")), with_ends(lines, "\r\n")) << round;
    }
}

TEST(RoundTrip, RandomLinesComeBackAsPascalText)
{
    std::mt19937 numbers(42);
    for (int round = 0; round < 40; ++round) {
        Lines lines;
        size_t position = 0; // in the pages
        for (size_t count = numbers() % 30; count > 0; --count) {
            size_t length = numbers() % 990;
            if (position % 1024 + length + 3 > 1024) position = (position + 1023) / 1024 * 1024;
            // An indentation of which a block has not both bytes is text on the way out.
            if ((position + length + 3) % 256 == 255) length++;
            position += length + 3;
            lines.push_back(std::string(numbers() % 30, ' ') + printable(&numbers, length));
        }
        EXPECT_EQ(text_through("A.TEXT", with_ends(lines, "\n")), with_ends(lines, "\r\n")) << round;
    }
}

TEST(RoundTrip, RandomLinesComeBackAsHp75Text)
{
    std::mt19937 numbers(43);
    for (int round = 0; round < 40; ++round) {
        Lines lines;
        uint32_t line_number = 1;
        for (size_t count = numbers() % 50; count > 0;
             --count, line_number += 1 + static_cast<uint32_t>(numbers() % 150)) {
            char start[16];
            snprintf(start, sizeof start, "%4u ", line_number);
            lines.push_back(start + printable(&numbers, numbers() % 88));
        }
        const std::string back = text_through("A.TXT75", with_ends(lines, "\n"));
        // A line head of which a block has not all is passed over on the way out, so the first block decides.
        const std::string whole = with_ends(lines, "\r\n");
        if (whole.size() < 200) {
            EXPECT_EQ(back, whole) << round;
        } else {
            EXPECT_EQ(back.substr(0, 150), whole.substr(0, 150)) << round;
        }
    }
}

// ---- where the two directions differ -----------------------------------------------------------------------------

TEST(DirectionsDiffer, NumbersOfDataFilesComeBackAsStrings)
{
    Target target;
    const Bytes items = {0, 10, 0, 42, 0, 60, 0, 1, 'A', 13, 0, 62};
    const Bytes text = target.out("F.DATA", items, 0, EXTRACT_CONVERT);
    EXPECT_EQ(text_of(text), "42\nA\r\n");
    target.put("F.DATA", text, convert);
    EXPECT_EQ(part_of(records_at(target.open.file, 10, 1), 0, 14),
              (Bytes{0, 60, 0, 2, '4', '2', 0, 60, 0, 1, 'A', 13, 0, 62}));
}

TEST(DirectionsDiffer, BdatFilesHaveNoWayBack)
{
    Target target;
    const Bytes items = {0xDF, 2, 0, 'A', 'B', 0xEF, 0, 0};
    EXPECT_EQ(text_of(target.out("F.DTA8x", items, 0, EXTRACT_CONVERT)), "AB\r\n");
    target.put("F.DTA8x", bytes_of("AB\r\n"), convert);
    EXPECT_EQ(part_of(records_at(target.open.file, 10, 1), 0, 5), (Bytes{'A', 'B', '\r', '\n', 0}));
}

TEST(DirectionsDiffer, EmptyLinesOfAsciiFilesAreLostOnTheWayOut)
{
    Target target;
    const FileInfo *info = target.put("F.ASCII", bytes_of("A\n\nB\n"), convert);
    EXPECT_EQ(ascii_lines(records_at(target.open.file, 10, 1)), (Lines{"A", "", "B"}));
    EXPECT_EQ(text_of(taken_out(target.open.md, info, EXTRACT_CONVERT)), "A\r\nB\r\n");
}

TEST(DirectionsDiffer, TheConversionBitAloneIsEnoughOnTheWayOutOnly)
{
    Target target;
    const FileInfo *info = target.put("F.ASCII", bytes_of("AB\n"), INSERT_CONVERT);
    EXPECT_EQ(info->size, 3u);
    info = target.put("F.ASCII", bytes_of("AB\n"), convert);
    EXPECT_EQ(info->size, 6u);
    EXPECT_EQ(text_of(taken_out(target.open.md, info, EXTRACT_CONVERT)), "AB\r\n");
    EXPECT_EQ(taken_out(target.open.md, info, EXTRACT_FORCE).size(), 6u);
}

TEST(DirectionsDiffer, TheBasicHeaderIsCheckedAndTheCalcHeaderIsNot)
{
    Target target(1);
    EXPECT_EQ(target.put("F.BDAT", Bytes(600, 0))->size, 600u);
    target.open.md->use_file_headers = 2;
    Bytes content(600, 0);
    content[11] = 1;                                    // the type
    EXPECT_EQ(target.put("F.BDAT", content)->size, 0u); // that is the number at its byte 16
}

TEST(DirectionsDiffer, TheHp75HeadIsNotReadOnTheWayOut)
{
    Target target;
    const FileInfo *info = target.put("F.TXT75", bytes_of("10 REM\n"), convert);
    Bytes image = target.open.file.bytes();
    for (size_t i = 0; i < 18; ++i) {
        if (i != 5) image[10 * 256 + i] = 0x5A; // but for the letter that makes it a text
    }
    target.open.file.replace(image);
    EXPECT_EQ(text_of(taken_out(target.open.md, info, EXTRACT_CONVERT)), "  10 REM\r\n");
}

TEST(DirectionsDiffer, PascalAndHp75TextsKeepTheirCharacters)
{
    EXPECT_EQ(text_through("A.TEXT", "\x84\xCC\n"), "\x84\xCC\r\n");
    EXPECT_EQ(text_through("A.TXT75", "10 \x84\xCC\n"), "  10 \x84\xCC\r\n");
    Target target;
    target.put("A.TEXT", bytes_of("\x84\n"), convert);
    EXPECT_EQ(records_at(target.open.file, 14, 1)[2], 0x84);
    target.put("A.TXT75", bytes_of("1 \x84\n"), convert);
}

TEST(DirectionsDiffer, AsciiAndDataExchangeTheirCharactersBothWays)
{
    EXPECT_EQ(text_through("A.ASCII", "\x84\x94\x81\n"), "\x84\x94\x81\r\n");
    Target target;
    target.put("A.ASCII", bytes_of("\x84\n"), convert);
    EXPECT_EQ(records_at(target.open.file, 10, 1)[2], 0xCC);
    Target other;
    const FileInfo *info = other.put("A.DATA", bytes_of("\x84\n"), convert);
    EXPECT_EQ(records_at(other.open.file, 10, 1)[4], 0xCC);
    EXPECT_EQ(text_of(taken_out(other.open.md, info, EXTRACT_CONVERT)), "L\r\n"); // of seven bits on the way out
}

TEST(DirectionsDiffer, EveryLineEndBecomesBothOnTheWayOut)
{
    for (const char *text : {"A\nB\n", "A\r\nB\r\n", "A\nB\r", "A\r\nB"})
        EXPECT_EQ(text_through("A.ASCII", text), "A\r\nB\r\n") << text;
}

// ---- files of real machines --------------------------------------------------------------------------------------

TEST(RoundTripSamples, EveryFileOfTheHp85VolumeComesBackOnAFreshOne)
{
    const std::string path = sample("hp85.lif");
    if (path.empty()) GTEST_SKIP() << "hp85.lif is not in the folder that TARVO_SAMPLES names";
    const Medium from(path, OPEN_READ_VOLUME | OPEN_READ_ONLY);
    ASSERT_TRUE(from);
    const Bytes original = read_file(path);
    LifVolume fresh;
    fresh.tracks = 70;
    const OpenVolume to(fresh);
    const Scratch folder;
    uint32_t next = 4;
    uint32_t count = 0;
    for (const FileInfo *info = from.md->root; info != nullptr; info = info->next, ++count) {
        char visible[VISIBLE_NAME_SIZE] = "";
        ASSERT_GE(image_extract_file(from.md, info, folder.folder().c_str(), nullptr, visible, 0, nullptr), 0);
        EXPECT_EQ(read_file(folder.path(visible)), part_of(original, info->location * size_t{256}, info->size));
        const Added added = add(to.md, folder.path(visible), 0, typed(info->type, type_text(*info)));
        EXPECT_EQ(added.result, static_cast<int32_t>(next)) << visible;
        EXPECT_STREQ(added.info.name, info->name);
        next += info->size / 256;
    }
    EXPECT_EQ(count, 10u);
    EXPECT_EQ(update_file_table(to.md, 0), 0) << error_text();
    const Medium again(to.file.path());
    EXPECT_EQ(names(again.md), names(from.md));
    const Bytes image = to.file.bytes();
    const FileInfo *copy = again.md->root;
    for (const FileInfo *info = from.md->root; info != nullptr; info = info->next, copy = copy->next) {
        ASSERT_NE(copy, nullptr);
        EXPECT_EQ(copy->size, info->size) << info->name;
        EXPECT_TRUE(part_of(image, copy->location * size_t{256}, copy->size) ==
                    part_of(original, info->location * size_t{256}, info->size))
            << info->name;
    }
}

TEST(RoundTripSamples, WithoutTypedExtensionsTheTypeOfTheCallerStays)
{
    const std::string path = sample("hp85.lif");
    if (path.empty()) GTEST_SKIP() << "hp85.lif is not in the folder that TARVO_SAMPLES names";
    const Medium from(path, OPEN_READ_VOLUME | OPEN_READ_ONLY);
    ASSERT_TRUE(from);
    LifVolume fresh;
    fresh.tracks = 70;
    const OpenVolume to(fresh);
    to.md->use_typed_extensions = 0;
    const Scratch folder;
    for (const FileInfo *info = from.md->root; info != nullptr; info = info->next) {
        const std::string host = folder.path(info->name);
        ASSERT_GE(image_extract_file(from.md, info, nullptr, host.c_str(), nullptr, 0, nullptr), 0);
        EXPECT_GT(add(to.md, host, 0, typed(info->type, type_text(*info))).result, 0) << info->name;
    }
    EXPECT_EQ(update_file_table(to.md, 0), 0);
    const Medium again(to.file.path());
    const FileInfo *copy = again.md->root;
    for (const FileInfo *info = from.md->root; info != nullptr; info = info->next, copy = copy->next) {
        ASSERT_NE(copy, nullptr);
        EXPECT_EQ(copy->type, info->type) << info->name;
        EXPECT_EQ(copy->records, info->records) << info->name;
    }
}

TEST(RoundTripSamples, TextsBecomeTheRecordsThatAreOnTheVolume)
{
    const std::string path = sample("text.lif");
    if (path.empty() || sample("text").empty())
        GTEST_SKIP() << "text.lif and text are not in the folder that TARVO_SAMPLES names";
    const Bytes original = read_file(path);
    const struct {
        const char *source;
        size_t location;
    } rows[] = {{"text/NOTES.txt", 10}, {"text/LONG.txt", 64}};
    for (const auto &row : rows) {
        const OpenVolume open(roomy_volume(400));
        const Added added = add(open.md, sample(row.source), INSERT_CONVERT | INSERT_TXT);
        ASSERT_EQ(added.result, 10) << row.source;
        EXPECT_EQ(added.info.type, 1u);
        const Bytes ours = records_at(open.file, 10, added.info.records);
        EXPECT_EQ(ascii_lines(ours), ascii_lines(part_of(original, row.location * 256, original.size())));
        // What fills up an odd record there is a NUL.
        Bytes theirs = part_of(original, row.location * 256, ours.size());
        for (size_t i = 0; i < ours.size(); ++i)
            EXPECT_TRUE(ours[i] == theirs[i] || (ours[i] == ' ' && theirs[i] == 0)) << row.source << " " << i;
    }
}

TEST(RoundTripSamples, AnHp75TextBecomesTheLinesThatAreOnTheVolume)
{
    const std::string path = sample("text.lif");
    if (path.empty() || sample("text/PROG75.txt").empty())
        GTEST_SKIP() << "text.lif and text are not in the folder that TARVO_SAMPLES names";
    const Bytes theirs = part_of(read_file(path), 116 * 256, 768);
    const OpenVolume open(roomy_volume(400));
    const Scratch folder;
    const std::string source = folder.file("PROG75.TXT75.txt", text_of(read_file(sample("text/PROG75.txt"))));
    ASSERT_EQ(add(open.md, source, INSERT_CONVERT | INSERT_TXT).result, 10);
    const Bytes ours = records_at(open.file, 10, 3);
    EXPECT_EQ(part_of(ours, 0, 6), part_of(theirs, 0, 6));
    const size_t length = theirs[2] + size_t{theirs[3]} * 256 + 18;
    EXPECT_EQ(part_of(ours, 28, length - 28), part_of(theirs, 28, length - 28));
    EXPECT_EQ(part_of(ours, length, 768), repeated(0, 768 - length));
    EXPECT_EQ(text_of(part_of(ours, 10, 8)), "PROG75  ");
}
