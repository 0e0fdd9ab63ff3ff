// Writing the list over the directory, and what is refused before that.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/medium.h"
#include "volume/table.h"

using namespace tests;

namespace
{

constexpr size_t directory_offset = 2 * record_bytes;

// The image with its directory records taken out, so that what a rewrite may not touch can be compared.
Bytes without_directory(Bytes image, uint32_t records)
{
    const auto from = image.begin() + static_cast<std::ptrdiff_t>(directory_offset);
    image.erase(from, from + static_cast<std::ptrdiff_t>(records) * record_bytes);
    return image;
}

void expect_refused_untouched(const OpenVolume &open, uint32_t error)
{
    const Bytes before = open.file.bytes();
    forget_error();
    FileFaults counter;
    EXPECT_EQ(update_file_table(open.md, 0), -1);
    EXPECT_EQ(global_error, error);
    EXPECT_EQ(counter.writes, 0u);
    EXPECT_EQ(open.file.bytes(), before);
}

}

TEST(FileTableUpdate, AnUnchangedListWritesTheSameBytes)
{
    LifVolume volume = three_files();
    volume.entries[1].type = 0;
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    const Bytes before = open.file.bytes();
    EXPECT_EQ(update_file_table(open.md, 0), 0);
    EXPECT_EQ(open.file.bytes(), before);
}

TEST(FileTableUpdate, WritesTheListInItsOrder)
{
    const OpenVolume open(three_files());
    ASSERT_TRUE(open.md != nullptr);
    const Bytes before = open.file.bytes();
    FileInfo *second = open.md->root->next;
    second->type = 0xE020;
    second->location = 33;
    second->size = 257;
    second->name[0] = 'Z';
    EXPECT_EQ(update_file_table(open.md, 0), 0);
    EXPECT_EQ(without_directory(open.file.bytes(), 3), without_directory(before, 3));
    const Medium again(open.file.path());
    ASSERT_TRUE(again);
    EXPECT_EQ(names(again.md), (std::vector<std::string>{"ONE", "ZWO", "THREE"}));
    EXPECT_EQ(again->root->next->type, 0xE020u);
    EXPECT_EQ(again->root->next->location, 33u);
    EXPECT_EQ(again->root->next->size, 512u);
}

TEST(FileTableUpdate, SetsTheCounters)
{
    const OpenVolume open(three_files());
    ASSERT_TRUE(open.md != nullptr);
    open.md->root->size = 257;
    open.md->used_bytes = 1;
    open.md->free_bytes = 2;
    EXPECT_EQ(update_file_table(open.md, 0), 0);
    EXPECT_EQ(open.md->used_bytes, 6u * 256u);
    EXPECT_EQ(open.md->free_bytes, open.md->data_size - 6u * 256u);
}

TEST(FileTableUpdate, TheRestOfTheDirectoryIsCleared)
{
    Bytes image = lif_image(three_files());
    std::fill_n(image.begin() + static_cast<std::ptrdiff_t>(directory_offset + 3 * 32 + 12), 3 * 256 - 3 * 32 - 12,
                uint8_t{0xAB});
    const OpenVolume open(image);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(update_file_table(open.md, 0), 0);
    EXPECT_EQ(open.file.bytes(), lif_image(three_files()));
}

TEST(FileTableUpdate, AFullDirectoryHasNoEndMark)
{
    LifVolume volume = lif_volume_with_files(16);
    volume.directory_length = 2;
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    ASSERT_EQ(names(open.md).size(), 16u);
    const Bytes before = open.file.bytes();
    EXPECT_EQ(update_file_table(open.md, 0), 0) << error_text();
    EXPECT_EQ(open.file.bytes(), before);
}

TEST(FileTableUpdate, AnEmptyListIsTheEndMarkAlone)
{
    const OpenVolume open(three_files());
    ASSERT_TRUE(open.md != nullptr);
    image_free_directory(open.md, nullptr);
    EXPECT_EQ(update_file_table(open.md, 0), 0);
    Bytes expected(3 * record_bytes);
    expected[10] = expected[11] = 0xFF;
    const Bytes image = open.file.bytes();
    EXPECT_TRUE(
        std::equal(expected.begin(), expected.end(), image.begin() + static_cast<std::ptrdiff_t>(directory_offset)));
}

TEST(FileTableUpdate, TheSpareDirectoryOfLifIsNotWritten)
{
    const OpenVolume open(three_files());
    ASSERT_TRUE(open.md != nullptr);
    open.md->root->name[0] = 'X';
    const Bytes before = open.file.bytes();
    EXPECT_EQ(update_file_table(open.md, 1), 0);
    EXPECT_EQ(open.file.bytes(), before);
}

TEST(FileTableUpdate, Hazard_D15_OctoberDatesChangeAtEachRewrite)
{
    LifVolume volume = three_files();
    volume.entries[0].date = {0x84, 0x10, 0x03, 0x08, 0x09, 0x10};
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(update_file_table(open.md, 0), 0);
    EXPECT_EQ(open.file.bytes()[directory_offset + 21], 0x16);
}

TEST(FileTableUpdate, Hazard_D10_ADirectoryAtRecordZeroIsRefused)
{
    const OpenVolume open(three_files());
    ASSERT_TRUE(open.md != nullptr);
    open.md->dir_start = 0;
    expect_refused_untouched(open, 213);
}

TEST(FileTableUpdate, Hazard_D10_ADirectoryThatEndsBehindTheMediumIsRefused)
{
    const OpenVolume open(three_files());
    ASSERT_TRUE(open.md != nullptr);
    for (FileInfo *info = open.md->root; info != nullptr; info = info->next) info->location += 100000; // out of the way
    for (const uint32_t length : {159u, 100000u, 0x80000000u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
        open.md->dir_size = length;
        expect_refused_untouched(open, 213);
    }
    open.md->dir_size = 158; // up to the last record
    EXPECT_EQ(update_file_table(open.md, 0), 0) << error_text();
}

TEST(FileTableUpdate, Hazard_D10_ALiveFileInTheDirectoryIsRefused)
{
    const OpenVolume open(three_files());
    ASSERT_TRUE(open.md != nullptr);
    open.md->dir_size = 4;
    expect_refused_untouched(open, 213);
    open.md->root->location = 4;
    open.md->dir_size = 3;
    expect_refused_untouched(open, 213);
    open.md->root->location = 1; // reaches from in front of it into it
    open.md->root->size = 512;
    expect_refused_untouched(open, 213);
    open.md->root->deleted = 1;
    EXPECT_EQ(update_file_table(open.md, 0), 0) << error_text();
}

TEST(FileTableUpdate, Hazard_D11_MoreEntriesThanSlotsAreRefused)
{
    LifVolume volume = lif_volume_with_files(20);
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    open.md->dir_size = 2;
    expect_refused_untouched(open, 216);
}

TEST(FileTableUpdate, Hazard_D17_RecordsAreWrittenInAscendingOrder)
{
    const OpenVolume open(lif_volume_with_files(100));
    ASSERT_TRUE(open.md != nullptr);
    FileFaults counter;
    EXPECT_EQ(update_file_table(open.md, 0), 0);
    uint64_t next = 2 * record_bytes;
    for (const FileAccess &access : counter.accesses) {
        if (!access.writing) continue;
        EXPECT_EQ(access.position, next);
        next = access.position + access.bytes;
    }
    EXPECT_EQ(next, uint64_t{2 + open.md->dir_size} * record_bytes);
}

TEST(FileTableUpdate, EveryFailingWriteOrSeekIsAnErrorAndTheVolumeReopens)
{
    for (const FileFault kind : {FileFault::write, FileFault::short_write, FileFault::seek}) {
        bool reached = true;
        for (uint32_t n = 1; reached; ++n) {
            ASSERT_LT(n, 200u);
            const OpenVolume open(lif_volume_with_files(30));
            ASSERT_TRUE(open.md != nullptr);
            const Bytes before = open.file.bytes();
            for (FileInfo *info = open.md->root; info != nullptr; info = info->next) info->name[0] = 'G';
            forget_error();
            int32_t result = 0;
            {
                FileFaults faults(kind, n);
                result = update_file_table(open.md, 0);
                reached = faults.reached;
            }
            EXPECT_EQ(result, reached ? -1 : 0) << n;
            if (reached) {
                EXPECT_EQ(global_error, kind == FileFault::seek ? 301u : 303u) << n;
            }
            const uint32_t length = open.md->dir_size;
            EXPECT_EQ(without_directory(open.file.bytes(), length), without_directory(before, length)) << n;
            const Medium again(open.file.path());
            ASSERT_TRUE(again) << n;
            EXPECT_EQ(names(again.md).size(), 30u) << n;
        }
    }
}

TEST(FileTableUpdate, Hazard_D17_AShorterListThatIsCutOffLosesNoFile)
{
    bool reached = true;
    for (uint32_t n = 1; reached; ++n) {
        ASSERT_LT(n, 100u);
        const OpenVolume open(lif_volume_with_files(30));
        ASSERT_TRUE(open.md != nullptr);
        FileInfo *gone = open.md->root->next; // taken out of the list as a deletion does
        open.md->root->next = gone->next;
        gone->next->prev = open.md->root;
        gone->next = nullptr;
        {
            FileFaults faults(FileFault::write, n);
            update_file_table(open.md, 0);
            reached = faults.reached;
        }
        const Medium again(open.file.path());
        ASSERT_TRUE(again);
        for (uint32_t i = 2; i < 30; ++i)
            EXPECT_NE(entry_named(again.md, std::string("F0000") + (i < 10 ? "0" : "") + std::to_string(i)), nullptr)
                << n;
        gone->next = open.md->root; // back in, so that closing releases it
        open.md->root = gone;
    }
}
