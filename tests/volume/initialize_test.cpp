// New volumes, record by record, held against bytes that are put together here.
#include "volume/initialize.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/medium.h"
#include "tests/support/stored_volume.h"
#include "tests/volume/initialize_support.h"
#include "volume/media_table.h"

using namespace tests;

namespace
{

Bytes padded(Bytes bytes)
{
    bytes.resize(record_bytes);
    return bytes;
}

Bytes words(const std::vector<uint32_t> &values)
{
    Bytes bytes;
    for (const uint32_t value : values) {
        bytes.push_back(static_cast<uint8_t>(value >> 8));
        bytes.push_back(static_cast<uint8_t>(value));
    }
    return bytes;
}

Bytes operator+(Bytes left, const Bytes &right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// The system record, straight from the row's own figures.
Bytes system_record(const MediaTableRow &row, uint32_t magic)
{
    return padded(words({magic, row.sectors, row.tracks, row.spare_track, row.dir_start, row.alloc_start, row.alloc_end,
                         row.system_tracks, row.data_tracks, row.interleave}));
}

const Bytes empty_directory = padded({0, 0, 0xFF, 0xFF});

Bytes one_short_run(uint32_t start, uint32_t size)
{
    return padded(words({start, size, 0xFFFF}));
}

Bytes one_long_run(uint32_t start, uint32_t size)
{
    return padded(words({start >> 16, start, size >> 16, size, 0xFFFF, 0xFFFF}));
}

// Where spare tables are the main ones, the same records are written twice.
Numbers table_records(const MediaDescriptor &md)
{
    return {0, md.dir_start, md.spare_dir_start, md.alloc_start, md.spare_alloc_start};
}

const MediaTableRow &row_named(const std::string &name)
{
    const MediaTableRow *row = media_table;
    while (row->name != name) ++row;
    return *row;
}

Bytes lif_header()
{
    Bytes header = {0x80, 0x00, 'L', 'A', 'B', 'E', 'L', 'T'};
    header = header + words({0, 2, 0x1000, 0, 0, 3, 1, 0, 0, 10, 0, 2, 0, 5});
    return padded(header + Bytes{0x84, 0x03, 0x15, 0x09, 0x07, 0x30});
}

const Bytes empty_lif_directory = padded({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF});

Bytes pattern(std::initializer_list<uint8_t> four)
{
    Bytes record;
    while (record.size() < record_bytes) record.insert(record.end(), four);
    return record;
}

}

// ---- the rows of the table of drives -------------------------------------------------------------------------

TEST(InitializeDisk, EveryRowWithShortRuns)
{
    for (const MediaTableRow *row = default_media_table; row->name != nullptr; ++row) {
        SCOPED_TRACE(row->name);
        MemoryMedium medium(row->tracks * row->sectors);
        take_row(*row, medium.md);
        ASSERT_EQ(initialize(medium, quick), 0) << error_text();
        EXPECT_EQ(medium.written, table_records(medium.md));
        EXPECT_EQ(medium.record(0), system_record(*row, 0x0500));
        EXPECT_EQ(medium.record(row->dir_start), empty_directory);
        EXPECT_EQ(medium.record(row->spare_track * row->sectors + row->dir_start), empty_directory);
        const Bytes run = one_short_run(row->system_tracks * row->sectors, row->data_tracks * row->sectors);
        EXPECT_EQ(medium.record(row->alloc_start), run);
        EXPECT_EQ(medium.record(row->spare_track * row->sectors + row->alloc_start), run);
    }
}

TEST(InitializeDisk, EveryRowLabelledAndWithLongRuns)
{
    for (const MediaTableRow *row = default_media_table; row->name != nullptr; ++row) {
        SCOPED_TRACE(row->name);
        MemoryMedium medium(row->tracks * row->sectors);
        take_row(*row, medium.md);
        medium.md.magic = 0x0600;
        medium.md.alloc_entry_size = 8;
        std::memcpy(medium.md.label, "VOLUME", 7);
        ASSERT_EQ(initialize(medium, quick), 0) << error_text();
        EXPECT_EQ(medium.written, table_records(medium.md));
        Bytes head = system_record(*row, 0x0600);
        head.resize(20);
        head = head + words({0, 0, 0, 1, 60, 6}) + Bytes{'V', 'O', 'L', 'U', 'M', 'E'};
        EXPECT_EQ(medium.record(0), padded(head));
        const Bytes run = one_long_run(row->system_tracks * row->sectors, row->data_tracks * row->sectors);
        EXPECT_EQ(medium.record(row->alloc_start), run);
        EXPECT_EQ(medium.record(row->spare_track * row->sectors + row->alloc_start), run);
    }
}

TEST(InitializeDisk, EveryRowReadsBackAsAnEmptyVolume)
{
    for (const MediaTableRow *row = default_media_table; row->name != nullptr; ++row) {
        SCOPED_TRACE(row->name);
        const TemporaryFile image(Bytes{});
        image.extend(uint64_t{row->tracks} * row->sectors * record_bytes);
        {
            const Medium medium(image.path(), 0);
            ASSERT_TRUE(medium);
            take_row(*row, *medium.md);
            medium->magic = 0x0600;
            medium->alloc_entry_size = 8;
            ASSERT_EQ(image_initialize(medium.md, quick, nullptr), 0) << error_text();
        }
        const LogCapture log(1);
        const Medium medium(image.path(), OPEN_READ_VOLUME | OPEN_CHECK);
        ASSERT_TRUE(medium) << error_text();
        MediaDescriptor wanted{};
        take_row(*row, wanted);
        EXPECT_EQ(medium->root, nullptr);
        EXPECT_EQ(medium->dir_size, wanted.dir_size);
        EXPECT_EQ(medium->alloc_size, wanted.alloc_size);
        EXPECT_EQ(medium->spare_dir_start, wanted.spare_dir_start);
        EXPECT_EQ(medium->spare_alloc_start, wanted.spare_alloc_start);
        EXPECT_EQ(medium->file_area_start, wanted.file_area_start);
        EXPECT_EQ(medium->data_size, wanted.data_size);
        EXPECT_EQ(medium->free_bytes, wanted.data_size);
        EXPECT_EQ(runs_of(*medium.md), (Runs{{wanted.file_area_start, row->data_tracks * row->sectors}}));
        EXPECT_EQ(log.text(), "");
    }
}

// ---- disks ---------------------------------------------------------------------------------------------------

TEST(InitializeDisk, EachMagicWord)
{
    for (const uint16_t magic : {uint16_t{0x0200}, uint16_t{0x0500}}) {
        MemoryMedium medium(48);
        make_small_disk(medium.md, magic);
        std::memcpy(medium.md.label, "NOT HERE", 9);
        medium.md.alloc_entry_size = 8;
        ASSERT_EQ(initialize(medium, quick), 0);
        // Only disks of the 250 and 260 say how long their runs are.
        EXPECT_EQ(medium.record(0), padded(words({magic, 4, 12, 1, 1, 3, 4, 3, 9, 3})));
        EXPECT_EQ(medium.record(3), one_long_run(12, 36));
    }
}

TEST(InitializeDisk, Hazard_K8_LabelStaysInItsRecord)
{
    MemoryMedium medium(48);
    make_small_disk(medium.md, 0x0600);
    std::memset(medium.md.label, 'L', sizeof medium.md.label); // no end
    ASSERT_EQ(initialize(medium, quick), 0);
    const Bytes record = medium.record(0);
    EXPECT_EQ(word_at(record, 30), 16);
    EXPECT_EQ(Bytes(record.begin() + 32, record.begin() + 50), (Bytes(16, 'L') + Bytes{0, 0}));
}

TEST(InitializeDisk, SpareDistanceIsRoundedUpToTracks)
{
    struct Row {
        uint32_t spare;
        uint16_t tracks;
    };
    for (const Row &row : {Row{1, 0}, Row{2, 1}, Row{4, 1}, Row{5, 1}, Row{6, 2}, Row{9, 2}}) {
        MemoryMedium medium(48);
        make_small_disk(medium.md);
        medium.md.spare_dir_start = row.spare;
        ASSERT_EQ(initialize(medium, quick), 0);
        EXPECT_EQ(word_at(medium.record(0), 6), row.tracks) << row.spare;
    }
}

TEST(InitializeDisk, Hazard_F9_NoRecordsATrack)
{
    MemoryMedium medium(48);
    make_small_disk(medium.md);
    medium.md.sectors = 0;
    EXPECT_EQ(initialize(medium, quick), 0);
    EXPECT_EQ(medium.record(0), padded(words({0x0500, 0, 12, 0, 1, 3, 4, 3, 9, 3})));
    EXPECT_EQ(medium.record(3), one_short_run(12, 0));
}

TEST(InitializeDisk, SizeOfRunsThatIsNoneIsToldAndLeavesTheTableEmpty)
{
    MemoryMedium medium(48);
    make_small_disk(medium.md);
    medium.md.alloc_entry_size = 6;
    const LogCapture log(1);
    EXPECT_EQ(initialize(medium, quick), 0);
    EXPECT_EQ(log.text(), "Warning: alloc entry size not set\n");
    EXPECT_EQ(medium.record(3), Bytes(record_bytes));
    EXPECT_EQ(medium.record(7), Bytes(record_bytes));
    EXPECT_EQ(medium.written, (Numbers{0, 1, 5, 3, 7}));
}

TEST(InitializeDisk, KeepsFourthByteOfFill)
{
    MemoryMedium medium(60);
    make_small_disk(medium.md);
    ASSERT_EQ(initialize(medium, 0), 0);
    EXPECT_EQ(medium.written, joined({{0, 1, 5, 3, 7}, from_to(12, 36)}));
    for (uint32_t record = 12; record < 48; ++record)
        EXPECT_EQ(medium.record(record), pattern({0x00, 0x00, 0x00, 0xFF})) << record;
    EXPECT_EQ(medium.record(48), Bytes(record_bytes));
    EXPECT_EQ(medium.streams, (std::vector<std::string>{"write 12+36", "close"}));
    EXPECT_EQ(medium.last_end, 35u);
}

TEST(InitializeDisk, DiskOfA9825HasItsHeadTwiceAndTheBootImage)
{
    const MediaTableRow &row = row_named("9895");
    MemoryMedium medium(row.tracks * row.sectors);
    take_row(row, medium.md);
    medium.md.magic = 0;
    for (size_t i = 0; i < sizeof hp9825_boot; ++i) hp9825_boot[i] = static_cast<uint8_t>(i / 256 + 1);
    EXPECT_EQ(initialize(medium, quick), 0);
    std::memset(hp9825_boot, 0, sizeof hp9825_boot);
    const uint32_t spare = 58 * 30 + 1;
    EXPECT_EQ(medium.written, joined({{0, spare - 1}, {1}, from_to(30, 120), {spare, 23, spare + 22}}));
    EXPECT_EQ(medium.record(0), system_record(row, 0));
    EXPECT_EQ(medium.record(spare - 1), system_record(row, 0));
    for (uint32_t i = 0; i < 120; ++i)
        EXPECT_EQ(medium.record(30 + i), Bytes(record_bytes, static_cast<uint8_t>(i + 1))) << i;
    EXPECT_EQ(medium.record(spare), empty_directory);
    EXPECT_EQ(medium.record(23), one_short_run(60, 148 * 30)); // a rewrite leaves the end mark out
}

TEST(InitializeDisk, BootImageIsEmptyUntilSomebodyFillsIt)
{
    EXPECT_EQ(sizeof hp9825_boot, 30720u);
    EXPECT_TRUE(std::all_of(std::begin(hp9825_boot), std::end(hp9825_boot), [](uint8_t byte) { return byte == 0; }));
}

TEST(InitializeDisk, Hazard_K5_RunAbove65535RecordsIsCutInAShortTable)
{
    const MediaTableRow &row = row_named("7920");
    MemoryMedium medium(row.tracks * row.sectors);
    take_row(row, medium.md);
    ASSERT_EQ(initialize(medium, quick), 0);
    EXPECT_EQ(medium.record(row.alloc_start), padded(words({1536, 190464 & 0xFFFF, 0xFFFF})));
}

// ---- tapes ---------------------------------------------------------------------------------------------------

TEST(InitializeTape, LayoutIsAlwaysTheSame)
{
    MemoryMedium medium(852);
    medium.md.format = FORMAT_TAPE45;
    medium.md.dir_start = 99;
    ASSERT_EQ(initialize(medium, quick), 0);
    const Bytes head = padded({0x05, 0x00, 0xFF, 0xFF, 0xFF, 0xFF});
    EXPECT_EQ(medium.written, (Numbers{0, 1, 3}));
    EXPECT_EQ(medium.record(0), Bytes(record_bytes));
    EXPECT_EQ(medium.record(1), head);
    EXPECT_EQ(medium.record(3), head);
    EXPECT_EQ(medium.md.dir_start, 1u);
    EXPECT_EQ(medium.md.sectors, 426u);
    EXPECT_EQ(medium.md.data_tracks, 2u);
    EXPECT_EQ(medium.md.spare_dir_start, 3u);
    EXPECT_EQ(medium.md.file_area_start, 5u);
}

TEST(InitializeTape, KeepsNewTapeOf847Records)
{
    MemoryMedium medium(860);
    medium.md.format = FORMAT_TAPE45;
    ASSERT_EQ(initialize(medium, 0), 0);
    EXPECT_EQ(medium.md.data_size, 216832u);
    EXPECT_EQ(medium.written, joined({{0, 1, 3}, from_to(5, 847)}));
    EXPECT_EQ(medium.record(5), Bytes(record_bytes, 0xFF));
    EXPECT_EQ(medium.record(851), Bytes(record_bytes, 0xFF));
}

TEST(InitializeTape, ImageReadsBackAsAnEmptyTape)
{
    const TemporaryFile image(Bytes(852 * record_bytes, 0x55));
    {
        const Medium medium(image.path(), 0);
        medium->format = FORMAT_TAPE45;
        ASSERT_EQ(image_initialize(medium.md, 0, nullptr), 0) << error_text();
    }
    const Medium medium(image.path(), OPEN_READ_VOLUME | OPEN_CHECK);
    ASSERT_TRUE(medium) << error_text();
    EXPECT_EQ(medium->format, uint32_t{FORMAT_TAPE45});
    EXPECT_EQ(medium->root, nullptr);
    EXPECT_EQ(medium->free_bytes, 218107u); // what a tape that is read has
}

// ---- LIF -----------------------------------------------------------------------------------------------------

TEST(InitializeLif, HeaderAndDirectory)
{
    MemoryMedium medium(100);
    make_lif(medium.md, 100);
    ASSERT_EQ(initialize(medium, quick), 0);
    EXPECT_EQ(medium.written, (Numbers{0, 2})); // two records in all
    EXPECT_EQ(medium.record(0), lif_header());
    EXPECT_EQ(medium.record(2), empty_lif_directory);
    EXPECT_EQ(medium.md.file_area_start, 5u);
    EXPECT_EQ(medium.md.data_size, 95u * record_bytes);
}

TEST(InitializeLif, FillOfTheFileArea)
{
    MemoryMedium medium(100);
    make_lif(medium.md, 100);
    ASSERT_EQ(initialize(medium, 0), 0);
    EXPECT_EQ(medium.written, joined({{0, 2}, from_to(5, 95)}));
    EXPECT_EQ(medium.record(5), Bytes(record_bytes, 0xFF));
    EXPECT_EQ(medium.record(99), Bytes(record_bytes, 0xFF));
}

TEST(InitializeLif, Hazard_B3_GeometryWithoutHeads)
{
    MemoryMedium medium(100);
    make_lif(medium.md, 100);
    medium.md.heads = 0;
    ASSERT_EQ(initialize(medium, quick), 0);
    EXPECT_EQ(dword_at(medium.record(0), 24), 0u);
    EXPECT_EQ(dword_at(medium.record(0), 28), 0u);
    EXPECT_EQ(dword_at(medium.record(0), 32), 5u);
}

TEST(InitializeLif, PartOfARecordAtTheEndIsFilledToo)
{
    MemoryMedium medium(100);
    make_lif(medium.md, 100);
    medium.md.size -= 255;
    ASSERT_EQ(initialize(medium, 0), 0);
    EXPECT_EQ(medium.md.data_size, 94u * record_bytes + 1);
    EXPECT_EQ(medium.written.size(), 2u + 95u);
}

TEST(InitializeLif, Hazard_K7_DirectoryLargerThanTheMediumLeavesNothingToFill)
{
    MemoryMedium medium(100);
    make_lif(medium.md, 100);
    medium.md.dir_size = 0xFFFFFF;
    EXPECT_EQ(initialize(medium, 0), 0);
    EXPECT_EQ(medium.md.data_size, 0u);
    EXPECT_EQ(medium.written, (Numbers{0, 2}));
}

TEST(InitializeLif, ImageReadsBackAsAnEmptyVolume)
{
    const TemporaryFile image(Bytes(100 * record_bytes, 0x55));
    {
        const Medium medium(image.path(), 0);
        make_lif(*medium.md, 100);
        ASSERT_EQ(image_initialize(medium.md, 0, nullptr), 0) << error_text();
    }
    const Bytes bytes = image.bytes();
    EXPECT_EQ(bytes.size(), 100u * record_bytes);
    const Medium medium(image.path(), OPEN_READ_VOLUME | OPEN_CHECK);
    ASSERT_TRUE(medium) << error_text();
    EXPECT_STREQ(medium->label, "LABELT");
    EXPECT_EQ(medium->root, nullptr);
    EXPECT_EQ(medium->date.tm_year, 84);
    EXPECT_EQ(medium->records, 100u);
    EXPECT_EQ(medium->free_bytes, 95u * record_bytes);
}
