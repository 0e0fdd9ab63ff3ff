// New volumes: what is on them, from which options.
#include <algorithm>
#include <ctime>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/console/disks.h"
#include "tests/console/folder.h"

using tests::Bytes;
using tests::dword_at;
using tests::FreeRun;
using tests::Names;
using tests::Outcome;
using tests::run;
using tests::Runs;
using tests::stored_disk;
using tests::StoredVolume;
using tests::TemporaryFile;
using tests::TemporaryFolder;
using tests::word_at;

namespace
{

// What "init FILE WORD..." makes; nothing may be said but a warning that is expected.
Bytes made(const Names &words, const std::string &warning = "")
{
    const TemporaryFile volume(".hpi");
    const Outcome outcome = tests::run_on("init", volume, words);
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors,
              warning.empty() ? "" : "[tarvo] Warning: " + std::string(volume.path()) + ": " + warning + "\n");
    return volume.exists() ? volume.bytes() : Bytes(1 << 20);
}

Bytes records(const Bytes &image, size_t first, size_t count)
{
    return tests::records_of(image, static_cast<uint32_t>(first), static_cast<uint32_t>(count));
}

bool is_filled_with(const Bytes &bytes, std::initializer_list<uint8_t> four)
{
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (bytes[i] != four.begin()[i % 4]) return false;
    }
    return !bytes.empty();
}

std::string text_of(const Bytes &image, size_t position, size_t length)
{
    const auto start = image.begin() + static_cast<std::ptrdiff_t>(position);
    return std::string(start, start + static_cast<std::ptrdiff_t>(length));
}

}

TEST(Init, DiskOfAMedium)
{
    const Bytes image = made({"--media", "9895"});
    ASSERT_EQ(image.size(), 150U * 30 * 256);
    const uint16_t head[] = {0x0500, 30, 150, 58, 1, 23, 29, 2, 148, 7};
    for (size_t i = 0; i < std::size(head); ++i) EXPECT_EQ(word_at(image, 2 * i), head[i]) << i;
    const StoredVolume volume = stored_disk(image);
    EXPECT_TRUE(volume.files.empty());
    EXPECT_EQ(volume.runs, (Runs{{60, 4440}}));
    // Their spares stand where the fill goes.
    EXPECT_EQ(records(image, 1741, 1), records(image, 1, 1));
    EXPECT_EQ(records(image, 1763, 1), records(image, 23, 1));
    EXPECT_TRUE(is_filled_with(records(image, 60, 1681), {0, 0, 0, 0xFF}));
    EXPECT_TRUE(is_filled_with(records(image, 1769, 4500 - 1769), {0, 0, 0, 0xFF}));
}

TEST(Init, NameOfAMediumInAnyCase)
{
    EXPECT_EQ(made({"--media", "9134xv", "--quick"}).size(), 1830U * 31 * 256);
}

// In this row system and data tracks are more than the medium has.
TEST(Init, ImageIsNoLongerThanItsMedium)
{
    const Bytes image = made({"--media", "9134D"});
    EXPECT_EQ(image.size(), 1812U * 32 * 256);
    EXPECT_EQ(stored_disk(image).runs, (Runs{{448, 57728}}));
}

TEST(Init, ComputersOfADisk)
{
    const std::pair<const char *, uint16_t> magics[] = {{"9845", 0x0500}, {"9831", 0x0200}, {"250", 0x0600}};
    for (const auto &[system, magic] : magics) {
        const Bytes image = made({"--media", "9122", "--system", system, "--quick"});
        EXPECT_EQ(word_at(image, 0), magic) << system;
        EXPECT_EQ(stored_disk(image).runs, (Runs{{32, 2432}})) << system;
    }
}

TEST(Init, DiskOfThe250HasALabelAndLongRunsWhereItNeedsThem)
{
    const Bytes small = made({"--media", "9122", "--system", "250", "--label", "VOLUME", "--quick"});
    EXPECT_EQ(word_at(small, 26), 0);
    EXPECT_EQ(word_at(small, 30), 6);
    EXPECT_EQ(text_of(small, 32, 6), "VOLUME");
    const Bytes large = made({"--media", "7920", "--system", "250", "--label", "EIGHTLTR", "--quick"},
                             "its free space is more than 65534 records, which tarvo can't hand out");
    EXPECT_EQ(word_at(large, 26), 1);
    EXPECT_EQ(text_of(large, 32, 8), "EIGHTLTR");
    EXPECT_EQ(stored_disk(large).runs, (Runs{{32 * 48, 3968 * 48}}));
}

TEST(Init, DiskOfThe9825HasItsSystemCode)
{
    const TemporaryFolder folder;
    Bytes code(30720);
    for (size_t i = 0; i < code.size(); ++i) code[i] = static_cast<uint8_t>(i / 256 + i);
    const Bytes image = made({"--media", "9885", "--system", "9825", "--boot", folder.add("code", code)});
    ASSERT_EQ(image.size(), 67U * 30 * 256);
    EXPECT_EQ(records(image, 30, 120), code) << "the fill begins behind it";
    EXPECT_EQ(records(image, 29 * 30, 1), records(image, 0, 1));
    EXPECT_EQ(word_at(image, 8), 1) << "by this such disks are known";
    EXPECT_EQ(word_at(image, 10), 23);
    EXPECT_EQ(word_at(image, 14), 5);
    EXPECT_EQ(word_at(image, 16), 62);
    EXPECT_EQ(stored_disk(image).runs.front(), (FreeRun{150, 62 * 30}));
    EXPECT_EQ(records(image, 29 * 30 + 1, 1), records(image, 1, 1));
}

TEST(Init, DiskOfThe9825WithoutSystemCode)
{
    const Bytes image =
        made({"--media", "9895", "--system", "9825"}, "without --boot the 120 records of the system code stay zero");
    EXPECT_EQ(records(image, 30, 120), Bytes(120 * 256));
}

TEST(Init, TablesOfADiskFromASize)
{
    const Bytes image = made({"--format", "disk45", "--size", "1M", "--sectors", "16"});
    ASSERT_EQ(image.size(), 1U << 20);
    const uint16_t head[] = {0x0500, 16, 256, 7, 1, 65, 98, 14, 242, 1};
    for (size_t i = 0; i < std::size(head); ++i) EXPECT_EQ(word_at(image, 2 * i), head[i]) << i;
    EXPECT_EQ(stored_disk(image).runs, (Runs{{224, 242 * 16}}));
    EXPECT_TRUE(stored_disk(image).spares_agree);
}

TEST(Init, DirectoryAndInterleaveAsAsked)
{
    const Bytes image = made({"--media", "7905", "--dir", "100", "--interleave", "5", "--quick"});
    const uint16_t head[] = {0x0500, 48, 800, 0, 4, 11, 58, 8, 792, 5};
    for (size_t i = 0; i < std::size(head); ++i) EXPECT_EQ(word_at(image, 2 * i), head[i]) << i;
    EXPECT_EQ(word_at(made({"--media", "7905", "--interleave", "0", "--quick"}), 18), 0);
}

TEST(Init, LifVolumeOfAMedium)
{
    const Bytes image = made({"--format", "lif", "--media", "9122", "--label", "DEMO", "--dir", "100"});
    ASSERT_EQ(image.size(), 154U * 16 * 256);
    EXPECT_EQ(word_at(image, 0), 0x8000);
    EXPECT_EQ(text_of(image, 2, 6), std::string("DEMO\0\0", 6));
    const uint32_t head[] = {2, 0x10000000, 13, 0x00010000, 77, 2, 16};
    for (size_t i = 0; i < std::size(head); ++i) EXPECT_EQ(dword_at(image, 8 + 4 * i), head[i]) << i;
    time_t now = std::time(nullptr);
    const tm *local = std::localtime(&now);
    EXPECT_EQ(image[36], (local->tm_year % 100) / 10 * 16 + local->tm_year % 10);
    EXPECT_EQ(word_at(image, 2 * 256 + 10), 0xFFFF);
    EXPECT_TRUE(is_filled_with(records(image, 15, 154 * 16 - 15), {0xFF, 0xFF, 0xFF, 0xFF}));
}

TEST(Init, LifVolumeOfASize)
{
    const Bytes image = made({"--format", "lif", "--size", "270K"});
    ASSERT_EQ(image.size(), 270U * 1024);
    EXPECT_EQ(dword_at(image, 16), 8U) << "a record of the directory for 128 of the volume";
    for (const size_t word : {size_t{24}, size_t{28}, size_t{32}})
        EXPECT_EQ(dword_at(image, word), 0U) << "no geometry is known";
    const Bytes known = made({"--format", "lif", "--size", "276480", "--sectors", "18", "--heads", "2", "--quick"});
    const uint32_t geometry[] = {30, 2, 18};
    for (size_t i = 0; i < std::size(geometry); ++i) EXPECT_EQ(dword_at(known, 24 + 4 * i), geometry[i]) << i;
}

TEST(Init, Tape)
{
    const Bytes image = made({"--format", "tape45"});
    ASSERT_EQ(image.size(), 852U * 256);
    EXPECT_EQ(records(image, 0, 1), Bytes(256));
    EXPECT_EQ(dword_at(image, 256), 0x0500FFFFU);
    EXPECT_EQ(records(image, 3, 1), records(image, 1, 1));
    EXPECT_TRUE(is_filled_with(records(image, 5, 847), {0xFF, 0xFF, 0xFF, 0xFF}));
}

TEST(Init, QuickLeavesTheFileAreaZero)
{
    const Bytes image = made({"--media", "9895", "--quick"});
    ASSERT_EQ(image.size(), 150U * 30 * 256);
    EXPECT_EQ(stored_disk(image).runs, (Runs{{60, 4440}}));
    EXPECT_TRUE(stored_disk(image).spares_agree);
    EXPECT_EQ(records(image, 60, 1681), Bytes(1681 * 256));
}

TEST(Init, NewVolumesAreSoundAndTakeFiles)
{
    const Names commands[] = {
        {"--media", "9895"},
        {"--media", "9134D", "--system", "9831", "--quick"},
        {"--format", "disk45", "--size", "256K", "--system", "250"},
        {"--format", "lif", "--media", "9122", "--quick"},
        {"--format", "lif", "--size", "100K", "--dir", "1"},
        {"--format", "tape45"},
    };
    const TemporaryFolder folder;
    const std::string source = folder.add("FILE", Bytes(1000, 'x'));
    for (const Names &command : commands) {
        const TemporaryFile volume(".hpi");
        ASSERT_EQ(tests::run_on("init", volume, command).code, 0);
        EXPECT_EQ(tests::run_on("check", volume).code, 0) << tests::run_on("check", volume).output;
        const Outcome put = tests::run_on("put", volume, {source});
        EXPECT_EQ(put.code, 0) << put.errors;
        EXPECT_EQ(tests::run_on("check", volume).code, 0) << tests::run_on("check", volume).output;
        const std::string content = tests::run_on("cat", volume, {"FILE", "--raw"}).output;
        EXPECT_EQ(content.substr(0, 1000), std::string(1000, 'x')) << command.back();
    }
}

// ---- the table of media --------------------------------------------------------------------------------------

TEST(MediaList, FitsEightyColumnsAndNamesThemAll)
{
    const Outcome outcome = run({"init", "--media", "list"});
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 30);
    size_t start = 0;
    for (size_t end; (end = outcome.output.find('\n', start)) != std::string::npos; start = end + 1)
        EXPECT_LT(end - start, 80U) << outcome.output.substr(start, end - start);
    EXPECT_NE(outcome.output.find("\n9134XV     6  31   1830  14522880 HP9133XV/HP9134XV 14.5M AMIGO hard disc\n"),
              std::string::npos)
        << outcome.output;
}

TEST(MediaList, AsJson)
{
    const rapidjson::Document document = tests::json_of(run({"init", "--media", "list", "--json"}));
    const auto media = document["media"].GetArray();
    ASSERT_EQ(media.Size(), 28U);
    EXPECT_EQ(
        tests::json_text(media[0]),
        "{\"name\":\"9895\",\"description\":\"HP9895A dual 1.15M AMIGO floppy disc\",\"bytes\":1152000,\"heads\":2,"
        "\"sectors\":30,\"tracks\":150,\"system_tracks\":2,\"data_tracks\":148,\"spare_track\":58,\"dir_start\":1,"
        "\"alloc_start\":23,\"alloc_end\":29,\"interleave\":7}");
}
