// Commands over many files on a disk of a real machine. It is not part of the project; TARVO_SAMPLES names the folder
// that has it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "base/error.h"
#include "tests/platform/scratch.h"
#include "tests/support/capture.h"
#include "tests/support/stored_volume.h"
#include "tests/support/system45_builder.h"
#include "tests/volume/dir_ops_support.h"
#include "volume/repair.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

constexpr const char *is_missing = "hp9845.hpi is not in the folder that TARVO_SAMPLES names";

std::string disk_path()
{
    const char *folder = std::getenv("TARVO_SAMPLES");
    if (folder == nullptr) return {};
    const std::filesystem::path path = std::filesystem::path(folder) / "hp9845.hpi";
    std::error_code ignored;
    return std::filesystem::exists(path, ignored) ? path.string() : std::string();
}

// The places of the tables, in records: directory, availability table, and their spares behind them.
constexpr uint32_t main_tables = 1;
constexpr uint32_t spare_tables = 31;
constexpr uint32_t table_records = 28;

// The image with everything blanked that may differ: the tables, and the records of a new file.
Bytes without(Bytes image, uint32_t first, uint32_t count)
{
    for (const auto &[start, length] :
         Runs{{main_tables, table_records}, {spare_tables, table_records}, {first, count}})
        std::fill_n(image.begin() + static_cast<std::ptrdiff_t>(size_t{start} * record_bytes),
                    size_t{length} * record_bytes, uint8_t{0});
    return image;
}

// Slots of the directory other than those that the entries take: zeros behind the end mark.
void expect_sound(const Bytes &image, const Names &wanted)
{
    const StoredVolume volume = stored_disk(image);
    EXPECT_EQ(names_of(volume), wanted);
    EXPECT_TRUE(volume.spares_agree);
    uint32_t used = 0;
    for (const StoredFile &file : volume.files) used += file.records;
    uint32_t free = 0;
    for (const FreeRun &run : volume.runs) free += run.second;
    EXPECT_EQ(used + free, 148u * 30u);
}

}

TEST(Disk45SampleCommands, Catalogue)
{
    const std::string path = disk_path();
    if (path.empty()) GTEST_SKIP() << is_missing;
    const Medium medium(path, OPEN_READ_VOLUME | OPEN_READ_ONLY);
    ASSERT_TRUE(medium) << error_text();
    EXPECT_EQ(printed_by(medium.md, {.command = COMMAND_LIST}), "NAME  PRO TYPE REC/FILE  BYTES/REC   ADDRESS\n"
                                                                "H7           148\n"
                                                                "\n"
                                                                "RJE       PROG    235      256         60\n"
                                                                "CTL$      DATA      2      256        295\n"
                                                                "PRIME3    DATA      4      256        297\n");
}

TEST(Disk45SampleCommands, DataFilesComeOutAsText)
{
    const std::string path = disk_path();
    if (path.empty()) GTEST_SKIP() << is_missing;
    const Medium medium(path, OPEN_READ_VOLUME | OPEN_READ_ONLY);
    ASSERT_TRUE(medium) << error_text();
    medium->use_file_conversion = 1;
    const Scratch host;
    const DirOrder order = {.command = COMMAND_EXTRACT, .filespec = Names{"*.DATA"}, .dest_path = host.folder()};
    ASSERT_EQ(dir_ops(medium.md, order), 0) << error_text();
    EXPECT_FALSE(exists(host.path("RJE.PROG")));
    for (const char *name : {"CTL$.DATA.txt", "PRIME3.DATA.txt"}) {
        const std::string text = content(host.path(name));
        EXPECT_FALSE(text.empty()) << name;
        const bool printable = std::all_of(text.begin(), text.end(), [](char character) {
            return character == '\r' || character == '\n' || (character >= ' ' && character < 127);
        });
        EXPECT_TRUE(printable) << name;
        EXPECT_NE(std::count(text.begin(), text.end(), '\n'), 0) << name;
    }
}

TEST(Disk45SampleCommands, FileGoesInAndNothingElseChanges)
{
    const std::string path = disk_path();
    if (path.empty()) GTEST_SKIP() << is_missing;
    const Bytes before = read_file(path);
    const TemporaryFile copy(before);
    const Scratch host;
    const std::string source = host.file("NEW.DATA", std::string(700, 'n'));
    {
        const Medium medium(copy.path());
        FileInfo info{};
        ASSERT_EQ(dir_ops(medium.md, {.command = COMMAND_ADD, .filespec = Names{source}, .info = &info}), 0)
            << error_text();
    }
    const Bytes after = copy.bytes();
    expect_sound(after, {"RJE", "CTL$", "PRIME3", "NEW"});
    const StoredFile file = stored_disk(after).files.at(3);
    EXPECT_EQ(file.start, 301u);
    EXPECT_EQ(file.records, 3u);
    EXPECT_EQ(stored_disk(after).runs, (Runs{{304, 4196}}));
    EXPECT_EQ(without(after, 301, 3), without(before, 301, 3));
    // In the tables only the new entry, the mark behind it and the shorter run differ.
    Bytes tables = records_of(before, main_tables, table_records);
    const auto entry = disk45_entry_bytes({.name = "NEW", .type = 0x2400, .start = 301, .records = 3});
    std::copy(entry.begin(), entry.end(), tables.begin() + 3 * 16);
    std::copy_n(Bytes{0, 0, 0xFF, 0xFF}.begin(), 4, tables.begin() + 4 * 16);
    std::copy_n(Bytes{304 >> 8, 304 & 0xFF, 4196 >> 8, 4196 & 0xFF}.begin(), 4, tables.begin() + 22 * 256);
    EXPECT_EQ(records_of(after, main_tables, table_records), tables);
}

TEST(Disk45SampleCommands, FileGoesOutAndNothingElseChanges)
{
    const std::string path = disk_path();
    if (path.empty()) GTEST_SKIP() << is_missing;
    const Bytes before = read_file(path);
    const TemporaryFile copy(before);
    {
        const Medium medium(copy.path());
        ASSERT_EQ(dir_ops(medium.md, {.command = COMMAND_DELETE, .filespec = Names{"CTL$"}}), 0) << error_text();
    }
    const Bytes after = copy.bytes();
    expect_sound(after, {"RJE", "PRIME3"});
    EXPECT_EQ(stored_disk(after).runs, (Runs{{295, 2}, {301, 4199}}));
    EXPECT_EQ(without(after, 0, 0), without(before, 0, 0)); // its records too
}

TEST(Disk45SampleCommands, NewNameAndNothingElseChanges)
{
    const std::string path = disk_path();
    if (path.empty()) GTEST_SKIP() << is_missing;
    const Bytes before = read_file(path);
    const TemporaryFile copy(before);
    {
        const Medium medium(copy.path());
        const DirOrder order = {.command = COMMAND_MOVE, .filespec = Names{"CTL$"}, .dest_file = "AB"};
        ASSERT_EQ(dir_ops(medium.md, order), 0) << error_text();
    }
    Bytes wanted = before;
    for (const uint32_t table : {main_tables, spare_tables})
        std::copy_n("AB\0\0\0\0", 6, wanted.begin() + static_cast<std::ptrdiff_t>(table * size_t{record_bytes} + 16));
    EXPECT_EQ(copy.bytes(), wanted);
    expect_sound(copy.bytes(), {"RJE", "AB", "PRIME3"});
}

TEST(Disk45SampleCommands, PackedDiskHoldsTheSameFiles)
{
    const std::string path = disk_path();
    if (path.empty()) GTEST_SKIP() << is_missing;
    const Bytes before = read_file(path);
    const TemporaryFile copy(before);
    {
        const Medium medium(copy.path());
        ASSERT_EQ(dir_ops(medium.md, {.command = COMMAND_DELETE, .filespec = Names{"RJE"}}), 0);
    }
    ASSERT_EQ(image_defrag(copy.path()), 0) << error_text();
    const Bytes after = copy.bytes();
    expect_sound(after, {"CTL$", "PRIME3"});
    const StoredVolume volume = stored_disk(after);
    EXPECT_EQ(volume.files[0].start, 60u);
    EXPECT_EQ(volume.files[1].start, 62u);
    EXPECT_EQ(content_of(after, volume.files[0]), records_of(before, 295, 2));
    EXPECT_EQ(content_of(after, volume.files[1]), records_of(before, 297, 4));
    EXPECT_EQ(image_check(copy.path(), 0), 0);
}
