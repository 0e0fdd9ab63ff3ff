// New entries: what is refused and in which order, where the room is found, and how records are filled.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/volume/insert_support.h"
#include "volume/table.h"

using namespace tests;
using namespace tests::insertion;

namespace
{

using Names = std::vector<std::string>;

FileInfo file_of(const std::string &name, uint32_t size)
{
    FileInfo info{};
    std::memcpy(info.name, name.data(), std::min(name.size(), sizeof info.name - 1));
    set_type_text(info, "ASCII");
    info.type = 1;
    info.size = size;
    info.records = (size + 255) / 256;
    info.record_len = 128;
    return info;
}

// The volume as it was: image and list.
struct Untouched {
    explicit Untouched(const OpenVolume &open) : volume(open), image(open.file.bytes()), list(names(open.md)) {}
    ~Untouched()
    {
        EXPECT_TRUE(volume.file.bytes() == image);
        EXPECT_EQ(names(volume.md), list);
    }
    Untouched(const Untouched &) = delete;
    Untouched &operator=(const Untouched &) = delete;

    const OpenVolume &volume;
    Bytes image;
    Names list;
};

void expect_refused(const Added &created, uint32_t error, const std::string &detail)
{
    EXPECT_EQ(created.result, -1);
    EXPECT_EQ(created.error, error);
    EXPECT_EQ(created.detail, detail);
}

constexpr uint32_t largest_file = 65535 * record_bytes;

// A sparse image of so many records, empty but for its header.
struct LargeVolume {
    explicit LargeVolume(uint32_t records) : file(head_of(records)), medium(extended(records)), md(medium.md) {}

    static Bytes head_of(uint32_t records)
    {
        LifVolume volume;
        volume.tracks = records / 16;
        volume.records = 4;
        return lif_image(volume);
    }
    std::string extended(uint32_t records) const
    {
        file.extend(uint64_t{records} * record_bytes);
        return file.path();
    }

    TemporaryFile file;
    Medium medium;
    MediaDescriptor *md;
};

}

TEST(CreateFile, AnEntryAtTheEndOfTheList)
{
    const OpenVolume open(three_files());
    const Bytes image = open.file.bytes();
    const Added created = create(open.md, file_of("NEW", 513));
    EXPECT_EQ(created.result, 10);
    EXPECT_EQ(created.error, 0u);
    EXPECT_EQ(created.info.location, 10u);
    EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE", "NEW"}));
    const FileInfo *entry = entry_named(open.md, "NEW");
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->location, 10u);
    EXPECT_EQ(entry->size, 513u);
    EXPECT_EQ(entry->type, 1u);
    EXPECT_STREQ(entry->type_string, "ASCII");
    EXPECT_EQ(entry->prev, entry_named(open.md, "THREE"));
    EXPECT_EQ(entry->next, nullptr);
    EXPECT_EQ(entry->child, nullptr);
    EXPECT_TRUE(open.file.bytes() == image); // the tables are the caller's to write
}

TEST(CreateFile, TheFirstEntryOfAnEmptyVolume)
{
    const OpenVolume open(LifVolume{});
    const Added created = create(open.md, file_of("NEW", 1));
    EXPECT_EQ(created.result, 4);
    ASSERT_NE(open.md->root, nullptr);
    EXPECT_STREQ(open.md->root->name, "NEW");
    EXPECT_EQ(open.md->root->prev, nullptr);
    EXPECT_EQ(open.md->root->next, nullptr);
}

TEST(CreateFile, LinksOfTheCallersRecordDontEnterTheList)
{
    const OpenVolume open(three_files());
    FileInfo info = file_of("NEW", 256);
    info.next = info.prev = open.md->root;
    create(open.md, info);
    EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE", "NEW"}));
    EXPECT_EQ(entry_named(open.md, "NEW")->prev, entry_named(open.md, "THREE"));
    EXPECT_EQ(open.md->root->prev, nullptr);
}

TEST(CreateFile, IsThereAfterTheTableIsWritten)
{
    const OpenVolume open(three_files());
    create(open.md, file_of("NEW", 513));
    EXPECT_EQ(create(open.md, file_of("NEWER", 0)).result, 13);
    EXPECT_EQ(create(open.md, file_of("NEWEST", 256)).result, 13);
    EXPECT_EQ(update_file_table(open.md, 0), 0);
    const Medium again(open.file.path());
    EXPECT_EQ(names(again.md), (Names{"ONE", "TWO", "THREE", "NEW", "NEWER", "NEWEST"}));
    EXPECT_EQ(locations(again.md), (std::vector<uint32_t>{5, 6, 9, 10, 13, 13}));
    EXPECT_EQ(entry_named(again.md, "NEW")->size, 768u);
    EXPECT_EQ(entry_named(again.md, "NEWER")->size, 0u);
}

TEST(CreateFile, TracesItsArguments)
{
    const OpenVolume open(three_files());
    std::string text;
    {
        const LogCapture log(3);
        create(open.md, file_of("NEW", 1), true, 0x3C);
        text = log.text();
    }
    EXPECT_TRUE(contains(text, "Trace: image_create_file(md=")) << text;
    EXPECT_TRUE(contains(text, ", initialize=1, pattern=3C)\n")) << text;
}

TEST(CreateFile, ANameThatCannotBeIsRefused)
{
    const OpenVolume open(three_files());
    const Untouched untouched(open);
    expect_refused(create(open.md, file_of("", 256)), 212, "file \"\": empty filename");
    open.md->format = FORMAT_HFS;
    expect_refused(create(open.md, file_of("A", 256)), 212, "file \"A\": unsupported format");
    open.md->format = FORMAT_LIF;
}

TEST(CreateFile, System45RefusesQuoteAndColonBeforeTheyWouldBeTurned)
{
    const auto disc = disc_with({{30, 100}});
    for (const char *name : {"A:B", "\"A\"", "A\xFF"}) {
        expect_refused(create(&disc->md, file_of(name, 256)), 212,
                       "file \"" + std::string(name) + "\": filename contains invalid character(s)");
    }
    EXPECT_EQ(disc->md.root, nullptr);
    EXPECT_EQ(runs_of(disc->md), (Runs{{30, 100}}));
}

TEST(CreateFile, WarningsAboutANameDontRefuseIt)
{
    const OpenVolume open(three_files());
    EXPECT_EQ(create(open.md, file_of("1ST", 256)).result, 10);
    EXPECT_EQ(create(open.md, file_of("ELEVENCHARS", 256)).result, 11);
}

TEST(CreateFile, TheNameGoesIntoTheHpSetInPlace)
{
    const OpenVolume open(three_files());
    const Added created = create(open.md, file_of("a\x84 b:\"\x81", 256));
    EXPECT_EQ(created.result, 10);
    EXPECT_STREQ(created.info.name, "a\xCC"
                                    "b__\xCF");
    EXPECT_NE(entry_named(open.md, "a\xCC"
                                   "b__\xCF"),
              nullptr);
}

TEST(CreateFile, AnExistingNameIsRefused)
{
    const OpenVolume open(three_files());
    const Untouched untouched(open);
    expect_refused(create(open.md, file_of("TWO", 256)), 210, "file \"TWO\"");
    expect_refused(create(open.md, file_of("T W O", 256)), 210, "file \"TWO\""); // as it stands in the HP set
}

TEST(CreateFile, TheTypeIsNoPartOfTheComparison)
{
    const OpenVolume open(three_files());
    FileInfo info = file_of("TWO", 256);
    info.type = 0xE020;
    set_type_text(info, "BAS8x");
    expect_refused(create(open.md, info), 210, "file \"TWO\"");
}

TEST(CreateFile, APurgedNameCountsOnlyWhenItShows)
{
    LifVolume volume = three_files();
    volume.entries[1].type = 0;
    {
        const OpenVolume open(volume);
        EXPECT_EQ(create(open.md, file_of("TWO", 256)).result, 10);
        EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE", "TWO"}));
    }
    const OpenVolume open(volume);
    open.md->show_purged = 1;
    expect_refused(create(open.md, file_of("TWO", 256)), 210, "file \"TWO\"");
}

TEST(CreateFile, AFullDirectoryIsRefused)
{
    LifVolume volume = lif_volume_with_files(15);
    volume.directory_length = 2;
    volume.records = 100;
    const OpenVolume open(volume);
    EXPECT_GT(create(open.md, file_of("LAST", 256)).result, 0);
    const Untouched untouched(open);
    expect_refused(create(open.md, file_of("MORE", 256)), 216, "file \"MORE\"");
}

TEST(CreateFile, PurgedEntriesTakeTheirPlaceInTheDirectory)
{
    LifVolume volume = lif_volume_with_files(16);
    volume.directory_length = 2;
    volume.records = 100;
    for (LifEntry &entry : volume.entries) entry.type = 0;
    const OpenVolume open(volume);
    const Untouched untouched(open);
    expect_refused(create(open.md, file_of("MORE", 256)), 216, "file \"MORE\"");
}

TEST(CreateFile, Hazard_D11_NoEntryBeyondTheSlots)
{
    const OpenVolume open(lif_volume_with_files(20));
    open.md->dir_size = 2; // fewer than are in use
    const Untouched untouched(open);
    expect_refused(create(open.md, file_of("MORE", 0)), 216, "file \"MORE\"");
    open.md->dir_size = 0;
    expect_refused(create(open.md, file_of("MORE", 0)), 216, "file \"MORE\"");
}

TEST(CreateFile, Hazard_D11_AnEndlessDirectoryLengthDoesNotWrap)
{
    const OpenVolume open(three_files());
    open.md->dir_size = 0x01000000; // times 256 is 0 in 32 bits
    const Added created = create(open.md, file_of("MORE", 256));
    EXPECT_NE(created.error, 216u); // there is room for the entry, whatever else is wrong
}

TEST(CreateFile, TheRoomTestOfATapeKnowsNothingOfItsHead)
{
    const auto hand = tape();
    hand->md.dir_size = 3; // 768 bytes: 64 entries by the test, 63 slots
    std::vector<std::string> made;
    for (int i = 0; i < 64; ++i) {
        const std::string name = "F" + std::to_string(i);
        ASSERT_GT(create(&hand->md, file_of(name, 256)).result, 0) << i;
    }
    expect_refused(create(&hand->md, file_of("MORE", 256)), 216, "file \"MORE\"");
}

TEST(CreateFile, NoRoomIsRefused)
{
    const OpenVolume open(three_files());
    {
        const Untouched untouched(open);
        expect_refused(create(open.md, file_of("BIG", 150 * 256 + 1)), 211, "file \"BIG\"");
    }
    EXPECT_EQ(create(open.md, file_of("BIG", 150 * 256)).result, 10);
    const Untouched untouched(open);
    expect_refused(create(open.md, file_of("MORE", 1)), 211, "file \"MORE\"");
}

TEST(CreateFile, AFileOfNoBytesTakesNoRecord)
{
    const OpenVolume open(three_files());
    EXPECT_EQ(create(open.md, file_of("EMPTY", 0)).result, 10);
    EXPECT_EQ(create(open.md, file_of("NEXT", 1)).result, 10);
}

TEST(CreateFile, Hazard_D5_AFileHasAtMost65535Records)
{
    const LargeVolume large(0x30000);
    ASSERT_NE(large.md, nullptr);
    for (const uint32_t size : {largest_file + 1, 65536 * record_bytes, 65537 * record_bytes, 0xFFFFFFFFu}) {
        expect_refused(create(large.md, file_of("BIG", size)), 211, "file \"BIG\"");
    }
    EXPECT_EQ(large.md->root, nullptr);
    EXPECT_EQ(create(large.md, file_of("BIG", largest_file)).result, 4);
}

TEST(CreateFile, Hazard_D6_PositionAbove65535IsNoSpace)
{
    const LargeVolume large(0x30000);
    ASSERT_NE(large.md, nullptr);
    EXPECT_EQ(create(large.md, file_of("A", 65531 * record_bytes)).result, 4);
    EXPECT_EQ(create(large.md, file_of("B", record_bytes)).result, 65535);
    expect_refused(create(large.md, file_of("C", record_bytes)), 211, "file \"C\"");
    EXPECT_EQ(names(large.md), (Names{"A", "B"}));
}

TEST(CreateFile, Hazard_D7_ADamagedEntryDoesNotOpenTheWayIntoFiles)
{
    const OpenVolume open(three_files());
    FileInfo *damaged = entry_named(open.md, "TWO");
    damaged->deleted = 1;
    damaged->location = 0xFFFFFFFF;
    expect_refused(create(open.md, file_of("NEW", 256)), 211, "file \"NEW\"");
    damaged->location = 6;
    damaged->records = 0xFFFFFFFF;
    damaged->record_len = 0xFFFFFFFF;
    expect_refused(create(open.md, file_of("NEW", 256)), 211, "file \"NEW\"");
}

TEST(CreateFile, Hazard_D8_AFreeRunInsideALiveFileIsNotHandedOut)
{
    const auto disc = disc_with({{40, 10}, {60, 20}});
    add_file(disc->md, 42, 3);
    EXPECT_EQ(create(&disc->md, file_of("NEW", 2560)).result, 60);
    EXPECT_EQ(runs_of(disc->md), (Runs{{40, 10}, {70, 10}}));
}

TEST(CreateFile, ADiscGivesTheBestOfItsRuns)
{
    const auto disc = disc_with({{40, 10}, {60, 5}, {100, 6}});
    EXPECT_EQ(create(&disc->md, file_of("A", 5 * 256)).result, 60);
    EXPECT_EQ(runs_of(disc->md), (Runs{{40, 10}, {100, 6}}));
    EXPECT_EQ(create(&disc->md, file_of("B", 5 * 256)).result, 100);
    EXPECT_EQ(runs_of(disc->md), (Runs{{40, 10}, {105, 1}}));
    expect_refused(create(&disc->md, file_of("C", 11 * 256)), 211, "file \"C\"");
}

// All that can be wrong at once, and one after the other put right.
TEST(CreateFile, FailuresComeInTheirOrder)
{
    LifVolume volume = lif_volume_with_files(16);
    volume.directory_length = 2;
    const OpenVolume open(volume);
    FileInfo info = file_of("", 0xFFFFFF);
    HeapFaults heap(1);
    auto next_error = [&] {
        heap.nth = heap.allocations + 1;
        return create(open.md, info).error;
    };
    EXPECT_EQ(next_error(), 212u);
    std::memcpy(info.name, "F000000", 8);
    EXPECT_EQ(next_error(), 210u);
    info.name[0] = 'G';
    EXPECT_EQ(next_error(), 216u);
    open.md->dir_size = 3;
    EXPECT_EQ(next_error(), 211u);
    open.md->records = 100;
    info.size = 256;
    EXPECT_EQ(next_error(), 105u);
    EXPECT_EQ(names(open.md).size(), 16u);
    heap.nth = 0;
    EXPECT_GT(create(open.md, info).result, 0);
}

TEST(CreateFile, RecordsAreFilledWithThePattern)
{
    const OpenVolume open(three_files());
    const Bytes image = open.file.bytes();
    EXPECT_EQ(create(open.md, file_of("NEW", 700), true, 60).result, 10);
    Bytes filling;
    for (int i = 0; i < 3 * 128; ++i) filling.insert(filling.end(), {0x00, 0x3C});
    EXPECT_TRUE(open.file.bytes() == with_records(image, 10, filling));
    EXPECT_EQ(create(open.md, file_of("NEWER", 256), true, 0xA1B2).result, 13);
    Bytes other;
    for (int i = 0; i < 128; ++i) other.insert(other.end(), {0xA1, 0xB2});
    EXPECT_TRUE(open.file.bytes() == with_records(with_records(image, 10, filling), 13, other));
}

TEST(CreateFile, WithoutPatternNoRecordIsWritten)
{
    const OpenVolume open(three_files());
    FileFaults counted;
    EXPECT_EQ(create(open.md, file_of("NEW", 700), false, 60).result, 10);
    EXPECT_EQ(create(open.md, file_of("EMPTY", 0), true, 60).result, 13);
    EXPECT_EQ(counted.writes, 0u);
}

TEST(CreateFile, TheLastRecordOfTheVolumeIsFilledAndNoneBehindIt)
{
    const OpenVolume open(three_files());
    const Bytes image = open.file.bytes();
    EXPECT_EQ(create(open.md, file_of("NEW", 150 * 256), true, 0x5555).result, 10);
    EXPECT_TRUE(open.file.bytes() == with_records(image, 10, repeated(0x55, 150 * 256)));
}

TEST(CreateFile, AFailingWriteLeavesTheEntryAndTheRecordsBeforeIt)
{
    for (uint32_t n = 1; n <= 3; ++n) {
        const OpenVolume open(three_files());
        const Bytes image = open.file.bytes();
        Added created;
        bool reached = false;
        {
            const FileFaults faults(FileFault::write, n);
            created = create(open.md, file_of("NEW", 700), true, 0x1111);
            reached = faults.reached;
        }
        if (!reached) { // several records may go out at once
            EXPECT_GT(n, 1u);
            break;
        }
        EXPECT_LT(created.result, 0) << n;
        EXPECT_EQ(created.error, 303u) << n;
        EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE", "NEW"})) << n;
        EXPECT_EQ(entry_named(open.md, "NEW")->location, 10u) << n;
        const Bytes after = open.file.bytes();
        EXPECT_TRUE(part_of(after, 0, 10 * 256) == part_of(image, 0, 10 * 256)) << n;
        EXPECT_TRUE(part_of(after, 13 * 256, after.size()) == part_of(image, 13 * 256, image.size())) << n;
    }
}

TEST(CreateFile, AFailingAllocationChangesNothing)
{
    uint32_t failed = 0;
    for (uint32_t n = 1;; ++n) {
        ASSERT_LT(n, 20u);
        const OpenVolume open(three_files());
        const Bytes image = open.file.bytes();
        const HeapFaults heap(n);
        const Added created = create(open.md, file_of("NEW", 700));
        if (!heap.reached) break;
        failed++;
        EXPECT_EQ(created.result, -1) << n;
        EXPECT_EQ(created.error, 105u) << n;
        EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE"})) << n;
        EXPECT_TRUE(open.file.bytes() == image) << n;
    }
    EXPECT_GE(failed, 1u); // the entry itself
}
