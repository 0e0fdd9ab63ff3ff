// Copying onto a medium against the slow way: a record after the other, each read and written for itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <random>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/volume/insert_support.h"

using namespace tests;
using namespace tests::insertion;

namespace
{

struct SlowCopy {
    Bytes image;
    std::vector<ProgressCall> calls;
};

SlowCopy slow_copy(Bytes image, const std::string &source, uint32_t location, uint32_t stop_at)
{
    SlowCopy copy{std::move(image), {}};
    std::ifstream file(source, std::ios::binary | std::ios::ate);
    const auto size = static_cast<uint32_t>(file.tellg());
    file.seekg(0);
    const uint32_t count = (size + 255) / 256;
    for (uint32_t index = 0; index < count; ++index) {
        Bytes record(256);
        char bytes[256] = {};
        file.read(bytes, 256);
        std::copy_n(bytes, 256, record.begin());
        copy.image = with_records(std::move(copy.image), location + index, record);
        copy.calls.push_back({(index + 1) * 256, index, (index + 1) * 100 / count});
        if (stop_at != 0 && copy.calls.size() == stop_at) break;
    }
    return copy;
}

// A volume of `used` taken records behind ONE to THREE, and with so many free ones.
LifVolume partly_full(uint32_t used, uint32_t free)
{
    LifVolume volume = three_files();
    volume.entries.push_back({.name = "FILL", .length = used});
    volume.tracks = 10 + used + free;
    volume.records_per_track = 1;
    volume.entries.back().content = numbered(used * 256);
    return volume;
}

void compare(const LifVolume &volume, uint32_t location, const Bytes &content, uint32_t stop_at)
{
    const OpenVolume open(volume);
    ASSERT_NE(open.md, nullptr);
    const Bytes before = open.file.bytes();
    const Scratch folder;
    const std::string source = folder.file("NEW", text_of(content));
    const SlowCopy expected = slow_copy(before, source, location, stop_at);
    reset_progress(stop_at);
    const Added added = add(open.md, source, 0, {}, noting_progress);
    EXPECT_EQ(added.result, static_cast<int32_t>(location));
    EXPECT_EQ(added.error, 0u);
    EXPECT_TRUE(progress_calls == expected.calls) << content.size() << " bytes, stop at " << stop_at;
    EXPECT_TRUE(open.file.bytes() == expected.image) << content.size() << " bytes, stop at " << stop_at;
    EXPECT_EQ(entry_named(open.md, "NEW")->size, content.size());
}

}

TEST(InsertLiteral, RandomSizesAndStops)
{
    std::mt19937 numbers(30);
    auto below = [&numbers](uint32_t limit) { return static_cast<uint32_t>(numbers() % limit); };
    for (uint32_t round = 0; round < 200; ++round) {
        const uint32_t records = below(round % 10 == 0 ? 900 : 20);
        const uint32_t size = records * 256 + (round % 3 == 0 ? 0 : below(256));
        const uint32_t count = (size + 255) / 256;
        const uint32_t stop_at = round % 2 == 0 || count == 0 ? 0 : 1 + below(count);
        const uint32_t used = 1 + below(50);
        compare(partly_full(used, count + below(5)), 10 + used, numbered(size, round), stop_at);
    }
}

TEST(InsertLiteral, SizesAroundWholeBuffers)
{
    for (const uint32_t records : {63u, 64u, 65u, 127u, 128u, 129u, 255u, 256u, 257u, 511u, 512u, 513u, 1024u, 1025u}) {
        for (const int32_t difference : {-1, 0, 1}) {
            const uint32_t size = records * 256 + static_cast<uint32_t>(difference);
            compare(partly_full(1, records + 1), 11, numbered(size, records), 0);
        }
        compare(partly_full(1, records + 1), 11, numbered(records * 256), records);
        compare(partly_full(1, records + 1), 11, numbered(records * 256), records - 1);
    }
}

TEST(InsertLiteral, AFullDiscAtManyPositions)
{
    for (uint32_t free = 0; free < 40; ++free) {
        compare(partly_full(3, free), 13, numbered(free * 256, free), 0); // just fits
        const OpenVolume open(partly_full(3, free));
        const Bytes before = open.file.bytes();
        const Scratch folder;
        const std::string source = folder.file("NEW", text_of(numbered(free * 256 + 1)));
        const Added added = add(open.md, source);
        EXPECT_EQ(added.result, -1) << free;
        EXPECT_EQ(added.error, 211u) << free;
        EXPECT_EQ(added.detail, "file \"NEW\"");
        EXPECT_TRUE(open.file.bytes() == before) << free;
    }
}

TEST(InsertLiteral, AnImageShorterThanItsVolumeGrows)
{
    LifVolume volume = three_files();
    volume.records = 10; // of 160
    compare(volume, 10, numbered(1000), 0);
    compare(volume, 10, numbered(1000), 2);
    volume.records = 7; // THREE lies beyond its end, too
    compare(volume, 10, numbered(300), 0);
}

TEST(InsertLiteral, AFailingWriteAtEachCallLeavesWholeRecordsAndNothingElse)
{
    const Bytes content = numbered(300 * 256 - 5);
    uint32_t failed = 0;
    for (uint32_t n = 1;; ++n) {
        ASSERT_LT(n, 400u);
        const OpenVolume open(partly_full(1, 400));
        const Bytes before = open.file.bytes();
        const Scratch folder;
        const std::string source = folder.file("NEW", text_of(content));
        Added added;
        bool reached = false;
        {
            const FileFaults faults(FileFault::write, n);
            added = add(open.md, source);
            reached = faults.reached;
        }
        const Bytes after = open.file.bytes();
        if (!reached) {
            EXPECT_TRUE(after == with_records(before, 11, content));
            break;
        }
        failed++;
        EXPECT_EQ(added.result, -1);
        EXPECT_EQ(added.error, 303u);
        const Bytes image = with_records(before, 11, content);
        const auto difference = std::mismatch(after.begin(), after.end(), image.begin());
        const auto position = difference.first - after.begin();
        EXPECT_GE(position, 11 * 256);
        const auto records = static_cast<uint32_t>(position) / 256 - 11;
        EXPECT_TRUE(after == with_records(before, 11, part_of(content, 0, records * 256))) << n;
    }
    EXPECT_GE(failed, 1u);
}
