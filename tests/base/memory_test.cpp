#include "base/memory.h"

#include <gtest/gtest.h>

#include <cstring>

#include "base/memory_inner.h"
#include "tests/base/scripted_console.h"

namespace
{

using tests::ScriptedConsole;

// A heap of its own; that of the other tests comes back.
class Memory : public testing::Test
{
  protected:
    Memory()
    {
        heap = nullptr;
    }

    ~Memory() override
    {
        heap_calls = old_calls;
        memory_release();
        heap = old_heap;
    }

    void *const old_heap = heap;
    const HeapCalls *const old_calls = heap_calls;
};

TEST_F(Memory, BlocksAreZeroFilled)
{
    ASSERT_EQ(memory_prepare(0x10000), 1);
    for (int round = 0; round < 3; ++round) {
        auto *block = static_cast<uint8_t *>(my_malloc(4096));
        ASSERT_NE(block, nullptr);
        for (int i = 0; i < 4096; ++i) ASSERT_EQ(block[i], 0);
        memset(block, 0xFF, 4096);
        my_free(block);
    }
}

TEST_F(Memory, BlocksAreAligned)
{
    ASSERT_EQ(memory_prepare(0x10000), 1);
    for (const size_t size : {1u, 7u, 24u, 333u}) {
        void *block = my_malloc(size);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 16, 0u);
        my_free(block);
    }
}

TEST_F(Memory, HeapGrowsBeyondItsFirstSize)
{
    ASSERT_EQ(memory_prepare(0x1000), 1);
    void *block = my_malloc(0x100000);
    EXPECT_NE(block, nullptr);
    my_free(block);
}

TEST_F(Memory, ImpossibleBlockIsNull)
{
    ASSERT_EQ(memory_prepare(0x1000), 1);
    EXPECT_EQ(my_malloc(static_cast<size_t>(-1)), nullptr);
}

TEST_F(Memory, WithoutAHeapThereIsNone)
{
    EXPECT_EQ(my_malloc(16), nullptr);
    int outside = 5;
    my_free(&outside);
    my_free(nullptr);
    EXPECT_EQ(outside, 5);
}

TEST_F(Memory, NullIsNeverGivenBack)
{
    ASSERT_EQ(memory_prepare(0x1000), 1);
    my_free(nullptr);
    void *block = my_malloc(16);
    EXPECT_NE(block, nullptr);
    my_free(block);
}

TEST_F(Memory, HeapThatExistsIsKept)
{
    ASSERT_EQ(memory_prepare(0x1000), 1);
    void *const first = heap;
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(memory_prepare(0x2000), 1);
    EXPECT_EQ(heap, first);
}

TEST_F(Memory, ReleaseTakesWhatIsLeft)
{
    ASSERT_EQ(memory_prepare(0x1000), 1);
    ASSERT_NE(my_malloc(100), nullptr);
    EXPECT_EQ(memory_release(), 1);
    EXPECT_EQ(heap, nullptr);
    EXPECT_EQ(memory_release(), 1);
    EXPECT_EQ(my_malloc(16), nullptr);
}

TEST_F(Memory, FailureWritesALine)
{
    ScriptedConsole console;
    HeapCalls calls;
    calls.create = [](size_t) -> void * { return nullptr; };
    heap_calls = &calls;
    EXPECT_EQ(memory_prepare(0x1000), 0);
    EXPECT_EQ(heap, nullptr);
    EXPECT_EQ(console.complaints(), "Unable to allocate memory heap\n");
}

} // namespace
