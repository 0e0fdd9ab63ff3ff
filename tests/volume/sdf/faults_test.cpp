// Each read and each allocation fails once while an SDF volume is opened, listed and copied out: the result says so,
// nothing leaks, and the next time all is well.
#include <gtest/gtest.h>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/sdf_builder.h"
#include "tests/volume/extract_support.h"
#include "volume/navigate.h"
#include "volume/state.h"
#include "volume/table.h"

using namespace tests;

namespace
{

constexpr uint16_t whole_tree = OPEN_READ_VOLUME | OPEN_RECURSIVE;
constexpr uint32_t all_entries = 11;

Bytes tree_with_straddling_entries()
{
    SdfVolume volume = five_levels();
    volume.table_pieces = {2};
    volume.files[1].pieces = {1};
    return sdf_image(volume).bytes;
}

uint32_t count_entries(const FileInfo *info)
{
    uint32_t count = 0;
    for (; info != nullptr; info = info->next) count += 1 + count_entries(info->child);
    return count;
}

// Reads everything; -1 when something couldn't be.
int32_t read_all(MediaDescriptor *md)
{
    if (get_media_info(md) < 0) return -1;
    return get_file_table(md, nullptr, nullptr, 0, 0, 0, 0, 0, 1);
}

uint32_t error_of(FileFault fault)
{
    return fault == FileFault::seek ? 301 : 302;
}

}

TEST(SdfFaults, EachReadAndEachSeekFailsOnce)
{
    const Bytes image = tree_with_straddling_entries();
    for (const FileFault fault : {FileFault::read, FileFault::seek}) {
        bool reached = true;
        for (uint32_t n = 1; reached; ++n) {
            ASSERT_LT(n, 500u);
            HandMedium hand(image); // each record is read by itself
            HeapFaults heap;
            forget_error();
            {
                const FileFaults faults(fault, n);
                const int32_t result = read_all(&hand.md);
                reached = faults.reached;
                EXPECT_EQ(result, reached ? -1 : 0) << n;
            }
            if (reached) {
                EXPECT_EQ(global_error, error_of(fault)) << n;
            }
            EXPECT_EQ(read_all(&hand.md), 0) << n;
            EXPECT_EQ(count_entries(hand.md.root), all_entries) << n;
        }
    }
}

TEST(SdfFaults, EachAllocationFailsOnce)
{
    const TemporaryFile file(tree_with_straddling_entries());
    bool reached = true;
    for (uint32_t n = 1; reached; ++n) {
        ASSERT_LT(n, 500u);
        HeapFaults heap(n);
        forget_error();
        {
            const Medium medium(file.path(), whole_tree);
            reached = heap.reached;
            const bool whole = medium && medium->state->table_result == 0 && count_entries(medium->root) == all_entries;
            EXPECT_EQ(whole, !reached) << n;
            if (medium && reached) {
                EXPECT_LT(count_entries(medium->root), all_entries);
            }
        }
        if (reached) {
            EXPECT_EQ(global_error, 105u) << n;
        }
        EXPECT_EQ(heap.releases + (reached ? 1 : 0), heap.allocations) << n;
    }
}

TEST(SdfFaults, EachAllocationOfACopyFailsOnce)
{
    const OpenVolume open(tree_with_straddling_entries(), whole_tree);
    ASSERT_TRUE(open.md != nullptr);
    const FileInfo *deep = image_find_file(open.md, open.md->root, "DEEP", 1);
    ASSERT_TRUE(deep != nullptr);
    bool reached = true;
    for (uint32_t n = 1; reached; ++n) {
        ASSERT_LT(n, 100u);
        const Scratch host;
        const HeapFaults heap(n);
        forget_error();
        const Extraction done = extract_file(open.md, deep, order_for(host.path("out")));
        reached = heap.reached;
        EXPECT_EQ(done.whole, !reached) << n;
        EXPECT_EQ(global_error, reached ? 105u : 0u) << n;
        EXPECT_EQ(heap.releases + (reached ? 1 : 0), heap.allocations) << n;
    }
}

TEST(SdfFaults, EachReadOfACopyFailsOnce)
{
    bool reached = true;
    for (uint32_t n = 1; reached; ++n) {
        ASSERT_LT(n, 100u);
        HandMedium hand(tree_with_straddling_entries());
        ASSERT_EQ(read_all(&hand.md), 0);
        const FileInfo *first = entry_named(&hand.md, "FIRST");
        ASSERT_TRUE(first != nullptr);
        const Scratch host;
        forget_error();
        const FileFaults faults(FileFault::read, n);
        const Extraction done = extract_file(&hand.md, first, order_for(host.path("out")));
        reached = faults.reached;
        EXPECT_EQ(done.whole, !reached || done.result > 0) << n;
        if (done.result < 0) {
            EXPECT_EQ(global_error, 302u) << n;
        }
    }
}
