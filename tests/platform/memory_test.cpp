// The private heap.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "platform/platform.h"

namespace
{

class PlatformHeap : public testing::Test
{
  protected:
    ~PlatformHeap() override
    {
        platform_heap_destroy(heap);
    }

    void *heap = platform_heap_create(0x1000);
};

bool is_zero(const void *block, size_t bytes)
{
    for (size_t at = 0; at < bytes; ++at) {
        if (static_cast<const uint8_t *>(block)[at] != 0) return false;
    }
    return true;
}

TEST_F(PlatformHeap, BlocksAreZeroAlsoWhenTheirMemoryWasUsed)
{
    ASSERT_NE(heap, nullptr);
    for (int round = 0; round < 50; ++round) {
        void *block = platform_heap_allocate(heap, 500);
        ASSERT_NE(block, nullptr);
        EXPECT_TRUE(is_zero(block, 500));
        memset(block, 0xaa, 500);
        platform_heap_free(heap, block);
    }
}

TEST_F(PlatformHeap, BlocksAreAlignedTo16)
{
    for (const size_t bytes : {0u, 1u, 7u, 16u, 17u, 4097u}) {
        void *block = platform_heap_allocate(heap, bytes);
        ASSERT_NE(block, nullptr) << bytes;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 16, 0u) << bytes;
    }
}

TEST_F(PlatformHeap, BlocksGoInAnyOrder)
{
    std::vector<uint8_t *> blocks;
    for (uint8_t i = 0; i < 100; ++i) {
        blocks.push_back(static_cast<uint8_t *>(platform_heap_allocate(heap, i + 1u)));
        memset(blocks.back(), i, i + 1u);
    }
    for (size_t i = 1; i < 100; i += 2) platform_heap_free(heap, blocks[i]);
    platform_heap_free(heap, blocks[98]);
    platform_heap_free(heap, blocks[0]);
    for (size_t i = 2; i < 98; i += 2) {
        EXPECT_EQ(blocks[i][i], i);
        platform_heap_free(heap, blocks[i]);
    }
}

TEST_F(PlatformHeap, BlocksOfAllSizesKeepTheirBytesBesideEachOther)
{
    std::vector<uint8_t *> blocks;
    for (size_t bytes = 0; bytes < 2000; ++bytes) {
        blocks.push_back(static_cast<uint8_t *>(platform_heap_allocate(heap, bytes)));
        ASSERT_NE(blocks.back(), nullptr);
        ASSERT_TRUE(is_zero(blocks.back(), bytes)) << bytes;
        memset(blocks.back(), static_cast<uint8_t>(bytes % 255 + 1), bytes);
    }
    for (size_t bytes = 1; bytes < 2000; ++bytes) {
        EXPECT_EQ(blocks[bytes][0], bytes % 255 + 1);
        EXPECT_EQ(blocks[bytes][bytes - 1], bytes % 255 + 1);
    }
    for (size_t bytes = 0; bytes < 2000; bytes += 3) platform_heap_free(heap, blocks[bytes]);
    for (size_t bytes = 0; bytes < 2000; bytes += 3) {
        void *block = platform_heap_allocate(heap, bytes);
        ASSERT_NE(block, nullptr);
        EXPECT_TRUE(is_zero(block, bytes)) << bytes;
    }
    for (size_t bytes = 1; bytes < 2000; bytes += 3) EXPECT_EQ(blocks[bytes][bytes - 1], bytes % 255 + 1);
}

TEST_F(PlatformHeap, DestroyingReleasesWhatIsLeft) // a checker of leaks sees it
{
    for (int i = 0; i < 1000; ++i) ASSERT_NE(platform_heap_allocate(heap, 100), nullptr);
    void *second = platform_heap_create(0);
    ASSERT_NE(second, nullptr);
    ASSERT_NE(platform_heap_allocate(second, 100), nullptr);
    platform_heap_destroy(second);
    EXPECT_TRUE(is_zero(platform_heap_allocate(heap, 100), 100));
}

TEST_F(PlatformHeap, MoreThanThereIsGivesNull)
{
    EXPECT_EQ(platform_heap_allocate(heap, SIZE_MAX), nullptr);
    EXPECT_EQ(platform_heap_allocate(heap, SIZE_MAX - 15), nullptr);
    EXPECT_EQ(platform_heap_allocate(heap, SIZE_MAX - 31), nullptr);
    EXPECT_NE(platform_heap_allocate(heap, 1), nullptr);
}

} // namespace
