// How far a copy onto a medium got: the callback's arguments, a stop at each record, what the faces learn besides.
#include <gtest/gtest.h>

#include <algorithm>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/volume/insert_support.h"
#include "volume/insert_inner.h"

using namespace tests;
using namespace tests::insertion;

namespace
{

using Names = std::vector<std::string>;

struct Dirty { // a volume whose free records are not zero
    Dirty() : open(three_files()), image(open.file.bytes())
    {
        std::fill(image.begin() + 10 * 256, image.end(), uint8_t{0xEE});
        open.file.replace(image);
    }
    OpenVolume open;
    Bytes image;
};

// 1,200 letters as LIF ASCII: 1,204 bytes, five records.
const std::string long_line = std::string(1200, 'x');
const Bytes long_line_records = joined({{0x04, 0xB0}, repeated('x', 1200), {0xFF, 0xFF}});

}

TEST(AddFileProgress, IsToldOfEachRecord)
{
    const Dirty dirty;
    const Scratch folder;
    reset_progress();
    EXPECT_EQ(add(dirty.open.md, folder.file("NEW", text_of(numbered(700))), 0, {}, noting_progress).result, 10);
    EXPECT_EQ(progress_calls, (std::vector<ProgressCall>{{256, 0, 33}, {512, 1, 66}, {768, 2, 100}}));
}

TEST(AddFileProgress, CountsTheRecordsOfAConvertedFile)
{
    const Dirty dirty;
    const Scratch folder;
    reset_progress();
    EXPECT_EQ(add(dirty.open.md, folder.file("NEW.txt", long_line), 10, {}, noting_progress).result, 10);
    EXPECT_EQ(progress_calls,
              (std::vector<ProgressCall>{{256, 0, 20}, {512, 1, 40}, {768, 2, 60}, {1024, 3, 80}, {1280, 4, 100}}));
    EXPECT_TRUE(dirty.open.file.bytes() == with_records(dirty.image, 10, long_line_records));
}

TEST(AddFileProgress, AStopAtEachRecordLeavesTheRecordsUpToIt)
{
    for (uint32_t stop = 1; stop <= 6; ++stop) {
        const Dirty dirty;
        const Scratch folder;
        const Bytes content = numbered(5 * 256 - 20);
        reset_progress(stop);
        const Added added = add(dirty.open.md, folder.file("NEW", text_of(content)), 0, {}, noting_progress);
        const uint32_t written = std::min(stop, 5u);
        EXPECT_EQ(added.result, 10) << stop;
        EXPECT_EQ(progress_calls.size(), written);
        EXPECT_EQ(added.info.size, content.size()) << stop;
        EXPECT_EQ(entry_named(dirty.open.md, "NEW")->size, content.size()) << stop;
        EXPECT_EQ(entry_named(dirty.open.md, "NEW")->records, 5u) << stop;
        EXPECT_TRUE(dirty.open.file.bytes() == with_records(dirty.image, 10, part_of(content, 0, written * 256)))
            << stop;
    }
}

TEST(AddFileProgress, AStopInAConvertedFileLeavesNoTemporaryFile)
{
    for (uint32_t stop = 1; stop <= 5; ++stop) {
        const Dirty dirty;
        const Scratch folder;
        const TemporaryFolder temporary;
        reset_progress(stop);
        EXPECT_EQ(add(dirty.open.md, folder.file("NEW.txt", long_line), 10, {}, noting_progress).result, 10);
        EXPECT_EQ(temporary.files(), 0u) << stop;
        EXPECT_TRUE(dirty.open.file.bytes() == with_records(dirty.image, 10, part_of(long_line_records, 0, stop * 256)))
            << stop;
    }
}

TEST(AddFileProgress, Hazard_I6_AStopIsKnownToTheFaces)
{
    const Dirty dirty;
    const Scratch folder;
    const std::string path = folder.file("NEW", text_of(numbered(1000)));
    FileInfo info{};
    reset_progress(2);
    Insertion insertion = insert_file(dirty.open.md, &info, {.name = path.c_str(), .progress = noting_progress});
    EXPECT_EQ(insertion.result, 10);
    EXPECT_TRUE(insertion.stopped);
    EXPECT_FALSE(insertion.whole);
    EXPECT_FALSE(insertion.deleted_old);
    EXPECT_EQ(insertion.entry, entry_named(dirty.open.md, "NEW"));
}

TEST(AddFileProgress, AWholeCopyIsKnownToTheFaces)
{
    const Dirty dirty;
    const Scratch folder;
    const std::string path = folder.file("NEW", text_of(numbered(1000)));
    for (const bool again : {false, true}) {
        FileInfo info{};
        reset_progress();
        const uint16_t flags = again ? INSERT_OVERWRITE : 0;
        const Insertion insertion =
            insert_file(dirty.open.md, &info, {.name = path.c_str(), .flags = flags, .progress = noting_progress});
        EXPECT_EQ(insertion.result, 10);
        EXPECT_TRUE(insertion.whole);
        EXPECT_FALSE(insertion.stopped);
        EXPECT_EQ(insertion.deleted_old, again);
        EXPECT_EQ(insertion.entry, entry_named(dirty.open.md, "NEW"));
    }
}

TEST(AddFileProgress, AFailedTransferIsNotWhole)
{
    const Dirty dirty;
    const Scratch folder;
    const std::string path = folder.file("NEW", text_of(numbered(1000)));
    FileInfo info{};
    Insertion insertion;
    {
        const FileFaults faults(FileFault::write, 1);
        insertion = insert_file(dirty.open.md, &info, {.name = path.c_str()});
    }
    EXPECT_EQ(insertion.result, -1);
    EXPECT_FALSE(insertion.whole);
    EXPECT_FALSE(insertion.stopped);
    EXPECT_EQ(insertion.entry, entry_named(dirty.open.md, "NEW"));
    EXPECT_NE(insertion.entry, nullptr);
}

TEST(AddFileProgress, APlanMakesTheEntryAndWritesNothing)
{
    const Dirty dirty;
    const Bytes content = numbered(1000);
    InsertSource source{.bytes = content.data(), .size = content.size()};
    FileInfo info{};
    const FileFaults counted;
    reset_progress();
    const Insertion insertion =
        insert_from(dirty.open.md, &info, &source, {.name = "NEW", .progress = noting_progress, .only_plan = true});
    EXPECT_EQ(insertion.result, 10);
    EXPECT_EQ(insertion.entry, entry_named(dirty.open.md, "NEW"));
    EXPECT_EQ(entry_named(dirty.open.md, "NEW")->size, 1000u);
    EXPECT_EQ(counted.writes, 0u);
    EXPECT_TRUE(dirty.open.file.bytes() == dirty.image);
}

TEST(AddFileProgress, ASourceAtHandIsCopiedLikeAFile)
{
    const Bytes content = numbered(777);
    const Dirty one;
    InsertSource bytes{.bytes = content.data(), .size = content.size()};
    FileInfo info{};
    info.date.tm_mday = 7;
    info.date.tm_year = 85;
    EXPECT_EQ(insert_from(one.open.md, &info, &bytes, {.name = "NEW"}).result, 10);
    EXPECT_EQ(entry_named(one.open.md, "NEW")->date.tm_mday, 7);
    EXPECT_EQ(entry_named(one.open.md, "NEW")->date.tm_year, 85);
    const Dirty other;
    const Scratch folder;
    const std::string path = folder.file("other", text_of(content));
    FileHandle file = 0;
    ASSERT_EQ(file_open(&file, path.c_str(), "rb", 0), 1);
    InsertSource handle{.file = file, .size = content.size()};
    info = {};
    EXPECT_EQ(insert_from(other.open.md, &info, &handle, {.name = "NEW"}).result, 10);
    EXPECT_EQ(file_getsize(file), 777u); // it is still open
    file_close(file);
    EXPECT_TRUE(one.open.file.bytes() == with_records(one.image, 10, content));
    EXPECT_TRUE(other.open.file.bytes() == with_records(one.image, 10, content));
}
