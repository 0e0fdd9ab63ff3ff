// The availability table of a System 45 disc, between the medium and the list in memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/free_disc.h"
#include "volume/allocation.h"

using namespace tests;

namespace
{

Bytes bytes_at(const HandMedium &hand, uint32_t record, size_t count)
{
    const Bytes image = hand.file.bytes();
    const auto from = image.begin() + static_cast<std::ptrdiff_t>(record) * record_bytes;
    return Bytes(from, from + static_cast<std::ptrdiff_t>(count));
}

}

TEST(FreeList, IsReadInOrder)
{
    const auto hand = disc_with_table({500, 10, 100, 20, 300, 30, 0xFFFF, 0, 40, 1});
    EXPECT_EQ(get_alloc_table(&hand->md, 0), 0);
    EXPECT_EQ(runs_of(hand->md), (Runs{{100, 20}, {300, 30}, {500, 10}}));
}

TEST(FreeList, EqualLocationsStayInTableOrder)
{
    const auto hand = disc_with_table({500, 10, 100, 20, 500, 30, 500, 5, 0xFFFF});
    EXPECT_EQ(get_alloc_table(&hand->md, 0), 0);
    EXPECT_EQ(runs_of(hand->md), (Runs{{100, 20}, {500, 10}, {500, 30}, {500, 5}}));
}

TEST(FreeList, EntriesOfEightBytes)
{
    const auto hand = disc_with_table({0, 100, 0, 20, 1, 0x1170, 0, 7, 0xFFFF, 0xFFFF});
    hand->md.alloc_entry_size = 8;
    EXPECT_EQ(get_alloc_table(&hand->md, 0), 0);
    EXPECT_EQ(runs_of(hand->md), (Runs{{100, 20}, {70000, 7}}));
}

TEST(FreeList, TheSpareTableIsReadOnRequest)
{
    const auto hand = disc();
    Bytes image(2000 * record_bytes);
    set_dword_at(image, table_start * record_bytes, 0x00640001);
    set_word_at(image, table_start * record_bytes + 4, 0xFFFF);
    set_dword_at(image, spare_table_start * record_bytes, 0x00C80002);
    set_word_at(image, spare_table_start * record_bytes + 4, 0xFFFF);
    hand->file.replace(image);
    EXPECT_EQ(get_alloc_table(&hand->md, 1), 0);
    EXPECT_EQ(runs_of(hand->md), (Runs{{200, 2}}));
}

TEST(FreeList, ATableWithoutEndMarkIsReadToItsEnd)
{
    std::vector<uint16_t> words;
    for (uint16_t i = 0; i < 128; ++i) {
        words.push_back(static_cast<uint16_t>(100 + 2 * i));
        words.push_back(1);
    }
    const auto hand = disc_with_table(words);
    EXPECT_EQ(get_alloc_table(&hand->md, 0), 0);
    EXPECT_EQ(runs_of(hand->md).size(), 128u);
}

TEST(FreeList, ZeroEntriesAreEmptyRuns)
{
    const auto hand = disc_with_table({100, 20});
    hand->md.magic = 0;
    EXPECT_EQ(get_alloc_table(&hand->md, 0), 0);
    EXPECT_EQ(runs_of(hand->md).size(), 128u);
    EXPECT_EQ(runs_of(hand->md).back(), (FreeRun{100, 20}));
    EXPECT_EQ(image_allocate(&hand->md, 20), 100u);
}

TEST(FreeList, OtherFormatsHaveNone)
{
    const auto hand = disc_with_table({100, 20, 0xFFFF});
    for (const uint32_t format : {0u, 2u, 3u, 4u, 5u}) {
        hand->md.format = format;
        EXPECT_EQ(get_alloc_table(&hand->md, 0), 0);
        EXPECT_EQ(hand->md.alloc_list, nullptr);
        const Bytes before = hand->file.bytes();
        EXPECT_EQ(update_alloc_table(&hand->md, 0), 0);
        EXPECT_EQ(hand->file.bytes(), before);
    }
}

TEST(FreeList, ADifferenceInFreeSpaceIsAWarningOnly)
{
    const auto hand = disc_with_table({100, 20, 0xFFFF});
    hand->md.free_bytes = 1234;
    const LogCapture log(1);
    EXPECT_EQ(get_alloc_table(&hand->md, 0), 0);
    EXPECT_TRUE(contains(log.text(), "Warning: File table and allocation table report different free space ("))
        << log.text();
    EXPECT_TRUE(contains(log.text(), "1234")) << log.text();
    EXPECT_TRUE(contains(log.text(), "5120")) << log.text();
}

TEST(FreeList, EqualFreeSpaceIsNoWarning)
{
    const auto hand = disc_with_table({100, 20, 0xFFFF});
    hand->md.free_bytes = 5120;
    const LogCapture log(1);
    EXPECT_EQ(get_alloc_table(&hand->md, 0), 0);
    EXPECT_EQ(update_alloc_table(&hand->md, 0), 0);
    EXPECT_EQ(log.text(), "");
}

TEST(FreeList, Hazard_D13_NoEntrySizeIsNoTable)
{
    for (const uint32_t size : {0u, 1u, 300u, 0xFFFFFFFFu}) {
        const auto hand = disc_with_table({100, 20, 0xFFFF});
        hand->md.alloc_entry_size = size;
        get_alloc_table(&hand->md, 0);
        EXPECT_EQ(hand->md.alloc_list, nullptr) << size;
        const Bytes before = hand->file.bytes();
        add_run(hand->md, 100, 20);
        update_alloc_table(&hand->md, 0);
        EXPECT_EQ(hand->file.bytes(), before) << size;
    }
}

TEST(FreeList, Hazard_A2_ATableBehindTheMediumHasNoEmptyRuns)
{
    const auto hand = disc_with_table({100, 20, 0xFFFF});
    hand->md.alloc_start = 1999; // one record of zeros is left
    hand->md.alloc_size = 0xFFFFFFFF;
    FileFaults counter;
    EXPECT_EQ(get_alloc_table(&hand->md, 0), 0);
    EXPECT_EQ(runs_of(hand->md).size(), 64u);
    EXPECT_LT(counter.reads, 100u);
}

TEST(FreeList, Hazard_D1_AHugeTableIsSortedInReasonableTime)
{
    constexpr uint32_t table_records = 1900;
    const auto hand = disc();
    Bytes image(2000 * record_bytes);
    for (uint32_t i = 0; i < table_records * 64; ++i)
        set_dword_at(image, 50 * record_bytes + 4 * i, 0x00010001u + (i % 60000) * 0x10000u);
    hand->file.replace(image);
    hand->md.alloc_start = 50;
    hand->md.alloc_size = table_records;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(get_alloc_table(&hand->md, 0), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    const Runs runs = runs_of(hand->md);
    EXPECT_EQ(runs.size(), table_records * 64u);
    EXPECT_TRUE(std::is_sorted(runs.begin(), runs.end()));
}

TEST(FreeList, AReadThatFailsIsAFailure)
{
    const auto hand = disc_with_table({100, 20, 0xFFFF});
    FileFaults faults(FileFault::read, 1);
    forget_error();
    EXPECT_EQ(get_alloc_table(&hand->md, 0), -1);
    EXPECT_EQ(global_error, 302u);
}

TEST(FreeList, EveryFailingAllocationIsErrorOutOfMemoryAndAShorterList)
{
    for (uint32_t n = 1; n <= 3; ++n) {
        const auto hand = disc_with_table({300, 10, 100, 20, 200, 30, 0xFFFF});
        HeapFaults faults(n);
        forget_error();
        EXPECT_EQ(get_alloc_table(&hand->md, 0), -1);
        EXPECT_EQ(global_error, 105u);
        EXPECT_LT(runs_of(hand->md).size(), 3u);
        const uint32_t held = static_cast<uint32_t>(runs_of(hand->md).size());
        EXPECT_EQ(faults.allocations - 1 - faults.releases, held);
    }
}

TEST(FreeList, LogsItsCalls)
{
    const auto hand = disc_with_table({100, 20, 0xFFFF});
    const LogCapture log(3);
    get_alloc_table(&hand->md, 1);
    update_alloc_table(&hand->md, 0);
    image_allocate(&hand->md, 5);
    image_free_allocation(&hand->md, 400, 7);
    const std::string text = log.text();
    EXPECT_TRUE(contains(text, "Trace: image_get_alloc_table(md=")) << text;
    EXPECT_TRUE(contains(text, ", use_spare=1)\n")) << text;
    EXPECT_TRUE(contains(text, "Trace: image_update_alloc_table(md=")) << text;
    EXPECT_TRUE(contains(text, "Trace: image_allocate(md=")) << text;
    EXPECT_TRUE(contains(text, ", size=5)\n")) << text;
    EXPECT_TRUE(contains(text, "Trace: image_free_allocation(md=")) << text;
    EXPECT_TRUE(contains(text, ", location=400, size=7)\n")) << text;
}

TEST(FreeListUpdate, EntriesOfFourBytesWithEndMark)
{
    const auto hand = disc_with({{100, 20}, {300, 0x0102}});
    hand->file.replace(Bytes(2000 * record_bytes, 0xAB));
    EXPECT_EQ(update_alloc_table(&hand->md, 0), 0) << error_text();
    Bytes expected(2 * record_bytes);
    const Bytes head = {0, 100, 0, 20, 1, 44, 1, 2, 0xFF, 0xFF};
    std::copy(head.begin(), head.end(), expected.begin());
    EXPECT_EQ(bytes_at(*hand, table_start, expected.size()), expected);
    EXPECT_EQ(bytes_at(*hand, table_start - 1, 256), Bytes(256, 0xAB));
    EXPECT_EQ(bytes_at(*hand, table_start + 2, 256), Bytes(256, 0xAB));
}

TEST(FreeListUpdate, EntriesOfEightBytesWithEndMark)
{
    const auto hand = disc_with({{100, 20}, {70000, 7}});
    hand->md.alloc_entry_size = 8;
    EXPECT_EQ(update_alloc_table(&hand->md, 0), 0) << error_text();
    EXPECT_EQ(bytes_at(*hand, table_start, 24),
              (Bytes{0, 0, 0, 100, 0, 0, 0, 20, 0, 1, 0x11, 0x70, 0, 0, 0, 7, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0}));
}

TEST(FreeListUpdate, A9825VolumeHasNoEndMark)
{
    const auto hand = disc_with({{100, 20}});
    hand->md.magic = 0;
    EXPECT_EQ(update_alloc_table(&hand->md, 0), 0) << error_text();
    EXPECT_EQ(bytes_at(*hand, table_start, 8), (Bytes{0, 100, 0, 20, 0, 0, 0, 0}));
}

TEST(FreeListUpdate, AFullTableHasNoEndMark)
{
    Runs runs;
    for (uint32_t i = 0; i < 128; ++i) runs.emplace_back(100 + 2 * i, 1);
    const auto hand = disc_with(runs);
    EXPECT_EQ(update_alloc_table(&hand->md, 0), 0);
    EXPECT_EQ(bytes_at(*hand, table_start + 1, 256)[255], 1);
    EXPECT_EQ(bytes_at(*hand, table_start + 2, 256), Bytes(256));
}

TEST(FreeListUpdate, TheSpareTableIsWrittenOnRequest)
{
    const auto hand = disc_with({{100, 20}});
    EXPECT_EQ(update_alloc_table(&hand->md, 1), 0) << error_text();
    EXPECT_EQ(bytes_at(*hand, spare_table_start, 6), (Bytes{0, 100, 0, 20, 0xFF, 0xFF}));
    EXPECT_EQ(bytes_at(*hand, table_start, 512), Bytes(512));
}

TEST(FreeListUpdate, ADifferenceInFreeSpaceIsAWarningOnly)
{
    const auto hand = disc_with({{100, 20}});
    hand->md.free_bytes = 1234;
    const LogCapture log(1);
    EXPECT_EQ(update_alloc_table(&hand->md, 0), 0);
    EXPECT_TRUE(contains(log.text(), "Warning: File and allocation table report different free space (")) << log.text();
    EXPECT_TRUE(contains(log.text(), "1234")) << log.text();
    EXPECT_TRUE(contains(log.text(), "5120")) << log.text();
}

TEST(FreeListUpdate, Hazard_D12_MoreRunsThanSlotsAreLogged)
{
    Runs runs;
    for (uint32_t i = 0; i < 129; ++i) runs.emplace_back(100 + 2 * i, 1);
    for (const uint32_t counted : {128u, 129u}) {
        const auto hand = disc_with(runs);
        hand->md.free_bytes = counted * record_bytes; // whichever sum the engine makes, one of the two agrees with it
        const LogCapture log(1);
        EXPECT_EQ(update_alloc_table(&hand->md, 0), 0);
        EXPECT_NE(log.text(), "") << counted;
        EXPECT_EQ(bytes_at(*hand, table_start + 2, 256), Bytes(256));
    }
}

TEST(FreeListUpdate, Hazard_D10_ATableThatStandsWhereItCannotIsRefused)
{
    const struct {
        uint32_t start, size;
    } places[] = {{0, 2}, {1999, 2}, {5000, 1}, {0xFFFFFFFF, 2}, {5, 0xFFFFFFFF}, {5, 0xFFFFFFFB}, {99, 2}};
    for (const auto &[start, size] : places) {
        const auto hand = disc_with({{1000, 20}});
        add_file(hand->md, 100, 10);
        hand->md.alloc_start = start;
        hand->md.alloc_size = size;
        const Bytes before = hand->file.bytes();
        forget_error();
        EXPECT_EQ(update_alloc_table(&hand->md, 0), -1) << start;
        EXPECT_EQ(global_error, 213u) << start;
        EXPECT_EQ(hand->file.bytes(), before) << start;
    }
}

TEST(FreeListUpdate, Hazard_D21_ASpareTableInsideFilesIsRefused)
{
    const auto hand = disc_with({{1000, 20}});
    add_file(hand->md, 100, 10);
    hand->md.spare_alloc_start = 105;
    const Bytes before = hand->file.bytes();
    EXPECT_EQ(update_alloc_table(&hand->md, 1), -1);
    EXPECT_EQ(hand->file.bytes(), before);
    EXPECT_EQ(update_alloc_table(&hand->md, 0), 0);
}

TEST(FreeListUpdate, Hazard_D21_ASpareTableEqualToTheMainOneIsNormal)
{
    const auto hand = disc_with({{1000, 20}});
    hand->md.spare_dir_start = hand->md.dir_start;
    hand->md.spare_alloc_start = hand->md.alloc_start;
    EXPECT_EQ(update_alloc_table(&hand->md, 1), 0) << error_text();
    EXPECT_EQ(bytes_at(*hand, table_start, 4), (Bytes{3, 232, 0, 20}));
}

TEST(FreeListUpdate, EveryFailingWriteOrSeekIsAnError)
{
    for (const FileFault kind : {FileFault::write, FileFault::short_write, FileFault::seek}) {
        bool reached = true;
        for (uint32_t n = 1; reached; ++n) {
            ASSERT_LT(n, 100u);
            const auto hand = disc_with({{100, 20}, {300, 5}});
            forget_error();
            int32_t result = 0;
            {
                FileFaults faults(kind, n);
                result = update_alloc_table(&hand->md, 0);
                reached = faults.reached;
            }
            EXPECT_EQ(result, reached ? -1 : 0) << n;
            if (reached) {
                EXPECT_EQ(global_error, kind == FileFault::seek ? 301u : 303u) << n;
            }
            EXPECT_EQ(runs_of(hand->md), (Runs{{100, 20}, {300, 5}}));
            EXPECT_EQ(bytes_at(*hand, 0, table_start * record_bytes), Bytes(table_start * record_bytes));
            EXPECT_EQ(bytes_at(*hand, table_start + 2, 512), Bytes(512));
        }
    }
}
